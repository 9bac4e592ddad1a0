// SPDX-License-Identifier: MIT
#include "session/MotionTime.h"
#include "session/SequencePlan.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

Q_DECLARE_METATYPE(QVector<SequenceStep>)

namespace {

using Fault = SequenceFault;
using Step = SequenceStep;

/** Two axes from 0 to 100 mm, at 10 and 20 mm; at most 20 mm/s, set to 10. */
SequenceSetting setting()
{
    SequenceSetting setting;
    for (int index = 0; index < 2; ++index) {
        SequenceSetting::Axis axis;
        axis.description.index = index;
        axis.description.maxPos = 100;
        axis.description.maxSpeed = 20;
        axis.description.maxAcceleration = 100;
        axis.description.homingSpeed = 5;
        axis.position = 10 * (index + 1);
        axis.speed = 10;
        axis.acceleration = 50;
        axis.isTrusted = true;
        setting.axes.insert(index, axis);
    }
    return setting;
}

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

Step repeat(int from, int count)
{
    Step step;
    step.kind = Step::Repeat;
    step.from = from;
    step.count = count;
    return step;
}

Step goTo(const QString &name)
{
    Step step;
    step.kind = Step::GoTo;
    step.text = name;
    return step;
}

const Positions places{
    {QStringLiteral("A"), {{0, 50}, {1, 60}}},
    {QStringLiteral("none"), {}},
    {QStringLiteral("far"), {{0, 50}, {1, 160}}},
    {QStringLiteral("other"), {{5, 1}}}};

/** Every pass, one after the other. */
struct Naive {
    QMap<int, double> positions{{0, 10}, {1, 20}};
    QMap<int, double> speeds{{0, 10}, {1, 10}};
    QMap<int, SequencePlan::Extent> extents;
    double seconds = 0;
    double count = 0;

    void run(const QVector<Step> &steps, int begin, int end)
    {
        for (int line = begin; line < end; ++line) {
            const Step &step = steps.at(line);
            if (step.kind == Step::Repeat) {
                for (int pass = 1; pass < step.count; ++pass)
                    run(steps, step.from, line);
                continue;
            }
            ++count;
            seconds += step.wait;
            if (step.kind == Step::Wait)
                seconds += step.value;
            if (step.kind == Step::SetSpeed)
                speeds[step.axis] = step.value;
            if (step.kind != Step::MoveTo && step.kind != Step::MoveBy)
                continue;
            if (step.speed > 0)
                speeds[step.axis] = step.speed;
            double &position = positions[step.axis];
            const double target = step.kind == Step::MoveTo ? step.value : position + step.value;
            seconds += MotionTime::of(std::abs(target - position), speeds.value(step.axis), 50);
            for (const double reached : {position, target}) {
                auto extent = extents.find(step.axis);
                if (extent == extents.end())
                    extent = extents.insert(step.axis, {reached, reached});
                *extent = {std::min(extent->least, reached), std::max(extent->most, reached)};
            }
            position = target;
        }
    }
};

/** Appends up to `room` lines, some of them repeated, within each other too. */
void append(QVector<Step> &steps, std::mt19937 &random, int room, int depth)
{
    const auto below = [&random](int limit) { return int(random() % unsigned(limit)); };
    for (int k = 0; k < room; ++k) {
        const int kind = below(depth < 3 ? 6 : 5);
        const int axis = below(2);
        if (kind == 5) {
            const int from = steps.size();
            append(steps, random, 1 + below(3), depth + 1);
            steps.append(repeat(from, 1 + below(4)));
        } else if (kind < 2) {
            steps.append(step(Step::MoveBy, axis, below(21) - 10, below(3) * 5, below(2)));
        } else if (kind == 2) {
            steps.append(step(Step::MoveTo, axis, below(100)));
        } else if (kind == 3) {
            steps.append(step(Step::SetSpeed, axis, 1 + below(20)));
        } else {
            steps.append(step(Step::Wait, 0, below(3)));
        }
    }
}

} // namespace

class tst_SequencePlan : public QObject
{
    Q_OBJECT

private slots:
    void marksALineThatCannotBeRun_data()
    {
        QTest::addColumn<QVector<Step>>("steps");
        QTest::addColumn<int>("line");
        QTest::addColumn<int>("kind");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const Step fine = step(Step::MoveBy, 0, 1);
        const Step pause = step(Step::Wait, 0, 1);
        const auto row = [](const char *name, QVector<Step> steps, int line, Fault::Kind kind) {
            QTest::newRow(name) << steps << line << int(kind);
        };
        row("no such position", {fine, goTo(QStringLiteral("B"))}, 1, Fault::NoPosition);
        row("a position without axes", {goTo(QStringLiteral("none"))}, 0, Fault::EmptyPosition);
        row("a position beyond the travel", {goTo(QStringLiteral("far"))}, 0, Fault::BeyondTravel);
        row("a position of an axis that is not there", {goTo(QStringLiteral("other"))}, 0, Fault::NoAxis);
        row("no such axis", {step(Step::MoveTo, 2, 1)}, 0, Fault::NoAxis);
        row("the homing of no such axis", {step(Step::Home, 2, 0)}, 0, Fault::NoAxis);
        row("beyond the upper end", {fine, step(Step::MoveTo, 0, 100.001)}, 1, Fault::BeyondTravel);
        row("beyond the lower end", {step(Step::MoveTo, 0, -0.001)}, 0, Fault::BeyondTravel);
        row("by too much", {step(Step::MoveBy, 0, 90), step(Step::MoveBy, 0, 0.5)}, 1, Fault::BeyondTravel);
        row("by too much in the last pass", {pause, step(Step::MoveBy, 0, 1), repeat(0, 91)}, 1, Fault::BeyondTravel);
        row("too fast", {step(Step::MoveBy, 0, 1, 20.1)}, 0, Fault::Speed);
        row("not fast at all", {step(Step::SetSpeed, 0, 0)}, 0, Fault::Speed);
        row("backwards", {step(Step::MoveBy, 0, 1, -1)}, 0, Fault::Speed);
        row("a target that is no number", {step(Step::MoveTo, 0, nan)}, 0, Fault::NoNumber);
        row("a speed that is no number", {step(Step::SetSpeed, 0, nan)}, 0, Fault::Speed);
        row("a wait that is no number", {step(Step::Wait, 0, nan)}, 0, Fault::Time);
        row("a wait below 0", {step(Step::MoveBy, 0, 1, 0, -1)}, 0, Fault::Time);
        row("longer than a day", {step(Step::Wait, 0, 86401)}, 0, Fault::Time);
        row("repeats itself", {fine, repeat(1, 2)}, 1, Fault::From);
        row("repeats from nowhere", {fine, repeat(-1, 2)}, 1, Fault::From);
        row("no pass", {fine, repeat(0, 0)}, 1, Fault::Count);
        row("repeats begin inside and end outside", {fine, fine, repeat(0, 2), fine, repeat(1, 2)}, 4, Fault::Crossing);
        row("too deep",
            {pause, repeat(0, 2), repeat(0, 2), repeat(0, 2), repeat(0, 2), repeat(0, 2), repeat(0, 2), repeat(0, 2),
             repeat(0, 2), repeat(0, 2)},
            9, Fault::TooDeep);
    }
    void marksALineThatCannotBeRun()
    {
        QFETCH(QVector<Step>, steps);
        const SequencePlan plan = SequencePlan::of({QString(), steps}, places, setting());
        QCOMPARE(plan.faults.size(), 1);
        QTEST(plan.faults.first().line, "line");
        QTEST(int(plan.faults.first().kind), "kind");
        // The others can be run.
        QFETCH(int, line);
        steps.remove(line);
        QCOMPARE(SequencePlan::of({QString(), steps}, places, setting()).faults.size(), 0);
    }
    void marksAnAxisThatCannotMove_data()
    {
        QTest::addColumn<bool>("isEnabled");
        QTest::addColumn<bool>("isMoving");
        QTest::addColumn<int>("kind");
        QTest::newRow("not enabled") << false << false << int(Fault::NotEnabled);
        QTest::newRow("does something else") << true << true << int(Fault::Moves);
    }
    void marksAnAxisThatCannotMove()
    {
        QFETCH(bool, isEnabled);
        QFETCH(bool, isMoving);
        SequenceSetting now = setting();
        now.axes[1].isEnabled = isEnabled;
        now.axes[1].isMoving = isMoving;
        const SequencePlan plan =
            SequencePlan::of({QString(), {step(Step::MoveBy, 0, 1), goTo(QStringLiteral("A"))}}, places, now);
        QCOMPARE(plan.faults.size(), 1);
        QCOMPARE(plan.faults.first().line, 1);
        QCOMPARE(plan.faults.first().axis, 1);
        QTEST(int(plan.faults.first().kind), "kind");
    }

    void doubtsAnAxisUntilItIsHomed()
    {
        SequenceSetting now = setting();
        now.axes[0].isTrusted = now.axes[1].isTrusted = false;
        const auto doubtful = [&now](const QVector<Step> &steps) {
            return SequencePlan::of({QString(), steps}, places, now).doubtful;
        };
        const Step home = step(Step::Home, Step::AllAxes, 0);
        QCOMPARE(doubtful({goTo(QStringLiteral("A"))}), (QSet<int>{0, 1}));
        QCOMPARE(doubtful({step(Step::MoveBy, 1, 1)}), QSet<int>{1});
        QCOMPARE(doubtful({home, goTo(QStringLiteral("A"))}), QSet<int>());
        QCOMPARE(doubtful({step(Step::Home, 0, 0), goTo(QStringLiteral("A")), home}), QSet<int>{1});
        QCOMPARE(doubtful({step(Step::Wait, 0, 1), step(Step::SetSpeed, 0, 1)}), QSet<int>());
    }

    void tellsTimeAndExtent()
    {
        const SequencePlan plan = SequencePlan::of(
            {QString(),
             {step(Step::Home, 0, 0), step(Step::MoveBy, 0, 30, 20, 0.5), goTo(QStringLiteral("A")),
              step(Step::Wait, 0, 2)}},
            places, setting());
        QCOMPARE(plan.faults.size(), 0);
        QCOMPARE(plan.axes, (QSet<int>{0, 1}));
        QCOMPARE(plan.extents.value(0).least, 0.);
        QCOMPARE(plan.extents.value(0).most, 50.);
        QCOMPARE(plan.extents.value(1).least, 20.);
        QCOMPARE(plan.extents.value(1).most, 60.);
        // To the origin at the homing speed; then at 20 mm/s; then both axes, of which the second one takes longer.
        QCOMPARE(plan.seconds, MotionTime::of(10, 5, 50) + (30 / 20. + 20 / 50. + 0.5) + (40 / 10. + 10 / 50.) + 2);
    }

    /** Of a controller that talks nonsense. */
    void noTimeIsBeyondAllMeasure()
    {
        for (const double nonsense : {1e-300, 1e300, double(NAN), double(INFINITY)}) {
            SequenceSetting odd = setting();
            odd.axes[0].acceleration = nonsense;
            odd.axes[1].position = nonsense;
            const double seconds =
                SequencePlan::of(
                    {QString(),
                     {step(Step::MoveTo, 0, 5), step(Step::MoveTo, 1, 5), step(Step::Wait, 0, 2, 0, nonsense)}},
                    places, odd)
                    .seconds;
            QVERIFY2(seconds >= 2 && seconds < 1e6, QByteArray::number(seconds));
        }
    }

    /** Every pass is followed through only where that can be seen: here against all of them. */
    void followsEveryPassThrough()
    {
        std::mt19937 random(1);
        for (int k = 0; k < 300; ++k) {
            QVector<Step> steps;
            append(steps, random, 6, 0);
            SequenceSetting wide = setting();
            wide.axes[0].description.minPos = wide.axes[1].description.minPos = -1e6;
            wide.axes[0].description.maxPos = wide.axes[1].description.maxPos = 1e6;
            const SequencePlan plan = SequencePlan::of({QString(), steps}, places, wide);
            Naive naive;
            naive.run(steps, 0, steps.size());
            QCOMPARE(plan.faults.size(), 0);
            QCOMPARE(plan.stepCount, naive.count);
            QVERIFY2(std::abs(plan.seconds - naive.seconds) < 1e-6 * (1 + naive.seconds), QByteArray::number(k));
            QCOMPARE(plan.extents.keys(), naive.extents.keys());
            for (auto extent = naive.extents.cbegin(); extent != naive.extents.cend(); ++extent) {
                QVERIFY(std::abs(plan.extents.value(extent.key()).least - extent->least) < 1e-9);
                QVERIFY(std::abs(plan.extents.value(extent.key()).most - extent->most) < 1e-9);
            }
        }
    }

    void makesTheLinesOfAScan()
    {
        Scan scan;
        scan.fast = {0, 0, 1, 0.25};
        QCOMPARE(scan.fast.places(), (QVector<double>{0, 0.25, 0.5, 0.75, 1}));
        scan.wait = 0.1;
        scan.hasSlow = true;
        scan.slow = {1, 5, 4, 0.6};
        QCOMPARE(scan.slow.places(), (QVector<double>{5, 4.4}));
        const auto places = [&scan] {
            QVector<double> places;
            for (const Step &step : scan.steps())
                places.append(step.axis * 1000 + step.value);
            return places;
        };
        QCOMPARE(places(), (QVector<double>{1005, 0, 0.25, 0.5, 0.75, 1, 1004.4, 0, 0.25, 0.5, 0.75, 1}));
        scan.meander = true;
        QCOMPARE(places(), (QVector<double>{1005, 0, 0.25, 0.5, 0.75, 1, 1004.4, 1, 0.75, 0.5, 0.25, 0}));
        QCOMPARE(scan.steps().size(), scan.count());
        QCOMPARE(scan.steps().at(0).wait, 0.);
        QCOMPARE(scan.steps().at(1).wait, 0.1);
    }
    void makesNoScanOfWhatCannotBe_data()
    {
        QTest::addColumn<double>("to");
        QTest::addColumn<double>("step");
        QTest::addColumn<int>("slowAxis");
        QTest::newRow("a step of 0") << 1. << 0. << 1;
        QTest::newRow("backwards") << 1. << -1. << 1;
        QTest::newRow("no number") << std::numeric_limits<double>::infinity() << 1. << 1;
        QTest::newRow("too many") << 1e6 << 1e-3 << 1;
        QTest::newRow("the same axis twice") << 1. << 0.5 << 0;
    }
    void makesNoScanOfWhatCannotBe()
    {
        QFETCH(double, to);
        QFETCH(double, step);
        QFETCH(int, slowAxis);
        Scan scan;
        scan.fast = {0, 0, to, step};
        scan.hasSlow = true;
        scan.slow = {slowAxis, 0, 1, 1};
        QCOMPARE(scan.count(), -1);
        QVERIFY(scan.steps().isEmpty());
    }
};

QTEST_APPLESS_MAIN(tst_SequencePlan)
#include "tst_SequencePlan.moc"
