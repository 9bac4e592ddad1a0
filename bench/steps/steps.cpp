// SPDX-License-Identifier: MIT
// What the program's frequent steps cost.
#include "steps/Measure.h"
#include "steps/Rows.h"

#include "axis/MoverControlWidget.h"
#include "axis/OperationLog.h"
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "device/moverLibrary.h"
#include "models/AddControlsWidget.h"
#include "models/StageParams.h"
#include "shell/MoverWidget.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/Robot.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTextBrowser>
#include <QTimer>

#include <malloc.h>

namespace {

/** A panel's log with so many entries. */
struct FilledLog {
    explicit FilledLog(int entries)
    {
        browser.resize(336, 300);
        browser.show();
        for (int k = 0; k < entries; ++k)
            log.append(OPERATION_TYPE_GENERAL, QString::number(k), OPERATION_STATE_NONE);
        QCoreApplication::processEvents();
    }
    void append() { log.append(OPERATION_TYPE_MOVE, QStringLiteral("10.000"), OPERATION_STATE_OK); }
    void count() { log.append(OPERATION_TYPE_RUN_COUNT, QString::number(++runs), OPERATION_STATE_RUNNING); }

    QTextBrowser browser;
    OperationLog log{&browser};
    int runs = 0;
};

/** Emits what a poll's answer is, to a panel or to nobody in particular. */
class Answers final : public QObject
{
    Q_OBJECT

signals:
    // Defined by Qt's tool, with names of its own: NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
    void state(int axis, MotorStageState state);
    void stateForNobody(int axis, MotorStageState state);
    // NOLINTEND(readability-inconsistent-declaration-parameter-name)

public slots:
    void take(int, MotorStageState state) { m_iSeen += state.isStop; }

private:
    int m_iSeen = 0;
};

/** Counts what makes a widget draw or lay itself out again. */
class Touches final : public QObject
{
public:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        const QEvent::Type type = event->type();
        if (object->isWidgetType() && (type == QEvent::Paint || type == QEvent::UpdateRequest ||
                                       type == QEvent::LayoutRequest || type == QEvent::StyleChange))
            ++count;
        return false;
    }
    int count = 0;
};

/** Memory of this process that nobody shares, in KiB. */
long privateMemory()
{
    simulator::clearJournal();
    malloc_trim(0); // what was freed goes back to the system and does not count
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no smaps_rollup");
    long sum = 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("Private_"))
            sum += line.simplified().split(' ').value(1).toLong();
    }
    return sum;
}

void answerBox()
{
    QAbstractButton *confirm = Robot::boxButton(QMessageBox::AcceptRole);
    if (!confirm)
        qFatal("no question before a panel is closed");
    confirm->click();
}

} // namespace

void Rows::poll(int effort)
{
    MoverControlWidget panel;
    panel.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly)->stop();
    panel.show();
    MotorStageState state = {};
    state.isCanRun = 1;
    state.isStop = 1;
    Answers answers;
    QObject::connect(&answers, &Answers::state, &panel, &MoverControlWidget::slot_updateDevState);
    QObject::connect(&answers, &Answers::stateForNobody, &answers, &Answers::take);
    emit answers.state(0, state);
    QCoreApplication::processEvents();

    Touches touches;
    qApp->installEventFilter(&touches);
    for (int k = 0; k < 1000; ++k)
        emit answers.state(0, state);
    QCoreApplication::processEvents();
    qApp->removeEventFilter(&touches);

    const Measure::Pairs pairs = Measure::inTurns(
        Measure::timed([&] { emit answers.state(0, state); }, 100),
        Measure::timed([&] { emit answers.stateForNobody(0, state); }, 100), 10 * effort);
    Measure::report(
        "poll", pairs.difference, "%.3f µs with the panel, %.3f µs for the signal alone",
        Measure::quantile(pairs.subject, 0.5), Measure::quantile(pairs.baseline, 0.5));
    Measure::report("poll touches", touches.count, "events that redraw or lay out, in 1,000 polls");
}

void Rows::operationLog(int effort)
{
    FilledLog small(1000);
    FilledLog large(100000);
    // Qt lays a text out again from the last of the marks that it sets every 2,000 pixels. How far back that is depends
    // on where the log ends, so each pair is measured at another place.
    const auto step = [](FilledLog &log, void (FilledLog::*step)()) {
        return Measure::Sample([&log, step] {
            log.append();
            log.count();
            return Measure::timed([&] { (log.*step)(); })();
        });
    };
    const auto compare = [&](const char *row, void (FilledLog::*what)()) {
        const Measure::Pairs pairs = Measure::inTurns(step(large, what), step(small, what), 3 * effort);
        Measure::report(
            row, pairs.ratio, "%.0f µs at 100,000, %.0f µs at 1,000", Measure::quantile(pairs.subject, 0.5),
            Measure::quantile(pairs.baseline, 0.5));
    };
    compare("log entry", &FilledLog::append);
    compare("run count", &FilledLog::count);
}

void Rows::panels(int)
{
    MoverWidget window;
    window.show();
    MotorParams params = {};
    SerialComDev::instance()->getMotorParams(0, params);
    SerialComDev::instance()->setOpened(true);
    window.slot_devConnected();
    window.slot_devDisConnected();
    window.slot_devConnected(); // the axes that identify themselves
    const auto closePanel = [&] {
        QTimer::singleShot(0, &window, answerBox);
        window.panelBoard().panels().first()->findChild<QPushButton *>(QStringLiteral("pushButton_remove"))->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    };
    const auto addPanel = [&] {
        window.slot_addControl(QStringLiteral("LIN-100"), 0, toDevParam(params), false);
        QCoreApplication::processEvents();
    };
    while (window.panelBoard().count() > 0)
        closePanel();

    long first = 0;
    constexpr int warmUp = 100;
    constexpr int times = 1000;
    for (int k = 0; k < warmUp + times; ++k) {
        if (k == warmUp)
            first = privateMemory();
        addPanel();
        closePanel();
        simulator::clearJournal(); // grows with every call
    }
    const long last = privateMemory();
    Measure::report(
        "panels", double(last - first) / 1024, "%ld KiB before, %ld KiB after %d panels", first, last, times);
    window.slot_devDisConnected();
}

void Rows::libraryCall(int effort)
{
    MotorStageState state = {};
    simulator::clearJournal();
    const Measure::Pairs pairs = Measure::inTurns(
        Measure::timed(
            [&] {
                const LibraryLock library;
                getRuningState(device, 0, &state);
            },
            20),
        Measure::timed([] { const LibraryLock library; }, 20), 20 * effort);
    Measure::report(
        "library call", Measure::quantile(pairs.subject, 0.5),
        "getRuningState with its journal; the mutex alone %.3f µs", Measure::quantile(pairs.baseline, 0.5));
}

void Rows::modelFile(int effort)
{
    QJsonArray models;
    for (int k = 0; k < 1000; ++k) {
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
    dialog.setAxisNames({QStringLiteral("Axis1")});
    dialog.show();
    auto *list = dialog.findChild<QComboBox *>(QStringLiteral("comboBox_models"));
    const Measure::Sample load = Measure::timed([&] { dialog.loadModelsData(); });
    const Measure::Sample open = Measure::timed([&] {
        list->showPopup();
        QCoreApplication::processEvents();
        list->hidePopup();
    });
    const Measure::Pairs pairs = Measure::inTurns(load, open, std::max(9, effort * 3 / 10));
    if (list->count() != models.size())
        qFatal("the dialog does not have the models");
    const double read = Measure::quantile(pairs.subject, 0.5) / 1000;
    const double shown = Measure::quantile(pairs.baseline, 0.5) / 1000;
    Measure::report(
        "model file", read + shown, "%.1f ms to read and offer them, %.1f ms to open their list", read, shown);
    file.remove();
}

#include "steps.moc"
