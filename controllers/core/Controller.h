// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/Axis.h"

#include <mutex>
#include <string>

namespace controllers {

constexpr int maxAxes = 3;

/** One controller as the library's functions see it. */
class Controller
{
public:
    Controller(int number, int axes)
        : id(number)
        , axisCount(axes)
    {
    }
    virtual ~Controller() = default;

    int id;
    std::string serialNumber; ///< this and the next two: at most 32 bytes
    std::string modelName;
    std::string softVersion;
    int axisCount; ///< of the axes, those that the library sees

    bool added = false;
    bool open = false;

    /** Whether the controller is there, so that it is listed. */
    virtual bool plugged() const = 0;
    /** Whether an open controller answers. */
    virtual bool answers() const = 0;
    /**
     * Opens the link, `lock` being the call's: it is released while the controller is waited for. Returns a status;
     * `open` is the caller's to set.
     */
    virtual int openLink(std::unique_lock<std::mutex> &lock) = 0;
    /** The same for closing: what is in motion is told to stop. */
    virtual void closeLink(std::unique_lock<std::mutex> &) {}

    virtual bool joystickPresent() const { return false; }
    /** -10 to 10, tenths of maxRockerSpeed. */
    virtual double deflection() const { return 0; }
    virtual bool joystickDrives() const { return false; }
    /** Hands the axes to the joystick or takes them back. Returns a status. */
    virtual int setJoystickDrives(bool drives) { return drives ? NotAvailable : Ok; }

    /** How many axes axisCount may be set to. */
    virtual int mostAxes() const { return maxAxes; }
    /** Below mostAxes(), whatever axisCount says. */
    virtual Axis &axis(int number) = 0;
    /** A setter has stored something. */
    virtual void stored() {}
};

} // namespace controllers
