// SPDX-License-Identifier: MIT
// soak MINUTES: see Soak.h. Exit code 0 when everything stays flat.
#include "app/StartUp.h"
#include "device/SerialComDev.h"
#include "shell/MoverWidget.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/LiveObjects.h"
#include "support/MessageBoxes.h"

#include "Soak.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QThreadPool>

#include <cstdio>
#include <optional>

namespace {

/** Three stages that identify themselves; their time passes as much faster as their panels poll. */
std::string scenario()
{
    std::string axes;
    for (const char *model : {"LIN-100", "LIN-200", "LIN-300"})
        axes += (axes.empty() ? "" : ",") +
                std::string(R"({"chip": "written", "stage": {"serialNumber": "SN-1", "modelName": ")") + model + "\"}}";
    return R"({"timeScale": )" + std::to_string(Soak::Faster) +
           R"(, "controllers": [{"id": 1001, "serialNumber": "MC3", "joystick": {}, "axes": [)" + axes + "]}]}";
}

void onMessage(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtDebugMsg || type == QtInfoMsg || message.startsWith(QLatin1String("This plugin does not support")))
        return;
    std::fprintf(stderr, "FINDING: Qt warns: %s\n", qPrintable(message));
    std::_Exit(1);
}

} // namespace

int main(int argc, char *argv[])
{
    const int minutes = argc > 1 ? std::atoi(argv[1]) : 20;
    LiveObjects::install();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    StartUp::prepareApplication();
    QApplication application(argc, argv);
    StartUp::setNumberFormat();
    StartUp::installFont(QStringLiteral(MOVER_PROGRAM_DIR "/font.ttf"));
    StartUp::installStyleSheet(QStringLiteral(":/style.qss"));
    qInstallMessageHandler(&onMessage);

    std::string error;
    if (!simulator::loadScenarioText(scenario(), &error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 1;
    }
    simulator::useRealClock();

    // Qt scales large pictures in threads that end after 30 s without work: here they stay, once they are there.
    QThreadPool::globalInstance()->setExpiryTimeout(-1);

    bool flat = false;
    {
        const MessageBoxes boxes;
        MoverWidget window;
        StartUp::registerStageModel();
        window.show();
        const Soak soak(&window, minutes);
        QApplication::exec();
        flat = soak.report();
    }
    return SerialComDev::endThread(5000) && flat ? 0 : 1;
}
