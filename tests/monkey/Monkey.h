// SPDX-License-Identifier: MIT
#pragma once

#include "Fingers.h"
#include "Invariants.h"
#include "Random.h"

#include "session/SequenceFiles.h"

#include <QObject>
#include <QSemaphore>

#include <atomic>
#include <functional>
#include <thread>

class MoverWidget;

/**
 * Uses the program at random: input in every window, faults of the simulated controller, passing time. After each step
 * everything that holds in a quiet program is looked at; every few hundred steps the faults are taken back and the
 * program has to connect and move as before. The first thing that is wrong ends the process.
 *
 * A seed stands for its steps. The panels' and the heart's timers are held and their polls made by the steps, the
 * simulated clock moves with the steps only, and each step waits until the threads have nothing left to do. What may
 * still differ between two runs are Qt's own timers (double click, tips, the repeating of spin boxes), and how soon a
 * sequence gives up an axis that stands elsewhere or does not answer.
 */
class Monkey final : public QObject
{
    Q_OBJECT

public:
    Monkey(unsigned seed, int steps);
    ~Monkey() override;

    void run();

    /** What was done last, and where; for whoever finds something wrong. Any thread. */
    static void tellSteps();

private:
    void arm();
    void tick();
    void step();
    void settle();
    void act();
    void fault();
    void clearFaults();
    void stopAll();
    static void showPage(QWidget *page);
    void useHistory(QWidget *page);
    void useSequences();
    SequenceDocument someSequence();
    void passTime();
    void leave();
    QWidget *someWindow();
    void holdTimers();
    void poll();
    void goOn();
    void comeBack();
    void connectAndMove();
    void check();
    void checkEndedSequence();
    void checkRest(const QString &after);
    [[noreturn]] void fail(const QString &what);
    void startScenario();

    Random m_random;
    Fingers m_fingers;
    Invariants m_invariants;
    int m_steps;
    int m_actingLevel = 0; // of the event loop in which a step is being made
    int m_sinceComingBack = 0;
    int m_iEnded = 0; // sequences, since they were looked at
    bool m_bComingBack = false;
    bool m_bLoopRuns = true; // the event loop has gone round since the last step
    MoverWidget *m_window = nullptr;
    QSemaphore m_ends; // one for each of the threads
    std::atomic<int> m_beats{0};
    std::thread m_releaser;
    std::thread m_watchdog;
};
