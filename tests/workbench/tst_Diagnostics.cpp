// SPDX-License-Identifier: MIT
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/Recorder.h"
#include "workbench/Diagnostics.h"

#include "shell/Scenario.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <private/qzipreader_p.h>

class tst_Diagnostics : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void leavesOutTheNamesOfTheUser_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::newRow("folder") << "open /home/eve/data.csv"
                                << "open ~/data.csv";
        QTest::newRow("name") << "eve, Eve; eve."
                              << "user, Eve; user.";
        QTest::newRow("part of a word") << "never evening eve-2"
                                        << "never evening eve-2";
        QTest::newRow("nothing") << "轴 1: 0.5 mm"
                                 << "轴 1: 0.5 mm";
    }
    void leavesOutTheNamesOfTheUser()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        const QByteArray text =
            Diagnostics::withoutNames(before.toUtf8(), QStringLiteral("/home/eve"), QStringLiteral("eve"));
        QCOMPARE(QString::fromUtf8(text), after);
    }

    void packsWhatHelps()
    {
        play({{1001, "A", {{'w', "LIN-100"}}}});
        const auto session = ControlSession::instance();
        QCOMPARE(session->connectTo({1001, "SIM-A"}), 1001);
        session->beginSetUp();
        session->setUpAxis(0);
        session->readFirmwareVersion();
        const QString settings = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
        QVERIFY(QDir().mkpath(settings));
        QFile file(settings + QStringLiteral("/appConfig.ini"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[language]\ntype=1\nfolder=" + QDir::homePath().toUtf8() + "/x\n");
        file.close();
        const auto worker = SerialComDev::instance();
        emit worker->signal_getCurrentPos(0);
        QTRY_VERIFY(session->axis(0)->lastPosition());
        emit worker->signal_startMotor(0, MOVE_CODE_DRIVE_POSITIVE);
        QTRY_VERIFY(simulator::callCount("startDrive") > 0);
        simulator::advance(0.1);
        emit worker->signal_getCurrentPos(0);
        QTRY_VERIFY(session->recorder().recording().sampleCount() >= 2);

        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("diagnostics.zip"));
        const auto files =
            Diagnostics::collect(Diagnostics::look({{QStringLiteral("log/Axis1.txt"), QByteArrayLiteral("the log")}}));
        QVERIFY(Diagnostics::save(path, files));
        QZipReader zip(path);
        QCOMPARE(zip.count(), files.size());
        const QByteArray versions = zip.fileData(QStringLiteral("versions.txt"));
        QVERIFY2(versions.contains("controller: SIM-A\nfirmware: 2.4.1 simulated\naxes: 1\n"), versions.constData());
        QVERIFY(versions.contains("Qt: 5.15"));
        QCOMPARE(
            zip.fileData(QStringLiteral("settings/user/appConfig.ini")),
            QByteArray("[language]\ntype=1\nfolder=~/x\n"));
        QCOMPARE(zip.fileData(QStringLiteral("log/Axis1.txt")), QByteArray("the log"));
        const QByteArray table = zip.fileData(QStringLiteral("recording.csv"));
        QVERIFY2(table.contains("Axis1") && table.count('\n') >= 3, table.constData());
        const QByteArray events = zip.fileData(QStringLiteral("events.txt"));
        QVERIFY2(events.contains("Axis1: drive +"), events.constData());

        QVERIFY(!Diagnostics::save(QStringLiteral("/nowhere/at/all.zip"), files));
        QVERIFY(SerialComDev::endThread(5000));
    }
};

QTEST_GUILESS_MAIN(tst_Diagnostics)
#include "tst_Diagnostics.moc"
