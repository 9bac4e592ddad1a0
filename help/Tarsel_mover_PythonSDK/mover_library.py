# SPDX-License-Identifier: MIT
"""The motion library for Python 3.9 and later: its records and its 71 functions, under the names of moverLibrary.h.

Conventions that hold for every function unless its own text says otherwise:
- `id` is a controller's identifier as listTSMotorControlerDevices() reports it; `axis` counts from 0.
- An integer result below 0 is a failure and the number tells which, see checked(). A real result of a parameter getter
  below 0 is a failure too (positions excepted).
- Positions, displacements, speeds and accelerations are in the stage's unit (mm or °, per s, per s²).
- Enables are 0 = off, 1 = on. Delays are in milliseconds. Directions are 1 = positive, 2 = negative.
- Texts are 8-bit ASCII in 32-byte buffers, see text_buffer(). A text of 32 bytes has no terminating zero.
- The library is not thread-safe: one call at a time, from whichever thread.

Calling order: list -> addDev -> openTSDevice (on failure removeDev) -> calls on device and axes -> closeTSDevice ->
removeDev.
"""

import ctypes
import os
import sys
from pathlib import Path
from typing import Annotated, Optional, Union, get_type_hints

TEXT_LENGTH = 32


# ---- Records: the byte layout belongs to the library


class MotorParams(ctypes.Structure):
    """Drive parameters of one axis. Lengths are in the stage's unit."""

    _fields_ = [
        ("modelName", ctypes.c_char * TEXT_LENGTH),
        ("serialNumber", ctypes.c_char * TEXT_LENGTH),
        ("pulseOneCircle", ctypes.c_uint32),  # pulses per motor revolution
        ("alignment1", ctypes.c_uint32),
        ("dispOneCircle", ctypes.c_double),  # lead: travel per motor revolution
        ("restoreSpeed", ctypes.c_double),  # homing speed
        ("moveType", ctypes.c_uint16),  # 0 linear, 1 rotation, 2 angular, 3 lifting
        ("positivePolarity", ctypes.c_uint16),  # limit switch: 0 active low, 1 active high
        ("negativePolarity", ctypes.c_uint16),
        ("originPolarity", ctypes.c_uint16),
        ("phaseDirction", ctypes.c_uint16),  # moving direction: 0 positive, 1 negative
        ("limitDirection", ctypes.c_uint16),  # 0 positive, 1 negative
        ("unitType", ctypes.c_uint16),  # 0 millimetres, 1 degrees
        ("optOrder", ctypes.c_char * 10),  # order of the opto-couplers, for example b"NZP"
        ("maxSpeed", ctypes.c_double),
        ("maxAcc", ctypes.c_double),
        ("minPos", ctypes.c_double),
        ("maxPos", ctypes.c_double),
        ("zeroOptWidth", ctypes.c_uint16),  # pulses
        ("optNum", ctypes.c_uint16),
        ("returnTrip", ctypes.c_int16),  # backlash, pulses
        ("motorPhase", ctypes.c_uint16),
        ("modifyDate", ctypes.c_int32),  # YYYYMMDD as a number
        ("alignment2", ctypes.c_uint32),
        ("maxRockerSpeed", ctypes.c_double),
    ]


class MotorStageState(ctypes.Structure):
    """Running state of one axis. Flags are 0 or 1."""

    _fields_ = [
        ("isCanRun", ctypes.c_int16),
        ("isStop", ctypes.c_int16),
        ("isEnable", ctypes.c_int16),
        ("isHome", ctypes.c_int16),
        ("isLeftLimit", ctypes.c_int16),
        ("isRightLimit", ctypes.c_int16),
        ("isLeftOptoFault", ctypes.c_int16),
        ("isRightOptoFault", ctypes.c_int16),
        ("isHomeOptoFault", ctypes.c_int16),
        ("alignment", ctypes.c_int16),
        ("runCount", ctypes.c_uint32),  # current run of a loop run; 0 while no loop is counting
    ]


class CONTROLER_STATE(ctypes.Structure):
    """Joystick state of a controller."""

    _fields_ = [
        ("rockerState", ctypes.c_uint8),  # not 0: a joystick is present
        ("alignment", ctypes.c_uint8),
        ("rockerValue", ctypes.c_uint16),  # speed level, tenths of the stage's maxRockerSpeed
    ]


# ---- Arguments: what Python passes, and what C takes. An Out is a record or number made by the caller; None is null.

Int = Annotated[int, ctypes.c_int]
Double = Annotated[float, ctypes.c_double]
Text = Annotated[bytes, ctypes.c_char_p]
Buffer = Annotated[ctypes.Array[ctypes.c_char], ctypes.POINTER(ctypes.c_char)]
Ints = Annotated[ctypes.Array[ctypes.c_int], ctypes.POINTER(ctypes.c_int)]
Doubles = Annotated[ctypes.Array[ctypes.c_double], ctypes.POINTER(ctypes.c_double)]
IntOut = Annotated[Optional[ctypes.c_int], ctypes.POINTER(ctypes.c_int)]
ByteOut = Annotated[Optional[ctypes.c_ubyte], ctypes.POINTER(ctypes.c_ubyte)]
MotorParamsOut = Annotated[MotorParams, ctypes.POINTER(MotorParams)]
MotorStageStateOut = Annotated[MotorStageState, ctypes.POINTER(MotorStageState)]
CONTROLER_STATEOut = Annotated[CONTROLER_STATE, ctypes.POINTER(CONTROLER_STATE)]


class MoverError(Exception):
    """A call of the library failed; `status` tells how."""

    def __init__(self, status: int) -> None:
        super().__init__(f"the motion library answered {status}")
        self.status = status


def checked(status: int) -> int:
    """The status itself when it is a success, a MoverError otherwise."""
    if status < 0:
        raise MoverError(status)
    return status


def text_buffer() -> "ctypes.Array[ctypes.c_char]":
    """A buffer for a text getter; its `value` is the text up to the first zero."""
    return ctypes.create_string_buffer(TEXT_LENGTH)


def library_path() -> Path:
    """MOVER_LIBRARY of the environment, or the library of the program that this kit stands beside."""
    chosen = os.environ.get("MOVER_LIBRARY")
    if chosen:
        return Path(chosen)
    name = "moverLibrary.dll" if sys.platform == "win32" else "libmoverLibrary.so"
    program = Path(__file__).resolve().parents[2]
    for candidate in (program / name, program / "simulator" / name):  # a maker's library, the simulated controller
        if candidate.exists():
            return candidate
    raise FileNotFoundError(f"no {name} in {program}; name it in the environment variable MOVER_LIBRARY")


class MoverLibrary:
    """The functions of one motion library."""

    def __init__(self, path: Union[str, Path, None] = None) -> None:
        self._library = ctypes.CDLL(str(path or library_path()))
        for name, method in vars(MoverLibrary).items():
            if name.startswith("_"):
                continue
            hints = get_type_hints(method, include_extras=True)
            types = {argument: hint.__metadata__[0] if hasattr(hint, "__metadata__") else hint
                     for argument, hint in hints.items()}
            function = getattr(self._library, name)
            function.restype = types.pop("return")
            function.argtypes = list(types.values())

    # ---- Controllers

    def listTSMotorControlerDevices(self, ids: Ints, capacity: Int) -> Int:
        """Writes the identifiers of the connected controllers to `ids`, at most `capacity`. Returns their
        number, 0 for none."""
        return self._library.listTSMotorControlerDevices(ids, capacity)

    def addDev(self, id: Int) -> Int:
        """Makes the controller known to the library, so that it can be opened."""
        return self._library.addDev(id)

    def removeDev(self, id: Int) -> Int:
        """Forgets the controller; an open one is closed."""
        return self._library.removeDev(id)

    def openTSDevice(self, id: Int) -> Int:
        """Opens the link to an added controller."""
        return self._library.openTSDevice(id)

    def closeTSDevice(self, id: Int) -> Int:
        """Closes the link; the controller stays added."""
        return self._library.closeTSDevice(id)

    def addMotor(self, first: Int, second: Int, model: Text) -> Int:
        """Registers a stage model, once at start, with no controller open. `model`: 32 bytes, zero-padded; both
        numbers 0."""
        return self._library.addMotor(first, second, model)

    def getDevAxisCount(self, id: Int) -> Int:
        """Number of axes of the controller, or a negative status."""
        return self._library.getDevAxisCount(id)

    def setDevAxisCount(self, id: Int, count: Int) -> Int:
        """Stores the number of axes (1 to 3) in the controller."""
        return self._library.setDevAxisCount(id, count)

    def getDevSerialNumber(self, id: Int, buffer: Buffer, length: Int) -> Int:
        """Serial number of the controller. `length`: bytes of `buffer`, 32."""
        return self._library.getDevSerialNumber(id, buffer, length)

    def setDevSerialNumber(self, id: Int, text: Text, length: Int) -> Int:
        """Stores the serial number of the controller. `length`: bytes of `text`, at most 32."""
        return self._library.setDevSerialNumber(id, text, length)

    def getDevModelName(self, id: Int, buffer: Buffer, length: Int) -> Int:
        """Model name of the controller. `length`: bytes of `buffer`, 32."""
        return self._library.getDevModelName(id, buffer, length)

    def setDevModelName(self, id: Int, text: Text, length: Int) -> Int:
        """Stores the model name of the controller. `length`: bytes of `text`, at most 32."""
        return self._library.setDevModelName(id, text, length)

    def getDevSoftVersion(self, id: Int, buffer: Buffer, length: Int) -> Int:
        """Firmware version of the controller. `length`: bytes of `buffer`, 32."""
        return self._library.getDevSoftVersion(id, buffer, length)

    def getRockerEnable(self, id: Int) -> Int:
        """Whether the joystick drives the axes: 1 yes, 0 no, or a negative status."""
        return self._library.getRockerEnable(id)

    def setRockerEnable(self, id: Int, enable: Int) -> Int:
        """Hands the axes to the joystick (1) or takes them back (0)."""
        return self._library.setRockerEnable(id, enable)

    def getRockerInfo(self, id: Int, info: CONTROLER_STATEOut) -> Int:
        """Presence and speed level of the joystick; serves as a sign of life. The caller zeroes `info`."""
        return self._library.getRockerInfo(id, info)

    # ---- Motion

    def startMove(self, id: Int, axis: Int) -> Int:
        """Starts an absolute move to the position of setTargetPos()."""
        return self._library.startMove(id, axis)

    def startDrive(self, id: Int, axis: Int, direction: Int) -> Int:
        """Starts a relative move by setRelativeDisp(), or an unlimited one while setRelativeDispEnable() is
        0."""
        return self._library.startDrive(id, axis, direction)

    def startJog(self, id: Int, axis: Int, direction: Int) -> Int:
        """Starts setJogCount() steps of setJogStep(), with setJogDelay() ms between them."""
        return self._library.startJog(id, axis, direction)

    def startCircle(self, id: Int, axis: Int, direction: Int) -> Int:
        """Starts a loop run: setCircleCount() times there and back by setCircleDisp(), with setCircleDelay() ms
        dwell."""
        return self._library.startCircle(id, axis, direction)

    def home(self, id: Int, axis: Int) -> Int:
        """Runs to the origin at the homing speed."""
        return self._library.home(id, axis)

    def stopRuning(self, id: Int, axis: Int) -> Int:
        """Stops the axis; it decelerates. Stopping an axis that stands still is no error."""
        return self._library.stopRuning(id, axis)

    def setMotorEnable(self, id: Int, axis: Int, enable: Int) -> Int:
        """Switches the power stage on (1) or off (0). Off refuses starts and keeps the position."""
        return self._library.setMotorEnable(id, axis, enable)

    def getRuningState(self, id: Int, axis: Int, state: MotorStageStateOut) -> Int:
        """Running state of the axis. The caller zeroes `state`."""
        return self._library.getRuningState(id, axis, state)

    def getCurrentPos(self, id: Int, axis: Int, status: IntOut) -> Double:
        """Position of the axis. `status` may be null; the caller sets it to 0, below 0 after the call is a
        failure."""
        return self._library.getCurrentPos(id, axis, status)

    # ---- Motion parameters

    def getTargetPos(self, id: Int, axis: Int, success: ByteOut) -> Double:
        """Target position. `success`: the caller sets it to 0, not 0 after the call is success."""
        return self._library.getTargetPos(id, axis, success)

    def setTargetPos(self, id: Int, axis: Int, value: Double) -> Int:
        """Stores the target of startMove()."""
        return self._library.setTargetPos(id, axis, value)

    def setSpeed(self, id: Int, axis: Int, value: Double) -> Int:
        """Travelling speed, unit/s, above 0."""
        return self._library.setSpeed(id, axis, value)

    def getSpeed(self, id: Int, axis: Int) -> Double:
        return self._library.getSpeed(id, axis)

    def setAcceleration(self, id: Int, axis: Int, value: Double) -> Int:
        """Acceleration and deceleration, unit/s², above 0."""
        return self._library.setAcceleration(id, axis, value)

    def getAcceleration(self, id: Int, axis: Int) -> Double:
        return self._library.getAcceleration(id, axis)

    def setRelativeDisp(self, id: Int, axis: Int, value: Double) -> Int:
        """Displacement of startDrive(), 0 or more."""
        return self._library.setRelativeDisp(id, axis, value)

    def getRelativeDisp(self, id: Int, axis: Int) -> Double:
        return self._library.getRelativeDisp(id, axis)

    def setRelativeDispEnable(self, id: Int, axis: Int, value: Int) -> Int:
        """Whether startDrive() is limited to the displacement (1) or runs until a stop or a limit (0)."""
        return self._library.setRelativeDispEnable(id, axis, value)

    def getRelativeDispEnable(self, id: Int, axis: Int) -> Int:
        return self._library.getRelativeDispEnable(id, axis)

    def setJogStep(self, id: Int, axis: Int, value: Double) -> Int:
        """Length of one jog step, 0 or more."""
        return self._library.setJogStep(id, axis, value)

    def getJogStep(self, id: Int, axis: Int) -> Double:
        return self._library.getJogStep(id, axis)

    def setJogCount(self, id: Int, axis: Int, value: Int) -> Int:
        """Number of jog steps, 0 or more."""
        return self._library.setJogCount(id, axis, value)

    def getJogCount(self, id: Int, axis: Int) -> Int:
        return self._library.getJogCount(id, axis)

    def setJogDelay(self, id: Int, axis: Int, value: Int) -> Int:
        """Dwell between jog steps, ms, 0 or more."""
        return self._library.setJogDelay(id, axis, value)

    def getJogDelay(self, id: Int, axis: Int) -> Int:
        return self._library.getJogDelay(id, axis)

    def getJogIndex(self, id: Int, axis: Int) -> Int:
        """Number of the jog step that is running; 0 while none is."""
        return self._library.getJogIndex(id, axis)

    def setCircleDisp(self, id: Int, axis: Int, value: Double) -> Int:
        """Travel of a loop run, 0 or more."""
        return self._library.setCircleDisp(id, axis, value)

    def getCircleDisp(self, id: Int, axis: Int) -> Double:
        return self._library.getCircleDisp(id, axis)

    def setCircleCount(self, id: Int, axis: Int, value: Int) -> Int:
        """Number of times that a loop run goes there and back, 0 or more."""
        return self._library.setCircleCount(id, axis, value)

    def getCircleCount(self, id: Int, axis: Int) -> Int:
        return self._library.getCircleCount(id, axis)

    def setCircleDelay(self, id: Int, axis: Int, value: Int) -> Int:
        """Dwell at each end of a loop run, ms, 0 or more."""
        return self._library.setCircleDelay(id, axis, value)

    def getCircleDelay(self, id: Int, axis: Int) -> Int:
        return self._library.getCircleDelay(id, axis)

    def getCircleIndex(self, id: Int, axis: Int) -> Int:
        """Number of the loop that is running; 0 while none is."""
        return self._library.getCircleIndex(id, axis)

    def setTriggerInEnable(self, id: Int, axis: Int, value: Int) -> Int:
        """Whether pulses on the trigger input step the axis."""
        return self._library.setTriggerInEnable(id, axis, value)

    def getTriggerInEnable(self, id: Int, axis: Int) -> Int:
        return self._library.getTriggerInEnable(id, axis)

    def setTriggerOutEnable(self, id: Int, axis: Int, value: Int) -> Int:
        """Whether the axis gives pulses on the trigger output."""
        return self._library.setTriggerOutEnable(id, axis, value)

    def getTriggerOutEnable(self, id: Int, axis: Int) -> Int:
        return self._library.getTriggerOutEnable(id, axis)

    def setTriggerStep(self, id: Int, axis: Int, value: Double) -> Int:
        """Displacement per trigger pulse; the sign is the direction."""
        return self._library.setTriggerStep(id, axis, value)

    def getTriggerStep(self, id: Int, axis: Int) -> Double:
        return self._library.getTriggerStep(id, axis)

    # ---- Stage

    def setMotorUnitType(self, id: Int, axis: Int, value: Int) -> Int:
        """Unit of the axis: 0 millimetres, 1 degrees."""
        return self._library.setMotorUnitType(id, axis, value)

    def getMotorUnitType(self, id: Int, axis: Int) -> Int:
        return self._library.getMotorUnitType(id, axis)

    def getMotorModelName(self, id: Int, axis: Int, buffer: Buffer, length: Int) -> Int:
        """Model name of the stage. `length`: bytes of the buffer or text, at most 32."""
        return self._library.getMotorModelName(id, axis, buffer, length)

    def setMotorModelName(self, id: Int, axis: Int, text: Text, length: Int) -> Int:
        return self._library.setMotorModelName(id, axis, text, length)

    def getMotorSerialNumber(self, id: Int, axis: Int, buffer: Buffer, length: Int) -> Int:
        """Serial number of the stage. `length`: bytes of the buffer or text, at most 32."""
        return self._library.getMotorSerialNumber(id, axis, buffer, length)

    def setMotorSerialNumber(self, id: Int, axis: Int, text: Text, length: Int) -> Int:
        return self._library.setMotorSerialNumber(id, axis, text, length)

    def getMotorParams(self, id: Int, axis: Int, params: MotorParamsOut) -> Int:
        """The whole parameter record of the axis."""
        return self._library.getMotorParams(id, axis, params)

    def setMotorParams(self, id: Int, axis: Int, params: MotorParams) -> Int:
        return self._library.setMotorParams(id, axis, params)

    def getMotorAutoDetect(self, id: Int, axis: Int, code: IntOut) -> Int:
        """Identification chip of the stage: `code` 2 = written, 1 = blank, 0 = none."""
        return self._library.getMotorAutoDetect(id, axis, code)

    def setClearIDChip(self, id: Int, axis: Int) -> Int:
        """Erases the identification chip of the stage."""
        return self._library.setClearIDChip(id, axis)

    def setPosConpenEnable(self, id: Int, axis: Int, value: Int) -> Int:
        """Whether the position is corrected by the compensation tables."""
        return self._library.setPosConpenEnable(id, axis, value)

    def getPosConpenEnable(self, id: Int, axis: Int) -> Int:
        return self._library.getPosConpenEnable(id, axis)

    def setPositivePosConpen(self, id: Int, axis: Int, pairs: Doubles, count: Int) -> Int:
        """Compensation tables, one per direction of travel. `pairs`: expected, actual, expected, actual …, in
        the stage's unit; `count`: number of pairs. A getter takes the capacity in `*count` and puts the number
        of pairs there."""
        return self._library.setPositivePosConpen(id, axis, pairs, count)

    def getPositivePosConpen(self, id: Int, axis: Int, pairs: Doubles, count: IntOut) -> Int:
        return self._library.getPositivePosConpen(id, axis, pairs, count)

    def setNegativePosConpen(self, id: Int, axis: Int, pairs: Doubles, count: Int) -> Int:
        return self._library.setNegativePosConpen(id, axis, pairs, count)

    def getNegativePosConpen(self, id: Int, axis: Int, pairs: Doubles, count: IntOut) -> Int:
        return self._library.getNegativePosConpen(id, axis, pairs, count)
