// SPDX-License-Identifier: MIT
#include "widgets/TDoubleSpinBox.h"

#include <QRegularExpression>

TDoubleSpinBox::TDoubleSpinBox(QWidget *parent)
    : QDoubleSpinBox(parent)
{
    setLocale(QLocale::c());
}

QString TDoubleSpinBox::textFromValue(double value) const
{
    static const QRegularExpression trailingZeros(QStringLiteral("(\\.){0,1}0+$"));
    return QString::number(value, 'f', 6).remove(trailingZeros);
}

QValidator::State TDoubleSpinBox::validate(QString &input, int &pos) const
{
    input.replace(QLatin1Char(','), QLatin1Char('.'));
    return QDoubleSpinBox::validate(input, pos);
}
