// SPDX-License-Identifier: MIT
#include "axis/MoveParamWidget.h"
#include "device/Heart.h"
#include "shell/PanelArea.h"
#include "support/MessageBoxes.h"

#include "OpenWindow.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QSignalSpy>

#include <functional>
#include <set>
#include <thread>

namespace {

constexpr int device = 1001;

QString axis1()
{
    return QStringLiteral("Axis1");
}

/** Whether a widget's picture shows anything but its ground; in a part of it, or all. */
bool showsInk(QWidget *widget, const QRect &part = QRect())
{
    const QImage picture = widget->grab(part.isNull() ? widget->rect() : part).toImage();
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, y) != picture.pixel(0, 0))
                return true;
        }
    }
    return false;
}

QStringList namesOf(const QVector<int> &axes)
{
    QStringList names;
    for (const int axis : axes)
        names.append(QStringLiteral("Axis%1").arg(axis + 1));
    return names;
}

std::vector<AxisOf> axesWith(const QByteArray &chips)
{
    std::vector<AxisOf> axes;
    for (const char chip : chips)
        axes.push_back({chip});
    return axes;
}

void playChips(const QByteArray &chips)
{
    play({{device, "MC3-A", axesWith(chips)}});
}

MoverDevParam stage()
{
    MoverDevParam param;
    param.unitString = QStringLiteral("mm");
    param.minPos = -50;
    param.maxPos = 50;
    param.maxSpeed = 10;
    param.maxAcc = 50;
    return param;
}

} // namespace

class tst_AxisWindows : public WindowTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    // Initialisation on connection
    void opensAPanelForEachAxisWhoseStageIdentifiesItself_data();
    void opensAPanelForEachAxisWhoseStageIdentifiesItself();
    void readsTheAxesInOrderAndThenTheController();
    void anAxisWhoseChipCannotBeReadIsReportedAndPassedOver();
    void anAxisWithAnEmptyModelNameIsOpened();
    void anAxisThatCannotBeReadIsReportedAndPassedOver();
    void opensNothingWhenTheAxisCountCannotBeRead();
    void handsTheFirmwareVersionToTheHelpPanel();
    void beatsWhileConnected();
    void beatsAndPollsRunInOneThread();
    void startsInJoystickModeWhenTheControllerIsInIt();
    void aFailedReadOfTheJoystickModeLeavesItOff();
    void forgetsTheJoystickModeOfTheLastController();
    void initialisationShowsABusyCursorButNotUnderMessages();
    void anImpossibleAxisCountIsNotToldAxisByAxis();

    // Adding a panel
    void refusesMorePanelsThanAxes();
    void readsAnAxisThatWasAddedByHand();
    void reportsAnAxisAddedByHandThatCannotBeRead();
    void doesNotReadADetectedAxisAgain();
    void tabButtonHasItsLook();
    void panelShowsNameModelAndUnit_data();
    void panelShowsNameModelAndUnit();
    void panelKeepsToTheLimitsOfItsStage();
    void panelLogsThatItsAxisWasInitialised();
    void aPanelOpenedAgainShowsAnAxisThatStandsStill();
    void panelMayShowATipMessage();
    void panelAddedInJoystickModeIsInIt();

    // Menu bar
    void tabsStandInTextOrder();
    void menuBarHasNoGapsAndKeepsTheJoystickSwitch();
    void tabKeyFollowsTheMenuBar();

    // Layout
    void contentIsSizedByTheNumberOfPanels();
    void contentFillsTheViewportAfterwards();
    void panelsFillTwoColumnsRowByRow();
    void theEmptyContentSaysWhatToDoNext();
    void noHintShowsBesideAPanel();

    // Add-axis button
    void offersTheFreeAxesAndTheModels();
    void opensTheAxisThatWasChosen();
    void aDoubleClickOpensTheChosenAxisOnce();

    // Messages
    void messages_data();
    void messages();

    // Expand and collapse
    void expandShowsOnePanelEnlarged();
    void collapseShowsAllPanelsAndReLaysThem();
    void expandIgnoresOtherSenders();

    // Tab click
    void theTabOfADetectedAxisCountsAsShown();
    void theTabOfAnAxisAddedByHandShowsItsPanelOnce();
    void aTabClickShowsItsOwnPanel();

    // Close request
    void closingAPanelAsksFirst();
    void refusalKeepsThePanel();
    void closedPanelsAxisIsFreeAgain();
    void closingAnExpandedPanelShowsTheOthers();
    void aPanelMayGoUnderTheQuestion();
    void theWindowMayGoUnderTheQuestion();
    void theWindowMayGoUnderAMessageOfTheInitialisation();
    void aPanelMayGoUnderTheMessageOfItsPopup();

    // Disconnect
    void disconnectRemovesEverything();
    void disconnectEndsTheHeartbeatAndThePolling();
};

// ---- Initialisation on connection ----------------------------------------------------------------------------------

void tst_AxisWindows::opensAPanelForEachAxisWhoseStageIdentifiesItself_data()
{
    QTest::addColumn<QByteArray>("chips");
    QTest::addColumn<QVector<int>>("open");
    QTest::newRow("all") << QByteArray("www") << QVector<int>{0, 1, 2};
    QTest::newRow("first and third") << QByteArray("waw") << QVector<int>{0, 2};
    QTest::newRow("blank chips") << QByteArray("bwb") << QVector<int>{1};
    QTest::newRow("none") << QByteArray("aab") << QVector<int>{};
    QTest::newRow("one axis") << QByteArray("w") << QVector<int>{0};
}

void tst_AxisWindows::opensAPanelForEachAxisWhoseStageIdentifiesItself()
{
    QFETCH(QByteArray, chips);
    QFETCH(QVector<int>, open);
    playChips(chips);
    OpenWindow program;
    const MessageBoxes boxes;
    program.connectTo();
    QCOMPARE(program.panelNames(), namesOf(open));
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith(namesOf(open)));
    QCOMPARE(program.window().axisCount(), chips.size());
    QCOMPARE(boxes.count(), 0);
    for (const int axis : open)
        QVERIFY(program.panel(axis)->isVisible());
}

void tst_AxisWindows::readsTheAxesInOrderAndThenTheController()
{
    playChips("wa");
    OpenWindow program;
    program.connectTo();
    QStringList reads;
    const QStringList all = calls();
    for (const QString &call : all.mid(all.indexOf(QStringLiteral("getDevAxisCount(1001)")))) {
        const bool partOfAxisRead = call.contains(
            QRegularExpression(QStringLiteral("SerialNumber|getSpeed|getAcc|getRel|getTarget|getJog|getCircle")));
        if (!partOfAxisRead)
            reads.append(call);
    }
    QCOMPARE(
        reads, (QStringList{
                   QStringLiteral("getDevAxisCount(1001)"), QStringLiteral("getMotorAutoDetect(1001, 0)"),
                   QStringLiteral("getMotorModelName(1001, 0)"), QStringLiteral("getMotorModelName(1001, 0)"),
                   QStringLiteral("getMotorParams(1001, 0)"), QStringLiteral("getMotorAutoDetect(1001, 1)"),
                   QStringLiteral("getDevSoftVersion(1001)"), QStringLiteral("getRockerEnable(1001)")}));
}

void tst_AxisWindows::anAxisWhoseChipCannotBeReadIsReportedAndPassedOver()
{
    playChips("www");
    simulator::failCall("getMotorAutoDetect", -9, 2);
    OpenWindow program;
    const MessageBoxes boxes;
    program.connectTo();
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("初始化轴，识别芯片错误(0)！")}); // 0 whatever the status
    QCOMPARE(program.panelNames(), namesOf({0, 2}));
}

void tst_AxisWindows::anAxisWithAnEmptyModelNameIsOpened()
{
    playChips("w");
    simulator::answerText("getMotorModelName", "");
    OpenWindow program;
    program.connectTo();
    QCOMPARE(program.panelNames(), namesOf({0}));
    QCOMPARE(program.panel(0)->findChild<QLabel *>(QStringLiteral("label_modelName"))->text(), QString());
}

void tst_AxisWindows::anAxisThatCannotBeReadIsReportedAndPassedOver()
{
    playChips("www");
    simulator::failCall("getCircleDelay", -9, 1, 2);
    OpenWindow program;
    const MessageBoxes boxes;
    program.connectTo();
    const QString text = QStringLiteral("初始化轴，读取参数错误(-14)！");
    QCOMPARE(boxes.texts(), (QStringList{text, text}));
    QCOMPARE(program.panelNames(), namesOf({2}));
}

void tst_AxisWindows::opensNothingWhenTheAxisCountCannotBeRead()
{
    simulator::failCall("getDevAxisCount", -9);
    OpenWindow program;
    const MessageBoxes boxes;
    program.connectTo();
    QCOMPARE(boxes.count(), 0);
    QCOMPARE(program.panelNames(), QStringList());
    QCOMPARE(simulator::callCount("getMotorAutoDetect"), 0);
}

void tst_AxisWindows::handsTheFirmwareVersionToTheHelpPanel()
{
    OpenWindow program;
    program.connectTo();
    const auto *version = program.dialog<HelpWidget>()->findChild<QLabel *>(QStringLiteral("label_firmwareVersion"));
    QCOMPARE(version->text(), QStringLiteral("2.4.1 simulated"));
}

void tst_AxisWindows::beatsWhileConnected()
{
    OpenWindow program;
    QSignalSpy beats(SerialComDev::instance().data(), &SerialComDev::signal_heartBeatInfo);
    QVERIFY(!beats.wait(Heart::IntervalMs + 200));
    program.connectTo();
    QVERIFY(beats.wait(5000));
    QVERIFY(beats.wait(5000));
}

void tst_AxisWindows::beatsAndPollsRunInOneThread()
{
    playChips("w");
    OpenWindow program;
    program.connectTo();
    simulator::clearJournal();
    QTRY_VERIFY(simulator::callCount("getRockerInfo") > 0 && simulator::callCount("getCurrentPos") > 0);
    std::set<std::thread::id> threads;
    for (const simulator::Call &call : simulator::journal())
        threads.insert(call.thread);
    QCOMPARE(int(threads.size()), 1);
    QCOMPARE(int(threads.count(std::this_thread::get_id())), 0);
}

void tst_AxisWindows::startsInJoystickModeWhenTheControllerIsInIt()
{
    OpenWindow program;
    simulator::setJoystick(device, true, 3);
    program.connectTo();
    QVERIFY(!program.rocker()->isChecked());
    SerialComDev::instance()->setRockerEnable(1);
    program.disconnect();
    simulator::clearJournal();
    program.connectTo();
    QVERIFY(program.rocker()->isChecked());
    QTRY_COMPARE(simulator::callCount("setRockerEnable"), 1);
    QCOMPARE(calls().last(), QStringLiteral("setRockerEnable(1001, 1)"));
    QVERIFY(!program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_move"))->isVisible());
    QVERIFY(!program.panel(1)->findChild<QPushButton *>(QStringLiteral("pushButton_move"))->isVisible());
}

void tst_AxisWindows::aFailedReadOfTheJoystickModeLeavesItOff()
{
    playChips("w");
    OpenWindow program;
    simulator::failCall("getRockerEnable", -9);
    program.connectTo();
    QVERIFY(!program.rocker()->isChecked());
    QVERIFY(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_move"))->isVisible());
    SerialComDev::instance()->close(); // after everything that was requested
    QCOMPARE(simulator::callCount("setRockerEnable"), 0);
}

void tst_AxisWindows::forgetsTheJoystickModeOfTheLastController()
{
    play({{device, "MC3-A"}, {1002, "MC3-B"}});
    OpenWindow program;
    simulator::setJoystick(device, true, 3);
    program.connectTo(device);
    QTRY_VERIFY(program.rocker()->isVisible());
    OpenWindow::click(program.rocker());
    program.disconnect();
    program.connectTo(1002);
    QVERIFY(!program.rocker()->isChecked());
    QVERIFY(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_move"))->isVisible());
}

void tst_AxisWindows::anImpossibleAxisCountIsNotToldAxisByAxis()
{
    playChips("waw");
    simulator::answerNumber("getDevAxisCount", 1000);
    const MessageBoxes boxes;
    OpenWindow program;
    program.connectTo(device);
    // Axes 4 to 8 one by one, then that of all the others.
    QCOMPARE(boxes.texts(), QStringList(QVector<QString>(6, QStringLiteral("初始化轴，识别芯片错误(0)！")).toList()));
    QCOMPARE(program.panelNames(), (QStringList{QStringLiteral("Axis1"), QStringLiteral("Axis3")}));
}

void tst_AxisWindows::initialisationShowsABusyCursorButNotUnderMessages()
{
    playChips("ww");
    simulator::failCall("getMotorAutoDetect", -9);
    OpenWindow program;
    bool busyUnderMessage = true;
    const MessageBoxes boxes([&](QMessageBox *box) {
        busyUnderMessage = QGuiApplication::overrideCursor() != nullptr;
        MessageBoxes::press(box, QStringLiteral("确认"));
    });
    bool busy = false;
    simulator::hangCall("getMotorParams");
    std::thread another([&] {
        busy = simulator::waitUntilHanging(5000) && QGuiApplication::overrideCursor();
        simulator::releaseHung();
    });
    program.connectTo();
    another.join();
    QCOMPARE(boxes.count(), 1);
    QVERIFY(!busyUnderMessage);
    QVERIFY(busy);
    QVERIFY(!QGuiApplication::overrideCursor());
}

// ---- Adding a panel ------------------------------------------------------------------------------------------------

void tst_AxisWindows::refusesMorePanelsThanAxes()
{
    playChips("ww");
    OpenWindow program;
    program.connectTo();
    simulator::clearJournal();
    const MessageBoxes boxes;
    program.window().slot_addControl(QStringLiteral("LIN-100"), 1, stage());
    program.window().slot_addControl(QStringLiteral("LIN-100"), 1, stage(), true);
    const QString text = QStringLiteral("轴数量超出上限,请检查操作窗口后继续操作！");
    QCOMPARE(boxes.texts(), (QStringList{text, text}));
    QCOMPARE(program.panelNames(), namesOf({0, 1}));
    QCOMPARE(calls(), QStringList());
}

void tst_AxisWindows::readsAnAxisThatWasAddedByHand()
{
    playChips("aa");
    OpenWindow program;
    program.connectTo();
    simulator::clearJournal();
    program.window().slot_addControl(QStringLiteral("LIN-100"), 1, stage());
    program.window().slot_addControl(QStringLiteral("LIN-100"), 0, stage(), false);
    QCOMPARE(
        calls().filter(QStringLiteral("getSpeed")),
        (QStringList{QStringLiteral("getSpeed(1001, 1)"), QStringLiteral("getSpeed(1001, 0)")}));
    QCOMPARE(program.panelNames(), namesOf({1, 0}));
}

void tst_AxisWindows::reportsAnAxisAddedByHandThatCannotBeRead()
{
    playChips("aa");
    OpenWindow program;
    program.connectTo();
    simulator::failCall("getJogStep", -9);
    const MessageBoxes boxes;
    program.window().slot_addControl(QStringLiteral("LIN-100"), 1, stage(), false);
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("初始化轴，读取参数错误(-9)！")});
    QCOMPARE(program.panelNames(), QStringList());
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith({}));
}

void tst_AxisWindows::doesNotReadADetectedAxisAgain()
{
    playChips("a");
    OpenWindow program;
    program.connectTo();
    simulator::clearJournal();
    program.window().slot_addControl(QStringLiteral("LIN-100"), 0, stage(), true);
    QCOMPARE(calls(), QStringList());
    QCOMPARE(program.panelNames(), namesOf({0}));
}

void tst_AxisWindows::tabButtonHasItsLook()
{
    playChips("w");
    OpenWindow program;
    program.connectTo();
    const QPushButton *tab = program.tab(0);
    QCOMPARE(tab->text(), axis1());
    QVERIFY(tab->isCheckable());
    QVERIFY(tab->isVisible());
    QCOMPARE(tab->minimumSize(), QSize(120, 60));
    QCOMPARE(tab->maximumSize(), QSize(120, 60));
    QCOMPARE(
        tab->styleSheet(),
        QStringLiteral(".QPushButton{border-right:2px solid rgb(66, 66, 66);text-align: center;padding-left:10px;"
                       "padding-right:10px;font-size: 20px;color: #FFFFFF;}"
                       ".QPushButton:hover{background-color: rgb(140, 140, 140);}"
                       ".QPushButton:pressed{background-color: rgb(22,110,215);}"
                       ".QPushButton:!enabled{background-color: rgb(200, 200, 200);}"));
}

void tst_AxisWindows::panelShowsNameModelAndUnit_data()
{
    QTest::addColumn<int>("moveType");
    QTest::addColumn<QString>("position");
    QTest::newRow("linear") << 0 << QStringLiteral("0.000 mm");
    QTest::newRow("rotation") << 1 << QStringLiteral("0.000 °");
    QTest::newRow("angular") << 2 << QStringLiteral("0.000 °");
    QTest::newRow("lifting") << 3 << QStringLiteral("0.000 mm");
}

void tst_AxisWindows::panelShowsNameModelAndUnit()
{
    QFETCH(int, moveType);
    play({{device, "MC3-A", {{'a'}, {'w', "STAGE-7", moveType}}}});
    OpenWindow program;
    program.connectTo();
    const MoverControlWidget *panel = program.panel(1);
    QVERIFY(panel);
    QCOMPARE(panel->index(), 1);
    QCOMPARE(panel->parentWidget(), program.content());
    QCOMPARE(panel->findChild<QLabel *>(QStringLiteral("label_axisName"))->text(), QStringLiteral("Axis2"));
    QCOMPARE(panel->findChild<QLabel *>(QStringLiteral("label_modelName"))->text(), QStringLiteral("STAGE-7"));
    QFETCH(QString, position);
    QTRY_COMPARE(panel->findChild<QLabel *>(QStringLiteral("label_currentPos"))->text(), position);
}

void tst_AxisWindows::panelKeepsToTheLimitsOfItsStage()
{
    playChips("a");
    OpenWindow program;
    program.connectTo();
    program.window().slot_addControl(QStringLiteral("LIN-100"), 0, stage());
    OpenWindow::click(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_moveParam")));
    const auto *popup = program.panel(0)->findChild<MoveParamWidget *>();
    for (const char *field : {"doubleSpinBox_disp", "doubleSpinBox_speed", "doubleSpinBox_acc"})
        popup->findChild<QDoubleSpinBox *>(QLatin1String(field))->setValue(60);
    const MessageBoxes boxes;
    OpenWindow::click(popup->findChild<QPushButton *>(QStringLiteral("pushButton_confirm")));
    QCOMPARE(
        boxes.texts(),
        QStringList{QStringLiteral("位置超出范围！[-50，50]\n速度超出范围！(0，10]\n加速度超出范围！(0，50]\n")});
}

void tst_AxisWindows::panelLogsThatItsAxisWasInitialised()
{
    play({{device, "MC3-A", {{'w', "STAGE-7"}}}});
    OpenWindow program;
    program.connectTo();
    QVERIFY(m_log->lines().contains(QStringLiteral("addControlWidget: \"Axis1\"")));
    const QStringList lines = logOf(program.panel(0)).split(QLatin1Char('\n'));
    QVERIFY(lines.filter(QStringLiteral("初始化运动轴参数成功")).size() == 1);
    QVERIFY(lines.filter(QStringLiteral("SIM-SN-STAGE-7")).size() == 1);
    QVERIFY(
        logOf(program.panel(0)).indexOf(QStringLiteral("初始化运动轴参数成功")) <
        logOf(program.panel(0)).indexOf(QStringLiteral("SIM-SN-STAGE-7")));
}

void tst_AxisWindows::aPanelOpenedAgainShowsAnAxisThatStandsStill()
{
    playChips("w");
    OpenWindow program;
    simulator::setPosition(device, 0, 12.5);
    MotorStageState state = {};
    state.isLeftLimit = 1;
    simulator::setState(device, 0, state);
    for (int round = 0; round < 2; ++round) { // the second time nothing of it is news to the worker
        program.connectTo();
        const MoverControlWidget *panel = program.panel(0);
        QTRY_COMPARE(
            panel->findChild<QLabel *>(QStringLiteral("label_currentPos"))->text(), QStringLiteral("12.500 mm"));
        QTRY_VERIFY(logOf(panel).contains(QStringLiteral("已到达负限位！")));
        program.disconnect();
    }
}

void tst_AxisWindows::panelMayShowATipMessage()
{
    playChips("w");
    OpenWindow program;
    program.connectTo();
    const MessageBoxes boxes;
    emit program.panel(0)->signal_showTipMsg(QStringLiteral("text"));
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("text")});
    QCOMPARE(boxes.parents().first().data(), &program.window());
}

void tst_AxisWindows::panelAddedInJoystickModeIsInIt()
{
    playChips("wa");
    OpenWindow program;
    simulator::setJoystick(device, true, 6);
    program.connectTo();
    QTRY_VERIFY(program.rocker()->isVisible());
    OpenWindow::click(program.rocker());
    MoverDevParam param = stage();
    param.maxRockerSpeed = 5;
    program.window().slot_addControl(QStringLiteral("LIN-100"), 1, param);
    QVERIFY(!program.panel(1)->findChild<QPushButton *>(QStringLiteral("pushButton_move"))->isVisible());
    QCOMPARE(
        program.panel(1)->findChild<QLabel *>(QStringLiteral("label_rockerSpeed"))->text(), QStringLiteral("3 mm/s"));
}

// ---- Menu bar ------------------------------------------------------------------------------------------------------

void tst_AxisWindows::tabsStandInTextOrder()
{
    playChips("aaa");
    OpenWindow program;
    program.connectTo();
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith({}));
    for (const int axis : {2, 0, 1})
        program.window().slot_addControl(QStringLiteral("LIN-100"), axis, stage());
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith(namesOf({0, 1, 2})));
    QTRY_VERIFY(program.tab(0)->x() < program.tab(1)->x() && program.tab(1)->x() < program.tab(2)->x());
}

void tst_AxisWindows::menuBarHasNoGapsAndKeepsTheJoystickSwitch()
{
    playChips("waa");
    OpenWindow program;
    program.connectTo();
    const QLayout *layout = program.find<QWidget>("widget_menuBar")->layout();
    QCOMPARE(layout->spacing(), 0);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QVERIFY(layout->itemAt(layout->count() - 2)->expandingDirections().testFlag(Qt::Horizontal));
    QVERIFY(program.rocker()->isHidden());
    simulator::setJoystick(device, true, 0);
    QTRY_VERIFY(program.rocker()->isVisible());
    program.window().slot_addControl(QStringLiteral("LIN-100"), 2, stage());
    QVERIFY(program.rocker()->isVisible());
    QTRY_COMPARE(program.tab(2)->geometry().left(), program.tab(0)->geometry().right() + 1);
    QCOMPARE(program.find("pushButton_addAsix")->geometry().left(), program.tab(2)->geometry().right() + 1);
}

void tst_AxisWindows::tabKeyFollowsTheMenuBar()
{
    playChips("aaa");
    OpenWindow program;
    program.connectTo();
    for (const int axis : {2, 0})
        program.window().slot_addControl(QStringLiteral("LIN-100"), axis, stage());
    QCOMPARE(program.find("pushButton_connect")->nextInFocusChain(), program.tab(0));
    QCOMPARE(program.tab(0)->nextInFocusChain(), program.tab(2));
    QCOMPARE(program.tab(2)->nextInFocusChain(), program.find("pushButton_addAsix"));
}

// ---- Layout --------------------------------------------------------------------------------------------------------

void tst_AxisWindows::contentIsSizedByTheNumberOfPanels()
{
    playChips("aaa");
    // Not shown: a visible scroll area fits its content to the viewport as soon as it is resized.
    MoverWidget window;
    const auto *content = window.findChild<QWidget *>(QStringLiteral("widget_controls"));
    QCOMPARE(SerialComDev::instance()->open(device), device);
    window.slot_devConnected();
    const QSize sizes[] = {{820, 590}, {1630, 590}, {1630, 1040}};
    for (int axis = 0; axis < 3; ++axis) {
        window.slot_addControl(QStringLiteral("LIN-100"), axis, stage());
        QCOMPARE(content->size(), sizes[axis]);
    }
    const MessageBoxes boxes;
    window.slot_controlWidgetClosed(QStringLiteral("Axis2"));
    QCOMPARE(content->size(), sizes[1]);
    window.slot_devDisConnected();
    QCOMPARE(content->size(), QSize(820, 140));
}

void tst_AxisWindows::theEmptyContentSaysWhatToDoNext()
{
    playChips("aaa");
    OpenWindow program;
    auto *area = program.find<PanelArea>("widget_controls");
    QCOMPARE(area->hint(), QStringLiteral("请先连接设备"));
    QCOMPARE(area->accessibleDescription(), area->hint());
    QVERIFY(showsInk(area));
    program.connectTo();
    QCOMPARE(program.panelNames(), QStringList());
    QCOMPARE(area->hint(), QStringLiteral("请点击“+”添加运动轴控制窗口"));
    QVERIFY(showsInk(area));
    program.disconnect();
    QCOMPARE(area->hint(), QStringLiteral("请先连接设备"));
}

void tst_AxisWindows::noHintShowsBesideAPanel()
{
    playChips("waa");
    OpenWindow program;
    program.connectTo();
    QCOMPARE(program.panelNames(), namesOf({0}));
    // In a picture of the content alone, where the hint would stand: to the right of the only panel and across it.
    const QRect beside(820, 0, program.content()->width() - 820, program.content()->height());
    QVERIFY(!showsInk(program.content(), beside));
    program.disconnect();
    QTRY_VERIFY(!program.panel(0) && showsInk(program.content(), beside));
}

void tst_AxisWindows::contentFillsTheViewportAfterwards()
{
    playChips("w");
    OpenWindow program;
    program.connectTo();
    const auto *area = program.find<QScrollArea>("scrollArea_controls");
    QVERIFY(area->widgetResizable());
    QTRY_COMPARE(program.content()->size(), area->viewport()->size());
}

void tst_AxisWindows::panelsFillTwoColumnsRowByRow()
{
    playChips("aaa");
    OpenWindow program;
    program.connectTo();
    for (const int axis : {1, 2, 0})
        program.window().slot_addControl(QStringLiteral("LIN-100"), axis, stage());
    const auto *grid = qobject_cast<QGridLayout *>(program.content()->layout());
    QVERIFY(grid);
    QCOMPARE(grid->horizontalSpacing(), 4);
    QCOMPARE(grid->verticalSpacing(), 4);
    QCOMPARE(grid->contentsMargins(), QMargins(3, 3, 3, 3));
    QCOMPARE(grid->itemAtPosition(0, 0)->widget(), program.panel(1));
    QCOMPARE(grid->itemAtPosition(0, 1)->widget(), program.panel(2));
    QCOMPARE(grid->itemAtPosition(1, 0)->widget(), program.panel(0));
    QVERIFY(grid->itemAtPosition(2, 0)->spacerItem());
    QVERIFY(grid->itemAtPosition(2, 0)->expandingDirections().testFlag(Qt::Vertical));
    QCOMPARE(grid->rowStretch(2), 1);
    QTRY_COMPARE(program.panel(1)->pos(), QPoint(3, 3));
    QCOMPARE(program.panel(2)->pos(), QPoint(3 + program.panel(1)->width() + 4, 3));
    QTRY_COMPARE(program.panel(0)->pos(), QPoint(3, 3 + program.panel(1)->height() + 4));
}

// ---- Add-axis button -----------------------------------------------------------------------------------------------

void tst_AxisWindows::offersTheFreeAxesAndTheModels()
{
    playChips("awa");
    OpenWindow program;
    program.connectTo();
    OpenWindow::click(program.find("pushButton_addAsix"));
    auto *dialog = program.dialog<AddControlsWidget>();
    QVERIFY(dialog->isVisible());
    const auto *axes = dialog->findChild<QComboBox *>(QStringLiteral("comboBox_Axsi"));
    QCOMPARE(axes->count(), 2);
    QCOMPARE(axes->itemText(0), QStringLiteral("Axis1"));
    QCOMPARE(axes->itemText(1), QStringLiteral("Axis3"));
    QVERIFY(dialog->findChild<QComboBox *>(QStringLiteral("comboBox_models"))->count() > 0);
}

void tst_AxisWindows::opensTheAxisThatWasChosen()
{
    playChips("awa");
    OpenWindow program;
    program.connectTo();
    program.addAxis(2, QStringLiteral("LIN-50"));
    QCOMPARE(program.panelNames(), namesOf({1, 2}));
    QCOMPARE(
        program.panel(2)->findChild<QLabel *>(QStringLiteral("label_modelName"))->text(), QStringLiteral("LIN-50"));
    QVERIFY(program.panel(2)->isVisible());
    QVERIFY(program.dialog<AddControlsWidget>()->isHidden());
}

void tst_AxisWindows::aDoubleClickOpensTheChosenAxisOnce()
{
    playChips("awa");
    OpenWindow program;
    program.connectTo();
    program.addAxis(2, QStringLiteral("LIN-50"));
    // The second click was made while the first one waited for the controller.
    program.dialog<AddControlsWidget>()->findChild<QPushButton *>(QStringLiteral("pushButton_confirm"))->click();
    QCOMPARE(program.panelNames(), namesOf({1, 2}));
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith(namesOf({1, 2})));
}

// ---- Messages ------------------------------------------------------------------------------------------------------

using Situation = std::function<void(OpenWindow &program)>;
Q_DECLARE_METATYPE(Situation)

void tst_AxisWindows::messages_data()
{
    QTest::addColumn<Situation>("arise");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    const auto row = [](const char *name, Situation arise, const char *chinese, const char *english) {
        QTest::newRow(name) << std::move(arise) << QString::fromUtf8(chinese) << QString::fromUtf8(english);
    };
    const auto clickAdd = [](OpenWindow &program) { OpenWindow::click(program.find("pushButton_addAsix")); };
    row(
        "chip",
        [](OpenWindow &program) {
            simulator::failCall("getMotorAutoDetect", -9);
            program.connectTo();
        },
        "初始化轴，识别芯片错误(0)！", "Initialization axis, \nchip recognition error (0)!");
    row(
        "parameters",
        [](OpenWindow &program) {
            simulator::failCall("getSpeed", -9);
            program.connectTo();
        },
        "初始化轴，读取参数错误(-4)！", "Initialize the axis,\n read parameter error (-4)!");
    row(
        "too many panels",
        [](OpenWindow &program) {
            program.connectTo();
            program.window().slot_addControl(QStringLiteral("LIN-100"), 0, stage());
        },
        "轴数量超出上限,请检查操作窗口后继续操作！",
        "The number of Axis exceeds the \nlimit,please check the operation \nwindow before continuing!");
    row("not connected", clickAdd, "设备未连接，请连接设备后继续操作!",
        "The device is not connected,please \nconnect the device and continue to \noperate!");
    row(
        "axis count unknown",
        [clickAdd](OpenWindow &program) {
            simulator::failCall("getDevAxisCount", -9);
            program.connectTo();
            clickAdd(program);
        },
        "获取设备参数失败，请检查\n设备是否正确连接!",
        "Failed to get device parameters, \nplease check whether the device \nis correctly connected!");
    row(
        "no free axis",
        [clickAdd](OpenWindow &program) {
            program.connectTo();
            clickAdd(program);
        },
        "轴数量已达上限!", "Maximum number of axes reached!");
    row(
        "disconnected again",
        [clickAdd](OpenWindow &program) {
            program.connectTo();
            program.disconnect();
            clickAdd(program);
        },
        "设备未连接，请连接设备后继续操作!",
        "The device is not connected,please \nconnect the device and continue to \noperate!");
    row(
        "close request",
        [](OpenWindow &program) {
            program.connectTo();
            OpenWindow::click(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_remove")));
        },
        "您确定要关闭控制轴窗口吗?", "Sure you want to close the control\n axis window?");
}

void tst_AxisWindows::messages()
{
    QFETCH(Situation, arise);
    playChips("w");
    {
        OpenWindow program;
        const MessageBoxes boxes;
        arise(program);
        QTEST(boxes.texts().join(QLatin1Char('|')), "chinese");
        QCOMPARE(boxes.parents().first().data(), &program.window());
        QVERIFY(program.dialog<AddControlsWidget>()->isHidden());
    }
    QVERIFY(SerialComDev::endThread(5000));
    playChips("w");
    OpenWindow program;
    program.dialog<OptionsWidget>()->setLanguage(1);
    const MessageBoxes boxes(QStringLiteral("OK"));
    arise(program);
    QTEST(boxes.texts().join(QLatin1Char('|')), "english");
}

// ---- Expand and collapse -------------------------------------------------------------------------------------------

void tst_AxisWindows::expandShowsOnePanelEnlarged()
{
    playChips("www");
    OpenWindow program;
    program.connectTo();
    emit program.panel(1)->signal_expandControl(true);
    QVERIFY(program.panel(0)->isHidden());
    QVERIFY(program.panel(1)->isVisible());
    QVERIFY(program.panel(2)->isHidden());
    QCOMPARE(program.panel(1)->size(), QSize(1060, 560));
    QCOMPARE(program.panel(1)->minimumSize(), program.panel(1)->maximumSize());
    QCoreApplication::processEvents();
    QCOMPARE(program.panel(1)->size(), QSize(1060, 560));
}

void tst_AxisWindows::collapseShowsAllPanelsAndReLaysThem()
{
    playChips("www");
    OpenWindow program;
    program.connectTo();
    emit program.panel(1)->signal_expandControl(true);
    QCoreApplication::processEvents();
    const QPointer<QLayout> formerGrid = program.content()->layout();
    emit program.panel(1)->signal_expandControl(false);
    QVERIFY(!formerGrid);
    for (const int axis : {0, 1, 2})
        QVERIFY(program.panel(axis)->isVisible());
    QCOMPARE(program.panel(1)->size(), QSize(530, 280));
    QCOMPARE(program.panel(1)->minimumSize(), program.panel(1)->maximumSize());
    QTRY_COMPARE(program.panel(1)->y(), 3);
    QTRY_COMPARE(program.panel(2)->x(), 3);
    QVERIFY(program.panel(2)->y() > 3);
}

void tst_AxisWindows::expandIgnoresOtherSenders()
{
    playChips("ww");
    OpenWindow program;
    program.connectTo();
    program.window().slot_expandContorl(true);
    QVERIFY(program.panel(0)->isVisible());
    QVERIFY(program.panel(1)->isVisible());
}

// ---- Tab click -----------------------------------------------------------------------------------------------------

void tst_AxisWindows::theTabOfADetectedAxisCountsAsShown()
{
    playChips("ww");
    OpenWindow program;
    program.connectTo();
    program.panel(1)->hide();
    OpenWindow::click(program.tab(1));
    QVERIFY(program.panel(1)->isHidden());
    QCOMPARE(
        m_log->lines().filter(QStringLiteral("slot_AsixButtonClicked")),
        (QStringList{
            QStringLiteral("slot_AsixButtonClicked :  \"Axis2\""), QStringLiteral("slot_AsixButtonClicked return")}));
}

void tst_AxisWindows::theTabOfAnAxisAddedByHandShowsItsPanelOnce()
{
    playChips("aa");
    OpenWindow program;
    program.connectTo();
    program.window().slot_addControl(QStringLiteral("LIN-100"), 1, stage());
    program.panel(1)->hide();
    QCoreApplication::processEvents();
    const QPointer<QLayout> formerGrid = program.content()->layout();
    OpenWindow::click(program.tab(1));
    QVERIFY(program.panel(1)->isVisible());
    QVERIFY(!formerGrid); // laid out again
    QVERIFY(!m_log->contains(QStringLiteral("slot_AsixButtonClicked return")));

    program.panel(1)->hide();
    OpenWindow::click(program.tab(1)); // it has been shown
    QVERIFY(program.panel(1)->isHidden());
    QVERIFY(m_log->contains(QStringLiteral("slot_AsixButtonClicked return")));
}

void tst_AxisWindows::aTabClickShowsItsOwnPanel()
{
    playChips("aa");
    OpenWindow program;
    program.connectTo();
    program.window().slot_addControl(QStringLiteral("LIN-100"), 1, stage());
    program.window().slot_addControl(QStringLiteral("LIN-100"), 0, stage());
    program.panel(0)->hide();
    program.panel(1)->hide();
    OpenWindow::click(program.tab(0));
    QVERIFY(program.panel(0)->isVisible());
    QVERIFY(program.panel(1)->isHidden());
    QCOMPARE(program.content()->layout()->itemAt(0)->widget(), program.panel(1));
}

// ---- Close request -------------------------------------------------------------------------------------------------

void tst_AxisWindows::closingAPanelAsksFirst()
{
    playChips("www");
    OpenWindow program;
    program.connectTo();
    const QPointer<MoverControlWidget> closed = program.panel(1);
    const QPointer<QPushButton> tab = program.tab(1);
    const MessageBoxes boxes;
    OpenWindow::click(closed->findChild<QPushButton *>(QStringLiteral("pushButton_remove")));
    QCOMPARE(boxes.texts(), QStringList{QStringLiteral("您确定要关闭控制轴窗口吗?")});
    QCOMPARE(program.panelNames(), namesOf({0, 2}));
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith(namesOf({0, 2})));
    QCOMPARE(program.window().axisTabs().count(), 2);
    QCOMPARE(program.content()->layout()->itemAt(1)->widget(), program.panel(2));
    QVERIFY(closed); // until control returns to the event loop
    QTRY_VERIFY(!closed);
    QTRY_VERIFY(!tab);
}

void tst_AxisWindows::refusalKeepsThePanel()
{
    playChips("ww");
    OpenWindow program;
    program.connectTo();
    const MessageBoxes boxes(QStringLiteral("取消"));
    OpenWindow::click(program.panel(1)->findChild<QPushButton *>(QStringLiteral("pushButton_remove")));
    QCOMPARE(boxes.count(), 1);
    QCOMPARE(program.panelNames(), namesOf({0, 1}));
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith(namesOf({0, 1})));
    QVERIFY(program.panel(1)->isVisible());
}

void tst_AxisWindows::closedPanelsAxisIsFreeAgain()
{
    playChips("ww");
    OpenWindow program;
    program.connectTo();
    const MessageBoxes boxes;
    OpenWindow::click(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_remove")));
    program.addAxis(0);
    QCOMPARE(program.panelNames(), namesOf({1, 0}));
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith(namesOf({0, 1})));
    QCOMPARE(boxes.count(), 1);
}

void tst_AxisWindows::closingAnExpandedPanelShowsTheOthers()
{
    playChips("www");
    OpenWindow program;
    program.connectTo();
    emit program.panel(1)->signal_expandControl(true);
    const MessageBoxes boxes;
    emit program.panel(1)->signal_closed(QStringLiteral("Axis2"));
    QVERIFY(program.panel(0)->isVisible());
    QVERIFY(program.panel(2)->isVisible());
}

void tst_AxisWindows::aPanelMayGoUnderTheQuestion()
{
    playChips("ww");
    OpenWindow program;
    program.connectTo();
    const QPointer<MoverControlWidget> panel = program.panel(0);
    const MessageBoxes boxes([&](QMessageBox *box) {
        program.window().slot_devDisConnected();
        QTimer::singleShot(0, box, [box] { MessageBoxes::press(box, QStringLiteral("确认")); });
    });
    OpenWindow::click(panel->findChild<QPushButton *>(QStringLiteral("pushButton_remove")));
    QTRY_VERIFY(!panel);
    QCOMPARE(boxes.count(), 1);
    QCOMPARE(program.panelNames(), QStringList());
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith({}));
}

void tst_AxisWindows::theWindowMayGoUnderTheQuestion()
{
    playChips("w");
    OpenWindow program;
    program.connectTo();
    const MessageBoxes boxes([&](QMessageBox *) { program.destroy(); });
    program.window().slot_controlWidgetClosed(axis1());
    QCOMPARE(boxes.count(), 1);
}

void tst_AxisWindows::theWindowMayGoUnderAMessageOfTheInitialisation()
{
    playChips("www");
    OpenWindow program;
    simulator::failCall("getMotorAutoDetect", -9);
    QCOMPARE(SerialComDev::instance()->open(device), device);
    const MessageBoxes boxes([&](QMessageBox *) { program.destroy(); });
    program.window().slot_devConnected();
    QCOMPARE(boxes.count(), 1);
    QCOMPARE(simulator::callCount("getMotorAutoDetect"), 1);
}

void tst_AxisWindows::aPanelMayGoUnderTheMessageOfItsPopup()
{
    playChips("w");
    OpenWindow program;
    program.connectTo();
    const QPointer<MoverControlWidget> panel = program.panel(0);
    OpenWindow::click(panel->findChild<QPushButton *>(QStringLiteral("pushButton_moveParam")));
    auto *popup = panel->findChild<QWidget *>(QStringLiteral("MoveParamWidget"));
    QVERIFY(popup && popup->isVisible());
    const QList<QDoubleSpinBox *> fields = popup->findChildren<QDoubleSpinBox *>();
    for (QDoubleSpinBox *field : fields)
        field->setValue(field->maximum()); // beyond what the stage can do
    const MessageBoxes boxes([&](QMessageBox *) { program.window().slot_devDisConnected(); });
    OpenWindow::click(popup->findChild<QPushButton *>(QStringLiteral("pushButton_confirm")));
    QCOMPARE(boxes.count(), 1);
    QVERIFY(!panel);
}

// ---- Disconnect ----------------------------------------------------------------------------------------------------

void tst_AxisWindows::disconnectRemovesEverything()
{
    playChips("www");
    OpenWindow program;
    program.connectTo();
    QList<QPointer<QWidget>> widgets;
    for (const int axis : {0, 1, 2})
        widgets << program.panel(axis) << program.tab(axis);
    program.disconnect();
    QCOMPARE(program.panelNames(), QStringList());
    QCOMPARE(program.window().axisTabs().count(), 0);
    QCOMPARE(program.menuBar(), OpenWindow::menuBarWith({}));
    QCOMPARE(program.window().axisCount(), 0);
    for (const QPointer<QWidget> &widget : qAsConst(widgets)) {
        QVERIFY(!widget || widget->isHidden());
        QTRY_VERIFY(!widget);
    }
}

void tst_AxisWindows::disconnectEndsTheHeartbeatAndThePolling()
{
    OpenWindow program;
    program.connectTo();
    QSignalSpy beats(SerialComDev::instance().data(), &SerialComDev::signal_heartBeatInfo);
    QVERIFY(beats.wait(5000));
    program.disconnect();
    QSignalSpy polls(SerialComDev::instance().data(), &SerialComDev::signal_getCurrentPos);
    QCoreApplication::processEvents(); // an answer that is on its way
    beats.clear();
    QVERIFY(!beats.wait(Heart::IntervalMs + 200));
    QCOMPARE(polls.count(), 0);
}

QTEST_MAIN(tst_AxisWindows)
#include "tst_AxisWindows.moc"
