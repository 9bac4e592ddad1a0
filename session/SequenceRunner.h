// SPDX-License-Identifier: MIT
#pragma once

#include "device/AnswerFeed.h"
#include "session/SequenceEnd.h"
#include "session/SequencePlan.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QSharedPointer>
#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>

class ControlSession;
class SerialComDev;
struct AxisOrder;
struct MotorStageState;

/** A step that was run. */
struct SequenceRecord {
    int line = 0;
    int pass = 1; // of the innermost lines that are repeated
    QDateTime begin;
    QDateTime end;
    bool isDone = true;
    QMap<int, double> reached; // by axis
};

/**
 * Runs one sequence at a time. While it runs its axes are reserved, also while it pauses. A step is over when each of
 * its axes, asked after its start, says that it stands, and is where it was sent; never by time. Whatever gets in the
 * way ends the sequence: no further order reaches the controller, its axes are stopped, and it does not go on by
 * itself. GUI thread.
 */
class SequenceRunner final : public QObject, private AnswerListener
{
    Q_OBJECT

public:
    enum class State {
        Idle,
        Running,
        Pausing, ///< once the step is over
        Paused,
        Asking, ///< the operator
    };
    enum class Mode {
        Run,
        Step, ///< pauses after one step
    };

    explicit SequenceRunner(ControlSession *session);
    ~SequenceRunner() override;

    /** What the axes are and where they stand now. */
    SequenceSetting setting() const;

    State state() const { return m_state; }
    bool isActive() const { return m_state != State::Idle; }
    /** Whether the sequence has the axis for itself. */
    bool uses(int axis) const { return isActive() && m_plan.axes.contains(axis); }

    /**
     * Runs it from its first line. False, with nothing moved, when one runs, when no controller is connected or the
     * joystick drives it, or when the plan has faults; axes whose position is in doubt are the caller's to ask about.
     */
    bool run(const Sequence &sequence, const Positions &positions, Mode mode = Mode::Run);
    /** The line at which resume() would go on after a sequence that was ended; -1: nowhere. */
    int resumeLine() const { return m_state == State::Idle && m_canResume ? m_line : -1; }
    /**
     * Goes on after a pause, after the operator was asked, or, from the step that was not over, after an end. What a
     * step moves by counts from where it should have begun. False when it cannot: after an end its axes must be what
     * they were, enabled, and stand.
     */
    bool resume(Mode mode = Mode::Run);
    /** What keeps its axes from going on after an end, if anything; of no line. */
    std::optional<SequenceFault> obstacle() const;
    /** Forgets where it could be resumed. */
    void rewind();
    /** Pauses after the step. */
    void pause();
    void stop() { end({SequenceEnd::Stopped}); }
    /** Ends it for whoever must; for an axis only if the sequence uses it. */
    void abort(SequenceEnd::Reason reason, int axis = -1);

    const Sequence &sequence() const { return m_sequence; }
    const SequencePlan &plan() const { return m_plan; }
    /** Of the sequence that runs or ran last. */
    int line() const { return m_line; }
    /** Which pass of how many the line is in, of the innermost repeat around it; 1 of 1 outside of any. */
    QPair<int, int> pass() const;
    /** As planned, less what is done; s. */
    double secondsLeft() const;
    /** From 0 to 1. */
    double progress() const;
    const SequenceEnd &lastEnd() const { return m_end; }
    /** The last steps, at most MostRecords. */
    const QVector<SequenceRecord> &records() const { return m_records; }
    static constexpr int MostRecords = 100000;

signals:
    void signal_stateChanged();
    void signal_lineChanged(int line);
    void signal_stepDone(const SequenceRecord &record);
    void signal_ended(const SequenceEnd &end);

private slots:
    void slot_ordersDone(int ticket, int axis, int status);
    void slot_axisWatched(int ticket, int axis, int status, MotorStageState state, double position);

private:
    /** An axis that moves in the step that runs. */
    struct Moving {
        double target = 0;
        double from = 0;
        bool homes = false;
        bool hasMoved = false;
        QElapsedTimer off;    // it stands, and not where it was sent
        QElapsedTimer silent; // it has not answered since
    };
    struct Loop {
        int from;
        int last;
        int count;
        int pass = 1;
    };

    // In the thread that made the call.
    void positionAnswered(int, double, Time) override {}
    void stateAnswered(int, const MotorStageState &, Time) override {}
    void pollFailed(int, Time) override {}
    void commandAnswered(const MotionCommand &command, Time at) override;
    void parametersWritten(int axis, Time at) override;

    bool canStart() const;
    bool hasSameAxes() const;
    void activate(Mode mode);
    void change(State state);
    void begin();
    void order(const QVector<AxisOrder> &orders);
    void move(const QMap<int, double> &targets, double speed);
    void home(int axis);
    void expect(int axis, double target, bool homes);
    void watch();
    void stand();
    void broken(int axis, SequenceEnd::Reason reason);
    void stopAnswered(bool isAccepted);
    void stepDone();
    void note();
    void record(std::optional<SequenceEnd> end = std::nullopt);
    void advance();
    void look();
    void end(SequenceEnd end);

    ControlSession *const m_session;
    const QSharedPointer<SerialComDev> m_worker;
    State m_state = State::Idle;
    Sequence m_sequence;
    Positions m_positions;
    SequenceSetting m_setting; // at the start
    SequencePlan m_plan;
    QVector<Loop> m_loops; // those around narrower ones first
    int m_line = -1;
    bool m_canResume = false;
    bool m_pauses = false;       // after this step
    QMap<int, double> m_places;  // where the steps so far have sent the axes
    QMap<int, double> m_speeds;  // as they have been set
    QMap<int, Moving> m_moving;  // axes whose motion is not over
    QMap<int, double> m_targets; // where those are sent whose motion is
    int m_ticket = 0;            // answers to another are out of date
    double m_secondsDone = 0;    // of the plan
    double m_secondsOfStep = 0;
    QElapsedTimer m_sinceBegin; // of the step
    SequenceRecord m_record;
    QVector<SequenceRecord> m_records;
    SequenceEnd m_end;
    QTimer m_next{this};  // asks the axes that move, or ends a wait
    QTimer m_looks{this}; // for what is not told
    int m_iAwaited = 0;   // answers of axes that were asked
    QElapsedTimer m_sinceAsked;
    int m_iRun = 0;
    int m_iStopsDue = 0; // answers to those of the last end
    bool m_isStopRefused = false;
    QString m_sController; // serial number

    // For the threads that make calls.
    const std::shared_ptr<std::atomic<int>> m_live; // the run that may give orders; 0: none
    std::atomic<quint32> m_uAxes{0};                // of it, a bit for each
    std::atomic<int> m_iOwnStops{0};                // on their way
};
