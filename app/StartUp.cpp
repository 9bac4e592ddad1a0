// SPDX-License-Identifier: MIT
#include "app/StartUp.h"

#include "app/CallingConsole.h"
#include "app/ScreenFit.h"
#include "app/TerminationSignals.h"
#include "device/BoardLink.h"
#include "device/ControllersFile.h"
#include "device/LibraryLock.h"
#include "device/MotionLibrary.h"
#include "device/SerialComDev.h"
#include "shell/MoverWidget.h"
#include "session/ParameterHistory.h"
#include "session/SmallFile.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QIcon>
#include <QLocale>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#ifdef Q_OS_WIN
#include <qpa/qplatformfontdatabase.h>
#endif

namespace {

constexpr qint64 maxFontSize = 64 * 1024 * 1024;
constexpr int threadLimitMs = 1000; // how long leaving waits for a library call in flight

struct Options {
    Options()
    {
        parser.setApplicationDescription(QStringLiteral("Control program for a bench-top stepper-motor controller."));
        parser.addHelpOption();
        parser.addVersionOption();
        parser.addOption(library);
        parser.addOption(scenario);
    }

    /**
     * Ends the program where the arguments ask for help or are wrong. The parser's own way would open a box on Windows,
     * which waits for somebody.
     */
    void process()
    {
        const bool understood = parser.parse(QCoreApplication::arguments());
        if (understood && !parser.isSet(QStringLiteral("help")) && !parser.isSet(QStringLiteral("help-all")))
            return;
        CallingConsole::join();
        if (understood)
            std::printf("%s", qUtf8Printable(parser.helpText()));
        else
            std::fprintf(stderr, "mover: %s\n", qUtf8Printable(parser.errorText()));
        std::fflush(nullptr);
        std::exit(understood ? EXIT_SUCCESS : EXIT_FAILURE);
    }

    /** Loads the library that the options name, or that is found. */
    std::optional<MotionLibrary::Fault> loadLibrary(bool ignoresStored = false) const
    {
        return MotionLibrary::load(parser.value(library), ignoresStored);
    }

    QCommandLineParser parser;
    QCommandLineOption library{
        QStringLiteral("library"),
        QStringLiteral(
            "The motion library to use, in place of the maker's beside the program or the simulated controller; "
            "the same as MOVER_LIBRARY in the environment."),
        QStringLiteral("FILE")};
    QCommandLineOption scenario{
        QStringLiteral("scenario"),
        QStringLiteral("What the simulated controller plays (a JSON file); the same as MOVER_SCENARIO in the "
                       "environment. Any other library ignores it."),
        QStringLiteral("FILE")};
};

void nameScenario(const QString &path)
{
#ifdef Q_OS_WIN // qputenv() would write it in the code page, which does not have every character
    _wputenv_s(L"MOVER_SCENARIO", path.toStdWString().c_str());
#else
    qputenv("MOVER_SCENARIO", QFile::encodeName(path));
#endif
}

void complain(const MotionLibrary::Fault &fault)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(fault.message()));
}

/** Answers --help and --version without a display. Any other argument waits for the application object. */
void answerQuestions(int argc, char *argv[])
{
    bool asksOnly = false;
    for (int k = 1; k < argc; ++k)
        asksOnly = asksOnly || !std::strcmp(argv[k], "--help") || !std::strcmp(argv[k], "-h") ||
                   !std::strcmp(argv[k], "--version") || !std::strcmp(argv[k], "-v");
    if (!asksOnly)
        return;
    const QCoreApplication application(argc, argv);
    Options options;
    options.process();
    CallingConsole::join();
    std::printf("%s %s\n", qPrintable(QCoreApplication::applicationName()), MOVER_VERSION);
    std::fflush(stdout);
    if (const auto fault = options.loadLibrary()) {
        complain(*fault);
        std::exit(MotionLibrary::FaultExitCode);
    }
    std::printf("%s\n", qUtf8Printable(MotionLibrary::inUse().description()));
    std::exit(EXIT_SUCCESS);
}

/** A library that was chosen in the program and is of no use: whether to start with the one that is found instead. */
bool startsWithout(const MotionLibrary::Fault &fault)
{
    const QString instead = QDir::toNativeSeparators(MotionLibrary::fileOf(MotionLibrary::automatic()));
    QMessageBox box(
        QMessageBox::Critical, QStringLiteral("mover"),
        fault.message() + QStringLiteral("\n\n这次改用 %1？\nUse %1 this time?").arg(instead));
    box.addButton(QStringLiteral("退出 / Quit"), QMessageBox::RejectRole);
    const QAbstractButton *start = box.addButton(QStringLiteral("启动 / Start"), QMessageBox::AcceptRole);
    box.exec();
    return box.clickedButton() == start;
}

/**
 * A file of controllers that cannot be read, or of a newer program, is kept under another name, and the user is told.
 * Before the library is used, which reads it.
 */
void setAsideUnreadableControllers()
{
    const QString path = ControllersFile::path();
    if (!QFileInfo::exists(path))
        return;
    QString fault = ControllersFile(path).fault();
    if (fault.isEmpty() && MotionLibrary::inUse().mark() == MotionLibrary::word(MotionLibrary::Kind::Grbl))
        fault = BoardLink::faultOf(path);
    if (fault.isEmpty())
        return;
    const QString aside = ControllersFile::setAside(path);
    const QString kept = QDir::toNativeSeparators(aside.isEmpty() ? path : aside);
    const QString message = QStringLiteral("无法读取控制器文件 %1：\n%2\n它已保留为 %3，请重新设置控制器。\n\n"
                                           "The file of controllers %1 cannot be read:\n%2\n"
                                           "It is kept as %3. Please set up the controllers again.")
                                .arg(QDir::toNativeSeparators(path), fault, kept);
    std::fprintf(stderr, "%s\n", qUtf8Printable(message));
    QMessageBox(QMessageBox::Warning, QStringLiteral("mover"), message, QMessageBox::Ok).exec();
}

/** False when the library cannot be used; the user has then been told why. */
bool loadLibrary(const Options &options)
{
    auto fault = options.loadLibrary();
    if (fault) {
        complain(*fault);
        if (!fault->wasStored) {
            QMessageBox(QMessageBox::Critical, QStringLiteral("mover"), fault->message()).exec();
            return false;
        }
        if (!startsWithout(*fault))
            return false;
        if ((fault = options.loadLibrary(true))) {
            complain(*fault);
            QMessageBox(QMessageBox::Critical, QStringLiteral("mover"), fault->message()).exec();
            return false;
        }
    }
    setAsideUnreadableControllers();
    if (!options.parser.isSet(options.scenario))
        return true;
    if (MotionLibrary::inUse().isSimulated())
        nameScenario(QFileInfo(options.parser.value(options.scenario)).absoluteFilePath());
    else
        std::fprintf(stderr, "--scenario is ignored: the library in use is no simulated controller.\n");
    return true;
}

/**
 * Windows makes the bold face of a family that has none. Qt does not count on it: at the first bold text it would read
 * every font of the machine, in search of another name of the family, and that takes as long as the rest of the start.
 */
#ifdef Q_OS_WIN
void registerBold(const QString &family)
{
    QSupportedWritingSystems systems;
    const auto supported = QFontDatabase().writingSystems(family); // reads the regular face, which comes first
    for (const QFontDatabase::WritingSystem system : supported)
        systems.setSupported(system);
    constexpr int everySize = 0xffff;
    QPlatformFontDatabase::registerFont(
        family, {}, {}, QFont::Bold, QFont::StyleNormal, QFont::Unstretched, false, true, everySize, false, systems,
        nullptr);
}
#else
void registerBold(const QString &) {}
#endif

} // namespace

void StartUp::prepareApplication()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    // 150 % is 150 %; rounded to 200 % the main window would not find room on most screens that have it.
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); // the stop keys would not reach them
    QCoreApplication::setApplicationName(QStringLiteral("mover"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MOVER_VERSION));
    // The program draws nothing by OpenGL; loading it costs a third of the start and half of the memory.
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    // Qt's own event loop wakes a thread once for many events, GLib's once for each. The GUI thread stays with GLib's.
    if (!qEnvironmentVariableIsSet("QT_NO_THREADED_GLIB"))
        qputenv("QT_NO_THREADED_GLIB", "1");
}

std::unique_ptr<QApplication> StartUp::makeApplication(int &argc, char *argv[])
{
    const std::vector<char *> given(argv, argv + argc);
    auto application = std::make_unique<QApplication>(argc, argv);
    // A screen that gives its size in whole millimetres may come to 96.1 dots per inch. Everything would then be drawn
    // a thousandth larger, and blurred. Only steps of a quarter are meant.
    const double told = QGuiApplication::primaryScreen()->devicePixelRatio();
    const double quarters = std::max(1.0, std::round(told * 4) / 4);
    const QSize room = QGuiApplication::primaryScreen()->availableSize() * (told / quarters);
    // Qt's painter takes a ratio below 1 for 1: smaller than that, all would be painted beyond the windows' edges.
    const double scale = std::max(1.0, ScreenFit::scaleFor(room) * quarters) / told;
    constexpr char factor[] = "QT_SCALE_FACTOR";
    if (qFuzzyCompare(scale, 1) || qEnvironmentVariableIsSet(factor))
        return application;

    // Only an application object knows the screen, and only a new one takes a scale.
    application.reset();
    argc = int(given.size());
    std::copy(given.begin(), given.end(), argv); // the first one has taken out what it understood
    qputenv(factor, QByteArray::number(scale, 'g', 12));
    application = std::make_unique<QApplication>(argc, argv);
    qunsetenv(factor); // not for the programs that are started from here
    return application;
}

void StartUp::setNumberFormat()
{
    QLocale::setDefault(QLocale::c());
}

void StartUp::installFont(const QString &path)
{
    // Not mapped: a font file that is overwritten while the program runs must not crash it.
    const QByteArray bytes = SmallFile::read(path, maxFontSize);
    if (bytes.isEmpty())
        return; // Qt would complain of it on Windows
    const int id = QFontDatabase::addApplicationFontFromData(bytes);
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    if (families.isEmpty())
        return;
    registerBold(families.first());
    QFont font = QApplication::font();
    font.setFamily(families.first());
    font.setPixelSize(16);
    QApplication::setFont(font);
}

void StartUp::installStyleSheet(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug() << "loadFile ERROR";
        return;
    }
    const QByteArray bytes = file.readAll();
    qApp->setStyleSheet(QString::fromUtf8(bytes.constData(), int(qstrnlen(bytes.constData(), uint(bytes.size())))));
    // With a style sheet, Qt goes back to the desktop's own fonts for message boxes, menus and tool tips.
    QApplication::setFont(QApplication::font());
}

void StartUp::registerStageModel()
{
    char model[MOVER_TEXT_LENGTH] = "LIN-100";
    const LibraryLock library;
    library->addMotor(0, 0, model);
}

int StartUp::run(int argc, char *argv[])
{
    prepareApplication();
    answerQuestions(argc, argv);

    const auto application = makeApplication(argc, argv);
    Options options;
    options.process();
    if (!loadLibrary(options))
        return MotionLibrary::FaultExitCode;

    QApplication::setWindowIcon(QIcon(QStringLiteral(":/image/mover.png")));
    setNumberFormat();
    installFont(QCoreApplication::applicationDirPath() + QStringLiteral("/font.ttf"));
    installStyleSheet(QStringLiteral(":/style.qss"));

    int exitCode = 0;
    bool startsAgain = false;
    {
        MoverWidget window;
        const ScreenFit fit(&window);
        const auto history = ParameterHistory::instance(); // keeps snapshots also while nobody looks at them
        registerStageModel();
        const TerminationSignals signalsToClose([&window] { window.close(); });
        window.show();
        exitCode = QApplication::exec();
        startsAgain = window.startsAgain();
    }
    const bool ended = SerialComDev::endThread(threadLimitMs);
    if (startsAgain)
        QProcess::startDetached(QCoreApplication::applicationFilePath(), QCoreApplication::arguments().mid(1));
    if (!ended) {
        // A thread hangs in the library: tidying up under its feet could crash.
        std::fflush(nullptr);
        std::_Exit(exitCode);
    }
    return exitCode;
}
