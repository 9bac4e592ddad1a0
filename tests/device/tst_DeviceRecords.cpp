// SPDX-License-Identifier: MIT
#include "device/DeviceRecords.h"

#include <QThread>
#include <QtTest>

class Relay : public QObject
{
    Q_OBJECT

signals:
    void state(MotorStageState state);
    void controler(CONTROLER_STATE state);
};

static QVariantList fieldsOf(const MotorDevInfo &info)
{
    return {info.axis,         info.modelName,     info.serialNumber,  info.currentPos,         info.speed,
            info.acceleration, info.relativeDisp,  info.targetPos,     info.relativeDispEnable, info.secondFlag,
            info.jogStep,      info.jogDelay,      info.jogCount,      info.circleCount,        info.circleDisp,
            info.circleDelay,  info.furtherValue1, info.furtherValue2, info.furtherValue3};
}

class tst_DeviceRecords : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { registerDeviceRecords(); }

    void recordsHaveTheLibrarysSizes()
    {
        QCOMPARE(sizeof(MotorParams), size_t(168));
        QCOMPARE(QMetaType::sizeOf(QMetaType::type("MotorStageState")), 24);
        QCOMPARE(QMetaType::sizeOf(QMetaType::type("CONTROLER_STATE")), 4);
    }
    void recordsAreMovableAndConstructed_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("state") << QByteArray("MotorStageState");
        QTest::newRow("controler") << QByteArray("CONTROLER_STATE");
    }
    void recordsAreMovableAndConstructed()
    {
        QFETCH(QByteArray, name);
        const auto flags = QMetaType::typeFlags(QMetaType::type(name));
        QVERIFY(flags & QMetaType::MovableType);
        QVERIFY(flags & QMetaType::NeedsConstruction);
        QVERIFY(flags & QMetaType::NeedsDestruction);
    }
    void aStateWithOnlyARunCountTravelsWhole()
    {
        Relay relay;
        MotorStageState received = {};
        connect(
            &relay, &Relay::state, this, [&](MotorStageState state) { received = state; }, Qt::QueuedConnection);
        MotorStageState sent = {};
        sent.runCount = 4294967295u;
        emit relay.state(sent);
        QTRY_COMPARE(received.runCount, 4294967295u);
        QCOMPARE(int(received.isStop), 0);
    }
    void aControlerStateTravelsWhole()
    {
        Relay relay;
        CONTROLER_STATE received = {};
        connect(
            &relay, &Relay::controler, this, [&](CONTROLER_STATE state) { received = state; }, Qt::QueuedConnection);
        emit relay.controler({1, 0, 65535});
        QTRY_COMPARE(received.rockerValue, quint16(65535));
        QCOMPARE(received.rockerState, quint8(1));
    }
    void anAxisRecordStartsEmpty()
    {
        const MotorDevInfo info;
        QCOMPARE(
            fieldsOf(info),
            (QVariantList{0, "", "", 0.0, 0.0, 0.0, 0.0, 0.0, false, false, 0.0, 0, 0, 0, 0.0, 0, 0, 0, 0}));
    }
    void copiesOfAnAxisRecordCarryEveryField()
    {
        QObject parent;
        MotorDevInfo info;
        info.setObjectName(QStringLiteral("original"));
        info.setParent(&parent);
        info.axis = 1;
        info.modelName = QStringLiteral("model");
        info.serialNumber = QStringLiteral("serial");
        info.currentPos = 2.5;
        info.speed = 3.5;
        info.acceleration = 4.5;
        info.relativeDisp = 5.5;
        info.targetPos = 6.5;
        info.relativeDispEnable = true;
        info.secondFlag = true;
        info.jogStep = 7.5;
        info.jogDelay = 8;
        info.jogCount = 9;
        info.circleCount = 10;
        info.circleDisp = 11.5;
        info.circleDelay = 12;
        info.furtherValue1 = 13;
        info.furtherValue2 = 14;
        info.furtherValue3 = 15;

        const MotorDevInfo constructed(info);
        MotorDevInfo assigned;
        assigned = info;
        for (const MotorDevInfo *copy : {&constructed, static_cast<const MotorDevInfo *>(&assigned)}) {
            QCOMPARE(fieldsOf(*copy), fieldsOf(info));
            QVERIFY(copy->objectName().isEmpty());
            QVERIFY(!copy->parent());
        }
    }
};

QTEST_GUILESS_MAIN(tst_DeviceRecords)
#include "tst_DeviceRecords.moc"
