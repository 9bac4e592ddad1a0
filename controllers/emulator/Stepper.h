// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/emulator/Axes.h"
#include "controllers/emulator/Planner.h"

#include <deque>
#include <functional>
#include <limits>
#include <memory>

namespace emulator {

/**
 * Cuts the planned way into pieces of 10 ms, a few of which are prepared ahead, and puts out their steps. What is
 * prepared runs, whatever is decided meanwhile: that is why a stop begins 40 to 50 ms late.
 */
class Stepper
{
public:
    static constexpr double never = std::numeric_limits<double>::infinity();

    /** Called with axis, direction (1 or -1) and time of each step; false ends the motion at once, after this step. */
    using OnStep = std::function<bool(int axis, int direction, double time)>;

    Stepper(Planner &planner, int axes, OnStep onStep);

    const Steps &position() const { return m_position; }
    void setPosition(const Steps &position) { m_position = position; }

    bool isRunning() const { return !m_pieces.empty(); }
    /** Begins with the planner's first block at time `now`; nothing happens when it runs already. */
    void start(double now);
    /** The planner has changed: plans with the speed and the place up to which pieces are prepared. */
    void plan();
    /** Slows to a stand as soon as what is prepared has run; the rest of the way stays planned until forget(). */
    void hold() { m_isHolding = true; }
    bool isHolding() const { return m_isHolding; }
    /** After hold(), at a stand: what is planned may run again with start(). */
    void release();
    /** Bits of the axes that make steps; the others stand while the path is followed. */
    void setMoving(unsigned axes) { m_moving = axes; }
    /** Drops all that is prepared, at once and without a ramp. */
    void abort();

    /** When the piece that runs ends; never when nothing runs. */
    double pieceEnd() const;
    /** Puts out the steps up to `time`, which must not lie behind pieceEnd(). Returns where it ended by itself, or
     * `time`. */
    double runTo(double time);
    /** At pieceEnd(): goes on with the next piece and prepares another. False when nothing is left. */
    bool nextPiece();

    /** mm/s along the path, at the end of what is prepared. */
    double speed() const { return m_speed; }

private:
    struct Piece {
        std::shared_ptr<const Path> path;
        long long firstTick = 0;
        long long ticks = 0;
        double interval = 0;
        double duration = 0;
    };
    static constexpr std::size_t s_ahead = 5;

    void prepare();
    Piece preparePiece();
    void follow(double duration, double &used);
    bool tick(const Piece &piece, long long tick, double time);

    Planner &m_planner;
    const int m_axes;
    const OnStep m_onStep;
    Steps m_position{};
    unsigned m_moving = ~0U;

    std::deque<Piece> m_pieces; // the first one runs
    double m_pieceStart = 0;
    long long m_ticksDone = 0; // of the first piece

    // How far the planner's first block is prepared.
    double m_speed = 0;
    double m_way = 0;
    double m_carriedTime = 0; // that has gone by of the step that is under way
    bool m_isHolding = false;
    bool m_isHeld = false;
};

} // namespace emulator
