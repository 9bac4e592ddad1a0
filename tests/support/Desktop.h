// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QPoint>
#include <QProcess>
#include <QtTest>

/** The desktop that a test runs on, with its mouse and keyboard. */
namespace Desktop {

/** Runs a program of the desktop to its end; what it does to the test's windows is handled meanwhile. */
inline void run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    QTRY_COMPARE(process.state(), QProcess::NotRunning);
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
}

inline void xdotool(const QStringList &arguments)
{
    run("xdotool", arguments);
}

inline QString number(int value)
{
    return QString::number(value);
}

inline void clickAt(QPoint point)
{
    xdotool({"mousemove", "--", number(point.x()), number(point.y()), "click", "1"});
}

inline void moveBy(QPoint step)
{
    xdotool({"mousemove_relative", "--", number(step.x()), number(step.y())});
}

/** How far dragQuickly() goes in the end. */
constexpr int QuickDragPixels = 79;

/**
 * Drags to and fro along `direction`, and at last QuickDragPixels from where it began, where it has not been before:
 * far quicker than the desktop answers, and no step is lost in another.
 */
inline void dragQuickly(QPoint grip, QPoint direction)
{
    // Or Qt makes one step of those that have come meanwhile.
    QCoreApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
    QStringList drag{"mousemove", "--", number(grip.x()), number(grip.y()), "mousedown", "1"};
    const auto step = [&](int pixels) {
        const QPoint delta = direction * pixels;
        // --sync: or the X server does.
        drag << QStringList{"mousemove_relative", "--sync", "--", number(delta.x()), number(delta.y())};
    };
    for (int k = 0; k < 70; ++k)
        step(k % 20 < 10 ? 7 : -7);
    step(QuickDragPixels - 70);
    xdotool(drag + QStringList{"mouseup", "1"});
    QCoreApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, true);
}

} // namespace Desktop
