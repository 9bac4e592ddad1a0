// SPDX-License-Identifier: MIT
#include "Child.h"

#include <QDirIterator>

namespace {

constexpr int startLimitMs = 30000;

const QString programFolder = QStringLiteral(MOVER_PROGRAM_DIR);
const QString anotherLibrary = QStringLiteral(MOVER_ANOTHER_LIBRARY);
const QString incompleteLibrary = QStringLiteral(MOVER_INCOMPLETE_LIBRARY);
const QString libraryName = QStringLiteral("libmoverLibrary.so");
const QString versionLine = QStringLiteral("mover " MOVER_VERSION "\n");

/** Copies the program's folder, as somebody does who takes it to another machine. */
void copyProgram(const QString &target)
{
    QDirIterator files(programFolder, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString source = files.next();
        const QString copy = target + source.mid(programFolder.size());
        QVERIFY(QDir().mkpath(QFileInfo(copy).path()));
        QVERIFY2(QFile::copy(source, copy), qPrintable(copy));
    }
}

/** What a file can be that is no library. */
enum class Wrong { Absent, Empty, Text, Folder, OtherProcessor, Incomplete };

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

void make(Wrong wrong, const QString &path)
{
    switch (wrong) {
    case Wrong::Absent: // a link that leads nowhere
        QVERIFY(QFile::link(path + QStringLiteral(".gone"), path));
        break;
    case Wrong::Empty:
        write(path, QByteArray());
        break;
    case Wrong::Text:
        write(path, "a motion library, they said\n");
        break;
    case Wrong::Folder:
        QVERIFY(QDir().mkpath(path));
        break;
    case Wrong::OtherProcessor: {
        QFile library(anotherLibrary);
        QVERIFY(library.open(QIODevice::ReadOnly));
        QByteArray elf = library.readAll();
        constexpr int machine = 18; // place of e_machine in an ELF header
        constexpr char aarch64 = char(0xB7);
        QVERIFY(elf.at(machine) != aarch64);
        elf[machine] = aarch64;
        write(path, elf);
        break;
    }
    case Wrong::Incomplete:
        QVERIFY(QFile::copy(incompleteLibrary, path));
        break;
    }
}

} // namespace

Q_DECLARE_METATYPE(Wrong)

class tst_LibraryInUse : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void isTheMakersWhenItLiesBesideTheProgram();
    void isTheSimulatedControllerWhenThereIsNoOther();
    void isSearchedInThisOrder();
    void isTheOneThatWasChosenInTheProgram_data();
    void isTheOneThatWasChosenInTheProgram();
    void aChosenOneThatIsGoneIsNotPassedOver();
    void insteadOfTheChosenOneAnotherIsOffered_data();
    void insteadOfTheChosenOneAnotherIsOffered();
    void aFileOfControllersThatCannotBeReadIsKeptAndNamed();
    void aWrongOneIsNeverPassedOver_data();
    void aWrongOneIsNeverPassedOver();
    void saysWhichFunctionsAreMissing();
    void saysInABoxWhyItCannotBeUsed();
    void ignoresAScenarioThatItCannotPlay();
    void isFoundOnFirstUseWithoutStartUp();
    void aWrongOneEndsAProcessThatUsesIt();

private:
    QString file(const QString &name) const { return m_folder->filePath(name); }
    QString libraryOf(const QStringList &arguments, const QString &named = QString()) const;
    void runAndLeave(QStringList *libraries);

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_calledFunctions;
    QString m_controllers;
};

void tst_LibraryInUse::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    copyProgram(m_folder->path());
    m_calledFunctions = file(QStringLiteral("calledFunctions"));
    m_controllers.clear();
}

/** Starts the copied program, notes the motion libraries that it has loaded, and leaves it. */
void tst_LibraryInUse::runAndLeave(QStringList *libraries)
{
    Child child(file(QStringLiteral("mover")));
    child.set("CALLED_FUNCTIONS", m_calledFunctions);
    child.start();
    QTRY_VERIFY_WITH_TIMEOUT(child.handles(SIGTERM), startLimitMs);
    *libraries = child.loadedFiles().filter(libraryName);
    child.send(SIGTERM);
    QCOMPARE(child.wait(), 0);
    QCOMPARE(child.complaints(), QStringList());
}

/** The library that --version names, with these arguments beside it and MOVER_LIBRARY set to `named`. */
QString tst_LibraryInUse::libraryOf(const QStringList &arguments, const QString &named) const
{
    Child child(file(QStringLiteral("mover")), QStringList{QStringLiteral("--version")} + arguments);
    child.set("MOVER_LIBRARY", named);
    child.set("MOVER_CONTROLLERS", m_controllers);
    child.process.setWorkingDirectory(m_folder->path());
    child.run();
    const QString output = QString::fromUtf8(child.process.readAllStandardOutput());
    return output.startsWith(versionLine) ? output.mid(versionLine.size()).trimmed() : output;
}

void tst_LibraryInUse::isTheMakersWhenItLiesBesideTheProgram()
{
    QCOMPARE(MOVER_ANOTHER_LIBRARY_FUNCTIONS, 71);
    const QString copy = file(libraryName);
    QVERIFY(QFile::copy(anotherLibrary, copy));
    QStringList libraries;
    runAndLeave(&libraries);
    QCOMPARE(libraries, QStringList{copy});

    QFile called(m_calledFunctions);
    QVERIFY(called.open(QIODevice::ReadOnly));
    // From start to exit: one model, zero-padded to 32 bytes.
    const QByteArray model = QByteArray("LIN-100").leftJustified(32, '\0').toHex();
    QCOMPARE(called.readAll(), "addMotor 0 0 " + model + "\n");
}

void tst_LibraryInUse::isTheSimulatedControllerWhenThereIsNoOther()
{
    QStringList libraries;
    runAndLeave(&libraries);
    QCOMPARE(libraries, QStringList{file(QStringLiteral("simulator/libmoverLibrary.so"))});
    QVERIFY(!QFile::exists(m_calledFunctions));
}

void tst_LibraryInUse::isSearchedInThisOrder()
{
    const QString simulated = file(QStringLiteral("simulator/libmoverLibrary.so")) + QStringLiteral(" (simulated)");
    QCOMPARE(libraryOf({}), simulated);
    const QString beside = file(libraryName);
    QVERIFY(QFile::copy(anotherLibrary, beside));
    QCOMPARE(libraryOf({}), beside);
    const QString named = file(QStringLiteral("named.so"));
    QVERIFY(QFile::copy(anotherLibrary, named));
    QCOMPARE(libraryOf({}, named), named);
    QCOMPARE(libraryOf({}, QString()), beside); // empty counts as not set
    const QString chosen = file(QStringLiteral("chosen.so"));
    QVERIFY(QFile::copy(anotherLibrary, chosen));
    // Relative to the working folder.
    QCOMPARE(libraryOf({QStringLiteral("--library"), QStringLiteral("chosen.so")}, named), chosen);
}

void tst_LibraryInUse::isTheOneThatWasChosenInTheProgram_data()
{
    QTest::addColumn<QString>("controllers");
    QTest::addColumn<bool>("hasMakers");
    QTest::addColumn<QString>("expected"); // the folder
    const QString board =
        QStringLiteral(R"("controllers": [{"id": 1, "kind": "grbl", "port": "/dev/x", "axes": [{}]}])");
    QTest::newRow("chosen") << R"({"library": "grbl"})" << true << "grbl/";
    QTest::newRow("simulated, by choice") << R"({"library": "simulated", )" + board + "}" << true << "simulator/";
    QTest::newRow("a board and no maker's") << "{" + board + "}" << false << "grbl/";
    QTest::newRow("a board and a maker's") << "{" + board + "}" << true << "";
    QTest::newRow("another library's board")
        << R"({"controllers": [{"id": 1, "kind": "other"}]})" << false << "simulator/";
    QTest::newRow("damaged") << "{" << false << "simulator/";
}

void tst_LibraryInUse::isTheOneThatWasChosenInTheProgram()
{
    QFETCH(QString, controllers);
    QFETCH(bool, hasMakers);
    QFETCH(QString, expected);
    QDir().mkpath(file(QStringLiteral("mover-configuration")));
    m_controllers = file(QStringLiteral("mover-configuration/controllers.json"));
    write(m_controllers, controllers.toUtf8());
    if (hasMakers)
        QVERIFY(QFile::copy(anotherLibrary, file(libraryName)));
    const QString used = libraryOf({});
    QVERIFY2(used.startsWith(file(expected + libraryName)), qPrintable(used));
    QCOMPARE(libraryOf({}, anotherLibrary), anotherLibrary); // one that is named comes before
}

void tst_LibraryInUse::aChosenOneThatIsGoneIsNotPassedOver()
{
    m_controllers = file(QStringLiteral("controllers.json"));
    write(m_controllers, R"({"library": "makers"})");
    Child child(file(QStringLiteral("mover")), {QStringLiteral("--version")});
    child.set("MOVER_CONTROLLERS", m_controllers);
    QCOMPARE(child.run(), 3);
    QVERIFY(child.complaints().first().contains(file(libraryName)));
}

void tst_LibraryInUse::insteadOfTheChosenOneAnotherIsOffered_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("hasAnother");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("taken") << QStringLiteral("启动 / Start") << true << 0;
    QTest::newRow("refused") << QStringLiteral("退出 / Quit") << true << 3;
    QTest::newRow("closed") << QStringLiteral("–") << true << 3;
    QTest::newRow("gone as well") << QStringLiteral("启动 / Start") << false << 3;
}

void tst_LibraryInUse::insteadOfTheChosenOneAnotherIsOffered()
{
    QFETCH(QString, answer);
    QFETCH(bool, hasAnother);
    QFETCH(int, exitCode);
    const QString program = file(QStringLiteral("askedProgram"));
    QVERIFY(QFile::copy(QStringLiteral(MOVER_ASKED_PROGRAM), program));
    const QString another = file(QStringLiteral("simulator/") + libraryName);
    QVERIFY(hasAnother || QFile::remove(another));
    m_controllers = file(QStringLiteral("controllers.json"));
    const QByteArray chosen = R"({"library": "makers"})";
    write(m_controllers, chosen);

    Child child(program, {answer});
    child.set("MOVER_CONTROLLERS", m_controllers);
    QCOMPARE(child.run(), exitCode);
    const QString said = QString::fromUtf8(child.output());
    QVERIFY(said.contains(file(libraryName))); // the one that was chosen
    QVERIFY2(said.contains(QStringLiteral("Use %1 this time?").arg(another)), qPrintable(said));
    QCOMPARE(said.contains(QStringLiteral("in use: %1 (simulated)").arg(another)), exitCode == 0);
    QCOMPARE(said.contains(QStringLiteral("The motion library %1 cannot be used.").arg(another)), !hasAnother);
    QFile stored(m_controllers); // this time only
    QVERIFY(stored.open(QIODevice::ReadOnly));
    QCOMPARE(stored.readAll(), chosen);
}

void tst_LibraryInUse::aFileOfControllersThatCannotBeReadIsKeptAndNamed()
{
    m_controllers = file(QStringLiteral("controllers.json"));
    write(m_controllers, R"({"version": 9})");
    Child child(QStringLiteral(MOVER_DRIVEN_PROGRAM), {QStringLiteral("refused"), QStringLiteral("button")});
    child.set("MOVER_CONTROLLERS", m_controllers);
    QCOMPARE(child.run(), 0); // the program starts all the same
    QVERIFY(child.output().contains("controllers.json.bak"));
    QVERIFY(child.output().contains("version 9"));
    QVERIFY(!QFile::exists(m_controllers));
    QVERIFY(QFile::exists(m_controllers + QStringLiteral(".bak")));
}

void tst_LibraryInUse::aWrongOneIsNeverPassedOver_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<Wrong>("wrong");
    const std::pair<const char *, Wrong> wrongs[] = {
        {"absent", Wrong::Absent},
        {"empty", Wrong::Empty},
        {"text", Wrong::Text},
        {"folder", Wrong::Folder},
        {"another processor", Wrong::OtherProcessor},
        {"incomplete", Wrong::Incomplete},
    };
    for (const char *place : {"option", "environment", "beside the program"}) {
        for (const auto &[name, wrong] : wrongs)
            QTest::addRow("%s, %s", place, name) << QString::fromLatin1(place) << wrong;
    }
}

void tst_LibraryInUse::aWrongOneIsNeverPassedOver()
{
    QFETCH(QString, place);
    QFETCH(Wrong, wrong);
    const bool isBeside = place == QLatin1String("beside the program");
    const QString path = file(isBeside ? libraryName : QStringLiteral("wrong.so"));
    make(wrong, path);

    QStringList arguments{QStringLiteral("--version")};
    if (place == QLatin1String("option"))
        arguments += {QStringLiteral("--library"), path};
    Child child(file(QStringLiteral("mover")), arguments);
    if (place == QLatin1String("environment"))
        child.set("MOVER_LIBRARY", path);
    QCOMPARE(child.run(), 3);
    QCOMPARE(QString::fromUtf8(child.process.readAllStandardOutput()), versionLine);
    const QStringList said = child.complaints();
    QCOMPARE(said.size(), 4); // the sentence and the reason, in Chinese and in English
    QVERIFY(said.at(0).startsWith(QStringLiteral("无法使用运动控制库 ")));
    QVERIFY(said.at(2).startsWith(QStringLiteral("The motion library ")));
    QVERIFY(said.at(0).contains(path) && said.at(2).contains(path));
    QVERIFY(!said.at(1).isEmpty() && !said.at(3).isEmpty());
}

void tst_LibraryInUse::saysWhichFunctionsAreMissing()
{
    Child child(
        file(QStringLiteral("mover")), {QStringLiteral("--version"), QStringLiteral("--library"), incompleteLibrary});
    QCOMPARE(child.run(), 3);
    const QStringList said = child.complaints();
    QCOMPARE(said.value(1), QStringLiteral("缺少函数：setClearIDChip"));
    QCOMPARE(said.value(3), QStringLiteral("missing functions: setClearIDChip"));
}

void tst_LibraryInUse::saysInABoxWhyItCannotBeUsed()
{
    Child child(QStringLiteral(MOVER_DRIVEN_PROGRAM), {QStringLiteral("refused"), QStringLiteral("nothing")});
    child.set("MOVER_LIBRARY", incompleteLibrary);
    QCOMPARE(child.run(), 3);
    QStringList box = QString::fromUtf8(child.output()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(box, child.complaints()); // the same as on standard error
    QVERIFY(box.first().contains(incompleteLibrary));
}

void tst_LibraryInUse::ignoresAScenarioThatItCannotPlay()
{
    Child child(
        file(QStringLiteral("mover")),
        {QStringLiteral("--library"), anotherLibrary, QStringLiteral("--scenario"), QStringLiteral("/nowhere.json")});
    child.start();
    QTRY_VERIFY_WITH_TIMEOUT(child.handles(SIGTERM), startLimitMs);
    child.send(SIGTERM);
    QCOMPARE(child.wait(), 0);
    QCOMPARE(child.complaints().size(), 1);
    QVERIFY(child.complaints().first().startsWith(QStringLiteral("--scenario is ignored")));
}

void tst_LibraryInUse::isFoundOnFirstUseWithoutStartUp()
{
    Child child(QStringLiteral(MOVER_FIRST_USE));
    child.set("MOVER_LIBRARY", anotherLibrary);
    child.set("CALLED_FUNCTIONS", m_calledFunctions);
    QCOMPARE(child.run(), 0);
    QFile called(m_calledFunctions);
    QVERIFY(called.open(QIODevice::ReadOnly));
    QCOMPARE(called.readAll(), QByteArray("getRuningState\n"));
}

void tst_LibraryInUse::aWrongOneEndsAProcessThatUsesIt()
{
    Child child(QStringLiteral(MOVER_FIRST_USE));
    child.set("MOVER_LIBRARY", incompleteLibrary);
    QCOMPARE(child.run(), 3);
    QVERIFY(child.complaints().first().contains(incompleteLibrary));
}

QTEST_GUILESS_MAIN(tst_LibraryInUse)
#include "tst_LibraryInUse.moc"
