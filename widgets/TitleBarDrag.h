// SPDX-License-Identifier: MIT
#pragma once

#include <QPoint>

class QMouseEvent;
class QWidget;

/**
 * Moves a frameless window by its title bar. The window passes its mouse events on; a call that returns true has
 * handled (and accepted) the event, any other event takes its normal way.
 */
class TitleBarDrag final
{
public:
    /** titleBar must be a child of window; both must outlive this object. */
    TitleBarDrag(QWidget *window, const QWidget *titleBar);

    /** Starts a drag inside the title bar, unless the window fills the screen. */
    bool press(QMouseEvent *event);
    bool move(QMouseEvent *event);
    void release();

private:
    QWidget *m_window;
    const QWidget *m_titleBar;
    QPoint m_pressPos;
    bool m_bDragging = false;
};
