// SPDX-License-Identifier: MIT
#include "controllers/core/Axis.h"

#include <algorithm>
#include <cmath>

namespace controllers {

namespace {

// Positions closer together than this are one. Also the shortest leg, without which a run could have legs that take
// no time.
constexpr double resolution = 1e-9;

/** `position` carried along a compensation table; beyond its ends the correction stays that of the end. */
double compensated(const std::vector<std::pair<double, double>> &table, double position)
{
    if (table.empty())
        return position;
    const auto above = std::upper_bound(
        table.begin(), table.end(), position, [](double value, const auto &pair) { return value < pair.first; });
    if (above == table.begin() || above == table.end()) {
        const auto &end = above == table.begin() ? table.front() : table.back();
        return position + end.second - end.first;
    }
    const auto &below = *(above - 1);
    const double part = (position - below.first) / (above->first - below.first);
    return below.second + part * (above->second - below.second);
}

} // namespace

AxisSettings AxisSettings::of(const MotorParams &stage, double position)
{
    const double travel = stage.maxPos - stage.minPos;
    AxisSettings settings;
    settings.speed = stage.maxSpeed / 2;
    settings.acceleration = stage.maxAcc / 2;
    settings.targetPos = position;
    settings.relativeDisp = travel / 20;
    settings.jogStep = travel / 100;
    settings.circleDisp = travel / 10;
    settings.triggerStep = travel / 100;
    return settings;
}

Axis::Axis(const MotorParams &stage, double position)
    : settings(AxisSettings::of(stage, position))
    , m_stage(stage)
{
    m_motion.position = position;
}

double Axis::clipped(double position) const
{
    return std::clamp(position, m_stage.minPos, m_stage.maxPos);
}

double Axis::limited(double position) const
{
    return std::clamp(position, std::min(m_stage.minPos, m_from), std::max(m_stage.maxPos, m_from));
}

bool Axis::atLowerEnd(double position) const
{
    return position <= m_stage.minPos + resolution;
}

bool Axis::atUpperEnd(double position) const
{
    return position >= m_stage.maxPos - resolution;
}

void Axis::settle(double now)
{
    m_now = now;
    while (running()) {
        const double legEnd = m_legStart + m_profile.duration();
        if (now < legEnd) {
            m_motion = m_profile.at(now - m_legStart);
            m_motion.position = limited(m_motion.position);
            return;
        }
        m_motion = {limited(m_profile.end()), 0};
        if (m_clipped || m_leg + 1 >= m_legs) {
            endRun();
        } else if (now < legEnd + m_dwell) {
            return;
        } else {
            ++m_leg;
            startLeg(legBegin(legEnd + m_dwell));
        }
    }
}

void Axis::endRun()
{
    ended(std::exchange(m_run, Run::None));
}

int Axis::refusal(Run, double) const
{
    return running() ? AxisRunning : Ok;
}

int Axis::start(Run run, double displacement, int legs, double dwell, double speed)
{
    if (const int status = refusal(run, displacement); status != Ok)
        return status;
    if (legs == 0 || (std::abs(displacement) < resolution && run != Run::Home))
        return Ok;
    m_run = run;
    m_base = m_motion.position;
    m_displacement = displacement;
    m_legs = legs;
    m_leg = 0;
    m_dwell = dwell;
    m_speed = std::min(speed, speedLimit());
    m_acceleration = std::min(settings.acceleration, accelerationLimit());
    startLeg(m_now);
    settle(m_now);
    return Ok;
}

void Axis::startLeg(double at)
{
    double target = m_base + m_displacement;
    if (m_run == Run::Jog)
        target = m_base + m_displacement * (m_leg + 1);
    else if (m_run == Run::Loop && m_leg % 2 == 1)
        target = m_base;
    double reached = clipped(target);
    // From a place outside the travel a direction never leads the other way; only a move finds back by itself.
    if (m_run != Run::Move && (reached - m_motion.position) * (target - m_motion.position) < 0)
        reached = m_motion.position;
    m_clipped = std::abs(target - reached) > resolution;
    setProfile(MotionProfile::to(m_motion, reached, m_speed, m_acceleration), at);
}

void Axis::setProfile(const MotionProfile &profile, double at)
{
    if (profile.end() != m_motion.position) {
        m_direction = profile.end() > m_motion.position ? 1 : -1;
        leaves();
    }
    m_profile = profile;
    m_legStart = at;
    m_from = m_motion.position;
}

int Axis::startMove()
{
    return start(Run::Move, settings.targetPos - m_motion.position, 1, 0, settings.speed);
}

int Axis::startDrive(int direction)
{
    // Twice the travel leads beyond the limit from everywhere.
    const double travel = m_stage.maxPos - m_stage.minPos;
    const double displacement = settings.relativeDispEnable ? settings.relativeDisp : 2 * travel;
    return start(Run::Drive, direction * displacement, 1, 0, settings.speed);
}

int Axis::startJog(int direction)
{
    return start(Run::Jog, direction * settings.jogStep, settings.jogCount, settings.jogDelay / 1000.0, settings.speed);
}

int Axis::startLoop(int direction)
{
    // Two legs a loop; more loops than fit into the count of legs run for centuries anyway.
    const int legs = 2 * std::min(settings.circleCount, 1'000'000'000);
    return start(Run::Loop, direction * settings.circleDisp, legs, settings.circleDelay / 1000.0, settings.speed);
}

int Axis::stop()
{
    brake();
    return Ok;
}

void Axis::brake()
{
    if (m_motion.velocity == 0) {
        m_run = Run::None;
        return;
    }
    m_run = Run::Stop;
    m_leg = 0;
    m_legs = 1;
    setProfile(MotionProfile::brake(m_motion, m_acceleration), m_now);
}

void Axis::driveTo(double target, double speed)
{
    // An axis in motion brakes as it was started: with a smaller acceleration it might no longer stop in its travel.
    if (m_motion.velocity == 0)
        m_acceleration = std::min(settings.acceleration, accelerationLimit());
    m_run = Run::Own;
    m_leg = 0;
    m_legs = 1;
    setProfile(MotionProfile::to(m_motion, target, speed, m_acceleration), m_now);
    settle(m_now);
}

void Axis::standAt(double position)
{
    m_run = Run::None;
    m_motion = {position, 0};
}

void Axis::takeUpAt(double position, double now)
{
    m_now = now;
    m_motion = {position, 0};
    if (m_run == Run::Stop)
        endRun();
    else if (running())
        startLeg(m_now);
}

double Axis::reportedPosition() const
{
    const double position = stagePosition();
    if (!settings.posConpenEnable)
        return position;
    return compensated(m_direction > 0 ? settings.positivePosConpen : settings.negativePosConpen, position);
}

int Axis::fault(const MotorParams &stage)
{
    for (const double value :
         {stage.dispOneCircle, stage.restoreSpeed, stage.maxSpeed, stage.maxAcc, stage.minPos, stage.maxPos,
          stage.maxRockerSpeed}) {
        if (!std::isfinite(value))
            return OutOfRange;
    }
    if (stage.restoreSpeed <= 0 || stage.maxSpeed <= 0 || stage.maxAcc <= 0 || stage.maxRockerSpeed < 0 ||
        stage.minPos >= stage.maxPos)
        return OutOfRange;
    return Ok;
}

int Axis::setStage(const MotorParams &stage, std::unique_lock<std::mutex> &)
{
    if (running())
        return AxisRunning;
    if (const int status = fault(stage); status != Ok)
        return status;
    setStored(stage);
    return Ok;
}

void Axis::setStored(const MotorParams &stage)
{
    m_stage = stage;
    settings.speed = std::min(settings.speed, stage.maxSpeed);
    settings.acceleration = std::min(settings.acceleration, stage.maxAcc);
    settings.targetPos = clipped(settings.targetPos);
}

} // namespace controllers
