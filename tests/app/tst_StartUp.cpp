// SPDX-License-Identifier: MIT
#include "app/ScreenFit.h"
#include "app/StartUp.h"
#include "device/SerialComDev.h"
#include "models/StageModelCatalogue.h"
#include "shell/MoverWidget.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/DebugLog.h"

#include <QApplication>
#include <QDoubleSpinBox>
#include <QFontDatabase>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QString writeFile(const QTemporaryDir &folder, const QByteArray &bytes)
{
    const QString path = folder.filePath(QStringLiteral("file"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

} // namespace

class tst_StartUp : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void preparesForHighResolutionScreens();
    void loadsNoOpenGlUnlessAsked();
    void drawsItsFileDialogsItself();
    void knowsNameAndVersion();

    void takesTheFontOfTheFile();
    void takesTheFirstFamilyOfAFileWithSeveral();
    void keepsTheFontWithoutAUsableFile_data();
    void keepsTheFontWithoutAUsableFile();

    void installsTheSheetOfTheResources();
    void readsTheSheetAsUtf8();
    void readsTheSheetUpToItsFirstZero();
    void installsAnEmptySheet();
    void runsWithoutASheetAndSaysSo();
    void everyClassHasTheProgramsFontAfterTheSheet();

    void registersOneLinearStageModel();
    void ignoresWhatTheRegistrationAnswers();

    void numbersHaveAPointInEveryLocale_data();
    void numbersHaveAPointInEveryLocale();

    void scaleFitsTheMainWindow_data();
    void scaleFitsTheMainWindow();
    void scaleIsForTheMainWindowsMinimum();

private:
    QFont m_font;
};

void tst_StartUp::init()
{
    simulator::reset();
    m_font = QApplication::font();
}

void tst_StartUp::cleanup()
{
    QApplication::setFont(m_font);
    qApp->setStyleSheet(QString());
    QLocale::setDefault(QLocale::c());
}

void tst_StartUp::preparesForHighResolutionScreens()
{
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_EnableHighDpiScaling));
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps));
    QCOMPARE(QGuiApplication::highDpiScaleFactorRoundingPolicy(), Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

void tst_StartUp::loadsNoOpenGlUnlessAsked()
{
    QCOMPARE(qgetenv("QT_XCB_GL_INTEGRATION"), QByteArray("none"));
    qputenv("QT_XCB_GL_INTEGRATION", "xcb_glx");
    StartUp::prepareApplication();
    const QByteArray kept = qgetenv("QT_XCB_GL_INTEGRATION");
    qputenv("QT_XCB_GL_INTEGRATION", "none");
    QCOMPARE(kept, QByteArray("xcb_glx"));
}

/** The stop keys would not reach a dialog of the system. */
void tst_StartUp::drawsItsFileDialogsItself()
{
    QVERIFY(QCoreApplication::testAttribute(Qt::AA_DontUseNativeDialogs));
}

void tst_StartUp::knowsNameAndVersion()
{
    QCOMPARE(QCoreApplication::applicationName(), QStringLiteral("mover"));
    QCOMPARE(QCoreApplication::applicationVersion(), QStringLiteral(MOVER_VERSION));
}

// ---- Font ----------------------------------------------------------------------------------------------------------

void tst_StartUp::takesTheFontOfTheFile()
{
    QFont own = m_font;
    own.setPixelSize(31);
    own.setItalic(true);
    QApplication::setFont(own);
    const QString path = QStringLiteral(MOVER_PROGRAM_DIR "/font.ttf");
    QVERIFY(QFile::exists(path));
    StartUp::installFont(path);
    const QStringList families = QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(path));
    QVERIFY(!families.isEmpty());
    QVERIFY(families.first() != own.family());
    QCOMPARE(QApplication::font().family(), families.first());
    QCOMPARE(QApplication::font().pixelSize(), 16);
    QVERIFY(QApplication::font().italic()); // the rest stays
}

void tst_StartUp::takesTheFirstFamilyOfAFileWithSeveral()
{
    const QString path = QStringLiteral(MOVER_SEVERAL_FAMILIES);
    QVERIFY(QFile::exists(path));
    const QStringList families = QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(path));
    QVERIFY2(families.size() > 1, qPrintable(path));
    StartUp::installFont(path);
    QCOMPARE(QApplication::font().family(), families.first());
    QCOMPARE(QApplication::font().pixelSize(), 16);
}

void tst_StartUp::keepsTheFontWithoutAUsableFile_data()
{
    QTest::addColumn<bool>("exists");
    QTest::newRow("missing") << false;
    QTest::newRow("not a font") << true;
}

void tst_StartUp::keepsTheFontWithoutAUsableFile()
{
    QFETCH(bool, exists);
    const QTemporaryDir folder;
    const DebugLog log;
    StartUp::installFont(exists ? writeFile(folder, "not a font") : folder.filePath(QStringLiteral("font.ttf")));
    QCOMPARE(QApplication::font(), m_font);
    QCOMPARE(log.lines(), QStringList());
}

// ---- Style sheet ---------------------------------------------------------------------------------------------------

void tst_StartUp::installsTheSheetOfTheResources()
{
    QFile file(QStringLiteral(":/style.qss"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const DebugLog log;
    StartUp::installStyleSheet(QStringLiteral(":/style.qss"));
    QVERIFY(!qApp->styleSheet().isEmpty());
    QCOMPARE(qApp->styleSheet(), QString::fromUtf8(file.readAll()));
    QCOMPARE(log.lines(), QStringList());
}

void tst_StartUp::readsTheSheetAsUtf8()
{
    const QTemporaryDir folder;
    StartUp::installStyleSheet(writeFile(folder, "/* 样式 ° */ QLabel{color: red;}"));
    QCOMPARE(qApp->styleSheet(), QStringLiteral("/* 样式 ° */ QLabel{color: red;}"));
}

void tst_StartUp::readsTheSheetUpToItsFirstZero()
{
    const QTemporaryDir folder;
    StartUp::installStyleSheet(writeFile(folder, QByteArray("QLabel{}\0QWidget{}\0", 19)));
    QCOMPARE(qApp->styleSheet(), QStringLiteral("QLabel{}"));
}

void tst_StartUp::installsAnEmptySheet()
{
    qApp->setStyleSheet(QStringLiteral("QLabel{}"));
    const QTemporaryDir folder;
    const DebugLog log;
    StartUp::installStyleSheet(writeFile(folder, ""));
    QCOMPARE(qApp->styleSheet(), QString());
    QCOMPARE(log.lines(), QStringList());
}

void tst_StartUp::runsWithoutASheetAndSaysSo()
{
    qApp->setStyleSheet(QStringLiteral("QLabel{}"));
    const QTemporaryDir folder;
    const DebugLog log;
    StartUp::installStyleSheet(folder.filePath(QStringLiteral("missing.qss")));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("loadFile ERROR")});
    QCOMPARE(qApp->styleSheet(), QStringLiteral("QLabel{}"));
}

void tst_StartUp::everyClassHasTheProgramsFontAfterTheSheet()
{
    QFont font = m_font;
    font.setPixelSize(31);
    QApplication::setFont(font);
    font.setPixelSize(7);
    QApplication::setFont(font, "QMessageBox"); // as a desktop has one for it
    StartUp::installStyleSheet(QStringLiteral(":/style.qss"));
    QCOMPARE(QApplication::font("QMessageBox").pixelSize(), 31);
}

// ---- Stage model ---------------------------------------------------------------------------------------------------

void tst_StartUp::registersOneLinearStageModel()
{
    StartUp::registerStageModel();
    const std::vector<simulator::Call> journal = simulator::journal();
    QCOMPARE(int(journal.size()), 1);
    QCOMPARE(QString::fromStdString(journal.front().function), QStringLiteral("addMotor"));
    const QString arguments = QString::fromStdString(journal.front().arguments);
    const QRegularExpressionMatch match = QRegularExpression(QStringLiteral("^0, 0, \"([^\"]+)\"")).match(arguments);
    QVERIFY2(match.hasMatch(), qPrintable(arguments));

    StageModelCatalogue catalogue;
    QVERIFY(catalogue.loadFile(QStringLiteral(MOVER_PROGRAM_DIR "/deviceModelsParam")));
    QVERIFY(catalogue.names(STAGE_LINEAR).contains(match.captured(1)));
}

void tst_StartUp::ignoresWhatTheRegistrationAnswers()
{
    const DebugLog log;
    simulator::failCall("addMotor", -9);
    StartUp::registerStageModel();
    QCOMPARE(simulator::callCount("addMotor"), 1);
    QCOMPARE(log.lines(), QStringList());
}

// ---- Numbers -------------------------------------------------------------------------------------------------------

void tst_StartUp::numbersHaveAPointInEveryLocale_data()
{
    QTest::addColumn<QLocale>("locale");
    for (const QLocale &locale :
         {QLocale(QLocale::German), QLocale(QLocale::French), QLocale(QLocale::Chinese), QLocale(QLocale::English)})
        QTest::newRow(qPrintable(locale.name())) << locale;
}

void tst_StartUp::numbersHaveAPointInEveryLocale()
{
    QFETCH(QLocale, locale);
    QLocale::setDefault(locale);
    StartUp::setNumberFormat();
    QDoubleSpinBox field;
    field.setMaximum(1e6);
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("1234.25"));
    QCOMPARE(field.value(), 1234.25);
    QCOMPARE(field.text(), QStringLiteral("1234.25"));
}

// ---- Screen --------------------------------------------------------------------------------------------------------

void tst_StartUp::scaleFitsTheMainWindow_data()
{
    QTest::addColumn<QSize>("room");
    QTest::addColumn<double>("scale");
    QTest::newRow("large") << QSize(1920, 1080) << 1.0;
    QTest::newRow("just large enough") << QSize(1620, 910) << 1.0;
    QTest::newRow("too narrow") << QSize(1600, 1200) << 0.98;
    QTest::newRow("too low") << QSize(1920, 900) << 0.98;
    QTest::newRow("small notebook") << QSize(1366, 768) << 0.84;
    QTest::newRow("small notebook with a task bar") << QSize(1366, 728) << 0.8;
    QTest::newRow("very small") << QSize(640, 480) << 0.39;
    QTest::newRow("none") << QSize(0, 0) << 0.0;
}

void tst_StartUp::scaleFitsTheMainWindow()
{
    QFETCH(QSize, room);
    QTEST(ScreenFit::scaleFor(room), "scale");
}

void tst_StartUp::scaleIsForTheMainWindowsMinimum()
{
    {
        const MoverWidget window;
        QCOMPARE(window.minimumSize(), ScreenFit::MainWindow);
        QCOMPARE(window.size(), ScreenFit::MainWindow);
    }
    QVERIFY(SerialComDev::endThread(5000));
}

int main(int argc, char *argv[])
{
    qunsetenv("QT_XCB_GL_INTEGRATION");
    StartUp::prepareApplication();
    QApplication application(argc, argv);
    tst_StartUp test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_StartUp.moc"
