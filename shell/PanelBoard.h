// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

class MoverControlWidget;
class QWidget;

/** Lays out the axis panels in the content area: two columns, row by row, in the order of creation. */
class PanelBoard final
{
public:
    /** `content` holds the panels as children. */
    explicit PanelBoard(QWidget *content);

    /** Adds a child of the content area at the end and lays out the grid again. */
    void add(MoverControlWidget *panel);
    /** Deletes the panel once control returns to the event loop, and lays out the grid again. */
    void remove(MoverControlWidget *panel);
    void clear();

    /** Shows nothing but this panel, enlarged. */
    void expand(MoverControlWidget *panel);
    /** Shows every panel again, this one at its small size. */
    void collapse(MoverControlWidget *panel);
    void relay();

    int count() const { return m_panels.size(); }
    /** Null when no panel has that axis name. */
    MoverControlWidget *find(const QString &axisName) const;
    const QList<MoverControlWidget *> &panels() const { return m_panels; }

private:
    QWidget *m_content;
    QList<MoverControlWidget *> m_panels;
};
