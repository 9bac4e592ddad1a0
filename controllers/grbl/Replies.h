// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace grbl {

/** As many axes as a board of this family has letters for. */
constexpr int maxBoardAxes = 6;
constexpr std::string_view axisLetters = "XYZABC";

/** What a status report says. Lengths in mm. */
struct Report {
    enum class State { Idle, Run, Jog, Hold, Door, Home, Alarm, Check, Sleep, Unknown };

    State state = State::Unknown;
    int axes = 0;
    std::array<double, maxBoardAxes> position{}; ///< in machine coordinates if hasMachine, else in work coordinates
    bool hasMachine = false;
    bool hasOffset = false;
    std::array<double, maxBoardAxes> offset{}; ///< of the work coordinates
    int freeBlocks = -1;                       ///< -1: not said
    int freeBytes = -1;
    double feed = 0;          ///< mm/min along the path
    unsigned pins = 0;        ///< bits of the axes whose limit switch is closed
    bool holdPressed = false; ///< the button for a hold, or the door
};

/** One line from a board. */
struct Reply {
    enum class Kind {
        Ok,
        Error,   ///< number
        Alarm,   ///< number
        Banner,  ///< text
        Status,  ///< report
        Setting, ///< number, value
        Message, ///< text, in brackets
        Empty,
        Rubbish ///< nothing that a board of this family says
    };
    Kind kind = Kind::Rubbish;
    int number = 0;
    double value = 0;
    std::string text;
    Report report;

    /** Understands one line, without its end. */
    static Reply of(std::string_view line);
};

/** Cuts what arrives into lines, at CR and LF. A line longer than any that a board sends is dropped. */
class LineReader
{
public:
    /** The next whole line of `bytes`, from which it is taken; nothing when the line has not ended yet. */
    std::optional<std::string> next(std::string_view &bytes);
    void clear() { m_line.clear(); }

private:
    static constexpr std::size_t s_longest = 512;
    std::string m_line;
    bool m_tooLong = false;
};

} // namespace grbl
