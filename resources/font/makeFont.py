# SPDX-License-Identifier: MIT
"""makeFont.py SOURCE FACE OUTPUT: cuts the program's font out of a font collection.

Kept are the characters that the interface, model names and file names can show: GB 2312, Latin-1, Latin Extended-A,
Greek, general punctuation, super- and subscripts, arrows and geometric shapes. The Latin figures of this face all have
one width, which keeps a changing position from dancing.
"""

import sys

from fontTools import subset
from fontTools.ttLib import TTCollection

RANGES = [
    (0x0020, 0x007E),  # ASCII
    (0x00A0, 0x00FF),  # Latin-1
    (0x0100, 0x017F),  # Latin Extended-A
    (0x0370, 0x03FF),  # Greek
    (0x2000, 0x206F),  # general punctuation
    (0x2070, 0x209F),  # superscripts and subscripts
    (0x2100, 0x214F),  # letter-like symbols (℃, Å, Ω)
    (0x2190, 0x21FF),  # arrows
    (0x25A0, 0x25FF),  # geometric shapes
    (0x3000, 0x303F),  # CJK punctuation
    (0xFF00, 0xFFEF),  # full-width forms
]


def gb2312():
    for row in range(0xA1, 0xF8):
        for cell in range(0xA1, 0xFF):
            try:
                yield ord(bytes((row, cell)).decode("gb2312"))
            except UnicodeDecodeError:
                pass


def main(source, face, output):
    collection = TTCollection(source, lazy=True)
    names = [font["name"].getDebugName(1) for font in collection.fonts]
    font = collection.fonts[names.index(face)]

    options = subset.Options()
    options.layout_features = ["kern", "mark", "mkmk", "ccmp", "locl", "tnum", "lnum"]
    options.name_IDs = [0, 1, 2, 3, 4, 5, 6, 13, 14]
    options.hinting = False
    options.drop_tables += ["vhea", "vmtx", "VORG"]
    subsetter = subset.Subsetter(options)
    subsetter.populate(unicodes={code for first, last in RANGES for code in range(first, last + 1)} | set(gb2312()))
    subsetter.subset(font)
    subset.save_font(font, output, options)

    figures = {font["hmtx"][font.getBestCmap()[ord(figure)]][0] for figure in "0123456789"}
    if len(figures) != 1:
        sys.exit(f"{face}: its figures have different widths: {sorted(figures)}")


if __name__ == "__main__":
    main(*sys.argv[1:])
