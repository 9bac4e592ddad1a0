// SPDX-License-Identifier: MIT
#pragma once

#include "Measurements.h"
#include "support/Robot.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <atomic>

class MoverControlWidget;
class MoverWidget;
class QPushButton;

/**
 * A working day of polls in a fraction of the time: the panels and the heart poll 20 times as often, while every axis
 * loops, popups and dialogs open and close, the link drops and returns, and the controller is connected again now and
 * then. Looks all the while at what must not grow.
 */
class Soak final : public QObject
{
    Q_OBJECT

public:
    static constexpr int Faster = 20;

    Soak(MoverWidget *window, int minutes);

    /** Prints what was measured. Returns whether all of it is flat. */
    bool report() const;

private:
    void hurryTimers();
    void doSomething();
    void sample();
    void endRound();
    void notePoll(int axis);
    void connectController();
    void click(const QObject *in, const char *name) const { m_robot.click(in, name); }
    MoverControlWidget *panel(int axis) const;
    int logEntries() const;

    MoverWidget *m_window;
    Robot m_robot;
    const qint64 m_durationMs;
    QTimer m_hand;
    int m_action = 0;
    bool m_bLinkUp = true;

    QElapsedTimer m_running;
    QElapsedTimer m_sinceLastPoll;
    QVector<double> m_lateness; // of the polls since the last sample, ms
    std::atomic<qint64> m_requests{0};
    std::atomic<int> m_queueLength{0};
    qint64 m_polls = 0;
    double m_bytesPerEntry;

    enum Quantity { Heap, Memory, Handles, Threads, Queue, Lateness, QuantityCount };
    QVector<double> m_ofRound[QuantityCount];     // the samples of the round that runs
    Measurements::Series m_series[QuantityCount]; // one value a round
};
