// SPDX-License-Identifier: MIT
#include "session/Sequence.h"

#include <algorithm>
#include <cmath>

namespace {

/** How many places a line has; 0 when it cannot be. */
double placeCount(const Scan::Line &line)
{
    if (!std::isfinite(line.from) || !std::isfinite(line.to) || !(line.step > 0) || !std::isfinite(line.step))
        return 0;
    // A step that does not quite fit for want of digits still counts.
    return std::floor(std::abs(line.to - line.from) / line.step + 1e-9) + 1;
}

} // namespace

QVector<double> Scan::Line::places() const
{
    QVector<double> places(int(placeCount(*this)));
    for (int k = 0; k < places.size(); ++k)
        places[k] = from + (to < from ? -k : k) * step;
    return places;
}

int Scan::count() const
{
    const double lines = hasSlow ? placeCount(slow) : 1;
    const double count = placeCount(fast) * lines + (hasSlow ? lines : 0);
    const bool isSound = count >= 1 && count <= Most && std::isfinite(wait) && wait >= 0 && lines >= 1 &&
                         placeCount(fast) >= 1 && !(hasSlow && slow.axis == fast.axis);
    return isSound ? int(count) : -1;
}

QVector<SequenceStep> Scan::steps() const
{
    QVector<SequenceStep> steps;
    const int all = count();
    if (all < 0)
        return steps;
    steps.reserve(all);
    const auto move = [&steps](int axis, double place, double wait) {
        SequenceStep step;
        step.kind = SequenceStep::MoveTo;
        step.axis = axis;
        step.value = place;
        step.wait = wait;
        steps.append(step);
    };
    QVector<double> places = fast.places();
    const QVector<double> lines = hasSlow ? slow.places() : QVector<double>(1);
    for (const double line : lines) {
        if (hasSlow)
            move(slow.axis, line, 0);
        for (const double place : qAsConst(places))
            move(fast.axis, place, wait);
        if (meander)
            std::reverse(places.begin(), places.end());
    }
    return steps;
}
