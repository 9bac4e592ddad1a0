// SPDX-License-Identifier: MIT
//
// Tells the thread sanitizer what Qt's synchronisation means. Qt is not instrumented, so that the sanitizer would take
// everything handed over by a QMutex, a semaphore or the event queue for a race. The functions here stand before Qt's
// own, do what those do, and say what happens before what. Linked into the tests of the thread sanitizer's build only.

#include <QEvent>
#include <QMutex>
#include <QObject>
#include <QSemaphore>
#include <QThread>
#include <QTimer>

#include <dlfcn.h>

extern "C" void __tsan_acquire(void *);
extern "C" void __tsan_release(void *);

namespace {

// Whatever goes through an event queue: one for all of them, since an event does not tell who posted it.
char eventQueues;

template <typename Result, typename... Arguments>
Result callQt(const char *symbol, Arguments... arguments)
{
    using Function = Result (*)(Arguments...);
    static_assert(sizeof(Function) == sizeof(void *), "a function pointer comes from dlsym");
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, symbol))(arguments...);
}

} // namespace

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    callQt<void>("_ZN6QMutex4lockEv", this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    const bool locked = callQt<bool>("_ZN6QMutex7tryLockEi", this, timeout);
    if (locked)
        __tsan_acquire(this);
    return locked;
}

void QMutex::unlock() noexcept
{
    __tsan_release(this);
    callQt<void>("_ZN6QMutex6unlockEv", this);
}

void QSemaphore::acquire(int n)
{
    callQt<void>("_ZN10QSemaphore7acquireEi", this, n);
    __tsan_acquire(this);
}

bool QSemaphore::tryAcquire(int n, int timeout)
{
    const bool acquired = callQt<bool>("_ZN10QSemaphore10tryAcquireEii", this, n, timeout);
    if (acquired)
        __tsan_acquire(this);
    return acquired;
}

void QSemaphore::release(int n)
{
    __tsan_release(this);
    callQt<void>("_ZN10QSemaphore7releaseEi", this, n);
}

// ---- Event queue: what was done before a signal or a call was posted is seen where it is delivered, and what was done
// there is seen by whoever waits for it.

void QMetaObject::activate(QObject *sender, const QMetaObject *metaObject, int signal, void **arguments)
{
    __tsan_release(&eventQueues);
    callQt<void>("_ZN11QMetaObject8activateEP7QObjectPKS_iPPv", sender, metaObject, signal, arguments);
}

bool QMetaObject::invokeMethodImpl(
    QObject *object, QtPrivate::QSlotObjectBase *slot, Qt::ConnectionType type, void *result)
{
    __tsan_release(&eventQueues);
    const bool called = callQt<bool>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv", object,
        slot, type, result);
    __tsan_acquire(&eventQueues);
    return called;
}

bool QMetaObject::invokeMethod(
    QObject *object, const char *member, Qt::ConnectionType type, QGenericReturnArgument result, QGenericArgument a0,
    QGenericArgument a1, QGenericArgument a2, QGenericArgument a3, QGenericArgument a4, QGenericArgument a5,
    QGenericArgument a6, QGenericArgument a7, QGenericArgument a8, QGenericArgument a9)
{
    __tsan_release(&eventQueues);
    const bool called = callQt<bool>(
        "_ZN11QMetaObject12invokeMethodEP7QObjectPKcN2Qt14ConnectionTypeE22QGenericReturnArgument16QGenericArgument"
        "S7_S7_S7_S7_S7_S7_S7_S7_S7_",
        object, member, type, result, a0, a1, a2, a3, a4, a5, a6, a7, a8, a9);
    __tsan_acquire(&eventQueues);
    return called;
}

void QTimer::start()
{
    __tsan_release(&eventQueues); // its time-outs are posted by Qt itself
    callQt<void>("_ZN6QTimer5startEv", this);
}

bool QObject::event(QEvent *event)
{
    __tsan_acquire(&eventQueues);
    const bool handled = callQt<bool>("_ZN7QObject5eventEP6QEvent", this, event);
    __tsan_release(&eventQueues);
    return handled;
}

bool QThread::wait(QDeadlineTimer deadline)
{
    const bool ended = callQt<bool>("_ZN7QThread4waitE14QDeadlineTimer", this, deadline);
    __tsan_acquire(&eventQueues);
    return ended;
}
