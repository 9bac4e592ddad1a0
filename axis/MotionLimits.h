// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/**
 * The rules that motion parameters must keep before anything is sent to the controller. Each check returns the
 * translated message of a broken rule, with its line feed, and an empty text when the rule holds, so that messages
 * of several rules can be added up. A value that is not a number breaks every rule.
 */
namespace MotionLimits {

/** minimum ≤ position ≤ maximum */
QString checkPosition(double position, double minimum, double maximum);
/** 0 < speed ≤ maximum */
QString checkSpeed(double speed, double maximum);
/** 0 < acceleration ≤ maximum */
QString checkAcceleration(double acceleration, double maximum);
/** 0 < travel ≤ maximum */
QString checkTravel(double travel, double maximum);
/** 0 < step ≤ maximum */
QString checkStep(double step, double maximum);
QString checkStepCount(int count);
QString checkStepDelay(int delayMs);
QString checkLoopCount(int count);

} // namespace MotionLimits
