// SPDX-License-Identifier: MIT
#pragma once

/**
 * What our own motion libraries have to say besides the statuses of calls: a stall, a lost position, a speed that is
 * capped. A library of ours exports the data symbol `moverLibraryMessages`, a pointer to a function that gives the next
 * message and takes it away; it may be called by any thread.
 */
namespace moverMessages {

enum Code : int {
    General = 0,         ///< for a debug log only
    LimitHit = 1,        ///< a limit switch; the position is lost
    HomingFailed = 2,    ///< the position is lost
    BoardAlarm = 3,      ///< value: its number
    PositionLost = 4,    ///< the controller has restarted
    HomingStopped = 5,   ///< by a stop or because it took too long; the position is lost
    NoAnswer = 6,        ///< the link is lost
    AnswersAgain = 7,    ///< after that; everything was stopped
    BoardLocked = 8,     ///< without an alarm that was heard
    OnHold = 9,          ///< somebody has pressed its hold or opened its door; everything is stopped
    OutsideTravel = 10,  ///< the controller has refused a target; everything is stopped
    Astray = 11,         ///< value: where the axis was seen (mm of the board); everything is stopped
    WireTrouble = 12,    ///< the axes stop and go on
    WireStop = 13,       ///< too often; everything is stopped
    Stall = 14,          ///< value: ms in which the computer did nothing; new ramps from rest
    SwitchClosed = 15,   ///< the axis stands on its limit switch
    LimitsOff = 16,      ///< hard limits are off until the axis is off its switch
    LimitsOn = 17,       ///< on again
    MotorsDropOut = 18,  ///< the controller takes the motors' current away after each stop
    SettingsUndone = 19, ///< what was written is put back
    PermissionOnly = 20, ///< off refuses starts; the motor keeps its current
    Coarse = 21,         ///< value: the resolution, coarser than what was asked for
    Capped = 22          ///< value: the speed to which the axis is held; setting: the number of what lifts it
};

} // namespace moverMessages

extern "C" {

struct MoverMessage {
    int id;         ///< of the controller
    int axis;       ///< -1: all of the controller's
    int code;       ///< moverMessages::Code
    double value;   ///< see the code
    int setting;    ///< see the code
    char text[256]; ///< in English, ends with a zero
};

/** Returns 1, or 0 if there is no message. */
typedef int MoverNextMessage(struct MoverMessage *message);

/** What the position and the state of an axis rest on. */
struct MoverReport {
    unsigned long long number; ///< of the controller's reports since it was opened; the same number is the same report
    double age;                ///< seconds since it was asked for
};

/**
 * The data symbol `moverLibraryReports` points to such a function: whose positions come from reports of the controller,
 * and not from each call, tells which one is in force. Returns 1, or 0 if there is none.
 */
typedef int MoverLastReport(int id, struct MoverReport *report);
}
