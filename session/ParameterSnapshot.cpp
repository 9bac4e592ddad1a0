// SPDX-License-Identifier: MIT
#include "session/ParameterSnapshot.h"

#include "session/AxisDescription.h"

#include <QJsonArray>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <type_traits>

namespace {

constexpr const char *whyWords[] = {"connected", "written", "byHand", "beforeRestore"};
constexpr int mostPairs = 4096;

// ---- Fields of the record: each is read and written by its type

template <typename Number>
QJsonValue toValue(const Number &number)
{
    if constexpr (std::is_floating_point_v<Number>)
        return std::isfinite(number) ? QJsonValue(number) : QJsonValue(QJsonValue::Null);
    else
        return double(number);
}

template <size_t length>
QJsonValue toValue(const char (&text)[length])
{
    return QString::fromLatin1(text, int(qstrnlen(text, length)));
}

template <typename Number>
bool fromValue(const QJsonValue &value, Number &number)
{
    if constexpr (std::is_floating_point_v<Number>) {
        if (value.isNull()) {
            number = std::numeric_limits<Number>::quiet_NaN();
            return true;
        }
    }
    const double read = value.toDouble();
    if (!value.isDouble())
        return false;
    if constexpr (!std::is_floating_point_v<Number>) {
        if (read != std::floor(read) || read < double(std::numeric_limits<Number>::min()) ||
            read > double(std::numeric_limits<Number>::max()))
            return false;
    }
    number = Number(read);
    return true;
}

template <size_t length>
bool fromValue(const QJsonValue &value, char (&text)[length])
{
    const QByteArray bytes = value.toString().toLatin1();
    if (!value.isString() || bytes.size() > int(length))
        return false;
    std::memset(text, 0, length);
    std::memcpy(text, bytes.constData(), size_t(bytes.size()));
    return true;
}

struct RecordField {
    ParameterField field;
    bool (*set)(const QJsonValue &value, MotorParams &params);
};

template <auto member>
constexpr RecordField of(const char *key, ParameterField::Unit unit = ParameterField::None)
{
    return {
        {key, unit,
         [](const ParameterSnapshot &snapshot) {
             return snapshot.params ? toValue((*snapshot.params).*member) : QJsonValue(QJsonValue::Undefined);
         }},
        [](const QJsonValue &value, MotorParams &params) { return fromValue(value, params.*member); }};
}

constexpr RecordField recordFields[] = {
    of<&MotorParams::modelName>("modelName"),
    of<&MotorParams::serialNumber>("serialNumber"),
    of<&MotorParams::pulseOneCircle>("pulsesPerTurn"),
    of<&MotorParams::dispOneCircle>("lead", ParameterField::Length),
    of<&MotorParams::restoreSpeed>("homingSpeed", ParameterField::Speed),
    of<&MotorParams::moveType>("stageType"),
    of<&MotorParams::unitType>("unitType"),
    of<&MotorParams::positivePolarity>("positiveLimitPolarity"),
    of<&MotorParams::negativePolarity>("negativeLimitPolarity"),
    of<&MotorParams::originPolarity>("originPolarity"),
    of<&MotorParams::phaseDirction>("movingDirection"),
    of<&MotorParams::limitDirection>("limitDirection"),
    of<&MotorParams::optOrder>("optoOrder"),
    of<&MotorParams::optNum>("optoCount"),
    of<&MotorParams::zeroOptWidth>("originOptoWidth", ParameterField::Pulses),
    of<&MotorParams::maxSpeed>("maxSpeed", ParameterField::Speed),
    of<&MotorParams::maxAcc>("maxAcceleration", ParameterField::Acceleration),
    of<&MotorParams::minPos>("minPosition", ParameterField::Length),
    of<&MotorParams::maxPos>("maxPosition", ParameterField::Length),
    of<&MotorParams::returnTrip>("backlash", ParameterField::Pulses),
    of<&MotorParams::motorPhase>("motorPhases"),
    of<&MotorParams::maxRockerSpeed>("maxJoystickSpeed", ParameterField::Speed),
    of<&MotorParams::modifyDate>("changeDate"),
};

// ---- Compensation

QJsonValue toValue(const std::optional<ParameterSnapshot::Pairs> &pairs)
{
    if (!pairs)
        return QJsonValue::Undefined;
    QJsonArray array;
    for (int k = 0; k + 1 < pairs->size(); k += 2)
        array.append(QJsonArray{toValue(pairs->at(k)), toValue(pairs->at(k + 1))});
    return array;
}

bool fromValue(const QJsonValue &value, std::optional<ParameterSnapshot::Pairs> &pairs)
{
    const QJsonArray array = value.toArray();
    if (!value.isArray() || array.size() > mostPairs)
        return false;
    pairs.emplace();
    for (const QJsonValue &each : array) {
        const QJsonArray pair = each.toArray();
        double expected = 0;
        double actual = 0;
        if (pair.size() != 2 || !fromValue(pair.at(0), expected) || !fromValue(pair.at(1), actual))
            return false;
        *pairs << expected << actual;
    }
    return true;
}

constexpr ParameterField compensationFields[] = {
    {"compensation", ParameterField::None,
     [](const ParameterSnapshot &snapshot) {
         return snapshot.compensation ? QJsonValue(*snapshot.compensation) : QJsonValue(QJsonValue::Undefined);
     }},
    {"positiveTable", ParameterField::Length,
     [](const ParameterSnapshot &snapshot) { return toValue(snapshot.positive); }},
    {"negativeTable", ParameterField::Length,
     [](const ParameterSnapshot &snapshot) { return toValue(snapshot.negative); }},
};

} // namespace

const QVector<ParameterField> &parameterFields()
{
    static const QVector<ParameterField> fields = [] {
        QVector<ParameterField> all;
        for (const RecordField &row : recordFields)
            all.append(row.field);
        for (const ParameterField &field : compensationFields)
            all.append(field);
        return all;
    }();
    return fields;
}

QVector<int> differences(const ParameterSnapshot &one, const ParameterSnapshot &other)
{
    QVector<int> different;
    const QVector<ParameterField> &fields = parameterFields();
    for (int k = 0; k < fields.size(); ++k) {
        if (fields[k].get(one) != fields[k].get(other))
            different.append(k);
    }
    return different;
}

QString lengthUnitOf(const ParameterSnapshot &snapshot)
{
    return snapshot.params ? unitOf(snapshot.params->moveType) : QString();
}

bool ParameterSnapshot::hasSameValues(const ParameterSnapshot &other) const
{
    return differences(*this, other).isEmpty();
}

QJsonObject ParameterSnapshot::toJson() const
{
    QJsonObject object{
        {QStringLiteral("time"), time.toUTC().toString(Qt::ISODateWithMs)},
        {QStringLiteral("controller"), controller},
        {QStringLiteral("axis"), axis + 1},
        {QStringLiteral("why"), QLatin1String(whyWords[why])}};
    QJsonObject record;
    for (const RecordField &row : recordFields) {
        if (params)
            record.insert(QLatin1String(row.field.key), row.field.get(*this));
    }
    object.insert(QStringLiteral("parameters"), params ? QJsonValue(record) : QJsonValue());
    for (const ParameterField &field : compensationFields) {
        const QJsonValue value = field.get(*this);
        object.insert(QLatin1String(field.key), value.isUndefined() ? QJsonValue() : value);
    }
    return object;
}

std::optional<ParameterSnapshot> ParameterSnapshot::fromJson(const QJsonObject &object)
{
    ParameterSnapshot snapshot;
    snapshot.time = QDateTime::fromString(object.value(QStringLiteral("time")).toString(), Qt::ISODateWithMs).toUTC();
    const QJsonValue controller = object.value(QStringLiteral("controller"));
    snapshot.controller = controller.toString();
    const auto *why = std::find_if(std::begin(whyWords), std::end(whyWords), [&](const char *word) {
        return object.value(QStringLiteral("why")).toString() == QLatin1String(word);
    });
    uint8_t axis = 0;
    if (!snapshot.time.isValid() || !controller.isString() || why == std::end(whyWords) ||
        !fromValue(object.value(QStringLiteral("axis")), axis) || axis < 1)
        return std::nullopt;
    snapshot.axis = axis - 1;
    snapshot.why = Why(why - whyWords);

    const QJsonValue record = object.value(QStringLiteral("parameters"));
    if (record.isObject()) {
        const QJsonObject values = record.toObject();
        snapshot.params = MotorParams{};
        for (const RecordField &row : recordFields) {
            if (!row.set(values.value(QLatin1String(row.field.key)), *snapshot.params))
                return std::nullopt;
        }
    } else if (!record.isNull()) {
        return std::nullopt;
    }
    const QJsonValue on = object.value(QStringLiteral("compensation"));
    if (on.isBool())
        snapshot.compensation = on.toBool();
    const QJsonValue positive = object.value(QStringLiteral("positiveTable"));
    const QJsonValue negative = object.value(QStringLiteral("negativeTable"));
    if ((!on.isBool() && !on.isNull()) || (!positive.isNull() && !fromValue(positive, snapshot.positive)) ||
        (!negative.isNull() && !fromValue(negative, snapshot.negative)))
        return std::nullopt;
    return snapshot;
}
