// SPDX-License-Identifier: MIT
#include "OpenDevice.h"

#include <QtTest>

#include <atomic>
#include <cmath>
#include <future>
#include <stdexcept>
#include <thread>

using namespace simulator;

using Texts = std::vector<std::string>;

class tst_SimulatorCalls : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void listsPluggedControllers();
    void followsTheCallingOrder();
    void refusesUnknownControllers();
    void refusesUnknownAxes();
    void reportsWhatIsWrongFirst();
    void closesOnRemoving();
    void answersTheProbe();
    void keepsItsStateWhileClosed();
    void refusesEveryCallWithoutLink();
    void hasToBeOpenedAgainAfterUnplugging();
    void reportsFailuresInTheirOwnWay();
    void registersModelsWithoutAController();

    void writesCallsDown();
    void writesThreadsDown();
    void countsCalls();
    void keepsTheLastCallsOfALongRun();
    void failsTheNthCall();
    void failsAllCalls();
    void changesNothingInAFailedCall();
    void takesBackFaults();
    void delaysCalls();
    void hangsAndLetsGo();
    void letsHungCallsGoOnReset();
    void answersGivenTexts();
    void answersAGivenState();
    void answersGivenNumbers();
    void answersGivenCounts();
    void answersGivenParams();
    void tellsOfEveryCallBeforeItWaits();
    void anObserverThatLooksIsWaitedFor();
    void noticesOverlappingCalls();
    void standsCallsFromManyThreads();
    void passesTimeByItself();
    void passesTimeAtTheScale();
    void refusesUnknownNamesInTheControlInterface();
    void hangsBeyondTheEndOfTheProcess();
};

void tst_SimulatorCalls::init()
{
    openDevice();
}

void tst_SimulatorCalls::listsPluggedControllers()
{
    std::string error;
    QVERIFY(loadScenarioText(
        R"({"controllers": [{"id": 7, "axes": [{}]}, {"id": 8, "plugged": false, "axes": [{}]},
                            {"id": 9, "axes": [{}]}]})",
        &error));
    int ids[10] = {};
    QCOMPARE(listTSMotorControlerDevices(ids, 10), 2);
    QCOMPARE(ids[0], 7);
    QCOMPARE(ids[1], 9);
    QCOMPARE(ids[2], 0);
    plug(8);
    QCOMPARE(listTSMotorControlerDevices(ids, 2), 2); // no more than the capacity
    QCOMPARE(ids[1], 8);
    QCOMPARE(ids[2], 0);
    unplug(7);
    unplug(8);
    unplug(9);
    QCOMPARE(listTSMotorControlerDevices(ids, 10), 0);
    QCOMPARE(listTSMotorControlerDevices(nullptr, 10), int(BadArgument));
    QCOMPARE(listTSMotorControlerDevices(ids, -1), int(BadArgument));
}

void tst_SimulatorCalls::followsTheCallingOrder()
{
    reset();
    QCOMPARE(openTSDevice(device), int(NotAdded));
    QCOMPARE(closeTSDevice(device), int(NotAdded));
    QCOMPARE(removeDev(device), int(NotAdded));
    QCOMPARE(getDevAxisCount(device), int(NotAdded));
    QCOMPARE(addDev(device), 0);
    QCOMPARE(addDev(device), int(AlreadyAdded));
    QCOMPARE(closeTSDevice(device), int(NotOpen));
    QCOMPARE(getDevAxisCount(device), int(NotOpen));
    QCOMPARE(openTSDevice(device), 0);
    QCOMPARE(openTSDevice(device), int(AlreadyOpen));
    QCOMPARE(getDevAxisCount(device), 3);
    QCOMPARE(closeTSDevice(device), 0);
    QCOMPARE(getDevAxisCount(device), int(NotOpen));
    QCOMPARE(removeDev(device), 0);
    QCOMPARE(getDevAxisCount(device), int(NotAdded));
}

void tst_SimulatorCalls::refusesUnknownControllers()
{
    for (const int id : {0, -1, 1002}) {
        QCOMPARE(addDev(id), int(UnknownDevice));
        QCOMPARE(removeDev(id), int(UnknownDevice));
        QCOMPARE(openTSDevice(id), int(UnknownDevice));
        QCOMPARE(closeTSDevice(id), int(UnknownDevice));
        QCOMPARE(startMove(id, 0), int(UnknownDevice));
        QCOMPARE(getSpeed(id, 0), double(UnknownDevice));
    }
}

void tst_SimulatorCalls::refusesUnknownAxes()
{
    for (const int axis : {-1, 3}) {
        QCOMPARE(startMove(device, axis), int(NoSuchAxis));
        QCOMPARE(setSpeed(device, axis, 1), int(NoSuchAxis));
        QCOMPARE(getSpeed(device, axis), double(NoSuchAxis));
        QCOMPARE(getJogIndex(device, axis), int(NoSuchAxis));
    }
}

void tst_SimulatorCalls::reportsWhatIsWrongFirst()
{
    QCOMPARE(setMotorModelName(device, 3, nullptr, 1), int(NoSuchAxis));
    QCOMPARE(getMotorParams(device, 3, nullptr), int(NoSuchAxis));
    failCall("getMotorParams", -42);
    QCOMPARE(getMotorParams(device, 3, nullptr), -42);
}

void tst_SimulatorCalls::closesOnRemoving()
{
    QCOMPARE(removeDev(device), 0);
    QCOMPARE(addDev(device), 0);
    QCOMPARE(getDevAxisCount(device), int(NotOpen));
    QCOMPARE(openTSDevice(device), 0);
}

void tst_SimulatorCalls::answersTheProbe()
{
    reset();
    char serial[32] = {};
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(addDev(device), 0);
        QCOMPARE(openTSDevice(device), 0);
        QCOMPARE(getDevSerialNumber(device, serial, 32), 0);
        QCOMPARE(serial, "SIM-MC3-000117");
        QCOMPARE(removeDev(device), 0);
    }
}

void tst_SimulatorCalls::keepsItsStateWhileClosed()
{
    QCOMPARE(setTargetPos(device, 0, 20), 0);
    QCOMPARE(startMove(device, 0), 0);
    QCOMPARE(removeDev(device), 0);
    advance(100);
    QCOMPARE(addDev(device), 0);
    QCOMPARE(openTSDevice(device), 0);
    QCOMPARE(positionOf(0), 20.0);
}

void tst_SimulatorCalls::refusesEveryCallWithoutLink()
{
    loseLink(device);
    QCOMPARE(getDevAxisCount(device), int(LinkLost));
    QCOMPARE(stopRuning(device, 0), int(LinkLost));
    QCOMPARE(getSpeed(device, 0), double(LinkLost));
    QCOMPARE(startMove(device, 7), int(LinkLost));
    restoreLink(device);
    QCOMPARE(getDevAxisCount(device), 3);
    loseLink(device);
    QCOMPARE(closeTSDevice(device), 0);
    QCOMPARE(openTSDevice(device), int(LinkLost));
}

void tst_SimulatorCalls::hasToBeOpenedAgainAfterUnplugging()
{
    unplug(device);
    QCOMPARE(getDevAxisCount(device), int(LinkLost));
    QCOMPARE(openTSDevice(device), int(LinkLost));
    plug(device);
    QCOMPARE(getDevAxisCount(device), int(NotOpen));
    QCOMPARE(openTSDevice(device), 0);
    QCOMPARE(getDevAxisCount(device), 3);
}

void tst_SimulatorCalls::reportsFailuresInTheirOwnWay()
{
    int status = 0;
    QCOMPARE(getCurrentPos(device, 0, &status), 0.0);
    QCOMPARE(status, 0);
    QCOMPARE(getCurrentPos(device, 3, &status), 0.0);
    QCOMPARE(status, int(NoSuchAxis));
    QCOMPARE(getCurrentPos(device, 3, nullptr), 0.0);
    status = 7;
    getCurrentPos(device, 0, &status);
    QCOMPARE(status, 7); // only a failure is written
    QCOMPARE(getRuningState(device, 0, nullptr), int(BadArgument));

    unsigned char success = 0;
    failCall("getTargetPos", LinkLost);
    QCOMPARE(getTargetPos(device, 0, &success), 0.0);
    QCOMPARE(int(success), 0);
    failCall("getAcceleration", LinkLost);
    QCOMPARE(getAcceleration(device, 0), double(LinkLost));
    failCall("getCurrentPos", LinkLost);
    getCurrentPos(device, 0, &status);
    QCOMPARE(status, int(LinkLost));
}

void tst_SimulatorCalls::registersModelsWithoutAController()
{
    reset();
    const char model[32] = "LIN-100";
    QCOMPARE(addMotor(0, 0, model), 0);
    QCOMPARE(addMotor(0, 0, nullptr), int(BadArgument));
    QCOMPARE(addMotor(1, 0, model), int(OutOfRange));
    QCOMPARE(addMotor(0, 1, model), int(OutOfRange));
}

// ---- Journal

void tst_SimulatorCalls::writesCallsDown()
{
    clearJournal();
    int ids[10] = {};
    listTSMotorControlerDevices(ids, 10);
    addMotor(0, 0, "LIN-100\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0");
    setSpeed(device, 0, 2.5);
    setSpeed(device, 0, 10);
    setSpeed(device, 0, -1);
    setAcceleration(device, 0, 0.1);
    getSpeed(device, 0);
    getSpeed(device, 5);
    setJogCount(device, 1, 7);
    getJogCount(device, 1);
    startDrive(device, 0, 2);
    setMotorModelName(device, 0, "STAGE and more", 5);
    setMotorModelName(device, 0, nullptr, 5);
    char buffer[32] = {};
    getMotorModelName(device, 0, buffer, 32);
    getMotorModelName(device, 5, buffer, 32);
    MotorParams params{};
    getMotorParams(device, 1, &params);
    setMotorParams(device, 1, params);
    int code = 0;
    getMotorAutoDetect(device, 1, &code);
    const double pairs[] = {0, 0.1, 10, 10.25};
    setPositivePosConpen(device, 2, pairs, 2);
    MotorStageState state{};
    getRuningState(device, 0, &state);
    getCurrentPos(device, 1, nullptr);
    getCurrentPos(device, 5, nullptr);

    const Texts expected{
        "listTSMotorControlerDevices(10) = 1",
        "addMotor(0, 0, \"LIN-100\") = 0",
        "setSpeed(1001, 0, 2.5) = 0",
        "setSpeed(1001, 0, 10) = 0",
        "setSpeed(1001, 0, -1) = -6",
        "setAcceleration(1001, 0, 0.1) = 0",
        "getSpeed(1001, 0) = 10",
        "getSpeed(1001, 5) = -5",
        "setJogCount(1001, 1, 7) = 0",
        "getJogCount(1001, 1) = 7",
        "startDrive(1001, 0, 2) = 0",
        "setMotorModelName(1001, 0, \"STAGE\", 5) = 0",
        "setMotorModelName(1001, 0, null, 5) = -10",
        "getMotorModelName(1001, 0) = \"STAGE\"",
        "getMotorModelName(1001, 5) = -5",
        "getMotorParams(1001, 1) = \"ROT-60\"",
        "setMotorParams(1001, 1, \"ROT-60\") = 0",
        "getMotorAutoDetect(1001, 1) = 2",
        "setPositivePosConpen(1001, 2, [0, 0.1, 10, 10.25], 2) = 0",
        "getRuningState(1001, 0) = 0",
        "getCurrentPos(1001, 1) = 0",
        "getCurrentPos(1001, 5) = -5",
    };
    const Texts written = journalText();
    for (std::size_t i = 0; i < std::min(written.size(), expected.size()); ++i)
        QCOMPARE(QString::fromStdString(written[i]), QString::fromStdString(expected[i]));
    QCOMPARE(written.size(), expected.size());
}

void tst_SimulatorCalls::writesThreadsDown()
{
    clearJournal();
    std::thread other([] { getDevAxisCount(device); });
    const std::thread::id otherId = other.get_id();
    other.join();
    getDevAxisCount(device);
    const std::vector<Call> calls = journal();
    QCOMPARE(calls.size(), std::size_t(2));
    QVERIFY(calls[0].thread == otherId);
    QVERIFY(calls[1].thread == std::this_thread::get_id());
}

void tst_SimulatorCalls::countsCalls()
{
    getDevAxisCount(device);
    getDevAxisCount(device);
    QCOMPARE(callCount("getDevAxisCount"), 2);
    QCOMPARE(callCount("getSpeed"), 0);
    clearJournal();
    QCOMPARE(callCount("getDevAxisCount"), 0);
}

void tst_SimulatorCalls::keepsTheLastCallsOfALongRun()
{
    clearJournal();
    getDevAxisCount(device);
    getRockerEnable(device);
    for (int i = 0; i < 199'999; ++i)
        getJogIndex(device, 0);
    QCOMPARE(journal().size(), std::size_t(200'000));
    QCOMPARE(callCount("getDevAxisCount"), 0);
    QCOMPARE(callCount("getRockerEnable"), 1);
}

// ---- Faults

void tst_SimulatorCalls::failsTheNthCall()
{
    failCall("getDevAxisCount", -42, 2, 2);
    QCOMPARE(getRockerEnable(device), 0);
    QCOMPARE(getDevAxisCount(device), 3);
    QCOMPARE(getDevAxisCount(device), -42);
    QCOMPARE(getDevAxisCount(device), -42);
    QCOMPARE(getDevAxisCount(device), 3);
}

void tst_SimulatorCalls::failsAllCalls()
{
    failAlways("addDev", -42);
    failAlways("listTSMotorControlerDevices", -43);
    int ids[10] = {};
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(addDev(device), -42);
        QCOMPARE(listTSMotorControlerDevices(ids, 10), -43);
    }
    QCOMPARE(ids[0], 0);
}

void tst_SimulatorCalls::changesNothingInAFailedCall()
{
    for (const char *function :
         {"setJogStep", "startDrive", "setMotorModelName", "setDevModelName", "closeTSDevice", "removeDev",
          "setDevAxisCount", "getMotorModelName"})
        failCall(function, LinkLost);
    const double step = getJogStep(device, 0);
    QCOMPARE(setJogStep(device, 0, 17), int(LinkLost));
    QCOMPARE(getJogStep(device, 0), step);
    QCOMPARE(startDrive(device, 0, 1), int(LinkLost));
    QCOMPARE(stateOf(0).isStop, qint16(1));
    char buffer[32] = {};
    QCOMPARE(setMotorModelName(device, 0, "X", 1), int(LinkLost));
    QCOMPARE(getMotorModelName(device, 0, buffer, 32), int(LinkLost));
    QCOMPARE(buffer, "");
    QCOMPARE(getMotorModelName(device, 0, buffer, 32), 0);
    QCOMPARE(buffer, "LIN-100");
    QCOMPARE(setDevModelName(device, "X", 1), int(LinkLost));
    QCOMPARE(getDevModelName(device, buffer, 32), 0);
    QCOMPARE(buffer, "MC-3");
    QCOMPARE(setDevAxisCount(device, 1), int(LinkLost));
    QCOMPARE(closeTSDevice(device), int(LinkLost));
    QCOMPARE(removeDev(device), int(LinkLost));
    QCOMPARE(getDevAxisCount(device), 3);
}

void tst_SimulatorCalls::takesBackFaults()
{
    failAlways("getDevAxisCount", -42);
    hangCall("getDevAxisCount");
    answerText("getDevModelName", "other");
    clearFaults();
    QCOMPARE(getDevAxisCount(device), 3);
    char buffer[32] = {};
    QCOMPARE(getDevModelName(device, buffer, 32), 0);
    QCOMPARE(buffer, "MC-3");
}

void tst_SimulatorCalls::delaysCalls()
{
    delayCall("getDevAxisCount", 50);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(getDevAxisCount(device), 3);
    QVERIFY(timer.elapsed() >= 50);
    QCOMPARE(now(), 0.0); // real time, not that of the manual clock
}

void tst_SimulatorCalls::hangsAndLetsGo()
{
    QVERIFY(!waitUntilHanging(1));
    hangCall("getDevAxisCount");
    int count = 0;
    std::thread caller([&count] { count = getDevAxisCount(device); });
    QVERIFY(waitUntilHanging(60000));
    advance(1); // nothing else is held up
    QCOMPARE(callCount("getDevAxisCount"), 0);
    releaseHung();
    caller.join();
    QCOMPARE(count, 3);
    QCOMPARE(callCount("getDevAxisCount"), 1);
    QVERIFY(!waitUntilHanging(1));
    QCOMPARE(getDevAxisCount(device), 3); // only the one call
}

void tst_SimulatorCalls::letsHungCallsGoOnReset()
{
    hangCall("getDevAxisCount");
    int count = 0;
    std::thread caller([&count] { count = getDevAxisCount(device); });
    QVERIFY(waitUntilHanging(60000));
    reset();
    caller.join();
    QCOMPARE(count, int(NotAdded));
}

void tst_SimulatorCalls::answersGivenTexts()
{
    const std::string unterminated(32, '\xe9');
    answerText("getMotorSerialNumber", unterminated);
    char buffer[32] = {};
    QCOMPARE(getMotorSerialNumber(device, 0, buffer, 32), 0);
    QCOMPARE(QByteArray(buffer, 32), QByteArray(32, '\xe9'));
    QCOMPARE(getMotorModelName(device, 0, buffer, 32), 0);
    QCOMPARE(buffer, "LIN-100");
}

void tst_SimulatorCalls::answersAGivenState()
{
    MotorStageState shown{};
    shown.isHome = 1;
    shown.runCount = 77;
    setState(device, 0, shown);
    QCOMPARE(stateOf(0).isHome, qint16(1));
    QCOMPARE(stateOf(0).isStop, qint16(0));
    QCOMPARE(stateOf(0).runCount, quint32(77));
    QCOMPARE(stateOf(1).runCount, quint32(0));
    setState(device, 0, std::nullopt);
    QCOMPARE(stateOf(0).isHome, qint16(0));
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorCalls::answersGivenNumbers()
{
    answerNumber("getSpeed", std::nan(""));
    answerNumber("getCurrentPos", 1e308);
    answerNumber("getMotorAutoDetect", -1);
    answerNumber("getJogCount", 32767);
    answerNumber("getRockerInfo", 32767);
    QVERIFY(std::isnan(getSpeed(device, 0)));
    QCOMPARE(getCurrentPos(device, 0, nullptr), 1e308);
    int code = 7;
    QCOMPARE(getMotorAutoDetect(device, 0, &code), 0);
    QCOMPARE(code, -1);
    QCOMPARE(getJogCount(device, 0), 32767);
    CONTROLER_STATE state = {};
    QCOMPARE(getRockerInfo(device, &state), 0);
    QCOMPARE(int(state.rockerState), 255);
    QCOMPARE(int(state.rockerValue), 32767);
    failCall("getSpeed", -9);
    QCOMPARE(getSpeed(device, 0), -9.0); // a failure goes before
    clearFaults();
    QCOMPARE(getJogCount(device, 0), 5);
}

void tst_SimulatorCalls::answersGivenCounts()
{
    answerCount("listTSMotorControlerDevices", 1000);
    int ids[2] = {};
    QCOMPARE(listTSMotorControlerDevices(ids, 2), 1000);
    QCOMPARE(ids[0], device);
    QCOMPARE(ids[1], 0); // no more are given than there are
    answerCount("getPositivePosConpen", -1);
    double pairs[4] = {};
    int count = 2;
    QCOMPARE(getPositivePosConpen(device, 0, pairs, &count), 0);
    QCOMPARE(count, -1);
}

void tst_SimulatorCalls::answersGivenParams()
{
    MotorParams given = {};
    given.maxPos = 123;
    setParams(device, 0, given);
    MotorParams read = {};
    QCOMPARE(getMotorParams(device, 0, &read), 0);
    QCOMPARE(read.maxPos, 123.0);
    setParams(device, 0, std::nullopt);
    QCOMPARE(getMotorParams(device, 0, &read), 0);
    QVERIFY(read.maxPos != 123);
}

void tst_SimulatorCalls::anObserverThatLooksIsWaitedFor()
{
    std::promise<void> looks;
    std::promise<void> mayGo;
    onCall([&](const std::string &) {
        looks.set_value();
        mayGo.get_future().wait();
    });
    std::thread caller([] { getSpeed(device, 0); });
    looks.get_future().wait();
    const std::future<void> end = std::async(std::launch::async, [] { onCall(nullptr); });
    const bool waits = end.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
    mayGo.set_value();
    end.wait();
    caller.join();
    QVERIFY(waits);
}

void tst_SimulatorCalls::tellsOfEveryCallBeforeItWaits()
{
    std::atomic<int> seen{0};
    onCall([&seen](const std::string &function) { seen += function == "getSpeed"; });
    hangCall("getSpeed");
    std::thread caller([] { getSpeed(device, 0); });
    QVERIFY(waitUntilHanging(5000));
    QCOMPARE(seen.load(), 1);
    QCOMPARE(callInFlight(), std::string("getSpeed"));
    releaseHung();
    caller.join();
    onCall(nullptr);
    QCOMPARE(callInFlight(), std::string());
    getSpeed(device, 0);
    QCOMPARE(seen.load(), 1);
    QCOMPARE(functions().size(), std::size_t(71));
}

// ---- Threads

void tst_SimulatorCalls::noticesOverlappingCalls()
{
    QCOMPARE(overlap(), std::string());
    hangCall("getCurrentPos");
    std::thread caller([] { getCurrentPos(device, 0, nullptr); });
    QVERIFY(waitUntilHanging(60000));
    QCOMPARE(overlap(), std::string());
    startMove(device, 0);
    getDevAxisCount(device);
    releaseHung();
    caller.join();
    QCOMPARE(overlap(), std::string("startMove overlapped getCurrentPos"));
    reset();
    QCOMPARE(overlap(), std::string());
}

void tst_SimulatorCalls::standsCallsFromManyThreads()
{
    std::vector<std::thread> callers;
    for (int axis = 0; axis < 3; ++axis) {
        callers.emplace_back([axis] {
            for (int i = 0; i < 300; ++i) {
                setJogStep(device, axis, i);
                startJog(device, axis, 1 + i % 2);
                getCurrentPos(device, axis, nullptr);
                stopRuning(device, axis);
            }
        });
    }
    for (int i = 0; i < 300; ++i) {
        advance(0.01);
        setOptoFault(device, i % 3, Opto::Negative, i % 2 == 0);
    }
    for (std::thread &caller : callers)
        caller.join();
    for (const char *function : {"setJogStep", "startJog", "getCurrentPos", "stopRuning"})
        QCOMPARE(callCount(function), 900);
    QCOMPARE(getJogStep(device, 2), 299.0);
}

// ---- Clock and mistakes

void tst_SimulatorCalls::passesTimeByItself()
{
    advance(5);
    QCOMPARE(now(), 5.0);
    useRealClock();
    QCOMPARE(setTargetPos(device, 0, 0.5), 0);
    QCOMPARE(startMove(device, 0), 0);
    QTRY_COMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(positionOf(0), 0.5);
    QVERIFY(now() > 5.0);
    reset();
    QCOMPARE(now(), 0.0);
}

void tst_SimulatorCalls::passesTimeAtTheScale()
{
    openScenario(R"({"timeScale": 1000, "controllers": [{"id": 1001, "axes": [{}]}]})");
    QElapsedTimer timer;
    timer.start();
    useRealClock();
    QTRY_VERIFY(now() >= 200);
    const double passed = now();
    QVERIFY(passed <= timer.elapsed() + 1); // milliseconds, at 1000 simulated seconds per second
}

void tst_SimulatorCalls::refusesUnknownNamesInTheControlInterface()
{
    QVERIFY_EXCEPTION_THROWN(failCall("setSpeeed", -1), std::invalid_argument);
    QVERIFY_EXCEPTION_THROWN(hangCall("setSpeeed"), std::invalid_argument);
    QVERIFY_EXCEPTION_THROWN(callCount("setSpeeed"), std::invalid_argument);
    QVERIFY_EXCEPTION_THROWN(loseLink(7), std::invalid_argument);
    QVERIFY_EXCEPTION_THROWN(setChip(device, 3, Chip::Blank), std::invalid_argument);
}

// The last one: what it leaves behind is the end of the process itself, which fails the test by crashing.
void tst_SimulatorCalls::hangsBeyondTheEndOfTheProcess()
{
    hangCall("getDevAxisCount");
    std::thread([] { getDevAxisCount(device); }).detach();
    QVERIFY(waitUntilHanging(60000));
}

QTEST_GUILESS_MAIN(tst_SimulatorCalls)
#include "tst_SimulatorCalls.moc"
