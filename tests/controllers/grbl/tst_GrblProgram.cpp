// SPDX-License-Identifier: MIT
#include "axis/CycleOperationWidget.h"
#include "axis/JogParamWidget.h"
#include "axis/MoveParamWidget.h"
#include "console/ConsoleCommands.h"
#include "console/DebugWidget.h"
#include "controllers/emulator/SerialPort.h"
#include "device/LibraryLock.h"
#include "device/MotionLibrary.h"
#include "faults/ShortRun.h"
#include "session/ControlAxis.h"
#include "session/ControlSession.h"
#include "session/Recorder.h"
#include "shell/OpenWindow.h"
#include "support/MessageBoxes.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <cstring>

/**
 * The program on an emulated board: once through what a user does, and what befalls a board while the user does it. The
 * position that is shown is that of the counted steps, or the axis is not homed.
 */
class tst_GrblProgram : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void tour();
    void idle_data() { faults(); }
    void idle()
    {
        strikes([] {});
    }
    void moving_data() { faults(); }
    void moving();
    void loopRun_data() { faults(); }
    void loopRun();
    void settingsOpen_data() { faults(); }
    void settingsOpen();
    void consoleOpen_data() { faults(); }
    void consoleOpen();

private:
    static constexpr int s_id = 2001;
    static constexpr int s_limitMs = 15000;
    // How long the windows may stand still: opening a board that does not restart by itself takes 4 s.
    static constexpr int s_stallMs = 6000;

    void faults();
    void strikes(const std::function<void()> &situation);
    void connectAndHome();
    void press(QWidget *parent, const char *name)
    {
        parent->findChild<QAbstractButton *>(QLatin1String(name))->click();
    }
    template <typename Field>
    void fill(QWidget *parent, const char *name, double value)
    {
        parent->findChild<Field *>(QLatin1String(name))->setValue(value);
    }
    MoverControlWidget *panel(int axis) { return m_program->panel(axis); }
    void sendMove(int axis, double target)
    {
        auto *popup = panel(axis)->findChild<MoveParamWidget *>();
        popup->open();
        fill<QDoubleSpinBox>(popup, "doubleSpinBox_disp", target);
        fill<QDoubleSpinBox>(popup, "doubleSpinBox_speed", 20);
        fill<QDoubleSpinBox>(popup, "doubleSpinBox_acc", 80);
        press(popup, "pushButton_confirm");
        popup->hide();
        press(panel(axis), "pushButton_move");
    }
    /** Its buttons, which a press would else not move. */
    bool canMove(int axis)
    {
        return panel(axis)->findChild<QPushButton *>(QStringLiteral("pushButton_move"))->isEnabled();
    }
    QString shown(int axis)
    {
        return panel(axis) ? panel(axis)->findChild<QLabel *>(QStringLiteral("label_currentPos"))->text() : QString();
    }
    /** Where the stage is, by its steps. */
    QString counted(int axis)
    {
        const double mm = m_port->use([axis](const emulator::Board &board) { return board.positionMm(axis); });
        return QString::number(mm + 40, 'f', 3) + QStringLiteral(" mm");
    }
    bool says(int axis, const QString &text) { return panel(axis) && logOf(panel(axis)).contains(text); }
    DebugWidget *console()
    {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (auto *console = qobject_cast<DebugWidget *>(window))
                return console;
        }
        return nullptr;
    }

    QTemporaryDir m_folder;
    std::unique_ptr<emulator::SerialPort> m_port;
    std::unique_ptr<MessageBoxes> m_boxes;
    std::unique_ptr<DebugLog> m_log;
    std::unique_ptr<OpenWindow> m_program;
};

void tst_GrblProgram::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    emulator::Options options;
    options.storeTime = 0.001;
    options.settings = {{1, 255}, {10, 3}, {22, 1}, {23, 7}, {24, 600}, {25, 2000}, {26, 5}, {27, 1}};
    for (int i = 0; i < 3; ++i) {
        options.stages.push_back({-42, 2, -38});
        options.settings[110 + i] = 2000;
        options.settings[120 + i] = 1000;
        options.settings[130 + i] = 40;
    }
    m_port = std::make_unique<emulator::SerialPort>(options, 1, m_folder.filePath("board").toStdString());
    QByteArray axes;
    for (const char letter : {'X', 'Y', 'Z'})
        axes += QByteArray(axes.isEmpty() ? "" : ", ") + R"({"letter": ")" + letter +
                R"(", "stage": {"modelName": "ML-40", "pulseOneCircle": 250, "dispOneCircle": 1, "maxSpeed": 30,
                   "maxAcc": 100, "minPos": 0, "maxPos": 40}})";
    QFile file(m_folder.filePath("controllers.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        R"({"controllers": [{"id": 2001, "kind": "grbl", "port": ")" + m_folder.filePath("board").toUtf8() +
        R"(", "axes": [)" + axes + "]}]}");
    file.close();
    qputenv("MOVER_CONTROLLERS", file.fileName().toUtf8());
    QVERIFY(!MotionLibrary::load(QStringLiteral(GRBL_LIBRARY)));
}

void tst_GrblProgram::init()
{
    m_log = std::make_unique<DebugLog>();
    m_boxes = std::make_unique<MessageBoxes>();
    m_program = std::make_unique<OpenWindow>();
    connectAndHome();
}

void tst_GrblProgram::cleanup()
{
    m_program.reset();
    m_boxes.reset();
    SerialComDev::instance()->close();
    QVERIFY(SerialComDev::endThread(s_limitMs));
    QCOMPARE(qtWarnings(*m_log), QStringList());
    m_log.reset();
}

/** As after the stage has been left anywhere, in whatever state the board is. */
void tst_GrblProgram::connectAndHome()
{
    const QStringList all{QStringLiteral("Axis1"), QStringLiteral("Axis2"), QStringLiteral("Axis3")};
    MotorStageState answer{};
    const auto answers = [&answer] { return SerialComDev::instance()->getRuningState(0, answer) >= 0; };
    if (SerialComDev::instance()->isOpened() && !QTest::qWaitFor(answers, 2000))
        m_program->disconnect(); // a port that was gone has to be opened again
    QElapsedTimer timer;
    timer.start();
    while (m_program->panelNames() != all && timer.elapsed() < s_limitMs) {
        if (SerialComDev::instance()->isOpened())
            m_program->disconnect();
        m_program->connectTo(s_id);
    }
    QCOMPARE(m_program->panelNames(), all);
    // The second press homes; the board may still be at what befell it.
    const auto isHomed = [] {
        MotorStageState state{};
        return SerialComDev::instance()->getRuningState(0, state) >= 0 && state.isHome == 1 && state.isCanRun == 1;
    };
    timer.restart();
    while (!isHomed() && timer.elapsed() < 2 * s_limitMs) {
        QTest::qWait(300); // the panel knows the state of its axis
        press(panel(1), "pushButton_home");
    }
    QVERIFY2(
        QTest::qWaitFor(isHomed, s_limitMs),
        qPrintable(logOf(panel(0)).right(400) + QStringLiteral(" | ") + logOf(panel(1)).right(800)));
    QTRY_COMPARE_WITH_TIMEOUT(shown(2), QStringLiteral("1.000 mm"), s_limitMs);
    QCOMPARE(counted(2), shown(2));
    for (int axis = 0; axis < 3; ++axis) // what the axis says comes to its buttons last
        QTRY_VERIFY(canMove(axis));
}

void tst_GrblProgram::tour()
{
    QVERIFY(says(1, QStringLiteral("所有轴都将移动：Axis1, Axis2, Axis3；请再按一次")));
    for (int axis = 0; axis < 3; ++axis) // those, too, whose button nobody has pressed
        QTRY_COMPARE(ControlSession::instance()->axis(axis)->trust().kind, AxisTrust::Homed);
    // Captured faster than the board reports: each of its reports counts once.
    const auto report = [] {
        MoverReport last{};
        const LibraryLock library;
        return MotionLibrary::inUse().lastReport(s_id, &last) ? last.number : 0;
    };
    const Recorder &recorder = ControlSession::instance()->recorder();
    SerialComDev::instance()->setCapture({0}, 100);
    const quint64 firstReport = report();
    const qint64 from = recorder.usOf(AnswerListener::Time::clock::now());
    for (int axis = 0; axis < 3; ++axis)
        sendMove(axis, 12.5 - axis);
    const auto captured = [&] {
        const Recording recording = recorder.recording();
        return recording.axes.first().samples.countBetween(from, recording.nowUs);
    };
    QTRY_VERIFY(captured() > 10);
    const int count = captured();
    QVERIFY2(quint64(count) <= report() - firstReport + 1, qPrintable(QString::number(count)));
    SerialComDev::instance()->setCapture({}, 0);
    for (int axis = 0; axis < 3; ++axis) {
        QTRY_COMPARE_WITH_TIMEOUT(shown(axis), QString::number(12.5 - axis, 'f', 3) + " mm", s_limitMs);
        QCOMPARE(counted(axis), shown(axis));
        QTRY_VERIFY(canMove(axis)); // the state comes behind the position
    }
    const auto rests = [](int axis) {
        MotorStageState state{};
        return SerialComDev::instance()->getRuningState(axis, state) >= 0 && state.isStop == 1;
    };

    press(panel(0), "pushButton_jogRight");
    QTRY_VERIFY_WITH_TIMEOUT(shown(0) == counted(0) && shown(0) != QStringLiteral("12.500 mm") && rests(0), s_limitMs);
    press(panel(1), "pushButton_driveLeft");
    press(panel(2), "pushButton_driveRight");
    QTest::qWait(150);
    press(panel(1), "pushButton_stop");
    QTRY_VERIFY_WITH_TIMEOUT(rests(1), s_limitMs);
    ControlSession::instance()->stopAll();
    for (int axis = 0; axis < 3; ++axis)
        QTRY_VERIFY_WITH_TIMEOUT(rests(axis) && shown(axis) == counted(axis), s_limitMs);

    OpenWindow::click(m_program->titleButton("pushButton_settings"));
    press(m_program->dialog<OptionsWidget>(), "pushButton_ReadParam");
    m_program->dialog<OptionsWidget>()->hide();
    // Everything that the console has, on a board that lacks some of it; the number has its words.
    OpenWindow::click(m_program->titleButton("pushButton_debug"));
    DebugWidget *const window = console();
    QVERIFY(window);
    for (const ConsoleCommand &command : consoleCommands) {
        const QByteArray function = command.function;
        const bool names = function.contains("Name") || function.contains("SerialNumber");
        window->findChild<QLineEdit *>(QStringLiteral("lineEdit_input"))
            ->setText(
                function == "setDevAxisCount" ? "3"
                : names                       ? "TEXT"
                                              : "1");
        press(window, qPrintable(QStringLiteral("pushButton_%1").arg(command.button)));
        if (function == "setRockerEnable" || function == "setClearIDChip")
            QCOMPARE(
                window->findChild<QLineEdit *>(QStringLiteral("lineEdit_result"))->text(),
                QStringLiteral("-17 (此控制器没有该功能)"));
        ControlSession::instance()->stopAll();
    }
    window->hide();
    for (int axis = 0; axis < 3; ++axis)
        QTRY_VERIFY_WITH_TIMEOUT(rests(axis) && shown(axis) == counted(axis), s_limitMs);
    m_program->disconnect();
    QCOMPARE(m_program->panelNames(), QStringList());
}

void tst_GrblProgram::faults()
{
    QTest::addColumn<QString>("fault");
    // In short: a quarter of the faults, other ones in each situation.
    const bool isShort = isShortRun();
    std::size_t number = std::strlen(QTest::currentTestFunction());
    for (const char *const fault :
         {"unplugged", "muted", "reset", "power", "rubbish", "late", "a switch closes", "hold"}) {
        if (!isShort || ++number % 4 == 0)
            QTest::newRow(fault) << QString::fromLatin1(fault);
    }
}

/** `situation`: what the user is at. Then the fault, and its end; all is as it should be when it is over. */
void tst_GrblProgram::strikes(const std::function<void()> &situation)
{
    QFETCH(QString, fault);
    QElapsedTimer sinceEvent;
    sinceEvent.start();
    qint64 longest = 0;
    QTimer beat;
    beat.callOnTimeout([&] { longest = std::max(longest, sinceEvent.restart()); });
    beat.start(5);

    situation();
    const auto board = [this](auto act) { m_port->use([&](emulator::Board &board) { return act(board), 0; }); };
    if (fault == QLatin1String("unplugged"))
        m_port->unplug();
    else if (fault == QLatin1String("muted"))
        board([](emulator::Board &it) { it.toHost().cut(true); });
    else if (fault == QLatin1String("reset"))
        board([](emulator::Board &it) { it.pressReset(); });
    else if (fault == QLatin1String("power"))
        board([](emulator::Board &it) { it.powerCycle(); });
    else if (fault == QLatin1String("rubbish"))
        board([](emulator::Board &it) { it.garble("\xff<Jog|MPos:1,2>\r\nerror:\r\nok ok\r\n[MSG:\r\n"); });
    else if (fault == QLatin1String("late"))
        board([](emulator::Board &it) { it.toHost().setDelay(1.0); });
    else if (fault == QLatin1String("a switch closes"))
        board([](emulator::Board &it) { it.forceSwitch(0, 1); });
    else
        board([](emulator::Board &it) { it.send("!"); });
    QTest::qWait(1300);
    if (fault == QLatin1String("hold") && qstrcmp(QTest::currentTestFunction(), "idle") == 0) {
        // The recorder has it, and keeps the minute before it in a file
        const auto events = ControlSession::instance()->recorder().recording().events;
        QVERIFY(std::any_of(events.begin(), events.end(), [](const RecorderEvent &event) {
            return event.type == RecorderEvent::BoardMessage && event.status == moverMessages::OnHold;
        }));
        QTRY_VERIFY_WITH_TIMEOUT(says(0, QStringLiteral("此前 60 秒的记录已存入")), s_limitMs);
    }
    if (fault == QLatin1String("unplugged"))
        m_port->plug();
    board([](emulator::Board &it) {
        it.toHost().cut(false);
        it.toHost().setDelay(0);
        it.forceSwitch(0, -1);
    });
    // What was late is on its way yet, with all that is said behind it.
    const auto isLate = [](emulator::Board &it) {
        const double next = it.toHost().next();
        return next < emulator::Wire::never && next > it.now() + 0.1;
    };
    QTRY_VERIFY(!m_port->use(isLate));
    // Whatever was under way comes to its end or stands.
    QTest::qWait(300);
    ControlSession::instance()->stopAll();
    QTest::qWait(300);
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window != &m_program->window())
            window->hide();
    }
    connectAndHome(); // also drives the axes to their switches
    // A board that is not done with what befell it refuses the start, and says so: then it is pressed again.
    const auto isThere = [this] { return shown(0) == QLatin1String("5.000 mm"); };
    QElapsedTimer timer;
    timer.start();
    do {
        sendMove(0, 5);
    } while (!QTest::qWaitFor(isThere, 3000) && timer.elapsed() < s_limitMs);
    QVERIFY2(isThere(), qPrintable(shown(0) + logOf(panel(0)).right(250))); // more has no room
    QCOMPARE(counted(0), shown(0));
    QVERIFY2(longest < s_stallMs, qPrintable(QString::number(longest)));
    const auto violations = m_port->use([](const emulator::Board &it) { return it.violations(); });
    for (const emulator::Violation &one : violations)
        QVERIFY2(
            one.kind != emulator::Violation::Kind::NoAxisWord && one.kind != emulator::Violation::Kind::Relative &&
                one.kind != emulator::Violation::Kind::SingleHome,
            one.line.c_str());
}

void tst_GrblProgram::moving()
{
    strikes([this] {
        sendMove(0, 35);
        sendMove(1, 20);
        QTest::qWait(400);
    });
}

void tst_GrblProgram::loopRun()
{
    strikes([this] {
        press(panel(0), "pushButton_circle");
        auto *loop = panel(0)->findChild<CycleOperationWidget *>();
        fill<QDoubleSpinBox>(loop, "doubleSpinBox_relativeDisp", 3);
        fill<QDoubleSpinBox>(loop, "doubleSpinBox_speed", 15);
        fill<QDoubleSpinBox>(loop, "doubleSpinBox_acc", 80);
        fill<QSpinBox>(loop, "spinBox_time", 50);
        fill<QSpinBox>(loop, "spinBox_delay", 10);
        press(loop, "pushButton_right");
        QTest::qWait(400);
    });
    if (auto *loop = panel(0) ? panel(0)->findChild<CycleOperationWidget *>() : nullptr)
        loop->hide();
}

void tst_GrblProgram::settingsOpen()
{
    strikes([this] {
        OpenWindow::click(m_program->titleButton("pushButton_settings"));
        press(m_program->dialog<OptionsWidget>(), "pushButton_ReadParam");
    });
}

void tst_GrblProgram::consoleOpen()
{
    strikes([this] {
        OpenWindow::click(m_program->titleButton("pushButton_debug"));
        press(console(), "pushButton_44"); // its heartbeat
    });
    press(console(), "pushButton_54");
}

QTEST_MAIN(tst_GrblProgram)
#include "tst_GrblProgram.moc"
