// SPDX-License-Identifier: MIT
//
// Tells the thread sanitizer what Qt's synchronisation means. Qt is not instrumented, so that the sanitizer would take
// everything handed over by a QMutex, a semaphore or the event queue for a race. The functions here stand before Qt's
// own, do what those do, and say what happens before what. Linked into the tests of the thread sanitizer's build only.

#include <QCoreApplication>
#include <QEvent>
#include <QMutex>
#include <QObject>
#include <QSemaphore>
#include <QThread>
#include <QThreadPool>
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

void QCoreApplication::postEvent(QObject *receiver, QEvent *event, int priority)
{
    __tsan_release(&eventQueues);
    callQt<void>("_ZN16QCoreApplication9postEventEP7QObjectP6QEventi", receiver, event, priority);
}

/** A single shot's slot is called by an object of Qt's own, and may be the last thing that its thread does. */
void QTimer::singleShotImpl(int msec, Qt::TimerType type, const QObject *receiver, QtPrivate::QSlotObjectBase *slot)
{
    class Told final : public QtPrivate::QSlotObjectBase
    {
    public:
        explicit Told(QSlotObjectBase *slot)
            : QSlotObjectBase(&run)
            , m_slot(slot)
        {
        }

    private:
        static void run(int which, QSlotObjectBase *self, QObject *receiver, void **arguments, bool *)
        {
            auto *const told = static_cast<Told *>(self);
            if (which == Call) {
                __tsan_acquire(&eventQueues);
                told->m_slot->call(receiver, arguments);
                __tsan_release(&eventQueues);
            } else if (which == Destroy) {
                told->m_slot->destroyIfLastRef();
                delete told;
            }
        }

        QSlotObjectBase *const m_slot;
    };
    __tsan_release(&eventQueues);
    callQt<void>(
        "_ZN6QTimer14singleShotImplEiN2Qt9TimerTypeEPK7QObjectPN9QtPrivate15QSlotObjectBaseE", msec, type, receiver,
        static_cast<QtPrivate::QSlotObjectBase *>(new Told(slot)));
}

void QThreadPool::start(std::function<void()> function, int priority)
{
    auto *const kept = new std::function<void()>(std::move(function));
    const std::function<void()> told = [kept] {
        __tsan_acquire(&eventQueues);
        (*kept)();
        delete kept;
        __tsan_release(&eventQueues);
    };
    __tsan_release(&eventQueues);
    callQt<void>("_ZN11QThreadPool5startESt8functionIFvvEEi", this, told, priority);
}

bool QThreadPool::waitForDone(int msecs)
{
    const bool done = callQt<bool>("_ZN11QThreadPool11waitForDoneEi", this, msecs);
    __tsan_acquire(&eventQueues);
    return done;
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
