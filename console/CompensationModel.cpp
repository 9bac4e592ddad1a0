// SPDX-License-Identifier: MIT
#include "console/CompensationModel.h"

#include "console/NumberInput.h"

#include <QColor>
#include <QMap>

namespace {

const QColor wrongCell(217, 59, 56);

} // namespace

CompensationModel::CompensationModel(QObject *parent)
    : QStandardItemModel(Rows, 4, parent)
{
    retranslate();
}

void CompensationModel::retranslate()
{
    setHorizontalHeaderLabels({tr("+期望位置"), tr("+实际位置"), tr("-期望位置"), tr("-实际位置")});
}

bool CompensationModel::isPair(int row, int firstColumn) const
{
    return !text(row, firstColumn).isEmpty() || !text(row, firstColumn + 1).isEmpty();
}

CompensationModel::Pairs CompensationModel::pairs(Direction direction) const
{
    QMap<double, double> actualOf;
    for (int row = 0; row < Rows; ++row) {
        if (!isPair(row, direction))
            continue;
        double expected = 0;
        double actual = 0;
        NumberInput::read(text(row, direction), expected);
        NumberInput::read(text(row, direction + 1), actual);
        actualOf.insert(expected, actual);
    }
    Pairs pairs;
    for (auto pair = actualOf.cbegin(); pair != actualOf.cend(); ++pair) {
        const auto at = 2 * size_t(pairs.count);
        pairs.values[at] = pair.key();
        pairs.values[at + 1] = pair.value();
        ++pairs.count;
    }
    return pairs;
}

void CompensationModel::show(Direction direction, const Pairs &pairs)
{
    const int count = qBound(0, pairs.count, Rows);
    for (int row = 0; row < count; ++row) {
        for (int k = 0; k < 2; ++k)
            setData(index(row, direction + k), QString::number(pairs.values[2 * size_t(row) + size_t(k)], 'g', 6));
    }
}

void CompensationModel::clearRows(int firstRow)
{
    for (int row = firstRow; row < Rows; ++row) {
        for (int column = 0; column < columnCount(); ++column)
            setData(index(row, column), QVariant());
    }
}

void CompensationModel::paste(const QModelIndex &from, const QString &text)
{
    const QStringList lines = QString(text).remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
    // A spreadsheet ends the last line too: that is no further row.
    const int count = lines.size() - (lines.last().isEmpty() ? 1 : 0);
    for (int row = 0; row < count && from.row() + row < Rows; ++row) {
        const QStringList cells = lines[row].split(QLatin1Char('\t'));
        for (int column = 0; column < cells.size() && from.column() + column < columnCount(); ++column)
            setData(from.sibling(from.row() + row, from.column() + column), cells[column].trimmed());
    }
}

QVariant CompensationModel::data(const QModelIndex &index, int role) const
{
    if (role != Qt::BackgroundRole || !index.isValid())
        return QStandardItemModel::data(index, role);
    double ignored = 0;
    const int firstColumn = index.column() < Negative ? Positive : Negative;
    const bool wrong =
        isPair(index.row(), firstColumn) && !NumberInput::read(text(index.row(), index.column()), ignored);
    return wrong ? wrongCell : QVariant();
}
