// SPDX-License-Identifier: MIT
#include "session/SampleTrack.h"

#include <QtTest>

#include <cmath>

namespace {

constexpr qint64 tenth = 100000; // µs

/** Positions at 10 Hz. */
TrackView sampled(const QVector<double> &positions)
{
    SampleTrack track;
    for (int k = 0; k < positions.size(); ++k)
        track.append(k * tenth, positions[k], false);
    return track.view();
}

int pointsOf(const TrackView::Lines &lines)
{
    int points = 0;
    for (const auto &line : lines)
        points += line.size();
    return points;
}

} // namespace

class tst_SampleTrack : public QObject
{
    Q_OBJECT

private slots:
    void velocityIsFromTheTimes()
    {
        SampleTrack track;
        track.append(0, 1, false);
        track.append(50000, 1.5, false);
        track.append(250000, 1.3, false);
        QVERIFY(std::isnan(track.view().nearest(0)->velocity));
        QCOMPARE(track.view().nearest(50000)->velocity, 10.0);
        QVERIFY(std::abs(track.view().nearest(250000)->velocity + 1) < 1e-9);
    }

    void aTimeThatIsNotLaterIsNoSample()
    {
        SampleTrack track;
        QVERIFY(track.append(10, 1, false));
        QVERIFY(!track.append(10, 2, false));
        QVERIFY(!track.append(9, 2, false));
        QCOMPARE(track.view().size(), 1);
    }

    void whatIsShownDoesNotChangeWhileMoreIsRecorded()
    {
        SampleTrack track;
        track.append(0, 1, false);
        const TrackView view = track.view();
        track.append(tenth, 2, false);
        QCOMPARE(view.size(), 1);
        QCOMPARE(track.view().size(), 2);
    }

    void nothingIsKnownInAGap()
    {
        SampleTrack track;
        track.append(0, 1, false);
        track.append(tenth, 2, false);
        track.append(50 * tenth, 3, true);
        track.append(51 * tenth, 4, false);
        const TrackView view = track.view();
        QCOMPARE(view.nearest(tenth)->position, 2.0);
        QVERIFY(!view.nearest(20 * tenth));
        QVERIFY(!view.nearest(-1));
        QVERIFY(!view.nearest(52 * tenth));
        QCOMPARE(view.gaps(0, 100 * tenth), (QVector<TrackView::Span>{{tenth, 50 * tenth}}));
        QCOMPARE(view.gaps(60 * tenth, 100 * tenth), QVector<TrackView::Span>());
        for (const auto quantity : {TrackView::Position, TrackView::Velocity})
            QCOMPARE(view.columns(0, 60 * tenth, 1000, quantity).size(), 2);
        QCOMPARE(view.columns(0, 60 * tenth, 1000, TrackView::Velocity).last().size(), 1);
    }

    void fewSamplesAreDrawnAsTheyAre()
    {
        const auto lines = sampled({0, 1, 3, 2}).columns(0, 3 * tenth, 300, TrackView::Position);
        QCOMPARE(lines, (TrackView::Lines{{{0, 0}, {0.1, 1}, {0.2, 3}, {0.3, 2}}}));
    }

    void whatNoPainterCanDrawIsBounded()
    {
        const double most = TrackView::DrawnAtMost;
        const auto lines = sampled({1e308, qQNaN(), -qInf(), 2}).columns(0, 3 * tenth, 300, TrackView::Position);
        QCOMPARE(lines, (TrackView::Lines{{{0, most}, {0.2, -most}, {0.3, 2}}}));
    }

    void aLevelLineHasTwoPoints()
    {
        const auto lines = sampled(QVector<double>(500, 7)).columns(0, 500 * tenth, 700, TrackView::Position);
        QCOMPARE(lines, (TrackView::Lines{{{0, 7}, {49.9, 7}}}));
    }

    void lineComesFromBeyondTheEdges()
    {
        const auto lines = sampled({0, 1, 2, 3, 4}).columns(tenth + 1, 3 * tenth - 1, 300, TrackView::Position);
        QCOMPARE(lines.first().first(), QPointF(0.1, 1));
        QCOMPARE(lines.first().last(), QPointF(0.3, 3));
    }

    void columnsKeepTheExtremes()
    {
        SampleTrack track;
        for (int k = 0; k < 200000; ++k)
            track.append(k * qint64(1000), k == 77777 ? 50 : k == 133333 ? -60 : std::sin(k * 0.01), false);
        const TrackView view = track.view();
        for (const auto quantity : {TrackView::Position, TrackView::Velocity}) {
            const auto lines = view.columns(0, 200000000, 700, quantity);
            QVERIFY(pointsOf(lines) <= 4 * 702);
            double lowest = 0;
            double highest = 0;
            double before = -1;
            for (const QPointF &point : lines.first()) {
                lowest = std::min(lowest, point.y());
                highest = std::max(highest, point.y());
                QVERIFY(point.x() >= before);
                before = point.x();
            }
            const double scale = quantity == TrackView::Position ? 1 : 1000;
            QVERIFY(std::abs(lowest + 60 * scale) < 1.1 * scale);
            QVERIFY(std::abs(highest - 50 * scale) < 11 * scale);
        }
    }

    void countsTheSamplesOfATime()
    {
        const TrackView view = sampled(QVector<double>(3000, 1));
        QCOMPARE(view.countBetween(10 * tenth, 19 * tenth), 10);
        QCOMPARE(view.countBetween(0, 10000 * tenth), 3000);
    }

    void aDayAtTenHertzIsKeptWhole()
    {
        SampleTrack track;
        for (int k = 0; k < 864000; ++k)
            track.append(k * tenth, k % 7, false);
        QCOMPARE(track.view().size(), 864000);
    }

    void olderDataIsThinnedAndNeverDropped()
    {
        SampleTrack track;
        const int count = 3000000;
        for (int k = 0; k < count; ++k) {
            double position = std::sin(k * 1e-4);
            if (k == 1234)
                position = 9;
            if (k == 4321)
                position = -9;
            track.append(k * tenth + (k >= 200000 ? 3600000000 : 0), position, k == 200000);
        }
        const TrackView view = track.view();
        QVERIFY(view.size() <= qint64(SampleTrack::MaxChunks) * SampleChunk::Capacity);
        QVERIFY(view.size() > qint64(SampleTrack::MaxChunks) * SampleChunk::Capacity * 9 / 10);
        QCOMPARE(view.startUs(), qint64(0));
        QCOMPARE(view.last().position, std::sin((count - 1) * 1e-4));
        // The oldest second is still there, with what was highest and lowest in it, at their own times.
        QCOMPARE(view.nearest(1234 * tenth)->position, 9.0);
        QCOMPARE(view.nearest(4321 * tenth)->position, -9.0);
        // The gap is where it was, as wide as what is left of the samples beside it.
        const auto gaps = view.gaps(0, view.endUs());
        QCOMPARE(gaps.size(), 1);
        QVERIFY(std::abs(gaps.first().first - 199999 * tenth) < 1000 * tenth);
        QVERIFY(gaps.first().second - gaps.first().first >= 3600000000);
        QCOMPARE(view.columns(0, view.endUs(), 700, TrackView::Position).size(), 2);
        // The newest are untouched.
        QCOMPARE(view.countBetween(view.endUs() - 9999 * tenth, view.endUs()), 10000);
    }
};

QTEST_GUILESS_MAIN(tst_SampleTrack)
#include "tst_SampleTrack.moc"
