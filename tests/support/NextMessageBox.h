// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

/** Answers the next message box as soon as it is shown, and remembers it. */
class NextMessageBox final
{
public:
    /** `button`: its label. */
    explicit NextMessageBox(const QString &button)
    {
        m_timer.callOnTimeout([this, button] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box)
                return;
            m_timer.stop();
            ++m_shown;
            m_text = box->text();
            m_parent = box->parentWidget();
            m_cursorWasBusy = QGuiApplication::overrideCursor() != nullptr;
            for (QAbstractButton *candidate : box->buttons()) {
                if (candidate->text() == button)
                    return candidate->click();
            }
            box->reject();
        });
        m_timer.start(5);
    }

    int shown() const { return m_shown; }
    QString text() const { return m_text; }
    QWidget *parent() const { return m_parent; }
    bool cursorWasBusy() const { return m_cursorWasBusy; }

private:
    QTimer m_timer;
    int m_shown = 0;
    QString m_text;
    QPointer<QWidget> m_parent;
    bool m_cursorWasBusy = false;
};
