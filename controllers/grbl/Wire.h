// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <string>

namespace grbl {

// What several parts of a board need of the wire.
inline constexpr char softReset = 0x18;
inline constexpr double endingPoll = 0.03; // while the last lines run, and while stopping
inline constexpr double onTheWay = 0.015;  // of a line, until it has been read

/** `value` as a line has it. */
inline std::string number(double value, int decimals)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

} // namespace grbl
