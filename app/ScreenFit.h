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
 * screens change. A window stays where the program put it, whatever the desktop reports while the window appears. One
 * that is larger than the screen shrinks, as far as it can; the main window always can, and its panels scroll.
 * GUI thread.
 */
class ScreenFit final : public QObject
{
    Q_OBJECT

public:
    /** The main window's minimum size, as its form has it, for use before there is a window. */
    static constexpr QSize MainWindow{1620, 910};

    explicit ScreenFit(QWidget *mainWindow);

    /**
     * The scale at which a main window fits into `room` (pixels of scale 1): 1 for one that fits anyway, otherwise
     * whole hundredths.
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
    /**
     * The places of windows that were shown and are not active yet; no place for those that the desktop puts somewhere.
     */
    QHash<const QObject *, std::optional<QPoint>> m_places;
};
