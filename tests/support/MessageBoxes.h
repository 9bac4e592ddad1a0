// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <functional>

/** Answers every message box that is shown while it lives, and keeps their texts. */
class MessageBoxes final
{
public:
    using Answer = std::function<void(QMessageBox *box)>;

    /** `answer` runs once for each box, inside the event loop of the box. */
    explicit MessageBoxes(Answer answer)
        : m_answer(std::move(answer))
    {
        m_timer.callOnTimeout([this] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || box == m_answered)
                return;
            m_answered = box;
            m_texts.append(box->text());
            m_parents.append(box->parentWidget());
            m_answer(box);
        });
        m_timer.start(1);
    }
    /** Presses the button with this label. */
    explicit MessageBoxes(const QString &button = QStringLiteral("确认"))
        : MessageBoxes([button](QMessageBox *box) { press(box, button); })
    {
    }

    static void press(QMessageBox *box, const QString &button)
    {
        const QList<QAbstractButton *> buttons = box->buttons();
        for (QAbstractButton *candidate : buttons) {
            if (candidate->text() == button)
                return candidate->click();
        }
        box->reject();
    }

    QStringList texts() const { return m_texts; }
    int count() const { return m_texts.size(); }
    QList<QPointer<QWidget>> parents() const { return m_parents; }

private:
    Q_DISABLE_COPY(MessageBoxes)

    Answer m_answer;
    QTimer m_timer;
    QPointer<QMessageBox> m_answered;
    QStringList m_texts;
    QList<QPointer<QWidget>> m_parents;
};
