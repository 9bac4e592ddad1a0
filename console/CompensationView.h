// SPDX-License-Identifier: MIT
#pragma once

#include <QTableView>

/** The view of a CompensationModel: cells are copied, pasted and emptied as in a spreadsheet. */
class CompensationView final : public QTableView
{
    Q_OBJECT

public:
    using QTableView::QTableView;

    /** Puts the clipboard's text in from the upper left cell of the selection on; without one from the first cell. */
    void paste();
    /** Puts the selected cells into the clipboard, tab-separated. */
    void copy() const;
    /** Empties the selected cells. */
    void clearSelected();

protected:
    void keyPressEvent(QKeyEvent *event) override;
};
