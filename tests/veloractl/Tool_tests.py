"""The tool as a whole: help, statuses, bad input, what it leaves alone, doctor and tour."""

import base64
import json
import os
import pathlib
import re
import shutil
import struct
import subprocess
import unittest

from tool import TOP, TestCase, run

COMMANDS = {
    "version", "log", "telemetry", "switch-user", "get", "set", "flags", "settings export",
    "settings import", "modes", "set-mode", "sync", "reset", "user list", "user save", "user edit",
    "user set", "user delete", "user renumber", "tune", "fuse", "temperature", "eye-strength",
    "natural run", "sensor troubles", "sensor record", "sensor replay", "watch", "ring", "monitors",
    "extend", "vendor", "shown", "doctor", "tour", "run", "inspect", "dump-firmware", "panel",
    "profiles", "lut convert"}


def subcommands(help_text):
    """Names and summaries below "Subcommands:"."""
    part = help_text.split("Subcommands:\n", 1)
    found = {}
    for line in part[1].split("\n\n")[0].splitlines() if len(part) > 1 else []:
        match = re.match(r"  (\S+)\s+(.*)", line)
        if match:
            found[match[1]] = match[2]
    return found


class Help(TestCase):
    def test_every_command_teaches(self):
        top = run("--help")
        self.assertEqual((top.status, top.error), (0, ""))
        self.assertIn("Exit status:", top.out)
        groups, leaves = {}, {}
        for name, summary in subcommands(top.out.replace("\r", "")).items():
            self.assertTrue(summary, name)
            leaves[name] = summary
        outcomes = self.session(*[f"{name} --help" for name in leaves])
        for outcome in outcomes:
            self.assertEqual((outcome.status, outcome.error), (0, ""))
            name = outcome.command.split()[0]
            below = subcommands(outcome.text)
            if below:
                groups[name] = below
                del leaves[name]
            self.assertIn("Usage:", outcome.text, name)
        below = [f"{group} {name}" for group, names in groups.items() for name in names]
        for outcome in self.session(*[f"{name} --help" for name in below]):
            self.assertEqual((outcome.status, outcome.error), (0, ""))
            self.assertIn("Usage:", outcome.text)
        self.assertEqual({*leaves, *below}, COMMANDS)

    def test_version(self):
        result = run("--version")
        self.assertEqual(result.status, 0)
        self.assertRegex(result.out, r"^veloractl \d+\.\d+\.\d+\s*$")


class CommandLine(TestCase):
    def test_bad_command_lines(self):
        for arguments in ([], ["polish"], ["--polish"], ["get", "--polish"], ["--virtual"],
                          ["get", "a", "b"], ["set", "temperature.value"]):
            result = run(*arguments)
            self.assertEqual((result.status, result.out), (2, ""), arguments)
            self.assertEqual(len(result.sentences), 1, result.error)
            self.assertEqual(result.error, result.sentences[0] + "\n")

    def test_run_stops_at_the_first_failure(self):
        file = self.write("lines", "set temperature.value 1\nset temperature.value 999\n"
                                   "get temperature.value\n")
        result = run("--virtual", "run", file)
        self.assertEqual(result.status, 2)
        self.assertNotIn("> get", result.out)
        self.assertIn("veloractl: line 2: ", result.error)

    def test_run_reads_what_is_typed(self):
        result = run("--virtual", "run", "-", stdin=b"# a remark\n\nset temperature.value 7\n"
                                                    b"get temperature.value\n")
        self.assertEqual((result.status, result.sentences), (0, []))
        self.assertRegex(result.out, r"value +7\s")

    def test_a_table_and_json_say_the_same(self):
        script = self.write("lines", "get temperature.value\n")
        table = run("--virtual", "run", script)
        self.assertIn("setting  temperature.value", table.out)
        single = run("--virtual", "--json", "get", "temperature.value")
        self.check(single.report, "get")


# Files of any content.
CONTENTS = {
    "empty": b"", "zero": b"\0" * 64, "noise": bytes(range(256)) * 8, "text": b"hello, world\n",
    "number": b"5", "list": b"[]", "deep": b"[" * 100000, "cut": b'{"modes": [{"mode": "p3"',
    "latin": b'{"modes": "\xff\xfe"}', "array of objects": b'{"modes": [[]]}',
    "byte order mark": b"\xef\xbb\xbf{}x",
}


class BadFiles(TestCase):
    def expect(self, lines, options=()):
        outcomes = self.session(*lines, options=options)
        for outcome in outcomes:
            self.assertEqual(outcome.status, 3, (outcome.command, outcome.error))
            self.assertTrue(outcome.error)
            self.assertNotIn("\n", outcome.error)
        return outcomes

    def files(self, *names):
        return [self.write("content" + name.replace(" ", ""), content)
                for name, content in CONTENTS.items() if not names or name in names]

    def test_settings_readings_factories(self):
        missing = self.path("none")
        self.expect([f"settings import {file}" for file in [*self.files(), missing]])
        self.expect([f"natural run {file}" for file in [*self.files(), missing]])
        self.expect([f"natural run nan --factory {file}" for file in [*self.files(), missing]])

    def test_modes(self):
        for file in [*self.files("zero", "cut", "array of objects"), self.path("none")]:
            self.expect(["modes"], options=["--modes", file])

    def test_descriptions(self):
        for file in [*self.files("empty", "noise", "list", "latin"), self.path("none")]:
            result = run("--virtual", file, "version")
            self.assertEqual((result.status, result.out), (3, ""), file)
            self.assertEqual(len(result.sentences), 1)
        bad = {"panel.vendor": {"panel": {"vendor": "nvx!"}},
               "panel.product": {"panel": {"product": 70000}},
               "panel.firmwareLuts": {"panel": {"firmwareLuts": ["wide"]}},
               "panel.serial": {"panel": {"serial": [1, 2, 3, 256]}},
               "monitors[0].colour": {"monitors": [{"colour": 1}]},
               "features.nose": {"features": {"nose": {}}},
               "edid": {"panel": {"edid": "none.hex"}},
               "setType": {"setType": 7}}
        for part, content in bad.items():
            result = run("--virtual", self.write("d.json", content), "version")
            self.assertEqual((result.status, result.out), (3, ""), (part, result.error))
            self.assertEqual(len(result.sentences), 1)

    def test_a_script(self):
        for file in self.files("zero", "noise", "text", "deep", "latin"):
            result = run("--virtual", "run", file)
            self.assertIn(result.status, (0, 2, 3), result.error)
        result = run("--virtual", "run", self.path("none"))
        self.assertEqual(result.status, 3)


def registry():
    """What other programs see."""
    text = ""
    for key in ("HKLM\\SOFTWARE\\Norvex", "HKCU\\Software\\Norvex", "HKCU\\Software\\veloractl",
                "HKLM\\SYSTEM\\CurrentControlSet\\Enum\\DISPLAY"):
        text += subprocess.run([str(TOP / "tools/wine"), "reg", "query", key, "/s"],
                               capture_output=True).stdout.decode(errors="replace")
    return text


def files():
    prefix = pathlib.Path(os.environ.get("VELORA_WINEPREFIX", TOP / "build/wine")) / "drive_c"
    return {str(path): path.stat().st_mtime_ns for folder in
            ("ProgramData", "Program Files", "windows/system32/spool", "users")
            for path in (prefix / folder).rglob("*") if path.is_file()}


class Isolation(TestCase):
    def test_a_virtual_notebook_leaves_the_machine_alone(self):
        run("version")  # what a first start makes
        before = registry(), files()
        self.done("set eye-protection.value 5", "set-mode p3", "set-mode ebook", "user save A",
                  "tune A%1 1 1 0.95 --store", "flags esd supported 1", "fuse temperature --show",
                  "natural run zeros", "telemetry 1 a b", "extend", "switch-user", "vendor",
                  "ring temperature")
        result = run("tour")
        self.assertEqual(result.status, 0, result.error)
        self.assertEqual((registry(), files()), before)

    def test_on_the_machine_itself(self):
        set_, get = run("--json", "set", "frame-work-type", "17"), run("--json", "get", "frame-work-type")
        self.assertEqual((set_.status, get.status, get.report["value"]), (0, 0, 17), get.error)
        self.assertIn("0x11", registry())
        run("set", "frame-work-type", "0")
        no_modes = run("set-mode", "p3")
        self.assertEqual(no_modes.status, 3)
        self.assertIn("no file describes this machine's modes", no_modes.error)
        for arguments in (["natural", "run", "nan"], ["shown"],
                          ["sensor", "record", self.path("r"), "--play", "nan"]):
            result = run(*arguments)
            self.assertEqual(result.status, 2, result.error)
            self.assertEqual(len(result.sentences), 1)


class Doctor(TestCase):
    def test_a_healthy_machine(self):
        outcomes = self.session("doctor", "set-mode p3", "doctor")
        for outcome in (outcomes[0], outcomes[2]):
            self.check(outcome.report, "doctor")
            self.assertEqual((outcome.status, outcome.error), (0, ""),
                             [row for row in outcome.report["checks"] if row["advice"]])
        checks = {row["check"].split(":")[0] for row in outcomes[0].report["checks"]}
        for check in ("VeloraCtlApi.dll", "rights", "feature flags", "shell key", "INI file",
                      "data folder", "EDID", "firmware table", "digest file",
                      "profile NVX-P3.icc", "golden file", "monitors", "platform library",
                      "light sensor", "service Winmgmt"):
            self.assertIn(check, checks)
        later = {row["check"].split(":")[0] for row in outcomes[2].report["checks"]}
        self.assertIn("P3.bin", later)

    def test_it_changes_nothing(self):
        reports = self.done("settings export", "doctor", "get temperature.value",
                            description={"ini": {"TEMPERATURE": {"CurrentTemperatureSlider": "5"}}})
        self.assertEqual(reports[0]["settings"]["temperature.value"]["source"], "ini")
        fresh = self.done("doctor", "get temperature.value",
                          description={"ini": {"TEMPERATURE": {"CurrentTemperatureSlider": "5"}}})
        self.assertEqual(fresh[1]["source"], "ini")

    def test_troubles(self):
        troubles = {
            "light sensor": {"lightSensors": 0},
            "service Winmgmt": {"winmgmt": False},
            "firmware table": {"panel": {"firmwareLuts": []}},
        }
        for check, description in troubles.items():
            outcome, = self.session("doctor", description=description)
            self.check(outcome.report, "doctor")
            rows = [row for row in outcome.report["checks"]
                    if row["check"].startswith(check) and row["advice"]]
            self.assertTrue(rows, (check, outcome.report["checks"]))
            self.assertEqual(outcome.status, 0 if check == "light sensor" else 1)

    def test_the_bug_report(self):
        serial = {"panel": {"serial": [0xDE, 0xAD, 0xBE, 0xEF]}}
        plain, masked = self.path("plain.json"), self.path("masked.json")
        self.session("set-mode p3", f"doctor --report {plain}", f"doctor --mask --report {masked}",
                     description=serial)
        plain, masked = [(self.folder / name).read_text() for name in ("plain.json", "masked.json")]
        for text in (plain, masked):
            self.check(json.loads(text), "bug-report")
        self.assertIn("DEADBEEF", plain.upper())
        self.assertNotIn("DEADBEEF", masked.upper())
        self.assertIn("********", masked)
        self.assertTrue(json.loads(masked)["log"])
        names = [row["file"] for row in json.loads(plain)["files"]]
        self.assertIn("P3.bin", names)

    def test_on_the_machine_itself(self):
        result = run("--json", "doctor")
        self.check(result.report, "doctor")
        self.assertEqual((result.status, len(result.sentences)), (1, 1), result.error)


class Documents(TestCase):
    """What docs/veloractl.md shows works."""

    def setUp(self):
        super().setUp()
        self.text = (TOP / "docs/veloractl.md").read_text()
        self.blocks = re.findall(r"```json\n(.*?)```", self.text, re.DOTALL)

    def test_the_modes_file(self):
        file = self.write("modes.json", self.blocks[0])
        reports = self.done("modes", "set-mode p3", options=["--modes", file])
        self.assertEqual(reports[0]["source"], file)

    def test_the_description(self):
        reports = self.done("modes", "doctor", "set-mode p3",
                            description=json.loads(self.blocks[1]))
        self.assertEqual(reports[0]["setType"], 3)
        self.assertTrue(reports[2]["panel"]["gammaLut"])

    def test_the_readings(self):
        csv = re.search(r"    lux,kelvin,time\n(    .*\n)+", self.text)[0].replace("    ", "")
        report, = self.done(f"natural run {self.write('readings.csv', csv)}")
        self.assertEqual([row["lux"] for row in report["readings"]], [300, 20, "gone", "back", 900])

    def test_the_first_steps(self):
        session = re.search(r"run -\n((?:    .+\n)+)", self.text)[1]
        lines = [re.split(r" {4,}", line.strip())[0] for line in session.splitlines()]
        lines = [line.replace("chart.png", self.path("chart.png")) for line in lines]
        reports = self.done(*lines)
        self.assertEqual([report["value"] for report in reports[:3]], [90, 120, 120])

    def test_every_command_is_there(self):
        words = self.text
        for command in COMMANDS - {"log", "version", "telemetry", "switch-user", "temperature",
                                   "eye-strength", "extend", "vendor", "user renumber"}:
            self.assertIn(command, words)


class Tour(TestCase):
    @classmethod
    def setUpClass(cls):
        cls.build = TOP / "build/windows/tests/results"
        cls.build.mkdir(parents=True, exist_ok=True)
        cls.html = cls.build / "tour.html"
        cls.result = run("--json", "tour", "--report", "Z:" + str(cls.html))

    def test_every_act_ends_as_announced(self):
        self.assertEqual(self.result.status, 0, self.result.error)
        self.check(self.result.report, "tour")
        self.assertEqual(self.result.report["asAnnounced"], self.result.report["of"])

    def test_every_family_of_exports_is_in_it(self):
        acts = " / ".join(act["act"] for act in self.result.report["acts"])
        for family in ("Settings", "Feature flags", "change event", "by gamma LUT and 3D LUT",
                       "by PCC matrix", "on an external monitor", "WhitePointFineTue",
                       "SaveUserSelfColor", "EditUserColorField", "DeleteUserSelfColor",
                       "SyncSysColorField", "SyncCurrentModeIccFile", "ResetColorField",
                       "colour circle", "Fusion", "Natural colour", "SetMonitorExtendMode",
                       "telemetry", "GetVendor"):
            self.assertIn(family, acts)

    def test_the_report_is_one_file(self):
        html = self.html.read_text(encoding="utf-8")
        self.assertEqual(html.count("<section"), self.result.report["of"])
        for url in re.findall(r'(?:src|href)="([^"]*)"', html):
            self.assertTrue(url.startswith(("data:", "#")), url[:60])
        self.assertNotIn("<script", html)
        for act in self.result.report["acts"]:
            self.assertIn(act["act"].replace("&", "&amp;"), html)

    def test_its_pictures(self):
        html = self.html.read_text(encoding="utf-8")
        pngs = [base64.b64decode(data) for data in
                re.findall(r"data:image/png;base64,([A-Za-z0-9+/=]+)", html)]
        svgs = [base64.b64decode(data).decode() for data in
                re.findall(r"data:image/svg\+xml;base64,([A-Za-z0-9+/=]+)", html)]
        self.assertGreaterEqual(len(pngs), 8)
        self.assertGreaterEqual(len(svgs), 4)
        for png in pngs:
            self.assertEqual(png[:8], b"\x89PNG\r\n\x1a\n")
            self.assertIn(struct.unpack(">II", png[16:24]), [(480, 320), (320, 320)])
        for svg in svgs:
            self.assertIn("<svg", svg)
        # What each mode shows is different.
        self.assertGreater(len(set(pngs)), 6)

    def test_a_panel_of_ones_own(self):
        outcome = run("tour", "--edid", self.write("bad.hex", "00 FF"))
        self.assertEqual((outcome.status, len(outcome.sentences)), (3, 1), outcome.error)
        outcome = run("--virtual", "tour")
        self.assertEqual(outcome.status, 2)

    @unittest.skipUnless(shutil.which("chromium"), "chromium is not installed")
    def test_a_browser_has_nothing_to_say(self):
        profile = self.folder / "profile"
        process = subprocess.run(
            ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--enable-logging=stderr",
             "--v=0", f"--user-data-dir={profile}", "--dump-dom", self.html.as_uri()],
            capture_output=True, timeout=300)
        shutil.rmtree(profile, ignore_errors=True)
        self.assertEqual(process.returncode, 0)
        self.assertIn(b"A tour of VeloraCtlApi", process.stdout)
        console = [line for line in process.stderr.decode(errors="replace").splitlines()
                   if "CONSOLE" in line]
        self.assertEqual(console, [])
