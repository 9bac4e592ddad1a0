// SPDX-License-Identifier: MIT
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

/**
 * Turns the signals that ask a process to end (interrupt, terminate, hang-up) into a call in the GUI thread, so that
 * the program leaves as by its close button. When it has not left within five seconds, because its windows wait for a
 * library that hangs, the process ends with a failure. Does nothing where there are no such signals. One object at a
 * time.
 */
class TerminationSignals final
{
public:
    explicit TerminationSignals(std::function<void()> onSignal);
    ~TerminationSignals();

private:
    Q_DISABLE_COPY(TerminationSignals)

    std::unique_ptr<QSocketNotifier> m_notifier;
};
