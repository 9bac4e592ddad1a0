// SPDX-License-Identifier: MIT
#include "workbench/SequenceTexts.h"

#include "device/SerialComDev.h"
#include "session/ControlSession.h"

#include <QCoreApplication>

#include <cmath>

namespace {

constexpr int leastDigits = 3;
constexpr int mostDigits = 6;
constexpr double mostNumber = 1e9;

// %1: the axis, %2: a value with its unit, %3: what the library says
constexpr const char *kinds[] = {
    QT_TRANSLATE_NOOP("SequenceTexts", "移到"), QT_TRANSLATE_NOOP("SequenceTexts", "移到"),
    QT_TRANSLATE_NOOP("SequenceTexts", "移动"), QT_TRANSLATE_NOOP("SequenceTexts", "回零"),
    QT_TRANSLATE_NOOP("SequenceTexts", "等待"), QT_TRANSLATE_NOOP("SequenceTexts", "询问"),
    QT_TRANSLATE_NOOP("SequenceTexts", "重复"), QT_TRANSLATE_NOOP("SequenceTexts", "设定速度"),
};
static_assert(sizeof(kinds) / sizeof(*kinds) == SequenceStep::KindCount);

constexpr const char *faults[] = {
    QT_TRANSLATE_NOOP("SequenceTexts", "没有这个名称的位置"),
    QT_TRANSLATE_NOOP("SequenceTexts", "该位置没有任何轴"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 不存在或没有应答"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 未使能"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 正在运动"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 将移到 %2，超出行程"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 的速度必须大于 0，且不超过位移台的最高速度"),
    QT_TRANSLATE_NOOP("SequenceTexts", "等待时间必须在 0 到 24 小时之间"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 的目标不是数字"),
    QT_TRANSLATE_NOOP("SequenceTexts", "重复的起始行必须在这一行之前"),
    QT_TRANSLATE_NOOP("SequenceTexts", "重复的行与另一处重复交叉"),
    QT_TRANSLATE_NOOP("SequenceTexts", "重复次数必须在 1 到 1000000 之间"),
    QT_TRANSLATE_NOOP("SequenceTexts", "重复最多嵌套 8 层"),
};
static_assert(sizeof(faults) / sizeof(*faults) == SequenceFault::TooDeep + 1);

constexpr const char *ends[] = {
    QT_TRANSLATE_NOOP("SequenceTexts", "已完成"),
    QT_TRANSLATE_NOOP("SequenceTexts", "已停止"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 被面板停止"),
    QT_TRANSLATE_NOOP("SequenceTexts", "已全部停止"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 被控制台启动"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 的参数被改写"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 拒绝执行：%3"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 在 %2 处到达负限位"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 在 %2 处到达正限位"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 停在 %2，未到达目标"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 停在 %2，未完成回零"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 没有动"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 将移到 %2，超出行程"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 没有应答"),
    QT_TRANSLATE_NOOP("SequenceTexts", "控制器已断开"),
    QT_TRANSLATE_NOOP("SequenceTexts", "%1 的面板已关闭"),
    QT_TRANSLATE_NOOP("SequenceTexts", "摇杆接管了各轴"),
    QT_TRANSLATE_NOOP("SequenceTexts", "程序已退出"),
};
static_assert(sizeof(ends) / sizeof(*ends) == SequenceEnd::Quit + 1);

constexpr const char *fileFaults[] = {
    "",
    QT_TRANSLATE_NOOP("SequenceTexts", "文件无法读取，或者太大"),
    QT_TRANSLATE_NOOP("SequenceTexts", "文件不是所需的类型"),
    QT_TRANSLATE_NOOP("SequenceTexts", "文件由较新版本的程序写成"),
    QT_TRANSLATE_NOOP("SequenceTexts", "列数不对"),
    QT_TRANSLATE_NOOP("SequenceTexts", "未知的步骤"),
    QT_TRANSLATE_NOOP("SequenceTexts", "数字不对"),
    QT_TRANSLATE_NOOP("SequenceTexts", "没有这个轴"),
    QT_TRANSLATE_NOOP("SequenceTexts", "位置的名称为空或重复"),
    QT_TRANSLATE_NOOP("SequenceTexts", "行数太多"),
};
static_assert(sizeof(fileFaults) / sizeof(*fileFaults) == SequenceFileFault::TooMany + 1);

QString tr(const char *text)
{
    return QCoreApplication::translate("SequenceTexts", text);
}

QString unitWords(int axis)
{
    const auto known = ControlSession::instance()->axis(axis);
    return known ? QLatin1Char(' ') + known->currentDescription().unit : QString();
}

QString digits(double value, int least)
{
    QString text = QString::number(value, 'f', mostDigits);
    int surplus = mostDigits - least;
    for (; surplus > 0 && text.endsWith(QLatin1Char('0')); --surplus)
        text.chop(1);
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text;
}

QString nameOf(int axis)
{
    return axis == SequenceStep::AllAxes ? QCoreApplication::translate("SequenceTexts", "所有轴")
                                         : AxisDescription::nameOf(axis);
}

QString fill(const char *words, int axis, double value, const QString &status = QString())
{
    QString text = tr(words);
    if (axis >= 0)
        text.replace(QStringLiteral("%1"), nameOf(axis))
            .replace(QStringLiteral("%2"), SequenceTexts::place(axis, value));
    return text.replace(QStringLiteral("%3"), status);
}

} // namespace

QString SequenceTexts::number(double value)
{
    return digits(value, leastDigits);
}

QString SequenceTexts::plain(double value)
{
    return digits(value, 0);
}

std::optional<double> SequenceTexts::toNumber(const QString &text)
{
    const int comma = text.indexOf(QLatin1Char(','));
    const bool isDoubtful = comma >= 0 && text.size() - comma == 4;
    bool isNumber = false;
    const double number = QString(text).replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&isNumber);
    if (isDoubtful || !isNumber || !std::isfinite(number) || std::abs(number) > mostNumber)
        return std::nullopt;
    return number;
}

QString SequenceTexts::noNumber(const QString &text)
{
    return QCoreApplication::translate("SequenceTexts", "“%1”不是数字。").arg(text);
}

QString SequenceTexts::time(double seconds)
{
    const auto whole = qint64(std::llround(seconds));
    if (whole >= 3600)
        return QCoreApplication::translate("SequenceTexts", "%1 小时 %2 分").arg(whole / 3600).arg(whole / 60 % 60);
    if (whole >= 60)
        return QCoreApplication::translate("SequenceTexts", "%1 分 %2 秒").arg(whole / 60).arg(whole % 60);
    return QCoreApplication::translate("SequenceTexts", "%1 秒").arg(whole);
}

QString SequenceTexts::place(int axis, double value)
{
    return number(value) + unitWords(axis);
}

QString SequenceTexts::kind(SequenceStep::Kind kind)
{
    return tr(kinds[kind]);
}

QString SequenceTexts::where(const SequenceStep &step)
{
    switch (step.kind) {
    case SequenceStep::GoTo:
    case SequenceStep::Ask:
        return step.text;
    case SequenceStep::MoveTo:
        return nameOf(step.axis) + QLatin1Char(' ') + place(step.axis, step.value);
    case SequenceStep::MoveBy:
        return nameOf(step.axis) + (step.value < 0 ? QStringLiteral(" ") : QStringLiteral(" +")) +
               place(step.axis, step.value);
    case SequenceStep::Home:
    case SequenceStep::SetSpeed:
        return nameOf(step.axis);
    case SequenceStep::Wait:
        return QStringLiteral("–");
    case SequenceStep::Repeat:
        return QCoreApplication::translate("SequenceTexts", "从第 %1 步起，共 %2 遍")
            .arg(step.from + 1)
            .arg(step.count);
    }
    return {};
}

QString SequenceTexts::speed(const SequenceStep &step)
{
    const auto text = [&step](double value) {
        const QString unit = unitWords(step.axis);
        return plain(value) + (unit.isEmpty() ? unit : unit + QStringLiteral("/s"));
    };
    switch (step.kind) {
    case SequenceStep::MoveTo:
    case SequenceStep::MoveBy:
        return step.speed != 0 ? text(step.speed) : QCoreApplication::translate("SequenceTexts", "按设定");
    case SequenceStep::SetSpeed:
        return text(step.value);
    case SequenceStep::GoTo:
    case SequenceStep::Home:
        return QCoreApplication::translate("SequenceTexts", "按设定");
    case SequenceStep::Wait:
    case SequenceStep::Ask:
    case SequenceStep::Repeat:
        break;
    }
    return QStringLiteral("–");
}

QString SequenceTexts::wait(const SequenceStep &step)
{
    const double seconds = step.kind == SequenceStep::Wait ? step.value : step.wait;
    return seconds == 0 ? QStringLiteral("–") : plain(seconds) + QStringLiteral(" s");
}

QString SequenceTexts::step(const SequenceStep &step)
{
    const QString what = step.kind == SequenceStep::Wait       ? wait(step)
                         : step.kind == SequenceStep::SetSpeed ? where(step) + QLatin1Char(' ') + speed(step)
                                                               : where(step);
    return (kind(step.kind) + QLatin1Char(' ') + what).simplified();
}

QString SequenceTexts::fault(const SequenceFault &fault)
{
    return fill(faults[fault.kind], fault.axis, fault.value);
}

QString SequenceTexts::end(const SequenceEnd &end)
{
    const QString status =
        end.reason == SequenceEnd::Refused ? SerialComDev::instance()->statusText(end.status) : QString();
    return fill(ends[end.reason], end.axis, end.value, status);
}

QString SequenceTexts::ended(const QString &name, const SequenceEnd &end)
{
    if (end.reason == SequenceEnd::Finished)
        return QCoreApplication::translate("SequenceTexts", "序列“%1”已完成").arg(name);
    return QCoreApplication::translate("SequenceTexts", "序列“%1”在第 %2 步结束：%3")
        .arg(name, QString::number(end.line + 1), SequenceTexts::end(end));
}

QString SequenceTexts::fileFault(const SequenceFileFault &fault)
{
    const QString reason = tr(fileFaults[fault.kind]);
    return fault.line > 0 ? QCoreApplication::translate("SequenceTexts", "第 %1 行：%2").arg(fault.line).arg(reason)
                          : reason;
}
