# SPDX-License-Identifier: MIT
"""example.py [TARGET]: moves axis 0 of the first controller to TARGET (mm or °), or 1 further than where it is."""

import ctypes
import sys
import time
from contextlib import contextmanager

from mover_library import TEXT_LENGTH, MotorStageState, MoverError, MoverLibrary, checked, text_buffer


@contextmanager
def controller(library, id):
    """Opens a controller, and closes it again however the block is left."""
    library.addDev(id)
    try:
        checked(library.openTSDevice(id))
        try:
            yield
        finally:
            library.closeTSDevice(id)
    finally:
        library.removeDev(id)


def state_of(library, id, axis):
    state = MotorStageState()
    checked(library.getRuningState(id, axis, state))
    return state


def position_of(library, id, axis):
    status = ctypes.c_int(0)
    position = library.getCurrentPos(id, axis, status)
    checked(status.value)
    return position


def drive(library, target):
    axis = 0
    ids = (ctypes.c_int * 10)()
    count = library.listTSMotorControlerDevices(ids, len(ids))
    for id in ids[:max(count, 0)]:
        print(f"controller {id}")
    if count < 1:
        sys.exit("no controller is connected")

    id = ids[0]
    with controller(library, id):
        name = text_buffer()
        checked(library.getDevModelName(id, name, TEXT_LENGTH))
        print("model", name.value.decode("ascii"))

        state = state_of(library, id, axis)
        print(
            f"can run {state.isCanRun}, stopped {state.isStop}, enabled {state.isEnable}, homed {state.isHome}"
        )

        position = position_of(library, id, axis)
        if target is None:
            target = position + 1
        print(f"from {position:g} to {target:g}")
        checked(library.setTargetPos(id, axis, target))
        checked(library.startMove(id, axis))
        while not state_of(library, id, axis).isStop:
            time.sleep(0.05)
        print(f"stands at {position_of(library, id, axis):g}")


if __name__ == "__main__":
    try:
        drive(MoverLibrary(), float(sys.argv[1]) if len(sys.argv) > 1 else None)
    except MoverError as failure:
        sys.exit(str(failure))
