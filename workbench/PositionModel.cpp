// SPDX-License-Identifier: MIT
#include "workbench/PositionModel.h"

#include "session/ControlSession.h"
#include "workbench/SequenceTexts.h"

namespace {

constexpr int shownDigits = 3; // as on the panels

}

PositionModel::PositionModel(QObject *parent)
    : SplicedTable(parent)
{
}

void PositionModel::setAxes(const QVector<int> &axes)
{
    if (axes == m_axes)
        return;
    beginResetModel();
    m_axes = axes;
    endResetModel();
}

void PositionModel::setEditable(bool isEditable)
{
    m_isEditable = isEditable;
}

void PositionModel::setUsable(bool canGo, bool canTake)
{
    if (canGo == m_canGo && canTake == m_canTake)
        return;
    m_canGo = canGo;
    m_canTake = canTake;
    if (rowCount() > 0)
        emit dataChanged(index(0, takeColumn()), index(rowCount() - 1, goColumn()));
}

void PositionModel::retranslate()
{
    emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

int PositionModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 3 + m_axes.size();
}

QVariant PositionModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const NamedPosition &position = rows().at(index.row());
    const int column = index.column();
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignVCenter | (column == 0 ? Qt::AlignLeft : Qt::AlignRight));
    const bool isAxis = column > 0 && column < takeColumn();
    if (role == Qt::ToolTipRole && isAxis) // what is shown is rounded
        return data(index, Qt::EditRole);
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return {};
    if (column == takeColumn())
        return tr("取当前值");
    if (column == goColumn())
        return tr("前往");
    if (column == 0)
        return position.name;
    const auto value = position.axes.constFind(m_axes.at(column - 1));
    if (value == position.axes.constEnd())
        return role == Qt::DisplayRole ? QStringLiteral("–") : QString();
    return role == Qt::DisplayRole ? QString::number(*value, 'f', shownDigits) : SequenceTexts::plain(*value);
}

QVariant PositionModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    const bool isAxis = section > 0 && section < takeColumn();
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignVCenter | (isAxis ? Qt::AlignRight : Qt::AlignLeft));
    if (role != Qt::DisplayRole)
        return {};
    if (section == 0)
        return tr("名称");
    if (!isAxis)
        return QString();
    const int axis = m_axes.at(section - 1);
    const auto known = ControlSession::instance()->axis(axis);
    return AxisDescription::nameOf(axis) + (known ? QLatin1Char(' ') + known->currentDescription().unit : QString());
}

Qt::ItemFlags PositionModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == takeColumn())
        return m_canTake ? flags | Qt::ItemIsEnabled : flags;
    if (index.column() == goColumn())
        return m_canGo && !rows().at(index.row()).axes.isEmpty() ? flags | Qt::ItemIsEnabled : flags;
    return flags | Qt::ItemIsEnabled | (m_isEditable ? Qt::ItemIsEditable : Qt::NoItemFlags);
}

bool PositionModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable))
        return false;
    NamedPosition position = rows().at(index.row());
    const QString text = value.toString().trimmed();
    if (index.column() == 0) {
        if (text.isEmpty()) {
            emit signal_refused(tr("位置的名称不能为空。"));
            return false;
        }
        for (int row = 0; row < rowCount(); ++row) {
            if (row != index.row() && rows().at(row).name == text) {
                emit signal_refused(tr("已有名为“%1”的位置。").arg(text));
                return false;
            }
        }
        position.name = text;
    } else if (text.isEmpty() || text == QStringLiteral("–") || text == QStringLiteral("-")) {
        position.axes.remove(m_axes.at(index.column() - 1));
    } else {
        const auto number = SequenceTexts::toNumber(text);
        if (!number) {
            emit signal_refused(SequenceTexts::noNumber(text));
            return false;
        }
        position.axes.insert(m_axes.at(index.column() - 1), *number);
    }
    if (position != rows().at(index.row()))
        emit signal_edited(index.row(), position);
    return true;
}
