// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QStringList>

#include <iterator>

/** The colours of the page of positions and sequences; the style sheet gives them as one text, in this order. */
struct SequenceColours {
    QColor text, quiet, faint, line, focus, glyph;
    QColor action, running, failed, stop, alarm, warning;
    QColor button, buttonHover, buttonPressed, buttonDisabled;

    void set(const QString &names)
    {
        const QStringList each = names.split(QLatin1Char(' '));
        QColor *const colours[] = {&text,   &quiet,       &faint,         &line,          &focus, &glyph,
                                   &action, &running,     &failed,        &stop,          &alarm, &warning,
                                   &button, &buttonHover, &buttonPressed, &buttonDisabled};
        for (int k = 0; k < each.size() && k < int(std::size(colours)); ++k)
            colours[k]->setNamedColor(each.at(k));
    }
};
