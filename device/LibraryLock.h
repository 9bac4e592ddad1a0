// SPDX-License-Identifier: MIT
#pragma once

#include "device/MoverFunctions.h"

#include <QtGlobal>

#include <chrono>

class QThread;

/**
 * Holds the one library mutex, and is the way to the motion library's functions: `library->getSpeed(id, axis)`. The
 * library is not thread-safe; a call without the lock does not compile.
 *
 * The mutex is not recursive: never take it twice in one thread. Threads get it in the order in which they asked,
 * so that a thread with a long row of calls (the worker, polling over a slow link) cannot keep another one out; but a
 * thread for which a stop was announced gets it before every other.
 */
class LibraryLock final
{
public:
    /** Waits until the mutex is free. */
    LibraryLock();
    /** Waits at most limitMs milliseconds (0: not at all, -1: without limit); ask isLocked() afterwards. */
    explicit LibraryLock(int limitMs);
    ~LibraryLock();

    /** Whether the library may be called. */
    bool isLocked() const { return m_bLocked; }

    /** The functions of the library in use; only while isLocked(). The first use of all may load it. */
    const MoverFunctions *operator->() const { return &**this; }
    const MoverFunctions &operator*() const;

    /** Why a thread goes first. StopAll goes before Stop. */
    enum class Urgency { Stop, StopAll };
    /**
     * `thread` is on its way with a stop: until retract() has been called as often as announce(), no other thread gets
     * the mutex. Whoever has it already keeps it. Any thread.
     */
    static void announce(Urgency urgency, QThread *thread);
    static void retract(Urgency urgency);
    /** Takes back everything that was announced for this thread: it comes no more. */
    static void retractAll(QThread *thread);

    /** Whether this thread waits for the mutex. Any thread. */
    static bool isAwaitedBy(const QThread *thread);
    /** How long the present holder has had the mutex; 0 when it is free. Any thread. */
    static std::chrono::steady_clock::duration heldFor();

private:
    Q_DISABLE_COPY(LibraryLock)

    bool m_bLocked;
};
