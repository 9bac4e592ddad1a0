// SPDX-License-Identifier: MIT
#include "controllers/emulator/Stepper.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace emulator {

namespace {

constexpr double pieceTime = 0.010;
constexpr double firstTime = 0.002;   // to prepare the first pieces
constexpr double blockTime = 0.00003; // that each block takes longer than it should
constexpr double longestInterval =
    1.0 / 30;                      // between two steps: the timer counts no further, a slower feed runs as fast
constexpr double holdTail = 0.016; // between the end of a hold's ramp and the end of its motion
constexpr double rounding = 1e-9;  // mm, and mm/s

} // namespace

Stepper::Stepper(Planner &planner, int axes, OnStep onStep)
    : m_planner(planner)
    , m_axes(axes)
    , m_onStep(std::move(onStep))
{
}

void Stepper::start(double now)
{
    if (isRunning()) {
        return;
    }
    m_pieceStart = now + firstTime;
    m_ticksDone = 0;
    plan();
    prepare();
}

void Stepper::plan()
{
    if (!m_planner.isEmpty()) {
        m_planner.plan(m_speed, m_planner.front().length - m_way);
    }
}

void Stepper::release()
{
    m_isHolding = m_isHeld = false;
}

void Stepper::abort()
{
    m_pieces.clear();
    m_ticksDone = 0;
    m_speed = m_way = m_carriedTime = 0;
    m_isHolding = m_isHeld = false;
}

double Stepper::pieceEnd() const
{
    return m_pieces.empty() ? never : m_pieceStart + m_pieces.front().duration;
}

double Stepper::runTo(double time)
{
    if (m_pieces.empty()) {
        return time;
    }
    const Piece &piece = m_pieces.front();
    while (m_ticksDone < piece.ticks) {
        const double at = m_pieceStart + static_cast<double>(m_ticksDone + 1) * piece.interval;
        if (at > time) {
            break;
        }
        ++m_ticksDone;
        if (!tick(piece, piece.firstTick + m_ticksDone, at)) {
            abort();
            return at;
        }
    }
    return time;
}

bool Stepper::tick(const Piece &piece, long long tick, double time)
{
    const auto stepsAfter = [&](long long ticks, int axis) {
        const long long steps = std::llabs(piece.path->steps[axis]);
        return (2 * ticks * steps + piece.path->ticks) / (2 * piece.path->ticks);
    };
    bool goesOn = true;
    for (int axis = 0; axis < m_axes; ++axis) {
        if ((m_moving >> axis & 1U) != 0 && stepsAfter(tick, axis) != stepsAfter(tick - 1, axis)) {
            const int direction = piece.path->steps[axis] > 0 ? 1 : -1;
            m_position[axis] += direction;
            goesOn = m_onStep(axis, direction, time) && goesOn;
        }
    }
    return goesOn;
}

bool Stepper::nextPiece()
{
    m_pieceStart = pieceEnd();
    m_pieces.pop_front();
    m_ticksDone = 0;
    prepare();
    return isRunning();
}

void Stepper::prepare()
{
    while (m_pieces.size() < s_ahead && !m_planner.isEmpty() && !m_isHeld) {
        m_pieces.push_back(preparePiece());
    }
}

Stepper::Piece Stepper::preparePiece()
{
    const Block &block = m_planner.front();
    const double ticksPerMm = static_cast<double>(block.path->ticks) / block.length;
    const double before = (block.length - m_way) * ticksPerMm;
    const auto whole = [](double ticks) { return static_cast<long long>(std::ceil(ticks - 1e-6)); };
    // A piece has at least one step, but for the end of a hold.
    double duration = 0;
    double after = 0; // set in the loop. NOLINT(clang-analyzer-deadcode.DeadStores)
    bool ends = false;
    do {
        double used = 0;
        follow(pieceTime, used);
        duration += used;
        ends = m_way >= block.length - rounding;
        after = ends ? 0 : (block.length - m_way) * ticksPerMm;
        m_isHeld = m_isHolding && m_speed <= rounding && !ends;
    } while (whole(after) == whole(before) && !ends && !m_isHeld);

    Piece piece;
    piece.path = block.path;
    piece.firstTick = block.path->ticks - whole(before);
    piece.ticks = whole(before) - whole(after);
    duration += m_carriedTime;
    const double part = static_cast<double>(whole(before)) - after;
    piece.interval = part > 0 ? std::min(duration / part, longestInterval) : 0;
    piece.duration = static_cast<double>(piece.ticks) * piece.interval;
    m_carriedTime = std::max(0.0, duration - piece.duration);
    if (m_isHeld) {
        piece.duration = std::max(piece.duration, duration) + holdTail;
        m_carriedTime = 0;
    }
    if (ends) {
        piece.duration += blockTime;
        m_planner.removeFront();
        m_way = m_carriedTime = 0;
        if (m_planner.isEmpty()) {
            m_speed = 0;
        }
        if (m_isHolding && m_speed <= rounding) {
            m_isHeld = true;
            piece.duration += holdTail;
        }
    }
    return piece;
}

void Stepper::follow(double duration, double &used)
{
    // Stretches of constant acceleration along the block, until `duration` or the block is over.
    const Block &block = m_planner.front();
    const double ramp = block.acceleration;
    const double top = m_isHolding ? 0 : m_planner.speedOf(block);
    const double exit = m_isHolding ? 0 : std::min(m_planner.exitSpeed(), top);
    while (used < duration) {
        const double left = block.length - m_way;
        if (left <= rounding) {
            m_way = block.length;
            return;
        }
        const double brake = std::max(0.0, (m_speed * m_speed - exit * exit) / (2 * ramp));
        double acceleration = 0;
        double time = 0;
        bool toEnd = false;
        if (m_isHolding) {
            if (m_speed <= rounding) {
                m_speed = 0;
                return;
            }
            acceleration = -ramp;
            time = m_speed / ramp;
            if (brake > left) {
                // Over the block's end with what speed is left there.
                const double there = std::sqrt(std::max(0.0, m_speed * m_speed - 2 * ramp * left));
                time = (m_speed - there) / ramp;
                toEnd = true;
            }
        } else if (brake >= left - rounding) {
            // Braking, and on the spot at the end.
            acceleration = (exit * exit - m_speed * m_speed) / (2 * left);
            time = 2 * left / (m_speed + exit);
            toEnd = true;
        } else if (m_speed < top - rounding) {
            const double peak = std::min(top, std::sqrt((m_speed * m_speed + exit * exit) / 2 + ramp * left));
            acceleration = ramp;
            time = (peak - m_speed) / ramp;
        } else if (m_speed > top + rounding) {
            acceleration = -ramp;
            time = (m_speed - top) / ramp;
        } else {
            m_speed = top;
            time = (left - brake) / top;
            toEnd = brake <= rounding;
        }
        if (time > duration - used) {
            time = duration - used;
            toEnd = false;
        }
        m_way += time * (m_speed + acceleration * time / 2);
        m_speed = std::max(0.0, m_speed + acceleration * time);
        used += time;
        if (toEnd || m_way >= block.length) {
            m_way = block.length;
            return;
        }
    }
}

} // namespace emulator
