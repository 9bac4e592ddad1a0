// SPDX-License-Identifier: MIT
#pragma once

#include "session/AxisDescription.h"

#include <QVector>

/** A rule that motion parameters must keep before anything is sent to the controller. */
enum class MotionRule {
    Position,     ///< within the ends of travel
    Speed,        ///< above 0, at most the stage's
    Acceleration, ///< above 0, at most the stage's
    Travel,       ///< of a relative move or loop run: above 0, at most the length of travel
    Step,         ///< of a jog: above 0, at most the length of travel
    StepCount,    ///< not 0
    StepDelay,    ///< not 0
    LoopCount,    ///< not 0
};

/**
 * Which rules a motion breaks, in the order in which they are told. A value that is not a number breaks every rule.
 * Lengths in the axis's unit, delays in milliseconds. Any thread.
 */
namespace MotionRules {

QVector<MotionRule> brokenByMove(const AxisDescription &axis, double position, double speed, double acceleration);
QVector<MotionRule> brokenByDrive(const AxisDescription &axis, double travel, double speed, double acceleration);
QVector<MotionRule> brokenByJog(const AxisDescription &axis, double step, int count, int delayMs);
QVector<MotionRule> brokenByLoopRun(
    const AxisDescription &axis, double travel, double speed, double acceleration, int count);

} // namespace MotionRules
