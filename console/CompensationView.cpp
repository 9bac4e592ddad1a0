// SPDX-License-Identifier: MIT
#include "console/CompensationView.h"

#include "console/CompensationModel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>

namespace {

/** Around all selected cells; empty when there are none. */
QRect boundsOf(const QModelIndexList &cells)
{
    QRect bounds;
    for (const QModelIndex &cell : cells)
        bounds |= QRect(cell.column(), cell.row(), 1, 1);
    return bounds;
}

} // namespace

void CompensationView::paste()
{
    const QRect selected = boundsOf(selectionModel()->selectedIndexes());
    static_cast<CompensationModel *>(model())->paste(
        selected.isEmpty() ? model()->index(0, 0) : model()->index(selected.top(), selected.left()),
        QGuiApplication::clipboard()->text());
}

void CompensationView::copy() const
{
    const QRect selected = boundsOf(selectionModel()->selectedIndexes());
    if (selected.isEmpty())
        return;
    QString text;
    for (int row = selected.top(); row <= selected.bottom(); ++row) {
        for (int column = selected.left(); column <= selected.right(); ++column) {
            const QModelIndex cell = model()->index(row, column);
            text += column == selected.left() ? QString() : QStringLiteral("\t");
            text += selectionModel()->isSelected(cell) ? cell.data().toString() : QString();
        }
        text += QLatin1Char('\n');
    }
    QGuiApplication::clipboard()->setText(text);
}

void CompensationView::clearSelected()
{
    const QModelIndexList cells = selectionModel()->selectedIndexes();
    for (const QModelIndex &cell : cells)
        model()->setData(cell, QVariant());
}

void CompensationView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Paste))
        paste();
    else if (event->matches(QKeySequence::Copy))
        copy();
    else if (event->matches(QKeySequence::Delete))
        clearSelected();
    else
        QTableView::keyPressEvent(event);
}
