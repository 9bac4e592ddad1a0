// SPDX-License-Identifier: MIT
#include "device/UnlockedCalls.h"

#include "device/MotionLibrary.h"

int UnlockedCalls::home(int id, int axis)
{
    return MotionLibrary::inUse().m_functions.home(id, axis);
}

int UnlockedCalls::setClearIDChip(int id, int axis)
{
    return MotionLibrary::inUse().m_functions.setClearIDChip(id, axis);
}
