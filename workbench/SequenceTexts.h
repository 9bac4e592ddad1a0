// SPDX-License-Identifier: MIT
#pragma once

#include "session/SequenceFiles.h"
#include "session/SequenceRunner.h"

#include <QString>

#include <optional>

/** The words of positions and sequences. Axes are named, and have the units of the connected controller's. */
namespace SequenceTexts {

/** A position: three digits behind the point, or as many as it needs, up to six. */
QString number(double value);
/** The same without zeros at its end. */
QString plain(double value);
/** What was typed: a comma is a point, unless it may mean thousands. */
std::optional<double> toNumber(const QString &text);
QString noNumber(const QString &text);
/** "1 min 12 s". */
QString time(double seconds);
/** "12.500 mm". */
QString place(int axis, double value);

QString kind(SequenceStep::Kind kind);
/** What a step is about: "Axis1 +5.000 mm". */
QString where(const SequenceStep &step);
/** All of it in one line: "Move to Axis2 60.000 °". */
QString step(const SequenceStep &step);
/** "2 mm/s", "as set", or a dash. */
QString speed(const SequenceStep &step);
QString wait(const SequenceStep &step);

QString fault(const SequenceFault &fault);
/** Why it is over, without its line. */
QString end(const SequenceEnd &end);
/** The same with the name of the sequence, and its line where it did not get to its end. */
QString ended(const QString &name, const SequenceEnd &end);
QString fileFault(const SequenceFileFault &fault);

} // namespace SequenceTexts
