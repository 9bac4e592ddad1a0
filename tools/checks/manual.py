# SPDX-License-Identifier: MIT
"""Checks the user manual: manual.py texts, manual.py pdf FILE.

texts: what stands in bold in docs/manual/zh.md and en.md is the program's own text in that language, every text of the
program is in both, and both have the same chapters, pictures, tables and lists.
pdf: the file opens, is small enough, has all headings and pictures, and all its fonts are in it.
"""

import glob
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).parents[2]
FOLDERS = ("app", "shell", "axis", "models", "settings", "console", "widgets", "device")
LANGUAGES = ("zh", "en")
LARGEST = 8_000_000  # bytes

# Texts that nobody can get to see, by the reason.
EXEMPT_CONTEXTS = {"DeviceParamWidget"}  # the overlay is there, but no control opens it
EXEMPT_TEXTS = {("MoverControlWidget", text) for text in ("放大", "缩小", "设置设备参数")}  # of buttons that stay hidden

CJK = re.compile(r"[一-鿿]")
BOLD = re.compile(r"\*\*(.+?)\*\*")
HEADING = re.compile(r"^(#+) (.+?) \{#(zh|en)-([\w-]+)[^}]*\}$", re.M)
PICTURE = re.compile(r"^!\[[^\]]+\]\((.+)\)\{area=(.+)\}$", re.M)

failures = []


def complain(text):
    failures.append(text)
    print(text, file=sys.stderr)


def bare(text):
    """Line breaks, accelerators and the colon behind a caption do not count."""
    return re.sub(r"\s|&", "", text).rstrip("：:")


def pattern(text):
    """Matches the bare text with whatever stands for its numbers."""
    return re.compile(re.sub(r"%\d", ".+", re.escape(bare(text)).replace(r"\%", "%")))


def catalogue():
    """The (Chinese, English) texts of the program."""
    tree = xml.etree.ElementTree.parse(ROOT / "resources/i18n/mover_en_US.ts")
    return {
        (message.findtext("source"), message.findtext("translation"))
        for context in tree.getroot().findall("context")
        if context.findtext("name") not in EXEMPT_CONTEXTS
        for message in context.findall("message")
        if (context.findtext("name"), message.findtext("source")) not in EXEMPT_TEXTS
    }


def untranslated(translated):
    """Texts that are shown as they are in both languages: Chinese literals and the labels of the console."""
    texts = set()
    for folder in FOLDERS:
        for name in glob.glob(f"{ROOT}/{folder}/*.cpp") + glob.glob(f"{ROOT}/{folder}/*.h"):
            source = re.sub(r"//.*|/\*.*?\*/", "", pathlib.Path(name).read_text(encoding="utf-8"))
            literals = re.findall(r'"((?:[^"\\\n]|\\.)*)"', source)
            texts.update(t.replace("\\n", "\n") for t in literals if CJK.search(t) and not t.startswith("/help/"))
    commands = (ROOT / "console/ConsoleCommands.h").read_text(encoding="utf-8")
    texts.update(re.findall(r'^    \{\d+, "([^"]+)", "', commands, re.M))
    return texts - translated


def not_translatable():
    """Texts of the forms that may be quoted but need not be."""
    texts = set()
    for name in glob.glob(f"{ROOT}/*/*.ui"):
        texts.update(re.findall(r'<string notr="true">([^<]+)<', pathlib.Path(name).read_text(encoding="utf-8")))
    return texts


def manual(language):
    text = (ROOT / f"docs/manual/{language}.md").read_text(encoding="utf-8")
    return re.sub(r"^```.*?^```", "", text, flags=re.M | re.S)


def check_texts():
    pairs = catalogue()
    as_they_are = untranslated({chinese for chinese, _ in pairs} | {text for _, text in EXEMPT_TEXTS})
    optional = [pattern(text) for text in not_translatable()]
    for index, language in enumerate(LANGUAGES):
        quoted = {bare(text): text for text in BOLD.findall(manual(language))}
        required = {pair[index] for pair in pairs} | as_they_are
        patterns = {text: pattern(text) for text in required}
        for text, form in sorted(patterns.items()):
            if not any(form.fullmatch(q) for q in quoted):
                complain(f"{language}.md: the program says {text!r}, the manual does not")
        for form, text in quoted.items():
            if not any(p.fullmatch(form) for p in [*patterns.values(), *optional]):
                complain(f"{language}.md: the program never says {text!r}")
        print(f"{language}: {len(required)} texts of the program, {len(quoted)} quoted")

    outlines = [outline(language) for language in LANGUAGES]
    for chinese, english in zip(*outlines):
        if chinese != english:
            complain(f"The halves differ: {chinese} in zh.md, {english} in en.md")
            break
    if len(outlines[0]) != len(outlines[1]):
        complain(f"The halves differ: {len(outlines[0])} chapters, pictures, … in zh.md, {len(outlines[1])} in en.md")


def outline(language):
    """Headings, pictures, rows and items in their order, without their words."""
    parts = []
    for line in manual(language).splitlines():
        heading, picture = HEADING.match(line), PICTURE.match(line)
        if heading:
            parts.append(f"{heading[1]} {heading[4]}")
        elif picture:
            parts.append(f"picture {picture[1]} {picture[2]}")
        elif line.startswith("|"):
            parts.append(f"row with {line.count('|')} lines")
        elif re.match(r"- |\d+\. ", line):
            parts.append("item")
        elif line.startswith(":::"):
            parts.append(line)
        elif line.strip():
            parts.append("paragraph")
    return parts


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def check_pdf(name):
    pages = int(re.search(r"^Pages: +(\d+)", output("pdfinfo", name), re.M)[1])
    size = pathlib.Path(name).stat().st_size
    if size > LARGEST:
        complain(f"{name}: {size} bytes, more than {LARGEST}")

    shown = re.sub(r"\s", "", output("pdftotext", name, "-"))
    pictures = 0
    for language in LANGUAGES:
        text = manual(language)
        pictures += len(set(PICTURE.findall(text)))
        for _, heading, *_ in HEADING.findall(text):
            # Once in the contents, once over its chapter.
            if shown.count(re.sub(r"\s", "", heading)) < 2:
                complain(f"{name}: there is no heading {heading!r}")
    if "�" in shown:
        complain(f"{name}: characters that are none")

    images = [line.split() for line in output("pdfimages", "-list", name).splitlines()[2:]]
    found = len({row[10] for row in images if row[2] == "image"})
    if found != pictures:
        complain(f"{name}: {found} pictures, the text names {pictures}")

    fonts = output("pdffonts", name).splitlines()[2:]
    for font in fonts:
        embedded = font.split()[-5]
        if "Noto-Sans" not in font or embedded != "yes":
            complain(f"{name}: not a font of the manual, or not in the file: {font}")
    print(f"{pages} pages, {size} bytes, {found} pictures, {len(fonts)} fonts")


def main():
    if sys.argv[1:] == ["texts"]:
        check_texts()
    elif sys.argv[1:2] == ["pdf"] and len(sys.argv) == 3:
        check_pdf(sys.argv[2])
    else:
        sys.exit(__doc__)
    sys.exit(bool(failures))


if __name__ == "__main__":
    main()
