// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

/**
 * Reads and writes the small files that the program keeps. Anything may stand in their place: a pipe, a folder, a huge
 * file.
 */
namespace SmallFile {

/**
 * The bytes of a file; none when it cannot be read, is no file (opening a pipe would wait for its writer) or has more
 * than `limit` bytes. The bytes are a copy: unlike those of a mapped file they do not change with it.
 */
inline QByteArray read(const QString &path, qint64 limit)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return QByteArray();
    QByteArray bytes = file.read(limit + 1);
    bytes.squeeze(); // otherwise they keep room for `limit` bytes
    return bytes.size() > limit ? QByteArray() : bytes;
}

/** Replaces the file as a whole. Its folder must exist. False on failure: the file is then as it was. `error`: why. */
inline bool save(const QString &path, const QByteArray &bytes, QString *error = nullptr)
{
    QSaveFile file(path);
    // Unbuffered: commit() does not notice when the disk takes only a part of the buffer.
    const bool isSaved =
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(bytes) == bytes.size() && file.commit();
    if (!isSaved && error)
        *error = file.errorString();
    return isSaved;
}

} // namespace SmallFile
