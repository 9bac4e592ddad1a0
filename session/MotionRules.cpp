// SPDX-License-Identifier: MIT
#include "session/MotionRules.h"

#include <initializer_list>

namespace {

struct Check {
    MotionRule rule;
    bool holds;
};

bool isAboveZero(double value, double maximum)
{
    return value > 0 && value <= maximum;
}

QVector<MotionRule> broken(std::initializer_list<Check> checks)
{
    QVector<MotionRule> rules;
    for (const Check &check : checks) {
        if (!check.holds)
            rules.append(check.rule);
    }
    return rules;
}

Check speedCheck(const AxisDescription &axis, double speed)
{
    return {MotionRule::Speed, isAboveZero(speed, axis.maxSpeed)};
}

Check accelerationCheck(const AxisDescription &axis, double acceleration)
{
    return {MotionRule::Acceleration, isAboveZero(acceleration, axis.maxAcceleration)};
}

Check travelCheck(const AxisDescription &axis, double travel)
{
    return {MotionRule::Travel, isAboveZero(travel, axis.travel())};
}

} // namespace

QVector<MotionRule> MotionRules::brokenByMove(
    const AxisDescription &axis, double position, double speed, double acceleration)
{
    return broken(
        {{MotionRule::Position, position >= axis.minPos && position <= axis.maxPos},
         speedCheck(axis, speed),
         accelerationCheck(axis, acceleration)});
}

QVector<MotionRule> MotionRules::brokenByDrive(
    const AxisDescription &axis, double travel, double speed, double acceleration)
{
    return broken({travelCheck(axis, travel), speedCheck(axis, speed), accelerationCheck(axis, acceleration)});
}

QVector<MotionRule> MotionRules::brokenByJog(const AxisDescription &axis, double step, int count, int delayMs)
{
    return broken(
        {{MotionRule::Step, isAboveZero(step, axis.travel())},
         {MotionRule::StepCount, count != 0},
         {MotionRule::StepDelay, delayMs != 0}});
}

QVector<MotionRule> MotionRules::brokenByLoopRun(
    const AxisDescription &axis, double travel, double speed, double acceleration, int count)
{
    return broken(
        {travelCheck(axis, travel),
         speedCheck(axis, speed),
         accelerationCheck(axis, acceleration),
         {MotionRule::LoopCount, count != 0}});
}
