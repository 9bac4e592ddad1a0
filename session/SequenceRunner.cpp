// SPDX-License-Identifier: MIT
#include "session/SequenceRunner.h"

#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/Recorder.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace std::chrono_literals;

constexpr auto askEvery = 20ms;
constexpr auto lookEvery = 100ms;
constexpr qint64 comesToRestMs = 300; // a motion may stop for a moment, to take up backlash
constexpr qint64 beginsToMoveMs = 2500;
constexpr qint64 lostMs = 1000;
constexpr double leastTolerance = 0.001; // in the axis's unit
constexpr double pulseTolerance = 1.5;

double toleranceOf(const AxisDescription &axis)
{
    return std::max(leastTolerance, pulseTolerance * axis.pulse);
}

} // namespace

SequenceRunner::SequenceRunner(ControlSession *session)
    : m_session(session)
    , m_worker(SerialComDev::instance())
    , m_live(std::make_shared<std::atomic<int>>(0))
{
    qRegisterMetaType<SequenceEnd>();
    m_next.setSingleShot(true);
    m_next.setTimerType(Qt::PreciseTimer);
    connect(&m_next, &QTimer::timeout, this, [this] {
        if (m_moving.isEmpty())
            stepDone();
        else
            watch();
    });
    m_looks.setInterval(lookEvery);
    connect(&m_looks, &QTimer::timeout, this, &SequenceRunner::look);
    connect(m_session, &ControlSession::stopAllRequested, this, [this] { end({SequenceEnd::StoppedAll}); });
    connect(m_session, &ControlSession::stateChanged, this, [this] {
        if (!m_session->isConnected())
            end({SequenceEnd::Disconnected});
    });
    connect(
        m_worker.data(), SIGNAL(signal_ordersDone(int, int, int)), SLOT(slot_ordersDone(int, int, int)),
        Qt::QueuedConnection);
    connect(
        m_worker.data(), SIGNAL(signal_axisWatched(int, int, int, MotorStageState, double)),
        SLOT(slot_axisWatched(int, int, int, MotorStageState, double)), Qt::QueuedConnection);
    m_worker->answers().add(this);
}

SequenceRunner::~SequenceRunner()
{
    *m_live = 0;
    m_worker->answers().remove(this);
    if (isActive())
        m_worker->reserve({});
}

SequenceSetting SequenceRunner::setting() const
{
    SequenceSetting setting;
    for (int index = 0; index < m_session->axisCount(); ++index) {
        const auto axis = m_session->axis(index);
        const auto position = axis ? axis->lastPosition() : std::nullopt;
        if (!position || axis->trust().kind == AxisTrust::LinkLost)
            continue;
        const auto state = axis->lastState();
        const MotorDevInfo info = m_worker->axisInfo(index);
        setting.axes.insert(
            index, {axis->currentDescription(), position->value, info.speed, info.acceleration,
                    axis->trust().kind == AxisTrust::Homed, !state || state->value.isEnable != 0, axis->isMoving()});
    }
    return setting;
}

// ---- What the operator asks for ------------------------------------------------------------------------------------

bool SequenceRunner::canStart() const
{
    return m_state == State::Idle && m_session->isConnected() && !m_worker->isRockerOn();
}

bool SequenceRunner::run(const Sequence &sequence, const Positions &positions, Mode mode)
{
    if (!canStart() || sequence.steps.isEmpty())
        return false;
    const SequenceSetting setting = this->setting();
    SequencePlan plan = SequencePlan::of(sequence, positions, setting);
    if (!plan.faults.isEmpty())
        return false;
    m_sequence = sequence;
    m_positions = positions;
    m_setting = setting;
    m_plan = std::move(plan);
    m_sController = m_session->serialNumber();
    m_places.clear();
    m_speeds.clear();
    for (auto axis = setting.axes.cbegin(); axis != setting.axes.cend(); ++axis) {
        m_places.insert(axis.key(), axis->position);
        m_speeds.insert(axis.key(), axis->speed);
    }
    m_loops.clear();
    for (int line = 0; line < sequence.steps.size(); ++line) {
        const SequenceStep &step = sequence.steps.at(line);
        if (step.kind == SequenceStep::Repeat)
            m_loops.append({step.from, line, step.count});
    }
    m_records.clear();
    m_secondsDone = 0;
    m_line = 0;
    activate(mode);
    return true;
}

bool SequenceRunner::resume(Mode mode)
{
    if (m_state == State::Paused || m_state == State::Pausing) {
        m_pauses = mode == Mode::Step;
        const bool begins = m_state == State::Paused;
        change(m_pauses && !begins ? State::Pausing : State::Running);
        if (begins)
            begin();
        return true;
    }
    if (m_state == State::Asking) {
        m_pauses = m_pauses || mode == Mode::Step;
        change(State::Running);
        stepDone();
        return true;
    }
    if (resumeLine() < 0 || !canStart() || m_session->serialNumber() != m_sController || obstacle() || !hasSameAxes())
        return false;
    activate(mode);
    return true;
}

std::optional<SequenceFault> SequenceRunner::obstacle() const
{
    const SequenceSetting now = setting();
    for (const int index : m_plan.axes) {
        const auto axis = now.axes.constFind(index);
        if (axis == now.axes.cend())
            return SequenceFault{-1, SequenceFault::NoAxis, index};
        if (!axis->isEnabled)
            return SequenceFault{-1, SequenceFault::NotEnabled, index};
        if (axis->isMoving)
            return SequenceFault{-1, SequenceFault::Moves, index};
    }
    return std::nullopt;
}

/** The stages that the sequence was checked with: another one may have been chosen for an axis. */
bool SequenceRunner::hasSameAxes() const
{
    return std::all_of(m_plan.axes.cbegin(), m_plan.axes.cend(), [this](int index) {
        const auto axis = m_session->axis(index);
        const AxisDescription now = axis ? axis->currentDescription() : AxisDescription();
        const AxisDescription then = m_setting.axes.value(index).description;
        return now.unit == then.unit && now.minPos == then.minPos && now.maxPos == then.maxPos &&
               now.maxSpeed == then.maxSpeed && now.pulse == then.pulse;
    });
}

void SequenceRunner::activate(Mode mode)
{
    m_canResume = true;
    m_pauses = mode == Mode::Step;
    m_end = {};
    const QVector<int> axes(m_plan.axes.cbegin(), m_plan.axes.cend());
    quint32 bits = 0;
    for (const int axis : axes)
        bits |= 1U << axis;
    m_worker->reserve(axes);
    m_uAxes = bits;
    *m_live = ++m_iRun;
    m_looks.start();
    m_secondsOfStep = 0; // of the step that is to begin: who hears of the state asks for the time left
    m_sinceBegin.start();
    change(State::Running);
    begin();
}

void SequenceRunner::rewind()
{
    if (resumeLine() < 0)
        return;
    m_canResume = false;
    m_line = -1;
    emit signal_stateChanged();
}

void SequenceRunner::pause()
{
    if (m_state != State::Running)
        return;
    m_pauses = true;
    change(State::Pausing);
}

void SequenceRunner::abort(SequenceEnd::Reason reason, int axis)
{
    if (axis < 0 || uses(axis))
        end({reason, -1, axis});
}

void SequenceRunner::change(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    emit signal_stateChanged();
}

// ---- Steps ---------------------------------------------------------------------------------------------------------

void SequenceRunner::begin()
{
    const SequenceStep &step = m_sequence.steps.at(m_line);
    ++m_ticket;
    m_moving.clear();
    m_secondsOfStep = 0;
    m_sinceBegin.start();
    m_record = {};
    m_record.line = m_line;
    m_record.pass = pass().first;
    m_record.begin = QDateTime::currentDateTimeUtc();
    record();
    emit signal_lineChanged(m_line);
    switch (step.kind) {
    case SequenceStep::GoTo: {
        const auto *const position =
            std::find_if(m_positions.cbegin(), m_positions.cend(), [&](const NamedPosition &each) {
                return each.name == step.text;
            });
        move(position->axes, 0);
        break;
    }
    case SequenceStep::MoveTo:
        move({{step.axis, step.value}}, step.speed);
        break;
    case SequenceStep::MoveBy:
        move({{step.axis, m_places.value(step.axis) + step.value}}, step.speed);
        break;
    case SequenceStep::Home:
        home(step.axis);
        break;
    case SequenceStep::Wait:
        m_secondsOfStep = step.value;
        stand();
        break;
    case SequenceStep::Ask:
        change(State::Asking);
        break;
    case SequenceStep::SetSpeed:
        m_speeds.insert(step.axis, step.value);
        order({{AxisOrder::Speed, step.axis, step.value}});
        break;
    case SequenceStep::Repeat: // see advance()
        break;
    }
}

void SequenceRunner::order(const QVector<AxisOrder> &orders)
{
    m_worker->carryOut(m_ticket, orders, [live = m_live, run = m_iRun] { return *live == run; });
}

/** All of them at the same time. */
void SequenceRunner::move(const QMap<int, double> &targets, double speed)
{
    QVector<AxisOrder> orders;
    for (auto target = targets.cbegin(); target != targets.cend(); ++target) {
        const int axis = target.key();
        const SequenceSetting::Axis &setting = m_setting.axes[axis];
        if (target.value() < setting.description.minPos || target.value() > setting.description.maxPos) {
            end({SequenceEnd::BeyondTravel, -1, axis, target.value()});
            return;
        }
        if (speed > 0) {
            m_speeds.insert(axis, speed);
            orders.append({AxisOrder::Speed, axis, speed});
        }
        orders.append({AxisOrder::Target, axis, target.value()});
        m_secondsOfStep = std::max(
            m_secondsOfStep,
            SequencePlan::secondsOf(setting, std::abs(target.value() - m_places.value(axis)), m_speeds.value(axis)));
        expect(axis, target.value(), false);
    }
    for (auto target = targets.cbegin(); target != targets.cend(); ++target)
        orders.append({AxisOrder::Move, target.key()});
    order(orders);
}

void SequenceRunner::home(int axis)
{
    QVector<AxisOrder> orders;
    for (const auto &setting : qAsConst(m_setting.axes)) {
        const int index = setting.description.index;
        if (axis != SequenceStep::AllAxes && axis != index)
            continue;
        orders.append({AxisOrder::Home, index});
        m_secondsOfStep = std::max(
            m_secondsOfStep,
            SequencePlan::secondsOf(setting, std::abs(m_places.value(index)), setting.description.homingSpeed));
        expect(index, 0, true);
    }
    order(orders);
}

void SequenceRunner::expect(int axis, double target, bool homes)
{
    Moving moving;
    moving.target = target;
    moving.homes = homes;
    const auto known = m_session->axis(axis);
    const auto position = known ? known->lastPosition() : std::nullopt;
    moving.from = position ? position->value : target;
    m_moving.insert(axis, moving);
}

void SequenceRunner::slot_ordersDone(int ticket, int axis, int status)
{
    if (ticket != m_ticket || !isActive())
        return;
    if (status < 0)
        end({SequenceEnd::Refused, -1, axis, 0, status});
    else if (m_moving.isEmpty())
        stand();
    else
        watch();
}

void SequenceRunner::watch()
{
    const QList<int> axes = m_moving.keys();
    m_iAwaited = axes.size();
    m_sinceAsked.start();
    m_worker->watch(m_ticket, axes.toVector());
}

void SequenceRunner::slot_axisWatched(int ticket, int axis, int status, MotorStageState state, double position)
{
    if (ticket != m_ticket || !isActive())
        return;
    const auto moving = m_moving.find(axis);
    if (status < 0 && moving != m_moving.end()) { // others may be answered: its position, but not its state
        if (!moving->silent.isValid()) {
            moving->silent.start();
        } else if (moving->silent.elapsed() >= lostMs) {
            end({SequenceEnd::LinkLost, -1, axis});
            return;
        }
    } else if (moving != m_moving.end()) {
        moving->silent.invalidate();
        const bool isThere = moving->homes
                                 ? state.isHome != 0
                                 : std::abs(position - moving->target) <= toleranceOf(m_setting.axes[axis].description);
        moving->hasMoved = moving->hasMoved || state.isStop == 0 || position != moving->from;
        if (state.isStop == 0) {
            moving->off.invalidate();
        } else if (isThere) {
            m_record.reached.insert(axis, position);
            m_targets.insert(axis, moving->homes ? position : moving->target);
            m_moving.erase(moving);
        } else if (!moving->off.isValid()) {
            moving->off.start();
        } else {
            const bool isUp = moving->target > moving->from;
            const bool isAtLimit = !moving->homes && (isUp ? state.isRightLimit : state.isLeftLimit) != 0;
            if (moving->off.elapsed() >= (moving->hasMoved || isAtLimit ? comesToRestMs : beginsToMoveMs)) {
                m_record.reached.insert(axis, position);
                end(
                    {isAtLimit           ? (isUp ? SequenceEnd::PositiveLimit : SequenceEnd::NegativeLimit)
                     : !moving->hasMoved ? SequenceEnd::DoesNotMove
                     : moving->homes     ? SequenceEnd::NotHomed
                                         : SequenceEnd::OffTarget,
                     -1, axis, position});
                return;
            }
        }
    }
    if (--m_iAwaited > 0)
        return;
    if (m_moving.isEmpty())
        stand();
    else // a slow link is left to others for as long as it was used
        m_next.start(std::max<std::chrono::milliseconds>(askEvery, std::chrono::milliseconds(m_sinceAsked.elapsed())));
}

/** Every axis has arrived: waits for as long as the step says. */
void SequenceRunner::stand()
{
    const SequenceStep &step = m_sequence.steps.at(m_line);
    m_secondsOfStep += step.wait;
    m_next.start(std::chrono::milliseconds(
        std::llround(1000 * (step.kind == SequenceStep::Wait ? step.value + step.wait : step.wait))));
}

void SequenceRunner::stepDone()
{
    for (auto target = m_targets.cbegin(); target != m_targets.cend(); ++target)
        m_places.insert(target.key(), target.value());
    m_targets.clear();
    note();
    m_secondsDone += m_secondsOfStep;
    m_secondsOfStep = 0;
    advance();
    if (m_line >= m_sequence.steps.size()) {
        m_canResume = false;
        end({SequenceEnd::Finished});
    } else if (m_pauses) {
        change(State::Paused);
        emit signal_lineChanged(m_line);
    } else {
        begin();
    }
}

/** The step is over, one way or the other. */
void SequenceRunner::note()
{
    m_record.end = QDateTime::currentDateTimeUtc();
    if (m_records.size() >= MostRecords)
        m_records.remove(0, MostRecords / 10);
    m_records.append(m_record);
    emit signal_stepDone(m_record);
}

/** Of a sequence that has a name: others are a single motion, which is recorded anyway. */
void SequenceRunner::record(std::optional<SequenceEnd> end)
{
    if (m_sequence.name.isEmpty())
        return;
    const int line = std::min(m_line, m_sequence.steps.size() - 1);
    m_session->recorder().note({m_sequence.name, line, m_sequence.steps.at(line), end});
}

/** To the next line that does something. */
void SequenceRunner::advance()
{
    for (++m_line; m_line < m_sequence.steps.size(); ++m_line) {
        if (m_sequence.steps.at(m_line).kind != SequenceStep::Repeat)
            return;
        auto *const loop =
            std::find_if(m_loops.begin(), m_loops.end(), [this](const Loop &each) { return each.last == m_line; });
        if (loop->pass < loop->count) {
            ++loop->pass;
            m_line = loop->from;
            for (Loop &inner : m_loops) {
                if (inner.from >= loop->from && inner.last < loop->last)
                    inner.pass = 1;
            }
            return; // no repeat begins with a repeat
        }
    }
}

QPair<int, int> SequenceRunner::pass() const
{
    const Loop *narrowest = nullptr;
    for (const Loop &loop : m_loops) {
        if (m_line >= loop.from && m_line < loop.last && (!narrowest || loop.last < narrowest->last))
            narrowest = &loop;
    }
    return narrowest ? qMakePair(narrowest->pass, narrowest->count) : qMakePair(1, 1);
}

double SequenceRunner::secondsLeft() const
{
    const double ofStep = isActive() ? std::min(m_secondsOfStep, double(m_sinceBegin.elapsed()) / 1000) : 0;
    return std::max(0.0, m_plan.seconds - m_secondsDone - ofStep);
}

double SequenceRunner::progress() const
{
    if (m_state == State::Idle && m_end.reason == SequenceEnd::Finished && m_line >= m_sequence.steps.size())
        return 1;
    return m_plan.seconds > 0 ? 1 - secondsLeft() / m_plan.seconds : 0;
}

// ---- What gets in the way ------------------------------------------------------------------------------------------

/** In the thread that made the call, with the library lock: no order comes between the call and this. */
void SequenceRunner::broken(int axis, SequenceEnd::Reason reason)
{
    int run = *m_live;
    if (run == 0 || axis < 0 || axis >= 32 || ((m_uAxes >> axis) & 1U) == 0 || !m_live->compare_exchange_strong(run, 0))
        return;
    QMetaObject::invokeMethod(
        this,
        [this, run, axis, reason] {
            if (run == m_iRun)
                end({reason, -1, axis});
        },
        Qt::QueuedConnection);
}

void SequenceRunner::commandAnswered(const MotionCommand &command, Time)
{
    const bool isStop = command.type == OPERATION_TYPE_STOP;
    if (isStop && command.source == MotionCommand::Request && m_iOwnStops > 0) {
        --m_iOwnStops;
        const bool isAccepted = command.isAccepted();
        QMetaObject::invokeMethod(
            this, [this, isAccepted] { stopAnswered(isAccepted); }, Qt::QueuedConnection);
        return;
    }
    if (command.source == MotionCommand::Holder || (!isStop && !command.isAccepted()))
        return;
    broken(
        command.axis, command.source == MotionCommand::StopAll ? SequenceEnd::StoppedAll
                      : isStop                                 ? SequenceEnd::StoppedOnPanel
                                                               : SequenceEnd::StartedElsewhere);
}

/** Of a stop that came with the end. */
void SequenceRunner::stopAnswered(bool isAccepted)
{
    m_isStopRefused = m_isStopRefused || !isAccepted;
    if (--m_iStopsDue > 0 || m_isStopRefused || isActive())
        return;
    m_end.isStopped = true;
    emit signal_stateChanged();
}

void SequenceRunner::parametersWritten(int axis, Time)
{
    broken(axis, SequenceEnd::ParametersWritten);
}

void SequenceRunner::look()
{
    if (m_worker->isRockerOn()) {
        end({SequenceEnd::Joystick});
        return;
    }
    for (const int index : qAsConst(m_plan.axes)) {
        const auto axis = m_session->axis(index);
        if (!axis || axis->trust().kind == AxisTrust::LinkLost) {
            end({SequenceEnd::LinkLost, -1, index});
            return;
        }
    }
}

void SequenceRunner::end(SequenceEnd end)
{
    if (!isActive())
        return;
    *m_live = 0;
    m_uAxes = 0;
    ++m_ticket;
    m_next.stop();
    m_looks.stop();
    m_targets.clear();
    m_moving.clear();
    if (end.reason != SequenceEnd::Finished) {
        m_isStopRefused = false;
        for (const int axis : qAsConst(m_plan.axes)) {
            ++m_iStopsDue;
            ++m_iOwnStops;
            emit m_worker->signal_stopMotor(axis);
        }
        m_record.isDone = false;
        if (m_state != State::Paused)
            note();
        end.line = m_line;
        end.isStopped = m_plan.axes.isEmpty();
    }
    m_worker->reserve({});
    m_end = end;
    record(end);
    m_state = State::Idle;
    emit signal_stateChanged();
    emit signal_ended(end);
}
