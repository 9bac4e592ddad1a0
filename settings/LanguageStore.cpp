// SPDX-License-Identifier: MIT
#include "settings/LanguageStore.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSettings>

namespace {

constexpr char languageKey[] = "language/type";

QString fileIn(const QString &folder)
{
    return folder + QStringLiteral("/appConfig.ini");
}

/** QSettings writes a new file and renames it over the old one; atomicSyncRequired is its default. */
bool write(const QString &file, int code)
{
    QSettings settings(file, QSettings::IniFormat);
    settings.setValue(QLatin1String(languageKey), code);
    settings.sync();
    return settings.status() == QSettings::NoError;
}

} // namespace

LanguageStore::LanguageStore(const QString &programFolder, const QString &userFolder)
    : m_sProgramFile(fileIn(programFolder))
    , m_sUserFile(fileIn(userFolder))
{
}

int LanguageStore::load() const
{
    const QFileInfo program(m_sProgramFile);
    const QFileInfo user(m_sUserFile);
    const bool userCounts = user.exists() && !(program.exists() && program.lastModified() >= user.lastModified());

    const QSettings settings(userCounts ? m_sUserFile : m_sProgramFile, QSettings::IniFormat);
    const int code = settings.value(QLatin1String(languageKey)).toInt();
    return settings.status() == QSettings::NoError ? code : 0;
}

void LanguageStore::save(int code) const
{
    if (!write(m_sProgramFile, code))
        write(m_sUserFile, code);
}
