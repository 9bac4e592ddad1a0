// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <functional>

/**
 * The keys that stop everything, F12 and Pause, in every window of the application: dialogs, popups, message boxes. A
 * key that is held counts once, and the widget that has the focus does not see it. Works while this object lives. GUI
 * thread.
 */
class StopKeys final : public QObject
{
    Q_OBJECT

public:
    explicit StopKeys(std::function<void()> stop, QObject *parent = nullptr);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::function<void()> m_stop;
};
