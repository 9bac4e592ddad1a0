// SPDX-License-Identifier: MIT
// monkey SEED STEPS: see Monkey.h. Exit code 0 when nothing was found.
#include "app/StartUp.h"
#include "support/LiveObjects.h"

#include "Monkey.h"

#include <QApplication>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>

extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

namespace {

void onWarning(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtDebugMsg || type == QtInfoMsg || message.startsWith(QLatin1String("This plugin does not support")))
        return;
    std::fprintf(stderr, "== monkey: finding: Qt warns: %s\n", qPrintable(message));
    Monkey::tellSteps();
    std::_Exit(1);
}

void onSignal(int)
{
    Monkey::tellSteps();
}

/** Opens nothing: links and folders lead out of the program. */
class Nowhere final : public QObject
{
    Q_OBJECT

public slots:
    void open(const QUrl &) {}
};

} // namespace

int main(int argc, char *argv[])
{
    const unsigned seed = argc > 1 ? unsigned(std::strtoul(argv[1], nullptr, 10)) : 1;
    const int steps = argc > 2 ? std::atoi(argv[2]) : 1000;
    LiveObjects::install();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    if (__sanitizer_set_death_callback)
        __sanitizer_set_death_callback(&Monkey::tellSteps);
    std::signal(SIGABRT, &onSignal);

    StartUp::prepareApplication();
    QApplication application(argc, argv);
    QFile::remove(QCoreApplication::applicationDirPath() + QStringLiteral("/appConfig.ini"));
    Nowhere nowhere;
    for (const char *scheme : {"file", "http", "https", "mailto"})
        QDesktopServices::setUrlHandler(QLatin1String(scheme), &nowhere, "open");
    QApplication::setCursorFlashTime(0);
    for (const Qt::UIEffect effect : {Qt::UI_AnimateMenu, Qt::UI_FadeMenu, Qt::UI_AnimateCombo, Qt::UI_AnimateTooltip})
        QApplication::setEffectEnabled(effect, false);
    StartUp::setNumberFormat();
    StartUp::installFont(QStringLiteral(MOVER_PROGRAM_DIR "/font.ttf"));
    StartUp::installStyleSheet(QStringLiteral(":/style.qss"));
    qInstallMessageHandler(&onWarning);

    QElapsedTimer timer;
    timer.start();
    {
        Monkey monkey(seed, steps);
        monkey.run();
    }
    std::printf("seed %u: %d steps in %lld s, no finding\n", seed, steps, timer.elapsed() / 1000);
    return 0;
}

#include "main.moc"
