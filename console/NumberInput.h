// SPDX-License-Identifier: MIT
#pragma once

#include <QStyle>
#include <QVariant>
#include <QWidget>

#include <cmath>
#include <cstdint>

/** Numbers as the console's fields take them: no input is refused, what is no number counts as 0 and is marked. */
namespace NumberInput {

// Each returns whether the text is a number in the range of its type; the value is 0 when it is not. "inf" and "nan"
// are none.

inline bool read(const QString &text, double &value)
{
    bool ok = false;
    value = text.toDouble(&ok);
    ok = ok && std::isfinite(value);
    if (!ok)
        value = 0;
    return ok;
}
inline bool read(const QString &text, int32_t &value)
{
    bool ok = false;
    value = text.toInt(&ok);
    return ok;
}
inline bool read(const QString &text, uint32_t &value)
{
    bool ok = false;
    value = text.toUInt(&ok);
    return ok;
}
inline bool read(const QString &text, int16_t &value)
{
    bool ok = false;
    value = text.toShort(&ok);
    return ok;
}
inline bool read(const QString &text, uint16_t &value)
{
    bool ok = false;
    value = text.toUShort(&ok);
    return ok;
}

/** Shows that the field does not hold what it should, or takes that back; the style sheet looks at the property. */
inline void mark(QWidget *field, bool wrong)
{
    if (field->property("wrong").toBool() == wrong)
        return;
    field->setProperty("wrong", wrong);
    field->style()->unpolish(field);
    field->style()->polish(field);
}

} // namespace NumberInput
