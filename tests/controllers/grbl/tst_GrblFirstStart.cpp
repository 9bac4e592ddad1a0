// SPDX-License-Identifier: MIT
#include "controllers/emulator/SerialPort.h"
#include "device/BoardLink.h"
#include "device/ControllersFile.h"
#include "device/MotionLibrary.h"
#include "device/moverStatus.h"
#include "shell/OpenWindow.h"
#include "support/MessageBoxes.h"

#include <QJsonDocument>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstring>

/** The program as it starts behind the set-up of a board: nobody names a library, and no maker's is there. */
class tst_GrblFirstStart : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/grbl");
        QDir().mkpath(folder);
        QFile::remove(folder + QStringLiteral("/libmoverLibrary.so"));
        QVERIFY(QFile::link(QStringLiteral(GRBL_LIBRARY), folder + QStringLiteral("/libmoverLibrary.so")));

        emulator::Options options;
        options.storeTime = 0.001;
        options.settings = {{1, 255}, {10, 3}, {110, 1800}, {120, 500}};
        m_port = std::make_unique<emulator::SerialPort>(options, 1, board().toStdString());
        qputenv("MOVER_CONTROLLERS", m_folder.filePath("controllers.json").toUtf8());
        MotorParams stage{};
        std::strcpy(stage.modelName, "LIN-50");
        stage.pulseOneCircle = 250;
        stage.dispOneCircle = 1;
        stage.restoreSpeed = 5;
        stage.maxSpeed = 20;
        stage.maxAcc = 50;
        stage.maxPos = 50;
        const QJsonObject record = QJsonDocument::fromJson(BoardLink::stageText(stage)).object();
        QVERIFY(!record.isEmpty());
        ControllersFile file;
        file.put({0, "bench", board(), {{"X", record}, {"Y", record}, {"Z", {}}}});
        QVERIFY(file.save());
        QVERIFY(!MotionLibrary::load());
    }
    void cleanup()
    {
        SerialComDev::instance()->close();
        QVERIFY(SerialComDev::endThread(15000));
    }

    void connectingOpensThePanels()
    {
        QCOMPARE(MotionLibrary::inUse().mark(), QStringLiteral("grbl"));
        const MessageBoxes boxes;
        OpenWindow program;
        OpenWindow::click(program.find("pushButton_connect"));
        auto *dialog = program.dialog<ConnectionWidget>();
        QTRY_COMPARE(dialog->findChild<QComboBox *>(QStringLiteral("comboBox_comList"))->count(), 1);
        OpenWindow::click(dialog->findChild<QPushButton *>(QStringLiteral("pushButton_connectSerial")));
        QTRY_COMPARE(program.panelNames(), (QStringList{"Axis1", "Axis2"}));
        QCOMPARE(boxes.texts(), QStringList());
    }
    void theConnectedBoardIsNotSetUpBehindItsBack()
    {
        const auto worker = SerialComDev::instance();
        const int id = ControllersFile().boards().value(0).id;
        QCOMPARE(worker->open(id), id);
        BoardLink link;
        QVERIFY(link.open(board()));
        QTRY_COMPARE(link.board().failure, int(moverSetUp::Connected));
        QVERIFY(!link.isOpen());
        // The library keeps the port of a closed controller, until the set-up wants it.
        worker->close();
        QVERIFY(link.open(board()));
        QTRY_VERIFY_WITH_TIMEOUT(link.isOpen(), 15000);
        QCOMPARE(worker->open(id), int(moverStatus::PortInUse));
        link.close();
        QTRY_COMPARE_WITH_TIMEOUT(worker->open(id), id, 15000);
    }

private:
    QString board() const { return m_folder.filePath("board"); }

    QTemporaryDir m_folder;
    std::unique_ptr<emulator::SerialPort> m_port;
};

QTEST_MAIN(tst_GrblFirstStart)
#include "tst_GrblFirstStart.moc"
