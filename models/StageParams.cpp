// SPDX-License-Identifier: MIT
#include "models/StageParams.h"

#include "device/LibraryText.h"

#include <algorithm>
#include <cstring>

namespace {

/** Copies what fits; the rest of the field stays zero. A text that fills the field has no terminator. */
template <size_t Size>
void copyText(char (&field)[Size], const QByteArray &text, size_t limit = Size)
{
    std::memcpy(field, text.constData(), std::min({Size, limit, size_t(text.size())}));
}

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
    stage.unitString = unitOf(params.moveType);
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

MotorParams toMotorParams(const MoverDevParam &stage)
{
    MotorParams params = {};
    copyText(params.modelName, stage.name.toUtf8());
    params.pulseOneCircle = uint32_t(stage.pulseOneCircle);
    params.dispOneCircle = double(stage.dispOneCircle);
    params.restoreSpeed = double(stage.restoreSpeed);
    params.moveType = uint16_t(stage.moveType);
    params.positivePolarity = uint16_t(stage.positivePolarity);
    params.negativePolarity = uint16_t(stage.negativePolarity);
    params.originPolarity = uint16_t(stage.originPolarity);
    params.phaseDirction = uint16_t(stage.phaseDirction);
    params.limitDirection = uint16_t(stage.limitDirection);
    params.unitType = stage.unitString == QLatin1String("mm") ? 0 : 1;
    copyText(params.optOrder, stage.optOrder.toUtf8(), 4);
    params.maxSpeed = stage.maxSpeed;
    params.maxAcc = stage.maxAcc;
    params.minPos = stage.minPos;
    params.maxPos = stage.maxPos;
    params.zeroOptWidth = uint16_t(stage.zeroOptWidth);
    params.optNum = uint16_t(stage.optNum);
    params.returnTrip = int16_t(stage.returnTrip);
    params.motorPhase = uint16_t(stage.motorPhase);
    params.modifyDate = stage.modifyDate;
    params.maxRockerSpeed = stage.maxRockerSpeed;
    return params;
}

AxisDescription describe(int index, const QString &modelName, const MoverDevParam &stage)
{
    const double pulse = stage.pulseOneCircle > 0 ? double(stage.dispOneCircle) / double(stage.pulseOneCircle) : 0;
    return {
        index,
        modelName,
        stage.unitString,
        stage.minPos,
        stage.maxPos,
        stage.maxSpeed,
        stage.maxAcc,
        stage.maxRockerSpeed,
        double(stage.restoreSpeed),
        pulse};
}
