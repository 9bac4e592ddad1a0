// SPDX-License-Identifier: MIT
#include "session/SequencePlan.h"

#include "session/MotionTime.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double longestWait = 86400; // s
constexpr double longestMove = 1e7;   // s; four months

/** Where an axis is while it is followed through. */
struct Place {
    double position = 0;
    double speed = 0;
    bool isTrusted = false;
    bool isSet = false; // moved to a place since the begin of the lines that are repeated
};

class Walk final
{
public:
    Walk(const Sequence &sequence, const Positions &positions, const SequenceSetting &setting, SequencePlan &plan)
        : m_steps(sequence.steps)
        , m_setting(setting)
        , m_plan(plan)
        , m_faultOf(sequence.steps.size(), false)
    {
        for (const NamedPosition &position : positions)
            m_positions.insert(position.name, &position);
        for (auto axis = setting.axes.cbegin(); axis != setting.axes.cend(); ++axis)
            m_places.insert(axis.key(), {axis->position, axis->speed, axis->isTrusted});
    }

    void run()
    {
        findRepeats();
        m_plan.seconds = walk(0, m_steps.size(), m_steps.size(), 1);
        std::sort(m_plan.faults.begin(), m_plan.faults.end(), [](const SequenceFault &one, const SequenceFault &other) {
            return one.line < other.line;
        });
    }

private:
    void fault(int line, SequenceFault::Kind kind, int axis = -1, double value = 0)
    {
        if (std::exchange(m_faultOf[line], true))
            return;
        m_plan.faults.append({line, kind, axis, value});
    }

    /** The repeats that are sound, by the line that they begin with, the widest first. */
    void findRepeats()
    {
        struct Repeat {
            int from;
            int last;
            int depth;
        };
        QVector<Repeat> done; // that no later one has enclosed
        for (int line = 0; line < m_steps.size(); ++line) {
            const SequenceStep &step = m_steps.at(line);
            if (step.kind != SequenceStep::Repeat)
                continue;
            if (step.from < 0 || step.from >= line) {
                fault(line, SequenceFault::From);
                continue;
            }
            int depth = 1;
            bool crosses = false;
            for (; !done.isEmpty() && done.last().last >= step.from; done.removeLast()) {
                crosses = crosses || done.last().from < step.from;
                depth = std::max(depth, done.last().depth + 1);
            }
            done.append({step.from, line, depth});
            if (crosses)
                fault(line, SequenceFault::Crossing);
            else if (depth > SequencePlan::MostNested)
                fault(line, SequenceFault::TooDeep);
            else if (step.count < 1 || step.count > SequencePlan::MostPasses)
                fault(line, SequenceFault::Count, -1, step.count);
            else
                m_repeats[step.from].prepend(line);
        }
    }

    /** From `begin` to before `end`; repeats that end at `within` or behind it are not looked at. Returns s. */
    double walk(int begin, int end, int within, double passes)
    {
        double seconds = 0;
        for (int line = begin; line < end;) {
            const QVector<int> repeats = m_repeats.value(line);
            const auto *const repeat = std::find_if(repeats.cbegin(), repeats.cend(), [&](int last) {
                return last < end && (line != begin || last < within);
            });
            if (repeat == repeats.cend()) {
                seconds += step(line, passes);
                ++line;
            } else {
                seconds += this->repeat(line, *repeat, passes);
                line = *repeat + 1;
            }
        }
        return seconds;
    }

    double repeat(int begin, int last, double passes)
    {
        const int count = m_steps.at(last).count;
        const QMap<int, Place> before = m_places;
        for (Place &place : m_places)
            place.isSet = false;
        double seconds = walk(begin, last, last, passes);
        if (count > 1) {
            for (auto place = m_places.begin(); place != m_places.end(); ++place) {
                if (!place->isSet)
                    place->position += (count - 2) * (place->position - before.value(place.key()).position);
            }
            seconds += (count - 1) * walk(begin, last, last, passes * (count - 1));
        }
        for (auto place = m_places.begin(); place != m_places.end(); ++place)
            place->isSet = place->isSet || before.value(place.key()).isSet;
        return seconds;
    }

    bool hasAxis(int line, int axis)
    {
        if (!m_places.contains(axis)) {
            fault(line, SequenceFault::NoAxis, axis);
            return false;
        }
        m_plan.axes.insert(axis);
        if (!m_setting.axes[axis].isEnabled)
            fault(line, SequenceFault::NotEnabled, axis);
        else if (m_setting.axes[axis].isMoving)
            fault(line, SequenceFault::Moves, axis);
        return true;
    }

    /** Returns s. `isPlace`: the target does not depend on where the axis is. */
    double move(int line, int axis, double target, bool isPlace)
    {
        if (!std::isfinite(target)) {
            fault(line, SequenceFault::NoNumber, axis);
            return 0;
        }
        if (!hasAxis(line, axis))
            return 0;
        const SequenceSetting::Axis &setting = m_setting.axes[axis];
        const AxisDescription &description = setting.description;
        Place &place = m_places[axis];
        if (!place.isTrusted)
            m_plan.doubtful.insert(axis);
        if (target < description.minPos || target > description.maxPos)
            fault(line, SequenceFault::BeyondTravel, axis, target);
        const double seconds = SequencePlan::secondsOf(setting, std::abs(target - place.position), place.speed);
        reach(axis, place.position);
        place.position = target;
        place.isSet = place.isSet || isPlace;
        reach(axis, target);
        return seconds;
    }

    void reach(int axis, double position)
    {
        const auto known = m_plan.extents.find(axis);
        if (known == m_plan.extents.end())
            m_plan.extents.insert(axis, {position, position});
        else
            *known = {std::min(known->least, position), std::max(known->most, position)};
    }

    void setSpeed(int line, int axis, double speed)
    {
        if (!hasAxis(line, axis))
            return;
        if (!(speed > 0) || speed > m_setting.axes[axis].description.maxSpeed)
            fault(line, SequenceFault::Speed, axis, speed);
        else
            m_places[axis].speed = speed;
    }

    double home(int line, int axis)
    {
        if (!hasAxis(line, axis))
            return 0;
        const SequenceSetting::Axis &setting = m_setting.axes[axis];
        Place &place = m_places[axis];
        const double seconds =
            SequencePlan::secondsOf(setting, std::abs(place.position), setting.description.homingSpeed);
        reach(axis, place.position);
        place.position = 0;
        place.isSet = true;
        place.isTrusted = true;
        reach(axis, 0);
        return seconds;
    }

    double step(int line, double passes)
    {
        const SequenceStep &step = m_steps.at(line);
        if (step.kind == SequenceStep::Repeat)
            return 0; // one with a fault
        m_plan.stepCount += passes;
        if (step.wait < 0 || !(step.wait <= longestWait))
            fault(line, SequenceFault::Time, -1, step.wait);
        double seconds = 0;
        switch (step.kind) {
        case SequenceStep::GoTo: {
            const NamedPosition *position = m_positions.value(step.text);
            if (!position)
                fault(line, SequenceFault::NoPosition);
            else if (position->axes.isEmpty())
                fault(line, SequenceFault::EmptyPosition);
            else
                for (auto axis = position->axes.cbegin(); axis != position->axes.cend(); ++axis)
                    seconds = std::max(seconds, move(line, axis.key(), axis.value(), true));
            break;
        }
        case SequenceStep::MoveTo:
        case SequenceStep::MoveBy: {
            if (step.speed != 0)
                setSpeed(line, step.axis, step.speed);
            const bool isPlace = step.kind == SequenceStep::MoveTo;
            const double base = isPlace ? 0 : m_places.value(step.axis).position;
            seconds = move(line, step.axis, base + step.value, isPlace);
            break;
        }
        case SequenceStep::Home:
            if (step.axis != SequenceStep::AllAxes) {
                seconds = home(line, step.axis);
            } else {
                if (m_places.isEmpty())
                    fault(line, SequenceFault::NoAxis);
                const QList<int> axes = m_places.keys();
                for (const int axis : axes)
                    seconds = std::max(seconds, home(line, axis));
            }
            break;
        case SequenceStep::Wait:
            if (step.value >= 0 && step.value <= longestWait)
                seconds = step.value;
            else
                fault(line, SequenceFault::Time, -1, step.value);
            break;
        case SequenceStep::SetSpeed:
            setSpeed(line, step.axis, step.value);
            break;
        case SequenceStep::Ask:
        case SequenceStep::Repeat:
            break;
        }
        return seconds + (step.wait > 0 && step.wait <= longestWait ? step.wait : 0);
    }

    const QVector<SequenceStep> &m_steps;
    const SequenceSetting &m_setting;
    SequencePlan &m_plan;
    QHash<QString, const NamedPosition *> m_positions;
    QHash<int, QVector<int>> m_repeats; // last lines by first line
    QVector<bool> m_faultOf;
    QMap<int, Place> m_places;
};

} // namespace

SequencePlan SequencePlan::of(const Sequence &sequence, const Positions &positions, const SequenceSetting &setting)
{
    SequencePlan plan;
    Walk(sequence, positions, setting, plan).run();
    return plan;
}

double SequencePlan::secondsOf(const SequenceSetting::Axis &axis, double distance, double speed)
{
    const AxisDescription &description = axis.description;
    const double limited = speed > 0 ? speed : description.maxSpeed;
    const double acceleration = axis.acceleration > 0 ? axis.acceleration : description.maxAcceleration;
    if (!(limited > 0) || !(acceleration > 0))
        return 0;
    const double seconds = MotionTime::of(distance, limited, acceleration);
    return seconds <= longestMove ? seconds : 0;
}
