// SPDX-License-Identifier: MIT
#include "controllers/simulated/SimulatorControl.h"

#include "controllers/simulated/LibraryFunctions.h"
#include "controllers/simulated/Simulator.h"

#include <algorithm>
#include <stdexcept>

namespace simulator {

namespace {

// An executable with this interface can read the journal; it is kept from the first call on.
const bool keepsJournal = Simulator::keepJournal();

/** The simulator, locked, with everything that is due done. */
class LockedSimulator
{
public:
    LockedSimulator()
        : m_lock(m_simulator.mutex())
    {
        m_simulator.settle();
    }
    Simulator *operator->() { return &m_simulator; }
    std::unique_lock<std::mutex> *lock() { return &m_lock; }

    Controller &controller(int id)
    {
        Controller *found = m_simulator.controller(id);
        if (!found)
            throw std::invalid_argument("the scenario has no controller " + std::to_string(id));
        return *found;
    }
    Axis &axis(int id, int axis)
    {
        if (axis < 0 || axis >= maxAxes)
            throw std::invalid_argument("no controller has an axis " + std::to_string(axis));
        return controller(id).axes()[axis];
    }

private:
    Simulator &m_simulator = Simulator::instance();
    std::unique_lock<std::mutex> m_lock;
};

const std::string &checked(const std::string &function)
{
    if (!isLibraryFunction(function))
        throw std::invalid_argument("the library has no function " + function);
    return function;
}

void addFault(const std::string &function, int status, int delayMs, int nth, int count)
{
    LockedSimulator()->addFault({checked(function), status, delayMs, nth, count});
}

} // namespace

std::string Call::text() const
{
    return function + "(" + arguments + ") = " + result;
}

// ---- Scenario and clock

void reset()
{
    LockedSimulator()->begin(Scenario::embedded(), false);
}

bool loadScenarioFile(const std::string &path, std::string *error)
{
    Scenario scenario;
    if (!Scenario::readFile(path, &scenario, error))
        return false;
    LockedSimulator()->begin(scenario, false);
    return true;
}

bool loadScenarioText(const std::string &json, std::string *error)
{
    Scenario scenario;
    if (!Scenario::read(json, "scenario", &scenario, error))
        return false;
    LockedSimulator()->begin(scenario, false);
    return true;
}

void useRealClock()
{
    LockedSimulator()->setRealClock();
}

void advance(double seconds)
{
    LockedSimulator()->advance(seconds);
}

double now()
{
    return LockedSimulator()->now();
}

// ---- Journal

std::vector<Call> journal()
{
    LockedSimulator simulator;
    return {simulator->journal().begin(), simulator->journal().end()};
}

std::vector<std::string> journalText()
{
    std::vector<std::string> texts;
    for (const Call &call : journal())
        texts.push_back(call.text());
    return texts;
}

int callCount(const std::string &function)
{
    LockedSimulator simulator;
    const auto &calls = simulator->journal();
    return static_cast<int>(std::count_if(
        calls.begin(), calls.end(), [&name = checked(function)](const Call &call) { return call.function == name; }));
}

void clearJournal()
{
    LockedSimulator()->clearJournal();
}

std::vector<std::string> functions()
{
    return libraryFunctions();
}

void onCall(std::function<void(const std::string &function)> observer)
{
    Simulator::instance().setObserver(std::move(observer));
}

std::string callInFlight()
{
    return LockedSimulator()->callInFlight();
}

std::string overlap()
{
    return LockedSimulator()->overlap();
}

// ---- Faults of calls

void failCall(const std::string &function, int status, int nth, int count)
{
    addFault(function, status, 0, nth, count);
}

void failAlways(const std::string &function, int status)
{
    addFault(function, status, 0, 1, -1);
}

void delayCall(const std::string &function, int milliseconds, int count)
{
    addFault(function, 0, milliseconds, 1, count);
}

void hangCall(const std::string &function)
{
    LockedSimulator()->hang(checked(function));
}

bool waitUntilHanging(int timeoutMs)
{
    LockedSimulator simulator;
    return simulator->waitUntilHanging(simulator.lock(), timeoutMs);
}

void releaseHung()
{
    LockedSimulator()->releaseHung();
}

void answerText(const std::string &function, const std::string &bytes)
{
    LockedSimulator()->setAnswer(checked(function), bytes);
}

void answerNumber(const std::string &function, double number)
{
    LockedSimulator()->setNumber(checked(function), number);
}

void answerCount(const std::string &function, int count)
{
    LockedSimulator()->setCount(checked(function), count);
}

void clearFaults()
{
    LockedSimulator()->clearFaults();
}

// ---- The hardware

void setOptoFault(int id, int axis, Opto opto, bool failed)
{
    LockedSimulator().axis(id, axis).setOptoFault(opto, failed);
}

void loseLink(int id)
{
    LockedSimulator().controller(id).linkUp = false;
}

void restoreLink(int id)
{
    LockedSimulator().controller(id).linkUp = true;
}

void plug(int id)
{
    LockedSimulator().controller(id).setPlugged(true);
}

void unplug(int id)
{
    LockedSimulator().controller(id).setPlugged(false);
}

void setJoystick(int id, bool present, double deflection)
{
    LockedSimulator().controller(id).setJoystick(present, std::clamp(deflection, -10.0, 10.0));
}

void triggerPulse(int id, int axis)
{
    LockedSimulator().axis(id, axis).triggerPulse();
}

void setState(int id, int axis, std::optional<MotorStageState> state)
{
    LockedSimulator().axis(id, axis).shownState = state;
}

void setParams(int id, int axis, std::optional<MotorParams> params)
{
    LockedSimulator().axis(id, axis).shownParams = params;
}

void setPosition(int id, int axis, double position)
{
    LockedSimulator().axis(id, axis).setPosition(position);
}

void setChip(int id, int axis, Chip chip)
{
    LockedSimulator().axis(id, axis).chip = chip;
}

} // namespace simulator
