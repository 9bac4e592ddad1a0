// SPDX-License-Identifier: MIT
#include "workbench/EventWords.h"

#include "device/SerialComDev.h"
#include "device/StatusWords.h"
#include "device/moverMessages.h"
#include "workbench/SequenceTexts.h"

#include <QCoreApplication>

namespace {

struct Word {
    int type;
    int direction;
    const char *text;
};

// %1: the axis
constexpr Word commands[] = {
    {OPERATION_TYPE_MOVE, 0, QT_TRANSLATE_NOOP("EventWords", "%1 移动")},
    {OPERATION_TYPE_DRIVE, 1, QT_TRANSLATE_NOOP("EventWords", "%1 正向驱动")},
    {OPERATION_TYPE_DRIVE, -1, QT_TRANSLATE_NOOP("EventWords", "%1 负向驱动")},
    {OPERATION_TYPE_JOG, 1, QT_TRANSLATE_NOOP("EventWords", "%1 正向点动")},
    {OPERATION_TYPE_JOG, -1, QT_TRANSLATE_NOOP("EventWords", "%1 负向点动")},
    {OPERATION_TYPE_LOOP, 1, QT_TRANSLATE_NOOP("EventWords", "%1 正向循环")},
    {OPERATION_TYPE_LOOP, -1, QT_TRANSLATE_NOOP("EventWords", "%1 负向循环")},
    {OPERATION_TYPE_HOME, 0, QT_TRANSLATE_NOOP("EventWords", "%1 开始回零")},
    {OPERATION_TYPE_STOP, 0, QT_TRANSLATE_NOOP("EventWords", "%1 停止指令")},
};
constexpr const char *faults[] = {
    QT_TRANSLATE_NOOP("EventWords", "%1 负限位光耦失效"),
    QT_TRANSLATE_NOOP("EventWords", "%1 原点光耦失效"),
    QT_TRANSLATE_NOOP("EventWords", "%1 正限位光耦失效"),
};

QString tr(const char *text)
{
    return QCoreApplication::translate("EventWords", text);
}

QString commandWords(const RecorderEvent &event, const QString &axis)
{
    for (const Word &word : commands) {
        if (word.type != event.type || word.direction != event.direction)
            continue;
        QString text = tr(word.text).arg(axis);
        switch (event.source) {
        case MotionCommand::Request:
            return text;
        case MotionCommand::Console:
            return QCoreApplication::translate("EventWords", "%1（控制台）").arg(text);
        case MotionCommand::StopAll:
            return QCoreApplication::translate("EventWords", "%1（全部停止）").arg(text);
        case MotionCommand::Holder:
            return QCoreApplication::translate("EventWords", "%1（序列）").arg(text);
        }
    }
    return axis;
}

} // namespace

QString EventWords::of(const RecorderEvent &event)
{
    const QString axis = event.axis < 0 ? QString() : AxisDescription::nameOf(event.axis);
    const double seconds = double(event.lastedUs) / 1e6;
    switch (event.kind) {
    case RecorderEvent::Command:
        return commandWords(event, axis);
    case RecorderEvent::Arrived:
        return QCoreApplication::translate("EventWords", "%1 已到位").arg(axis);
    case RecorderEvent::Stopped:
        return QCoreApplication::translate("EventWords", "%1 已停止").arg(axis);
    case RecorderEvent::Homed:
        return QCoreApplication::translate("EventWords", "%1 已回零").arg(axis);
    case RecorderEvent::Limit:
        return event.direction > 0 ? QCoreApplication::translate("EventWords", "%1 到达正限位").arg(axis)
                                   : QCoreApplication::translate("EventWords", "%1 到达负限位").arg(axis);
    case RecorderEvent::Failure:
        if (event.type == RecorderEvent::OptoFault)
            return tr(faults[event.direction + 1]).arg(axis);
        if (event.type == RecorderEvent::BoardMessage) {
            MoverMessage message{};
            message.code = event.status;
            message.value = event.value;
            const QString words = StatusWords::of(message);
            return axis.isEmpty() ? words : axis + QLatin1Char(' ') + words;
        }
        return QCoreApplication::translate("EventWords", "%1 被拒绝：%2")
            .arg(commandWords(event, axis), SerialComDev::instance()->statusText(event.status));
    case RecorderEvent::LinkLost:
        return event.axis < 0 ? QCoreApplication::translate("EventWords", "连接中断")
                              : QCoreApplication::translate("EventWords", "%1 连接中断").arg(axis);
    case RecorderEvent::LinkBack: {
        const QString text =
            QCoreApplication::translate("EventWords", "%1 秒后恢复连接").arg(QString::number(seconds, 'f', 1));
        return axis.isEmpty() ? text : axis + QLatin1Char(' ') + text;
    }
    case RecorderEvent::StepBegun:
        return QCoreApplication::translate("EventWords", "第 %1 步：%2")
            .arg(QString::number(event.sequence->line + 1), SequenceTexts::step(event.sequence->step));
    case RecorderEvent::SequenceEnded:
        return SequenceTexts::ended(event.sequence->name, *event.sequence->end);
    }
    return {};
}

QColor EventWords::colourOf(int axis, const PlotColours &colours)
{
    return axis < 0 || colours.axes.isEmpty() ? colours.textSecondary : colours.axes.at(axis % colours.axes.size());
}

PlotPicture::Mark EventWords::markOf(const RecorderEvent &event, const PlotColours &colours)
{
    using Shape = PlotPicture::Shape;
    Shape shape = Shape::Command;
    switch (event.kind) {
    case RecorderEvent::Command:
        shape = Shape::Command;
        break;
    case RecorderEvent::Arrived:
    case RecorderEvent::Homed:
        shape = Shape::Arrival;
        break;
    case RecorderEvent::Stopped:
        shape = Shape::Stop;
        break;
    case RecorderEvent::Limit:
        shape = Shape::Limit;
        break;
    case RecorderEvent::Failure:
    case RecorderEvent::LinkLost:
        shape = Shape::Cross;
        break;
    case RecorderEvent::LinkBack:
        shape = Shape::Ring;
        break;
    case RecorderEvent::StepBegun:
    case RecorderEvent::SequenceEnded:
        shape = Shape::Bar;
        break;
    }
    const bool isAlarm =
        event.isIncident() || (event.kind == RecorderEvent::SequenceEnded && event.sequence->end->isFailure());
    return {
        double(event.us) / 1e6, shape, event.direction, isAlarm ? colours.alarm : colourOf(event.axis, colours),
        isAlarm};
}
