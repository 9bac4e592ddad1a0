// SPDX-License-Identifier: MIT
#pragma once

#include "device/AnswerFeed.h"
#include "device/DeviceRecords.h"
#include "session/AxisDescription.h"

#include <QMap>
#include <QObject>

#include <functional>
#include <optional>

/**
 * Notices a motion that should be over and is not, and an axis that was to move and does not; each once. A motion
 * should be over after the time that its distance, speed and acceleration take, half of that more, and 2 s. Where these
 * are not known, nothing is said. Hears the answers in the thread that got them. Thread-safe.
 */
class MoveWatchdog final : public QObject, public AnswerListener
{
    Q_OBJECT

public:
    enum Finding { StillMoves, DoesNotMove };

    /** `parametersOf`: the motion parameters of an axis, as the controller has accepted them; called in any thread. */
    explicit MoveWatchdog(std::function<MotorDevInfo(int axis)> parametersOf);

    void describe(const AxisDescription &axis);
    /** Forgets the axes and what they do. */
    void clear();

    // In the thread that made the call.
    void positionAnswered(int index, double position, Time at) override;
    void stateAnswered(int index, const MotorStageState &state, Time at) override;
    void pollFailed(int, Time) override {}
    void commandAnswered(const MotionCommand &command, Time at) override;

signals:
    /** From the thread that heard the answer. `expectedSeconds`: what the motion should have taken. */
    void signal_moveOverdue(int axis, int finding, double expectedSeconds);

private:
    struct Motion {
        Time since;
        std::optional<double> from; // position
        double distance = 0;
        double seconds = 0;
        int direction = 0;
        bool hasMoved = false;
        int standing = 0; // answers since then
    };
    struct Axis {
        AxisDescription description;
        std::optional<double> position;
        std::optional<Motion> motion;
    };

    std::optional<Motion> plan(const Axis &axis, const MotionCommand &command) const;

    const std::function<MotorDevInfo(int)> m_parametersOf;
    QMutex m_mutex;
    QMap<int, Axis> m_axes;
};
