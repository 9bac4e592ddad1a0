// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/** What spreadsheets make of a cell. */
namespace CsvCell {

/** Whether a spreadsheet would take the text for a formula, also within quotes. An apostrophe in front prevents it. */
inline bool isLive(const QString &text)
{
    return !text.isEmpty() && QStringLiteral("=+-@\t\r\n").contains(text.at(0));
}

} // namespace CsvCell
