// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverLibrary.h"

#include <variant>

/** One button of the command panel: it makes one library call and shows what comes back. */
struct ConsoleCommand {
    using Call = int (*)(int id, int axis); // a start, or the getter of an integer
    using IntegerSetter = int (*)(int id, int axis, int value);
    using RealSetter = int (*)(int id, int axis, double value);
    using TextSetter = int (*)(int id, int axis, const char *text, int length);
    using RealGetter = double (*)(int id, int axis);
    using TextGetter = int (*)(int id, int axis, char *buffer, int length);
    using StateGetter = int (*)(int id, int axis, MotorStageState *state);

    int button;           // of pushButton_<button>
    const char *label;    // the same in every language
    const char *function; // the library's name for it
    // Its type tells the kind of argument that is read from the input field and the kind of result.
    std::variant<Call, IntegerSetter, RealSetter, TextSetter, RealGetter, TextGetter, StateGetter> operation;
    bool locked = true; // whether the call is made under LibraryLock
};

// Lambdas, because the address of a function in a Windows library is no constant.
inline constexpr ConsoleCommand consoleCommands[] = {
    // Motion
    {2, "Move", "startMove", [](int id, int axis) { return startMove(id, axis); }},
    // Without the mutex on purpose: it does not wait for a call in flight.
    {22, "home", "home", [](int id, int axis) { return home(id, axis); }, false},
    {3, "Stop", "stopRuning", [](int id, int axis) { return stopRuning(id, axis); }},
    {4, "JogLeft", "startJog", [](int id, int axis) { return startJog(id, axis, 2); }},
    {24, "JogRight", "startJog", [](int id, int axis) { return startJog(id, axis, 1); }},
    {5, "DriveLeft", "startDrive", [](int id, int axis) { return startDrive(id, axis, 2); }},
    {25, "DriveRight", "startDrive", [](int id, int axis) { return startDrive(id, axis, 1); }},
    {6, "CircleLeft", "startCircle", [](int id, int axis) { return startCircle(id, axis, 2); }},
    {26, "CircleRight", "startCircle", [](int id, int axis) { return startCircle(id, axis, 1); }},
    {10, "设置使能", "setMotorEnable", [](int id, int axis, int value) { return setMotorEnable(id, axis, value); }},
    {30, "运行状态", "getRuningState",
     [](int id, int axis, MotorStageState *state) { return getRuningState(id, axis, state); }},
    // Position
    {1, "当前位置", "getCurrentPos", [](int id, int axis) { return getCurrentPos(id, axis, nullptr); }},
    {7, "设置位置", "setTargetPos", [](int id, int axis, double value) { return setTargetPos(id, axis, value); }},
    {27, "读取位置", "getTargetPos",
     [](int id, int axis) {
         unsigned char success = 0;
         return getTargetPos(id, axis, &success);
     }},
    {11, "写相对位移", "setRelativeDisp",
     [](int id, int axis, double value) { return setRelativeDisp(id, axis, value); }},
    {31, "读相对位移", "getRelativeDisp", [](int id, int axis) { return getRelativeDisp(id, axis); }},
    {12, "写相对位移使能", "setRelativeDispEnable",
     [](int id, int axis, int value) { return setRelativeDispEnable(id, axis, value); }},
    {32, "读相对位移使能", "getRelativeDispEnable", [](int id, int axis) { return getRelativeDispEnable(id, axis); }},
    // Speed
    {8, "设置速度", "setSpeed", [](int id, int axis, double value) { return setSpeed(id, axis, value); }},
    {28, "读取速度", "getSpeed", [](int id, int axis) { return getSpeed(id, axis); }},
    {9, "设置加速度", "setAcceleration",
     [](int id, int axis, double value) { return setAcceleration(id, axis, value); }},
    {29, "读取加速度", "getAcceleration", [](int id, int axis) { return getAcceleration(id, axis); }},
    // Jog
    {13, "写JOG步长", "setJogStep", [](int id, int axis, double value) { return setJogStep(id, axis, value); }},
    {33, "读JOG步长", "getJogStep", [](int id, int axis) { return getJogStep(id, axis); }},
    {14, "写JOG延时", "setJogDelay", [](int id, int axis, int value) { return setJogDelay(id, axis, value); }},
    {34, "读JOG延时", "getJogDelay", [](int id, int axis) { return getJogDelay(id, axis); }},
    {15, "写JOG次数", "setJogCount", [](int id, int axis, int value) { return setJogCount(id, axis, value); }},
    {35, "读JOG次数", "getJogCount", [](int id, int axis) { return getJogCount(id, axis); }},
    {19, "读JOG当前次数", "getJogIndex", [](int id, int axis) { return getJogIndex(id, axis); }},
    // Loop run
    {16, "写循环位移", "setCircleDisp", [](int id, int axis, double value) { return setCircleDisp(id, axis, value); }},
    {36, "读循环位移", "getCircleDisp", [](int id, int axis) { return getCircleDisp(id, axis); }},
    {17, "写循环次数", "setCircleCount", [](int id, int axis, int value) { return setCircleCount(id, axis, value); }},
    {37, "读循环次数", "getCircleCount", [](int id, int axis) { return getCircleCount(id, axis); }},
    {18, "写循环延时", "setCircleDelay", [](int id, int axis, int value) { return setCircleDelay(id, axis, value); }},
    {38, "读循环延时", "getCircleDelay", [](int id, int axis) { return getCircleDelay(id, axis); }},
    {39, "读循环当前次数", "getCircleIndex", [](int id, int axis) { return getCircleIndex(id, axis); }},
    // Trigger
    {20, "写触发输入使能", "setTriggerInEnable",
     [](int id, int axis, int value) { return setTriggerInEnable(id, axis, value); }},
    {40, "读触发输入使能", "getTriggerInEnable", [](int id, int axis) { return getTriggerInEnable(id, axis); }},
    {60, "写触发输出使能", "setTriggerOutEnable",
     [](int id, int axis, int value) { return setTriggerOutEnable(id, axis, value); }},
    {61, "读触发输出使能", "getTriggerOutEnable", [](int id, int axis) { return getTriggerOutEnable(id, axis); }},
    // Identity
    {41, "写设备名称", "setDevModelName",
     [](int id, int, const char *text, int length) { return setDevModelName(id, text, length); }},
    {51, "读设备名称", "getDevModelName",
     [](int id, int, char *buffer, int length) { return getDevModelName(id, buffer, length); }},
    {42, "写设备序列号", "setDevSerialNumber",
     [](int id, int, const char *text, int length) { return setDevSerialNumber(id, text, length); }},
    {52, "读设备序列号", "getDevSerialNumber",
     [](int id, int, char *buffer, int length) { return getDevSerialNumber(id, buffer, length); }},
    {46, "写位移台名称", "setMotorModelName",
     [](int id, int axis, const char *text, int length) { return setMotorModelName(id, axis, text, length); }},
    {56, "读位移台名称", "getMotorModelName",
     [](int id, int axis, char *buffer, int length) { return getMotorModelName(id, axis, buffer, length); }},
    {45, "写位移台序列号", "setMotorSerialNumber",
     [](int id, int axis, const char *text, int length) { return setMotorSerialNumber(id, axis, text, length); }},
    {55, "读位移台序列号", "getMotorSerialNumber",
     [](int id, int axis, char *buffer, int length) { return getMotorSerialNumber(id, axis, buffer, length); }},
    {48, "写位移台单位", "setMotorUnitType",
     [](int id, int axis, int value) { return setMotorUnitType(id, axis, value); }},
    {58, "读位移台单位", "getMotorUnitType", [](int id, int axis) { return getMotorUnitType(id, axis); }},
    // Device
    {43, "写设备轴数", "setDevAxisCount", [](int id, int, int value) { return setDevAxisCount(id, value); }},
    {53, "读设备轴数", "getDevAxisCount", [](int id, int) { return getDevAxisCount(id); }},
    {49, "设置摇杆使能", "setRockerEnable", [](int id, int, int value) { return setRockerEnable(id, value); }},
    {59, "读取摇杆使能", "getRockerEnable", [](int id, int) { return getRockerEnable(id); }},
    {47, "读嵌入式版本", "getDevSoftVersion",
     [](int id, int, char *buffer, int length) { return getDevSoftVersion(id, buffer, length); }},
};
