// SPDX-License-Identifier: MIT
#include "Child.h"

#include <QDirIterator>

namespace {

const QString programFolder = QStringLiteral(MOVER_PROGRAM_DIR);
const QString anotherLibrary = QStringLiteral(MOVER_ANOTHER_LIBRARY);

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

} // namespace

class tst_MakersLibrary : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void isUsedWhenItLiesBesideTheProgram();
    void givesWayToTheSimulatedControllerWhenThereIsNone();

private:
    void runAndLeave(QStringList *libraries);

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_calledFunctions;
};

void tst_MakersLibrary::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    copyProgram(m_folder->path());
    m_calledFunctions = m_folder->filePath(QStringLiteral("calledFunctions"));
}

/** Starts the copied program, notes the motion libraries that it has loaded, and leaves it. */
void tst_MakersLibrary::runAndLeave(QStringList *libraries)
{
    Child child(m_folder->filePath(QStringLiteral("mover")));
    child.set("CALLED_FUNCTIONS", m_calledFunctions);
    child.unset("LD_LIBRARY_PATH");
    child.start();
    QTRY_VERIFY_WITH_TIMEOUT(child.handles(SIGTERM), 30000);
    *libraries = child.loadedFiles().filter(QStringLiteral("libmoverLibrary.so"));
    child.send(SIGTERM);
    QVERIFY(child.process.waitForFinished(30000));
    QCOMPARE(child.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.process.exitCode(), 0);
    QCOMPARE(child.complaints(), QStringList());
}

void tst_MakersLibrary::isUsedWhenItLiesBesideTheProgram()
{
    QCOMPARE(MOVER_ANOTHER_LIBRARY_FUNCTIONS, 71);
    const QString copy = m_folder->filePath(QStringLiteral("libmoverLibrary.so"));
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

void tst_MakersLibrary::givesWayToTheSimulatedControllerWhenThereIsNone()
{
    QStringList libraries;
    runAndLeave(&libraries);
    QCOMPARE(libraries, QStringList{m_folder->filePath(QStringLiteral("simulator/libmoverLibrary.so"))});
    QVERIFY(!QFile::exists(m_calledFunctions));
}

QTEST_GUILESS_MAIN(tst_MakersLibrary)
#include "tst_MakersLibrary.moc"
