// SPDX-License-Identifier: MIT
// The library's 71 functions, for every library of ours.
#include "device/moverLibrary.h"
#include "device/moverMessages.h"

#include "controllers/core/LibraryCall.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <utility>

using namespace controllers;

// What a program that asks is told besides the functions: whose library it is, and the ways to its messages and
// reports.
extern "C" {
MOVER_API extern const char moverLibraryMark[];
const char moverLibraryMark[] = MOVER_LIBRARY_MARK;

static int nextMessage(MoverMessage *message)
{
    return Library::instance().takeMessage(message) ? 1 : 0;
}
MOVER_API extern MoverNextMessage *const moverLibraryMessages;
MoverNextMessage *const moverLibraryMessages = nextMessage;

static int lastReport(int id, MoverReport *report)
{
    return Library::instance().lastReport(id, report) ? 1 : 0;
}
MOVER_API extern MoverLastReport *const moverLibraryReports;
MoverLastReport *const moverLibraryReports = lastReport;
}

namespace {

constexpr int maxPairs = 100; ///< of a compensation table

// ---- Texts

std::string fieldText(const char (&field)[MOVER_TEXT_LENGTH])
{
    return std::string(field, strnlen(field, MOVER_TEXT_LENGTH));
}

void setField(char (&field)[MOVER_TEXT_LENGTH], const std::string &text)
{
    std::memset(field, 0, MOVER_TEXT_LENGTH);
    std::memcpy(field, text.data(), std::min<std::size_t>(text.size(), MOVER_TEXT_LENGTH));
}

/** Ends a text getter: fills the buffer, without a terminator when the text takes all of it. */
int giveText(LibraryCall &call, const std::string &ownText, char *buffer, int length)
{
    if (!buffer || length <= 0)
        return call.finish(call.refuse(BadArgument));
    const std::string &text = call.answer() ? *call.answer() : ownText;
    std::memset(buffer, 0, length);
    std::memcpy(buffer, text.data(), std::min<std::size_t>(text.size(), length));
    return call.finish(Ok, formatted(std::string(buffer, strnlen(buffer, length))));
}

/** The text of a setter; refuses the call if it is none. It ends at the first zero byte, as it does in every reader. */
std::string takeText(LibraryCall &call, const char *text, int length)
{
    if (!text || length < 0 || length > MOVER_TEXT_LENGTH) {
        call.refuse(BadArgument);
        return {};
    }
    return std::string(text, strnlen(text, length));
}

int controllerText(const char *function, int id, std::string Controller::*text, char *buffer, int length)
{
    LibraryCall call(function, id);
    Controller *controller = call.openController(id);
    return controller ? giveText(call, controller->*text, buffer, length) : call.finish(call.status());
}

int setControllerText(const char *function, int id, std::string Controller::*text, const char *bytes, int length)
{
    LibraryCall call(function, id, TextArgument{bytes, length});
    Controller *controller = call.openController(id);
    const std::string value = takeText(call, bytes, length);
    if (call.status() == Ok) {
        controller->*text = value;
        controller->stored();
    }
    return call.finish(call.status());
}

using StageText = char (MotorParams::*)[MOVER_TEXT_LENGTH];

int stageText(const char *function, int id, int axis, StageText text, char *buffer, int length)
{
    LibraryCall call(function, id, axis);
    Axis *found = call.axis(id, axis);
    return found ? giveText(call, fieldText(found->stage().*text), buffer, length) : call.finish(call.status());
}

int setStageText(const char *function, int id, int axis, StageText text, const char *bytes, int length)
{
    LibraryCall call(function, id, axis, TextArgument{bytes, length});
    Axis *found = call.axis(id, axis);
    const std::string value = takeText(call, bytes, length);
    if (call.status() == Ok) {
        setField(found->stage().*text, value);
        found->stored();
    }
    return call.finish(call.status());
}

// ---- Values of an axis

/** Carries out `action`, which takes the axis and returns a status. */
template <typename Action>
int onAxis(LibraryCall &call, int id, int axis, Action action)
{
    Axis *found = call.axis(id, axis);
    return call.finish(found ? action(*found) : call.status());
}

template <typename Action>
int start(const char *function, int id, int axis, int direction, Action action)
{
    LibraryCall call(function, id, axis, direction);
    return onAxis(call, id, axis, [&](Axis &found) {
        if (direction != 1 && direction != 2)
            return static_cast<int>(OutOfRange);
        return action(found, direction == 1 ? 1 : -1);
    });
}

template <typename Value>
Value load(const char *function, int id, int axis, Value AxisSettings::*setting)
{
    LibraryCall call(function, id, axis);
    Axis *found = call.axis(id, axis);
    return call.finish(found ? call.given(found->settings.*setting) : static_cast<Value>(call.status()));
}

/** `allows` takes the axis and the value and tells whether they go together. */
template <typename Value, typename Rule>
int store(const char *function, int id, int axis, Value value, Value AxisSettings::*setting, Rule allows)
{
    LibraryCall call(function, id, axis, value);
    return onAxis(call, id, axis, [&](Axis &found) {
        if (!std::isfinite(static_cast<double>(value)) || !allows(found, value))
            return OutOfRange;
        found.settings.*setting = value;
        found.stored();
        return Ok;
    });
}

bool anything(const Axis &, double)
{
    return true;
}
bool notNegative(const Axis &, double value)
{
    return value >= 0;
}
bool zeroOrOne(const Axis &, int value)
{
    return value == 0 || value == 1;
}
bool inTravel(const Axis &axis, double value)
{
    return value >= axis.stage().minPos && value <= axis.stage().maxPos;
}
bool ofSpeed(const Axis &axis, double value)
{
    return value > 0 && value <= axis.stage().maxSpeed;
}
bool ofAcceleration(const Axis &axis, double value)
{
    return value > 0 && value <= axis.stage().maxAcc;
}

/** Switches a trigger line, where there is one. */
int storeTrigger(const char *function, int id, int axis, int value, int AxisSettings::*setting)
{
    LibraryCall call(function, id, axis, value);
    return onAxis(call, id, axis, [&](Axis &found) {
        if (!zeroOrOne(found, value))
            return OutOfRange;
        if (value == 1 && !found.hasTriggers())
            return NotAvailable;
        found.settings.*setting = value;
        return Ok;
    });
}

// ---- Compensation tables

using Table = std::vector<std::pair<double, double>>;

int setTable(const char *function, int id, int axis, Table AxisSettings::*table, const double *pairs, int count)
{
    LibraryCall call(function, id, axis, PairsArgument{pairs, count});
    return onAxis(call, id, axis, [&](Axis &found) {
        if (count < 0 || (!pairs && count > 0))
            return BadArgument;
        if (count > maxPairs)
            return OutOfRange;
        Table read;
        for (int i = 0; i < count; ++i) {
            const double expected = pairs[2 * i];
            const double actual = pairs[2 * i + 1];
            const bool ascending = read.empty() || expected > read.back().first;
            if (!std::isfinite(expected) || !std::isfinite(actual) || !ascending)
                return OutOfRange;
            read.emplace_back(expected, actual);
        }
        found.settings.*table = read;
        found.stored();
        return Ok;
    });
}

int getTable(const char *function, int id, int axis, Table AxisSettings::*table, double *pairs, int *count)
{
    LibraryCall call(function, id, axis);
    return onAxis(call, id, axis, [&](Axis &found) {
        if (!pairs || !count || *count < 0)
            return BadArgument;
        const Table &stored = found.settings.*table;
        const int given = std::min(*count, static_cast<int>(stored.size()));
        for (int i = 0; i < given; ++i) {
            pairs[2 * i] = call.given(stored[i].first);
            pairs[2 * i + 1] = call.given(stored[i].second);
        }
        *count = call.givenCount(given);
        return Ok;
    });
}

} // namespace

// ---- Controllers

int listTSMotorControlerDevices(int *ids, int capacity)
{
    LibraryCall call(__func__, capacity);
    if (!ids || capacity < 0)
        return call.finish(call.refuse(BadArgument));
    if (call.status() < 0)
        return call.finish(call.status());
    int count = 0;
    for (const Controller *controller : call.library().controllers()) {
        if (controller->plugged() && count < capacity)
            ids[count++] = controller->id;
    }
    return call.finish(call.givenCount(count));
}

int addDev(int id)
{
    LibraryCall call(__func__, id);
    if (Controller *controller = call.knownController(id)) {
        if (controller->added)
            call.refuse(AlreadyAdded);
        controller->added = true;
    }
    return call.finish(call.status());
}

int removeDev(int id)
{
    LibraryCall call(__func__, id);
    if (Controller *controller = call.addedController(id)) {
        if (std::exchange(controller->open, false))
            controller->closeLink(call.lock());
        controller->added = false;
    }
    return call.finish(call.status());
}

int openTSDevice(int id)
{
    LibraryCall call(__func__, id);
    if (Controller *controller = call.addedController(id)) {
        const int status = controller->open ? AlreadyOpen : controller->openLink(call.lock());
        if (status < 0)
            call.refuse(status);
        else
            controller->open = true;
    }
    return call.finish(call.status());
}

int closeTSDevice(int id)
{
    LibraryCall call(__func__, id);
    if (Controller *controller = call.addedController(id)) {
        if (std::exchange(controller->open, false))
            controller->closeLink(call.lock());
        else
            call.refuse(NotOpen);
    }
    return call.finish(call.status());
}

int addMotor(int first, int second, const char *model)
{
    LibraryCall call(__func__, first, second, model ? std::string(model, strnlen(model, MOVER_TEXT_LENGTH)) : "");
    // The maker's library takes the model in; a simulated stage says itself what it is.
    if (!model)
        call.refuse(BadArgument);
    else if (first != 0 || second != 0)
        call.refuse(OutOfRange);
    return call.finish(call.status());
}

int getDevAxisCount(int id)
{
    LibraryCall call(__func__, id);
    Controller *controller = call.openController(id);
    return call.finish(controller ? call.given(controller->axisCount) : call.status());
}

int setDevAxisCount(int id, int count)
{
    LibraryCall call(__func__, id, count);
    if (Controller *controller = call.openController(id)) {
        if (count < 1 || count > controller->mostAxes())
            call.refuse(OutOfRange);
        else
            controller->axisCount = count;
        controller->stored();
    }
    return call.finish(call.status());
}

int getDevSerialNumber(int id, char *buffer, int length)
{
    return controllerText(__func__, id, &Controller::serialNumber, buffer, length);
}

int setDevSerialNumber(int id, const char *text, int length)
{
    return setControllerText(__func__, id, &Controller::serialNumber, text, length);
}

int getDevModelName(int id, char *buffer, int length)
{
    return controllerText(__func__, id, &Controller::modelName, buffer, length);
}

int setDevModelName(int id, const char *text, int length)
{
    return setControllerText(__func__, id, &Controller::modelName, text, length);
}

int getDevSoftVersion(int id, char *buffer, int length)
{
    return controllerText(__func__, id, &Controller::softVersion, buffer, length);
}

int getRockerEnable(int id)
{
    LibraryCall call(__func__, id);
    Controller *controller = call.openController(id);
    return call.finish(controller ? call.given(static_cast<int>(controller->joystickDrives())) : call.status());
}

int setRockerEnable(int id, int enable)
{
    LibraryCall call(__func__, id, enable);
    if (Controller *controller = call.openController(id)) {
        const int status = enable == 0 || enable == 1 ? controller->setJoystickDrives(enable == 1) : OutOfRange;
        if (status < 0)
            call.refuse(status);
    }
    return call.finish(call.status());
}

int getRockerInfo(int id, CONTROLER_STATE *info)
{
    LibraryCall call(__func__, id);
    if (Controller *controller = call.openController(id)) {
        if (!info) {
            call.refuse(BadArgument);
        } else {
            info->rockerState = static_cast<uint8_t>(call.given<int>(controller->joystickPresent()));
            info->rockerValue =
                static_cast<uint16_t>(call.given(static_cast<int>(std::lround(std::abs(controller->deflection())))));
        }
    }
    return call.finish(call.status());
}

// ---- Motion

int startMove(int id, int axis)
{
    LibraryCall call(__func__, id, axis);
    return onAxis(call, id, axis, [](Axis &found) { return found.startMove(); });
}

int startDrive(int id, int axis, int direction)
{
    return start(__func__, id, axis, direction, [](Axis &found, int sign) { return found.startDrive(sign); });
}

int startJog(int id, int axis, int direction)
{
    return start(__func__, id, axis, direction, [](Axis &found, int sign) { return found.startJog(sign); });
}

int startCircle(int id, int axis, int direction)
{
    return start(__func__, id, axis, direction, [](Axis &found, int sign) { return found.startLoop(sign); });
}

int home(int id, int axis)
{
    LibraryCall call(__func__, id, axis);
    return onAxis(call, id, axis, [](Axis &found) { return found.home(); });
}

int stopRuning(int id, int axis)
{
    LibraryCall call(__func__, id, axis);
    return onAxis(call, id, axis, [](Axis &found) { return found.stop(); });
}

int setMotorEnable(int id, int axis, int enable)
{
    LibraryCall call(__func__, id, axis, enable);
    return onAxis(call, id, axis, [enable](Axis &found) {
        return enable == 0 || enable == 1 ? found.setEnabled(enable == 1) : static_cast<int>(OutOfRange);
    });
}

int getRuningState(int id, int axis, MotorStageState *state)
{
    LibraryCall call(__func__, id, axis);
    return onAxis(call, id, axis, [state](Axis &found) {
        if (!state)
            return BadArgument;
        *state = found.state();
        return Ok;
    });
}

double getCurrentPos(int id, int axis, int *status)
{
    LibraryCall call(__func__, id, axis);
    const Axis *found = call.axis(id, axis);
    if (status && !found) // the caller has set it to 0
        *status = call.status();
    if (found)
        return call.finish(call.given(found->reportedPosition()));
    call.finish(call.status()); // positions can be negative, so that the status would not show in the result
    return 0;
}

// ---- Motion parameters

double getTargetPos(int id, int axis, unsigned char *success)
{
    LibraryCall call(__func__, id, axis);
    const Axis *found = call.axis(id, axis);
    if (success && found) // the caller has set it to 0
        *success = 1;
    if (found)
        return call.finish(call.given(found->settings.targetPos));
    call.finish(call.status());
    return 0;
}

int setTargetPos(int id, int axis, double value)
{
    return store(__func__, id, axis, value, &AxisSettings::targetPos, inTravel);
}

int setSpeed(int id, int axis, double value)
{
    return store(__func__, id, axis, value, &AxisSettings::speed, ofSpeed);
}

double getSpeed(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::speed);
}

int setAcceleration(int id, int axis, double value)
{
    return store(__func__, id, axis, value, &AxisSettings::acceleration, ofAcceleration);
}

double getAcceleration(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::acceleration);
}

int setRelativeDisp(int id, int axis, double value)
{
    return store(__func__, id, axis, value, &AxisSettings::relativeDisp, notNegative);
}

double getRelativeDisp(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::relativeDisp);
}

int setRelativeDispEnable(int id, int axis, int value)
{
    return store(__func__, id, axis, value, &AxisSettings::relativeDispEnable, zeroOrOne);
}

int getRelativeDispEnable(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::relativeDispEnable);
}

int setJogStep(int id, int axis, double value)
{
    return store(__func__, id, axis, value, &AxisSettings::jogStep, notNegative);
}

double getJogStep(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::jogStep);
}

int setJogCount(int id, int axis, int value)
{
    return store(__func__, id, axis, value, &AxisSettings::jogCount, notNegative);
}

int getJogCount(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::jogCount);
}

int setJogDelay(int id, int axis, int value)
{
    return store(__func__, id, axis, value, &AxisSettings::jogDelay, notNegative);
}

int getJogDelay(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::jogDelay);
}

int getJogIndex(int id, int axis)
{
    LibraryCall call(__func__, id, axis);
    return onAxis(call, id, axis, [&call](const Axis &found) { return call.given(found.jogIndex()); });
}

int setCircleDisp(int id, int axis, double value)
{
    return store(__func__, id, axis, value, &AxisSettings::circleDisp, notNegative);
}

double getCircleDisp(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::circleDisp);
}

int setCircleCount(int id, int axis, int value)
{
    return store(__func__, id, axis, value, &AxisSettings::circleCount, notNegative);
}

int getCircleCount(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::circleCount);
}

int setCircleDelay(int id, int axis, int value)
{
    return store(__func__, id, axis, value, &AxisSettings::circleDelay, notNegative);
}

int getCircleDelay(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::circleDelay);
}

int getCircleIndex(int id, int axis)
{
    LibraryCall call(__func__, id, axis);
    return onAxis(call, id, axis, [&call](const Axis &found) { return call.given(found.loopIndex()); });
}

int setTriggerInEnable(int id, int axis, int value)
{
    return storeTrigger(__func__, id, axis, value, &AxisSettings::triggerInEnable);
}

int getTriggerInEnable(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::triggerInEnable);
}

int setTriggerOutEnable(int id, int axis, int value)
{
    return storeTrigger(__func__, id, axis, value, &AxisSettings::triggerOutEnable);
}

int getTriggerOutEnable(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::triggerOutEnable);
}

int setTriggerStep(int id, int axis, double value)
{
    return store(__func__, id, axis, value, &AxisSettings::triggerStep, anything);
}

double getTriggerStep(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::triggerStep);
}

// ---- Stage

int setMotorUnitType(int id, int axis, int value)
{
    LibraryCall call(__func__, id, axis, value);
    return onAxis(call, id, axis, [value](Axis &found) {
        if (value != 0 && value != 1)
            return OutOfRange;
        found.stage().unitType = static_cast<uint16_t>(value);
        found.stored();
        return Ok;
    });
}

int getMotorUnitType(int id, int axis)
{
    LibraryCall call(__func__, id, axis);
    return onAxis(
        call, id, axis, [&call](const Axis &found) { return call.given(static_cast<int>(found.stage().unitType)); });
}

int getMotorModelName(int id, int axis, char *buffer, int length)
{
    return stageText(__func__, id, axis, &MotorParams::modelName, buffer, length);
}

int setMotorModelName(int id, int axis, const char *text, int length)
{
    return setStageText(__func__, id, axis, &MotorParams::modelName, text, length);
}

int getMotorSerialNumber(int id, int axis, char *buffer, int length)
{
    return stageText(__func__, id, axis, &MotorParams::serialNumber, buffer, length);
}

int setMotorSerialNumber(int id, int axis, const char *text, int length)
{
    return setStageText(__func__, id, axis, &MotorParams::serialNumber, text, length);
}

int getMotorParams(int id, int axis, MotorParams *params)
{
    LibraryCall call(__func__, id, axis);
    const Axis *found = call.axis(id, axis);
    if (!found || !params)
        return call.finish(call.refuse(BadArgument)); // or what had already been said against it
    *params = found->shownStage();
    return call.finish(Ok, formatted(*params));
}

int setMotorParams(int id, int axis, MotorParams params)
{
    LibraryCall call(__func__, id, axis, params);
    return onAxis(call, id, axis, [&](Axis &found) { return found.setStage(params, call.lock()); });
}

int getMotorAutoDetect(int id, int axis, int *code)
{
    LibraryCall call(__func__, id, axis);
    const Axis *found = call.axis(id, axis);
    if (!found || !code)
        return call.finish(call.refuse(BadArgument)); // or what had already been said against it
    *code = call.given(found->chipCode());
    return call.finish(Ok, formatted(*code));
}

int setClearIDChip(int id, int axis)
{
    LibraryCall call(__func__, id, axis);
    return onAxis(call, id, axis, [](Axis &found) { return found.eraseChip(); });
}

int setPosConpenEnable(int id, int axis, int value)
{
    return store(__func__, id, axis, value, &AxisSettings::posConpenEnable, zeroOrOne);
}

int getPosConpenEnable(int id, int axis)
{
    return load(__func__, id, axis, &AxisSettings::posConpenEnable);
}

int setPositivePosConpen(int id, int axis, const double *pairs, int count)
{
    return setTable(__func__, id, axis, &AxisSettings::positivePosConpen, pairs, count);
}

int getPositivePosConpen(int id, int axis, double *pairs, int *count)
{
    return getTable(__func__, id, axis, &AxisSettings::positivePosConpen, pairs, count);
}

int setNegativePosConpen(int id, int axis, const double *pairs, int count)
{
    return setTable(__func__, id, axis, &AxisSettings::negativePosConpen, pairs, count);
}

int getNegativePosConpen(int id, int axis, double *pairs, int *count)
{
    return getTable(__func__, id, axis, &AxisSettings::negativePosConpen, pairs, count);
}
