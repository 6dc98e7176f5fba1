"""get, set, flags, settings export and import, watch and ring."""

import json

from tool import TestCase, run

WHOLE = ["white-point.status", "eye-protection.status", "eye-protection.value",
         "eye-protection.psr", "eye-protection.handle-type", "temperature.value",
         "temperature.type", "color-mode.current", "color-mode.reset", "color-mode.set-type",
         "natural-color.status", "frame-work-type"]
FRACTIONS = {"eye-protection.rhine": 1, "eye-protection.gains": 3, "temperature.point": 2}
FEATURES = ["white-point", "eye-protection", "temperature", "color-mode", "natural-color",
            "dp-in-out", "esd"]


class Settings(TestCase):
    def test_all_of_them_are_listed(self):
        report, = self.done("get --all")
        self.check(report, "get-all")
        self.assertEqual(sorted(row["setting"] for row in report["settings"]),
                         sorted(WHOLE + list(FRACTIONS)))

    def test_what_is_set_is_got_from_least_to_most(self):
        table = {row["setting"]: row for row in self.done("get --all")[0]["settings"]}
        lines, expected = [], []
        for name in WHOLE + list(FRACTIONS):
            count = FRACTIONS.get(name, 1)
            for bound in (table[name]["least"], table[name]["most"]):
                lines += [f"set {name} " + " ".join([str(bound)] * count), f"get {name}"]
                expected.append((name, bound if count == 1 else [bound] * count))
        reports = self.done(*lines)
        for (name, value), stored, got in zip(expected, reports[::2], reports[1::2]):
            self.check(stored, "set")
            self.check(got, "get")
            self.assertEqual((got["setting"], got["value"], got["source"]),
                             (name, value, "registry"))

    def test_a_value_out_of_range_stores_nothing(self):
        outcomes = self.session("set eye-protection.value 120", "set eye-protection.value 367",
                                "set eye-protection.value -1", "set eye-protection.value 1.5",
                                "set eye-protection.value nan", "get eye-protection.value")
        for outcome in outcomes[1:5]:
            self.refused(outcome, 2, "takes whole numbers from 0 to 366")
        self.assertEqual(outcomes[5].report["value"], 120)

    def test_numbers_that_are_missing_or_too_many(self):
        outcomes = self.session("set temperature.point 80", "set eye-protection.gains 1 1",
                                "set temperature.value 1 2", "set temperature.value warm")
        self.refused(outcomes[0], 2, "takes 2 numbers")
        self.refused(outcomes[1], 2, "takes 3 numbers")
        self.refused(outcomes[2], 2, "takes 1 number")
        self.refused(outcomes[3], 2, "warm")

    def test_unknown_names(self):
        outcomes = self.session("get brightness", "set brightness 5", "get")
        self.refused(outcomes[0], 2, 'there is no setting "brightness"')
        self.refused(outcomes[1], 2, 'there is no setting "brightness"')
        self.refused(outcomes[2], 2, "which setting?")

    def test_sources_of_a_value(self):
        ini = {"BLUEPROTECT": {"CurrentBlueProtect": "1", "CurrentBlueProtectSlider": "77"}}
        first, again, none, point = self.done(
            "get eye-protection.value", "get eye-protection.value", "get temperature.value",
            "get temperature.point", description={"ini": ini})
        self.assertEqual((first["value"], first["source"]), (77, "ini"))
        self.assertEqual((again["value"], again["source"]), (77, "registry"))
        self.assertEqual((none["value"], none["source"]), (183, "default"))
        self.assertEqual((point["value"], point["source"]), (None, "none"))

    def test_the_hive_is_the_users_where_the_feature_is_multi_user(self):
        multi = {"temperature": {"multiUser": True}}
        user, machine = self.done("get temperature.value", "get eye-protection.value",
                                  description={"features": multi})
        self.assertTrue(user["key"].startswith("HKEY_CURRENT_USER\\"), user)
        self.assertTrue(machine["key"].startswith("HKEY_LOCAL_MACHINE\\"), machine)
        service, = self.done("set temperature.value 5", "get temperature.value",
                             description={"features": multi, "administrator": True,
                                          "userSid": "S-1-5-21-9"})[1:]
        # A service finds the feature's key at the root of the user's hive.
        self.assertTrue(service["key"].startswith("HKEY_USERS\\S-1-5-21-9\\"), service)
        self.assertEqual(service["value"], 5)


class Flags(TestCase):
    def test_they_are_set_one_by_one(self):
        lines = [f"flags {feature} {flag} {value}" for feature in FEATURES
                 for flag in ("supported", "multiUser", "displayCheck", "firstUse")
                 for value in (1, 0)]
        for line, report in zip(lines, self.done(*lines)):
            _, feature, flag, value = line.split()
            self.check(report, "flags")
            row, = [row for row in report["flags"] if row["feature"] == feature]
            self.assertEqual(row[flag], int(value), line)

    def test_bad_names_and_values(self):
        outcomes = self.session("flags esd supported 2", "flags nose supported 1",
                                "flags esd polished 1", "flags esd")
        self.refused(outcomes[0], 2, "a flag is 0 or 1")
        self.refused(outcomes[1], 2, 'there is no feature "nose"')
        self.refused(outcomes[2], 2, 'there is no flag "polished"')
        self.assertEqual(outcomes[3].status, 2)


class Files(TestCase):
    def test_an_export_is_imported_elsewhere(self):
        file = self.path("settings.json")
        self.done("set temperature.value 42", "set eye-protection.gains 1 0.9 0.8",
                  "flags esd supported 0", f"settings export {file}")
        exported = json.loads((self.folder / "settings.json").read_text())
        self.check(exported, "settings")
        stored, value, gains, flags = self.done(
            f"settings import {file} --flags", "get temperature.value", "get eye-protection.gains",
            "flags")
        self.check(stored, "settings-import")
        self.assertEqual(value["value"], 42)
        self.assertEqual(gains["value"], [1, 0.9, 0.8])
        self.assertEqual([row["supported"] for row in flags["flags"]], [1] * 6 + [0])
        # Nobody had stored these: an import doesn't make them chosen ones.
        self.assertNotIn("eye-protection.rhine", stored["stored"])

    def test_without_a_file_it_is_printed(self):
        report, = self.done("settings export")
        self.check(report, "settings")

    def test_one_bad_entry_and_nothing_is_stored(self):
        good = {"temperature.value": 1}
        bad = {
            "range": {"settings": {**good, "eye-protection.value": 367}},
            "name": {"settings": {**good, "brightness": 1}},
            "type": {"settings": {**good, "eye-protection.value": "much"}},
            "count": {"settings": {**good, "temperature.point": [1]}},
            "flag": {"settings": good, "flags": {"esd": {"supported": 7}}},
            "flags' feature": {"settings": good, "flags": {"nose": {}}},
            "member": {"settings": good, "more": 1},
            "settings": {"settings": [1]},
        }
        lines = ["set temperature.value 9"]
        for number, content in enumerate(bad.values()):
            content["format"] = "veloractl settings 1"
            lines.append(f"settings import {self.write(f'bad{number}.json', content)} --flags")
        lines.append("settings import " + self.write("format.json", {"settings": good}))
        lines.append("get temperature.value")
        outcomes = self.session(*lines)
        for outcome in outcomes[1:-1]:
            self.refused(outcome, 3, ".json")
        self.assertEqual(outcomes[-1].report["value"], 9)


class Events(TestCase):
    def test_a_ring_is_heard(self):
        reports = self.done(*[f"watch {feature} --ring --timeout 20000" for feature in FEATURES])
        for feature, report in zip(FEATURES, reports):
            self.check(report, "watch")
            self.assertEqual([event["feature"] for event in report["events"]], [feature])

    def test_several_at_once(self):
        report, = self.done("watch temperature esd --ring --count 2 --timeout 20000")
        self.assertEqual(sorted(event["feature"] for event in report["events"]),
                         ["esd", "temperature"])

    def test_nobody_rings(self):
        outcome, = self.session("watch esd --timeout 100")
        self.assertEqual(outcome.status, 1)
        self.check(outcome.report, "watch")
        self.assertIn("there were 0 of 1 changes", outcome.error)

    def test_ring(self):
        report, = self.done("ring color-mode")
        self.check(report, "ring")
        outcomes = self.session("ring nose", "watch nose", "watch esd --count 0")
        self.refused(outcomes[0], 2, 'there is no feature "nose"')
        self.refused(outcomes[1], 2, 'there is no feature "nose"')
        self.assertEqual(outcomes[2].status, 2)
