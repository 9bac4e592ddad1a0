// SPDX-License-Identifier: MIT
#pragma once

#include "session/MotionRules.h"

#include <QString>

/** The words for motion parameters that break a rule. */
namespace MotionLimits {

/** One translated line for each rule, each with its line feed, and the axis's limits in it. */
QString message(const QVector<MotionRule> &broken, const AxisDescription &axis);

} // namespace MotionLimits
