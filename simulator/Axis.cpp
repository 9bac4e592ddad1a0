// SPDX-License-Identifier: MIT
#include "simulator/Axis.h"

#include "simulator/SimulatorStatus.h"

#include <algorithm>
#include <cmath>

namespace simulator {

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

Axis::Axis(const AxisScenario &scenario)
    : chip(scenario.chip)
    , m_stage(scenario.stage)
{
    const double travel = m_stage.maxPos - m_stage.minPos;
    settings.speed = m_stage.maxSpeed / 2;
    settings.acceleration = m_stage.maxAcc / 2;
    settings.targetPos = scenario.position;
    settings.relativeDisp = travel / 20;
    settings.jogStep = travel / 100;
    settings.circleDisp = travel / 10;
    settings.triggerStep = travel / 100;
    m_motion.position = scenario.position;
}

double Axis::clipped(double position) const
{
    return std::clamp(position, m_stage.minPos, m_stage.maxPos);
}

void Axis::settle(double now)
{
    m_now = now;
    while (running()) {
        const double legEnd = m_legStart + m_profile.duration();
        if (now < legEnd) {
            m_motion = m_profile.at(now - m_legStart);
            m_motion.position = clipped(m_motion.position); // rounding must not carry it beyond a limit
            return;
        }
        m_motion = {clipped(m_profile.end()), 0};
        if (m_clipped || m_leg + 1 >= m_legs) {
            endRun();
        } else if (now < legEnd + m_dwell) {
            return;
        } else {
            ++m_leg;
            startLeg(legEnd + m_dwell);
        }
    }
}

void Axis::endRun()
{
    m_homed = m_homed || m_run == Run::Home;
    m_run = Run::None;
}

int Axis::refusal() const
{
    if (!m_enabled)
        return PowerOff;
    if (running())
        return m_run == Run::Joystick ? JoystickDrives : AxisRunning;
    if (m_joystickMode && m_deflection != 0)
        return JoystickDrives; // held against a limit
    return limitOptoFailed() ? OptoFault : Ok;
}

int Axis::start(Run run, double displacement, int legs, double dwell, double speed)
{
    if (const int status = refusal(); status != Ok)
        return status;
    if (legs == 0 || (std::abs(displacement) < resolution && run != Run::Home))
        return Ok;
    m_run = run;
    m_base = m_motion.position;
    m_displacement = displacement;
    m_legs = legs;
    m_leg = 0;
    m_dwell = dwell;
    m_speed = speed;
    m_acceleration = settings.acceleration;
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
    const double reached = clipped(target);
    m_clipped = std::abs(target - reached) > resolution;
    setProfile(MotionProfile::to(m_motion, reached, m_speed, m_acceleration), at);
}

void Axis::setProfile(const MotionProfile &profile, double at)
{
    if (profile.end() != m_motion.position) {
        m_direction = profile.end() > m_motion.position ? 1 : -1;
        m_homed = false;
    }
    m_profile = profile;
    m_legStart = at;
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

int Axis::home()
{
    if (const int status = refusal(); status != Ok)
        return status;
    if (m_optoFailed[static_cast<int>(Opto::Origin)])
        return OptoFault;
    const double speed = std::min(m_stage.restoreSpeed, m_stage.maxSpeed);
    return start(Run::Home, -m_motion.position, 1, 0, speed);
}

void Axis::triggerPulse()
{
    if (settings.triggerInEnable)
        start(Run::Trigger, settings.triggerStep, 1, 0, settings.speed);
}

void Axis::stop()
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

void Axis::setEnabled(bool enabled)
{
    m_enabled = enabled;
    if (!enabled) {
        m_run = Run::None;
        m_motion.velocity = 0;
    } else if (m_joystickMode) {
        driveByJoystick(m_deflection);
    }
}

void Axis::driveByJoystick(double deflection)
{
    m_joystickMode = true;
    m_deflection = deflection;
    const double speed = std::min(std::abs(deflection) * m_stage.maxRockerSpeed / 10, m_stage.maxSpeed);
    if (!m_enabled || limitOptoFailed())
        return;
    if (speed == 0) {
        stop();
        return;
    }
    // An axis in motion brakes as it was started: with a smaller acceleration it might no longer stop in its travel.
    if (m_motion.velocity == 0)
        m_acceleration = settings.acceleration;
    m_run = Run::Joystick;
    m_leg = 0;
    m_legs = 1;
    const double limit = deflection > 0 ? m_stage.maxPos : m_stage.minPos;
    setProfile(MotionProfile::to(m_motion, limit, speed, m_acceleration), m_now);
    settle(m_now);
}

void Axis::endJoystick()
{
    m_joystickMode = false;
    stop();
}

MotorStageState Axis::state() const
{
    if (shownState)
        return *shownState;
    MotorStageState state{};
    state.isCanRun = refusal() == Ok;
    state.isStop = !running();
    state.isEnable = m_enabled;
    state.isHome = m_homed;
    state.isLeftLimit = m_motion.position <= m_stage.minPos + resolution;
    state.isRightLimit = m_motion.position >= m_stage.maxPos - resolution;
    state.isLeftOptoFault = m_optoFailed[static_cast<int>(Opto::Negative)];
    state.isRightOptoFault = m_optoFailed[static_cast<int>(Opto::Positive)];
    state.isHomeOptoFault = m_optoFailed[static_cast<int>(Opto::Origin)];
    state.runCount = static_cast<uint32_t>(loopIndex());
    return state;
}

double Axis::reportedPosition() const
{
    if (!settings.posConpenEnable)
        return m_motion.position;
    return compensated(m_direction > 0 ? settings.positivePosConpen : settings.negativePosConpen, m_motion.position);
}

int Axis::setStage(const MotorParams &stage)
{
    if (running())
        return AxisRunning;
    for (const double value :
         {stage.dispOneCircle, stage.restoreSpeed, stage.maxSpeed, stage.maxAcc, stage.minPos, stage.maxPos,
          stage.maxRockerSpeed}) {
        if (!std::isfinite(value))
            return OutOfRange;
    }
    if (stage.restoreSpeed <= 0 || stage.maxSpeed <= 0 || stage.maxAcc <= 0 || stage.maxRockerSpeed < 0 ||
        stage.minPos >= stage.maxPos)
        return OutOfRange;
    m_stage = stage;
    if (chip == Chip::Blank)
        chip = Chip::Written;
    settings.speed = std::min(settings.speed, stage.maxSpeed);
    settings.acceleration = std::min(settings.acceleration, stage.maxAcc);
    settings.targetPos = clipped(settings.targetPos);
    if (clipped(m_motion.position) != m_motion.position)
        setPosition(m_motion.position);
    return Ok;
}

void Axis::setPosition(double position)
{
    m_run = Run::None;
    m_homed = false;
    m_motion = {clipped(position), 0};
}

void Axis::setOptoFault(Opto opto, bool failed)
{
    m_optoFailed[static_cast<int>(opto)] = failed;
    if (!failed && m_joystickMode && !running())
        driveByJoystick(m_deflection);
    else if (failed && running() && (opto != Opto::Origin || m_run == Run::Home))
        stop();
}

} // namespace simulator
