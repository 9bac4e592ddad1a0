// SPDX-License-Identifier: MIT
#include "models/StageModelCatalogue.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

MoverDevParam fromJson(const QJsonObject &model)
{
    const auto text = [&model](const char *key) { return model.value(QLatin1String(key)).toString(); };
    const auto integer = [&model](const char *key) { return model.value(QLatin1String(key)).toInt(); };
    const auto real = [&model](const char *key) { return model.value(QLatin1String(key)).toDouble(); };

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
    if (error.error == QJsonParseError::NoError)
        load(document);
    else
        qDebug() << "loadModelsData" << path << "offset" << error.offset << error.errorString();
    return true;
}

void StageModelCatalogue::load(const QJsonDocument &document)
{
    const QJsonObject top = document.object();
    if (top.isEmpty()) {
        qDebug() << "loadModelsJson" << __LINE__ << "no models, the former ones stay";
        return;
    }

    for (QStringList &names : m_names)
        names.clear();
    m_models.clear();
    const QJsonArray models = top.value(QLatin1String("MoverModels")).toArray();
    for (const QJsonValue &element : models) {
        const QJsonObject model = element.toObject();
        if (model.isEmpty())
            continue;
        const MoverDevParam stage = fromJson(model);
        m_models.insert(stage.name, stage);
        // A model of any other type stays in the map and is offered nowhere.
        if (isStageType(stage.moveType))
            m_names[uint(stage.moveType)].append(stage.name);
    }
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
