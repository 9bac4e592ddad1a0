// SPDX-License-Identifier: MIT
#pragma once

#include "session/ParameterSnapshot.h"

#include <QStringList>

#include <utility>

/**
 * The files of the parameter history: one for each axis of each controller, as docs/parameter-history.md describes
 * them. Each is replaced as a whole or stays as it was. Any thread, one at a time; other programs may use the same
 * folder.
 */
class ParameterStore final
{
public:
    static constexpr int MostOfAnAxis = 1000;

    struct Contents {
        QVector<ParameterSnapshot> snapshots; // of each axis from the oldest to the newest
        QStringList damaged;                  // full names of the files that were kept aside
    };

    explicit ParameterStore(QString folder)
        : m_sFolder(std::move(folder))
    {
    }

    /**
     * Everything that can be read. A file that is damaged is renamed, and what is whole in it takes its place.
     */
    Contents load() const;
    /**
     * Adds those that are not there yet. Of more than MostOfAnAxis the oldest are thinned: first those that repeat the
     * one before them, then every second one. False when a file could not be written; it is then as it was.
     * `damaged`: files that were kept aside, as with load(), are added to it.
     */
    bool add(const QVector<ParameterSnapshot> &snapshots, QStringList *damaged = nullptr) const;

    /** The text of a file. */
    static QByteArray toText(const QVector<ParameterSnapshot> &snapshots);
    /** What is whole in the text; `isWhole`: whether that is everything. */
    static QVector<ParameterSnapshot> fromText(const QByteArray &text, bool *isWhole);

private:
    QString fileOf(const ParameterSnapshot &snapshot) const;
    QVector<ParameterSnapshot> readFile(const QString &path, QStringList *damaged) const;

    QString m_sFolder;
};
