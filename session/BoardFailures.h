// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverMessages.h"

/** What a board may say by itself of which something went wrong. A lost link is known from the polls. */
struct BoardFailure {
    int code;         // of moverMessages
    const char *text; // in files; %1 is the message's value
};

constexpr BoardFailure boardFailures[] = {
    {moverMessages::LimitHit, "limit switch hit, position lost"},
    {moverMessages::HomingFailed, "homing failed, position lost"},
    {moverMessages::BoardAlarm, "board alarm %1"},
    {moverMessages::PositionLost, "board started again, position lost"},
    {moverMessages::BoardLocked, "board locked"},
    {moverMessages::OnHold, "board on hold"},
    {moverMessages::Astray, "axis astray"},
    {moverMessages::OutsideTravel, "target outside the travel"},
    {moverMessages::WireStop, "too much wire trouble"},
};
