// SPDX-License-Identifier: MIT
//
// tour --language zh|en DIRECTORY
// Drives the program's windows from connecting to leaving, over the simulated controller. Saves a picture of each step,
// prints a line for each, and exits with the number of steps that did not end as they should.

#include "tour/Guide.h"

#include "app/ScreenFit.h"
#include "app/StartUp.h"
#include "axis/MoverControlWidget.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/ParameterHistory.h"
#include "shell/MoverWidget.h"
#include "controllers/emulator/SerialPort.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/Robot.h"
#include "workbench/AxisRow.h"
#include "workbench/EventList.h"
#include "workbench/RecorderPlot.h"
#include "workbench/SequenceWidget.h"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <memory>

namespace {

constexpr int device = 1001;

/** The steps. Widgets are found by their names, as a test would, and looked at in the GUI thread. */
class Tour final
{
public:
    Tour(MoverWidget *window, const QDir &directory, bool english)
        : m_window(window)
        , m_guide(window, directory)
        , m_bEnglish(english)
    {
    }

    int take()
    {
        start();
        connectController();
        absoluteMove();
        jog();
        drive();
        homeStopEnable();
        stopAll();
        limits();
        loopRun();
        addAxis();
        joystick();
        settings();
        console();
        workbench();
        helpAndWindow();
        lostLink();
        disconnectAndReconnect();
        leave();
        return m_guide.failures();
    }

private:
    // ---- Finding things

    template <typename Widget = QWidget>
    static Widget *in(const QWidget *parent, const char *name)
    {
        auto *found = inGui([=] { return parent ? parent->findChild<Widget *>(QLatin1String(name)) : nullptr; });
        if (!found)
            qFatal("There is no %s", name);
        return found;
    }
    /** A dialog or popup by its class. */
    QWidget *window(const char *className) const
    {
        return inGui([=]() -> QWidget * { return ofClass(QApplication::allWidgets(), className); });
    }
    static QWidget *ofClass(const QWidgetList &candidates, const char *className)
    {
        for (QWidget *candidate : candidates) {
            if (candidate->inherits(className))
                return candidate;
        }
        qFatal("There is no %s", className);
    }
    /** A window of its own that may not be there yet. In the GUI thread. */
    static QWidget *topLevel(const char *className)
    {
        const QWidgetList all = QApplication::topLevelWidgets();
        const auto found = std::find_if(
            all.begin(), all.end(), [&](const QWidget *candidate) { return candidate->inherits(className); });
        return found == all.end() ? nullptr : *found;
    }
    QWidget *own(const char *name) const { return in(m_window, name); }
    QWidget *panel(int axis) const
    {
        return inGui([=]() -> QWidget * { return m_window->panelBoard().find(Robot::nameOf(axis)); });
    }
    /** The popup of a panel: each panel has one of each class. */
    QWidget *popup(int axis, const char *className) const
    {
        return inGui([=]() -> QWidget * { return ofClass(panel(axis)->findChildren<QWidget *>(), className); });
    }
    QString position(int axis) const { return in<QLabel>(panel(axis), "label_currentPos")->text(); }
    QString log(int axis) const { return in<QTextBrowser>(panel(axis), "textBrowser_operatioInfo")->toPlainText(); }
    bool isRunning(int axis) const
    {
        return in<QLabel>(panel(axis), "label_doingLight")->styleSheet().contains(QLatin1String("greenPot"));
    }
    /** What the mark under a position says. */
    QString trust(int axis) const { return in<QLabel>(panel(axis), "label_trust")->text(); }
    QString stopAllText() const { return in<QPushButton>(m_window, "pushButton_stopAll")->text(); }
    static QMessageBox *box() { return Robot::box(); }
    /** Clicks the button that confirms or cancels the open message box. */
    static void answer(QMessageBox::ButtonRole role)
    {
        if (const QWidget *button = inGui([=]() -> QWidget * { return Robot::boxButton(role); }))
            Guide::click(button);
    }
    static void confirm() { answer(QMessageBox::AcceptRole); }
    static void cancel() { answer(QMessageBox::RejectRole); }
    const char *word(const char *chinese, const char *english) const { return m_bEnglish ? english : chinese; }
    static bool called(const char *function) { return simulator::callCount(function) > 0; }

    // ---- Steps

    void start()
    {
        m_guide.step(
            "start", [] {}, [this] { return m_window->isVisible() && m_window->isActiveWindow(); });
        if (m_bEnglish)
            switchToEnglish();
        m_guide.step(
            "workbench-empty", [this] { Guide::click(own("pushButton_workbench")); },
            [] {
                const QWidget *bench = topLevel("WorkbenchWidget");
                return bench && bench->isActiveWindow() && !in<QPushButton>(bench, "pushButton_pause")->isEnabled();
            });
        closeWorkbench();
        m_guide.step(
            "add-axis-without-device", [this] { Guide::click(own("pushButton_addAsix")); },
            [] { return box() != nullptr; });
        m_guide.step(
            "tip-closed", [] { confirm(); }, [] { return box() == nullptr; });
    }

    void switchToEnglish()
    {
        QWidget *options = window("OptionsWidget");
        m_guide.step(
            "settings-language", [this] { Guide::click(own("pushButton_settings")); },
            [options] { return options->isActiveWindow(); });
        m_guide.step(
            "settings-english", [&] { Guide::clickAt(in(options, "radioButton_en"), QPoint(12, 12)); },
            [&] { return in<QLabel>(options, "label")->text() == QLatin1String("Settings"); });
        m_guide.step(
            "start-english", [&] { Guide::click(in(options, "pushButton_close")); },
            [options] { return !options->isVisible(); });
    }

    /** Sets up a board, an emulated one, from the open connection dialog, and comes back to it. */
    void setUpABoard(QWidget *connection)
    {
        const QTemporaryDir folder;
        emulator::Options options;
        options.settings = {{1, 255},    {22, 1},     {24, 600},  {25, 3000}, {110, 3000},
                            {111, 3000}, {112, 3000}, {120, 500}, {121, 500}, {122, 500}};
        const QString path = folder.filePath("board");
        emulator::SerialPort port(options, 4, path.toStdString());

        m_guide.step(
            "set-up", [&] { Guide::click(in(connection, "label_setUp")); },
            [] {
                const QWidget *active = QApplication::activeWindow();
                return active && active->inherits("ControllerSetupWidget");
            });
        QWidget *setUp = window("ControllerSetupWidget");
        const auto isOn = [=](const char *page) {
            return in<QStackedWidget>(setUp, "stackedWidget_pages")->currentWidget()->objectName() ==
                   QLatin1String(page);
        };
        const auto showTab = [=](int tab) {
            Guide::clickAt(in<QTabWidget>(setUp, "tabWidget_board")->tabBar(), inGui([=] {
                               return in<QTabWidget>(setUp, "tabWidget_board")->tabBar()->tabRect(tab).center();
                           }));
        };
        m_guide.step(
            "set-up-add", [=] { Guide::click(in(setUp, "pushButton_add")); }, [=] { return isOn("page_port"); });
        m_guide.step(
            "set-up-no-port",
            [=] {
                Guide::fill(in(setUp, "comboBox_port"), "/dev/ttyUSB9");
                Guide::click(in(setUp, "pushButton_ask"));
            },
            [=] { return in<QLabel>(setUp, "label_reason")->text().contains(word("没有这个串口", "no such port")); });
        m_guide.step(
            "set-up-board",
            [=] {
                Guide::fill(in(setUp, "comboBox_port"), path);
                Guide::click(in(setUp, "pushButton_ask"));
            },
            [=] { return isOn("page_board"); }, 12000);
        m_guide.step(
            "set-up-stages",
            [=] {
                Guide::fill(in(setUp, "lineEdit_name"), "Room 3");
                for (const char *model : {"comboBox_model1", "comboBox_model2"}) {
                    Guide::click(in(setUp, model));
                    Guide::wait([] { return QApplication::activePopupWidget() != nullptr; }, 5000);
                    for (const char *key : {"Down", "Down", "Return"})
                        Guide::press(key);
                    Guide::wait([] { return QApplication::activePopupWidget() == nullptr; }, 5000);
                }
            },
            [=] { return in<QComboBox>(setUp, "comboBox_model2")->currentText() == "LIN-50"; });
        m_guide.step(
            "set-up-first-move", [=] { showTab(1); }, [=] { return in(setUp, "widget_firstMove")->isVisible(); });
        m_guide.step(
            "set-up-unlocked", [=] { Guide::click(in(setUp, "pushButton_unlock")); },
            [=] { return in(setUp, "pushButton_forward")->isEnabled(); });
        m_guide.step(
            "set-up-moved",
            [=] {
                Guide::hold(in(setUp, "pushButton_forward"), [=] {
                    return in<QLabel>(setUp, "label_moved")->text().contains("1.000");
                });
            },
            [=] { return in(setUp, "pushButton_propose")->isEnabled(); });
        m_guide.step(
            "set-up-proposal",
            [=] {
                Guide::fill(in(setUp, "doubleSpinBox_measured"), "1.25");
                Guide::click(in(setUp, "pushButton_propose"));
            },
            [=] { return in(setUp, "pushButton_write")->isEnabled(); });
        m_guide.step(
            "set-up-written", [=] { Guide::click(in(setUp, "pushButton_write")); },
            [=] { return in<QLabel>(setUp, "label_msg")->text().contains(word("已写入", "has taken")); });
        m_guide.step(
            "set-up-switch",
            [&] {
                showTab(1);
                port.use([](emulator::Board &board) { board.forceSwitch(1, 1); });
            },
            [=] { return in<QLabel>(setUp, "label_switches")->text().contains(word("Y 闭合", "Y closed")); });
        port.use([](emulator::Board &board) { board.forceSwitch(1, -1); });
        m_guide.step(
            "set-up-home", [=] { Guide::click(in(setUp, "pushButton_home")); }, [] { return box() != nullptr; });
        m_guide.step(
            "set-up-homed", [] { confirm(); },
            [=] { return in<QLabel>(setUp, "label_homing")->text().contains(word("已回零", "is homed")); }, 60000);
        m_guide.step(
            "set-up-saved", [=] { Guide::click(in(setUp, "pushButton_save")); },
            [=] { return isOn("page_overview") && in(setUp, "pushButton_restart")->isVisible(); });
        m_guide.step(
            "set-up-closed", [] { Guide::press("Escape"); },
            [=] { return !setUp->isVisible() && connection->isVisible(); });
    }

    void connectController()
    {
        QWidget *dialog = window("ConnectionWidget");
        m_guide.step(
            "connection-dialog", [this] { Guide::click(own("pushButton_connect")); },
            [&] { return dialog->isVisible() && in<QComboBox>(dialog, "comboBox_comList")->count() == 1; });
        setUpABoard(dialog);
        m_guide.step(
            "connected", [&] { Guide::click(in(dialog, "pushButton_connectSerial")); },
            [&] {
                return !dialog->isVisible() && panel(0) && panel(1) && !panel(2) && position(0) == "0.000 mm" &&
                       trust(0) == word("未回零", "not homed");
            });
        m_guide.step(
            "connection-dialog-connected", [this] { Guide::click(own("pushButton_connect")); },
            [&] { return dialog->isVisible() && in(dialog, "pushButton_disConnect")->isEnabled(); });
        m_guide.step(
            "connection-dialog-closed", [] { Guide::press("Escape"); }, [&] { return !dialog->isVisible(); });
    }

    void absoluteMove()
    {
        QWidget *move = popup(0, "MoveParamWidget");
        QWidget *toggle = in(panel(0), "pushButton_moveParam");
        m_guide.step(
            "move-popup", [&] { Guide::click(toggle); }, [&] { return move->isVisible() && move->isActiveWindow(); });
        m_guide.step(
            "move-popup-refused",
            [&] {
                Guide::fill(in(move, "doubleSpinBox_disp"), "600");
                Guide::fill(in(move, "doubleSpinBox_speed"), "0");
                Guide::fill(in(move, "doubleSpinBox_acc"), "100000");
                Guide::click(in(move, "pushButton_confirm"));
            },
            [&] { return box() && box()->text().count('\n') == 3 && move->isVisible(); });
        m_guide.step(
            "move-popup-again", [] { confirm(); },
            [&] { return !box() && move->isVisible() && move->isActiveWindow(); });
        m_guide.step(
            "move-popup-closed-by-its-toggle", [&] { Guide::click(toggle); },
            [&] { return !move->isVisible() && !qobject_cast<QPushButton *>(toggle)->isChecked(); });
        m_guide.step(
            "move-popup-reopened", [&] { Guide::click(toggle); }, [&] { return move->isVisible(); });
        m_guide.step(
            "move-parameters-set",
            [&] {
                Guide::fill(in(move, "doubleSpinBox_disp"), "12.5");
                Guide::fill(in(move, "doubleSpinBox_speed"), "10");
                Guide::fill(in(move, "doubleSpinBox_acc"), "50");
                Guide::press("Return");
            },
            [&] { return !move->isVisible() && called("setTargetPos") && called("setAcceleration"); });
        m_guide.step(
            "moving", [this] { Guide::click(in(panel(0), "pushButton_move")); },
            [this] { return isRunning(0) && called("startMove"); });
        m_guide.step(
            "arrived", [] {}, [this] { return position(0) == "12.500 mm" && !isRunning(0); });
    }

    void jog()
    {
        QWidget *jogPopup = popup(0, "JogParamWidget");
        m_guide.step(
            "jog-popup", [this] { Guide::click(in(panel(0), "pushButton_jogParam")); },
            [&] { return jogPopup->isVisible() && jogPopup->isActiveWindow(); });
        m_guide.step(
            "jog-parameters-set",
            [&] {
                Guide::fill(in(jogPopup, "doubleSpinBox_step"), "2");
                Guide::fill(in(jogPopup, "spinBox_count"), "3");
                Guide::fill(in(jogPopup, "spinBox_delay"), "100");
                Guide::click(in(jogPopup, "pushButton_confirm"));
            },
            [&] { return !jogPopup->isVisible() && called("setJogDelay"); });
        m_guide.step(
            "jogging", [this] { Guide::click(in(panel(0), "pushButton_jogRight")); }, [this] { return isRunning(0); });
        m_guide.step(
            "jogged", [] {}, [this] { return position(0) == "18.500 mm" && !isRunning(0); });
    }

    void drive()
    {
        QWidget *drivePopup = popup(1, "DriveParamWidget");
        m_guide.step(
            "drive-popup", [this] { Guide::click(in(panel(1), "pushButton_driveParam")); },
            [&] { return drivePopup->isVisible() && drivePopup->isActiveWindow(); });
        m_guide.step(
            "drive-parameters-set",
            [&] {
                Guide::fill(in(drivePopup, "doubleSpinBox_disp"), "90");
                Guide::fill(in(drivePopup, "doubleSpinBox_speed"), "25");
                Guide::fill(in(drivePopup, "doubleSpinBox_acc"), "100");
                Guide::click(in(drivePopup, "pushButton_confirm"));
            },
            [&] { return !drivePopup->isVisible() && called("setAcceleration"); });
        m_guide.step(
            "driving", [this] { Guide::click(in(panel(1), "pushButton_driveLeft")); },
            [this] { return isRunning(1) && position(1).startsWith('-') && position(1).endsWith("°"); });
    }

    void homeStopEnable()
    {
        m_guide.step(
            "stopped", [this] { Guide::click(in(panel(1), "pushButton_stop")); },
            [this] { return !isRunning(1) && called("stopRuning"); });
        m_guide.step(
            "homed", [this] { Guide::click(in(panel(1), "pushButton_home")); },
            [this] {
                return !isRunning(1) && position(1) == "0.000 °" &&
                       in<QLabel>(panel(1), "label_originLight")->styleSheet().contains("greenPot");
            },
            15000);
        m_guide.step(
            "power-off", [this] { Guide::click(in(panel(1), "pushButton_enable")); },
            [this] {
                return !in<QPushButton>(panel(1), "pushButton_enable")->isChecked() &&
                       !in(panel(1), "pushButton_move")->isEnabled();
            });
        m_guide.step(
            "power-on", [this] { Guide::click(in(panel(1), "pushButton_enable")); },
            [this] { return in(panel(1), "pushButton_move")->isEnabled(); });
    }

    void stopAll()
    {
        const QString ready = inGui([this] { return stopAllText(); });
        m_guide.step(
            "stop-all-bright", [this] { Guide::click(in(panel(1), "pushButton_driveLeft")); },
            [this] { return isRunning(1) && own("pushButton_stopAll")->property("moving").toBool(); });
        m_guide.step(
            "stop-all-under-a-box", [this] { Guide::click(in(panel(1), "pushButton_remove")); },
            [this] { return box() != nullptr && isRunning(1); });
        m_guide.step(
            "stop-all-by-key", [] { Guide::press("F12"); },
            [this] { return box() != nullptr && !isRunning(1) && called("stopRuning"); });
        m_guide.step(
            "stop-all-dim", [] { cancel(); },
            [this] { return !box() && !own("pushButton_stopAll")->property("moving").toBool(); });
        m_guide.step(
            "no-answer", [] { simulator::hangCall("getCurrentPos"); },
            [this] { return trust(1).contains(word("秒无应答", "no answer for")); });
        m_guide.step(
            "stop-all-stopping", [this] { Guide::click(own("pushButton_stopAll")); },
            [this] { return stopAllText() == word("正在停止…", "Stopping…"); });
        m_guide.step(
            "stop-all-through", [] { simulator::releaseHung(); },
            [&] { return stopAllText() == ready && trust(1).startsWith(word("已回零", "homed")); });
    }

    void limits()
    {
        simulator::setPosition(device, 0, 47);
        QWidget *drivePopup = popup(0, "DriveParamWidget");
        m_guide.step(
            "drive-popup-for-limit", [this] { Guide::click(in(panel(0), "pushButton_driveParam")); },
            [&] { return drivePopup->isActiveWindow(); });
        m_guide.step(
            "limit",
            [&] {
                Guide::fill(in(drivePopup, "doubleSpinBox_disp"), "50");
                Guide::press("Return");
                Guide::click(in(panel(0), "pushButton_driveRight"));
            },
            [this] {
                return position(0) == "50.000 mm" && log(0).contains(word("已到达正限位！", "Positive limit reached!"));
            });
        m_guide.step(
            "opto-fault", [] { simulator::setOptoFault(device, 0, simulator::Opto::Origin, true); },
            [this] { return log(0).contains(word("原点限位光耦失效 ", "Origin limit photocoupler failed")); });
        simulator::setOptoFault(device, 0, simulator::Opto::Origin, false);
        simulator::setPosition(device, 0, 0);
    }

    void loopRun()
    {
        QWidget *loop = popup(0, "CycleOperationWidget");
        m_guide.step(
            "loop-run-dialog", [this] { Guide::click(in(panel(0), "pushButton_circle")); },
            [&] { return loop->isVisible(); });
        m_guide.step(
            "loop-run-refused",
            [&] {
                Guide::fill(in(loop, "spinBox_time"), "0");
                Guide::click(in(loop, "pushButton_right"));
            },
            [] { return box() != nullptr; });
        m_guide.step(
            "loop-run-again", [] { confirm(); }, [] { return !box(); });
        m_guide.step(
            "loop-running",
            [&] {
                Guide::fill(in(loop, "doubleSpinBox_relativeDisp"), "3");
                Guide::fill(in(loop, "doubleSpinBox_speed"), "10");
                Guide::fill(in(loop, "doubleSpinBox_acc"), "100");
                Guide::fill(in(loop, "spinBox_time"), "3");
                Guide::fill(in(loop, "spinBox_delay"), "200");
                Guide::click(in(loop, "pushButton_right"));
            },
            [this] { return log(0).contains(word("当前运行次数 1 运行中", "current run count 1 Doing")); });
        m_guide.step(
            "loop-close-asks", [&] { Guide::click(in(loop, "pushButton_close")); }, [] { return box() != nullptr; });
        m_guide.step(
            "loop-goes-on", [] { cancel(); }, [&] { return !box() && loop->isVisible(); });
        m_guide.step(
            "loop-completed", [] {},
            [this] {
                return log(0).contains(word("当前运行次数 3 运行完成", "current run count 3 Operation completed"));
            },
            15000);
        m_guide.step(
            "loop-run-closed", [&] { Guide::click(in(loop, "pushButton_close")); },
            [&] { return !loop->isVisible() && called("stopRuning"); });
    }

    void addAxis()
    {
        QWidget *dialog = window("AddControlsWidget");
        m_guide.step(
            "add-axis", [this] { Guide::click(own("pushButton_addAsix")); },
            [&] { return dialog->isVisible() && in<QComboBox>(dialog, "comboBox_models")->count() >= 6; });
        m_guide.step(
            "add-axis-lifting", [&] { Guide::click(in(dialog, "pushButton_liftingControl")); },
            [&] { return in<QPushButton>(dialog, "pushButton_liftingControl")->isChecked(); });
        m_guide.step(
            "add-axis-models", [&] { Guide::click(in(dialog, "comboBox_models")); },
            [] { return QApplication::activePopupWidget() != nullptr; });
        m_guide.step(
            "add-axis-model-chosen",
            [] {
                Guide::press("Down");
                Guide::press("Return");
            },
            [&] {
                return !QApplication::activePopupWidget() &&
                       in<QComboBox>(dialog, "comboBox_models")->currentIndex() == 1;
            });
        m_guide.step(
            "three-panels", [&] { Guide::click(in(dialog, "pushButton_confirm")); },
            [&] { return !dialog->isVisible() && panel(2) && called("setMotorParams") && position(2) != "---"; });
        m_guide.step(
            "no-axis-left", [this] { Guide::click(own("pushButton_addAsix")); }, [] { return box() != nullptr; });
        m_guide.step(
            "no-axis-left-closed", [] { confirm(); }, [] { return !box(); });
        m_guide.step(
            "close-panel-asks", [this] { Guide::click(in(panel(1), "pushButton_remove")); },
            [] { return box() != nullptr; });
        m_guide.step(
            "panel-kept", [] { cancel(); }, [this] { return !box() && panel(1); });
        m_guide.step(
            "panel-closed",
            [this] {
                Guide::click(in(panel(1), "pushButton_remove"));
                Guide::wait([] { return box() != nullptr; }, 2000);
                confirm();
            },
            [this] { return !box() && !panel(1) && m_window->axisTabs().count() == 2; });
    }

    void joystick()
    {
        auto *rocker = qobject_cast<QRadioButton *>(own("radioButton_Rocker"));
        m_guide.step(
            "joystick-plugged-in", [] { simulator::setJoystick(device, true, 4); },
            [&] { return rocker->isVisible() && rocker->isEnabled(); });
        m_guide.step(
            "joystick-mode", [&] { Guide::clickAt(rocker, QPoint(12, 12)); },
            [&] { return rocker->isChecked() && in(panel(0), "label_rockerSpeed")->isVisible() && isRunning(0); });
        m_guide.step(
            "joystick-at-rest", [] { simulator::setJoystick(device, true, 0); }, [this] { return !isRunning(0); });
        m_guide.step(
            "joystick-unplugged", [] { simulator::setJoystick(device, false); },
            [&] { return !rocker->isVisible() && in(panel(0), "pushButton_move")->isVisible(); });
    }

    void settings()
    {
        QWidget *options = window("OptionsWidget");
        m_guide.step(
            "settings", [this] { Guide::click(own("pushButton_settings")); }, [&] { return options->isVisible(); });
        m_guide.step(
            "settings-trigger", [&] { Guide::click(in(options, "pushButton_trigger")); },
            [&] { return in(options, "page_trigger")->isVisible(); });
        m_guide.step(
            "settings-caution", [&] { Guide::click(in(options, "pushButton_motorParam")); },
            [] { return box() != nullptr; });
        m_guide.step(
            "settings-motor", [] { confirm(); }, [&] { return !box() && in(options, "page_motorParam")->isVisible(); });
        m_guide.step(
            "settings-motor-read", [&] { Guide::click(in(options, "pushButton_ReadParam")); },
            [] { return called("getMotorParams"); });
        m_guide.step(
            "settings-compensation", [&] { Guide::click(in(options, "pushButton_posConpen")); },
            [&] { return in(options, "page_posConpen")->isVisible(); });
        m_guide.step(
            "settings-closed",
            [&] {
                Guide::click(in(options, "pushButton_language"));
                Guide::click(in(options, "pushButton_close"));
            },
            [&] { return !options->isVisible(); });
    }

    void console()
    {
        QWidget *debug = window("DebugWidget");
        auto *result = in<QLineEdit>(debug, "lineEdit_result");
        m_guide.step(
            "console", [this] { Guide::click(own("pushButton_debug")); },
            [&] { return debug->isVisible() && debug->isActiveWindow(); });
        m_guide.step(
            "console-speed",
            [&] {
                Guide::fill(in(debug, "lineEdit_input"), "7.5");
                Guide::click(in(debug, "pushButton_8"));
                Guide::click(in(debug, "pushButton_29"));
                Guide::click(in(debug, "pushButton_28"));
            },
            [&] { return called("setSpeed") && called("getAcceleration") && result->text() == "7.5"; });
        auto *pages = in<QTabWidget>(debug, "tabWidget");
        for (int page = 1; page < inGui([&] { return pages->count(); }); ++page) {
            const QRect tab = inGui([&] { return pages->tabBar()->tabRect(page); });
            m_guide.step(
                QStringLiteral("console-page-%1").arg(page),
                [&] { Guide::clickAt(inGui([&] { return pages->tabBar(); }), tab.center()); },
                [&] { return pages->currentIndex() == page; });
        }
        m_guide.step(
            "console-closed", [] { Guide::press("alt+F4"); }, [&] { return !debug->isVisible(); });
    }

    void workbench()
    {
        m_guide.step(
            "workbench-recorder",
            [this] {
                Guide::click(in(panel(0), "pushButton_driveRight"));
                Guide::click(own("pushButton_workbench"));
            },
            [] {
                const QWidget *bench = topLevel("WorkbenchWidget");
                return bench && bench->isActiveWindow() && bench->findChild<RecorderPlot *>()->isLive() &&
                       bench->findChildren<AxisRow *>().size() == 3;
            });
        QWidget *bench = inGui([] { return topLevel("WorkbenchWidget"); });
        auto *plot = in<RecorderPlot>(bench, "plot");
        m_guide.step(
            "workbench-recorder-cursor",
            [&] {
                Guide::click(in(bench, "pushButton_range10s"));
                Guide::click(in(bench, "pushButton_pause"));
                Guide::click(plot);
            },
            [&] { return !plot->isLive() && plot->cursorSample(0); });
        m_guide.step(
            "workbench-recorder-zoomed", [] { Guide::press("plus"); }, [&] { return plot->span() < 10000000; });
        m_guide.step(
            "workbench-recorder-live",
            [&] {
                Guide::click(in(bench, "pushButton_rate100"));
                Guide::click(in(bench, "pushButton_range10s"));
                Guide::click(in(bench, "pushButton_pause"));
                Guide::press("F12"); // parameters are written to no axis that moves
            },
            [&] {
                return plot->isLive() && !isRunning(0) && in(bench, "pushButton_rate100")->property("checked").toBool();
            });
        inGui([&] { in<QPushButton>(bench, "pushButton_rate10")->click(); });
        sequence(bench);
        const auto *status = in<QLabel>(bench, "label_status");
        const auto *list = in<QTableWidget>(bench, "tableWidget_snapshots");
        m_guide.step(
            "workbench-history-damaged",
            [&] {
                QFile file(historyFolder() + "/LOST-Axis1.json");
                if (!file.open(QIODevice::WriteOnly) || file.write("{\"format\":") < 0)
                    qFatal("There is no place for a damaged file");
                file.close();
                inGui([&] { in<QTabBar>(bench, "tabBar")->setCurrentIndex(2); });
            },
            [&] { return status->isVisible() && status->text().contains(word("已损坏", "damaged")); });
        m_guide.step(
            "workbench-history",
            [&] { inGui([&] { in<QTableWidget>(bench, "tableWidget_snapshots")->setCurrentCell(1, 0); }); },
            [&] { return status->text().contains(word("项不同", "fields differ")); });
        const int count = inGui([&] { return list->rowCount(); });
        m_guide.step(
            "workbench-snapshot", [&] { Guide::click(in(bench, "pushButton_snapshot")); },
            [&] { return list->rowCount() == count + 3; });
        m_guide.step(
            "workbench-differences",
            [&] {
                MotorParams params = {};
                SerialComDev::instance()->getMotorParams(0, params);
                params.pulseOneCircle += 200;
                params.restoreSpeed += 3;
                SerialComDev::instance()->setMotorParams(0, params);
                Guide::wait([&] { return list->rowCount() == count + 4; }, 5000);
                inGui([&] { in<QTableWidget>(bench, "tableWidget_snapshots")->setCurrentCell(3, 0); });
            },
            [&] { return status->text().contains(word("2 项不同", "2 of")); });
        m_guide.step(
            "workbench-changed-only", [&] { Guide::click(in(bench, "checkBox_changedOnly")); },
            [&] { return in<QTableWidget>(bench, "tableWidget_differences")->isRowHidden(0); });
        m_guide.step(
            "workbench-restore", [&] { Guide::click(in(bench, "pushButton_restore")); },
            [] { return box() != nullptr; });
        m_guide.step(
            "workbench-restored", [] { confirm(); },
            [&] { return status->text().contains(word("已恢复", "Restored")); });
        m_guide.step(
            "workbench-diagnostics",
            [&] {
                Guide::click(in(bench, "pushButton_diagnostics"));
                Guide::wait([] { return qobject_cast<QFileDialog *>(QApplication::activeModalWidget()); }, 5000);
                Guide::type(historyFolder() + "/diagnostics.zip");
                // The first one may go to the list of names that the dialog proposes.
                const auto isGone = [] { return !qobject_cast<QFileDialog *>(QApplication::activeModalWidget()); };
                for (int k = 0; k < 5 && !inGui(isGone); ++k) {
                    Guide::press("Return");
                    Guide::wait(isGone, 2000);
                }
            },
            [&] { return box() && QFileInfo(historyFolder() + "/diagnostics.zip").size() > 0; });
        confirm();
        closeWorkbench();
        m_guide.step(
            "sequence-notice-gone", [this] { Guide::click(own("pushButton_notice")); },
            [this] { return !own("pushButton_notice")->isVisible(); });
    }

    void sequence(QWidget *bench)
    {
        auto *page = inGui([bench] { return bench->findChild<SequenceWidget *>(); });
        const auto runner = [] { return &ControlSession::instance()->sequences(); };
        m_guide.step(
            "workbench-sequence-empty", [&] { inGui([&] { in<QTabBar>(bench, "tabBar")->setCurrentIndex(1); }); },
            [&] { return page->isVisible(); });
        m_guide.step(
            "workbench-position-named",
            [&] {
                // It takes the positions of axes that answer, which they may not have done while a picture was saved.
                const auto isThere = [&] { return !page->document().positions.isEmpty(); };
                for (int k = 0; k < 10 && !inGui(isThere); ++k) {
                    Guide::click(in(bench, "pushButton_addPosition"));
                    Guide::wait(isThere, 1000);
                }
            },
            [&] { return in<QTableView>(bench, "tableView_positions")->findChild<QLineEdit *>(); });
        m_guide.step(
            "workbench-position",
            [] {
                Guide::type(QStringLiteral("Sample A"));
                Guide::press("Return");
            },
            [&] {
                const Positions positions = page->document().positions;
                return !positions.isEmpty() && positions.first().name == QLatin1String("Sample A");
            });
        m_guide.step(
            "workbench-manual-move",
            [&] {
                const auto axis = ControlSession::instance()->axis(0);
                const double from = axis->lastPosition()->value;
                Guide::hold(in(bench, "pushButton_holdPositive"), [&] { return axis->lastPosition()->value > from; });
            },
            [&] { return !runner()->isActive() && runner()->lastEnd().reason == SequenceEnd::Stopped; });
        const auto ask = [&](const char *name, int action, const char *dialog) {
            m_guide.step(
                QLatin1String(name),
                [&] {
                    inGui(
                        [&] { in<QPushButton>(bench, "pushButton_addStep")->menu()->actions().at(action)->trigger(); });
                },
                [dialog] { return topLevel(dialog) && topLevel(dialog)->isActiveWindow(); });
            Guide::press("Escape");
            Guide::wait([bench] { return bench->isActiveWindow(); }, 5000);
        };
        ask("workbench-step", 0, "SequenceStepDialog");
        ask("workbench-scan", 1, "ScanDialog");
        m_guide.step(
            "workbench-sequence",
            [&] {
                inGui([&] {
                    SequenceDocument document = page->document();
                    const double here = document.positions.first().axes.value(0);
                    document.positions.append({QStringLiteral("Sample B"), {{0, here + 1}, {2, 1}}});
                    document.positions.append({QStringLiteral("Load"), {{0, 0}, {1, 0}, {2, 0}}});
                    document.sequence.name = QStringLiteral("Turn and measure");
                    SequenceStep to;
                    to.kind = SequenceStep::GoTo;
                    to.text = QStringLiteral("Sample A");
                    SequenceStep by;
                    by.kind = SequenceStep::MoveBy;
                    by.value = 2;
                    by.speed = 0.5;
                    by.wait = 0.2;
                    SequenceStep again;
                    again.kind = SequenceStep::Repeat;
                    again.from = 1;
                    again.count = 3;
                    SequenceStep home;
                    home.kind = SequenceStep::Home;
                    home.axis = 1;
                    document.sequence.steps = {to, by, again, to, home};
                    page->change(document);
                });
            },
            [&] { return in<QTableView>(bench, "tableView_steps")->isVisible(); });
        m_guide.step(
            "workbench-sequence-checked", [&] { Guide::click(in(bench, "pushButton_check")); },
            [] { return box() != nullptr; });
        confirm();
        const auto run = [&] {
            Guide::click(in(bench, "pushButton_run"));
            // An axis that is not homed is asked about.
            Guide::wait([&] { return box() || runner()->isActive(); }, 5000);
            if (inGui([] { return box() != nullptr; }))
                confirm();
        };
        m_guide.step(
            "workbench-sequence-running", run, [&] { return runner()->line() == 1 && runner()->progress() > 0.1; });
        m_guide.step(
            "workbench-sequence-stopped", [] { Guide::press("F12"); }, [&] { return !runner()->isActive(); });
        const auto isIn = [&](SequenceRunner::State state) { return runner()->state() == state; };
        const auto stop = [&] {
            Guide::press("F12");
            Guide::wait([&] { return !runner()->isActive(); }, 5000);
        };
        m_guide.step(
            "workbench-sequence-paused",
            [&] {
                inGui([&] {
                    SequenceDocument document = page->document();
                    SequenceStep ask;
                    ask.kind = SequenceStep::Ask;
                    ask.text = QStringLiteral("Lamp on?");
                    document.sequence.steps.prepend(ask);
                    document.sequence.steps[3].from = 2;
                    page->change(document);
                });
                run();
                Guide::wait([&] { return isIn(SequenceRunner::State::Asking); }, 5000);
                Guide::click(in(bench, "pushButton_stepRun"));
            },
            [&] { return isIn(SequenceRunner::State::Paused); });
        m_guide.step(
            "workbench-sequence-asking",
            [&] {
                stop();
                Guide::click(in(bench, "pushButton_rewind"));
                run();
            },
            [&] { return isIn(SequenceRunner::State::Asking); });
        m_guide.step(
            "workbench-recorder-steps",
            [&] {
                stop();
                inGui([&] { in<QTabBar>(bench, "tabBar")->setCurrentIndex(0); });
            },
            [&] { return in<QWidget>(bench, "listView_events")->isVisible(); });
    }

    static QString historyFolder()
    {
        return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + "/parameterHistory";
    }

    void closeWorkbench()
    {
        Guide::press("Escape");
        const auto closed = [this] { return !topLevel("WorkbenchWidget")->isVisible() && m_window->isActiveWindow(); };
        if (!Guide::wait(closed, 5000))
            qFatal("The workbench does not close");
    }

    void helpAndWindow()
    {
        QWidget *help = window("HelpWidget");
        m_guide.step(
            "help", [this] { Guide::click(own("pushButton_help")); }, [&] { return help->isVisible(); });
        m_guide.step(
            "help-closed", [] { Guide::press("Escape"); }, [&] { return !help->isVisible(); });
        m_guide.step(
            "full-screen", [this] { Guide::click(own("pushButton_showMax")); },
            [this] { return m_window->isFullScreen(); });
        m_guide.step(
            "normal-again", [this] { Guide::click(own("pushButton_showMax")); },
            [this] { return !m_window->isFullScreen(); });
        const QPoint before = inGui([this] { return m_window->pos(); });
        m_guide.step(
            "dragged", [this] { Guide::drag(own("widget_titleBar"), QPoint(700, 30), QPoint(40, -30)); },
            [&] { return m_window->pos() == before + QPoint(40, -30); });
        const QSize size = inGui([this] { return m_window->size(); });
        m_guide.step(
            "resized", [&] { Guide::drag(m_window, QPoint(1, size.height() / 2), QPoint(-30, 0)); },
            [&] { return m_window->size() == size + QSize(30, 0); });
    }

    void lostLink()
    {
        m_guide.step(
            "link-lost", [] { simulator::loseLink(device); },
            [this] {
                return log(0).contains(word("读取当前位置出错", "Error reading current location")) &&
                       trust(0).contains(word("起连接中断", "link lost since"));
            });
        m_guide.step(
            "workbench-link-lost",
            [this] {
                Guide::click(own("pushButton_workbench"));
                QWidget *bench = inGui([] { return topLevel("WorkbenchWidget"); });
                inGui([=] { in<QTabBar>(bench, "tabBar")->setCurrentIndex(0); });
            },
            [this] {
                const auto *events = topLevel("WorkbenchWidget")->findChild<EventList *>();
                return !events->texts().isEmpty() &&
                       events->texts().constFirst().contains(word("连接中断", "ink lost"));
            });
        closeWorkbench();
        m_guide.step(
            "link-back",
            [] {
                simulator::restoreLink(device);
                simulator::setPosition(device, 0, 1.25);
            },
            [this] { return position(0) == "1.250 mm" && trust(0).contains(word("连接曾中断", "link was lost at")); });
    }

    void disconnectAndReconnect()
    {
        QWidget *dialog = window("ConnectionWidget");
        m_guide.step(
            "disconnected",
            [&] {
                Guide::click(own("pushButton_connect"));
                Guide::wait([&] { return dialog->isActiveWindow(); }, 2000);
                Guide::click(in(dialog, "pushButton_disConnect"));
            },
            [&] { return m_window->panelBoard().count() == 0 && m_window->axisTabs().count() == 0; });
        m_guide.step(
            "connected-again", [&] { Guide::click(in(dialog, "pushButton_connectSerial")); },
            [&] { return !dialog->isVisible() && m_window->panelBoard().count() == 2; });
    }

    void leave()
    {
        m_guide.step(
            "left", [this] { Guide::click(own("pushButton_close")); },
            [] { return called("closeTSDevice") && called("removeDev"); });
        if (const std::string overlap = simulator::overlap(); !overlap.empty())
            qFatal("Library calls were made at the same time: %s", overlap.c_str());
    }

    MoverWidget *m_window;
    Guide m_guide;
    bool m_bEnglish;
};

} // namespace

int main(int argc, char *argv[])
{
    // Not the user's own settings, nor those of another tour.
    const QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    StartUp::prepareApplication();
    const auto application = StartUp::makeApplication(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption language("language", "The language to show: zh or en.", "zh|en", "zh");
    parser.addOption(language);
    parser.addPositionalArgument("DIRECTORY", "Where the pictures go.");
    parser.process(*application);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);

    // Each tour starts like the first start after the installation.
    QFile::remove(QCoreApplication::applicationDirPath() + "/appConfig.ini");
    simulator::reset();
    simulator::useRealClock();
    StartUp::setNumberFormat();
    StartUp::installFont(QCoreApplication::applicationDirPath() + "/font.ttf");
    StartUp::installStyleSheet(":/style.qss");

    int failures = 0;
    {
        MoverWidget window;
        const ScreenFit fit(&window);
        const auto history = ParameterHistory::instance();
        window.show();
        const std::unique_ptr<QThread> script(QThread::create([&] {
            failures =
                Tour(&window, QDir(parser.positionalArguments().constFirst()), parser.value(language) == "en").take();
        }));
        // Also when its last step, which closes the window, has failed.
        QObject::connect(script.get(), &QThread::finished, application.get(), &QApplication::quit);
        script->start();
        QApplication::exec();
        // The tour still looks at the window that it has closed.
        while (!script->wait(20))
            QCoreApplication::processEvents();
    }
    SerialComDev::endThread(5000);
    QFile::remove(QCoreApplication::applicationDirPath() + "/appConfig.ini");
    QTextStream(stdout) << (failures == 0 ? QStringLiteral("The tour went as it should.")
                                          : QStringLiteral("%1 steps did not end as they should.").arg(failures))
                        << '\n';
    return qMin(failures, 125);
}
