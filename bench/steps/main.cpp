// SPDX-License-Identifier: MIT
//
// benchSteps EFFORT ROW…
// Measures the rows of the performance table that need no process of their own. For each it prints a line: the row's
// name, its figure and a remark, separated by tabs. EFFORT is in percent of a full run.
#include "steps/Rows.h"

#include "app/StartUp.h"
#include "device/SerialComDev.h"
#include "controllers/simulated/SimulatorControl.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <cstdlib>

namespace {

struct Row {
    const char *name;
    void (*measure)(int effort);
};

constexpr Row rows[] = {
    {"click idle", Rows::clickIdle},      {"click busy", Rows::clickBusy},
    {"slow link", Rows::slowLink},        {"stop all idle", Rows::stopAllIdle},
    {"stop all busy", Rows::stopAllBusy}, {"poll", Rows::poll},
    {"log", Rows::operationLog},          {"panels", Rows::panels},
    {"library call", Rows::libraryCall},  {"model file", Rows::modelFile},
    {"recorder", Rows::recorder},         {"sequence", Rows::sequence},
};

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 3)
        return 2;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    StartUp::prepareApplication();
    QApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    StartUp::setNumberFormat();
    StartUp::installFont(QCoreApplication::applicationDirPath() + QStringLiteral("/font.ttf"));
    StartUp::installStyleSheet(QStringLiteral(":/style.qss"));
    registerDeviceRecords();
    simulator::reset();
    if (SerialComDev::instance()->open(Rows::device) != Rows::device)
        qFatal("cannot open the simulated controller");
    for (int k = 2; k < argc; ++k) {
        for (const Row &row : rows) {
            if (!qstrcmp(row.name, argv[k]))
                row.measure(std::atoi(argv[1]));
        }
    }
    return SerialComDev::endThread(5000) ? 0 : 1;
}
