// SPDX-License-Identifier: MIT
#pragma once

#include "device/DeviceRecords.h"

#include <QString>

/** Stage types as the controller stores them. */
enum StageType {
    STAGE_LINEAR = 0,
    STAGE_ROTATION = 1,
    STAGE_ANGULAR = 2,
    STAGE_LIFTING = 3,
};
constexpr int StageTypeCount = 4;

/** What an axis is and may do. Lengths are in its unit. */
struct AxisDescription {
    int index = 0; // on the controller, from 0
    QString modelName{};
    QString unit = QStringLiteral("mm");
    double minPos = 0; // ends of travel
    double maxPos = 0;
    double maxSpeed = 0;
    double maxAcceleration = 0;
    double maxRockerSpeed = 0;
    double homingSpeed = 0; // 0 when it is not known
    double pulse = 0;       // length of one pulse of the motor; 0 when it is not known
    /** The origin flag of its state is whether it is homed, whoever homed it, and goes when the position is lost. */
    bool tellsHoming = false;

    double travel() const { return maxPos - minPos; }
    /** The name that users see: "Axis1" for index 0. */
    QString name() const { return nameOf(index); }
    static QString nameOf(int index) { return axisName(index); }
};

/** "°" for rotation and angular stages, "mm" for all others. */
QString unitOf(int stageType);

/** An axis as the record of its stage describes it. */
AxisDescription describe(int index, const QString &modelName, const MotorParams &stage);
