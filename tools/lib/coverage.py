"""Line and branch coverage of a folder of sources, out of what gcov counted.

A branch is counted where the source decides. A call that may throw is none: gcov shows it as a pair,
one way on and one way out, and both are left out, so that the way on does not count as covered either.
Nor does a vector instruction decide, whose inlined function has such a pair of its own that gcov does
not tell from a branch.
"""

import argparse
import collections
import json
import pathlib
import re
import subprocess
import sys


def read_counts(gcov, objects, sources):
    """{file: {line: {function: [count, [branch counts]]}}}, summed over all objects."""
    files = collections.defaultdict(lambda: collections.defaultdict(dict))
    data = sorted(str(path) for path in objects.rglob("*.gcda"))
    if not data:
        sys.exit(f"coverage: nothing was counted below {objects}")
    output = subprocess.run([gcov, "--json-format", "--stdout", "--branch-probabilities", *data],
                            check=True, capture_output=True, text=True).stdout
    for document in output.splitlines():
        for file in json.loads(document)["files"]:
            path = pathlib.Path(file["file"])
            if sources in path.parents:
                add_file(files[str(path.relative_to(sources))], file["lines"])
    return files


def add_file(lines, counted):
    for line in counted:
        branches = decisions(line["branches"])
        entry = lines[line["line_number"]].setdefault(line.get("function_name"), [0, branches])
        entry[0] += line["count"]
        if entry[1] is not branches:
            entry[1] = [a + b for a, b in zip(entry[1], branches, strict=True)]


def decisions(branches):
    """The counts without the pairs of calls that may throw."""
    counts = []
    for branch in branches:
        if branch["throw"]:
            counts.pop()
        else:
            counts.append(branch["count"])
    return counts


def merge_instances(functions):
    """One line of several instances of a template: what ran in one ran."""
    count = sum(entry[0] for entry in functions.values())
    merged = {}
    for _, branches in functions.values():
        shape = merged.setdefault(len(branches), [0] * len(branches))
        merged[len(branches)] = [a + b for a, b in zip(shape, branches)]
    return count, [branch for branches in merged.values() for branch in branches]


def is_vector_instruction(text):
    return re.search(r"\b_mm(256)?_\w+\(", text) and not re.search(r"\bif\b|\?|&&|\|\|", text)


def percent(part, whole):
    return f"{100 * part / whole:6.1f} %" if whole else "      - "


def show(sums, name):
    run, lines, taken, branches = sums
    print(f"{run:4}/{lines:4} {percent(run, lines)} {taken:4}/{branches:4} "
          f"{percent(taken, branches)}  {name}")


def main():
    parser = argparse.ArgumentParser(description="Prints a table by file.")
    parser.add_argument("--gcov", required=True, help="the compiler's")
    parser.add_argument("--objects", required=True, type=pathlib.Path, help="where the counts are")
    parser.add_argument("--sources", required=True, type=pathlib.Path)
    parser.add_argument("--missing", required=True, type=pathlib.Path, help="gets what did not run")
    parser.add_argument("--lines", required=True, type=float, help="least percentage")
    parser.add_argument("--branches", required=True, type=float, help="least percentage")
    options = parser.parse_args()

    missing = []
    total = [0, 0, 0, 0]
    print(f"{'lines':>17} {'branches':>19}")
    counts = read_counts(options.gcov, options.objects, options.sources)
    for name, lines in sorted(counts.items()):
        text = (options.sources / name).read_text(encoding="utf-8").splitlines()
        sums = [0, 0, 0, 0]
        for number, functions in sorted(lines.items()):
            count, branches = merge_instances(functions)
            if is_vector_instruction(text[number - 1]):
                branches = []
            taken = sum(branch > 0 for branch in branches)
            sums = [a + b for a, b in zip(sums, (count > 0, 1, taken, len(branches)))]
            if count == 0 or taken < len(branches):
                missing.append(f"{name}:{number}: ran {count} times, took {taken} of "
                               f"{len(branches)} branches: {text[number - 1].strip()}\n")
        show(sums, name)
        total = [a + b for a, b in zip(total, sums)]
    show(total, "all")
    options.missing.write_text("".join(missing), encoding="utf-8")
    run, lines, taken, branches = total
    if 100 * run < options.lines * lines or 100 * taken < options.branches * branches:
        sys.exit(f"coverage: below {options.lines:g} % of the lines or {options.branches:g} % of "
                 "the branches")


main()
