// SPDX-License-Identifier: MIT
#pragma once

#include "session/Sequence.h"

#include <QMetaType>

#include <optional>

/** Why a sequence is over, and where. */
struct SequenceEnd {
    enum Reason {
        Finished,
        Stopped,        ///< by whoever has started it
        StoppedOnPanel, ///< `axis`
        StoppedAll,
        StartedElsewhere,  ///< `axis`, by the console
        ParametersWritten, ///< `axis`: what it moves by is no longer what was planned with
        Refused,           ///< an order, by the library with `status`
        NegativeLimit,     ///< `axis` stands at `value`, at that limit
        PositiveLimit,
        OffTarget,    ///< `axis` stands at `value`
        NotHomed,     ///< `axis` came to rest elsewhere
        DoesNotMove,  ///< `axis`
        BeyondTravel, ///< `axis` would go to `value`
        LinkLost,     ///< `axis` no longer answers
        Disconnected,
        PanelClosed, ///< of `axis`
        Joystick,    ///< was given the axes
        Quit,        ///< the program
    };
    Reason reason = Finished;
    int line = -1;
    int axis = -1;
    double value = 0;
    int status = 0;
    bool isStopped = false; ///< each axis has accepted the stop that comes with the end

    bool isFailure() const { return reason != Finished && reason != Stopped; }
};
Q_DECLARE_METATYPE(SequenceEnd)

/** What is recorded of a sequence: that it begins a step, or, with `end`, that it is over. */
struct SequenceNote {
    QString name;
    int line = 0;
    SequenceStep step;
    std::optional<SequenceEnd> end{};
};
