// SPDX-License-Identifier: MIT
#include "tests/settings/OptionsDialog.h"

#include "support/MessageBoxes.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QGroupBox>
#include <QLineEdit>
#include <QStackedWidget>

#include <functional>
#include <thread>

namespace {

/** A library call made by the test itself, as the controller's own doing: it is not left in the journal. */
void onController(const std::function<int()> &call)
{
    {
        const LibraryLock library;
        QVERIFY(call() >= 0);
    }
    simulator::clearJournal();
}

MotorParams stageParams(int axis)
{
    MotorParams params = {};
    onController([&] { return getMotorParams(controllerId, axis, &params); });
    return params;
}

} // namespace

/** The trigger page and the compensation page, of the three axes. */
class tst_AxisOptions : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_dialog = std::make_unique<OptionsDialog>(); }
    void cleanup() { m_dialog.reset(); }

    // Loading
    void showsTheAxesOfTheController_data();
    void showsTheAxesOfTheController();
    void unknownAxisCountShowsNone_data();
    void unknownAxisCountShowsNone();
    void withoutControllerShowsNoAxisAndSaysNothing();
    void loadsFromTheHighestAxisDown();
    void showsTheTriggerState_data();
    void showsTheTriggerState();
    void showsStepsInTheNegativeDirection_data();
    void showsStepsInTheNegativeDirection();
    void failedTriggerReadChangesNothing_data();
    void failedTriggerReadChangesNothing();
    void loadingDisablesTheDisplacementButNeverEnablesIt();
    void loadingSendsNothingBack();
    void cursorIsBusyWhileLoading();
    void opensOverASlowLink();

    // Trigger
    void displacementTakesThreeDecimalsInItsRange();
    void triggerInputGoesToTheController_data();
    void triggerInputGoesToTheController();
    void switchingTheInputOffEnablesTheDisplacement();
    void refusesADisplacementBeyondTheTravel_data();
    void refusesADisplacementBeyondTheTravel();
    void unchecksTheInputBeforeItSaysWhy();
    void showsTheBoundsWithSixDigits_data();
    void showsTheBoundsWithSixDigits();
    void boundsOfAStageWithoutTravelHaveNoSign();
    void stageWithoutNameIsARemindedChange_data();
    void stageWithoutNameIsARemindedChange();
    void remindsBeforeItSends();
    void triggerOutputGoesToTheController_data();
    void triggerOutputGoesToTheController();
    void displacementIsSentWhenEditingIsFinished_data();
    void displacementIsSentWhenEditingIsFinished();
    void displacementCannotBeEditedWhileTheInputIsOn();
    void typedCommaIsAPoint();
    void onlyAxis3WritesADebugLine();

    // Compensation
    void compensationIsAPairThatStartsClosed();
    void compensationGoesToTheController_data();
    void compensationGoesToTheController();
    void anotherClickSendsAgain();
    void boxThatIsNotCheckedSendsNothing();
    void showsCompensationThatIsOn();
    void loadingCannotSwitchCompensationOff();
    void failedCompensationReadChangesNothing();

private:
    QCheckBox *in(int n) { return m_dialog->find<QCheckBox>(QString("checkBox_triggerIn_%1").arg(n)); }
    QCheckBox *out(int n) { return m_dialog->find<QCheckBox>(QString("checkBox_triggerOut_%1").arg(n)); }
    QDoubleSpinBox *displacement(int n)
    {
        return m_dialog->find<QDoubleSpinBox>(QString("doubleSpinBox_Axis%1").arg(n));
    }
    QCheckBox *on(int n) { return m_dialog->find<QCheckBox>(QString("checkBox_posConpen_on%1").arg(n)); }
    QCheckBox *close(int n) { return m_dialog->find<QCheckBox>(QString("checkBox_posConpen_close%1").arg(n)); }
    /** The axes whose groups are there, on the trigger page and on the compensation page: "12 12". */
    QString shownAxes();
    /** Connects the controller, loads and shows the page. */
    void openPage(const QString &page);
    /** Gives the stage of axis 1 this travel. */
    void setTravel(double minPos, double maxPos);

    std::unique_ptr<OptionsDialog> m_dialog;
};

QString tst_AxisOptions::shownAxes()
{
    QString shown;
    for (const char *page : {"trigger", "posConpen"}) {
        for (int n = 1; n <= 3; ++n) {
            const auto *group = m_dialog->find<QGroupBox>(QString("groupBox_%1_%2").arg(page).arg(n));
            if (!group->isHidden())
                shown += QString::number(n);
        }
        shown += ' ';
    }
    return shown.trimmed();
}

void tst_AxisOptions::openPage(const QString &page)
{
    m_dialog->connectController();
    m_dialog->get()->loadDeviceSettings();
    m_dialog->open(page);
    m_dialog->clearCalls();
}

void tst_AxisOptions::setTravel(double minPos, double maxPos)
{
    MotorParams params = stageParams(0);
    params.minPos = minPos;
    params.maxPos = maxPos;
    onController([&] { return setMotorParams(controllerId, 0, params); });
}

void tst_AxisOptions::showsTheAxesOfTheController_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("shown");
    QTest::newRow("1") << 1 << "1 1";
    QTest::newRow("2") << 2 << "12 12";
    QTest::newRow("3") << 3 << "123 123";
}

void tst_AxisOptions::showsTheAxesOfTheController()
{
    QFETCH(int, count);
    QFETCH(QString, shown);
    m_dialog->connectController();
    onController([=] { return setDevAxisCount(controllerId, count); });
    m_dialog->get()->loadDeviceSettings();
    QCOMPARE(shownAxes(), shown);
}

void tst_AxisOptions::unknownAxisCountShowsNone_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("failed") << -9;
    QTest::newRow("none") << 0;
}

void tst_AxisOptions::unknownAxisCountShowsNone()
{
    QFETCH(int, count);
    m_dialog->connectController();
    if (count < 0)
        simulator::failCall("getDevAxisCount", count);
    else
        simulator::answerNumber("getDevAxisCount", count);
    m_dialog->get()->loadDeviceSettings();
    QCOMPARE(shownAxes(), QString());
    QCOMPARE(m_dialog->calls(), QStringList("getDevAxisCount(1001)")); // nothing else is read
}

void tst_AxisOptions::withoutControllerShowsNoAxisAndSaysNothing()
{
    MessageBoxes boxes("确认");
    m_dialog->get()->loadDeviceSettings();
    m_dialog->open("trigger");
    QCOMPARE(shownAxes(), QString());
    QCOMPARE(m_dialog->calls(), QStringList("getDevAxisCount(0)"));
    QCOMPARE(boxes.texts(), QStringList());

    // The axes come back with the next controller.
    m_dialog->connectController();
    m_dialog->get()->loadDeviceSettings();
    QCOMPARE(shownAxes(), QString("123 123"));
}

void tst_AxisOptions::loadsFromTheHighestAxisDown()
{
    m_dialog->connectController();
    onController([] { return setDevAxisCount(controllerId, 2); });
    m_dialog->get()->loadDeviceSettings();
    QCOMPARE(
        m_dialog->calls(),
        QStringList(
            {"getDevAxisCount(1001)", "getTriggerInEnable(1001, 1)", "getTriggerOutEnable(1001, 1)",
             "getTriggerStep(1001, 1)", "getPosConpenEnable(1001, 1)", "getTriggerInEnable(1001, 0)",
             "getTriggerOutEnable(1001, 0)", "getTriggerStep(1001, 0)", "getPosConpenEnable(1001, 0)"}));
}

void tst_AxisOptions::showsTheTriggerState_data()
{
    QTest::addColumn<int>("axis");
    QTest::addColumn<bool>("inEnabled");
    QTest::addColumn<bool>("outEnabled");
    QTest::addColumn<double>("step");
    for (int axis = 0; axis < 3; ++axis) {
        QTest::addRow("axis %d off", axis) << axis << false << false << 0.0;
        QTest::addRow("axis %d in", axis) << axis << true << false << 1.25;
        QTest::addRow("axis %d out", axis) << axis << false << true << 0.001;
        QTest::addRow("axis %d both", axis) << axis << true << true << 10000000.0;
    }
}

void tst_AxisOptions::showsTheTriggerState()
{
    QFETCH(int, axis);
    QFETCH(bool, inEnabled);
    QFETCH(bool, outEnabled);
    QFETCH(double, step);
    m_dialog->connectController();
    const int n = axis + 1;
    in(n)->setChecked(!inEnabled);
    out(n)->setChecked(!outEnabled);
    onController([=] { return setTriggerInEnable(controllerId, axis, inEnabled); });
    onController([=] { return setTriggerOutEnable(controllerId, axis, outEnabled); });
    onController([=] { return setTriggerStep(controllerId, axis, step); });

    m_dialog->get()->loadDeviceSettings();
    QCOMPARE(in(n)->isChecked(), inEnabled);
    QCOMPARE(out(n)->isChecked(), outEnabled);
    QCOMPARE(displacement(n)->value(), step);
    QCOMPARE(displacement(n)->isEnabledTo(m_dialog->get()), !inEnabled);
}

void tst_AxisOptions::showsStepsInTheNegativeDirection_data()
{
    QTest::addColumn<double>("step");
    QTest::addColumn<int>("reads");
    for (const double step : {-0.5, -2.25})
        QTest::addRow("%g", step) << step << 1;
    for (const double step : {-5.0, -9.0})
        QTest::addRow("%g", step) << step << 2; // could be a failure
}

void tst_AxisOptions::showsStepsInTheNegativeDirection()
{
    QFETCH(double, step);
    QFETCH(int, reads);
    m_dialog->connectController();
    onController([=] { return setTriggerStep(controllerId, 1, step); });
    m_dialog->get()->loadDeviceSettings();
    QCOMPARE(displacement(2)->value(), step);
    QCOMPARE(m_dialog->calls().count("getTriggerStep(1001, 1)"), reads);
}

void tst_AxisOptions::failedTriggerReadChangesNothing_data()
{
    QTest::addColumn<QString>("function");
    for (const char *function : {"getTriggerInEnable", "getTriggerOutEnable", "getTriggerStep"})
        QTest::newRow(function) << function;
}

void tst_AxisOptions::failedTriggerReadChangesNothing()
{
    QFETCH(QString, function);
    MessageBoxes boxes("确认");
    m_dialog->connectController();
    onController([] { return setDevAxisCount(controllerId, 1); });
    onController([] { return setTriggerInEnable(controllerId, 0, 1); });
    out(1)->setChecked(true);
    displacement(1)->setValue(7.5);

    simulator::failCall(function.toStdString(), -9);
    m_dialog->get()->loadDeviceSettings();
    QCOMPARE(shownAxes(), QString("1 1"));
    QVERIFY(!in(1)->isChecked());
    QVERIFY(out(1)->isChecked());
    QCOMPARE(displacement(1)->value(), 7.5);
    QVERIFY(displacement(1)->isEnabledTo(m_dialog->get()));
    QCoreApplication::processEvents();
    QCOMPARE(boxes.texts(), QStringList());
}

void tst_AxisOptions::loadingDisablesTheDisplacementButNeverEnablesIt()
{
    m_dialog->connectController();
    onController([] { return setTriggerInEnable(controllerId, 0, 1); });
    m_dialog->get()->loadDeviceSettings();
    QVERIFY(!displacement(1)->isEnabledTo(m_dialog->get()));

    onController([] { return setTriggerInEnable(controllerId, 0, 0); });
    m_dialog->get()->loadDeviceSettings();
    QVERIFY(!in(1)->isChecked());
    QVERIFY(!displacement(1)->isEnabledTo(m_dialog->get()));
}

void tst_AxisOptions::loadingSendsNothingBack()
{
    openPage("trigger");
    displacement(1)->setFocus();
    QTRY_VERIFY(displacement(1)->hasFocus());
    onController([] { return setTriggerInEnable(controllerId, 0, 1); }); // the focused box is disabled by loading
    onController([] { return setTriggerStep(controllerId, 0, 2.5); });
    onController([] { return setPosConpenEnable(controllerId, 0, 1); });

    m_dialog->get()->loadDeviceSettings();
    QVERIFY(!displacement(1)->hasFocus());
    const QStringList calls = m_dialog->calls();
    QCOMPARE(calls.size(), 1 + 3 * 4);
    QCOMPARE(calls.filter(QRegularExpression("^set")), QStringList());
}

void tst_AxisOptions::cursorIsBusyWhileLoading()
{
    m_dialog->connectController();
    simulator::hangCall("getTriggerStep");
    bool hung = false;
    bool busy = false;
    std::thread watcher([&] {
        hung = simulator::waitUntilHanging(5000);
        const QCursor *cursor = QGuiApplication::overrideCursor();
        busy = cursor && cursor->shape() == Qt::WaitCursor;
        simulator::releaseHung();
    });
    m_dialog->get()->loadDeviceSettings();
    watcher.join();
    QVERIFY(hung);
    QVERIFY(busy);
    QVERIFY(!QGuiApplication::overrideCursor());
}

void tst_AxisOptions::opensOverASlowLink()
{
    m_dialog->connectController();
    for (const char *function : {"getTriggerInEnable", "getTriggerOutEnable", "getTriggerStep", "getPosConpenEnable"})
        simulator::delayCall(function, 50, 3);
    onController([] { return setTriggerOutEnable(controllerId, 2, 1); });
    m_dialog->get()->loadDeviceSettings();
    m_dialog->open("trigger");
    QVERIFY(out(3)->isChecked());
    m_dialog->click("checkBox_triggerOut_3");
    QVERIFY(m_dialog->calls().contains("setTriggerOutEnable(1001, 2, 0)"));
}

void tst_AxisOptions::displacementTakesThreeDecimalsInItsRange()
{
    for (int n = 1; n <= 3; ++n) {
        QCOMPARE(displacement(n)->decimals(), 3);
        QCOMPARE(displacement(n)->minimum(), -10000000.0);
        QCOMPARE(displacement(n)->maximum(), 10000000.0);
        QCOMPARE(displacement(n)->value(), 0.0);
    }
}

void tst_AxisOptions::triggerInputGoesToTheController_data()
{
    QTest::addColumn<int>("axis");
    QTest::addColumn<bool>("output");
    for (int axis = 0; axis < 3; ++axis) {
        QTest::addRow("axis %d", axis) << axis << false;
        QTest::addRow("axis %d with output", axis) << axis << true;
    }
}

void tst_AxisOptions::triggerInputGoesToTheController()
{
    QFETCH(int, axis);
    QFETCH(bool, output);
    MessageBoxes boxes("确认");
    m_dialog->connectController();
    onController([=] { return setMotorModelName(controllerId, axis, "LIN", 3); });
    const int n = axis + 1;
    openPage("trigger");
    out(n)->setChecked(output);

    m_dialog->click(QString("checkBox_triggerIn_%1").arg(n));
    QVERIFY(in(n)->isChecked());
    QVERIFY(!displacement(n)->isEnabled());
    QCOMPARE(
        m_dialog->calls(),
        QStringList(
            {QString("getMotorModelName(1001, %1)").arg(axis), QString("getMotorParams(1001, %1)").arg(axis),
             QString("setTriggerInEnable(1001, %1, 1)").arg(axis),
             QString("setTriggerOutEnable(1001, %1, %2)").arg(axis).arg(int(output))}));
    QCOMPARE(boxes.texts(), QStringList());
}

void tst_AxisOptions::switchingTheInputOffEnablesTheDisplacement()
{
    m_dialog->connectController();
    onController([] { return setTriggerInEnable(controllerId, 0, 1); });
    openPage("trigger");
    displacement(1)->setValue(5000); // beyond the travel, which does not matter for switching off
    QVERIFY(!displacement(1)->isEnabled());

    m_dialog->click("checkBox_triggerIn_1");
    QVERIFY(!in(1)->isChecked());
    QVERIFY(displacement(1)->isEnabled());
    QCOMPARE(
        m_dialog->calls(),
        QStringList(
            {"getMotorModelName(1001, 0)", "setTriggerInEnable(1001, 0, 0)", "setTriggerOutEnable(1001, 0, 0)"}));
}

void tst_AxisOptions::refusesADisplacementBeyondTheTravel_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("none") << 0.0 << true;
    QTest::newRow("whole travel") << 50.0 << true;
    QTest::newRow("whole travel back") << -50.0 << true;
    QTest::newRow("beyond") << 50.001 << false;
    QTest::newRow("beyond back") << -50.001 << false;
}

void tst_AxisOptions::refusesADisplacementBeyondTheTravel()
{
    QFETCH(double, value);
    QFETCH(bool, accepted);
    m_dialog->connectController();
    setTravel(0, 50);
    openPage("trigger");
    displacement(1)->setValue(value);

    MessageBoxes boxes("确认");
    m_dialog->click("checkBox_triggerIn_1");
    QCOMPARE(in(1)->isChecked(), accepted);
    QCOMPARE(displacement(1)->isEnabled(), !accepted);
    QCOMPARE(m_dialog->calls().contains("setTriggerInEnable(1001, 0, 1)"), accepted);
    QCOMPARE(m_dialog->calls().filter("set").isEmpty(), !accepted);
    if (accepted) {
        QCOMPARE(boxes.texts(), QStringList());
    } else {
        QCOMPARE(boxes.texts(), QStringList("位移量超出范围！[-50,50]"));
        QCOMPARE(boxes.parents().value(0).data(), m_dialog->get());
    }
}

void tst_AxisOptions::unchecksTheInputBeforeItSaysWhy()
{
    m_dialog->connectController();
    setTravel(0, 50);
    openPage("trigger");
    displacement(1)->setValue(50.001);
    bool checkedMeanwhile = true;
    bool busy = true;
    const MessageBoxes boxes([&](QMessageBox *box) {
        checkedMeanwhile = in(1)->isChecked();
        busy = QGuiApplication::overrideCursor();
        MessageBoxes::press(box, "确认");
    });
    m_dialog->click("checkBox_triggerIn_1");
    QCOMPARE(boxes.count(), 1);
    QVERIFY(!checkedMeanwhile);
    QVERIFY(!busy);
}

void tst_AxisOptions::showsTheBoundsWithSixDigits_data()
{
    QTest::addColumn<double>("minPos");
    QTest::addColumn<double>("maxPos");
    QTest::addColumn<QString>("text");
    QTest::newRow("cut") << -12.3456 << 111.11119 << "位移量超出范围！[-123.457,123.457]";
    QTest::newRow("exponent") << 0.0 << 1234567.0 << "位移量超出范围！[-1.23457e+06,1.23457e+06]";
    QTest::newRow("trailing zeros") << 0.0 << 12.5 << "位移量超出范围！[-12.5,12.5]";
}

void tst_AxisOptions::showsTheBoundsWithSixDigits()
{
    QFETCH(double, minPos);
    QFETCH(double, maxPos);
    QFETCH(QString, text);
    m_dialog->connectController();
    setTravel(minPos, maxPos);
    openPage("trigger");
    displacement(1)->setValue(10000000);
    MessageBoxes boxes("确认");
    m_dialog->click("checkBox_triggerIn_1");
    QCOMPARE(boxes.texts(), QStringList(text));
}

void tst_AxisOptions::boundsOfAStageWithoutTravelHaveNoSign()
{
    m_dialog->connectController();
    MotorParams params = stageParams(0);
    params.minPos = params.maxPos = 5; // refused when it is written
    simulator::setParams(controllerId, 0, params);
    openPage("trigger");
    displacement(1)->setValue(1);
    const MessageBoxes boxes("确认");
    m_dialog->click("checkBox_triggerIn_1");
    QCOMPARE(boxes.texts(), QStringList("位移量超出范围！[0,0]"));
}

void tst_AxisOptions::stageWithoutNameIsARemindedChange_data()
{
    QTest::addColumn<QString>("failing"); // empty: the name is
    QTest::newRow("empty name") << "";
    QTest::newRow("failed name read") << "getMotorModelName";
    QTest::newRow("failed parameter read") << "getMotorParams";
}

void tst_AxisOptions::stageWithoutNameIsARemindedChange()
{
    QFETCH(QString, failing);
    openPage("trigger");
    if (failing.isEmpty())
        onController([] { return setMotorModelName(controllerId, 0, "", 0); });
    else
        simulator::failCall(failing.toStdString(), -9);
    displacement(1)->setValue(5000);

    MessageBoxes boxes("取消"); // no answer stops the change
    m_dialog->click("checkBox_triggerIn_1");
    QCOMPARE(boxes.texts(), QStringList("请匹配位移台实际行程进行设置！"));
    QVERIFY(in(1)->isChecked());
    QVERIFY(!displacement(1)->isEnabled());
    QVERIFY(m_dialog->calls().contains("setTriggerInEnable(1001, 0, 1)"));
}

void tst_AxisOptions::remindsBeforeItSends()
{
    openPage("trigger");
    onController([] { return setMotorModelName(controllerId, 0, "", 0); });
    QStringList meanwhile;
    const MessageBoxes boxes([&](QMessageBox *box) {
        meanwhile = m_dialog->calls();
        MessageBoxes::press(box, "确认");
    });
    m_dialog->click("checkBox_triggerIn_1");
    QCOMPARE(meanwhile, QStringList("getMotorModelName(1001, 0)")); // a record without a name has no travel to read
    QVERIFY(m_dialog->calls().contains("setTriggerInEnable(1001, 0, 1)"));
}

void tst_AxisOptions::triggerOutputGoesToTheController_data()
{
    QTest::addColumn<int>("axis");
    QTest::addColumn<bool>("input");
    for (int axis = 0; axis < 3; ++axis) {
        QTest::addRow("axis %d", axis) << axis << false;
        QTest::addRow("axis %d with input", axis) << axis << true;
    }
}

void tst_AxisOptions::triggerOutputGoesToTheController()
{
    QFETCH(int, axis);
    QFETCH(bool, input);
    const int n = axis + 1;
    const QString box = QString("checkBox_triggerOut_%1").arg(n);
    const QString sendsInput = QString("setTriggerInEnable(1001, %1, %2)").arg(axis).arg(int(input));
    openPage("trigger");
    in(n)->setChecked(input);
    displacement(n)->setValue(5000); // unchecked

    m_dialog->click(box);
    QVERIFY(out(n)->isChecked());
    QCOMPARE(m_dialog->calls(), QStringList({sendsInput, QString("setTriggerOutEnable(1001, %1, 1)").arg(axis)}));
    m_dialog->clearCalls();
    m_dialog->click(box);
    QCOMPARE(m_dialog->calls(), QStringList({sendsInput, QString("setTriggerOutEnable(1001, %1, 0)").arg(axis)}));
}

void tst_AxisOptions::displacementIsSentWhenEditingIsFinished_data()
{
    QTest::addColumn<int>("axis");
    for (int axis = 0; axis < 3; ++axis)
        QTest::addRow("axis %d", axis) << axis;
}

void tst_AxisOptions::displacementIsSentWhenEditingIsFinished()
{
    QFETCH(int, axis);
    openPage("trigger");
    QDoubleSpinBox *box = displacement(axis + 1);
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, "-12.125");
    QCOMPARE(m_dialog->calls(), QStringList());
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(m_dialog->calls(), QStringList(QString("setTriggerStep(1001, %1, -12.125)").arg(axis)));
}

void tst_AxisOptions::displacementCannotBeEditedWhileTheInputIsOn()
{
    m_dialog->connectController();
    onController([] { return setTriggerInEnable(controllerId, 0, 1); });
    onController([] { return setTriggerStep(controllerId, 0, 2.5); });
    openPage("trigger");
    QTest::keyClicks(displacement(1), "7");
    QTest::keyClick(displacement(1), Qt::Key_Return);
    QCOMPARE(displacement(1)->value(), 2.5);
    QCOMPARE(m_dialog->calls(), QStringList());
}

void tst_AxisOptions::typedCommaIsAPoint()
{
    openPage("trigger");
    displacement(1)->setFocus();
    displacement(1)->selectAll();
    QTest::keyClicks(displacement(1), "2,25");
    QTest::keyClick(displacement(1), Qt::Key_Return);
    QCOMPARE(displacement(1)->value(), 2.25);
}

void tst_AxisOptions::onlyAxis3WritesADebugLine()
{
    openPage("trigger");
    for (int n = 1; n <= 3; ++n) {
        displacement(n)->setValue(n + 0.5);
        QTest::keyClick(displacement(n), Qt::Key_Return);
    }
    QCOMPARE(
        m_dialog->log().lines().filter("editingFinished"), QStringList("on_doubleSpinBox_Axis3_editingFinished 3.5"));
}

void tst_AxisOptions::compensationIsAPairThatStartsClosed()
{
    for (int n = 1; n <= 3; ++n) {
        QVERIFY(!on(n)->isChecked());
        QVERIFY(close(n)->isChecked());
    }
    on(2)->click();
    QVERIFY(!close(2)->isChecked());
    QVERIFY(close(1)->isChecked()); // a pair per axis
    QVERIFY(close(3)->isChecked());
}

void tst_AxisOptions::compensationGoesToTheController_data()
{
    displacementIsSentWhenEditingIsFinished_data();
}

void tst_AxisOptions::compensationGoesToTheController()
{
    QFETCH(int, axis);
    openPage("posConpen");
    m_dialog->click(QString("checkBox_posConpen_on%1").arg(axis + 1));
    QCOMPARE(m_dialog->calls(), QStringList(QString("setPosConpenEnable(1001, %1, 1)").arg(axis)));
    m_dialog->clearCalls();
    m_dialog->click(QString("checkBox_posConpen_close%1").arg(axis + 1));
    QCOMPARE(m_dialog->calls(), QStringList(QString("setPosConpenEnable(1001, %1, 0)").arg(axis)));
}

void tst_AxisOptions::anotherClickSendsAgain()
{
    openPage("posConpen");
    m_dialog->click("checkBox_posConpen_on1");
    m_dialog->click("checkBox_posConpen_on1");
    QVERIFY(on(1)->isChecked());
    m_dialog->click("checkBox_posConpen_close1");
    m_dialog->click("checkBox_posConpen_close1");
    QVERIFY(close(1)->isChecked());
    QCOMPARE(
        m_dialog->calls(), QStringList(
                               {"setPosConpenEnable(1001, 0, 1)", "setPosConpenEnable(1001, 0, 1)",
                                "setPosConpenEnable(1001, 0, 0)", "setPosConpenEnable(1001, 0, 0)"}));
}

void tst_AxisOptions::boxThatIsNotCheckedSendsNothing()
{
    openPage("posConpen");
    QVERIFY(QMetaObject::invokeMethod(m_dialog->get(), "on_checkBox_posConpen_on1_clicked"));
    on(1)->setChecked(true);
    QVERIFY(QMetaObject::invokeMethod(m_dialog->get(), "on_checkBox_posConpen_close1_clicked"));
    QCOMPARE(m_dialog->calls(), QStringList());
}

void tst_AxisOptions::showsCompensationThatIsOn()
{
    m_dialog->connectController();
    onController([] { return setPosConpenEnable(controllerId, 0, 1); });
    m_dialog->get()->loadDeviceSettings();
    QVERIFY(on(1)->isChecked());
    QVERIFY(!close(1)->isChecked());
    QVERIFY(close(2)->isChecked());
    QVERIFY(close(3)->isChecked());
}

void tst_AxisOptions::loadingCannotSwitchCompensationOff()
{
    m_dialog->connectController();
    onController([] { return setPosConpenEnable(controllerId, 0, 1); });
    m_dialog->get()->loadDeviceSettings();
    onController([] { return setPosConpenEnable(controllerId, 0, 0); });
    m_dialog->get()->loadDeviceSettings();
    QVERIFY(on(1)->isChecked());
    QVERIFY(!close(1)->isChecked());
}

void tst_AxisOptions::failedCompensationReadChangesNothing()
{
    m_dialog->connectController();
    onController([] { return setDevAxisCount(controllerId, 1); });
    onController([] { return setPosConpenEnable(controllerId, 0, 1); });
    simulator::failCall("getPosConpenEnable", -9);
    m_dialog->get()->loadDeviceSettings();
    QVERIFY(!on(1)->isChecked());
    QVERIFY(close(1)->isChecked());
}

QTEST_MAIN(tst_AxisOptions)
#include "tst_AxisOptions.moc"
