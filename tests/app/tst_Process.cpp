// SPDX-License-Identifier: MIT
#include "Child.h"

#include <QDir>
#include <QElapsedTimer>

namespace {

const QString program = QStringLiteral(MOVER_PROGRAM_DIR "/mover");
const QString drivenProgram = QStringLiteral(MOVER_DRIVEN_PROGRAM);

constexpr int startLimitMs = 30000;
constexpr int leaveLimitMs = 10000;
constexpr int patienceMs = 5000; // with windows that do not answer

} // namespace

class tst_Process : public QObject
{
    Q_OBJECT

private slots:
    void explainsItself_data();
    void explainsItself();
    void tellsItsVersionWithoutADisplay();
    void refusesAnUnknownOption();
    void refusesABadScenario_data();
    void refusesABadScenario();
    void playsEveryShippedScenario_data();
    void playsEveryShippedScenario();
    void takesARelativeScenarioPath_data();
    void takesARelativeScenarioPath();
    void isSetUpBeforeItsWindowIsShown();
    void startsAgainWhenItHasLeft();
    void aTypedCommaIsADecimalPointInEveryLocale_data();
    void aTypedCommaIsADecimalPointInEveryLocale();
    void leavesOnASignal_data();
    void leavesOnASignal();
    void leavesFromEveryState_data();
    void leavesFromEveryState();
    void exitCodeIsThatOfTheEventLoop_data();
    void exitCodeIsThatOfTheEventLoop();
    void leavesOnASignalFromEveryState_data();
    void leavesOnASignalFromEveryState();
    void leavesOnASignalWhileItsWindowsWaitForTheLibrary();
};

void tst_Process::explainsItself_data()
{
    QTest::addColumn<QString>("option");
    QTest::newRow("long") << QStringLiteral("--help");
    QTest::newRow("short") << QStringLiteral("-h");
}

void tst_Process::explainsItself()
{
    QFETCH(QString, option);
    Child child(program, {option});
    child.takeDisplayAway();
    QCOMPARE(child.run(), 0);
    const QString text = QString::fromUtf8(child.process.readAllStandardOutput());
    for (const char *part : {"--help", "--version", "--library <FILE>", "--scenario <FILE>"})
        QVERIFY2(text.contains(QLatin1String(part)), part);
    QCOMPARE(child.complaints(), QStringList());
}

void tst_Process::tellsItsVersionWithoutADisplay()
{
    Child child(program, {QStringLiteral("--version")});
    child.takeDisplayAway();
    QCOMPARE(child.run(), 0);
    QCOMPARE(
        QString::fromUtf8(child.process.readAllStandardOutput()),
        QStringLiteral("mover " MOVER_VERSION "\n" MOVER_PROGRAM_DIR "/simulator/libmoverLibrary.so (simulated)\n"));
    QCOMPARE(child.complaints(), QStringList());
}

void tst_Process::refusesAnUnknownOption()
{
    Child child(program, {QStringLiteral("--bogus")});
    child.start();
    QVERIFY(child.process.waitForFinished(startLimitMs));
    QCOMPARE(child.process.exitStatus(), QProcess::NormalExit);
    QVERIFY(child.process.exitCode() != 0);
    QCOMPARE(child.complaints().size(), 1);
    QVERIFY(child.complaints().first().contains(QStringLiteral("bogus")));
}

void tst_Process::refusesABadScenario_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("line");
    QTest::newRow("syntax") << QByteArray("{\n  \"controllers\": [\n}\n") << 3;
    QTest::newRow("unknown key") << QByteArray("{\n  \"controllers\": [],\n\n  \"typo\": 1\n}\n") << 4;
}

void tst_Process::refusesABadScenario()
{
    QFETCH(QByteArray, text);
    QFETCH(int, line);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("bad.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.close();

    Child child(program, {QStringLiteral("--scenario"), path});
    QCOMPARE(child.run(), 2);
    QCOMPARE(child.complaints().size(), 1);
    const QString complaint = child.complaints().first();
    QVERIFY2(complaint.startsWith(QStringLiteral("%1:%2: ").arg(path).arg(line)), qPrintable(complaint));
}

void tst_Process::playsEveryShippedScenario_data()
{
    QTest::addColumn<QString>("path");
    const QDir folder(QStringLiteral(MOVER_PROGRAM_DIR "/simulator/scenarios"));
    const QStringList files = folder.entryList({QStringLiteral("*.json")});
    for (const char *shipped :
         {"default.json", "faulty-opto.json", "joystick.json", "lossy-link.json", "slow-link.json",
          "two-controllers.json"})
        QVERIFY2(files.contains(QLatin1String(shipped)), shipped);
    for (const QString &file : files)
        QTest::newRow(qPrintable(file)) << folder.filePath(file);
}

void tst_Process::playsEveryShippedScenario()
{
    QFETCH(QString, path);
    Child child(program, {QStringLiteral("--scenario"), path});
    child.start();
    QTRY_VERIFY_WITH_TIMEOUT(child.handles(SIGTERM), startLimitMs);
    child.send(SIGTERM);
    QCOMPARE(child.wait(), 0);
    QCOMPARE(child.complaints(), QStringList());
}

void tst_Process::takesARelativeScenarioPath_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QStringLiteral("here.json");
    QTest::newRow("of several languages") << QStringLiteral("位移台 – Prüfstand.json");
}

void tst_Process::takesARelativeScenarioPath()
{
    QFETCH(QString, name);
    const QTemporaryDir folder;
    QFile file(folder.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{");
    file.close();
    Child child(program, {QStringLiteral("--scenario"), name});
    child.process.setWorkingDirectory(folder.path());
    QCOMPARE(child.run(), 2);
    QVERIFY(child.complaints().first().startsWith(folder.filePath(name + QStringLiteral(":1: "))));
}

void tst_Process::isSetUpBeforeItsWindowIsShown()
{
    Child child(drivenProgram, {QStringLiteral("idle"), QStringLiteral("button")});
    child.set("LC_ALL", QStringLiteral("de_DE.UTF-8"));
    child.start();
    QVERIFY(child.process.waitForFinished(startLimitMs));
    QVERIFY(child.hasSaid("made after, styled, numbers as in C\nshown after addMotor, styled, numbers as in C\n"));
    QCOMPARE(child.process.exitCode(), 0);
}

void tst_Process::startsAgainWhenItHasLeft()
{
    const QTemporaryDir folder;
    const QString restarted = folder.filePath(QStringLiteral("restarted"));
    Child child(drivenProgram, {QStringLiteral("connected"), QStringLiteral("restart")});
    child.set("RESTARTED", restarted);
    QCOMPARE(child.run(), 0);
    QTRY_VERIFY(QFile::exists(restarted));
}

void tst_Process::aTypedCommaIsADecimalPointInEveryLocale_data()
{
    QTest::addColumn<QString>("locale");
    for (const char *locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "zh_CN.UTF-8"})
        QTest::newRow(locale) << QString::fromLatin1(locale);
}

void tst_Process::aTypedCommaIsADecimalPointInEveryLocale()
{
    QFETCH(QString, locale);
    Child child(drivenProgram, {QStringLiteral("typing"), QStringLiteral("button")});
    child.set("LC_ALL", locale);
    child.start();
    QVERIFY(child.process.waitForFinished(startLimitMs));
    QVERIFY(child.hasSaid("setTargetPos 1001, 0, 2.25\n"));
    QCOMPARE(child.process.exitCode(), 0);
}

void tst_Process::leavesOnASignal_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("hang-up") << SIGHUP;
}

void tst_Process::leavesOnASignal()
{
    QFETCH(int, signal);
    Child child(program);
    child.start();
    QTRY_VERIFY_WITH_TIMEOUT(child.handles(signal), startLimitMs);
    QElapsedTimer timer;
    timer.start();
    child.send(signal);
    child.send(signal); // an impatient user
    QVERIFY(child.process.waitForFinished(startLimitMs));
    QVERIFY(timer.elapsed() < leaveLimitMs);
    QCOMPARE(child.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.process.exitCode(), 0);
    QCOMPARE(child.complaints(), QStringList());
}

void tst_Process::leavesFromEveryState_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("way");
    for (const char *state : {"idle", "connected", "moving", "asking", "writing", "hanging"}) {
        for (const char *way : {"button", "close", "session"})
            QTest::addRow("%s, %s", state, way) << QString::fromLatin1(state) << QString::fromLatin1(way);
    }
}

void tst_Process::leavesFromEveryState()
{
    QFETCH(QString, state);
    QFETCH(QString, way);
    Child child(drivenProgram, {state, way});
    child.start();
    QTRY_VERIFY_WITH_TIMEOUT(child.hasSaid("ready"), startLimitMs);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(child.process.state() == QProcess::NotRunning || child.process.waitForFinished(startLimitMs));
    QVERIFY2(timer.elapsed() < leaveLimitMs, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(child.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.process.exitCode(), 0);
    QStringList complaints = child.complaints();
    for (const char *request : {"propagateSizeHints", "raise"}) // the offscreen platform has no window manager
        complaints.removeAll(
            QStringLiteral("warning|default|This plugin does not support %1()").arg(QLatin1String(request)));
    QCOMPARE(complaints, QStringList());
}

void tst_Process::exitCodeIsThatOfTheEventLoop_data()
{
    QTest::addColumn<QString>("state");
    for (const char *state : {"idle", "connected", "writing", "hanging"})
        QTest::newRow(state) << QString::fromLatin1(state);
}

void tst_Process::exitCodeIsThatOfTheEventLoop()
{
    QFETCH(QString, state);
    Child child(drivenProgram, {state, QStringLiteral("code")});
    QCOMPARE(child.run(), 7);
}

void tst_Process::leavesOnASignalFromEveryState_data()
{
    QTest::addColumn<QString>("state");
    for (const char *state : {"idle", "connected", "moving", "asking", "writing", "hanging"})
        QTest::newRow(state) << QString::fromLatin1(state);
}

void tst_Process::leavesOnASignalFromEveryState()
{
    QFETCH(QString, state);
    Child child(drivenProgram, {state, QStringLiteral("nothing")});
    child.start();
    QTRY_VERIFY_WITH_TIMEOUT(child.hasSaid("ready"), startLimitMs);
    QElapsedTimer timer;
    timer.start();
    child.send(SIGTERM);
    QVERIFY(child.process.waitForFinished(startLimitMs));
    QVERIFY2(timer.elapsed() < leaveLimitMs, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(child.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.process.exitCode(), 0);
}

void tst_Process::leavesOnASignalWhileItsWindowsWaitForTheLibrary()
{
    Child child(drivenProgram, {QStringLiteral("waiting"), QStringLiteral("nothing")});
    child.start();
    QTRY_VERIFY_WITH_TIMEOUT(child.hasSaid("ready"), startLimitMs);
    QElapsedTimer timer;
    timer.start();
    child.send(SIGTERM);
    QVERIFY(child.process.waitForFinished(startLimitMs));
    QVERIFY2(timer.elapsed() < patienceMs + leaveLimitMs, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(child.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.process.exitCode(), EXIT_FAILURE); // the controller was not closed
}

QTEST_GUILESS_MAIN(tst_Process)
#include "tst_Process.moc"
