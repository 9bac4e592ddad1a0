// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/**
 * Holds the one library mutex. The motion library is not thread-safe, so every call to it, from whichever thread,
 * is made while an object of this class is alive: to check that, search for this name.
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

private:
    Q_DISABLE_COPY(LibraryLock)

    bool m_bLocked;
};
