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
        QVERIFY(info.modelName.isEmpty());
        QVERIFY(info.serialNumber.isEmpty());
        QCOMPARE(info.speed, 0.0);
        QCOMPARE(info.circleDelay, 0);
        QVERIFY(!info.relativeDispEnable);
        QVERIFY(!info.secondFlag);
        QCOMPARE(info.axis, 0);
        QCOMPARE(info.furtherValue1, 0);
        QCOMPARE(info.furtherValue2, 0);
        QCOMPARE(info.furtherValue3, 0);
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
            QCOMPARE(copy->axis, 1);
            QCOMPARE(copy->modelName, QStringLiteral("model"));
            QCOMPARE(copy->serialNumber, QStringLiteral("serial"));
            QCOMPARE(copy->currentPos, 2.5);
            QCOMPARE(copy->speed, 3.5);
            QCOMPARE(copy->acceleration, 4.5);
            QCOMPARE(copy->relativeDisp, 5.5);
            QCOMPARE(copy->targetPos, 6.5);
            QCOMPARE(copy->relativeDispEnable, true);
            QCOMPARE(copy->secondFlag, true);
            QCOMPARE(copy->jogStep, 7.5);
            QCOMPARE(copy->jogDelay, 8);
            QCOMPARE(copy->jogCount, 9);
            QCOMPARE(copy->circleCount, 10);
            QCOMPARE(copy->circleDisp, 11.5);
            QCOMPARE(copy->circleDelay, 12);
            QCOMPARE(copy->furtherValue1, 13);
            QCOMPARE(copy->furtherValue2, 14);
            QCOMPARE(copy->furtherValue3, 15);
            QVERIFY(copy->objectName().isEmpty());
            QVERIFY(!copy->parent());
        }
    }
};

QTEST_GUILESS_MAIN(tst_DeviceRecords)
#include "tst_DeviceRecords.moc"
