// SPDX-License-Identifier: MIT
#pragma once

#include "session/Recorder.h"

#include <functional>

class QIODevice;

/**
 * A recording as a table, RFC 4180 in UTF-8. Its words are English whatever the program speaks, as programs read them:
 * "time" (ISO 8601 with milliseconds), "seconds" (of the steady clock, since the recording began), for each axis its
 * position and its velocity with their units, and "event". One row for each sample or event, in order; a cell without a
 * value is empty. Any thread.
 */
struct RecordingCsv {
    /** What separates cells, and the mark in numbers. */
    struct Format {
        char separator = ',';
        char decimal = '.';
    };
    static constexpr Format Point{',', '.'};
    static constexpr Format Comma{';', ','};

    /** How far it is, 0 to 1; false ends it. */
    using Progress = std::function<bool(double)>;
    enum class Outcome { Written, Failed, Cancelled };

    /** The rows from `fromUs` to `toUs`. Failed: the device says why. */
    static Outcome write(
        const Recording &recording, qint64 fromUs, qint64 toUs, Format format, QIODevice *device,
        const Progress &progress = {});
    /** As write(), into a file that is there whole or not at all. `error`: why it failed. */
    static Outcome save(
        const Recording &recording, qint64 fromUs, qint64 toUs, Format format, const QString &path, QString *error,
        const Progress &progress = {});

    /** A text as a cell: quoted where it must be, and never a formula. */
    static QByteArray cell(const QString &text, char separator);
    /** "Axis1: drive + (console)". */
    static QString words(const RecorderEvent &event);
};
