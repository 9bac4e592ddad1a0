// SPDX-License-Identifier: MIT
#include "workbench/Diagnostics.h"

#include "device/MotionLibrary.h"
#include "session/ControlSession.h"
#include "session/Recorder.h"
#include "session/RecordingCsv.h"
#include "session/SmallFile.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QSysInfo>
#include <private/qzipwriter_p.h>

#include <algorithm>

namespace {

constexpr qint64 lastUs = qint64(10) * 60 * 1000000; // of the recorder
constexpr qint64 maxSettings = 1024 * 1024;          // of a file
constexpr qint64 maxHistory = 64 * 1024 * 1024;
constexpr int leastName = 2; // one letter is no name that could be told from other text

QByteArray versions()
{
    const auto session = ControlSession::instance();
    const QString lines[] = {
        QStringLiteral("time: ") + QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs),
        QStringLiteral("mover: ") + QCoreApplication::applicationVersion(),
        QStringLiteral("Qt: ") + QLatin1String(qVersion()),
        QStringLiteral("system: ") + QSysInfo::prettyProductName() + QStringLiteral(", ") + QSysInfo::kernelType() +
            QLatin1Char(' ') + QSysInfo::kernelVersion() + QStringLiteral(", ") + QSysInfo::currentCpuArchitecture(),
        QStringLiteral("library: ") + ControlSession::library().description(),
        QStringLiteral("connected: ") + (session->isConnected() ? QStringLiteral("yes") : QStringLiteral("no")),
        QStringLiteral("controller: ") + session->serialNumber(),
        QStringLiteral("firmware: ") + session->firmwareVersion(),
        QStringLiteral("axes: ") + QString::number(session->axisCount()),
    };
    QByteArray text;
    for (const QString &line : lines)
        text += line.toUtf8() + '\n';
    return text;
}

void addFolder(
    QVector<Diagnostics::File> &files, const QString &folder, const QString &filter, const QString &into, qint64 limit)
{
    const QStringList names = QDir(folder).entryList({filter}, QDir::Files, QDir::Name);
    for (const QString &name : names)
        files.append({into + QLatin1Char('/') + name, SmallFile::read(folder + QLatin1Char('/') + name, limit)});
}

QByteArray eventsOf(const Recording &recording)
{
    QByteArray text;
    for (const RecorderEvent &event : recording.events)
        text += QDateTime::fromMSecsSinceEpoch(recording.wallMs(event.us)).toString(Qt::ISODateWithMs).toUtf8() + ' ' +
                RecordingCsv::words(event).toUtf8() + '\n';
    return text;
}

} // namespace

Diagnostics::Source Diagnostics::look(const QVector<File> &logs)
{
    return {versions(), ControlSession::instance()->recorder().recording(), logs};
}

QVector<Diagnostics::File> Diagnostics::collect(const Source &source)
{
    QVector<File> files{{QStringLiteral("versions.txt"), source.versions}};
    const QString user = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    addFolder(
        files, QCoreApplication::applicationDirPath(), QStringLiteral("appConfig.ini"),
        QStringLiteral("settings/program"), maxSettings);
    addFolder(files, user, QStringLiteral("*.ini"), QStringLiteral("settings/user"), maxSettings);
    addFolder(files, user, QStringLiteral("*.json"), QStringLiteral("settings/user"), maxSettings);
    addFolder(
        files, user + QStringLiteral("/parameterHistory"), QStringLiteral("*.json"), QStringLiteral("parameterHistory"),
        maxHistory);

    const Recording &recording = source.recording;
    files.append({QStringLiteral("events.txt"), eventsOf(recording)});
    QBuffer table;
    table.open(QIODevice::WriteOnly);
    const qint64 end = recording.endUs();
    if (RecordingCsv::write(recording, std::max(recording.startUs(), end - lastUs), end, RecordingCsv::Point, &table) ==
        RecordingCsv::Outcome::Written)
        files.append({QStringLiteral("recording.csv"), table.data()});
    return files + source.logs;
}

QByteArray Diagnostics::withoutNames(const QByteArray &text, const QString &home, const QString &user)
{
    QString words = QString::fromUtf8(text);
    if (home.size() > 1) {
        words.replace(home, QStringLiteral("~"));
        words.replace(QDir::toNativeSeparators(home), QStringLiteral("~"));
    }
    if (user.size() >= leastName)
        words.replace(
            QRegularExpression(
                QStringLiteral("(?<![\\w-])%1(?![\\w-])").arg(QRegularExpression::escape(user)),
                QRegularExpression::UseUnicodePropertiesOption),
            QStringLiteral("user"));
    return words.toUtf8();
}

bool Diagnostics::save(const QString &path, const QVector<File> &files)
{
    const QString home = QDir::homePath();
    QString user = qEnvironmentVariable("USER", qEnvironmentVariable("USERNAME"));
    if (user.isEmpty())
        user = QDir(home).dirName();
    QBuffer archive;
    archive.open(QIODevice::WriteOnly);
    QZipWriter zip(&archive);
    for (const File &file : files)
        zip.addFile(file.name, withoutNames(file.contents, home, user));
    zip.close();
    return zip.status() == QZipWriter::NoError && SmallFile::save(path, archive.data());
}
