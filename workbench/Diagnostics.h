// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/** One file for whoever helps: what the program is, what it was told and what the axes did. GUI thread. */
namespace Diagnostics {

struct File {
    QString name;
    QByteArray contents;
};

/**
 * Versions, library and controller, the settings, the parameter history, and of the recorder the events and the last
 * minutes. Asks the controller nothing.
 */
QVector<File> collect();

/** The text with "~" for the user's folder and "user" for the user's name. */
QByteArray withoutNames(const QByteArray &text, const QString &home, const QString &user);

/** Packs the files, without names of this user, into a zip archive that is there whole or not at all. */
bool save(const QString &path, const QVector<File> &files);

} // namespace Diagnostics
