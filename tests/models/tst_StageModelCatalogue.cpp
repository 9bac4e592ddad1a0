// SPDX-License-Identifier: MIT
#include "models/StageModelCatalogue.h"

#include "support/DebugLog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace {

/** A catalogue that knows one model: "OLD", linear. */
StageModelCatalogue filledCatalogue()
{
    StageModelCatalogue catalogue;
    catalogue.load(QJsonDocument::fromJson(R"({"MoverModels": [{"name": "OLD", "moveType": 0}]})"));
    return catalogue;
}

bool hasOnlyTheOldModel(const StageModelCatalogue &catalogue)
{
    return catalogue.names(STAGE_LINEAR) == QStringList{"OLD"} && catalogue.names(STAGE_ROTATION).isEmpty() &&
           catalogue.names(STAGE_ANGULAR).isEmpty() && catalogue.names(STAGE_LIFTING).isEmpty() &&
           catalogue.find("OLD", STAGE_LINEAR).has_value();
}

/** A catalogue of the models in a JSON array. */
StageModelCatalogue catalogueOf(const QByteArray &models)
{
    StageModelCatalogue catalogue;
    catalogue.load(QJsonDocument::fromJson("{\"MoverModels\": " + models + "}"));
    return catalogue;
}

const QByteArray newModel = R"({"MoverModels": [{"name": "NEW", "moveType": 3}]})";

} // namespace

class tst_StageModelCatalogue : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void isEmptyAtFirst();

    void readsEveryField();
    void givesDefaultsToMissingFields();
    void givesDefaultsToMistypedFields_data();
    void givesDefaultsToMistypedFields();
    void holdsLeadAndHomingSpeedInSinglePrecision();
    void ignoresUnknownMembers();
    void skipsEmptyElements();
    void takesModelWithoutName();

    void listsNamesPerTypeInFileOrder();
    void offersOtherTypesNowhere_data();
    void offersOtherTypesNowhere();
    void clearsWhenThereIsNoModel_data();
    void clearsWhenThereIsNoModel();
    void keepsModelsWhenTopLevelIsEmpty_data();
    void keepsModelsWhenTopLevelIsEmpty();

    void keepsTheLaterOfTwoModelsOfOneNameAndType();
    void walksOnWhenAnotherTypeTookTheName();
    void findsNothingBehindTheLastName();
    void findsTheNextModelForAnUnknownName();

    void readsFile();
    void readsByteOrderMark();
    void keepsModelsWhenFileCannotBeOpened_data();
    void keepsModelsWhenFileCannotBeOpened();
    void keepsModelsWhenFileIsBroken_data();
    void keepsModelsWhenFileIsBroken();
    void saysWhichModelHasAMistake_data();
    void saysWhichModelHasAMistake();
    void saysNoMoreThanTwentyMistakes();
    void keepsModelsWhereverTheFileIsCut();
    void readsFileOfTheLargestSize();
    void refusesLargerFile();

private:
    QString writeFile(const QByteArray &contents);

    QTemporaryDir m_folder;
};

void tst_StageModelCatalogue::initTestCase()
{
    QVERIFY(m_folder.isValid());
}

QString tst_StageModelCatalogue::writeFile(const QByteArray &contents)
{
    QFile file(m_folder.filePath("deviceModelsParam"));
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("cannot write the test's file");
    return file.fileName();
}

void tst_StageModelCatalogue::isEmptyAtFirst()
{
    const StageModelCatalogue catalogue;
    for (int type = -1; type <= StageTypeCount; ++type) {
        QVERIFY(catalogue.names(type).isEmpty());
        QVERIFY(!catalogue.find("", type));
        QVERIFY(!catalogue.find("LIN-100", type));
    }
}

void tst_StageModelCatalogue::readsEveryField()
{
    const StageModelCatalogue catalogue = catalogueOf(R"([{
        "name": "M", "pulseOneCircle": 1, "dispOneCircle": 2.5, "restoreSpeed": 3.5, "AxisType": 4,
        "positivePolarity": 5, "negativePolarity": 6, "originPolarity": 7, "phaseDirction": 8, "originSigID": 9,
        "unitString": "°", "moveType": 2, "limitDirection": 10, "optOrder": "NZP", "maxSpeed": 11.5, "maxAcc": 12.5,
        "minPos": -13.5, "maxPos": 14.5, "zeroOptWidth": 15, "optNum": 16, "returnTrip": -17, "motorPhase": 18,
        "modifyDate": 20230605, "maxRockerSpeed": 19.1, "auxText": "not a key"}])");
    const std::optional<MoverDevParam> stage = catalogue.find("M", STAGE_ANGULAR);
    QVERIFY(stage);
    QCOMPARE(stage->name, QString("M"));
    QCOMPARE(stage->auxText, QString(""));
    QCOMPARE(stage->pulseOneCircle, 1);
    QCOMPARE(stage->dispOneCircle, 2.5F);
    QCOMPARE(stage->restoreSpeed, 3.5F);
    QCOMPARE(stage->AxisType, 4);
    QCOMPARE(stage->positivePolarity, 5);
    QCOMPARE(stage->negativePolarity, 6);
    QCOMPARE(stage->originPolarity, 7);
    QCOMPARE(stage->phaseDirction, 8);
    QCOMPARE(stage->originSigID, 9);
    QCOMPARE(stage->unitString, QString("°"));
    QCOMPARE(stage->moveType, 2);
    QCOMPARE(stage->limitDirection, 10);
    QCOMPARE(stage->optOrder, QString("NZP"));
    QCOMPARE(stage->maxSpeed, 11.5);
    QCOMPARE(stage->maxAcc, 12.5);
    QCOMPARE(stage->minPos, -13.5);
    QCOMPARE(stage->maxPos, 14.5);
    QCOMPARE(stage->zeroOptWidth, 15);
    QCOMPARE(stage->optNum, 16);
    QCOMPARE(stage->returnTrip, -17);
    QCOMPARE(stage->motorPhase, 18);
    QCOMPARE(stage->modifyDate, 20230605);
    QCOMPARE(stage->maxRockerSpeed, 19.1);
}

void tst_StageModelCatalogue::givesDefaultsToMissingFields()
{
    const std::optional<MoverDevParam> stage = catalogueOf(R"([{"name": "M"}])").find("M", STAGE_LINEAR);
    QVERIFY(stage);
    QCOMPARE(stage->moveType, 0);
    QCOMPARE(stage->pulseOneCircle, 0);
    QCOMPARE(stage->dispOneCircle, 0.0F);
    QCOMPARE(stage->maxSpeed, 0.0);
    QCOMPARE(stage->unitString, QString());
    QCOMPARE(stage->optOrder, QString());
}

void tst_StageModelCatalogue::givesDefaultsToMistypedFields_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("object") << QByteArray("{\"a\": 1}");
    QTest::newRow("array") << QByteArray("[1]");
    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("true") << QByteArray("true");
}

void tst_StageModelCatalogue::givesDefaultsToMistypedFields()
{
    QFETCH(QByteArray, value);
    const auto load = [](const QByteArray &member) {
        return catalogueOf("[{\"name\": \"M\", \"moveType\": 3, " + member + "}]").find("M", STAGE_LIFTING);
    };
    for (const QByteArray &wrong : {value, QByteArray("\"20230605\""), QByteArray("2.5"), QByteArray("3000000000")})
        QCOMPARE(load("\"modifyDate\": " + wrong)->modifyDate, 0);
    for (const QByteArray &wrong : {value, QByteArray("\"1.5\"")}) {
        QCOMPARE(load("\"dispOneCircle\": " + wrong)->dispOneCircle, 0.0F);
        QCOMPARE(load("\"maxSpeed\": " + wrong)->maxSpeed, 0.0);
    }
    for (const QByteArray &wrong : {value, QByteArray("1")})
        QCOMPARE(load("\"unitString\": " + wrong)->unitString, QString());
}

void tst_StageModelCatalogue::holdsLeadAndHomingSpeedInSinglePrecision()
{
    const std::optional<MoverDevParam> stage =
        catalogueOf(R"([{"name": "M", "dispOneCircle": 0.1, "restoreSpeed": 0.7}])").find("M", STAGE_LINEAR);
    QVERIFY(stage);
    QVERIFY(double(stage->dispOneCircle) == double(0.1F));
    QVERIFY(double(stage->restoreSpeed) == double(0.7F));
    QVERIFY(double(stage->dispOneCircle) != 0.1);
}

void tst_StageModelCatalogue::ignoresUnknownMembers()
{
    StageModelCatalogue catalogue;
    catalogue.load(QJsonDocument::fromJson(
        R"({"version": 7, "MoverModels": [{"name": "M", "moveType": 1, "colour": "red"}], "Models": [{"name": "X"}]})"));
    QCOMPARE(catalogue.names(STAGE_ROTATION), QStringList{"M"});
    QVERIFY(catalogue.names(STAGE_LINEAR).isEmpty());
}

void tst_StageModelCatalogue::skipsEmptyElements()
{
    const StageModelCatalogue catalogue = catalogueOf(R"([{}, 1, "text", null, [{"name": "X"}], {"name": "M"}])");
    QCOMPARE(catalogue.names(STAGE_LINEAR), QStringList{"M"});
    QVERIFY(!catalogue.find("N", STAGE_LINEAR));
    QCOMPARE(catalogue.find("", STAGE_LINEAR)->name, QString("M")); // no model without a name before it
}

void tst_StageModelCatalogue::takesModelWithoutName()
{
    const StageModelCatalogue catalogue = catalogueOf(R"([{"moveType": 1, "maxSpeed": 5}])");
    QCOMPARE(catalogue.names(STAGE_ROTATION), QStringList{""});
    QCOMPARE(catalogue.find("", STAGE_ROTATION)->maxSpeed, 5.0);
}

void tst_StageModelCatalogue::listsNamesPerTypeInFileOrder()
{
    const StageModelCatalogue catalogue = catalogueOf(R"([
        {"name": "L2", "moveType": 0}, {"name": "U1", "moveType": 3}, {"name": "R2", "moveType": 1},
        {"name": "A1", "moveType": 2}, {"name": "L1", "moveType": 0}, {"name": "R1", "moveType": 1}])");
    QCOMPARE(catalogue.names(STAGE_LINEAR), (QStringList{"L2", "L1"}));
    QCOMPARE(catalogue.names(STAGE_ROTATION), (QStringList{"R2", "R1"}));
    QCOMPARE(catalogue.names(STAGE_ANGULAR), QStringList{"A1"});
    QCOMPARE(catalogue.names(STAGE_LIFTING), QStringList{"U1"});
}

void tst_StageModelCatalogue::offersOtherTypesNowhere_data()
{
    QTest::addColumn<int>("moveType");
    QTest::newRow("-1") << -1;
    QTest::newRow("4") << 4;
}

void tst_StageModelCatalogue::offersOtherTypesNowhere()
{
    QFETCH(int, moveType);
    const StageModelCatalogue catalogue =
        catalogueOf("[{\"name\": \"M\", \"moveType\": " + QByteArray::number(moveType) + "}]");
    for (int type = -1; type <= StageTypeCount; ++type)
        QVERIFY(catalogue.names(type).isEmpty());
    QCOMPARE(catalogue.find("M", moveType)->name, QString("M"));
}

void tst_StageModelCatalogue::clearsWhenThereIsNoModel_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("empty array") << QByteArray(R"({"MoverModels": []})");
    QTest::newRow("not an array") << QByteArray(R"({"MoverModels": {"name": "M"}})");
    QTest::newRow("no such member") << QByteArray(R"({"moverModels": [{"name": "M"}]})");
}

void tst_StageModelCatalogue::clearsWhenThereIsNoModel()
{
    QFETCH(QByteArray, json);
    StageModelCatalogue catalogue = filledCatalogue();
    catalogue.load(QJsonDocument::fromJson(json));
    QVERIFY(catalogue.names(STAGE_LINEAR).isEmpty());
    QVERIFY(!catalogue.find("OLD", STAGE_LINEAR));
}

void tst_StageModelCatalogue::keepsModelsWhenTopLevelIsEmpty_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("empty object") << QByteArray("{}");
    QTest::newRow("array") << QByteArray(R"([{"MoverModels": [{"name": "M"}]}])");
    QTest::newRow("nothing") << QByteArray();
}

void tst_StageModelCatalogue::keepsModelsWhenTopLevelIsEmpty()
{
    QFETCH(QByteArray, json);
    StageModelCatalogue catalogue = filledCatalogue();
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^loadModelsJson \\d+"));
    catalogue.load(QJsonDocument::fromJson(json));
    QVERIFY(hasOnlyTheOldModel(catalogue));
}

void tst_StageModelCatalogue::keepsTheLaterOfTwoModelsOfOneNameAndType()
{
    const StageModelCatalogue catalogue =
        catalogueOf(R"([{"name": "M", "maxSpeed": 1}, {"name": "M", "maxSpeed": 2}])");
    QCOMPARE(catalogue.names(STAGE_LINEAR), (QStringList{"M", "M"}));
    QCOMPARE(catalogue.find("M", STAGE_LINEAR)->maxSpeed, 2.0);
}

void tst_StageModelCatalogue::walksOnWhenAnotherTypeTookTheName()
{
    const StageModelCatalogue catalogue = catalogueOf(R"([
        {"name": "M", "moveType": 0, "maxSpeed": 1}, {"name": "Z", "moveType": 0, "maxSpeed": 4},
        {"name": "N", "moveType": 3, "maxSpeed": 3}, {"name": "M", "moveType": 1, "maxSpeed": 2}])");
    QCOMPARE(catalogue.names(STAGE_LINEAR), (QStringList{"M", "Z"}));
    QCOMPARE(catalogue.names(STAGE_ROTATION), QStringList{"M"});
    QCOMPARE(catalogue.find("M", STAGE_ROTATION)->maxSpeed, 2.0);
    // The walk ends at the next name, although its type is neither.
    QCOMPARE(catalogue.find("M", STAGE_LINEAR)->name, QString("N"));
    QCOMPARE(catalogue.find("M", STAGE_LINEAR)->moveType, int(STAGE_LIFTING));
}

void tst_StageModelCatalogue::findsNothingBehindTheLastName()
{
    const StageModelCatalogue catalogue =
        catalogueOf(R"([{"name": "A", "moveType": 0}, {"name": "M", "moveType": 0}, {"name": "M", "moveType": 1}])");
    QVERIFY(!catalogue.find("M", STAGE_LINEAR));
    QVERIFY(catalogue.find("M", STAGE_ROTATION));
}

void tst_StageModelCatalogue::findsTheNextModelForAnUnknownName()
{
    const StageModelCatalogue catalogue = catalogueOf(R"([{"name": "C", "moveType": 2}])");
    QCOMPARE(catalogue.find("B", STAGE_LINEAR)->name, QString("C"));
    QVERIFY(!catalogue.find("D", STAGE_LINEAR));
}

void tst_StageModelCatalogue::readsFile()
{
    const QString path = writeFile(newModel);
    StageModelCatalogue catalogue = filledCatalogue();
    QTest::ignoreMessage(
        QtDebugMsg, QRegularExpression("^loadModelsData \\d+ \"" + QRegularExpression::escape(path) + "\"$"));
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^loadModelsData \\d+ 0$"));
    QVERIFY(catalogue.loadFile(path));
    QCOMPARE(catalogue.names(STAGE_LIFTING), QStringList{"NEW"});
    QVERIFY(catalogue.names(STAGE_LINEAR).isEmpty());
}

void tst_StageModelCatalogue::readsByteOrderMark()
{
    StageModelCatalogue catalogue;
    QVERIFY(catalogue.loadFile(writeFile("\xEF\xBB\xBF" + newModel)));
    QCOMPARE(catalogue.names(STAGE_LIFTING), QStringList{"NEW"});
}

void tst_StageModelCatalogue::keepsModelsWhenFileCannotBeOpened_data()
{
    QTest::addColumn<QString>("path");
    const QString file = writeFile(newModel);

    QTest::newRow("missing") << m_folder.filePath("nothing");
    QTest::newRow("no path") << QString();
    QTest::newRow("folder") << m_folder.path();
    QTest::newRow("below a file") << file + "/deviceModelsParam";
#ifdef Q_OS_UNIX
    const QString pipe = m_folder.filePath("pipe");
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QTest::newRow("pipe") << pipe;
    QTest::newRow("endless device") << "/dev/zero";
    const QString locked = m_folder.filePath("locked"); // Qt takes no rights away on Windows
    QVERIFY(QFile::copy(file, locked));
    QVERIFY(QFile::setPermissions(locked, {}));
    if (!QFileInfo(locked).isReadable()) // root reads everything
        QTest::newRow("not permitted") << locked;
#endif
}

void tst_StageModelCatalogue::keepsModelsWhenFileCannotBeOpened()
{
    QFETCH(QString, path);
    StageModelCatalogue catalogue = filledCatalogue();
    QTest::ignoreMessage(
        QtDebugMsg, QRegularExpression("^loadModelsData \\d+ \"" + QRegularExpression::escape(path) + "\"$"));
    QTest::ignoreMessage(
        QtDebugMsg,
        QRegularExpression("^loadModelsData open file error \"" + QRegularExpression::escape(path) + "\" .+"));
    QVERIFY(!catalogue.loadFile(path));
    QVERIFY(hasOnlyTheOldModel(catalogue));
}

void tst_StageModelCatalogue::keepsModelsWhenFileIsBroken_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<int>("offset"); // of the fault; the parser may have gone one further
    QTest::newRow("empty") << QByteArray() << 0;
    QTest::newRow("blank") << QByteArray(" \n\n") << 3;
    QTest::newRow("cut") << newModel.left(20) << 20;
    QTest::newRow("not JSON") << QByteArray("; models\n[LIN-100]\n") << 0;
    QTest::newRow("comma too many") << QByteArray("{\"MoverModels\": [],}") << 19;
    QTest::newRow("something behind it") << newModel + "x" << newModel.size();
    QTest::newRow("NUL at the beginning") << '\0' + newModel << 0;
    QTest::newRow("NUL at the end") << newModel + '\0' << newModel.size();
    QTest::newRow("zeroes only") << QByteArray(100000, '\0') << 0;
    QTest::newRow("two-byte characters") << QByteArray("{\0\"\0a\0\"\0", 8) << 1;
    QTest::newRow("not UTF-8") << QByteArray("{\"MoverModels\": [{\"name\": \"\xC3\x28\"}]}") << 27;
    QTest::newRow("too deep") << QByteArray("{\"MoverModels\": ") + QByteArray(1000000, '[') << 1040;
}

void tst_StageModelCatalogue::keepsModelsWhenFileIsBroken()
{
    QFETCH(QByteArray, contents);
    QFETCH(int, offset);
    const QString path = writeFile(contents);
    StageModelCatalogue catalogue = filledCatalogue();
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^loadModelsData \\d+ [1-9]\\d*$"));
    QTest::ignoreMessage(
        QtDebugMsg, QRegularExpression(QString("^loadModelsData \"%1\" offset (%2|%3) .+")
                                           .arg(QRegularExpression::escape(path))
                                           .arg(offset)
                                           .arg(offset + 1)));
    QVERIFY(catalogue.loadFile(path));
    QVERIFY(hasOnlyTheOldModel(catalogue));
}

void tst_StageModelCatalogue::saysWhichModelHasAMistake_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QStringList>("mistakes");
    const auto afterAGoodOne = [](const char *model) {
        return QByteArray(R"({"MoverModels": [{"name": "A", "x": [{}]}, )") + model + "]}";
    };
    QTest::newRow("none") << newModel << QStringList();
    QTest::newRow("no models") << QByteArray(R"({"Models": []})") << QStringList{"MoverModels is no array"};
    QTest::newRow("no array") << QByteArray(R"({"MoverModels": {"name": "M"}})")
                              << QStringList{"MoverModels is no array"};
    QTest::newRow("empty object") << QByteArray("{}") << QStringList{"no object with models, the former ones stay"};
    QTest::newRow("array") << QByteArray(R"([{"name": "M"}])")
                           << QStringList{"no object with models, the former ones stay"};
    QTest::newRow("no object") << afterAGoodOne("7") << QStringList{"model 2: no object, or an empty one"};
    QTest::newRow("empty model") << afterAGoodOne("{}") << QStringList{"model 2: no object, or an empty one"};
    QTest::newRow("wrong types") << afterAGoodOne(R"({"name": "M", "unitString": 1, "maxAcc": "2", "modifyDate": 2.5})")
                                 << QStringList{"model 2: wrong type of maxAcc, modifyDate, unitString"};
    QTest::newRow("name again") << afterAGoodOne(R"({"name": "A"})")
                                << QStringList{R"(model 2: one more with the name \"A\")"};
    QTest::newRow("stage type") << afterAGoodOne(R"({"name": "M", "moveType": 4})")
                                << QStringList{"model 2: moveType 4 is offered nowhere"};
    QTest::newRow("two of them") << afterAGoodOne(R"([], {"name": "M", "maxPos": "1"})")
                                 << QStringList{"model 2: no object, or an empty one", "model 3: wrong type of maxPos"};
}

void tst_StageModelCatalogue::saysWhichModelHasAMistake()
{
    QFETCH(QByteArray, contents);
    QFETCH(QStringList, mistakes);
    const QString path = writeFile(contents);
    const DebugLog log;
    StageModelCatalogue().loadFile(path);
    const QString begin = QString("loadModelsData \"%1\" ").arg(path);
    QStringList said;
    for (const QString &line : log.lines().filter(QRegularExpression("^" + QRegularExpression::escape(begin))))
        said << line.mid(begin.size() + 1).chopped(1); // without its quotation marks
    QCOMPARE(said, mistakes);
}

void tst_StageModelCatalogue::saysNoMoreThanTwentyMistakes()
{
    const QString path = writeFile("{\"MoverModels\": [" + QByteArray("0,").repeated(24) + "0]}");
    const DebugLog log;
    StageModelCatalogue().loadFile(path);
    QCOMPARE(log.lines().filter("no object, or an empty one").size(), 20);
    QVERIFY(log.lines().last().endsWith("\"and 5 more\""));
}

void tst_StageModelCatalogue::keepsModelsWhereverTheFileIsCut()
{
    StageModelCatalogue catalogue = filledCatalogue();
    for (int length = 0; length < newModel.size(); ++length) {
        QVERIFY(catalogue.loadFile(writeFile(newModel.left(length))));
        QVERIFY2(hasOnlyTheOldModel(catalogue), qPrintable(QString::number(length)));
    }
}

void tst_StageModelCatalogue::readsFileOfTheLargestSize()
{
    StageModelCatalogue catalogue = filledCatalogue();
    const int padding = int(StageModelCatalogue::MaxFileSize) - newModel.size();
    QVERIFY(catalogue.loadFile(writeFile(newModel + QByteArray(padding, ' '))));
    QCOMPARE(catalogue.names(STAGE_LIFTING), QStringList{"NEW"});
}

void tst_StageModelCatalogue::refusesLargerFile()
{
    const QString path = writeFile(newModel);
    QVERIFY(QFile::resize(path, StageModelCatalogue::MaxFileSize + 1));
    StageModelCatalogue catalogue = filledCatalogue();
    QTest::ignoreMessage(
        QtDebugMsg,
        QRegularExpression("^loadModelsData file too large \"" + QRegularExpression::escape(path) + "\" 67108865 "));
    QVERIFY(catalogue.loadFile(path));
    QVERIFY(hasOnlyTheOldModel(catalogue));
}

QTEST_GUILESS_MAIN(tst_StageModelCatalogue)
#include "tst_StageModelCatalogue.moc"
