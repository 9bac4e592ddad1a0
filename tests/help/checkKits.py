# SPDX-License-Identifier: MIT
"""checkKits.py HELP LIBRARY: compares the kits in the folder HELP with the headers that they ship.

Every function must be there with the names and types of its arguments, every record with its size, offsets and types.
"""

import ctypes
import inspect
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HELP, LIBRARY = Path(sys.argv[1]), sys.argv[2]
CPP, PYTHON, C_SHARP, LABVIEW = (
    HELP / f"Tarsel_mover_{name}SDK" for name in ("C++", "Python", "C#", "LabView")
)

RECORD_TYPES = {
    "uint8_t": ctypes.c_uint8, "int16_t": ctypes.c_int16, "uint16_t": ctypes.c_uint16,
    "int32_t": ctypes.c_int32, "uint32_t": ctypes.c_uint32, "double": ctypes.c_double,
}


def declared_functions():
    """{name: (result, [(type, argument)])} of the header, without const."""
    functions = {}
    text = (CPP / "include/moverLibrary.h").read_text(encoding="utf-8")
    for result, name, arguments in re.findall(r"^MOVER_API (\w+) (\w+)\(([^)]*)\);", text, re.MULTILINE):
        pairs = []
        for argument in arguments.split(","):
            type_, argument = re.fullmatch(r"\s*(?:const )?(.*?)\s*(\w+)", argument).groups()
            pairs.append((type_.replace(" *", "*"), argument))
        functions[name] = (result, pairs)
    return functions


def declared_records():
    """{record: (size, [(field, offset, type, length of an array or None)])}, the numbers as the compiler checks them."""
    text = (CPP / "include/moverRecords.h").read_text(encoding="utf-8")
    records = {}
    for record, body in re.findall(r"^typedef struct (\w+) \{(.*?)^\} \1;", text, re.MULTILINE | re.DOTALL):
        size = int(re.search(rf"ASSERT\(sizeof\({record}\) == (\d+)\)", text)[1])
        fields = []
        for type_, field, length in re.findall(r"^\s*(\w+) (\w+)(?:\[(\w+)\])?;", body, re.MULTILINE):
            offset = int(re.search(rf"ASSERT\(offsetof\({record}, {field}\) == (\d+)\)", text)[1])
            fields.append((field, offset, type_, int(length.replace("MOVER_TEXT_LENGTH", "32")) if length else None))
        records[record] = (size, fields)
    return records


def as_lines(functions):
    return {
        f"{result} {name}({', '.join(f'{type_} {argument}' for type_, argument in arguments)})"
        for name, (result, arguments) in functions.items()
    }


class Kits(unittest.TestCase):
    maxDiff = None

    def test_the_headers_say_what_is_compared(self):
        self.assertEqual(len(declared_functions()), 71)
        records = declared_records()
        self.assertEqual([len(records[name][1]) for name in ("MotorParams", "MotorStageState", "CONTROLER_STATE")],
                         [25, 11, 3])

    def test_python_declares_the_functions(self):
        sys.path.insert(0, str(PYTHON))
        import mover_library as kit

        spelling = {ctypes.c_int: "int", ctypes.c_double: "double", ctypes.c_char_p: "char*"}
        spelling[kit.MotorParams] = "MotorParams"
        pointed = {ctypes.c_char: "char", ctypes.c_int: "int", ctypes.c_double: "double",
                   ctypes.c_ubyte: "unsigned char", kit.MotorParams: "MotorParams",
                   kit.MotorStageState: "MotorStageState", kit.CONTROLER_STATE: "CONTROLER_STATE"}
        spelling.update({ctypes.POINTER(type_): name + "*" for type_, name in pointed.items()})

        library = kit.MoverLibrary(LIBRARY)
        functions = {}
        for name, method in vars(kit.MoverLibrary).items():
            if name.startswith("_"):
                continue
            function = getattr(library._library, name)
            names = list(inspect.signature(method).parameters)[1:]
            self.assertEqual(len(names), len(function.argtypes), name)
            functions[name] = (spelling[function.restype],
                               list(zip((spelling[type_] for type_ in function.argtypes), names)))
        self.assertEqual(as_lines(functions), as_lines(declared_functions()))

    def test_python_calls_the_function_of_the_name(self):
        sys.path.insert(0, str(PYTHON))
        import mover_library as kit

        class Recorder:
            def __getattr__(self, name):
                return lambda *arguments: (name, arguments)

        library = kit.MoverLibrary(LIBRARY)
        library._library = Recorder()
        for name, (_, arguments) in declared_functions().items():
            values = tuple(object() for _ in arguments)
            self.assertEqual(getattr(library, name)(*values), (name, values))

    def test_python_has_the_records(self):
        sys.path.insert(0, str(PYTHON))
        import mover_library as kit

        for record, (size, fields) in declared_records().items():
            structure = getattr(kit, record)
            self.assertEqual(ctypes.sizeof(structure), size, record)
            self.assertEqual([field for field, *_ in structure._fields_], [field for field, *_ in fields])
            for (field, type_), (_, offset, c_type, length) in zip(structure._fields_, fields):
                self.assertEqual(getattr(structure, field).offset, offset, f"{record}.{field}")
                expected = ctypes.c_char * length if length else RECORD_TYPES[c_type]
                self.assertIs(type_, expected, f"{record}.{field}")

    def test_c_sharp_declares_the_functions_and_records(self):
        for tool, package in (("mcs", "mono-mcs"), ("mono", "mono-runtime")):
            self.assertTrue(shutil.which(tool), f"{tool} is missing (package {package})")
        lines = set()
        with tempfile.TemporaryDirectory() as folder:
            program = Path(folder) / "list.exe"
            sources = [C_SHARP / "MoverLibrary.cs", Path(__file__).with_name("ListDeclarations.cs")]
            subprocess.run(["mcs", "-warnaserror", f"-out:{program}", *sources], check=True)
            listed = subprocess.run(["mono", program], check=True, capture_output=True, text=True).stdout
            lines = set(listed.splitlines())

        expected = as_lines(declared_functions())
        for record, (size, fields) in declared_records().items():
            expected.add(f"{record} {size}")
            for field, offset, type_, length in fields:
                expected.add(f"{record}.{field} {offset} {type_}" + (f"[{length}]" if length else ""))
        self.assertEqual(lines, expected)

    def test_labview_tells_about_every_function(self):
        kinds = {
            "int": "I32", "double": "DBL", "char*": "U8[]", "int*": "I32*", "double*": "DBL[]", "unsigned char*": "U8*",
            "MotorParams": "U8[168]", "MotorParams*": "U8[168]", "MotorStageState*": "U8[24]",
            "CONTROLER_STATE*": "U8[4]",
        }
        expected = set()
        for name, (result, arguments) in declared_functions().items():
            kinds["int*"] = "I32[]" if name.startswith("list") else "I32*"
            cells = ", ".join(f"{argument}: {kinds[type_]}" for type_, argument in arguments)
            expected.add(f"| `{name}` | {kinds[result]} | {cells} |")
        text = (LABVIEW / "README.md").read_text(encoding="utf-8")
        self.assertEqual(set(re.findall(r"^\| `\w+` \|.*\|$", text, re.MULTILINE)), expected)

    def test_every_kit_explains_itself_in_both_languages(self):
        for kit in (CPP, PYTHON, C_SHARP, LABVIEW):
            text = (kit / "README.md").read_text(encoding="utf-8")
            chinese, english = text.index("\n## 中文\n"), text.index("\n## English\n")
            self.assertLess(chinese, english, kit.name)
            for file in kit.rglob("*"):
                if file.is_file() and file.name != "README.md":
                    self.assertIn(f"`{file.relative_to(kit)}`", text, kit.name)


unittest.main(argv=sys.argv[:1])
