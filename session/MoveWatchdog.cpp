// SPDX-License-Identifier: MIT
#include "session/MoveWatchdog.h"

#include "device/SerialComDev.h"
#include "session/MotionTime.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double slack = 1.5;
constexpr double patience = 2;          // s
constexpr double leastDistance = 0.002; // in the stage's unit: less may be less than a step of the motor
constexpr int leastAnswers = 3;         // of an axis that stands, before it counts as not moving

/** The lower of two limits, of which the second one may not be known (0). */
double within(double value, double limit)
{
    return limit > 0 ? std::min(value, limit) : value;
}

double secondsBetween(AnswerListener::Time from, AnswerListener::Time to)
{
    return std::chrono::duration<double>(to - from).count();
}

} // namespace

MoveWatchdog::MoveWatchdog(std::function<MotorDevInfo(int)> parametersOf)
    : m_parametersOf(std::move(parametersOf))
{
}

void MoveWatchdog::describe(const AxisDescription &axis)
{
    const QMutexLocker lock(&m_mutex);
    m_axes[axis.index].description = axis;
}

void MoveWatchdog::clear()
{
    const QMutexLocker lock(&m_mutex);
    m_axes.clear();
}

/** Nothing for a motion of which it is not known how long it takes. */
std::optional<MoveWatchdog::Motion> MoveWatchdog::plan(const Axis &axis, const MotionCommand &command) const
{
    const AxisDescription &description = axis.description;
    const MotorDevInfo info = m_parametersOf(command.axis);
    double speed = within(info.speed, description.maxSpeed);
    const double acceleration = within(info.acceleration, description.maxAcceleration);
    Motion motion;
    motion.from = axis.position;
    motion.direction = command.direction;
    int runs = 1;
    double dwell = 0; // s, in all
    switch (command.type) {
    case OPERATION_TYPE_MOVE:
        if (!axis.position)
            return std::nullopt;
        motion.distance = std::abs(info.targetPos - *axis.position);
        motion.direction = info.targetPos > *axis.position ? 1 : -1;
        break;
    case OPERATION_TYPE_DRIVE:
        if (!axis.position)
            return std::nullopt;
        motion.distance =
            command.direction > 0 ? description.maxPos - *axis.position : *axis.position - description.minPos;
        if (info.relativeDispEnable)
            motion.distance = std::min(motion.distance, info.relativeDisp);
        break;
    case OPERATION_TYPE_JOG:
        runs = info.jogCount;
        motion.distance = info.jogStep;
        dwell = runs * info.jogDelay / 1000.0;
        break;
    case OPERATION_TYPE_LOOP:
        runs = 2 * info.circleCount;
        motion.distance = info.circleDisp;
        dwell = runs * info.circleDelay / 1000.0;
        break;
    case OPERATION_TYPE_HOME:
        // Boards home their axes one after the other, each by its own procedure.
        if (description.tellsHoming || !axis.position)
            return std::nullopt;
        speed = description.homingSpeed;
        motion.distance = 2 * description.travel(); // to a limit and back
        break;
    default:
        return std::nullopt;
    }
    if (!(speed > 0) || !(acceleration > 0) || runs < 1 || !(motion.distance >= 0))
        return std::nullopt;
    motion.seconds = runs * MotionTime::of(motion.distance, speed, acceleration) + dwell;
    if (command.type == OPERATION_TYPE_HOME) // one that stands at its origin has nowhere to go
        motion.distance = std::abs(*axis.position);
    return motion;
}

void MoveWatchdog::commandAnswered(const MotionCommand &command, Time at)
{
    if (!command.isAccepted())
        return;
    const QMutexLocker lock(&m_mutex);
    const auto axis = m_axes.find(command.axis);
    if (axis == m_axes.end())
        return;
    axis->motion = plan(*axis, command); // a stop ends what there was
    if (axis->motion)
        axis->motion->since = at;
}

void MoveWatchdog::positionAnswered(int index, double position, Time)
{
    const QMutexLocker lock(&m_mutex);
    const auto axis = m_axes.find(index);
    if (axis == m_axes.end())
        return;
    axis->position = position;
    if (axis->motion && axis->motion->from && position != *axis->motion->from)
        axis->motion->hasMoved = true;
}

void MoveWatchdog::stateAnswered(int index, const MotorStageState &state, Time at)
{
    QMutexLocker lock(&m_mutex);
    const auto axis = m_axes.find(index);
    if (axis == m_axes.end() || !axis->motion || at < axis->motion->since)
        return;
    Motion &motion = *axis->motion;
    const double seconds = motion.seconds;
    const double since = secondsBetween(motion.since, at);
    Finding finding = StillMoves;
    if (state.isStop == 0) {
        motion.hasMoved = true;
        if (since <= seconds * slack + patience)
            return;
    } else {
        const bool isAtLimit =
            motion.direction > 0 ? state.isRightLimit != 0 : motion.direction < 0 && state.isLeftLimit != 0;
        if (motion.hasMoved || isAtLimit || motion.distance < leastDistance) {
            axis->motion.reset();
            return;
        }
        if (++motion.standing < leastAnswers || since <= patience)
            return;
        finding = DoesNotMove;
    }
    axis->motion.reset(); // told once
    lock.unlock();
    emit signal_moveOverdue(index, finding, seconds);
}
