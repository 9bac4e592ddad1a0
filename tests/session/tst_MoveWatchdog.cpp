// SPDX-License-Identifier: MIT
#include "device/SerialComDev.h"
#include "session/MoveWatchdog.h"

#include <QtTest>

namespace {

using Time = AnswerListener::Time;

constexpr Time begun{std::chrono::hours(1)};

Time at(double seconds)
{
    return begun + std::chrono::duration_cast<Time::duration>(std::chrono::duration<double>(seconds));
}

MotorStageState state(bool moves, bool rightLimit = false)
{
    MotorStageState state = {};
    state.isStop = moves ? 0 : 1;
    state.isRightLimit = rightLimit ? 1 : 0;
    return state;
}

} // namespace

class tst_MoveWatchdog : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_info = MotorDevInfo();
        m_info.speed = 2; // unit/s, reached after 1 s
        m_info.acceleration = 2;
        m_info.targetPos = 10;
        m_info.relativeDisp = 4;
        m_info.jogStep = 4;
        m_info.jogCount = 3;
        m_info.jogDelay = 500;
        m_info.circleDisp = 4;
        m_info.circleCount = 2;
        m_info.circleDelay = 1000;
        m_watchdog = std::make_unique<MoveWatchdog>([this](int) { return m_info; });
        m_watchdog->describe(stage());
        m_found = std::make_unique<QSignalSpy>(m_watchdog.get(), &MoveWatchdog::signal_moveOverdue);
        m_watchdog->positionAnswered(0, 0, at(-0.1));
    }

    void saysThatAMotionShouldBeOver_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("limited");
        QTest::addColumn<double>("expected");
        QTest::newRow("move") << int(OPERATION_TYPE_MOVE) << true << 6.;
        QTest::newRow("drive") << int(OPERATION_TYPE_DRIVE) << true << 3.;
        QTest::newRow("drive to the end of travel") << int(OPERATION_TYPE_DRIVE) << false << 26.;
        QTest::newRow("jog") << int(OPERATION_TYPE_JOG) << true << 10.5;
        QTest::newRow("loop run") << int(OPERATION_TYPE_LOOP) << true << 16.;
        QTest::newRow("homing") << int(OPERATION_TYPE_HOME) << true << 42.;
    }

    void saysThatAMotionShouldBeOver()
    {
        QFETCH(int, type);
        QFETCH(bool, limited);
        QFETCH(double, expected);
        m_info.relativeDispEnable = limited;
        m_watchdog->commandAnswered({0, type, 1}, at(0));
        const double due = expected * 1.5 + 2;
        m_watchdog->stateAnswered(0, state(true), at(due - 0.01));
        QCOMPARE(m_found->size(), 0);
        m_watchdog->stateAnswered(0, state(true), at(due + 0.01));
        QCOMPARE(m_found->size(), 1);
        QCOMPARE(m_found->first().at(0).toInt(), 0);
        QCOMPARE(m_found->first().at(1).toInt(), int(MoveWatchdog::StillMoves));
        QCOMPARE(m_found->first().at(2).toDouble(), expected);
        m_watchdog->stateAnswered(0, state(true), at(due + 1)); // once
        QCOMPARE(m_found->size(), 1);
    }

    void saysThatAnAxisDoesNotMove()
    {
        m_watchdog->commandAnswered({0, OPERATION_TYPE_MOVE}, at(0));
        for (const double time : {0.5, 1., 1.5, 1.99})
            m_watchdog->stateAnswered(0, state(false), at(time));
        QCOMPARE(m_found->size(), 0);
        m_watchdog->positionAnswered(0, 0, at(2.1));
        m_watchdog->stateAnswered(0, state(false), at(2.1));
        QCOMPARE(m_found->size(), 1);
        QCOMPARE(m_found->first().at(1).toInt(), int(MoveWatchdog::DoesNotMove));
        m_watchdog->stateAnswered(0, state(false), at(2.2)); // once
        QCOMPARE(m_found->size(), 1);
    }

    void isQuiet_data()
    {
        QTest::addColumn<QString>("what");
        for (const char *what :
             {"it arrives", "it was at its target", "it was stopped", "it is at the limit", "the command was refused",
              "its speed is not known", "the next motion", "a board homes", "seldom heard"})
            QTest::newRow(what) << QString::fromLatin1(what);
    }

    void isQuiet()
    {
        QFETCH(QString, what);
        const auto is = [&what](const char *this_) { return what == QLatin1String(this_); };
        MotionCommand command{0, OPERATION_TYPE_MOVE};
        if (is("it was at its target"))
            m_watchdog->positionAnswered(0, 10, at(-0.05));
        if (is("the command was refused"))
            command.status = -7;
        if (is("its speed is not known"))
            m_info.speed = 0;
        if (is("a board homes")) {
            AxisDescription board = stage();
            board.tellsHoming = true;
            m_watchdog->describe(board);
            command.type = OPERATION_TYPE_HOME;
        }
        m_watchdog->commandAnswered(command, at(0));
        if (is("it arrives")) {
            m_watchdog->positionAnswered(0, 10, at(1));
            m_watchdog->stateAnswered(0, state(false), at(1));
        }
        if (is("it was stopped"))
            m_watchdog->commandAnswered({0, OPERATION_TYPE_STOP}, at(0.1));
        const bool keepsMoving = is("its speed is not known") || is("the next motion") || is("a board homes");
        if (is("the next motion"))
            m_watchdog->commandAnswered(command, at(99));
        if (is("seldom heard")) {
            m_watchdog->stateAnswered(0, state(false), at(5));
            m_watchdog->stateAnswered(0, state(false), at(10));
        } else {
            for (double time = 99; time < 100; time += 0.1)
                m_watchdog->stateAnswered(0, state(keepsMoving, is("it is at the limit")), at(time));
        }
        QCOMPARE(m_found->size(), 0);
    }

private:
    static AxisDescription stage()
    {
        AxisDescription stage;
        stage.minPos = -30;
        stage.maxPos = 50;
        stage.maxSpeed = 100;
        stage.maxAcceleration = 1000;
        stage.homingSpeed = 4;
        return stage;
    }

    MotorDevInfo m_info;
    std::unique_ptr<MoveWatchdog> m_watchdog;
    std::unique_ptr<QSignalSpy> m_found;
};

QTEST_GUILESS_MAIN(tst_MoveWatchdog)
#include "tst_MoveWatchdog.moc"
