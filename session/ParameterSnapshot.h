// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverRecords.h"

#include <QDateTime>
#include <QJsonObject>
#include <QMetaType>
#include <QString>
#include <QVector>

#include <optional>

/** What the motor parameters and the compensation of an axis were at one time. What could not be read is unset. */
struct ParameterSnapshot {
    enum Why { Connected, Written, ByHand, BeforeRestore };
    /** Expected and actual positions in turn. */
    using Pairs = QVector<double>;

    QDateTime time;     // UTC, milliseconds
    QString controller; // serial number
    int axis = 0;       // from 0
    Why why = ByHand;
    std::optional<MotorParams> params{};
    std::optional<bool> compensation{};
    std::optional<Pairs> positive{};
    std::optional<Pairs> negative{};

    bool isOfSameAxis(const ParameterSnapshot &other) const
    {
        return axis == other.axis && controller == other.controller;
    }
    /** Whether both are the same one, not only of the same values. */
    bool isSame(const ParameterSnapshot &other) const { return time == other.time && isOfSameAxis(other); }
    bool hasSameValues(const ParameterSnapshot &other) const;

    QJsonObject toJson() const;
    /** Nothing for what is no snapshot. */
    static std::optional<ParameterSnapshot> fromJson(const QJsonObject &object);
};
Q_DECLARE_METATYPE(ParameterSnapshot)

/** One value of a snapshot. */
struct ParameterField {
    enum Unit { None, Length, Speed, Acceleration, Pulses };

    const char *key; // in files
    Unit unit;
    /** A number, a text, a truth value or a list of pairs; undefined when it is not known, null for no finite number.
     */
    QJsonValue (*get)(const ParameterSnapshot &snapshot);
};

/** Every value of a snapshot, in the order in which it is shown: those of the motor parameters, then the compensation.
 */
const QVector<ParameterField> &parameterFields();

/** The keys of the fields in which two snapshots differ. A value that is known in one of them alone counts. */
QVector<int> differences(const ParameterSnapshot &one, const ParameterSnapshot &other);

/** The unit of the axis's lengths, "mm" or "°"; "" when the parameters are not known. */
QString lengthUnitOf(const ParameterSnapshot &snapshot);
