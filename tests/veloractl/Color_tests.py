"""Colour modes, user modes, fine tuning, fusion, displays."""

import struct

from tool import TestCase

SRGB, P3 = "NVX-sRGB.icc", "NVX-P3.icc"
PROFILES = "C:\\Program Files\\Norvex\\NxVelora\\Icc\\"


def modes_file(**changes):
    described = {"setType": 1, "defaultMode": "srgb",
                 "digestFile": "C:\\Program Files\\Norvex\\NxVelora\\IccDigest.bin",
                 "goldenFile": "\\Golden.bin",
                 "modes": [{"mode": "srgb", "profile": PROFILES + SRGB, "gamut": "srgb"},
                           {"mode": "p3", "profile": PROFILES + P3, "gamut": "p3",
                            "gamma": 2.2, "gains": [1, 1, 1],
                            "matrix": [1, 0, 0, 0, 1, 0, 0, 0, 1]}]}
    described.update(changes)
    return described


class Modes(TestCase):
    def test_each_preset_by_the_3d_lut(self):
        names = ["srgb", "p3", "web", "digital", "photo", "design", "ebook", "hdtv", "digital-d65"]
        lines = ["modes"]
        for name in names:
            lines += [f"set-mode {name}", "get color-mode.current"]
        reports = self.done(*lines)
        self.check(reports[0], "modes")
        self.assertEqual([row["mode"] for row in reports[0]["modes"]], names)
        numbers = {row["mode"]: row["number"] for row in reports[0]["modes"]}
        for name, switched, stored in zip(names, reports[1::2], reports[2::2]):
            self.check(switched, "set-mode")
            self.assertTrue(switched["panel"]["lut3D"])
            self.assertFalse(switched["panel"]["gammaLut"])
            self.assertEqual(switched["panel"]["profile"],
                             P3 if name in ("p3", "digital", "photo", "design", "digital-d65")
                             else SRGB)
            self.assertEqual(stored["value"], numbers[name])

    def test_the_four_ways(self):
        shows = {0: (False, False, False), 1: (True, False, False), 2: (False, False, True),
                 3: (True, True, False)}
        for way, (lut3d, gamma, matrix) in shows.items():
            # Docked for DDC/CI: without the maker's monitor in front the library stops.
            outcomes = self.session("set-mode p3", description={"setType": way})
            if way == 0:
                self.refused(outcomes[0], 1, "SetColorField gave 17 (ResultColorFieldError)")
                continue
            panel = outcomes[0].report["panel"]
            self.assertEqual((panel["lut3D"], panel["gammaLut"], panel["matrix"]),
                             (lut3d, gamma, matrix), way)

    def test_mode_zero_and_numbers(self):
        reports = self.done("set-mode 2", "set-mode 0", "set-mode none")
        self.assertTrue(reports[0]["panel"]["lut3D"])
        self.assertFalse(reports[1]["panel"]["lut3D"])
        self.assertEqual(reports[2]["mode"], "none")

    def test_a_failed_switch_stores_nothing(self):
        outcomes = self.session("set-mode p3", "set-mode adobe", "get color-mode.current")
        self.refused(outcomes[1], 1, "ResultColorFieldError")
        self.assertEqual(outcomes[2].report["value"], 2)

    def test_the_setting_can_be_kept(self):
        reports = self.done("set-mode srgb", "set-mode p3 --keep-setting",
                            "get color-mode.current")
        self.assertEqual(reports[2]["value"], 1)

    def test_unknown_modes(self):
        outcomes = self.session("set-mode purple", "set-mode 12", "set-mode -1", "set-mode user",
                                "set-mode 11", "set-mode")
        self.refused(outcomes[0], 2, 'there is no mode "purple"')
        self.refused(outcomes[1], 2, 'there is no mode "12"')
        self.assertEqual(outcomes[2].status, 2)
        self.refused(outcomes[3], 2, "user set")
        self.refused(outcomes[4], 2, "user set")
        self.refused(outcomes[5], 2, "MODE")

    def test_sync_and_reset(self):
        reports = self.done("set-mode p3", "set color-mode.current 1", "sync",
                            "get color-mode.current", "set color-mode.reset 1",
                            "set color-mode.set-type 1", "reset", "sync --mode-decides")
        self.check(reports[2], "sync")
        self.assertEqual(reports[2]["mode"], "p3")
        self.assertEqual(reports[3]["value"], 2)
        self.check(reports[6], "reset")
        self.assertFalse(reports[6]["panel"]["lut3D"])
        self.check(reports[7], "sync")

    def test_reset_without_a_mode_to_go_to(self):
        outcome, = self.session("reset")
        self.refused(outcome, 1, "ResetColorField gave 2 (ResultNotSet)")

    def test_a_described_machine(self):
        file = self.write("modes.json", modes_file())
        reports = self.done("modes", "set-mode p3", options=["--modes", file])
        self.assertEqual([row["mode"] for row in reports[0]["modes"]], ["srgb", "p3"])
        self.assertEqual(reports[0]["source"], file)
        self.assertEqual(reports[1]["panel"]["profile"], P3)
        missing = modes_file(modes=[{"mode": "p3", "profile": PROFILES + "none.icc"}])
        outcome, = self.session("set-mode p3",
                                options=["--modes", self.write("modes.json", missing)])
        self.refused(outcome, 1, "SetColorField gave 15 (ResultFileNotFound)")

    def test_descriptions_of_modes_that_are_none(self):
        bad = {
            "setType is not from 0 to 3": modes_file(setType=4),
            "setType is no number": modes_file(setType="3D"),
            "setType is no whole number": modes_file(setType=1.5),
            "defaultMode is none": modes_file(defaultMode="purple"),
            "colour is not known": modes_file(colour=1),
            "modes is no list of objects": modes_file(modes=[1]),
            "modes[0].mode is none": modes_file(modes=[{"mode": "purple"}]),
            "modes[0].mode is \"user\"": modes_file(modes=[{"mode": "user"}]),
            "modes[0].gamut is none of": modes_file(modes=[{"mode": "p3", "gamut": "wide"}]),
            "modes[0].profile has more than 100 bytes":
                modes_file(modes=[{"mode": "p3", "profile": "x" * 101}]),
            "modes[0].gains is no list of 3 numbers":
                modes_file(modes=[{"mode": "p3", "gains": [1, 1]}]),
            "modes[0].matrix is no list of 9 numbers":
                modes_file(modes=[{"mode": "p3", "matrix": [1]}]),
            "digestFile is no text": modes_file(digestFile=5),
        }
        for sentence, content in bad.items():
            outcome, = self.session("modes",
                                    options=["--modes", self.write("modes.json", content)])
            self.refused(outcome, 3, sentence)


class UserModes(TestCase):
    def test_their_life(self):
        reports = self.done(
            "user list", "user save Reading --gamut srgb --white 0.3457 0.3585 --gamma 2.2",
            "user list", "user edit Reading%1 --white 0.38 0.3768",
            "user edit Reading%1 --name Proof", "user list", "set-mode p3", "user set Proof%1",
            "get color-mode.current", "user renumber Proof%1 7", "user list",
            "user delete Proof%1", "user list")
        for report, schema in zip(reports, ["user-list", "user-save", "user-list", "user-save",
                                            "user-save", "user-list", "set-mode", "user-set", "get",
                                            "user-renumber", "user-list", "user-delete",
                                            "user-list"]):
            self.check(report, schema)
        self.assertEqual(reports[0]["userModes"], [])
        self.assertEqual(reports[1]["panel"]["profile"], "Reading%1_usr.icc")
        saved, = reports[2]["userModes"]
        self.assertEqual((saved["id"], saved["gamut"], saved["white"], saved["gamma"]),
                         ("Reading%1", "srgb", [0.3457, 0.3585], 2.2))
        renamed, = reports[5]["userModes"]
        self.assertEqual((renamed["id"], renamed["name"], renamed["white"]),
                         ("Proof%1", "Proof", [0.38, 0.3768]))
        self.assertEqual(reports[7]["panel"]["profile"], "Proof%1_usr.icc")
        self.assertEqual(reports[8]["value"], 11)
        self.assertEqual(reports[10]["userModes"][0]["serial"], 7)
        self.assertEqual(reports[12]["userModes"], [])

    def test_every_gamut(self):
        gamuts = ["srgb", "p3", "adobe", "bt2020", "ebu", "smpte"]
        reports = self.done(*[f"user save {gamut} --gamut {gamut}" for gamut in gamuts],
                            "user list")
        self.assertEqual(sorted(row["gamut"] for row in reports[-1]["userModes"]), sorted(gamuts))

    def test_what_is_refused(self):
        outcomes = self.session(
            "user save a/b", "user save " + "x" * 47, "user save A --gamut wide",
            "user save A --white 0 0.3", "user save A --white 0.3", "user save A --gamma 0",
            "user save A --gamma nan", "user set None%1", "user edit None%1", "user delete None%1",
            "user save A --id " + "y" * 52, "user", "user list")
        for outcome, part in zip(outcomes, [
                "a user mode's name", "a user mode's name", 'there is no gamut "wide"',
                "between 0 and 1", "--white", "a gamma is above 0", "a gamma is above 0",
                'no user mode "None%1"', 'no user mode "None%1"', 'no user mode "None%1"',
                "a user mode's id", "subcommand"]):
            self.refused(outcome, 2, part)
        self.assertEqual(outcomes[-1].report["userModes"], [])

    def test_fine_tuning(self):
        reports = self.done("set-mode p3", "tune p3", "tune p3 1 0.97 0.92 --store", "tune p3",
                            "user save A", "tune A%1 0.95 1 1", "tune A%1",
                            description={"setType": 3})
        for report in (reports[1], reports[2], reports[3], reports[5], reports[6]):
            self.check(report, "tune")
        self.assertEqual((reports[1]["stored"], reports[1]["gains"]), (False, None))
        self.assertEqual((reports[3]["stored"], reports[3]["gains"]), (True, [1, 0.97, 0.92]))
        self.assertTrue(reports[5]["panel"]["gammaLut"])
        self.assertEqual((reports[6]["stored"], reports[6]["gains"]), (False, None))
        outcomes = self.session("tune none", "tune ebook", "tune p3 0.5 1 1", "tune p3 1 1",
                                "tune purple", "tune None%1")
        for outcome, part in zip(outcomes, ["no fine tuning", "no fine tuning",
                                            "0.89999 to 1.00001", "three gains", "no mode",
                                            "no user mode"]):
            self.refused(outcome, 2, part)


class Gains(TestCase):
    def test_the_circle(self):
        # The rim's top is red: the other channels at the vertex' 0.93.
        reports = self.done("fuse temperature --point 80 0 --show", "fuse temperature --point 80 80",
                            "set temperature.point 80 0", "fuse temperature")
        for report in reports[:2]:
            self.check(report, "fuse")
        for report in (reports[0], reports[3]):
            for got, expected in zip(report["output"]["gains"], [1, 0.93, 0.93]):
                self.assertAlmostEqual(got, expected, 6)
        self.assertAlmostEqual(reports[0]["panel"]["gains"][1], 0.93, 6)
        self.assertEqual(reports[1]["output"]["gains"], [1, 1, 1])
        self.assertFalse(reports[1]["shown"])

    def test_features_multiply(self):
        reports = self.done(
            "set eye-protection.gains 1 0.95 0.8", "set eye-protection.handle-type 1",
            "set eye-protection.status 1", "fuse temperature --gains 1 0.9 0.5",
            "fuse natural-color --gains 1 0.9 0.5", "fuse white-point")
        for report in reports[3:]:
            self.check(report, "fuse")
        for got, expected in zip(reports[3]["output"]["gains"], [1, 0.9 * 0.95, 0.5 * 0.8]):
            self.assertAlmostEqual(got, expected, 6)
        self.assertEqual(reports[3]["output"]["colorBlue"], 0)

    def test_the_sliders(self):
        reports = self.done("temperature 0", "temperature 366 --eye-protection", "eye-strength 0",
                            "eye-strength 180", "eye-strength 195", "eye-strength 366")
        for report in reports[:2]:
            self.check(report, "temperature")
        self.assertEqual([report["colorBlue"] for report in reports[:2]], [0, 255])
        # R + 0.65 (1 - R), R, R, 0.9 R, of R 0.82.
        for report, expected in zip(reports[2:], [0.937, 0.82, 0.82, 0.738]):
            self.check(report, "eye-strength")
            self.assertAlmostEqual(report["protectValue"], expected, 6)

    def test_what_is_refused(self):
        outcomes = self.session("fuse esd", "fuse nose", "fuse temperature --gains 1 2 1",
                                "fuse temperature --point 200 0", "fuse white-point --status 2",
                                "temperature 367", "temperature -1", "eye-strength 367",
                                "temperature warm")
        for outcome in outcomes:
            self.refused(outcome, 2, "")


class Displays(TestCase):
    MAKERS = {"name": "NVX Studio 27"}

    def probe(self, *lines, **description):
        outcomes = self.session(*lines, description=description)
        self.check(outcomes[0].report, "monitors")
        return outcomes[0].report["probe"]

    def test_the_probe_writes_nothing(self):
        probe = self.probe("monitors --probe")
        self.assertIsNone(probe["written"])
        self.assertEqual({call["call"] for call in probe["calls"]},
                         {"GetNumberOfPhysicalMonitorsFromHMONITOR",
                          "GetPhysicalMonitorsFromHMONITOR"})

    def test_a_monitor_behind_the_panel_is_not_reached_by_description(self):
        rows = self.probe("monitors --probe", monitors=[self.MAKERS])["monitors"]
        self.assertEqual([(row["pass"], row["matches"], row["reached"]) for row in rows],
                         [("description", False, True), ("description", True, False),
                          ("identity", True, True), ("identity", True, True)])

    def test_a_stranger_behind_it_ends_the_second_pass(self):
        rows = self.probe("monitors --probe", monitors=[
            {"name": "Other", "model": "OTH0001"}, self.MAKERS])["monitors"]
        self.assertEqual([(row["display"][-1], row["reached"]) for row in rows[3:]],
                         [("1", True), ("2", True), ("3", False)])
        self.assertIn("the library stops here", rows[4]["outcome"])

    def test_asked_to_it_writes(self):
        # Another's panel in front would end the pass; it is deaf, and of the maker's by its path.
        probe = self.probe("monitors --write p3", monitors=[self.MAKERS])
        self.assertEqual(probe["written"], "p3")
        written = [call for call in probe["calls"] if call["call"] == "SetVCPFeature"]
        self.assertEqual([(call["pass"], call["succeeded"]) for call in written],
                         [("identity", False)])
        self.assertIn("it refused the value", probe["monitors"][2]["outcome"])

    def test_other_commands(self):
        reports = self.done("monitors", "extend", "vendor", "set-mode p3",
                            f"shown --png {self.path('shown.png')}", "switch-user",
                            "telemetry 5 key value", "telemetry 5 key value --async", "log --last 3",
                            "version")
        for report, schema in zip(reports, ["monitors", "extend", "vendor", "set-mode", "shown",
                                            "switch-user", "telemetry", "telemetry", "log",
                                            "version"]):
            self.check(report, schema)
        self.assertEqual(len(reports[0]["monitors"]), 2)
        self.assertEqual(reports[2]["vendor"], "NVX#")
        self.assertLessEqual(len(reports[8]["log"]), 3)
        png = (self.folder / "shown.png").read_bytes()
        self.assertEqual(png[:8], b"\x89PNG\r\n\x1a\n")
        self.assertEqual(struct.unpack(">II", png[16:24]), (480, 320))

    def test_what_is_refused(self):
        outcomes = self.session("monitors --write purple", "log --level 4", "telemetry x y z",
                                "telemetry 5", f"shown --png {self.path('none')}/x.png")
        for outcome in outcomes[:4]:
            self.refused(outcome, 2, "")
        self.refused(outcomes[4], 4, "can't write")
        outcome, = self.session("extend", description={"monitors": []})
        self.assertIn(outcome.status, (0, 1))
