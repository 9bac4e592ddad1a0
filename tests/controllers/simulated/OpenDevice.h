// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/simulated/SimulatorControl.h"
#include "device/moverStatus.h"

#include "device/moverLibrary.h"

#include <QtTest>

/** The controller of the default scenario: axis 0 has the stage LIN-100, axis 1 ROT-60, axis 2 is bare. */
constexpr int device = 1001;

/** Resets the simulator and opens the controller. */
inline void openDevice()
{
    simulator::reset();
    QCOMPARE(addDev(device), 0);
    QCOMPARE(openTSDevice(device), 0);
}

/** Replaces the scenario and opens its controller 1001. */
inline void openScenario(const char *json)
{
    std::string error;
    QVERIFY2(simulator::loadScenarioText(json, &error), error.c_str());
    QCOMPARE(addDev(device), 0);
    QCOMPARE(openTSDevice(device), 0);
}

inline MotorStageState stateOf(int axis)
{
    MotorStageState state{};
    if (getRuningState(device, axis, &state) < 0)
        qFatal("getRuningState failed");
    return state;
}

inline double positionOf(int axis)
{
    int status = 0;
    const double position = getCurrentPos(device, axis, &status);
    if (status < 0)
        qFatal("getCurrentPos failed");
    return position;
}

/** Compares to the 1e-9 that a position at rest is good for. */
inline bool near(double a, double b)
{
    return std::abs(a - b) <= 1e-9;
}
