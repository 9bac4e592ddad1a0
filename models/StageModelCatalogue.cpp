// SPDX-License-Identifier: MIT
#include "models/StageModelCatalogue.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>

#include <variant>

namespace {

Q_LOGGING_CATEGORY(diagnostics, "mover.models")

constexpr int maxLoggedFaults = 20; // a file of another kind would have one in every element

constexpr char modelsKey[] = "MoverModels";

using Stage = MoverDevParam;

/** A key of a model and where its value goes. */
struct Key {
    QLatin1String name;
    std::variant<QString Stage::*, int Stage::*, float Stage::*, double Stage::*> field;
};

const Key keys[] = {
    {QLatin1String("AxisType"), &Stage::AxisType},
    {QLatin1String("dispOneCircle"), &Stage::dispOneCircle},
    {QLatin1String("limitDirection"), &Stage::limitDirection},
    {QLatin1String("maxAcc"), &Stage::maxAcc},
    {QLatin1String("maxPos"), &Stage::maxPos},
    {QLatin1String("maxRockerSpeed"), &Stage::maxRockerSpeed},
    {QLatin1String("maxSpeed"), &Stage::maxSpeed},
    {QLatin1String("minPos"), &Stage::minPos},
    {QLatin1String("modifyDate"), &Stage::modifyDate},
    {QLatin1String("motorPhase"), &Stage::motorPhase},
    {QLatin1String("moveType"), &Stage::moveType},
    {QLatin1String("name"), &Stage::name},
    {QLatin1String("negativePolarity"), &Stage::negativePolarity},
    {QLatin1String("optNum"), &Stage::optNum},
    {QLatin1String("optOrder"), &Stage::optOrder},
    {QLatin1String("originPolarity"), &Stage::originPolarity},
    {QLatin1String("originSigID"), &Stage::originSigID},
    {QLatin1String("phaseDirction"), &Stage::phaseDirction},
    {QLatin1String("positivePolarity"), &Stage::positivePolarity},
    {QLatin1String("pulseOneCircle"), &Stage::pulseOneCircle},
    {QLatin1String("restoreSpeed"), &Stage::restoreSpeed},
    {QLatin1String("returnTrip"), &Stage::returnTrip},
    {QLatin1String("unitString"), &Stage::unitString},
    {QLatin1String("zeroOptWidth"), &Stage::zeroOptWidth},
};

// Each returns whether the value has the right type; one of a wrong type leaves the default.
bool store(const QJsonValue &value, QString &field)
{
    field = value.toString();
    return value.isString();
}
bool store(const QJsonValue &value, int &field)
{
    field = value.toInt();
    return field != 0 || value.toInt(1) == 0; // otherwise the default was taken
}
template <typename Real>
bool store(const QJsonValue &value, Real &field)
{
    field = Real(value.toDouble());
    return value.isDouble();
}

/** Values of a wrong type count as missing; the names of their keys are added to `mistyped`. Other keys are ignored. */
Stage fromJson(const QJsonObject &model, QStringList *mistyped)
{
    Stage stage;
    stage.auxText = QLatin1String("");
    for (const Key &key : keys) {
        const QJsonValue value = model.value(key.name);
        const bool fits =
            value.isUndefined() || std::visit([&](auto field) { return store(value, stage.*field); }, key.field);
        if (!fits)
            mistyped->append(key.name);
    }
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
        qCDebug(diagnostics) << "loadModelsData file too large" << path << file.size() << "limit" << MaxFileSize;
        return true;
    }
    const QByteArray json = file.readAll();
    if (file.error() != QFile::NoError) {
        qCDebug(diagnostics) << "loadModelsData read file error" << path << file.errorString();
        return true;
    }

    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    qDebug() << "loadModelsData" << __LINE__ << int(error.error);
    if (error.error != QJsonParseError::NoError) {
        qCDebug(diagnostics) << "loadModelsData" << path << "offset" << error.offset << error.errorString();
        return true;
    }
    const QStringList faults = fill(document);
    for (const QString &fault : faults)
        qCDebug(diagnostics) << "loadModelsData" << path << fault;
    return true;
}

void StageModelCatalogue::load(const QJsonDocument &document)
{
    const QStringList faults = fill(document);
    for (const QString &fault : faults)
        qCDebug(diagnostics) << "loadModelsJson" << fault;
}

QStringList StageModelCatalogue::fill(const QJsonDocument &document)
{
    const QJsonObject top = document.object();
    if (top.isEmpty()) {
        qDebug() << "loadModelsJson" << __LINE__;
        return {QStringLiteral("no object with models, the former ones stay")};
    }

    for (QStringList &names : m_names)
        names.clear();
    m_models.clear();

    QStringList faults;
    int faultCount = 0;
    const auto note = [&](int element, const QString &what) {
        if (++faultCount <= maxLoggedFaults)
            faults.append(QStringLiteral("model %1: %2").arg(element + 1).arg(what));
    };
    const QJsonValue value = top.value(QLatin1String(modelsKey));
    if (!value.isArray())
        return {QStringLiteral("%1 is no array").arg(QLatin1String(modelsKey))};
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
        const int before = m_models.size();
        m_models.insert(stage.name, stage);
        if (m_models.size() == before)
            note(element, QStringLiteral("one more with the name \"%1\"").arg(stage.name));
        // A model of any other type stays in the map and is offered nowhere.
        if (isStageType(stage.moveType))
            m_names[uint(stage.moveType)].append(stage.name);
        else
            note(element, QStringLiteral("moveType %1 is offered nowhere").arg(stage.moveType));
    }
    if (faultCount > maxLoggedFaults)
        faults.append(QStringLiteral("and %1 more").arg(faultCount - maxLoggedFaults));
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
