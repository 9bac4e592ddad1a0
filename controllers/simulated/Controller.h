// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/Controller.h"
#include "controllers/simulated/Axis.h"
#include "controllers/simulated/Scenario.h"

#include <string>
#include <vector>

namespace simulator {

/** One controller: what its box, its link and the library know about it. It goes on moving whatever its link does. */
class Controller : public controllers::Controller
{
public:
    explicit Controller(const ControllerScenario &scenario);

    bool linkUp = true;

    bool plugged() const override { return m_plugged; }
    bool answers() const override { return linkUp; }
    int openLink(std::unique_lock<std::mutex> &) override { return m_plugged && linkUp ? Ok : LinkLost; }
    /** Unplugging closes the link for good; plugging in again does not open it. */
    void setPlugged(bool plugged);

    bool joystickPresent() const override { return m_joystickPresent; }
    double deflection() const override { return m_deflection; }
    bool joystickDrives() const override { return m_joystickDrives; }
    /** Plugs in or moves the joystick. Taking it away ends its rule over the axes. */
    void setJoystick(bool present, double deflection);
    int setJoystickDrives(bool drives) override;

    /** All of them, whatever axisCount says. */
    std::vector<Axis> &axes() { return m_axes; }
    Axis &axis(int number) override { return m_axes[number]; }
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
