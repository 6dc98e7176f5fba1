"""tidy.py BUILD STAMPS [FOLDER...]: clang-tidy over the sources that a build has compiled, but for
the tests and benchmarks; with folders, over theirs alone. A source is checked again when it, a file
that it includes, its compilation or the checks have changed since it passed."""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

BUILD, STAMPS = (pathlib.Path(name).resolve() for name in sys.argv[1:3])
TOP = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = sys.argv[3:]
LEFT_OUT = ("tests", "bench", "build")


def ninja(*arguments):
    return subprocess.run(["ninja", "-C", str(BUILD), *arguments], check=True, capture_output=True,
                          text=True).stdout


def sources_of(file):
    """The file, or of several that are compiled as one, each."""
    if file.suffix != ".cxx":
        return [file]
    return [pathlib.Path(name) for name in re.findall(r'#include "(.*\.cpp)"', file.read_text())]


def compilations():
    """Source, object and command."""
    for row in json.loads(ninja("-t", "compdb")):
        if " -c " not in row["command"]:
            continue
        for source in sources_of(BUILD / row["file"]):
            if source.suffix != ".cpp" or not source.is_relative_to(TOP):
                continue
            folder = source.relative_to(TOP).as_posix()
            if folder.split("/")[0] not in LEFT_OUT and (
                    not FOLDERS or any(folder.startswith(name + "/") for name in FOLDERS)):
                command = row["command"].replace(row["file"], str(source))
                yield source, row["output"], shlex.split(command)


def included():
    """The files that each object was made of."""
    files, name = {}, None
    for line in ninja("-t", "deps").splitlines():
        if line.startswith("    "):
            files[name].append(BUILD / line.strip())
        elif line:
            name = line.split(": ")[0]
            files[name] = []
    return files


def target_options(compiler):
    """The target's headers in place of this machine's; the compiler's intrinsics come from clang."""
    told = subprocess.run([compiler, "-xc++", "-E", "-v", os.devnull], check=True, text=True,
                          capture_output=True).stderr
    listed = re.search(r"#include <\.\.\.> .*?\n(.*?)End of search list", told, re.S).group(1)
    folders = [os.path.realpath(line.strip()) for line in listed.splitlines()]
    return ["--extra-arg-before=--driver-mode=g++", "--extra-arg=--target=x86_64-w64-windows-gnu",
            "--extra-arg=-nostdlibinc"] + [
                "--extra-arg=-isystem" + folder for folder in folders
                if not re.search(r"/gcc/.*/include(-fixed)?$", folder)]


def digest(command, files):
    whole = hashlib.sha256(" ".join(command).encode())
    for file in sorted(set(files)) + [TOP / ".clang-tidy"]:
        whole.update(hashlib.sha256(file.read_bytes()).digest())
    return whole.hexdigest()


def check(source, command, options, key):
    stamp = STAMPS / source.relative_to(TOP).as_posix().replace("/", "-")
    if stamp.exists() and stamp.read_text() == key:
        return True
    told = subprocess.run(["clang-tidy-14", "--quiet", *options, str(source), "--", *command],
                          cwd=BUILD, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if told.returncode != 0:
        print(told.stdout, flush=True)
        print(f"clang-tidy has a finding: {source.relative_to(TOP)}", flush=True)
        return False
    stamp.write_text(key)
    return True


def main():
    STAMPS.mkdir(parents=True, exist_ok=True)
    files = included()
    rows = {}
    for source, output, command in compilations():
        if output not in files:
            continue
        if command[0].endswith("ccache"):
            command = command[1:]
        if "-include" in command:  # a precompiled header: each source includes what it uses
            at = command.index("-include")
            command = command[:at] + command[at + 2:]
        rows[source] = (command, digest(command, files[output]))
    options = target_options(next(iter(rows.values()))[0][0])
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        passed = list(pool.map(lambda row: check(row[0], row[1][0], options, row[1][1]), rows.items()))
    print(f"{len(passed)} sources, {passed.count(False)} with findings")
    return 0 if all(passed) else 1


sys.exit(main())
