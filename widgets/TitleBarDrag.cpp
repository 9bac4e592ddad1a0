// SPDX-License-Identifier: MIT
#include "widgets/TitleBarDrag.h"

#include <QMouseEvent>
#include <QWidget>

#include <cmath>

namespace {

/**
 * The mouse's position in the window, measured from where the program last put the window. The event's localPos() is
 * measured from where the desktop had the window at that moment: in a quick drag that is an older place, and the window
 * would run away from the mouse. Rounds halves away from zero, also left of and above the window, where
 * QPointF::toPoint() does not.
 */
QPoint localPos(const QMouseEvent *event, const QWidget *window)
{
    const QPointF pos = event->screenPos() - window->geometry().topLeft(); // mapToGlobal() has the older place, too
    return {int(std::lround(pos.x())), int(std::lround(pos.y()))};
}

} // namespace

TitleBarDrag::TitleBarDrag(QWidget *window, const QWidget *titleBar, Qt::MouseButtons buttons)
    : m_window(window)
    , m_titleBar(titleBar)
    , m_buttons(buttons)
{
    window->installEventFilter(this);
}

bool TitleBarDrag::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        return press(static_cast<QMouseEvent *>(event));
    case QEvent::MouseMove:
        return move(static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonRelease:
        m_bDragging = false;
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

bool TitleBarDrag::press(QMouseEvent *event)
{
    const QPoint pos = localPos(event, m_window);
    const QRect bar(m_titleBar->mapTo(m_window, QPoint(0, 0)), m_titleBar->size());
    if (!(m_buttons & event->button()) || m_window->isFullScreen() || !bar.contains(pos))
        return false;
    m_pressPos = pos;
    m_bDragging = true;
    event->accept();
    return true;
}

bool TitleBarDrag::move(QMouseEvent *event)
{
    if (!m_bDragging || m_window->isFullScreen())
        return false;
    m_window->move(m_window->pos() + localPos(event, m_window) - m_pressPos);
    event->accept();
    return true;
}
