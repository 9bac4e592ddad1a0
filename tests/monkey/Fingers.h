// SPDX-License-Identifier: MIT
#pragma once

#include "Random.h"

#include <QPoint>
#include <QString>

class QWidget;
class QWindow;

/**
 * Random input, given to the windows as the window system gives it: to the window, not to the widget, so that modal
 * windows, grabs, focus and shortcuts do their part. Each returns what it did, in words.
 */
class Fingers final
{
public:
    explicit Fingers(Random &random)
        : m_random(random)
    {
    }

    QString click(QWidget *window);
    QString doubleClick(QWidget *window);
    QString drag(QWidget *window);
    QString wheel(QWidget *window);
    QString key(QWidget *window);
    QString type(QWidget *window);
    QString resize(QWidget *window);

    /** Where a widget is: its class, its name and the text on it. */
    static QString nameOf(const QWidget *widget);
    /** A click in the middle of a widget, with the left button. */
    static void clickOn(QWidget *widget);
    static void press(QWidget *window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

private:
    /** Something to aim at: mostly a widget that takes input, sometimes any place. */
    QWidget *target(QWidget *window);
    QPoint placeIn(const QWidget *window, const QWidget *target);

    Random &m_random;
};
