// SPDX-License-Identifier: MIT
#include "session/Recorder.h"

#include "device/SerialComDev.h"
#include "session/BoardFailures.h"

#include <QDateTime>

#include <algorithm>

namespace {

constexpr qint64 second = 1000000;
constexpr qint64 lostAfterUs = second;
constexpr qint64 silentAfterUs = second;   // time without samples that is none of the link's own
constexpr double silentIntervals = 2.5;    // or of a slow link's
constexpr qint64 shortMotion = second / 2; // over before a poll has seen it
constexpr qint64 clockEvery = 10 * second;
constexpr qint64 clockSlackMs = 20;
constexpr int mostEvents = 20000;

} // namespace

// ---- Recording -----------------------------------------------------------------------------------------------------

qint64 Recording::startUs() const
{
    qint64 start = axes.isEmpty() ? 0 : axes.first().samples.startUs();
    for (const Axis &axis : axes)
        start = std::min(start, axis.samples.startUs());
    return start;
}

qint64 Recording::endUs() const
{
    qint64 end = 0;
    for (const Axis &axis : axes)
        end = std::max(end, axis.samples.endUs());
    return end;
}

qint64 Recording::sampleCount() const
{
    qint64 count = 0;
    for (const Axis &axis : axes)
        count += axis.samples.size();
    return count;
}

qint64 Recording::wallMs(qint64 us) const
{
    if (clock.isEmpty())
        return 0;
    const auto *mark = std::upper_bound(
        clock.begin(), clock.end(), us, [](qint64 time, const ClockMark &each) { return time < each.us; });
    if (mark != clock.begin())
        --mark;
    return mark->wallMs + (us - mark->us) / 1000;
}

// ---- Recorder ------------------------------------------------------------------------------------------------------

Recorder::Recorder()
    : m_epoch(Time::clock::now())
{
}

void Recorder::begin(const QString &controller)
{
    const QMutexLocker lock(&m_mutex);
    if (controller != m_controller) {
        m_axes.clear();
        m_events.clear();
        m_clock.clear();
        m_controller = controller;
    }
    m_nextClockMark = 0;
    m_linkLost.reset();
    for (Axis &axis : m_axes) {
        axis.failingSince.reset();
        axis.isLost = false;
        axis.state.reset();
        axis.motion = Axis::Nothing;
        axis.intervalUs = second;
    }
    m_isRecording = true;
    ++m_revision;
    ++m_eventRevision;
}

void Recorder::end()
{
    const QMutexLocker lock(&m_mutex);
    m_isRecording = false;
    ++m_revision;
}

void Recorder::describe(const AxisDescription &description)
{
    const QMutexLocker lock(&m_mutex);
    m_axes[description.index].description = description;
    ++m_revision;
}

Recording Recorder::recording(bool withEvents) const
{
    Recording result;
    result.nowUs = usOf(Time::clock::now());
    const QMutexLocker lock(&m_mutex);
    result.controller = m_controller;
    result.clock = m_clock;
    result.clock.detach(); // this thread copies, not the one that hears answers
    for (const Axis &axis : m_axes) {
        if (!axis.track.isEmpty())
            result.axes.append({axis.description, axis.track.view()});
    }
    if (withEvents) {
        result.events = m_events;
        result.events.detach();
    }
    return result;
}

/** The caller holds the mutex. */
Recorder::Axis &Recorder::axis(int index)
{
    const auto known = m_axes.find(index);
    if (known != m_axes.end())
        return *known;
    Axis &axis = m_axes[index];
    axis.description.index = index;
    return axis;
}

/** The wall clock may be set, and the steady one may stand while the computer sleeps. The caller holds the mutex. */
void Recorder::markClock(qint64 us)
{
    if (us < m_nextClockMark)
        return;
    m_nextClockMark = us + clockEvery;
    const qint64 heardUs = usOf(Time::clock::now());
    const qint64 wallMs = QDateTime::currentMSecsSinceEpoch() - (heardUs - us) / 1000;
    if (!m_clock.isEmpty()) {
        const Recording::ClockMark &last = m_clock.last();
        if (std::abs(last.wallMs + (us - last.us) / 1000 - wallMs) <= clockSlackMs)
            return;
    }
    m_clock.append({us, wallMs});
}

void Recorder::positionAnswered(int index, double position, Time at)
{
    if (!m_isRecording)
        return;
    const qint64 us = usOf(at);
    const QMutexLocker lock(&m_mutex);
    Axis &axis = this->axis(index);
    noteHeard(axis, us);
    bool isAfterGap = true;
    if (!axis.track.isEmpty()) {
        const qint64 interval = us - axis.track.last().us;
        isAfterGap = interval > std::max(silentAfterUs, qint64(double(axis.intervalUs) * silentIntervals));
        if (interval > 0)
            axis.intervalUs = isAfterGap ? second : interval;
    }
    markClock(us);
    if (axis.track.append(us, position, isAfterGap))
        ++m_revision;
}

/** The axis answers. The caller holds the mutex. */
void Recorder::noteHeard(Axis &axis, qint64 us)
{
    axis.failingSince.reset();
    if (!axis.isLost)
        return;
    axis.isLost = false;
    const bool isBack = std::none_of(m_axes.begin(), m_axes.end(), [](const Axis &each) { return each.isLost; });
    if (!isBack || !m_linkLost)
        return;
    RecorderEvent event = *m_linkLost;
    event.lastedUs = us - event.us;
    event.us = us;
    event.kind = RecorderEvent::LinkBack;
    m_linkLost.reset();
    add(event);
}

void Recorder::pollFailed(int index, Time at)
{
    if (!m_isRecording)
        return;
    const qint64 us = usOf(at);
    const QMutexLocker lock(&m_mutex);
    Axis &axis = this->axis(index);
    if (!axis.failingSince)
        axis.failingSince = us;
    if (axis.isLost || us - *axis.failingSince < lostAfterUs)
        return;
    axis.isLost = true;
    if (m_linkLost) // told already
        return;
    const bool othersAnswer = std::any_of(m_axes.begin(), m_axes.end(), [us](const Axis &each) {
        return !each.failingSince && !each.track.isEmpty() && us - each.track.last().us < silentAfterUs;
    });
    RecorderEvent event;
    event.us = *axis.failingSince;
    event.kind = RecorderEvent::LinkLost;
    event.axis = othersAnswer ? qint8(index) : qint8(RecorderEvent::AllAxes);
    m_linkLost = event;
    add(event);
}

void Recorder::commandAnswered(const MotionCommand &command, Time at)
{
    if (!m_isRecording)
        return;
    RecorderEvent event;
    event.us = usOf(at);
    event.kind = command.isAccepted() ? RecorderEvent::Command : RecorderEvent::Failure;
    event.axis = qint8(command.axis);
    event.type = qint8(command.type);
    event.direction = qint8(command.direction);
    event.source = command.source;
    event.status = command.status;
    const QMutexLocker lock(&m_mutex);
    add(event);
    if (!command.isAccepted())
        return;
    Axis &axis = this->axis(command.axis);
    if (command.type == OPERATION_TYPE_STOP) {
        axis.isStopAsked = true;
        return;
    }
    axis.isStopAsked = false;
    axis.isHoming = command.type == OPERATION_TYPE_HOME;
    axis.motion = Axis::Waiting;
    axis.toldUs = event.us;
    axis.toldAt = axis.track.last().position;
}

void Recorder::messageHeard(const MoverMessage &message, Time at)
{
    const bool isFailure =
        std::any_of(std::begin(boardFailures), std::end(boardFailures), [&message](const BoardFailure &failure) {
            return failure.code == message.code;
        });
    if (!m_isRecording || !isFailure)
        return;
    RecorderEvent event;
    event.us = usOf(at);
    event.kind = RecorderEvent::Failure;
    event.axis = qint8(message.axis);
    event.type = RecorderEvent::BoardMessage;
    event.status = message.code;
    event.value = message.value;
    const QMutexLocker lock(&m_mutex);
    add(event);
}

void Recorder::stateAnswered(int index, const MotorStageState &state, Time at)
{
    if (!m_isRecording)
        return;
    struct Flag {
        qint16 MotorStageState::*flag;
        RecorderEvent::Kind kind;
        qint8 direction;
    };
    static constexpr Flag flags[] = {
        {&MotorStageState::isLeftLimit, RecorderEvent::Limit, -1},
        {&MotorStageState::isRightLimit, RecorderEvent::Limit, 1},
        {&MotorStageState::isLeftOptoFault, RecorderEvent::Failure, -1},
        {&MotorStageState::isRightOptoFault, RecorderEvent::Failure, 1},
        {&MotorStageState::isHomeOptoFault, RecorderEvent::Failure, 0},
    };
    const qint64 us = usOf(at);
    const QMutexLocker lock(&m_mutex);
    Axis &axis = this->axis(index);
    noteHeard(axis, us);
    for (const Flag &each : flags) {
        if (!axis.state || (*axis.state).*each.flag != 0 || state.*each.flag == 0)
            continue;
        RecorderEvent event;
        event.us = us;
        event.kind = each.kind;
        event.axis = qint8(index);
        event.type = RecorderEvent::OptoFault;
        event.direction = each.direction;
        add(event);
    }
    if (state.isStop == 0)
        axis.motion = Axis::Moving;
    else if (axis.motion == Axis::Moving || (axis.motion == Axis::Waiting && us - axis.toldUs >= shortMotion))
        noteEnd(axis, index, state, us);
    axis.state = state;
}

void Recorder::note(const SequenceNote &note)
{
    RecorderEvent event;
    event.us = usOf(std::chrono::steady_clock::now());
    event.kind = note.end ? RecorderEvent::SequenceEnded : RecorderEvent::StepBegun;
    event.sequence = std::make_shared<const SequenceNote>(note);
    const QMutexLocker lock(&m_mutex);
    add(event);
}

/** The axis stands. The caller holds the mutex. */
void Recorder::noteEnd(Axis &axis, int index, const MotorStageState &state, qint64 us)
{
    // One that nobody has seen to move and that is where it was has done nothing.
    const bool hasMoved = axis.motion == Axis::Moving || axis.track.last().position != axis.toldAt;
    axis.motion = Axis::Nothing;
    const bool isHomed = axis.isHoming && state.isHome != 0;
    RecorderEvent event;
    event.us = us;
    event.axis = qint8(index);
    if (axis.isStopAsked)
        event.kind = RecorderEvent::Stopped;
    else if (isHomed)
        event.kind = RecorderEvent::Homed;
    else
        event.kind = RecorderEvent::Arrived;
    axis.isStopAsked = false;
    axis.isHoming = false;
    const bool isAtLimit = state.isLeftLimit != 0 || state.isRightLimit != 0;
    if ((hasMoved || isHomed) && (event.kind != RecorderEvent::Arrived || !isAtLimit)) // the limit has been told
        add(event);
}

/** The caller holds the mutex. */
void Recorder::add(const RecorderEvent &event)
{
    markClock(event.us);
    auto *const later =
        std::upper_bound(m_events.begin(), m_events.end(), event, [](const RecorderEvent &a, const RecorderEvent &b) {
            return a.us < b.us;
        });
    m_events.insert(later, event);
    if (m_events.size() > mostEvents) {
        // Of the older half, every other one that is no incident goes.
        bool isKept = false;
        auto *const end =
            std::remove_if(m_events.begin(), m_events.begin() + mostEvents / 2, [&isKept](const RecorderEvent &each) {
                return !each.isIncident() && (isKept = !isKept);
            });
        m_events.erase(end, m_events.begin() + mostEvents / 2);
        if (m_events.size() > mostEvents)
            m_events.removeFirst(); // nothing but incidents
    }
    ++m_revision;
    ++m_eventRevision;
    if (event.isIncident())
        emit signal_incident(event.axis, event.us);
}
