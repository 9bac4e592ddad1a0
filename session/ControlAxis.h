// SPDX-License-Identifier: MIT
#pragma once

#include "device/AnswerFeed.h"
#include "session/AxisDescription.h"

#include <optional>

/** An axis of the connected controller: what it is, and what it last said of itself. Thread-safe. */
class ControlAxis final
{
public:
    /** A value and when the library gave it. */
    template <typename Value>
    struct Answer {
        Value value;
        AnswerListener::Time at;
    };

    explicit ControlAxis(const AxisDescription &description)
        : m_description(description)
    {
    }

    const AxisDescription &description() const { return m_description; }

    /** Nothing before the first answer. */
    std::optional<Answer<double>> lastPosition() const;
    std::optional<Answer<MotorStageState>> lastState() const;
    /** Whether the last state says that it moves. */
    bool isMoving() const;

    void notePosition(double position, AnswerListener::Time at);
    void noteState(const MotorStageState &state, AnswerListener::Time at);

private:
    Q_DISABLE_COPY(ControlAxis)

    const AxisDescription m_description;
    mutable QMutex m_mutex;
    std::optional<Answer<double>> m_position;
    std::optional<Answer<MotorStageState>> m_state;
};
