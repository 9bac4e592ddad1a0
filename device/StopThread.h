// SPDX-License-Identifier: MIT
#pragma once

#include <QDeadlineTimer>
#include <QSemaphore>
#include <QThread>

#include <atomic>
#include <functional>

/** A thread that does nothing but stop: each press runs `stop` in it once, whatever the worker is doing. */
class StopThread final : public QThread
{
public:
    explicit StopThread(std::function<void()> stop)
        : m_stop(std::move(stop))
    {
        setObjectName(QStringLiteral("StopThread"));
    }

    /** Any thread; returns at once. */
    void press() { m_presses.release(); }
    /** Ends it after the stop that runs. False when that hangs beyond the deadline. */
    bool end(QDeadlineTimer deadline)
    {
        m_bEnding = true;
        m_presses.release();
        return wait(deadline) && m_bEnded;
    }

protected:
    void run() override
    {
        for (m_presses.acquire(); !m_bEnding; m_presses.acquire())
            m_stop();
        m_bEnded = true;
    }

private:
    const std::function<void()> m_stop;
    QSemaphore m_presses;
    std::atomic<bool> m_bEnding{false};
    std::atomic<bool> m_bEnded{false}; // the last thing that the thread does; whoever has seen it may destroy this
};
