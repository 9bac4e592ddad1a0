// SPDX-License-Identifier: MIT
#include "device/Heart.h"
#include "device/LibraryLock.h"
#include "session/ControlAxis.h"
#include "session/ControlSession.h"
#include "session/IncidentFiles.h"
#include "session/Recorder.h"
#include "shell/MyBorderContainer.h"
#include "shell/NativeMessage.h"
#include "shell/PanelArea.h"
#include "support/MessageBoxes.h"
#include "support/Mouse.h"

#include "OpenWindow.h"

#include <QAbstractEventDispatcher>
#include <QAbstractNativeEventFilter>
#include <QMetaMethod>
#include <QSettings>
#include <QSignalSpy>

#include <future>

namespace {

constexpr int device = 1001;
constexpr int other = 1002;

const QString portLost = QStringLiteral("设备断开连接");

QString connectSheet(const QString &suffix)
{
    return QStringLiteral(
               "MoverWidget .QPushButton#pushButton_connect{border-image: url(:/image/connect_normal%1.png);}"
               "MoverWidget .QPushButton#pushButton_connect:hover{border-image: url(:/image/connect_hover%1.png);}"
               "MoverWidget .QPushButton#pushButton_connect:pressed{border-image: url(:/image/connect_checked%1.png);}")
        .arg(suffix);
}

QString showMaxSheet(const QString &image)
{
    return QStringLiteral(
               ".QPushButton#pushButton_showMax{background-color: rgb(50, 50, 50);background-image: url(:/image/%1);"
               "background-origin: content;background-position: center;background-repeat: no-repeat;}"
               ".QPushButton#pushButton_showMax:hover{background-color: rgb(140, 140, 140);}"
               ".QPushButton#pushButton_showMax:pressed{background-color: rgb(22,110,215);}")
        .arg(image);
}

/** The system's notice that the tree of devices has changed, as the application hears of it. */
void announceDeviceChange(QWidget &window)
{
    NativeMessage message{};
    message.hwnd = reinterpret_cast<decltype(message.hwnd)>(window.winId());
    message.message = 0x219;
    message.wParam = 7;
    long result = 0;
    QVERIFY(!QAbstractEventDispatcher::instance()->filterNativeEvent("windows_generic_MSG", &message, &result));
}

/** Runs the program's event loop, in which `leave` happens; its exit code, or -1 when it does not end by itself. */
template <typename Function>
int runUntilLeft(Function leave)
{
    QTimer::singleShot(0, qApp, leave);
    QTimer limit;
    limit.setSingleShot(true);
    limit.callOnTimeout([] { QCoreApplication::exit(-1); });
    limit.start(10000);
    return QCoreApplication::exec();
}

enum Leave { CloseButton, CloseEvent, SessionEnd };

void leaveBy(Leave way, OpenWindow &program)
{
    switch (way) {
    case CloseButton:
        return OpenWindow::click(program.titleButton("pushButton_close"));
    case CloseEvent:
        program.window().close();
        return;
    case SessionEnd:
        QApplication::closeAllWindows();
    }
}

} // namespace

Q_DECLARE_METATYPE(Leave)

class tst_MoverWidget : public WindowTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup()
    {
        end();
        QFile::remove(QCoreApplication::applicationDirPath() + QStringLiteral("/appConfig.ini"));
    }

    // Construction
    void isAFramelessWindowThatTracksTheMouse();
    void startsWithItsFormSize();
    void controlsHaveTheirSizes_data();
    void controlsHaveTheirSizes();
    void picturesStandInTheTitleBar();
    void theDebugButtonIsAlwaysShown();
    void titleBarAndHelpSayThatTheControllerIsSimulated();
    void theJoystickSwitchIsDisabledAndHidden();
    void theConnectButtonHasTheFocus();
    void itsSlotsKeepTheirNamesAndOrder();
    void theResizeBorderIsFiveWide();
    void dialogsAndPlaceholderAreCreatedHidden();
    void callsNoLibraryFunctionByItself();
    void leavesNoEventFilterBehind();

    /** The library takes the drive, and the axis stands; the panel's own polls find that out. */
    void anAxisThatDoesNotMoveIsToldOnceInItsLog()
    {
        OpenWindow program;
        program.connectTo();
        MotorStageState state = {};
        state.isCanRun = state.isStop = state.isEnable = 1;
        simulator::setState(1001, 0, state);
        const QString line = QStringLiteral("运动命令已被接受，但轴没有动");
        const auto count = [&](int axis) { return logOf(program.panel(axis)).count(line); };
        QTRY_VERIFY(ControlSession::instance()->axis(0)->lastPosition());
        OpenWindow::click(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_driveRight")));
        QTRY_COMPARE_WITH_TIMEOUT(count(0), 1, 8000);
        const int polls = simulator::callCount("getRuningState");
        QTRY_VERIFY(simulator::callCount("getRuningState") > polls + 9);
        QCOMPARE(count(0), 1);
        QCOMPARE(count(1), 0);
    }

    /** Of an axis into its own log, of the controller into all of them. */
    void whereAnIncidentWasKeptStandsInTheLog()
    {
        OpenWindow program;
        program.connectTo();
        auto *const incidents = program.window().findChild<IncidentFiles *>();
        incidents->setDelays(0, 0);
        QTRY_VERIFY(ControlSession::instance()->axis(0)->lastPosition());
        const QString kept = QStringLiteral("此前 60 秒的记录已存入 ");
        simulator::failCall("startMove", -7);
        emit SerialComDev::instance()->signal_startMotor(0, MOVE_CODE_MOVE);
        QTRY_VERIFY(logOf(program.panel(0)).contains(kept));
        const QString path = logOf(program.panel(0)).section(kept, 1).section(QLatin1Char('\n'), 0, 0).trimmed();
        QVERIFY2(QFileInfo(path).size() > 0, qPrintable(path));
        QVERIFY(!logOf(program.panel(1)).contains(kept));
        emit incidents->signal_failed(RecorderEvent::AllAxes, QStringLiteral("disk full"));
        for (const int axis : {0, 1})
            QTRY_VERIFY(logOf(program.panel(axis)).contains(QStringLiteral("此前 60 秒的记录无法保存：disk full")));
    }

    // Title bar
    void dialogsAreCentredOnTheWindow_data();
    void dialogsAreCentredOnTheWindow();
    void connectButtonRefreshesTheListFirst();
    void settingsButtonReadsTheTriggerPageFirst();
    void helpButtonCallsNoLibraryFunction();
    void showMinMinimises();
    void showMaxTogglesFullScreen();
    void doubleClickOnTheTitleBarTogglesFullScreen();
    void isDraggedByTheTitleBar();
    void isNotDraggedOutsideTheTitleBar();
    void contentAndBorderFollowTheSize();

    // Language
    void languageChangeSwapsThePictureOfTheConnectButton();
    void startsWithThePictureOfTheStoredLanguage();
    void languageChangeTranslatesTheForm();
    void languageChangeTranslatesTheHint();

    // Joystick
    void theSwitchAppearsWithTheJoystickAndGoesWithIt();
    void theSwitchTurnsJoystickModeOnAndOff();
    void theSpeedFollowsTheDeflectionWhileTheSwitchIsOn();
    void losingTheJoystickTurnsJoystickModeOff();
    void aFurtherReportWithoutJoystickChangesNothing();

    // Port watch
    void tellsThatThePortIsLost();
    void aLostPortClosesNothing();
    void aStormOfNoticesShowsOneBox();
    void aNoticeIsAnsweredBeforeItsBox();
    void noticesAreJoinedIntoOneCheck();
    void aBusyLibraryPutsThePortCheckOff();

    // Messages
    void theWindowMayGoUnderItsMessage();
    void theWindowMayGoUnderTheMessageOfALostPort();

    // Ways out
    void leavingClosesTheControllerWithoutAQuestion_data();
    void leavingClosesTheControllerWithoutAQuestion();
    void leavingWritesItsStepsToTheLog();
    void leavesWhileTheLibraryHangs_data();
    void leavesWhileTheLibraryHangs();
    void leavesUnderAMessageBox();
    void readsNoMoreAxesOnTheWayOut();
    void leavesOnlyOnce();
};

// ---- Construction --------------------------------------------------------------------------------------------------

void tst_MoverWidget::isAFramelessWindowThatTracksTheMouse()
{
    const MoverWidget window;
    QVERIFY(window.windowFlags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(window.hasMouseTracking());
    QVERIFY(window.isWindow());
}

void tst_MoverWidget::startsWithItsFormSize()
{
    const MoverWidget window;
    QCOMPARE(window.minimumSize(), QSize(1620, 910));
    QCOMPARE(window.size(), QSize(1620, 910));
    QCOMPARE(window.windowTitle(), QStringLiteral("MoverWidget"));
}

void tst_MoverWidget::controlsHaveTheirSizes_data()
{
    QTest::addColumn<QSize>("minimum");
    QTest::addColumn<QSize>("maximum");
    const auto fixed = [](const char *name, int width, int height) {
        QTest::newRow(name) << QSize(width, height) << QSize(width, height);
    };
    QTest::newRow("widget_titleBar") << QSize(200, 60) << QSize(QWIDGETSIZE_MAX, 60);
    fixed("label_logo", 70, 20);
    fixed("label_devName", 284, 20);
    fixed("pushButton_debug", 60, 60);
    fixed("pushButton_help", 33, 33);
    fixed("pushButton_settings", 33, 33);
    fixed("pushButton_showMin", 33, 33);
    fixed("pushButton_showMax", 33, 33);
    QTest::newRow("widget_menuBar") << QSize(0, 60) << QSize(QWIDGETSIZE_MAX, 60);
    QTest::newRow("pushButton_connect") << QSize(146, 40) << QSize(150, 60);
    QTest::newRow("pushButton_addAsix") << QSize(90, 60) << QSize(60, 60);
    QTest::newRow("radioButton_Rocker") << QSize(130, 0) << QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    QTest::newRow("scrollArea_controls") << QSize(830, 480) << QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
}

void tst_MoverWidget::controlsHaveTheirSizes()
{
    const OpenWindow program;
    const auto *control = program.find<QWidget>(QTest::currentDataTag());
    QVERIFY(control);
    QTEST(control->minimumSize(), "minimum");
    QTEST(control->maximumSize(), "maximum");
}

void tst_MoverWidget::picturesStandInTheTitleBar()
{
    const OpenWindow program;
    QCOMPARE(
        program.find<QLabel>("label_devName")->styleSheet(), QStringLiteral("border-image: url(:/image/devLogo.png);"));
    QVERIFY(program.find<QWidget>("widget_titleBar")->isAncestorOf(program.find<QLabel>("label_logo")));
    QCOMPARE(program.titleButton("pushButton_close")->minimumSize(), QSize(33, 33));
    QCOMPARE(program.titleButton("pushButton_close")->maximumSize(), QSize(33, 33));
    QCOMPARE(program.find("pushButton_connect")->styleSheet(), connectSheet(QString()));
}

void tst_MoverWidget::theDebugButtonIsAlwaysShown()
{
    OpenWindow program;
    QVERIFY(program.find("pushButton_debug")->isVisible());
    program.connectTo();
    QVERIFY(program.find("pushButton_debug")->isVisible());
}

void tst_MoverWidget::titleBarAndHelpSayThatTheControllerIsSimulated()
{
    const OpenWindow program;
    const auto *quiet = program.find<QLabel>("label_simulated");
    QVERIFY(quiet->isVisible());
    QCOMPARE(quiet->text(), QStringLiteral("模拟控制器"));
    const auto *inHelp = program.dialog<HelpWidget>()->findChild<QLabel *>(QStringLiteral("label_library"));
    QCOMPARE(inHelp->text(), QStringLiteral("模拟控制器"));
}

void tst_MoverWidget::theJoystickSwitchIsDisabledAndHidden()
{
    const OpenWindow program;
    QVERIFY(!program.rocker()->isEnabled());
    QVERIFY(program.rocker()->isHidden());
    QVERIFY(!program.rocker()->isChecked());
}

void tst_MoverWidget::theConnectButtonHasTheFocus()
{
    OpenWindow program;
    QCOMPARE(program.window().focusWidget(), program.find("pushButton_connect"));
}

void tst_MoverWidget::itsSlotsKeepTheirNamesAndOrder()
{
    QStringList slotNames;
    const QMetaObject &meta = MoverWidget::staticMetaObject;
    for (int k = meta.methodOffset(); k < meta.methodCount(); ++k) {
        if (meta.method(k).methodType() == QMetaMethod::Slot)
            slotNames.append(QString::fromLatin1(meta.method(k).methodSignature()));
    }
    QCOMPARE(
        slotNames,
        (QStringList{
            QStringLiteral("slot_AsixButtonClicked(bool)"),
            QStringLiteral("slot_addControl(QString,int,MoverDevParam,bool)"),
            QStringLiteral("slot_addControl(QString,int,MoverDevParam)"), QStringLiteral("slot_devConnected()"),
            QStringLiteral("slot_devDisConnected()"), QStringLiteral("slot_usbDevPortChanged()"),
            QStringLiteral("slot_controlWidgetClosed(QString)"), QStringLiteral("slot_expandContorl(bool)"),
            QStringLiteral("slot_showTipMessage(QString)"), QStringLiteral("slot_updateControlerState()"),
            QStringLiteral("on_pushButton_showMin_clicked()"), QStringLiteral("on_pushButton_close_clicked()"),
            QStringLiteral("on_pushButton_help_clicked()"), QStringLiteral("on_pushButton_connect_clicked()"),
            QStringLiteral("on_pushButton_addAsix_clicked()"), QStringLiteral("on_pushButton_debug_clicked()"),
            QStringLiteral("on_pushButton_settings_clicked()"), QStringLiteral("on_pushButton_showMax_clicked()"),
            QStringLiteral("on_radioButton_Rocker_clicked()")}));
}

void tst_MoverWidget::theResizeBorderIsFiveWide()
{
    OpenWindow program;
    QVERIFY(program.dialog<MyBorderContainer>());
    int strips = 0;
    const QList<QLabel *> labels = program.window().findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
    for (const QLabel *strip : labels) {
        if (dynamic_cast<const MyBorderContainer::MyBorder *>(strip)) {
            ++strips;
            const int thickness = qMin(strip->width(), strip->height());
            QVERIFY(thickness == 5 || (thickness == 6 && strip->width() == strip->height()));
        }
    }
    QCOMPARE(strips, 8);
}

void tst_MoverWidget::dialogsAndPlaceholderAreCreatedHidden()
{
    const OpenWindow program;
    QVERIFY(program.dialog<AddControlsWidget>()->isHidden());
    QVERIFY(program.dialog<HelpWidget>()->isHidden());
    QVERIFY(program.dialog<OptionsWidget>()->isHidden());
    QVERIFY(program.dialog<ConnectionWidget>()->isHidden());
    QVERIFY(program.dialog<PlaceholderWidget>()->isHidden());
}

void tst_MoverWidget::callsNoLibraryFunctionByItself()
{
    OpenWindow program;
    QSignalSpy beats(SerialComDev::instance().data(), &SerialComDev::signal_heartBeatInfo);
    QVERIFY(!beats.wait(Heart::IntervalMs + 200));
    QCOMPARE(int(simulator::journal().size()), 0);
}

void tst_MoverWidget::leavesNoEventFilterBehind()
{
    MoverWidget window;
    {
        const MoverWidget gone;
    }
    const MessageBoxes boxes;
    announceDeviceChange(window);
    QCOMPARE(boxes.count(), 0);
}

// ---- Title bar -----------------------------------------------------------------------------------------------------

void tst_MoverWidget::dialogsAreCentredOnTheWindow_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("dialog");
    const auto row = [](const char *button, const QMetaObject &dialog) {
        QTest::newRow(dialog.className()) << QString::fromLatin1(button) << QString::fromLatin1(dialog.className());
    };
    row("pushButton_help", HelpWidget::staticMetaObject);
    row("pushButton_connect", ConnectionWidget::staticMetaObject);
    row("pushButton_settings", OptionsWidget::staticMetaObject);
    row("pushButton_addAsix", AddControlsWidget::staticMetaObject);
}

void tst_MoverWidget::dialogsAreCentredOnTheWindow()
{
    QFETCH(QString, button);
    QFETCH(QString, dialog);
    OpenWindow program;
    program.connectTo();
    const auto centre = [&](QPoint pos, QSize size) {
        program.window().move(pos);
        program.window().resize(size);
        OpenWindow::click(program.find<QPushButton>(qPrintable(button)));
        const QObjectList children = program.window().children();
        const auto isDialog = [&](const QObject *child) {
            return QString::fromLatin1(child->metaObject()->className()) == dialog;
        };
        auto *popup = qobject_cast<QWidget *>(*std::find_if(children.begin(), children.end(), isDialog));
        QVERIFY(popup->isVisible());
        QCOMPARE(
            popup->pos(),
            QPoint(pos.x() + (size.width() - popup->width()) / 2, pos.y() + (size.height() - popup->height()) / 2));
        popup->hide();
    };
    centre({137, 61}, {1620, 910});
    centre({-20, 33}, {1755, 1001}); // again each time
}

void tst_MoverWidget::connectButtonRefreshesTheListFirst()
{
    OpenWindow program;
    OpenWindow::click(program.find("pushButton_connect"));
    auto *dialog = program.dialog<ConnectionWidget>();
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->findChild<QComboBox *>()->count(), 1);
    dialog->hide();
    simulator::unplug(device);
    OpenWindow::click(program.find("pushButton_connect"));
    QCOMPARE(dialog->findChild<QComboBox *>()->count(), 0);
}

void tst_MoverWidget::settingsButtonReadsTheTriggerPageFirst()
{
    OpenWindow program;
    program.connectTo();
    simulator::clearJournal();
    OpenWindow::click(program.find("pushButton_settings"));
    QCOMPARE(calls().filter(QStringLiteral("getTriggerInEnable(")).size(), 3);
    QVERIFY(program.dialog<OptionsWidget>()->isVisible());
}

void tst_MoverWidget::helpButtonCallsNoLibraryFunction()
{
    OpenWindow program;
    OpenWindow::click(program.find("pushButton_help"));
    QVERIFY(program.dialog<HelpWidget>()->isVisible());
    QCOMPARE(calls(), QStringList());
}

void tst_MoverWidget::showMinMinimises()
{
    OpenWindow program;
    OpenWindow::click(program.find("pushButton_showMin"));
    QTRY_VERIFY(program.window().isMinimized());
}

void tst_MoverWidget::showMaxTogglesFullScreen()
{
    OpenWindow program;
    auto *button = program.find("pushButton_showMax");
    OpenWindow::click(button);
    QVERIFY(program.window().isFullScreen());
    QVERIFY(!program.window().isMaximized());
    QCOMPARE(button->styleSheet(), showMaxSheet(QStringLiteral("showNormal.png")));
    OpenWindow::click(button);
    QVERIFY(!program.window().isFullScreen());
    QVERIFY(program.window().isVisible());
    QCOMPARE(button->styleSheet(), showMaxSheet(QStringLiteral("showMax.png")));
}

void tst_MoverWidget::doubleClickOnTheTitleBarTogglesFullScreen()
{
    OpenWindow program;
    Mouse::send(QEvent::MouseButtonDblClick, program.find<QLabel>("label_logo"), {4, 4});
    QVERIFY(program.window().isFullScreen());
    Mouse::send(QEvent::MouseButtonDblClick, program.find<QLabel>("label_logo"), {4, 4});
    QVERIFY(!program.window().isFullScreen());
    Mouse::send(QEvent::MouseButtonDblClick, program.find<QWidget>("widget_menuBar"), {800, 30});
    QVERIFY(!program.window().isFullScreen());
}

void tst_MoverWidget::isDraggedByTheTitleBar()
{
    OpenWindow program;
    MoverWidget &window = program.window();
    window.move(100, 100);
    Mouse::move(&window, {50, 30}); // no drag without a press
    QCOMPARE(window.pos(), QPoint(100, 100));
    Mouse::press(&window, {40, 20});
    Mouse::move(&window, {50, 15});
    QCOMPARE(window.pos(), QPoint(110, 95));
    Mouse::move(&window, {39, 25});
    QCOMPARE(window.pos(), QPoint(109, 100));
    Mouse::release(&window, {39, 25});
    Mouse::move(&window, {90, 90});
    QCOMPARE(window.pos(), QPoint(109, 100));

    auto *logo = program.find<QLabel>("label_logo");
    Mouse::press(logo, {4, 4});
    Mouse::move(logo, {7, 8});
    QCOMPARE(window.pos(), QPoint(112, 104));
}

void tst_MoverWidget::isNotDraggedOutsideTheTitleBar()
{
    OpenWindow program;
    MoverWidget &window = program.window();
    const QPoint before = window.pos();
    for (const QPointF outside : {QPointF(40, 60), QPointF(800, 90), QPointF(800, 500)}) {
        Mouse::press(&window, outside);
        Mouse::move(&window, outside + QPointF(10, 10));
        QCOMPARE(window.pos(), before);
        Mouse::release(&window, outside);
    }
    Mouse::press(&window, {40, 59});
    Mouse::move(&window, {50, 59});
    QCOMPARE(window.pos(), before + QPoint(10, 0));
}

void tst_MoverWidget::contentAndBorderFollowTheSize()
{
    OpenWindow program;
    for (const QSize size : {QSize(1900, 1100), QSize(1620, 910)}) {
        program.window().resize(size);
        const auto *area = program.find<QScrollArea>("scrollArea_controls");
        QTRY_COMPARE(area->size(), QSize(size.width(), size.height() - 120));
        QCOMPARE(area->pos(), QPoint(0, 120));
        QRect covered;
        const QList<QLabel *> labels = program.window().findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly);
        for (const QLabel *strip : labels)
            covered |= strip->geometry();
        QCOMPARE(covered, QRect(QPoint(0, 0), size));
    }
}

// ---- Language ------------------------------------------------------------------------------------------------------

void tst_MoverWidget::languageChangeSwapsThePictureOfTheConnectButton()
{
    OpenWindow program;
    auto *options = program.dialog<OptionsWidget>();
    auto *button = program.find("pushButton_connect");
    options->setLanguage(1);
    QTRY_COMPARE(button->styleSheet(), connectSheet(QStringLiteral("_english")));
    options->setLanguage(0);
    QTRY_COMPARE(button->styleSheet(), connectSheet(QString()));
}

void tst_MoverWidget::startsWithThePictureOfTheStoredLanguage()
{
    {
        QSettings settings(
            QCoreApplication::applicationDirPath() + QStringLiteral("/appConfig.ini"), QSettings::IniFormat);
        settings.setValue(QStringLiteral("language/type"), 1);
    }
    OpenWindow program;
    QTRY_COMPARE(program.find("pushButton_connect")->styleSheet(), connectSheet(QStringLiteral("_english")));
    QCOMPARE(program.dialog<OptionsWidget>()->language(), 1);
}

void tst_MoverWidget::languageChangeTranslatesTheForm()
{
    OpenWindow program;
    program.connectTo();
    const auto texts = [&] {
        return QStringList{
            program.find("pushButton_help")->toolTip(),
            program.find("pushButton_settings")->toolTip(),
            program.find("pushButton_connect")->toolTip(),
            program.find("pushButton_addAsix")->toolTip(),
            program.rocker()->text(),
            program.find("pushButton_debug")->text(),
            program.window().windowTitle(),
            program.tab(0)->text()};
    };
    const QStringList chinese{QStringLiteral("帮助"),        QStringLiteral("软件设置"),
                              QStringLiteral("连接设备"),    QStringLiteral("添加运动轴控制窗口"),
                              QStringLiteral("使用摇杆"),    QStringLiteral("debug"),
                              QStringLiteral("MoverWidget"), QStringLiteral("Axis1")};
    QCOMPARE(texts(), chinese);
    program.dialog<OptionsWidget>()->setLanguage(1);
    QTRY_COMPARE(
        texts(), (QStringList{
                     QStringLiteral("Help"), QStringLiteral("Softerware settings"),
                     QStringLiteral("Connect the device serial port COM"), QStringLiteral("Add an axis control widget"),
                     QStringLiteral("Use rocker"), QStringLiteral("debug"), QStringLiteral("MoverWidget"),
                     QStringLiteral("Axis1")}));
    program.dialog<OptionsWidget>()->setLanguage(0);
    QTRY_COMPARE(texts(), chinese);
}

void tst_MoverWidget::languageChangeTranslatesTheHint()
{
    OpenWindow program;
    auto *area = program.find<PanelArea>("widget_controls");
    program.dialog<OptionsWidget>()->setLanguage(1);
    QTRY_COMPARE(area->hint(), QStringLiteral("Connect a device to begin"));
    program.dialog<OptionsWidget>()->setLanguage(0);
    QTRY_COMPARE(area->hint(), QStringLiteral("请先连接设备"));
}

// ---- Joystick ------------------------------------------------------------------------------------------------------

void tst_MoverWidget::theSwitchAppearsWithTheJoystickAndGoesWithIt()
{
    OpenWindow program;
    program.connectTo();
    simulator::setJoystick(device, true, 0);
    QTRY_VERIFY(!program.rocker()->isHidden());
    QVERIFY(program.rocker()->isEnabled());
    QVERIFY(!program.rocker()->isChecked());
    simulator::setJoystick(device, false);
    QTRY_VERIFY(program.rocker()->isHidden());
    QVERIFY(!program.rocker()->isEnabled());
}

void tst_MoverWidget::theSwitchTurnsJoystickModeOnAndOff()
{
    play({{device, "MC3-A", {{}, {}}}});
    OpenWindow program;
    program.connectTo();
    simulator::setJoystick(device, true, 4);
    QTRY_VERIFY(program.rocker()->isVisible());
    QTRY_COMPARE(program.window().panelBoard().count(), 2);
    const auto motionShown = [&] {
        int shown = 0;
        for (const MoverControlWidget *panel : program.window().panelBoard().panels())
            shown += panel->findChild<QPushButton *>(QStringLiteral("pushButton_move"))->isVisible() ? 1 : 0;
        return shown;
    };
    QCOMPARE(motionShown(), 2);
    // Leaving joystick mode asks whether the axis can run: it must have said so.
    for (const MoverControlWidget *panel : program.window().panelBoard().panels())
        QTRY_VERIFY(panel->findChild<QLabel *>(QStringLiteral("label_currentPos"))->text() != QStringLiteral("---"));
    simulator::clearJournal();

    OpenWindow::click(program.rocker());
    QVERIFY(m_log->contains(QStringLiteral("on_radioButton_Rocker_clicked true")));
    QTRY_COMPARE(calls(), QStringList{QStringLiteral("setRockerEnable(1001, 1)")});
    QCOMPARE(motionShown(), 0);
    for (const MoverControlWidget *panel : program.window().panelBoard().panels())
        QCOMPARE(panel->findChild<QLabel *>(QStringLiteral("label_rockerSpeed"))->text(), QStringLiteral("4 mm/s"));

    simulator::setJoystick(device, true, 0);
    for (const MoverControlWidget *panel : program.window().panelBoard().panels())
        QTRY_VERIFY(panel->findChild<QPushButton *>(QStringLiteral("pushButton_home"))->isEnabled());
    OpenWindow::click(program.rocker());
    QTRY_COMPARE(calls().last(), QStringLiteral("setRockerEnable(1001, 0)"));
    QCOMPARE(motionShown(), 2);
}

void tst_MoverWidget::theSpeedFollowsTheDeflectionWhileTheSwitchIsOn()
{
    play({{device, "MC3-A"}});
    OpenWindow program;
    program.connectTo();
    simulator::setJoystick(device, true, 4);
    QTRY_VERIFY(program.rocker()->isVisible());
    const auto *speed = program.panel(0)->findChild<QLabel *>(QStringLiteral("label_rockerSpeed"));
    const QString before = speed->text();
    simulator::setJoystick(device, true, 7);
    const int beats = simulator::callCount("getRockerInfo");
    QTRY_VERIFY(simulator::callCount("getRockerInfo") >= beats + 2);
    QCOMPARE(speed->text(), before); // the switch is off
    OpenWindow::click(program.rocker());
    QCOMPARE(speed->text(), QStringLiteral("7 mm/s"));
    simulator::setJoystick(device, true, -9);
    QTRY_COMPARE(speed->text(), QStringLiteral("9 mm/s"));
}

void tst_MoverWidget::losingTheJoystickTurnsJoystickModeOff()
{
    OpenWindow program;
    program.connectTo();
    simulator::setJoystick(device, true, 0);
    QTRY_VERIFY(program.rocker()->isVisible());
    const auto *move = program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_move"));
    const auto *position = program.panel(0)->findChild<QLabel *>(QStringLiteral("label_currentPos"));
    QTRY_VERIFY(position->text() != QStringLiteral("---"));
    OpenWindow::click(program.rocker());
    QVERIFY(!move->isVisible());
    QTRY_COMPARE(calls().last(), QStringLiteral("setRockerEnable(1001, 1)"));

    simulator::setJoystick(device, false);
    QTRY_VERIFY(program.rocker()->isHidden());
    QVERIFY(!program.rocker()->isChecked());
    QVERIFY(!program.rocker()->isEnabled());
    QVERIFY(move->isVisible());
    QTRY_COMPARE(calls().last(), QStringLiteral("setRockerEnable(1001, 0)"));
}

void tst_MoverWidget::aFurtherReportWithoutJoystickChangesNothing()
{
    OpenWindow program;
    program.connectTo();
    simulator::setJoystick(device, true, 4);
    QTRY_VERIFY(program.rocker()->isVisible());
    simulator::setJoystick(device, false);
    QTRY_VERIFY(program.rocker()->isHidden());
    QTRY_COMPARE(calls().last(), QStringLiteral("setRockerEnable(1001, 0)"));
    simulator::clearJournal();
    QTRY_VERIFY(simulator::callCount("getRockerInfo") >= 2);
    program.window().slot_updateControlerState();
    SerialComDev::instance()->close(); // after everything that was requested
    QCOMPARE(simulator::callCount("setRockerEnable"), 0);
}

// ---- Port watch ----------------------------------------------------------------------------------------------------

void tst_MoverWidget::tellsThatThePortIsLost()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    OpenWindow program;
    program.connectTo(device);
    simulator::unplug(device);
    const MessageBoxes boxes;
    announceDeviceChange(program.window());
    QTRY_COMPARE(boxes.texts(), QStringList{portLost}); // later, where a poll is in flight at that moment
    QCOMPARE(boxes.parents().first().data(), &program.window());

    program.dialog<OptionsWidget>()->setLanguage(1);
    announceDeviceChange(program.window());
    QTRY_COMPARE(boxes.texts(), (QStringList{portLost, portLost})); // in every language
}

void tst_MoverWidget::aLostPortClosesNothing()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    OpenWindow program;
    program.connectTo(device);
    simulator::unplug(device);
    simulator::clearJournal();
    const MessageBoxes boxes;
    announceDeviceChange(program.window());
    QTRY_COMPARE(boxes.count(), 1);
    QCOMPARE(program.panelNames(), QStringList{QStringLiteral("Axis1")});
    QVERIFY(SerialComDev::instance()->isOpened());
    QCOMPARE(calls(), QStringList{QStringLiteral("listTSMotorControlerDevices(10)")});
}

void tst_MoverWidget::aStormOfNoticesShowsOneBox()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    OpenWindow program;
    program.connectTo(device);
    simulator::unplug(device);
    int boxesAtOnce = 0;
    MessageBoxes boxes([&](QMessageBox *box) {
        for (int k = 0; k < 20; ++k)
            announceDeviceChange(program.window());
        program.window().slot_usbDevPortChanged(); // nor does a check that was under way show another
        boxesAtOnce = program.window().findChildren<QMessageBox *>().size();
        MessageBoxes::press(box, QStringLiteral("取消"));
    });
    announceDeviceChange(program.window());
    QTRY_COMPARE(boxes.count(), 1);
    QCOMPARE(boxesAtOnce, 1);
}

void tst_MoverWidget::aNoticeIsAnsweredBeforeItsBox()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    OpenWindow program;
    program.connectTo(device);
    simulator::unplug(device);
    const MessageBoxes boxes;
    for (int k = 0; k < 20; ++k)
        announceDeviceChange(program.window());
    QCOMPARE(boxes.count(), 0);
    QTRY_COMPARE(boxes.count(), 1);
}

void tst_MoverWidget::noticesAreJoinedIntoOneCheck()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    OpenWindow program;
    program.connectTo(device);
    const auto checks = [] { return simulator::callCount("listTSMotorControlerDevices"); };
    const int before = checks();
    const MessageBoxes boxes;
    for (int k = 0; k < 20; ++k)
        announceDeviceChange(program.window());
    QTRY_COMPARE(checks(), before + 1);
    announceDeviceChange(program.window()); // the first 20 leave nothing behind
    QTRY_COMPARE(checks(), before + 2);
    QCoreApplication::processEvents();
    QCOMPARE(boxes.count(), 0); // nothing is lost
}

void tst_MoverWidget::aBusyLibraryPutsThePortCheckOff()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    OpenWindow program;
    program.connectTo(device);
    simulator::unplug(device);
    std::promise<void> held;
    std::promise<void> done;
    auto another = std::async(std::launch::async, [&] {
        const LibraryLock library;
        held.set_value();
        done.get_future().wait();
    });
    held.get_future().wait();
    const MessageBoxes boxes;
    announceDeviceChange(program.window()); // comes back: the mutex is still taken
    program.window().slot_usbDevPortChanged();
    QCoreApplication::processEvents();
    const int whileBusy = boxes.count();
    done.set_value();
    another.get();
    QCOMPARE(whileBusy, 0);
    QTRY_COMPARE(boxes.texts(), QStringList{portLost});
}

// ---- Messages ------------------------------------------------------------------------------------------------------

void tst_MoverWidget::theWindowMayGoUnderItsMessage()
{
    OpenWindow program;
    MessageBoxes boxes([&](QMessageBox *) { program.destroy(); });
    program.window().slot_showTipMessage(QStringLiteral("text"));
    QCOMPARE(boxes.count(), 1);
}

void tst_MoverWidget::theWindowMayGoUnderTheMessageOfALostPort()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    OpenWindow program;
    program.connectTo(device);
    simulator::unplug(device);
    MessageBoxes boxes([&](QMessageBox *) { program.destroy(); });
    program.window().slot_usbDevPortChanged();
    QCOMPARE(boxes.texts(), QStringList{portLost});
}

// ---- Ways out ------------------------------------------------------------------------------------------------------

void tst_MoverWidget::leavingClosesTheControllerWithoutAQuestion_data()
{
    QTest::addColumn<Leave>("way");
    QTest::newRow("close button") << CloseButton;
    QTest::newRow("close event") << CloseEvent;
    QTest::newRow("end of the session") << SessionEnd;
}

void tst_MoverWidget::leavingClosesTheControllerWithoutAQuestion()
{
    QFETCH(Leave, way);
    OpenWindow program;
    program.connectTo();
    simulator::clearJournal();
    const MessageBoxes boxes;
    QCOMPARE(runUntilLeft([&] { leaveBy(way, program); }), 0);
    QCOMPARE(calls(), (QStringList{QStringLiteral("closeTSDevice(1001)"), QStringLiteral("removeDev(1001)")}));
    QCOMPARE(boxes.count(), 0);
}

void tst_MoverWidget::leavingWritesItsStepsToTheLog()
{
    OpenWindow program;
    QCOMPARE(runUntilLeft([&] { leaveBy(CloseButton, program); }), 0);
    QCOMPARE(
        m_log->lines().filter(QStringLiteral("on_pushButton_close_clicked")),
        (QStringList{
            QStringLiteral("on_pushButton_close_clicked: close the device"),
            QStringLiteral("on_pushButton_close_clicked: quit")}));
    QCOMPARE(calls(), QStringList()); // nothing was open
}

void tst_MoverWidget::leavesWhileTheLibraryHangs_data()
{
    leavingClosesTheControllerWithoutAQuestion_data();
}

void tst_MoverWidget::leavesWhileTheLibraryHangs()
{
    QFETCH(Leave, way);
    OpenWindow program;
    program.connectTo();
    simulator::hangCall("getCurrentPos");
    QVERIFY(QTest::qWaitFor([] { return simulator::waitUntilHanging(0); }));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(runUntilLeft([&] { leaveBy(way, program); }), 0);
    program.destroy();
    QVERIFY(!SerialComDev::endThread(1000));
    QVERIFY2(timer.elapsed() < 10000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(m_log->contains(QStringLiteral("a library call still runs, the device is left open")));
    QCOMPARE(simulator::callCount("closeTSDevice"), 0);
}

void tst_MoverWidget::leavesUnderAMessageBox()
{
    OpenWindow program;
    MessageBoxes boxes([&](QMessageBox *) { leaveBy(CloseEvent, program); });
    QCOMPARE(runUntilLeft([&] { program.window().slot_showTipMessage(QStringLiteral("text")); }), 0);
    QCOMPARE(boxes.count(), 1);
}

void tst_MoverWidget::readsNoMoreAxesOnTheWayOut()
{
    play({{device, "MC3-A", {{}, {}, {}}}});
    OpenWindow program;
    simulator::failCall("getMotorAutoDetect", -9);
    MessageBoxes boxes([&](QMessageBox *) { leaveBy(CloseEvent, program); });
    QCOMPARE(runUntilLeft([&] { program.connectTo(device); }), 0);
    QCOMPARE(boxes.count(), 1);
    QCOMPARE(simulator::callCount("getMotorAutoDetect"), 1);
    QCOMPARE(simulator::callCount("getDevSoftVersion"), 0);
    QCOMPARE(program.panelNames(), QStringList());
}

void tst_MoverWidget::leavesOnlyOnce()
{
    OpenWindow program;
    program.connectTo();
    QCOMPARE(
        runUntilLeft([&] {
            leaveBy(CloseButton, program);
            leaveBy(CloseEvent, program);
        }),
        0);
    QCOMPARE(m_log->lines().filter(QStringLiteral("on_pushButton_close_clicked: quit")).size(), 1);
    QCOMPARE(simulator::callCount("closeTSDevice"), 1);
}

QTEST_MAIN(tst_MoverWidget)
#include "tst_MoverWidget.moc"
