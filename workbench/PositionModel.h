// SPDX-License-Identifier: MIT
#pragma once

#include "session/Sequence.h"
#include "workbench/SplicedTable.h"

/** The named positions as a table: name, an axis a column, and the two buttons of each row. GUI thread. */
class PositionModel final : public SplicedTable<NamedPosition>
{
    Q_OBJECT

public:
    explicit PositionModel(QObject *parent);

    void setAxes(const QVector<int> &axes);
    int axisCount() const { return m_axes.size(); }
    /** Whether names and numbers can be changed. */
    void setEditable(bool isEditable);
    /** Whether rows can be gone to, and taken. */
    void setUsable(bool canGo, bool canTake);

    int takeColumn() const { return 1 + m_axes.size(); }
    int goColumn() const { return 2 + m_axes.size(); }

    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

    /** Reads the words again. */
    void retranslate();

signals:
    /** A row was changed in place; it is not, until it is spliced. */
    void signal_edited(int row, const NamedPosition &position);
    /** What was typed cannot be. */
    void signal_refused(const QString &reason);

private:
    QVector<int> m_axes;
    bool m_isEditable = false;
    bool m_canGo = false;
    bool m_canTake = false;
};
