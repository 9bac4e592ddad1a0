// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverRecords.h"

#include <QByteArray>
#include <QString>

/** The text in a 32-byte field of the library: up to the first zero, all 32 bytes when there is none. Never null. */
inline QString fromLibraryText(const char (&field)[MOVER_TEXT_LENGTH])
{
    return QString::fromLatin1(field, int(qstrnlen(field, MOVER_TEXT_LENGTH)));
}

/** A zeroed buffer for one of the library's text getters. */
class LibraryText final
{
public:
    char *data() { return m_buffer; }
    static constexpr int length() { return MOVER_TEXT_LENGTH; }
    QString toString() const { return fromLibraryText(m_buffer); }

private:
    char m_buffer[MOVER_TEXT_LENGTH] = {};
};
