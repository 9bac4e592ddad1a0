// SPDX-License-Identifier: MIT
#include "tests/controllers/emulator/Host.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <cmath>

using emulator::State;
using emulator::Violation;
using emulator::WireFault;

/** What a driver relies on, one statement a test. */
class tst_EmulatedBoard : public QObject
{
    Q_OBJECT

private slots:
    // Lines
    void answersEachLineEnd();
    void answersInOrderWhatItHasRoomFor();
    void losesWhatItHasNoRoomFor();
    void losesWhatArrivesWhileItStores();
    void picksRealTimeBytesOutOfALine();
    void answersAQuestionMarkAtOnce();
    void answersSeveralQuestionMarksWithOneReport();
    void reportsOffsetsAndOverridesNowAndThen();
    void answersAQuestionMarkBehindAList();
    void saysTheSameToTheSame();

    // Jogs
    void movesAllAxesOfALineTogether();
    void movesNoFasterThanItsAxesMay();
    void takesFifteenJogsAtOnce();
    void runsThroughColinearJogsWithoutSlowing();
    void slowsDownForACorner();
    void stopsWhereTheLastLineSaid();
    void runsToMachineZeroWithoutAnAxisWord();
    void countsRelativeLinesAsViolations();
    void carriesTheRestOfAStep();
    void runsNoSlowerThanItsTimerCounts();
    void keepsItsStepsWhenTheirSizeChanges();

    // Cancel
    void cancelsWithItsRamp_data();
    void cancelsWithItsRamp();
    void losesACancelThatComesBeforeTheLine_data();
    void losesACancelThatComesBeforeTheLine();
    void goesDeafAfterALateSecondCancel();
    void holdsAfterALateSecondHold();
    void runsLinesThatCameDuringACancel();
    void runsTheLineThatWaitedForABlock();
    void emptiesAFullQueueWithoutALineWaiting();
    void answersTheBarrierAtRest();
    void ignoresACancelAtRestAndInRun();

    // Hold, reset, alarms
    void forgetsResumeWhileSlowing();
    void keepsThePositionInAResetAtRest();
    void alarmsInAResetInMotion();
    void isLockedAtPowerOnWithHoming();
    void endsMotionAtASwitch();
    void alarmsAgainWhenTheSwitchOpens();
    void refusesJogsOutOfTheTravel();
    void switchesItsMotorsOff();

    // Homing
    void homesAllAxes_data();
    void homesAllAxes();
    void isSilentWhileHoming();
    void failsHoming_data();
    void failsHoming();
    void hangsInHomeOfOneAxis();
    void homesOneAxisWhereItCan();

    // Options and faults
    void hasAsManyAxesAsAsked();
    void runsOnAClockOfItsOwn_data();
    void runsOnAClockOfItsOwn();
    void losesDoublesAndChangesBytes_data();
    void losesDoublesAndChangesBytes();
    void losesBytesOnTheWayBack();
    void answersLate();
    void keepsQuietOnABrokenWire();
    void startsAnewBehindItsBootLoader();
    void keepsItsSettings();
    void speaksAsGrblHal();
    void noticesWhatAHostShouldNotSend_data();
    void noticesWhatAHostShouldNotSend();
};

namespace {

QString text(const std::string &line)
{
    return QString::fromStdString(line);
}

bool has(const emulator::Board &board, Violation::Kind kind)
{
    return std::any_of(board.violations().begin(), board.violations().end(), [kind](const Violation &each) {
        return each.kind == kind;
    });
}

/** mm/s of an axis over each window, from its recorded steps. */
std::vector<double> speeds(const std::vector<emulator::Step> &steps, double from, double to, double window)
{
    std::vector<double> all;
    for (double start = from; start + window <= to; start += window) {
        const auto count = std::count_if(steps.begin(), steps.end(), [&](const emulator::Step &step) {
            return step.time >= start && step.time < start + window;
        });
        all.push_back(static_cast<double>(count) / 250 / window);
    }
    return all;
}

constexpr double deafAfter = 0.275; // s behind a cancel at 10 mm/s with 50 mm/s²

} // namespace

void tst_EmulatedBoard::answersEachLineEnd()
{
    Host host;
    QCOMPARE(text(host.ask("\n")), QString("ok"));
    QCOMPARE(text(host.ask("$X\r")), QString("ok"));
    QCOMPARE(text(host.ask("$X\r\n")), QString("ok|ok"));
    QCOMPARE(text(host.ask(std::string(79, 'G') + "\n")), QString("error:2"));
    QCOMPARE(text(host.ask(std::string(80, 'G') + "\n")), QString("error:11"));
}

void tst_EmulatedBoard::answersInOrderWhatItHasRoomFor()
{
    Host host;
    QCOMPARE(text(host.ask("$X\n\nQ\n$Q\n")), QString("ok|ok|error:2|error:2"));
}

void tst_EmulatedBoard::losesWhatItHasNoRoomFor()
{
    Host host;
    for (int i = 0; i < 16; ++i) {
        host.say("$J=G53X" + std::to_string(i + 1) + "Y0Z0F60\n", 0.01);
    }
    QCOMPARE(host.board.planner().free(), 0);
    host.say(std::string(127, '\n'), 0.1);
    QCOMPARE(host.board.freeBytes(), 1);
    QVERIFY(!has(host.board, Violation::Kind::Overflow));
    host.say("\n\n\n", 0.1);
    QCOMPARE(host.board.freeBytes(), 0);
    QVERIFY(has(host.board, Violation::Kind::Overflow));
    host.run(30);
    const auto answers =
        std::count_if(host.heard.begin(), host.heard.end(), [](const Heard &each) { return each.text == "ok"; });
    QCOMPARE(answers, 16 + 128);
}

void tst_EmulatedBoard::losesWhatArrivesWhileItStores()
{
    emulator::Options options = Host::fast();
    options.storeTime = 0.02;
    Host host(options);
    host.board.send("$120=60\n$121=60\n");
    host.run(0.1);
    QCOMPARE(host.board.settings()[120], 60.0);
    QCOMPARE(host.board.settings()[121], 50.0);
    QVERIFY(has(host.board, Violation::Kind::WhileStoring));
}

void tst_EmulatedBoard::picksRealTimeBytesOutOfALine()
{
    Host host;
    const std::vector<std::string> said = host.say("$J=G53X?1Y0Z0F600\n");
    QCOMPARE(said.size(), std::size_t(2));
    QVERIFY(said[0].compare(0, 5, "<Idle") == 0 || said[0].compare(0, 4, "<Jog") == 0);
    QCOMPARE(text(said[1]), QString("ok"));
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.positionMm(0), 1.0);
}

void tst_EmulatedBoard::answersAQuestionMarkAtOnce()
{
    Host host;
    const double sent = host.board.now();
    host.say("?");
    QVERIFY(host.heard.back().time - sent >= 0.0002);
    QVERIFY(host.heard.back().time - sent <= 0.0004);
}

void tst_EmulatedBoard::answersSeveralQuestionMarksWithOneReport()
{
    Host host;
    QCOMPARE(host.say("??").size(), std::size_t(1));
    QCOMPARE(host.say(std::string(20, '?')).size(), std::size_t(3));
}

void tst_EmulatedBoard::reportsOffsetsAndOverridesNowAndThen()
{
    Host host;
    const auto reportsWith = [&host](const char *field, int count) {
        std::vector<int> at;
        for (int i = 1; i <= count; ++i) {
            if (host.ask("?", 0.02).find(field) != std::string::npos) {
                at.push_back(i);
            }
        }
        return at;
    };
    QCOMPARE(reportsWith("WCO", 31), (std::vector<int>{1, 11, 21, 31}));
    QCOMPARE(reportsWith("Ov:", 21), (std::vector<int>{1, 11, 21}));
    host.say("$J=G53X50Y0Z0F600\n");
    QVERIFY(reportsWith("WCO", 60).size() <= 3);
    // At once when one has changed.
    host.say("\x91");
    QVERIFY(host.ask("?").find("Ov:110,100,100") != std::string::npos);
}

void tst_EmulatedBoard::answersAQuestionMarkBehindAList()
{
    Host host;
    host.board.send("$$\n");
    host.run(0.005);
    const std::vector<std::string> said = host.say("?", 0.1);
    QCOMPARE(text(said[said.size() - 2]), QString("ok"));
    QCOMPARE(said.back()[0], '<');
}

void tst_EmulatedBoard::saysTheSameToTheSame()
{
    const auto talk = [] {
        Host host;
        host.say("$J=G53X3Y-2Z1F900\n", 0.3);
        host.say("\x85\n", 0.5);
        host.say("?$$\n", 0.3);
        std::string all;
        for (const Heard &each : host.heard) {
            all += each.text + std::to_string(each.time);
        }
        return all;
    };
    QCOMPARE(talk(), talk());
}

void tst_EmulatedBoard::movesAllAxesOfALineTogether()
{
    Host host;
    host.say("$J=G53X4Y-2Z1F600\n");
    QVERIFY(host.comesToRest());
    const std::vector<emulator::Step> x = host.board.takeSteps(0);
    const std::vector<emulator::Step> y = host.board.takeSteps(1);
    QCOMPARE(host.board.steps(0), 1000LL);
    QCOMPARE(host.board.steps(1), -500LL);
    QCOMPARE(host.board.steps(2), 250LL);
    QVERIFY(std::fabs(x.back().time - y.back().time) < 0.02);
    QCOMPARE(y.front().direction, -1);
}

void tst_EmulatedBoard::movesNoFasterThanItsAxesMay()
{
    Host host;
    host.say("$110=1500\n");
    host.say("$111=60\n");
    host.say("$J=G53X30Y3Z0F999999\n", 1);
    QVERIFY(host.ask("?").find("FS:603,0") != std::string::npos); // Y goes 60
}

void tst_EmulatedBoard::takesFifteenJogsAtOnce()
{
    Host host;
    const double sent = host.board.now();
    for (int i = 1; i <= 20; ++i) {
        host.board.send("$J=G91X0.5F300\n");
    }
    host.run(0.036);
    // All that have come so far are answered.
    QVERIFY(host.heard.size() >= 15);
    host.run(0.05);
    QCOMPARE(host.board.planner().free(), 0);
    const auto answered = [&](double after) {
        return std::count_if(host.heard.begin(), host.heard.end(), [&](const Heard &each) {
            return each.text == "ok" && each.time < sent + after && each.time > sent;
        });
    };
    QCOMPARE(answered(0.09), 15);
    QVERIFY(has(host.board, Violation::Kind::FullPlanner));
    host.run(0.5);
    QCOMPARE(answered(0.5), 19);
}

void tst_EmulatedBoard::runsThroughColinearJogsWithoutSlowing()
{
    Host host;
    for (int i = 1; i <= 10; ++i) {
        host.board.send("$J=G53X" + std::to_string(i) + "Y0Z0F600\n");
    }
    host.run(0.02);
    const double start = host.board.now();
    QVERIFY(host.comesToRest());
    const std::vector<double> cruise = speeds(host.board.takeSteps(0), start + 0.25, start + 0.9, 0.02);
    QVERIFY(*std::min_element(cruise.begin(), cruise.end()) > 9.79);
    QVERIFY(*std::max_element(cruise.begin(), cruise.end()) < 10.21);
}

void tst_EmulatedBoard::slowsDownForACorner()
{
    Host host;
    host.board.send("$J=G53X5Y0Z0F600\n$J=G53X5Y5Z0F600\n$J=G53X5Y0Z0F600\n");
    host.run(0.02);
    QCOMPARE(host.board.planner().free(), 12);
    // Right angle: the junction deviation of 0.01 mm; straight back: a stand.
    const double corner = host.board.planner().blocks()[1].entrySpeed;
    QVERIFY2(corner > 0.5 && corner < 2, qPrintable(QString::number(corner)));
    QCOMPARE(host.board.planner().blocks()[2].entrySpeed, 0.0);
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.steps(0), 1250LL);
    QCOMPARE(host.board.steps(1), 0LL);
}

void tst_EmulatedBoard::stopsWhereTheLastLineSaid()
{
    Host host;
    const double end = host.board.now();
    // Three slices of 50 ms at 10 mm/s, and then nothing more.
    host.board.send("$J=G53X0.500Y0Z0F600\n$J=G53X1.000Y0Z0F600\n$J=G53X1.500Y0Z0F600\n");
    QVERIFY(host.ask("?").find("Jog") != std::string::npos);
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.steps(0), 375LL);
    QVERIFY(host.board.lastStep() > end);
    QVERIFY(!host.board.motorsAreOn()); // $1 is not 255
}

void tst_EmulatedBoard::runsToMachineZeroWithoutAnAxisWord()
{
    Host host;
    host.say("$J=G53X3Y-1Z2F1200\n");
    QVERIFY(host.comesToRest());
    QVERIFY(host.board.violations().empty());
    QCOMPARE(text(host.ask("$J=G53F1200\n", 0.01)), QString("ok"));
    QVERIFY(has(host.board, Violation::Kind::NoAxisWord));
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.steps(0), 0LL);
    QCOMPARE(host.board.steps(1), 0LL);
    QCOMPARE(host.board.steps(2), 0LL);
}

void tst_EmulatedBoard::countsRelativeLinesAsViolations()
{
    Host host;
    host.say("$J=G91X1Y1Z1F600\n");
    QVERIFY(has(host.board, Violation::Kind::Relative));
    host.board.forgetViolations();
    host.say("$J=G53X1Y1Z1F600\n");
    QVERIFY(host.board.violations().empty());
}

void tst_EmulatedBoard::carriesTheRestOfAStep()
{
    Host host;
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(text(host.ask("$J=G91X0.001F600\n")), QString("ok"));
    }
    QCOMPARE(host.board.steps(0), 1LL);
    QCOMPARE(text(host.ask("$J=G91X0F600\n", 0.01)), QString("ok"));
    QCOMPARE(host.board.state(), State::Idle);
}

void tst_EmulatedBoard::runsNoSlowerThanItsTimerCounts()
{
    Host host;
    host.say("$J=G53X0.012Y0Z0F0.5\n", 0.2);
    QCOMPARE(host.board.steps(0), 3LL);
}

void tst_EmulatedBoard::keepsItsStepsWhenTheirSizeChanges()
{
    Host host;
    host.say("$J=G53X4Y0Z0F1200\n");
    QVERIFY(host.comesToRest());
    host.say("$100=500\n");
    QCOMPARE(host.board.steps(0), 1000LL);
    QVERIFY(host.ask("?").find("MPos:2.000,") != std::string::npos);
}

void tst_EmulatedBoard::cancelsWithItsRamp_data()
{
    QTest::addColumn<int>("feed");
    QTest::addColumn<double>("lastStep");
    QTest::addColumn<double>("answer");
    QTest::newRow("5 mm/s") << 300 << 0.143 << 0.196;
    QTest::newRow("10 mm/s") << 600 << 0.228 << 0.280;
    QTest::newRow("25 mm/s") << 1500 << 0.537 << 0.592;
}

void tst_EmulatedBoard::cancelsWithItsRamp()
{
    QFETCH(int, feed);
    QFETCH(double, lastStep);
    QFETCH(double, answer);
    Host host;
    host.say("$J=G53X60Y0Z0F" + std::to_string(feed) + "\n", 1.5);
    const double sent = host.board.now();
    host.say("\x85\n", 1);
    // 0 to 10 ms, by the phase of the piece that runs.
    QVERIFY2(
        std::fabs(host.board.lastStep() - sent - lastStep) < 0.018,
        qPrintable(QString::number(host.board.lastStep() - sent)));
    QVERIFY2(
        std::fabs(host.heard.back().time - sent - answer) < 0.015,
        qPrintable(QString::number(host.heard.back().time - sent)));
    QVERIFY(host.ask("?").compare(0, 5, "<Idle") == 0);
    QCOMPARE(host.board.planner().free(), 15);
}

void tst_EmulatedBoard::losesACancelThatComesBeforeTheLine_data()
{
    QTest::addColumn<double>("delay");
    QTest::addColumn<long long>("steps");
    QTest::newRow("at once") << 0.0 << 750LL;
    QTest::newRow("0.5 ms") << 0.0005 << 750LL;
    QTest::newRow("1 ms") << 0.001 << 44LL;
    QTest::newRow("2 ms, before the ok") << 0.002 << 44LL;
    QTest::newRow("10 ms") << 0.010 << 44LL;
}

void tst_EmulatedBoard::losesACancelThatComesBeforeTheLine()
{
    QFETCH(double, delay);
    QFETCH(long long, steps);
    Host host;
    const std::string line = "$J=G53X3Y0Z0F300\n";
    host.board.send(line);
    host.run(static_cast<double>(line.size()) * emulator::Wire::byteTime + delay);
    host.say("\x85", 2);
    QVERIFY2(std::llabs(host.board.steps(0) - steps) <= 1, qPrintable(QString::number(host.board.steps(0))));
}

void tst_EmulatedBoard::goesDeafAfterALateSecondCancel()
{
    for (const bool byReset : {false, true}) {
        Host host;
        host.say("$J=G53X20Y0Z0F600\n", 0.7);
        host.say("\x85", deafAfter);
        host.say("\x85", 0.3);
        QVERIFY(host.board.isDeaf());
        QVERIFY(has(host.board, Violation::Kind::SecondCancel));
        QVERIFY(host.ask("?").compare(0, 5, "<Idle") == 0);
        QCOMPARE(text(host.ask("$J=G53X20Y0Z0F600\n", 1)), QString());
        const long long stood = host.board.steps(0);
        if (byReset) {
            QVERIFY(host.ask("\x18").find("Grbl") != std::string::npos);
            host.run(1);
            QCOMPARE(host.board.state(), State::Idle);
            QCOMPARE(host.board.steps(0), stood); // what waited is gone
        } else {
            QCOMPARE(text(host.ask("~")), QString("ok"));
            QVERIFY(host.comesToRest());
            QCOMPARE(host.board.steps(0), 5000LL); // what waited runs
        }
    }
}

void tst_EmulatedBoard::holdsAfterALateSecondHold()
{
    Host host;
    host.say("$J=G53X20Y0Z0F600\n", 0.7);
    host.say("\x85", deafAfter);
    host.say("!", 0.3);
    QCOMPARE(text(host.board.stateName()), QString("Hold:0"));
    QCOMPARE(text(host.ask("$X\n", 1)), QString());
    QCOMPARE(text(host.ask("~")), QString("ok"));
}

void tst_EmulatedBoard::runsLinesThatCameDuringACancel()
{
    Host host;
    host.say("$J=G53X20Y0Z0F600\n", 0.7);
    host.say("\x85", 0.05);
    QCOMPARE(text(host.ask("$J=G91Y2F600\n", 0.1)), QString());
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.steps(1), 500LL);
    QVERIFY(host.board.steps(0) < 2500);
    QVERIFY(has(host.board, Violation::Kind::WhileCancelling));
}

void tst_EmulatedBoard::runsTheLineThatWaitedForABlock()
{
    Host host;
    for (int i = 1; i <= 17; ++i) {
        host.board.send("$J=G53X" + std::to_string(i) + "Y0Z0F300\n");
        host.run(0.003);
    }
    host.run(0.3);
    host.say("\x85", 0.5);
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.steps(0), 17LL * 250);
}

void tst_EmulatedBoard::emptiesAFullQueueWithoutALineWaiting()
{
    Host host;
    for (int i = 1; i <= 16; ++i) {
        host.board.send("$J=G53X" + std::to_string(i) + "Y0Z0F300\n");
        host.run(0.003);
    }
    host.run(0.3); // the first block is done, the planner full
    QCOMPARE(host.board.planner().free(), 0);
    host.say("\x85", 0.5);
    QCOMPARE(host.board.state(), State::Idle);
    QVERIFY(host.board.steps(0) < 600);
}

void tst_EmulatedBoard::answersTheBarrierAtRest()
{
    Host host;
    QCOMPARE(text(host.ask("\x85\n", 0.01)), QString("ok"));
    host.say("$J=G53X20Y0Z0F600\n", 0.7);
    host.board.send("\x85\n");
    const std::size_t before = host.heard.size();
    while (host.heard.size() == before) {
        host.run(0.001);
    }
    QCOMPARE(host.board.state(), State::Idle);
    QVERIFY(!has(host.board, Violation::Kind::WhileCancelling));
    const long long stood = host.board.steps(0);
    host.run(1);
    QCOMPARE(host.board.steps(0), stood);
    // The next line starts from there.
    host.say("$J=G53X20Y0Z0F600\n");
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.steps(0), 5000LL);
}

void tst_EmulatedBoard::ignoresACancelAtRestAndInRun()
{
    Host host;
    host.say("\x85");
    QCOMPARE(text(host.ask("G1X5F600\n")), QString("ok"));
    host.say("\x85");
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.steps(0), 1250LL);
}

void tst_EmulatedBoard::forgetsResumeWhileSlowing()
{
    Host host;
    host.say("G1X20F1200\n", 0.7);
    host.say("!", 0.05);
    QCOMPARE(text(host.board.stateName()), QString("Hold:1"));
    QCOMPARE(text(host.ask("$J=G53X1Y0Z0F600\n", 0.02)), QString("error:8"));
    host.say("~", 1);
    QCOMPARE(text(host.board.stateName()), QString("Hold:0"));
    QCOMPARE(text(host.ask("$X\n")), QString());
    QCOMPARE(text(host.ask("~")), QString("ok"));
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.steps(0), 5000LL);
}

void tst_EmulatedBoard::keepsThePositionInAResetAtRest()
{
    Host host;
    host.say("$J=G53X2Y0Z0F600\n");
    QVERIFY(host.comesToRest());
    QCOMPARE(text(host.ask("\x18")), QString("Grbl 1.1h ['$' for help]"));
    QVERIFY(host.ask("?").compare(0, 16, "<Idle|MPos:2.000") == 0);
}

void tst_EmulatedBoard::alarmsInAResetInMotion()
{
    Host host;
    host.say("$J=G53X20Y0Z0F600\n", 0.7);
    host.board.send("$J=G53X30Y0Z0F600\n");
    const double sent = host.board.now();
    const std::vector<std::string> said = host.say("\x18", 1);
    QVERIFY(host.board.lastStep() < sent + 0.003);
    QCOMPARE(host.board.position()[0], host.board.steps(0) + 1); // what it tells is not where it is
    QCOMPARE(text(said[said.size() - 4]), QString("ALARM:3"));
    QCOMPARE(text(said.back()), QString("[MSG:'$H'|'$X' to unlock]"));
    QCOMPARE(text(host.ask("$J=G53X1Y0Z0F600\n")), QString("error:8"));
    QCOMPARE(text(host.ask("G0X1\n")), QString("error:9"));
    QCOMPARE(text(host.ask("$X\n")), QString("[MSG:Caution: Unlocked]|ok"));
    QCOMPARE(text(host.ask("$X\n")), QString("ok"));
}

void tst_EmulatedBoard::isLockedAtPowerOnWithHoming()
{
    emulator::Options options = Host::fast();
    options.settings[22] = 1;
    Host host(options);
    QCOMPARE(host.board.state(), State::Alarm);
    QCOMPARE(text(host.heard.back().text), QString("[MSG:'$H'|'$X' to unlock]"));
    host.say("$X\n");
    host.say("\x18", 0.5);
    QCOMPARE(host.board.state(), State::Idle); // not locked again
}

void tst_EmulatedBoard::endsMotionAtASwitch()
{
    emulator::Options options = Host::fast();
    options.stages[0] = {-5, 5, 0};
    options.settings[21] = 1;
    Host host(options);
    const std::vector<std::string> said = host.say("$J=G53X20Y0Z0F600\n", 3);
    QCOMPARE(host.board.steps(0), 1250LL);
    QCOMPARE(text(said[1]), QString("ALARM:1"));
    QCOMPARE(text(said[2]), QString("[MSG:Reset to continue]"));
    QCOMPARE(text(host.ask("?\n$X\n", 1)), QString());
    QCOMPARE(
        text(host.ask("\x18", 0.2)), QString("Grbl 1.1h ['$' for help]|[MSG:Check Limits]|[MSG:'$H'|'$X' to unlock]"));
    QVERIFY(host.ask("?").find("|Pn:X|") != std::string::npos);
}

void tst_EmulatedBoard::alarmsAgainWhenTheSwitchOpens()
{
    emulator::Options options = Host::fast();
    options.stages[0] = {-5, 5, 0};
    options.settings[21] = 1;
    Host host(options);
    host.say("$J=G53X20Y0Z0F600\n", 3);
    host.say("\x18", 0.2);
    host.say("$X\n");
    QCOMPARE(text(host.ask("$J=G53X3Y0Z0F600\n", 1)), QString("ok|ALARM:1|[MSG:Reset to continue]"));
    host.say("\x18", 0.2);
    host.say("$X\n");
    host.say("$21=0\n");
    QCOMPARE(text(host.ask("$J=G53X3Y0Z0F600\n", 1)), QString("ok"));
    QCOMPARE(host.board.steps(0), 750LL);
}

void tst_EmulatedBoard::refusesJogsOutOfTheTravel()
{
    emulator::Options options = Host::fast();
    options.settings[22] = 1;
    options.settings[20] = 1;
    options.settings[130] = 10;
    Host host(options);
    host.say("$X\n");
    QCOMPARE(text(host.ask("$J=G53X0.004Y0Z0F600\n")), QString("error:15"));
    QCOMPARE(text(host.ask("$J=G53X-10.004Y0Z0F600\n")), QString("error:15"));
    QCOMPARE(text(host.ask("$J=G53X-10Y0Z0F600\n", 0.5)), QString("ok"));
    QCOMPARE(text(host.ask("$J=G53X5Y0Z0F600\n", 0.01)), QString("error:15"));
    QVERIFY(host.comesToRest()); // what ran before goes on
    QCOMPARE(host.board.steps(0), -2500LL);
    QCOMPARE(text(host.ask("G1X5F600\n", 1)), QString("ALARM:2|[MSG:Reset to continue]"));
    QCOMPARE(text(host.ask("$22=0\n$20=1\n")), QString());
    QCOMPARE(text(host.say("\x18", 0.2)[0]), QString("ok"));
    QCOMPARE(text(host.ask("$22=0\n")), QString("ok"));
    QCOMPARE(text(host.ask("$20=1\n")), QString("error:10"));
}

void tst_EmulatedBoard::switchesItsMotorsOff()
{
    Host host;
    QVERIFY(!host.board.motorsAreOn());
    host.say("$J=G53X1Y0Z0F600\n");
    QVERIFY(host.board.motorsAreOn());
    QVERIFY(host.comesToRest());
    QVERIFY(!host.board.motorsAreOn());
    host.say("$1=255\n");
    host.say("$J=G53X2Y0Z0F600\n");
    QVERIFY(host.comesToRest());
    host.run(1);
    QVERIFY(host.board.motorsAreOn());
}

namespace {

emulator::Options homing(int directions, double pullOff)
{
    emulator::Options options = Host::fast();
    options.settings = {{10, 3}, {22, 1}, {23, directions}, {24, 120}, {25, 1200}, {27, pullOff}};
    for (int axis = 0; axis < 3; ++axis) {
        options.settings[110 + axis] = 1500;
        options.settings[120 + axis] = 500;
        options.settings[130 + axis] = 78;
        options.stages[static_cast<std::size_t>(axis)] = {-40, 40, 5};
    }
    return options;
}

} // namespace

void tst_EmulatedBoard::homesAllAxes_data()
{
    QTest::addColumn<int>("directions");
    QTest::addColumn<double>("pullOff");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::newRow("all to the plus end") << 0 << 1.0 << -1.0 << -1.0;
    QTest::newRow("all to the minus end") << 7 << 2.5 << -75.5 << -75.5;
    QTest::newRow("X to the minus end") << 1 << 1.0 << -77.0 << -1.0;
}

void tst_EmulatedBoard::homesAllAxes()
{
    QFETCH(int, directions);
    QFETCH(double, pullOff);
    QFETCH(double, x);
    QFETCH(double, y);
    Host host(homing(directions, pullOff));
    QCOMPARE(host.board.state(), State::Alarm);
    QCOMPARE(text(host.ask("$H\n", 30)), QString("ok"));
    QCOMPARE(host.board.state(), State::Idle);
    QCOMPARE(host.board.positionMm(0), x);
    QCOMPARE(host.board.positionMm(1), y);
    QCOMPARE(host.board.positionMm(2), y);
    QVERIFY(std::fabs(std::fabs(host.board.stagePosition(0)) - (40 - pullOff)) < 0.005);
    // Z goes first, then X and Y.
    QVERIFY(host.board.takeSteps(2).back().time < host.board.takeSteps(0).front().time);
}

void tst_EmulatedBoard::isSilentWhileHoming()
{
    Host host(homing(0, 1));
    host.say("$X\n");
    host.say("$H\n", 1);
    QCOMPARE(text(host.ask("?!~\x85", 1)), QString());
    QCOMPARE(text(host.ask("$J=G53X-2Y-1Z-1F600\n", 1)), QString());
    host.run(20);
    const std::size_t count = host.heard.size();
    QCOMPARE(text(host.heard[count - 3].text.substr(0, 6)), QString("<Home|"));
    QCOMPARE(text(host.heard[count - 2].text), QString("ok")); // homed
    QCOMPARE(text(host.heard[count - 1].text), QString("ok")); // the jog, which runs now
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.positionMm(0), -2.0);
}

void tst_EmulatedBoard::failsHoming_data()
{
    QTest::addColumn<QString>("trouble");
    QTest::addColumn<QString>("alarm");
    QTest::newRow("reset") << "\x18"
                           << "ALARM:6";
    QTest::newRow("door") << "door"
                          << "ALARM:7";
    QTest::newRow("switch stays closed") << "closed"
                                         << "ALARM:8";
    QTest::newRow("no switch") << "open"
                               << "ALARM:9";
}

void tst_EmulatedBoard::failsHoming()
{
    QFETCH(QString, trouble);
    QFETCH(QString, alarm);
    Host host(homing(0, 1));
    host.say("$X\n");
    if (trouble == "closed" || trouble == "open") {
        host.board.forceSwitch(2, trouble == "closed" ? 1 : 0);
    }
    const std::size_t before = host.heard.size();
    host.say("$H\n", 0.2);
    if (trouble == "\x18" || trouble == "door") {
        host.say(trouble == "door" ? "\x84" : "\x18");
    }
    host.run(10);
    QCOMPARE(host.heard.size() - before, std::size_t(5));
    QCOMPARE(text(host.heard[before].text), alarm);
    QCOMPARE(text(host.heard[before + 1].text), QString("ok")); // late, and before the banner
    QCOMPARE(text(host.heard[before + 4].text), QString("[MSG:'$H'|'$X' to unlock]"));
    QCOMPARE(host.board.state(), State::Alarm);
}

void tst_EmulatedBoard::hangsInHomeOfOneAxis()
{
    Host host(homing(0, 1));
    host.say("$X\n");
    QCOMPARE(text(host.ask("$HX\n")), QString("error:3"));
    QVERIFY(has(host.board, Violation::Kind::SingleHome));
    QCOMPARE(host.board.state(), State::Home);
    QCOMPARE(text(host.ask("$J=G53X-2Y-1Z-1F600\n")), QString("error:8"));
    QCOMPARE(text(host.ask("$X\n")), QString("ok"));
    QCOMPARE(host.board.state(), State::Home);
    QCOMPARE(text(host.ask("\x18", 1).substr(0, 7)), QString("ALARM:6"));
    QCOMPARE(host.board.state(), State::Alarm);
}

void tst_EmulatedBoard::homesOneAxisWhereItCan()
{
    emulator::Options options = homing(0, 1);
    options.homesSingleAxes = true;
    Host host(options);
    host.say("$X\n");
    QCOMPARE(text(host.ask("$HY\n", 20)), QString("ok"));
    QCOMPARE(host.board.positionMm(1), -1.0);
    QCOMPARE(host.board.stepsUp()[0], 0LL);
    QCOMPARE(host.board.stepsUp()[2], 0LL);
}

void tst_EmulatedBoard::hasAsManyAxesAsAsked()
{
    emulator::Options options = Host::fast();
    options.axes = 4;
    Host host(options);
    host.say("$113=3000\n");
    QVERIFY(host.ask("?").find("MPos:0.000,0.000,0.000,0.000|") != std::string::npos);
    QCOMPARE(text(host.ask("$J=G53X1Y1Z1A1F600\n", 0.01)), QString("ok"));
    QVERIFY(host.comesToRest());
    QCOMPARE(host.board.steps(3), 250LL);
    Host stock;
    QCOMPARE(text(stock.ask("$J=G53X1Y1Z1A1F600\n")), QString("error:20"));
}

void tst_EmulatedBoard::runsOnAClockOfItsOwn_data()
{
    QTest::addColumn<double>("error");
    QTest::newRow("slow") << -0.005;
    QTest::newRow("fast") << 0.005;
}

void tst_EmulatedBoard::runsOnAClockOfItsOwn()
{
    QFETCH(double, error);
    emulator::Options options = Host::fast();
    options.clockError = error;
    Host host(options);
    host.say("$J=G53X100Y0Z0F600\n", 11);
    const std::vector<emulator::Step> steps = host.board.takeSteps(0);
    const double seconds = steps[2250].time - steps[250].time; // 8 mm
    QVERIFY2(std::fabs(seconds * (1 + error) / 0.8 - 1) < 0.001, qPrintable(QString::number(seconds)));
}

void tst_EmulatedBoard::losesDoublesAndChangesBytes_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("byte");
    QTest::addColumn<QString>("answers");
    QTest::newRow("digit lost") << static_cast<int>(WireFault::Kind::Drop) << 7 << "ok|ok|ok";
    QTest::newRow("letter lost") << static_cast<int>(WireFault::Kind::Drop) << 6 << "ok|error:20|ok";
    QTest::newRow("letter doubled") << static_cast<int>(WireFault::Kind::Double) << 6 << "ok|error:2|ok";
    QTest::newRow("letter changed") << static_cast<int>(WireFault::Kind::Replace) << 6 << "ok|error:20|ok";
    QTest::newRow("line end lost") << static_cast<int>(WireFault::Kind::Drop) << WireFault::lineEnd << "ok|error:1";
    QTest::newRow("line lost") << static_cast<int>(WireFault::Kind::DropLine) << 0 << "ok|ok";
}

void tst_EmulatedBoard::losesDoublesAndChangesBytes()
{
    QFETCH(int, kind);
    QFETCH(int, byte);
    QFETCH(QString, answers);
    Host host;
    host.board.toBoard().add({static_cast<WireFault::Kind>(kind), 1, byte, 'Q'});
    QCOMPARE(text(host.ask("$J=G53X11Y0Z0F600\n$J=G53X12Y0Z0F600\n$J=G53X13Y0Z0F600\n", 0.05)), answers);
    QCOMPARE(host.board.sentLines().size(), std::size_t(3)); // as the host sent them
    QVERIFY(host.board.violations().empty());
}

void tst_EmulatedBoard::losesBytesOnTheWayBack()
{
    Host host;
    host.board.toHost().add({WireFault::Kind::Drop, 0, 1, 0});
    QCOMPARE(text(host.ask("\n\n")), QString("o|ok"));
    host.board.garble("rubbish\r\n");
    QCOMPARE(text(host.ask("\n")), QString("rubbish|ok"));
}

void tst_EmulatedBoard::answersLate()
{
    Host host;
    host.board.toHost().setDelay(1);
    QCOMPARE(text(host.ask("\n", 0.9)), QString());
    QCOMPARE(text(host.ask("", 0.2)), QString("ok"));
}

void tst_EmulatedBoard::keepsQuietOnABrokenWire()
{
    Host host;
    host.board.toHost().cut(true);
    QCOMPARE(text(host.ask("$J=G53X1Y0Z0F600\n", 1)), QString());
    QCOMPARE(host.board.steps(0), 250LL);
    host.board.toHost().cut(false);
    host.board.toBoard().cut(true);
    QCOMPARE(text(host.ask("$J=G53X2Y0Z0F600\n", 1)), QString());
    QCOMPARE(host.board.steps(0), 250LL);
}

void tst_EmulatedBoard::startsAnewBehindItsBootLoader()
{
    emulator::Options options = Host::fast();
    options.bootTime = 1.5;
    Host host(options);
    host.run(2);
    host.say("$J=G53X1Y0Z0F600\n", 1);
    host.board.pressReset();
    QCOMPARE(text(host.ask("\n\n?", 1.45)), QString());
    QCOMPARE(text(host.ask("", 0.1)), QString("Grbl 1.1h ['$' for help]"));
    QVERIFY(host.ask("?").find("MPos:0.000") != std::string::npos);
    QCOMPARE(host.board.steps(0), 250LL); // the stage is where it was
}

void tst_EmulatedBoard::keepsItsSettings()
{
    const QString file = QDir::temp().filePath("tst_EmulatedBoard.settings");
    QFile::remove(file);
    emulator::Options options = Host::fast();
    options.settingsFile = file.toStdString();
    Host(options).say("$120=77.5\n");
    options.settings.clear();
    Host host(options);
    QCOMPARE(host.board.settings()[120], 77.5);
    QCOMPARE(host.board.settings()[110], 3000.0);
    QFile::remove(file);
}

void tst_EmulatedBoard::speaksAsGrblHal()
{
    emulator::Options options = Host::fast();
    options.firmware = emulator::Firmware::GrblHal;
    options.settings[10] = 511;
    Host host(options);
    QCOMPARE(text(host.heard.back().text), QString("GrblHAL 1.1f ['$' or '$HELP' for help]"));
    QVERIFY(host.ask("?").find("|Bf:100,1023|") != std::string::npos);
    const std::string info = host.ask("$I\n");
    QVERIFY(info.find("[OPT:VNML+,100,1024,3,0]|[AXS:3:XYZ]") != std::string::npos);
    QVERIFY(info.find("[FIRMWARE:grblHAL]") != std::string::npos);
    QCOMPARE(text(host.ask("$X\r\n\n")), QString("ok|ok"));
    QCOMPARE(text(host.ask("$Q\n$999=1\n$0=2\n$J=G91A1F100\n")), QString("error:3|error:53|ok|error:36"));
    host.say("$J=G53X20Y0Z0F600\n", 0.7);
    host.say("\x85", deafAfter);
    host.say("\x85", 0.3);
    QCOMPARE(text(host.ask("$X\n")), QString("ok"));
}

void tst_EmulatedBoard::noticesWhatAHostShouldNotSend_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("kind");
    QTest::newRow("nothing wrong") << "$J=G53X1Y1Z1F600" << -1;
    QTest::newRow("an axis left out") << "$J=G53X1Y1F600" << static_cast<int>(Violation::Kind::MissingAxis);
    QTest::newRow("work coordinates") << "$J=X1Y1Z1F600" << static_cast<int>(Violation::Kind::WorkCoordinates);
    QTest::newRow("relative") << "$J=G91X1Y1Z1F600" << static_cast<int>(Violation::Kind::Relative);
    QTest::newRow("relative G1") << "G91G1X1F600" << static_cast<int>(Violation::Kind::Relative);
    QTest::newRow("no axis") << "$J=G53F600" << static_cast<int>(Violation::Kind::NoAxisWord);
}

void tst_EmulatedBoard::noticesWhatAHostShouldNotSend()
{
    QFETCH(QString, line);
    QFETCH(int, kind);
    Host host;
    host.say(line.toStdString() + "\n");
    QCOMPARE(host.board.violations().empty(), kind < 0);
    QVERIFY(kind < 0 || has(host.board, static_cast<Violation::Kind>(kind)));
}

QTEST_APPLESS_MAIN(tst_EmulatedBoard)
#include "tst_EmulatedBoard.moc"
