// SPDX-License-Identifier: MIT
#include "session/RecordingCsv.h"

#include "device/SerialComDev.h"
#include "session/BoardFailures.h"
#include "session/CsvCell.h"
#include "session/SequenceFiles.h"

#include <QDateTime>
#include <QSaveFile>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

constexpr int flushAt = 1 << 16;

/** The fewest digits that give the same number again. */
QByteArray number(double value, char decimal)
{
    if (!std::isfinite(value))
        return {};
    char text[32];
    auto *const end = std::to_chars(text, text + sizeof text, value).ptr;
    QByteArray result(text, int(end - text));
    return result.replace('.', decimal);
}

QByteArray fixed(double value, int digits, char decimal)
{
    return QByteArray::number(value, 'f', digits).replace('.', decimal);
}

/** ISO 8601 with milliseconds and the offset from UTC. Rows mostly share a second, and making its text takes long. */
class TimeText final
{
public:
    QByteArray of(qint64 wallMs)
    {
        const qint64 seconds = wallMs >= 0 ? wallMs / 1000 : (wallMs - 999) / 1000;
        if (seconds != m_seconds || m_head.isEmpty()) {
            m_seconds = seconds;
            const QDateTime time = QDateTime::fromMSecsSinceEpoch(seconds * 1000);
            m_head = time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.")).toLatin1();
            const int offset = time.offsetFromUtc() / 60;
            m_tail = QStringLiteral("%1%2:%3")
                         .arg(QLatin1String(offset < 0 ? "-" : "+"))
                         .arg(std::abs(offset) / 60, 2, 10, QLatin1Char('0'))
                         .arg(std::abs(offset) % 60, 2, 10, QLatin1Char('0'))
                         .toLatin1();
        }
        return m_head + QByteArray::number(wallMs - seconds * 1000).rightJustified(3, '0') + m_tail;
    }

private:
    qint64 m_seconds = 0;
    QByteArray m_head;
    QByteArray m_tail;
};

struct Word {
    int code;
    const char *text;
};

constexpr Word commands[] = {
    {OPERATION_TYPE_MOVE, "move"}, {OPERATION_TYPE_DRIVE, "drive"}, {OPERATION_TYPE_JOG, "jog"},
    {OPERATION_TYPE_LOOP, "loop"}, {OPERATION_TYPE_HOME, "home"},   {OPERATION_TYPE_STOP, "stop"},
};

constexpr const char *ends[] = {
    "finished",           "stopped",       "stopped on a panel", "stopped with all", "started by the console",
    "parameters written", "refused",       "negative limit",     "positive limit",   "not at its target",
    "not homed",          "does not move", "beyond the travel",  "no answer",        "disconnected",
    "panel closed",       "joystick",      "program closed",
};
static_assert(sizeof(ends) / sizeof(*ends) == SequenceEnd::Quit + 1);

QString endWords(const SequenceEnd &end)
{
    const QString why = QLatin1String(ends[end.reason]);
    return end.axis < 0 ? why : AxisDescription::nameOf(end.axis) + QStringLiteral(": ") + why;
}

template <typename Row, std::size_t Count>
QString wordOf(const Row (&rows)[Count], int code, const char *otherwise)
{
    const auto *const row =
        std::find_if(std::begin(rows), std::end(rows), [code](const Row &each) { return each.code == code; });
    return QLatin1String(row == std::end(rows) ? otherwise : row->text);
}

QString commandWords(const RecorderEvent &event)
{
    static constexpr const char *sources[] = {"panel", "console", "stop all", "sequence"};
    const char *sign = event.direction > 0 ? " +" : event.direction < 0 ? " -" : "";
    return QStringLiteral("%1%2 (%3)")
        .arg(wordOf(commands, event.type, "command"), QLatin1String(sign), QLatin1String(sources[event.source]));
}

} // namespace

QByteArray RecordingCsv::cell(const QString &text, char separator)
{
    QByteArray bytes = text.toUtf8();
    if (CsvCell::isLive(text))
        bytes.prepend('\'');
    const bool isQuoted = std::any_of(bytes.begin(), bytes.end(), [separator](char each) {
        return each == separator || each == '"' || each == '\r' || each == '\n' || each == ',' || each == ';';
    });
    return isQuoted ? '"' + bytes.replace('"', "\"\"") + '"' : bytes;
}

QString RecordingCsv::words(const RecorderEvent &event)
{
    QString text;
    switch (event.kind) {
    case RecorderEvent::Command:
        text = commandWords(event);
        break;
    case RecorderEvent::Arrived:
        text = QStringLiteral("arrived");
        break;
    case RecorderEvent::Stopped:
        text = QStringLiteral("stopped");
        break;
    case RecorderEvent::Homed:
        text = QStringLiteral("homed");
        break;
    case RecorderEvent::Limit:
        text = event.direction > 0 ? QStringLiteral("positive limit") : QStringLiteral("negative limit");
        break;
    case RecorderEvent::Failure:
        if (event.type == RecorderEvent::BoardMessage)
            text = wordOf(boardFailures, event.status, "board message %1")
                       .replace(QLatin1String("%1"), QString::number(event.value));
        else if (event.type != RecorderEvent::OptoFault)
            text = QStringLiteral("refused %1: %2").arg(event.status).arg(commandWords(event));
        else
            text = event.direction > 0   ? QStringLiteral("positive opto-coupler failed")
                   : event.direction < 0 ? QStringLiteral("negative opto-coupler failed")
                                         : QStringLiteral("origin opto-coupler failed");
        break;
    case RecorderEvent::LinkLost:
        text = QStringLiteral("link lost");
        break;
    case RecorderEvent::LinkBack:
        text = QStringLiteral("link back after %1 s").arg(double(event.lastedUs) / 1e6, 0, 'f', 1);
        break;
    case RecorderEvent::StepBegun:
        text = QStringLiteral("sequence, step %1: ").arg(event.sequence->line + 1) +
               SequenceFiles::words(event.sequence->step);
        break;
    case RecorderEvent::SequenceEnded:
        text = QStringLiteral("sequence, at step %1: ").arg(event.sequence->line + 1) + endWords(*event.sequence->end);
        break;
    }
    return event.axis < 0 ? text : AxisDescription::nameOf(event.axis) + QStringLiteral(": ") + text;
}

RecordingCsv::Outcome RecordingCsv::write(
    const Recording &recording, qint64 fromUs, qint64 toUs, Format format, QIODevice *device, const Progress &progress)
{
    const char comma = format.separator;
    const int axes = recording.axes.size();
    QByteArray rows = "\xEF\xBB\xBFtime"; // spreadsheets take it for UTF-8 by the mark at its beginning
    rows += comma + QByteArrayLiteral("seconds");
    for (const char *what : {" position (%1)", " velocity (%1/s)"}) {
        for (const Recording::Axis &axis : recording.axes)
            rows += comma + cell(axis.description.name() + QString::fromLatin1(what).arg(axis.description.unit), comma);
    }
    rows += comma + QByteArrayLiteral("event\r\n");

    QVector<TrackView::Reader> readers;
    for (const Recording::Axis &axis : recording.axes)
        readers.append(TrackView::Reader(axis.samples, fromUs));
    const auto *event = std::lower_bound(
        recording.events.begin(), recording.events.end(), fromUs,
        [](const RecorderEvent &each, qint64 us) { return each.us < us; });
    const qint64 startUs = recording.startUs();
    TimeText time;
    const auto flush = [&] {
        const bool isWritten = device->write(rows) == rows.size();
        rows.clear();
        return isWritten;
    };

    for (;;) {
        int next = -1;
        for (int axis = 0; axis < axes; ++axis) {
            if (!readers[axis].atEnd() && (next < 0 || readers[axis].us() < readers[next].us()))
                next = axis;
        }
        const bool isEvent = event != recording.events.end() && (next < 0 || event->us <= readers[next].us());
        if (!isEvent && next < 0)
            break;
        const qint64 us = isEvent ? event->us : readers[next].us();
        if (us > toUs)
            break;
        rows += time.of(recording.wallMs(us)) + comma + fixed(double(us - startUs) / 1e6, 6, format.decimal);
        if (isEvent) {
            rows += QByteArray(2 * axes + 1, comma) + cell(words(*event), comma);
            ++event;
        } else {
            const Sample sample = readers[next].sample();
            rows += QByteArray(next + 1, comma) + number(sample.position, format.decimal);
            rows += QByteArray(axes, comma);
            if (!sample.isAfterGap)
                rows += fixed(sample.velocity, 6, format.decimal);
            rows += QByteArray(axes - next, comma);
            readers[next].next();
        }
        rows += "\r\n";
        if (rows.size() < flushAt)
            continue;
        if (!flush())
            return Outcome::Failed;
        if (progress && !progress(double(us - fromUs) / double(std::max<qint64>(1, toUs - fromUs))))
            return Outcome::Cancelled;
    }
    return flush() ? Outcome::Written : Outcome::Failed;
}

RecordingCsv::Outcome RecordingCsv::save(
    const Recording &recording, qint64 fromUs, qint64 toUs, Format format, const QString &path, QString *error,
    const Progress &progress)
{
    QSaveFile file(path);
    Outcome outcome = Outcome::Failed;
    // Unbuffered: commit() does not notice when the disk takes only a part of the buffer.
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        outcome = write(recording, fromUs, toUs, format, &file, progress);
    if (outcome == Outcome::Written && !file.commit())
        outcome = Outcome::Failed;
    if (outcome == Outcome::Failed)
        *error = file.errorString();
    return outcome;
}
