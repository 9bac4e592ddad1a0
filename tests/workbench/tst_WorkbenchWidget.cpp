// SPDX-License-Identifier: MIT
#include "workbench/WorkbenchWidget.h"

#include "console/ConsoleCommands.h"
#include "console/DebugWidget.h"
#include "session/ControlSession.h"
#include "session/SequenceRunner.h"
#include "shell/OpenWindow.h"
#include "support/ChooseFile.h"
#include "support/OnMessageBox.h"

#include <QStandardPaths>
#include <QTabBar>
#include <QTemporaryDir>
#include <private/qzipreader_p.h>

#include <algorithm>

/** The workbench of the main window. */
class tst_WorkbenchWidget : public WindowTest
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() { begin(); }
    void cleanup() { end(); }

    void itsButtonMovesNothingElseOfTheTitleBar()
    {
        OpenWindow program;
        const QWidget &window = program.window();
        const auto leftOf = [&](const char *name) {
            return window.width() - program.titleButton(name)->mapTo(&window, QPoint()).x();
        };
        QCOMPARE(leftOf("pushButton_stopAll"), 550);
        QCOMPARE(leftOf("pushButton_workbench"), 270);
        QCOMPARE(leftOf("pushButton_help"), 225);
        QCOMPARE(program.titleButton("pushButton_workbench")->size(), QSize(33, 33));
    }

    void isMadeWhenItIsFirstOpened()
    {
        OpenWindow program;
        QVERIFY(!bench());
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        QVERIFY(bench() && bench()->isVisible());
        QCOMPARE(bench()->size(), QSize(1200, 760));
        QVERIFY(!bench()->isModal());
        QCOMPARE(bench()->findChild<QTabBar *>(QStringLiteral("tabBar"))->tabText(2), QStringLiteral("参数历史"));
        const QWidget *first = bench();
        QTest::keyClick(bench(), Qt::Key_Escape);
        QVERIFY(!bench()->isVisible());
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        QCOMPARE(bench(), first);
        QVERIFY(first->isVisible());
        program.destroy();
        QVERIFY(!bench());
    }

    void opensByItsKey()
    {
        OpenWindow program;
        QVERIFY(QTest::qWaitForWindowActive(&program.window()));
        QTest::keyClick(&program.window(), Qt::Key_B, Qt::ControlModifier);
        QVERIFY(bench() && bench()->isVisible());
    }

    void itsTitleBarMaximisesAndCloses()
    {
        OpenWindow program;
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        OpenWindow::click(bench()->findChild<QPushButton *>(QStringLiteral("pushButton_showMax")));
        QVERIFY(bench()->isMaximized());
        auto *title = bench()->findChild<QWidget *>(QStringLiteral("widget_workbenchTitle"));
        QTest::mouseDClick(title, Qt::LeftButton, {}, QPoint(title->width() / 2, 8));
        QVERIFY(!bench()->isMaximized());
        OpenWindow::click(bench()->findChild<QPushButton *>(QStringLiteral("pushButton_close")));
        QVERIFY(!bench()->isVisible());
    }

    void itsKeysStopEverything_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("F12") << int(Qt::Key_F12);
        QTest::newRow("Pause") << int(Qt::Key_Pause);
    }
    void itsKeysStopEverything()
    {
        QFETCH(int, key);
        OpenWindow program;
        program.connectTo();
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        simulator::clearJournal();
        QTest::keyClick(bench(), Qt::Key(key));
        QTRY_COMPARE(simulator::callCount("stopRuning"), 3);
    }

    void aStopOfAllEndsTheSequence_data()
    {
        QTest::addColumn<int>("key"); // in the workbench; 0: the button in the main window
        QTest::newRow("F12") << int(Qt::Key_F12);
        QTest::newRow("Pause") << int(Qt::Key_Pause);
        QTest::newRow("button") << 0;
    }
    void aStopOfAllEndsTheSequence()
    {
        QFETCH(int, key);
        OpenWindow program;
        program.connectTo();
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        const auto session = ControlSession::instance();
        QVERIFY(runThreeSteps(*session));
        if (key == 0)
            OpenWindow::click(program.titleButton("pushButton_stopAll"));
        else
            QTest::keyClick(bench(), Qt::Key(key));
        QVERIFY(!session->sequences().isActive());
        QCOMPARE(
            program.titleButton("pushButton_notice")->toolTip(),
            QStringLiteral("序列“Three”在第 1 步结束：已全部停止"));
        for (int axis = 0; axis < 3; ++axis)
            QTRY_VERIFY(isCalled(QStringLiteral("stopRuning(1001, %1)").arg(axis)));
        QVERIFY(!SerialComDev::instance()->isReserved(0));
    }

    void aStartByTheConsoleEndsTheSequenceThatUsesItsAxis()
    {
        OpenWindow program;
        program.connectTo();
        OpenWindow::click(program.titleButton("pushButton_debug"));
        auto *console = topLevel<DebugWidget>();
        QVERIFY(console);
        const auto session = ControlSession::instance();
        QVERIFY(runThreeSteps(*session, true)); // which stand meanwhile
        console->findChild<QComboBox *>(QStringLiteral("comboBox_axis"))->setCurrentIndex(1);
        const auto command =
            std::find_if(std::begin(consoleCommands), std::end(consoleCommands), [](const ConsoleCommand &row) {
                return qstrcmp(row.function, "startMove") == 0;
            });
        OpenWindow::click(console->findChild<QPushButton *>(QStringLiteral("pushButton_%1").arg(command->button)));
        QTRY_VERIFY(!session->sequences().isActive());
        QCOMPARE(session->sequences().lastEnd().reason, SequenceEnd::StartedElsewhere);
        QCOMPARE(session->sequences().lastEnd().axis, 1);
        QTRY_VERIFY(isCalled(QStringLiteral("stopRuning(1001, 1)")));
    }

    void speaksTheChosenLanguage()
    {
        OpenWindow program;
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        auto *options = program.dialog<OptionsWidget>();
        options->setLanguage(1);
        QTRY_COMPARE(bench()->windowTitle(), QStringLiteral("Workbench"));
        QTRY_COMPARE(
            bench()->findChild<QTabBar *>(QStringLiteral("tabBar"))->tabText(2), QStringLiteral("Parameter history"));
        options->setLanguage(0);
        QTRY_COMPARE(bench()->windowTitle(), QStringLiteral("工作台"));
    }

    void asksWhetherASequenceGoesOnWithoutIt_data()
    {
        QTest::addColumn<bool>("goesOn");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void asksWhetherASequenceGoesOnWithoutIt()
    {
        QFETCH(bool, goesOn);
        OpenWindow program;
        program.connectTo();
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        const auto session = ControlSession::instance();
        QVERIFY(runThreeSteps(*session));
        OnMessageBox question([goesOn](QMessageBox &box) {
            for (QAbstractButton *button : box.buttons()) {
                if (goesOn && box.buttonRole(button) == QMessageBox::AcceptRole)
                    button->click();
            }
        });
        QTest::keyClick(bench(), Qt::Key_Escape);
        QCOMPARE(question.shown(), 1);
        QVERIFY(!bench()->isVisible());
        QCOMPARE(session->sequences().isActive(), goesOn);
        session->sequences().stop();
    }

    /** In the title bar, where nothing else moves. */
    void tellsInTheTitleBarHowASequenceEnded()
    {
        OpenWindow program;
        program.connectTo();
        const auto session = ControlSession::instance();
        auto *notice = program.titleButton("pushButton_notice");
        const int stopAll = program.titleButton("pushButton_stopAll")->x();
        QVERIFY(!notice->isVisible());
        QVERIFY(runThreeSteps(*session));
        session->sequences().abort(SequenceEnd::PanelClosed, 1);
        QTRY_VERIFY(notice->isVisible());
        QCOMPARE(notice->toolTip(), QStringLiteral("序列“Three”在第 1 步结束：Axis2 的面板已关闭"));
        QCOMPARE(program.titleButton("pushButton_stopAll")->x(), stopAll);
        OpenWindow::click(notice);
        QVERIFY(!notice->isVisible());
    }

    /** Who waits for the operator may have been left without its window. */
    void tellsInTheTitleBarThatTheOperatorIsAsked()
    {
        OpenWindow program;
        program.connectTo();
        const auto session = ControlSession::instance();
        auto *notice = program.titleButton("pushButton_notice");
        QVERIFY(runThreeSteps(*session, true));
        QTRY_VERIFY(notice->isVisible());
        QCOMPARE(notice->toolTip(), QStringLiteral("序列“Three”等待操作者：Change the sample"));
        OpenWindow::click(notice);
        QVERIFY(bench() && bench()->isVisible());
        QVERIFY(!notice->isVisible());
        session->sequences().stop();
    }

    void aClosedPanelEndsTheSequenceThatUsesItsAxis()
    {
        OpenWindow program;
        program.connectTo();
        const auto session = ControlSession::instance();
        QVERIFY(runThreeSteps(*session));
        OnMessageBox consent([](QMessageBox &box) {
            for (QAbstractButton *button : box.buttons()) {
                if (box.buttonRole(button) == QMessageBox::AcceptRole)
                    button->click();
            }
        });
        program.window().slot_controlWidgetClosed(QStringLiteral("Axis2"));
        QVERIFY(!session->sequences().isActive());
        QCOMPARE(session->sequences().lastEnd().reason, SequenceEnd::PanelClosed);
    }

    void savesTheDiagnosticsBesideTheWindow()
    {
        OpenWindow program;
        program.connectTo();
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("diagnostics.zip"));
        chooseFile(path);
        auto *button = bench()->findChild<QPushButton *>(QStringLiteral("pushButton_diagnostics"));
        OnMessageBox answer([](QMessageBox &box) { box.close(); });
        button->click();
        QVERIFY(!button->isEnabled()); // it is under way, and nobody waits for it
        QCOMPARE(answer.shown(), 0);
        QTRY_COMPARE(answer.shown(), 1);
        QVERIFY2(answer.text().contains(path), qPrintable(answer.text()));
        QVERIFY(button->isEnabled());
        const QZipReader zip(path);
        QVERIFY(zip.fileData(QStringLiteral("log/Axis1.txt")).size() > 0);
    }

    void closesWithTheProgram_data()
    {
        QTest::addColumn<bool>("runs");
        QTest::newRow("nothing runs") << false;
        QTest::newRow("a sequence runs") << true;
    }
    void closesWithTheProgram()
    {
        QFETCH(bool, runs);
        OpenWindow program;
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        const auto session = ControlSession::instance();
        if (runs) {
            program.connectTo();
            QVERIFY(runThreeSteps(*session));
        }
        OpenWindow::click(program.titleButton("pushButton_close")); // which asks nothing
        QVERIFY(!bench()->isVisible());
        if (!runs)
            return;
        QCOMPARE(session->sequences().lastEnd().reason, SequenceEnd::Quit);
        for (int axis = 0; axis < 2; ++axis)
            QVERIFY(isCalled(QStringLiteral("stopRuning(1001, %1)").arg(axis)));
    }

private:
    /** Of two axes; `asks`: the operator before. */
    static bool runThreeSteps(ControlSession &session, bool asks = false)
    {
        for (int axis = 0; axis < 2; ++axis) {
            if (!QTest::qWaitFor([&] { return session.axis(axis)->lastPosition() && session.axis(axis)->lastState(); }))
                return false;
        }
        SequenceStep step;
        step.kind = SequenceStep::MoveTo;
        step.value = 40;
        SequenceStep other = step;
        other.axis = 1;
        QVector<SequenceStep> steps{step, other, step};
        SequenceStep question;
        question.kind = SequenceStep::Ask;
        question.text = QStringLiteral("Change the sample");
        if (asks)
            steps.prepend(question);
        return session.sequences().run({QStringLiteral("Three"), steps}, {});
    }
    /** With success. */
    static bool isCalled(const QString &call)
    {
        const std::vector<simulator::Call> journal = simulator::journal();
        return std::any_of(journal.begin(), journal.end(), [&call](const simulator::Call &made) {
            return QString::fromStdString(made.text()).startsWith(call) && made.result.front() != '-';
        });
    }

    template <typename Window>
    static Window *topLevel()
    {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget *window : windows) {
            if (auto *found = qobject_cast<Window *>(window))
                return found;
        }
        return nullptr;
    }
    static WorkbenchWidget *bench() { return topLevel<WorkbenchWidget>(); }
};

QTEST_MAIN(tst_WorkbenchWidget)
#include "tst_WorkbenchWidget.moc"
