// SPDX-License-Identifier: MIT
// What keeping and drawing a recording costs.
#include "steps/Measure.h"
#include "steps/Rows.h"

#include "session/ControlSession.h"
#include "session/IncidentFiles.h"
#include "session/MoveWatchdog.h"
#include "session/ParameterHistory.h"
#include "session/Recorder.h"
#include "workbench/HistoryWidget.h"
#include "workbench/PlotModule.h"
#include "workbench/RecorderPlot.h"
#include "workbench/RecorderView.h"
#include "workbench/WorkbenchWidget.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QTemporaryDir>

#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

using namespace std::chrono_literals;

constexpr int dayAtTenHertz = 864000;
constexpr int million = 1000000;

double heldMiB()
{
    const auto info = mallinfo2();
    return double(info.uordblks + info.hblkhd) / (1024 * 1024);
}

/** Noisy positions at 10 Hz up to now. */
std::unique_ptr<Recorder> recorded(int axes, int samples)
{
    auto recorder = std::make_unique<Recorder>();
    recorder->begin(QStringLiteral("bench"));
    const auto begin = AnswerListener::Time::clock::now() - samples * 100ms;
    unsigned noise = 1;
    for (int axis = 0; axis < axes; ++axis)
        recorder->describe({axis, QStringLiteral("LIN-100"), axis == 1 ? QStringLiteral("°") : QStringLiteral("mm")});
    for (int k = 0; k < samples; ++k) {
        for (int axis = 0; axis < axes; ++axis) {
            noise = noise * 1664525 + 1013904223;
            recorder->positionAnswered(
                axis, std::sin(k * 1e-3 * (axis + 1)) * 40 + noise % 1000 * 1e-3, begin + k * 100ms);
        }
    }
    return recorder;
}

void memory(const char *row, int axes)
{
    const double before = heldMiB();
    const auto recorder = recorded(axes, dayAtTenHertz);
    RecorderPlot plot;
    plot.resize(864, 559);
    plot.setRecording(recorder->recording());
    plot.setSpan(RecorderPlot::All);
    const PlotPicture picture = plot.picture(plot.width());
    Measure::report(
        row, heldMiB() - before, "24 h at 10 Hz of %d axes, with a picture of all of it (%d lines)", axes,
        picture.traces.size());
}

/** Counts whatever the GUI thread is told. */
class Events final : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *) override { return ++count < 0; }
    int count = 0;
};

void pass(int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

/** What the program makes of the workbench before it is opened. */
void start(int effort)
{
    const QTemporaryDir folder;
    std::vector<double> times;
    for (int k = 0; k < effort; ++k) {
        const auto begin = AnswerListener::Time::clock::now();
        Recorder recorder;
        const MoveWatchdog watchdog([](int) { return MotorDevInfo(); });
        const IncidentFiles incidents(recorder, folder.path());
        const ParameterHistory history(folder.path());
        const auto end = AnswerListener::Time::clock::now();
        times.push_back(std::chrono::duration<double, std::milli>(end - begin).count());
    }
    Measure::report(
        "workbench start", Measure::quantile(times, 0.5),
        "recorder, watchdog, incident files, history; longest %.2f ms", Measure::quantile(times, 1));
}

void hidden()
{
    WorkbenchWidget bench;
    bench.addPage(new RecorderView);
    bench.addPage(new HistoryWidget);
    bench.open();
    pass(300);
    bench.close();
    pass(300);
    Recorder &recorder = ControlSession::instance()->recorder();
    recorder.begin(QStringLiteral("bench"));
    Events events;
    qApp->installEventFilter(&events);
    auto at = AnswerListener::Time::clock::now();
    for (int k = 0; k < 1000; ++k)
        recorder.positionAnswered(0, k, at += 1ms);
    pass(500);
    qApp->removeEventFilter(&events);
    if (recorder.recording(false).sampleCount() < 1000)
        qFatal("nothing was recorded");
    Measure::report("workbench hidden", events.count, "events of the GUI thread in 1,000 answers and half a second");
}

} // namespace

void Rows::recorder(int effort)
{
    start(effort);
    hidden();
    {
        Recorder recorder;
        recorder.begin(QStringLiteral("bench"));
        auto at = AnswerListener::Time::clock::now();
        double position = 0;
        std::vector<double> times;
        times.reserve(std::size_t(effort));
        for (int k = 0; k < effort; ++k) {
            times.push_back(
                double(Measure::timed(
                    [&] {
                        at += 10ms;
                        recorder.positionAnswered(0, position += 0.001, at);
                    },
                    30000)()) /
                1000);
        }
        Measure::report(
            "recorder answer", Measure::quantile(times, 0.5), "99th percentile of runs of 30,000: %.3f µs",
            Measure::quantile(times, 0.99));
    }
    memory("recorder memory 3", 3);
    memory("recorder memory 8", 8);

    const auto recorder = recorded(3, million / 3);
    RecorderPlot plot;
    plot.resize(864, 559);
    plot.ensurePolished(); // the colours
    plot.setRecording(recorder->recording());
    QImage image(plot.size(), QImage::Format_RGB32);
    std::vector<double> frames;
    const qint64 all = plot.recording().endUs() - plot.recording().startUs();
    for (int k = 0; k < std::max(100, 4 * effort); ++k) {
        // From all of it to ten seconds and back, as somebody zooms.
        const double part = std::abs(std::sin(k * 0.1));
        plot.setSpan(std::max<qint64>(10000000, qint64(double(all) * part * part)));
        frames.push_back(
            double(Measure::timed([&] {
                plot.setRecording(recorder->recording());
                plot.render(&image);
            })()) /
            1e6);
    }
    Measure::report("recorder frame", Measure::quantile(frames, 0.5), "a million samples of three axes");
    Measure::report("recorder frame 99", Measure::quantile(frames, 0.99), "the same");
}
