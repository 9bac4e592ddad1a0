// SPDX-License-Identifier: MIT
#include "session/Recorder.h"

#include "device/SerialComDev.h"
#include "session/RecordingCsv.h"

#include <QtTest>

#include <cmath>

using namespace std::chrono_literals;

/** What is noted of answers. Times are made up: nothing here waits. */
class tst_Recorder : public QObject
{
    Q_OBJECT

    std::unique_ptr<Recorder> m_recorder;
    AnswerListener::Time m_now;
    double m_position = 0;

    void say(int isStop, qint16 MotorStageState::*flag = nullptr, int axis = 0)
    {
        MotorStageState state = {};
        state.isStop = qint16(isStop);
        if (flag)
            state.*flag = 1;
        m_recorder->positionAnswered(axis, m_position, m_now);
        m_recorder->stateAnswered(axis, state, m_now);
    }
    void pass(double seconds, bool moves, qint16 MotorStageState::*flag = nullptr)
    {
        for (int k = 0; k < seconds * 10; ++k) {
            m_now += 100ms;
            if (moves)
                m_position += 0.5;
            say(!moves, flag);
        }
    }
    void fail(double seconds, int axis = 0)
    {
        for (int k = 0; k < seconds * 10; ++k) {
            m_now += 100ms;
            m_recorder->pollFailed(axis, m_now);
        }
    }
    void command(int type, int direction = 0, MotionCommand::Source source = MotionCommand::Request, int status = 0)
    {
        m_recorder->commandAnswered({0, type, direction, source, status}, m_now);
    }
    /** The events so far, as they are written. */
    QStringList events() const
    {
        QStringList list;
        for (const RecorderEvent &event : m_recorder->recording().events)
            list.append(RecordingCsv::words(event));
        return list;
    }

private slots:
    void init()
    {
        m_recorder = std::make_unique<Recorder>();
        m_recorder->begin(QStringLiteral("A"));
        m_now = std::chrono::steady_clock::now();
        m_position = 0;
        pass(0.5, false);
    }

    void everyAnswerIsKeptWithItsTime()
    {
        const Recording recording = m_recorder->recording();
        QCOMPARE(recording.axes.size(), 1);
        QCOMPARE(recording.axes.first().samples.size(), 5);
        QCOMPARE(recording.endUs() - recording.startUs(), qint64(400000));
        QCOMPARE(recording.endUs(), m_recorder->usOf(m_now));
        const qint64 wall = QDateTime::currentMSecsSinceEpoch();
        QVERIFY(std::abs(recording.wallMs(recording.nowUs) - wall) < 1000);
        QVERIFY(recording.events.isEmpty());
    }

    void nothingIsKeptWhileNotConnected()
    {
        m_recorder->end();
        pass(1, true);
        fail(3);
        command(OPERATION_TYPE_MOVE);
        QCOMPARE(m_recorder->recording().sampleCount(), 5);
        QVERIFY(events().isEmpty());
    }

    void theSameControllerGoesOnAnotherBeginsAnew()
    {
        m_recorder->end();
        m_now += 10s;
        m_recorder->begin(QStringLiteral("A"));
        pass(0.5, false);
        const Recording recording = m_recorder->recording();
        QCOMPARE(recording.sampleCount(), 10);
        QCOMPARE(recording.axes.first().samples.gaps(0, recording.endUs()).size(), 1);
        m_recorder->begin(QStringLiteral("B"));
        QVERIFY(m_recorder->recording().isEmpty());
    }

    void aMotionAndItsEnd_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("direction");
        QTest::addColumn<int>("source");
        QTest::addColumn<bool>("stop");
        QTest::addColumn<bool>("atOrigin");
        QTest::addColumn<QStringList>("words");
        const auto panel = int(MotionCommand::Request);
        QTest::newRow("move") << int(OPERATION_TYPE_MOVE) << 0 << panel << false << false
                              << QStringList{"Axis1: move (panel)", "Axis1: arrived"};
        QTest::newRow("drive") << int(OPERATION_TYPE_DRIVE) << -1 << int(MotionCommand::Console) << true << false
                               << QStringList{"Axis1: drive - (console)", "Axis1: stop (panel)", "Axis1: stopped"};
        QTest::newRow("jog") << int(OPERATION_TYPE_JOG) << 1 << panel << false << false
                             << QStringList{"Axis1: jog + (panel)", "Axis1: arrived"};
        QTest::newRow("home") << int(OPERATION_TYPE_HOME) << 0 << panel << false << true
                              << QStringList{"Axis1: home (panel)", "Axis1: homed"};
        QTest::newRow("home, elsewhere") << int(OPERATION_TYPE_HOME) << 0 << panel << true << false
                                         << QStringList{"Axis1: home (panel)", "Axis1: stop (panel)", "Axis1: stopped"};
    }
    void aMotionAndItsEnd()
    {
        QFETCH(int, type);
        QFETCH(int, direction);
        QFETCH(int, source);
        QFETCH(bool, stop);
        QFETCH(bool, atOrigin);
        command(type, direction, MotionCommand::Source(source));
        pass(1, true);
        if (stop)
            command(OPERATION_TYPE_STOP);
        pass(1, false, atOrigin ? &MotorStageState::isHome : nullptr);
        QTEST(events(), "words");
    }

    void aMotionThatNoPollHasSeen()
    {
        command(OPERATION_TYPE_JOG, 1);
        m_position += 0.01;
        pass(1, false);
        QCOMPARE(events(), (QStringList{"Axis1: jog + (panel)", "Axis1: arrived"}));
    }

    void anAxisThatDidNotMoveHasNotArrived()
    {
        command(OPERATION_TYPE_MOVE);
        pass(3, false);
        QCOMPARE(events(), QStringList{"Axis1: move (panel)"});
    }

    void aLimitEndsAMotion()
    {
        QSignalSpy incidents(m_recorder.get(), &Recorder::signal_incident);
        command(OPERATION_TYPE_DRIVE, 1);
        pass(1, true);
        pass(1, false, &MotorStageState::isRightLimit);
        QCOMPARE(events(), (QStringList{"Axis1: drive + (panel)", "Axis1: positive limit"}));
        QCOMPARE(incidents.size(), 1);
    }

    void failures()
    {
        QSignalSpy incidents(m_recorder.get(), &Recorder::signal_incident);
        command(OPERATION_TYPE_MOVE, 0, MotionCommand::Request, -7);
        pass(0.3, false, &MotorStageState::isHomeOptoFault);
        QCOMPARE(events(), (QStringList{"Axis1: refused -7: move (panel)", "Axis1: origin opto-coupler failed"}));
        QCOMPARE(incidents.size(), 2);
    }

    void whatABoardSaysOfAFailure()
    {
        QSignalSpy incidents(m_recorder.get(), &Recorder::signal_incident);
        MoverMessage message{};
        message.axis = -1;
        for (const int code : {moverMessages::LimitHit, moverMessages::Capped, moverMessages::BoardAlarm}) {
            message.code = code;
            message.value = 3;
            m_recorder->messageHeard(message, m_now);
            message.axis = 0;
        }
        QCOMPARE(events(), (QStringList{"limit switch hit, position lost", "Axis1: board alarm 3"}));
        QCOMPARE(incidents.size(), 2);
    }

    void stopOfAllIsNamed()
    {
        command(OPERATION_TYPE_STOP, 0, MotionCommand::StopAll);
        QCOMPARE(events(), QStringList{"Axis1: stop (stop all)"});
    }

    void aLostLinkAndItsReturn()
    {
        QSignalSpy incidents(m_recorder.get(), &Recorder::signal_incident);
        const qint64 lastHeard = m_recorder->usOf(m_now);
        fail(0.9);
        QVERIFY(events().isEmpty());
        fail(1.5);
        pass(0.5, false);
        const Recording recording = m_recorder->recording();
        QCOMPARE(events(), (QStringList{"link lost", "link back after 2.4 s"}));
        QCOMPARE(incidents.size(), 1);
        QCOMPARE(recording.events.first().us, lastHeard + 100000); // when it began, not when that was sure
        QCOMPARE(recording.axes.first().samples.gaps(0, recording.endUs()).size(), 1);
    }

    void aLinkThatIsLostForAllAxesIsToldOnce()
    {
        say(1, nullptr, 1);
        for (int k = 0; k < 30; ++k) {
            m_now += 100ms;
            m_recorder->pollFailed(0, m_now);
            m_recorder->pollFailed(1, m_now);
        }
        say(1, nullptr, 0);
        QCOMPARE(events(), QStringList{"link lost"}); // one is not back yet
        say(1, nullptr, 1);
        QCOMPARE(events().size(), 2);
    }

    void aSlowLinkHasNoGaps()
    {
        for (int k = 0; k < 10; ++k) {
            m_now += k == 0 ? 900ms : 2200ms;
            say(1);
        }
        const Recording recording = m_recorder->recording();
        QCOMPARE(recording.axes.first().samples.gaps(0, recording.endUs()).size(), 0);
    }

    void eventsStayInOrderAndHaveAnEnd()
    {
        for (int k = 0; k < 30000; ++k) {
            m_now += 10ms;
            command(k == 5 ? OPERATION_TYPE_MOVE : OPERATION_TYPE_JOG, 1, MotionCommand::Request, k == 5 ? -1 : 0);
        }
        const auto events = m_recorder->recording().events;
        QVERIFY(events.size() <= 20000);
        QVERIFY(events.size() > 10000);
        QVERIFY(std::is_sorted(events.begin(), events.end(), [](const auto &a, const auto &b) { return a.us < b.us; }));
        QCOMPARE(std::count_if(events.begin(), events.end(), [](const auto &each) { return each.isIncident(); }), 1);
    }
};

QTEST_GUILESS_MAIN(tst_Recorder)
#include "tst_Recorder.moc"
