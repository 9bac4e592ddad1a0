// SPDX-License-Identifier: MIT
// Bytes as the model file: what is offered is in the file, in its order and with its values; a file of no use changes
// nothing.
#include "models/StageModelCatalogue.h"

#include "Fuzz.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace {

void refuseWarnings(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    Fuzz::require(type == QtDebugMsg, "Qt warns:", message);
}

QByteArray modelFile(const StageModelCatalogue &catalogue)
{
    QJsonArray models;
    for (int type = 0; type < StageTypeCount; ++type) {
        for (const QString &name : catalogue.names(type)) {
            const auto stage = catalogue.find(name, type);
            if (!stage || stage->name != name || stage->moveType != type)
                continue;
            models.append(QJsonObject{{"name", name}, {"moveType", type}, {"maxPos", stage->maxPos}});
        }
    }
    return QJsonDocument(QJsonObject{{"MoverModels", models}}).toJson();
}

void checkModel(const QJsonObject &model, const MoverDevParam &stage)
{
    const QPair<const char *, int> integers[] = {
        {"pulseOneCircle", stage.pulseOneCircle},
        {"moveType", stage.moveType},
        {"returnTrip", stage.returnTrip},
        {"modifyDate", stage.modifyDate},
    };
    for (const auto &integer : integers)
        Fuzz::require(model[QLatin1String(integer.first)].toInt() == integer.second, integer.first);
    const QPair<const char *, double> reals[] = {
        {"maxSpeed", stage.maxSpeed},
        {"maxAcc", stage.maxAcc},
        {"minPos", stage.minPos},
        {"maxPos", stage.maxPos},
        {"maxRockerSpeed", stage.maxRockerSpeed},
    };
    for (const auto &real : reals) {
        Fuzz::require(qIsFinite(real.second), "not finite:", real.first);
        Fuzz::require(model[QLatin1String(real.first)].toDouble() == real.second, real.first);
    }
    Fuzz::require(stage.auxText.isEmpty() && !stage.auxText.isNull(), "auxText");
    Fuzz::require(stage.unitString == model["unitString"].toString(), "unitString");
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile target(path);
    if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size())
        Fuzz::fail("cannot write", path);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QTemporaryDir folder;
    static const QString path = folder.filePath(QStringLiteral("deviceModelsParam"));
    qInstallMessageHandler(&refuseWarnings);

    StageModelCatalogue catalogue;
    catalogue.load(QJsonDocument::fromJson(R"({"MoverModels": [{"name": "before", "moveType": 3}]})"));

    const QByteArray file(reinterpret_cast<const char *>(data), int(size));
    write(path, file);
    Fuzz::require(catalogue.loadFile(path), "an existing file counts as none");

    QJsonParseError error;
    const QJsonObject top = QJsonDocument::fromJson(file, &error).object();
    if (error.error != QJsonParseError::NoError || top.isEmpty()) {
        Fuzz::require(catalogue.names(STAGE_LIFTING) == QStringList{QStringLiteral("before")}, "useless, but taken");
        return 0;
    }

    QStringList expected[StageTypeCount];
    QMap<QString, QJsonObject> last;
    for (const QJsonValue value : top["MoverModels"].toArray()) {
        const QJsonObject model = value.toObject();
        if (model.isEmpty())
            continue;
        const QString name = model["name"].toString();
        last[name] = model;
        const int type = model["moveType"].toInt();
        if (type >= 0 && type < StageTypeCount)
            expected[type].append(name);
    }
    for (int type = -1; type <= StageTypeCount; ++type) {
        const bool inRange = type >= 0 && type < StageTypeCount;
        Fuzz::require(catalogue.names(type) == (inRange ? expected[type] : QStringList()), "other names");
        for (const QString &name : catalogue.names(type)) {
            const auto stage = catalogue.find(name, type);
            const bool own = last[name]["moveType"].toInt() == type;
            Fuzz::require(!own || (stage && stage->name == name), "offered, but not found", name);
            Fuzz::require(!stage || stage->name >= name, "one before it was found for", name);
            if (stage)
                checkModel(last[stage->name], *stage);
        }
    }

    // What was read can be written and read again.
    const QByteArray again = modelFile(catalogue);
    write(path, again);
    StageModelCatalogue second;
    second.loadFile(path);
    Fuzz::require(modelFile(second) == again, "written and read again it is another");
    return 0;
}
