// SPDX-License-Identifier: MIT
#include "simulator/Scenario.h"

#include "simulator/DefaultScenario.h"
#include "simulator/JsonTree.h"
#include "simulator/LibraryFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>
#include <type_traits>

namespace simulator {

namespace {

constexpr double maxNumber = std::numeric_limits<double>::max();
constexpr int maxInt = std::numeric_limits<int>::max();

std::string inQuotes(const std::string &text)
{
    return "\"" + text + "\"";
}

std::string numberText(double number)
{
    std::ostringstream text;
    text << number;
    return text.str();
}

/** The members of one JSON object, taken one by one. Every complaint is thrown as a JsonError. */
class ObjectReader
{
public:
    ObjectReader(const JsonValue &value, const std::string &what)
        : m_value(value)
        , m_what(what)
    {
        if (!std::holds_alternative<JsonValue::Object>(value.content))
            throw JsonError(value.line, what + " has to be an object {…}");
    }

    /** The member of this name, or null. Names that nobody has asked for are unknown ones, see finish(). */
    const JsonValue *find(const std::string &name)
    {
        m_asked.push_back(name);
        for (const JsonValue::Member &member : members()) {
            if (member.first == name)
                return &member.second;
        }
        return nullptr;
    }
    const JsonValue &require(const std::string &name)
    {
        const JsonValue *value = find(name);
        if (!value)
            throw JsonError(m_value.line, m_what + " lacks " + inQuotes(name));
        return *value;
    }

    /** Replaces `target` if the member is there. `lowest` and `highest` are the ends of the range, both allowed. */
    template <typename Number>
    bool number(const std::string &name, Number *target, double lowest, double highest)
    {
        const JsonValue *value = find(name);
        if (!value)
            return false;
        double read = 0;
        if (const auto *whole = std::get_if<long long>(&value->content))
            read = static_cast<double>(*whole);
        else if (const auto *real = std::get_if<double>(&value->content); real && std::is_floating_point_v<Number>)
            read = *real;
        else
            throw JsonError(
                value->line, inQuotes(name) + (std::is_floating_point_v<Number> ? " has to be a number"
                                                                                : " has to be a whole number"));
        if (read < lowest || read > highest) {
            const bool open = highest == maxNumber;
            const std::string range =
                open ? "at least " + numberText(lowest) : numberText(lowest) + " to " + numberText(highest);
            throw JsonError(value->line, inQuotes(name) + " has to be " + range + ", not " + numberText(read));
        }
        *target = static_cast<Number>(read);
        return true;
    }
    /** As number(), for a number above 0. */
    void positive(const std::string &name, double *target)
    {
        if (number(name, target, -maxNumber, maxNumber) && *target <= 0)
            throw JsonError(find(name)->line, inQuotes(name) + " has to be above 0, not " + numberText(*target));
    }
    bool flag(const std::string &name, bool *target)
    {
        const JsonValue *value = find(name);
        if (!value)
            return false;
        const auto *read = std::get_if<bool>(&value->content);
        if (!read)
            throw JsonError(value->line, inQuotes(name) + " has to be true or false");
        *target = *read;
        return true;
    }
    /** `longest`: bytes. */
    bool text(const std::string &name, std::string *target, std::size_t longest)
    {
        const JsonValue *value = find(name);
        if (!value)
            return false;
        const auto *read = std::get_if<std::string>(&value->content);
        if (!read)
            throw JsonError(value->line, inQuotes(name) + " has to be a text");
        if (read->size() > longest)
            throw JsonError(value->line, inQuotes(name) + " has more than " + std::to_string(longest) + " bytes");
        *target = *read;
        return true;
    }
    /** As text(), into a zero-padded field that keeps its last byte zero. */
    template <std::size_t Size>
    void text(const std::string &name, char (&field)[Size])
    {
        std::string read;
        if (!text(name, &read, Size - 1))
            return;
        std::memset(field, 0, Size);
        std::memcpy(field, read.data(), read.size());
    }
    /** One of a few words; each stands for the value beside it. */
    template <typename Choice>
    bool choice(const std::string &name, Choice *target, const std::vector<std::pair<const char *, Choice>> &words)
    {
        std::string read;
        if (!text(name, &read, std::string::npos))
            return false;
        std::string allowed;
        for (const auto &[word, value] : words) {
            if (read == word) {
                *target = value;
                return true;
            }
            allowed += (allowed.empty() ? "" : ", ") + inQuotes(word);
        }
        throw JsonError(find(name)->line, inQuotes(name) + " has to be one of " + allowed);
    }
    /** The elements of a list; none if the member is not there. */
    const JsonValue::Array &list(const std::string &name)
    {
        static const JsonValue::Array none;
        const JsonValue *value = find(name);
        if (!value)
            return none;
        const auto *read = std::get_if<JsonValue::Array>(&value->content);
        if (!read)
            throw JsonError(value->line, inQuotes(name) + " has to be a list […]");
        return *read;
    }

    /** To be called after everything has been taken. */
    void finish()
    {
        for (const JsonValue::Member &member : members()) {
            if (std::find(m_asked.begin(), m_asked.end(), member.first) == m_asked.end())
                throw JsonError(member.second.line, m_what + " has no " + inQuotes(member.first));
        }
    }

private:
    const JsonValue::Object &members() const { return std::get<JsonValue::Object>(m_value.content); }

    const JsonValue &m_value;
    std::string m_what;
    std::vector<std::string> m_asked;
};

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

void readStage(const JsonValue &value, MotorParams *stage)
{
    ObjectReader object(value, "the stage");
    object.text("modelName", stage->modelName);
    std::string serialNumber;
    if (object.text("serialNumber", &serialNumber, shownLength)) {
        serialNumber = simulatedSerialNumber(serialNumber);
        std::memset(stage->serialNumber, 0, MOVER_TEXT_LENGTH);
        std::memcpy(stage->serialNumber, serialNumber.data(), serialNumber.size());
    }
    object.number("pulseOneCircle", &stage->pulseOneCircle, 1, std::numeric_limits<uint32_t>::max());
    object.positive("dispOneCircle", &stage->dispOneCircle);
    object.positive("restoreSpeed", &stage->restoreSpeed);
    object.number("moveType", &stage->moveType, 0, 3);
    object.number("positivePolarity", &stage->positivePolarity, 0, 1);
    object.number("negativePolarity", &stage->negativePolarity, 0, 1);
    object.number("originPolarity", &stage->originPolarity, 0, 1);
    object.number("phaseDirction", &stage->phaseDirction, 0, 1);
    object.number("limitDirection", &stage->limitDirection, 0, 1);
    object.number("unitType", &stage->unitType, 0, 1);
    object.text("optOrder", stage->optOrder);
    object.positive("maxSpeed", &stage->maxSpeed);
    object.positive("maxAcc", &stage->maxAcc);
    object.number("minPos", &stage->minPos, -maxNumber, maxNumber);
    object.number("maxPos", &stage->maxPos, -maxNumber, maxNumber);
    object.number("zeroOptWidth", &stage->zeroOptWidth, 0, std::numeric_limits<uint16_t>::max());
    object.number("optNum", &stage->optNum, 0, std::numeric_limits<uint16_t>::max());
    object.number(
        "returnTrip", &stage->returnTrip, std::numeric_limits<int16_t>::min(), std::numeric_limits<int16_t>::max());
    object.number("motorPhase", &stage->motorPhase, 0, std::numeric_limits<uint16_t>::max());
    object.number("modifyDate", &stage->modifyDate, 0, maxInt);
    object.number("maxRockerSpeed", &stage->maxRockerSpeed, 0, maxNumber);
    object.finish();
    if (!(stage->minPos < stage->maxPos))
        throw JsonError(value.line, "\"minPos\" has to be below \"maxPos\"");
}

void readAxis(const JsonValue &value, AxisScenario *axis)
{
    ObjectReader object(value, "the axis");
    if (const JsonValue *stage = object.find("stage"))
        readStage(*stage, &axis->stage);
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
