// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <functional>

/** Calls `onOpen` once with the next message box that opens, while its event loop runs, then closes the box. */
class MessageBoxWatch final
{
public:
    explicit MessageBoxWatch(std::function<void(QMessageBox &)> onOpen = [](QMessageBox &) {})
    {
        m_timer.callOnTimeout([this, onOpen] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box)
                return;
            m_timer.stop();
            ++m_opened;
            onOpen(*box);
            box->accept();
        });
        m_timer.start(5);
    }

    /** 0 or 1. */
    int opened() const { return m_opened; }

private:
    QTimer m_timer;
    int m_opened = 0;
};
