// SPDX-License-Identifier: MIT
#include "controllers/emulator/Board.h"

#include <algorithm>
#include <cmath>
#include <utility>

// The clock, the wire and the program's loop. What the lines say is in BoardLines.cpp, what moves and stops in
// BoardMotion.cpp.

namespace emulator {

namespace {

constexpr std::size_t longestLine = 79;
constexpr int sendBytes = 104; // that wait in the board while the program goes on
constexpr double bootSpeed = 0.026;

} // namespace

const char *nameOf(Violation::Kind kind)
{
    switch (kind) {
    case Violation::Kind::NoAxisWord:
        return "no axis word";
    case Violation::Kind::Relative:
        return "relative";
    case Violation::Kind::MissingAxis:
        return "an axis is missing";
    case Violation::Kind::WorkCoordinates:
        return "work coordinates";
    case Violation::Kind::Overflow:
        return "receive buffer overflow";
    case Violation::Kind::WhileStoring:
        return "sent while a setting is stored";
    case Violation::Kind::WhileCancelling:
        return "sent while a jog is cancelled";
    case Violation::Kind::SecondCancel:
        return "second cancel";
    case Violation::Kind::FullPlanner:
        return "planner full";
    case Violation::Kind::SingleHome:
        return "$H of one axis";
    }
    return "";
}

Board::Board(Options options)
    : m_options(std::move(options))
    , m_settings(m_options.axes, isHal())
    , m_planner(m_settings, m_options.axes, isHal() ? 100 : 15)
    , m_stepper(m_planner, m_options.axes, [this](int axis, int direction, double time) {
        return onStep(axis, direction, time);
    })
{
    m_forcedSwitches.fill(-1);
    m_options.homesSingleAxes = m_options.homesSingleAxes || !isStock();
    m_options.stages.resize(maxAxes);
    // From behind: soft limits, 20, want homing, 22.
    for (auto setting = m_options.settings.rbegin(); setting != m_options.settings.rend(); ++setting) {
        m_settings.store(setting->first, setting->second);
    }
    if (!m_options.settingsFile.empty()) {
        m_settings.load(m_options.settingsFile);
    }
    for (int axis = 0; axis < maxAxes; ++axis) {
        m_stage[axis] = m_options.stages[axis].start;
    }
    powerCycle();
}

// The wire

void Board::send(std::string_view bytes)
{
    for (const char byte : bytes) {
        look(byte);
    }
    m_in.put(bytes, m_now);
}

std::string Board::receive()
{
    std::string bytes;
    while (m_out.next() <= m_now) {
        bytes += m_out.take();
    }
    return bytes;
}

void Board::look(char byte)
{
    if (isRealTime(byte)) {
        m_sentLines.emplace_back(1, byte);
        m_hostCancels = m_hostCancels || (byte == '\x85' && m_state == State::Jog);
    } else if (byte == '\n') {
        lookAtLine();
        m_sentLine.clear();
    } else {
        m_sentLine += byte;
    }
}

void Board::lookAtLine()
{
    m_sentLines.push_back(m_sentLine);
    const std::string &line = m_sentLine;
    const auto has = [&line](std::string_view word) { return line.find(word) != std::string::npos; };
    const bool isJog = line.compare(0, 3, "$J=") == 0;
    const bool isMove = isJog || (!line.empty() && line[0] == 'G');
    if (isMove && has("G91") && !has("G91.")) {
        violate(Violation::Kind::Relative, line);
    }
    if (isJog) {
        int named = 0;
        for (int axis = 0; axis < m_options.axes; ++axis) {
            named += line.find(axisLetters[static_cast<std::size_t>(axis)]) != std::string::npos ? 1 : 0;
        }
        if (named == 0) {
            violate(Violation::Kind::NoAxisWord, line);
        } else if (named < m_options.axes) {
            violate(Violation::Kind::MissingAxis, line);
        }
        if (!has("G53")) {
            violate(Violation::Kind::WorkCoordinates, line);
        }
    }
    if (m_hostCancels && !line.empty()) {
        violate(Violation::Kind::WhileCancelling, line);
    }
    if (line.size() > 2 && line.compare(0, 2, "$H") == 0 && !m_options.homesSingleAxes) {
        violate(Violation::Kind::SingleHome, line);
    }
}

void Board::violate(Violation::Kind kind, std::string_view line)
{
    m_violations.push_back({kind, now(), std::string(line)});
}

void Board::arrive(char byte)
{
    if (m_now < m_bootingUntil) {
        return;
    }
    if (m_now < m_storingUntil) {
        violate(Violation::Kind::WhileStoring, std::string(1, byte));
        return;
    }
    switch (static_cast<unsigned char>(byte)) {
    case '?':
        m_wantsReport = m_wantsReport || m_now >= m_reportUntil;
        return;
    case '!':
        m_wantsHold = true;
        noteCancel(byte);
        return;
    case '~':
        m_wantsResume = true;
        return;
    case 0x18:
        m_wantsReset = true;
        return;
    case 0x84:
        m_wantsDoor = true;
        return;
    case 0x85:
        m_wantsCancel = true;
        noteCancel(byte);
        return;
    default:
        break;
    }
    if (isRealTime(byte)) {
        // Two that are the same count once, until the program looks.
        m_wantedOverrides.insert(static_cast<unsigned char>(byte));
    } else if (m_received.size() < static_cast<std::size_t>(receiveBytes())) {
        m_received += byte;
    } else {
        violate(Violation::Kind::Overflow, std::string(1, byte));
    }
}

// The clock

double Board::nextEvent() const
{
    return toUser(std::min(
        {m_in.next(), m_out.next(), m_stepper.pieceEnd(), m_wait.wakeAt, m_freeAt > m_now ? m_freeAt : Wire::never}));
}

void Board::advanceTo(double time)
{
    const double end = toBoardTime(time);
    for (;;) {
        double next = std::min({end, m_in.next(), m_stepper.pieceEnd()});
        for (const double at : {m_freeAt, m_wait.wakeAt}) {
            if (at > m_now) {
                next = std::min(next, at);
            }
        }
        next = std::max(next, m_now);
        const bool isEnd = next >= end;
        m_now = m_stepper.runTo(next);
        if (m_now < next) {
            runProgram(); // a switch ended the motion
            continue;
        }
        if (m_stepper.pieceEnd() <= m_now && !m_stepper.nextPiece()) {
            stopped();
        }
        while (m_in.next() <= m_now) {
            arrive(m_in.take());
        }
        runProgram();
        if (isEnd && m_in.next() > m_now && m_stepper.pieceEnd() > m_now) {
            break;
        }
    }
}

// The program

bool Board::isSuspended() const
{
    return m_isHeld || m_isCancelling || m_isDeaf || m_state == State::Sleep;
}

void Board::runProgram()
{
    while (m_now >= m_freeAt) {
        serveRealTime();
        if (m_now < m_freeAt || m_mustReset) {
            return;
        }
        if (m_wait.then) {
            // A line that waits for a block is let through where those behind it are not read any more.
            const bool isStuck = m_wait.isOfLine && isSuspended() && !(m_isDeaf && m_wait.isForBlock);
            if (isStuck || !m_wait.isOver()) {
                return;
            }
            // What it does may begin to wait for something else.
            std::exchange(m_wait, {}).then();
        } else if (isSuspended() || !readLines()) {
            return;
        }
    }
}

bool Board::readLines()
{
    for (std::size_t i = 0; i < m_received.size(); ++i) {
        char byte = m_received[i];
        const bool hadReturn = std::exchange(m_hadReturn, byte == '\r');
        if (byte == '\n' && hadReturn && !isStock()) {
            continue; // one line end, where the stock firmware sees two
        }
        if (byte == '\n' || byte == '\r') {
            m_received.erase(0, i + 1);
            const std::string line = std::exchange(m_line, {});
            m_isComment = m_isRestComment = false;
            if (std::exchange(m_isTooLong, false)) {
                answer(11);
            } else {
                readLine(line);
            }
            return true;
        }
        if (m_isRestComment || (m_isComment && byte != ')')) {
            continue;
        }
        if (byte == '(' || byte == ')') {
            m_isComment = byte == '(';
        } else if (byte == ';') {
            m_isRestComment = true;
        } else if (byte > ' ' && byte != '/') {
            if (m_line.size() >= longestLine) {
                m_isTooLong = true;
            } else {
                m_line += byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
            }
        }
    }
    m_received.clear();
    return false;
}

void Board::spend(double seconds, Then then)
{
    m_freeAt = std::max(m_freeAt, m_now + seconds);
    m_wait = {[] { return true; }, Wire::never, std::move(then)};
}

void Board::later(double seconds, Then then)
{
    const double at = std::max(m_freeAt, m_now) + seconds;
    m_wait = {[this, at] { return m_now >= at; }, at, std::move(then)};
}

void Board::waitFor(std::function<bool()> isOver, Then then)
{
    m_wait = {std::move(isOver), Wire::never, std::move(then), true};
}

void Board::print(const std::string &text)
{
    m_out.put(text + "\r\n", std::max(m_now, m_freeAt));
    // The program stands until all but what the send buffer holds is out.
    m_freeAt = std::max(m_freeAt, m_out.end() - sendBytes * Wire::byteTime);
}

void Board::answer(int error)
{
    print(error ? "error:" + std::to_string(error) : "ok");
}

void Board::pressHold(bool isPressed)
{
    m_isHoldPressed = isPressed;
    if (isPressed) {
        m_wantsHold = true;
        noteCancel('!');
    }
}

void Board::setDoor(bool isOpen)
{
    m_isDoorOpen = isOpen;
    m_wantsDoor = m_wantsDoor || isOpen;
}

void Board::pressReset()
{
    m_out.clear();
    powerCycle();
}

void Board::powerCycle()
{
    m_stepper.abort();
    m_stepper.setPosition({});
    m_state = State::Idle;
    m_wait = {};
    m_received.clear();
    m_offsets.g92 = {};
    m_offsets.toolLength = 0;
    m_motorsAreOn = false;
    m_bootingUntil = m_options.bootTime > 0 ? m_now + m_options.bootTime : 0;
    m_freeAt = m_now + m_options.bootTime + bootSpeed;
    for (int axis = 0; axis < m_options.axes; ++axis) {
        m_switches[axis] = isSwitchClosed(axis);
    }
    m_wait = {[] { return true; }, Wire::never, [this] { start(m_settings.isOn(22)); }};
}

} // namespace emulator
