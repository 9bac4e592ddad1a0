# SPDX-License-Identifier: MIT
"""Cuts a part out of a picture of the tour: cutPicture.py PASS-DIRECTORY STEP "PART PART-2" TARGET.png

The tour notes in its pictures where windows, panels and bars stand; the result is the box around those parts.
"""

import pathlib
import sys

from PIL import Image


def cut(directory, step, parts, target):
    """Ends the program when there is no such picture or part. 256 colours are enough for windows."""
    taken = [file for file in pathlib.Path(directory).glob("*.png") if file.stem.split("-", 1)[-1] == step]
    if len(taken) != 1:
        sys.exit(f"{directory}: {len(taken)} pictures of the step {step}")
    with Image.open(taken[0]) as picture:
        if missing := set(parts) - set(picture.text):
            sys.exit(f"{taken[0]}: there is no {', '.join(missing)} in it")
        places = [tuple(map(int, picture.text[part].split())) for part in parts]
        box = (
            min(x for x, y, width, height in places),
            min(y for x, y, width, height in places),
            max(x + width for x, y, width, height in places),
            max(y + height for x, y, width, height in places),
        )
        colours = picture.convert("RGB").crop(box).quantize(256, Image.Quantize.MAXCOVERAGE, dither=Image.Dither.NONE)
        colours.save(target, optimize=True)


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    cut(sys.argv[1], sys.argv[2], sys.argv[3].split(), sys.argv[4])
