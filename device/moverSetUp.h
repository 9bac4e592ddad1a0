// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverMessages.h"
#include "device/moverRecords.h"

/**
 * How a board is set up before any controller is listed. A library of ours that has something to set up exports the
 * data symbol `moverLibrarySetUp`, a MoverSetUp. One board is spoken to at a time. No function waits for the board, and
 * nothing moves but by move() and home(). Statuses are those of device/moverStatus.h; axes count from 0, by the board's
 * letters; lengths are in the unit of the board's settings (mm or °). One thread at a time.
 */
namespace moverSetUp {

constexpr int maxAxes = 6; ///< X Y Z A B C

enum Phase : int {
    Closed = 0,
    Opening = 1, ///< the board is asked who it is
    Resting = 2, ///< it has answered, and nothing moves
    Busy = 3     ///< it moves, homes, stores or restarts
};

/** Why it is closed. */
enum Failure : int {
    NoFailure = 0,
    NotThere = 1,     ///< no such port, or no serial port
    InUse = 2,        ///< another program has it
    NoPermission = 3, ///< the user may not open it
    Connected = 4,    ///< a connected controller of this program has it
    NoAnswer = 5,     ///< it can be opened, and nothing comes
    OtherSpeed = 6,   ///< what comes is unreadable, as at another baud rate
    OtherDevice = 7,  ///< something else answers
    Unplugged = 8     ///< it was there, and is gone
};

} // namespace moverSetUp

extern "C" {

struct MoverBoard {
    int phase;   ///< moverSetUp::Phase
    int failure; ///< moverSetUp::Failure
    int answers; ///< 0: a report is overdue
    int locked;  ///< 1: it moves only once it has been unlocked or homed
    int axes;    ///< how many it has; 0 as long as it has not said so
    int homesSingly;
    unsigned pins;                          ///< bits of the axes whose limit switch is closed
    unsigned homed;                         ///< bits of the axes that have been homed
    int written;                            ///< status of the last write() once the board rests again
    double positions[moverSetUp::maxAxes];  ///< machine positions
    double speeds[moverSetUp::maxAxes];     ///< per s: no axis is ever driven faster
    int speedSettings[moverSetUp::maxAxes]; ///< the number of the setting that lifts it
    char firmware[64];                      ///< what it says of itself
};

/** One of the board's settings, $number=value. */
struct MoverSetting {
    int number;
    double value;
};

struct MoverSetUp {
    /** 1, or 0 with what is wrong in the file of controllers, and where. The file's name is UTF-8 on Windows, and as
     * the system has it elsewhere. */
    int (*checkFile)(const char *file, char *fault, int size);
    /** A stage as the file has it, without the zero; the length, or 0 if there is no room. */
    int (*stageText)(const struct MotorParams *stage, char *text, int size);

    /** Begins to open a port, which may reset the board; look() tells what has come of it. */
    void (*open)(const char *port);
    void (*close)();
    void (*look)(struct MoverBoard *board);
    /** Its settings as read last; returns their number. */
    int (*settings)(struct MoverSetting *settings, int capacity);
    /** Takes the next message; 0 if there is none. */
    int (*nextMessage)(struct MoverMessage *message);
    /** Begins to write what differs; what is not taken as it is wanted is undone. */
    int (*write)(const struct MoverSetting *settings, int count);
    /** Moves one axis, no faster than `speed` per s. */
    int (*move)(int axis, double distance, double speed);
    void (*stop)();
    /** Refused with OptoFault while a limit switch is closed that would stop the axis again. */
    int (*unlock)();
    /** Homes the axis, and with it all others where the board can do no other. */
    int (*home)(int axis);
};
}
