// SPDX-License-Identifier: MIT
#include "session/SequenceFiles.h"

#include "session/AxisDescription.h"
#include "session/CsvCell.h"
#include "session/SequenceRunner.h"
#include "session/SmallFile.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace {

constexpr int sequencesVersion = 1;
constexpr int mostAxes = 8;
constexpr int longestText = 1000;

/** What a kind of step is called in files, and which fields it has; their order is that of the columns. */
enum Field { Axis = 1, Value = 2, Speed = 4, Delay = 8, Text = 16, Passes = 32 };
struct KindRow {
    SequenceStep::Kind kind;
    const char *word;
    int fields;
};
constexpr KindRow kinds[] = {
    {SequenceStep::GoTo, "go to", Text | Delay},
    {SequenceStep::MoveTo, "move to", Axis | Value | Speed | Delay},
    {SequenceStep::MoveBy, "move by", Axis | Value | Speed | Delay},
    {SequenceStep::Home, "home", Axis | Delay},
    {SequenceStep::Wait, "wait", Value},
    {SequenceStep::Ask, "ask", Text},
    {SequenceStep::Repeat, "repeat", Passes},
    {SequenceStep::SetSpeed, "set speed", Axis | Value},
};
static_assert(sizeof(kinds) / sizeof(*kinds) == SequenceStep::KindCount);

struct Column {
    int field;
    const char *name;
};
constexpr Column columns[] = {{Axis, "axis"}, {Value, "value"}, {Speed, "speed"}, {Delay, "wait"},
                              {Text, "text"}, {Passes, "from"}, {Passes, "count"}};
constexpr int columnCount = 1 + int(sizeof(columns) / sizeof(*columns)); // behind the kind

using Fault = SequenceFileFault;

bool refuse(Fault *fault, Fault::Kind kind, int line)
{
    *fault = {kind, line};
    return false;
}

QString number(double value)
{
    return QString::number(value, 'g', 12);
}

/** "all", or an axis as users see it. */
QString axisText(int axis)
{
    return axis == SequenceStep::AllAxes ? QStringLiteral("all") : AxisDescription::nameOf(axis);
}

std::optional<int> axisFrom(const QString &text, bool allowsAll)
{
    if (allowsAll && text == QLatin1String("all"))
        return SequenceStep::AllAxes;
    for (int axis = 0; axis < mostAxes; ++axis) {
        if (text == AxisDescription::nameOf(axis))
            return axis;
    }
    return std::nullopt;
}

/** The texts of a step by the names of its columns; what is as it usually is is left out. */
QMap<QString, QString> toTexts(const SequenceStep &step)
{
    const KindRow &kind = kinds[step.kind];
    QMap<QString, QString> texts;
    const auto put = [&](int field, const char *name, const QString &text) {
        if ((kind.fields & field) != 0)
            texts.insert(QLatin1String(name), text);
    };
    put(Axis, "axis", axisText(step.axis));
    put(Value, "value", number(step.value));
    if (step.speed != 0)
        put(Speed, "speed", number(step.speed));
    if (step.wait != 0)
        put(Delay, "wait", number(step.wait));
    put(Text, "text", step.text);
    put(Passes, "from", QString::number(step.from + 1));
    put(Passes, "count", QString::number(step.count));
    return texts;
}

bool fromTexts(const QString &word, const QMap<QString, QString> &texts, int line, SequenceStep *step, Fault *fault)
{
    const auto *const kind = std::find_if(
        std::begin(kinds), std::end(kinds), [&word](const KindRow &row) { return word == QLatin1String(row.word); });
    if (kind == std::end(kinds))
        return refuse(fault, Fault::Step, line);
    *step = {};
    step->kind = kind->kind;
    bool isSound = true;
    const auto real = [&](const char *name, double *value) {
        const QString text = texts.value(QLatin1String(name));
        if (text.isEmpty())
            return;
        bool isNumber = false;
        *value = text.toDouble(&isNumber);
        isSound = isSound && isNumber && std::isfinite(*value);
    };
    const auto whole = [&](const char *name, int *value) {
        bool isNumber = false;
        *value = texts.value(QLatin1String(name)).toInt(&isNumber);
        isSound = isSound && isNumber;
    };
    const auto has = [kind](int field) { return (kind->fields & field) != 0; };
    if (has(Axis)) {
        const auto axis = axisFrom(texts.value(QStringLiteral("axis")), kind->kind == SequenceStep::Home);
        if (!axis)
            return refuse(fault, Fault::Axis, line);
        step->axis = *axis;
    }
    if (has(Value)) {
        isSound = !texts.value(QStringLiteral("value")).isEmpty();
        real("value", &step->value);
    }
    if (has(Speed))
        real("speed", &step->speed);
    if (has(Delay))
        real("wait", &step->wait);
    if (has(Text))
        step->text = texts.value(QStringLiteral("text")).left(longestText);
    if (has(Passes)) {
        whole("from", &step->from);
        whole("count", &step->count);
        --step->from;
    }
    return isSound || refuse(fault, Fault::Number, line);
}

// ---- CSV -----------------------------------------------------------------------------------------------------------

/** The apostrophe is ours, and not the user's. */
bool isMarked(const QString &text)
{
    return text.startsWith(QLatin1Char('\'')) && (CsvCell::isLive(text.mid(1)) || text.startsWith(QLatin1String("''")));
}

QString quoted(QString text)
{
    bool isNumber = false;
    text.toDouble(&isNumber);
    if (!isNumber && (CsvCell::isLive(text) || isMarked(text)))
        text.prepend(QLatin1Char('\''));
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) && !text.contains(QLatin1Char('\n')) &&
        !text.contains(QLatin1Char('\r')))
        return text;
    return QLatin1Char('"') + text.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
}

QByteArray line(const QStringList &cells)
{
    QStringList quotedCells;
    for (const QString &cell : cells)
        quotedCells.append(quoted(cell));
    return quotedCells.join(QLatin1Char(',')).toUtf8() + "\r\n";
}

struct CsvLine {
    int number; // of the line of the file where it begins, from 1
    QStringList cells;
};

/** Cells may be quoted and then contain anything; lines without cells are passed over. */
QVector<CsvLine> readCsv(const QByteArray &bytes)
{
    QString text = QString::fromUtf8(bytes);
    if (text.startsWith(QChar::ByteOrderMark))
        text.remove(0, 1);
    QVector<CsvLine> lines;
    CsvLine current{1, {}};
    QString cell;
    int number = 1;
    bool isQuoted = false;
    const auto endCell = [&] {
        current.cells.append(isMarked(cell) ? cell.mid(1) : cell);
        cell.clear();
    };
    const auto endLine = [&] {
        endCell();
        if (current.cells.size() > 1 || !current.cells.first().trimmed().isEmpty())
            lines.append(current);
        current = {number, {}};
    };
    for (int k = 0; k < text.size(); ++k) {
        const QChar sign = text.at(k);
        if (sign == QLatin1Char('\n'))
            ++number;
        if (isQuoted) {
            if (sign != QLatin1Char('"')) {
                cell += sign;
            } else if (k + 1 < text.size() && text.at(k + 1) == QLatin1Char('"')) {
                cell += sign;
                ++k;
            } else {
                isQuoted = false;
            }
        } else if (sign == QLatin1Char('"') && cell.isEmpty()) {
            isQuoted = true;
        } else if (sign == QLatin1Char(',')) {
            endCell();
        } else if (sign == QLatin1Char('\n')) {
            endLine();
        } else if (sign != QLatin1Char('\r')) {
            cell += sign;
        }
    }
    endLine();
    return lines;
}

QStringList stepHead()
{
    QStringList head{QStringLiteral("step")};
    for (const Column &column : columns)
        head.append(QLatin1String(column.name));
    return head;
}

bool hasHead(const QVector<CsvLine> &lines, const QStringList &head, Fault *fault)
{
    return (!lines.isEmpty() && lines.first().cells.mid(0, head.size()) == head) ||
           refuse(fault, Fault::NotSuchFile, 0);
}

/** A position that may stand beside those before it. */
bool isSound(const NamedPosition &position, QSet<QString> *names, int line, Fault *fault)
{
    if (position.name.trimmed().isEmpty() || position.name.size() > longestText || names->contains(position.name))
        return refuse(fault, Fault::Name, line);
    names->insert(position.name);
    return true;
}

} // namespace

// ---- JSON ----------------------------------------------------------------------------------------------------------

QByteArray SequenceFiles::toJson(const SequenceDocument &document)
{
    QJsonArray positions;
    for (const NamedPosition &position : document.positions) {
        QJsonObject axes;
        for (auto axis = position.axes.cbegin(); axis != position.axes.cend(); ++axis)
            axes.insert(axisText(axis.key()), axis.value());
        positions.append(QJsonObject{{QStringLiteral("name"), position.name}, {QStringLiteral("axes"), axes}});
    }
    QJsonArray steps;
    for (const SequenceStep &step : document.sequence.steps) {
        QJsonObject object{{QStringLiteral("step"), QLatin1String(kinds[step.kind].word)}};
        const QMap<QString, QString> texts = toTexts(step);
        for (auto text = texts.cbegin(); text != texts.cend(); ++text) {
            const bool isText = text.key() == QLatin1String("text") || text.key() == QLatin1String("axis");
            object.insert(text.key(), isText ? QJsonValue(text.value()) : QJsonValue(text.value().toDouble()));
        }
        steps.append(object);
    }
    return QJsonDocument(QJsonObject{
                             {QStringLiteral("format"), QStringLiteral("mover sequence")},
                             {QStringLiteral("version"), sequencesVersion},
                             {QStringLiteral("name"), document.sequence.name},
                             {QStringLiteral("positions"), positions},
                             {QStringLiteral("steps"), steps}})
        .toJson();
}

std::optional<SequenceDocument> SequenceFiles::fromJson(const QByteArray &text, SequenceFileFault *fault)
{
    *fault = {};
    QJsonParseError error{};
    const QJsonObject whole = QJsonDocument::fromJson(text, &error).object();
    if (whole.value(QStringLiteral("format")).toString() != QLatin1String("mover sequence")) {
        const bool isJson = error.error == QJsonParseError::NoError;
        refuse(fault, Fault::NotSuchFile, isJson ? 0 : text.left(error.offset).count('\n') + 1);
        return std::nullopt;
    }
    if (whole.value(QStringLiteral("version")).toInt() > sequencesVersion) {
        refuse(fault, Fault::Newer, 0);
        return std::nullopt;
    }
    SequenceDocument document;
    document.sequence.name = whole.value(QStringLiteral("name")).toString().left(longestText);
    const QJsonArray positions = whole.value(QStringLiteral("positions")).toArray();
    const QJsonArray steps = whole.value(QStringLiteral("steps")).toArray();
    if (steps.size() > MostSteps || positions.size() > MostSteps) {
        refuse(fault, Fault::TooMany, MostSteps + 1);
        return std::nullopt;
    }
    QSet<QString> names;
    for (const QJsonValue &value : positions) {
        NamedPosition position;
        position.name = value.toObject().value(QStringLiteral("name")).toString();
        const QJsonObject axes = value.toObject().value(QStringLiteral("axes")).toObject();
        const int line = document.positions.size() + 1;
        for (auto axis = axes.constBegin(); axis != axes.constEnd(); ++axis) {
            const auto index = axisFrom(axis.key(), false);
            if (!index || !axis.value().isDouble()) {
                refuse(fault, index ? Fault::Number : Fault::Axis, line);
                return std::nullopt;
            }
            position.axes.insert(*index, axis.value().toDouble());
        }
        if (!isSound(position, &names, line, fault))
            return std::nullopt;
        document.positions.append(position);
    }
    for (const QJsonValue &value : steps) {
        QMap<QString, QString> texts;
        const QJsonObject object = value.toObject();
        for (auto field = object.constBegin(); field != object.constEnd(); ++field)
            texts.insert(field.key(), field->isDouble() ? number(field->toDouble()) : field->toString());
        SequenceStep step;
        if (!fromTexts(texts.value(QStringLiteral("step")), texts, document.sequence.steps.size() + 1, &step, fault))
            return std::nullopt;
        document.sequence.steps.append(step);
    }
    return document;
}

// ---- CSV -----------------------------------------------------------------------------------------------------------

QString SequenceFiles::words(const SequenceStep &step)
{
    const QMap<QString, QString> texts = toTexts(step);
    QStringList words{QLatin1String(kinds[step.kind].word)};
    for (const char *name : {"axis", "value", "text"}) {
        const auto text = texts.constFind(QLatin1String(name));
        if (text != texts.cend())
            words.append(*text);
    }
    return words.join(QLatin1Char(' '));
}

QByteArray SequenceFiles::stepsToCsv(const Sequence &sequence)
{
    QByteArray text = line(stepHead());
    for (const SequenceStep &step : sequence.steps) {
        const QMap<QString, QString> texts = toTexts(step);
        QStringList cells{QLatin1String(kinds[step.kind].word)};
        for (const Column &column : columns)
            cells.append(texts.value(QLatin1String(column.name)));
        text += line(cells);
    }
    return text;
}

std::optional<QVector<SequenceStep>> SequenceFiles::stepsFromCsv(const QByteArray &text, SequenceFileFault *fault)
{
    *fault = {};
    const QVector<CsvLine> lines = readCsv(text);
    if (!hasHead(lines, stepHead(), fault))
        return std::nullopt;
    QVector<SequenceStep> steps;
    for (int k = 1; k < lines.size(); ++k) {
        const CsvLine &each = lines.at(k);
        if (k > MostSteps || each.cells.size() != columnCount) {
            refuse(fault, k > MostSteps ? Fault::TooMany : Fault::Column, each.number);
            return std::nullopt;
        }
        QMap<QString, QString> texts;
        for (int column = 1; column < columnCount; ++column) {
            const Column &known = columns[column - 1];
            const QString &cell = each.cells.at(column);
            texts.insert(QLatin1String(known.name), known.field == Text ? cell : cell.trimmed());
        }
        SequenceStep step;
        if (!fromTexts(each.cells.first().trimmed(), texts, each.number, &step, fault))
            return std::nullopt;
        steps.append(step);
    }
    return steps;
}

QByteArray SequenceFiles::positionsToCsv(const Positions &positions)
{
    int count = 1;
    for (const NamedPosition &position : positions)
        count = std::max(count, position.axes.isEmpty() ? 0 : position.axes.lastKey() + 1);
    QStringList head{QStringLiteral("name")};
    for (int axis = 0; axis < count; ++axis)
        head.append(axisText(axis));
    QByteArray text = line(head);
    for (const NamedPosition &position : positions) {
        QStringList cells{position.name};
        for (int axis = 0; axis < count; ++axis)
            cells.append(position.axes.contains(axis) ? number(position.axes.value(axis)) : QString());
        text += line(cells);
    }
    return text;
}

std::optional<Positions> SequenceFiles::positionsFromCsv(const QByteArray &text, SequenceFileFault *fault)
{
    *fault = {};
    const QVector<CsvLine> lines = readCsv(text);
    if (!hasHead(lines, {QStringLiteral("name")}, fault))
        return std::nullopt;
    const QStringList head = lines.first().cells;
    QVector<int> axes;
    for (int column = 1; column < head.size(); ++column) {
        const auto axis = axisFrom(head.at(column).trimmed(), false);
        if (!axis || axes.contains(*axis)) {
            refuse(fault, Fault::Axis, lines.first().number);
            return std::nullopt;
        }
        axes.append(*axis);
    }
    Positions positions;
    QSet<QString> names;
    for (int k = 1; k < lines.size(); ++k) {
        const CsvLine &each = lines.at(k);
        if (k > MostSteps || each.cells.size() != head.size()) {
            refuse(fault, k > MostSteps ? Fault::TooMany : Fault::Column, each.number);
            return std::nullopt;
        }
        NamedPosition position;
        position.name = each.cells.first().trimmed();
        for (int column = 1; column < each.cells.size(); ++column) {
            const QString cell = each.cells.at(column).trimmed();
            if (cell.isEmpty())
                continue;
            bool isNumber = false;
            const double value = cell.toDouble(&isNumber);
            if (!isNumber || !std::isfinite(value)) {
                refuse(fault, Fault::Number, each.number);
                return std::nullopt;
            }
            position.axes.insert(axes.at(column - 1), value);
        }
        if (!isSound(position, &names, each.number, fault))
            return std::nullopt;
        positions.append(position);
    }
    return positions;
}

QByteArray SequenceFiles::recordsToCsv(const Sequence &sequence, const QVector<SequenceRecord> &records)
{
    QSet<int> moved;
    for (const SequenceRecord &record : records) {
        const QList<int> axes = record.reached.keys();
        moved += QSet<int>(axes.cbegin(), axes.cend());
    }
    QList<int> axes = moved.values();
    std::sort(axes.begin(), axes.end());
    QStringList head{QStringLiteral("line"),  QStringLiteral("pass"), QStringLiteral("step"),
                     QStringLiteral("begin"), QStringLiteral("end"),  QStringLiteral("done")};
    for (const int axis : qAsConst(axes))
        head.append(axisText(axis));
    QByteArray text = line(head);
    for (const SequenceRecord &record : records) {
        QStringList cells{
            QString::number(record.line + 1),
            QString::number(record.pass),
            QLatin1String(kinds[sequence.steps.at(record.line).kind].word),
            record.begin.toString(Qt::ISODateWithMs),
            record.end.toString(Qt::ISODateWithMs),
            record.isDone ? QStringLiteral("yes") : QStringLiteral("no")};
        for (const int axis : qAsConst(axes))
            cells.append(record.reached.contains(axis) ? number(record.reached.value(axis)) : QString());
        text += line(cells);
    }
    return text;
}

// ---- Store ---------------------------------------------------------------------------------------------------------

SequenceStore::SequenceStore(const QString &folder)
    : m_sFolder(folder)
    , m_lock(folder + QStringLiteral("/lock"))
{
    QDir().mkpath(folder);
    m_lock.setStaleLockTime(0); // held as long as the program runs
    m_bReadOnly = !m_lock.tryLock(0) && m_lock.error() == QLockFile::LockFailedError;
}

QString SequenceStore::fileOf(const QString &controller) const
{
    // No serial number is a name that a file system minds.
    return m_sFolder + QLatin1Char('/') + QString::fromLatin1(QUrl::toPercentEncoding(controller, {}, ".~")) +
           QStringLiteral(".json");
}

SequenceStore::Contents SequenceStore::load(const QString &controller) const
{
    const QString path = fileOf(controller);
    const QFileInfo file(path);
    if (!file.exists() && !file.isSymLink())
        return {};
    SequenceFileFault fault;
    const auto document = SequenceFiles::fromJson(SmallFile::read(path, SequenceFiles::MostBytes), &fault);
    if (document)
        return {*document, {}};
    const QString time = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-hhmmss-zzz"));
    const QString aside = path + QStringLiteral(".damaged-") + time;
    const bool isAside = !m_bReadOnly && QFile::rename(path, aside);
    return {{}, QDir::toNativeSeparators(isAside ? aside : path)};
}

bool SequenceStore::save(const QString &controller, const SequenceDocument &document) const
{
    return !m_bReadOnly && SmallFile::save(fileOf(controller), SequenceFiles::toJson(document));
}
