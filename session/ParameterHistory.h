// SPDX-License-Identifier: MIT
#pragma once

#include "device/AnswerFeed.h"
#include "session/ParameterStore.h"

#include <QMap>
#include <QObject>
#include <QSharedPointer>
#include <QThreadPool>

#include <functional>
#include <memory>

class ControlSession;
class SerialComDev;

/** What came of a restore. */
struct ParameterRestore {
    enum Outcome {
        Done,
        NotRead,  ///< what the controller has now could not be read: nothing was written
        NotKept,  ///< the snapshot before it could not be saved: nothing was written
        Vanished, ///< the controller was closed meanwhile
        InUse,    ///< by a sequence: nothing was written
    };
    Outcome outcome = Done;
    ParameterSnapshot wanted;
    ParameterSnapshot after;
    int status = 0;       // of the first write that was refused, below 0
    QVector<int> missing; // fields that are known in `wanted` and are otherwise on the controller
};
Q_DECLARE_METATYPE(ParameterRestore)

/**
 * Keeps a snapshot of the motor parameters and the compensation of an axis when it becomes known, after each write, and
 * when asked. It reads by itself in the worker's thread, one call at a time and behind every command; files are read
 * and written in a thread of their own. Works while somebody holds it. GUI thread.
 */
class ParameterHistory final : public QObject, private AnswerListener
{
    Q_OBJECT

public:
    /** The history in use, in the user's configuration folder: made for the first who asks. */
    static QSharedPointer<ParameterHistory> instance();
    explicit ParameterHistory(const QString &folder);
    /** Waits until what was read is saved. */
    ~ParameterHistory() override;

    /** Reads the axis and keeps a snapshot of it: signal_kept(). Several for one axis that wait become one. */
    void keep(int axis, ParameterSnapshot::Why why);
    /** Reads the axis as it is now: signal_readNow(). Keeps nothing. */
    void readNow(int axis);
    /**
     * Writes what is known in `wanted` and differs to the same axis of the same controller, which must be connected.
     * Keeps a snapshot first, writes nothing when that fails, and reads back: signal_restored(). One at a time.
     */
    void restore(const ParameterSnapshot &wanted);
    bool isRestoring() const { return m_bRestoring; }
    /** Whether it is of an axis of the connected controller. */
    bool isConnected(const ParameterSnapshot &snapshot) const;

    /** Reads the files: signal_loaded(). */
    void load();
    /** Adds the snapshots of a file that was exported, of a damaged one those that are whole: signal_imported(). */
    void importFrom(const QString &file);
    /** Writes the file: signal_exported(). */
    void exportTo(const QString &file, const QVector<ParameterSnapshot> &snapshots);

signals:
    void signal_kept(const ParameterSnapshot &snapshot);
    /** A snapshot could not be saved. It is kept as long as the program runs, and saved with the next one. */
    void signal_saveFailed();
    void signal_readNow(const ParameterSnapshot &snapshot);
    void signal_restored(const ParameterRestore &result);
    void signal_loaded(const QVector<ParameterSnapshot> &snapshots, const QStringList &damaged);
    /**
     * `count`: how many could be read, -1 when it is no such file; `isWhole`: that is everything in it; `isSaved`: they
     * are kept.
     */
    void signal_imported(int count, bool isWhole, bool isSaved);
    void signal_exported(const QString &file, bool isSaved);

private:
    struct Job;
    struct Link;
    using Then = std::function<void(const ParameterSnapshot *)>; // null: the controller was closed

    // In the thread that made the call.
    void positionAnswered(int, double, Time) override {}
    void stateAnswered(int, const MotorStageState &, Time) override {}
    void pollFailed(int, Time) override {}
    void commandAnswered(const MotionCommand &, Time) override {}
    void parametersWritten(int axis, Time at) override;

    ParameterSnapshot blank(int axis, ParameterSnapshot::Why why) const;
    void read(int axis, ParameterSnapshot::Why why, Then then);
    void run(const std::shared_ptr<Job> &job);
    void save(const ParameterSnapshot &snapshot, const std::function<void(bool)> &then);
    void write(const ParameterSnapshot &wanted, const ParameterSnapshot &before);
    void end(const ParameterRestore &result);

    const QSharedPointer<ControlSession> m_session;
    const QSharedPointer<SerialComDev> m_worker;
    const ParameterStore m_store;
    const std::shared_ptr<Link> m_link;
    QThreadPool m_files;                         // one thread
    QVector<ParameterSnapshot> m_unsaved;        // of that thread
    QStringList m_damaged;                       // of that thread: found by writes, and not told yet
    bool m_bLoaded = false;                      // somebody has asked for what there is
    QMap<int, ParameterSnapshot::Why> m_waiting; // axes whose reading has not begun
    qint64 m_lastTime = 0;                       // of a snapshot
    bool m_bRestoring = false;
};
