// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QObject>
#include <QPoint>
#include <QSize>

#include <optional>

class QScreen;
class QWidget;

/**
 * Keeps every window of the application on a screen while it lives: each one as it is shown, all of them when the
 * screens change. It has the place that the program gave it, whatever the desktop reports while it puts the window up.
 * Where the main window finds less room than its minimum size, it becomes as small as the room is and
 * its panels scroll. GUI thread.
 */
class ScreenFit final : public QObject
{
    Q_OBJECT

public:
    /** The main window's minimum size, as its form has it, for what must be known before there is a window. */
    static constexpr QSize MainWindow{1620, 910};

    explicit ScreenFit(QWidget *mainWindow);

    /**
     * The scale at which a main window fits into `room` (pixels of scale 1): 1 for one that fits anyway, otherwise
     * whole hundredths, and never so small that texts cannot be read.
     */
    static double scaleFor(QSize room);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void watch(QScreen *screen);
    void fitAll();
    void fit(QWidget *window) const;
    void settle(QWidget *window);

    QWidget *m_mainWindow;
    /** Of the windows that were shown and are not active yet; none for those that the desktop places. */
    QHash<const QObject *, std::optional<QPoint>> m_places;
};
