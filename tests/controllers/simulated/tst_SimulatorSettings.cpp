// SPDX-License-Identifier: MIT
#include "OpenDevice.h"

#include <QtTest>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

using namespace simulator;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/** One real or integer setting with its setter and getter, and values at the edges of its range. */
struct Setting {
    const char *name;
    std::function<int(double)> set;
    std::function<double()> get;
    std::vector<double> allowed;
    std::vector<double> refused;
};
Q_DECLARE_METATYPE(Setting)

class tst_SimulatorSettings : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void beginsWithUsableValues();
    void storesValuesInTheirRange_data();
    void storesValuesInTheirRange();
    void keepsSettingsPerAxis();
    void givesTheTargetWithItsFlag();
    void storesTheAxisCount();

    void keepsTexts_data();
    void keepsTexts();
    void givesFullTextsWithoutTerminator();
    void fillsLongerBuffersWithZeros();
    void cutsTextsToShorterBuffers();
    void refusesBadTextArguments_data();
    void refusesBadTextArguments();

    void keepsTheStage();
    void sharesNamesBetweenStageAndTexts();
    void refusesImpossibleStages_data();
    void refusesImpossibleStages();
    void refusesTheStageWhileRunning();
    void bringsTheAxisIntoTheNewTravel();
    void identifiesTheStage();
    void erasesAndWritesTheChip();

    void correctsThePosition_data();
    void correctsThePosition();
    void correctsByTheDirectionOfTheLastMotion();
    void givesTheCompensationTableBack();
    void cutsTheCompensationTableToTheCapacity();
    void refusesBadCompensationTables();
    void emptiesTheCompensationTable();
};

void tst_SimulatorSettings::init()
{
    openDevice();
}

void tst_SimulatorSettings::beginsWithUsableValues()
{
    for (int axis = 0; axis < 3; ++axis) {
        QVERIFY(getSpeed(device, axis) > 0);
        QVERIFY(getAcceleration(device, axis) > 0);
        QVERIFY(getRelativeDisp(device, axis) > 0);
        QCOMPARE(getRelativeDispEnable(device, axis), 1);
        QVERIFY(getJogStep(device, axis) > 0);
        QVERIFY(getJogCount(device, axis) > 0);
        QVERIFY(getJogDelay(device, axis) > 0);
        QVERIFY(getCircleDisp(device, axis) > 0);
        QVERIFY(getCircleCount(device, axis) > 0);
        QVERIFY(getCircleDelay(device, axis) > 0);
        QVERIFY(getTriggerStep(device, axis) > 0);
        QCOMPARE(stateOf(axis).isEnable, qint16(1));
        QCOMPARE(stateOf(axis).isCanRun, qint16(1));
        QCOMPARE(stateOf(axis).isLeftLimit, qint16(0));
        QCOMPARE(stateOf(axis).isRightLimit, qint16(0));
    }
}

void tst_SimulatorSettings::storesValuesInTheirRange_data()
{
    using namespace std::placeholders;
    const std::vector<double> noReal{infinity, -infinity, notANumber};
    const auto real = [&](const char *name, int (*set)(int, int, double), double (*get)(int, int),
                          std::vector<double> allowed, std::vector<double> refused) {
        refused.insert(refused.end(), noReal.begin(), noReal.end());
        QTest::newRow(name) << Setting{
            name, std::bind(set, device, 0, _1), std::bind(get, device, 0), allowed, refused};
    };
    const auto integer = [](const char *name, int (*set)(int, int, int), int (*get)(int, int),
                            std::vector<double> allowed, std::vector<double> refused) {
        QTest::newRow(name) << Setting{
            name, [set](double value) { return set(device, 0, static_cast<int>(value)); },
            [get] { return static_cast<double>(get(device, 0)); }, allowed, refused};
    };
    const auto target = [](int id, int axis) {
        unsigned char success = 0;
        return getTargetPos(id, axis, &success);
    };
    QTest::addColumn<Setting>("setting");
    real("speed", setSpeed, getSpeed, {1e-6, 20}, {0, -1, 20.001});
    real("acceleration", setAcceleration, getAcceleration, {1e-6, 100}, {0, -1, 100.001});
    real("target", setTargetPos, target, {-50, 0, 50}, {-50.001, 50.001});
    real("displacement", setRelativeDisp, getRelativeDisp, {0, 0.1, 1e7}, {-0.1});
    real("jog step", setJogStep, getJogStep, {0, 0.1}, {-0.1});
    real("loop displacement", setCircleDisp, getCircleDisp, {0, 0.1}, {-0.1});
    real("trigger step", setTriggerStep, getTriggerStep, {0, 0.1, 7}, {});
    integer("displacement enable", setRelativeDispEnable, getRelativeDispEnable, {0, 1}, {-1, 2});
    integer("jog count", setJogCount, getJogCount, {0, 100000}, {-1});
    integer("jog delay", setJogDelay, getJogDelay, {0, 100000}, {-1});
    integer("loop count", setCircleCount, getCircleCount, {0, 100000}, {-1});
    integer("loop delay", setCircleDelay, getCircleDelay, {0, 100000}, {-1});
    integer("trigger input", setTriggerInEnable, getTriggerInEnable, {1, 0}, {-1, 2});
    integer("trigger output", setTriggerOutEnable, getTriggerOutEnable, {1, 0}, {-1, 2});
    integer("unit", setMotorUnitType, getMotorUnitType, {1, 0}, {-1, 2});
    integer("compensation", setPosConpenEnable, getPosConpenEnable, {1, 0}, {-1, 2});
}

void tst_SimulatorSettings::storesValuesInTheirRange()
{
    QFETCH(Setting, setting);
    for (const double value : setting.allowed) {
        QCOMPARE(setting.set(value), 0);
        QCOMPARE(setting.get(), value);
    }
    for (const double value : setting.refused) {
        QCOMPARE(setting.set(value), int(OutOfRange));
        QCOMPARE(setting.get(), setting.allowed.back());
    }
    QVERIFY(setting.allowed.size() >= 2); // so that one of them differs from what was there
}

void tst_SimulatorSettings::keepsSettingsPerAxis()
{
    QCOMPARE(setJogStep(device, 0, 0.25), 0);
    QCOMPARE(setJogStep(device, 1, 0.5), 0);
    QCOMPARE(getJogStep(device, 0), 0.25);
    QCOMPARE(getJogStep(device, 1), 0.5);
}

void tst_SimulatorSettings::givesTheTargetWithItsFlag()
{
    QCOMPARE(setTargetPos(device, 0, -12.5), 0);
    unsigned char success = 0;
    QCOMPARE(getTargetPos(device, 0, &success), -12.5);
    QVERIFY(success != 0);
    success = 0;
    QCOMPARE(getTargetPos(device, 3, &success), 0.0);
    QCOMPARE(int(success), 0);
}

void tst_SimulatorSettings::storesTheAxisCount()
{
    QCOMPARE(getDevAxisCount(device), 3);
    QCOMPARE(setDevAxisCount(device, 1), 0);
    QCOMPARE(getDevAxisCount(device), 1);
    QCOMPARE(getSpeed(device, 1), double(NoSuchAxis));
    QCOMPARE(setDevAxisCount(device, 0), int(OutOfRange));
    QCOMPARE(setDevAxisCount(device, 4), int(OutOfRange));
    QCOMPARE(getDevAxisCount(device), 1);
}

// ---- Texts

/** A text with its getter and setter. */
struct Text {
    std::function<int(char *, int)> get;
    std::function<int(const char *, int)> set;
    const char *initial;
};
Q_DECLARE_METATYPE(Text)

namespace {

const Text controllerSerial{
    [](char *buffer, int length) { return getDevSerialNumber(device, buffer, length); },
    [](const char *text, int length) { return setDevSerialNumber(device, text, length); }, "SIM-MC3-000117"};
const Text controllerModel{
    [](char *buffer, int length) { return getDevModelName(device, buffer, length); },
    [](const char *text, int length) { return setDevModelName(device, text, length); }, "MC-3"};
const Text stageModel{
    [](char *buffer, int length) { return getMotorModelName(device, 0, buffer, length); },
    [](const char *text, int length) { return setMotorModelName(device, 0, text, length); }, "LIN-100"};
const Text stageSerial{
    [](char *buffer, int length) { return getMotorSerialNumber(device, 0, buffer, length); },
    [](const char *text, int length) { return setMotorSerialNumber(device, 0, text, length); }, "SIM-SN-204417"};

void addTexts()
{
    QTest::addColumn<Text>("text");
    QTest::newRow("controller serial number") << controllerSerial;
    QTest::newRow("controller model") << controllerModel;
    QTest::newRow("stage model") << stageModel;
    QTest::newRow("stage serial number") << stageSerial;
}

} // namespace

void tst_SimulatorSettings::keepsTexts_data()
{
    addTexts();
}

void tst_SimulatorSettings::keepsTexts()
{
    QFETCH(Text, text);
    char buffer[32] = {};
    QCOMPARE(text.get(buffer, 32), 0);
    QCOMPARE(buffer, text.initial);
    QCOMPARE(text.set("A longer text by far", 8), 0);
    QCOMPARE(text.get(buffer, 32), 0);
    QCOMPARE(buffer, "A longer"); // the length rules, and what was there is gone
    QCOMPARE(text.set("", 0), 0);
    QCOMPARE(text.get(buffer, 32), 0);
    QCOMPARE(QByteArray(buffer, 32), QByteArray(32, '\0'));
}

void tst_SimulatorSettings::givesFullTextsWithoutTerminator()
{
    const QByteArray full("0123456789abcdef0123456789ABCDEF");
    for (const Text &text : {controllerSerial, controllerModel, stageModel, stageSerial}) {
        QCOMPARE(text.set(full.constData(), 32), 0);
        char buffer[33];
        std::memset(buffer, '#', sizeof buffer);
        QCOMPARE(text.get(buffer, 32), 0);
        QCOMPARE(QByteArray(buffer, 33), full + '#');
    }
}

void tst_SimulatorSettings::fillsLongerBuffersWithZeros()
{
    char buffer[40];
    std::memset(buffer, '#', sizeof buffer);
    QCOMPARE(getDevSoftVersion(device, buffer, 40), 0);
    QCOMPARE(QByteArray(buffer, 40), QByteArray("2.4.1 simulated") + QByteArray(25, '\0'));
}

void tst_SimulatorSettings::cutsTextsToShorterBuffers()
{
    char buffer[6] = {'#', '#', '#', '#', '#', '#'};
    QCOMPARE(getMotorModelName(device, 0, buffer, 5), 0);
    QCOMPARE(QByteArray(buffer, 6), QByteArray("LIN-1#"));
}

void tst_SimulatorSettings::refusesBadTextArguments_data()
{
    addTexts();
}

void tst_SimulatorSettings::refusesBadTextArguments()
{
    QFETCH(Text, text);
    char buffer[64] = {};
    QCOMPARE(text.get(nullptr, 32), int(BadArgument));
    QCOMPARE(text.get(buffer, 0), int(BadArgument));
    QCOMPARE(text.get(buffer, -1), int(BadArgument));
    QCOMPARE(text.set(nullptr, 3), int(BadArgument));
    QCOMPARE(text.set(buffer, 33), int(BadArgument));
    QCOMPARE(text.set(buffer, -1), int(BadArgument));
    QCOMPARE(text.get(buffer, 32), 0);
    QCOMPARE(buffer, text.initial);
}

// ---- Stage

void tst_SimulatorSettings::keepsTheStage()
{
    MotorParams params{};
    QCOMPARE(getMotorParams(device, 1, &params), 0);
    QCOMPARE(params.modelName, "ROT-60");
    QCOMPARE(params.unitType, quint16(1));
    QCOMPARE(params.maxPos, 170.0);

    // A record with a value of its own in every field.
    MotorParams written{"STAGE-7", "SN-7", 1, 0,  2, 3, 3, 1,   1,  1,  1, 1, 1,
                        "PZN",     4,      5, -6, 7, 8, 9, -10, 11, 12, 0, 13};
    QCOMPARE(setMotorParams(device, 1, written), 0);
    QCOMPARE(getMotorParams(device, 1, &params), 0);
    QCOMPARE(std::memcmp(&params, &written, sizeof params), 0);
    QCOMPARE(getMotorParams(device, 1, nullptr), int(BadArgument));
}

void tst_SimulatorSettings::sharesNamesBetweenStageAndTexts()
{
    QCOMPARE(setMotorModelName(device, 0, "LIN-7", 5), 0);
    QCOMPARE(setMotorSerialNumber(device, 0, "SN-7", 4), 0);
    QCOMPARE(setMotorUnitType(device, 0, 1), 0);
    MotorParams params{};
    QCOMPARE(getMotorParams(device, 0, &params), 0);
    QCOMPARE(params.modelName, "LIN-7");
    QCOMPARE(params.serialNumber, "SN-7");
    QCOMPARE(params.unitType, quint16(1));

    std::strcpy(params.modelName, "LIN-8");
    QCOMPARE(setMotorParams(device, 0, params), 0);
    char buffer[32] = {};
    QCOMPARE(getMotorModelName(device, 0, buffer, 32), 0);
    QCOMPARE(buffer, "LIN-8");
}

void tst_SimulatorSettings::refusesImpossibleStages_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<double>("value");
    const auto row = [](const char *name, std::size_t field, double value) {
        QTest::newRow(name) << static_cast<int>(field) << value;
    };
    row("no homing speed", offsetof(MotorParams, restoreSpeed), 0);
    row("no speed", offsetof(MotorParams, maxSpeed), 0);
    row("negative speed", offsetof(MotorParams, maxSpeed), -1);
    row("no acceleration", offsetof(MotorParams, maxAcc), 0);
    row("negative joystick speed", offsetof(MotorParams, maxRockerSpeed), -1);
    row("empty travel", offsetof(MotorParams, minPos), 50);
    row("endless travel", offsetof(MotorParams, maxPos), infinity);
    row("lead that is no number", offsetof(MotorParams, dispOneCircle), notANumber);
}

void tst_SimulatorSettings::refusesImpossibleStages()
{
    QFETCH(int, field);
    QFETCH(double, value);
    MotorParams before{};
    QCOMPARE(getMotorParams(device, 0, &before), 0);
    MotorParams params = before;
    std::memcpy(reinterpret_cast<char *>(&params) + field, &value, sizeof value);
    QCOMPARE(setMotorParams(device, 0, params), int(OutOfRange));
    QCOMPARE(getMotorParams(device, 0, &params), 0);
    QCOMPARE(std::memcmp(&params, &before, sizeof params), 0);
}

void tst_SimulatorSettings::refusesTheStageWhileRunning()
{
    MotorParams params{};
    QCOMPARE(getMotorParams(device, 0, &params), 0);
    QCOMPARE(startDrive(device, 0, 1), 0);
    QCOMPARE(setMotorParams(device, 0, params), int(AxisRunning));
}

void tst_SimulatorSettings::bringsTheAxisIntoTheNewTravel()
{
    setPosition(device, 0, 40);
    QCOMPARE(setTargetPos(device, 0, -40), 0);
    QCOMPARE(setSpeed(device, 0, 20), 0);
    QCOMPARE(setAcceleration(device, 0, 100), 0);
    MotorParams params{};
    QCOMPARE(getMotorParams(device, 0, &params), 0);
    params.minPos = -10;
    params.maxPos = 10;
    params.maxSpeed = 5;
    params.maxAcc = 7;
    QCOMPARE(setMotorParams(device, 0, params), 0);
    QCOMPARE(positionOf(0), 10.0);
    QCOMPARE(stateOf(0).isRightLimit, qint16(1));
    unsigned char success = 0;
    QCOMPARE(getTargetPos(device, 0, &success), -10.0);
    QCOMPARE(getSpeed(device, 0), 5.0);
    QCOMPARE(getAcceleration(device, 0), 7.0);
}

void tst_SimulatorSettings::identifiesTheStage()
{
    int code = -1;
    QCOMPARE(getMotorAutoDetect(device, 0, &code), 0);
    QCOMPARE(code, 2);
    setChip(device, 0, Chip::Blank);
    QCOMPARE(getMotorAutoDetect(device, 0, &code), 0);
    QCOMPARE(code, 1);
    QCOMPARE(getMotorAutoDetect(device, 2, &code), 0);
    QCOMPARE(code, 0);
    QCOMPARE(getMotorAutoDetect(device, 0, nullptr), int(BadArgument));
}

void tst_SimulatorSettings::erasesAndWritesTheChip()
{
    MotorParams params{};
    QCOMPARE(getMotorParams(device, 0, &params), 0);
    int code = -1;
    QCOMPARE(setClearIDChip(device, 0), 0);
    QCOMPARE(getMotorAutoDetect(device, 0, &code), 0);
    QCOMPARE(code, 1);
    QCOMPARE(setMotorParams(device, 0, params), 0);
    QCOMPARE(getMotorAutoDetect(device, 0, &code), 0);
    QCOMPARE(code, 2);

    QCOMPARE(setClearIDChip(device, 2), int(NoChip));
    QCOMPARE(setMotorParams(device, 2, params), 0);
    QCOMPARE(getMotorAutoDetect(device, 2, &code), 0);
    QCOMPARE(code, 0);
    char buffer[32] = {};
    QCOMPARE(getMotorModelName(device, 2, buffer, 32), 0);
    QCOMPARE(buffer, "LIN-100");
}

// ---- Position compensation

void tst_SimulatorSettings::correctsThePosition_data()
{
    QTest::addColumn<double>("position");
    QTest::addColumn<double>("reported");
    QTest::newRow("at a pair") << 0.0 << 0.5;
    QTest::newRow("between pairs") << 5.0 << 5.75;
    QTest::newRow("between pairs further on") << 15.0 << 15.5;
    QTest::newRow("at the last pair") << 20.0 << 20.0;
    QTest::newRow("below the table") << -30.0 << -29.5;
    QTest::newRow("above the table") << 40.0 << 40.0;
}

void tst_SimulatorSettings::correctsThePosition()
{
    QFETCH(double, position);
    QFETCH(double, reported);
    const double pairs[] = {0, 0.5, 10, 11, 20, 20};
    QCOMPARE(setPositivePosConpen(device, 0, pairs, 3), 0);
    setPosition(device, 0, position);
    QCOMPARE(positionOf(0), position);
    QCOMPARE(setPosConpenEnable(device, 0, 1), 0);
    QCOMPARE(positionOf(0), reported);
    QCOMPARE(setPosConpenEnable(device, 0, 0), 0);
    QCOMPARE(positionOf(0), position);
}

void tst_SimulatorSettings::correctsByTheDirectionOfTheLastMotion()
{
    const double positive[] = {0, 0.25};
    const double negative[] = {0, -0.5};
    QCOMPARE(setPositivePosConpen(device, 0, positive, 1), 0);
    QCOMPARE(setNegativePosConpen(device, 0, negative, 1), 0);
    QCOMPARE(setPosConpenEnable(device, 0, 1), 0);
    QCOMPARE(setRelativeDisp(device, 0, 5), 0);
    QCOMPARE(startDrive(device, 0, 2), 0);
    advance(10);
    QVERIFY(near(positionOf(0), -5.5));
    QCOMPARE(startDrive(device, 0, 1), 0);
    advance(10);
    QVERIFY(near(positionOf(0), 0.25));
}

void tst_SimulatorSettings::givesTheCompensationTableBack()
{
    const double positive[] = {-1, -1.5, 2, 2.5};
    const double negative[] = {3, 3.5};
    QCOMPARE(setPositivePosConpen(device, 0, positive, 2), 0);
    QCOMPARE(setNegativePosConpen(device, 0, negative, 1), 0);
    double pairs[20] = {};
    int count = 10;
    QCOMPARE(getPositivePosConpen(device, 0, pairs, &count), 0);
    QCOMPARE(count, 2);
    QCOMPARE(std::memcmp(pairs, positive, sizeof positive), 0);
    count = 10;
    QCOMPARE(getNegativePosConpen(device, 0, pairs, &count), 0);
    QCOMPARE(count, 1);
    QCOMPARE(std::memcmp(pairs, negative, sizeof negative), 0);
}

void tst_SimulatorSettings::cutsTheCompensationTableToTheCapacity()
{
    const double table[] = {1, 1.5, 2, 2.5, 3, 3.5};
    QCOMPARE(setPositivePosConpen(device, 0, table, 3), 0);
    double pairs[6] = {};
    int count = 2;
    QCOMPARE(getPositivePosConpen(device, 0, pairs, &count), 0);
    QCOMPARE(count, 2);
    QCOMPARE(pairs[3], 2.5);
    QCOMPARE(pairs[4], 0.0);
}

void tst_SimulatorSettings::refusesBadCompensationTables()
{
    const double pairs[] = {1, 1.5, 2, 2.5};
    const double descending[] = {2, 2.5, 1, 1.5};
    const double twice[] = {1, 1.5, 1, 1.75};
    const double endless[] = {1, infinity};
    const std::vector<double> many(2 * 101);
    QCOMPARE(setPositivePosConpen(device, 0, pairs, 2), 0);
    QCOMPARE(setPositivePosConpen(device, 0, descending, 2), int(OutOfRange));
    QCOMPARE(setPositivePosConpen(device, 0, twice, 2), int(OutOfRange));
    QCOMPARE(setPositivePosConpen(device, 0, endless, 1), int(OutOfRange));
    QCOMPARE(setPositivePosConpen(device, 0, many.data(), 101), int(OutOfRange));
    QCOMPARE(setPositivePosConpen(device, 0, nullptr, 1), int(BadArgument));
    QCOMPARE(setPositivePosConpen(device, 0, pairs, -1), int(BadArgument));
    double read[4] = {};
    int count = 2;
    QCOMPARE(getPositivePosConpen(device, 0, read, nullptr), int(BadArgument));
    QCOMPARE(getPositivePosConpen(device, 0, nullptr, &count), int(BadArgument));
    QCOMPARE(getPositivePosConpen(device, 0, read, &count), 0);
    QCOMPARE(count, 2);
    QCOMPARE(std::memcmp(read, pairs, sizeof pairs), 0);
}

void tst_SimulatorSettings::emptiesTheCompensationTable()
{
    const double pairs[] = {1, 1.5};
    QCOMPARE(setPositivePosConpen(device, 0, pairs, 1), 0);
    QCOMPARE(setPositivePosConpen(device, 0, nullptr, 0), 0);
    QCOMPARE(setPosConpenEnable(device, 0, 1), 0);
    QCOMPARE(positionOf(0), 0.0);
    double read[2] = {};
    int count = 1;
    QCOMPARE(getPositivePosConpen(device, 0, read, &count), 0);
    QCOMPARE(count, 0);
}

QTEST_GUILESS_MAIN(tst_SimulatorSettings)
#include "tst_SimulatorSettings.moc"
