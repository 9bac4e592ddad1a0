// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <atomic>
#include <memory>

/** Counts a signal that is emitted in another thread, where a QSignalSpy would append while this thread reads it. */
class SignalCounter final
{
public:
    template <typename Sender, typename Signal>
    SignalCounter(Sender *sender, Signal signal)
    {
        QObject::connect(
            sender, signal, sender, [count = m_count] { ++*count; }, Qt::DirectConnection);
    }
    int count() const { return *m_count; }

private:
    // Shared: the connection ends with the sender, which may live longer.
    std::shared_ptr<std::atomic<int>> m_count = std::make_shared<std::atomic<int>>(0);
};
