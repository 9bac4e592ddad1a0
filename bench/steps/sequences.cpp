// SPDX-License-Identifier: MIT
// How soon one step of a sequence follows another.
#include "steps/Measure.h"
#include "steps/Rows.h"

#include "controllers/simulated/SimulatorControl.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/SequenceRunner.h"

#include <QEventLoop>
#include <QTimer>

#include <cmath>

void Rows::sequence(int effort)
{
    constexpr int axis = 0;
    constexpr double distance = 1; // mm
    const auto worker = SerialComDev::instance();
    worker->close();
    simulator::reset();
    simulator::useRealClock();
    const auto session = ControlSession::instance();
    if (session->connectTo({device, "SIM-A"}) != device)
        qFatal("cannot open the simulated controller");
    session->beginSetUp();
    if (session->setUpAxis(axis).outcome != ControlSession::AxisSetUp::Ready)
        qFatal("the axis cannot be set up");
    session->readJoystick();
    QEventLoop loop;
    QTimer polls; // as its panel does, and there is a position to begin with
    QObject::connect(&polls, &QTimer::timeout, &polls, [&] {
        emit worker->signal_getDevState(axis);
        emit worker->signal_getCurrentPos(axis);
        if (session->axis(axis)->lastPosition())
            loop.quit();
    });
    polls.start(100);
    loop.exec();

    std::vector<double> starts; // s
    simulator::onCall([&starts](const std::string &function) {
        if (function == "startMove")
            starts.push_back(simulator::now());
    });
    SequenceRunner &runner = session->sequences();
    const SequenceSetting::Axis setting = runner.setting().axes.value(axis);
    SequenceStep there;
    there.kind = SequenceStep::MoveBy;
    there.axis = axis;
    there.value = distance;
    SequenceStep back = there;
    back.value = -distance;
    SequenceStep again;
    again.kind = SequenceStep::Repeat;
    again.from = 0;
    again.count = 1 + effort;
    QEventLoop run;
    QObject::connect(&runner, &SequenceRunner::signal_ended, &run, &QEventLoop::quit);
    if (!runner.run({QStringLiteral("there and back"), {there, back, again}}, {}))
        qFatal("the sequence cannot be run");
    run.exec();
    simulator::onCall(nullptr);
    if (runner.lastEnd().reason != SequenceEnd::Finished)
        qFatal("the sequence has not come to its end");

    const double motion = SequencePlan::secondsOf(setting, distance, setting.speed);
    std::vector<double> gaps; // ms
    for (std::size_t k = 1; k < starts.size(); ++k)
        gaps.push_back(1000 * (starts.at(k) - starts.at(k - 1) - motion));
    Measure::report(
        "sequence step", Measure::quantile(gaps, 0.5),
        "%zu steps, beside the polls of a panel; 99th percentile %.1f ms", gaps.size(), Measure::quantile(gaps, 0.99));
    session->disconnectController();
    simulator::reset();
    worker->open(device);
}
