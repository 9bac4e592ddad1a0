// SPDX-License-Identifier: MIT
#pragma once

#include "session/Sequence.h"

#include <QLockFile>

#include <optional>

struct SequenceRecord;

/** What the second page of the workbench holds. */
struct SequenceDocument {
    Positions positions;
    Sequence sequence;

    bool operator==(const SequenceDocument &other) const
    {
        return positions == other.positions && sequence == other.sequence;
    }
    bool operator!=(const SequenceDocument &other) const { return !(*this == other); }
};

/** Why a file was refused, and where. */
struct SequenceFileFault {
    enum Kind {
        None,
        NotRead,     ///< cannot be opened, is no file or larger than MostBytes
        NotSuchFile, ///< something else than positions or a sequence
        Newer,       ///< of a later version
        Column,      ///< too many or too few
        Step,        ///< one that is not known
        Number,      ///< no number, or one that cannot be
        Axis,        ///< no axis
        Name,        ///< of a position: empty, or there twice
        TooMany,     ///< more than MostSteps
    };
    Kind kind = None;
    int line = 0; // of the file, from 1; of a JSON file the number of the step or position; 0: none in particular
};

/**
 * Positions, sequences and reports as text; docs/sequences.md describes it. Numbers have a point, whatever the
 * language. Nothing is taken from a text that has a fault. Any thread.
 */
namespace SequenceFiles {

constexpr int MostSteps = 100000;
constexpr qint64 MostBytes = 32 * 1024 * 1024;

QByteArray toJson(const SequenceDocument &document);
std::optional<SequenceDocument> fromJson(const QByteArray &text, SequenceFileFault *fault);

/** "move to Axis2 60" */
QString words(const SequenceStep &step);
QByteArray stepsToCsv(const Sequence &sequence);
std::optional<QVector<SequenceStep>> stepsFromCsv(const QByteArray &text, SequenceFileFault *fault);

QByteArray positionsToCsv(const Positions &positions);
std::optional<Positions> positionsFromCsv(const QByteArray &text, SequenceFileFault *fault);

/** Of a run: each step with its pass, when it began and ended, whether it was done, and what its axes reached. */
QByteArray recordsToCsv(const Sequence &sequence, const QVector<SequenceRecord> &records);

} // namespace SequenceFiles

/**
 * Keeps a document for each controller, by its serial number, in a folder. Of several programs the first one writes,
 * the others only read. One thread.
 */
class SequenceStore final
{
public:
    explicit SequenceStore(const QString &folder);

    bool isReadOnly() const { return m_bReadOnly; }
    struct Contents {
        SequenceDocument document;
        QString damaged; // full name of the file that was kept aside; empty: none
    };
    Contents load(const QString &controller) const;
    /** False when it could not be written; the file is then as it was. */
    bool save(const QString &controller, const SequenceDocument &document) const;

private:
    QString fileOf(const QString &controller) const;

    const QString m_sFolder;
    QLockFile m_lock;
    bool m_bReadOnly = false;
};
