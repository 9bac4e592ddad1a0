// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractTableModel>
#include <QVector>

#include <algorithm>

/** One change of rows: those from `first` on that go, and those that come in their place. */
template <typename Row>
struct Splice {
    int first = 0;
    QVector<Row> before;
    QVector<Row> after;

    /** What makes `after` of `before`; it holds the part that differs only. */
    static Splice between(const QVector<Row> &before, const QVector<Row> &after)
    {
        const int shorter = std::min(before.size(), after.size());
        int first = 0;
        while (first < shorter && before.at(first) == after.at(first))
            ++first;
        int same = 0;
        while (same < shorter - first && before.at(before.size() - 1 - same) == after.at(after.size() - 1 - same))
            ++same;
        return {first, before.mid(first, before.size() - first - same), after.mid(first, after.size() - first - same)};
    }
    Splice reversed() const { return {first, after, before}; }
};

/** A table whose rows are changed by splices only. */
template <typename Row>
class SplicedTable : public QAbstractTableModel
{
public:
    using QAbstractTableModel::QAbstractTableModel;

    const QVector<Row> &rows() const { return m_rows; }
    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : m_rows.size(); }

    void apply(const Splice<Row> &splice)
    {
        const int common = std::min(splice.before.size(), splice.after.size());
        std::copy_n(splice.after.cbegin(), common, m_rows.begin() + splice.first);
        if (common > 0)
            emit dataChanged(index(splice.first, 0), index(splice.first + common - 1, columnCount() - 1));
        const int at = splice.first + common;
        if (const int gone = splice.before.size() - common; gone > 0) {
            beginRemoveRows({}, at, at + gone - 1);
            m_rows.remove(at, gone);
            endRemoveRows();
        }
        if (const int come = splice.after.size() - common; come > 0) {
            beginInsertRows({}, at, at + come - 1);
            m_rows.insert(at, come, Row());
            std::copy(splice.after.cbegin() + common, splice.after.cend(), m_rows.begin() + at);
            endInsertRows();
        }
    }
    void setRows(const QVector<Row> &rows)
    {
        beginResetModel();
        m_rows = rows;
        endResetModel();
    }

private:
    QVector<Row> m_rows;
};
