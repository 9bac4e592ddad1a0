// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"
#include "device/MotionLibrary.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "shell/Scenario.h"
#include "support/SignalCounter.h"

#include <atomic>
#include <future>

namespace {

constexpr int device = 1001;
constexpr int other = 1002;

using State = ControlSession::State;
using Outcome = ControlSession::AxisSetUp::Outcome;

/** Counts what it hears, and where. */
class Ear final : public AnswerListener
{
public:
    void positionAnswered(int axis, double position, Time at) override
    {
        lastPosition = position;
        note(axis, at);
    }
    void stateAnswered(int axis, const MotorStageState &, Time at) override { note(axis, at); }
    void pollFailed(int axis, Time at) override
    {
        ++failures;
        note(axis, at);
    }
    void commandAnswered(const MotionCommand &command, Time) override { commands += command.isAccepted(); }

    std::atomic<int> answers{0};
    std::atomic<int> failures{0};
    std::atomic<int> commands{0};
    std::atomic<double> lastPosition{-1};
    std::atomic<bool> inOtherThread{false};
    std::atomic<Time> last{Time()};

private:
    void note(int, Time at)
    {
        inOtherThread = std::this_thread::get_id() != m_gui;
        last = at;
        ++answers;
    }

    const std::thread::id m_gui = std::this_thread::get_id();
};

} // namespace

class tst_ControlSession : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void isOneForAllThatHoldIt();
    void knowsWhetherAControllerIsConnected();
    void aFailedConnectChangesNothing();
    void aDisconnectThatTheLibraryHoldsUpChangesNothing();

    void tellsWhetherThePortIsLost_data();
    void tellsWhetherThePortIsLost();
    void doesNotAskForThePortWhileDisconnected();
    void doesNotWaitForABusyLibraryToTellWhetherThePortIsLost();

    void setsUpTheAxesThatIdentifyThemselves();
    void tellsWhichReadOfAnAxisFailed();
    void oneFailureEndsACountThatCannotBeTrue();

    void keepsTheLastAnswersOfAnAxisWithTheirTimes();
    void everyAnswerCanBeHeardInTheWorkersThread();
    void anAxisIsHomedWhenAnAcceptedHomingHasEnded();
    void tellsWhenEverythingIsStopped();

    void reconnectsWithoutMovingAnything();
    void doesNotReconnectToAnotherController();
    void aReconnectThatFailsCanBeTriedAgain();

private:
    QStringList poll(int axis) const;

    QSharedPointer<ControlSession> m_session;
};

void tst_ControlSession::init()
{
    play({{device, "A", {{'w', "LIN-100"}, {'b'}, {'w', "ROT-60", 1}}}, {other, "B"}});
    m_session = ControlSession::instance();
}

void tst_ControlSession::cleanup()
{
    simulator::clearFaults();
    simulator::releaseHung();
    m_session.reset();
    QVERIFY(SerialComDev::endThread(5000));
    QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
}

void tst_ControlSession::isOneForAllThatHoldIt()
{
    QCOMPARE(ControlSession::instance(), m_session);
    QCOMPARE(m_session->connectTo({device, "SIM-A"}), device);
    QVERIFY(ControlSession::instance()->isConnected());
    m_session.reset();
    QVERIFY(ControlSession::instance()->isConnected()); // the next one asks the worker
    QCOMPARE(ControlSession::instance()->deviceId(), device);
}

// ---- Controller

void tst_ControlSession::knowsWhetherAControllerIsConnected()
{
    QVector<State> states;
    connect(m_session.data(), &ControlSession::stateChanged, this, [&] { states.append(m_session->state()); });
    QCOMPARE(m_session->state(), State::Disconnected);
    QCOMPARE(m_session->connectTo({device, "SIM-A"}), device);
    QVERIFY(m_session->isConnected());
    QCOMPARE(m_session->deviceId(), device);
    QCOMPARE(m_session->serialNumber(), QStringLiteral("SIM-A"));
    QVERIFY(SerialComDev::instance()->isOpened());
    QVERIFY(m_session->disconnectController());
    QVERIFY(!m_session->isConnected());
    QCOMPARE(m_session->deviceId(), 0);
    QCOMPARE(m_session->serialNumber(), QStringLiteral("SIM-A")); // of the last one
    QVERIFY(!SerialComDev::instance()->isOpened());
    QCOMPARE(states, (QVector<State>{State::Connecting, State::Connected, State::Disconnected}));
}

void tst_ControlSession::aFailedConnectChangesNothing()
{
    simulator::failCall("openTSDevice", -7);
    QCOMPARE(m_session->connectTo({device, "SIM-A"}), -7);
    QCOMPARE(m_session->state(), State::Disconnected);
    QCOMPARE(m_session->connectTo({device, "SIM-A"}), device);
    simulator::failCall("openTSDevice", -7);
    QCOMPARE(m_session->connectTo({other, "SIM-B"}), -7);
    QVERIFY(m_session->isConnected());
    QCOMPARE(m_session->deviceId(), device);
    QCOMPARE(m_session->serialNumber(), QStringLiteral("SIM-A"));
}

void tst_ControlSession::aDisconnectThatTheLibraryHoldsUpChangesNothing()
{
    m_session->connectTo({device, "SIM-A"});
    simulator::hangCall("getCurrentPos");
    emit SerialComDev::instance()->signal_getCurrentPos(0);
    QVERIFY(simulator::waitUntilHanging(5000));
    QVERIFY(!m_session->reconnect(50));
    QVERIFY(m_session->isConnected());
    QCOMPARE(m_session->deviceId(), device);
}

void tst_ControlSession::tellsWhetherThePortIsLost_data()
{
    QTest::addColumn<int>("unplugged");
    QTest::addColumn<int>("plugged");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("lost");
    QTest::newRow("still there") << 0 << 0 << 0 << false;
    QTest::newRow("another one comes") << 0 << 1003 << 0 << false;
    QTest::newRow("another one goes") << other << 0 << 0 << false;
    QTest::newRow("gone, another one stays") << device << 0 << 0 << true;
    QTest::newRow("cannot be listed") << 0 << 0 << -9 << true;
}

void tst_ControlSession::tellsWhetherThePortIsLost()
{
    QFETCH(int, unplugged);
    QFETCH(int, plugged);
    QFETCH(int, status);
    play({{device, "A"}, {other, "B"}, {1003, "C", {{}}, false}});
    m_session->connectTo({device, "SIM-A"});
    if (unplugged)
        simulator::unplug(unplugged);
    if (plugged)
        simulator::plug(plugged);
    if (status < 0)
        simulator::failCall("listTSMotorControlerDevices", status);
    const std::optional<bool> lost = m_session->isPortLost();
    QVERIFY(lost.has_value());
    QTEST(*lost, "lost");

    // Nobody listed is on purpose not taken for a loss.
    for (const int id : {device, other, 1003})
        simulator::unplug(id);
    QCOMPARE(m_session->isPortLost(), std::optional<bool>(false));
}

void tst_ControlSession::doesNotAskForThePortWhileDisconnected()
{
    m_session->connectTo({device, "SIM-A"});
    m_session->disconnectController();
    simulator::clearJournal();
    simulator::failAlways("listTSMotorControlerDevices", -9);
    QCOMPARE(m_session->isPortLost(), std::optional<bool>(false));
    QCOMPARE(calls(), QStringList());
}

void tst_ControlSession::doesNotWaitForABusyLibraryToTellWhetherThePortIsLost()
{
    m_session->connectTo({device, "SIM-A"});
    std::promise<void> held;
    std::promise<void> done;
    auto another = std::async(std::launch::async, [&] {
        const LibraryLock library;
        held.set_value();
        done.get_future().wait();
    });
    held.get_future().wait();
    const std::optional<bool> lost = m_session->isPortLost();
    done.set_value();
    another.get();
    QCOMPARE(lost, std::optional<bool>());
    QCOMPARE(m_session->isPortLost(), std::optional<bool>(false));
}

// ---- Axes

void tst_ControlSession::setsUpTheAxesThatIdentifyThemselves()
{
    m_session->connectTo({device, "SIM-A"});
    m_session->beginSetUp();
    QCOMPARE(m_session->axisCount(), 3);
    const auto first = m_session->setUpAxis(0);
    QCOMPARE(first.outcome, Outcome::Ready);
    QCOMPARE(first.modelName, QStringLiteral("LIN-100"));
    QVERIFY(!first.isLast);
    QCOMPARE(m_session->setUpAxis(1).outcome, Outcome::NoStage);
    const auto last = m_session->setUpAxis(2);
    QVERIFY(last.isLast);
    m_session->readFirmwareVersion();
    QCOMPARE(m_session->firmwareVersion(), QStringLiteral("2.4.1 simulated"));
    QVERIFY(ControlSession::library().isSimulated());
    QVERIFY(!m_session->readJoystick());

    QVERIFY(!m_session->axis(1));
    const AxisDescription axis = m_session->axis(2)->description();
    QCOMPARE(axis.name(), QStringLiteral("Axis3"));
    QCOMPARE(axis.modelName, QStringLiteral("ROT-60"));
    QCOMPARE(axis.unit, QStringLiteral("°"));
    QCOMPARE(axis.minPos, last.stage.minPos);
    QCOMPARE(axis.maxPos, last.stage.maxPos);
    QCOMPARE(axis.travel(), last.stage.maxPos - last.stage.minPos);
    QCOMPARE(axis.maxSpeed, last.stage.maxSpeed);
    QCOMPARE(axis.maxAcceleration, last.stage.maxAcc);
    QCOMPARE(axis.maxRockerSpeed, 10.);

    m_session->disconnectController();
    QCOMPARE(m_session->axisCount(), 0);
    QVERIFY(!m_session->axis(2));
}

void tst_ControlSession::tellsWhichReadOfAnAxisFailed()
{
    m_session->connectTo({device, "SIM-A"});
    m_session->beginSetUp();
    simulator::failCall("getMotorAutoDetect", -5);
    auto axis = m_session->setUpAxis(0);
    QCOMPARE(axis.outcome, Outcome::ChipNotRead);
    QVERIFY(axis.failed());
    simulator::failCall("getMotorModelName", -5);
    QCOMPARE(m_session->setUpAxis(0).outcome, Outcome::NoStage); // passed over
    simulator::failCall("getSpeed", -5);
    axis = m_session->setUpAxis(0);
    QCOMPARE(axis.outcome, Outcome::ParamsNotRead);
    QCOMPARE(axis.step, -4);
    QVERIFY(!m_session->axis(0));
}

void tst_ControlSession::oneFailureEndsACountThatCannotBeTrue()
{
    m_session->connectTo({device, "SIM-A"});
    simulator::answerNumber("getDevAxisCount", 1000);
    m_session->beginSetUp();
    simulator::failAlways("getMotorAutoDetect", -5);
    QVERIFY(!m_session->setUpAxis(7).isLast);
    QVERIFY(m_session->setUpAxis(8).isLast);
}

// ---- Answers

/** Asks for position and state of the axis, and waits for both. */
QStringList tst_ControlSession::poll(int axis) const
{
    simulator::clearJournal();
    emit SerialComDev::instance()->signal_getCurrentPos(axis);
    emit SerialComDev::instance()->signal_getDevState(axis);
    while (simulator::journal().size() < 2)
        QTest::qWait(1);
    const LibraryLock afterTheWorker; // which tells its listeners while it holds the lock
    return calls();
}

void tst_ControlSession::keepsTheLastAnswersOfAnAxisWithTheirTimes()
{
    m_session->connectTo({device, "SIM-A"});
    m_session->beginSetUp();
    m_session->setUpAxis(0);
    const auto axis = m_session->axis(0);
    QVERIFY(!axis->lastPosition() && !axis->lastState() && !axis->isMoving());

    simulator::setPosition(device, 0, 12.5);
    const auto before = std::chrono::steady_clock::now();
    poll(0);
    const auto after = std::chrono::steady_clock::now();
    QCOMPARE(axis->lastPosition()->value, 12.5);
    QCOMPARE(axis->lastState()->value.isStop, qint16(1));
    QVERIFY(!axis->isMoving());
    for (const auto at : {axis->lastPosition()->at, axis->lastState()->at})
        QVERIFY(before <= at && at <= after);

    const auto first = axis->lastPosition()->at;
    poll(0); // the same answer again
    QVERIFY(axis->lastPosition()->at > first);

    MotorStageState moving = {};
    moving.isCanRun = 1;
    simulator::setState(device, 0, moving);
    poll(0);
    QVERIFY(axis->isMoving());
    simulator::failCall("getRuningState", -4);
    poll(0);
    QVERIFY(axis->isMoving()); // what was known last
}

void tst_ControlSession::everyAnswerCanBeHeardInTheWorkersThread()
{
    m_session->connectTo({device, "SIM-A"});
    const auto worker = SerialComDev::instance();
    const SignalCounter changes(worker.data(), &SerialComDev::signal_positionChanged);
    Ear ear;
    worker->answers().add(&ear);
    for (int k = 0; k < 3; ++k)
        poll(0);
    QCOMPARE(ear.answers.load(), 6);
    QVERIFY(ear.inOtherThread);
    QCOMPARE(ear.lastPosition.load(), 0.);
    QCOMPARE(changes.count(), 1); // the panels hear of one
    simulator::failCall("getCurrentPos", -4);
    poll(0);
    QCOMPARE(ear.failures.load(), 1);
    worker->answers().remove(&ear);
    poll(0);
    QCOMPARE(ear.answers.load(), 8);
}

// ---- Connecting again

void tst_ControlSession::anAxisIsHomedWhenAnAcceptedHomingHasEnded()
{
    m_session->connectTo({device, "SIM-A"});
    m_session->beginSetUp();
    m_session->setUpAxis(0);
    const auto axis = m_session->axis(0);
    simulator::setPosition(device, 0, 5);
    for (const bool refused : {true, false}) {
        if (refused)
            simulator::failCall("home", -9);
        emit SerialComDev::instance()->signal_home(0);
        poll(0);
        simulator::advance(1000);
        if (refused)
            simulator::setPosition(device, 0, 0); // at the origin, but not by homing
        poll(0);
        QCOMPARE(axis->trust().kind, refused ? AxisTrust::NotHomed : AxisTrust::Homed);
    }
}

void tst_ControlSession::tellsWhenEverythingIsStopped()
{
    m_session->connectTo({device, "SIM-A"});
    const QSignalSpy requests(m_session.data(), &ControlSession::stopAllRequested);
    m_session->stopAll();
    QCOMPARE(requests.count(), 1);
    QTRY_VERIFY(!SerialComDev::instance()->isStoppingAll());
}

void tst_ControlSession::reconnectsWithoutMovingAnything()
{
    m_session->connectTo({device, "SIM-A"});
    m_session->beginSetUp();
    m_session->setUpAxis(0);
    simulator::unplug(device);
    simulator::plug(device);
    simulator::clearJournal();
    QVERIFY(m_session->reconnect(5000));
    QCOMPARE(
        calls(), (QStringList{
                     "closeTSDevice(1001)", "removeDev(1001)", "addDev(1001)", "openTSDevice(1001)",
                     "getDevSerialNumber(1001)"}));
    QVERIFY(m_session->isConnected());
    QVERIFY(SerialComDev::instance()->isOpened());
    QVERIFY(m_session->axis(0));
    QCOMPARE(m_session->axisCount(), 3);
}

void tst_ControlSession::doesNotReconnectToAnotherController()
{
    m_session->connectTo({device, "SIM-A"});
    simulator::answerText("getDevSerialNumber", "SIM-Z");
    QVERIFY(!m_session->reconnect(5000));
    QCOMPARE(m_session->state(), State::Connecting);
    QCOMPARE(calls().last(), QStringLiteral("removeDev(1001)"));
    QCOMPARE(SerialComDev::instance()->deviceId(), 0);
}

void tst_ControlSession::aReconnectThatFailsCanBeTriedAgain()
{
    QVERIFY(!m_session->reconnect(5000)); // to nothing
    m_session->connectTo({device, "SIM-A"});
    simulator::failCall("openTSDevice", -3);
    QVERIFY(!m_session->reconnect(5000));
    QCOMPARE(m_session->state(), State::Connecting);
    QVERIFY(m_session->reconnect(5000));
    QCOMPARE(m_session->state(), State::Connected);
}

QTEST_GUILESS_MAIN(tst_ControlSession)
#include "tst_ControlSession.moc"
