// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <functional>

/** Looks at every message box that comes up while it lives, and presses the button with the given label. */
class MessageBoxes final
{
public:
    using Look = std::function<void(const QMessageBox &)>;

    explicit MessageBoxes(const QString &label, Look look = {})
    {
        m_timer.callOnTimeout([this, label, look] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box)
                return;
            m_texts.append(box->text());
            if (look)
                look(*box);
            const auto buttons = box->buttons();
            const auto pressed = std::find_if(
                buttons.begin(), buttons.end(), [&label](QAbstractButton *button) { return button->text() == label; });
            if (pressed == buttons.end()) {
                m_texts.append("no button " + label);
                box->reject();
            } else {
                (*pressed)->click();
            }
        });
        m_timer.start(1);
    }

    /** The texts of the boxes so far. */
    QStringList texts() const { return m_texts; }

private:
    QTimer m_timer;
    QStringList m_texts;
};
