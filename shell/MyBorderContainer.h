// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <array>
#include <optional>

/**
 * Lets the user resize a frameless window: eight invisible strips along its edges and corners, and the arithmetic of
 * moving one edge while the opposite one stays where it is. Child of the window it serves and lives as long. GUI
 * thread.
 */
class MyBorderContainer final : public QObject
{
    Q_OBJECT

public:
    /** One strip. Shows the resize cursor of its kind and turns mouse drags into moveEdges(). */
    class MyBorder final : public QLabel
    {
    public:
        /** kind: 1 left, 2 right, 3 top, 4 bottom, 5 top-left, 6 bottom-left, 7 top-right, 8 bottom-right. */
        MyBorder(int kind, MyBorderContainer *container, QWidget *window);

        /** Lays the strip along its edge of a window of the given size; a corner's square is one pixel wider. */
        void layOut(QSize window, int borderWidth);

    protected:
        void mousePressEvent(QMouseEvent *event) override;
        void mouseMoveEvent(QMouseEvent *event) override;
        void mouseReleaseEvent(QMouseEvent *event) override;

    private:
        int m_iKind;
        MyBorderContainer *m_container;
        QPoint m_lastScreenPos;
        bool m_bPressed = false;
    };

    /** Lays the strips above the children that the window has by now. All lengths in pixels. */
    MyBorderContainer(QWidget *window, quint16 minimumHeight, quint16 minimumWidth, quint16 borderWidth);

    /** Fits the strips to the window's size; for the window's resizeEvent. */
    void layoutBorders();

    /**
     * Moves the edges of a strip's kind by (dx, dy) screen pixels. The window stays as it is when the new size would
     * break the minimum given here, the window's own minimum or its maximum. A window that is already below a minimum
     * may grow.
     */
    void moveEdges(int kind, int dx, int dy);

private:
    bool allows(QSize size, QSize before) const;

    QWidget *m_window;
    QSize m_minimumSize;
    int m_iBorderWidth;
    std::array<MyBorder *, 8> m_borders;
    std::optional<QRect> m_dragged; ///< while a strip is dragged: where its moves have put the window
};
