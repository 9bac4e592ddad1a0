// SPDX-License-Identifier: MIT
#include "axis/MoverControlWidget.h"

#include "axis/CycleOperationWidget.h"
#include "axis/DriveParamWidget.h"
#include "axis/JogParamWidget.h"
#include "axis/MoveParamWidget.h"
#include "models/DeviceParamWidget.h"
#include "support/Catalogue.h"
#include "support/OnMessageBox.h"
#include "support/Prefixed.h"
#include "support/WorkerFixture.h"

#include <QDoubleSpinBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>
#include <QTextBlock>
#include <QTextBrowser>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

constexpr int Axis = 1;
constexpr int OtherAxis = 0;

constexpr const char *motionButtons[] = {
    "pushButton_circle",     "pushButton_driveLeft", "pushButton_driveParam",
    "pushButton_driveRight", "pushButton_jogLeft",   "pushButton_jogParam",
    "pushButton_jogRight",   "pushButton_move",      "pushButton_moveParam",
};
constexpr const char *hiddenByTheJoystick[] = {
    "pushButton_move",
    "pushButton_moveParam",
    "pushButton_jogLeft",
    "pushButton_jogRight",
    "pushButton_jogParam",
    "pushButton_driveLeft",
    "pushButton_driveRight",
    "pushButton_driveParam",
    "label_6",
    "label_7",
    "label_8",
};
constexpr const char *shownByTheJoystick[] = {"label_speed", "label_rockerSpeed"};

const QString doingGray = ".QLabel#label_doingLight{border-image: url(:/image/grayPot.png);}";
const QString doingGreen = ".QLabel#label_doingLight{border-image: url(:/image/greenPot.png);}";
const QString doingRed = ".QLabel#label_doingLight{border-image: url(:/image/redPot.png);}";
const QString originGray = ".QLabel#label_originLight{border-image: url(:/image/grayPot.png);}";
const QString originGreen = ".QLabel#label_originLight{border-image: url(:/image/greenPot.png);}";

QString drivePopupSheet(const char *image)
{
    return QString(".DriveParamWidget{border-image: url(:/image/settings/") + image +
           ");background-color: rgb(22, 23, 26);}.QPushButton{background-color: rgb(56, 59, 64);border-radius:3px;"
           "color: rgb(255, 255, 255);font-size: 16px;}.QPushButton:hover{background-color: rgb(115, 119, 128);}"
           ".QPushButton:pressed{background-color: rgb(217, 59, 56);}.QLabel{color: #FFFFFF;font-size: 16px;}"
           ".QCheckBox{color: #FFFFFF;font-size: 16px;}";
}

/** A state in which nothing is worth a message. */
MotorStageState quiet()
{
    MotorStageState state = {};
    state.isCanRun = 1;
    state.isStop = 1;
    state.isEnable = 1;
    return state;
}

using Flag = qint16 MotorStageState::*;

} // namespace
Q_DECLARE_METATYPE(Flag)

class tst_MoverControlWidget : public WorkerFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Set-up
    void hasItsFixedSize();
    void startsWithGrayLightsAndNoPosition();
    void hidesWhatTheMainWindowDecidesOn();
    void createsItsPopupsHidden();
    void showsAxisNameAndModel();
    void givesItsAxisToAllPopups();
    void givesItsUnitToPositionAndPopups();
    void givesItsLimitsToThePopups_data();
    void givesItsLimitsToThePopups();
    void logsTheTextAndTheSerialNumber();
    void logsNoSerialNumberOfAnAxisWithoutOne();
    void logsTheSerialNumberInEnglish();

    // Polling
    void pollsPositionThenStateEvery100Milliseconds();
    void pollsForAsLongAsItLives();
    void stopUpdateStateHasNoEffect();
    void startUpdateStateStartsTheTimer();
    void commandsBeginTheIntervalAgain_data();
    void commandsBeginTheIntervalAgain();
    void otherButtonsLeaveTheTimerAlone_data();
    void otherButtonsLeaveTheTimerAlone();
    void loopStartBeginsTheIntervalAgain();
    void showsWhatTheControllerAnswers();

    // Position
    void showsThePositionWithThreeDecimals_data();
    void showsThePositionWithThreeDecimals();
    void ignoresAnswersForAnotherAxis();

    // State
    void runningLightFollowsTheIdleFlag();
    void runningLightTurnsRedOnRequestOnly();
    void originLightFollowsItsFlag();
    void lightsChangeOnlyWithTheirFlag();
    void lightsTellTheirStateToAssistiveTools();
    void broadcastsEachChangeOfTheIdleFlag();
    void tellsTheLoopRunDialogOfTheIdleFlag();
    void canRunSwitchesTheMotionButtonsAndHome();
    void firstStateThatCannotRunLeavesTheButtonsEnabled();
    void enableButtonFollowsTheFlagWithoutACommand();
    void countsTheRunsInOneLiveEntry_data();
    void countsTheRunsInOneLiveEntry();
    void startsANewCountAfterACompletedOne();
    void anotherEntryEndsTheLiveCount();
    void focusDoesNotGoUnderTheLoopRun();
    void loopRunCountsLiveOnTheController();
    void refusedCommandDuringALoopRunEndsItsLiveCount();
    void warnsOncePerRise_data();
    void warnsOncePerRise();
    void warnsOnlyOfTheValueOne();
    void warnsInTheOrderOfTheFlags();
    void handlesTheStepsOfAStateInOrder();
    void comparesWithTheLastStateSeen();

    // Joystick
    void joystickModeReplacesTheMotionButtons();
    void leavingJoystickModeBringsThemBack();
    void leavingJoystickModeKeepsItsLookWhileTheAxisCannotRun();
    void joystickModeLeavesOnlyHomeToCanRun();
    void showsTheJoystickSpeed_data();
    void showsTheJoystickSpeed();

    // Commands
    void buttonsSendTheirRequest_data();
    void buttonsSendTheirRequest();
    void enableButtonSendsItsCheckedState();
    void loopButtonOpensTheDialogWithTheWorkersValues();
    void settingButtonOpensTheOverlay();
    void expandButtonChangesItsTextAndSaysSo();
    void removeButtonCarriesTheAxisName();
    void logsMessagesOfItsAxis();

    // Popups and overlays
    void togglesOpenTheirPopupBelowThem_data();
    void togglesOpenTheirPopupBelowThem();
    void togglesHideTheirPopup_data() { toggles(); }
    void togglesHideTheirPopup();
    void popupsReleaseTheirToggle_data() { toggles(); }
    void popupsReleaseTheirToggle();
    void deactivationSlotsOnlyReleaseTheToggle_data() { toggles(); }
    void deactivationSlotsOnlyReleaseTheToggle();
    void drivePopupStaysOnTheScreen_data();
    void drivePopupStaysOnTheScreen();
    void overlaysCoverThePanel();
    void tabStaysInTheOpenOverlay_data();
    void tabStaysInTheOpenOverlay();
    void aClosedOverlayForgetsTheMouse();

    // Language and look
    void changesLanguageAndKeepsRunTimeTexts();
    void expandButtonKeepsItsStateOverAChangeOfLanguage();
    void paintsItsStyleSheetBackground();
    void closesWithAnOpenPopup_data() { toggles(); }
    void closesWithAnOpenPopup();

private:
    static void toggles();
    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *widget = m_panel->findChild<Widget *>(name);
        if (!widget)
            qFatal("no %s", name);
        return widget;
    }
    template <typename Popup>
    Popup *child() const
    {
        return m_panel->findChild<Popup *>();
    }
    MotionParamPopup *popupOf(const QString &toggle) const;
    void click(const char *button) const { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    void setAxis(const AxisDescription &axis) { m_panel->setAxis(QSharedPointer<ControlAxis>::create(axis)); }
    void startLoopRun() const;
    void verifyJoystickLook(bool joystick) const;
    void letPass(double seconds);
    void see(const MotorStageState &state) { m_panel->slot_updateDevState(Axis, state); }
    int ticksWithinAnInterval(const std::function<void()> &command) const;
    QTimer *timer() const { return m_panel->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly); }
    /** The log without the times. */
    QStringList log() const;

    std::unique_ptr<MoverControlWidget> m_panel;
};

void tst_MoverControlWidget::init()
{
    begin();
    m_panel = std::make_unique<MoverControlWidget>();
    setAxis({Axis, "ROT-60", "°", -10, 30, 7, 80, 15});
    m_panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_panel.get()));
}

void tst_MoverControlWidget::cleanup()
{
    m_panel.reset();
    end();
}

QStringList tst_MoverControlWidget::log() const
{
    const QString text = find<QTextBrowser>("textBrowser_operatioInfo")->toPlainText();
    const QStringList lines = text.isEmpty() ? QStringList() : text.split('\n');
    QStringList entries;
    for (int k = 1; k < lines.size(); k += 2)
        entries.append(lines[k]);
    return entries;
}

MotionParamPopup *tst_MoverControlWidget::popupOf(const QString &toggle) const
{
    if (toggle == "pushButton_moveParam")
        return child<MoveParamWidget>();
    if (toggle == "pushButton_jogParam")
        return child<JogParamWidget>();
    return child<DriveParamWidget>();
}

void tst_MoverControlWidget::toggles()
{
    QTest::addColumn<QString>("toggle");
    for (const char *toggle : {"pushButton_moveParam", "pushButton_jogParam", "pushButton_driveParam"})
        QTest::newRow(toggle) << toggle;
}

// ---- Set-up

void tst_MoverControlWidget::hasItsFixedSize()
{
    QCOMPARE(m_panel->minimumSize(), QSize(800, 450));
    QCOMPARE(m_panel->maximumSize(), QSize(800, 450));
}

void tst_MoverControlWidget::startsWithGrayLightsAndNoPosition()
{
    const MoverControlWidget panel;
    QCOMPARE(panel.index(), 0);
    QCOMPARE(panel.findChild<QLabel *>("label_axisName")->text(), QString("Axis1"));
    QCOMPARE(panel.findChild<QLabel *>("label_modelName")->text(), QString());
    QCOMPARE(panel.findChild<QLabel *>("label_doingLight")->styleSheet(), doingGray);
    QCOMPARE(panel.findChild<QLabel *>("label_originLight")->styleSheet(), originGray);
    QCOMPARE(panel.findChild<QLabel *>("label_6")->text(), QString("Jog"));
    QCOMPARE(panel.findChild<QLabel *>("label_7")->text(), QString("Drive"));
    QCOMPARE(panel.findChild<QLabel *>("label_8")->text(), QString("Move"));
    QCOMPARE(panel.findChild<QLabel *>("label_speed")->text(), QString("Speed"));
    QCOMPARE(panel.findChild<QTextBrowser *>("textBrowser_operatioInfo")->toPlainText(), QString());
    for (const char *name :
         {"pushButton_moveParam", "pushButton_jogParam", "pushButton_driveParam", "pushButton_enable",
          "pushButton_expand"}) {
        QVERIFY2(panel.findChild<QPushButton *>(name)->isCheckable(), name);
        QVERIFY2(!panel.findChild<QPushButton *>(name)->isChecked(), name);
    }
    for (const char *name : motionButtons)
        QVERIFY2(panel.findChild<QPushButton *>(name)->isEnabled(), name);
}

void tst_MoverControlWidget::hidesWhatTheMainWindowDecidesOn()
{
    for (const char *name : {"pushButton_expand", "pushButton_setting", "label_speed", "label_rockerSpeed"})
        QVERIFY2(!find<QWidget>(name)->isVisible(), name);
    for (const char *name : {"pushButton_home", "pushButton_stop", "pushButton_enable", "pushButton_remove"})
        QVERIFY2(find<QWidget>(name)->isVisible(), name);
    for (const char *name : motionButtons)
        QVERIFY2(find<QWidget>(name)->isVisible(), name);
}

void tst_MoverControlWidget::createsItsPopupsHidden()
{
    const QWidget *const popups[] = {
        child<DeviceParamWidget>(), child<MoveParamWidget>(), child<JogParamWidget>(), child<DriveParamWidget>(),
        child<CycleOperationWidget>()};
    for (const QWidget *popup : popups) {
        QVERIFY(popup);
        QCOMPARE(popup->parentWidget(), m_panel.get());
        QVERIFY(!popup->isVisible());
    }
    QCOMPARE(child<DeviceParamWidget>()->pos(), QPoint(0, 0));
    QCOMPARE(child<CycleOperationWidget>()->pos(), QPoint(0, 0));
}

void tst_MoverControlWidget::showsAxisNameAndModel()
{
    QCOMPARE(find<QLabel>("label_axisName")->text(), QString("Axis2"));
    QCOMPARE(find<QLabel>("label_modelName")->text(), QString("ROT-60"));
    QCOMPARE(m_panel->axisName(), QString("Axis2"));
}

void tst_MoverControlWidget::givesItsAxisToAllPopups()
{
    QCOMPARE(m_panel->index(), Axis);
    QCOMPARE(child<DeviceParamWidget>()->axis(), Axis);
    for (const char *toggle : {"pushButton_moveParam", "pushButton_jogParam", "pushButton_driveParam"}) {
        QWidget *popup = popupOf(toggle);
        popup->show();
        for (QDoubleSpinBox *field : popup->findChildren<QDoubleSpinBox *>())
            field->setValue(5);
        for (QSpinBox *field : popup->findChildren<QSpinBox *>())
            field->setValue(5);
        QTest::mouseClick(popup->findChild<QPushButton *>("pushButton_confirm"), Qt::LeftButton);
    }
    child<CycleOperationWidget>()->load(5, 5, 5, 5, 5);
    QMetaObject::invokeMethod(child<CycleOperationWidget>(), "on_pushButton_stop_clicked");
    QCOMPARE(
        takeRequests(), (QStringList{
                            "setAbsoluteDispParams(1, 5)", "setSpeedParams(1, 5, 5)", "setJogParams(1, 5, 5, 5)",
                            "setRelativeDispParams(1, 5, false)", "setSpeedParams(1, 5, 5)", "stopMotor(1)"}));
}

void tst_MoverControlWidget::givesItsUnitToPositionAndPopups()
{
    m_panel->slot_updateCurrentPos(Axis, 1);
    QCOMPARE(find<QLabel>("label_currentPos")->text(), QString("1.000 °"));
    QCOMPARE(child<MoveParamWidget>()->findChild<QLabel *>("label_posUnit")->text(), QString("°"));
    QCOMPARE(child<JogParamWidget>()->findChild<QLabel *>("label_stepUnit")->text(), QString("°"));
    QCOMPARE(child<DriveParamWidget>()->findChild<QLabel *>("label_relativeUnit")->text(), QString("°"));
    QCOMPARE(child<CycleOperationWidget>()->findChild<QLabel *>("label_dispUnit")->text(), QString("°"));
}

void tst_MoverControlWidget::givesItsLimitsToThePopups_data()
{
    QTest::addColumn<QString>("toggle");
    QTest::addColumn<QString>("message");
    QTest::newRow("move") << "pushButton_moveParam"
                          << "位置超出范围！[-10，30]\n速度超出范围！(0，7]\n加速度超出范围！(0，80]\n";
    QTest::newRow("jog") << "pushButton_jogParam"
                         << "步长超出范围！(0，40]\n";
    QTest::newRow("drive") << "pushButton_driveParam"
                           << "相对位移超出范围！(0，40]\n速度超出范围！(0，7]\n加速度超出范围！(0，80]\n";
    QTest::newRow("loop run") << "pushButton_circle"
                              << "相对位移超出范围！(0，40]\n速度超出范围！(0，7]\n加速度超出范围！(0，80]\n";
}

void tst_MoverControlWidget::givesItsLimitsToThePopups()
{
    QFETCH(QString, toggle);
    QFETCH(QString, message);
    click(toggle.toLatin1());
    const bool loopRun = toggle == "pushButton_circle";
    QWidget *popup = loopRun ? static_cast<QWidget *>(child<CycleOperationWidget>()) : popupOf(toggle);
    for (QDoubleSpinBox *field : popup->findChildren<QDoubleSpinBox *>())
        field->setValue(1e6);
    const OnMessageBox box;
    QTest::mouseClick(
        popup->findChild<QPushButton *>(loopRun ? "pushButton_left" : "pushButton_confirm"), Qt::LeftButton);
    QCOMPARE(box.text(), message);
}

void tst_MoverControlWidget::logsTheTextAndTheSerialNumber()
{
    m_panel->writeFirstLogLines("初始化运动轴参数成功");
    QCOMPARE(log(), (QStringList{" 初始化运动轴参数成功  ", " 位移台序列号：SIM-SN-310082  "}));
}

void tst_MoverControlWidget::logsNoSerialNumberOfAnAxisWithoutOne()
{
    setAxis({2}); // never read
    m_panel->writeFirstLogLines("初始化运动轴参数成功");
    QCOMPARE(log(), QStringList{" 初始化运动轴参数成功  "});
}

void tst_MoverControlWidget::logsTheSerialNumberInEnglish()
{
    const Catalogue catalogue;
    m_panel->writeFirstLogLines("Initialized");
    QCOMPARE(log(), (QStringList{" Initialized  ", " Motor stage serial NO.:SIM-SN-310082  "}));
}

// ---- Polling

void tst_MoverControlWidget::pollsPositionThenStateEvery100Milliseconds()
{
    QCOMPARE(timer()->interval(), 100);
    QVERIFY(timer()->isActive());
    QVERIFY(!timer()->isSingleShot());
    QTRY_VERIFY(simulator::callCount("getRuningState") >= 3);
    const std::vector<simulator::Call> journal = simulator::journal();
    for (std::size_t k = 0; k < journal.size(); ++k) {
        QCOMPARE(journal[k].function, std::string(k % 2 ? "getRuningState" : "getCurrentPos"));
        QCOMPARE(journal[k].arguments, std::string("1001, 1"));
    }
}

void tst_MoverControlWidget::pollsForAsLongAsItLives()
{
    m_panel->hide();
    const int before = simulator::callCount("getRuningState");
    QTRY_VERIFY(simulator::callCount("getRuningState") > before + 1);
    QSignalSpy polls(SerialComDev::instance().data(), &SerialComDev::signal_getDevState);
    QPointer<QTimer> polling = timer();
    m_panel.reset();
    QVERIFY(!polling);
    QVERIFY(polls.isEmpty());
}

void tst_MoverControlWidget::stopUpdateStateHasNoEffect()
{
    m_panel->listenToWorker();
    m_panel->slot_stopUpdateState();
    QVERIFY(timer()->isActive());
    simulator::setPosition(Device, Axis, 2.5);
    QTRY_COMPARE(find<QLabel>("label_currentPos")->text(), QString("2.500 °"));
}

void tst_MoverControlWidget::startUpdateStateStartsTheTimer()
{
    timer()->stop();
    m_panel->slot_startUpdateState();
    QVERIFY(timer()->isActive());
    QCOMPARE(timer()->interval(), 100);
}

void tst_MoverControlWidget::commandsBeginTheIntervalAgain_data()
{
    QTest::addColumn<QString>("button");
    for (const char *button :
         {"pushButton_move", "pushButton_driveRight", "pushButton_driveLeft", "pushButton_jogRight",
          "pushButton_jogLeft", "pushButton_home"})
        QTest::newRow(button) << button;
}

/**
 * How often the panel's timer, begun a moment ago, ticks until an interval from now is over, with `command` at once.
 * The timers are due in the order in which they were begun, however late that is looked at.
 */
int tst_MoverControlWidget::ticksWithinAnInterval(const std::function<void()> &command) const
{
    const QSignalSpy ticks(timer(), &QTimer::timeout);
    int result = -1;
    timer()->setTimerType(Qt::PreciseTimer);
    timer()->start();
    const QObject here;
    QTimer::singleShot(timer()->interval(), Qt::PreciseTimer, &here, [&] { result = ticks.count(); });
    // On Windows, timers of the same few milliseconds come in any order.
    const bool isApart = QTest::qWaitFor([this] { return timer()->remainingTime() <= timer()->interval() - 10; });
    command();
    const bool isOver = QTest::qWaitFor([&] { return result >= 0; });
    return isApart && isOver && timer()->isActive() ? result : -1;
}

void tst_MoverControlWidget::commandsBeginTheIntervalAgain()
{
    QFETCH(QString, button);
    QCOMPARE(ticksWithinAnInterval([&] { click(button.toLatin1()); }), 0);
}

void tst_MoverControlWidget::otherButtonsLeaveTheTimerAlone_data()
{
    QTest::addColumn<QString>("button");
    for (const char *button :
         {"pushButton_stop", "pushButton_enable", "pushButton_circle", "pushButton_moveParam", "pushButton_remove"})
        QTest::newRow(button) << button;
}

void tst_MoverControlWidget::otherButtonsLeaveTheTimerAlone()
{
    QFETCH(QString, button);
    timer()->stop();
    click(button.toLatin1());
    QVERIFY(!timer()->isActive());
}

void tst_MoverControlWidget::loopStartBeginsTheIntervalAgain()
{
    QCOMPARE(ticksWithinAnInterval([&] { emit child<CycleOperationWidget>()->signal_startDoing(); }), 0);
}

void tst_MoverControlWidget::showsWhatTheControllerAnswers()
{
    m_panel->listenToWorker();
    MotorStageState state = quiet();
    simulator::setState(Device, Axis, state);
    QTRY_VERIFY(find<QPushButton>("pushButton_enable")->isChecked());
    state.isStop = 0;
    state.isHome = 1;
    simulator::setState(Device, Axis, state);
    simulator::setPosition(Device, Axis, -0.5);
    QTRY_COMPARE(find<QLabel>("label_doingLight")->styleSheet(), doingGreen);
    QCOMPARE(find<QLabel>("label_originLight")->styleSheet(), originGreen);
    QTRY_COMPARE(find<QLabel>("label_currentPos")->text(), QString("-0.500 °"));

    state.isStop = 1;
    state.isLeftLimit = 1;
    simulator::setState(Device, Axis, state);
    QTRY_COMPARE(find<QLabel>("label_doingLight")->styleSheet(), doingGray);
    simulator::clearJournal();
    QTRY_VERIFY(simulator::callCount("getRuningState") >= 3);
    QCOMPARE(log(), QStringList{" 已到达负限位！  "});
}

// ---- Position

void tst_MoverControlWidget::showsThePositionWithThreeDecimals_data()
{
    QTest::addColumn<double>("position");
    QTest::addColumn<QString>("text");
    QTest::newRow("short") << 12.5 << "12.500 mm";
    QTest::newRow("negative") << -0.5 << "-0.500 mm";
    QTest::newRow("zero") << 0. << "0.000 mm";
    QTest::newRow("rounded") << 1.23456 << "1.235 mm";
    QTest::newRow("large") << 1234567.8 << "1234567.800 mm";
}

void tst_MoverControlWidget::showsThePositionWithThreeDecimals()
{
    QFETCH(double, position);
    QFETCH(QString, text);
    MoverControlWidget panel; // in the unit that it has by itself
    panel.slot_updateCurrentPos(0, position);
    QCOMPARE(panel.findChild<QLabel *>("label_currentPos")->text(), text);
}

void tst_MoverControlWidget::ignoresAnswersForAnotherAxis()
{
    m_panel->slot_updateCurrentPos(Axis, 3);
    QSignalSpy broadcasts(m_panel.get(), &MoverControlWidget::signal_broadcastRunningState);
    MotorStageState state = {};
    state.isStop = 1;
    state.isHome = 1;
    state.isEnable = 1;
    state.isLeftLimit = 1;
    state.runCount = 3;
    m_panel->slot_updateCurrentPos(OtherAxis, 4);
    m_panel->slot_updateDevState(OtherAxis, state);
    m_panel->slot_showOperationMsg(OtherAxis, OPERATION_STATE_OK, OPERATION_TYPE_MOVE, "Move");
    QCOMPARE(find<QLabel>("label_currentPos")->text(), QString("3.000 °"));
    QCOMPARE(find<QLabel>("label_originLight")->styleSheet(), originGray);
    QVERIFY(!find<QPushButton>("pushButton_enable")->isChecked());
    QCOMPARE(log(), QStringList());
    QVERIFY(broadcasts.isEmpty());
}

// ---- State

void tst_MoverControlWidget::runningLightFollowsTheIdleFlag()
{
    MotorStageState state = quiet();
    for (const qint16 idle : {1, 0, 1, 2}) {
        state.isStop = idle;
        see(state);
        QCOMPARE(find<QLabel>("label_doingLight")->styleSheet(), idle == 1 ? doingGray : doingGreen);
    }
}

void tst_MoverControlWidget::runningLightTurnsRedOnRequestOnly()
{
    m_panel->setDoingLightRed();
    QCOMPARE(find<QLabel>("label_doingLight")->styleSheet(), doingRed);
}

void tst_MoverControlWidget::originLightFollowsItsFlag()
{
    MotorStageState state = quiet();
    for (const qint16 flag : {1, 0, 5, 0}) {
        state.isHome = flag;
        see(state);
        QCOMPARE(find<QLabel>("label_originLight")->styleSheet(), flag ? originGreen : originGray);
    }
}

void tst_MoverControlWidget::lightsTellTheirStateToAssistiveTools()
{
    const auto names = [this] {
        return QStringList{
            find<QLabel>("label_doingLight")->accessibleName(), find<QLabel>("label_originLight")->accessibleName()};
    };
    QCOMPARE(names(), (QStringList{"运行中：灭", "原点：灭"}));
    MotorStageState state = quiet();
    state.isStop = 0;
    state.isHome = 1;
    see(quiet());
    see(state);
    QCOMPARE(names(), (QStringList{"运行中：亮", "原点：亮"}));
    {
        const Prefixed prefixed;
        QCOMPARE(names(), (QStringList{"T:T:运行中：亮", "T:T:原点：亮"}));
    }
    see(quiet());
    QCOMPARE(names(), (QStringList{"运行中：灭", "原点：灭"}));
}

void tst_MoverControlWidget::lightsChangeOnlyWithTheirFlag()
{
    MotorStageState state = quiet();
    see(state);
    find<QLabel>("label_doingLight")->setStyleSheet("untouched");
    find<QLabel>("label_originLight")->setStyleSheet("untouched");
    state.isCanRun = 0;
    state.isEnable = 0;
    state.runCount = 1;
    see(state);
    QCOMPARE(find<QLabel>("label_doingLight")->styleSheet(), QString("untouched"));
    QCOMPARE(find<QLabel>("label_originLight")->styleSheet(), QString("untouched"));
}

void tst_MoverControlWidget::broadcastsEachChangeOfTheIdleFlag()
{
    QSignalSpy broadcasts(m_panel.get(), &MoverControlWidget::signal_broadcastRunningState);
    MotorStageState state = {};
    see(state); // 0, as before anything was seen
    QVERIFY(broadcasts.isEmpty());
    for (const qint16 flag : {1, 1, 0, 0, 2}) {
        state.isStop = flag;
        see(state);
    }
    QCOMPARE(broadcasts.size(), 3);
    QCOMPARE(broadcasts[0].first().toBool(), true);
    QCOMPARE(broadcasts[1].first().toBool(), false);
    QCOMPARE(broadcasts[2].first().toBool(), true);
}

void tst_MoverControlWidget::tellsTheLoopRunDialogOfTheIdleFlag()
{
    MotorStageState state = quiet();
    see(state);
    click("pushButton_circle");
    {
        const OnMessageBox box;
        QTest::mouseClick(child<CycleOperationWidget>()->findChild<QPushButton *>("pushButton_close"), Qt::LeftButton);
        QCOMPARE(box.shown(), 0);
    }
    state.isStop = 0;
    see(state);
    child<CycleOperationWidget>()->show();
    const OnMessageBox box;
    QTest::mouseClick(child<CycleOperationWidget>()->findChild<QPushButton *>("pushButton_close"), Qt::LeftButton);
    QCOMPARE(box.shown(), 1);
}

void tst_MoverControlWidget::canRunSwitchesTheMotionButtonsAndHome()
{
    MotorStageState state = quiet();
    see(state);
    for (const qint16 canRun : {0, 1, 0, 2}) {
        state.isCanRun = canRun;
        see(state);
        for (const char *name : motionButtons)
            QCOMPARE(find<QPushButton>(name)->isEnabled(), canRun != 0);
        QCOMPARE(find<QPushButton>("pushButton_home")->isEnabled(), canRun != 0);
        QVERIFY(find<QPushButton>("pushButton_stop")->isEnabled());
        QVERIFY(find<QPushButton>("pushButton_enable")->isEnabled());
    }
}

void tst_MoverControlWidget::firstStateThatCannotRunLeavesTheButtonsEnabled()
{
    see({});
    for (const char *name : motionButtons)
        QVERIFY2(find<QPushButton>(name)->isEnabled(), name);
    QVERIFY(find<QPushButton>("pushButton_home")->isEnabled());
}

void tst_MoverControlWidget::enableButtonFollowsTheFlagWithoutACommand()
{
    MotorStageState state = quiet();
    for (const qint16 enabled : {1, 0, 2, 0}) {
        state.isEnable = enabled;
        see(state);
        QCOMPARE(find<QPushButton>("pushButton_enable")->isChecked(), enabled != 0);
    }
    QCOMPARE(takeRequests(), QStringList());
}

void tst_MoverControlWidget::countsTheRunsInOneLiveEntry_data()
{
    QTest::addColumn<bool>("english");
    QTest::newRow("Chinese") << false;
    QTest::newRow("English") << true;
}

void tst_MoverControlWidget::countsTheRunsInOneLiveEntry()
{
    QFETCH(bool, english);
    std::optional<Catalogue> catalogue;
    if (english)
        catalogue.emplace();
    const QString word = english ? "current run count " : "当前运行次数 ";
    MotorStageState state = quiet();
    m_panel->slot_showOperationMsg(Axis, OPERATION_STATE_NONE, OPERATION_TYPE_GENERAL, "before");
    for (const quint32 count : {1U, 1U, 2U, 4000000000U}) {
        state.runCount = count;
        see(state);
        QCOMPARE(log(), (QStringList{" before  ", word + QString::number(count) + (english ? " Doing " : " 运行中 ")}));
    }
    state.runCount = 0;
    for (int poll = 0; poll < 3; ++poll) {
        see(state);
        QCOMPARE(
            log(),
            (QStringList{" before  ", word + "4000000000" + (english ? " Operation completed " : " 运行完成 ")}));
    }
}

void tst_MoverControlWidget::startsANewCountAfterACompletedOne()
{
    MotorStageState state = quiet();
    for (const quint32 count : {3U, 0U}) {
        state.runCount = count;
        see(state);
    }
    m_panel->slot_showOperationMsg(Axis, OPERATION_STATE_OK, OPERATION_TYPE_LOOP, "正方向循环");
    for (const quint32 count : {1U, 0U, 0U}) {
        state.runCount = count;
        see(state);
    }
    QCOMPARE(log(), (QStringList{"当前运行次数 3 运行完成 ", " 正方向循环 操作成功 ", "当前运行次数 1 运行完成 "}));
}

void tst_MoverControlWidget::anotherEntryEndsTheLiveCount()
{
    MotorStageState state = quiet();
    state.runCount = 1;
    see(state);
    state.isRightLimit = 1;
    see(state);
    state.runCount = 2;
    see(state);
    QCOMPARE(log(), (QStringList{"当前运行次数 1 运行中 ", " 已到达正限位！  ", "当前运行次数 2 运行中 "}));
}

void tst_MoverControlWidget::focusDoesNotGoUnderTheLoopRun()
{
    QWidget window;
    m_panel->setParent(&window);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    auto *stop = find<QPushButton>("pushButton_stop");
    click("pushButton_circle");
    stop->setFocus(Qt::TabFocusReason);
    auto *loopRun = child<CycleOperationWidget>();
    QVERIFY(loopRun->isAncestorOf(QApplication::focusWidget()));
    loopRun->hide();
    stop->setFocus(Qt::TabFocusReason);
    QCOMPARE(QApplication::focusWidget(), stop);
    m_panel->setParent(nullptr);
}

/** Three times there and back, staying a second at each end. */
void tst_MoverControlWidget::startLoopRun() const
{
    click("pushButton_circle");
    const auto *dialog = child<CycleOperationWidget>();
    dialog->findChild<QDoubleSpinBox *>("doubleSpinBox_relativeDisp")->setValue(2);
    dialog->findChild<QDoubleSpinBox *>("doubleSpinBox_speed")->setValue(7);
    dialog->findChild<QDoubleSpinBox *>("doubleSpinBox_acc")->setValue(80);
    dialog->findChild<QSpinBox *>("spinBox_time")->setValue(3);
    dialog->findChild<QSpinBox *>("spinBox_delay")->setValue(1000);
    QTest::mouseClick(dialog->findChild<QPushButton *>("pushButton_right"), Qt::LeftButton);
}

/** Of the controller's time; then the panel polls and has the answers. */
void tst_MoverControlWidget::letPass(double seconds)
{
    simulator::advance(seconds);
    m_panel->slot_updateState();
    QMetaObject::invokeMethod(
        SerialComDev::instance().data(), [] {}, Qt::BlockingQueuedConnection);
    QCoreApplication::processEvents();
}

void tst_MoverControlWidget::loopRunCountsLiveOnTheController()
{
    const QString word = "当前运行次数 ";
    const QString running = " 运行中 ";
    const QString completed = word + "3 运行完成 ";
    m_panel->listenToWorker();
    startLoopRun();
    QStringList counts; // what the live entry showed, one after the other
    const double start = simulator::now();
    while (!counts.contains(completed) && simulator::now() < start + 60) {
        letPass(0.05);
        const QStringList live = log().filter(word);
        QVERIFY(live.size() <= 1);
        if (!live.isEmpty() && !counts.contains(live.first()))
            counts.append(live.first());
    }
    QCOMPARE(counts, (QStringList{word + '1' + running, word + '2' + running, word + '3' + running, completed}));
    QVERIFY(simulator::now() - start > 5); // the dwell between six moves
    QCOMPARE(log().last(), completed);
}

void tst_MoverControlWidget::refusedCommandDuringALoopRunEndsItsLiveCount()
{
    const QString word = "当前运行次数 ";
    m_panel->listenToWorker();
    startLoopRun();
    const double start = simulator::now();
    const auto passUntil = [&](const QString &entry) {
        while (!log().contains(entry) && simulator::now() < start + 60)
            letPass(0.05);
    };
    const QString second = word + "2 运行中 ";
    passUntil(second);
    const int entries = log().size();
    emit SerialComDev::instance()->signal_home(Axis);
    letPass(0);
    const QString completed = word + "3 运行完成 ";
    passUntil(completed);
    QCOMPARE(log().filter(word), (QStringList{second, completed}));
    QCOMPARE(log().indexOf(second), entries - 1);
    QCOMPARE(log().indexOf(completed), entries + 1); // the refusal stands between them
}

void tst_MoverControlWidget::warnsOncePerRise_data()
{
    QTest::addColumn<Flag>("flag");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    QTest::newRow("negative limit") << &MotorStageState::isLeftLimit << "已到达负限位！"
                                    << "Negative limit reached!";
    QTest::newRow("positive limit") << &MotorStageState::isRightLimit << "已到达正限位！"
                                    << "Positive limit reached!";
    // The failures end with a blank.
    QTest::newRow("negative opto") << &MotorStageState::isLeftOptoFault << "负限位光耦失效 "
                                   << "negative limit photocoupler failed";
    QTest::newRow("positive opto") << &MotorStageState::isRightOptoFault << "正限位光耦失效 "
                                   << "positive limit photocoupler failed";
    QTest::newRow("origin opto") << &MotorStageState::isHomeOptoFault << "原点限位光耦失效 "
                                 << "Origin limit photocoupler failed";
}

void tst_MoverControlWidget::warnsOncePerRise()
{
    QFETCH(Flag, flag);
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    MotorStageState state = quiet();
    see(state);
    for (const qint16 value : {1, 1, 1, 0, 0}) {
        state.*flag = value;
        see(state);
    }
    QCOMPARE(log(), QStringList{' ' + chinese + "  "});
    const QTextBlock last = find<QTextBrowser>("textBrowser_operatioInfo")->document()->lastBlock();
    QCOMPARE(last.begin().fragment().charFormat().foreground().color(), QColor(Qt::red));

    const Catalogue catalogue;
    state.*flag = 1;
    see(state);
    QCOMPARE(log().size(), 2);
    QCOMPARE(log().last().trimmed(), english.trimmed());
}

void tst_MoverControlWidget::warnsOnlyOfTheValueOne()
{
    MotorStageState state = quiet();
    for (const qint16 value : {2, -1, 0}) {
        state.isLeftLimit = value;
        see(state);
    }
    QCOMPARE(log(), QStringList());
    state.isLeftLimit = 2;
    see(state);
    state.isLeftLimit = 1; // risen from 2, too
    see(state);
    QCOMPARE(log().size(), 1);
}

void tst_MoverControlWidget::warnsInTheOrderOfTheFlags()
{
    MotorStageState state = quiet();
    state.isLeftLimit = state.isRightLimit = 1;
    state.isLeftOptoFault = state.isRightOptoFault = state.isHomeOptoFault = 1;
    see(state);
    QCOMPARE(
        log(), (QStringList{
                   " 已到达负限位！  ", " 已到达正限位！  ", " 负限位光耦失效   ", " 正限位光耦失效   ",
                   " 原点限位光耦失效   "}));
}

void tst_MoverControlWidget::handlesTheStepsOfAStateInOrder()
{
    // At the moment of the broadcast, the first step, nothing else has changed yet.
    MotorStageState state = quiet();
    see(state);
    state.isStop = 0;
    see(state);
    QStringList seen;
    connect(m_panel.get(), &MoverControlWidget::signal_broadcastRunningState, this, [&](bool idle) {
        QVERIFY(idle);
        QCOMPARE(find<QLabel>("label_doingLight")->styleSheet(), doingGreen);
        QCOMPARE(find<QLabel>("label_originLight")->styleSheet(), originGray);
        QVERIFY(find<QPushButton>("pushButton_home")->isEnabled());
        QVERIFY(find<QPushButton>("pushButton_enable")->isChecked());
        QCOMPARE(log(), QStringList());
        seen.append("broadcast");
    });
    // The enable button changes, the fourth step, after buttons and lights and before the log.
    connect(find<QPushButton>("pushButton_enable"), &QPushButton::toggled, this, [&] {
        QCOMPARE(find<QLabel>("label_doingLight")->styleSheet(), doingGray);
        QCOMPARE(find<QLabel>("label_originLight")->styleSheet(), originGreen);
        QVERIFY(!find<QPushButton>("pushButton_home")->isEnabled());
        QCOMPARE(log(), QStringList());
        seen.append("enable");
    });
    state.isStop = 1;
    state.isHome = 1;
    state.isCanRun = 0;
    state.isEnable = 0;
    state.runCount = 7;
    state.isLeftLimit = 1;
    see(state);
    QCOMPARE(seen, (QStringList{"broadcast", "enable"}));
    QCOMPARE(log(), (QStringList{"当前运行次数 7 运行中 ", " 已到达负限位！  "}));
}

void tst_MoverControlWidget::comparesWithTheLastStateSeen()
{
    MotorStageState state = quiet();
    see(state);
    find<QPushButton>("pushButton_enable")->setChecked(false);
    find<QPushButton>("pushButton_home")->setEnabled(false);
    see(state); // the same again: nothing is touched
    QVERIFY(!find<QPushButton>("pushButton_enable")->isChecked());
    QVERIFY(!find<QPushButton>("pushButton_home")->isEnabled());
}

// ---- Joystick

void tst_MoverControlWidget::verifyJoystickLook(bool joystick) const
{
    for (const char *name : hiddenByTheJoystick)
        QVERIFY2(find<QWidget>(name)->isVisible() != joystick, name);
    for (const char *name : shownByTheJoystick)
        QVERIFY2(find<QWidget>(name)->isVisible() == joystick, name);
    QCOMPARE(find<QPushButton>("pushButton_enable")->isEnabled(), !joystick);
}

void tst_MoverControlWidget::joystickModeReplacesTheMotionButtons()
{
    m_panel->setMoveBtnEnabled(false);
    verifyJoystickLook(true);
    QVERIFY(!find<QPushButton>("pushButton_circle")->isEnabled());
    QVERIFY(find<QPushButton>("pushButton_home")->isEnabled());
    QVERIFY(find<QPushButton>("pushButton_stop")->isEnabled());
    QVERIFY(find<QPushButton>("pushButton_circle")->isVisible());
}

void tst_MoverControlWidget::leavingJoystickModeBringsThemBack()
{
    see(quiet());
    m_panel->setMoveBtnEnabled(false);
    m_panel->setMoveBtnEnabled(true);
    verifyJoystickLook(false);
    QVERIFY(find<QPushButton>("pushButton_circle")->isEnabled());
}

void tst_MoverControlWidget::leavingJoystickModeKeepsItsLookWhileTheAxisCannotRun()
{
    MotorStageState state = quiet();
    see(state);
    m_panel->setMoveBtnEnabled(false);
    state.isCanRun = 0;
    see(state);
    m_panel->setMoveBtnEnabled(true);
    verifyJoystickLook(true);
    QVERIFY(!find<QPushButton>("pushButton_circle")->isEnabled());

    // The mode is off all the same: the next change enables the buttons, but does not show them.
    state.isCanRun = 1;
    see(state);
    for (const char *name : motionButtons)
        QVERIFY2(find<QPushButton>(name)->isEnabled(), name);
    verifyJoystickLook(true);
}

void tst_MoverControlWidget::joystickModeLeavesOnlyHomeToCanRun()
{
    MotorStageState state = quiet();
    see(state);
    m_panel->setMoveBtnEnabled(false);
    QList<bool> before;
    for (const char *name : motionButtons)
        before.append(find<QPushButton>(name)->isEnabled());
    for (const qint16 canRun : {0, 1}) {
        state.isCanRun = canRun;
        see(state);
        QCOMPARE(find<QPushButton>("pushButton_home")->isEnabled(), canRun != 0);
        QList<bool> now;
        for (const char *name : motionButtons)
            now.append(find<QPushButton>(name)->isEnabled());
        QCOMPARE(now, before);
    }
}

void tst_MoverControlWidget::showsTheJoystickSpeed_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("unit");
    QTest::addColumn<QString>("text");
    QTest::newRow("full") << 15. << 10 << "°"
                          << "15 °/s";
    QTest::newRow("tenth") << 15. << 1 << "°"
                           << "1.5 °/s";
    QTest::newRow("none") << 15. << 0 << "mm"
                          << "0 mm/s";
    QTest::newRow("six digits") << 1234567.8 << 10 << "mm"
                                << "1.23457e+06 mm/s";
    QTest::newRow("fraction") << 1. << 3 << "mm"
                              << "0.3 mm/s";
}

void tst_MoverControlWidget::showsTheJoystickSpeed()
{
    QFETCH(double, factor);
    QFETCH(int, level);
    QFETCH(QString, unit);
    QFETCH(QString, text);
    setAxis({Axis, "", unit, 0, 0, 99, 99, factor});
    m_panel->setRockerSpeed(level);
    QCOMPARE(find<QLabel>("label_rockerSpeed")->text(), text);
}

// ---- Commands

void tst_MoverControlWidget::buttonsSendTheirRequest_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("call");
    QTest::newRow("move") << "pushButton_move"
                          << "startMotor(1, 3)"
                          << "startMove(1001, 1)";
    QTest::newRow("drive right") << "pushButton_driveRight"
                                 << "startMotor(1, 4)"
                                 << "startDrive(1001, 1, 1)";
    QTest::newRow("drive left") << "pushButton_driveLeft"
                                << "startMotor(1, 5)"
                                << "startDrive(1001, 1, 2)";
    QTest::newRow("jog right") << "pushButton_jogRight"
                               << "startMotor(1, 6)"
                               << "startJog(1001, 1, 1)";
    QTest::newRow("jog left") << "pushButton_jogLeft"
                              << "startMotor(1, 7)"
                              << "startJog(1001, 1, 2)";
    QTest::newRow("home") << "pushButton_home"
                          << "home(1)"
                          << "home(1001, 1)";
    QTest::newRow("stop while nothing moves") << "pushButton_stop"
                                              << "stopMotor(1)"
                                              << "stopRuning(1001, 1)";
}

void tst_MoverControlWidget::buttonsSendTheirRequest()
{
    QFETCH(QString, button);
    QFETCH(QString, request);
    QFETCH(QString, call);
    see(quiet());
    click(button.toLatin1());
    QCOMPARE(takeRequests(), QStringList{request});
    QTRY_COMPARE(calls(), QStringList{call});
    QCOMPARE(log(), QStringList()); // the panel reports nothing by itself
}

void tst_MoverControlWidget::enableButtonSendsItsCheckedState()
{
    click("pushButton_enable");
    click("pushButton_enable");
    QCOMPARE(takeRequests(), (QStringList{"enableMotor(1, true)", "enableMotor(1, false)"}));
    QTRY_COMPARE(calls(), (QStringList{"setMotorEnable(1001, 1, 1)", "setMotorEnable(1001, 1, 0)"}));
}

void tst_MoverControlWidget::loopButtonOpensTheDialogWithTheWorkersValues()
{
    const auto worker = SerialComDev::instance();
    emit worker->signal_setSpeedParams(Axis, 44, 3.25);
    emit worker->signal_setCircleParams(Axis, 9, 12.5, 1500);
    emit worker->signal_setCircleParams(OtherAxis, 8, 11, 1000);
    QTRY_COMPARE(worker->getAxisCircleDelay(OtherAxis), 1000);
    takeRequests();

    find<QPushButton>("pushButton_setting")->show();
    click("pushButton_setting"); // lies over the panel, and under the dialog
    QTest::mouseClick(find<QPushButton>("pushButton_circle"), Qt::LeftButton);
    const auto *dialog = child<CycleOperationWidget>();
    QVERIFY(dialog->isVisible());
    QVERIFY(dialog->isAncestorOf(m_panel->childAt(m_panel->rect().center())));
    QCOMPARE(dialog->findChild<QDoubleSpinBox *>("doubleSpinBox_relativeDisp")->value(), 12.5);
    QCOMPARE(dialog->findChild<QDoubleSpinBox *>("doubleSpinBox_speed")->value(), 3.25);
    QCOMPARE(dialog->findChild<QDoubleSpinBox *>("doubleSpinBox_acc")->value(), 44.);
    QCOMPARE(dialog->findChild<QSpinBox *>("spinBox_time")->value(), 9);
    QCOMPARE(dialog->findChild<QSpinBox *>("spinBox_delay")->value(), 1500);
    QCOMPARE(takeRequests(), QStringList());
}

void tst_MoverControlWidget::settingButtonOpensTheOverlay()
{
    find<QPushButton>("pushButton_setting")->show();
    click("pushButton_setting");
    const auto *overlay = child<DeviceParamWidget>();
    QVERIFY(overlay->isVisible());
    QCOMPARE(overlay->geometry(), m_panel->rect());
    QCOMPARE(m_panel->childAt(2, 2), overlay);
}

void tst_MoverControlWidget::expandButtonChangesItsTextAndSaysSo()
{
    find<QPushButton>("pushButton_expand")->show();
    QCOMPARE(find<QPushButton>("pushButton_expand")->text(), QString("放大"));
    QSignalSpy expand(m_panel.get(), &MoverControlWidget::signal_expandControl);
    click("pushButton_expand");
    QCOMPARE(find<QPushButton>("pushButton_expand")->text(), QString("缩小"));
    click("pushButton_expand");
    QCOMPARE(find<QPushButton>("pushButton_expand")->text(), QString("放大"));
    QCOMPARE(expand.size(), 2);
    QCOMPARE(expand[0].first().toBool(), true);
    QCOMPARE(expand[1].first().toBool(), false);
}

void tst_MoverControlWidget::removeButtonCarriesTheAxisName()
{
    QSignalSpy closed(m_panel.get(), &MoverControlWidget::signal_closed);
    click("pushButton_remove");
    QCOMPARE(closed.size(), 1);
    QCOMPARE(closed.first().first().toString(), QString("Axis2"));
    QVERIFY(m_panel->isVisible()); // the main window asks and closes
}

void tst_MoverControlWidget::logsMessagesOfItsAxis()
{
    m_panel->listenToWorker();
    see(quiet());
    click("pushButton_stop");
    QTRY_COMPARE(log(), QStringList{"停止 停止运行 操作成功 "});
    simulator::failAlways("stopRuning", -5);
    click("pushButton_stop");
    QTRY_COMPARE(log().size(), 2);
    QCOMPARE(log().last(), QString("停止 停止运行 操作失败 "));
}

// ---- Popups and overlays

void tst_MoverControlWidget::togglesOpenTheirPopupBelowThem_data()
{
    QTest::addColumn<QString>("toggle");
    QTest::addColumn<QString>("field");
    QTest::newRow("move") << "pushButton_moveParam"
                          << "doubleSpinBox_disp";
    QTest::newRow("jog") << "pushButton_jogParam"
                         << "doubleSpinBox_step";
    QTest::newRow("drive") << "pushButton_driveParam"
                           << "doubleSpinBox_disp";
}

void tst_MoverControlWidget::togglesOpenTheirPopupBelowThem()
{
    QFETCH(QString, toggle);
    QFETCH(QString, field);
    const auto worker = SerialComDev::instance();
    emit worker->signal_setAbsoluteDispParams(Axis, 6.5);
    emit worker->signal_setRelativeDispParams(Axis, 6.5, true);
    emit worker->signal_setJogParams(Axis, 6.5, 3, 100);
    QTRY_COMPARE(worker->getAxisJogDelay(Axis), 100);

    m_panel->move(230, 20);
    const auto *button = find<QPushButton>(toggle.toLatin1());
    QTest::mouseClick(find<QPushButton>(toggle.toLatin1()), Qt::LeftButton);
    const QWidget *popup = popupOf(toggle);
    QVERIFY(popup->isVisible());
    QVERIFY(button->isChecked());
    QCOMPARE(popup->pos(), button->mapToGlobal(QPoint(button->width() / 2 - 230, button->height())));
    QCOMPARE(popup->findChild<QDoubleSpinBox *>(field)->value(), 6.5);
}

void tst_MoverControlWidget::togglesHideTheirPopup()
{
    QFETCH(QString, toggle);
    click(toggle.toLatin1());
    QVERIFY(popupOf(toggle)->isVisible());
    click(toggle.toLatin1());
    QVERIFY(!popupOf(toggle)->isVisible());
    QVERIFY(!find<QPushButton>(toggle.toLatin1())->isChecked());
    QCOMPARE(takeRequests(), QStringList());
}

void tst_MoverControlWidget::popupsReleaseTheirToggle()
{
    QFETCH(QString, toggle);
    click(toggle.toLatin1());
    QEvent event(QEvent::WindowDeactivate);
    QCoreApplication::sendEvent(popupOf(toggle), &event);
    QVERIFY(!popupOf(toggle)->isVisible());
    QVERIFY(!find<QPushButton>(toggle.toLatin1())->isChecked());
    QCOMPARE(takeRequests(), QStringList());
}

void tst_MoverControlWidget::deactivationSlotsOnlyReleaseTheToggle()
{
    QFETCH(QString, toggle);
    click(toggle.toLatin1());
    const QByteArray slot = toggle == "pushButton_moveParam"  ? "slot_moveParamWindowDeactivated"
                            : toggle == "pushButton_jogParam" ? "slot_jogParamWindowDeactivated"
                                                              : "slot_driveParamWindowDeactivated";
    QVERIFY(QMetaObject::invokeMethod(m_panel.get(), slot));
    QVERIFY(!find<QPushButton>(toggle.toLatin1())->isChecked());
    QVERIFY(popupOf(toggle)->isVisible());
}

void tst_MoverControlWidget::drivePopupStaysOnTheScreen_data()
{
    QTest::addColumn<int>("missing"); // pixels that the popup lacks below its button
    QTest::addColumn<bool>("above");
    QTest::newRow("just fits below") << 0 << false;
    QTest::newRow("one pixel short") << 1 << true;
    QTest::newRow("button on the lower edge") << 119 << true;
    QTest::newRow("room below") << -100 << false;
}

void tst_MoverControlWidget::drivePopupStaysOnTheScreen()
{
    QFETCH(int, missing);
    QFETCH(bool, above);
    auto *popup = child<DriveParamWidget>();
    auto *button = find<QPushButton>("pushButton_driveParam");
    const int left = button->width() / 2 - 230;
    const int lowest = QGuiApplication::primaryScreen()->size().height() - popup->height() + missing;
    const int rise = button->mapToGlobal(QPoint(0, button->height())).y() - lowest;
    m_panel->move(m_panel->x(), m_panel->y() - rise);
    QCOMPARE(button->mapToGlobal(QPoint(0, button->height())).y(), lowest);

    click("pushButton_driveParam");
    QVERIFY(popup->isVisible());
    QCOMPARE(popup->pos(), button->mapToGlobal(QPoint(left, above ? -120 : button->height())));
    QCOMPARE(popup->styleSheet(), drivePopupSheet(above ? "driveParam.png" : "driveParamUp.png"));
}

void tst_MoverControlWidget::overlaysCoverThePanel()
{
    for (const QSize size : {QSize(800, 450), QSize(1000, 700), QSize(900, 500)}) {
        m_panel->setFixedSize(size);
        QCOMPARE(child<DeviceParamWidget>()->geometry(), QRect(QPoint(0, 0), size));
        QCOMPARE(child<CycleOperationWidget>()->geometry(), QRect(QPoint(0, 0), size));
        QCOMPARE(child<CycleOperationWidget>()->minimumSize(), size);
        QCOMPARE(child<DeviceParamWidget>()->maximumSize(), size);
    }
}

void tst_MoverControlWidget::tabStaysInTheOpenOverlay_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("loop run") << "pushButton_circle";
    QTest::newRow("device parameters") << "pushButton_setting";
}

void tst_MoverControlWidget::tabStaysInTheOpenOverlay()
{
    QFETCH(QString, button);
    const bool loopRun = button == "pushButton_circle";
    QWidget *overlay = loopRun ? static_cast<QWidget *>(child<CycleOperationWidget>()) : child<DeviceParamWidget>();
    m_panel->show();
    QVERIFY(QTest::qWaitForWindowActive(m_panel.get()));
    find<QPushButton>(button.toLatin1().constData())->click();
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab}) {
        QSet<QWidget *> visited;
        for (int step = 0; step < 20; ++step) {
            QTest::keyClick(QApplication::focusWidget(), key);
            QVERIFY(overlay->isAncestorOf(QApplication::focusWidget()));
            visited.insert(QApplication::focusWidget());
        }
        QVERIFY(visited.size() > 4);
    }
}

void tst_MoverControlWidget::aClosedOverlayForgetsTheMouse()
{
    m_panel->show();
    click("pushButton_circle");
    auto *close = child<CycleOperationWidget>()->findChild<QPushButton *>("pushButton_close");
    close->setAttribute(Qt::WA_UnderMouse);
    child<CycleOperationWidget>()->hide();
    QVERIFY(!close->underMouse());
}

// ---- Language and look

void tst_MoverControlWidget::changesLanguageAndKeepsRunTimeTexts()
{
    m_panel->slot_updateCurrentPos(Axis, 12.5);
    m_panel->setRockerSpeed(10);
    m_panel->slot_showOperationMsg(Axis, OPERATION_STATE_OK, OPERATION_TYPE_MOVE, "Move");
    const QStringList logged = log();
    {
        const Prefixed prefixed;
        QCOMPARE(find<QLabel>("label_doing")->text(), QString("T:运行中"));
        QCOMPARE(find<QLabel>("label_origin")->text(), QString("T:原点"));
        QCOMPARE(find<QPushButton>("pushButton_remove")->toolTip(), QString("T:关闭控制轴窗口"));
        QCOMPARE(find<QPushButton>("pushButton_expand")->text(), QString("T:放大"));
        QCOMPARE(find<QLabel>("label_axisName")->text(), QString("Axis2"));
        QCOMPARE(find<QLabel>("label_modelName")->text(), QString("ROT-60"));
        QCOMPARE(find<QLabel>("label_currentPos")->text(), QString("12.500 °"));
        QCOMPARE(find<QLabel>("label_rockerSpeed")->text(), QString("15 °/s"));
        QCOMPARE(find<QLabel>("label_8")->text(), QString("Move"));
        QCOMPARE(log(), logged);
        QCOMPARE(child<MoveParamWidget>()->findChild<QLabel *>("label_posUnit")->text(), QString("°"));
        QCOMPARE(child<CycleOperationWidget>()->findChild<QLabel *>("label_accUnit")->text(), QString("°/s²"));
    }
    QCOMPARE(find<QLabel>("label_doing")->text(), QString("运行中"));
}

void tst_MoverControlWidget::expandButtonKeepsItsStateOverAChangeOfLanguage()
{
    find<QPushButton>("pushButton_expand")->show();
    click("pushButton_expand");
    const Prefixed prefixed;
    QCOMPARE(find<QPushButton>("pushButton_expand")->text(), QString("T:缩小"));
    click("pushButton_expand");
    QCOMPARE(find<QPushButton>("pushButton_expand")->text(), QString("T:放大"));
}

void tst_MoverControlWidget::paintsItsStyleSheetBackground()
{
    m_panel->setStyleSheet("MoverControlWidget { background-color: #123456; }");
    QCOMPARE(m_panel->grab().toImage().pixelColor(2, m_panel->height() - 3), QColor("#123456"));
}

void tst_MoverControlWidget::closesWithAnOpenPopup()
{
    QFETCH(QString, toggle);
    click(toggle.toLatin1());
    m_panel.reset();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

QTEST_MAIN(tst_MoverControlWidget)
#include "tst_MoverControlWidget.moc"
