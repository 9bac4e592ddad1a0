// SPDX-License-Identifier: MIT
#include "settings/LanguageStore.h"

#include "widgets/SmallFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

// The file is one that QSettings reads and writes, but not by QSettings: it locks the file, and waits half a minute
// for the lock of a program that was killed in between.

namespace {

constexpr qint64 maxSize = 64 * 1024;

QString fileIn(const QString &folder)
{
    return folder + QStringLiteral("/appConfig.ini");
}

int codeIn(const QByteArray &text)
{
    int code = 0;
    bool inLanguage = false;
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray &rawLine : lines) {
        const QByteArray line = rawLine.trimmed();
        const int equals = line.indexOf('=');
        if (line.isEmpty() || line.startsWith(';'))
            continue;
        if (line.startsWith('[') && line.endsWith(']'))
            inLanguage = line == "[language]";
        else if (equals < 1)
            return 0; // damaged
        else if (inLanguage && line.left(equals).trimmed() == "type")
            code = line.mid(equals + 1).trimmed().toInt();
    }
    return code;
}

/** Writes a new file and renames it over the old one. */
bool write(const QString &name, int code)
{
    const QByteArray text = "[language]\ntype=" + QByteArray::number(code) + '\n';
    QSaveFile file(name);
    // Unbuffered: commit() overlooks it when the disk takes only a part of what is in the buffer.
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size() && file.commit();
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
    const bool userCounts = user.exists() && (!program.exists() || user.lastModified() >= program.lastModified());

    return codeIn(SmallFile::read(userCounts ? m_sUserFile : m_sProgramFile, maxSize));
}

void LanguageStore::save(int code) const
{
    if (write(m_sProgramFile, code))
        return;
    QDir().mkpath(QFileInfo(m_sUserFile).path());
    write(m_sUserFile, code);
}
