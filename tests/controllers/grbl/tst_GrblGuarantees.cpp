// SPDX-License-Identifier: MIT
#include "controllers/grbl/Bench.h"

#include <QTest>

#include <numeric>
#include <optional>

using emulator::Violation;
using emulator::WireFault;

/** What a stage may count on, whatever befalls the computer, the wire and the board: against counted steps. */
class tst_GrblGuarantees : public QObject
{
    Q_OBJECT

private slots:
    void randomRunsEndExactlyAndWithinTheirLimits_data();
    void randomRunsEndExactlyAndWithinTheirLimits();
    void aLongMoveIsEven_data();
    void aLongMoveIsEven();
    void otherAxesAreNotDisturbed();
    void oneAxisStopsInTime();
    void theLastAxisIsStoppedByOneCancel();
    void aStopLeavesAnotherAxisToItsEnd();
    void aStopRightBehindAStartIsNotLost();
    void fineStepsArriveWhileOthersRun();
    void aDeadComputerStopsAllAxes();
    void aStallEndsExactly_data();
    void aStallEndsExactly();
    void aFaultOfOneByteNeverRunsAway_data();
    void aFaultOfOneByteNeverRunsAway();
    void aFaultOfAnyLineEndsExactly();
    void randomFaultsNeverLoseThePosition_data();
    void randomFaultsNeverLoseThePosition();
    void aLostLineIsNoticed();
    void aWrongReportIsNoPosition();
    void aLostQuestionIsForgotten();
    void aSlowWireLosesNothing();
    void inchesOfTheBoardDoNotCount();
    void aStopInTroubleIsAStop();
    void aLostReportByteStopsNothing();
    void aLostCancelStillEnds();
    void aLostCancelOfAnAxisThatRunsAwayIsSentAgain();
    void aDeafBoardIsFreed();
    void aResetInMotionIsSeen();
    void aLostLinkIsSaid();
    void rubbishIsNotBelieved();
    void speedIsCappedByTheBoardsRamp();
};

namespace {

void verifyClean(const Bench &bench)
{
    for (const Violation &one : bench.firmware.violations())
        qWarning("%.3f %s: %s", one.time, nameOf(one.kind), one.line.c_str());
    QVERIFY(bench.firmware.violations().empty());
}

QByteArray said(const Bench &bench)
{
    QByteArray text;
    for (const std::string &line : bench.log)
        text += QByteArray::fromStdString(line) + '\n';
    return text;
}

/** What a step pin has done. */
class Pins
{
public:
    explicit Pins(const std::vector<emulator::Step> &steps)
    {
        long long at = 0;
        m_counts.emplace_back(-1e9, 0);
        for (const emulator::Step &one : steps) {
            m_counts.emplace_back(one.time, at += one.direction);
            m_lowest = std::min(m_lowest, at);
            m_highest = std::max(m_highest, at);
        }
    }
    long long lowest() const { return m_lowest; }
    long long highest() const { return m_highest; }

    /**
     * The highest speed and the steepest ramp (mm/s, mm/s2), over three slices at a time. `cancels`: when the board was
     * told to brake by itself, which does not count.
     */
    std::pair<double, double> limits(double from, double to, const std::vector<double> &cancels) const
    {
        constexpr double window = 3 * grbl::Board::slice;
        double fastest = 0;
        double steepest = 0;
        for (double time = from + window; time < to - window; time += 0.005) {
            const double before = at(time) - at(time - window);
            const double after = at(time + window) - at(time);
            fastest = std::max({fastest, std::abs(before) / window});
            const auto cancel = std::lower_bound(cancels.begin(), cancels.end(), time - window - 0.3);
            if (cancel == cancels.end() || *cancel > time + window)
                steepest = std::max(steepest, std::abs(after - before) / window / window);
        }
        return {fastest, steepest};
    }

private:
    double at(double time) const
    {
        const auto next = std::upper_bound(
            m_counts.begin(), m_counts.end(), time, [](double value, const auto &one) { return value < one.first; });
        const auto &[then, count] = *std::prev(next);
        if (next == m_counts.end())
            return count / Bench::stepsPerMm;
        const double part = std::min(1.0, (time - then) / std::min(next->first - then, 0.05));
        return (count + part * double(next->second - count) * (next->first - then < 0.05)) / Bench::stepsPerMm;
    }

    std::vector<std::pair<double, long long>> m_counts;
    long long m_lowest = 0;
    long long m_highest = 0;
};

/** Speeds over windows of `window` seconds between `from` and `to`, mm/s. */
std::vector<double> speeds(const std::vector<emulator::Step> &steps, double from, double to, double window)
{
    // Between whole steps, so that where a window falls does not count: the time of n steps around each window.
    std::vector<double> result;
    std::size_t first = 0;
    for (double begin = from; begin + window <= to; begin += window) {
        while (first < steps.size() && steps[first].time < begin)
            ++first;
        std::size_t last = first;
        while (last < steps.size() && steps[last].time < begin + window)
            ++last;
        if (last >= steps.size() || last == first)
            return result;
        result.push_back((last - first) / Bench::stepsPerMm / (steps[last].time - steps[first].time));
    }
    return result;
}

} // namespace

void tst_GrblGuarantees::randomRunsEndExactlyAndWithinTheirLimits_data()
{
    QTest::addColumn<unsigned>("seed");
    const int seeds = qEnvironmentVariableIntValue("GRBL_SEEDS");
    for (unsigned seed = 1; seed <= unsigned(seeds > 0 ? seeds : 8); ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void tst_GrblGuarantees::randomRunsEndExactlyAndWithinTheirLimits()
{
    QFETCH(unsigned, seed);
    std::mt19937 random(seed);
    const auto between = [&random](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    Bench bench(Bench::options(between(-0.005, 0.005)), seed);
    const double begin = bench.now();
    const double end = begin + 120;
    double top[3];
    double ramp[3];
    for (int i = 0; i < 3; ++i) {
        MotorParams stage = Bench::stage();
        top[i] = stage.maxSpeed = between(2, 18);
        ramp[i] = stage.maxAcc = between(20, 100);
        stage.minPos = -20;
        stage.maxPos = 20;
        bench.axis(i).restore(stage);
    }
    std::vector<double> cancels; // after these the board brakes with its own ramp
    // Where each axis was sent to and not stopped on its way, whatever befalls the others.
    std::optional<double> targets[3];
    const auto standsWhereItWasSent = [&](int i) {
        return !targets[i] || bench.axis(i).state().isStop == 0 || bench.firmware.steps(i) == Bench::steps(*targets[i]);
    };
    while (bench.now() < end) {
        bench.run(between(0.02, 1.5));
        for (int i = 0; i < 3; ++i)
            QVERIFY2(standsWhereItWasSent(i), qPrintable(QString::number(bench.now())));
        const int number = int(between(0, 3));
        const double target = between(-20, 20);
        int status = 0;
        bool isMove = false;
        grbl::Axis &axis = bench.axis(number);
        axis.settings.jogStep = between(0.01, 2);
        axis.settings.jogCount = int(between(1, 6));
        axis.settings.jogDelay = int(between(0, 300));
        axis.settings.circleDisp = between(0.5, 8);
        axis.settings.circleCount = int(between(1, 4));
        axis.settings.circleDelay = int(between(0, 200));
        axis.settings.relativeDisp = between(0, 10);
        axis.settings.relativeDispEnable = between(0, 2) < 1 ? 0 : 1;
        const int direction = between(0, 2) < 1 ? -1 : 1;
        switch (int(between(0, 6))) {
        case 0:
        case 1:
            status = bench.moveTo(number, target, between(0.5, top[number]), ramp[number]);
            isMove = true;
            break;
        case 2:
            status = bench.call([&] { return axis.startDrive(direction); });
            break;
        case 3:
            status = bench.call([&] { return axis.startJog(direction); });
            break;
        case 4:
            status = bench.call([&] { return axis.startLoop(direction); });
            break;
        default:
            bench.stop(number);
            if (bench.board.phase() == grbl::Board::Phase::Cancelling)
                cancels.push_back(bench.now());
            break;
        }
        if (status == 0)
            targets[number] = isMove ? std::make_optional(target) : std::nullopt;
    }
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 200));
    for (int i = 0; i < 3; ++i) {
        QVERIFY(standsWhereItWasSent(i));
        QCOMPARE(bench.firmware.steps(i), Bench::steps(bench.axis(i).position()));
        const Pins pins(bench.firmware.takeSteps(i));
        QVERIFY2(pins.lowest() >= Bench::steps(-20) && pins.highest() <= Bench::steps(20), "travel");
        const auto [fastest, steepest] = pins.limits(begin, bench.now(), cancels);
        // In speed the board's clock and the factor of the feed; in the ramp a change of that factor, and a step.
        QVERIFY2(fastest <= 1.03 * top[i] + 0.1, qPrintable(QStringLiteral("%1 mm/s, %2").arg(fastest).arg(top[i])));
        QVERIFY2(
            steepest <= 1.05 * ramp[i] + 0.1 * top[i] + 2,
            qPrintable(QStringLiteral("%1 mm/s2, %2 at %3 mm/s").arg(steepest).arg(ramp[i]).arg(top[i])));
        // In 20 s each axis ends where a move sends it.
        QCOMPARE(bench.moveTo(i, 1.5 * i, top[i], ramp[i]), 0);
    }
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 60));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(bench.firmware.steps(i), Bench::steps(1.5 * i));
    QVERIFY2(bench.log.empty(), said(bench));
    verifyClean(bench);
}

void tst_GrblGuarantees::aLongMoveIsEven_data()
{
    QTest::addColumn<double>("clockError");
    QTest::newRow("0.5 % slow") << -0.005;
    QTest::newRow("true") << 0.0;
    QTest::newRow("0.5 % fast") << 0.005;
}

void tst_GrblGuarantees::aLongMoveIsEven()
{
    QFETCH(double, clockError);
    emulator::Options options = Bench::options(clockError);
    Bench bench(options, 3);
    MotorParams stage = Bench::stage();
    stage.maxPos = 7000;
    bench.axis(0).restore(stage);
    bench.axis(1).restore(stage);
    QCOMPARE(bench.moveTo(0, 6000, 10, 50), 0);
    QCOMPARE(bench.moveTo(1, 2400, 4, 50), 0);
    const double begin = bench.now();
    int fewest = 15;
    int most = 0;
    QVERIFY(!bench.runUntil(
        [&] {
            if (bench.now() > begin + 2) {
                fewest = std::min(fewest, bench.firmware.planner().free());
                most = std::max(most, bench.firmware.planner().free());
            }
            return false;
        },
        590));
    const std::vector<double> all = speeds(bench.firmware.takeSteps(0), begin + 2, begin + 588, 0.02);
    QVERIFY(all.size() > 25000);
    const double mean = std::accumulate(all.begin(), all.end(), 0.0) / double(all.size());
    const auto [slowest, fastest] = std::minmax_element(all.begin(), all.end());
    const double ripple = std::max(mean - *slowest, *fastest - mean) / mean;
    qInfo("mean %.4f, ripple %.1f %%, blocks free %d to %d", mean, ripple * 100, fewest, most);
    QVERIFY2(ripple <= 0.05, qPrintable(QString::number(ripple)));
    QVERIFY2(fewest >= 2 && most - fewest <= 4, "blocks free"); // a full planner would let lines wait
    QVERIFY2(bench.log.empty(), said(bench));
    verifyClean(bench);
}

void tst_GrblGuarantees::otherAxesAreNotDisturbed()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
    QCOMPARE(bench.moveTo(1, 20, 8, 50), 0);
    bench.run(1.5);
    const double from = bench.now() - 0.5;
    QCOMPARE(bench.stop(1), 0);
    bench.run(1);
    QCOMPARE(bench.moveTo(1, 0, 12, 80), 0);
    bench.run(1.5);
    const std::vector<double> all = speeds(bench.firmware.takeSteps(0), from, bench.now() - 0.2, 0.02);
    QVERIFY(all.size() > 100);
    // A step more or less in the 50 of 20 ms.
    for (const double speed : all)
        QVERIFY2(std::abs(speed - 10) <= 0.2, qPrintable(QString::number(speed)));
    verifyClean(bench);
}

void tst_GrblGuarantees::oneAxisStopsInTime()
{
    double latest = 0;
    for (unsigned phase = 0; phase < 100; ++phase) {
        Bench bench(Bench::options(), phase);
        QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
        QCOMPARE(bench.moveTo(1, 60, 8, 50), 0);
        bench.run(1 + phase * 0.0013);
        const double called = bench.now();
        QCOMPARE(bench.stop(1), 0);
        bench.run(1);
        const double last = bench.firmware.takeSteps(1).back().time;
        latest = std::max(latest, last - called - 8.0 / 50);
        verifyClean(bench);
    }
    qInfo("all still %.0f ms and the ramp after the call", latest * 1000);
    QVERIFY(latest <= grbl::Board::lead + grbl::Board::slice);
}

void tst_GrblGuarantees::theLastAxisIsStoppedByOneCancel()
{
    std::vector<double> delays;
    for (unsigned phase = 0; phase < 100; ++phase) {
        Bench bench(Bench::options(), phase);
        QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
        QCOMPARE(bench.moveTo(1, 60, 6, 50), 0);
        bench.run(1 + phase * 0.0013);
        QCOMPARE(bench.stop(1), 0); // X goes on
        bench.run(0.05);
        const std::size_t before = bench.firmware.sentLines().size();
        bench.longestWait = 0.0002;
        bench.jitter = 0;
        const double called = bench.now();
        QCOMPARE(bench.stop(0), 0);
        const auto cancels = [&] {
            const auto &lines = bench.firmware.sentLines();
            return std::count(lines.begin() + long(before), lines.end(), std::string(1, '\x85'));
        };
        QVERIFY(bench.runUntil([&] { return cancels() > 0; }, 0.1));
        delays.push_back(bench.now() - called);
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 2));
        QCOMPARE(cancels(), 1L);
        QVERIFY(bench.firmware.lastStep() - called < 0.12);
        QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
        QCOMPARE(bench.firmware.steps(1), Bench::steps(bench.axis(1).position()));
        verifyClean(bench);
    }
    std::sort(delays.begin(), delays.end());
    qInfo("call to byte: median %.1f ms, most %.1f ms", delays[50] * 1000, delays.back() * 1000);
    QVERIFY(delays[50] <= 0.002);
    QVERIFY(delays[98] <= 0.010);
}

void tst_GrblGuarantees::aStopLeavesAnotherAxisToItsEnd()
{
    // The plan of Y has come to its end, and the board is behind it.
    Bench bench;
    QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
    QCOMPARE(bench.moveTo(1, 5, 10, 50), 0);
    QVERIFY(bench.runUntil([&] { return !bench.axis(1).running(); }, 5));
    QVERIFY(bench.firmware.steps(1) < Bench::steps(5));
    const double called = bench.now();
    QCOMPARE(bench.stop(0), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 5));
    QCOMPARE(bench.firmware.steps(1), Bench::steps(5));
    QVERIFY(bench.firmware.lastStep() - called <= grbl::Board::lead + grbl::Board::slice + 10.0 / 50);

    // Where all are stopped it is not waited for, in whatever order.
    for (const int first : {0, 1}) {
        QCOMPARE(bench.moveTo(0, 0, 10, 50), 0);
        QCOMPARE(bench.moveTo(1, bench.axis(1).position() + 3, 10, 50), 0);
        QVERIFY(bench.runUntil([&] { return !bench.axis(1).running(); }, 5));
        QCOMPARE(bench.stop(first), 0);
        QCOMPARE(bench.stop(1 - first), 0);
        QCOMPARE(bench.board.phase(), grbl::Board::Phase::Cancelling);
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 5));
    }
    verifyClean(bench);
}

void tst_GrblGuarantees::aStopRightBehindAStartIsNotLost()
{
    // A cancel that comes before the board has read its first line is lost.
    for (int phase = 0; phase < 60; ++phase) {
        Bench bench(Bench::options(), unsigned(phase));
        bench.jitter = 0;
        QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
        bench.longestWait = 0.0002;
        bench.run(phase * 0.0004);
        const double called = bench.now();
        QCOMPARE(bench.stop(0), 0);
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 2));
        bench.run(1);
        QVERIFY2(bench.firmware.lastStep() - called < 0.12, qPrintable(QString::number(phase)));
        QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
        const auto &lines = bench.firmware.sentLines();
        QVERIFY(std::count(lines.begin(), lines.end(), std::string(1, '\x85')) <= 1);
        QVERIFY2(bench.log.empty(), said(bench));
        verifyClean(bench);
    }
}

void tst_GrblGuarantees::fineStepsArriveWhileOthersRun()
{
    emulator::Options options = Bench::options();
    for (int i = 0; i < 3; ++i)
        options.settings[100 + i] = 3200; // finer than a report shows
    for (unsigned phase = 0; phase < 10; ++phase) {
        Bench bench(options, phase);
        QCOMPARE(bench.moveTo(0, 20, 1.8, 20), 0);
        QCOMPARE(bench.moveTo(1, 20, 1.5 + phase * 0.0137, 20), 0); // to be stopped anywhere
        bench.run(1);
        QCOMPARE(bench.stop(1), 0);
        QVERIFY(bench.runUntil([&] { return bench.axis(1).state().isStop == 1; }, 0.6));
        QCOMPARE(int(bench.axis(0).state().isStop), 0);
        const long long at = bench.firmware.steps(1);
        bench.run(0.5);
        QCOMPARE(bench.firmware.steps(1), at);
        // Nor does it leave its step with what comes behind a cancel, though the report does not tell that step.
        QCOMPARE(bench.stop(0), 0);
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 2));
        QCOMPARE(bench.moveTo(0, 0, 1.8, 20), 0);
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
        QCOMPARE(bench.firmware.steps(1), at);
    }
}

void tst_GrblGuarantees::aDeadComputerStopsAllAxes()
{
    double latest = 0;
    for (unsigned phase = 0; phase < 50; ++phase) {
        Bench bench(Bench::options(), phase);
        QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
        QCOMPARE(bench.moveTo(1, -60, 15, 50), 0);
        bench.run(1 + phase * 0.0013);
        const double died = bench.now();
        bench.stall(5);
        const double last = bench.firmware.lastStep() - died;
        latest = std::max(latest, last);
    }
    qInfo("all still after %.0f ms", latest * 1000);
    QVERIFY(latest <= grbl::Board::lead + grbl::Board::slice + 0.01);
}

void tst_GrblGuarantees::aStallEndsExactly_data()
{
    QTest::addColumn<double>("seconds");
    for (const double seconds : {0.05, 0.08, 0.1, 0.2, 0.3, 0.5, 2.0})
        QTest::addRow("%.2f s", seconds) << seconds;
}

void tst_GrblGuarantees::aStallEndsExactly()
{
    QFETCH(double, seconds);
    for (unsigned phase = 0; phase < 10; ++phase) {
        Bench bench(Bench::options(), phase);
        QCOMPARE(bench.moveTo(0, 30, 10, 50), 0);
        QCOMPARE(bench.moveTo(1, -12, 6, 50), 0);
        bench.run(1 + phase * 0.007);
        const double from = bench.now();
        bench.stall(seconds);
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
        QCOMPARE(bench.firmware.steps(0), Bench::steps(30));
        QCOMPARE(bench.firmware.steps(1), Bench::steps(-12));
        verifyClean(bench);
        QVERIFY(seconds < 0.2 || !bench.log.empty());
        const std::vector<emulator::Step> steps = bench.firmware.takeSteps(0);
        if (seconds <= 0.08) {
            for (const double speed : speeds(steps, from, from + 0.5, 0.02))
                QVERIFY2(std::abs(speed - 10) <= 0.5, qPrintable(QString::number(speed)));
        } else if (seconds >= 0.5) { // it stood, and begins with its own ramp
            const double ramp = Pins(steps).limits(from + 0.3, bench.now(), {}).second;
            QVERIFY2(ramp <= 1.05 * 50 + 3, qPrintable(QString::number(ramp)));
        }
    }
}

void tst_GrblGuarantees::aFaultOfOneByteNeverRunsAway_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<char>("with");
    QTest::newRow("dropped") << int(WireFault::Kind::Drop) << '\0';
    QTest::newRow("doubled") << int(WireFault::Kind::Double) << '\0';
    QTest::newRow("made a letter") << int(WireFault::Kind::Replace) << 'o';
    QTest::newRow("made a digit") << int(WireFault::Kind::Replace) << '7';
    QTest::newRow("made a hold") << int(WireFault::Kind::Replace) << '!';
    QTest::newRow("made a question") << int(WireFault::Kind::Replace) << '?';
    QTest::newRow("made a line end") << int(WireFault::Kind::Replace) << '\n';
}

void tst_GrblGuarantees::aFaultOfOneByteNeverRunsAway()
{
    QFETCH(int, kind);
    QFETCH(char, with);
    for (int byte = WireFault::lineEnd; byte < 41; ++byte) {
        Bench bench;
        QCOMPARE(bench.moveTo(0, 60, 15, 80), 0);
        QCOMPARE(bench.moveTo(1, -60, 15, 80), 0);
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
        QCOMPARE(bench.moveTo(0, 72, 10, 50), 0);
        QCOMPARE(bench.moveTo(1, -65, 6, 50), 0);
        bench.run(0.73);
        bench.firmware.toBoard().add({WireFault::Kind(kind), 2, byte, with});
        double farthest = 0;
        bench.runUntil(
            [&] {
                farthest = std::max(
                    {farthest, bench.firmware.positionMm(0) - 72, 60 - bench.firmware.positionMm(0),
                     bench.firmware.positionMm(1) + 60, -65 - bench.firmware.positionMm(1),
                     std::abs(bench.firmware.positionMm(2))});
                return bench.isStill();
            },
            20);
        const QByteArray what =
            "byte " + QByteArray::number(byte) + ", " + QByteArray::number(farthest) + " mm\n" + said(bench);
        QVERIFY2(bench.isStill(), what);
        // 10 mm/s for the time to two reports, and the board's own ramp.
        QVERIFY2(farthest < 3, what);
        // Either it went on to its end, or it was stopped and says so; the position is true in both.
        const bool ended = bench.firmware.steps(0) == Bench::steps(72) && bench.firmware.steps(1) == Bench::steps(-65);
        QVERIFY2(ended || !bench.log.empty(), what);
        for (int i = 0; i < 3; ++i)
            QVERIFY2(bench.firmware.steps(i) == Bench::steps(bench.axis(i).position()), what);
        for (const Violation &one : bench.firmware.violations())
            QVERIFY2(
                one.kind != Violation::Kind::WhileCancelling && one.kind != Violation::Kind::SecondCancel,
                what + nameOf(one.kind));
        // And it moves again.
        QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
        QVERIFY2(bench.runUntil([&] { return bench.isStill(); }, 20), what);
        QVERIFY2(bench.firmware.steps(0) == Bench::steps(60), what);
    }
}

/** The last one, too, behind which no other line corrects it. */
void tst_GrblGuarantees::aFaultOfAnyLineEndsExactly()
{
    int corrected = 0;
    for (int line = 0; line < 8; ++line) {
        for (int byte = 9; byte < 40; ++byte) {
            Bench bench;
            QCOMPARE(bench.moveTo(0, 12.34, 15, 80), 0);
            QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
            bench.firmware.toBoard().add({WireFault::Kind::Drop, line, byte, 0});
            QCOMPARE(bench.moveTo(0, 12.636, 10, 50), 0); // takes five lines
            bench.run(2);
            const QByteArray what =
                "line " + QByteArray::number(line) + ", byte " + QByteArray::number(byte) + "\n" + said(bench);
            QVERIFY2(bench.isStill(), what);
            QVERIFY2(bench.firmware.steps(0) == Bench::steps(bench.axis(0).position()), what);
            const bool isStopped = std::count(bench.codes.begin(), bench.codes.end(), moverMessages::Astray) > 0;
            QVERIFY2(isStopped || bench.firmware.steps(0) == Bench::steps(12.636), what);
            corrected += said(bench).contains("sent there again") ? 1 : 0;
        }
    }
    QVERIFY(corrected > 0);
}

void tst_GrblGuarantees::randomFaultsNeverLoseThePosition_data()
{
    randomRunsEndExactlyAndWithinTheirLimits_data();
}

void tst_GrblGuarantees::randomFaultsNeverLoseThePosition()
{
    QFETCH(unsigned, seed);
    std::mt19937 random(1000 + seed);
    const auto between = [&random](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    Bench bench(Bench::options(between(-0.005, 0.005)), seed);
    double farthest = 0;
    const auto rests = [&] {
        for (int i = 0; i < 3; ++i)
            farthest = std::max(farthest, std::abs(bench.firmware.positionMm(i)) - 40);
        return bench.board.phase() == grbl::Board::Phase::Ready && bench.isStill();
    };
    const double end = bench.now() + 120;
    while (bench.now() < end) {
        const int number = int(between(0, 3));
        if (bench.board.locked())
            bench.call([&] { return bench.axis(number).setEnabled(true); });
        else if (between(0, 4) < 3)
            bench.moveTo(number, between(-40, 40), between(0.5, 18), between(20, 100));
        else
            bench.stop(number);
        if (between(0, 3) < 1) {
            emulator::Wire &wire = between(0, 2) < 1 ? bench.firmware.toBoard() : bench.firmware.toHost();
            const WireFault::Kind kinds[] = {
                WireFault::Kind::Drop, WireFault::Kind::Double, WireFault::Kind::Replace, WireFault::Kind::DropLine};
            wire.add(
                {kinds[int(between(0, 4))], int(between(0, 4)), int(between(-1, 40)), "o7!?\n-.X"[int(between(0, 8))]});
        }
        const double until = bench.now() + between(0.1, 2);
        bench.runUntil([&] { return rests(), bench.now() >= until; }, 3);
    }
    bench.runUntil([] { return false; }, 2);
    bench.firmware.toBoard().mend();
    bench.firmware.toHost().mend();
    QVERIFY2(bench.runUntil(rests, 300), said(bench));
    QVERIFY2(farthest < 4, QByteArray::number(farthest) + " mm beyond\n" + said(bench));
    for (int i = 0; i < 3; ++i) {
        QVERIFY2(bench.firmware.position()[i] == Bench::steps(bench.axis(i).position()), said(bench));
        QCOMPARE(bench.axis(i).reportedPosition(), bench.firmware.positionMm(i));
    }
    QVERIFY(!said(bench).contains("computer")); // it never stands still here
    for (const Violation &one : bench.firmware.violations())
        QVERIFY2(
            one.kind != Violation::Kind::WhileCancelling && one.kind != Violation::Kind::FullPlanner,
            nameOf(one.kind) + QByteArray(": ") + one.line.c_str());
    if (bench.board.locked()) {
        bench.call([&] { return bench.axis(0).setEnabled(true); });
        QVERIFY(bench.runUntil([&] { return rests() && !bench.board.locked(); }, 5));
    }
    QCOMPARE(bench.moveTo(0, 3, 10, 50), 0);
    QVERIFY2(bench.runUntil(rests, 300), said(bench));
    QCOMPARE(bench.axis(0).reportedPosition(), 3.0);
}

/** Of a board at rest, also behind a stop. */
void tst_GrblGuarantees::aWrongReportIsNoPosition()
{
    for (const bool isStopped : {false, true}) {
        Bench bench;
        QCOMPARE(bench.moveTo(0, 38, 10, 50), 0);
        if (isStopped) {
            QVERIFY(bench.runUntil([&] { return bench.firmware.positionMm(0) > 31; }, 20));
            QCOMPARE(bench.stop(0), 0);
            QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Cancelling; }, 1));
        } else {
            QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
        }
        for (int line = 0; line < 20; ++line) // "<Idle|MPos:3" has two of the last, every other time
            bench.firmware.toHost().add({WireFault::Kind::Double, 2 * line, 11, 0});
        for (int k = 0; k < 3000; ++k) {
            bench.run(0.001);
            const double shown = bench.axis(0).reportedPosition();
            QVERIFY2(shown < 40 || !bench.isStill(), QByteArray::number(shown));
        }
        bench.firmware.toHost().mend();
        QCOMPARE(bench.moveTo(2, 3, 10, 50), 0);
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
        QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
        QCOMPARE(bench.firmware.steps(2), Bench::steps(3));
    }
}

/** Or else each report would be taken for the answer to the question before, and the next asked for late. */
void tst_GrblGuarantees::aLostQuestionIsForgotten()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 90, 5, 50), 0);
    bench.run(1);
    const auto bytesOf = [&](double seconds) {
        const std::size_t before = bench.receivedBytes;
        bench.run(seconds);
        return double(bench.receivedBytes - before);
    };
    const double usual = bytesOf(2);
    bench.questionsToLose = 1;
    bench.run(3);
    QCOMPARE(bench.questionsToLose, 0);
    const double later = bytesOf(2);
    QVERIFY2(later > 0.9 * usual, QByteArray::number(later / usual));
}

void tst_GrblGuarantees::aLostLineIsNoticed()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 40, 10, 50), 0);
    bench.run(0.73);
    bench.firmware.toBoard().add({WireFault::Kind::DropLine, 1, 0, 0});
    const double from = bench.now();
    QVERIFY(bench.runUntil([&] { return !bench.log.empty(); }, 1.2));
    QVERIFY(bench.now() - from < 1.1);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(40)); // it stops and goes on
    verifyClean(bench);
}

void tst_GrblGuarantees::aSlowWireLosesNothing()
{
    // Some answer is always on its way; that is no lost one.
    Bench bench;
    bench.firmware.toHost().setDelay(0.05);
    QCOMPARE(bench.moveTo(0, 90, 10, 50), 0);
    QCOMPARE(bench.moveTo(1, -60, 7, 50), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QVERIFY2(bench.log.empty(), said(bench));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(90));
    verifyClean(bench);
}

void tst_GrblGuarantees::inchesOfTheBoardDoNotCount()
{
    Bench bench;
    bench.firmware.send("G20\n"); // as a start-up line of the board may
    bench.run(0.1);
    QCOMPARE(bench.moveTo(0, 1.5, 10, 50), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(1.5));
    QVERIFY2(bench.log.empty(), said(bench));
}

void tst_GrblGuarantees::aStopInTroubleIsAStop()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 40, 10, 50), 0);
    QCOMPARE(bench.moveTo(1, -4, 6, 50), 0);
    bench.run(0.73);
    bench.firmware.toBoard().add({WireFault::Kind::Drop, 0, 0, 0});
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Cancelling; }, 1));
    QCOMPARE(bench.stop(0), 0);
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Ready; }, 2));
    const long long at = bench.firmware.steps(0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.firmware.steps(0), at);
    QCOMPARE(bench.firmware.steps(1), Bench::steps(-4)); // goes on
    verifyClean(bench);
}

void tst_GrblGuarantees::aLostReportByteStopsNothing()
{
    for (int byte = 0; byte < 60; byte += 1) {
        Bench bench;
        QCOMPARE(bench.moveTo(0, 14, 10, 50), 0);
        QCOMPARE(bench.moveTo(1, -12.5, 8, 50), 0);
        bench.run(0.9);
        bench.firmware.toHost().add({WireFault::Kind::Drop, 2, byte, 0});
        QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
        QCOMPARE(bench.firmware.steps(0), Bench::steps(14));
        QCOMPARE(bench.firmware.steps(1), Bench::steps(-12.5));
        verifyClean(bench);
    }
}

void tst_GrblGuarantees::aLostCancelStillEnds()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
    bench.run(1);
    const double called = bench.now();
    bench.cancelsToLose = 1;
    QCOMPARE(bench.stop(0), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 5));
    QVERIFY(bench.firmware.lastStep() - called < 0.25);
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    QCOMPARE(bench.moveTo(0, 2, 10, 50), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(2));
    verifyClean(bench);
}

void tst_GrblGuarantees::aLostCancelOfAnAxisThatRunsAwayIsSentAgain()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 60, 15, 80), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.moveTo(0, 90, 10, 50), 0);
    bench.run(0.73);
    constexpr int firstDigit = 10; // of X: $J=G21G53X6.. becomes a place below 10
    bench.cancelsToLose = 1;
    bench.firmware.toBoard().add({WireFault::Kind::Drop, 2, firstDigit, 0});
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Cancelling; }, 1));
    QVERIFY2(bench.codes.back() == moverMessages::Astray, said(bench));
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 5));
    QVERIFY2(said(bench).contains("The stop was lost"), said(bench));
    QVERIFY(bench.firmware.positionMm(0) > 50);
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    QCOMPARE(bench.moveTo(0, 62, 10, 50), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(62));
    verifyClean(bench);
}

void tst_GrblGuarantees::aDeafBoardIsFreed()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
    bench.run(1);
    QCOMPARE(bench.stop(0), 0);
    // Somebody else's second cancel, late in the first.
    QVERIFY(bench.runUntil(
        [&] {
            return bench.firmware.isDeaf() || bench.isStill() || (bench.firmware.send(std::string(1, '\x85')), false);
        },
        2));
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 5));
    QVERIFY(!bench.firmware.isDeaf());
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    QCOMPARE(bench.moveTo(0, 2, 10, 50), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(2));
}

void tst_GrblGuarantees::aResetInMotionIsSeen()
{
    Bench bench;
    bench.axis(0).setHomed(true);
    QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
    bench.run(1);
    bench.firmware.pressReset();
    QVERIFY(bench.runUntil([&] { return bench.board.phase() == grbl::Board::Phase::Ready && bench.isStill(); }, 5));
    QVERIFY(!bench.log.empty());
    QVERIFY2(!bench.axis(0).isHomed(), said(bench));
    QCOMPARE(bench.moveTo(0, 0, 10, 50), bench.board.locked() ? int(moverStatus::Locked) : 0);
    if (bench.board.locked())
        QCOMPARE(bench.call([&] { return bench.axis(0).setEnabled(true); }), 0);
    QVERIFY(bench.runUntil([&] { return !bench.board.locked() && bench.isStill(); }, 20));
    QCOMPARE(bench.moveTo(0, 3, 10, 50), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.axis(0).reportedPosition(), 3.0);
    verifyClean(bench);
}

void tst_GrblGuarantees::aLostLinkIsSaid()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 60, 10, 50), 0);
    bench.run(1);
    bench.firmware.toHost().cut(true);
    const double from = bench.now();
    QVERIFY(bench.runUntil([&] { return !bench.board.answers(); }, 2));
    QVERIFY(bench.now() - from < 1.02);
    QCOMPARE(bench.moveTo(1, 1, 1, 50), int(moverStatus::LinkLost));
    bench.run(2);
    bench.firmware.toHost().cut(false);
    QVERIFY(bench.runUntil([&] { return bench.board.answers() && bench.isStill(); }, 10));
    QVERIFY(std::count(bench.codes.begin(), bench.codes.end(), moverMessages::AnswersAgain) == 1);
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    QCOMPARE(bench.moveTo(0, 2, 10, 50), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(2));
    verifyClean(bench);
}

void tst_GrblGuarantees::rubbishIsNotBelieved()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 14, 10, 50), 0);
    bench.run(0.6);
    bench.firmware.garble("\r\nerror:\r\nALARM\r\n<Jog|MPos:1,2|Bf:x>\r\n\xff\xfe\x00[MSG:what]\r\n");
    bench.firmware.garble(std::string(5000, 'x') + "\r\n");
    bench.firmware.garble("<Jog|MPos:1.000,2.000|Bf:11,128|FS:600,0>\r\n"); // an axis has been lost
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 20));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(bench.axis(0).position()));
    verifyClean(bench);
}

void tst_GrblGuarantees::speedIsCappedByTheBoardsRamp()
{
    emulator::Options options = Bench::options();
    options.settings[120] = 50;
    Bench bench(options);
    QCOMPARE(bench.axis(0).speedLimit(), 4.0); // it brakes from that within the lead
    QCOMPARE(bench.moveTo(0, 20, 20, 20), 0);
    bench.run(2);
    const double died = bench.now();
    bench.stall(5);
    QVERIFY2(bench.firmware.lastStep() - died <= 0.21, qPrintable(QString::number(bench.firmware.lastStep() - died)));
}

QTEST_GUILESS_MAIN(tst_GrblGuarantees)
#include "tst_GrblGuarantees.moc"
