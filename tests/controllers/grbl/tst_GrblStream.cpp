// SPDX-License-Identifier: MIT
#include "controllers/grbl/Bench.h"

#include <QTest>

/** The stream of jogs, against counted steps. */
class tst_GrblStream : public QObject
{
    Q_OBJECT

private slots:
    void opensABoard();
    void endsOnTheStepItWasSentTo();
    void axesRunIndependently();
};

namespace {

void verifyClean(Bench &bench)
{
    for (const emulator::Violation &one : bench.firmware.violations())
        qWarning("%.3f %s: %s", one.time, nameOf(one.kind), one.line.c_str());
    QVERIFY(bench.firmware.violations().empty());
}

} // namespace

void tst_GrblStream::opensABoard()
{
    Bench bench;
    for (const std::string &line : bench.log)
        qInfo("%s", line.c_str());
    QCOMPARE(bench.board.phase(), grbl::Board::Phase::Ready);
    QCOMPARE(bench.board.setting(120, 0), 500.0);
    QVERIFY(bench.isStill());
    verifyClean(bench);
}

void tst_GrblStream::endsOnTheStepItWasSentTo()
{
    Bench bench;
    QCOMPARE(bench.moveTo(0, 12.34, 10, 50), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 10));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(12.34));
    QCOMPARE(bench.firmware.steps(1), 0LL);
    for (const std::string &line : bench.log)
        qInfo("%s", line.c_str());
    QVERIFY(bench.log.empty());
    verifyClean(bench);
}

void tst_GrblStream::axesRunIndependently()
{
    Bench bench;
    const double begin = bench.now();
    QCOMPARE(bench.moveTo(0, 20, 10, 50), 0);
    bench.run(0.7);
    QCOMPARE(bench.moveTo(1, 8, 6, 50), 0);
    bench.run(0.5);
    QCOMPARE(bench.stop(0), 0);
    QVERIFY(bench.runUntil([&] { return bench.axis(0).state().isStop; }, 2));
    QVERIFY(!bench.axis(1).state().isStop);
    QCOMPARE(bench.moveTo(0, -5, 15, 50), 0);
    QVERIFY(bench.runUntil([&] { return bench.isStill(); }, 10));
    QCOMPARE(bench.firmware.steps(0), Bench::steps(-5));
    QCOMPARE(bench.firmware.steps(1), Bench::steps(8));
    QCOMPARE(bench.firmware.steps(2), 0LL);
    for (const std::string &line : bench.log)
        qInfo("%s", line.c_str());
    QVERIFY(bench.now() - begin < 8);
    verifyClean(bench);
}

QTEST_GUILESS_MAIN(tst_GrblStream)
#include "tst_GrblStream.moc"
