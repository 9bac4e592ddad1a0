// SPDX-License-Identifier: MIT
#include "widgets/TDoubleSpinBox.h"

#include <algorithm>

namespace {

const QLatin1Char comma(',');

/**
 * Whether the text that has just come in, up to `end`, could mean thousands. Texts on show have no comma, so any comma
 * is new.
 */
bool mayHaveGroups(const QString &input, int end)
{
    const int first = input.indexOf(comma);
    if (first < 0)
        return false;
    const auto *const begin = input.begin() + first + 1;
    const auto *const behind =
        std::find_if(begin, input.begin() + std::max(first + 1, end), [](QChar each) { return !each.isDigit(); });
    return behind - begin == 3 || input.count(comma) > 1;
}

} // namespace

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
    if (mayHaveGroups(input, pos))
        return QValidator::Invalid;
    input.replace(comma, QLatin1Char('.'));
    return QDoubleSpinBox::validate(input, pos);
}
