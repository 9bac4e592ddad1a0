// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/Controller.h"
#include "controllers/simulated/SimulatorControl.h"

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace simulator {

using controllers::maxAxes;

/** One axis at the beginning. */
struct AxisScenario {
    MotorParams stage;
    Chip chip = Chip::Absent;
    double position = 0;

    /** A stage of which nothing is known: 100 mm of linear travel around 0. */
    AxisScenario();
};

/** One controller at the beginning. */
struct ControllerScenario {
    int id = 0;
    std::string serialNumber;
    std::string modelName;
    std::string softVersion;
    bool plugged = true;
    bool joystickPresent = false;
    double joystickDeflection = 0;
    int axisCount = 0;
    std::array<AxisScenario, maxAxes> axes; ///< those from axisCount on come to light by setDevAxisCount()
};

/** What happens to calls of one function: they fail with `status`, or take longer, or both. */
struct CallFault {
    std::string function;
    int status = 0;    ///< 0: the call is carried out
    int delayMs = 0;   ///< real time
    int firstCall = 1; ///< the first call that it befalls, counted from 1
    int count = 1;     ///< how many calls it befalls from there on; -1: all
};

/** Something that happens to the hardware at a time. */
struct Event {
    enum class Kind { LoseLink, RestoreLink, Plug, Unplug, Joystick, OptoFails, OptoRecovers, TriggerPulse };

    double at = 0;    ///< seconds
    double every = 0; ///< seconds until it happens again; 0: once
    Kind kind = Kind::LoseLink;
    int controller = 0;
    int axis = 0;
    Opto opto = Opto::Negative;
    bool present = true;   ///< Joystick
    double deflection = 0; ///< Joystick, -10 to 10
};

/** Everything that a scenario file says; README.md has the format. */
struct Scenario {
    double timeScale = 1; ///< simulated seconds per real second
    int latencyMs = 0;    ///< real time that every call takes
    std::vector<ControllerScenario> controllers;
    std::vector<CallFault> faults;
    std::vector<Event> events;

    /**
     * Reads a scenario. `name` stands for the file in the error, which is "NAME:LINE: what is wrong".
     * Returns whether `json` is a scenario; if not, `scenario` is unchanged.
     */
    static bool read(const std::string &json, const std::string &name, Scenario *scenario, std::string *error);
    /** As read(), from a file. One that cannot be read is reported at line 1. */
    static bool readFile(const std::filesystem::path &path, Scenario *scenario, std::string *error);
    /** The scenario that scenarios/default.json had when the simulator was built. */
    static Scenario embedded();
};

} // namespace simulator
