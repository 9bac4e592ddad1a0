// SPDX-License-Identifier: MIT
#pragma once

#include "session/Sequence.h"
#include "workbench/SplicedTable.h"

#include <QHash>

/** The steps of a sequence as a table, and how far they were run. GUI thread. */
class StepModel final : public SplicedTable<SequenceStep>
{
    Q_OBJECT

public:
    enum Column { Number, What, Where, Speed, Wait, ColumnCount };
    enum class Mark {
        None,
        Done,
        Runs,
        Pauses,
        Stopped,
        Failed,
        Fault, ///< found by the check
    };
    enum Role {
        MarkRole = Qt::UserRole, ///< int of a Mark
        ReasonRole,              ///< stands below the line
    };

    explicit StepModel(QObject *parent);

    /** The lines before `line` are done, and `line` has the mark; none for a line of -1. */
    void setRun(int line, Mark mark, const QString &reason = QString());
    int runLine() const { return m_line; }
    bool isFailed() const { return m_mark == Mark::Failed; }
    /** What the check has found, by line. */
    void setFaults(const QHash<int, QString> &faults);

    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    /** Reads the words again. */
    void retranslate();

private:
    Mark markOf(int row) const;
    void changed(int first, int last);

    int m_line = -1;
    Mark m_mark = Mark::None;
    QString m_sReason;
    QHash<int, QString> m_faults;
};
