// SPDX-License-Identifier: MIT
#pragma once

#include "device/AnswerFeed.h"
#include "session/AxisDescription.h"
#include "session/SampleTrack.h"
#include "session/SequenceEnd.h"

#include <QMap>
#include <QObject>

#include <atomic>
#include <memory>

/** Something that happened while it was recorded. */
struct RecorderEvent {
    enum Kind : quint8 {
        Command, ///< accepted
        Arrived,
        Stopped, ///< by a stop
        Homed,
        Limit, ///< `direction` says which end
        Failure,
        LinkLost,
        LinkBack,  ///< after `lastedUs`
        StepBegun, ///< `sequence`
        SequenceEnded,
    };
    static constexpr int AllAxes = -1;
    // The `type` of a failure that is no refused command.
    static constexpr int OptoFault = -1;    ///< `direction`: which one
    static constexpr int BoardMessage = -2; ///< `status`: its moverMessages::Code

    qint64 us = 0; // as Sample
    Kind kind = Command;
    qint8 axis = AllAxes;
    qint8 type = 0;      // OperationType of a command or of one that was refused
    qint8 direction = 0; // 1, -1, or 0 for none
    MotionCommand::Source source = MotionCommand::Request;
    int status = 0; // of a command that was refused, below 0
    qint64 lastedUs = 0;
    double value = 0; // of a board's message
    std::shared_ptr<const SequenceNote> sequence{};

    /** Whether it is kept in a file by itself. */
    bool isIncident() const { return kind == Limit || kind == Failure || kind == LinkLost; }
};

/** What was recorded, as it was at one moment. */
struct Recording {
    struct Axis {
        AxisDescription description;
        TrackView samples;
    };
    /** The wall clock, in milliseconds since 1970, at a time of the steady one. Ascending. */
    struct ClockMark {
        qint64 us;
        qint64 wallMs;
    };

    QString controller; // serial number
    QVector<Axis> axes; // ascending; without those that have no sample
    QVector<RecorderEvent> events;
    QVector<ClockMark> clock;
    qint64 nowUs = 0;

    bool isEmpty() const { return axes.isEmpty(); }
    /** Nothing recorded: 0. */
    qint64 startUs() const;
    qint64 endUs() const;
    qint64 sampleCount() const;
    /** Milliseconds since 1970. */
    qint64 wallMs(qint64 us) const;
};

/**
 * Keeps what the axes did, from connecting to disconnecting: every answered position with its time, and what happened.
 * Connecting to the same controller again goes on with what there is; another one begins a new record. It hears the
 * answers in the thread that got them, and nobody is told of a sample: who shows them asks for a recording.
 * Thread-safe.
 */
class Recorder final : public QObject, public AnswerListener
{
    Q_OBJECT

public:
    Recorder();

    void begin(const QString &controller);
    void end();
    bool isRecording() const { return m_isRecording; }
    void describe(const AxisDescription &description);
    /** That happens now. */
    void note(const SequenceNote &note);

    /** Changes with each sample and event. */
    quint64 revision() const { return m_revision; }
    /** Changes with each event. */
    quint64 eventRevision() const { return m_eventRevision; }
    /** `withEvents`: they are copied, too. */
    Recording recording(bool withEvents = true) const;
    qint64 usOf(Time at) const { return std::chrono::duration_cast<std::chrono::microseconds>(at - m_epoch).count(); }

    // In the thread that made the call.
    void positionAnswered(int index, double position, Time at) override;
    void stateAnswered(int index, const MotorStageState &state, Time at) override;
    void pollFailed(int index, Time at) override;
    void commandAnswered(const MotionCommand &command, Time at) override;
    void messageHeard(const MoverMessage &message, Time at) override;

signals:
    /** A failure, a limit or a lost link, from the thread that heard of it. `axis` is RecorderEvent::AllAxes or one. */
    void signal_incident(int axis, qint64 us);

private:
    struct Axis {
        AxisDescription description;
        SampleTrack track;
        qint64 intervalUs = 1000000; // between the last two samples
        std::optional<qint64> failingSince;
        bool isLost = false;
        std::optional<MotorStageState> state;
        // What it was told to do and has not ended yet.
        enum { Nothing, Waiting, Moving } motion = Nothing; // waiting: not yet seen to move
        qint64 toldUs = 0;
        double toldAt = 0; // position
        bool isHoming = false;
        bool isStopAsked = false;
    };

    Axis &axis(int index);
    void noteHeard(Axis &axis, qint64 us);
    void noteEnd(Axis &axis, int index, const MotorStageState &state, qint64 us);
    void add(const RecorderEvent &event);
    void markClock(qint64 us);

    const Time m_epoch;
    mutable QMutex m_mutex;
    std::atomic<bool> m_isRecording{false};
    std::atomic<quint64> m_revision{0};
    std::atomic<quint64> m_eventRevision{0};
    QString m_controller;
    QMap<int, Axis> m_axes;
    QVector<RecorderEvent> m_events; // ascending
    QVector<Recording::ClockMark> m_clock;
    qint64 m_nextClockMark = 0;
    std::optional<RecorderEvent> m_linkLost; // and not back yet
};
