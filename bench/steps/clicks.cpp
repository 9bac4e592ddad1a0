// SPDX-License-Identifier: MIT
// How soon a click reaches the library.
#include "steps/Measure.h"
#include "steps/Rows.h"

#include "axis/MoverControlWidget.h"
#include "device/PollQueue.h"
#include "device/SerialComDev.h"
#include "controllers/simulated/SimulatorControl.h"

#include <QEventLoop>
#include <QFile>
#include <QPushButton>
#include <QSemaphore>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <numeric>

namespace {

/** Lives in a thread of its own and notes when it is told. */
class Receiver final : public QObject
{
    Q_OBJECT

public:
    Receiver() { m_clock.start(); }

    qint64 now() const { return m_clock.nsecsElapsed(); }
    /** Waits until it has been told; when that was. */
    qint64 told()
    {
        m_told.acquire();
        return m_at;
    }

public slots:
    void note()
    {
        m_at = now();
        m_told.release();
    }

signals:
    void tell();

private:
    QElapsedTimer m_clock;
    std::atomic<qint64> m_at{0};
    QSemaphore m_told;
};

/** Is told when the library is called to stop an axis. */
std::atomic<Receiver *> stopListener{nullptr};

void runFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

/** Three panels that poll their axes over a link on which every call takes so long. */
class SlowController final
{
public:
    SlowController(int callMs, int pollMs)
    {
        QFile file(QStringLiteral(MOVER_BENCH_SCENARIO));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("no scenario");
        QByteArray json = file.readAll();
        json.insert(json.indexOf('{') + 1, "\"latencyMs\": " + QByteArray::number(callMs) + ",");
        std::string error;
        if (!simulator::loadScenarioText(json.toStdString(), &error))
            qFatal("%s", error.c_str());
        simulator::useRealClock();
        const auto worker = SerialComDev::instance();
        if (worker->open(Rows::device) != Rows::device)
            qFatal("cannot open the simulated controller");
        const auto ask = [this] { ++m_asked; };
        const auto answer = [this] { ++m_answered; };
        QObject::connect(worker.data(), &SerialComDev::signal_getCurrentPos, &m_context, ask, Qt::DirectConnection);
        QObject::connect(worker.data(), &SerialComDev::signal_getDevState, &m_context, ask, Qt::DirectConnection);
        QObject::connect(
            worker.data(), &SerialComDev::signal_updateCurrentPos, &m_context, answer, Qt::DirectConnection);
        QObject::connect(worker.data(), &SerialComDev::signal_updateDevState, &m_context, answer, Qt::DirectConnection);
        // In the worker thread, as the first thing after the library has answered.
        QObject::connect(
            worker.data(), &SerialComDev::signal_showOperationMsg, &m_context, [this] { m_stop.note(); },
            Qt::DirectConnection);
        for (int axis = 0; axis < 3; ++axis) {
            m_panels[axis] = std::make_unique<MoverControlWidget>();
            m_panels[axis]->setAxis(QSharedPointer<ControlAxis>::create(AxisDescription{axis}));
            m_panels[axis]->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->setInterval(pollMs);
        }
    }
    ~SlowController()
    {
        for (auto &panel : m_panels)
            panel.reset();
        SerialComDev::instance()->close();
        simulator::reset();
        SerialComDev::instance()->open(Rows::device);
    }

    struct Click {
        double ms;       // to the answer of the library
        int callsBefore; // that the library answered in between
        int waiting;     // polls that were asked for and not yet answered at the time, the one in flight included
    };
    /** Clicks the stop button of a panel. */
    Click click(int axis)
    {
        const int waiting = -m_answered + m_asked;
        simulator::clearJournal();
        const qint64 from = m_stop.now();
        m_panels[axis]->findChild<QPushButton *>(QStringLiteral("pushButton_stop"))->click();
        const qint64 at = m_stop.told();
        const std::vector<simulator::Call> calls = simulator::journal();
        const auto stop = std::find_if(
            calls.begin(), calls.end(), [](const simulator::Call &call) { return call.function == "stopRuning"; });
        return {double(at - from) / 1e6, int(stop - calls.begin()), waiting};
    }

private:
    std::atomic<int> m_asked{0};
    std::atomic<int> m_answered{0};
    Receiver m_stop;
    QObject m_context;
    std::unique_ptr<MoverControlWidget> m_panels[3];
};

} // namespace

// The linker puts the second in the place of the library's function, which becomes the first (--wrap); the names are
// its.
extern "C" int __real_stopRuning(int id, int axis); // NOLINT(bugprone-reserved-identifier)
extern "C" int __wrap_stopRuning(int id, int axis)  // NOLINT(bugprone-reserved-identifier)
{
    if (Receiver *listener = stopListener)
        listener->note();
    return __real_stopRuning(id, axis);
}

void Rows::clickIdle(int effort)
{
    MoverControlWidget panel;
    panel.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->stop(); // no polls between the clicks
    auto *button = panel.findChild<QPushButton *>(QStringLiteral("pushButton_stop"));

    Receiver library;
    QObject context;
    stopListener = &library;
    const int before = simulator::callCount("stopRuning");
    int clicks = 0;
    const Measure::Sample click = [&] {
        QThread::msleep(1); // the worker sleeps when the click comes
        ++clicks;
        const qint64 from = library.now();
        button->click();
        return library.told() - from;
    };

    QThread thread;
    Receiver receiver;
    Receiver sender;
    receiver.moveToThread(&thread);
    QObject::connect(&sender, &Receiver::tell, &receiver, &Receiver::note);
    thread.start();
    const Measure::Sample hop = [&] {
        QThread::msleep(1);
        const qint64 from = receiver.now();
        emit sender.tell();
        return receiver.told() - from;
    };
    const Measure::Pairs pairs = Measure::inTurns(click, hop, 30 * effort);
    SerialComDev::instance()->close(); // after the last call has returned
    stopListener = nullptr;
    if (simulator::callCount("stopRuning") - before != clicks)
        qFatal("not every click has reached the library");
    SerialComDev::instance()->open(device);
    Measure::report(
        "click idle", pairs.ratio, "%.1f µs against %.1f µs; 99th percentile %.0f µs against %.0f µs",
        Measure::quantile(pairs.subject, 0.5), Measure::quantile(pairs.baseline, 0.5),
        Measure::quantile(pairs.subject, 0.99), Measure::quantile(pairs.baseline, 0.99));
    thread.quit();
    thread.wait();
}

void Rows::clickBusy(int effort)
{
    SlowController controller(5, MoverControlWidget::PollIntervalMs);
    runFor(300);
    std::vector<double> times;
    std::vector<double> before;
    int beyond = 0;
    for (int k = 0; k < effort; ++k) {
        runFor(40 + k * 37 % 100); // at any moment between the polls
        const SlowController::Click click = controller.click(k % 3);
        times.push_back(click.ms);
        before.push_back(click.callsBefore);
        beyond = std::max(beyond, click.callsBefore - click.waiting);
    }
    Measure::report(
        "click busy", beyond, "%d clicks: median %.1f ms, 99th percentile %.1f ms; calls in front %.0f to %.0f", effort,
        Measure::quantile(times, 0.5), Measure::quantile(times, 0.99), Measure::quantile(before, 0),
        Measure::quantile(before, 1));
}

void Rows::slowLink(int effort)
{
    // Twenty times as fast as it is: calls of 200 ms, polls every 100 ms, ten minutes.
    constexpr int speedUp = 20;
    SlowController controller(200 / speedUp, MoverControlWidget::PollIntervalMs / speedUp);
    QElapsedTimer clock;
    clock.start();
    std::vector<double> times;
    std::vector<double> before;
    const qint64 endMs = 600000 / speedUp * effort / 100;
    while (clock.elapsed() < endMs) {
        runFor(60);
        const SlowController::Click click = controller.click(int(times.size()) % 3);
        times.push_back(click.ms * speedUp);
        before.push_back(click.callsBefore);
    }
    const auto quarter = std::ptrdiff_t(times.size() / 4);
    // Means: the same queue shows now one call more and now one less, by the moment of the click.
    const auto mean = [quarter](auto first) { return std::accumulate(first, first + quarter, 0.0) / double(quarter); };
    const double atStart = mean(before.begin());
    const double atEnd = mean(before.end() - quarter);
    const double most = Measure::quantile(before, 1);
    Measure::report(
        "slow link", most,
        "%.0f simulated minutes, %zu stops after %.1f s (median), %.1f s (99th percentile), %.1f s (longest); calls in "
        "front %.0f to %.0f",
        double(endMs) * speedUp / 60000, times.size(), Measure::quantile(times, 0.5) / 1000,
        Measure::quantile(times, 0.99) / 1000, Measure::quantile(times, 1) / 1000, Measure::quantile(before, 0), most);
    Measure::report(
        "slow link growth", std::round(atEnd - atStart),
        "calls in front of a stop: %.1f in the first quarter, %.1f in the last (means)", atStart, atEnd);
}

#include "clicks.moc"
