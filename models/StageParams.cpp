// SPDX-License-Identifier: MIT
#include "models/StageParams.h"

#include "device/LibraryText.h"

namespace {

/** Stage types of MotorParams::moveType and MoverDevParam::moveType. */
enum MoveType { Linear = 0, Rotation = 1, Angular = 2, Lifting = 3 };

} // namespace

MoverDevParam toDevParam(const MotorParams &params)
{
    MoverDevParam stage;
    stage.name = fromLibraryText(params.modelName);
    stage.pulseOneCircle = int(params.pulseOneCircle);
    stage.dispOneCircle = float(params.dispOneCircle);
    stage.restoreSpeed = float(params.restoreSpeed);
    stage.moveType = params.moveType;
    stage.positivePolarity = params.positivePolarity;
    stage.negativePolarity = params.negativePolarity;
    stage.originPolarity = params.originPolarity;
    stage.phaseDirction = params.phaseDirction;
    stage.limitDirection = params.limitDirection;
    const bool isAngle = params.moveType == Rotation || params.moveType == Angular;
    stage.unitString = isAngle ? QStringLiteral("°") : QStringLiteral("mm");
    stage.optOrder = QString::fromLatin1(params.optOrder, int(qstrnlen(params.optOrder, sizeof params.optOrder)));
    stage.maxSpeed = params.maxSpeed;
    stage.maxAcc = params.maxAcc;
    stage.minPos = params.minPos;
    stage.maxPos = params.maxPos;
    stage.zeroOptWidth = params.zeroOptWidth;
    stage.optNum = params.optNum;
    stage.returnTrip = params.returnTrip;
    stage.motorPhase = params.motorPhase;
    stage.modifyDate = params.modifyDate;
    stage.maxRockerSpeed = params.maxRockerSpeed;
    return stage;
}
