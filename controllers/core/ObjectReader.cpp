// SPDX-License-Identifier: MIT
#include "controllers/core/ObjectReader.h"

#include <sstream>

namespace controllers {

std::string inQuotes(const std::string &text)
{
    return "\"" + text + "\"";
}

std::string numberText(double number)
{
    std::ostringstream text;
    text << number;
    return text.str();
}

void readStage(const JsonValue &value, MotorParams *stage)
{
    ObjectReader object(value, "the stage");
    object.text("modelName", stage->modelName);
    object.text("serialNumber", stage->serialNumber);
    object.number("pulseOneCircle", &stage->pulseOneCircle, 1, std::numeric_limits<uint32_t>::max());
    object.positive("dispOneCircle", &stage->dispOneCircle);
    object.positive("restoreSpeed", &stage->restoreSpeed);
    object.number("moveType", &stage->moveType, 0, 3);
    object.number("positivePolarity", &stage->positivePolarity, 0, 1);
    object.number("negativePolarity", &stage->negativePolarity, 0, 1);
    object.number("originPolarity", &stage->originPolarity, 0, 1);
    object.number("phaseDirction", &stage->phaseDirction, 0, 1);
    object.number("limitDirection", &stage->limitDirection, 0, 1);
    object.number("unitType", &stage->unitType, 0, 1);
    object.text("optOrder", stage->optOrder);
    object.positive("maxSpeed", &stage->maxSpeed);
    object.positive("maxAcc", &stage->maxAcc);
    object.number("minPos", &stage->minPos, -maxNumber, maxNumber);
    object.number("maxPos", &stage->maxPos, -maxNumber, maxNumber);
    object.number("zeroOptWidth", &stage->zeroOptWidth, 0, std::numeric_limits<uint16_t>::max());
    object.number("optNum", &stage->optNum, 0, std::numeric_limits<uint16_t>::max());
    object.number(
        "returnTrip", &stage->returnTrip, std::numeric_limits<int16_t>::min(), std::numeric_limits<int16_t>::max());
    object.number("motorPhase", &stage->motorPhase, 0, std::numeric_limits<uint16_t>::max());
    object.number("modifyDate", &stage->modifyDate, 0, std::numeric_limits<int32_t>::max());
    object.number("maxRockerSpeed", &stage->maxRockerSpeed, 0, maxNumber);
    object.finish();
    if (!(stage->minPos < stage->maxPos))
        throw JsonError(value.line, "\"minPos\" has to be below \"maxPos\"");
}

} // namespace controllers
