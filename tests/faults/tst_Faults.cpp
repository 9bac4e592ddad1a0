// SPDX-License-Identifier: MIT
// Every library function × every fault that it can have × every situation in which the program calls it.
#include "LibraryTable.h"
#include "OpenWindow.h"
#include "ShortRun.h"
#include "Watchdog.h"

#include "app/StartUp.h"
#include "axis/CycleOperationWidget.h"
#include "axis/DriveParamWidget.h"
#include "axis/JogParamWidget.h"
#include "axis/MoveParamWidget.h"
#include "console/ConsoleCommands.h"
#include "console/DebugWidget.h"
#include "device/LibraryLock.h"
#include "session/ControlSession.h"
#include "session/ParameterHistory.h"
#include "session/SequenceRunner.h"
#include "session/SmallFile.h"
#include "support/DebugLog.h"
#include "support/MessageBoxes.h"
#include "widgets/BusyCursor.h"
#include "widgets/TDoubleSpinBox.h"
#include "workbench/HistoryWidget.h"
#include "workbench/SequenceWidget.h"

#include <QCheckBox>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QTabBar>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>
#include <set>

namespace {

constexpr int device = LibraryTable::Device;
constexpr int waitLimitMs = 60000;
// How long the GUI thread may go without an event beyond what the library takes; sanitized code on a busy machine.
constexpr int stallLimitMs = 3000;

const LibraryTable &libraryTable()
{
    static const LibraryTable table;
    return table;
}

// ---- What calls look like ------------------------------------------------------------------------------------------

/** Looks at every call as it comes: is it made under the library mutex, and does the GUI thread say that it waits? */
class CallRules final
{
public:
    CallRules()
    {
        simulator::onCall([this, gui = std::this_thread::get_id()](const std::string &function) {
            const bool inGui = std::this_thread::get_id() == gui;
            {
                const LibraryLock free(0);
                // Two operations of the console go without the mutex on purpose.
                const bool exempt = inGui && (function == "home" || function == "setClearIDChip");
                if (free.isLocked() && !exempt)
                    add(function + " is called without the library mutex");
            }
            // Before the window is shown there is nobody to look at the cursor.
            if (inGui && function != "addMotor" && !QGuiApplication::overrideCursor())
                add(function + " is called by the GUI thread without a busy cursor");
        });
    }
    ~CallRules() { simulator::onCall(nullptr); }

    QStringList take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        QStringList broken;
        for (const std::string &each : m_broken)
            broken.append(QString::fromStdString(each));
        m_broken.clear();
        return broken;
    }

private:
    void add(const std::string &text)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_broken.insert(text);
    }

    std::mutex m_mutex;
    std::set<std::string> m_broken;
};

// ---- The user ------------------------------------------------------------------------------------------------------

/** The program from its start to its end, and everything that it shows. */
class Session final
{
public:
    Session()
        : m_boxes([this](QMessageBox *box) { answer(box); })
    {
        std::vector<AxisOf> axes = {{'w', "LIN-100"}, {'w', "ROT-60", 1}, {'a'}};
        play({{device, "MC3-A", axes}});
        // On the way out the library may be needed still, after the session.
        m_program = std::make_unique<OpenWindow>();
    }

    OpenWindow &program() { return *m_program; }
    template <typename Dialog>
    Dialog *dialog()
    {
        return m_program->dialog<Dialog>();
    }
    DebugWidget *console()
    {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (auto *console = qobject_cast<DebugWidget *>(window))
                return console;
        }
        return nullptr;
    }

    static void press(QWidget *parent, const char *name)
    {
        auto *button = parent->findChild<QAbstractButton *>(QLatin1String(name));
        if (!button)
            qFatal("no button %s", name);
        button->click();
    }
    template <typename Field, typename Value>
    static void fill(QWidget *parent, const char *name, Value value)
    {
        parent->findChild<Field *>(QLatin1String(name))->setValue(value);
    }

    /** Does `act`; presses the key that stops all in each box that comes, before its button. Whether there was one. */
    bool stopsAllInBoxes(const std::function<void()> &act)
    {
        const int before = m_boxes.count();
        m_bStopsAllInBoxes = true;
        act();
        m_bStopsAllInBoxes = false;
        return m_boxes.count() > before;
    }

    void note(const QString &text) { m_shown.append(text); }
    QStringList shown() const { return m_shown; }
    void clearShown() { m_shown.clear(); }

    /** What a situation finds wrong by itself. */
    void complain(const QString &text) { m_wrong.append(text); }
    QStringList takeWrong() { return std::exchange(m_wrong, {}); }

    /** Everything that was asked of the worker has been done, and the windows have heard of it. */
    void settle()
    {
        const auto reached = std::make_shared<std::atomic<bool>>(false);
        QMetaObject::invokeMethod(
            SerialComDev::instance().data(), [reached] { *reached = true; }, Qt::QueuedConnection);
        if (!QTest::qWaitFor([&] { return reached->load(); }, waitLimitMs))
            qFatal("the worker does not come back from %s", simulator::callInFlight().c_str());
        QCoreApplication::processEvents();
    }
    /** Time passes for the axes, and the panels and the heartbeat look. */
    void pass(double seconds)
    {
        simulator::advance(seconds);
        for (MoverControlWidget *panel : m_program->window().panelBoard().panels())
            panel->slot_updateState();
        QMetaObject::invokeMethod(SerialComDev::instance().data(), &SerialComDev::slot_heartBeat, Qt::QueuedConnection);
        settle();
    }

    void connectController()
    {
        OpenWindow::click(m_program->find("pushButton_connect"));
        auto *connection = dialog<ConnectionWidget>();
        auto *list = connection->findChild<QComboBox *>();
        for (int k = 0; k < list->count(); ++k)
            note(QStringLiteral("list: ") + list->itemText(k));
        list->setCurrentIndex(list->findData(device));
        OpenWindow::click(connection->findChild<QPushButton *>(QStringLiteral("pushButton_connectSerial")));
        note(QStringLiteral("connection: ") + connection->findChild<QLabel *>(QStringLiteral("label_msg"))->text());
        connection->hide();
    }
    void noteWindow()
    {
        note(QStringLiteral("panels: ") + m_program->panelNames().join(QLatin1Char(' ')));
        for (MoverControlWidget *panel : m_program->window().panelBoard().panels()) {
            for (const QString &line : logOf(panel).split(QLatin1Char('\n')))
                note(QStringLiteral("log: ") + line.trimmed());
            for (const char *label : {"label_currentPos", "label_modelName"})
                note(
                    QLatin1String(label) + QStringLiteral(": ") +
                    panel->findChild<QLabel *>(QLatin1String(label))->text());
        }
    }
    QString position() const
    {
        const MoverControlWidget *panel = m_program->panel(0);
        return panel ? panel->findChild<QLabel *>(QStringLiteral("label_currentPos"))->text()
                     : QStringLiteral("no panel");
    }

    /** As a user would who finds the fault gone: connects again and drives the first axis. What is wrong, or "". */
    QString recover()
    {
        simulator::clearFaults();
        simulator::releaseHung();
        for (int axis = 0; axis < LibraryTable::Axes; ++axis) {
            simulator::setState(device, axis, std::nullopt);
            simulator::setParams(device, axis, std::nullopt);
        }
        for (int axis = 0; axis < 2; ++axis)
            simulator::setChip(device, axis, simulator::Chip::Written); // the console erases it
        simulator::advance(1000);
        settle();
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window != &m_program->window())
                window->hide();
        }
        const QStringList both{QStringLiteral("Axis1"), QStringLiteral("Axis2")};
        // A controller that was left open by a failed removeDev is released by the first attempt.
        for (int attempt = 0; attempt < 2 && (attempt == 0 || m_program->panelNames() != both); ++attempt) {
            if (SerialComDev::instance()->isOpened())
                m_program->disconnect();
            connectController();
        }
        if (m_program->panelNames() != both)
            return QStringLiteral("panels: ") + m_program->panelNames().join(QLatin1Char(' '));
        m_dTarget = m_dTarget == 3 ? -4 : 3;
        MoverControlWidget *panel = m_program->panel(0);
        pass(0);
        sendMove(panel, m_dTarget);
        press(panel, "pushButton_move");
        settle();
        pass(100);
        const QString wanted = QString::number(m_dTarget, 'f', 3) + QStringLiteral(" mm");
        // Polls that a busy machine is late with are dropped for newer ones.
        const auto axis = ControlSession::instance()->axis(0);
        if (!QTest::qWaitFor([&] { return position() == wanted && axis && !axis->isMoving(); }, 5000))
            return QStringLiteral("the position is shown as %1 instead of %2; ").arg(position(), wanted) +
                   logOf(panel).split(QLatin1Char('\n')).mid(1).join(QStringLiteral(" | "));
        return QString();
    }
    static void sendMove(MoverControlWidget *panel, double target)
    {
        auto *popup = panel->findChild<MoveParamWidget *>();
        popup->open();
        fill<QDoubleSpinBox>(popup, "doubleSpinBox_disp", target);
        fill<QDoubleSpinBox>(popup, "doubleSpinBox_speed", 5.0);
        fill<QDoubleSpinBox>(popup, "doubleSpinBox_acc", 20.0);
        press(popup, "pushButton_confirm");
        popup->hide();
    }

    /** Returns as the program's event loop does. */
    void pressClose()
    {
        m_bLeft = true;
        QTimer::singleShot(0, qApp, [this] { OpenWindow::click(m_program->titleButton("pushButton_close")); });
        QCoreApplication::exec();
    }
    /** The close button, and what the program does after its event loop. What is wrong, or "". */
    QString leave()
    {
        if (!m_bLeft)
            pressClose();
        m_program.reset();
        SerialComDev::endThread(waitLimitMs);
        const std::vector<simulator::Call> journal = simulator::journal();
        const auto closed = std::find_if(journal.rbegin(), journal.rend(), [](const simulator::Call &call) {
            return call.function == "closeTSDevice";
        });
        QStringList after;
        for (auto call = journal.rbegin(); call != closed; ++call) {
            if (call->function != "removeDev")
                after.prepend(QString::fromStdString(call->text()));
        }
        if (closed == journal.rend() || after.isEmpty())
            return QString();
        return QStringLiteral("called after the close: ") + after.join(QLatin1Char(' '));
    }

private:
    void answer(QMessageBox *box)
    {
        note(QStringLiteral("box: ") + box->text());
        if (m_bStopsAllInBoxes)
            QTest::keyClick(box, Qt::Key_F12);
        if (QAbstractButton *yes = box->button(QMessageBox::Yes))
            yes->click();
        else if (QAbstractButton *ok = box->button(QMessageBox::Ok))
            ok->click();
        else
            MessageBoxes::press(box, QStringLiteral("确认"));
    }

    QStringList m_shown;
    QStringList m_wrong;
    MessageBoxes m_boxes;
    std::unique_ptr<OpenWindow> m_program;
    double m_dTarget = 0;
    bool m_bLeft = false;
    bool m_bStopsAllInBoxes = false;
};

// ---- Situations ----------------------------------------------------------------------------------------------------

/** Something that the user does. */
struct Step {
    QString name;
    std::function<void(Session &)> act;
};

/** Where a fault strikes. */
struct Situation {
    const char *name;
    bool connected;    // before the fault
    bool stepsAreFree; // each can be done without those before it
    std::vector<Step> steps;
};

Situation idle()
{
    return {
        "idle",
        false,
        false,
        {{QStringLiteral("the program starts"), [](Session &) { StartUp::registerStageModel(); }},
         {QStringLiteral("lists the controllers"),
          [](Session &session) {
              OpenWindow::click(session.program().find("pushButton_connect"));
              auto *connection = session.dialog<ConnectionWidget>();
              auto *list = connection->findChild<QComboBox *>();
              for (int k = 0; k < list->count(); ++k)
                  session.note(QStringLiteral("list: ") + list->itemText(k));
              connection->hide();
          }},
         {QStringLiteral("opens the settings"), [](Session &session) {
              OpenWindow::click(session.program().titleButton("pushButton_settings"));
              session.dialog<OptionsWidget>()->hide();
          }}}};
}

Situation connecting()
{
    return {
        "connecting",
        false,
        false,
        {{QStringLiteral("connects"),
          [](Session &session) {
              session.connectController();
              session.pass(0);
          }},
         {QStringLiteral("adds an axis"),
          [](Session &session) {
              OpenWindow::click(session.program().find("pushButton_addAsix"));
              auto *add = session.dialog<AddControlsWidget>();
              if (!add->isVisible())
                  return;
              add->findChild<QComboBox *>(QStringLiteral("comboBox_Axsi"))->setCurrentText(QStringLiteral("Axis3"));
              add->findChild<QComboBox *>(QStringLiteral("comboBox_models"))->setCurrentText(QStringLiteral("LIN-100"));
              Session::press(add, "pushButton_confirm");
              add->hide();
              session.pass(0);
          }},
         {QStringLiteral("disconnects"), [](Session &session) {
              session.noteWindow();
              if (SerialComDev::instance()->isOpened())
                  session.program().disconnect();
          }}}};
}

/** Does something with the first panel, if it is there. */
Step onPanel(const char *name, std::function<void(Session &, MoverControlWidget *)> act)
{
    return {QString::fromUtf8(name), [act = std::move(act)](Session &session) {
                if (MoverControlWidget *panel = session.program().panel(0))
                    act(session, panel);
                session.settle();
            }};
}

Step pressing(const char *button, double thenSeconds)
{
    return onPanel(button, [button, thenSeconds](Session &session, MoverControlWidget *panel) {
        Session::press(panel, button);
        session.settle();
        session.pass(thenSeconds);
    });
}

/** The stops that a key has asked for are through; `before`: how many were sent before. */
void waitForStops(int before)
{
    const auto through = [] { return !SerialComDev::instance()->isStoppingAll(); };
    if (!QTest::qWaitFor(through, waitLimitMs) || simulator::callCount("stopRuning") < before + LibraryTable::Axes)
        qFatal("the stop of all axes does not get through");
}

/** The key that stops all, in a window that is open. */
void stopAllIn(QWidget *window)
{
    const int before = simulator::callCount("stopRuning");
    QTest::keyClick(window, Qt::Key_F12);
    waitForStops(before);
}

/** The same, in a window that the situation has open. */
Step stoppingAll(std::function<QWidget *(Session &)> window)
{
    return {QStringLiteral("stops all"), [window = std::move(window)](Session &session) {
                stopAllIn(window(session));
                session.pass(10);
                session.noteWindow();
            }};
}

Situation moving()
{
    return {
        "moving",
        true,
        false,
        {onPanel(
             "sends the move parameters", [](Session &, MoverControlWidget *panel) { Session::sendMove(panel, 5); }),
         onPanel(
             "sends the jog parameters",
             [](Session &, MoverControlWidget *panel) {
                 auto *popup = panel->findChild<JogParamWidget *>();
                 popup->open();
                 Session::fill<QDoubleSpinBox>(popup, "doubleSpinBox_step", 0.5);
                 Session::fill<QSpinBox>(popup, "spinBox_count", 2);
                 Session::fill<QSpinBox>(popup, "spinBox_delay", 10);
                 Session::press(popup, "pushButton_confirm");
             }),
         onPanel(
             "sends the drive parameters",
             [](Session &, MoverControlWidget *panel) {
                 auto *popup = panel->findChild<DriveParamWidget *>();
                 popup->open();
                 Session::fill<QDoubleSpinBox>(popup, "doubleSpinBox_disp", 1.0);
                 Session::fill<QDoubleSpinBox>(popup, "doubleSpinBox_speed", 5.0);
                 Session::fill<QDoubleSpinBox>(popup, "doubleSpinBox_acc", 20.0);
                 Session::press(popup, "pushButton_confirm");
             }),
         pressing("pushButton_move", 0.3),
         pressing("pushButton_stop", 10),
         pressing("pushButton_driveRight", 0.1),
         pressing("pushButton_stop", 10),
         pressing("pushButton_driveLeft", 0.1),
         stoppingAll([](Session &session) { return &session.program().window(); }),
         pressing("pushButton_jogLeft", 20),
         pressing("pushButton_home", 100),
         pressing("pushButton_enable", 0.1),
         pressing("pushButton_enable", 0.1),
         onPanel(
             "switches the joystick on and off",
             [](Session &session, MoverControlWidget *) {
                 simulator::setJoystick(device, true);
                 session.pass(0);
                 for (const bool on : {true, false}) {
                     session.program().rocker()->setChecked(on);
                     QMetaObject::invokeMethod(&session.program().window(), "on_radioButton_Rocker_clicked");
                     session.settle();
                 }
                 simulator::setJoystick(device, false);
                 session.pass(0);
             }),
         onPanel(
             "switches the joystick on and stops all",
             [](Session &session, MoverControlWidget *) {
                 simulator::setJoystick(device, true, 5);
                 session.pass(0);
                 session.program().rocker()->setChecked(true);
                 QMetaObject::invokeMethod(&session.program().window(), "on_radioButton_Rocker_clicked");
                 session.settle();
                 stoppingAll([](Session &inMode) { return &inMode.program().window(); }).act(session);
                 simulator::setJoystick(device, false);
                 session.pass(0);
             }),
         {QStringLiteral("the machine's devices change"), [](Session &session) {
              const int before = simulator::callCount("listTSMotorControlerDevices");
              session.program().window().slot_usbDevPortChanged();
              // At once, or when the poll is through that is in flight at that moment.
              static_cast<void>(QTest::qWaitFor(
                  [before] { return simulator::callCount("listTSMotorControlerDevices") > before; }, waitLimitMs));
              session.noteWindow();
          }}}};
}

Situation loopRun()
{
    const auto inLoop = [](const char *button, double thenSeconds) {
        return onPanel(button, [button, thenSeconds](Session &session, MoverControlWidget *panel) {
            Session::press(panel->findChild<CycleOperationWidget *>(), button);
            session.settle();
            session.pass(thenSeconds);
        });
    };
    return {
        "loopRun",
        true,
        false,
        {onPanel(
             "opens the loop run",
             [](Session &, MoverControlWidget *panel) {
                 Session::press(panel, "pushButton_circle");
                 auto *loop = panel->findChild<CycleOperationWidget *>();
                 Session::fill<QDoubleSpinBox>(loop, "doubleSpinBox_relativeDisp", 2.0);
                 Session::fill<QDoubleSpinBox>(loop, "doubleSpinBox_speed", 5.0);
                 Session::fill<QDoubleSpinBox>(loop, "doubleSpinBox_acc", 20.0);
                 Session::fill<QSpinBox>(loop, "spinBox_time", 50);
                 Session::fill<QSpinBox>(loop, "spinBox_delay", 10);
             }),
         inLoop("pushButton_right", 1),
         onPanel("waits", [](Session &session, MoverControlWidget *) { session.pass(2); }),
         inLoop("pushButton_stop", 10),
         inLoop("pushButton_left", 1),
         stoppingAll([](Session &session) -> QWidget * { return session.dialog<CycleOperationWidget>(); }),
         inLoop("pushButton_close", 10),
         {QStringLiteral("looks"), [](Session &session) { session.noteWindow(); }}}};
}

void noteConsole(Session &session)
{
    DebugWidget *console = session.console();
    const auto text = [console](const char *name) {
        return console->findChild<QLineEdit *>(QLatin1String(name))->text();
    };
    session.settle();
    session.note(QStringLiteral("console: ") + text("lineEdit_result"));
    session.note(QStringLiteral("console state: ") + text("lineEdit_state"));
}

QWidget *openWorkbench(Session &session)
{
    OpenWindow::click(session.program().titleButton("pushButton_workbench"));
    session.settle();
    const QWidgetList windows = QApplication::topLevelWidgets();
    return *std::find_if(
        windows.begin(), windows.end(), [](const QWidget *window) { return window->inherits("WorkbenchWidget"); });
}

/** Shows a page of it. */
template <typename Page>
Page *openPage(Session &session)
{
    QWidget *window = openWorkbench(session);
    auto *page = window->findChild<Page *>();
    auto *pages = window->findChild<QStackedWidget *>(QStringLiteral("stackedWidget_pages"));
    window->findChild<QTabBar *>(QStringLiteral("tabBar"))->setCurrentIndex(pages->indexOf(page));
    return page;
}

/** An axis is on its way, and all are stopped in one window after the other. */
Situation everyWindow()
{
    using Open = std::function<QWidget *(Session &, MoverControlWidget *)>;
    const auto in = [](const char *name, const Open &open) {
        return onPanel(name, [open](Session &session, MoverControlWidget *panel) {
            Session::press(panel, "pushButton_driveRight");
            session.settle();
            session.pass(0.1);
            QWidget *window = open(session, panel);
            stopAllIn(window);
            window->hide();
            session.pass(10);
            session.noteWindow();
        });
    };
    const auto inBox = [](const char *name, const std::function<void(Session &)> &ask) {
        return onPanel(name, [ask](Session &session, MoverControlWidget *panel) {
            Session::press(panel, "pushButton_driveRight");
            session.settle();
            session.pass(0.1);
            const int before = simulator::callCount("stopRuning");
            if (session.stopsAllInBoxes([&] { ask(session); }))
                waitForStops(before);
            session.pass(10);
            session.noteWindow();
        });
    };
    const auto popup = [](auto *found) -> QWidget * {
        found->open();
        return found;
    };
    return {
        "everyWindow",
        true,
        false,
        {in("connection",
            [](Session &session, MoverControlWidget *) {
                auto *connection = session.dialog<ConnectionWidget>(); // stays open after connecting
                connection->show();
                return connection;
            }),
         in("add an axis",
            [](Session &session, MoverControlWidget *) {
                OpenWindow::click(session.program().find("pushButton_addAsix"));
                return session.dialog<AddControlsWidget>();
            }),
         in("help",
            [](Session &session, MoverControlWidget *) {
                OpenWindow::click(session.program().titleButton("pushButton_help"));
                return session.dialog<HelpWidget>();
            }),
         in("workbench", [](Session &session, MoverControlWidget *) { return openWorkbench(session); }),
         in("move parameters",
            [popup](Session &, MoverControlWidget *panel) { return popup(panel->findChild<MoveParamWidget *>()); }),
         in("drive parameters",
            [popup](Session &, MoverControlWidget *panel) { return popup(panel->findChild<DriveParamWidget *>()); }),
         in("jog parameters",
            [popup](Session &, MoverControlWidget *panel) { return popup(panel->findChild<JogParamWidget *>()); }),
         inBox("message", [](Session &session) { session.program().window().slot_showTipMessage("text"); }),
         inBox("writing box of the console", [](Session &session) {
             OpenWindow::click(session.program().titleButton("pushButton_debug"));
             // An axis takes no parameters while it moves.
             session.console()->findChild<QComboBox *>(QStringLiteral("comboBox_axis"))->setCurrentIndex(1);
             Session::press(session.console(), "pushButton_readMorotParams");
             Session::press(session.console(), "pushButton_writeMotorParams");
             noteConsole(session);
             session.console()->hide();
         })}};
}

Situation settingsOpen()
{
    const auto pressingThere = [](const char *button) {
        return Step{QString::fromUtf8(button), [button](Session &session) {
                        auto *options = session.dialog<OptionsWidget>();
                        if (auto *box = options->findChild<QCheckBox *>(QLatin1String(button)))
                            box->setChecked(false); // so that it gets checked
                        Session::press(options, button);
                        session.settle();
                        session.note(
                            QStringLiteral("settings: ") +
                            options->findChild<QLabel *>(QStringLiteral("label_msg"))->text());
                        session.noteWindow();
                    }};
    };
    return {
        "settingsOpen",
        true,
        true,
        {{QStringLiteral("opens the settings"),
          [](Session &session) {
              OpenWindow::click(session.program().titleButton("pushButton_settings"));
              session.pass(0);
              session.noteWindow();
          }},
         pressingThere("checkBox_triggerIn_1"),
         pressingThere("checkBox_triggerOut_1"),
         {QStringLiteral("enters a displacement"),
          [](Session &session) {
              auto *field =
                  session.dialog<OptionsWidget>()->findChild<TDoubleSpinBox *>(QStringLiteral("doubleSpinBox_Axis1"));
              field->setValue(0.5);
              emit field->editingFinished();
              session.settle();
              session.noteWindow();
          }},
         pressingThere("checkBox_posConpen_on1"),
         pressingThere("checkBox_posConpen_close1"),
         pressingThere("pushButton_ReadParam"),
         pressingThere("pushButton_WriteParam"),
         stoppingAll([](Session &session) -> QWidget * { return session.dialog<OptionsWidget>(); })}};
}

/** The page of the parameter history, while it is shown. */
class HistoryPage final
{
public:
    explicit HistoryPage(Session &session)
        : m_session(session)
        , m_page(openPage<HistoryWidget>(session))
    {
    }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    /** Does `act`; waits until the history has emitted `signal` so many times. The arguments of the last time. */
    template <typename Signal, typename Act>
    QVariant after(Signal signal, int times, const Act &act) const
    {
        const QSignalSpy spy(m_history.data(), signal);
        act();
        if (!QTest::qWaitFor([&] { return spy.count() >= times; }, waitLimitMs))
            qFatal("the parameter history does not come back from %s", simulator::callInFlight().c_str());
        m_session.settle();
        return spy.last().first();
    }

    void takeSnapshot() const
    {
        find<QComboBox>("comboBox_axis")->setCurrentIndex(1);
        const QVariant kept =
            after(&ParameterHistory::signal_kept, 1, [this] { Session::press(m_page, "pushButton_snapshot"); });
        // The first one is taken while nothing is wrong yet.
        if (!wholeSnapshot)
            wholeSnapshot = kept.value<ParameterSnapshot>();
    }
    /** One that came from a file: speed and tables as no other's. */
    void restore(bool compensation) const
    {
        static int number = 0;
        const double end = 10 + 0.01 * ++number;
        ParameterSnapshot wanted = *wholeSnapshot;
        wanted.time = QDateTime::currentDateTimeUtc().addSecs(3600); // the newest in the list
        wanted.params->restoreSpeed += 0.01 * number;
        wanted.compensation = compensation;
        wanted.positive = wanted.negative = ParameterSnapshot::Pairs{-10, -10, end, end}; // correct nothing
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("a.json"));
        if (!SmallFile::save(file, ParameterStore::toText({wanted})))
            qFatal("no file to import");
        after(&ParameterHistory::signal_loaded, 1, [&] { m_history->importFrom(file); });
        find<QTableWidget>("tableWidget_snapshots")->setCurrentCell(0, 0);
        after(&ParameterHistory::signal_restored, 1, [this] { Session::press(m_page, "pushButton_restore"); });
        m_session.note(QStringLiteral("history: ") + find<QLabel>("label_status")->text());
    }
    void compareWithNow() const
    {
        auto *with = find<QComboBox>("comboBox_compareWith");
        after(&ParameterHistory::signal_readNow, 2, [with] {
            with->setCurrentIndex(1);
            with->setCurrentIndex(0);
        });
        const auto *table = find<QTableWidget>("tableWidget_differences");
        for (int row = 0; row < table->rowCount(); ++row)
            m_session.note(QStringLiteral("now: %1 %2").arg(table->item(row, 0)->text(), table->item(row, 2)->text()));
    }

private:
    static inline std::optional<ParameterSnapshot> wholeSnapshot;

    Session &m_session;
    const QSharedPointer<ParameterHistory> m_history = ParameterHistory::instance();
    HistoryWidget *const m_page;
};

Situation historyOpen()
{
    return {
        "historyOpen",
        true,
        false,
        {{QStringLiteral("takes a snapshot"),
          [](Session &session) {
              const HistoryPage page(session);
              session.pass(0);
              session.noteWindow();
              page.takeSnapshot();
          }},
         {QStringLiteral("restores one that differs, and another"),
          [](Session &session) {
              // One of them switches the compensation, however a fault has left it.
              for (const bool compensation : {true, false})
                  HistoryPage(session).restore(compensation);
          }},
         {QStringLiteral("compares with the controller now"),
          [](Session &session) { HistoryPage(session).compareWithNow(); }}}};
}

/** The page of positions and sequences, while it is shown. */
class SequencePage final
{
public:
    explicit SequencePage(Session &session)
        : m_session(session)
        , m_page(openPage<SequenceWidget>(session))
    {
    }

    /** From its first line until it waits for the operator, or until it has ended. */
    void run() const
    {
        const auto step = [](SequenceStep::Kind kind, int axis, double value, double speed = 0) {
            SequenceStep made;
            made.kind = kind;
            made.axis = axis;
            made.value = value;
            made.speed = speed;
            return made;
        };
        SequenceStep together;
        together.kind = SequenceStep::GoTo;
        together.text = QStringLiteral("Both");
        m_page->change(
            {{{together.text, {{0, 5}, {1, 7}}}},
             {QStringLiteral("Kinds"),
              {step(SequenceStep::SetSpeed, 0, 4), step(SequenceStep::MoveTo, 0, 8), together,
               step(SequenceStep::Home, 1, 0), step(SequenceStep::Wait, 0, 0.02), step(SequenceStep::Ask, 0, 0),
               step(SequenceStep::MoveTo, 0, 40, 2)}}});
        if (auto *rewind = m_page->findChild<QAbstractButton *>(QStringLiteral("pushButton_rewind"));
            !rewind->isHidden())
            rewind->click();
        Session::press(m_page, "pushButton_run");
        if (!runner().isActive())
            m_session.complain(QStringLiteral("the sequence does not start: ") + status());
        passUntil([] { return runner().state() == SequenceRunner::State::Asking; });
    }
    /** Stopped in the middle of its last motion by the panel, if it has come so far. */
    void goOn() const
    {
        if (runner().state() == SequenceRunner::State::Asking)
            Session::press(m_page, "pushButton_run");
        m_session.settle();
        m_session.pass(0.5);
        if (runner().isActive())
            Session::press(m_session.program().panel(0), "pushButton_stop");
        m_session.settle(); // before it arrives
        passUntil([] { return false; });
    }
    /** It is over, says so, keeps nothing, and nothing moves any more. */
    void lookAtEnd() const
    {
        m_session.settle(); // its stops
        const SequenceEnd &end = runner().lastEnd();
        if (end.reason == SequenceEnd::Finished)
            m_session.complain(QStringLiteral("the sequence has finished"));
        const auto *steps = m_page->findChild<QTableView *>(QStringLiteral("tableView_steps"))->model();
        const QString reason = steps->index(end.line, 0).data(StepModel::ReasonRole).toString();
        m_session.note(QStringLiteral("sequence: %1 %2").arg(end.line + 1).arg(reason));
        if (reason.isEmpty() || !status().contains(QStringLiteral("第 %1 步").arg(end.line + 1)))
            m_session.complain(QStringLiteral("it does not say why and where it ended: ") + status());
        for (int axis = 0; axis < LibraryTable::Axes; ++axis) {
            if (SerialComDev::instance()->isReserved(axis))
                m_session.complain(QStringLiteral("axis %1 is still reserved").arg(axis));
        }
        m_session.pass(0);
        m_session.noteWindow();
        const std::vector<simulator::Call> journal = simulator::journal();
        const bool areStopped = std::none_of(journal.begin(), journal.end(), [](const simulator::Call &call) {
            return call.function == "stopRuning" && call.result.front() == '-';
        });
        if (areStopped == reason.contains(QStringLiteral("仍在运动")) && end.reason != SequenceEnd::LinkLost)
            m_session.complain(QStringLiteral("whether the axes were stopped: ") + reason);
        simulator::clearFaults(); // they have done what they can, and the place of an axis is asked for
        const std::ptrdiff_t starts = countStarts();
        simulator::advance(10); // to brake
        const QVector<double> places = this->places();
        simulator::advance(100);
        m_session.pass(0);
        if (countStarts() != starts)
            m_session.complain(QStringLiteral("an axis is started after the end"));
        if (areStopped && this->places() != places)
            m_session.complain(QStringLiteral("an axis moves after the end"));
    }

private:
    static SequenceRunner &runner() { return ControlSession::instance()->sequences(); }
    QString status() const { return m_page->findChild<QLabel *>(QStringLiteral("label_sequenceStatus"))->text(); }
    void passUntil(const std::function<bool()> &isTrue) const
    {
        const auto isOver = [&] {
            simulator::advance(1);
            return isTrue() || !runner().isActive();
        };
        if (!QTest::qWaitFor(isOver, waitLimitMs))
            m_session.complain(QStringLiteral("the sequence neither ends nor goes on: ") + status());
    }
    static std::ptrdiff_t countStarts()
    {
        const std::vector<simulator::Call> journal = simulator::journal();
        return std::count_if(journal.begin(), journal.end(), [](const simulator::Call &call) {
            return call.function.rfind("start", 0) == 0 || call.function == "home";
        });
    }
    static QVector<double> places()
    {
        const BusyCursor busy;
        const LibraryLock library;
        int status = 0;
        return {library->getCurrentPos(device, 0, &status), library->getCurrentPos(device, 1, &status)};
    }

    Session &m_session;
    SequenceWidget *const m_page;
};

Situation sequenceRunning()
{
    const auto onPage = [](const char *name, void (SequencePage::*act)() const) {
        return Step{QString::fromUtf8(name), [act](Session &session) { (SequencePage(session).*act)(); }};
    };
    return {
        "sequenceRunning",
        true,
        false,
        {onPage("runs a sequence", &SequencePage::run), onPage("lets it go on, and stops it", &SequencePage::goOn),
         onPage("looks", &SequencePage::lookAtEnd)}};
}

/** What the console's input field has to hold so that the axes go on as before. */
QString consoleInput(const std::string &function)
{
    if (function == "setDevAxisCount")
        return QString::number(LibraryTable::Axes);
    if (function.find("Name") != std::string::npos || function.find("SerialNumber") != std::string::npos)
        return QStringLiteral("TEXT");
    return function == "setRockerEnable" || function == "setMotorUnitType" ? QStringLiteral("0") : QStringLiteral("1");
}

/** Compensation tables that correct nothing. */
void storeTables()
{
    const BusyCursor busy;
    const LibraryLock library;
    const double pairs[] = {-10, -10, 10, 10};
    const int id = SerialComDev::instance()->deviceId();
    library->setPositivePosConpen(id, 0, pairs, 2);
    library->setNegativePosConpen(id, 0, pairs, 2);
}

Situation consoleOpen()
{
    Situation situation{"consoleOpen", true, true, {}};
    for (const ConsoleCommand &command : consoleCommands) {
        situation.steps.push_back({QString::fromUtf8(command.label), [&command](Session &session) {
                                       OpenWindow::click(session.program().titleButton("pushButton_debug"));
                                       DebugWidget *console = session.console();
                                       console->findChild<QLineEdit *>(QStringLiteral("lineEdit_input"))
                                           ->setText(consoleInput(command.function));
                                       Session::press(
                                           console, qPrintable(QStringLiteral("pushButton_%1").arg(command.button)));
                                       simulator::advance(1000);
                                       noteConsole(session);
                                   }});
    }
    for (const char *button :
         {"pushButton_clear", "pushButton_pos_conpen_enable", "pushButton_pos_conpen_disable", "pushButton",
          "pushButton_pos_conpen_write", "pushButton_writeMotorParams", "pushButton_readMorotParams"}) {
        situation.steps.push_back({QString::fromUtf8(button), [button](Session &session) {
                                       OpenWindow::click(session.program().titleButton("pushButton_debug"));
                                       if (qstrcmp(button, "pushButton_writeMotorParams") == 0)
                                           Session::press(session.console(), "pushButton_readMorotParams");
                                       if (qstrcmp(button, "pushButton") == 0)
                                           storeTables();
                                       Session::press(session.console(), button);
                                       noteConsole(session);
                                   }});
    }
    situation.steps.push_back(stoppingAll([](Session &session) -> QWidget * { return session.console(); }));
    situation.steps.push_back(
        {QStringLiteral("heartbeat"), [](Session &session) {
             Session::press(session.console(), "pushButton_44");
             const auto worker = SerialComDev::instance();
             for (int beat = 0; beat < 2; ++beat)
                 QMetaObject::invokeMethod(worker.data(), &SerialComDev::slot_consoleHeartBeat, Qt::QueuedConnection);
             session.settle();
             Session::press(session.console(), "pushButton_54");
             auto *count = session.console()->findChild<QLineEdit *>(QStringLiteral("lineEdit_heart"));
             // The heart counts in its own thread, and on from one start to the next.
             const std::vector<simulator::Call> journal = simulator::journal();
             const auto beat = std::find_if(journal.rbegin(), journal.rend(), [](const simulator::Call &call) {
                 return call.function == "getRockerInfo";
             });
             const bool missed = beat != journal.rend() && beat->result.front() == '-';
             if (missed && QTest::qWaitFor([count] { return count->text() != QLatin1String("0"); }, waitLimitMs))
                 session.note(QStringLiteral("console heart counts"));
         }});
    return situation;
}

Situation closing()
{
    return {"closing", true, false, {onPanel("stops and leaves", [](Session &session, MoverControlWidget *panel) {
                for (MoverControlWidget *each : session.program().window().panelBoard().panels())
                    each->slot_updateState();
                QMetaObject::invokeMethod(
                    SerialComDev::instance().data(), &SerialComDev::slot_heartBeat, Qt::QueuedConnection);
                Session::press(panel, "pushButton_stop");
                // All of it has been done, or one call does not come back.
                static_cast<void>(QTest::qWaitFor([] { return simulator::callCount("stopRuning") > 0; }, 100));
                session.pressClose();
            })}};
}

// ---- What the program shows ----------------------------------------------------------------------------------------

/** `text`: %1 is the status, %2 the status in words. Of several rows the first that fits counts; null: nothing is said
 * of the fault. */
struct Shown {
    const char *situation; // null: any
    const char *function;
    const char *text;
};

const Shown shownFailures[] = {
    {"closing", nullptr, nullptr}, // the panels are gone before anybody could read their logs

    // A sequence: the line, and why it ended there
    {"sequenceRunning", "setSpeed", "sequence: 1 Axis1 拒绝执行：%2。序列的轴均已停止。"},
    {"sequenceRunning", "setTargetPos", "sequence: 2 Axis1 拒绝执行：%2。序列的轴均已停止。"},
    {"sequenceRunning", "startMove", "sequence: 2 Axis1 拒绝执行：%2。序列的轴均已停止。"},
    {"sequenceRunning", "home", "sequence: 4 Axis2 拒绝执行：%2。序列的轴均已停止。"},
    {"sequenceRunning", "getRuningState", "sequence: 2 Axis1 没有应答。轴可能仍在运动。"},
    {"sequenceRunning", "getCurrentPos", "sequence: 2 Axis1 没有应答。轴可能仍在运动。"},
    {"sequenceRunning", "stopRuning", "sequence: 7 Axis1 被面板停止。轴可能仍在运动。"},

    // Polls and signs of life
    {"consoleOpen", "getCurrentPos", "console: 0"}, // the raw result: the status is not asked for
    {"connecting", "getCurrentPos", "box: 初始化轴，读取参数错误(-3)！"},
    {nullptr, "getCurrentPos", "log: 读取当前位置出错 操作失败"},
    {"consoleOpen", "getRuningState", "console state: %1"},
    {nullptr, "getRuningState", "log: 获取设备状态出错 操作失败"},
    {"consoleOpen", "getRockerInfo", "console heart counts"},
    {nullptr, "getRockerInfo", nullptr},

    // Connecting
    {nullptr, "addMotor", nullptr},
    {"idle", "listTSMotorControlerDevices", nullptr},
    {"idle", "addDev", nullptr},
    {"idle", "openTSDevice", nullptr},
    {"idle", "getDevSerialNumber", nullptr},
    {"idle", "removeDev", nullptr},
    {"idle", "getDevAxisCount", nullptr},
    {"connecting", "listTSMotorControlerDevices", "connection: 打开设备失败(err:-1)"}, // nothing to choose from
    {"connecting", "addDev", "connection: 打开设备失败(err:-1)"},
    {"connecting", "openTSDevice", "connection: 打开设备失败(err:%1)"},
    {"connecting", "getDevSerialNumber", "connection: 打开设备失败(err:-1)"},
    {"connecting", "removeDev", "connection: 打开设备失败(err:-4)"}, // open already, since the list was made
    {nullptr, "closeTSDevice", nullptr},
    {nullptr, "removeDev", nullptr},
    {"connecting", "getDevAxisCount", "box: 获取设备参数失败，请检查\n设备是否正确连接!"},
    {"connecting", "getMotorAutoDetect", "box: 初始化轴，识别芯片错误(0)！"},
    {"connecting", "getMotorModelName", "panels: "},
    {"connecting", "getMotorSerialNumber", "box: 初始化轴，读取参数错误(-2)！"},
    {"connecting", "getSpeed", "box: 初始化轴，读取参数错误(-4)！"},
    {"connecting", "getAcceleration", "box: 初始化轴，读取参数错误(-5)！"},
    {"connecting", "getRelativeDisp", "box: 初始化轴，读取参数错误(-6)！"},
    {"connecting", "getTargetPos", "box: 初始化轴，读取参数错误(-7)！"},
    {"connecting", "getRelativeDispEnable", "box: 初始化轴，读取参数错误(-8)！"},
    {"connecting", "getJogStep", "box: 初始化轴，读取参数错误(-9)！"},
    {"connecting", "getJogDelay", "box: 初始化轴，读取参数错误(-10)！"},
    {"connecting", "getJogCount", "box: 初始化轴，读取参数错误(-11)！"},
    {"connecting", "getCircleCount", "box: 初始化轴，读取参数错误(-12)！"},
    {"connecting", "getCircleDisp", "box: 初始化轴，读取参数错误(-13)！"},
    {"connecting", "getCircleDelay", "box: 初始化轴，读取参数错误(-14)！"},
    {"connecting", "getMotorParams", "panels: Axis1 Axis2 Axis3"}, // with limits that let nothing through
    {"connecting", "getDevSoftVersion", nullptr},
    {"connecting", "getRockerEnable", nullptr},
    {"connecting", "setMotorParams", "box: 参数配置错误!请重试。"},

    // Motion and its parameters
    {"moving", "listTSMotorControlerDevices", "box: 设备断开连接"},
    {"moving", "setSpeed", "log: 设置速度参数出错 操作失败"},
    {"moving", "setAcceleration", "log: 设置加速度参数出错 操作失败"},
    {"moving", "setTargetPos", "log: 设置目标位置参数出错 操作失败"},
    {"moving", "setRelativeDisp", "log: 设置相对位移参数出错 操作失败"},
    {"moving", "setRelativeDispEnable", "log: 设置相对位移使能参数出错 操作失败"},
    {"moving", "setJogStep", "log: 设置步进参数 设置JOG步长失败 操作失败"},
    {"moving", "setJogCount", "log: 设置步进参数 设置JOG次数失败 操作失败"},
    {"moving", "setJogDelay", "log: 设置步进参数 设置JOG延时时间失败 操作失败"},
    {"moving", "startMove", "log: 移动 Move 操作失败"},
    {"moving", "startDrive", "log: 推进 正方向Drive 操作失败"},
    {"moving", "startJog", "log: 步进 负方向Jog 操作失败"},
    {"moving", "stopRuning", "log: 停止 停止运行 操作失败"},
    {"moving", "home", "log: 电机复位 操作失败"},
    {"moving", "setMotorEnable", nullptr},
    {"moving", "setRockerEnable", nullptr},
    {"loopRun", "setSpeed", "log: 设置速度参数出错 操作失败"},
    {"loopRun", "setAcceleration", "log: 设置加速度参数出错 操作失败"},
    {"loopRun", "setCircleCount", "log: 设置循环次数失败 操作失败"},
    {"loopRun", "setCircleDisp", "log: 设置循环位移量失败 操作失败"},
    {"loopRun", "setCircleDelay", "log: 设置循环停留时间失败 操作失败"},
    {"loopRun", "startCircle", "log: 正方向循环 操作失败"},
    {"loopRun", "stopRuning", "log: 停止 停止运行 操作失败"},

    // Stop all in every window
    {"everyWindow", "startDrive", "log: 推进 正方向Drive 操作失败"},
    {"everyWindow", "stopRuning", "log: 停止 停止运行 操作失败"},
    {"everyWindow", "getMotorParams", nullptr},     // the answer of the write stands there
    {"everyWindow", "getPosConpenEnable", nullptr}, // unknown in the snapshot
    {"everyWindow", "getPositivePosConpen", nullptr},
    {"everyWindow", "getNegativePosConpen", nullptr},
    {"everyWindow", "setMotorParams", "console: 写入电机参数失败：error（%1）"},

    // Settings: what cannot be read stays as it was
    {"settingsOpen", "getDevAxisCount", nullptr},
    {"settingsOpen", "getTriggerInEnable", nullptr},
    {"settingsOpen", "stopRuning", "log: 停止 停止运行 操作失败"},
    {"settingsOpen", "getTriggerOutEnable", nullptr},
    {"settingsOpen", "getTriggerStep", nullptr},
    {"settingsOpen", "getPosConpenEnable", nullptr},
    {"settingsOpen", "setPosConpenEnable", nullptr},
    {"settingsOpen", "getMotorModelName", "box: 请匹配位移台实际行程进行设置！"},
    {"settingsOpen", "getMotorParams", "settings: 读取电机参数失败：error（%1）"},
    {"settingsOpen", "setMotorParams", "settings: 写入电机参数失败：error（%1）"},
    {"settingsOpen", "setTriggerInEnable", "log: 设置触发输入参数失败，轴:0 操作失败"},
    {"settingsOpen", "setTriggerOutEnable", "log: 设置触发输出参数失败，轴:0 操作失败"},
    {"settingsOpen", "setTriggerStep", "log: 设置触发输入位移量失败，轴:0 操作失败"},

    // Parameter history
    {"historyOpen", "getMotorParams", "box: 未能读取控制器的当前参数，没有写入任何内容。"},
    {"historyOpen", "getPosConpenEnable", "box: 以下参数未生效：位置补偿"}, // nobody knows
    {"historyOpen", "getPositivePosConpen", "now: 正向补偿表 未知"},
    {"historyOpen", "getNegativePosConpen", "now: 负向补偿表 未知"},
    {"historyOpen", "setMotorParams", "box: 以下参数未生效：复位速度\n%2"},
    {"historyOpen", "setPosConpenEnable", "box: 以下参数未生效：位置补偿\n%2"},
    {"historyOpen", "setPositivePosConpen", "box: 以下参数未生效：正向补偿表\n%2"},
    {"historyOpen", "setNegativePosConpen", "box: 以下参数未生效：负向补偿表\n%2"},

    // Console: the raw number, except in
    {"consoleOpen", "getTargetPos", "console: 0"},
    {"consoleOpen", "setClearIDChip", nullptr},
    {"consoleOpen", "getPositivePosConpen", "console: %1 0"},
    {"consoleOpen", "getNegativePosConpen", "console: 0 %1"},
    {"consoleOpen", "setPositivePosConpen", "console: %1 0"},
    {"consoleOpen", "setNegativePosConpen", "console: 0 %1"},
    {"consoleOpen", "getMotorParams", "console: 读取电机参数失败：error（%1）"},
    {"consoleOpen", "setMotorParams", "console: 写入电机参数失败：error（%1）"},
    {"consoleOpen", nullptr, "console: %1"},
};

/** What has to be shown of a failure; `known` tells whether there is a row for it. */
QString shownFailure(const char *situation, const std::string &function, int status, bool *known)
{
    const auto fits = [](const char *row, const std::string &text) { return !row || text == row; };
    for (const Shown &row : shownFailures) {
        if (!fits(row.situation, situation) || !fits(row.function, function))
            continue;
        *known = true;
        const bool real = function.compare(0, 3, "get") == 0 && qstrcmp(situation, "consoleOpen") == 0 &&
                          libraryTable().faultsOf(function).back().name == QStringLiteral("answers 1e+308") &&
                          function.find("PosConpen") == std::string::npos;
        // The console shows a real number with 8 digits, also when it is a status.
        const QString number = real ? QString::number(double(status), 'g', 8) : QString::number(status);
        if (!row.text)
            return QString();
        return QString::fromUtf8(row.text)
            .replace(QStringLiteral("%1"), number)
            .replace(QStringLiteral("%2"), SerialComDev::instance()->statusText(status));
    }
    *known = false;
    return QString();
}

/** Answers that are no failures, however odd: what the controller says is shown. %1: the number it says. Of several
 * rows the first that fits counts. */
struct ShownAnswer {
    const char *situation;
    const char *function; // null: any
    const char *fault;    // its name, or the beginning of it
    QString text;
};

const std::vector<ShownAnswer> &shownAnswers()
{
    static const std::vector<ShownAnswer> rows = {
        {"moving", "getCurrentPos", "answers 1e+308", QStringLiteral("label_currentPos: %1 mm").arg(1e308, 0, 'f', 3)},
        {"moving", "getCurrentPos", "answers", QStringLiteral("label_currentPos: %1 mm")},
        {"loopRun", "getCurrentPos", "answers 1e+308", QStringLiteral("label_currentPos: %1 mm").arg(1e308, 0, 'f', 3)},
        {"loopRun", "getCurrentPos", "answers", QStringLiteral("label_currentPos: %1 mm")},
        {"loopRun", "getRuningState", "flags", QStringLiteral("log: 当前运行次数 4294967295 运行中")},
        {"sequenceRunning", "getCurrentPos", "answers 1e+308",
         QStringLiteral("sequence: 2 Axis1 停在 %1 mm，未到达目标。序列的轴均已停止。").arg(1e308, 0, 'f', 3)},
        {"sequenceRunning", "getCurrentPos", "answers",
         QStringLiteral("sequence: 2 Axis1 停在 %1 mm，未到达目标。序列的轴均已停止。")},
        {"connecting", "getMotorModelName", "text without an end",
         QStringLiteral("label_modelName: ") + QString(32, QLatin1Char('W'))},
        {"connecting", "getMotorModelName", "text that is not ASCII",
         QStringLiteral("label_modelName: ") + QString(32, QChar(0xFC))},
        {"connecting", "getMotorSerialNumber", "text without an end",
         QStringLiteral("log: 位移台序列号：") + QString(32, QLatin1Char('W'))},
        {"consoleOpen", nullptr, "text without an end", QStringLiteral("console: ") + QString(32, QLatin1Char('W'))},
        {"consoleOpen", nullptr, "text that is not ASCII", QStringLiteral("console: ") + QString(32, QChar(0xFC))},
        {"consoleOpen", "getNegativePosConpen", "answers", QString()}, // goes to the table
        {"consoleOpen", "getPositivePosConpen", "answers", QString()},
        {"consoleOpen", "getRockerInfo", "answers", QString()}, // only a missed one shows
        {"consoleOpen", nullptr, "answers", QStringLiteral("console: %1")},
    };
    return rows;
}

QString shownAnswer(const char *situation, const std::string &function, const QString &fault)
{
    for (const ShownAnswer &row : shownAnswers()) {
        if (qstrcmp(row.situation, situation) == 0 && (!row.function || row.function == function) &&
            fault.startsWith(QLatin1String(row.fault)))
            return QString(row.text).replace(QStringLiteral("%1"), fault.section(QLatin1Char(' '), -1));
    }
    return QString();
}

/** Which step of a situation calls which functions, when nothing is wrong. */
using Calls = std::vector<std::set<std::string>>;

Calls survey(const Situation &situation)
{
    Session session;
    if (situation.connected)
        session.recover();
    Calls calls;
    for (const Step &step : situation.steps) {
        simulator::clearJournal();
        step.act(session);
        session.settle();
        std::set<std::string> &called = calls.emplace_back();
        for (const simulator::Call &call : simulator::journal())
            called.insert(call.function);
    }
    session.leave();
    return calls;
}

struct Figures {
    const char *situation = "";
    int combinations = 0;
    int longestStallMs = 0; // beyond what the library takes
    std::string culprit;
};
Figures figures;

} // namespace

class tst_Faults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        qunsetenv("MOVER_SCENARIO");
        // What an earlier run has kept.
        QDir(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)).removeRecursively();
        m_time.start();
    }
    void cleanupTestCase();

    void everyFunctionIsReached();

    void idle_data() { rows(::idle()); }
    void idle() { strike(::idle()); }
    void connecting_data() { rows(::connecting()); }
    void connecting() { strike(::connecting()); }
    void moving_data() { rows(::moving()); }
    void moving() { strike(::moving()); }
    void loopRun_data() { rows(::loopRun()); }
    void loopRun() { strike(::loopRun()); }
    void everyWindow_data() { rows(::everyWindow()); }
    void everyWindow() { strike(::everyWindow()); }
    void settingsOpen_data() { rows(::settingsOpen()); }
    void settingsOpen() { strike(::settingsOpen()); }
    void historyOpen_data() { rows(::historyOpen()); }
    void historyOpen() { strike(::historyOpen()); }
    void sequenceRunning_data() { rows(::sequenceRunning()); }
    void sequenceRunning() { strike(::sequenceRunning()); }
    void consoleOpen_data() { rows(::consoleOpen()); }
    void consoleOpen() { strike(::consoleOpen()); }
    void closing_data() { rows(::closing()); }
    void closing() { strike(::closing()); }

private:
    /** A row for each function that the situation calls. */
    void rows(const Situation &situation);
    /** Every fault of the row's function, one after the other, in one run of the program. */
    void strike(const Situation &situation);
    QStringList strikeOnce(
        const Situation &situation, const std::string &function, const Fault &fault, Session &session, CallRules &rules,
        Watchdog &watchdog);

    Calls m_calls; // of the situation whose rows are run
    QElapsedTimer m_time;
};

void tst_Faults::cleanupTestCase()
{
    if (figures.combinations == 0)
        return;
    std::printf(
        "FIGURES %s: %d combinations, longest stall beyond the library's own time %d ms%s%s, %.0f s\n",
        figures.situation, figures.combinations, figures.longestStallMs, figures.culprit.empty() ? "" : " in ",
        figures.culprit.c_str(), double(m_time.elapsed()) / 1000);
}

void tst_Faults::everyFunctionIsReached()
{
    std::set<std::string> reached;
    const Situation situations[] = {::idle(),        ::connecting(),   ::moving(),      ::loopRun(),
                                    ::everyWindow(), ::settingsOpen(), ::historyOpen(), ::sequenceRunning(),
                                    ::consoleOpen(), ::closing()};
    for (const Situation &situation : situations) {
        for (const std::set<std::string> &calls : survey(situation))
            reached.insert(calls.begin(), calls.end());
    }
    QStringList missing;
    for (const std::string &function : simulator::functions()) {
        if (reached.count(function) == 0)
            missing.append(QString::fromStdString(function));
    }
    QCOMPARE(missing, QStringList());
    QCOMPARE(libraryTable().functions(), std::size_t(71));
    QCOMPARE(simulator::functions().size(), std::size_t(71));
}

void tst_Faults::rows(const Situation &situation)
{
    QTest::addColumn<QString>("function");
    const DebugLog log; // not on the terminal
    m_calls = survey(situation);
    figures.situation = situation.name;
    std::set<std::string> called;
    for (const std::set<std::string> &calls : m_calls)
        called.insert(calls.begin(), calls.end());
    QVERIFY(!called.empty());
    for (const std::string &function : called)
        QTest::newRow(function.c_str()) << QString::fromStdString(function);
}

void tst_Faults::strike(const Situation &situation)
{
    QFETCH(QString, function);
    const std::string name = function.toStdString();
    const bool leaves = qstrcmp(situation.name, "closing") == 0;
    // In short: a quarter of the faults, other ones for each function.
    const bool isShort = isShortRun();
    std::size_t number = name.size();
    QStringList findings;
    {
        const DebugLog log;
        Watchdog watchdog;
        std::unique_ptr<Session> session;
        const auto end = [&](const QString &fault) {
            if (!session)
                return;
            const QString wrong = session->leave();
            if (!wrong.isEmpty())
                findings.append(fault + QStringLiteral(": ") + wrong);
            session.reset();
        };
        for (const Fault &fault : libraryTable().faultsOf(name)) {
            if (isShort && ++number % 4 != 0)
                continue;
            if (!session) {
                session = std::make_unique<Session>();
                if (situation.connected && !session->recover().isEmpty())
                    QFAIL("does not even work without a fault");
            }
            CallRules rules;
            const QStringList broken = strikeOnce(situation, name, fault, *session, rules, watchdog);
            for (const QString &each : broken)
                findings.append(fault.name + QStringLiteral(": ") + each);
            ++figures.combinations;
            if (leaves)
                end(fault.name);
        }
        end(QStringLiteral("in the end"));
        for (const QString &warning : qtWarnings(log))
            findings.append(QStringLiteral("Qt: ") + warning);
        findings.removeDuplicates();
    }
    if (!findings.isEmpty())
        QFAIL(qPrintable(QLatin1Char('\n') + findings.join(QLatin1Char('\n'))));
}

QStringList tst_Faults::strikeOnce(
    const Situation &situation, const std::string &function, const Fault &fault, Session &session, CallRules &rules,
    Watchdog &watchdog)
{
    QStringList broken;
    const bool leaves = qstrcmp(situation.name, "closing") == 0;
    simulator::clearJournal();
    session.clearShown();
    watchdog.take();
    fault.set(function);
    for (std::size_t k = 0; k < situation.steps.size(); ++k) {
        if (!situation.stepsAreFree || m_calls[k].count(function) != 0)
            situation.steps[k].act(session);
    }
    if (!leaves)
        session.settle();
    const int calls = simulator::callCount(function);
    if (calls == 0)
        broken.append(QStringLiteral("was not called"));

    const Watchdog::Stall stall = watchdog.take();
    const int libraryMs = fault.once ? fault.takesMs : fault.takesMs * calls;
    if (stall.ms > libraryMs + stallLimitMs)
        broken.append(QStringLiteral("the GUI thread stood still for %1 ms in %2")
                          .arg(stall.ms)
                          .arg(QString::fromStdString(stall.call)));
    const int beyond = std::max(0, stall.ms - libraryMs);
    if (beyond > figures.longestStallMs) {
        figures.longestStallMs = beyond;
        figures.culprit = stall.call;
    }

    QString text = shownAnswer(situation.name, function, fault.name);
    if (fault.status < 0) {
        bool known = false;
        text = shownFailure(situation.name, function, fault.status, &known);
        if (!known)
            broken.append(QStringLiteral("no row tells what is shown"));
    }
    if (!text.isEmpty() && !session.shown().contains(text))
        broken.append(QStringLiteral("does not show \"%1\" but\n    %2")
                          .arg(text, session.shown().join(QStringLiteral("\n    "))));
    broken += session.takeWrong();
    broken += rules.take();
    const QString overlap = QString::fromStdString(simulator::overlap());
    if (!overlap.isEmpty() && !overlap.contains(QStringLiteral("setClearIDChip")) &&
        !overlap.contains(QStringLiteral("home")))
        broken.append(overlap);

    if (!leaves) {
        const QString wrong = session.recover();
        if (!wrong.isEmpty())
            broken.append(QStringLiteral("after it ") + wrong);
        if (!situation.connected && SerialComDev::instance()->isOpened())
            session.program().disconnect();
    } else {
        simulator::clearFaults();
    }
    return broken;
}

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    StartUp::setNumberFormat();
    tst_Faults test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_Faults.moc"
