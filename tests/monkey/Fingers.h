// SPDX-License-Identifier: MIT
#pragma once

#include "Random.h"

#include <QPoint>
#include <QString>

#include <functional>

class QWidget;

/**
 * Random input, given to the windows as the window system gives it: to the window, not to the widget, so that modal
 * windows, grabs, focus and shortcuts do their part. Each says in words what it is about to do.
 */
class Fingers final
{
public:
    using Note = std::function<void(const QString &)>;

    Fingers(Random &random, Note note)
        : m_random(random)
        , m_note(std::move(note))
    {
    }

    void click(QWidget *window);
    void doubleClick(QWidget *window);
    void drag(QWidget *window);
    void wheel(QWidget *window);
    void key(QWidget *window);
    void type(QWidget *window);
    void resize(QWidget *window);

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
    Note m_note;
};
