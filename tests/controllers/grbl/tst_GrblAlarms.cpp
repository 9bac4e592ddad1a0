// SPDX-License-Identifier: MIT
#include "controllers/grbl/Bench.h"

#include <QTest>

using namespace moverStatus;

/** Homing, limits, locks, and what the board says that is not expected. */
class tst_GrblAlarms : public QObject
{
    Q_OBJECT

private slots:
    void homingMovesAllAxesAtTheSecondCall();
    void homingTellsWhereTheTravelBegins_data();
    void homingTellsWhereTheTravelBegins();
    void homesOneAxisWhereTheBoardCan_data();
    void homesOneAxisWhereTheBoardCan();
    void aBoardThatCannotHomeOneAxisIsFreed();
    void aHomingThatDoesNotEndIsNotWaitedFor_data();
    void aHomingThatDoesNotEndIsNotWaitedFor();
    void aReportOnItsWayIsNotTheEndOfHoming();
    void aStopEndsHoming();
    void aFailedHomingIsNotHomed();
    void nothingIsHomedAnyMoreAfter_data();
    void nothingIsHomedAnyMoreAfter();
    void moveNeedsAReference();
    void aHardLimitNamesItsAxisAndIsLeftSlowly();
    void aSwitchThatWasReachedOtherwiseIsLeftSlowly();
    void hardLimitsComeBackAfterARestart_data();
    void hardLimitsComeBackAfterARestart();
    void aHoldIsLeftAtRest();
    void enableIsAPermission();
    void reportsAreMadeToHavePositionsInMm();
    void aSleepingBoardIsWokenByUnlocking();
    void whatCannotMoveIsRefused_data();
    void whatCannotMoveIsRefused();
    void settingsAreReadBackAndUndone();
    void anotherProtocolIsNoBoard();
    void lateRepliesLoseNothing_data();
    void lateRepliesLoseNothing();
    void anAlarmWhileOpeningHidesNoSettings();
    void aBrokenWriteIsUndone_data();
    void aBrokenWriteIsUndone();
    void aButtonForAHoldStopsAJog();
    void anOpenDoorLocks();
    void closingEndsAHoming();
    void closingInTroubleIsAStop();
    void aBoardThatHomesToZeroIsMapped();
    void aShortListOfSettingsIsEnough();
    void theEndOfTheTravelIsReached();
    void outsideItsTravelADirectionIsKept();
    void aTargetThatTheBoardRefusesStopsAllAxes();
    void axesMayHaveAnyLetters();
};

namespace {

emulator::Options homingBoard()
{
    emulator::Options options = Bench::options();
    for (int i = 0; i < 3; ++i) {
        options.settings[130 + i] = 40;
        options.stages.push_back({-40, 0, -20});
    }
    options.settings[22] = 1;
    options.settings[23] = 7;
    options.settings[24] = 300;
    options.settings[25] = 1800;
    options.settings[26] = 25;
    return options;
}

MotorParams stage40()
{
    MotorParams stage = Bench::stage();
    stage.minPos = 0;
    stage.maxPos = 40;
    return stage;
}

void setStages(Bench &bench)
{
    for (int i = 0; i < 3; ++i)
        bench.axis(i).restore(stage40());
}

int home(Bench &bench, int axis)
{
    return bench.call([&] { return bench.axis(axis).home(); });
}

bool stands(Bench &bench)
{
    return bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Ready && bench.isStill(); }, 60);
}

bool hasSaid(const Bench &bench, const std::string &what)
{
    for (const std::string &line : bench.log) {
        if (line.find(what) != std::string::npos)
            return true;
    }
    return false;
}

bool hasSaid(const Bench &bench, moverMessages::Code code)
{
    return std::count(bench.codes.begin(), bench.codes.end(), code) > 0;
}

} // namespace

void tst_GrblAlarms::homingMovesAllAxesAtTheSecondCall()
{
    Bench bench(homingBoard());
    setStages(bench);
    QVERIFY(bench.board.locked());                        // so it is after power-on
    QCOMPARE(int(bench.axis(0).state().isCanRun), 1);     // or nobody could press what homes it
    QCOMPARE(int(bench.axis(0).state().isRightLimit), 0); // as far as it knows
    QCOMPARE(bench.moveTo(0, 1, 5, 50), int(Locked));
    QCOMPARE(home(bench, 0), int(OthersWouldMove));
    bench.run(10.5);
    QCOMPARE(home(bench, 0), int(OthersWouldMove)); // too late
    bench.run(1);
    QCOMPARE(home(bench, 1), 0);
    QCOMPARE(bench.moveTo(0, 1, 5, 50), int(bench.board.refusal()));
    QCOMPARE(int(bench.axis(2).state().isStop), 0);
    QVERIFY(stands(bench));
    for (int i = 0; i < 3; ++i) {
        QVERIFY(bench.axis(i).isHomed());
        QCOMPARE(bench.axis(i).reportedPosition(), 1.0); // the pull-off
    }
    QCOMPARE(bench.moveTo(0, 12.5, 10, 50), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.axis(0).reportedPosition(), 12.5);
    QCOMPARE(bench.firmware.positionMm(0), 12.5 - 40);
    QVERIFY(bench.axis(0).isHomed());
}

void tst_GrblAlarms::homingTellsWhereTheTravelBegins_data()
{
    QTest::addColumn<int>("toMinus"); // the board's homing direction
    QTest::addColumn<int>("reversed");
    QTest::addColumn<double>("position"); // 1 mm off the end with the switch
    QTest::addColumn<double>("board");    // at stage position 10
    QTest::newRow("minus end") << 7 << 0 << 1.0 << -30.0;
    QTest::newRow("plus end") << 0 << 0 << 39.0 << -30.0;
    QTest::newRow("minus end, reversed") << 7 << 1 << 39.0 << -10.0;
    QTest::newRow("plus end, reversed") << 0 << 1 << 1.0 << -10.0;
}

void tst_GrblAlarms::homingTellsWhereTheTravelBegins()
{
    QFETCH(int, toMinus);
    QFETCH(int, reversed);
    QFETCH(double, position);
    QFETCH(double, board);
    emulator::Options options = homingBoard();
    options.settings[23] = toMinus;
    Bench bench(options);
    MotorParams stage = stage40();
    stage.phaseDirction = uint16_t(reversed);
    for (int i = 0; i < 3; ++i)
        bench.axis(i).restore(stage);
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.axis(0).reportedPosition(), position);
    QCOMPARE(bench.moveTo(0, 10, 10, 50), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.positionMm(0), board);
    QVERIFY(bench.firmware.violations().empty());
}

void tst_GrblAlarms::homesOneAxisWhereTheBoardCan_data()
{
    QTest::addColumn<QByteArray>("tells");
    QTest::newRow("its kin") << QByteArray("[FIRMWARE:grblHAL]\r\n");
    QTest::newRow("built with it") << QByteArray("[OPT:VHL,15,128]\r\n");
}

void tst_GrblAlarms::homesOneAxisWhereTheBoardCan()
{
    QFETCH(QByteArray, tells);
    // Stock firmware gets stuck by "$HX": it is sent to boards that say what they are.
    emulator::Options options = homingBoard();
    options.homesSingleAxes = true;
    Bench bench(options);
    setStages(bench);
    bench.firmware.garble(tells.toStdString());
    bench.run(0.1);
    QCOMPARE(home(bench, 1), 0);
    QVERIFY(stands(bench));
    QVERIFY(bench.axis(1).isHomed());
    QVERIFY(!bench.axis(0).isHomed());
    QCOMPARE(bench.axis(1).reportedPosition(), 1.0);
    QCOMPARE(bench.firmware.steps(0), 0LL);
}

void tst_GrblAlarms::aBoardThatCannotHomeOneAxisIsFreed()
{
    Bench bench(homingBoard());
    setStages(bench);
    bench.firmware.garble("[FIRMWARE:grblHAL]\r\n"); // which it is not: "$HY" leaves it in Home
    bench.run(0.1);
    QCOMPARE(home(bench, 1), 0);
    QVERIFY(bench.runUntil([&] { return bench.firmware.stateName() == "Home"; }, 1));
    QVERIFY(stands(bench));
    QVERIFY(hasSaid(bench, moverMessages::HomingFailed));
    QVERIFY(!bench.axis(1).isHomed());
    QCOMPARE(home(bench, 1), int(OthersWouldMove)); // as it can
    QCOMPARE(home(bench, 1), 0);
    QVERIFY(stands(bench));
    QVERIFY(bench.axis(0).isHomed() && bench.axis(1).isHomed());
}

void tst_GrblAlarms::aHomingThatDoesNotEndIsNotWaitedFor_data()
{
    QTest::addColumn<bool>("isCut");
    QTest::newRow("the board falls silent") << true;
    QTest::newRow("its answer is lost") << false;
}

void tst_GrblAlarms::aHomingThatDoesNotEndIsNotWaitedFor()
{
    QFETCH(bool, isCut);
    Bench bench(homingBoard());
    setStages(bench);
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    if (isCut)
        bench.firmware.toHost().cut(true);
    else
        bench.firmware.toHost().add({emulator::WireFault::Kind::DropLine, 0, 0, 0});
    const double longest = 60; // three axes of 40 mm at 30 mm/s, one and a half times, and their pull-offs
    QVERIFY(bench.runUntil([&] { return bench.board.phase() != grbl::Board::Phase::Homing; }, longest));
    QVERIFY(hasSaid(bench, isCut ? moverMessages::HomingStopped : moverMessages::HomingFailed));
    bench.firmware.toHost().cut(false);
    QVERIFY(stands(bench));
    for (int i = 0; i < 3; ++i)
        QVERIFY(!bench.axis(i).isHomed());
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    QVERIFY(bench.axis(0).isHomed());
}

void tst_GrblAlarms::aReportOnItsWayIsNotTheEndOfHoming()
{
    Bench bench(homingBoard());
    bench.firmware.toHost().setDelay(0.15);
    bench.run(1);
    QVERIFY(bench.board.locked());
    home(bench, 0);
    QCOMPARE(home(bench, 0), int(Ok));
    bench.run(1);
    QCOMPARE(bench.board.phase(), grbl::Board::Phase::Homing);
    bench.stop(0);
    QVERIFY(bench.runUntil([&] { return bench.firmware.state() == emulator::State::Alarm; }, 3));
}

void tst_GrblAlarms::aStopEndsHoming()
{
    Bench bench(homingBoard());
    setStages(bench);
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    bench.run(0.5);
    QCOMPARE(bench.stop(2), 0);
    QVERIFY(stands(bench));
    QVERIFY(hasSaid(bench, "the position is lost"));
    QVERIFY(bench.board.locked());
    QVERIFY(!bench.axis(0).isHomed());
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    QVERIFY(bench.axis(0).isHomed());
}

void tst_GrblAlarms::aFailedHomingIsNotHomed()
{
    Bench bench(homingBoard());
    setStages(bench);
    for (int i = 0; i < 3; ++i)
        bench.firmware.forceSwitch(i, 0); // never found
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    QVERIFY(hasSaid(bench, "alarm 9"));
    QVERIFY(bench.board.locked());
    QVERIFY(!bench.axis(0).isHomed());
}

void tst_GrblAlarms::nothingIsHomedAnyMoreAfter_data()
{
    QTest::addColumn<QByteArray>("what");
    for (const char *const what :
         {"a reset at rest", "a reset in motion", "power off and on", "an alarm", "the port opened again",
          "a homing that fails", "a reset that nobody heard", "a stop in motion whose end is not seen"})
        QTest::newRow(what) << QByteArray(what);
}

void tst_GrblAlarms::nothingIsHomedAnyMoreAfter()
{
    QFETCH(QByteArray, what);
    emulator::Options options = homingBoard();
    options.settings[21] = 1;
    Bench bench(options);
    setStages(bench);
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.moveTo(1, 20, 20, 50), 0);
    if (what.contains("in motion"))
        bench.run(0.5);
    else
        QVERIFY(stands(bench));
    QVERIFY(bench.axis(0).isHomed() && bench.axis(1).isHomed() && bench.axis(2).isHomed());

    const bool isCut = what.contains("nobody heard") || what.contains("not seen");
    if (what.contains("not seen"))
        QCOMPARE(bench.stop(1), 0);
    bench.firmware.toHost().cut(isCut);
    if (what.contains("reset"))
        bench.firmware.pressReset();
    else if (what == "power off and on")
        bench.firmware.powerCycle();
    else if (what == "an alarm")
        bench.firmware.forceSwitch(1, 1);
    if (what == "the port opened again") {
        bench.board.closed();
        bench.board.opened(bench.now());
    } else if (what == "a homing that fails") {
        for (int i = 0; i < 3; ++i)
            bench.firmware.forceSwitch(i, 0);
        home(bench, 0);
        QCOMPARE(home(bench, 0), 0);
    }
    bench.run(isCut ? 13 : 1);
    bench.firmware.toHost().cut(false);
    QVERIFY(bench.runUntil([&] { return bench.board.answers() && stands(bench); }, 10));
    for (int i = 0; i < 3; ++i) {
        QVERIFY(!bench.axis(i).isHomed());
        QCOMPARE(int(bench.axis(i).state().isHome), 0);
        QVERIFY(bench.moveTo(i, 10, 10, 50) < 0);
    }
}

void tst_GrblAlarms::moveNeedsAReference()
{
    Bench bench(homingBoard());
    setStages(bench);
    QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(true); }), 0); // unlocks
    QVERIFY(bench.runUntil([&] { return !bench.board.locked(); }, 2));
    QVERIFY(stands(bench));
    QCOMPARE(bench.moveTo(0, 10, 5, 50), int(ReferenceFirst));
    bench.axis(0).settings.relativeDisp = 1;
    QCOMPARE(bench.call([&] { return bench.axis(0).startDrive(-1); }), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.steps(0), -250LL);
}

void tst_GrblAlarms::aHardLimitNamesItsAxisAndIsLeftSlowly()
{
    emulator::Options options = homingBoard();
    options.settings[21] = 1;
    Bench bench(options);
    setStages(bench);
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    QVERIFY(bench.axis(0).isHomed());
    bench.axis(0).settings.relativeDispEnable = 0;
    bench.axis(0).settings.speed = 10;
    QCOMPARE(bench.call([&] { return bench.axis(0).startDrive(-1); }), 0);
    QVERIFY(bench.runUntil([&] { return bench.board.locked(); }, 5));
    QVERIFY(stands(bench));
    QVERIFY(hasSaid(bench, "alarm 1"));
    QVERIFY(hasSaid(bench, "switch of axis X"));
    QVERIFY(!bench.axis(0).isHomed());
    const long long at = bench.firmware.steps(0);
    bench.run(5);
    QCOMPARE(bench.firmware.steps(0), at); // nothing by itself
    QVERIFY(bench.board.locked());
    QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(true); }), 0);
    QVERIFY(bench.runUntil([&] { return !bench.board.locked() && bench.isStill(); }, 5));
    QCOMPARE(bench.call([&] { return bench.axis(0).startDrive(-1); }), int(OptoFault));
    bench.axis(0).settings.relativeDispEnable = 1;
    bench.axis(0).settings.relativeDisp = 3;
    const double from = bench.now();
    QCOMPARE(bench.call([&] { return bench.axis(0).startDrive(1); }), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 10));
    QVERIFY(bench.now() - from > 0.55); // 5 mm/s
    QCOMPARE(bench.firmware.steps(0), at + 750);
    QVERIFY(bench.runUntil([&] { return bench.firmware.settings()[21] == 1; }, 2));
    QVERIFY(stands(bench));
    QVERIFY(!bench.board.locked());
}

void tst_GrblAlarms::aSwitchThatWasReachedOtherwiseIsLeftSlowly()
{
    emulator::Options options = homingBoard();
    options.settings[21] = 1;
    Bench bench(options);
    setStages(bench);
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    bench.board.setRanOn(0, -1); // once, long ago
    bench.run(1);
    bench.firmware.forceSwitch(0, 1); // pushed onto it by hand, at rest
    QVERIFY(bench.runUntil([&] { return bench.board.locked() && stands(bench); }, 5));
    QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(true); }), 0);
    QVERIFY(bench.runUntil([&] { return !bench.board.locked() && stands(bench); }, 5));
    // Nobody knows which way is off it: each can be tried, slowly.
    bench.axis(0).settings.relativeDispEnable = 1;
    bench.axis(0).settings.relativeDisp = 3;
    bench.axis(0).settings.speed = 25;
    for (const int direction : {1, -1}) {
        const double from = bench.now();
        QCOMPARE(bench.call([&] { return bench.axis(0).startDrive(direction); }), 0);
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 10));
        QVERIFY(bench.now() - from > 0.55); // 5 mm/s
    }
    // It comes to a second time as to the first.
    for (int again = 0; again < 2; ++again) {
        bench.firmware.forceSwitch(0, 0);
        QVERIFY(bench.runUntil([&] { return !bench.board.limitsOff() && bench.isStill(); }, 10));
        QCOMPARE(bench.firmware.settings()[21], 1.0);
        bench.firmware.forceSwitch(0, 1);
        QVERIFY(bench.runUntil([&] { return bench.board.locked() && stands(bench); }, 5));
        QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(true); }), 0);
        QVERIFY(bench.runUntil([&] { return !bench.board.locked() && stands(bench); }, 5));
        QCOMPARE(bench.firmware.settings()[21], 0.0);
    }
}

void tst_GrblAlarms::hardLimitsComeBackAfterARestart_data()
{
    QTest::addColumn<bool>("isLost");
    QTest::newRow("at once") << false;
    QTest::newRow("the line is lost") << true;
}

void tst_GrblAlarms::hardLimitsComeBackAfterARestart()
{
    QFETCH(bool, isLost);
    Bench bench(homingBoard());
    QCOMPARE(bench.firmware.settings()[21], 0.0);
    bench.run(1);
    QCOMPARE(bench.firmware.settings()[21], 0.0); // as somebody has it
    QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(true); }), 0);
    QVERIFY(bench.runUntil([&] { return !bench.board.locked() && bench.isStill(); }, 5));
    bench.board.setLimitsOff(true); // as it was kept when the program ended
    if (isLost)
        bench.firmware.toBoard().add({emulator::WireFault::Kind::DropLine, 0, 0, 0});
    QVERIFY(bench.runUntil([&] { return hasSaid(bench, moverMessages::LimitsOn); }, 20));
    QCOMPARE(bench.firmware.settings()[21], 1.0); // not said before it is so
    QVERIFY(!bench.board.limitsOff());
}

void tst_GrblAlarms::aHoldIsLeftAtRest()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 30, 10, 50), 0);
    bench.run(1);
    bench.firmware.send("!"); // somebody's button
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    bench.firmware.send("!");
    bench.run(1);
    QVERIFY(stands(bench));
    // The door in the middle of a move: what it has stopped does not go on by itself.
    QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
    bench.run(1);
    bench.firmware.send("\x84");
    bench.run(3);
    QVERIFY(stands(bench));
    QVERIFY(hasSaid(bench, "on hold"));
    QVERIFY(bench.firmware.steps(0) < Bench::steps(50));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    QCOMPARE(bench.moveTo(0, 5, 10, 50), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(5));
}

void tst_GrblAlarms::enableIsAPermission()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 30, 10, 50), 0);
    bench.run(1);
    QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(false); }), 0);
    QVERIFY(stands(bench));
    QVERIFY(bench.firmware.steps(0) < Bench::steps(15));
    QCOMPARE(int(bench.axis(0).state().isEnable), 0);
    QCOMPARE(bench.moveTo(0, 3, 10, 50), int(PowerOff));
    QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(true); }), 0);
    QCOMPARE(bench.moveTo(0, 3, 10, 50), 0);
    QVERIFY(stands(bench));
}

void tst_GrblAlarms::reportsAreMadeToHavePositionsInMm()
{
    emulator::Options options = Bench::options();
    options.settings[10] = 0; // work positions, and no free blocks
    options.settings[13] = 1; // in inches
    Bench bench(options);
    QCOMPARE(bench.firmware.settings()[10], 3.0);
    QCOMPARE(bench.firmware.settings()[13], 0.0);
    QCOMPARE(bench.moveTo(0, 12.5, 10, 50), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.axis(0).reportedPosition(), 12.5);
    QCOMPARE(bench.firmware.steps(0), Bench::steps(12.5));
    QVERIFY(bench.firmware.violations().empty());
}

void tst_GrblAlarms::aSleepingBoardIsWokenByUnlocking()
{
    Bench bench;
    bench.firmware.send("$SLP\n"); // somebody else's
    QVERIFY(bench.runUntil([&] { return bench.board.locked(); }, 2));
    QVERIFY(hasSaid(bench, moverMessages::BoardLocked));
    QCOMPARE(bench.moveTo(0, 5, 10, 50), int(Locked));
    QCOMPARE(bench.firmware.stateName(), std::string("Sleep")); // not by itself
    do {
        QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(true); }), 0);
        QVERIFY(stands(bench));
    } while (bench.board.locked() && bench.now() < 60); // it wakes up locked
    QCOMPARE(bench.moveTo(0, 5, 10, 50), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(5));
}

void tst_GrblAlarms::whatCannotMoveIsRefused_data()
{
    QTest::addColumn<int>("setting");
    QTest::newRow("no steps") << 100;
    QTest::newRow("no speed") << 110;
    QTest::newRow("no ramp") << 120;
}

void tst_GrblAlarms::whatCannotMoveIsRefused()
{
    QFETCH(int, setting);
    emulator::Options options = Bench::options();
    options.settings[setting] = 0; // the board takes it
    Bench bench(options);
    QCOMPARE(bench.moveTo(0, 5, 10, 50), int(NotAvailable));
    bench.run(1);
    QCOMPARE(bench.firmware.steps(0), 0LL);
}

void tst_GrblAlarms::settingsAreReadBackAndUndone()
{
    Bench bench;
    QCOMPARE(bench.board.write({{110, 1200}, {120, 400}}), 0);
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Ready; }, 5));
    QCOMPARE(bench.board.written(), 0);
    QCOMPARE(bench.firmware.settings()[110], 1200.0);
    QCOMPARE(bench.board.setting(120, 0), 400.0);
    // The second one is refused: the first is put back.
    QCOMPARE(bench.board.write({{110, 900}, {120, -1}}), 0);
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Ready; }, 5));
    QCOMPARE(bench.board.written(), int(WriteFailed));
    QCOMPARE(bench.firmware.settings()[110], 1200.0);
    QCOMPARE(bench.firmware.settings()[120], 400.0);
    // Not in motion.
    QCOMPARE(bench.moveTo(0, 30, 10, 50), 0);
    bench.run(0.5);
    QCOMPARE(bench.board.write({{110, 900}}), int(AxisRunning));
    QVERIFY(bench.firmware.violations().empty());
}

void tst_GrblAlarms::anotherProtocolIsNoBoard()
{
    std::vector<std::string> log;
    grbl::AxisSetup setup;
    setup.stage = Bench::stage();
    std::vector<grbl::AxisSetup> setups{setup};
    grbl::Board board(setups, [&log](const grbl::Board::Note &note) { log.push_back(note.text); });
    board.opened(0);
    std::string sent;
    double now = 0;
    while (board.opening() && now < 10) {
        board.received(std::string("\x02\x55login: ok?\r\n$GPGGA,1,2*47\r\n\x80\xff"), now);
        board.run(now);
        sent += board.takeOutput();
        now += 0.05;
    }
    QCOMPARE(board.phase(), grbl::Board::Phase::Closed);
    QVERIFY(now < 5);
    QCOMPARE(sent, std::string(1, '\x18')); // nothing else goes to what is no board
    QVERIFY(!log.empty());
}

void tst_GrblAlarms::lateRepliesLoseNothing_data()
{
    QTest::addColumn<double>("delay");
    QTest::addColumn<double>("lasts");
    for (const double delay : {0.2, 0.5, 1.0, 1.2}) {
        QTest::addRow("%.1f s, for long", delay) << delay << 6.0;
        QTest::addRow("%.1f s, for a moment", delay) << delay << 1.3;
    }
}

void tst_GrblAlarms::lateRepliesLoseNothing()
{
    QFETCH(double, delay);
    QFETCH(double, lasts);
    Bench bench;
    QCOMPARE(bench.moveTo(0, 30, 10, 50), 0);
    bench.run(1);
    bench.firmware.toHost().setDelay(delay);
    bench.run(lasts);
    QVERIFY(!bench.log.empty());
    bench.firmware.toHost().setDelay(0);
    const double mended = bench.now();
    QVERIFY(bench.runUntil([&] { return bench.board.answers() && bench.board.refusal() == Ok; }, 20));
    QVERIFY2(bench.now() - mended < 5 + delay, qPrintable(QString::number(bench.now() - mended)));
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    QCOMPARE(bench.moveTo(0, 5, 10, 50), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(5));
}

void tst_GrblAlarms::anAlarmWhileOpeningHidesNoSettings()
{
    Bench bench;
    bench.firmware.powerCycle();
    bench.board.opened(bench.now());
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Asking; }, 2));
    bench.firmware.garble("ALARM:11\r\n"); // homing is wanted, as some firmware says behind its banner
    QVERIFY(bench.runUntil([&] { return !bench.board.opening(); }, 6));
    QVERIFY(hasSaid(bench, "alarm 11"));
    QVERIFY(stands(bench));
    QCOMPARE(bench.board.setting(112, 0), 1800.0);
    // And one behind which only a reset is heard.
    bench.firmware.powerCycle();
    bench.board.opened(bench.now());
    bench.firmware.garble("ALARM:1\r\n");
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Ready; }, 8));
    QCOMPARE(bench.board.setting(112, 0), 1800.0);
}

void tst_GrblAlarms::aBrokenWriteIsUndone_data()
{
    QTest::addColumn<QByteArray>("by");
    for (const char *const by : {"a reset", "a lost line", "an unplugged port"})
        QTest::newRow(by) << QByteArray(by);
}

void tst_GrblAlarms::aBrokenWriteIsUndone()
{
    QFETCH(QByteArray, by);
    Bench bench;
    if (by == "a lost line")
        bench.firmware.toBoard().add({emulator::WireFault::Kind::DropLine, 1, 0, 0});
    QCOMPARE(bench.board.write({{110, 900}, {120, 400}, {121, 450}}), 0);
    QVERIFY(bench.runUntil([&] { return bench.firmware.settings()[110] == 900; }, 1));
    if (by == "a reset")
        bench.firmware.pressReset();
    if (by == "an unplugged port") {
        bench.board.closed();
        bench.firmware.powerCycle();
        bench.board.opened(bench.now());
    }
    QVERIFY(bench.runUntil([&] { return bench.board.written() == WriteFailed; }, 5));
    QVERIFY(bench.runUntil([&] { return bench.firmware.settings()[110] == 1800; }, 10));
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Ready; }, 5));
    QVERIFY(hasSaid(bench, "undone"));
    QCOMPARE(bench.firmware.settings()[120], 500.0);
    QCOMPARE(bench.firmware.settings()[121], 500.0);
    QCOMPARE(bench.board.setting(110, 0), 1800.0);
}

void tst_GrblAlarms::aButtonForAHoldStopsAJog()
{
    for (int phase = 0; phase < 20; ++phase) {
        Bench bench(Bench::options(), unsigned(phase));
        QCOMPARE(bench.moveTo(0, 30, 10, 50), 0);
        bench.run(1 + phase * 0.0077);
        bench.firmware.pressHold(true);
        bench.run(0.2);
        bench.firmware.pressHold(false);
        QVERIFY(stands(bench));
        QVERIFY(hasSaid(bench, "on hold"));
        QVERIFY(bench.firmware.steps(0) < Bench::steps(15));
        QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
        QCOMPARE(bench.moveTo(0, 5, 10, 50), 0);
        QVERIFY(stands(bench));
        QCOMPARE(bench.firmware.steps(0), Bench::steps(5));
    }
}

void tst_GrblAlarms::anOpenDoorLocks()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 30, 10, 50), 0);
    bench.run(1);
    bench.firmware.setDoor(true);
    QVERIFY(bench.runUntil([&] { return bench.board.locked(); }, 8));
    const std::size_t said = bench.log.size();
    bench.run(10);
    QCOMPARE(bench.log.size(), said);
    QCOMPARE(bench.moveTo(0, 5, 10, 50), int(Locked));
    bench.firmware.setDoor(false);
    QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(true); }), 0);
    QVERIFY(bench.runUntil([&] { return bench.board.refusal() == Ok; }, 5));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    QCOMPARE(bench.moveTo(0, 5, 10, 50), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(5));
}

void tst_GrblAlarms::closingEndsAHoming()
{
    Bench bench(homingBoard());
    setStages(bench);
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    bench.run(0.5);
    const double closed = bench.now();
    bench.call([&] { return bench.board.stopAll(), 0; });
    bench.run(5);
    QVERIFY(bench.firmware.lastStep() < closed + 0.1);
    QVERIFY(hasSaid(bench, "the position is lost"));
    QVERIFY(!bench.axis(0).isHomed());
}

void tst_GrblAlarms::closingInTroubleIsAStop()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 40, 10, 50), 0);
    bench.run(0.73);
    bench.firmware.toBoard().add({emulator::WireFault::Kind::Drop, 0, 0, 0});
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Cancelling; }, 1));
    bench.call([&] { return bench.board.stopAll(), 0; });
    QVERIFY(stands(bench));
    QVERIFY(bench.firmware.steps(0) < Bench::steps(15)); // it does not take its run up again
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
}

void tst_GrblAlarms::aBoardThatHomesToZeroIsMapped()
{
    for (const int toMinus : {7, 0}) {
        emulator::Options options = homingBoard();
        options.settings[23] = toMinus;
        options.homesToZero = true;
        Bench bench(options);
        setStages(bench);
        home(bench, 0);
        QCOMPARE(home(bench, 0), 0);
        QVERIFY(stands(bench));
        const double pulledOff = toMinus ? 1.0 : 39.0;
        QCOMPARE(bench.axis(0).reportedPosition(), pulledOff);
        QCOMPARE(bench.moveTo(0, 10, 10, 50), 0);
        QVERIFY(stands(bench));
        QCOMPARE(bench.axis(0).reportedPosition(), 10.0);
        QCOMPARE(bench.firmware.positionMm(0), 10 - pulledOff);
    }
}

void tst_GrblAlarms::aShortListOfSettingsIsEnough()
{
    emulator::Options options = homingBoard();
    options.firmware = emulator::Firmware::FluidNc;
    options.settings[10] = 1;
    for (const std::set<int> &listed :
         {std::set<int>{10, 22, 100, 101, 102, 110, 111, 112, 120, 121, 122}, std::set<int>{32}}) {
        options.listed = listed;
        Bench bench(options);
        setStages(bench);
        QCOMPARE(bench.board.phase(), grbl::Board::Phase::Ready);
        QCOMPARE(home(bench, 1), 0); // one axis
        QVERIFY(stands(bench));
        QVERIFY(bench.axis(1).isHomed());
        QCOMPARE(bench.axis(1).reportedPosition(), 1.0);
        QCOMPARE(bench.firmware.steps(0), 0LL);
        QCOMPARE(bench.moveTo(1, 10, 10, 50), 0);
        QVERIFY(stands(bench));
        QCOMPARE(bench.firmware.positionMm(1), -30.0);
        QVERIFY(bench.firmware.violations().empty());
    }
}

void tst_GrblAlarms::theEndOfTheTravelIsReached()
{
    // Its soft limits are refused by the rounding to a step, where that leads outside.
    emulator::Options options = homingBoard();
    options.settings[20] = 1;
    options.settings[27] = 0.5;
    for (int i = 0; i < 3; ++i)
        options.settings[100 + i] = 333.34;
    Bench bench(options);
    setStages(bench);
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    for (const double end : {0.0, 40.0}) {
        QCOMPARE(bench.moveTo(0, end, 20, 50), 0);
        QVERIFY(stands(bench));
        QVERIFY2(std::abs(bench.axis(0).reportedPosition() - end) < 0.004, qPrintable(QString::number(end)));
    }
    QVERIFY(!hasSaid(bench, "refused"));
}

void tst_GrblAlarms::outsideItsTravelADirectionIsKept()
{
    Bench bench;
    MotorParams stage = Bench::stage();
    stage.minPos = 10; // without homing it stands at 0, where the board was switched on
    bench.axis(0).restore(stage);
    bench.axis(0).settings.relativeDisp = 12;
    QCOMPARE(bench.call([&] { return bench.axis(0).startDrive(-1); }), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.steps(0), 0LL);
    // And a stop on the way stands where it stops.
    QCOMPARE(bench.moveTo(1, 90, 10, 50), 0);
    QCOMPARE(bench.call([&] { return bench.axis(0).startDrive(1); }), 0);
    bench.run(0.5);
    QCOMPARE(bench.stop(0), 0);
    bench.run(1);
    QVERIFY(bench.firmware.steps(0) > 0 && bench.firmware.steps(0) < Bench::steps(9));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    QVERIFY(bench.axis(1).running());
    bench.axis(0).settings.relativeDisp = 20;
    QCOMPARE(bench.call([&] { return bench.axis(0).startDrive(1); }), 0);
    QVERIFY(stands(bench));
    QVERIFY(bench.firmware.steps(0) > Bench::steps(20));
    QVERIFY(bench.log.empty());
}

void tst_GrblAlarms::aTargetThatTheBoardRefusesStopsAllAxes()
{
    emulator::Options options = homingBoard();
    options.settings[20] = 1;
    Bench bench(options);
    setStages(bench);
    MotorParams longer = stage40(); // than the board's travel
    longer.maxPos = 45;
    bench.axis(0).restore(longer);
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.moveTo(0, 44, 20, 50), 0);
    QCOMPARE(bench.moveTo(1, 39, 3, 50), 0);
    QVERIFY(bench.runUntil([&] { return hasSaid(bench, moverMessages::OutsideTravel); }, 10));
    QVERIFY(stands(bench));
    QVERIFY(bench.axis(0).reportedPosition() <= 40);
    QVERIFY(bench.axis(1).reportedPosition() < 20);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(bench.axis(i).isHomed()); // nothing is lost
        QCOMPARE(bench.firmware.positionMm(i) + 40, bench.axis(i).reportedPosition());
    }
    QCOMPARE(bench.moveTo(0, 10, 10, 50), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.axis(0).reportedPosition(), 10.0);
}

void tst_GrblAlarms::axesMayHaveAnyLetters()
{
    emulator::Options options = homingBoard();
    options.axes = 4;
    options.settings[21] = 1;
    options.settings[23] = 15;
    options.settings[133] = 40;
    options.settings[103] = 250;
    options.settings[113] = 1800;
    options.settings[123] = 500;
    options.stages.push_back({-40, 0, -20});
    Bench bench(options, 1, {3, 0}); // A and X
    for (int i = 0; i < 2; ++i)
        bench.axis(i).restore(stage40());
    home(bench, 0);
    QCOMPARE(home(bench, 0), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.moveTo(0, 12.5, 10, 50), 0);
    QCOMPARE(bench.moveTo(1, 7, 10, 50), 0);
    QVERIFY(stands(bench));
    QCOMPARE(bench.firmware.positionMm(3), 12.5 - 40);
    QCOMPARE(bench.firmware.positionMm(0), 7.0 - 40);
    QCOMPARE(bench.firmware.positionMm(1), -39.0); // the pull-off, where homing has left it
    QCOMPARE(bench.firmware.positionMm(2), -39.0);
    QCOMPARE(bench.axis(0).reportedPosition(), 12.5);
    bench.firmware.forceSwitch(3, 1);
    QVERIFY(bench.runUntil([&] { return bench.board.locked() && stands(bench); }, 5));
    QVERIFY(hasSaid(bench, "switch of axis A"));
    QVERIFY(bench.firmware.violations().empty());
}

QTEST_GUILESS_MAIN(tst_GrblAlarms)
#include "tst_GrblAlarms.moc"
