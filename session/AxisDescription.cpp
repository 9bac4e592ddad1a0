// SPDX-License-Identifier: MIT
#include "session/AxisDescription.h"

QString unitOf(int stageType)
{
    const bool isAngle = stageType == STAGE_ROTATION || stageType == STAGE_ANGULAR;
    return isAngle ? QStringLiteral("°") : QStringLiteral("mm");
}

AxisDescription describe(int index, const QString &modelName, const MotorParams &stage)
{
    const double pulse = stage.pulseOneCircle > 0 ? stage.dispOneCircle / stage.pulseOneCircle : 0;
    return {index,          modelName,    unitOf(stage.moveType), stage.minPos,       stage.maxPos,
            stage.maxSpeed, stage.maxAcc, stage.maxRockerSpeed,   stage.restoreSpeed, pulse};
}
