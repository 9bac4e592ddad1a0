// SPDX-License-Identifier: MIT
#include "controllers/simulated/Axis.h"

#include <algorithm>
#include <cmath>

namespace simulator {

Axis::Axis(const AxisScenario &scenario)
    : controllers::Axis(scenario.stage, scenario.position)
    , chip(scenario.chip)
{
}

int Axis::refusal(Run run, double) const
{
    if (!m_enabled)
        return PowerOff;
    if (running())
        return this->run() == Run::Own ? JoystickDrives : AxisRunning;
    if (m_joystickMode && m_deflection != 0)
        return JoystickDrives; // held against a limit
    if (run == Run::Home && m_optoFailed[static_cast<int>(Opto::Origin)])
        return OptoFault;
    return limitOptoFailed() ? OptoFault : Ok;
}

int Axis::home()
{
    return start(Run::Home, -position(), 1, 0, std::min(stage().restoreSpeed, stage().maxSpeed));
}

void Axis::triggerPulse()
{
    if (settings.triggerInEnable)
        start(Run::Drive, settings.triggerStep, 1, 0, settings.speed);
}

int Axis::setEnabled(bool enabled)
{
    m_enabled = enabled;
    if (!enabled)
        standAt(position());
    else if (m_joystickMode)
        driveByJoystick(m_deflection);
    return Ok;
}

void Axis::driveByJoystick(double deflection)
{
    m_joystickMode = true;
    m_deflection = deflection;
    const double speed = std::min(std::abs(deflection) * stage().maxRockerSpeed / 10, stage().maxSpeed);
    if (!m_enabled || limitOptoFailed())
        return;
    if (speed == 0)
        brake();
    else
        driveTo(deflection > 0 ? stage().maxPos : stage().minPos, speed);
}

void Axis::endJoystick()
{
    m_joystickMode = false;
    brake();
}

MotorStageState Axis::state() const
{
    if (shownState)
        return *shownState;
    MotorStageState state{};
    state.isCanRun = refusal(Run::None, 0) == Ok;
    state.isStop = !running();
    state.isEnable = m_enabled;
    state.isHome = m_homed;
    state.isLeftLimit = atLowerEnd(position());
    state.isRightLimit = atUpperEnd(position());
    state.isLeftOptoFault = m_optoFailed[static_cast<int>(Opto::Negative)];
    state.isRightOptoFault = m_optoFailed[static_cast<int>(Opto::Positive)];
    state.isHomeOptoFault = m_optoFailed[static_cast<int>(Opto::Origin)];
    state.runCount = static_cast<uint32_t>(loopIndex());
    return state;
}

int Axis::setStage(const MotorParams &stage, std::unique_lock<std::mutex> &lock)
{
    const int status = controllers::Axis::setStage(stage, lock);
    if (status == Ok && chip == Chip::Blank)
        chip = Chip::Written;
    if (status == Ok && clipped(position()) != position())
        setPosition(position());
    return status;
}

int Axis::eraseChip()
{
    if (chip == Chip::Absent)
        return NoChip;
    chip = Chip::Blank;
    return Ok;
}

void Axis::setPosition(double position)
{
    m_homed = false;
    standAt(clipped(position));
}

void Axis::setOptoFault(Opto opto, bool failed)
{
    m_optoFailed[static_cast<int>(opto)] = failed;
    if (!failed && m_joystickMode && !running())
        driveByJoystick(m_deflection);
    else if (failed && running() && (opto != Opto::Origin || run() == Run::Home))
        brake();
}

} // namespace simulator
