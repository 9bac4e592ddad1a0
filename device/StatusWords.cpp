// SPDX-License-Identifier: MIT
#include "device/StatusWords.h"

#include "device/DeviceRecords.h"
#include "device/MotionLibrary.h"
#include "device/moverMessages.h"
#include "device/moverStatus.h"

#include <QCoreApplication>
#include <QStringList>

namespace {

using namespace moverStatus;

struct Words {
    int code;
    const char *text;
};

constexpr Words statusWords[] = {
    {Locked, QT_TRANSLATE_NOOP("StatusWords", "控制板处于报警或锁定状态：请关闭再打开使能以解锁，或回零")},
    {NotAvailable, QT_TRANSLATE_NOOP("StatusWords", "此控制器没有该功能")},
    {ReferenceFirst, QT_TRANSLATE_NOOP("StatusWords", "请先回零：位置未知")},
    {OthersWouldMove, QT_TRANSLATE_NOOP("StatusWords", "此控制板的所有轴都将移动：%1；请再按一次")},
    {ControllerBusy, QT_TRANSLATE_NOOP("StatusWords", "控制板忙：正在回零、保存参数或停止")},
    {PortInUse, QT_TRANSLATE_NOOP("StatusWords", "串口被另一个程序占用")},
    {WriteFailed, QT_TRANSLATE_NOOP("StatusWords", "控制板未接受参数：已恢复原值")},
    {NoPermission, QT_TRANSLATE_NOOP("StatusWords", "没有打开串口的权限：请将用户加入 dialout 组，然后重新登录")},
};

using namespace moverMessages;

constexpr Words messageWords[] = {
    {LimitHit,
     QT_TRANSLATE_NOOP("StatusWords", "碰到限位开关，位置已丢失：请关闭再打开使能以解锁，沿原路慢速离开，再回零")},
    {HomingFailed, QT_TRANSLATE_NOOP("StatusWords", "回零失败，位置已丢失：请检查限位开关，再回零")},
    {BoardAlarm, QT_TRANSLATE_NOOP("StatusWords", "控制板报警 %1：请关闭再打开使能以解锁，或回零")},
    {PositionLost, QT_TRANSLATE_NOOP("StatusWords", "控制板已重新启动，位置已丢失：请回零")},
    {HomingStopped, QT_TRANSLATE_NOOP("StatusWords", "回零已中止，位置已丢失")},
    {NoAnswer, QT_TRANSLATE_NOOP("StatusWords", "控制板没有应答")},
    {AnswersAgain, QT_TRANSLATE_NOOP("StatusWords", "控制板恢复应答：所有轴已停止")},
    {BoardLocked, QT_TRANSLATE_NOOP("StatusWords", "控制板已锁定：请关闭再打开使能以解锁，或回零")},
    {OnHold, QT_TRANSLATE_NOOP("StatusWords", "控制板被暂停（按键或安全门）：所有轴已停止")},
    {OutsideTravel, QT_TRANSLATE_NOOP("StatusWords", "控制板拒绝了行程以外的目标：所有轴已停止")},
    {Astray, QT_TRANSLATE_NOOP("StatusWords", "该轴偏离了指令（控制板坐标 %1）：所有轴已停止")},
    {WireTrouble, QT_TRANSLATE_NOOP("StatusWords", "线路故障：各轴停下后继续")},
    {WireStop, QT_TRANSLATE_NOOP("StatusWords", "线路故障过多：所有轴已停止")},
    {Stall, QT_TRANSLATE_NOOP("StatusWords", "电脑停顿了 %1 ms：各轴已停下，重新加速")},
    {SwitchClosed, QT_TRANSLATE_NOOP("StatusWords", "该轴的限位开关处于闭合状态")},
    {LimitsOff, QT_TRANSLATE_NOOP("StatusWords", "硬限位已关闭（$21=0），直到该轴沿原路慢速离开开关")},
    {LimitsOn, QT_TRANSLATE_NOOP("StatusWords", "限位开关已断开：硬限位已恢复（$21=1）")},
    {MotorsDropOut, QT_TRANSLATE_NOOP("StatusWords", "控制板参数 $1 不是 255：每次停止后电机断电")},
    {SettingsUndone, QT_TRANSLATE_NOOP("StatusWords", "控制板未接受参数：已恢复原值")},
    {PermissionOnly, QT_TRANSLATE_NOOP("StatusWords", "使能关闭只是不允许启动：电机电流不会切断")},
    {Coarse, QT_TRANSLATE_NOOP("StatusWords", "该轴的分辨率是 %1，粗于所要求的值")},
    {Capped, QT_TRANSLATE_NOOP("StatusWords", "速度限制为 %1：由控制板参数 $%2 决定")},
};

template <std::size_t Count>
QString wordsFor(const Words (&words)[Count], int code)
{
    for (const Words &one : words) {
        if (one.code == code)
            return QCoreApplication::translate("StatusWords", one.text);
    }
    return QString();
}

} // namespace

QString StatusWords::of(int status, int axes)
{
    const MotionLibrary *library = MotionLibrary::loaded();
    if (!library || library->mark().isEmpty())
        return QString();
    QString words = wordsFor(statusWords, status);
    if (status != OthersWouldMove)
        return words;
    QStringList names;
    for (int axis = 0; axis < axes; ++axis)
        names.append(axisName(axis));
    return words.arg(names.join(QStringLiteral(", ")));
}

QString StatusWords::ofOurs(int status)
{
    return wordsFor(statusWords, status);
}

QString StatusWords::numberAndWords(int status, int axes)
{
    const QString words = of(status, axes);
    return words.isEmpty() ? QString::number(status) : QStringLiteral("%1 (%2)").arg(QString::number(status), words);
}

QString StatusWords::of(const MoverMessage &message)
{
    QString words = wordsFor(messageWords, message.code);
    for (const QString &number : {QString::number(message.value), QString::number(message.setting)}) {
        if (words.contains(QLatin1Char('%')))
            words = words.arg(number);
    }
    return words;
}
