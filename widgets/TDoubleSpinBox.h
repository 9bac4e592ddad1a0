// SPDX-License-Identifier: MIT
#pragma once

#include <QDoubleSpinBox>

/**
 * A number field that shows no trailing zeros (1.5, 100, 0.125) and always uses a decimal point, whatever the locale. A
 * typed decimal comma becomes a point: as a group separator it would turn 2,25 into 225. Text that is pasted or dropped
 * and may mean thousands (1,000) is refused.
 */
class TDoubleSpinBox final : public QDoubleSpinBox
{
    Q_OBJECT

public:
    explicit TDoubleSpinBox(QWidget *parent = nullptr);

    QString textFromValue(double value) const override;
    QValidator::State validate(QString &input, int &pos) const override;
};
