# SPDX-License-Identifier: MIT
"""callAsLabView.py README LIBRARY HELPER TARGET: moves axis 0 of the first controller to TARGET.

Every call is made as LabVIEW's node would make it that was configured by the table of the kit's README, in the order that
it tells, with records as bytes at the offsets that it names. HELPER is the compiled moverByPointer.c.
"""

import ctypes
import re
import struct
import sys
import time

readme, library, helper, target = sys.argv[1:]
MARKS = {
    "I32": ctypes.c_int32, "DBL": ctypes.c_double, "I32*": ctypes.POINTER(ctypes.c_int32),
    "U8*": ctypes.POINTER(ctypes.c_uint8), "I32[]": ctypes.POINTER(ctypes.c_int32),
    "DBL[]": ctypes.POINTER(ctypes.c_double),
}


def mark(name):
    return MARKS.get(name, ctypes.POINTER(ctypes.c_uint8))  # texts and records


with open(readme, encoding="utf-8") as file:
    rows = re.findall(r"^\| `(\w+)` \| (\w+) \| (.*) \|$", file.read(), re.MULTILINE)
table = {name: (result, [pair.split(": ")[1] for pair in pairs.split(", ")]) for name, result, pairs in rows}
table["setMotorParamsByPointer"] = ("I32", ["I32", "I32", "U8[168]"])
libraries = {True: ctypes.CDLL(helper), False: ctypes.CDLL(library)}


def call(name, *arguments):
    result, parameters = table[name]
    function = getattr(libraries[name.endswith("ByPointer")], name)
    function.restype = mark(result)
    function.argtypes = [mark(parameter) for parameter in parameters]
    answer = function(*arguments)
    if answer < 0 and result == "I32":
        sys.exit(f"{name}: {answer}")
    return answer


def state():
    """can run, stopped, enabled, homed"""
    record = (ctypes.c_uint8 * 24)()
    call("getRuningState", controller, 0, record)
    return struct.unpack_from("<4h", record)


ids = (ctypes.c_int32 * 10)()
if call("listTSMotorControlerDevices", ids, 10) < 1:
    sys.exit("no controller is connected")
controller = ids[0]
print(f"controller {controller}")
call("addDev", controller)
call("openTSDevice", controller)

text = (ctypes.c_uint8 * 32)()
call("getDevModelName", controller, text, 32)
print("model", bytes(text).split(b"\0")[0].decode())
print("can run {}, stopped {}, enabled {}, homed {}".format(*state()))

MAX_SPEED = 112  # its offset
params = (ctypes.c_uint8 * 168)()
call("getMotorParams", controller, 0, params)
(speed,) = struct.unpack_from("<d", params, MAX_SPEED)
struct.pack_into("<d", params, MAX_SPEED, speed / 2)
call("setMotorParamsByPointer", controller, 0, params)
call("getMotorParams", controller, 0, params)
if struct.unpack_from("<d", params, MAX_SPEED) != (speed / 2,):
    sys.exit("setMotorParamsByPointer wrote something else")

status = ctypes.c_int32(0)
print(f"from {call('getCurrentPos', controller, 0, status):g} to {float(target):g}")
call("setTargetPos", controller, 0, float(target))
call("startMove", controller, 0)
while not state()[1]:
    time.sleep(0.05)
print(f"stands at {call('getCurrentPos', controller, 0, status):g}")
call("closeTSDevice", controller)
call("removeDev", controller)
