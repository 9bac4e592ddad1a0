// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "device/moverLibrary.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/DebugLog.h"
#include "support/SignalCounter.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>

namespace {

constexpr int device = 1001;

using Request = std::function<void(SerialComDev &)>;

struct Step {
    const char *call;    // as the journal shows it, without its result
    const char *failure; // null: failures are not reported
    int failureType;
};

struct Expected {
    int type;         // of the success message; 0: none
    const char *text; // of the success message
};

QStringList calls()
{
    QStringList list;
    for (const simulator::Call &call : simulator::journal())
        list.append(QString::fromStdString(call.function + '(' + call.arguments + ')'));
    return list;
}

std::string functionOf(const char *call)
{
    return std::string(call, std::strcspn(call, "("));
}

/** Starts a thread that asks for the mutex, which somebody else holds; returns when it waits there. */
std::thread startWaiting(const std::function<void()> &function)
{
    std::atomic<const QThread *> id{nullptr};
    std::thread thread([&id, function] {
        id = QThread::currentThread();
        function();
    });
    [&] { QTRY_VERIFY(LibraryLock::isAwaitedBy(id)); }();
    return thread;
}

} // namespace
Q_DECLARE_METATYPE(std::function<QVariant(SerialComDev &)>)
Q_DECLARE_METATYPE(Request)
Q_DECLARE_METATYPE(QVector<Step>)
Q_DECLARE_METATYPE(Expected)

class tst_SerialComDev : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { registerDeviceRecords(); }
    void init() { simulator::reset(); }
    void cleanup()
    {
        simulator::releaseHung();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
    }

    // ---- Capture

    void aCaptureIsHeardByListenersAlone()
    {
        const auto worker = SerialComDev::instance();
        QCOMPARE(worker->open(device), device);
        SignalCounter positions(worker.data(), &SerialComDev::signal_updateCurrentPos);
        simulator::clearJournal();
        worker->setCapture({0, 2}, 100);
        QTRY_VERIFY(simulator::callCount("getCurrentPos") >= 20);
        QVERIFY(calls().contains("getCurrentPos(1001, 0)") && calls().contains("getCurrentPos(1001, 2)"));
        QVERIFY(!calls().contains("getCurrentPos(1001, 1)"));
        QCOMPARE(positions.count(), 0);
        worker->close();
        simulator::clearJournal();
        QTest::qWait(50); // five times as long as it takes while it is open
        QCOMPARE(simulator::callCount("getCurrentPos"), 0);
    }
    void aCaptureLeavesHalfOfTheLink()
    {
        const auto worker = SerialComDev::instance();
        QCOMPARE(worker->open(device), device);
        simulator::delayCall("getCurrentPos", 20, 1000);
        simulator::clearJournal();
        QElapsedTimer timer;
        timer.start();
        worker->setCapture({0, 1}, 100);
        QTRY_VERIFY(simulator::callCount("getCurrentPos") >= 10);
        QVERIFY(timer.elapsed() >= 10 * 20 + 4 * 40);
    }
    void aCommandGoesBeforeACapture()
    {
        const auto worker = SerialComDev::instance();
        QCOMPARE(worker->open(device), device);
        simulator::delayCall("getCurrentPos", 20, 1000);
        worker->setCapture({0, 1, 2}, 100);
        for (int k = 0; k < 5; ++k) {
            QTRY_VERIFY(simulator::callInFlight() == "getCurrentPos");
            simulator::clearJournal();
            emit worker->signal_home(0);
            QTRY_VERIFY(simulator::callCount("home") == 1);
            QVERIFY(calls().indexOf("home(1001, 0)") <= 1); // behind the call in flight at most
        }
    }

    // ---- Singleton

    void isOneObjectInARunningThreadOfItsOwn()
    {
        const auto worker = SerialComDev::instance();
        QCOMPARE(SerialComDev::instance(), worker);
        QVERIFY(!worker->parent());
        QVERIFY(worker->thread() != QThread::currentThread());
        QVERIFY(worker->thread()->isRunning());
        QCOMPARE(worker->thread()->priority(), QThread::InheritPriority);
        QVERIFY(!worker->thread()->parent());
    }
    void isCreatedOnceWhenManyThreadsAskFirst()
    {
        std::vector<std::thread> threads;
        QVector<SerialComDev *> seen(8);
        SerialComDev **slots_ = seen.data();
        for (int k = 0; k < seen.size(); ++k)
            threads.emplace_back([slots_, k] { slots_[k] = SerialComDev::instance().data(); });
        for (std::thread &thread : threads)
            thread.join();
        for (SerialComDev *one : qAsConst(seen))
            QCOMPARE(one, SerialComDev::instance().data());
    }
    void startsWithNoDevice()
    {
        const auto worker = SerialComDev::instance();
        QCOMPARE(worker->deviceId(), 0);
        QVERIFY(!worker->isOpened());
    }
    void endThreadEndsTheThreadAndTheObject()
    {
        QPointer<SerialComDev> worker = SerialComDev::instance().data();
        QPointer<QThread> thread = worker->thread();
        QVERIFY(SerialComDev::endThread(5000));
        QVERIFY(worker.isNull());
        QVERIFY(thread.isNull());
        QVERIFY(SerialComDev::endThread(0)); // nothing left to do
    }
    void destructionClosesADeviceThatIsMarkedOpened()
    {
        DebugLog log;
        QCOMPARE(SerialComDev::instance()->open(device), device);
        SerialComDev::instance()->setOpened(true);
        simulator::clearJournal();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(calls(), (QStringList{"closeTSDevice(1001)", "removeDev(1001)"}));
        QVERIFY(log.contains(QStringLiteral("~SerialComDev")));
    }
    void destructionLeavesADeviceThatIsNotMarkedOpened()
    {
        QCOMPARE(SerialComDev::instance()->open(device), device);
        simulator::clearJournal();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(calls(), QStringList());
    }
    void endThreadGivesUpOnAHangingCallAndSaysSo()
    {
        const auto worker = openDevice();
        simulator::hangCall("stopRuning");
        emit worker->signal_stopMotor(0);
        QVERIFY(simulator::waitUntilHanging(5000));
        DebugLog log;
        QVERIFY(!SerialComDev::endThread(20));
        QVERIFY(log.contains(QStringLiteral("a library call still runs")));
        simulator::releaseHung();
    }

    void endThreadDropsTheRequestsThatWait()
    {
        const auto worker = openDevice();
        simulator::hangCall("stopRuning");
        emit worker->signal_stopMotor(0);
        QVERIFY(simulator::waitUntilHanging(5000));
        // These two are taken out of the queue together.
        simulator::hangCall("home");
        emit worker->signal_home(0);
        emit worker->signal_startMotor(0, MOVE_CODE_MOVE);
        simulator::releaseHung();
        QVERIFY(simulator::waitUntilHanging(5000));
        QVERIFY(!SerialComDev::endThread(20));
        simulator::releaseHung();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(calls(), (QStringList{"stopRuning(1001, 0)", "home(1001, 0)"}));
    }

    // ---- Open and close

    void openAddsThenOpensAndKeepsTheIdentifier()
    {
        const auto worker = SerialComDev::instance();
        QCOMPARE(worker->open(device), device);
        QCOMPARE(worker->deviceId(), device);
        QCOMPARE(calls(), (QStringList{"addDev(1001)", "openTSDevice(1001)"}));
    }
    void aFailedOpenRemovesTheDeviceAgainAndKeepsTheIdentifier()
    {
        const auto worker = openDevice();
        simulator::failCall("openTSDevice", -17);
        QCOMPARE(worker->open(1002), -17);
        QCOMPARE(worker->deviceId(), device);
        QCOMPARE(calls(), (QStringList{"addDev(1002)", "openTSDevice(1002)", "removeDev(1002)"}));
    }
    void closeClosesThenRemovesAndForgets()
    {
        const auto worker = openDevice();
        worker->setOpened(true);
        QCOMPARE(worker->close(), 0);
        QCOMPARE(calls(), (QStringList{"closeTSDevice(1001)", "removeDev(1001)"}));
        QCOMPARE(worker->deviceId(), 0);
        QVERIFY(!worker->isOpened());
    }
    void closeReturns0WhateverTheLibrarySays()
    {
        const auto worker = openDevice();
        simulator::failCall("closeTSDevice", -9);
        simulator::failCall("removeDev", -9);
        QCOMPARE(worker->close(), 0);
        QCOMPARE(worker->deviceId(), 0);
    }
    void closeWithoutADeviceMakesNoCall()
    {
        const auto worker = SerialComDev::instance();
        worker->setOpened(true);
        QCOMPARE(worker->close(), 0);
        QCOMPARE(calls(), QStringList());
        QVERIFY(!worker->isOpened());
    }
    void closeDoesNotOvertakeWhatWasRequestedBefore()
    {
        const auto worker = openDevice();
        QSemaphore released;
        occupy(*worker, released);
        emit worker->signal_home(0);
        const bool isClosed = worker->tryClose(50); // the library is free
        emit worker->signal_stopMotor(0);
        released.release();
        QVERIFY(!isClosed);
        worker->close();
        QCOMPARE(
            calls().mid(calls().size() - 3),
            (QStringList{"stopRuning(1001, 0)", "closeTSDevice(1001)", "removeDev(1001)"}));
    }
    void aLimitedCloseGivesUpOnAHangingCallAndSaysSo()
    {
        const auto worker = openDevice();
        simulator::hangCall("getRuningState");
        emit worker->signal_getDevState(0);
        QVERIFY(simulator::waitUntilHanging(5000));
        DebugLog log;
        QVERIFY(!worker->tryClose(50));
        QVERIFY(log.contains(QStringLiteral("the device is left open")));
        QCOMPARE(worker->deviceId(), device);
        simulator::releaseHung();
        QVERIFY(worker->tryClose(5000));
        QCOMPARE(worker->deviceId(), 0);
    }

    void leavingEndsWhatIsPolledForButNotWhatWasAskedFor()
    {
        const auto worker = openDevice();
        QVERIFY(worker->closeAtExit(5000));
        emit worker->signal_getCurrentPos(0);
        emit worker->signal_getDevState(0);
        QMetaObject::invokeMethod(worker.data(), &SerialComDev::slot_heartBeat);
        QMetaObject::invokeMethod(worker.data(), &SerialComDev::slot_consoleHeartBeat);
        worker->close(); // after all of them
        QCOMPARE(calls(), (QStringList{"closeTSDevice(1001)", "removeDev(1001)"}));

        QCOMPARE(worker->open(device), device);
        simulator::clearJournal();
        simulator::hangCall("getCurrentPos");
        emit worker->signal_getCurrentPos(0);
        QVERIFY(simulator::waitUntilHanging(5000));
        emit worker->signal_stopMotor(0);
        emit worker->signal_getDevState(0);
        QVERIFY(!worker->closeAtExit(50));
        simulator::releaseHung();
        worker->close();
        QCOMPARE(
            calls(),
            (QStringList{"getCurrentPos(1001, 0)", "stopRuning(1001, 0)", "closeTSDevice(1001)", "removeDev(1001)"}));
    }

    // ---- Accessors

    void accessorsMakeOneCallUnderTheMutexAndReturnItsResult_data()
    {
        QTest::addColumn<std::function<QVariant(SerialComDev &)>>("accessor");
        QTest::addColumn<QString>("call");
        QTest::addColumn<QVariant>("result");

        using Accessor = std::function<QVariant(SerialComDev &)>;
        const auto row = [](const char *name, const char *call, const QVariant &result, const Accessor &accessor) {
            QTest::newRow(name) << accessor << QString::fromLatin1(call) << result;
        };
        row("setMotorEnable", "setMotorEnable(1001, 1, 0)", 0, [](auto &w) { return w.setMotorEnable(1, 0); });
        row("setRockerEnable", "setRockerEnable(1001, 0)", 0, [](auto &w) { return w.setRockerEnable(0); });
        row("getRockerEnable", "getRockerEnable(1001)", 0, [](auto &w) { return w.getRockerEnable(); });
        row("setPosConpenEnable", "setPosConpenEnable(1001, 1, 1)", 0,
            [](auto &w) { return w.setPosConpenEnable(1, 1); });
        row("getPosConpenEnable", "getPosConpenEnable(1001, 1)", 0, [](auto &w) { return w.getPosConpenEnable(1); });
        row("getDevAxisCount", "getDevAxisCount(1001)", 3, [](auto &w) { return w.getDevAxisCount(); });
        row("getMotorModelName", "getMotorModelName(1001, 0)", QStringLiteral("LIN-100"),
            [](auto &w) { return w.getMotorModelName(0); });
        row("setMotorModelName", "setMotorModelName(1001, 2, \"AB\", 2)", 0,
            [](auto &w) { return w.setMotorModelName(2, QStringLiteral("AB")); });
        row("getDevSoftVersion", "getDevSoftVersion(1001)", QStringLiteral("2.4.1 simulated"),
            [](auto &w) { return w.getDevSoftVersion(); });
        row("getRuningState", "getRuningState(1001, 0)", 0, [](auto &w) {
            MotorStageState state;
            std::memset(&state, 0x55, sizeof state); // the accessor zeroes it
            const int result = w.getRuningState(0, state);
            return state.isStop == (result < 0 ? 0 : 1) && state.runCount == 0 ? result : -1000;
        });
        row("getMotorParams", "getMotorParams(1001, 0)", 0, [](auto &w) {
            MotorParams params = {};
            const int result = w.getMotorParams(0, params);
            return result < 0 || params.maxSpeed == 20 ? result : -1000;
        });
        row("setMotorParams", "setMotorParams(1001, 2, \"LIN-100\")", 0, [](auto &w) {
            MotorParams params = {};
            w.getMotorParams(0, params);
            simulator::clearJournal();
            return w.setMotorParams(2, params);
        });
    }
    void accessorsMakeOneCallUnderTheMutexAndReturnItsResult()
    {
        QFETCH(std::function<QVariant(SerialComDev &)>, accessor);
        QFETCH(QString, call);
        QFETCH(QVariant, result);
        const auto worker = openDevice();
        QCOMPARE(accessor(*worker), result);
        QCOMPARE(calls(), QStringList{call});
        QVERIFY(simulator::journal().front().thread == std::this_thread::get_id());
        simulator::failCall(functionOf(qPrintable(call)), -123);
        QCOMPARE(accessor(*worker), result.type() == QVariant::String ? QVariant(QString()) : QVariant(-123));

        // The next one waits for the mutex.
        std::atomic<bool> done{false};
        std::thread other;
        {
            const LibraryLock library;
            simulator::clearJournal();
            other = startWaiting([&] {
                accessor(*worker);
                done = true;
            });
            QVERIFY(!done);
            QCOMPARE(calls(), QStringList());
        }
        other.join();
        QVERIFY(calls().contains(call));
    }
    void aTextIsNullOnFailureAndEmptyWhenItIsEmpty()
    {
        const auto worker = openDevice();
        simulator::failCall("getMotorModelName", -9);
        QVERIFY(worker->getMotorModelName(0).isNull());
        simulator::failCall("getDevSoftVersion", -9);
        QVERIFY(worker->getDevSoftVersion().isNull());
        simulator::answerText("getMotorModelName", std::string());
        QVERIFY(worker->getMotorModelName(0).isEmpty());
        QVERIFY(!worker->getMotorModelName(0).isNull());
    }
    void textsAreReadUpTo32BytesOrTheFirstZero()
    {
        const auto worker = openDevice();
        simulator::answerText("getMotorModelName", std::string(32, 'x'));
        QCOMPARE(worker->getMotorModelName(0), QString(32, QLatin1Char('x')));
        simulator::answerText("getDevSoftVersion", std::string(32, '\xe9'));
        QCOMPARE(worker->getDevSoftVersion(), QString(32, QChar(0xe9)));
        simulator::answerText("getMotorModelName", std::string("ab\0cd", 5));
        QCOMPARE(worker->getMotorModelName(0), QStringLiteral("ab"));
    }
    void aModelNameIsSentAsLatin1WithItsLength()
    {
        const auto worker = openDevice();
        worker->setMotorModelName(0, QStringLiteral("é"));
        QCOMPARE(simulator::journal().front().arguments, std::string("1001, 0, \"\xe9\", 1"));
    }

    // ---- Identification and axis read

    void autoDetectKeepsTheCodesOfTheAxesApart()
    {
        const auto worker = openDevice();
        DebugLog log;
        int code = -1;
        QVERIFY(worker->readMotorAutoDetect(0, &code));
        QCOMPARE(code, 2);
        QVERIFY(log.contains(QStringLiteral("readMotorAutoDetect  2")));
        simulator::setChip(device, 1, simulator::Chip::Blank);
        QVERIFY(worker->readMotorAutoDetect(1, &code));
        QCOMPARE(worker->getAxisAutoDetect(0), 2);
        QCOMPARE(worker->getAxisAutoDetect(1), 1);
    }
    void aFailedAutoDetectKeepsWhatWasThere()
    {
        const auto worker = openDevice();
        int code = 0;
        QVERIFY(worker->readMotorAutoDetect(0, &code));
        simulator::failCall("getMotorAutoDetect", -9);
        QVERIFY(!worker->readMotorAutoDetect(0, &code));
        QCOMPARE(worker->getAxisAutoDetect(0), 2);
        QCOMPARE(worker->getAxisAutoDetect(1), 0);
    }
    void axisReadMakesItsReadsInOrderAndKeepsThem()
    {
        const auto worker = openDevice();
        prepareAxis();
        DebugLog log;
        QCOMPARE(worker->readAxisParams(0), 0);
        QStringList expected;
        for (const char *function : axisReads)
            expected.append(QStringLiteral("%1(1001, 0)").arg(QLatin1String(function)));
        QCOMPARE(calls(), expected);
        QVERIFY(log.contains(QStringLiteral("readAxisParams")));

        QCOMPARE(worker->getAxisModelName(0), QStringLiteral("LIN-100"));
        QCOMPARE(worker->getAxisSerialNo(0), QStringLiteral("SIM-SN-204417"));
        QVERIFY(log.contains(QStringLiteral("getAxisSerialNo")));
        QCOMPARE(worker->getAxisCurrentPos(0), -12.5);
        QCOMPARE(worker->getAxisSpeed(0), 2.5);
        QCOMPARE(worker->getAxisAcceleration(0), 3.5);
        QCOMPARE(worker->getAxisRelativeDisp(0), 4.5);
        QCOMPARE(worker->getAxisTargetPos(0), -5.5);
        QCOMPARE(worker->getAxisRelativeDispEnable(0), true);
        QCOMPARE(worker->getAxisJogStep(0), 6.5);
        QCOMPARE(worker->getAxisJogDelay(0), 7);
        QCOMPARE(worker->getAxisJogCount(0), 8);
        QCOMPARE(worker->getAxisCircleCount(0), 9);
        QCOMPARE(worker->getAxisCircleDisp(0), 10.5);
        QCOMPARE(worker->getAxisCircleDelay(0), 11);
    }
    void valuesOfZeroAreNoFailures()
    {
        const auto worker = openDevice();
        for (const char *function :
             {"getSpeed", "getAcceleration", "getRelativeDisp", "getRelativeDispEnable", "getJogStep", "getJogDelay",
              "getJogCount", "getCircleCount", "getCircleDisp", "getCircleDelay"}) {
            simulator::answerNumber(function, 0);
            QCOMPARE(worker->readAxisParams(0), 0);
        }
        QCOMPARE(worker->getAxisSpeed(0), 0.0);
        QCOMPARE(worker->getAxisCircleDelay(0), 0);
    }
    void theRecordOfAnAxisCarriesItsNumber()
    {
        const auto worker = openDevice();
        QCOMPARE(worker->readAxisParams(2), 0);
        QCOMPARE(worker->axisInfo(2).axis, 2);
    }
    void axisReadHoldsTheMutexForTheWholeSequence()
    {
        const auto worker = openDevice();
        simulator::delayCall("getSpeed", 50);
        std::thread reader([&] { QCOMPARE(worker->readAxisParams(0), 0); });
        while (simulator::callCount("getMotorModelName") == 0)
            std::this_thread::yield();
        QCOMPARE(worker->getDevAxisCount(), 3);
        reader.join();
        QCOMPARE(calls().last(), QStringLiteral("getDevAxisCount(1001)"));
    }
    void axisReadStopsAtTheFirstFailureAndKeepsTheOldRecord_data()
    {
        QTest::addColumn<int>("step");
        for (int step = 1; step <= int(axisReads.size()); ++step)
            QTest::newRow(axisReads[size_t(step - 1)]) << step;
    }
    void axisReadStopsAtTheFirstFailureAndKeepsTheOldRecord()
    {
        QFETCH(int, step);
        const auto worker = openDevice();
        QCOMPARE(worker->readAxisParams(0), 0);
        const double speed = worker->getAxisSpeed(0);
        QVERIFY(speed != 1.25);
        prepareAxis(1.25);
        simulator::failCall(axisReads[size_t(step - 1)], -9);
        QCOMPARE(worker->readAxisParams(0), -step);
        QCOMPARE(int(simulator::journal().size()), step);
        QCOMPARE(worker->getAxisSpeed(0), speed);
    }
    void anAxisThatWasNeverReadGivesNothing()
    {
        const auto worker = SerialComDev::instance();
        QVERIFY(worker->getAxisModelName(0).isEmpty());
        QVERIFY(worker->getAxisSerialNo(0).isEmpty());
        QCOMPARE(worker->getAxisCurrentPos(0), 0.0);
        QCOMPARE(worker->getAxisSpeed(0), 0.0);
        QCOMPARE(worker->getAxisAcceleration(0), 0.0);
        QCOMPARE(worker->getAxisRelativeDisp(0), 0.0);
        QCOMPARE(worker->getAxisTargetPos(0), 0.0);
        QCOMPARE(worker->getAxisRelativeDispEnable(0), false);
        QCOMPARE(worker->getAxisJogStep(0), 0.0);
        QCOMPARE(worker->getAxisJogDelay(0), 0);
        QCOMPARE(worker->getAxisJogCount(0), 0);
        QCOMPARE(worker->getAxisCircleCount(0), 0);
        QCOMPARE(worker->getAxisCircleDisp(0), 0.0);
        QCOMPARE(worker->getAxisCircleDelay(0), 0);
    }

    // ---- Requests

    void requestsMakeTheirCallsInOrderAndReport_data() { requestTable(); }
    void requestsMakeTheirCallsInOrderAndReport()
    {
        QFETCH(Request, request);
        QFETCH(QVector<Step>, steps);
        QFETCH(Expected, success);
        const auto worker = openDevice();
        QSignalSpy messages(worker.data(), &SerialComDev::signal_showOperationMsg);
        request(*worker);
        settle(*worker);

        QStringList expected;
        for (const Step &step : qAsConst(steps))
            expected.append(QString::fromUtf8(step.call));
        QCOMPARE(calls(), expected);
        for (const simulator::Call &call : simulator::journal())
            QVERIFY(call.thread != std::this_thread::get_id());
        QCOMPARE(messages.count(), success.type != 0 ? 1 : 0);
        if (success.type != 0)
            QCOMPARE(messages.first(), message(1, OPERATION_STATE_OK, success.type, success.text));
    }
    void requestsStopAtTheFirstFailureAndReportIt_data() { requestTable(); }
    void requestsStopAtTheFirstFailureAndReportIt()
    {
        QFETCH(Request, request);
        QFETCH(QVector<Step>, steps);
        for (int failing = 0; failing < steps.size(); ++failing) {
            simulator::reset();
            QVERIFY(SerialComDev::endThread(5000));
            const auto worker = openDevice();
            QSignalSpy messages(worker.data(), &SerialComDev::signal_showOperationMsg);
            simulator::failCall(functionOf(steps.at(failing).call), -9);
            request(*worker);
            settle(*worker);
            QCOMPARE(calls().size(), failing + 1);
            if (steps.at(failing).failure) {
                QCOMPARE(messages.count(), 1);
                QCOMPARE(
                    messages.first(),
                    message(1, OPERATION_STATE_FAIL, steps.at(failing).failureType, steps.at(failing).failure));
            } else {
                QCOMPARE(messages.count(), 0);
            }
        }
    }
    void startModesMakeTheirCallAndReportIt_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("call");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::newRow("move") << 3 << "startMove(1001, 1)" << 1 << "Move";
        QTest::newRow("drive +") << 4 << "startDrive(1001, 1, 1)" << 3 << "正方向Drive";
        QTest::newRow("drive -") << 5 << "startDrive(1001, 1, 2)" << 3 << "负方向Drive";
        QTest::newRow("jog +") << 6 << "startJog(1001, 1, 1)" << 5 << "正方向Jog";
        QTest::newRow("jog -") << 7 << "startJog(1001, 1, 2)" << 5 << "负方向Jog";
        QTest::newRow("loop +") << 8 << "startCircle(1001, 1, 1)" << 10 << "正方向循环";
        QTest::newRow("loop -") << 9 << "startCircle(1001, 1, 2)" << 10 << "负方向循环";
    }
    void startModesMakeTheirCallAndReportIt()
    {
        QFETCH(int, mode);
        QFETCH(QString, call);
        QFETCH(int, type);
        QFETCH(QString, text);
        const auto worker = openDevice();
        QSignalSpy messages(worker.data(), &SerialComDev::signal_showOperationMsg);
        const std::string function = functionOf(qPrintable(call));
        emit worker->signal_startMotor(1, mode);
        settle(*worker);
        simulator::failCall(function, -7);
        emit worker->signal_startMotor(1, mode);
        settle(*worker);
        QCOMPARE(calls(), (QStringList{call, call}));
        QCOMPARE(messages.count(), 2);
        QCOMPARE(messages.at(0), message(1, 3, type, text)); // OPERATION_STATE_OK
        QCOMPARE(messages.at(1), message(1, 2, type, text)); // OPERATION_STATE_FAIL
    }
    void otherStartModesAreIgnored_data()
    {
        QTest::addColumn<int>("mode");
        for (const int mode : {-1, 0, 2, 10, 2147483647})
            QTest::newRow(qPrintable(QString::number(mode))) << mode;
    }
    void otherStartModesAreIgnored()
    {
        QFETCH(int, mode);
        const auto worker = openDevice();
        QSignalSpy messages(worker.data(), &SerialComDev::signal_showOperationMsg);
        emit worker->signal_startMotor(0, mode);
        settle(*worker);
        QCOMPARE(calls(), QStringList());
        QCOMPARE(messages.count(), 0);
    }
    /** Called by their names, start and home do what they do for a request. */
    void startAndHomeByName()
    {
        const auto worker = openDevice();
        for (const int mode : {MOVE_CODE_JOG_NEGATIVE, MoveCode(99)})
            QMetaObject::invokeMethod(worker.data(), "slot_startMotor", Q_ARG(int, 1), Q_ARG(int, mode));
        QMetaObject::invokeMethod(worker.data(), "slot_homeMotor", Q_ARG(int, 1));
        settle(*worker);
        QCOMPARE(calls(), (QStringList{"startJog(1001, 1, 2)", "home(1001, 1)"}));
    }
    void aMotorConfigurationDoesNothing()
    {
        const auto worker = openDevice();
        QSignalSpy messages(worker.data(), &SerialComDev::signal_showOperationMsg);
        emit worker->signal_setMotorConfig(3, QStringLiteral("LIN-100"), QStringLiteral("file"));
        settle(*worker);
        QCOMPARE(calls(), QStringList());
        QCOMPARE(messages.count(), 0);
    }
    void requestsRunInTheOrderOfEmission()
    {
        const auto worker = openDevice();
        emit worker->signal_setAbsoluteDispParams(0, 1.5);
        emit worker->signal_setSpeedParams(0, 20, 10);
        emit worker->signal_startMotor(0, MOVE_CODE_MOVE);
        emit worker->signal_stopMotor(0);
        emit worker->signal_home(1);
        settle(*worker);
        QCOMPARE(
            calls(), (QStringList{
                         "setTargetPos(1001, 0, 1.5)", "setSpeed(1001, 0, 10)", "setAcceleration(1001, 0, 20)",
                         "startMove(1001, 0)", "stopRuning(1001, 0)", "home(1001, 1)"}));
    }
    void everyCallOfARequestHoldsTheMutex_data()
    {
        requestTable();
        // Answered whether they succeed or fail; what the answers say is tested with each of them.
        const auto row = [](const char *name, const char *call, const Request &request) {
            QTest::newRow(name) << request << QVector<Step>{{call, "", 99}} << Expected{99, ""};
        };
        row("position poll", "getCurrentPos(1001, 0)", [](SerialComDev &w) { emit w.signal_getCurrentPos(0); });
        row("state poll", "getRuningState(1001, 0)", [](SerialComDev &w) { emit w.signal_getDevState(0); });
        row("start", "startMove(1001, 0)", [](SerialComDev &w) { emit w.signal_startMotor(0, MOVE_CODE_MOVE); });
        row("beat", "getRockerInfo(1001)",
            [](SerialComDev &w) { QMetaObject::invokeMethod(&w, "slot_heartBeat", Qt::QueuedConnection); });
        row("beat of the console", "getRockerInfo(1001)",
            [](SerialComDev &w) { QMetaObject::invokeMethod(&w, "slot_consoleHeartBeat", Qt::QueuedConnection); });
    }
    void everyCallOfARequestHoldsTheMutex()
    {
        QFETCH(Request, request);
        QFETCH(QVector<Step>, steps);
        const auto worker = openDevice();
        for (const Step &step : qAsConst(steps)) {
            simulator::hangCall(functionOf(step.call));
            request(*worker);
            QVERIFY(simulator::waitUntilHanging(5000));
            QVERIFY(!LibraryLock(0).isLocked());
            simulator::releaseHung();
            settle(*worker);
            QVERIFY(LibraryLock(0).isLocked());
        }
    }
    void answersComeWhileTheMutexIsHeld_data() { everyCallOfARequestHoldsTheMutex_data(); }
    void answersComeWhileTheMutexIsHeld()
    {
        QFETCH(Request, request);
        QFETCH(QVector<Step>, steps);
        QFETCH(Expected, success);
        for (int failing = -1; failing < steps.size(); ++failing) {
            simulator::reset();
            QVERIFY(SerialComDev::endThread(5000));
            const auto worker = openDevice();
            std::atomic<int> answers{0};
            std::atomic<bool> wasFree{false};
            const auto look = [&] {
                std::thread([&] {
                    if (LibraryLock(0).isLocked())
                        wasFree = true;
                }).join();
                ++answers;
            };
            SerialComDev *w = worker.data();
            connect(w, &SerialComDev::signal_showOperationMsg, w, look, Qt::DirectConnection);
            connect(w, &SerialComDev::signal_updateCurrentPos, w, look, Qt::DirectConnection);
            connect(w, &SerialComDev::signal_updateDevState, w, look, Qt::DirectConnection);
            connect(w, &SerialComDev::signal_heartBeatInfo, w, look, Qt::DirectConnection);
            connect(w, &SerialComDev::signal_consoleHeartBeatInfo, w, look, Qt::DirectConnection);
            if (failing >= 0)
                simulator::failCall(functionOf(steps.at(failing).call), -9);
            request(*worker);
            settle(*worker);
            const bool answered = failing < 0 ? success.type != 0 : steps.at(failing).failure != nullptr;
            QCOMPARE(answers.load(), answered ? 1 : 0);
            QVERIFY2(!wasFree, qPrintable(QString::number(failing)));
            QVERIFY(LibraryLock(0).isLocked()); // afterwards it is free
        }
    }
    void nobodyGetsInBetweenTheCallsOfARequest_data() { requestTable(); }
    void nobodyGetsInBetweenTheCallsOfARequest()
    {
        QFETCH(Request, request);
        QFETCH(QVector<Step>, steps);
        const auto worker = openDevice();
        simulator::hangCall(functionOf(steps.first().call));
        request(*worker);
        QVERIFY(simulator::waitUntilHanging(5000));
        std::thread other = startWaiting([&] { worker->getDevAxisCount(); });
        simulator::releaseHung();
        other.join();
        settle(*worker);
        QCOMPARE(calls().size(), steps.size() + 1);
        QCOMPARE(calls().last(), QStringLiteral("getDevAxisCount(1001)"));
    }
    void openingDetectingAndClosingAreOneTurnEach()
    {
        const auto worker = SerialComDev::instance();
        const auto turn = [&](const char *first, const std::function<void()> &sequence) {
            simulator::clearJournal();
            simulator::hangCall(first);
            std::thread caller(sequence);
            const bool hangs = simulator::waitUntilHanging(5000);
            // Tells which device is open when it gets its turn.
            std::thread other = startWaiting([&] { worker->getRockerEnable(); });
            simulator::releaseHung();
            caller.join();
            other.join();
            return hangs ? calls() : QStringList();
        };
        const auto open = [&] { worker->open(device); };
        QCOMPARE(turn("addDev", open), (QStringList{"addDev(1001)", "openTSDevice(1001)", "getRockerEnable(1001)"}));
        int code = 0;
        QCOMPARE(
            turn("getMotorAutoDetect", [&] { worker->readMotorAutoDetect(0, &code); }),
            (QStringList{"getMotorAutoDetect(1001, 0)", "getRockerEnable(1001)"}));
        QCOMPARE(
            turn("closeTSDevice", [&] { worker->close(); }),
            (QStringList{"closeTSDevice(1001)", "removeDev(1001)", "getRockerEnable(0)"}));
        simulator::failCall("openTSDevice", -17);
        QCOMPARE(
            turn("addDev", open),
            (QStringList{"addDev(1001)", "openTSDevice(1001)", "removeDev(1001)", "getRockerEnable(0)"}));
    }
    void withoutADeviceRequestsFail()
    {
        const auto worker = SerialComDev::instance();
        QSignalSpy messages(worker.data(), &SerialComDev::signal_showOperationMsg);
        emit worker->signal_home(0);
        settle(*worker);
        QCOMPARE(calls(), QStringList{"home(0, 0)"});
        QCOMPARE(messages.first(), message(0, OPERATION_STATE_FAIL, OPERATION_TYPE_HOME, QStringLiteral("电机复位")));
    }

    // ---- What the worker keeps follows what the controller accepted

    void acceptedParametersAreWhatTheWorkerHoldsNext()
    {
        const auto worker = openDevice();
        QCOMPARE(worker->readAxisParams(0), 0);
        emit worker->signal_setSpeedParams(0, 21.5, 11.5);
        emit worker->signal_setRelativeDispParams(0, 3.5, false);
        emit worker->signal_setAbsoluteDispParams(0, 12.25);
        emit worker->signal_setJogParams(0, 0.5, 4, 250);
        emit worker->signal_setCircleParams(0, 6, 7.5, 800);
        settle(*worker);
        QCOMPARE(worker->getAxisSpeed(0), 11.5);
        QCOMPARE(worker->getAxisAcceleration(0), 21.5);
        QCOMPARE(worker->getAxisRelativeDisp(0), 3.5);
        QCOMPARE(worker->getAxisRelativeDispEnable(0), false);
        QCOMPARE(worker->getAxisTargetPos(0), 12.25);
        QCOMPARE(worker->getAxisJogStep(0), 0.5);
        QCOMPARE(worker->getAxisJogCount(0), 4);
        QCOMPARE(worker->getAxisJogDelay(0), 250);
        QCOMPARE(worker->getAxisCircleCount(0), 6);
        QCOMPARE(worker->getAxisCircleDisp(0), 7.5);
        QCOMPARE(worker->getAxisCircleDelay(0), 800);
    }
    void refusedParametersChangeNothingButWhatWasAcceptedBefore()
    {
        const auto worker = openDevice();
        QCOMPARE(worker->readAxisParams(0), 0);
        const double acceleration = worker->getAxisAcceleration(0);
        simulator::failCall("setAcceleration", -6);
        emit worker->signal_setSpeedParams(0, 21.5, 11.5);
        settle(*worker);
        QCOMPARE(worker->getAxisSpeed(0), 11.5);
        QCOMPARE(worker->getAxisAcceleration(0), acceleration);
    }
    void parametersOfAnAxisThatWasNeverReadAreNotKept()
    {
        const auto worker = openDevice();
        emit worker->signal_setSpeedParams(0, 21.5, 11.5);
        settle(*worker);
        QCOMPARE(worker->getAxisSpeed(0), 0.0);
    }

    // ---- Polling

    void aPositionPollAnswersWithThePosition()
    {
        const auto worker = openDevice();
        simulator::setPosition(device, 1, -0.5);
        QSignalSpy positions(worker.data(), &SerialComDev::signal_updateCurrentPos);
        emit worker->signal_getCurrentPos(1);
        settle(*worker);
        QCOMPARE(positions.count(), 1);
        QCOMPARE(positions.first(), (QList<QVariant>{1, -0.5}));
        QCOMPARE(calls(), QStringList{"getCurrentPos(1001, 1)"});
    }
    void onlyAnAnswerThatDiffersIsAChange()
    {
        const auto worker = openDevice();
        QSignalSpy positions(worker.data(), &SerialComDev::signal_positionChanged);
        QSignalSpy states(worker.data(), &SerialComDev::signal_devStateChanged);
        const auto poll = [&] {
            emit worker->signal_getCurrentPos(1);
            emit worker->signal_getDevState(1);
            settle(*worker);
        };
        worker->announceAnew(1);
        poll();
        poll();
        QCOMPARE(positions.count(), 1);
        QCOMPARE(states.count(), 1);
        simulator::setPosition(device, 1, -0.5);
        poll();
        QCOMPARE(positions.count(), 2);
        worker->announceAnew(1);
        poll();
        QCOMPARE(positions.count(), 3);
        QVERIFY(states.count() >= 2);
    }
    void aCountingLoopRunIsAlwaysAChange()
    {
        const auto worker = openDevice();
        QSignalSpy states(worker.data(), &SerialComDev::signal_devStateChanged);
        MotorStageState state = {};
        state.runCount = 3;
        simulator::setState(device, 0, state);
        for (int k = 0; k < 3; ++k)
            emit worker->signal_getDevState(0);
        settle(*worker);
        emit worker->signal_getDevState(0);
        settle(*worker);
        simulator::setState(device, 0, std::nullopt);
        QVERIFY(states.count() >= 2);
    }
    void aFailedPositionPollReportsAndGivesNoPosition()
    {
        const auto worker = openDevice();
        QSignalSpy positions(worker.data(), &SerialComDev::signal_updateCurrentPos);
        QSignalSpy messages(worker.data(), &SerialComDev::signal_showOperationMsg);
        simulator::failCall("getCurrentPos", -9);
        emit worker->signal_getCurrentPos(0);
        settle(*worker);
        QCOMPARE(positions.count(), 0);
        QCOMPARE(messages.count(), 1);
        QCOMPARE(
            messages.first(),
            message(0, OPERATION_STATE_FAIL, OPERATION_TYPE_GENERAL, QStringLiteral("读取当前位置出错")));
    }
    void aStatePollAnswersWithTheWholeState()
    {
        const auto worker = openDevice();
        const MotorStageState sent = {1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 70000};
        simulator::setState(device, 0, sent);
        QSignalSpy states(worker.data(), &SerialComDev::signal_updateDevState);
        emit worker->signal_getDevState(0);
        settle(*worker);
        QCOMPARE(states.count(), 1);
        QCOMPARE(states.first().at(0).toInt(), 0);
        const auto received = states.first().at(1).value<MotorStageState>();
        QVERIFY(!std::memcmp(&received, &sent, sizeof sent));
    }
    void aFailedStatePollReportsAndGivesNoState()
    {
        const auto worker = openDevice();
        QSignalSpy states(worker.data(), &SerialComDev::signal_updateDevState);
        QSignalSpy messages(worker.data(), &SerialComDev::signal_showOperationMsg);
        simulator::failCall("getRuningState", -9);
        emit worker->signal_getDevState(2);
        settle(*worker);
        QCOMPARE(states.count(), 0);
        QCOMPARE(messages.count(), 1);
        QCOMPARE(
            messages.first(),
            message(2, OPERATION_STATE_FAIL, OPERATION_TYPE_GENERAL, QStringLiteral("获取设备状态出错")));
    }
    void aHeartBeatAnswersWithStateAndResult()
    {
        const auto worker = openDevice();
        simulator::setJoystick(device, true, 3);
        QVector<QPair<int, int>> answers;
        connect(
            worker.data(), &SerialComDev::signal_heartBeatInfo, worker.data(),
            [&](CONTROLER_STATE state, int ret) {
                answers.append({state.rockerValue, ret});
            },
            Qt::DirectConnection);
        QMetaObject::invokeMethod(worker.data(), "slot_heartBeat", Qt::BlockingQueuedConnection);
        simulator::failCall("getRockerInfo", -9);
        QMetaObject::invokeMethod(worker.data(), "slot_heartBeat", Qt::BlockingQueuedConnection);
        QCOMPARE(answers, (QVector<QPair<int, int>>{{3, 0}, {0, -9}}));
    }
    void pollsAndCommandsKeepTheirOrder()
    {
        const auto worker = openDevice();
        QSemaphore emitted;
        occupy(*worker, emitted);
        emit worker->signal_getCurrentPos(0);
        emit worker->signal_getDevState(1);
        emit worker->signal_stopMotor(0);
        emit worker->signal_getDevState(1);
        emit worker->signal_getCurrentPos(1);
        emit worker->signal_stopMotor(1);
        emit worker->signal_getCurrentPos(0);
        emitted.release();
        settle(*worker);
        QCOMPARE(
            calls(), (QStringList{
                         QStringLiteral("getCurrentPos(1001, 0)"), QStringLiteral("getRuningState(1001, 1)"),
                         QStringLiteral("stopRuning(1001, 0)"), QStringLiteral("getRuningState(1001, 1)"),
                         QStringLiteral("getCurrentPos(1001, 1)"), QStringLiteral("stopRuning(1001, 1)"),
                         QStringLiteral("getCurrentPos(1001, 0)")}));
    }
    void pollsThatNoCommandSeparatesCallTheWorkerOnce()
    {
        PollQueue polls;
        const auto first = polls.add({PollQueue::Position, 0});
        QVERIFY(first);
        QVERIFY(!polls.add({PollQueue::State, 0}));
        QVERIFY(!polls.add({PollQueue::Position, 1}));
        polls.endRound();
        const auto second = polls.add({PollQueue::State, 1});
        QVERIFY(second);
        QCOMPARE(*polls.take(*first), (PollQueue::Poll{PollQueue::Position, 0}));
        QCOMPARE(*polls.take(*first), (PollQueue::Poll{PollQueue::State, 0}));
        QCOMPARE(*polls.take(*first), (PollQueue::Poll{PollQueue::Position, 1}));
        QVERIFY(!polls.take(*first));
        QVERIFY(!polls.add({PollQueue::State, 2}));
        QCOMPARE(*polls.take(*second), (PollQueue::Poll{PollQueue::State, 1}));
        // The worker is there: what comes now is for the next time, or it would never get to anything else.
        QVERIFY(polls.add({PollQueue::Position, 2}));
        QCOMPARE(*polls.take(*second), (PollQueue::Poll{PollQueue::State, 2}));
        QVERIFY(!polls.take(*second));
    }
    void beatsThatWaitForAHangingLibraryAreBounded()
    {
        const auto worker = openDevice();
        QSignalSpy beats(worker.data(), &SerialComDev::signal_heartBeatInfo);
        QSignalSpy consoleBeats(worker.data(), &SerialComDev::signal_consoleHeartBeatInfo);
        simulator::hangCall("getCurrentPos");
        emit worker->signal_getCurrentPos(0);
        QVERIFY(simulator::waitUntilHanging(5000));
        for (int k = 0; k < 50; ++k) {
            emit worker->signal_requestHeartBeat();
            emit worker->signal_requestConsoleHeartBeat();
        }
        simulator::releaseHung();
        settle(*worker);
        QCOMPARE(beats.count(), PollQueue::Limit);
        QCOMPARE(consoleBeats.count(), PollQueue::Limit);
        QCOMPARE(simulator::callCount("getRockerInfo"), 2 * PollQueue::Limit);
        emit worker->signal_requestHeartBeat();
        settle(*worker);
        QCOMPARE(beats.count(), PollQueue::Limit + 1);
    }
    void pollsThatTheLinkCannotKeepUpWithDoNotPileUpBeforeACommand()
    {
        const auto worker = openDevice();
        QSemaphore emitted;
        occupy(*worker, emitted);
        for (int k = 0; k < 50; ++k) {
            emit worker->signal_getCurrentPos(0);
            emit worker->signal_getDevState(0);
            emit worker->signal_getDevState(1);
        }
        emit worker->signal_stopMotor(0);
        emitted.release();
        settle(*worker);
        QCOMPARE(simulator::callCount("getCurrentPos"), int(PollQueue::Limit));
        QCOMPARE(simulator::callCount("getRuningState"), 2 * PollQueue::Limit);
        QCOMPARE(calls().last(), QStringLiteral("stopRuning(1001, 0)"));
        // Nothing is lost for good: the next poll is made.
        emit worker->signal_getCurrentPos(0);
        settle(*worker);
        QCOMPARE(calls().last(), QStringLiteral("getCurrentPos(1001, 0)"));
    }
    void callsFromBothThreadsNeverOverlap()
    {
        const auto worker = openDevice();
        for (int k = 0; k < 300; ++k) {
            emit worker->signal_getCurrentPos(k % 3);
            emit worker->signal_getDevState(k % 3);
            worker->getDevAxisCount();
            worker->readAxisParams(k % 2);
        }
        settle(*worker);
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
    }

private:
    static constexpr std::array<const char *, 14> axisReads = {
        "getMotorModelName", "getMotorSerialNumber", "getCurrentPos",         "getSpeed",      "getAcceleration",
        "getRelativeDisp",   "getTargetPos",         "getRelativeDispEnable", "getJogStep",    "getJogDelay",
        "getJogCount",       "getCircleCount",       "getCircleDisp",         "getCircleDelay"};

    static QSharedPointer<SerialComDev> openDevice()
    {
        const auto worker = SerialComDev::instance();
        [&] { QCOMPARE(worker->open(device), device); }();
        simulator::clearJournal();
        return worker;
    }

    /**
     * Waits until the worker has run everything that was requested, and its answers have arrived. A spy on the worker
     * records in the worker's thread: it is read only after this.
     */
    static void settle(SerialComDev &worker)
    {
        QMetaObject::invokeMethod(
            &worker, [] {}, Qt::BlockingQueuedConnection);
        QCoreApplication::processEvents();
    }

    /** Keeps the worker's thread from its requests until `released`, without a library call in flight. */
    static void occupy(SerialComDev &worker, QSemaphore &released)
    {
        QMetaObject::invokeMethod(
            &worker, [&released] { released.acquire(); }, Qt::QueuedConnection);
    }

    static QList<QVariant> message(int axis, int state, int type, const QString &text)
    {
        return {axis, state, type, text};
    }

    /** Gives every parameter of axis 0 a value of its own, behind the worker's back. */
    static void prepareAxis(double speed = 2.5)
    {
        simulator::setPosition(device, 0, -12.5);
        setSpeed(device, 0, speed);
        setAcceleration(device, 0, 3.5);
        setRelativeDisp(device, 0, 4.5);
        setRelativeDispEnable(device, 0, 1);
        setTargetPos(device, 0, -5.5);
        setJogStep(device, 0, 6.5);
        setJogDelay(device, 0, 7);
        setJogCount(device, 0, 8);
        setCircleCount(device, 0, 9);
        setCircleDisp(device, 0, 10.5);
        setCircleDelay(device, 0, 11);
        simulator::clearJournal();
    }

    static void requestTable()
    {
        QTest::addColumn<Request>("request");
        QTest::addColumn<QVector<Step>>("steps");
        QTest::addColumn<Expected>("success");
        const auto row = [](const char *name, const Request &request, const QVector<Step> &steps, Expected success) {
            QTest::newRow(name) << request << steps << success;
        };
        row("speed", [](SerialComDev &w) { emit w.signal_setSpeedParams(1, 20.5, 10.25); },
            {{"setSpeed(1001, 1, 10.25)", "设置速度参数出错", 99},
             {"setAcceleration(1001, 1, 20.5)", "设置加速度参数出错", 99}},
            {99, "设置参数，速度：10.25，加速度：20.5"});
        row("relative displacement", [](SerialComDev &w) { emit w.signal_setRelativeDispParams(1, 1234.567, true); },
            {{"setRelativeDisp(1001, 1, 1234.567)", "设置相对位移参数出错", 99},
             {"setRelativeDispEnable(1001, 1, 1)", "设置相对位移使能参数出错", 99}},
            {4, "设置参数，相对位移：1234.567，使能：1"});
        row("relative displacement off", [](SerialComDev &w) { emit w.signal_setRelativeDispParams(1, 2, false); },
            {{"setRelativeDisp(1001, 1, 2)", "设置相对位移参数出错", 99},
             {"setRelativeDispEnable(1001, 1, 0)", "设置相对位移使能参数出错", 99}},
            {4, "设置参数，相对位移：2，使能：0"});
        row("target", [](SerialComDev &w) { emit w.signal_setAbsoluteDispParams(1, -2.5); },
            {{"setTargetPos(1001, 1, -2.5)", "设置目标位置参数出错", 99}}, {2, "设置参数，目标位置：-2.5"});
        row("jog", [](SerialComDev &w) { emit w.signal_setJogParams(1, 0.5, 3, 200); },
            {{"setJogStep(1001, 1, 0.5)", "设置JOG步长失败", 6},
             {"setJogCount(1001, 1, 3)", "设置JOG次数失败", 6},
             {"setJogDelay(1001, 1, 200)", "设置JOG延时时间失败", 6}},
            {6, "JOG步长：0.5, JOG次数：3, JOG延时:200"});
        row("loop", [](SerialComDev &w) { emit w.signal_setCircleParams(1, 5, 2.5, 300); },
            {{"setCircleCount(1001, 1, 5)", "设置循环次数失败", 11},
             {"setCircleDisp(1001, 1, 2.5)", "设置循环位移量失败", 11},
             {"setCircleDelay(1001, 1, 300)", "设置循环停留时间失败", 11}},
            {11, "循环次数：5, 循环位移：2.5"});
        row("trigger", [](SerialComDev &w) { emit w.signal_setTriggerParams(1, 1, 0); },
            {{"setTriggerInEnable(1001, 1, 1)", "设置触发输入参数失败，轴:1", 11},
             {"setTriggerOutEnable(1001, 1, 0)", "设置触发输出参数失败，轴:1", 11}},
            {0, ""});
        row("trigger displacement", [](SerialComDev &w) { emit w.signal_setTriggerInDisp(1, -1.5); },
            {{"setTriggerStep(1001, 1, -1.5)", "设置触发输入位移量失败，轴:1", 11}}, {0, ""});
        row("stop", [](SerialComDev &w) { emit w.signal_stopMotor(1); }, {{"stopRuning(1001, 1)", "停止运行", 8}},
            {8, "停止运行"});
        row("home", [](SerialComDev &w) { emit w.signal_home(1); }, {{"home(1001, 1)", "电机复位", 13}},
            {13, "电机复位"});
        row("enable", [](SerialComDev &w) { emit w.signal_enableMotor(1, true); },
            {{"setMotorEnable(1001, 1, 1)", nullptr, 0}}, {0, ""});
        row("disable", [](SerialComDev &w) { emit w.signal_enableMotor(1, false); },
            {{"setMotorEnable(1001, 1, 0)", nullptr, 0}}, {0, ""});
        row("joystick", [](SerialComDev &w) { emit w.signal_setRockerEnabled(false); },
            {{"setRockerEnable(1001, 0)", nullptr, 0}}, {0, ""});
        row("joystick on", [](SerialComDev &w) { emit w.signal_setRockerEnabled(true); },
            {{"setRockerEnable(1001, 1)", nullptr, 0}}, {0, ""});
        row("compensation", [](SerialComDev &w) { emit w.signal_setPosConpenEnable(1, true); },
            {{"setPosConpenEnable(1001, 1, 1)", nullptr, 0}}, {0, ""});
        row("compensation off", [](SerialComDev &w) { emit w.signal_setPosConpenEnable(1, false); },
            {{"setPosConpenEnable(1001, 1, 0)", nullptr, 0}}, {0, ""});
    }
};

QTEST_GUILESS_MAIN(tst_SerialComDev)
#include "tst_SerialComDev.moc"
