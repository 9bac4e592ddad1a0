// SPDX-License-Identifier: MIT
#pragma once

#include "workbench/SequenceColours.h"

#include <QStyledItemDelegate>

/** Paints the steps of a sequence: the one that runs, those that are done, and the one that failed with its reason. */
class StepDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    static constexpr int LineHeight = 40;
    static constexpr int ReasonHeight = 26;

    StepDelegate(const SequenceColours *colours, QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    void paintMark(QPainter *painter, const QPointF &centre, int mark) const;

    const SequenceColours *const m_colours;
};
