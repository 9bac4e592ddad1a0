// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/simulated/SimulatorControl.h"

#include <QtTest>

#include <string>
#include <vector>

/** One simulated axis: chip 'w' written, 'b' blank, 'a' absent. */
struct AxisOf {
    char chip = 'w';
    std::string model = "LIN-100";
    int moveType = 0;
};

struct ControllerOf {
    int id = 1001;
    std::string serialNumber = "MC3-000117";
    std::vector<AxisOf> axes = {{}};
    bool plugged = true;
};

/** Starts the simulation again with these controllers, their clock standing still. */
inline void play(const std::vector<ControllerOf> &controllers)
{
    std::string json;
    for (const ControllerOf &controller : controllers) {
        std::string axes;
        for (const AxisOf &axis : controller.axes) {
            const char *chip = axis.chip == 'w' ? "written" : axis.chip == 'b' ? "blank" : "absent";
            axes += (axes.empty() ? "" : ", ") + std::string("{ \"chip\": \"") + chip +
                    "\", \"stage\": { \"modelName\": \"" + axis.model + "\", \"serialNumber\": \"SN-" + axis.model +
                    "\", \"moveType\": " + std::to_string(axis.moveType) + ", \"maxRockerSpeed\": 10 } }";
        }
        json += (json.empty() ? "" : ", ") + std::string("{ \"id\": ") + std::to_string(controller.id) +
                ", \"softVersion\": \"2.4.1\", \"serialNumber\": \"" + controller.serialNumber +
                "\", \"plugged\": " + (controller.plugged ? "true" : "false") + ", \"axes\": [" + axes + "] }";
    }
    std::string error;
    if (!simulator::loadScenarioText("{ \"controllers\": [" + json + "] }", &error))
        QFAIL(error.c_str());
}

/** The calls so far, without those that the panels and the heartbeat make on their own. */
inline QStringList calls()
{
    QStringList result;
    for (const simulator::Call &call : simulator::journal()) {
        if (call.function != "getCurrentPos" && call.function != "getRuningState" && call.function != "getRockerInfo")
            result.append(QString::fromStdString(call.function + '(' + call.arguments + ')'));
    }
    return result;
}
