// SPDX-License-Identifier: MIT
// The whole program in front of a simulated controller, with a user inside: it is brought into a state and then left.
//     drivenProgram STATE WAY
//     STATE: idle, connected, moving, asking (under a message box), writing (under the console's box, which holds the
//            library), hanging (the library does not come back), waiting (and the windows wait for it), typing (a
//            target position with a decimal comma), reading (every file that it reads, as often as READS in the
//            environment says; it tells what it has read), refused (the motion library cannot be used: what the box
//            says)
//     WAY:   button, close (Alt+F4), session (its end), code (the event loop ends with code 7), restart (it starts
//            again, and then only writes the file that RESTARTED in the environment names), nothing (somebody else
//            sends a signal)
// It writes "ready" before it is left, and what it finds on the way there.

#include "app/StartUp.h"
#include "axis/MoveParamWidget.h"
#include "axis/MoverControlWidget.h"
#include "console/DebugWidget.h"
#include "device/SerialComDev.h"
#include "models/AddControlsWidget.h"
#include "settings/OptionsWidget.h"
#include "shell/ConnectionWidget.h"
#include "shell/HelpWidget.h"
#include "shell/MoverWidget.h"
#include "support/Robot.h"
#include "support/TopLevel.h"
#include "controllers/simulated/SimulatorControl.h"

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QStandardPaths>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <cstdio>

namespace {

std::string state;
std::string way;

MoverWidget *mainWindow()
{
    return topLevel<MoverWidget>();
}

QPushButton *button(QWidget *parent, const char *name)
{
    return parent->findChild<QPushButton *>(QLatin1String(name));
}

void click(QPushButton *button)
{
    QTest::mouseClick(button, Qt::LeftButton);
}

void say(const std::string &line)
{
    std::puts(line.c_str());
    std::fflush(stdout);
}

void leave(MoverWidget *window)
{
    say("ready");
    if (way == "button")
        click(button(window->findChild<QWidget *>(QStringLiteral("widget_titleBar")), "pushButton_close"));
    else if (way == "close")
        window->close();
    else if (way == "session")
        QApplication::closeAllWindows();
    else if (way == "code")
        QCoreApplication::exit(7);
    else if (way == "restart")
        emit window->findChild<ConnectionWidget *>()->signal_restart();
}

void connectController(MoverWidget *window)
{
    Robot(window, [](QAbstractButton *each) { QTest::mouseClick(each, Qt::LeftButton); }).connectTo(1001);
}

QMessageBox *openBox()
{
    return qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
}

DebugWidget *openConsole(MoverWidget *window)
{
    click(button(window, "pushButton_debug"));
    const QWidgetList windows = QApplication::topLevelWidgets();
    return qobject_cast<DebugWidget *>(
        *std::find_if(windows.begin(), windows.end(), [](QWidget *each) { return qobject_cast<DebugWidget *>(each); }));
}

/** Opens and uses whatever reads a file, and tells what came of it. */
void readFiles(MoverWidget *window)
{
    auto *options = window->findChild<OptionsWidget *>();
    auto *add = window->findChild<AddControlsWidget *>();
    auto *models = add->findChild<QComboBox *>(QStringLiteral("comboBox_models"));
    const auto language = [options](const char *radioButton) {
        options->findChild<QRadioButton *>(QLatin1String(radioButton))->setChecked(true);
        QCoreApplication::processEvents();
    };
    const bool startedInEnglish = options->language() == 1;
    QString title;
    for (int k = qMax(1, qEnvironmentVariableIntValue("READS")); k > 0; --k) {
        language("radioButton_cn");
        language("radioButton_en");
        title = options->findChild<QLabel *>(QStringLiteral("label"))->text();
        click(button(window, "pushButton_addAsix"));
        add->hide();
        click(button(window, "pushButton_help"));
        window->findChild<HelpWidget *>()->hide();
        openConsole(window)->hide();
    }
    language("radioButton_cn");
    QFile status(QStringLiteral("/proc/self/status"));
    QByteArray peak;
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith("VmHWM:"))
                peak = line.mid(6).simplified();
        }
    }
    say("english: " + std::to_string(startedInEnglish));
    say("title: " + title.toStdString());
    say("models: " + std::to_string(models->count()));
    say("font size: " + std::to_string(QApplication::font().pixelSize()));
    say("peak: " + peak.toStdString());
}

/** Runs `then` in the event loop as soon as `condition` holds. */
template <typename Condition, typename Function>
void when(Condition condition, Function then)
{
    auto *poll = new QTimer(qApp);
    poll->callOnTimeout([poll, condition, then] {
        if (!condition())
            return;
        poll->deleteLater();
        poll->stop();
        then();
    });
    poll->start(5);
}

void drive()
{
    MoverWidget *window = mainWindow();
    const auto leaveNow = [window] { leave(window); };
    if (state != "idle")
        connectController(window);
    if (state == "moving") {
        MoverControlWidget *panel = window->panelBoard().find(QStringLiteral("Axis1"));
        when([] { return simulator::callCount("startDrive") > 0; }, leaveNow);
        click(button(panel, "pushButton_driveRight"));
    } else if (state == "asking") {
        when([] { return openBox() != nullptr; }, leaveNow);
        window->slot_showTipMessage(QStringLiteral("text"));
    } else if (state == "writing") {
        DebugWidget *console = openConsole(window);
        when([] { return openBox() != nullptr; }, leaveNow);
        click(button(console, "pushButton_readMorotParams"));
        click(button(console, "pushButton_writeMotorParams"));
    } else if (state == "hanging") {
        simulator::hangCall("getCurrentPos");
        when([] { return simulator::waitUntilHanging(0); }, leaveNow);
    } else if (state == "waiting") {
        simulator::hangCall("getDevAxisCount");
        leaveNow();
        click(button(window, "pushButton_settings"));
    } else if (state == "reading") {
        readFiles(window);
        leaveNow();
    } else if (state == "typing") {
        MoverControlWidget *panel = window->panelBoard().find(QStringLiteral("Axis1"));
        click(button(panel, "pushButton_moveParam"));
        auto *popup = panel->findChild<MoveParamWidget *>();
        auto *target = popup->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_disp"));
        target->selectAll();
        QTest::keyClicks(target, QStringLiteral("2,25"));
        when(
            [] { return simulator::callCount("setTargetPos") > 0; },
            [leaveNow] {
                for (const simulator::Call &call : simulator::journal()) {
                    if (call.function == "setTargetPos")
                        say("setTargetPos " + call.arguments);
                }
                leaveNow();
            });
        click(button(popup, "pushButton_confirm"));
    } else {
        leaveNow();
    }
}

/**
 * Tells what has been done when the main window is made, which polishes it, and when it is shown for the first time; in
 * between also that it is to be shown larger or smaller than normal.
 */
class FirstShow final : public QObject
{
public:
    using QObject::QObject;
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (!qobject_cast<MoverWidget *>(object))
            return false;
        switch (event->type()) {
        case QEvent::Polish:
            tell("made");
            break;
        case QEvent::WindowStateChange:
            tell("changed");
            break;
        case QEvent::Show:
            tell("shown");
            qApp->removeEventFilter(this);
            break;
        default:
            break;
        }
        return false;
    }

private:
    static void tell(const std::string &what)
    {
        std::string calls;
        for (const simulator::Call &call : simulator::journal())
            calls += ' ' + call.function;
        say(what + " after" + calls + (qApp->styleSheet().isEmpty() ? "" : ", styled") + ", numbers as in " +
            QLocale().name().toStdString());
    }
};

/** Runs when the application object has been created, long before its event loop. */
void waitForTheEventLoop()
{
    QStandardPaths::setTestModeEnabled(true);
    simulator::reset();
    simulator::useRealClock();
    qApp->installEventFilter(new FirstShow(qApp));
    when([] { return mainWindow() && mainWindow()->isVisible(); }, drive);
    if (state == "refused")
        when(
            [] { return openBox() != nullptr; },
            [] {
                say(openBox()->text().toStdString());
                openBox()->reject();
            });
}
Q_COREAPP_STARTUP_FUNCTION(waitForTheEventLoop)

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 1 && qEnvironmentVariableIsSet("RESTARTED"))
        return QFile(qEnvironmentVariable("RESTARTED")).open(QIODevice::WriteOnly) ? 0 : 98;
    if (argc != 3)
        return 99;
    state = argv[1];
    way = argv[2];
    return StartUp::run(1, argv);
}
