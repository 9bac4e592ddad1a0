// SPDX-License-Identifier: MIT
#include "axis/DriveParamWidget.h"
#include "axis/JogParamWidget.h"
#include "axis/MoveParamWidget.h"
#include "support/Catalogue.h"
#include "support/OnMessageBox.h"
#include "support/Prefixed.h"
#include "support/WorkerFixture.h"
#include "widgets/TDoubleSpinBox.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include <memory>

namespace {

enum Member { Move, Jog, Drive };

/** Field name and what is put into it. */
using Values = QList<QPair<QString, double>>;

// What a broken rule says.
const QString positionMessage = "位置超出范围！[-50，50]\n";
const QString speedMessage = "速度超出范围！(0，20]\n";
const QString accelerationMessage = "加速度超出范围！(0，80]\n";
const QString travelMessage = "相对位移超出范围！(0，100]\n";
const QString stepMessage = "步长超出范围！(0，100]\n";
const QString countMessage = "步进次数不能为0！\n";
const QString delayMessage = "步进延时不能为0！\n";

} // namespace
Q_DECLARE_METATYPE(Member)

class tst_MotionParamPopups : public WorkerFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void isAHiddenFramelessWindow_data() { members(); }
    void isAHiddenFramelessWindow();
    void hasFieldsThatAdmitEveryStage_data();
    void hasFieldsThatAdmitEveryStage();
    void showsTheUnitInItsLabels_data();
    void showsTheUnitInItsLabels();

    void loadsWhatTheWorkerHolds();
    void loadsZeroForAnAxisThatWasNeverRead();
    void whatIsTypedFirstReplacesTheFirstValue_data();
    void whatIsTypedFirstReplacesTheFirstValue();
    void restoreBringsBackWhatTheWorkerHolds_data() { members(); }
    void restoreBringsBackWhatTheWorkerHolds();

    void acceptsTheEdgesOfItsRules_data();
    void acceptsTheEdgesOfItsRules();
    void refusesWhatBreaksARule_data();
    void refusesWhatBreaksARule();
    void showsLimitsWithSixDigits();
    void speaksEnglish_data();
    void speaksEnglish();

    void sendsItsValuesInOrderAndCloses_data();
    void sendsItsValuesInOrderAndCloses();

    void closesOnDeactivationAndSaysSoOnce_data() { members(); }
    void closesOnDeactivationAndSaysSoOnce();
    void staysOpenUnderItsOwnMessageBox_data() { members(); }
    void staysOpenUnderItsOwnMessageBox();
    void survivesItsEndUnderTheMessageBox_data() { members(); }
    void survivesItsEndUnderTheMessageBox();
    void escapeClosesWithoutSending_data() { members(); }
    void escapeClosesWithoutSending();
    void enterConfirms_data();
    void enterConfirms();
    void leavesOtherKeysAlone();

    void changesLanguageAndKeepsUnitAndValues_data() { members(); }
    void changesLanguageAndKeepsUnitAndValues();
    void paintsItsStyleSheetBackground();

private:
    static void members();
    void create(Member member, int axis = 0);
    void set(const Values &values);
    double value(const char *field) const;
    void fillInValidValues(Member member);
    void click(const char *button) { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    void deactivate()
    {
        QEvent event(QEvent::WindowDeactivate);
        QCoreApplication::sendEvent(m_popup.get(), &event);
    }
    template <typename Widget>
    Widget *find(const QString &name) const
    {
        auto *widget = m_popup->findChild<Widget *>(name);
        if (!widget)
            qFatal("no %s", qPrintable(name));
        return widget;
    }

    std::unique_ptr<MotionParamPopup> m_popup;
    int m_deactivations = 0;
};

void tst_MotionParamPopups::init()
{
    begin();
}

void tst_MotionParamPopups::cleanup()
{
    m_popup.reset();
    end();
}

void tst_MotionParamPopups::members()
{
    QTest::addColumn<Member>("member");
    QTest::newRow("move") << Move;
    QTest::newRow("jog") << Jog;
    QTest::newRow("drive") << Drive;
}

/** The popup with the limits of a stage from -50 to 50, at most 20 per second and 80 per second squared; shown. */
void tst_MotionParamPopups::create(Member member, int axis)
{
    m_deactivations = 0;
    const auto count = [this] { ++m_deactivations; };
    if (member == Move) {
        auto popup = std::make_unique<MoveParamWidget>();
        connect(popup.get(), &MoveParamWidget::signal_moveParamWindowDeactivated, this, count);
        m_popup = std::move(popup);
    } else if (member == Jog) {
        auto popup = std::make_unique<JogParamWidget>();
        connect(popup.get(), &JogParamWidget::signal_jogParamWindowDeactivated, this, count);
        m_popup = std::move(popup);
    } else {
        auto popup = std::make_unique<DriveParamWidget>();
        connect(popup.get(), &DriveParamWidget::signal_driveParamWindowDeactivated, this, count);
        m_popup = std::move(popup);
    }
    m_popup->setAxis({axis, "", "mm", -50, 50, 20, 80});
    m_popup->show();
}

void tst_MotionParamPopups::set(const Values &values)
{
    for (const auto &[name, value] : values) {
        if (auto *field = m_popup->findChild<QDoubleSpinBox *>(name))
            field->setValue(value);
        else if (auto *count = m_popup->findChild<QSpinBox *>(name))
            count->setValue(int(value));
        else
            find<QCheckBox>(name)->setChecked(value != 0);
    }
}

double tst_MotionParamPopups::value(const char *field) const
{
    if (const auto *number = m_popup->findChild<QDoubleSpinBox *>(field))
        return number->value();
    if (const auto *count = m_popup->findChild<QSpinBox *>(field))
        return count->value();
    return find<QCheckBox>(field)->isChecked();
}

void tst_MotionParamPopups::fillInValidValues(Member member)
{
    if (member == Jog)
        set({{"doubleSpinBox_step", 1.5}, {"spinBox_count", 4}, {"spinBox_delay", 250}});
    else
        set({{"doubleSpinBox_disp", 12.5}, {"doubleSpinBox_speed", 7}, {"doubleSpinBox_acc", 60}});
}

// ---- Construction

void tst_MotionParamPopups::isAHiddenFramelessWindow()
{
    QFETCH(Member, member);
    QWidget panel;
    std::unique_ptr<QWidget> popup;
    if (member == Move)
        popup = std::make_unique<MoveParamWidget>(&panel);
    else if (member == Jog)
        popup = std::make_unique<JogParamWidget>(&panel);
    else
        popup = std::make_unique<DriveParamWidget>(&panel);
    QVERIFY(!popup->isVisible());
    QCOMPARE(popup->windowType(), Qt::Window);
    QVERIFY(popup->windowFlags() & Qt::FramelessWindowHint);
    QCOMPARE(popup->testAttribute(Qt::WA_TranslucentBackground), member != Move);
    panel.show();
    QVERIFY(!popup->isVisible());
}

void tst_MotionParamPopups::hasFieldsThatAdmitEveryStage_data()
{
    QTest::addColumn<Member>("member");
    QTest::addColumn<QString>("field");
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::newRow("position") << Move << "doubleSpinBox_disp" << -1e7 << 1e7;
    QTest::newRow("speed of a move") << Move << "doubleSpinBox_speed" << 0. << 1e7;
    QTest::newRow("acceleration of a move") << Move << "doubleSpinBox_acc" << 0. << 1e7;
    QTest::newRow("step") << Jog << "doubleSpinBox_step" << 0. << 1e7;
    QTest::newRow("travel") << Drive << "doubleSpinBox_disp" << 0. << 1e7;
    QTest::newRow("speed of a drive") << Drive << "doubleSpinBox_speed" << 0. << 1e7;
    QTest::newRow("acceleration of a drive") << Drive << "doubleSpinBox_acc" << 0. << 1e7;
    QTest::newRow("count") << Jog << "spinBox_count" << 0. << 65535.;
    QTest::newRow("delay") << Jog << "spinBox_delay" << 0. << 65535.;
}

void tst_MotionParamPopups::hasFieldsThatAdmitEveryStage()
{
    QFETCH(Member, member);
    QFETCH(QString, field);
    QFETCH(double, minimum);
    QFETCH(double, maximum);
    create(member);
    if (field.startsWith("doubleSpinBox")) {
        const auto *number = find<TDoubleSpinBox>(field);
        QCOMPARE(number->decimals(), 3);
        QCOMPARE(number->minimum(), minimum);
        QCOMPARE(number->maximum(), maximum);
    } else {
        const auto *number = find<QSpinBox>(field);
        QCOMPARE(double(number->minimum()), minimum);
        QCOMPARE(double(number->maximum()), maximum);
    }
}

void tst_MotionParamPopups::showsTheUnitInItsLabels_data()
{
    QTest::addColumn<Member>("member");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("per");
    QTest::newRow("move position") << Move << "label_posUnit"
                                   << "";
    QTest::newRow("move speed") << Move << "label_speedUnit"
                                << "/s";
    QTest::newRow("move acceleration") << Move << "label_accUnit"
                                       << "/s²";
    QTest::newRow("jog step") << Jog << "label_stepUnit"
                              << "";
    QTest::newRow("drive travel") << Drive << "label_relativeUnit"
                                  << "";
    QTest::newRow("drive speed") << Drive << "label_speedUnit"
                                 << "/s";
    QTest::newRow("drive acceleration") << Drive << "label_accUnit"
                                        << "/s²";
}

void tst_MotionParamPopups::showsTheUnitInItsLabels()
{
    QFETCH(Member, member);
    QFETCH(QString, label);
    QFETCH(QString, per);
    create(member);
    QCOMPARE(find<QLabel>(label)->text(), "mm" + per);
    m_popup->setAxis({0, "", "°"});
    QCOMPARE(find<QLabel>(label)->text(), "°" + per);
}

// ---- Loading

void tst_MotionParamPopups::loadsWhatTheWorkerHolds()
{
    const auto worker = SerialComDev::instance();
    emit worker->signal_setAbsoluteDispParams(1, -12.5);
    emit worker->signal_setSpeedParams(1, 33, 4.25);
    emit worker->signal_setRelativeDispParams(1, 6.5, true);
    emit worker->signal_setJogParams(1, 0.125, 7, 900);
    QTRY_COMPARE(worker->getAxisJogDelay(1), 900);

    create(Move, 1);
    m_popup->load();
    QCOMPARE(value("doubleSpinBox_disp"), -12.5);
    QCOMPARE(value("doubleSpinBox_speed"), 4.25);
    QCOMPARE(value("doubleSpinBox_acc"), 33.);
    create(Jog, 1);
    m_popup->load();
    QCOMPARE(value("doubleSpinBox_step"), 0.125);
    QCOMPARE(value("spinBox_count"), 7.);
    QCOMPARE(value("spinBox_delay"), 900.);
    create(Drive, 1);
    m_popup->load();
    QCOMPARE(value("doubleSpinBox_disp"), 6.5);
    QCOMPARE(value("doubleSpinBox_speed"), 4.25);
    QCOMPARE(value("doubleSpinBox_acc"), 33.);
    QCOMPARE(value("checkBox_travelEnable"), 1.);

    emit worker->signal_setRelativeDispParams(1, 6.5, false);
    QTRY_VERIFY(!worker->getAxisRelativeDispEnable(1));
    m_popup->load();
    QCOMPARE(value("checkBox_travelEnable"), 0.);
}

void tst_MotionParamPopups::loadsZeroForAnAxisThatWasNeverRead()
{
    for (const Member member : {Move, Jog, Drive}) {
        create(member, 2);
        fillInValidValues(member);
        m_popup->load();
        for (const QDoubleSpinBox *field : m_popup->findChildren<QDoubleSpinBox *>())
            QCOMPARE(field->value(), 0.);
        for (const QSpinBox *field : m_popup->findChildren<QSpinBox *>())
            QCOMPARE(field->value(), 0);
    }
}

void tst_MotionParamPopups::whatIsTypedFirstReplacesTheFirstValue_data()
{
    QTest::addColumn<Member>("member");
    QTest::addColumn<QString>("first");
    QTest::newRow("move") << Move << "doubleSpinBox_disp";
    QTest::newRow("jog") << Jog << "doubleSpinBox_step";
    QTest::newRow("drive") << Drive << "doubleSpinBox_disp";
}

void tst_MotionParamPopups::whatIsTypedFirstReplacesTheFirstValue()
{
    QFETCH(Member, member);
    QFETCH(QString, first);
    create(member);
    SerialComDev::instance()->slot_setAbsoluteDispParams(0, 7.5);
    m_popup->hide();
    m_popup->open();
    QVERIFY(m_popup->isVisible());
    auto *field = find<QDoubleSpinBox>(first);
    QVERIFY(field->value() != 0); // it was loaded
    QCOMPARE(m_popup->focusWidget(), field);
    QTest::keyClicks(field, "2.25");
    QCOMPARE(field->value(), 2.25);
}

void tst_MotionParamPopups::restoreBringsBackWhatTheWorkerHolds()
{
    QFETCH(Member, member);
    const auto worker = SerialComDev::instance();
    emit worker->signal_setAbsoluteDispParams(0, 3);
    emit worker->signal_setRelativeDispParams(0, 3, true);
    emit worker->signal_setJogParams(0, 3, 30, 300);
    QTRY_COMPARE(worker->getAxisJogDelay(0), 300);
    takeRequests();

    create(member);
    m_popup->load();
    fillInValidValues(member);
    click("pushButton_restore");
    QCOMPARE(value(member == Jog ? "doubleSpinBox_step" : "doubleSpinBox_disp"), 3.);
    QVERIFY(m_popup->isVisible());
    QCOMPARE(takeRequests(), QStringList());
}

// ---- Rules

void tst_MotionParamPopups::acceptsTheEdgesOfItsRules_data()
{
    QTest::addColumn<Member>("member");
    QTest::addColumn<QString>("field");
    QTest::addColumn<double>("value");
    QTest::newRow("lowest position") << Move << "doubleSpinBox_disp" << -50.;
    QTest::newRow("highest position") << Move << "doubleSpinBox_disp" << 50.;
    QTest::newRow("position 0") << Move << "doubleSpinBox_disp" << 0.;
    QTest::newRow("largest step") << Jog << "doubleSpinBox_step" << 100.;
    QTest::newRow("smallest step") << Jog << "doubleSpinBox_step" << 0.001;
    QTest::newRow("largest count") << Jog << "spinBox_count" << 65535.;
    QTest::newRow("smallest count") << Jog << "spinBox_count" << 1.;
    QTest::newRow("largest delay") << Jog << "spinBox_delay" << 65535.;
    QTest::newRow("smallest delay") << Jog << "spinBox_delay" << 1.;
    QTest::newRow("largest travel") << Drive << "doubleSpinBox_disp" << 100.;
    QTest::newRow("smallest travel") << Drive << "doubleSpinBox_disp" << 0.001;
    for (const Member member : {Move, Drive}) {
        const char *name = member == Move ? "move" : "drive";
        QTest::addRow("highest speed, %s", name) << member << "doubleSpinBox_speed" << 20.;
        QTest::addRow("lowest speed, %s", name) << member << "doubleSpinBox_speed" << 0.001;
        QTest::addRow("highest acceleration, %s", name) << member << "doubleSpinBox_acc" << 80.;
        QTest::addRow("lowest acceleration, %s", name) << member << "doubleSpinBox_acc" << 0.001;
    }
}

void tst_MotionParamPopups::acceptsTheEdgesOfItsRules()
{
    QFETCH(Member, member);
    QFETCH(QString, field);
    QFETCH(double, value);
    create(member);
    fillInValidValues(member);
    set({{field, value}});
    const OnMessageBox box;
    click("pushButton_confirm");
    QCOMPARE(box.shown(), 0);
    QVERIFY(!m_popup->isVisible());
    QVERIFY(!takeRequests().isEmpty());
}

void tst_MotionParamPopups::refusesWhatBreaksARule_data()
{
    QTest::addColumn<Member>("member");
    QTest::addColumn<QString>("message");
    QTest::addColumn<Values>("values");
    const auto row = [](const char *name, Member member, const QString &message, const Values &values) {
        QTest::newRow(name) << member << message << values;
    };
    row("position too low", Move, positionMessage, {{"doubleSpinBox_disp", -50.001}});
    row("position too high", Move, positionMessage, {{"doubleSpinBox_disp", 50.001}});
    row("no speed, move", Move, speedMessage, {{"doubleSpinBox_speed", 0}});
    row("speed too high, move", Move, speedMessage, {{"doubleSpinBox_speed", 20.001}});
    row("no acceleration, move", Move, accelerationMessage, {{"doubleSpinBox_acc", 0}});
    row("acceleration too high, move", Move, accelerationMessage, {{"doubleSpinBox_acc", 80.001}});
    row("all three, move", Move, positionMessage + speedMessage + accelerationMessage,
        {{"doubleSpinBox_disp", 51}, {"doubleSpinBox_speed", 0}, {"doubleSpinBox_acc", 81}});
    row("first and last, move", Move, positionMessage + accelerationMessage,
        {{"doubleSpinBox_disp", 51}, {"doubleSpinBox_acc", 0}});

    row("no step", Jog, stepMessage, {{"doubleSpinBox_step", 0}});
    row("step too large", Jog, stepMessage, {{"doubleSpinBox_step", 100.001}});
    row("no count", Jog, countMessage, {{"spinBox_count", 0}});
    row("no delay", Jog, delayMessage, {{"spinBox_delay", 0}});
    row("all three, jog", Jog, stepMessage + countMessage + delayMessage,
        {{"doubleSpinBox_step", 101}, {"spinBox_count", 0}, {"spinBox_delay", 0}});

    row("no travel", Drive, travelMessage, {{"doubleSpinBox_disp", 0}});
    row("travel too large", Drive, travelMessage, {{"doubleSpinBox_disp", 100.001}});
    row("no travel, though it is not used", Drive, travelMessage,
        {{"doubleSpinBox_disp", 0}, {"checkBox_travelEnable", 0}});
    row("no speed, drive", Drive, speedMessage, {{"doubleSpinBox_speed", 0}});
    row("speed too high, drive", Drive, speedMessage, {{"doubleSpinBox_speed", 20.001}});
    row("no acceleration, drive", Drive, accelerationMessage, {{"doubleSpinBox_acc", 0}});
    row("acceleration too high, drive", Drive, accelerationMessage, {{"doubleSpinBox_acc", 80.001}});
    row("all three, drive", Drive, travelMessage + speedMessage + accelerationMessage,
        {{"doubleSpinBox_disp", 101}, {"doubleSpinBox_speed", 21}, {"doubleSpinBox_acc", 0}});
}

void tst_MotionParamPopups::refusesWhatBreaksARule()
{
    QFETCH(Member, member);
    QFETCH(QString, message);
    QFETCH(Values, values);
    create(member);
    fillInValidValues(member);
    set(values);
    const OnMessageBox next([&](QMessageBox &box) {
        QCOMPARE(box.parentWidget(), m_popup.get());
        QVERIFY(box.styleSheet().contains("min-width: 60000px;min-height: 400px;")); // a motion popup's
    });
    click("pushButton_confirm");
    QCOMPARE(next.shown(), 1);
    QCOMPARE(next.text(), message);
    QVERIFY(m_popup->isVisible());
    for (const auto &[field, kept] : values)
        QCOMPARE(value(field.toLatin1()), kept);
    QCOMPARE(takeRequests(), QStringList());
    QCOMPARE(m_deactivations, 0);
}

void tst_MotionParamPopups::showsLimitsWithSixDigits()
{
    create(Move);
    m_popup->setAxis({0, "", "mm", -0.00001234567, 1234567.8, 1234567.8, 0.5});
    set({{"doubleSpinBox_disp", 2e6}, {"doubleSpinBox_speed", 2e6}, {"doubleSpinBox_acc", 1}});
    const OnMessageBox box;
    click("pushButton_confirm");
    QCOMPARE(
        box.text(), QString("位置超出范围！[-1.23457e-05，1.23457e+06]\n"
                            "速度超出范围！(0，1.23457e+06]\n"
                            "加速度超出范围！(0，0.5]\n"));
}

void tst_MotionParamPopups::speaksEnglish_data()
{
    QTest::addColumn<Member>("member");
    QTest::addColumn<QString>("message");
    QTest::newRow("move") << Move
                          << "Position out of range! [1, 50]\nSpeed out of range! (0, 20]\n"
                             "Acceleration out of range! (0, 80]\n";
    QTest::newRow("jog") << Jog
                         << "Step size out of range! (0, 49]\nThe number of steps cannot be 0!\n"
                            "Step delay cannot be 0!\n";
    QTest::newRow("drive") << Drive
                           << "relative displacement out of range! (0, 49]\nSpeed out of range! (0, 20]\n"
                              "Acceleration out of range! (0, 80]\n";
}

void tst_MotionParamPopups::speaksEnglish()
{
    QFETCH(Member, member);
    QFETCH(QString, message);
    const Catalogue catalogue;
    create(member);
    m_popup->setAxis({0, "", "mm", 1, 50, 20, 80});
    const OnMessageBox next;
    click("pushButton_confirm"); // every field is 0
    QCOMPARE(next.text(), message);
}

// ---- Sending

void tst_MotionParamPopups::sendsItsValuesInOrderAndCloses_data()
{
    QTest::addColumn<Member>("member");
    QTest::addColumn<Values>("values");
    QTest::addColumn<QStringList>("requests");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("move")
        << Move << Values{{"doubleSpinBox_disp", -12.5}, {"doubleSpinBox_speed", 7}, {"doubleSpinBox_acc", 60}}
        << QStringList{"setAbsoluteDispParams(1, -12.5)", "setSpeedParams(1, 60, 7)"}
        << QStringList{"setTargetPos(1001, 1, -12.5)", "setSpeed(1001, 1, 7)", "setAcceleration(1001, 1, 60)"};
    QTest::newRow("jog") << Jog << Values{{"doubleSpinBox_step", 1.125}, {"spinBox_count", 4}, {"spinBox_delay", 250}}
                         << QStringList{"setJogParams(1, 1.125, 4, 250)"}
                         << QStringList{
                                "setJogStep(1001, 1, 1.125)", "setJogCount(1001, 1, 4)", "setJogDelay(1001, 1, 250)"};
    for (const bool enable : {true, false}) {
        QTest::addRow("drive, %s", enable ? "limited" : "unlimited")
            << Drive
            << Values{{"doubleSpinBox_disp", 9}, {"doubleSpinBox_speed", 7}, {"doubleSpinBox_acc", 60}, {"checkBox_travelEnable", double(enable)}}
            << QStringList{QString("setRelativeDispParams(1, 9, %1)").arg(enable ? "true" : "false"), "setSpeedParams(1, 60, 7)"}
            << QStringList{
                   "setRelativeDisp(1001, 1, 9)", QString("setRelativeDispEnable(1001, 1, %1)").arg(int(enable)),
                   "setSpeed(1001, 1, 7)", "setAcceleration(1001, 1, 60)"};
    }
}

void tst_MotionParamPopups::sendsItsValuesInOrderAndCloses()
{
    QFETCH(Member, member);
    QFETCH(Values, values);
    QFETCH(QStringList, requests);
    QFETCH(QStringList, calls);
    create(member, 1);
    set(values);
    click("pushButton_confirm");
    QCOMPARE(takeRequests(), requests);
    QVERIFY(!m_popup->isVisible());
    QCOMPARE(m_deactivations, 1);
    QTRY_COMPARE(WorkerFixture::calls(), calls);
}

// ---- Activation and keys

void tst_MotionParamPopups::closesOnDeactivationAndSaysSoOnce()
{
    QFETCH(Member, member);
    create(member);
    fillInValidValues(member);
    QCOMPARE(m_deactivations, 0);
    deactivate();
    QVERIFY(!m_popup->isVisible());
    QCOMPARE(m_deactivations, 1);
    QCOMPARE(takeRequests(), QStringList());
}

void tst_MotionParamPopups::staysOpenUnderItsOwnMessageBox()
{
    QFETCH(Member, member);
    create(member);
    const OnMessageBox box([this](QMessageBox &) {
        deactivate();
        QVERIFY(m_popup->isVisible());
    });
    click("pushButton_confirm"); // every speed and count is 0
    QCOMPARE(box.shown(), 1);
    QVERIFY(m_popup->isVisible());
    QCOMPARE(m_deactivations, 0);

    // And is an ordinary popup again.
    deactivate();
    QVERIFY(!m_popup->isVisible());
    QCOMPARE(m_deactivations, 1);
}

void tst_MotionParamPopups::survivesItsEndUnderTheMessageBox()
{
    QFETCH(Member, member);
    create(member);
    const OnMessageBox box([this](QMessageBox &) { m_popup.reset(); });
    QTimer::singleShot(
        0, m_popup.get(), [this] { QMetaObject::invokeMethod(m_popup.get(), "on_pushButton_confirm_clicked"); });
    QTRY_COMPARE(box.shown(), 1);
    QVERIFY(!m_popup);
    QCOMPARE(takeRequests(), QStringList());
}

void tst_MotionParamPopups::escapeClosesWithoutSending()
{
    QFETCH(Member, member);
    create(member);
    fillInValidValues(member);
    QTest::keyClick(m_popup->findChild<QAbstractSpinBox *>(), Qt::Key_Escape);
    QVERIFY(!m_popup->isVisible());
    QCOMPARE(m_deactivations, 1);
    QCOMPARE(takeRequests(), QStringList());
}

void tst_MotionParamPopups::enterConfirms_data()
{
    QTest::addColumn<Member>("member");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QStringList>("requests");
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        const char *name = key == Qt::Key_Return ? "return" : "enter";
        QTest::addRow("move, %s", name) << Move << key
                                        << QStringList{"setAbsoluteDispParams(0, 12.5)", "setSpeedParams(0, 60, 7)"};
        QTest::addRow("jog, %s", name) << Jog << key << QStringList{"setJogParams(0, 1.5, 4, 250)"};
        QTest::addRow("drive, %s", name) << Drive << key
                                         << QStringList{
                                                "setRelativeDispParams(0, 12.5, false)", "setSpeedParams(0, 60, 7)"};
    }
}

void tst_MotionParamPopups::enterConfirms()
{
    QFETCH(Member, member);
    QFETCH(Qt::Key, key);
    QFETCH(QStringList, requests);
    create(member);
    fillInValidValues(member);
    QTest::keyClick(m_popup->findChild<QAbstractSpinBox *>(), key);
    QCOMPARE(takeRequests(), requests);
    QVERIFY(!m_popup->isVisible());
}

void tst_MotionParamPopups::leavesOtherKeysAlone()
{
    create(Move);
    QTest::keyClick(m_popup.get(), Qt::Key_F5);
    QVERIFY(m_popup->isVisible());
    QCOMPARE(takeRequests(), QStringList());
}

// ---- Language

void tst_MotionParamPopups::changesLanguageAndKeepsUnitAndValues()
{
    QFETCH(Member, member);
    create(member);
    m_popup->setAxis({0, "", "°", -50, 50, 20, 80});
    fillInValidValues(member);
    const char *unit = member == Move ? "label_posUnit" : member == Jog ? "label_stepUnit" : "label_relativeUnit";
    const char *caption = member == Jog ? "label_step" : "label_disp";
    const QString before = find<QLabel>(caption)->text();
    {
        const Prefixed prefixed;
        QCOMPARE(find<QPushButton>("pushButton_confirm")->text(), QString("T:确认"));
        QCOMPARE(find<QPushButton>("pushButton_restore")->text(), QString("T:还原"));
        QCOMPARE(find<QLabel>(caption)->text(), "T:" + before);
        QCOMPARE(find<QLabel>(unit)->text(), QString("°"));
        QCOMPARE(value(member == Jog ? "doubleSpinBox_step" : "doubleSpinBox_disp"), member == Jog ? 1.5 : 12.5);
    }
    QCOMPARE(find<QPushButton>("pushButton_confirm")->text(), QString("确认"));
    QVERIFY(m_popup->isVisible());
}

void tst_MotionParamPopups::paintsItsStyleSheetBackground()
{
    create(Move);
    m_popup->setStyleSheet("MoveParamWidget { background-color: #123456; }");
    QCOMPARE(m_popup->grab().toImage().pixelColor(1, 1), QColor("#123456"));
}

QTEST_MAIN(tst_MotionParamPopups)
#include "tst_MotionParamPopups.moc"
