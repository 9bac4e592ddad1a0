// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QStyledItemDelegate>

/** Draws the rows of the table of differences: values with their units, and a mark where the two differ. */
class DifferenceDelegate final : public QStyledItemDelegate
{
public:
    enum Role {
        UnitRole = Qt::UserRole, ///< text behind the value
        ChangedRole,             ///< whether the row's values differ
    };
    struct Colours {
        QColor text;
        QColor quiet;
        QColor mark;
        QColor ground; // of a row that differs
    };

    using QStyledItemDelegate::QStyledItemDelegate;

    Colours colours;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
