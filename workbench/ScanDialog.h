// SPDX-License-Identifier: MIT
#pragma once

#include "session/AxisDescription.h"
#include "session/Sequence.h"

#include <QDialog>

#include <memory>

namespace Ui {
class ScanDialog;
}

/** Asks for a scan of one or two axes, and says how many steps it makes. GUI thread. */
class ScanDialog final : public QDialog
{
    Q_OBJECT

public:
    /** `axes`: at least one. */
    ScanDialog(const QVector<AxisDescription> &axes, QWidget *parent);
    ~ScanDialog() override;

    Scan scan() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void showCount();

    std::unique_ptr<Ui::ScanDialog> ui;
    const QVector<AxisDescription> m_axes;
};
