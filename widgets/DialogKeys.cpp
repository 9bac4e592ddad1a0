// SPDX-License-Identifier: MIT
#include "widgets/DialogKeys.h"

#include <QKeyEvent>
#include <QPushButton>

DialogKeys::DialogKeys(QWidget *window, std::function<void()> close, QPushButton *confirm)
    : QObject(window)
    , m_window(window)
    , m_close(std::move(close))
    , m_confirm(confirm)
{
    window->installEventFilter(this);
}

bool DialogKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    switch (key->key()) {
    case Qt::Key_Escape:
        if (!m_close)
            return false;
        m_close();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return key->isAutoRepeat() || pressEnter();
    default:
        return false;
    }
}

bool DialogKeys::pressEnter()
{
    QWidget *focus = m_window->window()->focusWidget();
    auto *button = focus && m_window->isAncestorOf(focus) ? qobject_cast<QPushButton *>(focus) : nullptr;
    if (!button)
        button = m_confirm;
    if (!button)
        return false;
    button->click(); // does nothing where the button is disabled
    return true;
}
