// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"

#include "device/MotionLibrary.h"

#include <QDeadlineTimer>
#include <QMutex>

namespace {

struct Mutexes {
    QMutex library;
    // QMutex lets the thread that has just released it take it again before a waiting one wakes up. Whoever wants
    // the library mutex holds this one while waiting, so that the other thread queues behind it.
    QMutex turn;
};

// Never destroyed: at exit a thread may still hang in a library call with the mutex taken.
Mutexes &mutexes()
{
    static auto *const instance = new Mutexes;
    return *instance;
}

} // namespace

LibraryLock::LibraryLock()
    : m_bLocked(true)
{
    const QMutexLocker turn(&mutexes().turn);
    mutexes().library.lock();
}

LibraryLock::LibraryLock(int limitMs)
    : m_bLocked(false)
{
    const QDeadlineTimer deadline(limitMs);
    if (!mutexes().turn.tryLock(limitMs))
        return;
    m_bLocked = mutexes().library.tryLock(int(deadline.remainingTime()));
    mutexes().turn.unlock();
}

LibraryLock::~LibraryLock()
{
    if (m_bLocked)
        mutexes().library.unlock();
}

const MoverFunctions &LibraryLock::operator*() const
{
    Q_ASSERT(m_bLocked);
    return MotionLibrary::inUse().m_functions;
}
