// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/simulated/SimulatorControl.h"

#include <QObject>
#include <QSemaphore>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

/**
 * Measures from a thread of its own how long the GUI thread goes without an event, and which library call was in
 * flight meanwhile. Lets a call that hangs go on after a while. Ends the process, with the culprit's name, when the GUI
 * thread does not come back at all. The time in which this process was ready to run, but a busy machine let others go
 * before, counts for none of its own. Create it in the GUI thread.
 */
class Watchdog final
{
public:
    Watchdog()
    {
        m_timer.callOnTimeout([this] { m_seen = now(); });
        m_timer.start(2);
        m_thread = std::thread([this] { watch(); });
    }
    ~Watchdog()
    {
        m_ends.release();
        m_thread.join();
    }

    struct Stall {
        int ms = 0;
        std::string call; // in flight when it was longest; "" for none
    };
    /** The longest stall since the last call of this. */
    Stall take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Stall result;
        std::swap(result, m_longest);
        return result;
    }

    static constexpr int HangMs = 150; // how long a call hangs

private:
    static qint64 now()
    {
        using namespace std::chrono;
        return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
    }

    /** How long the threads of this process, but for this one, have waited for a processor; 0 where nobody counts. */
    static qint64 keptWaitingMs()
    {
        const std::string self = std::to_string(::syscall(SYS_gettid));
        qint64 waited = 0;
        const std::unique_ptr<DIR, int (*)(DIR *)> tasks(::opendir("/proc/self/task"), &::closedir);
        while (const dirent *task = tasks ? ::readdir(tasks.get()) : nullptr) {
            long long ranNs = 0;
            long long waitedNs = 0;
            std::ifstream statistics(std::string("/proc/self/task/") + task->d_name + "/schedstat");
            if (task->d_name != self && statistics >> ranNs >> waitedNs)
                waited += waitedNs / 1000000;
        }
        return waited;
    }

    void watch()
    {
        constexpr int deadlockMs = 60000;
        qint64 hangsSince = 0;
        qint64 seen = 0;
        qint64 keptWaiting = 0; // when the GUI thread was seen
        while (!m_ends.tryAcquire(1, 5)) {
            const qint64 keptWaitingNow = keptWaitingMs();
            if (seen != m_seen) {
                seen = m_seen;
                keptWaiting = keptWaitingNow;
            }
            // A thread that has ended takes its count along.
            const int stall = int(now() - seen - std::max(qint64(0), keptWaitingNow - keptWaiting));
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                if (stall > m_longest.ms)
                    m_longest = {stall, simulator::callInFlight()};
            }
            if (stall > deadlockMs) {
                std::fprintf(stderr, "The GUI thread hangs; in flight: %s\n", simulator::callInFlight().c_str());
                std::abort();
            }
            if (!simulator::waitUntilHanging(0)) {
                hangsSince = 0;
            } else if (hangsSince == 0) {
                hangsSince = now();
            } else if (now() - hangsSince >= HangMs) {
                simulator::releaseHung();
                hangsSince = 0;
            }
        }
    }

    QTimer m_timer;
    std::atomic<qint64> m_seen{now()};
    QSemaphore m_ends;
    std::mutex m_mutex;
    Stall m_longest;
    std::thread m_thread;
};
