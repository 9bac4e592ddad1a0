// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <algorithm>

/** Whether a text has a Chinese character in it, or the full-width punctuation that goes with them. */
inline bool isChinese(const QString &text)
{
    return std::any_of(text.cbegin(), text.cend(), [](QChar character) {
        const ushort code = character.unicode();
        return (code >= 0x3000 && code <= 0x303F) || (code >= 0x3400 && code <= 0x9FFF) ||
               (code >= 0xFF00 && code <= 0xFFEF);
    });
}
