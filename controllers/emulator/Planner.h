// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/emulator/Axes.h"

#include <deque>
#include <memory>

namespace emulator {

class Settings;

/** What a block does to the step pins: `steps` on each axis, spread evenly over as many ticks as the busiest axis has
 * steps. */
struct Path {
    Steps steps{};
    long long ticks = 0;
};

/** One straight move in the queue. */
struct Block {
    enum class Kind { Feed, Rapid, Jog, Homing };

    Kind kind = Kind::Feed;
    std::shared_ptr<const Path> path;
    Vector direction{};
    double length = 0;       // mm
    double speed = 0;        // mm/s along the path, as programmed and within every axis's own
    double limit = 0;        // mm/s that no override passes
    double acceleration = 0; // mm/s²
    double cornerSpeed = 0;  // mm/s, at most this where it begins, by the angle to the block before
    double entrySpeed = 0;   // mm/s, as planned
};

/**
 * The queue of moves with its look-ahead: each block begins as fast as the corner, both its neighbours and the way left
 * to stop in allow. The first block is the one that runs; its speed now is the stepper's to say.
 */
class Planner
{
public:
    Planner(const Settings &settings, int axes, int capacity)
        : m_settings(settings)
        , m_axes(axes)
        , m_capacity(capacity)
    {
    }

    int free() const { return m_capacity - static_cast<int>(m_blocks.size()); }
    bool isEmpty() const { return m_blocks.empty(); }
    Block &front() { return m_blocks.front(); }
    const std::deque<Block> &blocks() const { return m_blocks; }

    /** Where the last block ends. */
    const Steps &end() const { return m_end; }
    /** Empties the queue; the next block begins at `position`. */
    void clear(const Steps &position);

    /** Appends a move to `target` with `speed` mm/s; false when it is shorter than a step, and nothing is appended. */
    bool append(const Steps &target, double speed, Block::Kind kind);
    void removeFront() { m_blocks.pop_front(); }

    /** Plans all entry speeds again; of the first block `left` mm are left, begun with `speed`. */
    void plan(double speed, double left);
    /** What the first block has to have slowed to at its end. */
    double exitSpeed() const { return m_blocks.size() > 1 ? m_blocks[1].entrySpeed : 0; }

    /** Percent, of G1 and of G0; jogs know neither. */
    void setOverrides(int feed, int rapid);
    double speedOf(const Block &block) const;

private:
    double cornerSpeed(const Block &before, const Block &after) const;

    const Settings &m_settings;
    int m_axes;
    int m_capacity;
    std::deque<Block> m_blocks;
    Steps m_end{};
    int m_feedPercent = 100;
    int m_rapidPercent = 100;
};

} // namespace emulator
