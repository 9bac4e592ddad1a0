// SPDX-License-Identifier: MIT
#pragma once

#include "session/AxisDescription.h"
#include "session/Sequence.h"

#include <QSet>

/** What a sequence would start from. */
struct SequenceSetting {
    struct Axis {
        AxisDescription description;
        double position = 0;
        double speed = 0; // as it is set; 0 when it is not known
        double acceleration = 0;
        bool isTrusted = false; // homed, and its position is not in doubt
        bool isEnabled = true;
        bool isMoving = false;
    };
    QMap<int, Axis> axes;
};

/** Why a line cannot be run. */
struct SequenceFault {
    enum Kind {
        NoPosition,    ///< there is none of that name
        EmptyPosition, ///< it has no axis
        NoAxis,        ///< `axis` is not there
        NotEnabled,    ///< the power stage of `axis` is off
        Moves,         ///< `axis` is doing something else
        BeyondTravel,  ///< `axis` would go to `value`
        Speed,         ///< `value` is not above 0 or above the stage's
        Time,          ///< a wait is below 0, or longer than a day
        NoNumber,
        From,     ///< the line to repeat from is not above this one
        Crossing, ///< the lines to repeat begin within other repeated lines and end outside
        Count,    ///< not from 1 to MostPasses
        TooDeep,  ///< more than MostNested repeats within each other
    };
    int line;
    Kind kind;
    int axis = -1;
    double value = 0;
};

/**
 * A sequence followed through without moving anything: what is wrong with it, which axes it moves and how far, and how
 * long that takes. Repeated lines are followed through for their first and their last pass only: the passes between
 * lie between them, whether a line moves by a distance or to a place. Any thread.
 */
struct SequencePlan {
    static constexpr int MostPasses = 1000000;
    static constexpr int MostNested = 8;

    struct Extent {
        double least;
        double most;
    };

    QVector<SequenceFault> faults; // one for each line at most, by line
    QMap<int, Extent> extents;     // of the axes that it moves, with where they start; by axis
    QSet<int> axes;                // all that it uses
    QSet<int> doubtful;            // axes whose position decides where they go, and is not to be trusted
    double seconds = 0;            // without the operator
    double stepCount = 0;          // with all passes; without the repeats themselves

    static SequencePlan of(const Sequence &sequence, const Positions &positions, const SequenceSetting &setting);
    /**
     * How long a step takes that moves an axis over a distance, without what comes after it; s. 0 where that cannot be
     * told: a controller may say anything of its axes.
     */
    static double secondsOf(const SequenceSetting::Axis &axis, double distance, double speed);
};
