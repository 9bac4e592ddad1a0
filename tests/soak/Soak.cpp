// SPDX-License-Identifier: MIT
#include "Soak.h"

#include "axis/CycleOperationWidget.h"
#include "axis/MoverControlWidget.h"
#include "device/Heart.h"
#include "device/SerialComDev.h"
#include "shell/ConnectionWidget.h"
#include "shell/MoverWidget.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/LiveObjects.h"

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTextBrowser>
#include <QTextDocument>
#include <QtTest>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int axes = 3;
constexpr int handMs = 100;          // between two things that the user does
constexpr int actionsPerRound = 200; // after which they begin again: 20 s, or more on a busy machine
constexpr int actionsPerSample = 25;
constexpr int warmUpRounds = 2;        // not judged: every window has to be opened once
constexpr int roundsPerConnection = 4; // the next one then connects again
constexpr double kilobyte = 1024;

double quantile(QVector<double> values, double part)
{
    if (values.isEmpty())
        return 0;
    const auto at = values.begin() + int(part * (values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

} // namespace

Soak::Soak(MoverWidget *window, int minutes)
    : m_window(window)
    , m_robot(window, [](QAbstractButton *button) { QTest::mouseClick(button, Qt::LeftButton); })
    , m_durationMs(qint64(minutes) * 60000)
    , m_bytesPerEntry(Measurements::bytesPerLogEntry())
    , m_series{
          // A real leak of one object a round, or of one allocation in a thousand polls, is beyond these.
          {QStringLiteral("heap without the logs"), QStringLiteral("kB"), 300},
          {QStringLiteral("memory without the logs"), QStringLiteral("kB"),
           1000}, // pages, so with the allocator's gaps
          {QStringLiteral("handles"), QString(), 0.5},
          {QStringLiteral("threads"), QString(), 0.5},
          {QStringLiteral("requests waiting"), QString(), 3},         // half of what three panels ask for at once
          {QStringLiteral("polls late by"), QStringLiteral("ms"), 5}, // one interval
      }
{
    const auto worker = SerialComDev::instance();
    const auto count = [this] { ++m_requests; };
    connect(worker.data(), &SerialComDev::signal_getCurrentPos, this, count, Qt::DirectConnection);
    connect(worker.data(), &SerialComDev::signal_getDevState, this, count, Qt::DirectConnection);
    connect(worker.data(), &SerialComDev::signal_updateCurrentPos, this, &Soak::notePoll);

    connect(&m_hand, &QTimer::timeout, this, &Soak::doSomething);
    m_hand.start(handMs);
    m_running.start();
}

/** The program's own periodic timers; what runs once (messages, the burst of a plug) keeps its time. */
void Soak::hurryTimers()
{
    for (QTimer *timer : LiveObjects::all<QTimer>()) {
        const bool polls =
            timer->interval() == MoverControlWidget::PollIntervalMs || timer->interval() == Heart::IntervalMs;
        if (polls && timer != &m_hand && !timer->isSingleShot() && timer->thread() == thread())
            timer->setInterval(timer->interval() / Faster);
    }
}

MoverControlWidget *Soak::panel(int axis) const
{
    return m_robot.panel(axis);
}

void Soak::connectController()
{
    m_robot.connectTo(1001);
    m_sinceLastPoll.invalidate();
}

/** One thing after the other, of what a user does in a day. */
void Soak::doSomething()
{
    hurryTimers();
    const int action = m_action++ % actionsPerRound;
    if (action % actionsPerSample == actionsPerSample - 1)
        sample();
    if (m_window->panelBoard().count() < axes && action < actionsPerRound - 1)
        return connectController();
    static const char *const popups[] = {"pushButton_moveParam", "pushButton_jogParam", "pushButton_driveParam"};
    MoverControlWidget *some = panel(action % axes);
    if (action < 60) {
        click(some, popups[action / 2 % axes]); // opens it, and the next time around closes it
    } else if (action < 66) {
        MoverControlWidget *looped = panel((action - 60) / 2);
        auto *loop = looped->findChild<CycleOperationWidget *>();
        if (action % 2 == 0) {
            click(looped, "pushButton_circle");
            loop->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_relativeDisp"))->setValue(4);
            loop->findChild<QSpinBox *>(QStringLiteral("spinBox_time"))->setValue(100000);
            loop->findChild<QSpinBox *>(QStringLiteral("spinBox_delay"))->setValue(20);
        } else {
            click(loop, "pushButton_right");
        }
    } else if (action == 80) {
        simulator::loseLink(1001);
        m_bLinkUp = false;
    } else if (action == 90) {
        simulator::restoreLink(1001);
        m_bLinkUp = true;
        m_sinceLastPoll.invalidate();
    } else if (action >= 100 && action < 106) {
        static const char *const windows[] = {"pushButton_settings", "pushButton_help", "pushButton_debug"};
        if (action % 2 == 0) {
            click(m_window, windows[(action - 100) / 2]);
        } else {
            for (QWidget *window : QApplication::topLevelWidgets()) {
                if (window != m_window && window->isVisible())
                    window->close();
            }
        }
    } else if (action == 150 || action == 151 || action == 152) {
        click(panel(action - 150)->findChild<CycleOperationWidget *>(), "pushButton_stop");
    } else if (action >= 170 && action < 173) {
        MoverControlWidget *looped = panel(action - 170);
        click(looped->findChild<CycleOperationWidget *>(), "pushButton_close"); // stands still: does not ask
    } else if (action >= 175 && action < 190) {
        click(some, action % 2 ? "pushButton_jogRight" : "pushButton_stop");
    } else if (action == actionsPerRound - 1) {
        endRound();
    }
}

void Soak::notePoll(int axis)
{
    ++m_polls;
    if (axis != 0 || !m_bLinkUp)
        return;
    if (m_sinceLastPoll.isValid()) {
        const double elapsedMs = double(m_sinceLastPoll.nsecsElapsed()) / 1e6;
        m_lateness.append(qMax(0.0, elapsedMs - double(MoverControlWidget::PollIntervalMs) / Faster));
    }
    m_sinceLastPoll.start();
}

int Soak::logEntries() const
{
    int blocks = 0;
    for (const MoverControlWidget *panel : m_window->panelBoard().panels())
        blocks +=
            panel->findChild<QTextBrowser *>(QStringLiteral("textBrowser_operatioInfo"))->document()->blockCount();
    return blocks / 2; // an entry has two lines
}

void Soak::sample()
{
    simulator::clearJournal(); // the test's own record of the calls
    // What was asked for after this request and still waits when it is its turn, is the queue.
    const qint64 before = m_requests;
    QMetaObject::invokeMethod(
        SerialComDev::instance().data(), [this, before] { m_queueLength = int(m_requests - before); },
        Qt::QueuedConnection);

    const double logBytes = logEntries() * m_bytesPerEntry;
    const double values[QuantityCount] = {
        (double(Measurements::heapBytes()) - logBytes) / kilobyte,
        (double(Measurements::anonymousBytes()) - logBytes) / kilobyte,
        double(Measurements::openHandles()),
        double(Measurements::threads()),
        double(m_queueLength),
        quantile(m_lateness, 0.5),
    };
    std::printf(
        "%5lld s %7lld polls %5d entries %7.0f kB heap %7.0f kB memory %2.0f handles %2.0f threads %3.0f waiting "
        "%5.2f ms late (99 %%: %.1f)\n",
        m_running.elapsed() / 1000, m_polls, logEntries(), values[Heap], values[Memory], values[Handles],
        values[Threads], values[Queue], values[Lateness], quantile(m_lateness, 0.99));
    std::fflush(stdout);
    m_lateness.clear();
    for (int k = 0; k < QuantityCount; ++k)
        m_ofRound[k].append(values[k]);
}

/** Rounds are alike, so that one can be held against another. */
void Soak::endRound()
{
    const int round = m_action / actionsPerRound;
    for (int k = 0; k < QuantityCount; ++k) {
        if (round > warmUpRounds)
            m_series[k].values.append(quantile(m_ofRound[k], 0.5));
        m_ofRound[k].clear();
    }
    // At least as many are judged as make a first and a last third, also where a busy machine has made them long.
    if (m_running.elapsed() >= m_durationMs && round >= warmUpRounds + 3)
        m_window->close();
    else if (round % roundsPerConnection == 0)
        m_robot.disconnect(); // takes the panels with it, and their logs
}

bool Soak::report() const
{
    bool flat = true;
    const double days = double(m_polls) / (3600.0 * 8 * axes * 1000 / MoverControlWidget::PollIntervalMs);
    std::printf(
        "\n%lld positions polled in %lld s: %.2f working days of eight hours\nOne log entry keeps %.0f bytes\n\n",
        m_polls, m_running.elapsed() / 1000, days, m_bytesPerEntry);
    std::printf("| quantity | first third | last third | rise | at most |\n|---|---|---|---|---|\n");
    for (const Measurements::Series &series : m_series) {
        const int count = series.values.size();
        const bool ok = count > 0 && series.rise() <= series.limit;
        flat = flat && ok;
        std::printf(
            "| %s%s%s | %.1f | %.1f | %.1f%s | %.1f |\n", qPrintable(series.name), series.unit.isEmpty() ? "" : ", ",
            qPrintable(series.unit), series.median(0, count / 3), series.median(count - count / 3, count),
            series.rise(), ok ? "" : " (FINDING)", series.limit);
    }
    if (m_polls == 0) {
        std::printf("FINDING: nothing was polled\n");
        flat = false;
    }
    return flat;
}
