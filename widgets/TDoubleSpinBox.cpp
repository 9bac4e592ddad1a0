// SPDX-License-Identifier: MIT
#include "widgets/TDoubleSpinBox.h"

TDoubleSpinBox::TDoubleSpinBox(QWidget *parent)
    : QDoubleSpinBox(parent)
{
    setLocale(QLocale::c());
}

QString TDoubleSpinBox::textFromValue(double value) const
{
    QString text = QString::number(value, 'f', 6);
    if (!text.endsWith(QLatin1Char('0')))
        return text;
    while (text.endsWith(QLatin1Char('0')))
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text;
}

QValidator::State TDoubleSpinBox::validate(QString &input, int &pos) const
{
    input.replace(QLatin1Char(','), QLatin1Char('.'));
    return QDoubleSpinBox::validate(input, pos);
}
