// SPDX-License-Identifier: MIT
// What keeping and drawing a recording costs.
#include "steps/Measure.h"
#include "steps/Rows.h"

#include "session/Recorder.h"
#include "workbench/PlotModule.h"
#include "workbench/RecorderPlot.h"

#include <QImage>

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

} // namespace

void Rows::recorder(int effort)
{
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
