// SPDX-License-Identifier: MIT
#pragma once

#include "session/RecordingCsv.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QThread>
#include <QTimer>

#include <memory>

/**
 * After a failure, a limit or a lost link, writes what was recorded in the minute before it into a table of its own in
 * the user's data folder, a second later and beside the GUI thread. Those that follow soon share a file; the newest 20
 * are kept.
 */
class IncidentFiles final : public QObject
{
    Q_OBJECT

public:
    static constexpr int Most = 20;

    explicit IncidentFiles(Recorder &recorder, QString folder = usualFolder(), QObject *parent = nullptr);
    ~IncidentFiles() override;

    static QString usualFolder();

    /** For tests: how long to wait after an incident, and at least between two files. */
    void setDelays(int afterMs, int betweenMs);

signals:
    /** Of an axis or RecorderEvent::AllAxes. */
    void signal_written(int axis, QString path);
    void signal_failed(int axis, QString error);

private:
    struct Job;

    void noteIncident(int axis, qint64 us);
    void write();
    void end();

    Recorder &m_recorder;
    const QString m_sFolder;
    int m_iAfterMs = 1000;
    int m_iBetweenMs = 10000;
    QTimer m_due;
    QElapsedTimer m_sinceLast;
    QSet<int> m_axes;
    qint64 m_firstUs = 0;
    std::shared_ptr<Job> m_job;
    std::unique_ptr<QThread> m_thread;
};
