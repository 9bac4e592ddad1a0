// SPDX-License-Identifier: MIT
#pragma once

#include <QStandardItemModel>

#include <array>

/**
 * The compensation table as it is edited: 10 rows of texts, an expected and an actual position for each direction of
 * travel. A cell that is not a number is marked and counts as 0; a pair of empty cells is no pair.
 */
class CompensationModel final : public QStandardItemModel
{
    Q_OBJECT

public:
    static constexpr int Rows = 10;

    /** Numbered by their first column. */
    enum Direction { Positive = 0, Negative = 2 };

    /** One direction's table as the library takes it: expected, actual, expected, actual … */
    struct Pairs {
        std::array<double, std::size_t(2) * Rows> values{};
        int count = 0;
    };

    explicit CompensationModel(QObject *parent = nullptr);

    /** In the order of the expected positions; of two equal ones the lower row counts. */
    Pairs pairs(Direction direction) const;
    /** Fills the rows from the first one on, numbers with 6 significant digits; further rows stay as they are. */
    void show(Direction direction, const Pairs &pairs);
    /** Empties the rows from `firstRow` to the last one. */
    void clearRows(int firstRow);

    /** Puts tab-separated lines in, with `from` as the upper left cell; what reaches beyond the table is left out. */
    void paste(const QModelIndex &from, const QString &text);

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    void retranslate();

private:
    QString text(int row, int column) const { return index(row, column).data().toString().trimmed(); }
    bool isPair(int row, int firstColumn) const;
};
