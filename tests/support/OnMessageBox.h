// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

#include <functional>

/**
 * Looks at the next message box once it is shown, and closes it if `look` has left it open. A test that expects no box
 * creates one too, and finds shown() to be 0.
 */
class OnMessageBox final
{
public:
    explicit OnMessageBox(std::function<void(QMessageBox &)> look = [](QMessageBox &) {})
    {
        m_timer.callOnTimeout([this, look = std::move(look)] {
            const QPointer<QMessageBox> box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || !box->isVisible())
                return;
            m_timer.stop();
            ++m_shown;
            m_text = box->text();
            look(*box);
            if (box)
                box->reject();
        });
        m_timer.start(5);
    }

    int shown() const { return m_shown; }
    QString text() const { return m_text; }

private:
    Q_DISABLE_COPY(OnMessageBox)

    QTimer m_timer;
    int m_shown = 0;
    QString m_text;
};
