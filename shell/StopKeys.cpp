// SPDX-License-Identifier: MIT
#include "shell/StopKeys.h"

#include <QCoreApplication>
#include <QKeyEvent>

StopKeys::StopKeys(std::function<void()> stop, QObject *parent)
    : QObject(parent)
    , m_stop(std::move(stop))
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool StopKeys::eventFilter(QObject *watched, QEvent *event)
{
    const QEvent::Type type = event->type();
    if (type != QEvent::KeyPress && type != QEvent::KeyRelease)
        return QObject::eventFilter(watched, event);
    const auto *key = static_cast<const QKeyEvent *>(event);
    if (key->key() != Qt::Key_F12 && key->key() != Qt::Key_Pause)
        return QObject::eventFilter(watched, event);
    if (type == QEvent::KeyPress && !key->isAutoRepeat())
        m_stop();
    return true;
}
