// SPDX-License-Identifier: MIT
#include "controllers/grbl/Bench.h"
#include "controllers/grbl/Configuration.h"
#include "controllers/grbl/Controller.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <filesystem>

/** The file of the boards that are set up, and those of the values that a board cannot keep. */
class tst_GrblFiles : public QObject
{
    Q_OBJECT

private slots:
    void theirFolderMayHaveAnyName()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("用户 Zoë/controllers.json"));
        const auto path = std::filesystem::u8path(file.toUtf8().constData());
        QVERIFY(grbl::Configuration::write(path, R"({"controllers": [{"id": 7, "kind": "grbl", "port": "COM3",
            "axes": [{}]}]})"));
        QVERIFY(QFile::exists(file));
        QCOMPARE(QDir(QFileInfo(file).path()).entryList(QDir::Files), QStringList{QStringLiteral("controllers.json")});
#ifdef _WIN32
        _wputenv_s(L"MOVER_CONTROLLERS", file.toStdWString().c_str());
#else
        qputenv("MOVER_CONTROLLERS", file.toUtf8());
#endif
        QVERIFY(grbl::Configuration::file() == path);
        std::vector<grbl::BoardSetup> boards;
        std::string error;
        QVERIFY2(grbl::Configuration::read(grbl::Configuration::file(), &boards, &error), error.c_str());
        QCOMPARE(boards.size(), std::size_t(1));
        QCOMPARE(boards.front().id, 7);
    }

#ifndef _WIN32
    void withoutANameTheyAreTheUsers()
    {
        const QTemporaryDir folder;
        const QByteArray before = qgetenv("HOME");
        qunsetenv("MOVER_CONTROLLERS");
        qputenv("XDG_CONFIG_HOME", folder.path().toUtf8());
        const auto found = [] { return QString::fromStdString(grbl::Configuration::file().u8string()); };
        QCOMPARE(found(), folder.filePath("mover/controllers.json"));
        qunsetenv("XDG_CONFIG_HOME");
        qputenv("HOME", folder.path().toUtf8());
        QCOMPARE(found(), folder.filePath(".config/mover/controllers.json"));
        qputenv("HOME", before);

        std::vector<grbl::BoardSetup> boards(1); // of a file that was there before
        std::string error;
        QVERIFY(grbl::Configuration::read(folder.filePath("none").toStdString(), &boards, &error));
        QVERIFY(boards.empty());
    }
#endif

    void whatIsWrongIsToldWithItsLine_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("told");
        const auto board = [](const QByteArray &members) { return "{\"controllers\": [\n{" + members + "}]}"; };
        const QByteArray one = R"("id": 7, "kind": "grbl", "port": "a", "axes": [{}])";
        QTest::newRow("damaged") << QByteArray("{\n\"controllers\": [") << QByteArray(":2: ");
        QTest::newRow("of a newer program") << QByteArray("{\n\"version\": 2}") << QByteArray(":2: \"version\"");
        QTest::newRow("without a port") << board(R"("id": 7, "kind": "grbl", "axes": [{}])")
                                        << QByteArray(":2: the controller lacks \"port\"");
        QTest::newRow("no axis") << board(R"("id": 7, "kind": "grbl", "port": "a", "axes": [])")
                                 << QByteArray(":2: \"axes\" has to have 1 to 3");
        QTest::newRow("too many axes") << board(R"("id": 7, "kind": "grbl", "port": "a", "axes": [{}, {}, {}, {}])")
                                       << QByteArray(":2: \"axes\" has to have 1 to 3");
        QTest::newRow("a letter twice") << board(
                                               R"("id": 7, "kind": "grbl", "port": "a", "axes": [{"letter": "Y"}, {}])")
                                        << QByteArray(":2: two axes");
        QTest::newRow("no such letter") << board(R"("id": 7, "kind": "grbl", "port": "a", "axes": [{"letter": "Q"}])")
                                        << QByteArray(":2: \"letter\"");
        QTest::newRow("a number twice") << board(one + "},\n{" + one) << QByteArray(":3: two controllers");
        QTest::newRow("a stage without speed")
            << board(R"("id": 7, "kind": "grbl", "port": "a", "axes": [{"stage": {"maxSpeed": 0}}])")
            << QByteArray(":2: \"maxSpeed\"");
        QTest::newRow("a name that means nothing") << board(one + ", \"ports\": 3") << QByteArray("no \"ports\"");
    }
    void whatIsWrongIsToldWithItsLine()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, told);
        const QTemporaryDir folder;
        const std::filesystem::path path = folder.filePath("controllers.json").toStdWString();
        QVERIFY(grbl::Configuration::write(path, content.toStdString()));
        std::vector<grbl::BoardSetup> boards;
        std::string error;
        QVERIFY(!grbl::Configuration::read(path, &boards, &error));
        QVERIFY2(QByteArray::fromStdString(error).contains(told), error.c_str());
        QVERIFY(boards.empty());
    }

    void whatABoardCannotKeepComesBack()
    {
        const QTemporaryDir folder;
        const std::filesystem::path file = folder.filePath("controllers.json").toStdWString();
        const std::filesystem::path kept = grbl::Configuration::keptFile(file, 7);
        grbl::BoardSetup setUp{7, "none", {{}, {}}};
        for (grbl::AxisSetup &axis : setUp.axes)
            axis.stage = Bench::stage();
        setUp.axes[1].boardAxis = 1;
        std::mutex mutex;
        grbl::Controller before(setUp, mutex, file);
        before.serialNumber = "room 3";
        before.modelName = "\xe7\xbf\xbb"; // any text
        controllers::AxisSettings &settings = before.axis(1).settings;
        settings.speed = 7.5;
        settings.jogStep = 0.25;
        settings.jogDelay = 40;
        settings.circleCount = 11;
        settings.posConpenEnable = 1;
        settings.positivePosConpen = {{0, 0.002}, {10, 10.004}};
        before.board().setLimitsOff(true);
        before.board().setRanOn(1, -1);
        QVERIFY(grbl::Configuration::write(kept, grbl::Configuration::kept(before, before.board())));

        grbl::Controller after(setUp, mutex, file);
        QCOMPARE(after.serialNumber, before.serialNumber);
        QCOMPARE(after.modelName, before.modelName);
        QVERIFY(after.board().limitsOff());
        QCOMPARE(after.board().ranOn(0), 0);
        QCOMPARE(after.board().ranOn(1), -1);
        const controllers::AxisSettings &back = after.axis(1).settings;
        QCOMPARE(back.speed, 7.5);
        QCOMPARE(back.jogStep, 0.25);
        QCOMPARE(back.jogDelay, 40);
        QCOMPARE(back.circleCount, 11);
        QCOMPARE(back.posConpenEnable, 1);
        QVERIFY(back.positivePosConpen == settings.positivePosConpen);
        QCOMPARE(after.axis(0).settings.jogStep, before.axis(0).settings.jogStep);

        QVERIFY(grbl::Configuration::write(kept, "{\"serialNumber\": \"room"));
        const grbl::Controller damaged(setUp, mutex, file);
        QCOMPARE(damaged.serialNumber, std::string("GRBL-7"));
    }
};

QTEST_GUILESS_MAIN(tst_GrblFiles)
#include "tst_GrblFiles.moc"
