"""Runs veloractl.exe under Wine, as a person or a script would."""

import json
import os
import pathlib
import subprocess
import tempfile
import unittest

import jsonschema

TOP = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = TOP / "build/windows/bin/veloractl.exe"
SCHEMAS = pathlib.Path(__file__).parent / "schemas"
TIME_LIMIT = 300  # seconds


def wine_path(path):
    """The same file as Wine's programs see it."""
    return "Z:" + str(path)


class Result:
    def __init__(self, process):
        self.status = process.returncode
        self.out = process.stdout.decode("utf-8")
        self.error = process.stderr.decode("utf-8").replace("\r", "")

    @property
    def report(self):
        return json.loads(self.out)

    @property
    def sentences(self):
        """What standard error says, without lines that only show how far a work is."""
        return [line for line in self.error.splitlines() if line.startswith("veloractl: ")]


def run(*arguments, stdin=None, environment=None):
    process = subprocess.run(
        [str(TOP / "tools/wine"), str(PROGRAM), *map(str, arguments)],
        input=stdin, capture_output=True, timeout=TIME_LIMIT,
        env={**os.environ, **(environment or {})})
    return Result(process)


class Outcome:
    """One command of a session."""

    def __init__(self, row):
        self.command = row["command"]
        self.status = row["status"]
        self.report = row.get("report")
        self.text = row.get("text", "")
        self.error = row.get("error", "")


class TestCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="veloractl-test-"))

    def tearDown(self):
        for path in sorted(self.folder.rglob("*"), reverse=True):
            path.rmdir() if path.is_dir() else path.unlink()
        self.folder.rmdir()

    def write(self, name, content):
        """A file of the test's; its path as Wine sees it. Lists and dictionaries become JSON."""
        path = self.folder / name
        if isinstance(content, (dict, list)):
            content = json.dumps(content)
        path.write_bytes(content if isinstance(content, bytes) else content.encode("utf-8"))
        return wine_path(path)

    def path(self, name):
        return wine_path(self.folder / name)

    def session(self, *lines, description=None, options=()):
        """Command lines in one process, on a virtual notebook; the outcome of each."""
        virtual = ["--virtual"]
        if description is not None:
            virtual.append(self.write("description.json", description))
        script = self.write("lines.txt", "\n".join(lines) + "\n")
        result = run(*virtual, "--json", *options, "run", "--keep-going", script)
        decoder = json.JSONDecoder()
        rows, at, text = [], 0, result.out.strip()
        while at < len(text):
            row, end = decoder.raw_decode(text, at)
            rows.append(row)
            at = end
            while at < len(text) and text[at].isspace():
                at += 1
        self.assertTrue(rows, result.error)
        outcomes = [Outcome(row) for row in rows if "command" in row]
        self.assertEqual([o.command for o in outcomes], list(lines), result.error)
        return outcomes

    def done(self, *lines, **keywords):
        """As session; every command has to succeed. The reports."""
        outcomes = self.session(*lines, **keywords)
        for outcome in outcomes:
            self.assertEqual((outcome.status, outcome.error), (0, ""), outcome.command)
        return [outcome.report for outcome in outcomes]

    def check(self, report, schema):
        schema = json.loads((SCHEMAS / (schema + ".json")).read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        jsonschema.validate(report, schema, cls=jsonschema.Draft202012Validator)

    def refused(self, outcome, status, part):
        """One clear sentence and the status."""
        self.assertEqual(outcome.status, status, (outcome.command, outcome.error))
        self.assertIn(part, outcome.error, outcome.command)
        self.assertNotIn("\n", outcome.error)
        self.assertIsNone(outcome.report, outcome.command)
