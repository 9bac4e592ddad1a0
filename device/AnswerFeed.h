// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverMessages.h"
#include "device/moverRecords.h"

#include <QMutex>

#include <algorithm>
#include <chrono>
#include <vector>

/** A motion command, a homing or a stop that reached the library, who asked for it, and what the library said. */
struct MotionCommand {
    enum Source {
        Request, ///< a request of the worker: what the panels do
        Console,
        StopAll,
        Holder, ///< whoever has the axis reserved: a sequence
    };
    int axis;
    int type;          // OperationType
    int direction = 0; // 1 or -1; 0 for one that has none
    Source source = Request;
    int status = 0; // below 0: refused

    bool isAccepted() const { return status >= 0; }
};

/**
 * Hears every answer to the polls of the axes, also one that repeats the last, and to every motion command,
 * with the time at which the library gave its answer. Called by the thread that made the call, mostly while it holds
 * the library lock: note the answer and return.
 */
class AnswerListener
{
public:
    using Time = std::chrono::steady_clock::time_point;

    virtual void positionAnswered(int axis, double position, Time at) = 0;
    virtual void stateAnswered(int axis, const MotorStageState &state, Time at) = 0;
    /** A poll of either kind failed. */
    virtual void pollFailed(int axis, Time at) = 0;
    /** The library has accepted or refused a command. */
    virtual void commandAnswered(const MotionCommand &command, Time at) = 0;
    /** The controller has said something that answers no call. */
    virtual void messageHeard(const MoverMessage &message, Time at)
    {
        Q_UNUSED(message)
        Q_UNUSED(at)
    }
    /** The motor parameters or the compensation of the axis were written, by whomever. */
    virtual void parametersWritten(int axis, Time at)
    {
        Q_UNUSED(axis)
        Q_UNUSED(at)
    }

protected:
    ~AnswerListener() = default;
};

/** Who listens to the answers. Thread-safe. */
class AnswerFeed final
{
public:
    void add(AnswerListener *listener)
    {
        const QMutexLocker lock(&m_mutex);
        m_listeners.push_back(listener);
    }
    /** Afterwards the listener hears nothing more: waits for the answer that it is hearing, if any. */
    void remove(AnswerListener *listener)
    {
        const QMutexLocker lock(&m_mutex);
        m_listeners.erase(std::remove(m_listeners.begin(), m_listeners.end(), listener), m_listeners.end());
    }

    /** Calls tell(listener, now) for each. */
    template <typename Tell>
    void tell(Tell tell)
    {
        const auto now = std::chrono::steady_clock::now();
        const QMutexLocker lock(&m_mutex);
        for (AnswerListener *listener : m_listeners)
            tell(*listener, now);
    }

private:
    QMutex m_mutex;
    std::vector<AnswerListener *> m_listeners;
};
