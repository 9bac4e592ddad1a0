// SPDX-License-Identifier: MIT
#include "widgets/TitleBarDrag.h"

#include <QMouseEvent>
#include <QWidget>

#include <cmath>

namespace {

/** Rounds halves away from zero, also left of and above the window, where QPointF::toPoint() does not. */
QPoint localPos(const QMouseEvent *event)
{
    return {int(std::lround(event->localPos().x())), int(std::lround(event->localPos().y()))};
}

} // namespace

TitleBarDrag::TitleBarDrag(QWidget *window, const QWidget *titleBar)
    : m_window(window)
    , m_titleBar(titleBar)
{
}

bool TitleBarDrag::press(QMouseEvent *event)
{
    const QPoint pos = localPos(event);
    const QRect bar(m_titleBar->mapTo(m_window, QPoint(0, 0)), m_titleBar->size());
    if (m_window->isFullScreen() || !bar.contains(pos))
        return false;
    m_pressPos = pos;
    m_bDragging = true;
    event->accept();
    return true;
}

bool TitleBarDrag::move(QMouseEvent *event)
{
    if (!m_bDragging)
        return false;
    m_window->move(m_window->pos() + localPos(event) - m_pressPos);
    event->accept();
    return true;
}

void TitleBarDrag::release()
{
    m_bDragging = false;
}
