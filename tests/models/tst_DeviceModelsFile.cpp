// SPDX-License-Identifier: MIT
#include "models/StageModelCatalogue.h"

#include <QDate>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QtTest>

#include <algorithm>
#include <cmath>

namespace {

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool hasType(const QJsonValue &value, const QString &type)
{
    if (type == "object")
        return value.isObject();
    if (type == "array")
        return value.isArray();
    if (type == "string")
        return value.isString();
    if (type == "number")
        return value.isDouble();
    if (type == "integer")
        return value.isDouble() && value.toDouble() == std::floor(value.toDouble());
    return false;
}

/** What is wrong with `value` according to a JSON schema that uses the key words below; empty when nothing is. */
QStringList faults(const QJsonValue &value, const QJsonObject &schema, const QString &where = "/")
{
    QStringList found;
    const auto check = [&](bool ok, const QString &rule) {
        if (!ok)
            found << where + ": " + rule;
    };
    const QJsonObject properties = schema["properties"].toObject();
    for (auto rule = schema.begin(); rule != schema.end(); ++rule) {
        const QString key = rule.key();
        const QJsonValue limit = rule.value();
        if (key == "type") {
            check(hasType(value, limit.toString()), "is not of type " + limit.toString());
        } else if (key == "enum") {
            check(limit.toArray().contains(value), "is not one of the values");
        } else if (key == "minimum") {
            check(value.toDouble() >= limit.toDouble(), "is too small");
        } else if (key == "exclusiveMinimum") {
            check(value.toDouble() > limit.toDouble(), "is too small");
        } else if (key == "maximum") {
            check(value.toDouble() <= limit.toDouble(), "is too large");
        } else if (key == "pattern") {
            check(QRegularExpression(limit.toString()).match(value.toString()).hasMatch(), "does not fit the pattern");
        } else if (key == "required") {
            for (const QJsonValue &name : limit.toArray())
                check(value.toObject().contains(name.toString()), "lacks " + name.toString());
        } else if (key == "additionalProperties") {
            for (const QString &name : value.toObject().keys())
                check(limit.toBool() || properties.contains(name), "has no " + name);
        } else if (key == "properties") {
            for (const QString &name : properties.keys()) {
                if (value.toObject().contains(name))
                    found << faults(value.toObject()[name], properties[name].toObject(), where + name + "/");
            }
        } else if (key == "items") {
            const QJsonArray items = value.toArray();
            for (int i = 0; i < items.size(); ++i)
                found << faults(items[i], limit.toObject(), where + QString::number(i) + "/");
        } else {
            check(key == "$schema" || key == "title" || key == "description", "unknown rule " + key);
        }
    }
    return found;
}

} // namespace

class tst_DeviceModelsFile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void standsBesideTheProgram();
    void fitsTheSchema();
    void schemaFindsFaults_data();
    void schemaFindsFaults();
    void hasSixModelsOfEachType();
    void hasEachNameOnce();
    void hasTheStagesOfTheSimulatedController();

    void isConsistent_data();
    void isConsistent();

private:
    QJsonObject m_file;
    QJsonObject m_schema;
    StageModelCatalogue m_catalogue;
};

void tst_DeviceModelsFile::initTestCase()
{
    const QString path = QFINDTESTDATA("../../models/deviceModelsParam");
    m_file = QJsonDocument::fromJson(contentsOf(path)).object();
    QVERIFY(!m_file.isEmpty());
    m_schema = QJsonDocument::fromJson(contentsOf(QFINDTESTDATA("../../docs/model-file.schema.json"))).object();
    QVERIFY(!m_schema.isEmpty());
    QVERIFY(m_catalogue.loadFile(path));
}

void tst_DeviceModelsFile::standsBesideTheProgram()
{
    const QByteArray copy = contentsOf(MOVER_PROGRAM_DIR "/deviceModelsParam");
    QVERIFY(!copy.isEmpty());
    QCOMPARE(copy, contentsOf(QFINDTESTDATA("../../models/deviceModelsParam")));
}

void tst_DeviceModelsFile::fitsTheSchema()
{
    QCOMPARE(faults(m_file, m_schema), QStringList());
}

void tst_DeviceModelsFile::schemaFindsFaults_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("missing") << "maxAcc" << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("unknown key") << "phaseDirection" << QJsonValue(0);
    QTest::newRow("text for a number") << "modifyDate" << QJsonValue("20230605");
    QTest::newRow("fraction of a pulse") << "pulseOneCircle" << QJsonValue(0.5);
    QTest::newRow("name of 32 characters") << "name" << QJsonValue(QString(32, 'a'));
    QTest::newRow("name outside ASCII") << "name" << QJsonValue("位移台");
    QTest::newRow("no name") << "name" << QJsonValue("");
    QTest::newRow("fifth type") << "moveType" << QJsonValue(4);
    QTest::newRow("unit in capitals") << "unitString" << QJsonValue("MM");
    QTest::newRow("no lead") << "dispOneCircle" << QJsonValue(0);
    QTest::newRow("backlash beyond 16 bits") << "returnTrip" << QJsonValue(-32769);
}

void tst_DeviceModelsFile::schemaFindsFaults()
{
    QFETCH(QString, key);
    QFETCH(QJsonValue, value);
    QJsonObject model = m_file["MoverModels"].toArray().first().toObject();
    model[key] = value;
    const QStringList found = faults(QJsonObject{{"MoverModels", QJsonArray{model}}}, m_schema);
    QVERIFY(!found.isEmpty());
    for (const QString &fault : found)
        QVERIFY2(fault.contains(key), qPrintable(fault));
}

void tst_DeviceModelsFile::hasSixModelsOfEachType()
{
    for (int type = 0; type < StageTypeCount; ++type)
        QVERIFY(m_catalogue.names(type).size() >= 6);
}

void tst_DeviceModelsFile::hasEachNameOnce()
{
    QStringList names;
    for (const QJsonValue &model : m_file["MoverModels"].toArray())
        names << model.toObject()["name"].toString();
    QCOMPARE(names.removeDuplicates(), 0);
}

void tst_DeviceModelsFile::hasTheStagesOfTheSimulatedController()
{
    QMap<QString, QJsonObject> models;
    for (const QJsonValue &model : m_file["MoverModels"].toArray())
        models.insert(model.toObject()["name"].toString(), model.toObject());

    QStringList compared;
    const QString scenario = QFINDTESTDATA("../../controllers/simulated/scenarios/default.json");
    for (const QJsonValue &controller : QJsonDocument::fromJson(contentsOf(scenario))["controllers"].toArray()) {
        for (const QJsonValue &axis : controller["axes"].toArray()) {
            QJsonObject stage = axis["stage"].toObject();
            if (stage.isEmpty())
                continue;
            const QString name = stage.take("modelName").toString();
            stage.remove("serialNumber"); // belongs to one stage
            stage.remove("unitType");     // follows from the unit
            for (const QString &key : stage.keys())
                QVERIFY2(models[name][key] == stage[key], qPrintable(name + ": " + key));
            compared << name;
        }
    }
    QCOMPARE(compared, (QStringList{"LIN-100", "ROT-60"}));
}

void tst_DeviceModelsFile::isConsistent_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("moveType");
    for (int type = 0; type < StageTypeCount; ++type) {
        for (const QString &name : m_catalogue.names(type))
            QTest::newRow(qPrintable(name)) << name << type;
    }
}

void tst_DeviceModelsFile::isConsistent()
{
    QFETCH(QString, name);
    QFETCH(int, moveType);
    const MoverDevParam stage = m_catalogue.find(name, moveType).value();
    const bool isAngle = moveType == STAGE_ROTATION || moveType == STAGE_ANGULAR;
    const double travel = stage.maxPos - stage.minPos;
    const double lead = double(stage.dispOneCircle);
    const double step = lead / stage.pulseOneCircle;

    QCOMPARE(stage.unitString, QString(isAngle ? "°" : "mm"));
    QVERIFY(QDate::fromString(QString::number(stage.modifyDate), "yyyyMMdd").isValid());

    // The name ends with the size: travel in mm, table diameter in mm, or half the angle.
    const double size = name.section('-', -1).toDouble();
    QVERIFY(size > 0);
    switch (moveType) {
    case STAGE_LINEAR:
        QCOMPARE(travel, size);
        QVERIFY(travel >= 25 && travel <= 300);
        break;
    case STAGE_ROTATION:
        QVERIFY(size >= 60 && size <= 200);
        QVERIFY(travel > 180 && travel <= 360);
        break;
    case STAGE_ANGULAR:
        QCOMPARE(stage.maxPos, size);
        QCOMPARE(stage.minPos, -size);
        QVERIFY(size >= 10 && size <= 45);
        break;
    case STAGE_LIFTING:
        QCOMPARE(travel, size);
        QVERIFY(travel >= 5 && travel <= 60);
        break;
    }
    QVERIFY(stage.minPos <= 0 && stage.maxPos > 0);

    // The motor: a whole number of pulses for each of the 200 or 500 full steps of 2 or 5 phases, at most 20
    // revolutions and 10,000 pulses a second.
    QVERIFY(stage.motorPhase == 2 || stage.motorPhase == 5);
    QCOMPARE(stage.pulseOneCircle % (stage.motorPhase == 2 ? 200 : 500), 0);
    QVERIFY(stage.maxSpeed / lead <= 20);
    QVERIFY(stage.maxSpeed / step <= 10000);

    // From standstill to full speed in 0.1 to 1 s, within a quarter of the travel.
    const double seconds = stage.maxSpeed / stage.maxAcc;
    QVERIFY(seconds >= 0.1 && seconds <= 1);
    QVERIFY(stage.maxSpeed * seconds / 2 <= travel / 4);
    QVERIFY(double(stage.restoreSpeed) <= stage.maxSpeed / 2);
    QVERIFY(stage.maxRockerSpeed <= stage.maxSpeed);

    // Opto-couplers at either end and at the origin between them.
    QCOMPARE(stage.optNum, 3);
    QVERIFY(stage.optOrder == "NZP" || stage.optOrder == "PZN");
    QVERIFY(stage.zeroOptWidth > 0 && stage.zeroOptWidth * step <= travel / 10);
    QVERIFY(std::abs(stage.returnTrip) <= stage.pulseOneCircle / 100);
}

QTEST_GUILESS_MAIN(tst_DeviceModelsFile)
#include "tst_DeviceModelsFile.moc"
