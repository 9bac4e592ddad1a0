// SPDX-License-Identifier: MIT
#include "controllers/emulator/Planner.h"

#include "controllers/emulator/Settings.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace emulator {

namespace {

constexpr double slowest = 1.0 / 60; // mm/s: a feed of less is raised to this
constexpr double weakest = 1e-3;     // mm/s²: so that a ramp of nothing ends some day

/** The highest value along `direction` at which no axis passes its own `limit(axis)`. */
template <typename Limit>
double alongPath(const Vector &direction, int axes, const Limit &limit)
{
    double value = std::numeric_limits<double>::max();
    for (int axis = 0; axis < axes; ++axis) {
        if (direction[axis] != 0) {
            value = std::min(value, limit(axis) / std::fabs(direction[axis]));
        }
    }
    return value;
}

} // namespace

void Planner::clear(const Steps &position)
{
    m_blocks.clear();
    m_end = position;
}

bool Planner::append(const Steps &target, double speed, Block::Kind kind)
{
    auto path = std::make_shared<Path>();
    Block block;
    block.kind = kind;
    for (int axis = 0; axis < m_axes; ++axis) {
        // No steps for a millimetre: that axis stands.
        const long long steps = m_settings.stepsPerMm(axis) > 0 ? target[axis] - m_end[axis] : 0;
        path->steps[axis] = steps;
        path->ticks = std::max(path->ticks, std::llabs(steps));
        block.direction[axis] = steps ? static_cast<double>(steps) / m_settings.stepsPerMm(axis) : 0;
        block.length += block.direction[axis] * block.direction[axis];
    }
    if (path->ticks == 0) {
        return false;
    }
    block.length = std::sqrt(block.length);
    for (double &part : block.direction) {
        part /= block.length;
    }
    block.acceleration =
        std::max(weakest, alongPath(block.direction, m_axes, [this](int axis) { return m_settings.ramp(axis); }));
    block.limit =
        std::max(slowest, alongPath(block.direction, m_axes, [this](int axis) { return m_settings.maxSpeed(axis); }));
    block.speed = kind == Block::Kind::Rapid ? block.limit : std::max(speed, slowest);
    block.path = std::move(path);
    block.cornerSpeed = m_blocks.empty() ? 0 : cornerSpeed(m_blocks.back(), block);
    m_blocks.push_back(std::move(block));
    for (int axis = 0; axis < m_axes; ++axis) {
        m_end[axis] += m_blocks.back().path->steps[axis];
    }
    return true;
}

double Planner::cornerSpeed(const Block &before, const Block &after) const
{
    double cosine = 0; // of the turn: 1 straight on, -1 straight back
    Vector turn{};
    double length = 0;
    for (int axis = 0; axis < m_axes; ++axis) {
        cosine += before.direction[axis] * after.direction[axis];
        turn[axis] = after.direction[axis] - before.direction[axis];
        length += turn[axis] * turn[axis];
    }
    if (cosine > 0.999999) {
        return std::numeric_limits<double>::max();
    }
    if (cosine < -0.999999) {
        return 0;
    }
    // The speed on the circle that stays within the junction deviation of the corner, with the acceleration that the
    // axes have across it.
    const double half = std::sqrt((1 + cosine) / 2); // sine of half the angle between the two ways: 1 straight on
    length = std::sqrt(length);
    for (double &part : turn) {
        part /= length;
    }
    const double acceleration = alongPath(turn, m_axes, [this](int axis) { return m_settings.ramp(axis); });
    return std::sqrt(acceleration * m_settings[11] * half / (1 - half));
}

void Planner::setOverrides(int feed, int rapid)
{
    m_feedPercent = feed;
    m_rapidPercent = rapid;
}

double Planner::speedOf(const Block &block) const
{
    double speed = block.speed;
    if (block.kind == Block::Kind::Feed) {
        speed *= m_feedPercent / 100.0;
    } else if (block.kind == Block::Kind::Rapid) {
        speed *= m_rapidPercent / 100.0;
    }
    return std::clamp(speed, slowest, block.limit);
}

void Planner::plan(double speed, double left)
{
    const auto reach = [](double from, const Block &block, double length) {
        return std::sqrt(from * from + 2 * block.acceleration * length);
    };
    double next = 0;
    for (std::size_t i = m_blocks.size(); i-- > 1;) {
        Block &block = m_blocks[i];
        const double corner = std::min({block.cornerSpeed, speedOf(block), speedOf(m_blocks[i - 1])});
        next = block.entrySpeed = std::min(corner, reach(next, block, block.length));
    }
    for (std::size_t i = 1; i < m_blocks.size(); ++i) {
        const Block &before = m_blocks[i - 1];
        const double from = i == 1 ? speed : before.entrySpeed;
        m_blocks[i].entrySpeed = std::min(m_blocks[i].entrySpeed, reach(from, before, i == 1 ? left : before.length));
    }
}

} // namespace emulator
