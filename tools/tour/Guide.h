// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QPoint>
#include <QString>
#include <QThread>

#include <functional>

class QWidget;

/** Runs a function in the GUI thread, also inside the event loop of a message box, and returns what it returns. */
template <typename Function>
auto inGui(Function function)
{
    if (QThread::currentThread() == QCoreApplication::instance()->thread())
        return function();
    using Result = decltype(function());
    if constexpr (std::is_void_v<Result>) {
        QMetaObject::invokeMethod(QCoreApplication::instance(), function, Qt::BlockingQueuedConnection);
    } else {
        Result result{};
        QMetaObject::invokeMethod(QCoreApplication::instance(), function, Qt::BlockingQueuedConnection, &result);
        return result;
    }
}

/**
 * Leads through the program: real mouse and keyboard events (by xdotool), a picture and a printed line for each step,
 * with what the controller was asked and answered in it. A step whose outcome does not come about is a failure.
 *
 * Runs in a thread of its own, so that a message box, which holds up whoever opened it, does not hold up the tour.
 */
class Guide final
{
public:
    using Condition = std::function<bool()>;

    /** Pictures go to `directory`; they show `window` and whatever lies over it. */
    Guide(QWidget *window, const QDir &directory);

    /**
     * One step: does something, waits until its outcome (asked in the GUI thread) has come about, takes a picture.
     * `name` becomes the name of the picture, "07-name.png". limitMs: how long the outcome may take.
     */
    void step(const QString &name, const std::function<void()> &action, const Condition &outcome, int limitMs = 5000);

    /** Number of steps whose outcome did not come about. */
    int failures() const { return m_iFailures; }

    /** Waits until the condition, asked in the GUI thread, holds. False when it does not within limitMs. */
    static bool wait(const Condition &condition, int limitMs);

    /** Moves the mouse onto the middle of a widget and clicks. */
    static void click(const QWidget *widget);
    static void clickAt(const QWidget *widget, QPoint position);
    /** Holds the mouse button down on a widget until the condition, asked in the GUI thread, holds. */
    static void hold(const QWidget *widget, const Condition &until, int limitMs = 5000);
    static void doubleClickAt(const QWidget *widget, QPoint position);
    static void drag(const QWidget *widget, QPoint from, QPoint by);
    /** Moves the mouse out of everybody's way. */
    static void moveAway();
    /** Keys by their X names, "Return", "alt+F4". */
    static void press(const QString &keys);
    static void type(const QString &text);
    /** Replaces the text of a field: click, select all, type. */
    static void fill(const QWidget *field, const QString &text);

private:
    void savePicture(const QString &name) const;
    QString answers() const;

    QWidget *m_window;
    QDir m_directory;
    int m_iStep = 0;
    int m_iFailures = 0;
};
