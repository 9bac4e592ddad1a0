// SPDX-License-Identifier: MIT
#pragma once

#include "session/Recorder.h"

#include <QAbstractButton>

class RecorderPlot;

/** One axis beside the plots: whether it is shown, and its position over its velocity, now and at the cursor. */
class AxisRow final : public QAbstractButton
{
    Q_OBJECT

public:
    /** `plot`: has the colours. */
    AxisRow(const AxisDescription &axis, const RecorderPlot *plot, QWidget *parent = nullptr);

    int axis() const { return m_axis.index; }
    /** `isCurrent`: the axis still answers. */
    void setReadings(const Sample &now, bool isCurrent, const std::optional<Sample> &cursor);
    /** What the row shows: position and velocity now, then at the cursor. */
    QStringList texts() const { return m_texts; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const AxisDescription m_axis;
    const RecorderPlot *m_plot;
    QStringList m_texts;
    bool m_isCurrent = true;
};
