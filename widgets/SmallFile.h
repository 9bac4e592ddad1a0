// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

/** The small files that the program keeps, whatever stands there in their place. */
namespace SmallFile {

/**
 * The bytes of a file; none when it cannot be read, is no file (opening a pipe would wait for its writer) or has more
 * than `limit` bytes. What comes back stays as it is when the file changes, unlike a file that is mapped.
 */
inline QByteArray read(const QString &path, qint64 limit)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return QByteArray();
    QByteArray bytes = file.read(limit + 1);
    bytes.squeeze(); // else the room for all of them would be kept
    return bytes.size() > limit ? QByteArray() : bytes;
}

/** Replaces the file as a whole, in a folder that is there. False when that fails: then it stays as it was. */
inline bool save(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    // Unbuffered: commit() overlooks it when the disk takes only a part of what is in the buffer.
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(bytes) == bytes.size() &&
           file.commit();
}

} // namespace SmallFile
