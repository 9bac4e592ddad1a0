// SPDX-License-Identifier: MIT
#include "session/ControlAxis.h"

#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto lostAfter = 1s;
constexpr auto silentAfter = 1s;
constexpr double silentRounds = 2.5;

} // namespace

ControlAxis::ControlAxis(AxisDescription description)
    : m_description(std::move(description))
    , m_current(m_description)
{
    m_history.heardAt = std::chrono::steady_clock::now();
}

ControlAxis::ControlAxis(AxisDescription description, const ControlAxis &before)
    : m_description(std::move(description))
    , m_current(m_description)
{
    const QMutexLocker lock(&before.m_mutex);
    m_history = before.m_history;
    m_history.failingSince.reset(); // nobody has polled it meanwhile
    m_history.heardAt = std::chrono::steady_clock::now();
}

AxisDescription ControlAxis::currentDescription() const
{
    const QMutexLocker lock(&m_mutex);
    return m_current;
}

void ControlAxis::noteParameters(const MotorParams &params)
{
    AxisDescription current = describe(m_description.index, m_description.modelName, params);
    current.tellsHoming = m_description.tellsHoming;
    const QMutexLocker lock(&m_mutex);
    m_current = current;
}

std::optional<ControlAxis::Answer<double>> ControlAxis::lastPosition() const
{
    const QMutexLocker lock(&m_mutex);
    return m_position;
}

std::optional<ControlAxis::Answer<MotorStageState>> ControlAxis::lastState() const
{
    const QMutexLocker lock(&m_mutex);
    return m_state;
}

bool ControlAxis::isMoving() const
{
    const auto state = lastState();
    return state && state->value.isStop == 0;
}

AxisTrust ControlAxis::trust(AnswerListener::Time now) const
{
    const QMutexLocker lock(&m_mutex);
    if (hasFailedForLong())
        return {AxisTrust::LinkLost, m_history.failingSinceWall};
    const auto silence = now - m_history.heardAt;
    if (silence > silentAfter && silence > m_history.round * silentRounds)
        return {AxisTrust::NoAnswer, {}, int(std::chrono::duration_cast<std::chrono::seconds>(silence).count())};
    if (m_history.lostAt)
        return {AxisTrust::LinkWasLost, *m_history.lostAt};
    if (m_history.homedAt)
        return {AxisTrust::Homed, *m_history.homedAt};
    return {};
}

void ControlAxis::notePosition(double position, AnswerListener::Time at)
{
    const QMutexLocker lock(&m_mutex);
    if (m_position)
        m_history.round = at - m_position->at;
    m_position = {position, at};
    hearAnswer(at);
}

void ControlAxis::noteState(const MotorStageState &state, AnswerListener::Time at)
{
    const QMutexLocker lock(&m_mutex);
    const bool isNewlyHome = m_state ? m_state->value.isHome == 0 : !m_history.homedAt && !m_history.lostAt;
    m_state = {state, at};
    hearAnswer(at);
    if (m_description.tellsHoming) {
        if (state.isHome == 0) {
            m_history.homedAt.reset();
        } else if (isNewlyHome) {
            m_history.homedAt = std::chrono::system_clock::now();
            m_history.lostAt.reset();
        }
        return;
    }
    if (m_history.homing == History::None)
        return;
    if (state.isStop == 0) {
        m_history.homing = History::Moving;
    } else if (state.isHome != 0) {
        m_history.homing = History::None;
        m_history.homedAt = std::chrono::system_clock::now();
        m_history.lostAt.reset();
    } else if (m_history.homing == History::Moving) {
        m_history.homing = History::None; // it came to rest elsewhere
    }
}

/** From the first failure to the last: one alone, with nothing heard behind it, is no lost link. With the mutex. */
bool ControlAxis::hasFailedForLong() const
{
    return m_history.failingSince && m_history.heardAt - *m_history.failingSince >= lostAfter;
}

/** The caller holds the mutex. */
void ControlAxis::hearAnswer(AnswerListener::Time at)
{
    if (hasFailedForLong()) {
        m_history.lostAt = m_history.failingSinceWall;
        m_history.homedAt.reset();
    }
    m_history.heardAt = at;
    m_history.failingSince.reset();
}

void ControlAxis::noteFailure(AnswerListener::Time at)
{
    const QMutexLocker lock(&m_mutex);
    m_history.heardAt = at;
    if (m_history.failingSince)
        return;
    m_history.failingSince = at;
    m_history.failingSinceWall = std::chrono::system_clock::now();
}

void ControlAxis::noteCommand(bool isHoming)
{
    const QMutexLocker lock(&m_mutex);
    m_history.homing = isHoming ? History::Accepted : History::None;
}
