// SPDX-License-Identifier: MIT
#include "tests/controllers/emulator/Host.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <random>

/**
 * A stream of short jogs through the emulated board, against what the same stream did on a real one: 250 steps/mm,
 * 500 mm/s², slices of 50 ms sent 150 ms ahead by a host that wakes every 5 ms ± 3 ms.
 */
class tst_Streams : public QObject
{
    Q_OBJECT

private slots:
    void ripplesAsTheFeedFactorSays_data();
    void ripplesAsTheFeedFactorSays();
    void standsWhenTheHostFallsSilent_data();
    void standsWhenTheHostFallsSilent();
    void cancelsOnTheCommonPath_data();
    void cancelsOnTheCommonPath();
    void runsDryWhenTheHostStalls_data();
    void runsDryWhenTheHostStalls();
};

namespace {

constexpr double stepsPerMm = 250;

/** Sends slices of an even move of X, Y and Z at `speeds`, with a ramp of 50 mm/s² along the path at the start. */
class Stream
{
public:
    Stream(double slice, double lead, double factor, std::array<double, 3> speeds)
        : host(options())
        , m_slice(slice)
        , m_lead(lead)
        , m_factor(factor)
        , m_speeds(speeds)
    {
        m_start = host.board.now();
    }

    static emulator::Options options()
    {
        emulator::Options options = Host::fast();
        for (int axis = 0; axis < 3; ++axis) {
            options.settings[110 + axis] = 1800;
            options.settings[120 + axis] = 500;
        }
        return options;
    }

    /** Streams until `time` after the start. */
    void run(double time)
    {
        while (host.board.now() < m_start + time) {
            while (m_sent * m_slice < host.board.now() - m_start + m_lead) {
                send();
            }
            host.run(0.005 + std::uniform_real_distribution<double>(-0.003, 0.003)(m_random));
        }
    }

    double start() const { return m_start; }

    Host host;

private:
    /** How far along the way at full speed, in seconds of it, `time` after the start. */
    static double ramped(double time)
    {
        constexpr double ramp = 0.2;
        return time < ramp ? time * time / 2 / ramp : time - ramp / 2;
    }

    void send()
    {
        ++m_sent;
        std::array<double, 3> next{};
        double length = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            next[axis] = std::round(m_speeds[axis] * ramped(m_sent * m_slice) * stepsPerMm) / stepsPerMm;
            length += (next[axis] - m_last[axis]) * (next[axis] - m_last[axis]);
        }
        char line[80];
        std::snprintf(
            line, sizeof line, "$J=G53X%.3fY%.3fZ%.3fF%.1f\n", next[0], next[1], next[2],
            std::sqrt(length) / m_slice * 60 * m_factor);
        host.board.send(line);
        m_last = next;
    }

    double m_slice;
    double m_lead;
    double m_factor;
    std::array<double, 3> m_speeds;
    std::array<double, 3> m_last{};
    double m_start = 0;
    int m_sent = 0;
    std::mt19937 m_random{1};
};

/** mm/s in each window of a time. */
std::vector<double> speedsIn(const std::vector<emulator::Step> &steps, double from, double to, double window)
{
    std::vector<double> all(static_cast<std::size_t>((to - from) / window));
    for (const emulator::Step &step : steps) {
        const double index = (step.time - from) / window;
        if (index >= 0 && index < static_cast<double>(all.size())) {
            all[static_cast<std::size_t>(index)] += step.direction / stepsPerMm / window;
        }
    }
    return all;
}

double ripple(const std::vector<double> &speeds)
{
    double mean = 0;
    for (const double speed : speeds) {
        mean += speed / static_cast<double>(speeds.size());
    }
    double most = 0;
    for (const double speed : speeds) {
        most = std::max(most, std::fabs(speed / mean - 1));
    }
    return most;
}

} // namespace

void tst_Streams::ripplesAsTheFeedFactorSays_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<double>("least"); // in windows of 25 ms, with three axes
    QTest::addColumn<double>("most");
    QTest::newRow("1.00") << 1.00 << 0.0 << 0.03;
    QTest::newRow("1.02") << 1.02 << 0.0 << 0.03;
    QTest::newRow("1.05, three axes stumble") << 1.05 << 0.15 << 0.35;
    QTest::newRow("1.20, stop and go") << 1.20 << 0.25 << 0.70;
}

void tst_Streams::ripplesAsTheFeedFactorSays()
{
    QFETCH(double, factor);
    QFETCH(double, least);
    QFETCH(double, most);
    Stream stream(0.05, 0.15, factor, {10, -6, 1});
    stream.run(3);
    const double seen =
        ripple(speedsIn(stream.host.board.takeSteps(0), stream.start() + 1, stream.start() + 2.5, 0.025));
    qInfo("%.1f %%", seen * 100);
    QVERIFY2(seen >= least && seen <= most, qPrintable(QString::number(seen)));
    QVERIFY(stream.host.board.violations().empty());
}

void tst_Streams::standsWhenTheHostFallsSilent_data()
{
    QTest::addColumn<double>("slice");
    QTest::addColumn<double>("lead");
    QTest::newRow("0.05 / 0.15") << 0.05 << 0.15;
    QTest::newRow("0.05 / 0.10") << 0.05 << 0.10;
    QTest::newRow("0.02 / 0.06") << 0.02 << 0.06;
    QTest::newRow("0.10 / 0.25") << 0.10 << 0.25;
}

void tst_Streams::standsWhenTheHostFallsSilent()
{
    QFETCH(double, slice);
    QFETCH(double, lead);
    Stream stream(slice, lead, 1, {10, -6, 0});
    stream.run(1.03);
    const double silent = stream.host.board.now();
    QVERIFY(stream.host.comesToRest());
    const double stood = stream.host.board.lastStep() - silent;
    QVERIFY2(stood > lead - slice - 0.01 && stood < lead + slice + 0.015, qPrintable(QString::number(stood)));
}

void tst_Streams::cancelsOnTheCommonPath_data()
{
    QTest::addColumn<double>("speed");
    QTest::addColumn<double>("from"); // s to the last step
    QTest::addColumn<double>("to");
    QTest::newRow("10 mm/s") << 10.0 << 0.055 << 0.075;
    QTest::newRow("20 mm/s") << 20.0 << 0.075 << 0.096;
}

void tst_Streams::cancelsOnTheCommonPath()
{
    QFETCH(double, speed);
    QFETCH(double, from);
    QFETCH(double, to);
    Stream stream(0.05, 0.15, 1, {speed, -6, 0});
    stream.run(0.8);
    stream.host.run(0.012); // the line that was sent last has been read
    const double sent = stream.host.board.now();
    stream.host.say("\x85\n", 0.3);
    const double stood = stream.host.board.lastStep() - sent;
    QVERIFY2(stood > from && stood < to, qPrintable(QString::number(stood)));
    QCOMPARE(stream.host.board.state(), emulator::State::Idle);
}

void tst_Streams::runsDryWhenTheHostStalls_data()
{
    QTest::addColumn<double>("stall");
    QTest::addColumn<bool>("isDry");
    QTest::newRow("0.1 s") << 0.1 << false;
    QTest::newRow("0.3 s") << 0.3 << true;
    QTest::newRow("2 s") << 2.0 << true;
}

void tst_Streams::runsDryWhenTheHostStalls()
{
    QFETCH(double, stall);
    QFETCH(bool, isDry);
    Stream stream(0.05, 0.15, 1, {10, -6, 0});
    stream.run(1);
    stream.host.run(stall);
    stream.run(1 + stall + 0.5);
    const std::vector<double> speeds =
        speedsIn(stream.host.board.takeSteps(0), stream.start() + 0.8, stream.start() + 1.2 + stall, 0.02);
    const double slowest = *std::min_element(speeds.begin(), speeds.end());
    QVERIFY2(isDry ? slowest < 3 : slowest > 9.7, qPrintable(QString::number(slowest)));
}

QTEST_APPLESS_MAIN(tst_Streams)
#include "tst_Streams.moc"
