// SPDX-License-Identifier: MIT
#pragma once

#include <array>

namespace controllers {

/** Where an axis is and how fast it goes, in the stage's unit and per second. */
struct Motion {
    double position = 0;
    double velocity = 0;
};

/**
 * One motion to a stand in closed form: stretches of constant acceleration, so that the position at any time is worked
 * out from the start and not from the time before. It ends on its end position exactly; on the way there it is good to
 * the rounding of doubles.
 */
class MotionProfile
{
public:
    /** No motion at all. */
    MotionProfile() = default;

    /**
     * From `start` to a stand at `target`, no faster than `speed` (above 0) once that speed has been reached, braking
     * and gaining speed with `acceleration` (above 0). A start in the other direction brakes first. A start towards the
     * target has to leave room to brake.
     */
    static MotionProfile to(Motion start, double target, double speed, double acceleration);

    /** From `start` to the nearest stand. */
    static MotionProfile brake(Motion start, double acceleration);

    /** Seconds from the start to the stand. */
    double duration() const { return m_duration; }
    double end() const { return m_end; }
    /** Position and velocity `time` seconds after the start. */
    Motion at(double time) const;

private:
    struct Stretch {
        double duration;
        double acceleration;
    };
    static constexpr int s_maxStretches = 4;

    explicit MotionProfile(Motion start);
    void append(double duration, double acceleration);

    Motion m_start;
    std::array<Stretch, s_maxStretches> m_stretches{};
    int m_count = 0;
    double m_duration = 0;
    double m_end = 0;
};

} // namespace controllers
