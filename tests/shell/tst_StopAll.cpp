// SPDX-License-Identifier: MIT
#include "OpenWindow.h"

#include "axis/CycleOperationWidget.h"
#include "axis/MoveParamWidget.h"
#include "console/DebugWidget.h"
#include "device/LibraryLock.h"
#include "support/Catalogue.h"
#include "support/TopLevel.h"
#include "widgets/MessageBox.h"

#include <QDoubleSpinBox>
#include <QMessageBox>
#include <QTimer>

namespace {

constexpr int device = 1001;

DebugWidget *console()
{
    return topLevel<DebugWidget>();
}

/** The way of a real key: to the window that is active, and from there to whatever has the focus. */
void pressKey(QWidget *window, int key, bool repeats = false)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, QString(), repeats);
    QCoreApplication::sendEvent(window->windowHandle(), &press);
}

int stops()
{
    return simulator::callCount("stopRuning");
}

} // namespace

/** The button and the keys that stop everything. */
class tst_StopAll : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theButtonHasItsPlaceWhateverTheWindowShows();
    void theButtonStopsEveryAxisWithOrWithoutAPanel();
    void theButtonIsBrightWhileAnAxisWithAPanelMoves();
    void theButtonSaysThatTheStopIsNotThroughYet();
    void theButtonSaysSoAlsoWhenTheStopItselfHangs();
    void theKeysStopInEveryWindow_data();
    void theKeysStopInEveryWindow();
    void aHeldKeyCountsOnce();
    void otherKeysDoNothing();
    void theKeyAcknowledgesTheConsolesBox_data();
    void theKeyAcknowledgesTheConsolesBox();
    void takesTheAxesBackFromTheJoystick();
    void aJoystickThatIsSwitchedOnBehindTheStopStaysOn();
    void aLoopRunEndsAndItsDialogStays();
    void isEnglishToo();

private:
    QPushButton *button() const { return m_program->find("pushButton_stopAll"); }
    bool isBright() const { return button()->property("moving").toBool(); }

    std::unique_ptr<OpenWindow> m_program;
};

void tst_StopAll::init()
{
    play({{device, "A", {{'w', "LIN-100"}, {'b'}, {'w', "ROT-60", 1}}}});
    simulator::useRealClock();
    m_program = std::make_unique<OpenWindow>();
    m_program->connectTo(device);
    QCOMPARE(m_program->panelNames(), (QStringList{"Axis1", "Axis3"}));
    simulator::clearJournal();
}

void tst_StopAll::cleanup()
{
    simulator::clearFaults();
    simulator::releaseHung();
    m_program.reset();
    QVERIFY(SerialComDev::endThread(5000));
    QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
}

void tst_StopAll::theButtonHasItsPlaceWhateverTheWindowShows()
{
    MoverWidget &window = m_program->window();
    const auto isInPlace = [&] {
        const QPoint place = button()->mapTo(&window, QPoint());
        return place.x() == window.width() - 550 && button()->size() == QSize(132, 40);
    };
    QVERIFY(isInPlace());
    QVERIFY(button()->isEnabled());
    window.resize(1900, 1000);
    QTRY_VERIFY(isInPlace());
    m_program->disconnect();
    QVERIFY(isInPlace());
    QVERIFY(button()->isEnabled());
}

void tst_StopAll::theButtonStopsEveryAxisWithOrWithoutAPanel()
{
    OpenWindow::click(button());
    QTRY_COMPARE(stops(), 3);
    OpenWindow::click(button()); // each press sends again
    QTRY_COMPARE(stops(), 6);
    QTRY_VERIFY(logOf(m_program->panel(0)).contains(QStringLiteral("停止运行")));
}

void tst_StopAll::theButtonIsBrightWhileAnAxisWithAPanelMoves()
{
    QVERIFY(!isBright());
    MotorStageState moving = {};
    moving.isCanRun = 1;
    simulator::setState(device, 2, moving);
    QTRY_VERIFY(isBright());
    simulator::setState(device, 2, std::nullopt);
    QTRY_VERIFY(!isBright());
    simulator::setState(device, 2, moving);
    QTRY_VERIFY(isBright());
    m_program->disconnect();
    QVERIFY(!isBright());
}

void tst_StopAll::theButtonSaysThatTheStopIsNotThroughYet()
{
    simulator::hangCall("getCurrentPos");
    QVERIFY([] {
        QElapsedTimer time;
        for (time.start(); time.elapsed() < 5000;) {
            if (simulator::waitUntilHanging(0))
                return true;
            QTest::qWait(1);
        }
        return false;
    }());
    QTRY_VERIFY(LibraryLock::heldFor() > std::chrono::milliseconds(20));
    OpenWindow::click(button());
    QCOMPARE(button()->text(), QStringLiteral("正在停止…")); // at once
    QVERIFY(isBright());
    simulator::releaseHung();
    QTRY_COMPARE(button()->text(), QStringLiteral("全部停止"));
    QCOMPARE(stops(), 3);
    QVERIFY(!isBright());
}

void tst_StopAll::theButtonSaysSoAlsoWhenTheStopItselfHangs()
{
    simulator::hangCall("stopRuning");
    OpenWindow::click(button());
    QTRY_COMPARE(button()->text(), QStringLiteral("正在停止…"));
    simulator::releaseHung();
    QTRY_COMPARE(button()->text(), QStringLiteral("全部停止"));
}

void tst_StopAll::theKeysStopInEveryWindow_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<int>("key");
    for (const char *window : {"main", "dialog", "popup", "message box", "console"}) {
        QTest::addRow("%s, F12", window) << QString::fromLatin1(window) << int(Qt::Key_F12);
        QTest::addRow("%s, Pause", window) << QString::fromLatin1(window) << int(Qt::Key_Pause);
    }
}

void tst_StopAll::theKeysStopInEveryWindow()
{
    QFETCH(QString, window);
    QFETCH(int, key);
    QWidget *target = &m_program->window();
    QDoubleSpinBox *field = nullptr;
    QString typed;
    if (window == QLatin1String("dialog")) {
        OpenWindow::click(m_program->titleButton("pushButton_settings"));
        target = m_program->dialog<OptionsWidget>();
    } else if (window == QLatin1String("popup")) {
        MoverControlWidget *panel = m_program->panel(0);
        OpenWindow::click(panel->findChild<QPushButton *>(QStringLiteral("pushButton_moveParam")));
        target = panel->findChild<MoveParamWidget *>();
        QVERIFY(QTest::qWaitForWindowActive(target)); // or a desktop may still deactivate it, which closes it
        field = target->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_disp"));
        QTest::keyClicks(field, QStringLiteral("12.5"));
        typed = field->text();
    } else if (window == QLatin1String("console")) {
        OpenWindow::click(m_program->find("pushButton_debug"));
        target = console();
    } else if (window == QLatin1String("message box")) {
        int inBox = 0;
        QTimer::singleShot(0, this, [&] {
            QWidget *box = QApplication::activeModalWidget();
            pressKey(box, key);
            QTRY_COMPARE(stops(), 3);
            inBox = stops();
            QVERIFY(box->isVisible());
            qobject_cast<QMessageBox *>(box)->reject();
        });
        m_program->window().slot_showTipMessage(QStringLiteral("text"));
        QCOMPARE(inBox, 3);
        return;
    }
    QCoreApplication::processEvents(); // a window that has just opened finds its focus
    simulator::clearJournal();
    QVERIFY(target->isVisible());
    QWidget *focus = target->focusWidget();
    pressKey(target, key);
    QTRY_COMPARE(stops(), 3);
    QVERIFY(target->isVisible());
    QCOMPARE(target->focusWidget(), focus);
    if (field)
        QCOMPARE(field->text(), typed);
}

void tst_StopAll::aHeldKeyCountsOnce()
{
    pressKey(&m_program->window(), Qt::Key_F12);
    for (int k = 0; k < 5; ++k)
        pressKey(&m_program->window(), Qt::Key_F12, true);
    QTRY_VERIFY(!SerialComDev::instance()->isStoppingAll());
    QCOMPARE(stops(), 3);
}

void tst_StopAll::otherKeysDoNothing()
{
    for (const int key : {Qt::Key_F11, Qt::Key_Escape, Qt::Key_S})
        pressKey(&m_program->window(), key);
    QVERIFY(!SerialComDev::instance()->isStoppingAll());
    QCOMPARE(stops(), 0);
}

void tst_StopAll::theKeyAcknowledgesTheConsolesBox_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("F12") << int(Qt::Key_F12);
    QTest::newRow("Pause") << int(Qt::Key_Pause);
}

void tst_StopAll::theKeyAcknowledgesTheConsolesBox()
{
    QFETCH(int, key);
    OpenWindow::click(m_program->find("pushButton_debug"));
    OpenWindow::click(console()->findChild<QPushButton *>(QStringLiteral("pushButton_readMorotParams")));
    bool held = false;
    QTimer::singleShot(0, this, [&] {
        held = !LibraryLock(0).isLocked();
        simulator::clearJournal();
        pressKey(QApplication::activeModalWidget(), key);
    });
    OpenWindow::click(console()->findChild<QPushButton *>(QStringLiteral("pushButton_writeMotorParams")));
    QVERIFY(held); // the box was open, and nobody could reach the library
    QTRY_COMPARE(stops(), 3);
    QCOMPARE(QString::fromStdString(simulator::journal().front().function), QStringLiteral("stopRuning"));
}

void tst_StopAll::takesTheAxesBackFromTheJoystick()
{
    simulator::setJoystick(device, true, 0);
    QTRY_VERIFY(m_program->rocker()->isVisible());
    OpenWindow::click(m_program->rocker());
    QTRY_COMPARE(simulator::callCount("setRockerEnable"), 1);
    const auto *move = m_program->panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_move"));
    QVERIFY(move->isHidden());
    simulator::clearJournal();
    OpenWindow::click(button());
    QTRY_VERIFY(!m_program->rocker()->isChecked());
    QVERIFY(m_program->rocker()->isVisible());
    QVERIFY(!move->isHidden());
    QCOMPARE(calls().first(), QStringLiteral("setRockerEnable(1001, 0)"));
    QCOMPARE(simulator::callCount("setRockerEnable"), 1);
}

void tst_StopAll::aJoystickThatIsSwitchedOnBehindTheStopStaysOn()
{
    simulator::setJoystick(device, true, 0);
    QTRY_VERIFY(m_program->rocker()->isVisible());
    simulator::hangCall("stopRuning");
    OpenWindow::click(button());
    QTRY_COMPARE(button()->text(), QStringLiteral("正在停止…"));
    OpenWindow::click(m_program->rocker());
    simulator::releaseHung();
    QTRY_COMPARE(button()->text(), QStringLiteral("全部停止"));
    QTRY_COMPARE(simulator::callCount("setRockerEnable"), 1);
    QVERIFY(m_program->rocker()->isChecked());
    QVERIFY(SerialComDev::instance()->isRockerOn());
}

void tst_StopAll::aLoopRunEndsAndItsDialogStays()
{
    MoverControlWidget *panel = m_program->panel(0);
    OpenWindow::click(panel->findChild<QPushButton *>(QStringLiteral("pushButton_circle")));
    auto *dialog = panel->findChild<CycleOperationWidget *>();
    dialog->load(5, 1, 10, 100, 0);
    OpenWindow::click(dialog->findChild<QPushButton *>(QStringLiteral("pushButton_right")));
    QTRY_COMPARE(simulator::callCount("startCircle"), 1);
    QTRY_VERIFY(panel->axis().isMoving());
    pressKey(&m_program->window(), Qt::Key_F12);
    QTRY_VERIFY(!panel->axis().isMoving());
    QVERIFY(dialog->isVisible());
}

void tst_StopAll::isEnglishToo()
{
    const Catalogue english;
    QCOMPARE(button()->text(), QStringLiteral("Stop all"));
    QCOMPARE(button()->toolTip(), QStringLiteral("Stop all axes at once (F12)"));
}

QTEST_MAIN(tst_StopAll)
#include "tst_StopAll.moc"
