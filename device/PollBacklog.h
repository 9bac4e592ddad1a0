// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QMutex>

/**
 * Keeps polls that a slow link cannot keep up with from piling up in front of a command. It counts the requests of
 * one kind that wait in the worker's queue, by axis. Thread-safe.
 */
class PollBacklog final
{
public:
    /** At most this many polls of a kind and axis are run in front of whatever was requested after them. */
    static constexpr int Limit = 2;

    /** A poll was put into the queue. */
    void add(int axis)
    {
        const QMutexLocker lock(&m_mutex);
        ++m_waiting[axis];
    }

    /** A poll has left the queue; false when Limit newer ones still wait, so that this one is not worth a call. */
    bool take(int axis)
    {
        const QMutexLocker lock(&m_mutex);
        int &waiting = m_waiting[axis];
        waiting = qMax(0, waiting - 1);
        return waiting < Limit;
    }

private:
    QMutex m_mutex;
    QHash<int, int> m_waiting;
};
