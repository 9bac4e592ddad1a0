// SPDX-License-Identifier: MIT
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "support/ChooseFile.h"
#include "support/DebugLog.h"
#include "support/OnMessageBox.h"
#include "workbench/HistoryWidget.h"

#include "shell/Scenario.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QStandardPaths>
#include <QTableWidget>
#include <QtTest>

namespace {

constexpr int device = 1001;

} // namespace

class tst_HistoryWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void init()
    {
        m_log = std::make_unique<DebugLog>();
        QDir(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)).removeRecursively();
        play({{device, "A", {{'w', "LIN-100"}, {'w', "ROT-60", 1}}}});
        m_session = ControlSession::instance();
        m_history = ParameterHistory::instance();
        QCOMPARE(m_session->connectTo({device, "SIM-A"}), device);
        m_session->beginSetUp();
    }
    void cleanup()
    {
        m_widget.reset();
        m_history.reset();
        m_session.reset();
        simulator::clearFaults();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
        QCOMPARE(m_log->warnings(), QStringList());
        m_log.reset();
    }

    void saysThatThereIsNothingYet()
    {
        m_session->disconnectController();
        open();
        QVERIFY(find<QLabel>("label_empty")->isVisible());
        QVERIFY(!list()->isVisible());
        for (const char *name : {"pushButton_snapshot", "pushButton_export", "pushButton_restore"})
            QVERIFY2(!find<QPushButton>(name)->isEnabled(), name);
        QVERIFY(find<QPushButton>("pushButton_import")->isEnabled());
    }

    void listsTheSnapshotsOfAllAxesOrOfOne()
    {
        setUpAxes();
        open();
        QTRY_COMPARE(list()->rowCount(), 2);
        QCOMPARE(list()->item(1, 1)->text(), QStringLiteral("SIM-A"));
        QCOMPARE(list()->item(1, 2)->text(), QStringLiteral("Axis1"));
        QCOMPARE(list()->item(1, 3)->text(), QStringLiteral("连接时"));
        auto *axes = find<QComboBox>("comboBox_axis");
        axes->setCurrentIndex(axes->findText(QStringLiteral("Axis2")));
        QCOMPARE(list()->rowCount(), 1);
        QCOMPARE(list()->item(0, 2)->text(), QStringLiteral("Axis2"));
        click("pushButton_snapshot"); // of this axis
        QTRY_COMPARE(list()->rowCount(), 2);
        QCOMPARE(list()->item(0, 3)->text(), QStringLiteral("手动"));
        axes->setCurrentIndex(0);
        QCOMPARE(list()->rowCount(), 3);
    }

    void showsWhatDiffersFromTheControllerNow()
    {
        setUpAxes();
        open();
        QTRY_COMPARE(list()->rowCount(), 2);
        list()->setCurrentCell(1, 0); // axis 1
        QTRY_VERIFY2(status().startsWith(QStringLiteral("26 项中有 0 项不同")), qPrintable(status()));
        change(QStringLiteral("NEW"));
        QTRY_VERIFY2(status().startsWith(QStringLiteral("26 项中有 2 项不同")), qPrintable(status()));
        QTableWidget *table = differencesTable();
        QCOMPARE(table->item(0, 0)->text(), QStringLiteral("型号"));
        QCOMPARE(table->item(0, 1)->text(), QStringLiteral("LIN-100"));
        QCOMPARE(table->item(0, 2)->text(), QStringLiteral("NEW"));
        find<QCheckBox>("checkBox_changedOnly")->setChecked(true);
        int shown = 0;
        for (int row = 0; row < table->rowCount(); ++row)
            shown += table->isRowHidden(row) ? 0 : 1;
        QCOMPARE(shown, 2);
        // The snapshot that followed the write is the other one of this axis.
        find<QComboBox>("comboBox_compareWith")->setCurrentIndex(1);
        QVERIFY(status().startsWith(QStringLiteral("26 项中有 2 项不同")));
    }

    void restoresAfterAQuestionThatSaysWhatWillChange_data()
    {
        QTest::addColumn<bool>("consent");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }

    void restoresAfterAQuestionThatSaysWhatWillChange()
    {
        QFETCH(bool, consent);
        setUpAxes();
        change(QStringLiteral("NEW"));
        open();
        QTRY_COMPARE(list()->rowCount(), 3);
        list()->setCurrentCell(2, 0);
        QTRY_VERIFY2(status().contains(QStringLiteral("2 项不同")), qPrintable(status()));
        simulator::clearJournal();
        OnMessageBox question([consent](QMessageBox &box) {
            for (QAbstractButton *button : box.buttons()) {
                if (consent && box.buttonRole(button) == QMessageBox::AcceptRole)
                    button->click();
            }
        });
        click("pushButton_restore");
        QTRY_COMPARE(question.shown(), 1);
        QVERIFY2(question.text().contains(QStringLiteral("型号：NEW → LIN-100")), qPrintable(question.text()));
        QVERIFY2(question.text().contains(QStringLiteral("mm/s")), qPrintable(question.text()));
        if (!consent) {
            QTRY_VERIFY(find<QPushButton>("pushButton_restore")->isEnabled());
            QCOMPARE(simulator::callCount("setMotorParams"), 0);
            return;
        }
        QTRY_VERIFY2(status().startsWith(QStringLiteral("已恢复")), qPrintable(status()));
        QCOMPARE(SerialComDev::instance()->getMotorModelName(0), QStringLiteral("LIN-100"));
        QTRY_COMPARE(list()->rowCount(), 5); // before it and after it
    }

    void saysWhatARestoreCouldNotChange()
    {
        setUpAxes();
        change(QStringLiteral("NEW"));
        open();
        QTRY_COMPARE(list()->rowCount(), 3);
        list()->setCurrentCell(2, 0);
        QTRY_VERIFY2(status().contains(QStringLiteral("2 项不同")), qPrintable(status()));
        simulator::failCall("setMotorParams", simulator::AxisRunning);
        QString answer;
        QTimer boxes;
        connect(&boxes, &QTimer::timeout, this, [&] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                answer = box->text();
                for (QAbstractButton *button : box->buttons()) {
                    if (box->buttonRole(button) == QMessageBox::AcceptRole)
                        button->click();
                }
            }
        });
        boxes.start(5);
        click("pushButton_restore");
        QTRY_VERIFY2(answer.startsWith(QStringLiteral("以下参数未生效：型号, 复位速度\n-7")), qPrintable(answer));
    }

    void saysWhyNothingWasRestored_data()
    {
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("said");
        QTest::newRow("not read") << int(ParameterRestore::NotRead) << "未能读取控制器的当前参数，没有写入任何内容。";
        QTest::newRow("not kept") << int(ParameterRestore::NotKept) << "未能保存恢复前的快照，没有写入任何内容。";
        QTest::newRow("vanished") << int(ParameterRestore::Vanished)
                                  << "恢复过程中控制器已断开，请重新连接后检查参数。";
        QTest::newRow("in use") << int(ParameterRestore::InUse) << "该轴正由序列使用，没有写入任何内容。";
    }
    void saysWhyNothingWasRestored()
    {
        QFETCH(int, outcome);
        open();
        ParameterRestore result;
        result.outcome = ParameterRestore::Outcome(outcome);
        OnMessageBox box;
        emit m_history->signal_restored(result);
        QTRY_COMPARE(box.shown(), 1);
        QTEST(box.text(), "said");
    }

    void saysWhenThereIsNothingToRestore()
    {
        setUpAxes();
        open();
        QTRY_COMPARE(list()->rowCount(), 2);
        list()->setCurrentCell(1, 0);
        OnMessageBox box;
        click("pushButton_restore");
        QTRY_COMPARE(box.shown(), 1);
        QCOMPARE(box.text(), QStringLiteral("控制器的值与该快照相同，无需恢复。"));
    }

    void saysWhatIsWrongWithItsFiles()
    {
        open();
        emit m_history->signal_saveFailed();
        QCOMPARE(status(), QStringLiteral("快照未能写入磁盘，将随下一个快照一起保存。"));
        emit m_history->signal_loaded({}, {QStringLiteral("/a"), QStringLiteral("/b")});
        QCOMPARE(status(), QStringLiteral("以下文件已损坏或由较新版本写成，已另存保留：/a, /b"));
        OnMessageBox box;
        emit m_history->signal_imported(3, false, true);
        QVERIFY2(
            (box.text() + status()).contains(QStringLiteral("该文件已损坏，只导入了其中完好的 3 个快照。")),
            qPrintable(box.text() + status()));
    }

    void exportsAndImportsWhileTheWindowGoesOn()
    {
        setUpAxes();
        open();
        QTRY_COMPARE(list()->rowCount(), 2);
        list()->selectAll();
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("parameters.json"));
        chooseFile(file);
        click("pushButton_export");
        QCOMPARE(status(), QStringLiteral("正在导出 …"));
        QTRY_COMPARE(status(), QStringLiteral("已导出到 %1").arg(file));
        chooseFile(file);
        click("pushButton_import");
        QCOMPARE(status(), QStringLiteral("正在导入 …"));
        QTRY_COMPARE(status(), QStringLiteral("已导入 2 个快照。"));
    }

    void restoresOnlyToTheAxisItIsOf()
    {
        setUpAxes();
        open();
        QTRY_COMPARE(list()->rowCount(), 2);
        QTRY_VERIFY(find<QPushButton>("pushButton_restore")->isEnabled());
        QVERIFY(m_session->disconnectController());
        QTRY_VERIFY(!find<QPushButton>("pushButton_restore")->isEnabled());
        QCOMPARE(status(), QStringLiteral("该控制器的这个轴未连接。"));
    }

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        return m_widget->findChild<Widget *>(QLatin1String(name));
    }
    QTableWidget *list() const { return find<QTableWidget>("tableWidget_snapshots"); }
    QTableWidget *differencesTable() const { return find<QTableWidget>("tableWidget_differences"); }
    QString status() const { return find<QLabel>("label_status")->text(); }
    void click(const char *name) { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }
    void open()
    {
        m_widget = std::make_unique<HistoryWidget>();
        m_widget->resize(1200, 666);
        QSignalSpy loaded(m_history.data(), &ParameterHistory::signal_loaded);
        m_widget->show();
        QVERIFY(loaded.wait());
    }
    /** Both are kept, the first axis first. */
    void setUpAxes()
    {
        QSignalSpy kept(m_history.data(), &ParameterHistory::signal_kept);
        m_session->setUpAxis(0);
        m_session->setUpAxis(1);
        QTRY_COMPARE(kept.size(), 2);
    }
    /** Two fields of the first axis, as the settings do it. */
    void change(const QString &model)
    {
        QSignalSpy kept(m_history.data(), &ParameterHistory::signal_kept);
        MotorParams params = {};
        QCOMPARE(SerialComDev::instance()->getMotorParams(0, params), 0);
        qstrncpy(params.modelName, model.toLatin1().constData(), sizeof params.modelName);
        params.restoreSpeed += 1;
        QCOMPARE(SerialComDev::instance()->setMotorParams(0, params), 0);
        QTRY_COMPARE(kept.size(), 1);
    }

    std::unique_ptr<DebugLog> m_log;
    QSharedPointer<ControlSession> m_session;
    QSharedPointer<ParameterHistory> m_history;
    std::unique_ptr<HistoryWidget> m_widget;
};

QTEST_MAIN(tst_HistoryWidget)
#include "tst_HistoryWidget.moc"
