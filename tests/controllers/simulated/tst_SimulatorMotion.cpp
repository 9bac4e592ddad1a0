// SPDX-License-Identifier: MIT
#include "OpenDevice.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <random>

using namespace simulator;

// Axis 0 runs at 10 mm/s and 10 mm/s² here: it takes 1 s and 5 mm to reach its speed, and as much to brake. Its
// travel is -50 to 50 mm.
class tst_SimulatorMotion : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void keepsToSpeedAccelerationAndTravel_data();
    void keepsToSpeedAccelerationAndTravel();
    void movesToTheTarget();
    void movesNowhereWhenAtTheTarget();
    void drivesByTheDisplacement_data();
    void drivesByTheDisplacement();
    void drivesOnWithoutDisplacementUntilStopped();
    void drivesOnWithoutDisplacementToTheLimit_data();
    void drivesOnWithoutDisplacementToTheLimit();
    void clearsTheLimitFlagOnLeavingTheLimit();
    void jogsInSteps();
    void endsAJogAtTheLimit();
    void loopsThereAndBack_data();
    void loopsThereAndBack();
    void endsALoopAtTheLimit();
    void stopsALoop();
    void settlesALongLoopAtOnce();
    void runsNowhereByZero_data();
    void runsNowhereByZero();
    void homesToTheOrigin();
    void homesToTheEndOfTravelNearestToTheOrigin();
    void losesTheOriginOnLeavingIt();
    void doesNotFindTheOriginWhenStopped();
    void stopsByBraking();
    void stopsADwellAtOnce();
    void stopsAStandingAxis();
    void stopsAtOnceWithoutPower();
    void refusesStartsWithoutPower();
    void refusesStartsWhileRunning();
    void refusesOtherDirections();
    void keepsTheSettingsOfTheStart();
    void refusesStartsWithAFailedLimitOpto_data();
    void refusesStartsWithAFailedLimitOpto();
    void refusesHomingWithAFailedOriginOpto();
    void brakesWhenAnOptoFails();
    void brakesHomingWhenTheOriginOptoFails();
    void keepsMovingWithoutLink();
    void stepsByTriggerPulses();
    void losesTriggerPulsesWhileRunning();
    void ignoresTriggerPulsesWhenDisabled();
    void reportsTheJoystick();
    void drivesByJoystick();
    void stopsTheJoystickAtTheLimit();
    void handsARunningAxisToTheJoystick();
    void brakesUnderTheJoystickAsItWasStarted();
    void keepsTheJoystickToTheMaximumSpeed();
    void holdsUnderTheJoystickUntilItMoves();
    void leavesAxesWithoutPowerToThemselves();
    void refusesTheJoystickWhenThereIsNone();
    void endsTheJoystickWhenItIsUnplugged();
    void staysInTravelUnderAWildJoystick();
};

void tst_SimulatorMotion::init()
{
    openDevice();
    QCOMPARE(setSpeed(device, 0, 10), 0);
    QCOMPARE(setAcceleration(device, 0, 10), 0);
}

void tst_SimulatorMotion::keepsToSpeedAccelerationAndTravel_data()
{
    QTest::addColumn<bool>("stops");
    QTest::newRow("to the end") << false;
    QTest::newRow("stopped on the way") << true;
}

void tst_SimulatorMotion::keepsToSpeedAccelerationAndTravel()
{
    QFETCH(bool, stops);
    std::mt19937 random(815);
    const auto between = [&random](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    for (int i = 0; i < 100; ++i) {
        const double speed = between(0.5, 20);
        const double acceleration = between(1, 100);
        const double target = between(-50, 50);
        QCOMPARE(setSpeed(device, 0, speed), 0);
        QCOMPARE(setAcceleration(device, 0, acceleration), 0);
        QCOMPARE(setTargetPos(device, 0, target), 0);
        QCOMPARE(startMove(device, 0), 0);
        const double way = std::abs(target - positionOf(0));
        const double stopAfter = stops ? between(0, way / speed) : 1e9;

        const double step = 0.01;
        double before = positionOf(0);
        double velocityBefore = 0;
        double elapsed = 0;
        bool stopped = false;
        while (stateOf(0).isStop == 0) {
            if (!stopped && elapsed >= stopAfter) {
                QCOMPARE(stopRuning(device, 0), 0);
                stopped = true;
            }
            advance(step);
            elapsed += step;
            const double position = positionOf(0);
            const double velocity = (position - before) / step; // the mean over the step
            QVERIFY(position >= -50 && position <= 50);
            QVERIFY(std::abs(velocity) <= speed * (1 + 1e-9));
            QVERIFY(std::abs(velocity - velocityBefore) <= acceleration * step * (1 + 1e-6));
            before = position;
            velocityBefore = velocity;
            QVERIFY(elapsed < 1000);
        }
        if (!stopped)
            QVERIFY(near(positionOf(0), target));
        advance(10);
        QCOMPARE(positionOf(0), before);
    }
}

void tst_SimulatorMotion::movesToTheTarget()
{
    QCOMPARE(setTargetPos(device, 0, -30), 0);
    QCOMPARE(startMove(device, 0), 0);
    QCOMPARE(stateOf(0).isStop, qint16(0));
    QCOMPARE(stateOf(0).isCanRun, qint16(0));
    advance(1);
    QVERIFY(near(positionOf(0), -5));
    advance(2.9);
    QCOMPARE(stateOf(0).isStop, qint16(0));
    advance(0.1);
    QCOMPARE(positionOf(0), -30.0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(stateOf(0).isCanRun, qint16(1));
}

void tst_SimulatorMotion::movesNowhereWhenAtTheTarget()
{
    QCOMPARE(setTargetPos(device, 0, 0), 0);
    QCOMPARE(startMove(device, 0), 0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorMotion::drivesByTheDisplacement_data()
{
    QTest::addColumn<int>("direction");
    QTest::addColumn<double>("reached");
    QTest::newRow("positive") << 1 << 12.5;
    QTest::newRow("negative") << 2 << -12.5;
}

void tst_SimulatorMotion::drivesByTheDisplacement()
{
    QFETCH(int, direction);
    QFETCH(double, reached);
    QCOMPARE(setRelativeDisp(device, 0, 12.5), 0);
    QCOMPARE(startDrive(device, 0, direction), 0);
    advance(10);
    QVERIFY(near(positionOf(0), reached));
    QCOMPARE(startDrive(device, 0, direction), 0);
    advance(10);
    QVERIFY(near(positionOf(0), 2 * reached));
}

void tst_SimulatorMotion::drivesOnWithoutDisplacementUntilStopped()
{
    QCOMPARE(setRelativeDisp(device, 0, 1), 0);
    QCOMPARE(setRelativeDispEnable(device, 0, 0), 0);
    QCOMPARE(startDrive(device, 0, 1), 0);
    advance(3);
    QVERIFY(near(positionOf(0), 25));
    QCOMPARE(stopRuning(device, 0), 0);
    advance(1);
    QVERIFY(near(positionOf(0), 30));
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(stateOf(0).isRightLimit, qint16(0));
}

void tst_SimulatorMotion::drivesOnWithoutDisplacementToTheLimit_data()
{
    QTest::addColumn<int>("direction");
    QTest::addColumn<double>("limit");
    QTest::newRow("positive") << 1 << 50.0;
    QTest::newRow("negative") << 2 << -50.0;
}

void tst_SimulatorMotion::drivesOnWithoutDisplacementToTheLimit()
{
    QFETCH(int, direction);
    QFETCH(double, limit);
    QCOMPARE(setRelativeDispEnable(device, 0, 0), 0);
    QCOMPARE(startDrive(device, 0, direction), 0);
    advance(5.9);
    QCOMPARE(stateOf(0).isLeftLimit, qint16(0));
    QCOMPARE(stateOf(0).isRightLimit, qint16(0));
    advance(0.2);
    QCOMPARE(positionOf(0), limit);
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(stateOf(0).isLeftLimit, qint16(direction == 2));
    QCOMPARE(stateOf(0).isRightLimit, qint16(direction == 1));
    // On into the limit leads nowhere.
    QCOMPARE(startDrive(device, 0, direction), 0);
    advance(1);
    QCOMPARE(positionOf(0), limit);
}

void tst_SimulatorMotion::clearsTheLimitFlagOnLeavingTheLimit()
{
    setPosition(device, 0, 50);
    QCOMPARE(stateOf(0).isRightLimit, qint16(1));
    QCOMPARE(setRelativeDisp(device, 0, 5), 0);
    QCOMPARE(startDrive(device, 0, 2), 0);
    advance(0.1);
    QCOMPARE(stateOf(0).isRightLimit, qint16(0));
}

void tst_SimulatorMotion::jogsInSteps()
{
    // A step of 2.5 mm is a triangle of 1 s.
    QCOMPARE(setJogStep(device, 0, 2.5), 0);
    QCOMPARE(setJogCount(device, 0, 3), 0);
    QCOMPARE(setJogDelay(device, 0, 500), 0);
    QCOMPARE(getJogIndex(device, 0), 0);
    QCOMPARE(startJog(device, 0, 2), 0);
    QCOMPARE(getJogIndex(device, 0), 1);
    advance(1.25);
    QVERIFY(near(positionOf(0), -2.5));
    QCOMPARE(getJogIndex(device, 0), 1);
    advance(0.75);
    QCOMPARE(getJogIndex(device, 0), 2);
    QVERIFY(near(positionOf(0), -3.75));
    advance(1.5);
    QCOMPARE(getJogIndex(device, 0), 3);
    QCOMPARE(stateOf(0).runCount, quint32(0));
    advance(0.51);
    QVERIFY(near(positionOf(0), -7.5));
    QCOMPARE(getJogIndex(device, 0), 0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorMotion::endsAJogAtTheLimit()
{
    setPosition(device, 0, 46);
    QCOMPARE(setJogStep(device, 0, 2.5), 0);
    QCOMPARE(setJogCount(device, 0, 10), 0);
    QCOMPARE(setJogDelay(device, 0, 0), 0);
    QCOMPARE(startJog(device, 0, 1), 0);
    advance(2);
    QCOMPARE(positionOf(0), 50.0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(stateOf(0).isRightLimit, qint16(1));
}

void tst_SimulatorMotion::loopsThereAndBack_data()
{
    QTest::addColumn<int>("direction");
    QTest::addColumn<double>("farEnd");
    QTest::newRow("positive first") << 1 << 12.5;
    QTest::newRow("negative first") << 2 << 7.5;
}

void tst_SimulatorMotion::loopsThereAndBack()
{
    QFETCH(int, direction);
    QFETCH(double, farEnd);
    setPosition(device, 0, 10);
    QCOMPARE(setCircleDisp(device, 0, 2.5), 0); // 1 s each way
    QCOMPARE(setCircleCount(device, 0, 2), 0);
    QCOMPARE(setCircleDelay(device, 0, 500), 0);
    QCOMPARE(getCircleIndex(device, 0), 0);
    QCOMPARE(startCircle(device, 0, direction), 0);
    QCOMPARE(getCircleIndex(device, 0), 1);
    QCOMPARE(stateOf(0).runCount, quint32(1));
    advance(1.25); // in the dwell at the far end
    QVERIFY(near(positionOf(0), farEnd));
    advance(1.5); // in the dwell at the near end
    QVERIFY(near(positionOf(0), 10));
    QCOMPARE(getCircleIndex(device, 0), 1);
    advance(1.5);
    QVERIFY(near(positionOf(0), farEnd));
    QCOMPARE(getCircleIndex(device, 0), 2);
    QCOMPARE(stateOf(0).runCount, quint32(2));
    QCOMPARE(getJogIndex(device, 0), 0);
    advance(1.24);
    QCOMPARE(stateOf(0).isStop, qint16(0));
    advance(0.02); // over after 4 legs and 3 dwells
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QVERIFY(near(positionOf(0), 10));
    QCOMPARE(getCircleIndex(device, 0), 0);
    QCOMPARE(stateOf(0).runCount, quint32(0));
}

void tst_SimulatorMotion::endsALoopAtTheLimit()
{
    setPosition(device, 0, 45);
    QCOMPARE(setCircleDisp(device, 0, 20), 0);
    QCOMPARE(startCircle(device, 0, 1), 0);
    advance(100);
    QCOMPARE(positionOf(0), 50.0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorMotion::stopsALoop()
{
    QCOMPARE(setCircleDisp(device, 0, 40), 0);
    QCOMPARE(startCircle(device, 0, 1), 0);
    advance(2);
    QCOMPARE(stopRuning(device, 0), 0);
    QCOMPARE(stateOf(0).runCount, quint32(0));
    advance(1);
    QVERIFY(near(positionOf(0), 20));
    QCOMPARE(stateOf(0).isStop, qint16(1));
    advance(100);
    QVERIFY(near(positionOf(0), 20));
}

void tst_SimulatorMotion::settlesALongLoopAtOnce()
{
    QCOMPARE(setCircleDisp(device, 0, 2.5), 0);
    QCOMPARE(setCircleCount(device, 0, 100000), 0);
    QCOMPARE(setCircleDelay(device, 0, 500), 0);
    QCOMPARE(startCircle(device, 0, 1), 0);
    advance(150000.25); // 50000 loops of 3 s
    QCOMPARE(getCircleIndex(device, 0), 50001);
    QVERIFY(std::abs(positionOf(0) - 0.3125) < 1e-6); // 0.25 s into a leg
    advance(1e6);
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(positionOf(0), 0.0);
}

void tst_SimulatorMotion::runsNowhereByZero_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<double>("length");
    QTest::newRow("count") << 0 << 1.0;
    QTest::newRow("length") << 1000000000 << 0.0;
}

void tst_SimulatorMotion::runsNowhereByZero()
{
    QFETCH(int, count);
    QFETCH(double, length);
    QCOMPARE(setJogCount(device, 0, count), 0);
    QCOMPARE(setJogStep(device, 0, length), 0);
    QCOMPARE(setCircleCount(device, 0, count), 0);
    QCOMPARE(setCircleDisp(device, 0, length), 0);
    QCOMPARE(startJog(device, 0, 1), 0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(startCircle(device, 0, 1), 0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(positionOf(0), 0.0);
}

void tst_SimulatorMotion::homesToTheOrigin()
{
    setPosition(device, 0, 20);
    QCOMPARE(stateOf(0).isHome, qint16(0));
    QCOMPARE(home(device, 0), 0);
    advance(2); // at the homing speed of 5 mm/s: 0.5 s and 1.25 mm until it is reached
    QVERIFY(near(positionOf(0), 20 - 1.25 - 1.5 * 5));
    QCOMPARE(stateOf(0).isHome, qint16(0));
    advance(10);
    QCOMPARE(positionOf(0), 0.0);
    QCOMPARE(stateOf(0).isHome, qint16(1));
    QCOMPARE(home(device, 0), 0); // already there
    QCOMPARE(stateOf(0).isHome, qint16(1));
}

void tst_SimulatorMotion::homesToTheEndOfTravelNearestToTheOrigin()
{
    MotorParams params{};
    QCOMPARE(getMotorParams(device, 0, &params), 0);
    params.minPos = 10;
    QCOMPARE(setMotorParams(device, 0, params), 0);
    setPosition(device, 0, 30);
    QCOMPARE(home(device, 0), 0);
    advance(100);
    QCOMPARE(positionOf(0), 10.0);
    QCOMPARE(stateOf(0).isHome, qint16(1));
}

void tst_SimulatorMotion::losesTheOriginOnLeavingIt()
{
    QCOMPARE(home(device, 0), 0);
    QCOMPARE(stateOf(0).isHome, qint16(1));
    QCOMPARE(startDrive(device, 0, 1), 0);
    advance(0.1);
    QCOMPARE(stateOf(0).isHome, qint16(0));
}

void tst_SimulatorMotion::doesNotFindTheOriginWhenStopped()
{
    setPosition(device, 0, 20);
    QCOMPARE(home(device, 0), 0);
    advance(1);
    QCOMPARE(stopRuning(device, 0), 0);
    advance(10);
    QVERIFY(positionOf(0) > 10);
    QCOMPARE(stateOf(0).isHome, qint16(0));
}

void tst_SimulatorMotion::stopsByBraking()
{
    QCOMPARE(setTargetPos(device, 0, 40), 0);
    QCOMPARE(startMove(device, 0), 0);
    advance(2);
    QCOMPARE(stopRuning(device, 0), 0);
    QVERIFY(near(positionOf(0), 15));
    QCOMPARE(stateOf(0).isStop, qint16(0));
    advance(0.5);
    QVERIFY(near(positionOf(0), 18.75));
    QCOMPARE(stopRuning(device, 0), 0); // once more changes nothing
    advance(0.5);
    QVERIFY(near(positionOf(0), 20));
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorMotion::stopsADwellAtOnce()
{
    QCOMPARE(setJogStep(device, 0, 2.5), 0);
    QCOMPARE(setJogDelay(device, 0, 1000), 0);
    QCOMPARE(startJog(device, 0, 1), 0);
    advance(1.5);
    QCOMPARE(stateOf(0).isStop, qint16(0)); // a dwell counts as running
    QCOMPARE(stateOf(0).isCanRun, qint16(0));
    QCOMPARE(startMove(device, 0), int(AxisRunning));
    QCOMPARE(stopRuning(device, 0), 0);
    QCOMPARE(stateOf(0).isCanRun, qint16(1));
    advance(10);
    QVERIFY(near(positionOf(0), 2.5));
}

void tst_SimulatorMotion::stopsAStandingAxis()
{
    QCOMPARE(stopRuning(device, 0), 0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(positionOf(0), 0.0);
}

void tst_SimulatorMotion::stopsAtOnceWithoutPower()
{
    QCOMPARE(setTargetPos(device, 0, 40), 0);
    QCOMPARE(startMove(device, 0), 0);
    advance(2);
    QCOMPARE(setMotorEnable(device, 0, 0), 0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(stateOf(0).isEnable, qint16(0));
    advance(10);
    QVERIFY(near(positionOf(0), 15));
    QCOMPARE(setMotorEnable(device, 0, 1), 0);
    QVERIFY(near(positionOf(0), 15));
    QCOMPARE(startMove(device, 0), 0);
    advance(1);
    QVERIFY(near(positionOf(0), 20)); // from a stand
    advance(10);
    QCOMPARE(positionOf(0), 40.0);
}

void tst_SimulatorMotion::refusesStartsWithoutPower()
{
    QCOMPARE(setMotorEnable(device, 0, 0), 0);
    QCOMPARE(stateOf(0).isCanRun, qint16(0));
    QCOMPARE(startMove(device, 0), int(PowerOff));
    QCOMPARE(startDrive(device, 0, 1), int(PowerOff));
    QCOMPARE(startJog(device, 0, 1), int(PowerOff));
    QCOMPARE(startCircle(device, 0, 1), int(PowerOff));
    QCOMPARE(home(device, 0), int(PowerOff));
    QCOMPARE(setMotorEnable(device, 0, 2), int(OutOfRange));
}

void tst_SimulatorMotion::refusesStartsWhileRunning()
{
    QCOMPARE(startDrive(device, 0, 1), 0);
    QCOMPARE(startMove(device, 0), int(AxisRunning));
    QCOMPARE(startDrive(device, 0, 2), int(AxisRunning));
    QCOMPARE(startJog(device, 0, 1), int(AxisRunning));
    QCOMPARE(startCircle(device, 0, 1), int(AxisRunning));
    QCOMPARE(home(device, 0), int(AxisRunning));
    QCOMPARE(startDrive(device, 1, 1), 0); // the other axis is free
}

void tst_SimulatorMotion::refusesOtherDirections()
{
    for (const int direction : {0, 3, -1}) {
        QCOMPARE(startDrive(device, 0, direction), int(OutOfRange));
        QCOMPARE(startJog(device, 0, direction), int(OutOfRange));
        QCOMPARE(startCircle(device, 0, direction), int(OutOfRange));
    }
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorMotion::keepsTheSettingsOfTheStart()
{
    QCOMPARE(setTargetPos(device, 0, 40), 0);
    QCOMPARE(startMove(device, 0), 0);
    advance(1);
    QCOMPARE(setSpeed(device, 0, 1), 0);
    QCOMPARE(setAcceleration(device, 0, 1), 0);
    QCOMPARE(setTargetPos(device, 0, 0), 0);
    advance(1);
    QVERIFY(near(positionOf(0), 15));
    QCOMPARE(stopRuning(device, 0), 0);
    advance(1);
    QVERIFY(near(positionOf(0), 20));
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorMotion::refusesStartsWithAFailedLimitOpto_data()
{
    QTest::addColumn<bool>("negative");
    QTest::newRow("negative") << true;
    QTest::newRow("positive") << false;
}

void tst_SimulatorMotion::refusesStartsWithAFailedLimitOpto()
{
    QFETCH(bool, negative);
    const Opto opto = negative ? Opto::Negative : Opto::Positive;
    simulator::setOptoFault(device, 0, opto, true);
    QCOMPARE(stateOf(0).isLeftOptoFault, qint16(negative));
    QCOMPARE(stateOf(0).isRightOptoFault, qint16(!negative));
    QCOMPARE(stateOf(0).isHomeOptoFault, qint16(0));
    QCOMPARE(stateOf(0).isCanRun, qint16(0));
    QCOMPARE(startDrive(device, 0, 1), int(OptoFault));
    QCOMPARE(home(device, 0), int(OptoFault));
    simulator::setOptoFault(device, 0, opto, false);
    QCOMPARE(stateOf(0).isCanRun, qint16(1));
    QCOMPARE(startDrive(device, 0, 1), 0);
}

void tst_SimulatorMotion::refusesHomingWithAFailedOriginOpto()
{
    simulator::setOptoFault(device, 0, Opto::Origin, true);
    QCOMPARE(stateOf(0).isHomeOptoFault, qint16(1));
    QCOMPARE(stateOf(0).isCanRun, qint16(1));
    QCOMPARE(home(device, 0), int(OptoFault));
    QCOMPARE(startDrive(device, 0, 1), 0);
}

void tst_SimulatorMotion::brakesWhenAnOptoFails()
{
    QCOMPARE(setTargetPos(device, 0, 40), 0);
    QCOMPARE(startMove(device, 0), 0);
    advance(2);
    simulator::setOptoFault(device, 0, Opto::Origin, true); // no matter for a move
    advance(0.5);
    QVERIFY(near(positionOf(0), 20));
    simulator::setOptoFault(device, 0, Opto::Negative, true);
    advance(1);
    QVERIFY(near(positionOf(0), 25));
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorMotion::brakesHomingWhenTheOriginOptoFails()
{
    setPosition(device, 0, 20);
    QCOMPARE(home(device, 0), 0);
    advance(1); // at 5 mm/s after 0.5 s and 1.25 mm
    simulator::setOptoFault(device, 0, Opto::Origin, true);
    advance(10);
    QVERIFY(near(positionOf(0), 20 - 1.25 - 2.5 - 1.25));
    QCOMPARE(stateOf(0).isHome, qint16(0));
}

void tst_SimulatorMotion::keepsMovingWithoutLink()
{
    QCOMPARE(setTargetPos(device, 0, 40), 0);
    QCOMPARE(startMove(device, 0), 0);
    loseLink(device);
    QCOMPARE(stopRuning(device, 0), int(LinkLost));
    advance(100);
    restoreLink(device);
    QCOMPARE(positionOf(0), 40.0);
}

void tst_SimulatorMotion::stepsByTriggerPulses()
{
    QCOMPARE(setTriggerInEnable(device, 0, 1), 0);
    QCOMPARE(setTriggerStep(device, 0, -2.5), 0);
    for (int pulse = 1; pulse <= 3; ++pulse) {
        triggerPulse(device, 0);
        QCOMPARE(stateOf(0).isStop, qint16(0));
        advance(1.01);
        QVERIFY(near(positionOf(0), -2.5 * pulse));
        QCOMPARE(stateOf(0).isStop, qint16(1));
    }
}

void tst_SimulatorMotion::losesTriggerPulsesWhileRunning()
{
    QCOMPARE(setTriggerInEnable(device, 0, 1), 0);
    QCOMPARE(setTriggerStep(device, 0, 2.5), 0);
    triggerPulse(device, 0);
    advance(0.5);
    triggerPulse(device, 0);
    advance(10);
    QVERIFY(near(positionOf(0), 2.5));
}

void tst_SimulatorMotion::ignoresTriggerPulsesWhenDisabled()
{
    triggerPulse(device, 0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(positionOf(0), 0.0);
}

void tst_SimulatorMotion::reportsTheJoystick()
{
    CONTROLER_STATE info{};
    QCOMPARE(getRockerInfo(device, &info), 0);
    QCOMPARE(info.rockerState, quint8(0));
    setJoystick(device, true, -7);
    QCOMPARE(getRockerInfo(device, &info), 0);
    QCOMPARE(info.rockerState, quint8(1));
    QCOMPARE(info.rockerValue, quint16(7));
    QCOMPARE(getRockerInfo(device, nullptr), int(BadArgument));
}

void tst_SimulatorMotion::drivesByJoystick()
{
    setJoystick(device, true, 5);
    advance(1);
    QCOMPARE(positionOf(0), 0.0); // not handed over yet
    QCOMPARE(getRockerEnable(device), 0);
    QCOMPARE(setRockerEnable(device, 1), 0);
    QCOMPARE(getRockerEnable(device), 1);
    QCOMPARE(stateOf(0).isCanRun, qint16(0));
    QCOMPARE(startMove(device, 0), int(JoystickDrives));
    setJoystick(device, true, 0);
    advance(5);
    QCOMPARE(stateOf(0).isCanRun, qint16(1)); // the stick at rest leaves the axis free
    setPosition(device, 0, 0);
    setJoystick(device, true, 5);
    advance(1); // to 5 mm/s in 0.5 s and 1.25 mm
    QVERIFY(near(positionOf(0), 1.25 + 2.5));
    setJoystick(device, true, -10); // 0.5 s and 1.25 mm to brake, 1 s and 5 mm to reach -10 mm/s
    advance(0.5);
    QVERIFY(near(positionOf(0), 5));
    advance(1);
    QVERIFY(near(positionOf(0), 0));
    advance(1);
    QVERIFY(near(positionOf(0), -10));
    QCOMPARE(setRockerEnable(device, 0), 0);
    QCOMPARE(stateOf(0).isStop, qint16(0));
    advance(1);
    QVERIFY(near(positionOf(0), -15));
    QCOMPARE(stateOf(0).isCanRun, qint16(1));
    advance(10);
    QVERIFY(near(positionOf(0), -15));
}

void tst_SimulatorMotion::stopsTheJoystickAtTheLimit()
{
    setJoystick(device, true, 10);
    QCOMPARE(setRockerEnable(device, 1), 0);
    advance(100);
    QCOMPARE(positionOf(0), 50.0);
    QCOMPARE(stateOf(0).isRightLimit, qint16(1));
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(positionOf(1), 170.0);
    setJoystick(device, true, -1);
    advance(1);
    QVERIFY(positionOf(0) < 50);
    QCOMPARE(stateOf(0).isRightLimit, qint16(0));
}

void tst_SimulatorMotion::handsARunningAxisToTheJoystick()
{
    QCOMPARE(setCircleDisp(device, 0, 40), 0);
    QCOMPARE(startCircle(device, 0, 1), 0);
    advance(2);
    setJoystick(device, true, 0);
    QCOMPARE(setRockerEnable(device, 1), 0);
    advance(1);
    QVERIFY(near(positionOf(0), 20));
    QCOMPARE(stateOf(0).isStop, qint16(1));
    QCOMPARE(stateOf(0).runCount, quint32(0));
}

void tst_SimulatorMotion::brakesUnderTheJoystickAsItWasStarted()
{
    setJoystick(device, true, 10);
    QCOMPARE(setRockerEnable(device, 1), 0);
    advance(1);
    QVERIFY(near(positionOf(0), 5));
    QCOMPARE(setAcceleration(device, 0, 1), 0); // with which it could no longer stop in its travel from 40 mm on
    setJoystick(device, true, 9);
    // 0.1 s and 0.95 mm to slow down to 9 mm/s, 40 mm at that speed, 0.9 s and 4.05 mm to brake.
    advance(0.1 + 40.0 / 9 + 0.45);
    QVERIFY(near(positionOf(0), 50 - 1.0125));
    advance(0.46);
    QCOMPARE(positionOf(0), 50.0);
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorMotion::keepsTheJoystickToTheMaximumSpeed()
{
    MotorParams params{};
    QCOMPARE(getMotorParams(device, 0, &params), 0);
    params.maxSpeed = 10;
    params.maxRockerSpeed = 100;
    QCOMPARE(setMotorParams(device, 0, params), 0);
    setJoystick(device, true, 10);
    QCOMPARE(setRockerEnable(device, 1), 0);
    advance(3);
    QVERIFY(near(positionOf(0), 25));
}

void tst_SimulatorMotion::holdsUnderTheJoystickUntilItMoves()
{
    setJoystick(device, true, 5);
    QCOMPARE(setRockerEnable(device, 1), 0);
    advance(1);
    QCOMPARE(stopRuning(device, 0), 0);
    advance(10);
    QVERIFY(near(positionOf(0), 5));
    setJoystick(device, true, 6);
    advance(1);
    QVERIFY(positionOf(0) > 6);
}

void tst_SimulatorMotion::leavesAxesWithoutPowerToThemselves()
{
    QCOMPARE(setMotorEnable(device, 0, 0), 0);
    setJoystick(device, true, 5);
    QCOMPARE(setRockerEnable(device, 1), 0);
    advance(1);
    QCOMPARE(positionOf(0), 0.0);
    QVERIFY(positionOf(1) > 1);
    QCOMPARE(setMotorEnable(device, 0, 1), 0);
    advance(1);
    QVERIFY(positionOf(0) > 1);
}

void tst_SimulatorMotion::refusesTheJoystickWhenThereIsNone()
{
    QCOMPARE(setRockerEnable(device, 1), int(NoJoystick));
    QCOMPARE(getRockerEnable(device), 0);
    QCOMPARE(setRockerEnable(device, 0), 0);
    QCOMPARE(setRockerEnable(device, 2), int(OutOfRange));
}

void tst_SimulatorMotion::endsTheJoystickWhenItIsUnplugged()
{
    setJoystick(device, true, 5);
    QCOMPARE(setRockerEnable(device, 1), 0);
    advance(1);
    setJoystick(device, false);
    QCOMPARE(getRockerEnable(device), 0);
    advance(0.5);
    QVERIFY(near(positionOf(0), 5));
    QCOMPARE(stateOf(0).isCanRun, qint16(1));
}

void tst_SimulatorMotion::staysInTravelUnderAWildJoystick()
{
    std::mt19937 random(99);
    std::uniform_real_distribution<double> deflection(-10, 10);
    std::uniform_real_distribution<double> pause(0, 3);
    setPosition(device, 0, 45);
    setJoystick(device, true, 0);
    QCOMPARE(setRockerEnable(device, 1), 0);
    double lowest = 50;
    double highest = -50;
    for (int i = 0; i < 2000; ++i) {
        setJoystick(device, true, std::round(deflection(random)));
        // A smaller acceleration than that of the motion under way must not carry the axis past its limit.
        QCOMPARE(setAcceleration(device, 0, 1 + (i * 37) % 100), 0);
        double before = positionOf(0);
        const double step = pause(random) / 20;
        for (int k = 0; k < 20; ++k) {
            advance(step);
            const double position = positionOf(0);
            QVERIFY(position >= -50 && position <= 50);
            QVERIFY(std::abs(position - before) <= 10 * step + 1e-9); // maxRockerSpeed
            before = position;
            lowest = std::min(lowest, position);
            highest = std::max(highest, position);
        }
    }
    QCOMPARE(highest, 50.0); // the walk has been at a limit
    QVERIFY(lowest < 0);
}

QTEST_GUILESS_MAIN(tst_SimulatorMotion)
#include "tst_SimulatorMotion.moc"
