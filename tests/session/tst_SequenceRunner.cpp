// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/Recorder.h"
#include "session/RecordingCsv.h"
#include "session/SequenceRunner.h"
#include "shell/Scenario.h"

#include <QFile>

#include <cmath>
#include <functional>
#include <random>

namespace {

constexpr int device = 1001;

using End = SequenceEnd;
using Run = SequenceRunner::State;
using Step = SequenceStep;

Step step(Step::Kind kind, int axis, double value, double speed = 0, double wait = 0)
{
    Step step;
    step.kind = kind;
    step.axis = axis;
    step.value = value;
    step.speed = speed;
    step.wait = wait;
    return step;
}

Step goTo(const QString &name)
{
    Step step;
    step.kind = Step::GoTo;
    step.text = name;
    return step;
}

Step repeat(int from, int count)
{
    Step step;
    step.kind = Step::Repeat;
    step.from = from;
    step.count = count;
    return step;
}

/** Of this process; 0 under sanitizers, which keep what was given back. */
qint64 residentKiB()
{
#if defined(MOVER_SANITIZED)
    return 0;
#else
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').at(1).toLongLong() * 4 : 0;
#endif
}

const Positions places{{QStringLiteral("Load"), {{0, 5}, {1, 7}, {2, 3}}}};

} // namespace

class tst_SequenceRunner : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        play({{device, "A", {{'w', "LIN-100"}, {'w', "ROT-60", 1}, {'w', "LIFT-10", 3}}}});
        m_session = ControlSession::instance();
        QCOMPARE(m_session->connectTo({device, "SIM-A"}), device);
        m_session->beginSetUp();
        for (int axis = 0; axis < 3; ++axis)
            QCOMPARE(m_session->setUpAxis(axis).outcome, ControlSession::AxisSetUp::Ready);
        QVERIFY(!m_session->readJoystick());
        poll();
        m_messages.clear();
        connect(
            SerialComDev::instance().data(), &SerialComDev::signal_showOperationMsg, this,
            [this](int axis, int state, int, const QString &) {
                m_messages.append({axis, state});
            });
        simulator::clearJournal();
    }
    void cleanup()
    {
        simulator::clearFaults();
        simulator::releaseHung();
        m_session.reset();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
    }

    void runsEachKindOfStep()
    {
        const QObject listener;
        double least = 1;
        connect(&runner(), &SequenceRunner::signal_stateChanged, &listener, [&] {
            least = std::min(least, runner().progress());
        });
        QVERIFY(run(
            {step(Step::Home, Step::AllAxes, 0), goTo(QStringLiteral("Load")), step(Step::SetSpeed, 0, 4),
             step(Step::MoveBy, 0, 2.5), step(Step::MoveTo, 1, -3, 2), step(Step::MoveBy, 0, -0.5), repeat(5, 3)}));
        passUntilOver();
        QCOMPARE(runner().lastEnd().reason, End::Finished);
        QCOMPARE(position(0), 6.);
        QCOMPARE(position(1), -3.);
        QCOMPARE(position(2), 3.);
        QCOMPARE(least, 0.);
        QCOMPARE(runner().progress(), 1.);
        QCOMPARE(runner().secondsLeft(), 0.);
        // The report tells what was reached, and in which pass.
        const QVector<SequenceRecord> records = runner().records();
        QCOMPARE(records.size(), 8);
        QCOMPARE(records.at(1).reached, (QMap<int, double>{{0, 5}, {1, 7}, {2, 3}}));
        QCOMPARE(records.last().line, 5);
        QCOMPARE(records.last().pass, 3);
        for (const SequenceRecord &record : records)
            QVERIFY(record.isDone && record.end >= record.begin);
        // Whoever opens a popup now finds the speeds that the sequence has set.
        QCOMPARE(SerialComDev::instance()->getAxisSpeed(0), 4.);
        QCOMPARE(SerialComDev::instance()->getAxisSpeed(1), 2.);
    }

    /** The inner ones begin again with each pass of the outer ones. */
    void repeatsWithinRepeats()
    {
        QVERIFY(run(
            {step(Step::MoveBy, 0, 1), repeat(0, 2), step(Step::MoveBy, 1, 1), repeat(2, 2), step(Step::MoveBy, 2, 1),
             repeat(0, 3)}));
        passUntilOver();
        QCOMPARE(runner().lastEnd().reason, End::Finished);
        QCOMPARE(position(0), 6.);
        QCOMPARE(position(1), 6.);
        QCOMPARE(position(2), 3.);
    }

    /** All targets first, then all starts: one that is refused is not noticed when others have long been moving. */
    void startsTheAxesOfAPositionTogether()
    {
        QVERIFY(run({goTo(QStringLiteral("Load"))}));
        passUntilOver();
        QStringList made = calls();
        made.erase(
            std::remove_if(
                made.begin(), made.end(), [](const QString &call) { return call.startsWith(QLatin1String("get")); }),
            made.end());
        QCOMPARE(
            made, (QStringList{
                      "setTargetPos(1001, 0, 5)", "setTargetPos(1001, 1, 7)", "setTargetPos(1001, 2, 3)",
                      "startMove(1001, 0)", "startMove(1001, 1)", "startMove(1001, 2)"}));
    }

    void refusesWhatCannotBeRun_data()
    {
        QTest::addColumn<int>("what");
        QTest::newRow("a fault in the plan") << 0;
        QTest::newRow("nothing to do") << 1;
        QTest::newRow("one runs") << 2;
        QTest::newRow("the joystick drives") << 3;
        QTest::newRow("no controller") << 4;
    }
    void refusesWhatCannotBeRun()
    {
        QFETCH(int, what);
        const Sequence sound{QString(), {step(Step::MoveTo, 0, 1)}};
        if (what == 2)
            QVERIFY(runner().run(sound, places));
        if (what == 3)
            driveByJoystick();
        if (what == 4)
            QVERIFY(m_session->disconnectController());
        QVERIFY(!runner().run(
            what == 0   ? Sequence{QString(), {step(Step::MoveTo, 0, 1e6)}}
            : what == 1 ? Sequence()
                        : sound,
            places));
        QCOMPARE(runner().isActive(), what == 2);
    }

    /** Not by time: the axis has its distance still before it when the planned time is long over. */
    void aStepIsOverWhenTheAxisIsThere()
    {
        QVERIFY(run({step(Step::MoveTo, 0, 20), step(Step::MoveTo, 1, 5)}));
        passUntil([] { return simulator::callCount("startMove") == 1; });
        simulator::advance(0.5);
        QTest::qWait(300); // as many answers as it needs
        QCOMPARE(simulator::callCount("startMove"), 1);
        QCOMPARE(runner().line(), 0);
        passUntilOver();
        QCOMPARE(simulator::callCount("startMove"), 2);
        QCOMPARE(position(0), 20.);
    }
    void theNextStepFollowsWithoutDelay()
    {
        QVector<Step> steps;
        for (int k = 0; k < 20; ++k)
            steps.append(step(Step::MoveTo, 0, k % 2));
        QVERIFY(run(steps));
        passUntilOver();
        // By the records: 0.15 s at the most after the step before it was over, 0.03 s on a quick link.
        const QVector<SequenceRecord> records = runner().records();
        QCOMPARE(records.size(), 20);
        int quick = 0;
        for (int k = 1; k < records.size(); ++k)
            quick += records.at(k - 1).end.msecsTo(records.at(k).begin) <= 30;
        QVERIFY(quick >= 15); // the machine may be busy once
    }

    void pausesAfterTheStepAndGoesOn()
    {
        QVERIFY(run({step(Step::MoveTo, 0, 1), step(Step::MoveTo, 0, 2), step(Step::MoveTo, 0, 3)}));
        runner().pause();
        QCOMPARE(runner().state(), Run::Pausing);
        passUntil([this] { return runner().state() == Run::Paused; });
        QCOMPARE(position(0), 1.);
        QCOMPARE(runner().line(), 1);
        QCOMPARE(simulator::callCount("startMove"), 1);
        QVERIFY(isReserved(0));
        QVERIFY(runner().resume(SequenceRunner::Mode::Step));
        passUntil([this] { return runner().state() == Run::Paused; });
        QCOMPARE(position(0), 2.);
        QVERIFY(runner().resume());
        passUntilOver();
        QCOMPARE(position(0), 3.);
        QCOMPARE(runner().lastEnd().reason, End::Finished);
    }
    void waitsForTheOperator()
    {
        QVERIFY(run({step(Step::Ask, 0, 0), step(Step::MoveTo, 0, 1)}));
        QCOMPARE(runner().state(), Run::Asking);
        QTest::qWait(50);
        QCOMPARE(simulator::callCount("startMove"), 0);
        QVERIFY(runner().resume());
        passUntilOver();
        QCOMPARE(position(0), 1.);
    }
    void waits()
    {
        QElapsedTimer timer;
        timer.start();
        QVERIFY(run({step(Step::Wait, 0, 0.2), step(Step::SetSpeed, 0, 3, 0, 0)}));
        QTest::qWait(100);
        QCOMPARE(runner().line(), 0);
        passUntilOver();
        QVERIFY(timer.elapsed() >= 199);
        QCOMPARE(runner().lastEnd().reason, End::Finished);
    }

    void refusesOthersWhileItRuns()
    {
        const auto worker = SerialComDev::instance();
        const std::pair<const char *, std::function<void(int)>> requests[] = {
            {"startDrive", [&](int axis) { emit worker->signal_startMotor(axis, MOVE_CODE_DRIVE_POSITIVE); }},
            {"home", [&](int axis) { emit worker->signal_home(axis); }},
            {"setSpeed", [&](int axis) { emit worker->signal_setSpeedParams(axis, 1, 1); }},
            {"setRelativeDisp", [&](int axis) { emit worker->signal_setRelativeDispParams(axis, 1, true); }},
            {"setTargetPos", [&](int axis) { emit worker->signal_setAbsoluteDispParams(axis, 1); }},
            {"setJogStep", [&](int axis) { emit worker->signal_setJogParams(axis, 1, 1, 1); }},
            {"setCircleCount", [&](int axis) { emit worker->signal_setCircleParams(axis, 1, 1, 1); }},
            {"setTriggerInEnable", [&](int axis) { emit worker->signal_setTriggerParams(axis, 1, 1); }},
            {"setTriggerStep", [&](int axis) { emit worker->signal_setTriggerInDisp(axis, 1); }},
            {"setPosConpenEnable", [&](int axis) { emit worker->signal_setPosConpenEnable(axis, true); }},
        };
        QVERIFY(run({step(Step::Ask, 0, 0), step(Step::MoveBy, 0, 1)}));
        simulator::clearJournal();
        for (const auto &request : requests)
            request.second(0);
        QTRY_COMPARE(m_messages.size(), int(std::size(requests)));
        for (const auto &message : qAsConst(m_messages))
            QCOMPARE(message, qMakePair(0, int(OPERATION_STATE_CANCELLED)));
        QCOMPARE(calls(), QStringList());
        QVERIFY(runner().isActive());
        // An axis that the sequence does not use is free, and so is every axis afterwards.
        for (int axis : {1, 0}) {
            if (axis == 0)
                runner().stop();
            simulator::clearJournal();
            for (const auto &request : requests)
                request.second(axis);
            for (const auto &request : requests)
                QTRY_COMPARE(simulator::callCount(request.first), 1);
            emit worker->signal_stopMotor(axis);
        }
    }

    void whateverGetsInTheWayEndsIt_data()
    {
        QTest::addColumn<int>("what");
        QTest::addColumn<int>("reason");
        QTest::addColumn<int>("axis");
        QTest::newRow("its own stop") << 0 << int(End::Stopped) << -1;
        QTest::newRow("stop on the panel") << 1 << int(End::StoppedOnPanel) << 0;
        QTest::newRow("stop on the panel of another axis that it uses") << 2 << int(End::StoppedOnPanel) << 2;
        QTest::newRow("stop all") << 3 << int(End::StoppedAll) << -1;
        QTest::newRow("a start by the console") << 4 << int(End::StartedElsewhere) << 0;
        QTest::newRow("the positive limit") << 5 << int(End::PositiveLimit) << 0;
        QTest::newRow("the negative limit") << 14 << int(End::NegativeLimit) << 0;
        QTest::newRow("comes to rest elsewhere") << 6 << int(End::OffTarget) << 0;
        QTest::newRow("does not move") << 7 << int(End::DoesNotMove) << 0;
        QTest::newRow("the link is lost") << 8 << int(End::LinkLost) << 0;
        QTest::newRow("disconnecting") << 9 << int(End::Disconnected) << -1;
        QTest::newRow("the panel is closed") << 10 << int(End::PanelClosed) << 2;
        QTest::newRow("the joystick") << 11 << int(End::Joystick) << -1;
        QTest::newRow("motor parameters") << 12 << int(End::ParametersWritten) << 0;
        QTest::newRow("the program ends") << 13 << int(End::Quit) << -1;
    }
    void whateverGetsInTheWayEndsIt()
    {
        QFETCH(int, what);
        const auto worker = SerialComDev::instance();
        const bool isDown = what == 14;
        if (isDown) {
            simulator::setPosition(device, 0, 49);
            poll();
        }
        const double target = isDown ? 10 : 50;
        QVERIFY(run({step(Step::MoveTo, 0, target), step(Step::MoveTo, 2, 1)}));
        if (what == 7) {
            MotorStageState stands = {};
            stands.isStop = stands.isEnable = stands.isCanRun = 1;
            simulator::setState(device, 0, stands);
        }
        if (what != 7)
            passUntil([this, isDown] { return isDown ? position(0) < 48 : position(0) > 1; });
        MotorStageState state = {};
        state.isStop = state.isEnable = state.isCanRun = 1;
        switch (what) {
        case 0:
            runner().stop();
            break;
        case 1:
            emit worker->signal_stopMotor(0);
            break;
        case 2:
            emit worker->signal_stopMotor(2);
            break;
        case 3:
            m_session->stopAll();
            break;
        case 4:
            worker->noteCommand({0, OPERATION_TYPE_JOG, 1, MotionCommand::Console, 0});
            break;
        case 5:
            state.isRightLimit = 1;
            simulator::setState(device, 0, state);
            break;
        case 14:
            state.isLeftLimit = 1;
            simulator::setState(device, 0, state);
            break;
        case 6:
            simulator::setState(device, 0, state);
            break;
        case 8:
            simulator::loseLink(device);
            break;
        case 9:
            QVERIFY(m_session->disconnectController());
            break;
        case 10:
            runner().abort(End::PanelClosed, 1);
            QVERIFY(runner().isActive());
            runner().abort(End::PanelClosed, 2);
            break;
        case 11:
            driveByJoystick();
            break;
        case 12:
            worker->noteParametersWritten(0);
            break;
        case 13:
            m_session->leave(5000);
            break;
        default:
            break;
        }
        QTRY_VERIFY(!runner().isActive());
        const SequenceEnd end = runner().lastEnd();
        QTEST(int(end.reason), "reason");
        QTEST(end.axis, "axis");
        QCOMPARE(end.line, 0);
        // Its axes were stopped; nothing else is started, and nothing goes on by itself.
        if (what != 8)
            QTRY_VERIFY(
                calls().contains(QStringLiteral("stopRuning(1001, 0)")) &&
                calls().contains(QStringLiteral("stopRuning(1001, 2)")));
        simulator::setState(device, 0, std::nullopt);
        simulator::advance(60);
        QTest::qWait(100);
        QCOMPARE(simulator::callCount("startMove"), 1);
        if (what != 7)
            QVERIFY(std::abs(position(0) - target) > 1);
        QVERIFY(!isReserved(0) && !isReserved(2));
        QCOMPARE(runner().records().size(), 1);
        QVERIFY(!runner().records().first().isDone);
    }

    void endsInWhateverStateItIs_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<int>("reason");
        for (const char *state : {"waits", "asks", "will pause", "is paused"}) {
            QTest::addRow("%s, stop all", state) << state << int(End::StoppedAll);
            QTest::addRow("%s, stop on the panel", state) << state << int(End::StoppedOnPanel);
            QTest::addRow("%s, the panel is closed", state) << state << int(End::PanelClosed);
            QTest::addRow("%s, a start by the console", state) << state << int(End::StartedElsewhere);
            QTest::addRow("%s, disconnecting", state) << state << int(End::Disconnected);
            QTest::addRow("%s, the program ends", state) << state << int(End::Quit);
        }
    }
    void endsInWhateverStateItIs()
    {
        QFETCH(QString, state);
        QFETCH(int, reason);
        const bool pauses = state.endsWith(QLatin1String("pause")) || state.endsWith(QLatin1String("paused"));
        const Step first = pauses                            ? step(Step::MoveTo, 0, 1)
                           : state == QLatin1String("waits") ? step(Step::Wait, 0, 3600)
                                                             : step(Step::Ask, 0, 0);
        QVERIFY(run({first, step(Step::MoveTo, 0, 2), step(Step::MoveTo, 2, 2)}));
        if (pauses)
            runner().pause();
        if (state == QLatin1String("is paused"))
            passUntil([this] { return runner().state() == Run::Paused; });
        else if (pauses)
            QTRY_COMPARE(simulator::callCount("startMove"), 1);
        simulator::clearJournal();
        switch (reason) {
        case End::StoppedAll:
            m_session->stopAll();
            break;
        case End::StoppedOnPanel:
            emit SerialComDev::instance()->signal_stopMotor(0);
            break;
        case End::PanelClosed:
            runner().abort(End::PanelClosed, 0);
            break;
        case End::StartedElsewhere:
            SerialComDev::instance()->noteCommand({0, OPERATION_TYPE_JOG, 1, MotionCommand::Console, 0});
            break;
        case End::Disconnected:
            QVERIFY(m_session->disconnectController());
            break;
        default:
            m_session->leave(5000);
        }
        QTRY_VERIFY(!runner().isActive());
        QCOMPARE(int(runner().lastEnd().reason), reason);
        QCOMPARE(runner().lastEnd().line, state == QLatin1String("is paused") ? 1 : 0);
        for (const int axis : {0, 2}) {
            QTRY_VERIFY(calls().contains(QStringLiteral("stopRuning(1001, %1)").arg(axis)));
            QVERIFY(!isReserved(axis));
        }
        // Nothing is left that could go on.
        const QList<QTimer *> timers = runner().findChildren<QTimer *>();
        for (const QTimer *timer : timers)
            QVERIFY(!timer->isActive());
        simulator::advance(10);
        QCOMPARE(simulator::callCount("startMove"), 0);
    }

    /** An axis that has not accepted the stop may still move: nobody says that it stands. */
    void tellsWhenAStopIsRefused_data()
    {
        QTest::addColumn<int>("refused");
        QTest::newRow("none") << 0;
        QTest::newRow("one") << 1;
    }
    void tellsWhenAStopIsRefused()
    {
        QFETCH(int, refused);
        QVERIFY(run({step(Step::MoveTo, 0, 50), step(Step::MoveTo, 2, 1)}));
        QTRY_COMPARE(simulator::callCount("startMove"), 1);
        if (refused > 0)
            simulator::failCall("stopRuning", -9, 2);
        runner().stop();
        QTRY_COMPARE(simulator::callCount("stopRuning"), 2);
        // Both have been answered when the worker comes to this.
        QMetaObject::invokeMethod(
            SerialComDev::instance().data(), [] {}, Qt::BlockingQueuedConnection);
        QCoreApplication::sendPostedEvents();
        QCOMPARE(runner().lastEnd().isStopped, refused == 0);
    }
    void tellsWhenAStopIsNotAnswered()
    {
        QVERIFY(run({step(Step::MoveTo, 0, 50)}));
        QTRY_COMPARE(simulator::callCount("startMove"), 1);
        simulator::hangCall("stopRuning");
        runner().stop();
        QVERIFY(simulator::waitUntilHanging(5000));
        QVERIFY(!runner().lastEnd().isStopped);
        simulator::releaseHung();
        QTRY_VERIFY(runner().lastEnd().isStopped);
    }

    /** Its position is answered, its state is not: it is over by no time, and it is not waited for without an end. */
    void anAxisThatDoesNotTellItsStateEndsIt()
    {
        QVERIFY(run({step(Step::MoveTo, 0, 5)}));
        QTRY_COMPARE(simulator::callCount("startMove"), 1);
        simulator::failAlways("getRuningState", -9);
        const auto poll = [] { emit SerialComDev::instance()->signal_getCurrentPos(0); };
        QTimer panel;
        connect(&panel, &QTimer::timeout, this, poll);
        panel.start(20);
        QTRY_VERIFY(!runner().isActive());
        QCOMPARE(runner().lastEnd().reason, End::LinkLost);
        QCOMPARE(runner().lastEnd().axis, 0);
    }

    void anOrderThatIsRefusedEndsIt()
    {
        simulator::failCall("startMove", -7, 2);
        QVERIFY(run({goTo(QStringLiteral("Load"))}));
        QTRY_VERIFY(!runner().isActive());
        QCOMPARE(runner().lastEnd().reason, End::Refused);
        QCOMPARE(runner().lastEnd().axis, 1);
        QCOMPARE(runner().lastEnd().status, -7);
        QTRY_VERIFY(calls().contains(QStringLiteral("stopRuning(1001, 0)")));
        QCOMPARE(simulator::callCount("startMove"), 2); // the third axis was not started
    }

    void aStopOfAnAxisThatItDoesNotUseLeavesItAlone()
    {
        QVERIFY(run({step(Step::Ask, 0, 0), step(Step::MoveTo, 0, 1)}));
        emit SerialComDev::instance()->signal_stopMotor(1);
        QTRY_COMPARE(m_messages.size(), 1); // what the stop would have ended has ended by then
        QCoreApplication::processEvents();
        QVERIFY(runner().isActive());
        QVERIFY(runner().resume());
        passUntilOver();
        QCOMPARE(runner().lastEnd().reason, End::Finished);
    }

    /** The stop is on its way behind a call that hangs when the sequence asks for its next motion. */
    void noOrderFollowsAStop_data()
    {
        QTest::addColumn<int>("reason");
        QTest::newRow("on the panel") << int(End::StoppedOnPanel);
        QTest::newRow("its own") << int(End::Stopped);
    }
    void noOrderFollowsAStop()
    {
        QFETCH(int, reason);
        QVERIFY(run({step(Step::Ask, 0, 0), step(Step::MoveTo, 0, 50)}));
        simulator::hangCall("getCurrentPos");
        emit SerialComDev::instance()->signal_getCurrentPos(0);
        QVERIFY(simulator::waitUntilHanging(5000));
        const bool isOwn = reason == End::Stopped;
        if (!isOwn)
            emit SerialComDev::instance()->signal_stopMotor(0);
        QVERIFY(runner().resume());
        if (isOwn)
            runner().stop();
        QCoreApplication::processEvents();
        simulator::releaseHung();
        QTRY_VERIFY(!runner().isActive());
        QCOMPARE(int(runner().lastEnd().reason), reason);
        QTRY_COMPARE(simulator::callCount("stopRuning"), isOwn ? 1 : 2);
        QCOMPARE(simulator::callCount("startMove"), 0);
    }

    void goesOnWhereItWasEnded()
    {
        QVERIFY(run({step(Step::MoveTo, 0, 10), step(Step::MoveBy, 0, 5), repeat(1, 3), step(Step::MoveTo, 1, 2)}));
        passUntil([this] { return position(0) > 17; });
        QCOMPARE(runner().pass(), qMakePair(2, 3));
        runner().stop();
        QCOMPARE(runner().resumeLine(), 1);
        simulator::advance(5);
        QTRY_COMPARE(simulator::callCount("stopRuning"), 2);
        poll();
        QVERIFY(runner().resume());
        QCOMPARE(runner().pass(), qMakePair(2, 3));
        passUntilOver();
        QCOMPARE(runner().lastEnd().reason, End::Finished);
        QCOMPARE(position(0), 25.); // and not from where it was stopped
        QCOMPARE(runner().resumeLine(), -1);
        QVERIFY(!runner().resume());
    }
    void goesOnOnlyWithAxesThatAreAsTheyWere_data()
    {
        QTest::addColumn<int>("what");
        QTest::newRow("moves") << 0;
        QTest::newRow("not enabled") << 1;
        QTest::newRow("another stage") << 2;
        QTest::newRow("other motor parameters") << 3;
    }
    void goesOnOnlyWithAxesThatAreAsTheyWere()
    {
        QFETCH(int, what);
        QVERIFY(run({step(Step::MoveTo, 0, 10), step(Step::MoveTo, 0, 20)}));
        runner().stop();
        QTRY_COMPARE(simulator::callCount("stopRuning"), 1);
        simulator::advance(5);
        MotorStageState state = {};
        state.isStop = qint16(what != 0);
        state.isEnable = qint16(what != 1);
        simulator::setState(device, 0, state);
        const AxisDescription before = m_session->axis(0)->description();
        AxisDescription other = before;
        other.maxPos = 15;
        if (what == 2)
            m_session->addAxis(other);
        if (what == 3) {
            MotorParams params = {};
            QCOMPARE(SerialComDev::instance()->getMotorParams(0, params), 0);
            params.maxPos = 15;
            m_session->noteParameters(0, params);
            QCOMPARE(m_session->axis(0)->description().maxPos, before.maxPos); // a panel's stays
        }
        poll();
        QCOMPARE(runner().obstacle().has_value(), what < 2);
        QVERIFY(!runner().resume());
        QVERIFY(!runner().isActive());
        simulator::setState(device, 0, std::nullopt);
        m_session->addAxis(before);
        poll();
        QVERIFY(runner().resume());
        runner().stop();
    }
    void forgetsWhereItWasEnded()
    {
        QVERIFY(run({step(Step::MoveTo, 0, 10)}));
        runner().stop();
        runner().rewind();
        QCOMPARE(runner().resumeLine(), -1);
        QVERIFY(!runner().resume());
    }

    /** Of one that has a name: another is a single motion. */
    void stepsAreRecorded()
    {
        const auto recorded = [this] {
            QStringList words;
            const QVector<RecorderEvent> events = m_session->recorder().recording().events;
            for (const RecorderEvent &event : events) {
                if (event.sequence)
                    words.append(RecordingCsv::words(event));
            }
            return words;
        };
        QVERIFY(run({step(Step::MoveTo, 0, 1)}));
        passUntilOver();
        QCOMPARE(recorded(), QStringList());
        const QVector<Step> steps{
            goTo(QStringLiteral("Load")), step(Step::MoveBy, 1, -2), repeat(1, 2), step(Step::Home, Step::AllAxes, 0)};
        QVERIFY(runner().run({QStringLiteral("Scan"), steps}, places));
        passUntilOver();
        const QStringList begun{
            QStringLiteral("sequence, step 1: go to Load"), QStringLiteral("sequence, step 2: move by Axis2 -2"),
            QStringLiteral("sequence, step 2: move by Axis2 -2"), QStringLiteral("sequence, step 4: home all")};
        QCOMPARE(recorded(), begun + QStringList{QStringLiteral("sequence, at step 4: finished")});
        QVERIFY(runner().run({QStringLiteral("Scan"), {step(Step::Wait, 0, 60)}}, places));
        runner().abort(End::PanelClosed);
        QCOMPARE(recorded().last(), QStringLiteral("sequence, at step 1: panel closed"));
    }

    /** Ten thousand steps, of which most find their axis where it is to be. The report, and at first the record, grow.
     */
    void aLongSequenceNeedsNoMoreMemory()
    {
        qint64 before = 0;
        for (int round = 0; round < 2; ++round) {
            const QVector<Step> steps{step(Step::MoveTo, 0, round), step(Step::MoveTo, 1, 0), repeat(0, 5000)};
            QVERIFY(runner().run({QStringLiteral("Long"), steps}, places));
            passUntil([this] { return runner().line() > 0 || !runner().isActive(); });
            QEventLoop loop; // without the pauses of a test that waits
            connect(&runner(), &SequenceRunner::signal_ended, &loop, &QEventLoop::quit);
            if (runner().isActive())
                loop.exec();
            QCOMPARE(runner().lastEnd().reason, End::Finished);
            QCOMPARE(runner().records().size(), 10000);
            simulator::clearJournal();
            if (round == 0)
                before = residentKiB();
        }
        QVERIFY2(residentKiB() < before + 2048, QByteArray::number(residentKiB() - before));
    }

    /** Whatever goes wrong at whatever step: afterwards no axis moves, and the report is true. */
    void randomSequencesWithRandomFaults()
    {
        std::mt19937 random(7);
        const auto below = [&random](int limit) { return int(random() % unsigned(limit)); };
        for (int round = 0; round < 25; ++round) {
            QVector<Step> steps;
            for (int k = 0; k < 6; ++k)
                steps.append(
                    below(4) == 0 ? step(Step::Home, below(3), 0)
                                  : step(Step::MoveTo, below(3), below(9), 0, below(2) * 0.01));
            steps.append(repeat(below(5), 2));
            SerialComDev::instance()->setRockerEnable(0);
            simulator::clearJournal();
            QVERIFY(run(steps));
            const int fault = below(7);
            const int when = below(40);
            for (int k = 0; k < when && runner().isActive(); ++k) {
                simulator::advance(0.02);
                QTest::qWait(1);
            }
            const char *const starts[] = {"startMove", "setTargetPos", "home"};
            if (fault < 3)
                simulator::failCall(starts[fault], -7);
            else if (fault == 3)
                emit SerialComDev::instance()->signal_stopMotor(below(3));
            else if (fault == 4)
                m_session->stopAll();
            else if (fault == 5)
                runner().stop();
            passUntilOver();
            const bool isFinished = runner().lastEnd().reason == End::Finished;
            QTest::qWait(30); // the stops
            simulator::advance(10);
            const int callsBefore = simulator::callCount("startMove") + simulator::callCount("home");
            const QVector<double> before{position(0), position(1), position(2)};
            simulator::advance(10);
            QTest::qWait(30);
            QCOMPARE(simulator::callCount("startMove") + simulator::callCount("home"), callsBefore);
            QCOMPARE((QVector<double>{position(0), position(1), position(2)}), before);
            for (int axis = 0; axis < 3; ++axis)
                QVERIFY(!isReserved(axis));
            int done = 0;
            for (const SequenceRecord &record : runner().records()) {
                done += record.isDone;
                const Step &step = steps.at(record.line);
                if (record.isDone && step.kind == Step::MoveTo)
                    QVERIFY(std::abs(record.reached.value(step.axis) - step.value) <= 0.002);
            }
            QVERIFY(isFinished ? done == runner().records().size() : done < 12);
            simulator::clearFaults();
            poll();
        }
    }

private:
    SequenceRunner &runner() const { return m_session->sequences(); }
    bool run(const QVector<Step> &steps) { return runner().run({QString(), steps}, places); }
    double position(int axis) const
    {
        int status = 0;
        const LibraryLock library;
        return library->getCurrentPos(device, axis, &status);
    }
    static bool isReserved(int axis) { return SerialComDev::instance()->isReserved(axis); }
    static void driveByJoystick()
    {
        simulator::setJoystick(device, true);
        QCOMPARE(SerialComDev::instance()->setRockerEnable(1), 0);
    }
    /** As the panels do. */
    void poll() const
    {
        const auto asked = std::chrono::steady_clock::now();
        const auto worker = SerialComDev::instance();
        QTRY_VERIFY(([&] {
            bool isHeard = true;
            for (int axis = 0; axis < 3; ++axis) {
                emit worker->signal_getDevState(axis);
                emit worker->signal_getCurrentPos(axis);
                const auto position = m_session->axis(axis)->lastPosition();
                const auto state = m_session->axis(axis)->lastState();
                isHeard = isHeard && position && position->at >= asked && state && state->at >= asked;
            }
            return isHeard;
        })());
    }
    static void passUntil(const std::function<bool()> &isTrue)
    {
        for (int k = 0; k < 20000 && !isTrue(); ++k) {
            simulator::advance(0.02);
            QTest::qWait(1);
        }
        QVERIFY(isTrue());
    }
    void passUntilOver() const
    {
        passUntil([this] { return !runner().isActive(); });
    }

    QSharedPointer<ControlSession> m_session;
    QVector<QPair<int, int>> m_messages; // axis, state
};

QTEST_GUILESS_MAIN(tst_SequenceRunner)
#include "tst_SequenceRunner.moc"
