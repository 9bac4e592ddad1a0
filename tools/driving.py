# SPDX-License-Identifier: MIT
"""What the scripts share that use the program as a person would: drive.py and windows/drive.py."""

import os
import subprocess
import sys
import time

LIMIT = 60  # seconds that anything may take
TARGET = 12.5  # mm


class Failure(Exception):
    pass


def wait(what, condition, gone=()):
    """Returns what the condition returns as soon as that is true; an exception of `gone` is a no."""
    deadline = time.monotonic() + LIMIT
    while time.monotonic() < deadline:
        try:
            result = condition()
        except gone:
            result = None
        if result:
            return result
        time.sleep(0.03)  # how often it looks
    raise Failure(what)


def xdotool(*arguments):
    subprocess.run(["xdotool", *map(str, arguments)], check=True)


def stand_in_for_opener(scratch):
    """Puts a stand-in for the desktop's opener into a folder; it notes what it is to open in the file that is returned."""
    opened = os.path.join(scratch, "opened")
    opener = os.path.join(scratch, "xdg-open")
    with open(opener, "w", encoding="utf-8") as file:
        file.write(f'#!/bin/sh\nprintf "%s\\n" "$1" >>"{opened}"\n')
    os.chmod(opener, 0o755)
    return opened


def path_with(scratch):
    return scratch + os.pathsep + os.environ["PATH"]


def wait_for_end(process):
    """Until the program has closed, with exit code 0."""
    try:
        code = process.wait(LIMIT)
    except subprocess.TimeoutExpired:
        raise Failure("the program does not end") from None
    if code != 0:
        raise Failure(f"the program ended with {code}")


def watch_move(position):
    """Waits until `position()`, a text such as "1.250 mm", comes to TARGET, by way of others."""
    passed = []

    def arrived():
        passed.append(position())
        return passed[-1] == f"{TARGET:.3f} mm"

    wait("the axis does not arrive", arrived)
    between = [place for place in dict.fromkeys(passed) if 0 < float(place.split()[0]) < TARGET]
    if not between:
        raise Failure("the axis was nowhere in between")
    print(f"The axis moved to {TARGET} mm and was seen at {len(between)} places in between.")


def report(failure, program):
    """Tells what has not come about and what is on the screen instead, and ends the program."""
    print(f"{sys.argv[0]}: {failure}; on the screen:", file=sys.stderr)
    if program:
        program.print_screen()
        program.process.kill()
        program.process.wait()
