# SPDX-License-Identifier: MIT
"""Checks the pictures of the tour: tour.py DIRECTORY, which holds a folder for each pass."""

import pathlib
import sys

from PIL import Image

PASSES = ("zh", "en", "zh@2x", "en@2x", "zh@1366x768", "en@1366x768")
ONLY_ENGLISH = {"settings-language", "settings-english", "start-english"}  # the steps that lead to English
FRAME = 40  # pixels: what the window manager draws around a window is not drawn at twice the size
FEWEST_COLOURS = 100  # a blank picture has one, a window with little in it some hundreds

failures = []


def pictures(folder):
    """The pictures by the names of their steps, without the numbers."""
    return {file.stem.split("-", 1)[1]: file for file in sorted(folder.glob("*.png"))}


def check(passes):
    steps = set(passes["zh"])
    for name, taken in passes.items():
        expected = steps | (ONLY_ENGLISH if name.startswith("en") else set())
        if set(taken) != expected:
            failures.append(f"{name}: these pictures are not in all passes: {sorted(set(taken) ^ expected)}")
        for step, file in taken.items():
            with Image.open(file) as picture:
                if picture.getcolors(FEWEST_COLOURS):
                    failures.append(f"{file}: blank")
                single = passes[name.removesuffix("@2x")].get(step)
                if name.endswith("@2x") and single:
                    with Image.open(single) as other:
                        if any(abs(a - 2 * b) > FRAME for a, b in zip(picture.size, other.size)):
                            failures.append(f"{file}: {picture.size} is not twice {other.size}")


def main():
    directory = pathlib.Path(sys.argv[1])
    passes = {name: pictures(directory / name) for name in PASSES}
    check(passes)
    for failure in failures:
        print(failure, file=sys.stderr)
    print(f"{sum(map(len, passes.values()))} pictures")
    sys.exit(bool(failures) or not all(passes.values()))


if __name__ == "__main__":
    main()
