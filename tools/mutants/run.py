#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Breaks the program on purpose, one place after the other, and tells which of these mutants the tests miss.

The tables stand beside this file, one for each folder of the program. Below the name of a file, a line is a mutant:

    function | change | what it breaks
    function | change | what it breaks | why it may survive, if it may

The function is one that begins at the left edge of the file (or a table, by its name); * is the whole file. The change is

    - words          leaves out the statement that begins with the words, or has them in it
    words <> others  exchanges the two statements
    words => others  puts others in place of the words

White space counts for nothing; the words have to stand just once in the function. A mutant is tried against the tests of
its own class, and the others of its folder are built and run if these pass; "FILE, tests of FOLDER" takes those of
another folder. It all happens in a copy of the tree with a build folder of its own (build/mutants), so that nothing else
is disturbed.

    run.py [REGEX...]     tries those whose file or title fits one of the expressions, or all
    run.py --sample N     tries N of them, spread over all
    run.py --fit          tells which ones no longer fit the tree, without trying any
"""
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


class Misfit(Exception):
    pass


class Mutant:
    def __init__(self, place, function, change, title, excuse=""):
        self.file, _, folder = place.partition(", tests of ")
        self.folder = folder or self.file.split("/")[0]
        self.function, self.change, self.excuse = function, change, excuse
        self.name = f"{self.file}: {title}"

    def applied(self, text):
        """The text of the file with this mutant in it."""
        parts = function_parts(text, self.function)
        if self.change.startswith("- "):
            begin, end = statement(text, *find(text, parts, self.change[2:]))
            return text[:begin] + ";" + text[end:]
        if " <> " in self.change:
            (a, b), (c, d) = sorted(statement(text, *find(text, parts, words)) for words in self.change.split(" <> "))
            return text[:a] + text[c:d] + text[b:c] + text[a:b] + text[d:]
        old, new = self.change.split("=>", 1)
        begin, end = find(text, parts, old.strip())
        return text[:begin] + new.strip() + text[end:]


def function_parts(text, name):
    """Where the functions of this name begin and end."""
    if name == "*":
        return [(0, len(text))]
    parts = []
    for head in re.finditer(rf"^[A-Za-z_~][^;{{}}\n]*(?:\n[^;{{}}\n]+)*?(?<!\w){re.escape(name)}\b", text, re.M):
        # The body ends with the first brace at the left edge; what ends before there is one is a declaration.
        end = re.compile(r"^\}|^[^\s{}][^{\n]*;$", re.M).search(text, text.find("\n", head.start()) + 1)
        if end and text[end.start()] == "}":
            parts.append((head.start(), end.end()))
    if not parts:
        raise Misfit(f"there is no {name}")
    return parts


def find(text, parts, words):
    expression = r"\s+".join(map(re.escape, words.split()))
    expression = (r"\b" if re.match(r"\w", words) else "") + expression + (r"\b" if re.search(r"\w$", words) else "")
    found = [place.span() for begin, end in parts for place in re.compile(expression).finditer(text, begin, end)]
    if len(set(found)) != 1:
        raise Misfit(f'"{words}" stands {len(found)} times')
    return found[0]


def statement(text, begin, end):
    """The statement around a place: from behind the last ; { } or : at the end of a line to its own ;."""
    begin = max(place.end() for place in re.compile(r"[;{}:][^\n;]*\n|\)\n(?=\s)|;(?= \S)").finditer(text, 0, begin))
    depth = 0
    while text[end] != ";" or depth > 0:
        depth += {"{": 1, "}": -1}.get(text[end], 0)
        end += 1
    return begin, end + 1


def read_tables():
    mutants = []
    folder = os.path.join(ROOT, "tools/mutants")
    for table in sorted(os.listdir(folder)):
        place = ""
        if table.endswith(".txt"):
            for line in open(os.path.join(folder, table), encoding="utf-8").read().splitlines():
                columns = re.split(r"\s\|\s", line)
                if len(columns) > 1:
                    mutants.append(Mutant(place, *columns))
                elif line and not line.startswith("#"):
                    place = line
    return mutants


def fitting(mutants):
    """Those that fit the tree, and what is wrong with the others."""
    fit = []
    problems = []
    for mutant in mutants:
        try:
            text = open(os.path.join(ROOT, mutant.file), encoding="utf-8").read()
            if mutant.applied(text) == text:
                raise Misfit("it changes nothing")
            fit.append(mutant)
        except (Misfit, OSError) as problem:
            problems.append(f"{mutant.name}\n    {mutant.function}: {problem}")
    return fit, problems


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


def run(command):
    return subprocess.run(command, cwd=COPY, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)


def failure_of_build(*targets):
    """The text of a failure, or nothing."""
    result = run(["cmake", "--build", "--preset", "dev", "--target", *targets])
    return result.stdout.decode(errors="replace") if result.returncode else ""


def build_all(folder):
    """The folder's tests; one of them opens the manual."""
    return failure_of_build(f"tests/{folder}/all", "manual_withoutPictures")


def ctest(folder, *options):
    return run(["ctest", "--test-dir", f"{BUILD}/tests/{folder}", "--timeout", str(TIME_LIMIT), "--stop-on-failure",
                "-j2", "--label-exclude", "faults", *options])


def outcome_of(mutant):
    """What its tests say of the tree as it stands: whether it is noticed, and why it does not compile if it does not."""
    own = "^tst_" + os.path.splitext(os.path.basename(mutant.file))[0]
    listed = ctest(mutant.folder, "--show-only", "-R", own).stdout.decode()
    targets = re.findall(r"Test +#\d+: (\w+)", listed)
    if targets:
        failure = failure_of_build(*targets)
        if failure or ctest(mutant.folder, "-R", own).returncode:
            return not failure, failure
    failure = build_all(mutant.folder)
    return not failure and ctest(mutant.folder, "-E", own).returncode != 0, failure


def main():
    if sys.argv[1:] == ["--fit"]:
        _, problems = fitting(read_tables())
        print("\n".join(problems), end="\n" if problems else "")
        return 1 if problems else 0

    started = time.time()
    mutants = read_tables()
    if sys.argv[1:2] == ["--sample"]:
        mutants = mutants[::max(1, len(mutants) // int(sys.argv[2]))]
    elif sys.argv[1:]:
        mutants = [m for m in mutants if any(re.search(wanted, m.name) for wanted in sys.argv[1:])]
    # Those that do not fit are told at the end, the others are tried all the same.
    mutants, problems = fitting(mutants)
    copy_tree()

    if not os.path.isfile(os.path.join(BUILD, "build.ninja")) and run(
            ["cmake", "--preset", "dev", "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O0"]).returncode:
        print("Configuring failed.")
        return 1
    for folder in sorted({mutant.folder for mutant in mutants}):
        print(f"{folder} without a mutant", flush=True)
        failure = build_all(folder)
        if failure or ctest(folder, "--no-tests=error").returncode:
            print(failure or f"Without any mutant a test of tests/{folder} fails.")
            return 1

    killed = 0
    survivors = []
    explained = []
    for number, mutant in enumerate(mutants, 1):
        file = os.path.join(COPY, mutant.file)
        text = open(file, encoding="utf-8").read()
        with open(file, "w", encoding="utf-8") as out:
            out.write(mutant.applied(text))
        noticed, failure = outcome_of(mutant)
        outcome = "killed"
        if failure:
            outcome = "DOES NOT COMPILE"
            problems.append(f"{mutant.name}\n{failure[-2000:]}")
        elif not noticed:
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
        print(f"  NOT NOTICED: {mutant.name}")
    if problems:
        print("\n".join(problems))
    return 1 if survivors or problems else 0


if __name__ == "__main__":
    sys.exit(main())
