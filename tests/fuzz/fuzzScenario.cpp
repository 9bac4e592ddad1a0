// SPDX-License-Identifier: MIT
// Bytes as a scenario file of the simulated controller: a complaint names a line of the file, whatever is accepted is
// in its range, and can be played without a position that the stage does not have.
#include "device/moverLibrary.h"
#include "controllers/simulated/Scenario.h"
#include "controllers/simulated/SimulatorControl.h"

#include "Fuzz.h"

#include <algorithm>
#include <cmath>

namespace {

using simulator::Scenario;

void checkComplaint(const std::string &json, const std::string &error)
{
    const QString text = QString::fromStdString(error);
    Fuzz::require(text.startsWith("name:"), "the complaint names no file:", text);
    bool ok = false;
    const int line = text.section(QLatin1Char(':'), 1, 1).toInt(&ok);
    const auto lines = 1 + std::count(json.begin(), json.end(), '\n');
    Fuzz::require(ok && line >= 1 && line <= lines, "no line of the file:", text);
    Fuzz::require(!text.section(QLatin1Char(':'), 2).trimmed().isEmpty(), "says nothing:", text);
}

void checkStage(const MotorParams &stage)
{
    Fuzz::require(stage.pulseOneCircle >= 1 && stage.moveType <= 3 && stage.unitType <= 1, "stage");
    Fuzz::require(!stage.modelName[31] && !stage.serialNumber[31] && !stage.optOrder[9], "text without an end");
    for (const double positive : {stage.dispOneCircle, stage.restoreSpeed, stage.maxSpeed, stage.maxAcc})
        Fuzz::require(std::isfinite(positive) && positive > 0, "not above 0");
    Fuzz::require(std::isfinite(stage.minPos) && std::isfinite(stage.maxPos) && stage.minPos < stage.maxPos, "travel");
    Fuzz::require(std::isfinite(stage.maxRockerSpeed) && stage.maxRockerSpeed >= 0, "joystick speed");
}

void checkRanges(const Scenario &scenario)
{
    Fuzz::require(scenario.timeScale >= 0.001 && scenario.timeScale <= 1000, "timeScale");
    Fuzz::require(scenario.latencyMs >= 0 && scenario.latencyMs <= 60000, "latencyMs");
    for (const auto &controller : scenario.controllers) {
        Fuzz::require(controller.id >= 1 && controller.axisCount >= 1 && controller.axisCount <= 3, "controller");
        Fuzz::require(controller.serialNumber.size() <= 32 && std::abs(controller.joystickDeflection) <= 10, "text");
        for (const auto &axis : controller.axes) {
            checkStage(axis.stage);
            Fuzz::require(axis.position >= axis.stage.minPos && axis.position <= axis.stage.maxPos, "position");
        }
    }
    for (const auto &fault : scenario.faults)
        Fuzz::require(fault.status <= 0 && fault.delayMs >= 0 && fault.firstCall >= 1 && fault.count >= -1, "fault");
    for (const auto &event : scenario.events) {
        Fuzz::require(std::isfinite(event.at) && event.at >= 0 && std::isfinite(event.every), "event");
        Fuzz::require(event.every == 0 || event.every >= 0.001, "event");
        Fuzz::require(event.axis >= 0 && event.axis < 3 && std::abs(event.deflection) <= 10, "event");
    }
}

/** Whether it takes no real time, and not many events, to play a second of it. */
bool isQuick(const Scenario &scenario)
{
    const auto slow = [](const simulator::CallFault &fault) { return fault.delayMs > 0; };
    return scenario.latencyMs == 0 && scenario.events.size() < 20 && scenario.controllers.size() < 20 &&
           std::none_of(scenario.faults.begin(), scenario.faults.end(), slow);
}

void play(const std::string &json, const Scenario &scenario)
{
    std::string error;
    Fuzz::require(simulator::loadScenarioText(json, &error), "accepted, and then not", QString::fromStdString(error));
    for (const auto &controller : scenario.controllers) {
        addDev(controller.id);
        openTSDevice(controller.id);
        startMove(controller.id, 0);
        startDrive(controller.id, 1, 1);
        startCircle(controller.id, 2, 2);
    }
    for (int step = 0; step < 8; ++step) {
        simulator::advance(0.125);
        for (const auto &controller : scenario.controllers) {
            for (int axis = 0; axis < controller.axisCount; ++axis) {
                int status = 0;
                const double position = getCurrentPos(controller.id, axis, &status);
                MotorParams stage = {};
                if (status < 0 || getMotorParams(controller.id, axis, &stage) < 0)
                    continue;
                Fuzz::require(std::isfinite(position), "position is no number");
                Fuzz::require(position >= stage.minPos && position <= stage.maxPos, "position outside the travel");
                MotorStageState state = {};
                if (getRuningState(controller.id, axis, &state) >= 0)
                    Fuzz::require((state.isStop | 1) == 1 && (state.isCanRun | 1) == 1, "flags");
            }
        }
        if (step == 4) {
            for (const auto &controller : scenario.controllers)
                home(controller.id, 0);
        }
    }
    simulator::reset();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string json(reinterpret_cast<const char *>(data), size);
    Scenario scenario;
    scenario.latencyMs = 4711;
    std::string error;
    if (!Scenario::read(json, "name", &scenario, &error)) {
        Fuzz::require(scenario.latencyMs == 4711 && scenario.controllers.empty(), "changed by a wrong file");
        checkComplaint(json, error);
        return 0;
    }
    checkRanges(scenario);
    if (isQuick(scenario))
        play(json, scenario);
    return 0;
}
