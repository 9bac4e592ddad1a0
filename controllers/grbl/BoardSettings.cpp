// SPDX-License-Identifier: MIT
// Settings, unlocking and homing: what is asked of a board at rest.
#include "controllers/grbl/Board.h"
#include "controllers/grbl/Wire.h"

#include <algorithm>
#include <cmath>

namespace grbl {

using namespace moverMessages;

namespace {

constexpr double pressAgain = 10;
constexpr int hardLimits = 21;

} // namespace

// ---- Settings

void Board::begin(std::vector<std::string> lines, Phase phase)
{
    m_phase = phase;
    m_since = m_now;
    m_saying = false;
    m_toSay.assign(lines.begin(), lines.end());
    m_urgent = true;
}

void Board::converse()
{
    if (m_saying || m_toSay.empty())
        return;
    if (m_toSay.front() == "$$")
        m_read.clear();
    sendLine(m_toSay.front());
    m_toSay.pop_front();
    m_saying = true;
}

void Board::asked()
{
    if (!m_read.empty())
        m_settings = std::exchange(m_read, {});
    m_hasSettings = true;
    if (m_limitsOff && setting(hardLimits, 1) != 0) {
        say({LimitsOn, "Hard limits are on again ($21=1)"});
        m_limitsOff = false;
        if (changed)
            changed();
    }
    if (m_phase == Phase::Asking && setting(13, 0) != 0 && m_hasChanged) {
        say("The board does not take $13=0: its positions are in inches");
        closed();
        return;
    }
    // Reports have to have machine positions, in mm; and the room in the buffers, where the board can tell that.
    if (m_phase == Phase::Asking && !std::exchange(m_hasChanged, true)) {
        std::vector<std::string> lines;
        const int mask = static_cast<int>(setting(10, 3));
        if ((mask & 3) != 3) {
            say("The board's setting $10 is made " + std::to_string(mask | 3));
            lines.push_back("$10=" + std::to_string(mask | 3));
        }
        if (setting(13, 0) != 0) {
            say("The board's setting $13 is made 0: positions in mm");
            lines.emplace_back("$13=0");
        }
        if (!lines.empty()) {
            lines.emplace_back("$$");
            begin(lines, Phase::Asking);
            return;
        }
    }
    if (m_phase == Phase::Asking && m_reports == 0 && setting(1, 255) != 255)
        say({MotorsDropOut, "The board's setting $1 is not 255: the motors lose their current after each stop"});
    m_phase = Phase::Asking; // where it stands comes last
    m_since = m_now;
    m_asked.clear();
    m_lastAsk = 0;
    m_urgent = true;
}

int Board::write(const std::map<int, double> &settings)
{
    m_written = Ok;
    if (m_phase != Phase::Ready || !(still() || m_locked))
        return m_phase == Phase::Ready ? AxisRunning : ControllerBusy;
    for (const auto &axis : m_axes) {
        if (axis->running())
            return AxisRunning;
    }
    m_writing.clear();
    m_before.clear();
    m_undoing = false;
    std::vector<std::string> lines;
    for (const auto &[number_, value] : settings) {
        const double present = setting(number_, value);
        if (m_settings.count(number_) == 0 || std::abs(present - value) < 0.0006)
            continue;
        m_writing[number_] = value;
        m_before[number_] = present;
        const std::string line = "$" + std::to_string(number_) + "=" + number(value, 3);
        lines.insert(number_ == Board::homingOn && value != 0 ? lines.begin() : lines.end(), line);
    }
    if (lines.empty())
        return Ok;
    lines.emplace_back("$$");
    begin(lines, Phase::Writing);
    return Ok;
}

void Board::wrote()
{
    if (m_writing.empty()) {
        asked();
        return;
    }
    const auto differs = [this](const auto &wanted) {
        const auto found = m_read.find(wanted.first);
        return found == m_read.end() || std::abs(found->second - wanted.second) >= 0.0011;
    };
    const bool failed = std::any_of(m_writing.begin(), m_writing.end(), differs);
    if (failed && !m_undoing) {
        undo();
        return;
    }
    if (failed)
        say("The board's settings could not be put back: read them");
    for (const auto &[number_, value] : m_writing) {
        // The place of the machine's zero depends on the travel as well.
        for (const int first : {100, 130}) {
            if (number_ >= first && number_ < first + maxBoardAxes)
                notHomed();
        }
    }
    asked();
}

void Board::undo()
{
    say({SettingsUndone, "The board did not take its settings; what was written is undone"});
    m_written = WriteFailed;
    m_undoing = true;
    if (!m_toUndo.empty())
        m_before = std::exchange(m_toUndo, {});
    std::vector<std::string> lines;
    for (const auto &[number_, value] : m_before)
        lines.push_back("$" + std::to_string(number_) + "=" + number(value, 3));
    lines.emplace_back("$$");
    m_writing = m_before;
    begin(lines, Phase::Writing);
}

/** The board hears nothing any more in the middle of a write: what was written is undone when it does again. */
void Board::breakWrite()
{
    if (m_phase != Phase::Writing)
        return;
    m_written = WriteFailed;
    if (!m_writing.empty())
        m_toUndo = m_before;
}

bool Board::isOnSwitch(int boardAxis) const
{
    return (m_report.pins >> boardAxis & 1U) != 0 && (m_limitsOff || m_ranOn[boardAxis] != 0);
}

int Board::switchDirection(int boardAxis) const
{
    return (m_report.pins >> boardAxis & 1U) != 0 ? m_ranOn[boardAxis] : 0;
}

int Board::unlock()
{
    if (m_phase != Phase::Ready)
        return ControllerBusy;
    if (m_report.state != Report::State::Alarm) {
        reset("The board is woken up"); // it sleeps or checks
        return Ok;
    }
    m_writing.clear();
    std::vector<std::string> lines{"$X"};
    if (m_report.pins != 0 && setting(hardLimits, 0) != 0) {
        // The switch that opens again would be the next alarm.
        say(
            {LimitsOff,
             "Hard limits are off ($21=0) until the axis has been driven off its switch, slowly and the way it came"});
        lines.emplace_back("$21=0");
        lines.emplace_back("$$");
        m_limitsOff = true;
        if (changed)
            changed();
    }
    begin(lines, Phase::Writing);
    return Ok;
}

// ---- Homing

int Board::home(Axis &axis)
{
    if (m_phase != Phase::Ready)
        return ControllerBusy;
    if (m_lost)
        return LinkLost;
    for (const auto &one : m_axes) {
        if (one->running())
            return AxisRunning;
    }
    if (!m_locked && !still())
        return AxisRunning;
    if (setting(22, 1) == 0) // a board that does not say so is asked to, and may refuse
        return NotAvailable;
    std::string line = "$H";
    if (m_homesSingly) {
        line += axisLetters[axis.boardAxis()];
        m_homing = axis.boardAxis();
    } else {
        // Asked for twice within 10 s, as all axes move.
        if (m_now - std::exchange(m_homeAsked, m_now) > pressAgain)
            return OthersWouldMove;
        m_homeAsked = -100;
        m_homing = maxBoardAxes;
    }
    const double seek = std::max(setting(25, 500), 1.0) / 60;
    const double slow = std::max(setting(24, 25), 1.0) / 60;
    double limit = 5;
    for (int i = 0; i < m_boardAxes; ++i)
        limit += 1.5 * setting(130 + i, 200) / seek + 5 * setting(27, 1) * (1 / slow + 1 / seek) + 2;
    m_homeLimit = m_now + 1.2 * limit;
    for (auto &one : m_axes) {
        if (m_homing == maxBoardAxes || one->boardAxis() == m_homing)
            one->setHomed(false);
    }
    m_phase = Phase::Homing;
    m_since = m_now;
    m_asked.clear();
    sendLine(line);
    m_urgent = true;
    return Ok;
}

} // namespace grbl
