// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"

#include <QElapsedTimer>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <stdexcept>
#include <thread>

class tst_LibraryLock : public QObject
{
    Q_OBJECT

private slots:
    void excludesOtherThreads()
    {
        const LibraryLock held;
        QVERIFY(!triesInAnotherThread(0));
        QVERIFY(!triesInAnotherThread(10));
    }
    void isFreeAgainAfterwards()
    {
        {
            const LibraryLock held;
        }
        QVERIFY(triesInAnotherThread(0));
    }
    void isReleasedWhenAnExceptionPasses()
    {
        try {
            const LibraryLock held;
            throw std::runtime_error("thrown under the mutex");
        } catch (const std::runtime_error &) {
        }
        QVERIFY(triesInAnotherThread(0));
    }
    void aLimitedAttemptGivesUp()
    {
        const LibraryLock held;
        std::thread([] {
            QElapsedTimer elapsed;
            elapsed.start();
            const LibraryLock attempt(50);
            QVERIFY(!attempt.isLocked());
            QVERIFY(elapsed.elapsed() >= 45);
        }).join();
    }
    void aGivenUpAttemptReleasesNothing()
    {
        const LibraryLock held;
        QVERIFY(!triesInAnotherThread(0));
        QVERIFY(!triesInAnotherThread(0));
    }

    /** A thread that takes the mutex again at once must not keep a waiting one out. */
    void letsAWaitingThreadInBeforeTheLastHolderComesAgain()
    {
        std::atomic<int> rounds{0};
        std::atomic<bool> served{false};
        int roundsBetween = -1;
        std::thread greedy([&] {
            while (!served) {
                const LibraryLock held;
                ++rounds;
                // Long enough for the other thread to be asleep on the mutex.
                QElapsedTimer busy;
                busy.start();
                while (busy.elapsed() < 5) {
                }
            }
        });
        for (int repeat = 0; repeat < 20; ++repeat) {
            int before = rounds;
            while (rounds == before) // until the other thread has it again
                std::this_thread::yield();
            before = rounds;
            const LibraryLock held;
            roundsBetween = qMax(roundsBetween, rounds - before);
        }
        served = true;
        greedy.join();
        // The round in flight, and at most one that began before this thread had queued up.
        QVERIFY2(roundsBetween <= 2, qPrintable(QString::number(roundsBetween)));
    }

    void keepsOutAllButTheThreadThatAStopIsAnnouncedFor()
    {
        LibraryLock::announce(LibraryLock::Urgency::Stop, QThread::currentThread());
        QVERIFY(!triesInAnotherThread(0));
        QVERIFY(!triesInAnotherThread(10));
        QVERIFY(LibraryLock(0).isLocked());
        LibraryLock::retract(LibraryLock::Urgency::Stop);
        QVERIFY(triesInAnotherThread(0));
    }
    void aStopOfAllGoesBeforeAStop()
    {
        QThread another; // which never comes
        LibraryLock::announce(LibraryLock::Urgency::StopAll, QThread::currentThread());
        LibraryLock::announce(LibraryLock::Urgency::Stop, &another);
        QVERIFY(LibraryLock(0).isLocked());
        LibraryLock::retract(LibraryLock::Urgency::StopAll);
        QVERIFY(!LibraryLock(0).isLocked());
        LibraryLock::retractAll(&another);
        QVERIFY(LibraryLock(0).isLocked());
    }
    void countsWhatWasAnnounced()
    {
        LibraryLock::announce(LibraryLock::Urgency::Stop, QThread::currentThread());
        LibraryLock::announce(LibraryLock::Urgency::Stop, QThread::currentThread());
        LibraryLock::retract(LibraryLock::Urgency::Stop);
        QVERIFY(!triesInAnotherThread(0));
        LibraryLock::retract(LibraryLock::Urgency::Stop);
        QVERIFY(triesInAnotherThread(0));
    }
    void tellsHowLongItIsHeld()
    {
        QVERIFY(LibraryLock::heldFor() == LibraryLock::heldFor().zero());
        const LibraryLock held;
        const auto first = LibraryLock::heldFor();
        QTRY_VERIFY(LibraryLock::heldFor() > first);
    }

private:
    static bool triesInAnotherThread(int limitMs)
    {
        bool got = false;
        std::thread([&] { got = LibraryLock(limitMs).isLocked(); }).join();
        return got;
    }
};

QTEST_GUILESS_MAIN(tst_LibraryLock)
#include "tst_LibraryLock.moc"
