// SPDX-License-Identifier: MIT
#pragma once

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
    /** Ends it after the stop that runs. */
    void end()
    {
        m_bEnding = true;
        m_presses.release();
    }

protected:
    void run() override
    {
        for (;;) {
            m_presses.acquire();
            if (m_bEnding)
                return;
            m_stop();
        }
    }

private:
    const std::function<void()> m_stop;
    QSemaphore m_presses;
    std::atomic<bool> m_bEnding{false};
};
