// SPDX-License-Identifier: MIT
#include "device/DeviceRecords.h"

void registerDeviceRecords()
{
    qRegisterMetaType<MotorStageState>("MotorStageState");
    qRegisterMetaType<CONTROLER_STATE>("CONTROLER_STATE");
}

MotorDevInfo::MotorDevInfo(const MotorDevInfo &other)
    : QObject()
{
    *this = other;
}

MotorDevInfo &MotorDevInfo::operator=(const MotorDevInfo &other)
{
    axis = other.axis;
    modelName = other.modelName;
    serialNumber = other.serialNumber;
    currentPos = other.currentPos;
    speed = other.speed;
    acceleration = other.acceleration;
    relativeDisp = other.relativeDisp;
    targetPos = other.targetPos;
    relativeDispEnable = other.relativeDispEnable;
    secondFlag = other.secondFlag;
    jogStep = other.jogStep;
    jogDelay = other.jogDelay;
    jogCount = other.jogCount;
    circleCount = other.circleCount;
    circleDisp = other.circleDisp;
    circleDelay = other.circleDelay;
    furtherValue1 = other.furtherValue1;
    furtherValue2 = other.furtherValue2;
    furtherValue3 = other.furtherValue3;
    return *this;
}
