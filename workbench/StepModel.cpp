// SPDX-License-Identifier: MIT
#include "workbench/StepModel.h"

#include "workbench/SequenceTexts.h"

#include <algorithm>

StepModel::StepModel(QObject *parent)
    : SplicedTable(parent)
{
}

void StepModel::changed(int first, int last)
{
    first = std::max(first, 0);
    last = std::min(last, rowCount() - 1);
    if (first <= last)
        emit dataChanged(index(first, 0), index(last, ColumnCount - 1));
}

void StepModel::setRun(int line, Mark mark, const QString &reason)
{
    if (line == m_line && mark == m_mark && reason == m_sReason)
        return;
    const int before = m_line;
    m_line = line;
    m_mark = mark;
    m_sReason = reason;
    changed(std::min(before, line), std::max(before, line));
}

void StepModel::setFaults(const QHash<int, QString> &faults)
{
    if (faults.isEmpty() && m_faults.isEmpty())
        return;
    m_faults = faults;
    changed(0, rowCount() - 1);
}

void StepModel::retranslate()
{
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    changed(0, rowCount() - 1);
}

StepModel::Mark StepModel::markOf(int row) const
{
    if (m_faults.contains(row))
        return Mark::Fault;
    return row < m_line ? Mark::Done : row == m_line ? m_mark : Mark::None;
}

int StepModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant StepModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const SequenceStep &step = rows().at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case Number:
            return QString::number(index.row() + 1);
        case What:
            return SequenceTexts::kind(step.kind);
        case Where:
            return SequenceTexts::where(step);
        case Speed:
            return SequenceTexts::speed(step);
        case Wait:
            return SequenceTexts::wait(step);
        default:
            return {};
        }
    case Qt::TextAlignmentRole:
        return int(
            Qt::AlignVCenter | (index.column() == What || index.column() == Where ? Qt::AlignLeft : Qt::AlignRight));
    case Qt::ToolTipRole:
        return m_faults.contains(index.row()) ? m_faults.value(index.row())
               : index.column() == Where      ? SequenceTexts::where(step) // it may be cut
                                              : QVariant();
    case MarkRole:
        return int(markOf(index.row()));
    case ReasonRole:
        return index.row() == m_line ? m_sReason : QString();
    default:
        return {};
    }
}

QVariant StepModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignVCenter | (section >= Speed ? Qt::AlignRight : Qt::AlignLeft));
    if (role != Qt::DisplayRole)
        return {};
    const QString texts[] = {tr("序号"), tr("动作"), tr("目标"), tr("速度"), tr("等待")};
    return texts[section];
}
