// SPDX-License-Identifier: MIT
#include "session/IncidentFiles.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>

#include <algorithm>

namespace {

constexpr qint64 before = 60000000; // µs

/** The newest are kept, and nothing of one that was not finished. */
void removeOld(const QDir &folder)
{
    QStringList files = folder.entryList({QStringLiteral("incident-*.csv*")}, QDir::Files | QDir::Hidden, QDir::Name);
    for (const QString &file : qAsConst(files)) {
        if (!file.endsWith(QLatin1String(".csv")))
            QFile::remove(folder.filePath(file));
    }
    files = files.filter(QRegularExpression(QStringLiteral("\\.csv$")));
    while (files.size() > IncidentFiles::Most)
        QFile::remove(folder.filePath(files.takeFirst()));
}

} // namespace

struct IncidentFiles::Job {
    Recording recording;
    qint64 fromUs;
    QString folder;
    QString path;
    QSet<int> axes;
    bool isWritten = false; // once the thread has ended
    QString error;

    void run()
    {
        const QDir dir(folder);
        if (!dir.mkpath(QStringLiteral("."))) {
            error = folder;
            return;
        }
        removeOld(dir);
        isWritten = RecordingCsv::save(recording, fromUs, recording.nowUs, RecordingCsv::Point, path, &error) ==
                    RecordingCsv::Outcome::Written;
        removeOld(dir);
    }
};

IncidentFiles::IncidentFiles(Recorder &recorder, QString folder, QObject *parent)
    : QObject(parent)
    , m_recorder(recorder)
    , m_sFolder(std::move(folder))
{
    m_due.setSingleShot(true);
    connect(&m_due, &QTimer::timeout, this, &IncidentFiles::write);
    // It comes from the thread that heard the answer.
    connect(&recorder, &Recorder::signal_incident, this, &IncidentFiles::noteIncident, Qt::QueuedConnection);
}

IncidentFiles::~IncidentFiles()
{
    if (m_thread)
        m_thread->wait();
}

QString IncidentFiles::usualFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/mover/incidents");
}

void IncidentFiles::setDelays(int afterMs, int betweenMs)
{
    m_iAfterMs = afterMs;
    m_iBetweenMs = betweenMs;
}

void IncidentFiles::noteIncident(int axis, qint64 us)
{
    if (m_axes.isEmpty())
        m_firstUs = us;
    m_axes.insert(axis);
    if (m_due.isActive() || m_thread)
        return;
    const qint64 rest = m_sinceLast.isValid() ? m_iBetweenMs - m_sinceLast.elapsed() : 0;
    m_due.start(int(std::max<qint64>(rest, m_iAfterMs)));
}

void IncidentFiles::write()
{
    auto job = std::make_shared<Job>();
    job->recording = m_recorder.recording();
    job->fromUs = m_firstUs - before;
    job->folder = m_sFolder;
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd-HHmmss-zzz"));
    job->path = QDir(m_sFolder).filePath(QStringLiteral("incident-%1.csv").arg(time));
    job->axes = std::exchange(m_axes, {});
    m_sinceLast.start();
    m_job = job;
    m_thread.reset(QThread::create([job] { job->run(); }));
    connect(m_thread.get(), &QThread::finished, this, &IncidentFiles::end);
    m_thread->start(QThread::LowPriority);
}

void IncidentFiles::end()
{
    m_thread->wait();
    m_thread.reset();
    const auto job = std::exchange(m_job, nullptr);
    const QSet<int> axes = job->axes.contains(RecorderEvent::AllAxes) ? QSet<int>{RecorderEvent::AllAxes} : job->axes;
    for (const int axis : axes) {
        if (job->isWritten)
            emit signal_written(axis, job->path);
        else
            emit signal_failed(axis, job->error);
    }
    if (!m_axes.isEmpty())
        m_due.start(m_iBetweenMs);
}
