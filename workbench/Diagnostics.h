// SPDX-License-Identifier: MIT
#pragma once

#include "session/Recorder.h"

#include <QByteArray>
#include <QString>
#include <QVector>

/** One file for whoever helps: what the program is, what it was told and what the axes did. */
namespace Diagnostics {

struct File {
    QString name;
    QByteArray contents;
};

/** What the GUI thread knows. */
struct Source {
    QByteArray versions;
    Recording recording;
    QVector<File> logs;
};

/** GUI thread; takes no time. Asks the controller nothing. `logs`: taken along as they are. */
Source look(const QVector<File> &logs = {});

/**
 * Versions, library and controller, the settings, the parameter history, of the recorder the events and the last
 * minutes, and the logs. Any thread.
 */
QVector<File> collect(const Source &source);

/** The text with "~" for the user's folder and "user" for the user's name. */
QByteArray withoutNames(const QByteArray &text, const QString &home, const QString &user);

/** Packs the files, without names of this user, into a zip archive that is there whole or not at all. Any thread. */
bool save(const QString &path, const QVector<File> &files);

} // namespace Diagnostics
