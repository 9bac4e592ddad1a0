// SPDX-License-Identifier: MIT
#include "settings/LanguageStore.h"

#include "session/SmallFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>
#include <QTemporaryFile>

namespace {

constexpr qint64 maxSize = 64 * 1024;

const QString entry = QStringLiteral("language/type");

QString fileIn(const QString &folder)
{
    return folder + QStringLiteral("/appConfig.ini");
}

bool canBeWritten(const QString &folder)
{
    return QTemporaryFile(folder + QStringLiteral("/XXXXXX")).open();
}

/**
 * The text of a settings file, open in QSettings. In a copy: QSettings locks the file that it writes, waits half a
 * minute for the lock of a program that was killed in between, and takes a file of the same size and time for the one
 * that it knows.
 */
class OpenCopy final
{
public:
    explicit OpenCopy(const QByteArray &text)
        : m_name(fileIn(m_folder.path()))
    {
        QFile file(m_name); // not as it is saved: that waits for the disk
        m_whole = m_folder.isValid() && file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
                  file.write(text) == text.size();
    }

    int code() const { return m_whole ? QSettings(m_name, QSettings::IniFormat).value(entry).toInt() : 0; }
    /** The text with this code; none when it cannot be written. */
    QByteArray with(int code) const
    {
        if (m_whole)
            QSettings(m_name, QSettings::IniFormat).setValue(entry, code);
        return m_whole && this->code() == code ? SmallFile::read(m_name, maxSize) : QByteArray();
    }

private:
    QTemporaryDir m_folder;
    QString m_name;
    bool m_whole = false;
};

} // namespace

LanguageStore::LanguageStore(const QString &programFolder, const QString &userFolder)
    : m_sDefaultFile(fileIn(programFolder))
    , m_sFile(canBeWritten(programFolder) ? m_sDefaultFile : fileIn(userFolder))
{
}

int LanguageStore::load() const
{
    return OpenCopy(SmallFile::read(QFileInfo::exists(m_sFile) ? m_sFile : m_sDefaultFile, maxSize)).code();
}

void LanguageStore::save(int code) const
{
    QByteArray text = OpenCopy(SmallFile::read(m_sFile, maxSize)).with(code);
    if (text.isEmpty()) // no room for the entry in what there was
        text = OpenCopy(QByteArray()).with(code);
    if (text.isEmpty())
        return;
    QDir().mkpath(QFileInfo(m_sFile).path());
    SmallFile::save(m_sFile, text);
}
