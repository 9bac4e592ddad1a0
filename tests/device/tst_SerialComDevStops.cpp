// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/SignalCounter.h"

#include <QtTest>

#include <mutex>

namespace {

constexpr int device = 1001;

QStringList calls()
{
    QStringList list;
    for (const simulator::Call &call : simulator::journal())
        list.append(QString::fromStdString(call.function + '(' + call.arguments + ')'));
    return list;
}

/** The operation messages, from whichever thread. */
class Messages final : public QObject
{
public:
    struct Message {
        int axis;
        int state;
        int type;
        QString text;
        bool operator==(const Message &other) const
        {
            return axis == other.axis && state == other.state && type == other.type && text == other.text;
        }
    };

    Messages()
    {
        connect(
            SerialComDev::instance().data(), &SerialComDev::signal_showOperationMsg, this,
            [this](int axis, int state, int type, const QString &text) {
                const std::lock_guard lock(m_mutex);
                m_all.append({axis, state, type, text});
            },
            Qt::DirectConnection);
    }
    QVector<Message> with(int state) const
    {
        const std::lock_guard lock(m_mutex);
        QVector<Message> some;
        std::copy_if(m_all.begin(), m_all.end(), std::back_inserter(some), [state](const Message &each) {
            return each.state == state;
        });
        return some;
    }

private:
    mutable std::mutex m_mutex;
    QVector<Message> m_all;
};

} // namespace

/** What a stop waits for, and what it does not wait for. */
class tst_SerialComDevStops : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aStopWaitsForTheCallInFlightOnly();
    void aStopThatComesEarlyInASlowCallWaitsForThatCallOnly();
    void aStopKeepsItsOrderOnAQuickLink();
    void commandsBeforeAStopStillRunBeforeIt();
    void pollsCalledDirectlyAlwaysAct();
    void aStopGoesBeforeOtherThreadsThatWait();
    void otherThreadsGoOnAfterTheStop();

    void stopAllStopsEveryAxis();
    void stopAllTakesTheAxesBackFromTheJoystickFirst();
    void stopAllTakesTheAxesBackWhereNobodyHasAsked();
    void stopAllGoesBeforeEverythingThatWaits();
    void eachStopAllSendsAgain();
    void stopAllCancelsTheStartsBeforeIt();
    void aStartAfterAStopAllIsMade();
    void stopAllOfAControllerThatHasNotToldItsAxesStopsThree();
    void stopAllWithoutAControllerDoesNothing();
    void stopAllReportsEachAxis();
    void anEndingThreadKeepsNobodyWaitingForItsStops();

private:
    void hangInAPoll();
    QStringList callsAfterTheHang(int count);

    QSharedPointer<SerialComDev> m_worker;
};

void tst_SerialComDevStops::init()
{
    registerDeviceRecords();
    simulator::reset();
    m_worker = SerialComDev::instance();
    QCOMPARE(m_worker->open(device), device);
    QCOMPARE(m_worker->getDevAxisCount(), 3);
    QCOMPARE(m_worker->getRockerEnable(), 0);
    simulator::clearJournal();
}

void tst_SerialComDevStops::cleanup()
{
    simulator::releaseHung();
    m_worker.reset();
    QVERIFY(SerialComDev::endThread(5000));
    QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
}

/** The worker is in a call that has lasted long. */
void tst_SerialComDevStops::hangInAPoll()
{
    simulator::hangCall("getCurrentPos");
    emit m_worker->signal_getCurrentPos(0);
    QVERIFY(simulator::waitUntilHanging(5000));
    QTRY_VERIFY(LibraryLock::heldFor() > std::chrono::milliseconds(20));
}

/** Lets the call go on; what came after it, up to so many calls and as long as anything still comes. */
QStringList tst_SerialComDevStops::callsAfterTheHang(int count)
{
    simulator::releaseHung();
    [&] { QTRY_VERIFY(calls().size() > count); }();
    m_worker->close(); // after all that was requested
    QStringList after = calls().mid(1);
    after.removeAll(QStringLiteral("closeTSDevice(1001)"));
    after.removeAll(QStringLiteral("removeDev(1001)"));
    return after;
}

// ---- Stop first

void tst_SerialComDevStops::aStopWaitsForTheCallInFlightOnly()
{
    hangInAPoll();
    for (int axis = 0; axis < 3; ++axis) {
        emit m_worker->signal_getCurrentPos(axis);
        emit m_worker->signal_getDevState(axis);
    }
    emit m_worker->signal_requestHeartBeat();
    emit m_worker->signal_requestConsoleHeartBeat();
    emit m_worker->signal_stopMotor(1);
    emit m_worker->signal_getDevState(2); // the next timer asks again
    QCOMPARE(callsAfterTheHang(2), (QStringList{"stopRuning(1001, 1)", "getRuningState(1001, 2)"}));
}

void tst_SerialComDevStops::aStopThatComesEarlyInASlowCallWaitsForThatCallOnly()
{
    simulator::hangCall("getCurrentPos");
    emit m_worker->signal_getCurrentPos(0);
    QVERIFY(simulator::waitUntilHanging(5000));
    emit m_worker->signal_getDevState(0);
    emit m_worker->signal_stopMotor(1); // nobody can tell yet that the call is a slow one
    QTRY_VERIFY(LibraryLock::heldFor() > std::chrono::milliseconds(25));
    QCOMPARE(callsAfterTheHang(1), QStringList("stopRuning(1001, 1)"));
}

void tst_SerialComDevStops::aStopKeepsItsOrderOnAQuickLink()
{
    emit m_worker->signal_getCurrentPos(0);
    emit m_worker->signal_stopMotor(0);
    emit m_worker->signal_getDevState(0);
    QTRY_COMPARE(calls(), (QStringList{"getCurrentPos(1001, 0)", "stopRuning(1001, 0)", "getRuningState(1001, 0)"}));
}

void tst_SerialComDevStops::commandsBeforeAStopStillRunBeforeIt()
{
    hangInAPoll();
    emit m_worker->signal_setAbsoluteDispParams(0, 5);
    emit m_worker->signal_getDevState(0);
    emit m_worker->signal_startMotor(0, MOVE_CODE_MOVE);
    emit m_worker->signal_stopMotor(0);
    QCOMPARE(
        callsAfterTheHang(3), (QStringList{"setTargetPos(1001, 0, 5)", "startMove(1001, 0)", "stopRuning(1001, 0)"}));
}

void tst_SerialComDevStops::pollsCalledDirectlyAlwaysAct()
{
    hangInAPoll();
    // As a queued connection to the slot itself would.
    QMetaObject::invokeMethod(m_worker.data(), "slot_heartBeat", Qt::QueuedConnection);
    QMetaObject::invokeMethod(m_worker.data(), "slot_getCurrentPos", Qt::QueuedConnection, Q_ARG(int, 2));
    emit m_worker->signal_stopMotor(0);
    QCOMPARE(
        callsAfterTheHang(3), (QStringList{"getRockerInfo(1001)", "getCurrentPos(1001, 2)", "stopRuning(1001, 0)"}));
}

void tst_SerialComDevStops::aStopGoesBeforeOtherThreadsThatWait()
{
    hangInAPoll();
    std::atomic<bool> waits{false};
    std::thread other([&] {
        waits = true;
        m_worker->getRockerEnable();
    });
    QTRY_VERIFY(waits);
    emit m_worker->signal_stopMotor(0);
    simulator::releaseHung();
    other.join();
    QTRY_COMPARE(calls().size(), 3);
    QCOMPARE(calls().at(1), QStringLiteral("stopRuning(1001, 0)"));
    QCOMPARE(calls().at(2), QStringLiteral("getRockerEnable(1001)"));
}

void tst_SerialComDevStops::otherThreadsGoOnAfterTheStop()
{
    for (int k = 0; k < 100; ++k) {
        emit m_worker->signal_stopMotor(k % 3);
        QVERIFY(m_worker->getRockerEnable() >= 0); // by this thread
    }
    QTRY_COMPARE(simulator::callCount("stopRuning"), 100);
    QVERIFY(LibraryLock(5000).isLocked());
}

// ---- Stop all

void tst_SerialComDevStops::stopAllStopsEveryAxis()
{
    const SignalCounter done(m_worker.data(), &SerialComDev::signal_stopAllDone);
    m_worker->stopAll();
    QTRY_COMPARE(done.count(), 1);
    QCOMPARE(calls(), (QStringList{"stopRuning(1001, 0)", "stopRuning(1001, 1)", "stopRuning(1001, 2)"}));
    QVERIFY(!m_worker->isStoppingAll());
}

void tst_SerialComDevStops::stopAllTakesTheAxesBackFromTheJoystickFirst()
{
    simulator::setJoystick(device, true, 3);
    QVERIFY(m_worker->setRockerEnable(1) >= 0);
    QVERIFY(m_worker->isRockerOn());
    simulator::clearJournal();
    m_worker->stopAll();
    QTRY_VERIFY(!m_worker->isStoppingAll());
    QCOMPARE(
        calls(),
        (QStringList{"setRockerEnable(1001, 0)", "stopRuning(1001, 0)", "stopRuning(1001, 1)", "stopRuning(1001, 2)"}));
    QVERIFY(!m_worker->isRockerOn());
    simulator::clearJournal();
    m_worker->stopAll(); // now there is nothing to take back
    QTRY_COMPARE(simulator::callCount("stopRuning"), 3);
    QCOMPARE(simulator::callCount("setRockerEnable"), 0);
}

void tst_SerialComDevStops::stopAllTakesTheAxesBackWhereNobodyHasAsked()
{
    m_worker->close();
    QCOMPARE(m_worker->open(device), device); // and another program has left it in joystick mode
    simulator::clearJournal();
    m_worker->stopAll();
    QTRY_VERIFY(!m_worker->isStoppingAll());
    QCOMPARE(calls().first(), QStringLiteral("setRockerEnable(1001, 0)"));
}

void tst_SerialComDevStops::stopAllGoesBeforeEverythingThatWaits()
{
    hangInAPoll();
    emit m_worker->signal_setAbsoluteDispParams(0, 5);
    emit m_worker->signal_stopMotor(2);
    std::atomic<bool> waits{false};
    std::thread other([&] {
        waits = true;
        m_worker->getRockerEnable();
    });
    QTRY_VERIFY(waits);
    m_worker->stopAll();
    simulator::releaseHung();
    other.join();
    QTRY_COMPARE(calls().size(), 7);
    QCOMPARE(calls().mid(1, 3), (QStringList{"stopRuning(1001, 0)", "stopRuning(1001, 1)", "stopRuning(1001, 2)"}));
    // What was requested before is only later.
    QCOMPARE(calls().mid(4, 2), (QStringList{"setTargetPos(1001, 0, 5)", "stopRuning(1001, 2)"}));
}

void tst_SerialComDevStops::eachStopAllSendsAgain()
{
    hangInAPoll();
    QVERIFY(!m_worker->isStoppingAll());
    m_worker->stopAll(); // returns while the library hangs
    QVERIFY(m_worker->isStoppingAll());
    m_worker->stopAll();
    simulator::releaseHung();
    QTRY_VERIFY(!m_worker->isStoppingAll());
    QCOMPARE(simulator::callCount("stopRuning"), 6);
}

void tst_SerialComDevStops::stopAllCancelsTheStartsBeforeIt()
{
    const Messages messages;
    hangInAPoll();
    emit m_worker->signal_startMotor(0, MOVE_CODE_JOG_POSITIVE);
    emit m_worker->signal_home(1);
    emit m_worker->signal_setRockerEnabled(true);
    emit m_worker->signal_setSpeedParams(2, 50, 5);
    m_worker->stopAll();
    const QStringList after = callsAfterTheHang(5);
    QCOMPARE(
        after.mid(3), (QStringList{"setSpeed(1001, 2, 5)", "setAcceleration(1001, 2, 50)"})); // parameters are written
    using List = QVector<Messages::Message>;
    QCOMPARE(
        messages.with(OPERATION_STATE_CANCELLED),
        (List{
            {0, OPERATION_STATE_CANCELLED, OPERATION_TYPE_JOG, QStringLiteral("正方向Jog")},
            {1, OPERATION_STATE_CANCELLED, OPERATION_TYPE_HOME, QStringLiteral("电机复位")}}));
}

void tst_SerialComDevStops::aStartAfterAStopAllIsMade()
{
    hangInAPoll();
    m_worker->stopAll();
    emit m_worker->signal_startMotor(0, MOVE_CODE_MOVE);
    QCOMPARE(callsAfterTheHang(4).value(3), QStringLiteral("startMove(1001, 0)"));
}

void tst_SerialComDevStops::stopAllOfAControllerThatHasNotToldItsAxesStopsThree()
{
    m_worker->close();
    QCOMPARE(m_worker->open(device), device); // and nobody asks for its axes
    simulator::clearJournal();
    m_worker->stopAll();
    QTRY_VERIFY(!m_worker->isStoppingAll());
    QCOMPARE(simulator::callCount("stopRuning"), 3);
    simulator::answerNumber("getDevAxisCount", 1000);
    m_worker->getDevAxisCount();
    simulator::clearJournal();
    m_worker->stopAll();
    QTRY_VERIFY(!m_worker->isStoppingAll());
    QCOMPARE(simulator::callCount("stopRuning"), 8); // more has no controller

    simulator::failCall("getDevAxisCount", -9);
    QVERIFY(m_worker->getDevAxisCount() < 0); // which does not take away what is known
    simulator::clearJournal();
    m_worker->stopAll();
    QTRY_VERIFY(!m_worker->isStoppingAll());
    QCOMPARE(simulator::callCount("stopRuning"), 8);
}

void tst_SerialComDevStops::stopAllWithoutAControllerDoesNothing()
{
    m_worker->close();
    simulator::clearJournal();
    m_worker->stopAll();
    QVERIFY(!m_worker->isStoppingAll());
    QVERIFY(LibraryLock(5000).isLocked());
    QCOMPARE(calls(), QStringList());
}

void tst_SerialComDevStops::stopAllReportsEachAxis()
{
    const Messages messages;
    simulator::failCall("stopRuning", -4, 2);
    m_worker->stopAll();
    QTRY_VERIFY(!m_worker->isStoppingAll());
    const QString text = QStringLiteral("停止运行");
    using List = QVector<Messages::Message>;
    QCOMPARE(
        messages.with(OPERATION_STATE_OK),
        (List{{0, OPERATION_STATE_OK, OPERATION_TYPE_STOP, text}, {2, OPERATION_STATE_OK, OPERATION_TYPE_STOP, text}}));
    QCOMPARE(messages.with(OPERATION_STATE_FAIL), (List{{1, OPERATION_STATE_FAIL, OPERATION_TYPE_STOP, text}}));
}

void tst_SerialComDevStops::anEndingThreadKeepsNobodyWaitingForItsStops()
{
    hangInAPoll();
    emit m_worker->signal_stopMotor(0);
    m_worker.reset();
    QVERIFY(!SerialComDev::endThread(20)); // the stop is dropped
    simulator::releaseHung();
    QVERIFY(SerialComDev::endThread(5000));
    QVERIFY(LibraryLock(5000).isLocked());
}

QTEST_GUILESS_MAIN(tst_SerialComDevStops)
#include "tst_SerialComDevStops.moc"
