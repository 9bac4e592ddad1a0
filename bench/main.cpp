// SPDX-License-Identifier: MIT
// What the program's frequent steps cost, each beside something simple that was measured at the same time.
#include "axis/MoverControlWidget.h"
#include "axis/OperationLog.h"
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "device/moverLibrary.h"
#include "models/AddControlsWidget.h"
#include "simulator/SimulatorControl.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLoggingCategory>
#include <QPushButton>
#include <QSemaphore>
#include <QTextBrowser>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int device = 1001; // the one of the default scenario

/** Does something once and returns the nanoseconds it took. */
using Sample = std::function<qint64()>;

template <typename Step>
Sample timed(Step step, int repeats = 1)
{
    return [step, repeats] {
        QElapsedTimer timer;
        timer.start();
        for (int k = 0; k < repeats; ++k)
            step();
        return timer.nsecsElapsed() / repeats;
    };
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + long(values.size() / 2), values.end());
    return values[values.size() / 2];
}

/** Measures both in turns, so that whatever else the machine does meets both, and prints the medians in µs. */
void compare(const char *what, const Sample &subject, const char *baselineName, const Sample &baseline, int pairs)
{
    std::vector<double> subjects;
    std::vector<double> baselines;
    std::vector<double> ratios;
    for (int pair = -pairs / 10; pair < pairs; ++pair) {
        double first = double(pair % 2 ? subject() : baseline());
        double second = double(pair % 2 ? baseline() : subject());
        if (pair % 2 == 0)
            std::swap(first, second);
        if (pair < 0) // to get warm
            continue;
        subjects.push_back(first / 1000);
        baselines.push_back(second / 1000);
        ratios.push_back(first / std::max(second, 1.0));
    }
    std::printf(
        "| %s | %.2f | %s | %.2f | %.2f | %d |\n", what, median(subjects), baselineName, median(baselines),
        median(ratios), pairs);
    std::fflush(stdout);
}

/** Lives in a thread of its own and answers every question. */
class Echo final : public QObject
{
    Q_OBJECT

signals:
    void ask();
    void answered();

public slots:
    void answer() { emit answered(); }
};

void clickToLibraryCall()
{
    const auto worker = SerialComDev::instance();
    MoverControlWidget panel;
    panel.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->stop(); // no polls between the clicks
    auto *button = panel.findChild<QPushButton *>(QStringLiteral("pushButton_stop"));

    QElapsedTimer clock;
    clock.start();
    qint64 calledAt = 0;
    QSemaphore called;
    // In the worker thread, as the first thing after the library has answered.
    const auto connection = QObject::connect(
        worker.data(), &SerialComDev::signal_showOperationMsg, worker.data(),
        [&] {
            calledAt = clock.nsecsElapsed();
            called.release();
        },
        Qt::DirectConnection);
    int clicks = 0;
    const Sample click = [&] {
        QThread::msleep(1); // the worker sleeps when the click comes
        ++clicks;
        const qint64 start = clock.nsecsElapsed();
        button->click();
        called.acquire();
        return calledAt - start;
    };

    QThread thread;
    Echo echo;
    Echo asker;
    echo.moveToThread(&thread);
    QObject::connect(&asker, &Echo::ask, &echo, &Echo::answer);
    QEventLoop loop;
    QObject::connect(&echo, &Echo::answered, &loop, &QEventLoop::quit);
    thread.start();
    const Sample thereAndBack = [&] {
        QThread::msleep(1);
        return timed([&] {
            emit asker.ask();
            loop.exec();
        })();
    };
    compare("click to library call, idle worker", click, "queued signal to a thread and back", thereAndBack, 1000);
    if (simulator::callCount("stopRuning") != clicks)
        qFatal("not every click has reached the library");

    thread.quit();
    thread.wait();
    QObject::disconnect(connection);
}

void poll()
{
    MoverControlWidget panel;
    panel.show();
    QCoreApplication::processEvents();
    MotorStageState state = {};
    state.isCanRun = 1;
    state.isStop = 1;
    QString text;
    compare(
        "poll without a change (position and state)",
        timed(
            [&] {
                panel.slot_updateCurrentPos(0, 12.5);
                panel.slot_updateDevState(0, state);
            },
            100),
        "putting the position into words",
        timed([&] { text = QStringLiteral("%1 %2").arg(QString::number(12.5, 'f', 3), QStringLiteral("mm")); }, 100),
        1000);
    if (panel.findChild<QLabel *>(QStringLiteral("label_currentPos"))->text() != text)
        qFatal("the panel does not show the position");
}

/** A panel's log with so many entries. */
struct FilledLog {
    explicit FilledLog(int entries)
    {
        browser.resize(500, 300);
        browser.show();
        for (int k = 0; k < entries; ++k)
            log.append(LOG_PLAIN, QString::number(k), LOG_STATE_NONE);
    }
    void append() { log.append(1, QStringLiteral("10.000"), 3); }
    void count() { log.append(LOG_RUN_COUNT, QStringLiteral("7"), LOG_STATE_RUNNING); }

    QTextBrowser browser;
    OperationLog log{&browser};
};

void operationLog()
{
    FilledLog small(1000);
    FilledLog large(100000);
    const char *baseline = "the same in 1,000";
    compare("log entry below 100,000", timed([&] { large.append(); }), baseline, timed([&] { small.append(); }), 300);
    small.count();
    large.count();
    compare(
        "run count replaced below 100,000", timed([&] { large.count(); }), baseline, timed([&] { small.count(); }),
        300);
}

void libraryCall()
{
    MotorStageState state = {};
    simulator::clearJournal();
    compare(
        "simulated library call (getRuningState)",
        timed(
            [&] {
                const LibraryLock library;
                getRuningState(device, 0, &state);
            },
            20),
        "the library mutex alone", timed([] { const LibraryLock library; }, 20), 2000);
}

void addAxisDialog()
{
    QJsonArray models;
    for (int k = 0; k < 20000; ++k) {
        QJsonObject model{{"name", QStringLiteral("LIN-%1").arg(k)}, {"unitString", "mm"}, {"optOrder", "NZP"}};
        for (const char *key :
             {"AxisType", "positivePolarity", "negativePolarity", "originPolarity", "phaseDirction", "originSigID",
              "moveType", "limitDirection", "zeroOptWidth", "optNum", "returnTrip", "motorPhase", "modifyDate"})
            model.insert(QLatin1String(key), 0);
        for (const char *key :
             {"pulseOneCircle", "dispOneCircle", "restoreSpeed", "maxSpeed", "maxAcc", "minPos", "maxPos",
              "maxRockerSpeed"})
            model.insert(QLatin1String(key), 12.0);
        models.append(model);
    }
    QFile file(QCoreApplication::applicationDirPath() + QStringLiteral("/deviceModelsParam"));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write the model file");
    file.write(QJsonDocument(QJsonObject{{"MoverModels", models}}).toJson());
    file.close();

    AddControlsWidget dialog;
    const Sample open = [&] {
        dialog.close();
        QCoreApplication::processEvents();
        return timed([&] {
            dialog.setAxisNames({QStringLiteral("Axis1")});
            dialog.loadModelsData();
            dialog.show();
            QCoreApplication::processEvents(); // painted
        })();
    };
    const Sample parse = timed([&] {
        if (!file.open(QIODevice::ReadOnly) || QJsonDocument::fromJson(file.readAll()).isNull())
            qFatal("cannot read the model file");
        file.close();
    });
    compare("add-axis dialog with 20,000 models", open, "reading and parsing the file", parse, 30);
    if (dialog.findChild<QComboBox *>(QStringLiteral("comboBox_models"))->count() != models.size())
        qFatal("the dialog does not have the models");
    file.remove();
}

} // namespace

int main(int argc, char *argv[])
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    registerDeviceRecords();
    simulator::reset();
    if (SerialComDev::instance()->open(device) != device)
        qFatal("cannot open the simulated controller");

    std::printf(
        "%s, %s, Qt %s, %d processors\n\n", qPrintable(QSysInfo::prettyProductName()),
        qPrintable(QSysInfo::currentCpuArchitecture()), qVersion(), QThread::idealThreadCount());
    std::printf("| step | µs | baseline | µs | ratio | pairs |\n|---|---|---|---|---|---|\n");
    clickToLibraryCall();
    poll();
    libraryCall();
    operationLog();
    addAxisDialog();
    return SerialComDev::shutDown(5000) ? 0 : 1;
}
#include "main.moc"
