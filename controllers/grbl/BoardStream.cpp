// SPDX-License-Identifier: MIT
// The stream of jogs that makes the axes follow their plans, and the reports held against it.
#include "controllers/grbl/Board.h"
#include "controllers/grbl/Wire.h"

#include <algorithm>
#include <cmath>

namespace grbl {

using namespace moverMessages;

namespace {

constexpr std::size_t mostUnanswered = 6;
constexpr std::size_t mostUnansweredBytes = 127;
constexpr int leastFreeBlocks = 3;
constexpr double unexplained = 0.1; // mm that an axis may be off what was sent
constexpr double longestLag = 0.35; // of the board behind the plan, ramps and a late report included
constexpr double lateness = 0.03;   // of the board's steps behind the lines, at most
constexpr int reportsInDoubt = 4;   // that have to miss an answer before it counts as missing

} // namespace

std::string Board::jogTo(const std::array<long long, maxBoardAxes> &steps) const
{
    // Millimetres said with each line: a start-up line of the board may have set inches.
    std::string line = "$J=G21G53";
    for (int i = 0; i < m_boardAxes; ++i) {
        // As many decimals as it takes to name a step.
        const int decimals = stepsPerMm(i) > 9000 ? 5 : stepsPerMm(i) > 900 ? 4 : 3;
        line += axisLetters[i] + number(steps[i] / stepsPerMm(i), decimals);
    }
    return line;
}

long long Board::toSteps(int boardAxis, double mm) const
{
    return std::llround(mm * stepsPerMm(boardAxis));
}

long long Board::targetSteps(int boardAxis, double mm) const
{
    const long long steps = toSteps(boardAxis, mm);
    const double lowest = -setting(130 + boardAxis, 0) * stepsPerMm(boardAxis);
    if (setting(20, 0) == 0 || lowest == 0)
        return steps;
    // The board refuses what lies outside, be it by the rounding to a step: then the one before it is the end.
    const auto first = static_cast<long long>(std::ceil(lowest - 1e-6));
    return steps < first && steps >= first - 1 ? first : steps;
}

void Board::settle(double now)
{
    m_now = std::max(m_now, now);
    if (!m_rests || m_now <= m_head)
        return;
    m_head = m_now;
    for (auto &axis : m_axes)
        axis->settle(m_head);
}

double Board::effectiveLead() const
{
    return std::max(lead - m_excess - lateness, slice);
}

void Board::stream()
{
    if (m_locked || m_lost)
        return;
    const auto moves = [this] {
        return std::any_of(
            m_axes.begin(), m_axes.end(), [](const auto &axis) { return axis->running() && !axis->dwelling(); });
    };
    if (m_rests) {
        settle(m_now);
        if (!moves())
            return;
        m_rests = false;
    } else if (m_now > m_head) {
        ranDry();
    }
    while (m_phase == Phase::Ready && !m_rests && (m_head < m_now + effectiveLead() || !m_pending.empty())) {
        // Never a full planner: a line that waits for a free block survives a cancel.
        const std::size_t longestJog = 20 + 11 * static_cast<std::size_t>(m_boardAxes);
        const bool room = m_awaited.size() < mostUnanswered &&
                          m_awaitedBytes + longestJog <= std::min(mostUnansweredBytes, m_bufferBytes - 1) &&
                          (m_report.freeBlocks < 0 || m_report.freeBlocks - m_sentSinceReport > leastFreeBlocks);
        if (!room)
            return;
        if (!m_pending.empty()) {
            // Behind a pause the board would run a line at once: it waits for its time.
            if (m_now < m_pendingAt)
                return;
            sendLine(std::exchange(m_pending, {}));
            m_lineEnd = m_head;
        } else {
            sendSlice(m_head + slice);
            m_rests = m_pending.empty() && !moves();
        }
    }
}

void Board::sendSlice(double end)
{
    const double begin = std::exchange(m_head, end);
    m_isDry = false;
    std::array<long long, maxBoardAxes> steps = m_sent;
    for (auto &axis : m_axes) {
        axis->settle(end);
        steps[axis->boardAxis()] = targetSteps(axis->boardAxis(), axis->toBoard(axis->position()));
    }
    double path = 0;
    m_excess = 0;
    for (int i = 0; i < m_boardAxes; ++i) {
        const double way = static_cast<double>(steps[i] - m_sent[i]) / stepsPerMm(i);
        path += way * way;
        m_excess = std::max(m_excess, std::abs(way) / slice / 2 / std::max(setting(120 + i, 10), 0.1));
    }
    // Whatever goes wrong in the plan, no line may carry an axis faster than it is allowed to be.
    for (const auto &axis : m_axes) {
        const int i = axis->boardAxis();
        const double allowed = 1.2 * axis->stage().maxSpeed * slice + 2 / stepsPerMm(i);
        if (std::abs(static_cast<double>(steps[i] - m_sent[i]) / stepsPerMm(i)) > allowed) {
            say(std::string("The plan of axis ") + axisLetters[i] + " makes a jump; all axes are stopped");
            cancel(Then::Stand);
            return;
        }
    }
    m_slices.push_back({end, steps});
    if (m_slices.size() > 100)
        m_slices.pop_front();
    if (steps == m_sent)
        return;
    m_sent = steps;
    const double feed = std::sqrt(path) / slice * 60 * m_factor;
    const std::string line = jogTo(steps) + "F" + number(feed, feed < 10 ? 3 : 1);
    if (begin > m_lineEnd + 1e-6 && begin > m_now) {
        m_pending = line;
        m_pendingAt = begin;
    } else {
        sendLine(line);
        m_lineEnd = end;
    }
}

void Board::ranDry()
{
    const double stall = std::round((m_now - m_head + effectiveLead()) * 1000);
    if (std::exchange(m_isDry, true)) {
        // said
    } else if (m_pause > slice) {
        say(
            {Stall,
             "The computer stood still for " + number(stall, 0) + " ms: the axes have stopped and begin a new ramp", -1,
             stall});
    } else {
        say({WireTrouble, "The board does not answer in time: the axes have stopped and begin a new ramp"});
    }
    m_pending.clear();
    m_head = m_now;
    for (auto &axis : m_axes) {
        const bool inMotion = axis->running() && !axis->dwelling();
        if (inMotion)
            axis->takeUp(axis->position(), m_now);
        axis->settle(m_now);
    }
}

// ---- Plan against reports

void Board::countAnswers(const Report &report)
{
    // With its buffer empty and room for blocks the board has read and answered whatever had arrived. A lost line
    // leaves one answer too few for ever, while the others keep coming.
    const bool allRead = report.freeBlocks > 1 && report.freeBytes >= m_totalBytes;
    const bool missing = allRead && !m_awaited.empty() && m_awaited.front().since < m_reportAsked - onTheWay;
    m_doubts = missing ? m_doubts + 1 : 0;
    if (m_doubts >= reportsInDoubt)
        trouble("answers are missing");
}

void Board::compare(const Report &report)
{
    const double oldest = m_reportAsked - longestLag;
    while (m_slices.size() > 1 && m_slices[1].end < oldest)
        m_slices.pop_front();
    for (int i = 0; i < m_boardAxes; ++i) {
        long long low = m_sent[i];
        long long high = m_sent[i];
        for (const Slice &one : m_slices) {
            low = std::min(low, one.steps[i]);
            high = std::max(high, one.steps[i]);
        }
        const double room = unexplained + 1 / stepsPerMm(i);
        const double where = report.position[i];
        if (where >= low / stepsPerMm(i) - room && where <= high / stepsPerMm(i) + room)
            continue;
        // A byte of the report itself may have been lost: the next one tells.
        if (m_suspectAsked < 0 || m_reportAsked <= m_suspectAsked) {
            m_suspectAsked = m_reportAsked;
            m_nextPoll = m_now;
            m_report.position = m_positionsBefore;
            return;
        }
        m_suspectAsked = -1;
        say(
            {Astray,
             std::string("Axis ") + axisLetters[i] + " is at " + number(where, 3) +
                 " mm of the board, where it was not sent; all axes are stopped",
             i, where});
        cancel(Then::Stand);
        return;
    }
    m_suspectAsked = -1;

    // A byte of the last line may have been lost: then it ends a little beside its target.
    if (!m_idleSeen || !m_rests || !m_pending.empty())
        return;
    bool beside = false;
    for (int i = 0; i < m_boardAxes; ++i)
        beside = beside || isBeside(i);
    if (!beside) {
        m_corrections = 0;
    } else if (m_corrections++ < 3) {
        say("An axis has ended beside its target and is sent there again");
        std::array<long long, maxBoardAxes> there{};
        for (int i = 0; i < m_boardAxes; ++i)
            there[i] = toSteps(i, report.position[i]);
        std::swap(there, m_sent);
        m_slices.push_back({m_now, m_sent});
        m_sent = there;
        m_slices.push_back({m_now, m_sent});
        sendLine(jogTo(there) + "F60");
    } else {
        restAt(report, Then::Stand);
    }
}

} // namespace grbl
