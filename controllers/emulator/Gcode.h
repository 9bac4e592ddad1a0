// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/emulator/Axes.h"

#include <array>
#include <string>
#include <string_view>

namespace emulator {

/** What holds from one line of G-code to the next. */
struct Modes {
    int motion = 0; // G number times ten: 0, 10, 20, 30, 382 .. 385, 800
    int plane = 17;
    bool isInch = false;
    bool isRelative = false;
    bool isInverseTime = false;
    int system = 0; // G54 is 0
    int spindle = 5;
    bool isFloodOn = false;
    int tool = 0;
    double feed = 0; // mm/min
    double spindleSpeed = 0;
};

/** The offsets that lie between machine and work coordinates, all in mm. */
struct Offsets {
    static constexpr int systems = 6;
    std::array<Vector, systems> system{};
    Vector g28{};
    Vector g30{};
    Vector g92{};
    double toolLength = 0; // of Z

    Vector work(int systemNumber) const;
};

/** One line of G-code, understood: what to do, and the modes and offsets that hold behind it. */
struct Command {
    enum class Action { None, Move, Dwell, StoreOffsets, Park, Probe };

    int error = 0;
    Action action = Action::None;
    Modes modes;
    Offsets offsets;
    bool isRapid = false;
    bool hasAxisWord = false;
    bool isRelativeLine = false; // a G91 stands in it, or holds, and no G53
    bool isMachine = false;      // G53
    bool waitsForStand = false;  // what it changes is changed when all motion is done
    bool alarmsWithoutContact = false;
    int named = 0; // bits of the axes that the line names
    Vector target{};
    Vector park{};
    double feed = 0; // mm/min
    double dwell = 0;
    int program = -1; // M0, M1, M2, M30
};

/**
 * Reads `line` (without blanks and comments, in capitals), from `position` in machine coordinates. As a jog the line
 * obeys the rules of "$J=", and changes neither modes nor offsets.
 */
Command readLine(
    std::string_view line, bool isJog, int axes, const Modes &modes, const Offsets &offsets, const Vector &position);

/** Reads a number from `text` at `at`, without exponent; false when no digit stands there. */
bool readNumber(std::string_view text, std::size_t &at, double &value);

} // namespace emulator
