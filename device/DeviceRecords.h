// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverRecords.h"

#include <QMetaType>
#include <QObject>
#include <QString>

/**
 * The two records travel as movable types that need construction and destruction, like every other record of the
 * program, although the compiler finds them trivial.
 */
template <typename Record>
class MovableRecordInfo
{
public:
    enum {
        isSpecialized = true,
        isComplex = true,
        isStatic = false,
        isRelocatable = true,
        isLarge = sizeof(Record) > sizeof(void *),
        isPointer = false,
        isIntegral = false,
        isDummy = false,
        sizeOf = sizeof(Record)
    };
};
template <>
class QTypeInfo<MotorStageState> : public MovableRecordInfo<MotorStageState>
{
};
template <>
class QTypeInfo<CONTROLER_STATE> : public MovableRecordInfo<CONTROLER_STATE>
{
};
Q_DECLARE_METATYPE(MotorStageState)
Q_DECLARE_METATYPE(CONTROLER_STATE)

/** Registers MotorStageState and CONTROLER_STATE by name; before the first connection that carries them. */
void registerDeviceRecords();

/** The name of an axis that users see: "Axis1" for index 0. */
inline QString axisName(int index)
{
    return QStringLiteral("Axis%1").arg(index + 1);
}

/** What the worker knows of one axis: read when the axis is set up, kept in step with accepted parameter writes. */
class MotorDevInfo final : public QObject
{
public:
    MotorDevInfo() = default;
    // Copies carry the fields, never the QObject's identity (parent, name, connections).
    MotorDevInfo(const MotorDevInfo &other);
    MotorDevInfo &operator=(const MotorDevInfo &other);
    ~MotorDevInfo() override = default;

    int axis = 0;
    QString modelName;
    QString serialNumber;
    double currentPos = 0;
    double speed = 0;
    double acceleration = 0;
    double relativeDisp = 0;
    double targetPos = 0;
    bool relativeDispEnable = false;
    bool secondFlag = false; // no source on the controller; travels with the record
    double jogStep = 0;
    int jogDelay = 0;
    int jogCount = 0;
    int circleCount = 0;
    double circleDisp = 0;
    int circleDelay = 0;
    int furtherValue1 = 0; // the three further values have no source either
    int furtherValue2 = 0;
    int furtherValue3 = 0;
};
