// SPDX-License-Identifier: MIT
#pragma once

#include "device/AnswerFeed.h"
#include "session/ControlAxis.h"

#include <QHash>
#include <QObject>
#include <QSharedPointer>
#include <QVector>

#include <memory>
#include <optional>

class MotionLibrary;
class MoveWatchdog;
class Recorder;
class SequenceRunner;
class SerialComDev;

/**
 * The one place that knows which controller is connected and what its axes are. Windows ask it and show what it says;
 * it has no widget and no text, so that a script or a server could use it in the same way. Every function that speaks
 * to the controller waits for its answer. GUI thread.
 */
class ControlSession final : public QObject, private AnswerListener
{
    Q_OBJECT

public:
    enum class State {
        Disconnected,
        Connecting, ///< being opened, or lost and not yet open again
        Connected,
    };

    /** A controller that answers. */
    struct Controller {
        int id;
        QString serialNumber;
    };

    /** What came of setting up one axis. */
    struct AxisSetUp {
        enum Outcome {
            NoStage,       ///< nothing that identifies itself: passed over
            ChipNotRead,   ///< a failure
            ParamsNotRead, ///< a failure; `step` says of which read
            Ready,
        };
        Outcome outcome = NoStage;
        int step = 0; // the negative result of SerialComDev::readAxisParams()
        QString modelName;
        MotorParams stage = {};
        bool isLast = false; // no further axis is to be set up

        bool failed() const { return outcome == ChipNotRead || outcome == ParamsNotRead; }
    };

    /** The session in use: made for the first who asks, gone with the last who holds it. */
    static QSharedPointer<ControlSession> instance();
    ~ControlSession() override;

    /** The motion library in use, through which all of this goes. */
    static const MotionLibrary &library();

    State state() const;
    bool isConnected() const { return state() == State::Connected; }
    /** The library's identifier of the controller; 0 when none is connected. */
    int deviceId() const { return m_iDeviceId; }
    /** Serial number of the connected controller, or of the one that was connected last. */
    QString serialNumber() const { return m_sSerialNumber; }
    /** As read last; null when it could not be. */
    QString firmwareVersion() const { return m_sFirmwareVersion; }
    /** As the controller reported it; 0 when none is connected, negative when it could not be read. */
    int axisCount() const { return m_iAxisCount; }

    /**
     * The controllers that answer. Each one except the connected one is opened for a moment to read its serial number.
     * Nothing when another thread is in a library call and does not come back within 5 s.
     */
    std::optional<QVector<Controller>> findControllers();
    /** With what status the library refused to open one of those that it lists, at the last findControllers(); or 0. */
    int probeFailure() const { return m_iProbeFailure; }
    /** Opens the controller. Returns the library's status; below 0 nothing has changed. */
    int connectTo(const Controller &controller);
    /** Closes it again. False when the library hangs for 30 s: the controller then stays connected. */
    bool disconnectController();
    /**
     * Closes it because the program ends: polls and beats that still wait no longer reach the library. Gives up after
     * `limitMs`.
     */
    void leave(int limitMs);
    /** Whether the connected controller is missing from the list; nothing while another thread is in a library call. */
    std::optional<bool> isPortLost() const;
    /**
     * Opens the same controller again after its link was lost. Nothing is moved or changed; its axes stay. False when
     * it does not answer, when another controller answers in its place, or when the library hangs for `limitMs`: the
     * state is then Connecting, and it can be tried again.
     */
    bool reconnect(int limitMs);

    /**
     * Setting up a controller that has just been opened: beginSetUp(), setUpAxis() for each axis from 0 until one is
     * the last, readFirmwareVersion(), readJoystick(). Between two of them the caller may let the event loop run.
     */
    void beginSetUp();
    AxisSetUp setUpAxis(int index);
    void readFirmwareVersion();
    /** Whether the joystick drives the axes. */
    bool readJoystick();

    /** Reads an axis that was chosen by hand. 0, or the negative step that failed. */
    int readAxis(int index);
    /** Makes an axis known, or describes a known one again; how far its position can be trusted stays. */
    QSharedPointer<const ControlAxis> addAxis(const AxisDescription &description);
    /** The motor parameters of a known axis as they were read after somebody had written them. */
    void noteParameters(int index, const MotorParams &params);
    /** Null for an axis that is not known. */
    QSharedPointer<const ControlAxis> axis(int index) const;
    void clearAxes();

    /**
     * Stops every axis of the controller, ahead of everything else, and takes the axes back from the joystick. Returns
     * at once; SerialComDev::signal_stopAllDone() tells that the stops have been sent. Without a controller nothing
     * happens.
     */
    void stopAll();

    /** What the axes do, from connecting to disconnecting. */
    Recorder &recorder() const { return *m_recorder; }
    /** Tells of motions that should be over, and of axes that should move. */
    const MoveWatchdog &watchdog() const { return *m_watchdog; }
    /** Runs sequences, one at a time. */
    SequenceRunner &sequences() const { return *m_sequences; }

signals:
    void stateChanged();
    /** An axis has become known; one that is described again has been already. */
    void axisAdded(int index);
    /** ControlAxis::currentDescription() of a known axis may be another one now. */
    void axisChanged(int index);
    /** Somebody stops everything. Whatever would start something later must end, and must not go on by itself. */
    void stopAllRequested();

private:
    ControlSession();
    void change(bool connecting, bool opened);

    // In the thread that made the call.
    void positionAnswered(int axis, double position, Time at) override;
    void stateAnswered(int axis, const MotorStageState &state, Time at) override;
    void pollFailed(int axis, Time at) override;
    void commandAnswered(const MotionCommand &command, Time at) override;
    QSharedPointer<ControlAxis> find(int index) const;

    const QSharedPointer<SerialComDev> m_worker;
    const std::unique_ptr<Recorder> m_recorder;
    const std::unique_ptr<MoveWatchdog> m_watchdog;
    std::unique_ptr<SequenceRunner> m_sequences;
    bool m_bConnecting = false; // the worker knows whether a controller is open
    State m_told;
    int m_iDeviceId = 0;
    int m_iProbeFailure = 0;
    QString m_sSerialNumber;
    QString m_sFirmwareVersion;
    int m_iAxisCount = 0;
    mutable QMutex m_mutex; // of the axes, which answers look up
    QHash<int, QSharedPointer<ControlAxis>> m_axes;
};
