// SPDX-License-Identifier: MIT
#pragma once

#include "device/MoverFunctions.h"

#include <QtGlobal>

/**
 * Holds the one library mutex, and is the way to the motion library's functions: `library->getSpeed(id, axis)`. The
 * library is not thread-safe; a call without the lock does not compile.
 *
 * The mutex is not recursive: never take it twice in one thread. Threads get it in the order in which they asked,
 * so that a thread with a long row of calls (the worker, polling over a slow link) cannot keep another one out.
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

private:
    Q_DISABLE_COPY(LibraryLock)

    bool m_bLocked;
};
