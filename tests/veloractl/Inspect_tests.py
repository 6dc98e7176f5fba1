"""Files, the panel and its profiles: inspect, dump-firmware, lut convert, panel, profiles."""

import hashlib
import re
import struct
import unittest
import zlib

from tool import TestCase, run

DATA = "C:\\ProgramData\\Comms\\NxVelora\\"
PROGRAM = "C:\\Program Files\\Norvex\\NxVelora\\"


def with_hash(block, hashed):
    """The block's first bytes with the hash that fits them."""
    return block[:hashed] + hashlib.sha256(block[:hashed]).digest() + block[hashed + 32:]


def result_of(report, check):
    return next((row["result"] for row in report["checks"] if row["check"] == check), None)


def pixels_of(png):
    """Width, height and rows of RGB pixels (ISO/IEC 15948: filters undone)."""
    assert png[:8] == b"\x89PNG\r\n\x1a\n"
    at, data = 8, b""
    while at < len(png):
        size, kind = struct.unpack(">I4s", png[at:at + 8])
        body = png[at + 8:at + 8 + size]
        assert struct.unpack(">I", png[at + 8 + size:at + 12 + size])[0] == zlib.crc32(kind + body)
        if kind == b"IHDR":
            width, height = struct.unpack(">II", body[:8])
            assert body[8:10] == b"\x08\x02", "8 bits, RGB"
        elif kind == b"IDAT":
            data += body
        at += 12 + size
    raw = zlib.decompress(data)
    rows, before = [], bytes(3 * width)
    for y in range(height):
        line = bytearray(raw[y * (3 * width + 1):(y + 1) * (3 * width + 1)])
        filter_type, line = line[0], line[1:]
        for i in range(3 * width):
            left = line[i - 3] if i >= 3 else 0
            up, corner = before[i], before[i - 3] if i >= 3 else 0
            if filter_type == 1:
                add = left
            elif filter_type == 2:
                add = up
            elif filter_type == 3:
                add = (left + up) // 2
            elif filter_type == 4:
                guess = left + up - corner
                add = min((abs(guess - left), 0, left), (abs(guess - up), 1, up),
                          (abs(guess - corner), 2, corner))[2]
            else:
                add = 0
            line[i] = (line[i] + add) & 0xFF
        before = bytes(line)
        rows.append(before)
    return width, height, rows


class FileTest(TestCase):
    """With the virtual notebook's files at hand."""

    @classmethod
    def setUpClass(cls):
        cls.files = {}

    def files_of_a_notebook(self):
        """The firmware table, as dumped; its blocks are where its control header says."""
        if "dlut.bin" not in FileTest.files:
            report = self.done(f"dump-firmware {self.path('dlut.bin')}")[0]
            self.check(report, "dump-firmware")
            self.assertEqual((report["size"], report["blocks"]), (123693, 5))
            FileTest.files["dlut.bin"] = (self.folder / "dlut.bin").read_bytes()
        table = FileTest.files["dlut.bin"]
        # 52 bytes, a control header of 16, then blocks of 24725: base, P3, sRGB, e-book, gamma.
        names = ["base.bin", "P3.bin", "sRGB.bin", "EBOOK.bin", "Gamma.bin"]
        blocks = {name: table[68 + 24725 * i:68 + 24725 * (i + 1)] for i, name in enumerate(names)}
        return {"dlut.bin": table, "Golden.bin": table[52:], **blocks}

    def inspect(self, name, content, *options, virtual=True):
        path = self.write(name, content)
        result = run(*(["--virtual"] if virtual else []), "--json", "inspect", path, *options)
        if result.out:
            self.check(result.report, "inspect")
        return result


FileTest.files = {}


class Inspect(FileTest):
    def test_good_files_of_the_notebook(self):
        lines = ["set-mode p3", "set-mode ebook", "user save Reading --white 0.3457 0.3585",
                 "user list"]
        mode = self.done(*lines)[-1]["userModes"][0]
        files = {DATA + "P3.bin": "LUT bin file", DATA + "EBOOK.bin": "LUT bin file",
                 PROGRAM + "Golden.bin": "golden file", PROGRAM + "IccDigest.bin": "digest file",
                 PROGRAM + "Icc\\NVX-P3.icc": "ICC profile", mode["profile"]: "user profile",
                 DATA + f"User\\3dlut\\{mode['id']}.bin": "user LUT file",
                 DATA + f"User\\gammalut\\{mode['id']}.bin": "user LUT file"}
        reports = self.done(*lines, *[f'inspect "{path}"' for path in files])[len(lines):]
        for (path, kind), report in zip(files.items(), reports):
            self.check(report, "inspect")
            self.assertEqual((report["kind"], report["verdict"]), (kind, "good"), path)
            self.assertEqual(report["the library would log"], [], path)

    def test_a_firmware_table_block_by_block(self):
        table = self.files_of_a_notebook()["dlut.bin"]
        result = self.inspect("dlut.bin", table)
        self.assertEqual((result.status, result.error), (0, ""))
        self.assertEqual([row["LUT"] for row in result.report["blocks"]],
                         ["base", "P3", "sRGB", "e-book", "gamma"])
        self.assertTrue(all(row["panel"] == "this one" for row in result.report["blocks"]))
        block = self.inspect("dlut.bin", table, "--block", "3").report
        self.assertEqual((block["kind"], block["size"]), ("LUT bin file", 24725))
        self.assertEqual(self.inspect("dlut.bin", table, "--block", "6").status, 2)

    def test_a_table_as_text(self):
        path = self.write("P3.bin", self.files_of_a_notebook()["P3.bin"])
        text = run("--virtual", "inspect", path).out.replace("\r", "")
        self.assertIn("verdict                good\n", text)
        self.assertRegex(text, r"\n  hash +holds +SHA-256 of the first 24693 bytes\n")

    def test_damaged_files_say_what_to_do(self):
        files = self.files_of_a_notebook()
        p3 = bytearray(files["P3.bin"])
        p3[5000] ^= 1
        table = bytearray(files["dlut.bin"])
        table[60] ^= 1
        for name, content, check in [
                ("P3.bin", bytes(p3), "hash"), ("P3.bin", files["P3.bin"][:-1], "length"),
                ("P3.bin", files["sRGB.bin"], "type for the name"),
                ("x.bin", with_hash(files["P3.bin"][:64] + b"\x05" + files["P3.bin"][65:], 24693),
                 "type"),
                ("dlut.bin", bytes(table), "control checksum"),
                ("Golden.bin", files["Golden.bin"][:-30000], "length")]:
            result = self.inspect(name, content)
            self.assertEqual(result.status, 1, (name, check))
            self.assertEqual(result.report["verdict"], "damaged")
            self.assertEqual(result_of(result.report, check), "fails", (name, check))
            self.assertEqual(len(result.sentences), 1)
            self.assertIn("is damaged. ", result.sentences[0])

    def test_cut_at_any_place(self):
        table = self.files_of_a_notebook()["P3.bin"]
        lines = []
        for size in [0, 1, 63, 64, 65, 69, 70, 127, 128, 129, 5279, 5280, 19780, 24692, 24724]:
            lines.append(f"inspect {self.write(f'{size}.bin', table[:size])}")
            lines.append(f"inspect --as lut-bin {self.path(f'{size}.bin')}")
        for outcome in self.session(*lines):
            self.assertIn(outcome.status, (1, 3), outcome.command)
            self.check(outcome.report, "inspect")
            self.assertTrue(outcome.error)

    def test_another_panel(self):
        content = self.files_of_a_notebook()["P3.bin"]
        other = {"panel": {"vendor": "ABC", "week": 9}}
        path = self.write("P3.bin", content)
        outcome = self.session(f"inspect {path}", description=other)[0]
        self.assertEqual(outcome.status, 1)
        self.assertEqual(outcome.report["verdict"], "of another panel")
        self.assertEqual([row["equal"] for row in outcome.report["panel"]],
                         [True, False, False, True])
        self.assertIn("the vendor differs first", str(outcome.report["checks"]))

    def test_a_given_edid(self):
        edid = bytearray(bytes.fromhex("00ffffffffffff00") + bytes(120))
        edid[8:10] = b"\x3a\xd8"  # NVX: 14, 22, 24 in five bits each
        edid[12:18] = bytes([1, 2, 3, 4, 8, 34])
        edid[23] = 120
        edid[25:35] = bytes.fromhex("0000a3543c4226" "0f5054")[:10]
        edid[127] = -sum(edid) & 0xFF
        path = self.write("edid.bin", bytes(edid))
        content = self.files_of_a_notebook()["P3.bin"]
        report = self.inspect("P3.bin", content, "--edid", path, virtual=False).report
        self.assertEqual(result_of(report, "panel"), "holds")
        self.assertEqual(report["panel source"], path)
        hexadecimal = self.write("edid.hex", edid.hex(" "))
        report = self.inspect("P3.bin", content, "--edid", hexadecimal, virtual=False).report
        self.assertEqual(result_of(report, "panel"), "holds")

    def test_edids_of_real_machines(self):
        edid = bytearray(bytes.fromhex("00ffffffffffff00") + bytes(120))
        edid[8:10] = b"\x3a\xd8"
        edid[12:18] = bytes([0, 0, 0, 0, 255, 34])
        edid[23] = 255
        # Red and green swapped: 0.3, 0.6 and 0.64, 0.33.
        edid[27:35] = bytes([0x4D, 0x9A, 0xA4, 0x55, 0x26, 0x0F, 0x50, 0x54])
        edid[127] = (-sum(edid) & 0xFF) ^ 1
        report = self.inspect("edid.bin", bytes(edid)).report
        self.assertEqual(report["verdict"], "good, with warnings")
        for check in ["serial number", "week", "gamma", "checksum", "primaries"]:
            self.assertEqual(result_of(report, check), "warning", check)
        self.assertEqual(len(report["colours"]["matrix"]), 3)

    def test_digest_and_profiles(self):
        reports = self.done(
            f'inspect "{PROGRAM}IccDigest.bin" --profiles "{PROGRAM}Icc"',
            f'inspect "{PROGRAM}Icc\\NVX-P3.icc" --digest "{PROGRAM}IccDigest.bin"')
        self.assertEqual([row["profile"] for row in reports[0]["records"]], ["unchanged"] * 3)
        self.assertEqual(result_of(reports[1], "digest"), "holds")

    def test_files_that_are_none(self):
        result = self.inspect("notes.txt", "just some text")
        self.assertEqual((result.status, result.report["kind"]), (3, "unknown"))
        self.assertIn("is none of the library's files", result.error)
        missing = run("--virtual", "inspect", self.path("missing.bin"))
        self.assertEqual((missing.status, missing.out), (3, ""))
        self.assertEqual(missing.sentences, [f"veloractl: {self.path('missing.bin')} can't be read"])
        self.assertEqual(run("inspect").status, 2)
        self.assertEqual(run("inspect", "x", "--as", "poem").status, 2)
        bad = self.write("bad.hex", "00 11")
        self.assertEqual(run("inspect", bad, "--edid", bad).status, 3)


class Pictures(FileTest):
    def draw(self, name, content, *options):
        png, svg = self.folder / "x.png", self.folder / "x.svg"
        result = self.inspect(name, content, *options, "--png", self.path("x.png"), "--svg",
                              self.path("x.svg"))
        self.assertEqual((result.status, result.error), (0, ""))
        width, height, rows = pixels_of(png.read_bytes())
        picture = result.report["picture"]
        self.assertEqual((width, height), (picture["width"], picture["height"]))
        return svg.read_text(), rows

    def pixel(self, rows, x, y):
        return tuple(rows[y][3 * x:3 * x + 3])

    def test_gamut_and_slices_of_a_3d_lut(self):
        svg, rows = self.draw("P3.bin", self.files_of_a_notebook()["P3.bin"])
        # The diagram begins at 560. Of x and y: 600 + 600 x, 40 + 600 (0.9 - y). The panel has P3's
        # primaries, rounded to 1/1024, and so has the LUT on it.
        triangles = [[tuple(map(float, point.split(","))) for point in points.split()]
                     for points in re.findall(r"<polygon[^>]*points=\"([^\"]*)\"", svg)]
        triangles = [points for points in triangles if len(points) == 3]
        self.assertEqual(len(triangles), 2)
        primaries = [(0.68, 0.32), (0.265, 0.69), (0.15, 0.06)]
        for points in triangles:
            for (x, y), (cx, cy) in zip(points, primaries):
                self.assertAlmostEqual(x, 600 + 600 * cx, delta=1.5)
                self.assertAlmostEqual(y, 40 + 600 * (0.9 - cy), delta=1.5)
        # White, D65, is a dot of the LUT's colour.
        self.assertEqual(self.pixel(rows, int(600 + 600 * 0.3127), int(40 + 600 * (0.9 - 0.329))),
                         (0x20, 0x60, 0xC0))
        # Below them 17 slices of 17 cells of 7: the last cell of the last slice is white, the first
        # of the first black. They begin at 620, the titles take 40.
        self.assertEqual(self.pixel(rows, 40 + 3, 620 + 40 + 16 * 7 + 3), (0, 0, 0))
        last = (40 + 7 * 133 + 16 * 7 + 3, 620 + 40 + 133 + 3)
        self.assertEqual(self.pixel(rows, *last), (255, 255, 255))
        # Full red, no blue: the first slice's bottom right.
        red = self.pixel(rows, 40 + 16 * 7 + 3, 620 + 40 + 16 * 7 + 3)
        self.assertGreater(red[0], 250)
        self.assertLess(max(red[1:]), 5)

    def test_gamma_curves(self):
        content = self.files_of_a_notebook()["Gamma.bin"]
        svg, _ = self.draw("Gamma.bin", content)
        lines = re.findall(r"<polyline[^>]*stroke=\"(#\w+)\"[^>]*points=\"([^\"]*)\"", svg)
        words = struct.unpack(">1024I", content[128:128 + 4096])
        extension = content[4224:5248]
        for number, (colour, points) in enumerate(lines[:3]):
            self.assertEqual(colour, ["#d02020", "#108030", "#2040d0"][number])
            points = [tuple(map(float, point.split(","))) for point in points.split()]
            self.assertEqual(len(points), 94)  # every eleventh level
            for i, (x, y) in enumerate(points):
                level = 11 * i
                value = [words[level] >> 24 | extension[level] << 8, words[level] >> 12 & 0xFFF,
                         words[level] & 0xFFF][number]
                self.assertAlmostEqual(x, 40 + 480 * level / 1023, delta=0.01)
                self.assertAlmostEqual(y, 520 - 480 * value / 4095, delta=0.01)

    def test_the_difference_of_two(self):
        files = self.files_of_a_notebook()
        first = self.write("a.bin", files["P3.bin"])
        content = bytearray(files["P3.bin"])
        content[128 + 3] ^= 0x40  # entry 0: blue, 64
        second = self.write("b.bin", bytes(content))
        result = run("--json", "inspect", first, "--diff", second, "--png", self.path("d.png"))
        self.check(result.report, "inspect-diff")
        self.assertEqual(result.report["entries that differ"], 1)
        self.assertEqual(result.report["largest difference"], 64)
        _, _, rows = pixels_of((self.folder / "d.png").read_bytes())
        # Slices begin at 560; black is the first slice's bottom left.
        self.assertEqual(self.pixel(rows, 43, 560 + 40 + 16 * 7 + 3), (110, 0, 0))
        self.assertEqual(self.pixel(rows, 43, 560 + 40 + 15 * 7 + 3), (255, 255, 255))
        gamma = self.write("g.bin", files["Gamma.bin"])
        refused = run("inspect", first, "--diff", gamma)
        self.assertEqual(refused.status, 2)
        self.assertEqual(refused.sentences,
                         ["veloractl: a 3D LUT and a gamma LUT can't be compared"])

    def test_nothing_to_draw(self):
        digest = b"P3.icc".ljust(67, b"\0") + bytes(35)
        result = self.inspect("digest.bin", digest, "--png", self.path("x.png"))
        self.assertEqual(result.status, 3)
        self.assertIn("nothing to draw", result.error)
        self.assertFalse((self.folder / "x.png").exists())
        content = self.files_of_a_notebook()["P3.bin"]
        self.assertEqual(self.inspect("P3.bin", content, "--svg", "Q:\\no\\x.svg").status, 4)


class Convert(FileTest):
    def convert(self, *arguments):
        result = run("--json", "lut", "convert", *arguments)
        if result.status == 0:
            self.check(result.report, "lut-convert")
        return result

    def test_there_and_back(self):
        for name in ["P3.bin", "Gamma.bin"]:
            content = self.files_of_a_notebook()[name]
            if name == "Gamma.bin":
                content = content[:5280]  # without what fills the stride
            lut = self.write(name, content)
            there = self.convert(lut, self.path("x.cube"))
            self.assertEqual((there.status, there.report["exact"]), (0, True), there.error)
            back = self.convert(self.path("x.cube"), self.path("back.bin"), "--like", lut)
            self.assertEqual((back.status, back.report["exact"]), (0, True), back.error)
            self.assertEqual((self.folder / "back.bin").read_bytes(), content)

    def test_the_text_by_another_reader(self):
        content = self.files_of_a_notebook()["P3.bin"]
        self.convert(self.write("P3.bin", content), self.path("x.cube"))
        lines = (self.folder / "x.cube").read_text().splitlines()
        entries = [list(map(float, line.split())) for line in lines if line[0].isdigit()]
        self.assertEqual(len(entries), 4913)
        words = struct.unpack(">4913I", content[128:128 + 4 * 4913])
        extension = content[19780:19780 + 4913]
        for number, entry in enumerate(entries):
            r, g, b = number % 17, number // 17 % 17, number // 289
            own = r * 289 + g * 17 + b
            value = [words[own] >> 24 | extension[own] << 8, words[own] >> 12 & 0xFFF,
                     words[own] & 0xFFF]
            self.assertEqual([round(1023 * part) for part in entry], value)

    def test_a_users_lut(self):
        content = self.files_of_a_notebook()["sRGB.bin"]
        self.convert(self.write("sRGB.bin", content), self.path("x.cube"))
        self.convert(self.path("x.cube"), self.path("user.bin"))
        user = (self.folder / "user.bin").read_bytes()
        self.assertEqual(user[:70], bytes(64) + bytes.fromhex("0b0c00005ff5"))
        self.assertEqual(user[128:24693], content[128:24693])
        self.assertEqual(user, with_hash(user, 24693))

    def test_refusals(self):
        content = self.files_of_a_notebook()["P3.bin"]
        lut = self.write("P3.bin", content)
        self.convert(lut, self.path("x.cube"))
        cube = (self.folder / "x.cube").read_text()
        other_size = self.write("33.cube", cube.replace("SIZE 17", "SIZE 33"))
        bad = self.write("bad.bin", content[:-1])
        for arguments, status, part in [
                ((other_size, self.path("y.bin")), 3, "line 2: the size is 33"),
                ((bad, self.path("y.cube")), 3, "holds no whole LUT"),
                ((lut, self.path("y.bin")), 2, "one of the two is to be a .cube"),
                ((self.path("x.cube"), self.path("y.cube")), 2, "one of the two"),
                ((self.path("x.cube"), self.path("y.bin"), "--like", bad), 3, "no whole LUT"),
                ((lut, "Q:\\no\\y.cube"), 4, "can't be written")]:
            result = self.convert(*arguments)
            self.assertEqual((result.status, result.out), (status, ""), arguments)
            self.assertEqual(len(result.sentences), 1)
            self.assertIn(part, result.sentences[0])
        self.assertFalse((self.folder / "y.bin").exists())
        self.assertFalse((self.folder / "y.cube").exists())
        damaged = bytearray(content)
        damaged[3000] ^= 1
        result = self.convert(self.write("d.bin", bytes(damaged)), self.path("y.cube"))
        self.assertEqual(result.status, 3)
        self.assertIn("is damaged", result.error)


class Panel(TestCase):
    def panel(self, description=None):
        outcome = self.session("panel", description=description)[0]
        self.check(outcome.report, "panel")
        return outcome

    def test_one_monitor(self):
        outcome = self.panel({"monitors": []})
        self.assertEqual((outcome.status, outcome.error), (0, ""))
        report = outcome.report
        self.assertEqual(report["rule"].split(":")[0], "one monitor is connected")
        self.assertEqual(report["registry path"], "SYSTEM\\CurrentControlSet\\Enum\\DISPLAY\\NVX1234"
                                                  "\\4&1a2b3c&0&UID0\\Device Parameters\\")
        self.assertEqual([row["chosen"] for row in report["WMI"]], [True])
        self.assertTrue(all(row["equal"] for row in report["panel"]))
        self.assertEqual([row["first difference"] for row in report["firmware blocks"]], ["-"] * 5)
        self.assertEqual(report["library log"], [])

    def test_several_monitors(self):
        report = self.panel().report
        self.assertIn("none is the maker's", report["rule"])
        self.assertEqual([row["chosen"] for row in report["WMI"]], [False, True])

    def test_the_matrix_and_what_clips(self):
        # sRGB's own panel: its matrix (IEC 61966-2-1), and nothing of sRGB lost but for the EDID's
        # 1/1024.
        panel = {"red": [0.64, 0.33], "green": [0.3, 0.6], "blue": [0.15, 0.06]}
        colours = self.panel({"panel": panel}).report["colours"]
        for row, wanted in zip(colours["matrix"], [(0.4124, 0.3576, 0.1805),
                                                   (0.2126, 0.7152, 0.0722),
                                                   (0.0193, 0.1192, 0.9505)]):
            for name, value in zip(["red", "green", "blue"], wanted):
                self.assertAlmostEqual(row[name], value, delta=0.003)
        clipping = {row["name"]: row for row in colours["user LUT clipping"]}
        self.assertLess(clipping["sRGB"]["most above"], 0.01)
        self.assertGreater(clipping["BT.2020"]["per cent"], 50)

    def test_troubled_edids(self):
        report = self.panel({"panel": {"serial": [0, 0, 0, 0], "week": 255}}).report
        self.assertEqual(result_of(report, "serial number"), "warning")
        self.assertEqual(result_of(report, "week"), "warning")
        self.assertEqual(result_of(report, "panel"), "holds", "the block says week 00")

    def test_it_leaves_no_trace(self):
        # The first export stores defaults, as any first look does.
        outcomes = self.session("settings export " + self.path("first.json"),
                                "settings export " + self.path("before.json"), "panel",
                                "settings export " + self.path("after.json"))
        self.assertEqual([outcome.status for outcome in outcomes], [0] * 4)
        self.assertEqual((self.folder / "before.json").read_text(),
                         (self.folder / "after.json").read_text())

    def test_a_machine_without_wmi(self):
        result = run("--json", "panel")  # Wine has no monitor with a device id
        self.check(result.report, "panel")
        self.assertEqual(result.status, 1)
        self.assertEqual(result.report["registry key"], "none was opened")
        self.assertEqual(len(result.sentences), 1)

    def test_a_picture(self):
        self.done(f"panel --svg {self.path('p.svg')} --png {self.path('p.png')}")
        self.assertIn("the panel, by its EDID", (self.folder / "p.svg").read_text())
        self.assertEqual(pixels_of((self.folder / "p.png").read_bytes())[:2], (560, 620))


class Profiles(TestCase):
    def test_before_and_after_a_switch(self):
        first, _, second = self.done("profiles", "set-mode p3", "profiles")
        for report in (first, second):
            self.check(report, "profiles")
            self.assertEqual({row["state"] for row in report["presets"]}, {"good"})
            self.assertEqual(len(report["presets"]), 9)
        self.assertIsNone(first["library"]["profile"])
        self.assertEqual(second["library"]["profile"], "NVX-P3.icc")
        self.assertTrue(all(row["default"] is None for row in first["associations"]),
                        "the first run has associated nothing")
        panel = [row for row in second["associations"] if row["target"]]
        self.assertEqual([(row["scope"], row["default"], row["profiles"], row["in force"])
                          for row in panel],
                         [("current user", "NVX-P3.icc", ["NVX-P3.icc"], True),
                          ("all users", None, [], False)])
        associated = {row["mode"] for row in second["presets"] if row["associated"]}
        self.assertEqual(associated, {"p3", "digital", "photo", "design", "digital-d65"})

    def test_the_step_that_fails(self):
        modes = {"setType": 1, "digestFile": PROGRAM + "IccDigest.bin", "goldenFile": "\\Golden.bin",
                 "modes": [{"mode": "srgb", "profile": PROGRAM + "Icc\\missing.icc"},
                           {"mode": "p3", "profile": PROGRAM + "Golden.bin", "gamut": "p3"},
                           {"mode": "web", "profile": PROGRAM + "Icc\\NVX-sRGB.icc"},
                           {"mode": "photo", "gamut": "p3"}]}
        outcome = self.session("profiles", "shown",
                               options=("--modes", self.write("modes.json", modes)))[0]
        self.check(outcome.report, "profiles")
        self.assertEqual(outcome.status, 1)
        rows = {row["mode"]: row for row in outcome.report["presets"]}
        self.assertEqual(rows["srgb"]["state"], "ResultFileNotFound")
        self.assertIn("Not Found!", rows["srgb"]["fails at"])
        self.assertEqual(rows["p3"]["state"], "ResultIccError")
        self.assertIn("Icc File Be Modified!", rows["p3"]["fails at"])
        self.assertEqual(rows["web"]["state"], "good")
        self.assertEqual(rows["photo"]["state"], "without a profile")

    def test_user_modes(self):
        outcomes = self.session("user save Reading --white 0.3457 0.3585", "profiles")
        report = outcomes[1].report
        self.check(report, "profiles")
        self.assertEqual([row["state"] for row in report["user modes"]], ["good"])
        self.assertIn("_usr.icc", report["library"]["profile"])

    def test_a_system_without_the_colour_system(self):
        result = run("profiles")  # Wine lacks it
        self.assertEqual((result.status, result.out), (4, ""))
        self.assertEqual(result.sentences,
                         ["veloractl: this system's mscms.dll has no WcsGetDefaultColorProfile"])


if __name__ == "__main__":
    unittest.main()
