// SPDX-License-Identifier: MIT
#pragma once

#include "device/AnswerFeed.h"
#include "device/AnswerFilter.h"
#include "device/DeviceRecords.h"
#include "device/PollQueue.h"
#include "device/StopThread.h"
#include "device/moverMessages.h"

#include <QDeadlineTimer>
#include <QMap>
#include <QObject>
#include <QSharedPointer>
#include <QVector>

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <optional>

class LibraryLock;

/** States of an operation message, see SerialComDev::signal_showOperationMsg. The worker sends FAIL and OK. */
enum OperationState {
    OPERATION_STATE_RUNNING = 0,
    OPERATION_STATE_CANCELLED = 1,
    OPERATION_STATE_FAIL = 2, // the library reported failure
    OPERATION_STATE_OK = 3,   // the operation was accepted
    OPERATION_STATE_COMPLETED = 4,
    OPERATION_STATE_NONE = 99, // says nothing
};

/** What an operation message is about. Types marked "by the panel" or "by nobody" never come from the worker. */
enum OperationType {
    OPERATION_TYPE_DEVICE_PARAMS = 0, // by nobody
    OPERATION_TYPE_MOVE = 1,
    OPERATION_TYPE_TARGET = 2, // the target position is set
    OPERATION_TYPE_DRIVE = 3,
    OPERATION_TYPE_DISPLACEMENT = 4, // the relative displacement is set
    OPERATION_TYPE_JOG = 5,
    OPERATION_TYPE_JOG_PARAMS = 6,
    OPERATION_TYPE_RESTORE = 7, // by nobody
    OPERATION_TYPE_STOP = 8,
    OPERATION_TYPE_ENABLE = 9, // by nobody
    OPERATION_TYPE_LOOP = 10,
    OPERATION_TYPE_LOOP_PARAMS = 11, // and those of the trigger
    OPERATION_TYPE_RUN_COUNT = 12,   // by the panel: live counter of a loop run
    OPERATION_TYPE_HOME = 13,
    OPERATION_TYPE_WARNING = 98, // by the panel: red
    OPERATION_TYPE_GENERAL = 99, // no leading word
};

/** Start modes of SerialComDev::signal_startMotor. */
enum MoveCode {
    MOVE_CODE_MOVE = 3,
    MOVE_CODE_DRIVE_POSITIVE = 4,
    MOVE_CODE_DRIVE_NEGATIVE = 5,
    MOVE_CODE_JOG_POSITIVE = 6,
    MOVE_CODE_JOG_NEGATIVE = 7,
    MOVE_CODE_CIRCLE_POSITIVE = 8,
    MOVE_CODE_CIRCLE_NEGATIVE = 9,
};

/** One library call of whoever has the axis reserved. */
struct AxisOrder {
    enum Kind { Speed, Target, Move, Home };
    Kind kind;
    int axis;
    double value = 0; // speed or target, in the axis's unit
};

/**
 * The command worker: the one object through which the user interface reaches the motion library. A process-wide
 * singleton in a thread of its own.
 *
 * Two ways in. Request signals (signal_set…, signal_start…, …) are emitted by the GUI and run the slot of the same
 * name in the worker thread, in the order of emission; the outcome comes back as a signal. Synchronous accessors are
 * called from the GUI thread and return the library's status or value unchanged (below 0 is failure). Both take the
 * library mutex (LibraryLock) around every library call.
 *
 * Axes count from 0; lengths are in the stage's unit, delays in milliseconds.
 */
class SerialComDev final : public QObject
{
    Q_OBJECT

public:
    /** The worker; created, with its thread, on first use. Any thread. */
    static QSharedPointer<SerialComDev> instance();

    /**
     * Ends the worker thread and releases the worker; closes nothing. GUI thread, after the event loop. Requests that
     * still wait are dropped. False when the thread hangs in a library call beyond limitMs: then everything is left as
     * it is, and the process can only leave without tidying up.
     */
    static bool endThread(int limitMs);

    ~SerialComDev() override;

    /** Opens controller `id`. Returns id, or the library's negative status; the identifier is then unchanged. */
    int open(int id);
    // Three ways to close the open controller, if there is one. Each first lets the requests that were emitted before
    // reach it.
    /** Waits as long as it takes. Always 0. */
    int close();
    /** For the user, who wants an answer: gives up when the library does not come free within limitMs. */
    bool tryClose(int limitMs);
    /**
     * For the end of the program: as tryClose(). In addition, what panels and heartbeats ask for on their own no longer
     * reaches the library until the next open().
     */
    bool closeAtExit(int limitMs);
    /** Identifier of the open controller, 0 for none. */
    int deviceId() const { return m_iDeviceId; }

    /** Whether the user is connected: set by the connection dialog, cleared by close(). GUI thread. */
    void setOpened(bool b) { m_bOpened = b; }
    bool isOpened() const { return m_bOpened; }

    int setMotorEnable(int axis, int enable);
    int setRockerEnable(int enable);
    int getRockerEnable();
    int setPosConpenEnable(int axis, int enable);
    int getPosConpenEnable(int axis);
    /** External trigger of one axis. */
    struct TriggerState {
        bool inEnabled = false;
        bool outEnabled = false;
        double step = 0; // displacement per pulse on the input; the sign is the direction
    };
    /** 0, or the negative status of the read that failed; then the state is unchanged. */
    int getTriggerState(int axis, TriggerState &state);
    /** Zeroes the record, then reads it. */
    int getRuningState(int axis, MotorStageState &state);
    /** A status, with the words for it in brackets where the library is ours. */
    QString statusText(int status) const;
    int getDevAxisCount();
    /** Null text on failure, empty for an empty name. */
    QString getMotorModelName(int axis);
    /** The text's Latin-1 bytes are sent. */
    int setMotorModelName(int axis, const QString &name);
    int getMotorParams(int axis, MotorParams &params);
    int setMotorParams(int axis, const MotorParams &params);
    /** Null text on failure. */
    QString getDevSoftVersion();

    /** Reads the code of the axis's identification chip (2 written, 1 blank, 0 none) and keeps it. */
    bool readMotorAutoDetect(int axis, int *code);
    /** The code that readMotorAutoDetect() kept, 0 when there is none. */
    int getAxisAutoDetect(int axis) const;

    /**
     * Reads everything about one axis and keeps it for the getters below. 0, or -1 to -14 for the step that failed
     * (the order is that of the table in the implementation); then nothing is kept.
     */
    int readAxisParams(int axis);

    // What is known of an axis, without a library call. 0 or empty for an axis that was never read.
    MotorDevInfo axisInfo(int axis) const;
    QString getAxisModelName(int axis) const;
    QString getAxisSerialNo(int axis) const;
    double getAxisCurrentPos(int axis) const;
    double getAxisSpeed(int axis) const;
    double getAxisAcceleration(int axis) const;
    double getAxisRelativeDisp(int axis) const;
    double getAxisTargetPos(int axis) const;
    bool getAxisRelativeDispEnable(int axis) const;
    double getAxisJogStep(int axis) const;
    int getAxisJogDelay(int axis) const;
    int getAxisJogCount(int axis) const;
    int getAxisCircleCount(int axis) const;
    double getAxisCircleDisp(int axis) const;
    int getAxisCircleDelay(int axis) const;

    /**
     * Stops every axis of the open controller, ahead of whatever else waits for the library; joystick mode is switched
     * off first. Starts and homings that were requested before and have not reached the library are cancelled. Each
     * call sends the stops once more. Any thread; returns at once, signal_stopAllDone() tells the rest.
     */
    void stopAll();
    /** Whether a stopAll() is still under way. Any thread. */
    bool isStoppingAll() const { return m_iStoppingAll > 0; }
    /** Whether the joystick may drive the axes: not once it was read or switched as off. Any thread. */
    bool isRockerOn() const { return m_bRockerOn; }

    /** Every answer to a poll, for whoever wants more than the changes. Any thread. */
    AnswerFeed &answers() { return m_feed; }
    /** For whoever makes library calls of its own: what the controller has answered. Any thread. */
    void noteCommand(const MotionCommand &command);
    /** For the same: motor parameters or compensation of the axis that were written. Any thread. */
    void noteParametersWritten(int axis);
    void noteRockerOn(bool on) { m_bRockerOn = on; }
    /** 0 or below says nothing: what was known before stays. */
    void noteAxisCount(int count)
    {
        if (count > 0)
            m_iAxisCount = count;
    }
    /**
     * Runs `step` in the worker's thread behind everything that is asked for until it runs, also what comes later. It
     * makes one library call at most. On a link that polls fill it has its turn after a second. Steps keep their order;
     * none runs once the program has left the controller. Any thread.
     */
    void runBehind(std::function<void()> step);
    /**
     * Asks for the positions of `axes` up to `hz` times a second, until the controller is closed or it is called again;
     * none, or 0 Hz, ends it. Only listeners to answers() hear of them. Never before a command that waits, and for half
     * of the link's time at most. Any thread.
     */
    void setCapture(const QVector<int> &axes, int hz);
    /** The next answers to polls of the axis count as changed: somebody new listens. */
    void announceAnew(int axis);

    /**
     * Reserves axes for one holder, in place of those that were: requests of others to start them or to set their
     * parameters are answered with OPERATION_STATE_CANCELLED. Stops always work. None gives them back. Any thread.
     */
    void reserve(const QVector<int> &axes);
    bool isReserved(int axis) const { return axis >= 0 && axis < 32 && ((m_uReserved >> axis) & 1U) != 0; }
    /**
     * For the holder: carries out the orders one after the other, ahead of the polls, and answers with
     * signal_ordersDone(). Once they are not wanted any more, which is asked with the library lock, or all is stopped,
     * no further one reaches the library, and there is no answer. Any thread.
     */
    void carryOut(int ticket, const QVector<AxisOrder> &orders, std::function<bool()> areWanted);
    /**
     * For the holder: asks each axis for its state and then for its position. Answered by signal_axisWatched() for
     * each; beside it only listeners to answers() hear of them. Any thread.
     */
    void watch(int ticket, const QVector<int> &axes);

signals:
    // Requests, to be emitted by the GUI.
    void signal_getCurrentPos(int ID);
    void signal_getDevState(int ID);
    void signal_setSpeedParams(int Axis, double acc, double speed);
    void signal_setRelativeDispParams(int Axis, double disp, bool enable);
    void signal_setAbsoluteDispParams(int Axis, double disp);
    void signal_setJogParams(int Axis, double step, int count, int delay);
    void signal_setCircleParams(int Axis, int count, double disp, int delay);
    void signal_setTriggerParams(int Axis, int intput, int output);
    void signal_setMotorConfig(int ID, QString model, QString fileName);
    void signal_stopMotor(int Axis);
    void signal_startMotor(int Axis, int mode);
    void signal_home(int Axis);
    void signal_enableMotor(int Axis, bool enable);
    void signal_setRockerEnabled(bool b);
    void signal_setTriggerInDisp(int Axis, double disp);
    void signal_setPosConpenEnable(int Axis, bool b);
    // From any thread, as long as the worker is sure to live.
    void signal_requestHeartBeat();
    void signal_requestConsoleHeartBeat();

    // Answers, from the worker thread. Receivers that may go while the worker lives connect by signature, SIGNAL() and
    // SLOT(): Qt 5.15 leaks a connection by member functions whose receiver goes while another thread emits.
    void signal_updateCurrentPos(int ID, double pos);
    void signal_updateDevState(int Axis, MotorStageState state);
    /** Follow the two above when an axis answers something else than the last time; a counting loop run always does. */
    void signal_positionChanged(int ID, double pos);
    void signal_devStateChanged(int Axis, MotorStageState state);
    void signal_heartBeatInfo(CONTROLER_STATE state, int ret);
    /** As signal_heartBeatInfo, for the engineering console: neither counts the beats that the other one misses. */
    void signal_consoleHeartBeatInfo(CONTROLER_STATE state, int ret);
    /** The stops of a stopAll() have been sent. */
    void signal_stopAllDone();
    /**
     * Outcome of an operation on axis ID. state: OperationState. type: OperationType. msg: already translated.
     */
    void signal_showOperationMsg(int ID, int state, int type, QString msg);
    /** `status`: of the last order that reached the library, for `axis`; below 0 it was refused, and none followed. */
    void signal_ordersDone(int ticket, int axis, int status);
    /** `status` below 0: the axis could not be asked. */
    void signal_axisWatched(int ticket, int axis, int status, MotorStageState state, double position);

public slots:
    // Run in the worker thread through the requests above.
    void slot_getCurrentPos(int Axis);
    void slot_getCurrentState(int Axis);
    void slot_setSpeedParams(int Axis, double acc, double speed);
    void slot_setRelativeDispParams(int Axis, double disp, bool enable);
    void slot_setAbsoluteDispParams(int Axis, double disp);
    void slot_setJogParams(int Axis, double step, int count, int delay);
    void slot_setCircleParams(int Axis, int count, double disp, int delay);
    void slot_setTriggerParams(int Axis, int intput, int output);
    void slot_setMotorConfig(int ID, QString model, QString fileName);
    void slot_stopMotor(int Axis);
    void slot_startMotor(int Axis, int mode);
    void slot_homeMotor(int Axis);
    void slot_enableMotor(int Axis, bool enable);
    void slot_setRockerEnabled(bool b);
    void slot_setTriggerInDisp(int Axis, double disp);
    void slot_setPosConpenEnable(int Axis, bool b);
    /** One sign of life: reads the joystick information. Called directly, it always does. */
    void slot_heartBeat();
    /** As slot_heartBeat, answered by signal_consoleHeartBeatInfo. */
    void slot_consoleHeartBeat();

    void customEvent(QEvent *event) override;

private:
    SerialComDev();

    bool accepted(int result, int axis, OperationType failureType, const QString &failure);
    void report(const MotionCommand &command, const QString &text);
    bool isCancelled(std::optional<quint32> stopsBefore, int axis, OperationType type, const QString &text);
    bool isRefused(int axis, OperationType type);
    int obey(const LibraryLock &library, const AxisOrder &order);
    void start(int axis, int mode, std::optional<quint32> stopsBefore);
    void home(int axis, std::optional<quint32> stopsBefore);
    void sendStops();
    bool endStopThread(QDeadlineTimer deadline);
    void reportFailedPoll(int axis, const QString &text);
    QString withWords(const QString &text, int status) const;
    void tellMessages(int axis);
    bool waitForRequests(QDeadlineTimer deadline);
    bool closeWithin(QDeadlineTimer deadline);
    bool closeOpenDevice(QDeadlineTimer deadline);
    void requestPoll(const PollQueue::Poll &poll);
    void runPolls(quint32 round);
    void runNextBehind();
    int readPosition(const LibraryLock &library, int axis, double *position);
    void capture(quint32 generation);
    template <typename Signal, typename Slot>
    void connectCommand(Signal signal, Slot slot);
    template <typename... Values>
    void connectParameters(
        void (SerialComDev::*signal)(int, Values...), void (SerialComDev::*slot)(int, Values...),
        OperationType type = OPERATION_TYPE_GENERAL);
    template <typename Change>
    void updateAxisInfo(int axis, Change change);

    std::atomic<int> m_iDeviceId{0};
    std::atomic<bool> m_bLeft{false};
    std::atomic<int> m_iAxisCount{0}; // 0 when it is not known
    std::atomic<bool> m_bRockerOn{false};
    std::atomic<quint32> m_uStopAlls{0}; // how often all was stopped; starts requested before do nothing
    std::atomic<int> m_iStoppingAll{0};
    std::atomic<quint32> m_uReserved{0}; // a bit for each axis
    std::atomic<int> m_iStopsWaiting{0}; // on their way to the worker
    std::atomic<int> m_iCommandsWaiting{0};
    std::atomic<quint32> m_uStopRound{0}; // the last round of polls before the last of them
    StopThread m_stopThread;
    bool m_bOpened = false;
    mutable QMutex m_registryMutex; // both registries are written by either thread
    QMap<int, MotorDevInfo> m_axisInfo;
    QMap<int, int> m_autoDetect;
    QMutex m_requestMutex; // held while a round is begun and the worker is called for it
    PollQueue m_polls;
    struct Behind {
        std::function<void()> step;
        QDeadlineTimer patience;
    };
    QMutex m_behindMutex;
    std::deque<Behind> m_behind;
    QMap<int, quint64> m_reports;     // number of the report that an axis has told last
    QVector<MoverMessage> m_messages; // of the library, until their axis is polled
    // Of the worker's thread.
    struct Capture {
        QVector<int> axes;
        std::chrono::microseconds interval;
        quint32 generation = 0; // one that is over is not called any more
        int next = 0;           // in `axes`
        std::chrono::steady_clock::time_point due;
        std::chrono::steady_clock::duration spent{}; // in calls of this round
    } m_capture;
    AnswerFeed m_feed;
    AnswerFilter<double> m_positions;
    AnswerFilter<MotorStageState> m_states;
};
