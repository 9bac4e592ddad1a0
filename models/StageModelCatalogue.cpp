// SPDX-License-Identifier: MIT
#include "models/StageModelCatalogue.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVector>

namespace {

constexpr int maxLoggedFaults = 20; // a file of another kind would have one in every element

constexpr char modelsKey[] = "MoverModels";

/** Values of a wrong type count as missing; the names of their keys are added to `mistyped`. */
MoverDevParam fromJson(const QJsonObject &model, QStringList *mistyped)
{
    const auto check = [mistyped](const char *key, const QJsonValue &value, bool fits) {
        if (!fits && !value.isUndefined())
            mistyped->append(QLatin1String(key));
    };
    const auto text = [&](const char *key) {
        const QJsonValue value = model.value(QLatin1String(key));
        check(key, value, value.isString());
        return value.toString();
    };
    const auto integer = [&](const char *key) {
        const QJsonValue value = model.value(QLatin1String(key));
        check(key, value, value.toInt(0) == value.toInt(1)); // else the default was taken
        return value.toInt();
    };
    const auto real = [&](const char *key) {
        const QJsonValue value = model.value(QLatin1String(key));
        check(key, value, value.isDouble());
        return value.toDouble();
    };

    MoverDevParam stage;
    stage.name = text("name");
    stage.auxText = QLatin1String("");
    stage.pulseOneCircle = integer("pulseOneCircle");
    stage.dispOneCircle = float(real("dispOneCircle"));
    stage.restoreSpeed = float(real("restoreSpeed"));
    stage.AxisType = integer("AxisType");
    stage.positivePolarity = integer("positivePolarity");
    stage.negativePolarity = integer("negativePolarity");
    stage.originPolarity = integer("originPolarity");
    stage.phaseDirction = integer("phaseDirction");
    stage.originSigID = integer("originSigID");
    stage.unitString = text("unitString");
    stage.moveType = integer("moveType");
    stage.limitDirection = integer("limitDirection");
    stage.optOrder = text("optOrder");
    stage.maxSpeed = real("maxSpeed");
    stage.maxAcc = real("maxAcc");
    stage.minPos = real("minPos");
    stage.maxPos = real("maxPos");
    stage.zeroOptWidth = integer("zeroOptWidth");
    stage.optNum = integer("optNum");
    stage.returnTrip = integer("returnTrip");
    stage.motorPhase = integer("motorPhase");
    stage.modifyDate = integer("modifyDate");
    stage.maxRockerSpeed = real("maxRockerSpeed");
    return stage;
}

/** Where the elements of the array of models begin, in bytes. `json` is a text that has been parsed without a fault. */
QVector<int> elementOffsets(const QByteArray &json)
{
    QVector<int> offsets;
    QByteArray key; // the last text of the top level
    int depth = 0;
    bool inModels = false;
    bool expectsElement = false;
    for (int at = 0; at < json.size(); ++at) {
        const char c = json.at(at);
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r')
            continue;
        if (expectsElement && c != ']')
            offsets.append(at);
        expectsElement = false;
        if (c == '"') {
            const int begin = ++at;
            while (json.at(at) != '"')
                at += json.at(at) == '\\' ? 2 : 1;
            if (depth == 1)
                key = json.mid(begin, at - begin);
        } else if (c == '{' || c == '[') {
            ++depth;
            if (depth == 2 && key == modelsKey) {
                offsets.clear(); // of two such members the later one counts
                inModels = expectsElement = c == '[';
            }
        } else if (c == '}' || c == ']') {
            --depth;
            inModels = inModels && depth > 1;
        } else if (c == ',') {
            expectsElement = inModels && depth == 2;
        }
    }
    return offsets;
}

bool isStageType(int moveType)
{
    return moveType >= 0 && moveType < StageTypeCount;
}

} // namespace

bool StageModelCatalogue::loadFile(const QString &path)
{
    qDebug() << "loadModelsData" << __LINE__ << path;
    const QFileInfo info(path);
    if (info.exists() && !info.isFile()) {
        // Opening a pipe would wait for its writer, and a device may have no end.
        qDebug() << "loadModelsData open file error" << path << "is not a file";
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug() << "loadModelsData open file error" << path << file.errorString();
        return false;
    }
    if (file.size() > MaxFileSize) {
        qDebug() << "loadModelsData file too large" << path << file.size() << "limit" << MaxFileSize;
        return true;
    }
    const QByteArray json = file.readAll();
    if (file.error() != QFile::NoError) {
        qDebug() << "loadModelsData read file error" << path << file.errorString();
        return true;
    }

    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    qDebug() << "loadModelsData" << __LINE__ << int(error.error);
    if (error.error != QJsonParseError::NoError) {
        qDebug() << "loadModelsData" << path << "offset" << error.offset << error.errorString();
        return true;
    }
    const QVector<Fault> faults = fill(document);
    if (faults.isEmpty())
        return true;
    const QVector<int> offsets = elementOffsets(json);
    for (const Fault &fault : faults)
        qDebug() << "loadModelsData" << path << "offset" << offsets.value(fault.element, 0) << fault.what;
    return true;
}

void StageModelCatalogue::load(const QJsonDocument &document)
{
    const QVector<Fault> faults = fill(document);
    for (const Fault &fault : faults)
        qDebug() << "loadModelsJson" << fault.what;
}

QVector<StageModelCatalogue::Fault> StageModelCatalogue::fill(const QJsonDocument &document)
{
    const QJsonObject top = document.object();
    if (top.isEmpty()) {
        qDebug() << "loadModelsJson" << __LINE__;
        return {{-1, QStringLiteral("no object with models, the former ones stay")}};
    }

    for (QStringList &names : m_names)
        names.clear();
    m_models.clear();

    QVector<Fault> faults;
    int faultCount = 0;
    const auto note = [&](int element, const QString &what) {
        if (++faultCount <= maxLoggedFaults)
            faults.append({element, QStringLiteral("model %1: %2").arg(element + 1).arg(what)});
    };
    const QJsonValue value = top.value(QLatin1String(modelsKey));
    if (!value.isArray())
        return {{-1, QStringLiteral("%1 is no array").arg(QLatin1String(modelsKey))}};
    const QJsonArray models = value.toArray();
    for (int element = 0; element < models.size(); ++element) {
        const QJsonObject model = models.at(element).toObject();
        if (model.isEmpty()) {
            note(element, QStringLiteral("no object, or an empty one"));
            continue;
        }
        QStringList mistyped;
        const MoverDevParam stage = fromJson(model, &mistyped);
        if (!mistyped.isEmpty())
            note(element, QStringLiteral("wrong type of ") + mistyped.join(QStringLiteral(", ")));
        if (m_models.contains(stage.name))
            note(element, QStringLiteral("one more with the name \"%1\"").arg(stage.name));
        m_models.insert(stage.name, stage);
        // A model of any other type stays in the map and is offered nowhere.
        if (isStageType(stage.moveType))
            m_names[uint(stage.moveType)].append(stage.name);
        else
            note(element, QStringLiteral("moveType %1 is offered nowhere").arg(stage.moveType));
    }
    if (faultCount > maxLoggedFaults)
        faults.append({-1, QStringLiteral("and %1 more").arg(faultCount - maxLoggedFaults)});
    return faults;
}

QStringList StageModelCatalogue::names(int moveType) const
{
    return isStageType(moveType) ? m_names[uint(moveType)] : QStringList();
}

std::optional<MoverDevParam> StageModelCatalogue::find(const QString &name, int moveType) const
{
    auto model = m_models.lowerBound(name);
    while (model != m_models.end() && model.key() == name && model->moveType != moveType)
        ++model;
    if (model == m_models.end())
        return std::nullopt;
    return *model;
}
