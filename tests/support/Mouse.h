// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>

/**
 * Mouse events with a button held, at a point of the widget and sent to it: QTest's own moves are those of the pointer
 * of the platform, which knows nothing of a button that was pressed in a test.
 */
namespace Mouse {

inline void send(
    QEvent::Type type, QWidget *widget, QPointF pos, Qt::MouseButton button = Qt::LeftButton,
    Qt::MouseButtons held = Qt::LeftButton)
{
    QMouseEvent event(
        type, pos, pos, widget->mapToGlobal(QPoint(0, 0)) + pos, button, held, Qt::NoModifier,
        Qt::MouseEventSynthesizedByApplication);
    QApplication::sendEvent(widget, &event);
}
inline void press(QWidget *widget, QPointF pos)
{
    send(QEvent::MouseButtonPress, widget, pos);
}
inline void move(QWidget *widget, QPointF pos)
{
    send(QEvent::MouseMove, widget, pos, Qt::NoButton);
}
inline void release(QWidget *widget, QPointF pos)
{
    send(QEvent::MouseButtonRelease, widget, pos, Qt::LeftButton, Qt::NoButton);
}

} // namespace Mouse
