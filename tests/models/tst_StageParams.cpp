// SPDX-License-Identifier: MIT
#include "models/StageParams.h"

#include <QtTest>

#include <cstring>
#include <limits>

namespace {

struct Narrowed {
    const char *name;
    int MoverDevParam::*program;
    uint16_t MotorParams::*controller;
};

/** Every field that has 16 unsigned bits in the controller. */
constexpr Narrowed narrowedFields[] = {
    {"moveType", &MoverDevParam::moveType, &MotorParams::moveType},
    {"positivePolarity", &MoverDevParam::positivePolarity, &MotorParams::positivePolarity},
    {"negativePolarity", &MoverDevParam::negativePolarity, &MotorParams::negativePolarity},
    {"originPolarity", &MoverDevParam::originPolarity, &MotorParams::originPolarity},
    {"phaseDirction", &MoverDevParam::phaseDirction, &MotorParams::phaseDirction},
    {"limitDirection", &MoverDevParam::limitDirection, &MotorParams::limitDirection},
    {"zeroOptWidth", &MoverDevParam::zeroOptWidth, &MotorParams::zeroOptWidth},
    {"optNum", &MoverDevParam::optNum, &MotorParams::optNum},
    {"motorPhase", &MoverDevParam::motorPhase, &MotorParams::motorPhase},
};

/** A record with a value of its own in every field. */
MotorParams exampleRecord()
{
    MotorParams params = {};
    std::strcpy(params.modelName, "LIFT-20");
    params.pulseOneCircle = 4000;
    params.dispOneCircle = 0.5;
    params.restoreSpeed = 1.5;
    params.moveType = STAGE_LIFTING;
    params.positivePolarity = 11;
    params.negativePolarity = 12;
    params.originPolarity = 13;
    params.phaseDirction = 14;
    params.limitDirection = 15;
    std::strcpy(params.optOrder, "NZP");
    params.maxSpeed = 20.1;
    params.maxAcc = 100.2;
    params.minPos = -50.3;
    params.maxPos = 50.4;
    params.zeroOptWidth = 16;
    params.optNum = 17;
    params.returnTrip = -18;
    params.motorPhase = 19;
    params.modifyDate = 20230605;
    params.maxRockerSpeed = 10.5;
    return params;
}

/** The same stage in the program's terms. */
MoverDevParam exampleStage()
{
    MoverDevParam stage;
    stage.name = "LIFT-20";
    stage.auxText = "";
    stage.pulseOneCircle = 4000;
    stage.dispOneCircle = 0.5F;
    stage.restoreSpeed = 1.5F;
    stage.moveType = STAGE_LIFTING;
    stage.positivePolarity = 11;
    stage.negativePolarity = 12;
    stage.originPolarity = 13;
    stage.phaseDirction = 14;
    stage.limitDirection = 15;
    stage.unitString = "mm";
    stage.optOrder = "NZP";
    stage.maxSpeed = 20.1;
    stage.maxAcc = 100.2;
    stage.minPos = -50.3;
    stage.maxPos = 50.4;
    stage.zeroOptWidth = 16;
    stage.optNum = 17;
    stage.returnTrip = -18;
    stage.motorPhase = 19;
    stage.modifyDate = 20230605;
    stage.maxRockerSpeed = 10.5;
    return stage;
}

QByteArray bytesOf(const MotorParams &params)
{
    return QByteArray(reinterpret_cast<const char *>(&params), int(sizeof params));
}

template <size_t Size>
QByteArray bytesOf(const char (&field)[Size])
{
    return QByteArray(field, int(Size));
}

QByteArray padded(const QByteArray &text, int size)
{
    return text + QByteArray(size - text.size(), '\0');
}

} // namespace

class tst_StageParams : public QObject
{
    Q_OBJECT

private slots:
    void writesEveryField();
    void writesNothingElse();
    void widensLeadAndHomingSpeed();
    void narrowsTo16Bits_data();
    void narrowsTo16Bits();
    void narrowsBacklashTo16SignedBits_data();
    void narrowsBacklashTo16SignedBits();
    void writesFullWidthIntegers();
    void cutsNameTo32Bytes_data();
    void cutsNameTo32Bytes();
    void cutsOptOrderTo4Bytes_data();
    void cutsOptOrderTo4Bytes();
    void writesMillimetresForExactlyMm_data();
    void writesMillimetresForExactlyMm();

    void readsEveryField();
    void readsUnitFromStageType_data();
    void readsUnitFromStageType();
    void readsIntegersAtTheirEdges();
    void readsTextsUpToTheFirstZero();
    void readsTextsThatFillTheirField();
    void readsEmptyTexts();
};

void tst_StageParams::writesEveryField()
{
    // The serial number and the gaps stay zero.
    const MotorParams params = toMotorParams(exampleStage());
    const MotorParams expected = exampleRecord();
    QCOMPARE(bytesOf(params).toHex(' '), bytesOf(expected).toHex(' '));
}

void tst_StageParams::writesNothingElse()
{
    MoverDevParam stage = exampleStage();
    stage.AxisType = 3;
    stage.originSigID = 4;
    stage.auxText = "text";
    QCOMPARE(bytesOf(toMotorParams(stage)).toHex(' '), bytesOf(exampleRecord()).toHex(' '));
}

void tst_StageParams::widensLeadAndHomingSpeed()
{
    MoverDevParam stage;
    stage.dispOneCircle = 0.1F;
    stage.restoreSpeed = 0.7F;
    QVERIFY(toMotorParams(stage).dispOneCircle == double(0.1F));
    QVERIFY(toMotorParams(stage).restoreSpeed == double(0.7F));
}

void tst_StageParams::narrowsTo16Bits_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("written");
    QTest::newRow("0") << 0 << 0;
    QTest::newRow("32768") << 32768 << 32768;
    QTest::newRow("65535") << 65535 << 65535;
    QTest::newRow("65536") << 65536 << 0;
    QTest::newRow("-1") << -1 << 65535;
    QTest::newRow("-32768") << -32768 << 32768;
    QTest::newRow("largest") << std::numeric_limits<int>::max() << 65535;
    QTest::newRow("smallest") << std::numeric_limits<int>::min() << 0;
}

void tst_StageParams::narrowsTo16Bits()
{
    QFETCH(int, value);
    QFETCH(int, written);
    for (const Narrowed &field : narrowedFields) {
        MoverDevParam stage;
        stage.*field.program = value;
        QVERIFY2(toMotorParams(stage).*field.controller == written, field.name);
    }
}

void tst_StageParams::narrowsBacklashTo16SignedBits_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("written");
    QTest::newRow("32767") << 32767 << 32767;
    QTest::newRow("32768") << 32768 << -32768;
    QTest::newRow("-32768") << -32768 << -32768;
    QTest::newRow("-32769") << -32769 << 32767;
    QTest::newRow("65535") << 65535 << -1;
}

void tst_StageParams::narrowsBacklashTo16SignedBits()
{
    QFETCH(int, value);
    QFETCH(int, written);
    MoverDevParam stage;
    stage.returnTrip = value;
    QCOMPARE(int(toMotorParams(stage).returnTrip), written);
}

void tst_StageParams::writesFullWidthIntegers()
{
    MoverDevParam stage;
    stage.pulseOneCircle = std::numeric_limits<int>::max();
    stage.modifyDate = std::numeric_limits<int>::min();
    QCOMPARE(toMotorParams(stage).pulseOneCircle, 2147483647U);
    QCOMPARE(toMotorParams(stage).modifyDate, std::numeric_limits<int>::min());
    stage.pulseOneCircle = -1;
    QCOMPARE(toMotorParams(stage).pulseOneCircle, 4294967295U);
}

void tst_StageParams::cutsNameTo32Bytes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("empty") << "" << padded("", 32);
    QTest::newRow("31") << QString(31, 'a') << padded(QByteArray(31, 'a'), 32);
    QTest::newRow("32") << QString(32, 'a') << QByteArray(32, 'a');
    QTest::newRow("40") << QString(40, 'a') << QByteArray(32, 'a');
    QTest::newRow("inside a two-byte character")
        << QString(31, 'a') + QString::fromUtf8("\xC3\xA9") << QByteArray(31, 'a') + '\xC3';
    QTest::newRow("inside a three-byte character")
        << QString("a") + QString::fromUtf8("\xE4\xBD\x8D").repeated(11)
        << QByteArray("a") + QByteArray("\xE4\xBD\x8D").repeated(10) + '\xE4';
    QTest::newRow("inside a four-byte character")
        << QString(30, 'a') + QString::fromUtf8("\xF0\x9F\x98\x80") << QByteArray(30, 'a') + "\xF0\x9F";
}

void tst_StageParams::cutsNameTo32Bytes()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, written);
    MoverDevParam stage;
    stage.name = name;
    const MotorParams params = toMotorParams(stage);
    QCOMPARE(bytesOf(params.modelName), written);
    QCOMPARE(bytesOf(params.serialNumber), padded("", 32));
}

void tst_StageParams::cutsOptOrderTo4Bytes_data()
{
    QTest::addColumn<QString>("optOrder");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("0") << "" << padded("", 10);
    QTest::newRow("3") << "NZP" << padded("NZP", 10);
    QTest::newRow("4") << "NZPN" << padded("NZPN", 10);
    QTest::newRow("10") << "NZPNZPNZPN" << padded("NZPN", 10);
    QTest::newRow("inside a character") << QString::fromUtf8("\xE4\xBD\x8D\xE4\xBD\x8D")
                                        << padded("\xE4\xBD\x8D\xE4", 10);
}

void tst_StageParams::cutsOptOrderTo4Bytes()
{
    QFETCH(QString, optOrder);
    QFETCH(QByteArray, written);
    MoverDevParam stage;
    stage.optOrder = optOrder;
    QCOMPARE(bytesOf(toMotorParams(stage).optOrder), written);
}

void tst_StageParams::writesMillimetresForExactlyMm_data()
{
    QTest::addColumn<QString>("unit");
    QTest::addColumn<int>("unitType");
    QTest::newRow("mm") << "mm" << 0;
    QTest::newRow("degrees") << "°" << 1;
    QTest::newRow("MM") << "MM" << 1;
    QTest::newRow("Mm") << "Mm" << 1;
    QTest::newRow("blank") << "mm " << 1;
    QTest::newRow("cm") << "cm" << 1;
    QTest::newRow("empty") << "" << 1;
    QTest::newRow("null") << QString() << 1;
}

void tst_StageParams::writesMillimetresForExactlyMm()
{
    QFETCH(QString, unit);
    QFETCH(int, unitType);
    MoverDevParam stage = exampleStage(); // a lifting stage: the type has no say
    stage.unitString = unit;
    QCOMPARE(int(toMotorParams(stage).unitType), unitType);
}

void tst_StageParams::readsEveryField()
{
    const MoverDevParam stage = toDevParam(exampleRecord());
    const MoverDevParam expected = exampleStage();
    QCOMPARE(stage.name, expected.name);
    QCOMPARE(stage.auxText, expected.auxText);
    QCOMPARE(stage.pulseOneCircle, expected.pulseOneCircle);
    QCOMPARE(stage.dispOneCircle, expected.dispOneCircle);
    QCOMPARE(stage.restoreSpeed, expected.restoreSpeed);
    QCOMPARE(stage.AxisType, 0);
    QCOMPARE(stage.originSigID, 0);
    for (const Narrowed &field : narrowedFields)
        QVERIFY2(stage.*field.program == expected.*field.program, field.name);
    QCOMPARE(stage.unitString, expected.unitString);
    QCOMPARE(stage.optOrder, expected.optOrder);
    QCOMPARE(stage.maxSpeed, expected.maxSpeed);
    QCOMPARE(stage.maxAcc, expected.maxAcc);
    QCOMPARE(stage.minPos, expected.minPos);
    QCOMPARE(stage.maxPos, expected.maxPos);
    QCOMPARE(stage.returnTrip, expected.returnTrip);
    QCOMPARE(stage.modifyDate, expected.modifyDate);
    QCOMPARE(stage.maxRockerSpeed, expected.maxRockerSpeed);
}

void tst_StageParams::readsUnitFromStageType_data()
{
    QTest::addColumn<int>("moveType");
    QTest::addColumn<QString>("unit");
    QTest::newRow("linear") << 0 << "mm";
    QTest::newRow("rotation") << 1 << "°";
    QTest::newRow("angular") << 2 << "°";
    QTest::newRow("lifting") << 3 << "mm";
}

void tst_StageParams::readsUnitFromStageType()
{
    QFETCH(int, moveType);
    QFETCH(QString, unit);
    MotorParams params = exampleRecord();
    params.moveType = uint16_t(moveType);
    for (const uint16_t unitType : {uint16_t(0), uint16_t(1)}) { // has no say
        params.unitType = unitType;
        QCOMPARE(toDevParam(params).unitString, unit);
    }
}

void tst_StageParams::readsIntegersAtTheirEdges()
{
    MotorParams params = {};
    for (const Narrowed &field : narrowedFields)
        params.*field.controller = 65535;
    params.returnTrip = -32768;
    params.pulseOneCircle = 2147483647;
    params.modifyDate = std::numeric_limits<int>::min();
    const MoverDevParam stage = toDevParam(params);
    for (const Narrowed &field : narrowedFields)
        QVERIFY2(stage.*field.program == 65535, field.name);
    QCOMPARE(stage.returnTrip, -32768);
    QCOMPARE(stage.pulseOneCircle, std::numeric_limits<int>::max());
    QCOMPARE(stage.modifyDate, std::numeric_limits<int>::min());
}

void tst_StageParams::readsTextsUpToTheFirstZero()
{
    MotorParams params = {};
    std::memcpy(params.modelName, "LIN\0garbage", 11);
    std::memcpy(params.optOrder, "NZ\0garbage", 10);
    QCOMPARE(toDevParam(params).name, QString("LIN"));
    QCOMPARE(toDevParam(params).optOrder, QString("NZ"));
}

void tst_StageParams::readsTextsThatFillTheirField()
{
    MotorParams params = {};
    std::memset(params.modelName, 'a', sizeof params.modelName);
    std::memset(params.serialNumber, 'b', sizeof params.serialNumber);
    std::memset(params.optOrder, 'N', sizeof params.optOrder);
    std::memset(&params.maxSpeed, 'c', sizeof params.maxSpeed);
    QCOMPARE(toDevParam(params).name, QString(32, 'a'));
    QCOMPARE(toDevParam(params).optOrder, QString(10, 'N'));
}

void tst_StageParams::readsEmptyTexts()
{
    const MoverDevParam stage = toDevParam({});
    QCOMPARE(stage.name, QString(""));
    QCOMPARE(stage.optOrder, QString(""));
}

QTEST_APPLESS_MAIN(tst_StageParams)
#include "tst_StageParams.moc"
