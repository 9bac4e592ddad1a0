// SPDX-License-Identifier: MIT
#include "axis/MotionLimits.h"

#include <QCoreApplication>

namespace {

QString textOf(MotionRule rule)
{
    switch (rule) {
    case MotionRule::Position:
        return QCoreApplication::translate("MotionLimits", "位置超出范围！[%1，%2]");
    case MotionRule::Speed:
        return QCoreApplication::translate("MotionLimits", "速度超出范围！(0，%1]");
    case MotionRule::Acceleration:
        return QCoreApplication::translate("MotionLimits", "加速度超出范围！(0，%1]");
    case MotionRule::Travel:
        return QCoreApplication::translate("MotionLimits", "相对位移超出范围！(0，%1]");
    case MotionRule::Step:
        return QCoreApplication::translate("MotionLimits", "步长超出范围！(0，%1]");
    case MotionRule::StepCount:
        return QCoreApplication::translate("MotionLimits", "步进次数不能为0！");
    case MotionRule::StepDelay:
        return QCoreApplication::translate("MotionLimits", "步进延时不能为0！");
    case MotionRule::LoopCount:
        return QCoreApplication::translate("MotionLimits", "循环次数不能为0！");
    }
    return QString();
}

/** Limits as the messages show them: general format, 6 significant digits. */
QString shown(double limit)
{
    return QString::number(limit, 'g', 6);
}

QString lineOf(MotionRule rule, const AxisDescription &axis)
{
    QString text = textOf(rule);
    switch (rule) {
    case MotionRule::Position:
        return text.arg(shown(axis.minPos), shown(axis.maxPos));
    case MotionRule::Speed:
        return text.arg(shown(axis.maxSpeed));
    case MotionRule::Acceleration:
        return text.arg(shown(axis.maxAcceleration));
    case MotionRule::Travel:
    case MotionRule::Step:
        return text.arg(shown(axis.travel()));
    case MotionRule::StepCount:
    case MotionRule::StepDelay:
    case MotionRule::LoopCount:
        break;
    }
    return text;
}

} // namespace

QString MotionLimits::message(const QVector<MotionRule> &broken, const AxisDescription &axis)
{
    QString lines;
    for (const MotionRule rule : broken)
        lines += lineOf(rule, axis) + QLatin1Char('\n');
    return lines;
}
