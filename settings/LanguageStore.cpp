// SPDX-License-Identifier: MIT
#include "settings/LanguageStore.h"

#include "widgets/SmallFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstring>
#include <optional>

// The file is one that QSettings reads and writes, but not by QSettings: it locks the file, and waits half a minute
// for the lock of a program that was killed in between.

namespace {

constexpr qint64 maxSize = 64 * 1024;

constexpr char byteOrderMark[] = "\xEF\xBB\xBF"; // some editors put it first

QString fileIn(const QString &folder)
{
    return folder + QStringLiteral("/appConfig.ini");
}

/** The lines of a file, and which of them tell the language. */
struct Lines {
    QByteArrayList all;
    int group = -1; // "[language]"
    int type = -1;  // its entry that counts, the last one
    int code = 0;
};

/** Nothing when a line is damaged. */
std::optional<Lines> linesOf(const QByteArray &text)
{
    Lines lines;
    lines.all = text.split('\n');
    bool inLanguage = false;
    for (int k = 0; k < lines.all.size(); ++k) {
        QByteArray line = lines.all.at(k);
        if (k == 0 && line.startsWith(byteOrderMark))
            line.remove(0, int(std::strlen(byteOrderMark)));
        line = line.trimmed();
        const int equals = line.indexOf('=');
        if (line.isEmpty() || line.startsWith(';'))
            continue;
        if (line.startsWith('[') && line.endsWith(']')) {
            inLanguage = line.mid(1, line.indexOf(']') - 1).trimmed() == "language";
            if (inLanguage)
                lines.group = k;
        } else if (equals < 1) {
            return std::nullopt;
        } else if (inLanguage && line.left(equals).trimmed() == "type") {
            QByteArray value = line.mid(equals + 1).trimmed();
            if (value.size() >= 2 && value.startsWith('"') && value.endsWith('"'))
                value = value.mid(1, value.size() - 2);
            lines.type = k;
            lines.code = value.toInt();
        }
    }
    return lines;
}

/** `old` with another code, and everything else as it is; of a damaged text nothing stays. */
QByteArray withCode(const QByteArray &old, int code)
{
    const QByteArray entry = "type=" + QByteArray::number(code);
    auto lines = linesOf(old).value_or(Lines());
    const auto lineEnd = [&lines](int k) { return lines.all.at(k).endsWith('\r') ? "\r" : ""; };
    if (lines.type >= 0) {
        lines.all[lines.type] = entry + lineEnd(lines.type);
    } else if (lines.group >= 0) {
        lines.all.insert(lines.group + 1, entry + lineEnd(lines.group));
    } else {
        if (!lines.all.isEmpty() && lines.all.constLast().isEmpty())
            lines.all.removeLast(); // what follows the last line end
        lines.all += {"[language]", entry, ""};
    }
    return lines.all.join('\n');
}

/** Writes a new file and renames it over the old one. */
bool write(const QString &name, int code)
{
    QByteArray text = withCode(SmallFile::read(name, maxSize), code);
    if (text.size() > maxSize) // would not be read
        text = withCode(QByteArray(), code);
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

    return linesOf(SmallFile::read(userCounts ? m_sUserFile : m_sProgramFile, maxSize)).value_or(Lines()).code;
}

void LanguageStore::save(int code) const
{
    if (write(m_sProgramFile, code))
        return;
    QDir().mkpath(QFileInfo(m_sUserFile).path());
    write(m_sUserFile, code);
}
