// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>

/** How long motions take whose speed rises and falls evenly. */
namespace MotionTime {

/**
 * From standstill to standstill, s: a trapezoid of speed over time, or a triangle where the distance is too short to
 * reach the speed. Speed and acceleration above 0, the distance not below.
 */
inline double of(double distance, double speed, double acceleration)
{
    return distance < speed * speed / acceleration ? 2 * std::sqrt(distance / acceleration)
                                                   : distance / speed + speed / acceleration;
}

} // namespace MotionTime
