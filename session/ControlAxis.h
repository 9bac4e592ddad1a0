// SPDX-License-Identifier: MIT
#pragma once

#include "device/AnswerFeed.h"
#include "session/AxisDescription.h"

#include <optional>

/** How far the last position of an axis can be trusted. */
struct AxisTrust {
    enum Kind {
        NotHomed,    ///< no homing has ended since the controller was connected
        Homed,       ///< since `at`
        LinkLost,    ///< the polls of the axis fail, since `at`
        LinkWasLost, ///< at `at`: it may have been moved since; until it is homed
        NoAnswer,    ///< for `seconds`: whether the link is there is not known
    };
    Kind kind = NotHomed;
    std::chrono::system_clock::time_point at{}; // wall-clock time
    int seconds = 0;

    /** Whether the position may be out of date. */
    bool isStale() const { return kind == LinkLost || kind == NoAnswer; }
    bool operator==(const AxisTrust &other) const
    {
        return kind == other.kind && at == other.at && seconds == other.seconds;
    }
    bool operator!=(const AxisTrust &other) const { return !(*this == other); }
};

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

    explicit ControlAxis(AxisDescription description);
    /** Another description of the same axis. What is known of its position stays. */
    ControlAxis(AxisDescription description, const ControlAxis &before);

    /** What a panel works by: it stays until the axis is added again. */
    const AxisDescription &description() const { return m_description; }
    /** The same as the motor parameters are now: somebody may have written them since. */
    AxisDescription currentDescription() const;

    /** Nothing before the first answer. */
    std::optional<Answer<double>> lastPosition() const;
    std::optional<Answer<MotorStageState>> lastState() const;
    /** Whether the last state says that it moves. */
    bool isMoving() const;

    /**
     * A homing has ended when the axis stands at its origin after an accepted `home`; the origin flag alone says only
     * where it is. A link counts as lost when the polls of the axis have failed for a second. An answer is missing when
     * it is older than a second and than 2.5 times the last round of polls, so that a slow link is none.
     */
    AxisTrust trust(AnswerListener::Time now = std::chrono::steady_clock::now()) const;

    void noteParameters(const MotorParams &params);
    void notePosition(double position, AnswerListener::Time at);
    void noteState(const MotorStageState &state, AnswerListener::Time at);
    void noteFailure(AnswerListener::Time at);
    /** `isHoming`: the command that was accepted is a homing, not another motion or a stop. */
    void noteCommand(bool isHoming);

private:
    Q_DISABLE_COPY(ControlAxis)

    using WallTime = std::chrono::system_clock::time_point;

    /** What the position's trust follows from. */
    struct History {
        std::optional<WallTime> homedAt;
        std::optional<WallTime> lostAt; // a lost link since the last homing
        std::optional<AnswerListener::Time> failingSince;
        WallTime failingSinceWall{};
        AnswerListener::Time heardAt{}; // the last answer, be it a failure
        // Between the last two positions; as slow as a slow link's until there are two.
        AnswerListener::Time::duration round = std::chrono::seconds(1);
        enum { None, Accepted, Moving } homing = None;
    };

    bool hasFailedForLong() const;
    void hearAnswer(AnswerListener::Time at);

    const AxisDescription m_description;
    mutable QMutex m_mutex;
    AxisDescription m_current;
    std::optional<Answer<double>> m_position;
    std::optional<Answer<MotorStageState>> m_state;
    History m_history;
};
