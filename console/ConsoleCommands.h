// SPDX-License-Identifier: MIT
#pragma once

#include "device/MoverFunctions.h"
#include "device/SerialComDev.h"
#include "device/UnlockedCalls.h"

#include <optional>
#include <variant>

/** One button of the command panel: it makes one library call and shows what comes back. */
struct ConsoleCommand {
    // Of an axis:
    using Call = int (*MoverFunctions::*)(int id, int axis); // a start, or the getter of an integer
    struct Directed {
        int (*MoverFunctions::*start)(int id, int axis, int direction);
        int direction;
    };
    using IntegerSetter = int (*MoverFunctions::*)(int id, int axis, int value);
    using RealSetter = int (*MoverFunctions::*)(int id, int axis, double value);
    using TextSetter = int (*MoverFunctions::*)(int id, int axis, const char *text, int length);
    using RealGetter = double (*MoverFunctions::*)(int id, int axis);
    using PositionGetter = double (*MoverFunctions::*)(int id, int axis, int *status);
    using TargetGetter = double (*MoverFunctions::*)(int id, int axis, unsigned char *success);
    using TextGetter = int (*MoverFunctions::*)(int id, int axis, char *buffer, int length);
    using StateGetter = int (*MoverFunctions::*)(int id, int axis, MotorStageState *state);
    using UnlockedCall = int (*)(int id, int axis); // does not wait for a call in flight, on purpose
    // Of the controller:
    using DeviceGetter = int (*MoverFunctions::*)(int id);
    struct DeviceSetter {
        int (*MoverFunctions::*set)(int id, int value);
    };
    using DeviceTextSetter = int (*MoverFunctions::*)(int id, const char *text, int length);
    using DeviceTextGetter = int (*MoverFunctions::*)(int id, char *buffer, int length);

    int button;           // of pushButton_<button>
    const char *label;    // the same in every language
    const char *function; // the library's name for it
    // Its type tells the kind of argument that is read from the input field and the kind of result.
    std::variant<
        Call, Directed, IntegerSetter, RealSetter, TextSetter, RealGetter, PositionGetter, TargetGetter, TextGetter,
        StateGetter, UnlockedCall, DeviceGetter, DeviceSetter, DeviceTextSetter, DeviceTextGetter>
        operation;
    std::optional<OperationType> motion = std::nullopt; // of those that make an axis move or stop
    bool writesParameters = false;                      // of the stage
};

inline constexpr ConsoleCommand consoleCommands[] = {
    // Motion
    {2, "Move", "startMove", &MoverFunctions::startMove, OPERATION_TYPE_MOVE},
    // Without the mutex on purpose: it does not wait for a call in flight.
    {22, "home", "home", &UnlockedCalls::home, OPERATION_TYPE_HOME},
    {3, "Stop", "stopRuning", &MoverFunctions::stopRuning, OPERATION_TYPE_STOP},
    {4, "JogLeft", "startJog", ConsoleCommand::Directed{&MoverFunctions::startJog, 2}, OPERATION_TYPE_JOG},
    {24, "JogRight", "startJog", ConsoleCommand::Directed{&MoverFunctions::startJog, 1}, OPERATION_TYPE_JOG},
    {5, "DriveLeft", "startDrive", ConsoleCommand::Directed{&MoverFunctions::startDrive, 2}, OPERATION_TYPE_DRIVE},
    {25, "DriveRight", "startDrive", ConsoleCommand::Directed{&MoverFunctions::startDrive, 1}, OPERATION_TYPE_DRIVE},
    {6, "CircleLeft", "startCircle", ConsoleCommand::Directed{&MoverFunctions::startCircle, 2}, OPERATION_TYPE_LOOP},
    {26, "CircleRight", "startCircle", ConsoleCommand::Directed{&MoverFunctions::startCircle, 1}, OPERATION_TYPE_LOOP},
    {10, "设置使能", "setMotorEnable", &MoverFunctions::setMotorEnable},
    {30, "运行状态", "getRuningState", &MoverFunctions::getRuningState},
    // Position
    {1, "当前位置", "getCurrentPos", &MoverFunctions::getCurrentPos},
    {7, "设置位置", "setTargetPos", &MoverFunctions::setTargetPos},
    {27, "读取位置", "getTargetPos", &MoverFunctions::getTargetPos},
    {11, "写相对位移", "setRelativeDisp", &MoverFunctions::setRelativeDisp},
    {31, "读相对位移", "getRelativeDisp", &MoverFunctions::getRelativeDisp},
    {12, "写相对位移使能", "setRelativeDispEnable", &MoverFunctions::setRelativeDispEnable},
    {32, "读相对位移使能", "getRelativeDispEnable", &MoverFunctions::getRelativeDispEnable},
    // Speed
    {8, "设置速度", "setSpeed", &MoverFunctions::setSpeed},
    {28, "读取速度", "getSpeed", &MoverFunctions::getSpeed},
    {9, "设置加速度", "setAcceleration", &MoverFunctions::setAcceleration},
    {29, "读取加速度", "getAcceleration", &MoverFunctions::getAcceleration},
    // Jog
    {13, "写JOG步长", "setJogStep", &MoverFunctions::setJogStep},
    {33, "读JOG步长", "getJogStep", &MoverFunctions::getJogStep},
    {14, "写JOG延时", "setJogDelay", &MoverFunctions::setJogDelay},
    {34, "读JOG延时", "getJogDelay", &MoverFunctions::getJogDelay},
    {15, "写JOG次数", "setJogCount", &MoverFunctions::setJogCount},
    {35, "读JOG次数", "getJogCount", &MoverFunctions::getJogCount},
    {19, "读JOG当前次数", "getJogIndex", &MoverFunctions::getJogIndex},
    // Loop run
    {16, "写循环位移", "setCircleDisp", &MoverFunctions::setCircleDisp},
    {36, "读循环位移", "getCircleDisp", &MoverFunctions::getCircleDisp},
    {17, "写循环次数", "setCircleCount", &MoverFunctions::setCircleCount},
    {37, "读循环次数", "getCircleCount", &MoverFunctions::getCircleCount},
    {18, "写循环延时", "setCircleDelay", &MoverFunctions::setCircleDelay},
    {38, "读循环延时", "getCircleDelay", &MoverFunctions::getCircleDelay},
    {39, "读循环当前次数", "getCircleIndex", &MoverFunctions::getCircleIndex},
    // Trigger
    {20, "写触发输入使能", "setTriggerInEnable", &MoverFunctions::setTriggerInEnable},
    {40, "读触发输入使能", "getTriggerInEnable", &MoverFunctions::getTriggerInEnable},
    {60, "写触发输出使能", "setTriggerOutEnable", &MoverFunctions::setTriggerOutEnable},
    {61, "读触发输出使能", "getTriggerOutEnable", &MoverFunctions::getTriggerOutEnable},
    // Identity
    {41, "写设备名称", "setDevModelName", &MoverFunctions::setDevModelName},
    {51, "读设备名称", "getDevModelName", &MoverFunctions::getDevModelName},
    {42, "写设备序列号", "setDevSerialNumber", &MoverFunctions::setDevSerialNumber},
    {52, "读设备序列号", "getDevSerialNumber", &MoverFunctions::getDevSerialNumber},
    {46, "写位移台名称", "setMotorModelName", &MoverFunctions::setMotorModelName, std::nullopt, true},
    {56, "读位移台名称", "getMotorModelName", &MoverFunctions::getMotorModelName},
    {45, "写位移台序列号", "setMotorSerialNumber", &MoverFunctions::setMotorSerialNumber, std::nullopt, true},
    {55, "读位移台序列号", "getMotorSerialNumber", &MoverFunctions::getMotorSerialNumber},
    {48, "写位移台单位", "setMotorUnitType", &MoverFunctions::setMotorUnitType, std::nullopt, true},
    {58, "读位移台单位", "getMotorUnitType", &MoverFunctions::getMotorUnitType},
    // Device
    {43, "写设备轴数", "setDevAxisCount", ConsoleCommand::DeviceSetter{&MoverFunctions::setDevAxisCount}},
    {53, "读设备轴数", "getDevAxisCount", &MoverFunctions::getDevAxisCount},
    {49, "设置摇杆使能", "setRockerEnable", ConsoleCommand::DeviceSetter{&MoverFunctions::setRockerEnable}},
    {59, "读取摇杆使能", "getRockerEnable", &MoverFunctions::getRockerEnable},
    {47, "读嵌入式版本", "getDevSoftVersion", &MoverFunctions::getDevSoftVersion},
};
