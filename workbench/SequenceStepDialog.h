// SPDX-License-Identifier: MIT
#pragma once

#include "session/AxisDescription.h"
#include "session/Sequence.h"

#include <QDialog>

#include <memory>

namespace Ui {
class SequenceStepDialog;
}

/** Asks for one step of a sequence. GUI thread. */
class SequenceStepDialog final : public QDialog
{
    Q_OBJECT

public:
    /** `axes`: those that can be chosen; an axis of the step that is not among them can be kept. */
    SequenceStepDialog(
        const SequenceStep &step, const Positions &positions, const QVector<AxisDescription> &axes, QWidget *parent);
    ~SequenceStepDialog() override;

    SequenceStep step() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void showFields();
    void fillKinds();
    SequenceStep::Kind kind() const;
    QString unit() const;

    std::unique_ptr<Ui::SequenceStepDialog> ui;
    const QVector<AxisDescription> m_axes;
};
