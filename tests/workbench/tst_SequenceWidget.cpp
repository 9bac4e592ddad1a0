// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "support/Catalogue.h"
#include "support/ChooseFile.h"
#include "support/DebugLog.h"
#include "support/Mouse.h"
#include "support/OnMessageBox.h"
#include "widgets/TDoubleSpinBox.h"
#include "workbench/ManualMoveRow.h"
#include "workbench/ScanDialog.h"
#include "workbench/SequenceStepDialog.h"
#include "workbench/SequenceWidget.h"

#include "shell/Scenario.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr int device = 1001;
constexpr int other = 1002;

using Step = SequenceStep;
using Mark = StepModel::Mark;

Step step(Step::Kind kind, int axis, double value, double wait = 0)
{
    Step step;
    step.kind = kind;
    step.axis = axis;
    step.value = value;
    step.wait = wait;
    return step;
}

Step withText(Step::Kind kind, const QString &text)
{
    Step step;
    step.kind = kind;
    step.text = text;
    return step;
}

Step repeat(int from, int count)
{
    Step step;
    step.kind = Step::Repeat;
    step.from = from;
    step.count = count;
    return step;
}

const QString load = QStringLiteral("Load");
const QString edge = QStringLiteral("Edge");
const Positions places{{load, {{0, 5}, {1, 7}}}, {edge, {{0, 20}}}};
const Sequence turns{
    QStringLiteral("Turns"),
    {withText(Step::GoTo, load), step(Step::MoveBy, 0, 2), step(Step::MoveBy, 1, 10), repeat(1, 2),
     step(Step::MoveTo, 0, 1)}};

} // namespace

class tst_SequenceWidget : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_log = std::make_unique<DebugLog>();
        m_folder = std::make_unique<QTemporaryDir>();
        play({{device, "A", {{'w', "LIN-100"}, {'w', "ROT-60", 1}}}, {other, "B", {{'w', "LIN-100"}}}});
        m_session = ControlSession::instance();
        QCOMPARE(m_session->connectTo({device, "SIM-A"}), device);
        m_session->beginSetUp();
        for (int axis = 0; axis < 2; ++axis)
            QCOMPARE(m_session->setUpAxis(axis).outcome, ControlSession::AxisSetUp::Ready);
        QVERIFY(!m_session->readJoystick());
        home();
        m_messages.clear();
        connect(
            SerialComDev::instance().data(), &SerialComDev::signal_showOperationMsg, this,
            [this](int axis, int, int type, const QString &text) {
                if (type == OPERATION_TYPE_GENERAL || type == OPERATION_TYPE_WARNING)
                    m_messages.append(QStringLiteral("%1 %2").arg(axis).arg(text));
            });
        simulator::clearJournal();
    }
    void cleanup()
    {
        m_page.reset();
        m_session.reset();
        simulator::clearFaults();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
        QCOMPARE(m_log->warnings(), QStringList());
        m_log.reset();
    }

    void offersOnlyWhatCanBeDone()
    {
        open({});
        QVERIFY(find<QLabel>("label_noPositions")->isVisible() && find<QLabel>("label_noSteps")->isVisible());
        for (const char *name :
             {"pushButton_run", "pushButton_stepRun", "pushButton_stopRun", "pushButton_pauseRun", "pushButton_check",
              "pushButton_exportSteps", "pushButton_deleteStep"})
            QVERIFY2(!find<QPushButton>(name)->isEnabled(), name);
        for (const char *name : {"pushButton_addPosition", "pushButton_addStep", "pushButton_importSteps"})
            QVERIFY2(find<QPushButton>(name)->isEnabled(), name);
        QVERIFY(!find<QPushButton>("pushButton_rewind")->isVisible());
    }

    // ---- Positions

    void takesWhereTheAxesStand()
    {
        open({places, {}});
        simulator::setPosition(device, 0, 12.5);
        simulator::setPosition(device, 1, -3);
        poll();
        pressButton(1, model()->takeColumn()); // of the axis that it has
        QCOMPARE(m_page->document().positions.at(1).axes, (QMap<int, double>{{0, 12.5}}));
        QCOMPARE(text(1, 2), QStringLiteral("–"));
        model()->setData(model()->index(1, 1), QString(), Qt::EditRole);
        pressButton(1, model()->takeColumn()); // of all, now that it has none
        QCOMPARE(m_page->document().positions.at(1).axes, (QMap<int, double>{{0, 12.5}, {1, -3}}));
        click("pushButton_addPosition");
        QCOMPARE(m_page->document().positions.size(), 3);
        const NamedPosition added = m_page->document().positions.at(2);
        QCOMPARE(added.axes, (QMap<int, double>{{0, 12.5}, {1, -3}}));
        auto *editor = positions()->findChild<QLineEdit *>();
        QVERIFY(editor); // its name comes next
        editor->setText(QStringLiteral("Sample"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(m_page->document().positions.at(2).name, QStringLiteral("Sample"));
    }

    /** As while its panel is closed. */
    void asksAnAxisThatNobodyElseAsks()
    {
        open({places, {}});
        simulator::setPosition(device, 1, 4.5);
        QTRY_COMPARE(m_session->axis(1)->lastPosition()->value, 4.5);
        QVERIFY(!m_session->axis(1)->trust().isStale());
    }
    void editsInPlaceAndRefusesWhatCannotBe_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("said");
        QTest::newRow("number") << 1 << "2.25"
                                << "2.250"
                                << "";
        QTest::newRow("comma") << 1 << "2,5"
                               << "2.500"
                               << "";
        QTest::newRow("perhaps thousands") << 1 << "2,500"
                                           << "5.000"
                                           << "“2,500”不是数字。";
        QTest::newRow("empty is a dash") << 1 << ""
                                         << "–"
                                         << "";
        QTest::newRow("no number") << 1 << "abc"
                                   << "5.000"
                                   << "“abc”不是数字。";
        QTest::newRow("name") << 0 << " Start "
                              << "Start"
                              << "";
        QTest::newRow("empty name") << 0 << " "
                                    << "Load"
                                    << "位置的名称不能为空。";
        QTest::newRow("double name") << 0 << "Edge"
                                     << "Load"
                                     << "已有名为“Edge”的位置。";
    }
    void editsInPlaceAndRefusesWhatCannotBe()
    {
        QFETCH(int, column);
        QFETCH(QString, typed);
        open({places, {}});
        model()->setData(model()->index(0, column), typed, Qt::EditRole);
        QTEST(text(0, column), "shown");
        QTEST(status().startsWith(QStringLiteral("共")) ? QString() : status(), "said");
    }

    void aNewNameIsThatOfTheStepsToo()
    {
        open({places, turns});
        model()->setData(model()->index(0, 0), QStringLiteral("Start"), Qt::EditRole);
        QCOMPARE(m_page->document().sequence.steps.first().text, QStringLiteral("Start"));
        undo();
        QCOMPARE(m_page->document(), (SequenceDocument{places, turns}));
    }

    void movesAndDeletesPositionsByKeys()
    {
        open({places, {}});
        positions()->setFocus();
        positions()->setCurrentIndex(model()->index(0, 0));
        QTest::keyClick(positions(), Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(text(0, 0), edge);
        QCOMPARE(positions()->currentIndex().row(), 1);
        QTest::keyClick(positions(), Qt::Key_Delete);
        QCOMPARE(model()->rowCount(), 1);
        undo();
        undo();
        QCOMPARE(m_page->document().positions, places);
    }

    void enterEditsACellOrPressesItsButton()
    {
        open({places, {}});
        positions()->setFocus();
        positions()->setCurrentIndex(model()->index(0, 1));
        QTest::keyClick(positions(), Qt::Key_Return);
        auto *editor = positions()->findChild<QLineEdit *>();
        QVERIFY(editor);
        editor->setText(QStringLiteral("3"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(m_page->document().positions.at(0).axes.value(0), 3.);
        positions()->setCurrentIndex(model()->index(0, model()->goColumn()));
        QTest::keyClick(positions(), Qt::Key_Return);
        QVERIFY(runner().isActive());
        runner().stop();
    }

    void anAxisThatDoesNotAnswerHasNoPosition()
    {
        open({places, {}});
        simulator::failAlways("getCurrentPos", -9);
        simulator::failAlways("getRuningState", -9);
        QTRY_COMPARE(m_session->axis(0)->trust().kind, AxisTrust::LinkLost);
        click("pushButton_addPosition");
        QCOMPARE(status(), QStringLiteral("Axis1 没有应答，当前位置未知。"));
        QCOMPARE(m_page->document().positions, places);
        m_page->change({places, turns}); // and the line is free again
        QTest::mousePress(find<QPushButton>("pushButton_holdPositive"), Qt::LeftButton);
        QVERIFY(!runner().isActive());
        QCOMPARE(status(), QStringLiteral("Axis1 没有应答，当前位置未知。"));
        QTest::mouseRelease(find<QPushButton>("pushButton_holdPositive"), Qt::LeftButton);
        click("pushButton_run");
        QVERIFY(!runner().isActive());
        QVERIFY2(status().endsWith(QStringLiteral("Axis1 不存在或没有应答")), qPrintable(status()));
    }

    void manyAxesScrollBetweenTheNameAndTheButtons()
    {
        NamedPosition all{QStringLiteral("All"), {}};
        for (int axis = 0; axis < 8; ++axis)
            all.axes.insert(axis, axis);
        open({{all}, {}});
        auto *bar = find<QScrollBar>("scrollBar_axes");
        QTRY_VERIFY(bar->isVisible());
        const auto isShown = [this](int column) {
            const QRect place = positions()->visualRect(model()->index(0, column));
            return place.width() > 0 && positions()->viewport()->rect().contains(place);
        };
        for (const int value : {0, bar->maximum()}) {
            bar->setValue(value);
            QVERIFY(isShown(0) && isShown(model()->takeColumn()) && isShown(model()->goColumn()));
            QCOMPARE(isShown(1), value == 0);
            QCOMPARE(isShown(8), value != 0);
        }
        undo(); // the columns of the two axes that are there
        QVERIFY(!bar->isVisible());
    }

    void goesToAPosition()
    {
        open({places, turns});
        pressButton(0, model()->goColumn());
        QVERIFY(runner().isActive());
        QCOMPARE(status(), QStringLiteral("正在前往“Load”"));
        QVERIFY(!(model()->flags(model()->index(1, model()->goColumn())) & Qt::ItemIsEnabled));
        QVERIFY(!find<QPushButton>("pushButton_importPositions")->isEnabled());
        QVERIFY(find<QPushButton>("pushButton_stopRun")->isEnabled());
        passUntilOver();
        QCOMPARE(place(0), 5.);
        QCOMPARE(place(1), 7.);
        QCOMPARE(status(), QStringLiteral("已到达位置“Load”"));
        QCOMPARE(
            m_messages,
            (QStringList{"0 前往位置“Load”", "1 前往位置“Load”", "0 已到达位置“Load”", "1 已到达位置“Load”"}));
        QCOMPARE(markOf(0), Mark::None); // the sequence has not run
    }

    void saysWhyItDoesNotGo_data()
    {
        QTest::addColumn<int>("what");
        QTest::addColumn<QString>("said");
        QTest::newRow("beyond the travel") << 0 << "Axis1 将移到 2000.000 mm，超出行程";
        QTest::newRow("not enabled") << 1 << "Axis1 未使能";
        QTest::newRow("moves") << 2 << "Axis1 正在运动";
        QTest::newRow("joystick") << 3 << "摇杆正在控制各轴。";
    }
    void saysWhyItDoesNotGo()
    {
        QFETCH(int, what);
        open({{{edge, {{0, what == 0 ? 2000. : 20.}}}}, {}});
        MotorStageState state = {};
        state.isStop = what == 2 ? 0 : 1;
        state.isEnable = what == 1 ? 0 : 1;
        if (what == 1 || what == 2)
            simulator::setState(device, 0, state);
        poll();
        simulator::setJoystick(device, what == 3);
        if (what == 3)
            SerialComDev::instance()->setRockerEnable(1);
        pressButton(0, model()->goColumn());
        QTEST(status(), "said");
        QVERIFY(!runner().isActive());
        QCOMPARE(simulator::callCount("startMove"), 0);
        simulator::setState(device, 0, std::nullopt);
    }

    /** Whatever is to move them. */
    void theJoystickKeepsTheAxes()
    {
        open({places, turns});
        simulator::setJoystick(device, true);
        SerialComDev::instance()->setRockerEnable(1);
        const QString said = QStringLiteral("摇杆正在控制各轴。");
        click("pushButton_run");
        QCOMPARE(status(), said);
        m_page->change({places, {}}); // and the line is free again
        QVERIFY(status() != said);
        QTest::keyClicks(find<QLineEdit>("lineEdit_target"), QStringLiteral("3"));
        QTest::keyClick(find<QLineEdit>("lineEdit_target"), Qt::Key_Return);
        QCOMPARE(status(), said);
        QVERIFY(!runner().isActive());
        QCOMPARE(simulator::callCount("startMove"), 0);
    }

    /** While the operator is asked, an axis may come to be used otherwise. */
    void looksAgainAfterTheQuestion()
    {
        reconnect();
        open({places, turns});
        OnMessageBox question([this](QMessageBox &box) {
            MotorStageState state = {};
            state.isStop = 1; // and not enabled
            simulator::setState(device, 0, state);
            poll();
            for (QAbstractButton *button : box.buttons()) {
                if (box.buttonRole(button) == QMessageBox::AcceptRole)
                    button->click();
            }
        });
        click("pushButton_run");
        QCOMPARE(question.shown(), 1);
        QCOMPARE(status(), QStringLiteral("轴的状态已改变，请重试。"));
        QVERIFY(!runner().isActive());
        simulator::setState(device, 0, std::nullopt);
    }

    void asksBeforeItGoesFromAPositionInDoubt_data()
    {
        QTest::addColumn<bool>("consent");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void asksBeforeItGoesFromAPositionInDoubt()
    {
        QFETCH(bool, consent);
        reconnect();
        open({places, {}});
        OnMessageBox question([consent](QMessageBox &box) {
            for (QAbstractButton *button : box.buttons()) {
                if (consent && box.buttonRole(button) == QMessageBox::AcceptRole)
                    button->click();
            }
        });
        pressButton(0, model()->goColumn());
        QVERIFY2(question.shown() == 1, qPrintable(status()));
        QVERIFY2(question.text().contains(QStringLiteral("Axis1, Axis2")), qPrintable(question.text()));
        QCOMPARE(runner().isActive(), consent);
        QCOMPARE(m_messages.contains(QStringLiteral("0 位置不可靠，仍然前往")), consent);
        runner().stop();
    }

    // ---- By hand

    void movesToWhatIsTyped_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<double>("reached");
        QTest::addColumn<QString>("said");
        QTest::newRow("number") << "12.5" << 12.5 << "手动移动：已完成";
        QTest::newRow("comma") << "2,5" << 2.5 << "手动移动：已完成";
        QTest::newRow("no number") << "abc" << 0. << "“abc”不是数字。";
        QTest::newRow("beyond the travel") << "2000" << 0. << "Axis1 将移到 2000.000 mm，超出行程";
    }
    void movesToWhatIsTyped()
    {
        QFETCH(QString, typed);
        QFETCH(double, reached);
        open({});
        auto *target = find<QLineEdit>("lineEdit_target");
        find<QDoubleSpinBox>("doubleSpinBox_slow")->setValue(1.5);
        QTest::keyClicks(target, typed);
        QTest::keyClick(target, Qt::Key_Return);
        if (runner().isActive())
            QCOMPARE(status(), QStringLiteral("手动移向 %1 mm").arg(reached, 0, 'f', 3));
        passUntilOver();
        QCOMPARE(place(0), reached);
        QTEST(status(), "said");
        if (reached > 0)
            QCOMPARE(SerialComDev::instance()->getAxisSpeed(0), 1.5);
    }

    void movesForAsLongAsAnArrowIsHeld_data()
    {
        QTest::addColumn<QString>("end");
        QTest::addColumn<bool>("byKey");
        for (const char *end : {"key", "other key", "stalled", "focus", "hidden", "axis", "stop", "stop all"})
            QTest::newRow(end) << end << true;
        QTest::newRow("button") << "button" << false;
        QTest::newRow("button, focus") << "focus" << false;
    }
    void movesForAsLongAsAnArrowIsHeld()
    {
        QFETCH(QString, end);
        QFETCH(bool, byKey);
        open({});
        auto *row = find<ManualMoveRow>("manualMove");
        auto *arrow = find<QPushButton>("pushButton_holdPositive");
        find<QDoubleSpinBox>("doubleSpinBox_slow")->setValue(2);
        arrow->setFocus();
        if (byKey)
            QTest::keyPress(arrow, Qt::Key_Right);
        else
            QTest::mousePress(arrow, Qt::LeftButton);
        QVERIFY2(runner().isActive(), qPrintable(status()));
        passUntil([this, arrow, byKey] {
            if (byKey) { // as keys do that are held
                QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier, {}, true);
                QApplication::sendEvent(arrow, &repeat);
                QKeyEvent lifted(QEvent::KeyRelease, Qt::Key_Right, Qt::NoModifier, {}, true);
                QApplication::sendEvent(arrow, &lifted);
            }
            return place(0) > 3;
        });
        QCOMPARE(SerialComDev::instance()->getAxisSpeed(0), 2.);
        QVERIFY(runner().isActive());
        if (end == QStringLiteral("key"))
            QTest::keyRelease(arrow, Qt::Key_Right);
        else if (end == QStringLiteral("other key"))
            QTest::keyPress(arrow, Qt::Key_Left);
        else if (end == QStringLiteral("button"))
            QTest::mouseRelease(arrow, Qt::LeftButton);
        else if (end == QStringLiteral("focus"))
            find<QLineEdit>("lineEdit_target")->setFocus();
        else if (end == QStringLiteral("hidden"))
            m_page->hide();
        else if (end == QStringLiteral("axis"))
            find<QComboBox>("comboBox_manualAxis")->setCurrentIndex(1);
        else if (end == QStringLiteral("stop"))
            click("pushButton_stopRun");
        else if (end == QStringLiteral("stop all"))
            m_session->stopAll();
        QTRY_VERIFY(!runner().isActive()); // a key that stalls says nothing
        QTRY_VERIFY(simulator::callCount("stopRuning") > 0);
        passUntil([this] { return stands(0); });
        QVERIFY(place(0) < 10);
        if (end != QStringLiteral("stop") && end != QStringLiteral("stop all"))
            QCOMPARE(row->heldDirection(), 0);
        // What is still held does not begin again by itself.
        QTest::qWait(100);
        QVERIFY(!runner().isActive());
    }

    void anArrowGoesNoFartherThanTheTravel()
    {
        open({});
        simulator::setPosition(device, 0, m_session->axis(0)->description().minPos);
        poll();
        QTest::keyPress(find<QPushButton>("pushButton_holdNegative"), Qt::Key_Space);
        QVERIFY(!runner().isActive());
        QCOMPARE(status(), QStringLiteral("Axis1 已在行程的终点。"));
    }

    /** Taps follow each other faster than an axis comes to rest. */
    void anArrowWaitsForItsAxis()
    {
        open({});
        MotorStageState state = {};
        state.isEnable = 1;
        simulator::setState(device, 0, state);
        poll();
        auto *arrow = find<QPushButton>("pushButton_holdPositive");
        QTest::mousePress(arrow, Qt::LeftButton);
        QVERIFY(!runner().isActive());
        QCOMPARE(status(), QStringLiteral("Axis1 正在运动"));
        simulator::setState(device, 0, std::nullopt);
        poll();
        QTRY_VERIFY(runner().isActive());
        QTest::mouseRelease(arrow, Qt::LeftButton);
        QVERIFY(!runner().isActive());
    }

    // ---- Steps

    void asksForAStep()
    {
        open({places, turns});
        steps()->selectRow(0);
        find<QPushButton>("pushButton_addStep")->menu()->actions().at(0)->trigger();
        auto *dialog = m_page->findChild<SequenceStepDialog *>();
        QVERIFY(dialog && dialog->isVisible());
        dialog->findChild<QComboBox *>(QStringLiteral("comboBox_kind"))->setCurrentIndex(Step::MoveTo);
        QVERIFY(!dialog->findChild<QWidget *>(QStringLiteral("comboBox_position"))->isVisible());
        dialog->findChild<QComboBox *>(QStringLiteral("comboBox_axis"))->setCurrentIndex(1);
        dialog->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_value"))->setValue(4.5);
        QTest::keyClick(dialog, Qt::Key_Return);
        const QVector<Step> after = m_page->document().sequence.steps;
        QCOMPARE(after.at(1), step(Step::MoveTo, 1, 4.5));
        QCOMPARE(after.at(4).from, 2); // it begins with the step that it began with
        QTRY_VERIFY(!m_page->findChild<SequenceStepDialog *>());
        m_page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
        // The same window changes one.
        steps()->setFocus();
        steps()->setCurrentIndex(stepModel()->index(1, 0));
        QTest::keyClick(steps(), Qt::Key_Return);
        dialog = m_page->findChild<SequenceStepDialog *>();
        QVERIFY(dialog);
        QCOMPARE(dialog->step(), step(Step::MoveTo, 1, 4.5));
        dialog->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_wait"))->setValue(2);
        dialog->accept();
        QCOMPARE(m_page->document().sequence.steps.at(1), step(Step::MoveTo, 1, 4.5, 2));
    }

    /** Also one whose position or axis is not there, and in another language. */
    void showsAStepAsItIs_data()
    {
        QTest::addColumn<int>("kind");
        for (int kind = 0; kind < Step::KindCount; ++kind)
            QTest::addRow("%d", kind) << kind;
    }
    void showsAStepAsItIs()
    {
        QFETCH(int, kind);
        open({places, turns});
        Step whole = step(Step::Kind(kind), 2, 4.5, 0.5);
        if (kind == Step::Ask || kind == Step::GoTo)
            whole = withText(Step::Kind(kind), QStringLiteral("Gone"));
        else if (kind == Step::Repeat)
            whole = repeat(1, 3);
        else if (kind == Step::Home)
            whole.value = 0;
        else if (kind == Step::Wait)
            whole = step(Step::Wait, 0, 4.5);
        else if (kind == Step::SetSpeed)
            whole.wait = 0;
        else
            whole.speed = 2;
        AxisDescription axis;
        axis.unit = QStringLiteral("mm");
        SequenceStepDialog dialog(whole, places, {axis}, m_page.get());
        QCOMPARE(dialog.step(), whole);
        const Catalogue english;
        QCOMPARE(dialog.step(), whole);
        QVERIFY(!dialog.findChild<QComboBox *>(QStringLiteral("comboBox_kind"))->currentText().contains(QChar(0x79FB)));
    }

    /** It asks about axes that are not there any more. */
    void anotherControllerTakesTheQuestionAway()
    {
        open({places, turns});
        find<QPushButton>("pushButton_addStep")->menu()->actions().at(0)->trigger();
        const QPointer<SequenceStepDialog> dialog = m_page->findChild<SequenceStepDialog *>();
        QVERIFY(dialog);
        QVERIFY(m_session->disconnectController());
        QCOMPARE(m_session->connectTo({other, "SIM-B"}), other);
        QTRY_VERIFY(!dialog);
        QVERIFY(m_page->document().sequence.steps.isEmpty());
    }

    void hasAnEnd()
    {
        open({places, {QString(), QVector<Step>(SequenceFiles::MostSteps, step(Step::Wait, 0, 1))}});
        find<QPushButton>("pushButton_addStep")->menu()->actions().at(0)->trigger();
        auto *dialog = m_page->findChild<SequenceStepDialog *>();
        QVERIFY(dialog);
        dialog->accept();
        QCOMPARE(status(), QStringLiteral("一个序列最多 %1 步。").arg(SequenceFiles::MostSteps));
        QCOMPARE(stepModel()->rowCount(), SequenceFiles::MostSteps);
    }

    void noAxisIsScannedWithoutAController()
    {
        open({});
        QVERIFY(m_session->disconnectController());
        find<QPushButton>("pushButton_addStep")->menu()->actions().at(1)->trigger();
        QVERIFY(!m_page->findChild<ScanDialog *>());
        QCOMPARE(status(), QStringLiteral("没有可用的轴。"));
    }

    void makesAScan()
    {
        open({places, turns});
        find<QPushButton>("pushButton_addStep")->menu()->actions().at(1)->trigger();
        auto *dialog = m_page->findChild<ScanDialog *>();
        QVERIFY(dialog);
        dialog->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_toFast"))->setValue(4);
        QCOMPARE(dialog->findChild<QLabel *>(QStringLiteral("label_count"))->text(), QStringLiteral("共 5 步"));
        dialog->findChild<QCheckBox *>(QStringLiteral("checkBox_slow"))->setChecked(true);
        dialog->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_toSlow"))->setValue(2);
        dialog->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_wait"))->setValue(0.5);
        const auto *count = dialog->findChild<QLabel *>(QStringLiteral("label_count"));
        QCOMPARE(count->text(), QStringLiteral("共 18 步"));
        auto *slow = dialog->findChild<QComboBox *>(QStringLiteral("comboBox_axisSlow"));
        slow->setCurrentIndex(0);
        QCOMPARE(count->text(), QStringLiteral("两个轴必须不同"));
        slow->setCurrentIndex(1);
        dialog->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_toSlow"))->setValue(90000);
        QCOMPARE(count->text(), QStringLiteral("步数太多，最多 100000 步"));
        QVERIFY(!dialog->findChild<QPushButton *>(QStringLiteral("pushButton_confirm"))->isEnabled());
        dialog->findChild<QDoubleSpinBox *>(QStringLiteral("doubleSpinBox_toSlow"))->setValue(2);
        dialog->accept();
        QCOMPARE(stepModel()->rowCount(), turns.steps.size() + 18);
        QCOMPARE(m_page->document().sequence.steps.last(), step(Step::MoveTo, 0, 4, 0.5));
        undo();
        QCOMPARE(m_page->document().sequence, turns);
    }

    void movesDeletesAndTakesBackSteps()
    {
        open({places, turns});
        const QVector<Step> before = turns.steps;
        steps()->setFocus();
        steps()->selectRow(1);
        steps()->selectionModel()->select(
            stepModel()->index(2, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        QTest::keyClick(steps(), Qt::Key_Up, Qt::AltModifier);
        QCOMPARE(m_page->document().sequence.steps.mid(0, 3), (QVector<Step>{before[1], before[2], before[0]}));
        QCOMPARE(m_page->document().sequence.steps.at(3).from, 0); // with the step that it began with
        QTest::keyClick(steps(), Qt::Key_Delete);
        QCOMPARE(m_page->document().sequence.steps, (QVector<Step>{before[0], repeat(0, 2), before[4]}));
        undo();
        undo();
        QCOMPARE(m_page->document().sequence, turns);
        QTest::keyClick(m_page.get(), Qt::Key_Y, Qt::ControlModifier);
        QCOMPARE(m_page->document().sequence.steps.at(2), before[0]);
    }

    void itsButtonsMoveSteps()
    {
        open({places, turns});
        steps()->selectRow(1);
        click("pushButton_stepDown");
        QCOMPARE(m_page->document().sequence.steps.at(2), turns.steps.at(1));
        click("pushButton_stepUp");
        QCOMPARE(m_page->document().sequence, turns);
        click("pushButton_deleteStep");
        QCOMPARE(m_page->document().sequence.steps.size(), turns.steps.size() - 1);
    }

    void marksWhatTheCheckFinds()
    {
        Sequence wrong = turns;
        wrong.steps[0].text = QStringLiteral("Nowhere");
        wrong.steps[2].value = 4000;
        open({places, wrong});
        click("pushButton_run");
        QVERIFY(!runner().isActive());
        QCOMPARE(markOf(0), Mark::Fault);
        QCOMPARE(markOf(1), Mark::None);
        QCOMPARE(markOf(2), Mark::Fault);
        QVERIFY(stepModel()->index(2, 0).data(Qt::ToolTipRole).toString().contains(QStringLiteral("超出行程")));
        QCOMPARE(status(), QStringLiteral("有 2 步不能运行。第 1 步：没有这个名称的位置"));
    }

    void triesWithoutMoving()
    {
        open({places, turns});
        OnMessageBox answer;
        click("pushButton_check");
        QTRY_COMPARE(answer.shown(), 1);
        QVERIFY2(answer.text().contains(QStringLiteral("共 6 步")), qPrintable(answer.text()));
        QVERIFY2(answer.text().contains(QStringLiteral("Axis1：0.000 … 9.000 mm")), qPrintable(answer.text()));
        QCOMPARE(simulator::callCount("startMove"), 0);
    }

    // ---- Running

    void showsHowFarItIs()
    {
        open({places, turns});
        click("pushButton_run");
        QCOMPARE(status(), QStringLiteral("第 1 步，共 5 步：Load"));
        passUntil([this] { return runner().line() == 2 && runner().pass().first == 2; });
        QCOMPARE(markOf(1), Mark::Done);
        QCOMPARE(markOf(2), Mark::Runs);
        QCOMPARE(markOf(4), Mark::None);
        QCOMPARE(status(), QStringLiteral("第 3 步，共 5 步，第 2 遍，共 2 遍：Axis2 +10.000 °"));
        for (const char *name : {"pushButton_run", "pushButton_importSteps", "pushButton_addStep", "pushButton_check"})
            QVERIFY2(!find<QPushButton>(name)->isEnabled(), name);
        QVERIFY(find<QLineEdit>("lineEdit_name")->isReadOnly());
        click("pushButton_pauseRun");
        passUntil([this] { return runner().state() == SequenceRunner::State::Paused; });
        QCOMPARE(markOf(4), Mark::Pauses);
        QCOMPARE(find<QPushButton>("pushButton_run")->text(), QStringLiteral("继续"));
        click("pushButton_run");
        passUntilOver();
        QCOMPARE(status(), QStringLiteral("已完成 5 步"));
        QCOMPARE(markOf(4), Mark::Done);
        QCOMPARE(m_messages.first(), QStringLiteral("0 序列“Turns”开始"));
        QCOMPARE(m_messages.last(), QStringLiteral("1 序列“Turns”已完成"));
        QCOMPARE(m_messages.size(), 4);
    }

    void saysWhereAndWhyItFailed()
    {
        open({places, turns});
        simulator::failCall("startMove", simulator::AxisRunning, 4); // the axis of line 3
        click("pushButton_run");
        passUntilOver();
        QCOMPARE(markOf(1), Mark::Done);
        QCOMPARE(markOf(2), Mark::Failed);
        const QString reason = stepModel()->index(2, 0).data(StepModel::ReasonRole).toString();
        QVERIFY2(reason.startsWith(QStringLiteral("Axis2 拒绝执行：-7")), qPrintable(reason));
        QCOMPARE(steps()->rowHeight(2), 66);
        QCOMPARE(status(), QStringLiteral("停止：第 3 步，共 5 步，第 1 遍，共 2 遍。运行会从这里继续。"));
        QVERIFY(m_messages.last().contains(QStringLiteral("在第 3 步结束：Axis2 拒绝执行")));
        QVERIFY(find<QPushButton>("pushButton_rewind")->isVisible());
        MotorStageState moves = {};
        moves.isEnable = 1;
        simulator::setState(device, 0, moves);
        poll();
        click("pushButton_run");
        QVERIFY(!runner().isActive());
        QCOMPARE(status(), QStringLiteral("Axis1 正在运动"));
        simulator::setState(device, 0, std::nullopt);
        poll();
        click("pushButton_run");
        QCOMPARE(runner().line(), 2);
        QCOMPARE(steps()->rowHeight(2), 40);
        click("pushButton_stopRun");
        QCOMPARE(markOf(2), Mark::Stopped);
        click("pushButton_rewind");
        QCOMPARE(markOf(2), Mark::None);
        QCOMPARE(runner().resumeLine(), -1);
    }

    void runsOneStep()
    {
        open({places, turns});
        click("pushButton_stepRun");
        passUntil([this] { return runner().state() == SequenceRunner::State::Paused; });
        QCOMPARE(runner().line(), 1);
        QCOMPARE(markOf(1), Mark::Pauses);
        click("pushButton_stopRun");
    }

    /** As of an axis that has not answered for a while, and does again. */
    void asksBeforeItGoesOnFromAPositionInDoubt()
    {
        open({places, turns});
        click("pushButton_run");
        click("pushButton_stopRun");
        passUntil([this] { return stands(0) && stands(1); });
        simulator::failAlways("getCurrentPos", -9);
        simulator::failAlways("getRuningState", -9);
        QTRY_COMPARE(m_session->axis(0)->trust().kind, AxisTrust::LinkLost);
        simulator::clearFaults();
        poll();
        OnMessageBox question; // says no
        click("pushButton_run");
        QCOMPARE(question.shown(), 1);
        QVERIFY2(question.text().contains(QStringLiteral("Axis1")), qPrintable(question.text()));
        QVERIFY(!runner().isActive());
        QVERIFY(runner().resumeLine() >= 0);
    }

    void anEditForgetsWhereItWasStopped()
    {
        open({places, turns});
        click("pushButton_run");
        click("pushButton_stopRun");
        QVERIFY(runner().resumeLine() >= 0);
        model()->setData(model()->index(0, 1), QStringLiteral("4"), Qt::EditRole);
        QCOMPARE(runner().resumeLine(), -1);
        QCOMPARE(markOf(0), Mark::None);
    }

    void asksTheOperator()
    {
        open({{}, {QString(), {withText(Step::Ask, QStringLiteral("Change the sample")), step(Step::MoveTo, 0, 1)}}});
        click("pushButton_run");
        QCOMPARE(status(), QStringLiteral("Change the sample"));
        QCOMPARE(find<QPushButton>("pushButton_run")->text(), QStringLiteral("继续"));
        click("pushButton_run");
        passUntilOver();
        QCOMPARE(place(0), 1.);
    }

    // ---- Files

    void keepsADocumentForEachController()
    {
        open({places, turns});
        m_page.reset(); // and saves
        QVERIFY(QFileInfo(m_folder->filePath(QStringLiteral("SIM-A.json"))).size() > 0);
        show();
        QCOMPARE(m_page->document(), (SequenceDocument{places, turns}));
        // Another program reads only.
        SequenceWidget second(m_folder->path());
        second.show();
        QCOMPARE(second.document(), m_page->document());
        QVERIFY(second.findChild<QLabel *>(QStringLiteral("label_sequenceStatus"))
                    ->text()
                    .startsWith(QStringLiteral("另一个程序")));
        QVERIFY(!second.findChild<QPushButton *>(QStringLiteral("pushButton_addStep"))->isEnabled());
        QVERIFY(second.findChild<QPushButton *>(QStringLiteral("pushButton_run"))->isEnabled());
    }

    void saysThatItCouldNotSave()
    {
        open({places, {}});
        const QString file = m_folder->filePath(QStringLiteral("SIM-A.json"));
        QVERIFY(QDir().mkpath(file + QStringLiteral("/in the way")));
        QTRY_VERIFY2(status().startsWith(QStringLiteral("位置和序列未能写入磁盘")), qPrintable(status()));
        QCOMPARE(m_page->document().positions, places);
        QVERIFY(QDir(file).removeRecursively());
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(file).isFile(), 30000); // it tries again
        QTRY_VERIFY2(!status().startsWith(QStringLiteral("位置和序列未能写入磁盘")), qPrintable(status()));
    }

    /** Comes back with its controller, and is saved in the end. */
    void whatCouldNotBeSavedOutlivesAnotherController()
    {
        open({places, turns});
        const QString file = m_folder->filePath(QStringLiteral("SIM-A.json"));
        QVERIFY(QDir().mkpath(file + QStringLiteral("/in the way")));
        const auto change = [this](int id, const char *name) {
            QVERIFY(m_session->disconnectController());
            QCOMPARE(m_session->connectTo({id, QString::fromLatin1(name)}), id);
        };
        change(other, "SIM-B");
        QCOMPARE(m_page->document(), SequenceDocument());
        change(device, "SIM-A");
        QCOMPARE(m_page->document(), (SequenceDocument{places, turns}));
        change(other, "SIM-B");
        QVERIFY(QDir(file).removeRecursively());
        m_page.reset();
        QVERIFY(QFileInfo(file).size() > 0);
    }

    void aDamagedFileIsKeptAndNamed()
    {
        QFile file(m_folder->filePath(QStringLiteral("SIM-A.json")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("{\"format\":") > 0);
        file.close();
        show();
        QVERIFY2(status().startsWith(QStringLiteral("保存的文件已损坏或由较新版本写成")), qPrintable(status()));
        QVERIFY2(QFileInfo::exists(status().section(QChar(0xFF1A), 1)), qPrintable(status()));
    }

    void saysWhyAFileIsOfNoUse_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("said");
        QTest::newRow("positions, not there") << "pushButton_importPositions"
                                              << "none.csv"
                                              << "没有导入任何内容。\n文件无法读取，或者太大";
        QTest::newRow("steps, not there") << "pushButton_importSteps"
                                          << "none.csv"
                                          << "没有导入任何内容。\n文件无法读取，或者太大";
        QTest::newRow("positions, another kind") << "pushButton_importPositions"
                                                 << "steps.csv"
                                                 << "没有导入任何内容。\n文件不是所需的类型";
        QTest::newRow("steps, no JSON") << "pushButton_importSteps"
                                        << "bad.json"
                                        << "没有导入任何内容。\n";
        QTest::newRow("export, no such folder") << "pushButton_exportPositions"
                                                << "none/places.csv"
                                                << "无法保存文件：";
    }
    void saysWhyAFileIsOfNoUse()
    {
        QFETCH(QString, button);
        QFETCH(QString, file);
        QFETCH(QString, said);
        open({places, turns});
        answer(QStringLiteral("steps.csv"));
        find<QPushButton>("pushButton_exportSteps")->menu()->actions().at(0)->trigger();
        QFile bad(m_folder->filePath(QStringLiteral("bad.json")));
        QVERIFY(bad.open(QIODevice::WriteOnly) && bad.write("{]") > 0);
        bad.close();
        answer(file);
        OnMessageBox box;
        click(qPrintable(button));
        QTRY_COMPARE(box.shown(), 1);
        QVERIFY2(box.text().startsWith(said), qPrintable(box.text()));
        QCOMPARE(m_page->document(), (SequenceDocument{places, turns}));
    }

    void whatIsCancelledChangesNothing()
    {
        open({places, turns});
        const QString before = status();
        for (const char *button :
             {"pushButton_importPositions", "pushButton_importSteps", "pushButton_exportPositions"}) {
            chooseFile(QStringLiteral("turns"), QDialogButtonBox::Cancel);
            click(button);
        }
        m_page->setAskPath([](QWidget *, bool, const QString &, const QStringList &, QString *) { return QString(); });
        find<QPushButton>("pushButton_exportSteps")->menu()->actions().at(0)->trigger();
        QCOMPARE(status(), before);
        QCOMPARE(m_page->document(), (SequenceDocument{places, turns}));
    }

    void exportsAndImports_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("json") << "turns.json";
        QTest::newRow("csv") << "Turns.csv";
    }
    void exportsAndImports()
    {
        QFETCH(QString, name);
        open({places, turns});
        answer(name);
        find<QPushButton>("pushButton_exportSteps")->menu()->actions().at(0)->trigger();
        QVERIFY2(status().startsWith(QStringLiteral("已保存")), qPrintable(status()));
        m_page->change({{{load, {{0, 1}}}}, {}}); // a place of its own under the same name
        click("pushButton_importSteps");
        QCOMPARE(m_page->document().sequence, turns);
        QCOMPARE(m_page->document().positions.first().axes, (QMap<int, double>{{0, 1}}));
        QCOMPARE(m_page->document().positions.size(), name == QLatin1String("turns.json") ? 2 : 1);
        undo();
        QVERIFY(m_page->document().sequence.steps.isEmpty());
    }

    void importsPositions()
    {
        open({places, {}});
        answer(QStringLiteral("places.csv"));
        click("pushButton_exportPositions");
        m_page->change({{{load, {{0, 1}}}, {QStringLiteral("Own"), {{1, 2}}}}, {}});
        click("pushButton_importPositions");
        QCOMPARE(
            m_page->document().positions, (Positions{places.at(0), {QStringLiteral("Own"), {{1, 2}}}, places.at(1)}));
    }

    void refusesABadFile()
    {
        open({places, turns});
        QFile file(m_folder->filePath(QStringLiteral("bad.csv")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        answer(QStringLiteral("good.csv"));
        find<QPushButton>("pushButton_exportSteps")->menu()->actions().at(0)->trigger();
        QFile good(m_folder->filePath(QStringLiteral("good.csv")));
        QVERIFY(good.open(QIODevice::ReadOnly));
        file.write(good.readAll().replace("move by", "fly by"));
        file.close();
        answer(QStringLiteral("bad.csv"));
        OnMessageBox box;
        click("pushButton_importSteps");
        QTRY_COMPARE(box.shown(), 1);
        QCOMPARE(box.text(), QStringLiteral("没有导入任何内容。\n第 3 行：未知的步骤"));
        QCOMPARE(m_page->document(), (SequenceDocument{places, turns}));
    }

    void exportsAReportOfTheRun()
    {
        open({places, turns});
        click("pushButton_run");
        passUntilOver();
        answer(QStringLiteral("report.csv"));
        find<QPushButton>("pushButton_exportSteps")->menu()->actions().at(1)->trigger();
        QFile file(m_folder->filePath(QStringLiteral("report.csv")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray report = file.readAll();
        QCOMPARE(report.count('\n'), 7); // the head, and six steps
        // It is still there when an axis was moved by hand.
        poll();
        QTest::keyClicks(find<QLineEdit>("lineEdit_target"), QStringLiteral("3"));
        QTest::keyClick(find<QLineEdit>("lineEdit_target"), Qt::Key_Return);
        passUntilOver();
        QCOMPARE(place(0), 3.);
        answer(QStringLiteral("later.csv"));
        find<QPushButton>("pushButton_exportSteps")->menu()->actions().at(1)->trigger();
        QFile later(m_folder->filePath(QStringLiteral("later.csv")));
        QVERIFY(later.open(QIODevice::ReadOnly));
        QCOMPARE(later.readAll(), report);
    }

    /** None of it takes as long as a user would notice; the bounds leave room for slow machines. */
    void handlesTenThousandLines()
    {
        QVector<Step> many(10000, step(Step::MoveTo, 0, 1));
        for (int k = 0; k < many.size(); ++k)
            many[k].value = k % 10;
        open({places, {QString(), many}});
        m_page.reset();
        show();
        QCOMPARE(stepModel()->rowCount(), 10000);
        steps()->setFocus();
        steps()->selectRow(0);
        moveDown();
        QCOMPARE(m_page->document().sequence.steps.first().value, 1.);
        undo();
        QVERIFY(m_page->document().sequence.steps == many);
        steps()->scrollToBottom();
        QVERIFY(!steps()->grab().isNull());
        poll(); // it may have taken long
        click("pushButton_run");
        QVERIFY(runner().isActive());
        runner().stop();
    }

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    SequenceRunner &runner() const { return m_session->sequences(); }
    QTableView *positions() const { return find<QTableView>("tableView_positions"); }
    QTableView *steps() const { return find<QTableView>("tableView_steps"); }
    PositionModel *model() const { return m_page->findChild<PositionModel *>(); }
    StepModel *stepModel() const { return m_page->findChild<StepModel *>(); }
    QString text(int row, int column) const { return model()->index(row, column).data().toString(); }
    QString status() const { return find<QLabel>("label_sequenceStatus")->text(); }
    Mark markOf(int row) const { return Mark(stepModel()->index(row, 0).data(StepModel::MarkRole).toInt()); }
    void click(const char *name) const { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }
    void undo() const { QTest::keyClick(m_page.get(), Qt::Key_Z, Qt::ControlModifier); }
    void moveDown() const { QTest::keyClick(steps(), Qt::Key_Down, Qt::AltModifier); }
    void pressButton(int row, int column) const
    {
        const QPointF centre = positions()->visualRect(model()->index(row, column)).center();
        Mouse::press(positions()->viewport(), centre);
        Mouse::release(positions()->viewport(), centre);
    }
    void show()
    {
        m_page = std::make_unique<SequenceWidget>(m_folder->path());
        m_page->resize(1200, 666);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }
    void open(const SequenceDocument &document)
    {
        show();
        m_page->change(document);
    }
    /** Its axes are not homed since then. */
    void reconnect()
    {
        QVERIFY(m_session->disconnectController());
        QCOMPARE(m_session->connectTo({device, "SIM-A"}), device);
        m_session->beginSetUp();
        for (int axis = 0; axis < 2; ++axis)
            m_session->setUpAxis(axis);
        QVERIFY(!m_session->readJoystick());
        poll();
    }
    /** To whoever asks for the name of a file. */
    void answer(const QString &name)
    {
        m_page->setAskPath([path = m_folder->filePath(name)](
                               QWidget *, bool, const QString &, const QStringList &, QString *) { return path; });
    }
    double place(int axis) const
    {
        int status = 0;
        const LibraryLock library;
        return library->getCurrentPos(device, axis, &status);
    }
    bool stands(int axis) const
    {
        MotorStageState state = {};
        const LibraryLock library;
        return library->getRuningState(device, axis, &state) >= 0 && state.isStop != 0;
    }
    /** As the panels do. */
    void poll() const
    {
        const auto worker = SerialComDev::instance();
        const auto asked = std::chrono::steady_clock::now();
        for (int axis = 0; axis < 2; ++axis) {
            emit worker->signal_getDevState(axis);
            emit worker->signal_getCurrentPos(axis);
        }
        for (int axis = 0; axis < 2; ++axis)
            QTRY_VERIFY(
                m_session->axis(axis)->lastPosition() && m_session->axis(axis)->lastPosition()->at >= asked &&
                m_session->axis(axis)->lastState() && m_session->axis(axis)->lastState()->at >= asked);
    }
    void home() const
    {
        poll();
        QVERIFY(runner().run({QString(), {step(Step::Home, Step::AllAxes, 0)}}, {}));
        passUntilOver();
        poll();
    }
    static void passUntil(const std::function<bool()> &isTrue)
    {
        for (int k = 0; k < 20000 && !isTrue(); ++k) {
            simulator::advance(0.02);
            QTest::qWait(1);
        }
        QVERIFY(isTrue());
    }
    void passUntilOver() const
    {
        passUntil([this] { return !runner().isActive(); });
    }

    std::unique_ptr<DebugLog> m_log;
    std::unique_ptr<QTemporaryDir> m_folder;
    QSharedPointer<ControlSession> m_session;
    std::unique_ptr<SequenceWidget> m_page;
    QStringList m_messages; // to the panels
};

QTEST_MAIN(tst_SequenceWidget)
#include "tst_SequenceWidget.moc"
