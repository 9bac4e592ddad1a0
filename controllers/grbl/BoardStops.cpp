// SPDX-License-Identifier: MIT
// How motion ends before its time: a stop, a cancel, a reset, and where the axes stand then.
#include "controllers/grbl/Board.h"
#include "controllers/grbl/Wire.h"

#include <algorithm>
#include <cmath>

namespace grbl {

using namespace moverMessages;

namespace {

constexpr char jogCancel = static_cast<char>(0x85);
constexpr double cancelPatience =
    0.008; // for the answers of lines on their way; what waits behind it would run after it

} // namespace

int Board::refusal() const
{
    if (m_phase == Phase::Closed || m_lost)
        return LinkLost;
    if (m_locked)
        return Locked;
    for (const auto &axis : m_axes) {
        // Without steps, speed or ramp, or for an axis that the board does not have, there is nothing to plan with.
        const int number = axis->boardAxis();
        if (number >= m_boardAxes || setting(100 + number, 1) <= 0 || setting(110 + number, 1) <= 0 ||
            setting(120 + number, 1) <= 0)
            return NotAvailable;
    }
    return m_phase == Phase::Ready ? Ok : ControllerBusy;
}

int Board::stop(Axis &axis)
{
    if (m_phase == Phase::Homing) {
        stopHoming();
        return Ok;
    }
    if (m_phase != Phase::Ready) {
        axis.stand(axis.position());
        axis.setStopped(true);
        return Ok;
    }
    if (!axis.running() && still())
        return Ok;
    const bool othersGoOn = std::any_of(m_axes.begin(), m_axes.end(), [&axis](const auto &one) {
        return one.get() != &axis && (one->goesOn() || one->arrives());
    });
    if (othersGoOn)
        axis.slowDown();
    else
        stopAll();
    m_urgent = true;
    return Ok;
}

void Board::stopHoming()
{
    reset("Homing was stopped; the position is lost", HomingStopped);
    m_urgent = true;
}

void Board::stopAll()
{
    m_then = Then::Stand; // whatever was to be taken up
    if (m_phase == Phase::Homing)
        stopHoming();
    else if (m_phase != Phase::Ready || (still() && m_awaited.empty()))
        endRuns(); // in the pause between two legs, or not yet begun
    else
        cancel(Then::Stand);
}

void Board::cancel(Then then)
{
    m_stopTime = 0.2;
    for (const auto &axis : m_axes) {
        const double ramp = std::max(setting(120 + axis->boardAxis(), 10), 0.1);
        m_stopTime = std::max(m_stopTime, 0.2 + 1.2 * std::abs(axis->velocity()) / ramp);
    }
    if (then == Then::Stand)
        endRuns();
    for (auto &axis : m_axes)
        axis->setStopped(false);
    m_then = then;
    m_phase = Phase::Cancelling;
    m_since = m_now;
    m_cancelSent = false;
    m_idleSince = -1;
    m_cancels = 0;
    m_pending.clear();
    m_suspectAsked = -1;
    m_doubts = 0;
    m_urgent = true;
}

void Board::sendCancel()
{
    if (m_cancelSent || (!m_awaited.empty() && m_now - m_since < cancelPatience))
        return;
    sendByte(jogCancel);
    sendLine("");
    m_cancelSent = true;
    m_cancels = 1;
    m_cancelAt = m_now;
    m_cancelReport = m_report;
    m_nextPoll = m_now + endingPoll;
}

void Board::watchCancel()
{
    if (!m_cancelSent || m_reportAsked < m_cancelAt)
        return;
    switch (m_report.state) {
    case Report::State::Idle:
    case Report::State::Alarm:
    case Report::State::Sleep:
    case Report::State::Check:
        if (m_awaited.empty()) {
            // Said twice: a byte of one report may be wrong.
            if (m_reportAsked >= m_lastAnswer && m_report.position == m_positionsBefore)
                restAt(m_report, m_then);
        } else if (m_idleSince < 0) {
            m_idleSince = m_now;
        }
        return;
    case Report::State::Hold:
    case Report::State::Door:
        m_idleSince = -1;
        if (m_report.feed == 0 && m_now - m_cancelAt > m_stopTime)
            reset("The board is on hold and is reset at rest");
        return;
    default:
        break;
    }
    m_idleSince = -1;
    // A cancel that was lost: what was sent is short and ends by itself. Only an axis that goes on running, as reports
    // say, gets another one: that is its first.
    if (m_now - m_cancelAt < m_stopTime + lead + slice)
        return;
    double way = 0;
    for (int i = 0; i < m_boardAxes; ++i)
        way += std::abs(m_report.position[i] - m_cancelReport.position[i]);
    const bool runsOn = way > 0 && m_report.feed >= m_cancelReport.feed && m_report.feed > 0;
    m_cancelReport = m_report;
    if (!runsOn)
        return;
    if (m_cancels++ < 2) {
        say("The stop was lost on the wire and is sent again");
        sendByte(jogCancel);
        m_cancelAt = m_now;
    } else {
        reset("The board does not stop and is reset in motion; the position is lost", PositionLost);
    }
}

void Board::reset(const std::string &why, Code code)
{
    breakWrite();
    say({code, why});
    if (code == HomingStopped || code == PositionLost)
        notHomed();
    sendByte(softReset);
    m_awaited.clear();
    m_awaitedBytes = 0;
    m_toSay.clear();
    m_saying = false;
    m_pending.clear();
    if (m_phase != Phase::Cancelling)
        m_then = Then::Stand;
    m_phase = Phase::Resetting;
    m_bannerSeen = false;
    m_since = m_now;
    m_resetAt = -1;
    m_asked.clear();
    m_lastAsk = m_now + 0.6; // the banner comes first, and after a stop in motion half a second later
    m_nextPoll = m_now + 0.6;
}

void Board::restAt(const Report &report, Then then)
{
    m_phase = Phase::Ready;
    m_since = m_now;
    m_locked = report.state != Report::State::Idle;
    // Behind an alarm or a start that was not heard of, too.
    if (m_locked && report.state != Report::State::Hold && report.state != Report::State::Door && m_alarm != 2)
        notHomed();
    if (m_locked && m_alarm == 1) {
        for (int i = 0; i < m_boardAxes; ++i) {
            if ((report.pins >> i & 1U) != 0)
                say({SwitchClosed, std::string("The limit switch of axis ") + axisLetters[i] + " is closed", i});
        }
    }
    if (!m_locked)
        m_alarm = 0;
    m_suspectAsked = -1;
    m_doubts = 0;
    m_corrections = 0;
    m_factor = 1;
    m_excess = 0;
    m_pending.clear();
    m_head = m_now;
    m_lineEnd = m_now - 1;
    m_rests = true;
    m_idleSeen = true;
    // One that stood stays on its step, which may be finer than what the report shows.
    for (int i = 0; i < maxBoardAxes; ++i)
        m_sent[i] = missing(i) <= reportRounding ? m_sent[i] : toSteps(i, report.position[i]);
    m_slices.assign(1, {m_now, m_sent});
    for (auto &axis : m_axes) {
        if ((m_referenced >> axis->boardAxis() & 1U) != 0)
            axis->reference(report.position[axis->boardAxis()]);
        const double position = axis->toStage(m_sent[axis->boardAxis()] / stepsPerMm(axis->boardAxis()));
        if (then == Then::TakeUp && !m_locked && axis->running())
            axis->takeUp(position, m_now);
        else if (then == Then::TakeUp && !m_locked && !axis->isStopped())
            axis->finishFrom(position, m_now);
        else
            axis->stand(position);
        axis->settle(m_now); // a run begins now, not at the time before
    }
    m_then = Then::Stand;
    m_referenced = 0;
    m_urgent = true;
    if (!m_toUndo.empty())
        undo();
}

void Board::trouble(const std::string &what)
{
    while (!m_troubles.empty() && m_troubles.front() < m_now - 10)
        m_troubles.pop_front();
    m_troubles.push_back(m_now);
    const bool often = m_troubles.size() > 3;
    say(
        {often ? WireStop : WireTrouble,
         "Trouble on the line: " + what + (often ? "; all axes are stopped" : "; the axes stop and go on")});
    cancel(often ? Then::Stand : Then::TakeUp);
}

} // namespace grbl
