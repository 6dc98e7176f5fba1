"""natural run, sensor record and replay."""

from tool import TestCase

HEADING = "lux,kelvin,time\n"


class Readings(TestCase):
    def play(self, text, *options, **keywords):
        file = self.write("readings.csv", text)
        report, = self.done(" ".join(["natural run", file, *options]), **keywords)
        self.check(report, "natural-run")
        return report

    def test_the_panel_follows_the_room(self):
        report = self.play(HEADING + "300,4000,0\n300,4050,1\n300,6000,2\n10,6000,3\n")
        self.assertEqual([(row["dimming"], row["delivered"]) for row in report["readings"]],
                         [(True, 4000), (False, 4000), (True, 6000), (True, 3400)])
        self.assertEqual(report["dimmings"], 3)
        # Each dimming: the frames of the factory's data and the last one.
        self.assertEqual(report["frames"], 3 * 21)
        # Between the curve's points at 3400 K.
        for got, expected in zip(report["panel"]["gains"], [1, 0.87, 0.71]):
            self.assertAlmostEqual(got, expected, 6)

    def test_columns_in_any_order_and_comments(self):
        report = self.play("# a lamp\ntime,kelvin,lux\n0,4000,300\n\n1,,20\n")
        self.assertEqual(report["readings"][0]["delivered"], 4000)
        self.assertEqual(report["readings"][1]["kelvin"], "-")

    def test_another_factory(self):
        factory = self.write("factory.json", {
            "frameCount": 4, "frameTime": 0, "dimmingThreshold": 500, "darkKelvin": 3000,
            "darkLux": 100, "curve": [{"cct": 3000, "r": 1, "g": 0.9, "b": 0.8},
                                      {"cct": 6000, "r": 1, "g": 1, "b": 1}]})
        report = self.play(HEADING + "300,4000,0\n300,4500,1\n300,4501,2\n99,4501,3\n",
                           "--factory", factory)
        self.assertEqual([(row["dimming"], row["frames"], row["delivered"])
                          for row in report["readings"]],
                         [(True, 5, 4000), (False, 0, 4000), (True, 5, 4501), (True, 5, 3000)])

    def test_bad_readings(self):
        bad = {"no number": "300,warm,0\n", "fields instead of 3": "300,4000\n",
               "has no time": "300,4000,\n", "is no number": "300,1e99,0\n",
               "holds no reading": HEADING}
        lines = [f"natural run {self.write(f'bad{i}.csv', text)}"
                 for i, text in enumerate(bad.values())]
        for outcome, part in zip(self.session(*lines), bad):
            self.refused(outcome, 3, part)

    def test_bad_factories(self):
        bad = {"frameCount is not from 0": {"frameCount": -1},
               "curve is not empty or ascending": {"curve": [{"cct": 5}]},
               "curve[0].cct is not from": {"curve": [{"cct": 0}]},
               "kelvins is not known": {"kelvins": 5}}
        lines = [f"natural run nan --factory {self.write(f'bad{i}.json', content)}"
                 for i, content in enumerate(bad.values())]
        for outcome, part in zip(self.session(*lines), bad):
            self.refused(outcome, 3, part)

    def test_without_readings(self):
        outcomes = self.session("natural run", "natural run nan --sensor", "natural run none.csv",
                                "natural", "sensor replay", "sensor record")
        for outcome, status in zip(outcomes, (2, 2, 3, 2, 2, 2)):
            self.refused(outcome, status, "")


class Troubles(TestCase):
    # Dimmings and what is delivered at the end, by the documented rules: over 100 K starts one,
    # below 50 lx it is 3400 K, and what is no number starts nothing.
    EXPECTED = {"oscillation": (8, 4101), "flicker": (1, 4000), "zeros": (3, 4800),
                "vanish": (2, 6000), "no-kelvin": (0, None)}

    def test_the_library_of_them(self):
        report, = self.done("sensor troubles")
        self.check(report, "sensor-troubles")
        self.assertEqual({row["name"] for row in report["troubles"]}, {*self.EXPECTED, "nan"})

    def test_each(self):
        for name, (dimmings, delivered) in self.EXPECTED.items():
            report, = self.done(f"sensor replay {name}")
            self.check(report, "natural-run")
            self.assertEqual((report["dimmings"], report["readings"][-1]["delivered"]),
                             (dimmings, delivered), name)

    def test_not_a_number_does_not_stay(self):
        report, = self.done("sensor replay nan")
        self.assertEqual(report["readings"][-1]["delivered"], 6000)
        for row in report["readings"][1:]:
            self.assertTrue(2700 <= row["delivered"] <= 9000, row)

    def test_a_record_is_replayed(self):
        file = self.path("record.csv")
        reports = self.done(f"sensor record {file} --play vanish", f"sensor replay {file}")
        self.check(reports[0], "sensor-record")
        self.assertEqual(reports[0]["readings"], 4)
        self.assertEqual(reports[1]["readings"][-1]["delivered"], 6000)
        text = (self.folder / "record.csv").read_text()
        self.assertEqual([line.rsplit(",", 1)[0] for line in text.splitlines()],
                         ["lux,kelvin", "300,4800", "gone,", "back,", "300,6000"])

    def test_a_machine_without_a_sensor(self):
        outcomes = self.session(f"sensor record {self.path('r.csv')} --play nan",
                                description={"lightSensors": 0})
        self.refused(outcomes[0], 1, "there is no light sensor")
