// SPDX-License-Identifier: MIT
#include "controllers/simulated/Controller.h"

namespace simulator {

Controller::Controller(const ControllerScenario &scenario)
    : controllers::Controller(scenario.id, scenario.axisCount)
    , m_plugged(scenario.plugged)
    , m_joystickPresent(scenario.joystickPresent)
    , m_deflection(scenario.joystickDeflection)
    , m_axes(scenario.axes.begin(), scenario.axes.end())
{
    serialNumber = scenario.serialNumber;
    modelName = scenario.modelName;
    softVersion = scenario.softVersion;
}

void Controller::setPlugged(bool plugged)
{
    m_plugged = plugged;
    if (!plugged)
        open = false;
}

void Controller::setJoystick(bool present, double deflection)
{
    m_joystickPresent = present;
    m_deflection = present ? deflection : 0;
    if (!m_joystickDrives)
        return;
    if (!present) {
        setJoystickDrives(false);
        return;
    }
    for (Axis &axis : m_axes)
        axis.driveByJoystick(m_deflection);
}

int Controller::setJoystickDrives(bool drives)
{
    if (drives && !m_joystickPresent)
        return NoJoystick;
    if (drives == m_joystickDrives)
        return Ok;
    m_joystickDrives = drives;
    for (Axis &axis : m_axes) {
        if (drives)
            axis.driveByJoystick(m_deflection);
        else
            axis.endJoystick();
    }
    return Ok;
}

void Controller::settle(double now)
{
    for (Axis &axis : m_axes)
        axis.settle(now);
}

void Controller::happen(const Event &event)
{
    Axis &axis = m_axes[event.axis];
    switch (event.kind) {
    case Event::Kind::LoseLink:
        linkUp = false;
        break;
    case Event::Kind::RestoreLink:
        linkUp = true;
        break;
    case Event::Kind::Plug:
        setPlugged(true);
        break;
    case Event::Kind::Unplug:
        setPlugged(false);
        break;
    case Event::Kind::Joystick:
        setJoystick(event.present, event.deflection);
        break;
    case Event::Kind::OptoFails:
        axis.setOptoFault(event.opto, true);
        break;
    case Event::Kind::OptoRecovers:
        axis.setOptoFault(event.opto, false);
        break;
    case Event::Kind::TriggerPulse:
        axis.triggerPulse();
        break;
    }
}

} // namespace simulator
