// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/Axis.h"
#include "simulator/Scenario.h"

#include <string>
#include <vector>

namespace simulator {

/** One controller: what its box, its link and the library know about it. It goes on moving whatever its link does. */
class Controller
{
public:
    explicit Controller(const ControllerScenario &scenario);

    int id;
    std::string serialNumber; ///< this and the next two: at most 32 bytes
    std::string modelName;
    std::string softVersion;
    int axisCount; ///< of the axes, those that the library sees

    bool added = false;
    bool open = false;
    bool linkUp = true;

    bool plugged() const { return m_plugged; }
    /** Unplugging closes the link for good; plugging in again does not open it. */
    void setPlugged(bool plugged);

    bool joystickPresent() const { return m_joystickPresent; }
    /** -10 to 10, tenths of maxRockerSpeed. */
    double deflection() const { return m_deflection; }
    bool joystickDrives() const { return m_joystickDrives; }
    /** Plugs in or moves the joystick. Taking it away ends its rule over the axes. */
    void setJoystick(bool present, double deflection);
    /** Hands the axes to the joystick or takes them back. Returns a Status. */
    int setJoystickDrives(bool drives);

    /** All of them, whatever axisCount says. */
    std::vector<Axis> &axes() { return m_axes; }
    /** Lets time pass for every axis. */
    void settle(double now);
    /** Carries out an event of this controller. */
    void happen(const Event &event);

private:
    bool m_plugged;
    bool m_joystickPresent;
    double m_deflection;
    bool m_joystickDrives = false;
    std::vector<Axis> m_axes;
};

} // namespace simulator
