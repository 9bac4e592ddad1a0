// SPDX-License-Identifier: MIT
#include "axis/MotionLimits.h"

#include <QCoreApplication>

namespace {

QString broken(const char *message)
{
    return QCoreApplication::translate("MotionLimits", message) + QLatin1Char('\n');
}

/** Limits as the messages show them: general format, 6 significant digits. */
QString shown(double limit)
{
    return QString::number(limit, 'g', 6);
}

QString checkAboveZero(double value, double maximum, const char *message)
{
    return value > 0 && value <= maximum ? QString() : broken(message).arg(shown(maximum));
}

QString checkNotZero(int value, const char *message)
{
    return value != 0 ? QString() : broken(message);
}

} // namespace

QString MotionLimits::checkPosition(double position, double minimum, double maximum)
{
    if (position >= minimum && position <= maximum)
        return QString();
    return broken(QT_TRANSLATE_NOOP("MotionLimits", "位置超出范围！[%1，%2]")).arg(shown(minimum), shown(maximum));
}

QString MotionLimits::checkSpeed(double speed, double maximum)
{
    return checkAboveZero(speed, maximum, QT_TRANSLATE_NOOP("MotionLimits", "速度超出范围！(0，%1]"));
}

QString MotionLimits::checkAcceleration(double acceleration, double maximum)
{
    return checkAboveZero(acceleration, maximum, QT_TRANSLATE_NOOP("MotionLimits", "加速度超出范围！(0，%1]"));
}

QString MotionLimits::checkTravel(double travel, double maximum)
{
    return checkAboveZero(travel, maximum, QT_TRANSLATE_NOOP("MotionLimits", "相对位移超出范围！(0，%1]"));
}

QString MotionLimits::checkStep(double step, double maximum)
{
    return checkAboveZero(step, maximum, QT_TRANSLATE_NOOP("MotionLimits", "步长超出范围！(0，%1]"));
}

QString MotionLimits::checkStepCount(int count)
{
    return checkNotZero(count, QT_TRANSLATE_NOOP("MotionLimits", "步进次数不能为0！"));
}

QString MotionLimits::checkStepDelay(int delayMs)
{
    return checkNotZero(delayMs, QT_TRANSLATE_NOOP("MotionLimits", "步进延时不能为0！"));
}

QString MotionLimits::checkLoopCount(int count)
{
    return checkNotZero(count, QT_TRANSLATE_NOOP("MotionLimits", "循环次数不能为0！"));
}
