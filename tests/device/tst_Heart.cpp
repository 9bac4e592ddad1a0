// SPDX-License-Identifier: MIT
#include "device/Heart.h"
#include "device/SerialComDev.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/DebugLog.h"
#include "support/SignalCounter.h"

#include <QSignalSpy>
#include <QtTest>

#include <atomic>

namespace {

constexpr int device = 1001;

/** Delivers an answer in the Heart's thread and waits until it has been handled. */
void answer(Heart &heart, CONTROLER_STATE state, int ret)
{
    QMetaObject::invokeMethod(
        &heart, "rcvHeartInfo", Qt::BlockingQueuedConnection, Q_ARG(CONTROLER_STATE, state), Q_ARG(int, ret));
}

} // namespace

class tst_Heart : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { registerDeviceRecords(); }
    void init() { simulator::reset(); }
    void cleanup()
    {
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
    }

    void startsIdleInAThreadOfItsOwn()
    {
        Heart heart;
        QVERIFY(heart.thread() != QThread::currentThread());
        QVERIFY(heart.thread()->isRunning());
        QCOMPARE(heart.thread()->priority(), QThread::InheritPriority);
        QCOMPARE(heart.controlerState().rockerState, quint8(0));
        QCOMPARE(heart.controlerState().rockerValue, quint16(0));
        const SignalCounter beats(&heart, &Heart::sendHeart);
        QVERIFY(!QTest::qWaitFor([&] { return beats.count() != 0; }, Heart::IntervalMs + 200));
    }
    void beatsEvery500MsFromStartToStop()
    {
        QCOMPARE(Heart::IntervalMs, 500);
        Heart heart;
        const SignalCounter beats(&heart, &Heart::sendHeart);
        heart.startHeart();
        heart.startHeart(); // while active: no second timer, no new phase
        QTRY_VERIFY(beats.count() >= 2);
        heart.stopHeart();
        heart.stopHeart();
        answer(heart, {}, 0); // a beat that was on its way has arrived
        const int stopped = beats.count();
        QVERIFY(!QTest::qWaitFor([&] { return beats.count() != stopped; }, Heart::IntervalMs + 200));
    }
    void startingAgainDoesNotPutTheBeatOff()
    {
        Heart heart;
        QTimer again;
        connect(&again, &QTimer::timeout, &again, [&] { heart.startHeart(); });
        const SignalCounter beats(&heart, &Heart::sendHeart);
        heart.startHeart();
        again.start(50);
        QTRY_VERIFY(beats.count() != 0);
    }
    void aSingleBeatComesAtOnce()
    {
        Heart heart;
        QSignalSpy beats(&heart, &Heart::sendHeart);
        heart.singleHeart();
        QCOMPARE(beats.count(), 1);
    }
    void beatsInItsOwnThread()
    {
        Heart heart;
        std::atomic<QThread *> beatThread{nullptr};
        connect(
            &heart, &Heart::sendHeart, &heart, [&] { beatThread = QThread::currentThread(); }, Qt::DirectConnection);
        heart.startHeart();
        QTRY_VERIFY(beatThread != nullptr);
        QCOMPARE(beatThread.load(), heart.thread());
        heart.stopHeart();
    }
    void missedBeatsAreCountedAndNeverForgotten()
    {
        Heart heart;
        QVector<int> breaks;
        connect(
            &heart, &Heart::heartBreak, &heart, [&](int count) { breaks.append(count); }, Qt::DirectConnection);
        for (int k = 0; k < 3; ++k)
            answer(heart, {}, -9);
        answer(heart, {}, 0);
        answer(heart, {}, -1);
        QCOMPARE(breaks, (QVector<int>{1, 2, 3, 4}));
    }
    void aGoodBeatStoresTheStateAndSaysSo()
    {
        DebugLog log;
        Heart heart;
        int received = 0;
        connect(
            &heart, &Heart::receivedControlerState, &heart, [&] { ++received; }, Qt::DirectConnection);
        answer(heart, {1, 0, 7}, 0);
        QCOMPARE(received, 1);
        QCOMPARE(heart.controlerState().rockerState, quint8(1));
        QCOMPARE(heart.controlerState().rockerValue, quint16(7));
        QVERIFY(log.contains(QStringLiteral("rcvHeartInfo 7")));
    }
    void onlyAnAnswerThatDiffersIsAChange()
    {
        Heart heart;
        QVector<int> levels;
        connect(
            &heart, &Heart::controlerStateChanged, &heart, [&] { levels.append(heart.controlerState().rockerValue); },
            Qt::DirectConnection);
        answer(heart, {0, 0, 0}, 0); // the first one
        answer(heart, {0, 0, 0}, 0);
        answer(heart, {1, 0, 7}, 0);
        answer(heart, {1, 0, 7}, -1);
        answer(heart, {1, 0, 7}, 0);
        answer(heart, {1, 0, 8}, 0);
        QCOMPARE(levels, (QVector<int>{0, 7, 8}));
        // Whoever starts it wants to know how things are.
        heart.startHeart();
        heart.stopHeart();
        answer(heart, {1, 0, 8}, 0);
        QCOMPARE(levels, (QVector<int>{0, 7, 8, 8}));
    }
    void aMissedBeatKeepsTheStoredState()
    {
        Heart heart;
        answer(heart, {1, 0, 7}, 0);
        int received = 0;
        connect(
            &heart, &Heart::receivedControlerState, &heart, [&] { ++received; }, Qt::DirectConnection);
        answer(heart, {0, 0, 0}, -1);
        QCOMPARE(received, 0);
        QCOMPARE(heart.controlerState().rockerState, quint8(1));
        QCOMPARE(heart.controlerState().rockerValue, quint16(7));
    }
    void aBeatReadsTheJoystickOnceInTheWorker()
    {
        simulator::setJoystick(device, true, 4);
        const auto worker = SerialComDev::instance();
        QCOMPARE(worker->open(device), device);
        simulator::clearJournal();

        Heart heart;
        connect(&heart, &Heart::sendHeart, worker.data(), &SerialComDev::slot_heartBeat, Qt::QueuedConnection);
        heart.listenTo(worker.data(), SIGNAL(signal_heartBeatInfo(CONTROLER_STATE, int)));
        heart.singleHeart();
        QTRY_COMPARE(heart.controlerState().rockerValue, quint16(4));
        QCOMPARE(heart.controlerState().rockerState, quint8(1));
        QCOMPARE(int(simulator::journal().size()), 1);
        QCOMPARE(QString::fromStdString(simulator::journal().front().function), QStringLiteral("getRockerInfo"));
        QVERIFY(simulator::journal().front().thread != std::this_thread::get_id());
    }
    void aFailedBeatOnlyBreaks()
    {
        const auto worker = SerialComDev::instance();
        QCOMPARE(worker->open(device), device);
        simulator::failCall("getRockerInfo", -9);
        QSignalSpy messages(worker.data(), &SerialComDev::signal_showOperationMsg);

        Heart heart;
        QAtomicInt breaks;
        connect(
            &heart, &Heart::heartBreak, &heart, [&](int count) { breaks = count; }, Qt::DirectConnection);
        connect(&heart, &Heart::sendHeart, worker.data(), &SerialComDev::slot_heartBeat, Qt::QueuedConnection);
        heart.listenTo(worker.data(), SIGNAL(signal_heartBeatInfo(CONTROLER_STATE, int)));
        heart.singleHeart();
        QTRY_COMPARE(breaks.loadAcquire(), 1);
        QCOMPARE(messages.count(), 0);
    }
    void endsItsThreadWhileBeating()
    {
        QPointer<QThread> thread;
        {
            Heart heart;
            thread = heart.thread();
            const SignalCounter beats(&heart, &Heart::sendHeart);
            heart.startHeart();
            QTRY_VERIFY(beats.count() != 0);
        }
        QVERIFY(thread.isNull());
    }
};

QTEST_GUILESS_MAIN(tst_Heart)
#include "tst_Heart.moc"
