// SPDX-License-Identifier: MIT
#include "session/MotionRules.h"

#include <QtTest>

#include <limits>

namespace {

using Rules = QVector<MotionRule>;

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

const AxisDescription stage{0, QStringLiteral("LIN-100"), QStringLiteral("mm"), -10, 40, 20, 80};

} // namespace

Q_DECLARE_METATYPE(Rules)

class tst_MotionRules : public QObject
{
    Q_OBJECT

private slots:
    void tellsWhichRulesAreBroken_data();
    void tellsWhichRulesAreBroken();
};

void tst_MotionRules::tellsWhichRulesAreBroken_data()
{
    using namespace MotionRules;
    QTest::addColumn<Rules>("broken");
    QTest::addColumn<Rules>("expected");
    const auto row = [](const char *name, const Rules &broken, const Rules &expected) {
        QTest::newRow(name) << broken << expected;
    };
    row("move to the lower end", brokenByMove(stage, -10, 20, 80), {});
    row("move to the upper end", brokenByMove(stage, 40, 0.001, 0.001), {});
    row("move below", brokenByMove(stage, -10.001, 20, 80), {MotionRule::Position});
    row("move above", brokenByMove(stage, 40.001, 20, 80), {MotionRule::Position});
    row("move at no speed", brokenByMove(stage, 0, 0, 80), {MotionRule::Speed});
    row("move too fast", brokenByMove(stage, 0, 20.001, 80), {MotionRule::Speed});
    row("move without acceleration", brokenByMove(stage, 0, 20, 0), {MotionRule::Acceleration});
    row("move with too much", brokenByMove(stage, 0, 20, 80.001), {MotionRule::Acceleration});
    row("move to nowhere", brokenByMove(stage, noNumber, noNumber, noNumber),
        {MotionRule::Position, MotionRule::Speed, MotionRule::Acceleration});
    row("drive by the whole travel", brokenByDrive(stage, 50, 20, 80), {});
    row("drive farther", brokenByDrive(stage, 50.001, 20, 80), {MotionRule::Travel});
    row("drive by nothing", brokenByDrive(stage, 0, -1, -1),
        {MotionRule::Travel, MotionRule::Speed, MotionRule::Acceleration});
    row("jog by the whole travel", brokenByJog(stage, 50, 1, 1), {});
    row("jog by nothing", brokenByJog(stage, 0, 0, 0),
        {MotionRule::Step, MotionRule::StepCount, MotionRule::StepDelay});
    row("jog farther", brokenByJog(stage, 50.001, 1, 1), {MotionRule::Step});
    row("loop run", brokenByLoopRun(stage, 50, 20, 80, 1), {});
    row("loop run, nothing holds", brokenByLoopRun(stage, 51, 21, 81, 0),
        {MotionRule::Travel, MotionRule::Speed, MotionRule::Acceleration, MotionRule::LoopCount});
}

void tst_MotionRules::tellsWhichRulesAreBroken()
{
    QFETCH(Rules, broken);
    QTEST(broken, "expected");
}

QTEST_GUILESS_MAIN(tst_MotionRules)
#include "tst_MotionRules.moc"
