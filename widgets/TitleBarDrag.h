// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QPoint>

class QMouseEvent;
class QWidget;

/**
 * Lets the user move a frameless window by its title bar, while this object lives. It sees the window's mouse events
 * before the window does and takes those that are part of a drag. A window that fills the screen is not moved.
 */
class TitleBarDrag final : public QObject
{
    Q_OBJECT

public:
    /** titleBar must lie inside window; both must outlive this object. `buttons`: those that start a drag. */
    TitleBarDrag(QWidget *window, const QWidget *titleBar, Qt::MouseButtons buttons = Qt::AllButtons);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool press(QMouseEvent *event);
    bool move(QMouseEvent *event);

    QWidget *m_window;
    const QWidget *m_titleBar;
    Qt::MouseButtons m_buttons;
    QPoint m_pressPos;
    bool m_bDragging = false;
};
