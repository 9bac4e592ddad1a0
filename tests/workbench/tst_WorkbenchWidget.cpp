// SPDX-License-Identifier: MIT
#include "workbench/WorkbenchWidget.h"

#include "shell/OpenWindow.h"
#include "support/OnMessageBox.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QStandardPaths>
#include <QTabBar>
#include <QTemporaryDir>
#include <private/qzipreader_p.h>

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

    void savesTheDiagnosticsBesideTheWindow()
    {
        OpenWindow program;
        program.connectTo();
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("diagnostics.zip"));
        QTimer::singleShot(0, this, [&path] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(path);
            static_cast<QDialog *>(dialog)->accept();
        });
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

    void closesWithTheProgram()
    {
        OpenWindow program;
        OpenWindow::click(program.titleButton("pushButton_workbench"));
        OpenWindow::click(program.titleButton("pushButton_close"));
        QVERIFY(!bench()->isVisible());
    }

private:
    static WorkbenchWidget *bench()
    {
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget *window : windows) {
            if (auto *found = qobject_cast<WorkbenchWidget *>(window))
                return found;
        }
        return nullptr;
    }
};

QTEST_MAIN(tst_WorkbenchWidget)
#include "tst_WorkbenchWidget.moc"
