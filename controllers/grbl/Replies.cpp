// SPDX-License-Identifier: MIT
#include "controllers/grbl/Replies.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace grbl {

namespace {

bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

/** A whole text that is a number, without exponent, below a million. */
bool readNumber(std::string_view text, double *number)
{
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, *number, std::chars_format::fixed);
    return error == std::errc() && stop == end && !text.empty() && std::abs(*number) < 1e6;
}

bool readCount(std::string_view text, int *number)
{
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, *number);
    return error == std::errc() && stop == end && !text.empty() && *number >= 0;
}

/** Takes the part of `text` before the next `separator`, or all of it. */
std::string_view take(std::string_view &text, char separator)
{
    const std::size_t at = text.find(separator);
    const std::string_view part = text.substr(0, at);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + 1);
    return part;
}

/** The numbers of a list; returns how many, or 0 when it is none. Positions come with three decimals or four. */
int readPosition(std::string_view text, std::array<double, maxBoardAxes> *position)
{
    int count = 0;
    while (!text.empty()) {
        const std::string_view number = take(text, ',');
        const std::size_t point = number.find('.');
        const std::size_t decimals = point == std::string_view::npos ? 0 : number.size() - point - 1;
        if (count == maxBoardAxes || decimals < 3 || decimals > 4 || !readNumber(number, &(*position)[count]))
            return 0;
        ++count;
    }
    return count;
}

constexpr std::pair<std::string_view, Report::State> states[] = {
    {"Idle", Report::State::Idle},   {"Run", Report::State::Run},     {"Jog", Report::State::Jog},
    {"Hold", Report::State::Hold},   {"Door", Report::State::Door},   {"Home", Report::State::Home},
    {"Alarm", Report::State::Alarm}, {"Check", Report::State::Check}, {"Sleep", Report::State::Sleep},
};

bool readReport(std::string_view text, Report *report)
{
    const std::string_view whole = take(text, '|');
    const std::string_view name = whole.substr(0, whole.find(':'));
    for (const auto &[stateName, state] : states) {
        if (name == stateName)
            report->state = state;
    }
    if (report->state == Report::State::Unknown)
        return false;
    while (!text.empty()) {
        std::string_view values = take(text, '|');
        const std::string_view field = take(values, ':');
        if (field == "MPos" || field == "WPos") {
            report->axes = readPosition(values, &report->position);
            report->hasMachine = field == "MPos";
            if (report->axes == 0)
                return false;
        } else if (field == "WCO") {
            report->hasOffset = readPosition(values, &report->offset) > 0;
        } else if (field == "Bf") {
            if (!readCount(take(values, ','), &report->freeBlocks) || !readCount(values, &report->freeBytes))
                return false;
        } else if (field == "FS" || field == "F") {
            if (!readNumber(take(values, ','), &report->feed))
                return false;
        } else if (field == "Pn") {
            for (const char pin : values) {
                const std::size_t axis = axisLetters.find(pin);
                if (axis < static_cast<std::size_t>(report->axes)) // further letters are other pins
                    report->pins |= 1U << axis;
                report->holdPressed = report->holdPressed || pin == 'H' || pin == 'D';
            }
        }
    }
    return report->axes > 0;
}

} // namespace

Reply Reply::of(std::string_view line)
{
    Reply reply;
    if (line.empty()) {
        reply.kind = Kind::Empty;
    } else if (line == "ok") {
        reply.kind = Kind::Ok;
    } else if (startsWith(line, "error:")) {
        if (readCount(line.substr(6), &reply.number))
            reply.kind = Kind::Error;
    } else if (startsWith(line, "ALARM:")) {
        if (readCount(line.substr(6), &reply.number))
            reply.kind = Kind::Alarm;
    } else if (line.front() == '<' && line.back() == '>' && line.size() > 2) {
        if (readReport(line.substr(1, line.size() - 2), &reply.report))
            reply.kind = Kind::Status;
    } else if (line.front() == '[' && line.back() == ']') {
        reply.kind = Kind::Message;
        reply.text = line.substr(1, line.size() - 2);
    } else if (startsWith(line, "Grbl ") || startsWith(line, "GrblHAL ")) {
        reply.kind = Kind::Banner;
        reply.text = line;
    } else if (line.front() == '$') {
        std::string_view rest = line.substr(1);
        const std::string_view number = take(rest, '=');
        if (readCount(number, &reply.number) && readNumber(rest, &reply.value))
            reply.kind = Kind::Setting;
    }
    return reply;
}

std::optional<std::string> LineReader::next(std::string_view &bytes)
{
    while (!bytes.empty()) {
        const char byte = bytes.front();
        bytes.remove_prefix(1);
        if (byte == '\r')
            continue;
        if (byte == '\n') {
            const bool whole = !std::exchange(m_tooLong, false);
            std::string line = std::exchange(m_line, {});
            if (whole)
                return line;
        } else if (m_line.size() == s_longest) {
            m_tooLong = true;
        } else {
            m_line += byte;
        }
    }
    return {};
}

} // namespace grbl
