// SPDX-License-Identifier: MIT
#include "controllers/simulated/Scenario.h"

#include "controllers/simulated/DefaultScenario.h"
#include "controllers/core/ObjectReader.h"
#include "controllers/simulated/LibraryFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>
#include <type_traits>

namespace simulator {

using controllers::inQuotes;
using controllers::JsonError;
using controllers::JsonValue;
using controllers::maxNumber;
using controllers::ObjectReader;
using controllers::readStage;

namespace {

constexpr int maxInt = std::numeric_limits<int>::max();

// Nothing that is simulated may pass for the real thing, wherever its numbers are written down.

constexpr std::size_t shownLength = MOVER_TEXT_LENGTH - 1; // the last byte ends the text

/** A serial number with "SIM-" in front, cut to what is shown; none stays none. */
std::string simulatedSerialNumber(const std::string &serialNumber)
{
    return serialNumber.empty() ? serialNumber : ("SIM-" + serialNumber).substr(0, shownLength);
}

/** A firmware version that says so at its end. */
std::string simulatedVersion(const std::string &version)
{
    const std::string word = version.empty() ? "simulated" : " simulated";
    return version.substr(0, shownLength - word.size()) + word;
}

void readAxis(const JsonValue &value, AxisScenario *axis)
{
    ObjectReader object(value, "the axis");
    if (const JsonValue *stage = object.find("stage"))
        readStage(*stage, &axis->stage);
    const std::string serialNumber = simulatedSerialNumber(axis->stage.serialNumber);
    std::memset(axis->stage.serialNumber, 0, MOVER_TEXT_LENGTH);
    std::memcpy(axis->stage.serialNumber, serialNumber.data(), serialNumber.size());
    object.choice<Chip>(
        "chip", &axis->chip, {{"absent", Chip::Absent}, {"blank", Chip::Blank}, {"written", Chip::Written}});
    axis->position = std::clamp(0.0, axis->stage.minPos, axis->stage.maxPos);
    object.number("position", &axis->position, axis->stage.minPos, axis->stage.maxPos);
    object.finish();
}

void readController(const JsonValue &value, ControllerScenario *controller)
{
    ObjectReader object(value, "the controller");
    object.require("id");
    object.number("id", &controller->id, 1, maxInt);
    object.text("serialNumber", &controller->serialNumber, MOVER_TEXT_LENGTH);
    controller->serialNumber = simulatedSerialNumber(controller->serialNumber);
    object.text("modelName", &controller->modelName, MOVER_TEXT_LENGTH);
    object.text("softVersion", &controller->softVersion, MOVER_TEXT_LENGTH);
    controller->softVersion = simulatedVersion(controller->softVersion);
    object.flag("plugged", &controller->plugged);
    if (const JsonValue *joystick = object.find("joystick")) {
        ObjectReader members(*joystick, "the joystick");
        controller->joystickPresent = true;
        members.number("deflection", &controller->joystickDeflection, -10, 10);
        members.finish();
    }
    object.require("axes");
    const JsonValue::Array &axes = object.list("axes");
    if (axes.empty() || axes.size() > maxAxes)
        throw JsonError(object.require("axes").line, "a controller has 1 to 3 axes");
    controller->axisCount = static_cast<int>(axes.size());
    for (std::size_t i = 0; i < axes.size(); ++i)
        readAxis(axes[i], &controller->axes[i]);
    object.finish();
}

void readFault(const JsonValue &value, CallFault *fault)
{
    ObjectReader object(value, "the fault");
    const JsonValue &function = object.require("function");
    object.text("function", &fault->function, std::string::npos);
    if (!isLibraryFunction(fault->function))
        throw JsonError(function.line, "the library has no function " + inQuotes(fault->function));
    const bool fails = object.number("status", &fault->status, -maxInt, -1);
    const bool delays = object.number("delayMs", &fault->delayMs, 0, maxInt);
    if (!fails && !delays)
        throw JsonError(value.line, "the fault lacks \"status\" or \"delayMs\"");
    object.number("call", &fault->firstCall, 1, maxInt);
    object.number("count", &fault->count, -1, maxInt);
    object.finish();
}

void readEvent(const JsonValue &value, const std::vector<ControllerScenario> &controllers, Event *event)
{
    using Kind = Event::Kind;
    ObjectReader object(value, "the event");
    object.require("at");
    object.number("at", &event->at, 0, maxNumber);
    if (object.find("every"))
        object.number("every", &event->every, 0.001, maxNumber);

    object.require("event");
    object.choice<Kind>(
        "event", &event->kind,
        {{"loseLink", Kind::LoseLink},
         {"restoreLink", Kind::RestoreLink},
         {"plug", Kind::Plug},
         {"unplug", Kind::Unplug},
         {"joystick", Kind::Joystick},
         {"optoFails", Kind::OptoFails},
         {"optoRecovers", Kind::OptoRecovers},
         {"triggerPulse", Kind::TriggerPulse}});

    const JsonValue &id = object.require("controller");
    object.number("controller", &event->controller, 1, maxInt);
    const auto controller = std::find_if(controllers.begin(), controllers.end(), [event](const auto &candidate) {
        return candidate.id == event->controller;
    });
    if (controller == controllers.end())
        throw JsonError(id.line, "there is no controller " + std::to_string(event->controller));

    const bool ofOpto = event->kind == Kind::OptoFails || event->kind == Kind::OptoRecovers;
    if (ofOpto || event->kind == Kind::TriggerPulse) {
        object.require("axis");
        object.number("axis", &event->axis, 0, controller->axisCount - 1);
    }
    if (ofOpto) {
        object.require("opto");
        object.choice<Opto>(
            "opto", &event->opto,
            {{"negative", Opto::Negative}, {"positive", Opto::Positive}, {"origin", Opto::Origin}});
    }
    if (event->kind == Kind::Joystick) {
        object.flag("present", &event->present);
        object.number("deflection", &event->deflection, -10, 10);
    }
    object.finish();
}

void readScenario(const JsonValue &value, Scenario *scenario)
{
    ObjectReader object(value, "the scenario");
    std::string description;
    object.text("description", &description, std::string::npos);
    object.number("timeScale", &scenario->timeScale, 0.001, 1000);
    object.number("latencyMs", &scenario->latencyMs, 0, 60000);
    object.require("controllers");
    for (const JsonValue &element : object.list("controllers")) {
        ControllerScenario controller;
        readController(element, &controller);
        for (const ControllerScenario &other : scenario->controllers) {
            if (other.id == controller.id)
                throw JsonError(element.line, "there are two controllers " + std::to_string(controller.id));
        }
        scenario->controllers.push_back(controller);
    }
    for (const JsonValue &element : object.list("faults"))
        readFault(element, &scenario->faults.emplace_back());
    for (const JsonValue &element : object.list("events"))
        readEvent(element, scenario->controllers, &scenario->events.emplace_back());
    object.finish();
}

} // namespace

AxisScenario::AxisScenario()
    : stage{}
{
    stage.pulseOneCircle = 200;
    stage.dispOneCircle = 1;
    stage.restoreSpeed = 2;
    std::strcpy(stage.optOrder, "NZP");
    stage.maxSpeed = 10;
    stage.maxAcc = 50;
    stage.minPos = -50;
    stage.maxPos = 50;
    stage.zeroOptWidth = 10;
    stage.optNum = 3;
    stage.motorPhase = 2;
    stage.modifyDate = 20240101;
    stage.maxRockerSpeed = 5;
}

bool Scenario::read(const std::string &json, const std::string &name, Scenario *scenario, std::string *error)
{
    try {
        Scenario read;
        readScenario(JsonValue::parse(json), &read);
        *scenario = std::move(read);
        return true;
    } catch (const JsonError &wrong) {
        *error = name + ":" + std::to_string(wrong.line) + ": " + wrong.what();
        return false;
    }
}

bool Scenario::readFile(const std::filesystem::path &path, Scenario *scenario, std::string *error)
{
    const std::string name = path.u8string();
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    // A folder can be opened, but not read; neither is distinguished from a file that is not there.
    if (!file.is_open() || text.str().empty()) {
        *error = name + ":1: the scenario file cannot be read or is empty";
        return false;
    }
    return read(text.str(), name, scenario, error);
}

Scenario Scenario::embedded()
{
    Scenario scenario;
    std::string error;
    read(defaultScenario, "default.json", &scenario, &error);
    return scenario;
}

} // namespace simulator
