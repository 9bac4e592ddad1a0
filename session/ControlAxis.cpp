// SPDX-License-Identifier: MIT
#include "session/ControlAxis.h"

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

void ControlAxis::notePosition(double position, AnswerListener::Time at)
{
    const QMutexLocker lock(&m_mutex);
    m_position = {position, at};
}

void ControlAxis::noteState(const MotorStageState &state, AnswerListener::Time at)
{
    const QMutexLocker lock(&m_mutex);
    m_state = {state, at};
}
