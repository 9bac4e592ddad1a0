#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Breaks the program on purpose, one place after the other, and tells which of these mutants the tests miss.

The tables stand beside this file, one for each folder; in them each mutant is

    ## what it breaks
    file
    -the exact text, on one line or more, that stands in the file just once
    +what stands there instead
    ? test executable and the functions of it that should fail, or none for all
    ! why it may survive, if it may

It works on a copy of the tree with a build folder of its own (build/mutants), so that nothing else is disturbed.

    run.py [REGEX...]   tries those whose file or title fits one of the expressions, or all
    run.py --fit        tells which ones no longer fit the tree, without trying any
"""
import json
import os
import re
import shutil
import subprocess
import sys
import time

ROOT = os.getcwd()
COPY = os.path.join(ROOT, "build/mutants")
BUILD = os.path.join(COPY, "build/dev")
TIME_LIMIT = 120  # seconds for one test executable: a mutant may hang


class Mutant:
    def __init__(self, table, title):
        self.name = f"{table}: {title}"
        self.file = ""
        self.old = []
        self.new = []
        self.tests = []  # each one the executable and its functions
        self.excuse = ""


def read_tables():
    mutants = []
    folder = os.path.join(ROOT, "tools/mutants")
    for table in sorted(os.listdir(folder)):
        if not table.endswith(".txt"):
            continue
        for line in open(os.path.join(folder, table), encoding="utf-8").read().split("\n"):
            if line.startswith("## "):
                mutants.append(Mutant(table[:-4], line[3:]))
            elif line.startswith("-"):
                mutants[-1].old.append(line[1:])
            elif line.startswith("+"):
                mutants[-1].new.append(line[1:])
            elif line.startswith("? "):
                mutants[-1].tests.append(line[2:].split())
            elif line.startswith("! "):
                mutants[-1].excuse = line[2:]
            elif line and not line.startswith("#"):
                mutants[-1].file = line
    return mutants


def copy_tree():
    """Only what has changed is written, so that the next run builds no more than it must."""
    files = subprocess.run(["git", "ls-files", "-z"], stdout=subprocess.PIPE, check=True).stdout.decode().split("\0")
    kept = set()
    for name in filter(os.path.isfile, files):
        target = os.path.join(COPY, name)
        kept.add(target)
        content = open(name, "rb").read()
        if os.path.isfile(target) and open(target, "rb").read() == content:
            continue
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(target, "wb") as out:
            out.write(content)
        shutil.copymode(name, target)
    for folder, folders, names in os.walk(COPY):
        if folder == COPY:
            folders.remove("build") if "build" in folders else None
        for name in names:
            if os.path.join(folder, name) not in kept:
                os.remove(os.path.join(folder, name))


def run(command, **more):
    return subprocess.run(command, cwd=COPY, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **more)


def build(targets):
    """The text of a failure, or nothing."""
    result = run(["cmake", "--build", "--preset", "dev", "--target", *sorted(targets)])
    return result.stdout.decode(errors="replace") if result.returncode else ""


def known_tests():
    """Each test executable with its source."""
    sources = {}
    for folder, _, names in os.walk(os.path.join(ROOT, "tests")):
        for name in names:
            if name.startswith("tst_") and name.endswith(".cpp"):
                sources[name[:-4]] = open(os.path.join(folder, name), encoding="utf-8").read()
    return sources


def test_commands():
    """How ctest runs each test executable: command, folder, environment."""
    listed = subprocess.run(["ctest", "--show-only=json-v1"], cwd=BUILD, stdout=subprocess.PIPE, check=True).stdout
    commands = {}
    for test in json.loads(listed)["tests"]:
        properties = {entry["name"]: entry["value"] for entry in test["properties"]}
        environment = dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", []))
        commands[test["name"]] = (test.get("command"), properties.get("WORKING_DIRECTORY", BUILD), environment)
    return commands


def passes(test, functions):
    """Whether the test passes. It is ended at its first failure."""
    command, folder, environment = test
    process = subprocess.Popen(
        ["timeout", str(TIME_LIMIT), *command, *functions], cwd=folder, env=dict(os.environ, **environment),
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    failed = False
    for line in process.stdout:
        if line.startswith((b"FAIL!", b"QFATAL")):
            failed = True
            process.terminate()
            break
    process.stdout.close()
    return process.wait() == 0 and not failed


def fitting(mutants):
    """Those that fit the tree, and what is wrong with the others."""
    sources = known_tests()
    fit = []
    problems = []
    for mutant in mutants:
        before = len(problems)
        text = open(os.path.join(ROOT, mutant.file), encoding="utf-8").read()
        found = text.count("\n".join(mutant.old))
        if found != 1:
            problems.append(f"{mutant.name}\n    its text stands {found} times in {mutant.file}")
        for executable, *functions in mutant.tests:
            for function in functions or ["QTEST"]:
                if function not in sources.get(executable, ""):
                    problems.append(f"{mutant.name}\n    there is no {executable} {function}")
        if len(problems) == before:
            fit.append(mutant)
    return fit, problems


def main():
    if sys.argv[1:] == ["--fit"]:
        _, problems = fitting(read_tables())
        print("\n".join(problems), end="\n" if problems else "")
        return 1 if problems else 0

    started = time.time()
    wanted = sys.argv[1:]
    # Those that do not fit are told at the end, the others are tried all the same.
    mutants, problems = fitting(
        [m for m in read_tables() if not wanted or any(re.search(w, f"{m.file} {m.name}") for w in wanted)])
    copy_tree()

    if not os.path.isfile(os.path.join(BUILD, "build.ninja")) and run(["cmake", "--preset", "dev"]).returncode:
        print("Configuring failed.")
        return 1
    print("Building without a mutant", flush=True)
    failure = build({test[0] for mutant in mutants for test in mutant.tests})
    if failure:
        print(failure)
        return 1
    tests = test_commands()
    for executable, *functions in sorted({tuple(test) for mutant in mutants for test in mutant.tests}):
        if not passes(tests[executable], functions):
            print(f"Without any mutant {executable} {' '.join(functions)} fails.")
            return 1

    killed = 0
    survivors = []
    explained = []
    for number, mutant in enumerate(mutants, 1):
        file = os.path.join(COPY, mutant.file)
        text = open(file, encoding="utf-8").read()
        with open(file, "w", encoding="utf-8") as out:
            out.write(text.replace("\n".join(mutant.old), "\n".join(mutant.new)))
        failure = build({test[0] for test in mutant.tests})
        outcome = "killed"
        if failure:
            outcome = "DOES NOT COMPILE"
            problems.append(f"{mutant.name}\n{failure[-2000:]}")
        elif all(passes(tests[executable], functions) for executable, *functions in mutant.tests):
            outcome = "survives, explained" if mutant.excuse else "SURVIVES"
            (explained if mutant.excuse else survivors).append(mutant)
        else:
            killed += 1
        with open(file, "w", encoding="utf-8") as out:
            out.write(text)
        print(f"{number}/{len(mutants)} {outcome}: {mutant.name}", flush=True)

    print(f"\n{len(mutants)} mutants tried, {killed} killed, {len(explained)} explained, {len(survivors)} not noticed, "
          f"{(time.time() - started) / 60:.0f} minutes")
    for mutant in explained:
        print(f"  explained: {mutant.name}\n    {mutant.excuse}")
    for mutant in survivors:
        print(f"  NOT NOTICED: {mutant.name} ({mutant.file})")
    if problems:
        print("\n".join(problems))
    return 1 if survivors or problems else 0


if __name__ == "__main__":
    sys.exit(main())
