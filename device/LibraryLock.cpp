// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"

#include "device/MotionLibrary.h"

#include <QThread>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <list>
#include <mutex>

namespace {

using Clock = std::chrono::steady_clock;

/** The library mutex: handed on to the one whose turn it is, never grabbed. */
class Gate final
{
public:
    /** False when it was not free before the deadline; none: waits as long as it takes. */
    bool enter(const Clock::time_point *deadline)
    {
        std::unique_lock lock(m_mutex);
        Waiter self{QThread::currentThread()};
        const auto place = m_waiting.insert(m_waiting.end(), &self);
        handOn();
        if (!deadline) {
            self.turn.wait(lock, [&self] { return self.has; });
        } else if (!self.turn.wait_until(lock, *deadline, [&self] { return self.has; })) {
            m_waiting.erase(place);
            return false;
        }
        return true;
    }
    void leave()
    {
        const std::lock_guard lock(m_mutex);
        m_bTaken = false;
        handOn();
    }

    void announce(LibraryLock::Urgency urgency, QThread *thread)
    {
        const std::lock_guard lock(m_mutex);
        Announced &announced = m_announced[std::size_t(urgency)];
        announced.thread = thread;
        ++announced.count;
    }
    void retract(LibraryLock::Urgency urgency)
    {
        const std::lock_guard lock(m_mutex);
        Announced &announced = m_announced[std::size_t(urgency)];
        announced.count = std::max(0, announced.count - 1);
        handOn();
    }
    void retractAll(const QThread *thread)
    {
        const std::lock_guard lock(m_mutex);
        for (Announced &announced : m_announced) {
            if (announced.thread == thread)
                announced.count = 0;
        }
        handOn();
    }

    bool waits(const QThread *thread)
    {
        const std::lock_guard lock(m_mutex);
        return std::any_of(
            m_waiting.begin(), m_waiting.end(), [thread](const Waiter *each) { return each->thread == thread; });
    }
    Clock::duration takenFor()
    {
        const std::lock_guard lock(m_mutex);
        return m_bTaken ? Clock::now() - m_takenAt : Clock::duration::zero();
    }

private:
    struct Waiter {
        QThread *thread;
        std::condition_variable turn{};
        bool has = false;
    };
    struct Announced {
        QThread *thread = nullptr;
        int count = 0;
    };

    /** Gives a free gate to the next one, if there is one whose turn it is. */
    void handOn()
    {
        if (m_bTaken)
            return;
        auto next = m_waiting.begin();
        const auto urgent = std::find_if(
            m_announced.rbegin(), m_announced.rend(), [](const Announced &each) { return each.count > 0; });
        if (urgent != m_announced.rend())
            next = std::find_if(m_waiting.begin(), m_waiting.end(), [urgent](const Waiter *each) {
                return each->thread == urgent->thread;
            });
        if (next == m_waiting.end()) // nobody waits, or the one who is announced is still on its way
            return;
        Waiter *waiter = *next;
        m_waiting.erase(next);
        m_bTaken = true;
        m_takenAt = Clock::now();
        waiter->has = true;
        waiter->turn.notify_one();
    }

    std::mutex m_mutex;
    std::list<Waiter *> m_waiting;
    std::array<Announced, 2> m_announced;
    bool m_bTaken = false;
    Clock::time_point m_takenAt;
};

// Never destroyed: at exit a thread may still hang in a library call with the mutex taken.
Gate &gate()
{
    static auto *const instance = new Gate;
    return *instance;
}

} // namespace

LibraryLock::LibraryLock()
    : m_bLocked(gate().enter(nullptr))
{
}

LibraryLock::LibraryLock(int limitMs)
{
    const auto deadline = Clock::now() + std::chrono::milliseconds(limitMs);
    m_bLocked = gate().enter(limitMs < 0 ? nullptr : &deadline);
}

LibraryLock::~LibraryLock()
{
    if (m_bLocked)
        gate().leave();
}

const MoverFunctions &LibraryLock::operator*() const
{
    Q_ASSERT(m_bLocked);
    return MotionLibrary::inUse().m_functions;
}

void LibraryLock::announce(Urgency urgency, QThread *thread)
{
    gate().announce(urgency, thread);
}

void LibraryLock::retract(Urgency urgency)
{
    gate().retract(urgency);
}

void LibraryLock::retractAll(QThread *thread)
{
    gate().retractAll(thread);
}

bool LibraryLock::isAwaitedBy(const QThread *thread)
{
    return gate().waits(thread);
}

std::chrono::steady_clock::duration LibraryLock::heldFor()
{
    return gate().takenFor();
}
