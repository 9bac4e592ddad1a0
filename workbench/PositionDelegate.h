// SPDX-License-Identifier: MIT
#pragma once

#include "workbench/SequenceColours.h"

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

/** Paints the table of positions with the two buttons of each row, which are no widgets: a table may have many rows. */
class PositionDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    PositionDelegate(const SequenceColours *colours, QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    static bool isButton(const QModelIndex &index);

signals:
    void signal_clicked(const QModelIndex &index);

protected:
    bool editorEvent(
        QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
        const QModelIndex &index) override;

private:
    static QRect buttonOf(const QRect &cell);

    const SequenceColours *const m_colours;
    QPersistentModelIndex m_pressed;
};
