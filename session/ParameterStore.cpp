// SPDX-License-Identifier: MIT
#include "session/ParameterStore.h"

#include "session/SmallFile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLockFile>
#include <QMap>
#include <QUrl>

#include <algorithm>

namespace {

constexpr qint64 maxSize = 64 * 1024 * 1024;
constexpr int lockLimitMs = 5000; // longer than another program takes for a file
constexpr int historyVersion = 1;

const QString suffix = QStringLiteral(".json");

bool isOlder(const ParameterSnapshot &one, const ParameterSnapshot &other)
{
    return one.time < other.time;
}

/** Of the older half; see ParameterStore::add(). */
void thin(QVector<ParameterSnapshot> &snapshots)
{
    if (snapshots.size() <= ParameterStore::MostOfAnAxis)
        return;
    auto *const half = snapshots.begin() + snapshots.size() / 2;
    auto *kept = std::unique(snapshots.begin(), half, [](const ParameterSnapshot &one, const ParameterSnapshot &other) {
        return one.hasSameValues(other);
    });
    if (kept == half) {
        kept = snapshots.begin();
        for (auto *each = kept; each < half; each += 2)
            *kept++ = *each;
    }
    snapshots.erase(kept, half);
    thin(snapshots); // an import may bring more than that
}

} // namespace

QByteArray ParameterStore::toText(const QVector<ParameterSnapshot> &snapshots)
{
    // One line each: what follows a damaged line can still be read.
    QByteArray text = "{\"format\":\"mover parameter history\",\"version\":" + QByteArray::number(historyVersion) +
                      ",\"snapshots\":[\n";
    for (int k = 0; k < snapshots.size(); ++k)
        text += QJsonDocument(snapshots.at(k).toJson()).toJson(QJsonDocument::Compact) +
                (k + 1 < snapshots.size() ? ",\n" : "\n");
    return text + "]}\n";
}

QVector<ParameterSnapshot> ParameterStore::fromText(const QByteArray &text, bool *isWhole)
{
    QVector<ParameterSnapshot> snapshots;
    const auto append = [&snapshots](const QJsonValue &value) {
        const auto snapshot = ParameterSnapshot::fromJson(value.toObject());
        if (snapshot)
            snapshots.append(*snapshot);
        return snapshot.has_value();
    };
    const QJsonObject whole = QJsonDocument::fromJson(text).object();
    const QJsonValue list = whole.value(QStringLiteral("snapshots"));
    *isWhole = whole.value(QStringLiteral("format")).toString() == QLatin1String("mover parameter history") &&
               whole.value(QStringLiteral("version")).toInt() == historyVersion && list.isArray();
    if (list.isArray()) {
        const QJsonArray array = list.toArray();
        for (const QJsonValue &value : array)
            *isWhole = append(value) && *isWhole;
    } else {
        const QList<QByteArray> lines = text.split('\n');
        for (QByteArray line : lines) {
            line = line.trimmed();
            if (line.endsWith(','))
                line.chop(1);
            append(QJsonDocument::fromJson(line).object());
        }
    }
    std::stable_sort(snapshots.begin(), snapshots.end(), isOlder);
    return snapshots;
}

QString ParameterStore::fileOf(const ParameterSnapshot &snapshot) const
{
    // No serial number is a name that a file system minds.
    return m_sFolder + QLatin1Char('/') + QString::fromLatin1(QUrl::toPercentEncoding(snapshot.controller, {}, ".~")) +
           QStringLiteral("-Axis%1").arg(snapshot.axis + 1) + suffix;
}

QVector<ParameterSnapshot> ParameterStore::readFile(const QString &path, QStringList *damaged) const
{
    const QFileInfo file(path);
    if (!file.exists() && !file.isSymLink())
        return {};
    bool isWhole = false;
    QVector<ParameterSnapshot> snapshots = fromText(SmallFile::read(path, maxSize), &isWhole);
    if (isWhole)
        return snapshots;
    const QString time = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-hhmmss-zzz"));
    const QString aside = path + QStringLiteral(".damaged-") + time;
    const bool isAside = QFile::rename(path, aside);
    if (isAside && !snapshots.isEmpty())
        SmallFile::save(path, toText(snapshots));
    damaged->append(QDir::toNativeSeparators(isAside ? aside : path));
    return snapshots;
}

ParameterStore::Contents ParameterStore::load() const
{
    Contents contents;
    QLockFile lock(m_sFolder + QStringLiteral("/lock"));
    if (!QFileInfo::exists(m_sFolder))
        return contents;
    lock.tryLock(lockLimitMs); // a folder that cannot be written can still be read
    const QStringList names = QDir(m_sFolder).entryList(
        {QLatin1Char('*') + suffix}, QDir::AllEntries | QDir::System | QDir::Hidden, QDir::Name);
    for (const QString &name : names)
        contents.snapshots += readFile(m_sFolder + QLatin1Char('/') + name, &contents.damaged);
    return contents;
}

bool ParameterStore::add(const QVector<ParameterSnapshot> &snapshots, QStringList *damaged) const
{
    QMap<QString, QVector<ParameterSnapshot>> files;
    for (const ParameterSnapshot &snapshot : snapshots)
        files[fileOf(snapshot)].append(snapshot);

    QDir().mkpath(m_sFolder);
    QLockFile lock(m_sFolder + QStringLiteral("/lock"));
    if (!lock.tryLock(lockLimitMs))
        return false;
    bool isSaved = true;
    QStringList untold;
    for (auto file = files.cbegin(); file != files.cend(); ++file) {
        QVector<ParameterSnapshot> all = readFile(file.key(), damaged ? damaged : &untold);
        for (const ParameterSnapshot &snapshot : file.value()) {
            if (std::none_of(all.cbegin(), all.cend(), [&](const auto &known) { return known.isSame(snapshot); }))
                all.append(snapshot);
        }
        std::stable_sort(all.begin(), all.end(), isOlder);
        thin(all);
        isSaved = SmallFile::save(file.key(), toText(all)) && isSaved;
    }
    return isSaved;
}
