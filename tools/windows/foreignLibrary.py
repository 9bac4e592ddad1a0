#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""foreignLibrary.py HEADER FOLDER: writes, from the declarations of the motion library's header,

functions.h  the functions, each of which folds all that it is given into what it returns and fills what it is to fill
library.c    a motion library of them, to be built by another compiler, without a C runtime
caller.c     a program that calls every function of a moverLibrary.dll (its argument) and compares what comes back with what
             the same functions give that the program's own compiler has built
linked.c     a program without a C runtime that is linked with an import library for all of them and ends with the number of
             controllers
"""

import re
import sys
from pathlib import Path

VALUES = {  # of each type of argument: what is handed over, and how it is folded
    "int": ("{k} + 7", "fold = mix(fold, {name});"),
    "double": ("{k} * 1.25 - 3", "fold = mix(fold, (long long)({name} * 8));"),
    "const char *": ("text", "for (int k = 0; k < 32; ++k) fold = mix(fold, {name}[k]);"),
    "const double *": ("pairs", "for (int k = 0; k < 6; ++k) fold = mix(fold, (long long)({name}[k] * 8));"),
    "MotorParams": ("params", "for (unsigned k = 0; k < sizeof {name}; ++k)"
                              " fold = mix(fold, ((const unsigned char *)&{name})[k]);"),
    # What the library fills: these bytes of it.
    "int *": ("(int *)out", 4),
    "unsigned char *": ("(unsigned char *)out", 1),
    "char *": ("(char *)out", 32),
    "double *": ("(double *)out", 48),
    "CONTROLER_STATE *": ("(CONTROLER_STATE *)out", "sizeof(CONTROLER_STATE)"),
    "MotorStageState *": ("(MotorStageState *)out", "sizeof(MotorStageState)"),
    "MotorParams *": ("(MotorParams *)out", "sizeof(MotorParams)"),
}

FUNCTIONS = """/* Written by foreignLibrary.py. */
#include "device/moverLibrary.h"

static long long mix(long long fold, long long value)
{
    return (fold * 1000003 + value) & 0xffffffffffff;
}
static void fill(void *place, unsigned size, long long fold)
{
    for (unsigned k = 0; k < size; ++k)
        ((unsigned char *)place)[k] = (unsigned char)(fold >> k % 5 * 8);
}
"""

CALLER = """/* Written by foreignLibrary.py. */
#define MOVER_LIBRARY_STATIC
#define FUNCTION(result, name) static result expected_##name
#include "functions.h"

#include <stdio.h>
#include <string.h>
#include <windows.h>

static unsigned char out[512];
static unsigned char kept[512];
static char text[32] = "LIN-100 and what comes after it";
static double pairs[6] = {-1.5, 2.25, 0, 1e6, 3.125, -4};
static MotorParams params;
static int wrong;

static void begin(void) { memset(out, 0x5a, sizeof out); }
static void compare(const char *name, int same)
{
    if (same && !memcmp(out, kept, sizeof out))
        return;
    printf("%s\\n", name);
    wrong = 1;
}

int main(int argc, char *argv[])
{
    HMODULE library = argc == 2 ? LoadLibraryA(argv[1]) : NULL;
    if (!library)
        return 2;
    for (unsigned k = 0; k < sizeof params; ++k)
        ((unsigned char *)&params)[k] = (unsigned char)(k * 7 + 1);
"""


def main():
    header, folder = Path(sys.argv[1]), Path(sys.argv[2])
    functions, calls = [FUNCTIONS], [CALLER]
    count = 0
    for result, name, arguments in re.findall(r"^MOVER_API (\w+) (\w+)\((.*)\);", header.read_text("utf-8"), re.M):
        count += 1
        steps, given = [], []
        outputs = 0
        for k, argument in enumerate(arguments.split(", ")):
            kind, variable = re.fullmatch(r"(.*?\*?) ?(\w+)", argument).groups()
            value, how = VALUES[kind]
            if isinstance(how, str) and "fold" in how:
                steps.append(how.format(name=variable))
                given.append(value.format(k=k))
            else:
                steps.append(f"fill({variable}, {how}, fold + {outputs});")
                given.append(value if not outputs else f"{value[:value.index(')') + 1]}(out + {64 * outputs})")
                outputs += 1
        end = "return (int)(fold & 0x7fffffff);" if result == "int" else "return (double)(fold & 0xffffffff) / 8;"
        functions.append(f"FUNCTION({result}, {name})({arguments})\n{{\n    long long fold = {count};\n    "
                         + "\n    ".join(steps) + f"\n    {end}\n}}\n")
        passed = ", ".join(given)
        types = ", ".join(re.fullmatch(r"(.*?\*?) ?\w+", argument).group(1) for argument in arguments.split(", "))
        calls.append(f"""    {{
        {result} (*function)({types}) = ({result} (*)({types}))(void (*)(void))GetProcAddress(library, "{name}");
        if (!function)
            return 3;
        begin();
        const {result} expected = expected_{name}({passed});
        memcpy(kept, out, sizeof out);
        begin();
        const {result} answer = function({passed});
        compare("{name}", answer == expected);
    }}
""")
    (folder / "functions.h").write_text("\n".join(functions), "utf-8")
    calls.append(f'    if (!wrong)\n        printf("{count}\\n");\n    return wrong;\n}}\n')
    (folder / "caller.c").write_text("".join(calls), "utf-8")
    names = re.findall(r"^MOVER_API \w+ (\w+)", header.read_text("utf-8"), re.M)
    (folder / "linked.c").write_text("""/* Written by foreignLibrary.py. */
#include "moverLibrary.h"

int start(void)
{
    const void *volatile function;
    int ids[10];
""" + "".join(f"    function = (const void *){name};\n" for name in names)
        + "    return listTSMotorControlerDevices(ids, 10);\n}\n", "utf-8")
    (folder / "library.c").write_text("""/* Written by foreignLibrary.py. */
#define MOVER_LIBRARY_BUILD
#define FUNCTION(result, name) __declspec(dllexport) result name
#include "functions.h"

int _fltused; /* which Microsoft's linker wants of whoever reckons with doubles */
""", "utf-8")


main()
