// SPDX-License-Identifier: MIT
#include "Monkey.h"

#include "app/StartUp.h"
#include "axis/MoverControlWidget.h"
#include "device/Heart.h"
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "device/moverLibrary.h"
#include "session/ControlSession.h"
#include "session/SequenceRunner.h"
#include "shell/ConnectionWidget.h"
#include "shell/MoverWidget.h"
#include "shell/SerialPortChangeFilter.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/LiveObjects.h"
#include "support/Robot.h"
#include "workbench/HistoryWidget.h"
#include "workbench/SequenceWidget.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSemaphore>
#include <QStackedWidget>
#include <QTabBar>
#include <QTableView>
#include <QTableWidget>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <pthread.h>

namespace {

constexpr int comeBackEvery = 300;
constexpr int deepest = 5;           // event loops within each other before only leaving is left
constexpr int stepLimitSeconds = 60; // no step takes long, whatever hangs is released
constexpr int hangMs = 40;
constexpr int messageMs = 5000;         // what a message is shown for at least
constexpr double brakingSeconds = 1000; // longer than any axis takes to come to rest
constexpr int held = 100000000;         // a timer's interval beyond every run
const int controllers[] = {1001, 1002};

const char *const functions[] = {
    "listTSMotorControlerDevices",
    "addDev",
    "openTSDevice",
    "closeTSDevice",
    "removeDev",
    "getDevAxisCount",
    "getDevSerialNumber",
    "getDevSoftVersion",
    "getMotorAutoDetect",
    "getMotorModelName",
    "getMotorSerialNumber",
    "getMotorParams",
    "setMotorParams",
    "getCurrentPos",
    "getRuningState",
    "getRockerInfo",
    "getRockerEnable",
    "setRockerEnable",
    "startMove",
    "startDrive",
    "startJog",
    "startCircle",
    "home",
    "stopRuning",
    "setMotorEnable",
    "setSpeed",
    "setAcceleration",
    "setTargetPos",
    "getTargetPos",
    "setRelativeDisp",
    "setRelativeDispEnable",
    "setJogStep",
    "setJogCount",
    "setCircleDisp",
    "setCircleCount",
    "getTriggerStep",
    "setTriggerStep",
    "getTriggerInEnable",
    "setTriggerInEnable",
    "getPosConpenEnable",
    "setPosConpenEnable",
    "getPositivePosConpen",
    "setNegativePosConpen",
    "setClearIDChip",
};
const char *const textGetters[] = {
    "getDevSerialNumber", "getDevModelName", "getDevSoftVersion", "getMotorModelName", "getMotorSerialNumber",
};

/** The last actions of the run, for the report. Written by the GUI thread. */
struct Steps {
    static constexpr int Kept = 20;
    char lines[Kept][240] = {};
    unsigned seed = 0;
    int count = 0;
} steps;

void note(const QString &words)
{
    std::snprintf(
        steps.lines[steps.count % Steps::Kept], sizeof steps.lines[0], "%d %s", steps.count,
        qPrintable(QString(words).replace(QLatin1Char('\n'), QLatin1Char('|'))));
    std::puts(steps.lines[steps.count % Steps::Kept]);
}

/** Where the axes of the open controller are; those are missing that cannot be read. */
QMap<int, double> positions(const QSet<int> &axes)
{
    QMap<int, double> found;
    const LibraryLock library;
    for (const int axis : axes) {
        int status = 0;
        const double position = getCurrentPos(SerialComDev::instance()->deviceId(), axis, &status);
        if (status >= 0)
            found[axis] = position;
    }
    return found;
}

SequenceRunner &sequences()
{
    return ControlSession::instance()->sequences();
}

/** Waits until a thread has handled everything that was asked of it so far. */
bool drained(QObject *object)
{
    if (object->thread() == QThread::currentThread())
        return true;
    const auto done = std::make_shared<QSemaphore>();
    QMetaObject::invokeMethod(
        object, [done] { done->release(); }, Qt::QueuedConnection);
    return done->tryAcquire(1, 20000);
}

} // namespace

void Monkey::tellSteps()
{
    std::fprintf(stderr, "== monkey: seed %u, step %d; what was done last:\n", steps.seed, steps.count);
    for (int k = Steps::Kept - 1; k >= 0; --k) {
        if (steps.count >= k)
            std::fprintf(stderr, "   %s\n", steps.lines[(steps.count - k) % Steps::Kept]);
    }
    std::fflush(stderr);
}

Monkey::Monkey(unsigned seed, int count)
    : m_random(seed)
    , m_fingers(m_random, &note)
    , m_steps(count)
{
    steps.seed = seed;
    connect(
        QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this, [this] { m_bLoopRuns = true; });
    // A call that hangs is let go after a while, whichever thread it is in.
    m_releaser = std::thread([this] {
        for (bool ends = false; !ends;) {
            const bool hangs = simulator::waitUntilHanging(100);
            ends = m_ends.tryAcquire(1, hangs ? hangMs : 0);
            if (hangs)
                simulator::releaseHung();
        }
    });
    const pthread_t gui = pthread_self();
    m_watchdog = std::thread([this, gui] {
        int beats = -1;
        int quiet = 0;
        while (!m_ends.tryAcquire(1, 100)) {
            quiet = m_beats == beats ? quiet + 1 : 0;
            beats = m_beats;
            if (quiet > 10 * stepLimitSeconds) {
                std::fprintf(stderr, "== monkey: the program hangs\n");
                pthread_kill(gui, SIGABRT); // shows where
                return;
            }
        }
    });
}

Monkey::~Monkey()
{
    m_ends.release(2);
    m_releaser.join();
    m_watchdog.join();
}

void Monkey::fail(const QString &what)
{
    std::fprintf(stderr, "== monkey: finding: %s\n", qPrintable(what));
    tellSteps();
    std::_Exit(1);
}

void Monkey::startScenario()
{
    std::string error;
    if (!simulator::loadScenarioFile(MOVER_PROGRAM_DIR "/simulator/scenarios/two-controllers.json", &error))
        fail(QString::fromStdString(error));
}

/** The program from start to end, again and again until the steps are used up. */
void Monkey::run()
{
    while (steps.count < m_steps) {
        startScenario();
        {
            MoverWidget window;
            m_window = &window;
            connect(&sequences(), &SequenceRunner::signal_ended, this, [this](const SequenceEnd &end) {
                ++m_iEnded;
                std::printf(
                    "   a sequence ends in line %d, reason %d, status %d\n", end.line, int(end.reason), end.status);
            });
            StartUp::registerStageModel();
            window.show();
            m_bComingBack = true; // begins with what every user does first
            arm();
            QApplication::exec();
            m_window = nullptr;
        }
        m_iEnded = 0; // with the program
        m_actingLevel = 0;
        if (!SerialComDev::endThread(5000))
            fail(QStringLiteral("the worker does not end"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        const QString left = Invariants::leftBehind();
        if (!left.isEmpty())
            fail(QStringLiteral("left behind by the main window: ") + left);
    }
}

void Monkey::arm()
{
    QTimer::singleShot(0, this, &Monkey::tick);
}

/**
 * Makes a step when the event loop is idle: that of the program, or that of a message box which a step has opened and
 * in which it is still held. Not while a step is under way that only handles events.
 */
void Monkey::tick()
{
    if (!m_window)
        return;
    arm();
    const int level = QThread::currentThread()->loopLevel();
    if (level <= m_actingLevel || !m_bLoopRuns)
        return;
    const int outer = m_actingLevel;
    m_actingLevel = level;
    step();
    m_bLoopRuns = false; // one that was told to end makes no further step
    m_actingLevel = outer;
}

void Monkey::step()
{
    ++m_beats;
    goOn();
    settle();
    checkEndedSequence();
    check();
    ++steps.count;
    if (steps.count > m_steps) {
        m_window->close();
        return;
    }
    if (++m_sinceComingBack > comeBackEvery)
        m_bComingBack = true;
    if (m_bComingBack)
        comeBack();
    else
        act();
}

/** Until no thread has anything left to do. */
void Monkey::settle()
{
    holdTimers();
    for (int round = 0; round < 2; ++round) {
        // The console keeps the library, and with it the worker, until its message is read.
        if (!Invariants::isLibraryHeld()) {
            for (Heart *heart : LiveObjects::all<Heart>()) {
                if (!drained(heart))
                    fail(QStringLiteral("the heart's thread hangs"));
            }
            if (!drained(SerialComDev::instance().data()))
                fail(QStringLiteral("the worker hangs"));
        }
        QCoreApplication::processEvents();
    }
    if (m_actingLevel == 1)
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // nothing is under way that needs them
}

void Monkey::check()
{
    QString broken = m_invariants.broken(*m_window);
    if (broken.isEmpty() && m_actingLevel == 1)
        broken = Invariants::brokenAtRest(*m_window);
    if (!broken.isEmpty())
        fail(broken);
}

/** From here on nothing polls by itself, and messages stay until their time has passed in steps. */
void Monkey::holdTimers()
{
    for (QTimer *timer : LiveObjects::all<QTimer>()) {
        const bool polls = !timer->isSingleShot() && (timer->interval() == MoverControlWidget::PollIntervalMs ||
                                                      timer->interval() == Heart::IntervalMs);
        const bool hidesMessage = timer->isSingleShot() && timer->interval() >= messageMs;
        const bool runsSequence = qobject_cast<SequenceRunner *>(timer->parent());
        if ((polls || hidesMessage || runsSequence) && timer->thread() == thread() && timer->interval() < held)
            timer->setInterval(held);
    }
}

/** A sequence: what it waits for has come, whether that is a time or the next look at its axes, which have moved on. */
void Monkey::goOn()
{
    if (sequences().isActive())
        simulator::advance(1);
    for (QTimer *timer : sequences().findChildren<QTimer *>()) {
        if (!timer->isActive())
            continue;
        if (timer->isSingleShot())
            timer->stop();
        QMetaObject::invokeMethod(timer, "timeout");
    }
}

void Monkey::poll()
{
    for (MoverControlWidget *panel : m_window->panelBoard().panels())
        panel->slot_updateState();
    for (Heart *heart : LiveObjects::all<Heart>()) {
        if (SerialComDev::instance()->deviceId() != 0)
            QMetaObject::invokeMethod(heart, &Heart::singleHeart, Qt::QueuedConnection);
    }
}

QWidget *Monkey::someWindow()
{
    if (QWidget *popup = QApplication::activePopupWidget())
        return popup;
    if (QWidget *modal = QApplication::activeModalWidget(); modal && modal->windowHandle())
        return modal;
    const QList<QWidget *> windows = Invariants::visibleWindows();
    if (windows.isEmpty() || m_random.oneIn(3))
        return m_window;
    return m_random.of(windows);
}

void Monkey::act()
{
    QWidget *window = someWindow();
    if (m_window->isMinimized()) {
        note(QStringLiteral("bring the main window back from the task bar"));
        m_window->showNormal();
        return;
    }
    if (!window->windowHandle() || !window->isVisible()) {
        note(QStringLiteral("show the main window"));
        m_window->show();
        return;
    }
    // The files behind a file dialog are not the program's: it is only left.
    if (m_actingLevel >= deepest || window->inherits("QFileDialog")) {
        leave();
        return;
    }
    // What a window manager does before it hands a click on.
    if (window->windowHandle() != QGuiApplication::focusWindow() && !QApplication::activePopupWidget())
        window->activateWindow();

    const int choice = m_random.below(100);
    if (choice < 2)
        stopAll();
    else if (choice < 10)
        useSequences();
    else if (choice < 45)
        m_fingers.click(window);
    else if (choice < 50)
        m_fingers.doubleClick(window);
    else if (choice < 55)
        m_fingers.drag(window);
    else if (choice < 59)
        m_fingers.wheel(window);
    else if (choice < 69)
        m_fingers.key(window);
    else if (choice < 77)
        m_fingers.type(window);
    else if (choice < 79)
        m_fingers.resize(window);
    else if (choice < 90)
        passTime();
    else if (choice < 96)
        fault();
    else
        leave();
}

/** By key in whatever window is open, or by the button, which a window may cover. */
void Monkey::stopAll()
{
    const int way = m_random.below(3);
    QWidget *window = someWindow();
    note(
        way == 0 ? QStringLiteral("stop all by its button")
                 : QStringLiteral("stop all by %1 in %2").arg(way == 1 ? "F12" : "Pause", Fingers::nameOf(window)));
    simulator::clearJournal();
    if (way == 0)
        m_window->findChild<QPushButton *>(QStringLiteral("pushButton_stopAll"))->click();
    else
        Fingers::press(window, way == 1 ? Qt::Key_F12 : Qt::Key_Pause);
    if (!QTest::qWaitFor([] { return !SerialComDev::instance()->isStoppingAll(); }, 20000))
        fail(QStringLiteral("the stop of all axes does not get through"));
    settle();
    if (sequences().isActive())
        fail(QStringLiteral("a sequence runs on after a stop of all axes"));
    checkRest(QStringLiteral("a stop of all axes"));
}

/**
 * Whoever has accepted the last stop in the journal comes to rest and stays there: nobody has started anything since.
 */
void Monkey::checkRest(const QString &after)
{
    QSet<int> stopped;
    for (const simulator::Call &call : simulator::journal()) {
        const bool accepted = call.result.front() != '-';
        if (call.function == "stopRuning" && accepted)
            stopped.insert(QString::fromStdString(call.arguments).section(QStringLiteral(", "), 1, 1).toInt());
        else if (call.function.rfind("start", 0) == 0 || call.function == "home")
            stopped.clear(); // was on its way
        else if (call.function == "setRockerEnable" && !accepted)
            return; // the joystick keeps its axes
    }
    simulator::advance(brakingSeconds);
    const QMap<int, double> atRest = positions(stopped);
    for (const int axis : qAsConst(stopped))
        emit SerialComDev::instance()->signal_getDevState(axis);
    settle();
    simulator::advance(brakingSeconds);
    const QMap<int, double> later = positions(stopped);
    for (const int axis : qAsConst(stopped)) {
        if (atRest.contains(axis) && later.contains(axis) && later[axis] != atRest[axis])
            fail(QStringLiteral("Axis%1 moves from %2 to %3 after %4")
                     .arg(axis + 1)
                     .arg(atRest[axis])
                     .arg(later[axis])
                     .arg(after));
    }
}

/** What was stopped with it stays where it is, and none of its orders comes later. */
void Monkey::checkEndedSequence()
{
    const int ended = std::exchange(m_iEnded, 0);
    if (ended == 0 || Invariants::isLibraryHeld())
        return;
    if (ended > 1 || sequences().isActive())
        return; // whose orders the journal has is not known
    const QSet<int> axes = sequences().plan().axes;
    QSet<int> stopped;
    for (const simulator::Call &call : simulator::journal()) {
        const int axis = QString::fromStdString(call.arguments).section(QStringLiteral(", "), 1, 1).toInt();
        if (!axes.contains(axis))
            continue;
        if (!stopped.isEmpty() && (call.function == "startMove" || call.function == "home"))
            fail(QStringLiteral("an order after the end of a sequence: ") + QString::fromStdString(call.text()));
        if (call.function == "stopRuning")
            stopped.insert(axis);
    }
    if (sequences().lastEnd().reason == SequenceEnd::Finished)
        return;
    if (stopped != axes)
        fail(QStringLiteral("a sequence ends, and its axes are not stopped"));
    int joystick = 0;
    {
        const LibraryLock library;
        joystick = getRockerEnable(SerialComDev::instance()->deviceId());
    }
    if (joystick == 0)
        checkRest(QStringLiteral("the end of a sequence"));
}

/** Steps of every kind, most of them such that they can be run. */
SequenceDocument Monkey::someSequence()
{
    const auto place = [this] { return m_random.between(-20, 60) / 4.0; };
    SequenceDocument document;
    for (int k = m_random.below(3); k >= 0; --k) {
        NamedPosition position{QStringLiteral("P%1").arg(k), {{0, place()}}};
        if (m_random.oneIn(2))
            position.axes.insert(1, place());
        document.positions.append(position);
    }
    const int count = m_random.between(1, 6);
    for (int line = 0; line < count; ++line) {
        SequenceStep step;
        step.kind = line == 0 && m_random.oneIn(2) ? SequenceStep::Home
                                                   : SequenceStep::Kind(m_random.below(SequenceStep::KindCount));
        step.axis = step.kind == SequenceStep::Home && line == 0 ? SequenceStep::AllAxes : m_random.below(2);
        step.value = step.kind == SequenceStep::SetSpeed ? m_random.between(1, 6)
                     : step.kind == SequenceStep::Wait   ? m_random.below(4)
                                                         : place();
        step.speed = m_random.oneIn(3) ? m_random.between(1, 6) : 0;
        step.wait = m_random.below(2);
        step.text = QStringLiteral("P0");
        step.from = m_random.below(line + 1);
        step.count = m_random.between(1, 3);
        document.sequence.steps.append(step);
    }
    document.sequence.name = QStringLiteral("Sequence");
    return document;
}

void Monkey::showPage(QWidget *page)
{
    auto *stack = page->window()->findChild<QStackedWidget *>(QStringLiteral("stackedWidget_pages"));
    page->window()->findChild<QTabBar *>(QStringLiteral("tabBar"))->setCurrentIndex(stack->indexOf(page));
}

/** Keeps what an axis has now, or restores what it had. */
void Monkey::useHistory(QWidget *page)
{
    showPage(page);
    auto *list = page->findChild<QTableWidget *>(QStringLiteral("tableWidget_snapshots"));
    if (list->rowCount() > 0)
        list->setCurrentCell(m_random.below(list->rowCount()), 0);
    auto *button = page->findChild<QPushButton *>(
        m_random.oneIn(3) ? QStringLiteral("pushButton_snapshot") : QStringLiteral("pushButton_restore"));
    note(QStringLiteral("%1 of the history, %2 snapshots").arg(button->objectName()).arg(list->rowCount()));
    QTest::mouseClick(button, Qt::LeftButton);
}

/** Its page, by name: what the window is too small to show too. */
void Monkey::useSequences()
{
    static constexpr const char *buttons[] = {
        "pushButton_run",      "pushButton_run",     "pushButton_run",    "pushButton_stepRun",
        "pushButton_pauseRun", "pushButton_stopRun", "pushButton_rewind", "pushButton_addPosition",
    };
    if (QApplication::activePopupWidget() || QApplication::activeModalWidget()) {
        m_fingers.click(someWindow());
        return;
    }
    const auto click = [](QAbstractButton *button) { QTest::mouseClick(button, Qt::LeftButton); };
    const QList<SequenceWidget *> pages = LiveObjects::all<SequenceWidget>();
    if (pages.isEmpty() || !pages.first()->isVisible()) {
        note(QStringLiteral("open the page of sequences"));
        click(m_window->findChild<QPushButton *>(QStringLiteral("pushButton_workbench")));
        for (SequenceWidget *page : LiveObjects::all<SequenceWidget>())
            showPage(page);
        return;
    }
    SequenceWidget *page = pages.first();
    const int choice = m_random.below(16);
    if (choice == 0) {
        note(QStringLiteral("close the workbench"));
        page->window()->close();
    } else if (choice < 4 && !sequences().isActive()) {
        const SequenceDocument document = someSequence();
        note(QStringLiteral("a sequence of %1 steps").arg(document.sequence.steps.size()));
        page->change(document);
        if (m_random.oneIn(2))
            clearFaults(); // or few would get far
    } else if (choice == 4) {
        for (HistoryWidget *history : LiveObjects::all<HistoryWidget>())
            useHistory(history);
    } else if (choice == 5) {
        note(QStringLiteral("go to a position"));
        auto *table = page->findChild<QTableView *>(QStringLiteral("tableView_positions"));
        table->setCurrentIndex(table->model()->index(0, table->model()->columnCount() - 1));
        QTest::keyClick(table, Qt::Key_Return);
    } else {
        auto *button = page->findChild<QPushButton *>(QLatin1String(m_random.of(buttons)));
        note(QStringLiteral("%1 of the sequence").arg(button->objectName()));
        if (button->isVisible())
            click(button);
    }
}

void Monkey::passTime()
{
    const double seconds = m_random.oneIn(4) ? 30 : 0.05 * m_random.between(1, 40);
    note(QStringLiteral("%1 s pass").arg(seconds));
    simulator::advance(seconds);
    poll();
    if (seconds < 30)
        return;
    for (QTimer *timer : LiveObjects::all<QTimer>()) {
        if (timer->isSingleShot() && timer->isActive() && timer->interval() == held) {
            timer->stop();
            QMetaObject::invokeMethod(timer, "timeout");
        }
    }
}

/** Escape, or the cross that a window manager draws. */
void Monkey::leave()
{
    QWidget *window = someWindow();
    const bool escape = window == m_window || m_random.oneIn(2);
    note(QStringLiteral("%1 %2").arg(escape ? "Escape in" : "close", Fingers::nameOf(window)));
    if (escape)
        Fingers::press(window, Qt::Key_Escape);
    else
        window->close();
}

void Monkey::fault()
{
    using simulator::Opto;
    const int id = controllers[m_random.oneIn(6) ? 1 : 0];
    const int axis = id == 1001 ? m_random.below(3) : 0;
    const char *function = m_random.of(functions);
    const auto noted = [&](const QString &words) { note(QStringLiteral("fault: ") + words); };
    switch (m_random.below(20)) {
    case 0:
        noted(QStringLiteral("unplug %1").arg(id));
        simulator::unplug(id);
        break;
    case 1:
        noted(QStringLiteral("lose the link of %1").arg(id));
        simulator::loseLink(id);
        break;
    case 2:
    case 3: {
        const int status = -m_random.between(1, 20);
        const int count = m_random.between(1, 5);
        noted(QStringLiteral("%1 fails with %2, %3 times").arg(function).arg(status).arg(count));
        simulator::failCall(function, status, 1, count);
        break;
    }
    case 4:
        noted(QStringLiteral("%1 fails always").arg(function));
        simulator::failAlways(function, -m_random.between(1, 20));
        break;
    case 5:
        noted(QStringLiteral("%1 takes long").arg(function));
        simulator::delayCall(function, m_random.between(1, 30), m_random.between(1, 3));
        break;
    case 6:
        noted(QStringLiteral("%1 hangs for a while").arg(function));
        simulator::hangCall(function);
        break;
    case 7: {
        std::string bytes;
        for (int k = m_random.below(40); k > 0; --k)
            bytes += char(m_random.below(256));
        const char *getter = m_random.of(textGetters);
        noted(QStringLiteral("%1 answers %2 bytes").arg(getter).arg(bytes.size()));
        simulator::answerText(getter, bytes);
        break;
    }
    case 8: {
        MotorStageState state = {};
        for (qint16 *flag :
             {&state.isCanRun, &state.isStop, &state.isEnable, &state.isHome, &state.isLeftLimit, &state.isRightLimit,
              &state.isLeftOptoFault, &state.isHomeOptoFault})
            *flag = m_random.oneIn(8) ? qint16(m_random.between(-32768, 32767)) : qint16(m_random.below(2));
        state.runCount = m_random.oneIn(2) ? 0 : quint32(m_random.between(1, 1000));
        noted(QStringLiteral("a state of axis %1 of %2").arg(axis).arg(id));
        simulator::setState(id, axis, state);
        break;
    }
    case 9:
        noted(QStringLiteral("opto-coupler of axis %1 of %2").arg(axis).arg(id));
        simulator::setOptoFault(id, axis, Opto(m_random.below(3)), !m_random.oneIn(3));
        break;
    case 10:
    case 11:
        noted(QStringLiteral("joystick of %1").arg(id));
        simulator::setJoystick(id, !m_random.oneIn(3), m_random.between(-10, 10));
        break;
    case 12:
        noted(QStringLiteral("trigger pulse"));
        simulator::triggerPulse(id, axis);
        break;
    case 13:
        noted(QStringLiteral("another position of axis %1 of %2").arg(axis).arg(id));
        simulator::setPosition(id, axis, m_random.between(-200, 200) / 3.0);
        break;
    case 14:
        noted(QStringLiteral("another chip in axis %1 of %2").arg(axis).arg(id));
        simulator::setChip(id, axis, simulator::Chip(m_random.below(3)));
        break;
    case 15:
    case 16:
        noted(QStringLiteral("devices have changed"));
        emit m_window->findChild<SerialPortChangeFilter *>()->signal_usbDevPortChanged();
        break;
    default:
        noted(QStringLiteral("all is well again"));
        clearFaults();
    }
}

void Monkey::clearFaults()
{
    simulator::clearFaults();
    simulator::releaseHung();
    for (const int id : controllers) {
        simulator::restoreLink(id);
        simulator::plug(id);
        for (int axis = 0; axis < 3; ++axis)
            simulator::setState(id, axis, std::nullopt);
    }
}

/** Away with the faults, out of every window, and then the program has to do what it is for. */
void Monkey::comeBack()
{
    QWidget *popup = QApplication::activePopupWidget();
    QWidget *modal = QApplication::activeModalWidget();
    if (popup || modal || m_actingLevel > 1) {
        QWidget *window = popup ? popup : modal ? modal : m_window;
        note(QStringLiteral("back to normal: out of ") + Fingers::nameOf(window));
        if (qobject_cast<QMessageBox *>(window) || popup)
            Fingers::press(window, Qt::Key_Escape);
        else
            window->close();
        return;
    }
    note(QStringLiteral("back to normal"));
    m_bComingBack = false;
    m_sinceComingBack = 0;
    clearFaults();
    sequences().stop(); // or the workbench would ask
    settle();
    checkEndedSequence();
    for (QWidget *window : Invariants::visibleWindows()) {
        if (window != m_window)
            window->close();
    }
    m_window->showNormal();
    connectAndMove();
}

void Monkey::connectAndMove()
{
    // Buttons are clicked wherever they are: the window may be too small to show them.
    const Robot robot(m_window, [](QAbstractButton *button) { QTest::mouseClick(button, Qt::LeftButton); });
    robot.click(m_window, "pushButton_connect");
    const bool connected =
        robot.connection()->findChild<QPushButton *>(QStringLiteral("pushButton_disConnect"))->isEnabled();
    robot.connection()->hide();
    if (connected) {
        robot.disconnect();
        settle();
    }
    startScenario();
    if (!robot.choose(1001))
        fail(QStringLiteral("back to normal, and the controller is not offered"));
    robot.connectChosen();
    settle();
    if (!SerialComDev::instance()->isOpened() || m_window->panelBoard().count() != 2)
        fail(QStringLiteral("back to normal, and %1 panels after connecting").arg(m_window->panelBoard().count()));

    {
        const LibraryLock library;
        if (setTargetPos(1001, 0, 12.5) < 0)
            fail(QStringLiteral("the target is refused"));
    }
    MoverControlWidget *panel = robot.panel(0);
    poll();
    settle();
    robot.click(panel, "pushButton_move");
    settle();
    simulator::advance(60);
    poll();
    settle();
    const QString shown = panel->findChild<QLabel *>(QStringLiteral("label_currentPos"))->text();
    if (shown != QLatin1String("12.500 mm"))
        fail(QStringLiteral("back to normal, and Axis1 stands at ") + shown);
}
