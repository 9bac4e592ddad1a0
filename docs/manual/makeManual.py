# SPDX-License-Identifier: MIT
"""Makes the user manual: makeManual.py --tour DIRECTORY --version V --work DIRECTORY OUTPUT.pdf

The text is zh.md and en.md beside this file; the pictures are cut out of those that the tour took at twice the size
(DIRECTORY/zh@2x and DIRECTORY/en@2x). "![caption](step){area="Part Part-2"}" is the picture of that step of the tour,
cut to the box around those parts (the tour tells in its pictures where they are); drawings stand beside this file. Ends with code 1 on whatever is
missing or is no good: a picture, a part, the target of a link, a character that the font has not got.
"""

import argparse
import logging
import pathlib
import re
import shutil
import subprocess
import sys

from fontTools.ttLib import TTCollection

HERE = pathlib.Path(__file__).parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE.parents[1] / "tools/tour"))
from cutPicture import cut

FONT = "/usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc"
LANGUAGES = ("zh", "en")
PICTURE = re.compile(r'!\[([^\]]+)\]\(([\w-]+)\)\{area="?([^}"]+)"?\}')
SHORT_TABLE = 8  # rows; a table up to this length is kept on one page


def picture_name(step, area):
    return f"{step}+{area.replace(' ', '+')}.png"


def cut_pictures(text, tour, target):
    target.mkdir(parents=True, exist_ok=True)
    for _, step, area in PICTURE.findall(text):
        cut(tour, step, area.split(), target / picture_name(step, area))


def check_characters(text, language):
    with TTCollection(FONT) as fonts:
        face = next(f for f in fonts if f["name"].getDebugName(1) == "Noto Sans CJK SC")
        missing = {c for c in text if c > " " and ord(c) not in face.getBestCmap()}
    if missing:
        sys.exit(f"{language}.md: the font has no {' '.join(sorted(missing))}")


def mark_short_tables(html):
    def mark(table):
        return table[0].replace("<table", '<table class="short"', 1) if table[0].count("<tr") <= SHORT_TABLE else table[0]

    return re.sub(r"<table.*?</table>", mark, html, flags=re.S)


def half(language, text, version, work, whole):
    """Makes the HTML of one half; the second one takes in the first."""
    source = work / f"{language}.md"
    source.write_text(
        PICTURE.sub(lambda m: f"![{m[1]}](<pictures/{language}/{picture_name(m[2], m[3])}>)", text), encoding="utf-8"
    )
    target = work / f"{language}.html"
    breaks = "+east_asian_line_breaks" if language == "zh" else ""
    command = ["pandoc", f"--from=markdown-smart{breaks}", "--to=html5", f"--template={HERE / 'manual.html'}"]
    command += ["--toc", "--toc-depth=2", "--wrap=none", "--fail-if-warnings", f"--variable=version:{version}"]
    if whole:
        command += ["--variable=whole", f"--variable=css:{(HERE / 'manual.css').as_uri()}"]
        command += [f"--include-before-body={whole}"]
    subprocess.run(command + [source, "--output", target], check=True)
    target.write_text(mark_short_tables(target.read_text(encoding="utf-8")), encoding="utf-8")
    return target


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--tour", type=pathlib.Path, required=True)
    arguments.add_argument("--version", required=True)
    arguments.add_argument("--work", type=pathlib.Path, required=True)
    arguments.add_argument("output", type=pathlib.Path)
    given = arguments.parse_args()

    document = None
    given.work.mkdir(parents=True, exist_ok=True)
    for drawing in HERE.glob("*.svg"):
        shutil.copy(drawing, given.work)
    for language in LANGUAGES:
        text = (HERE / f"{language}.md").read_text(encoding="utf-8")
        check_characters(text, language)
        cut_pictures(text, given.tour / f"{language}@2x", given.work / "pictures" / language)
        document = half(language, text, given.version, given.work, document)

    import weasyprint  # it is slow to load: after everything that can fail sooner

    complaints = []
    handler = logging.Handler(logging.WARNING)
    handler.emit = lambda record: complaints.append(record.getMessage())
    logging.getLogger("weasyprint").addHandler(handler)
    given.output.parent.mkdir(parents=True, exist_ok=True)
    weasyprint.HTML(filename=str(document)).write_pdf(str(given.output))
    if complaints:
        given.output.unlink()
        sys.exit("\n".join(complaints))


if __name__ == "__main__":
    main()
