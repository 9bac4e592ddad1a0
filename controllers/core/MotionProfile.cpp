// SPDX-License-Identifier: MIT
#include "controllers/core/MotionProfile.h"

#include <algorithm>
#include <cmath>

namespace controllers {

MotionProfile::MotionProfile(Motion start)
    : m_start(start)
    , m_end(start.position)
{
}

void MotionProfile::append(double duration, double acceleration)
{
    if (duration <= 0)
        return;
    m_stretches[m_count++] = {duration, acceleration};
    m_duration += duration;
}

MotionProfile MotionProfile::brake(Motion start, double acceleration)
{
    MotionProfile profile(start);
    profile.append(std::abs(start.velocity) / acceleration, std::copysign(acceleration, -start.velocity));
    profile.m_end = start.position + start.velocity * std::abs(start.velocity) / (2 * acceleration);
    return profile;
}

MotionProfile MotionProfile::to(Motion start, double target, double speed, double acceleration)
{
    MotionProfile profile(start);
    double from = start.position;
    double along = 0; // speed towards the target at `from`
    double direction = target < from ? -1 : 1;
    if (start.velocity * direction < 0) {
        const MotionProfile braking = brake(start, acceleration);
        profile.append(braking.m_duration, -start.velocity / braking.m_duration);
        from = braking.m_end;
        direction = target < from ? -1 : 1;
    } else {
        along = std::abs(start.velocity);
    }

    const double distance = std::abs(target - from);
    // The speed whose gaining and braking take up the whole distance, at least the speed that is already there.
    const double triangle = std::max(std::sqrt(acceleration * distance + along * along / 2), along);
    const double top = std::min(speed, triangle);
    const double gain = std::abs(top * top - along * along) / (2 * acceleration);
    const double braking = top * top / (2 * acceleration);
    profile.append(std::abs(top - along) / acceleration, std::copysign(acceleration, top - along) * direction);
    if (top > 0)
        profile.append(std::max(0.0, distance - gain - braking) / top, 0);
    profile.append(top / acceleration, -acceleration * direction);

    profile.m_end = target;
    return profile;
}

Motion MotionProfile::at(double time) const
{
    if (time >= m_duration)
        return {m_end, 0};
    Motion motion = m_start;
    for (int i = 0; i < m_count && time > 0; ++i) {
        const Stretch &stretch = m_stretches[i];
        const double part = std::min(time, stretch.duration);
        motion.position += (motion.velocity + stretch.acceleration * part / 2) * part;
        motion.velocity += stretch.acceleration * part;
        time -= part;
    }
    return motion;
}

} // namespace controllers
