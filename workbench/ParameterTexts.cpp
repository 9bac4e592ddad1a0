// SPDX-License-Identifier: MIT
#include "workbench/ParameterTexts.h"

#include <QJsonArray>
#include <QStringList>

#include <algorithm>
#include <iterator>

namespace {

struct FieldName {
    const char *key;
    const char *text;
};

constexpr FieldName fieldNames[] = {
    {"modelName", QT_TRANSLATE_NOOP("ParameterTexts", "型号")},
    {"serialNumber", QT_TRANSLATE_NOOP("ParameterTexts", "序列号")},
    {"pulsesPerTurn", QT_TRANSLATE_NOOP("ParameterTexts", "每转脉冲数")},
    {"lead", QT_TRANSLATE_NOOP("ParameterTexts", "导程")},
    {"homingSpeed", QT_TRANSLATE_NOOP("ParameterTexts", "复位速度")},
    {"stageType", QT_TRANSLATE_NOOP("ParameterTexts", "位移台类型")},
    {"unitType", QT_TRANSLATE_NOOP("ParameterTexts", "单位类型")},
    {"positiveLimitPolarity", QT_TRANSLATE_NOOP("ParameterTexts", "正限位极性")},
    {"negativeLimitPolarity", QT_TRANSLATE_NOOP("ParameterTexts", "负限位极性")},
    {"originPolarity", QT_TRANSLATE_NOOP("ParameterTexts", "零位极性")},
    {"movingDirection", QT_TRANSLATE_NOOP("ParameterTexts", "运动方向")},
    {"limitDirection", QT_TRANSLATE_NOOP("ParameterTexts", "限位方向")},
    {"optoOrder", QT_TRANSLATE_NOOP("ParameterTexts", "光耦顺序")},
    {"optoCount", QT_TRANSLATE_NOOP("ParameterTexts", "光耦数量")},
    {"originOptoWidth", QT_TRANSLATE_NOOP("ParameterTexts", "零位光耦宽度")},
    {"maxSpeed", QT_TRANSLATE_NOOP("ParameterTexts", "最大速度")},
    {"maxAcceleration", QT_TRANSLATE_NOOP("ParameterTexts", "最大加速度")},
    {"minPosition", QT_TRANSLATE_NOOP("ParameterTexts", "最小位置")},
    {"maxPosition", QT_TRANSLATE_NOOP("ParameterTexts", "最大位置")},
    {"backlash", QT_TRANSLATE_NOOP("ParameterTexts", "回程间隙")},
    {"motorPhases", QT_TRANSLATE_NOOP("ParameterTexts", "电机相数")},
    {"maxJoystickSpeed", QT_TRANSLATE_NOOP("ParameterTexts", "摇杆最大速度")},
    {"changeDate", QT_TRANSLATE_NOOP("ParameterTexts", "修改日期")},
    {"compensation", QT_TRANSLATE_NOOP("ParameterTexts", "位置补偿")},
    {"positiveTable", QT_TRANSLATE_NOOP("ParameterTexts", "正向补偿表")},
    {"negativeTable", QT_TRANSLATE_NOOP("ParameterTexts", "负向补偿表")},
};

constexpr const char *whyTexts[] = {
    QT_TRANSLATE_NOOP("ParameterTexts", "连接时"), QT_TRANSLATE_NOOP("ParameterTexts", "写入后"),
    QT_TRANSLATE_NOOP("ParameterTexts", "手动"), QT_TRANSLATE_NOOP("ParameterTexts", "恢复前")};

QString number(const QJsonValue &value)
{
    return value.isDouble() ? QString::number(value.toDouble(), 'g', 12) : QStringLiteral("–");
}

} // namespace

QString ParameterTexts::name(int field)
{
    const QLatin1String key(parameterFields()[field].key);
    const auto *word = std::find_if(
        std::begin(fieldNames), std::end(fieldNames), [&key](const FieldName &each) { return each.key == key; });
    return word == std::end(fieldNames) ? QString(key) : tr(word->text);
}

QString ParameterTexts::value(int field, const ParameterSnapshot &snapshot)
{
    const QJsonValue value = parameterFields()[field].get(snapshot);
    if (value.isUndefined())
        return tr("未知");
    if (value.isBool())
        return value.toBool() ? tr("开") : tr("关");
    if (value.isString())
        return value.toString();
    if (!value.isArray())
        return number(value);
    QStringList pairs;
    const QJsonArray array = value.toArray();
    for (const QJsonValue &pair : array)
        pairs.append(number(pair.toArray().at(0)) + QStringLiteral(" → ") + number(pair.toArray().at(1)));
    return pairs.isEmpty() ? tr("空") : pairs.join(QStringLiteral(", "));
}

QString ParameterTexts::unit(int field, const ParameterSnapshot &snapshot)
{
    const ParameterField &row = parameterFields()[field];
    const QJsonValue value = row.get(snapshot);
    if (value.isUndefined() || (value.isArray() && value.toArray().isEmpty()))
        return QString();
    QString length = lengthUnitOf(snapshot);
    switch (row.unit) {
    case ParameterField::None:
        break;
    case ParameterField::Length:
        return length;
    case ParameterField::Speed:
        return length + QStringLiteral("/s");
    case ParameterField::Acceleration:
        return length + QStringLiteral("/s²");
    case ParameterField::Pulses:
        return tr("脉冲");
    }
    return QString();
}

QString ParameterTexts::valueAndUnit(int field, const ParameterSnapshot &snapshot)
{
    return (value(field, snapshot) + QLatin1Char(' ') + unit(field, snapshot)).trimmed();
}

QString ParameterTexts::why(ParameterSnapshot::Why why)
{
    return tr(whyTexts[why]);
}

QString ParameterTexts::time(const ParameterSnapshot &snapshot)
{
    return snapshot.time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}
