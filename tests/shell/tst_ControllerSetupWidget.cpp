// SPDX-License-Identifier: MIT
#include "controllers/emulator/SerialPort.h"
#include "device/ControllersFile.h"
#include "device/MotionLibrary.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "shell/BoardSettingsWidget.h"
#include "device/moverStatus.h"
#include "shell/ControllerSetupWidget.h"
#include "shell/FirstMoveWidget.h"
#include "support/Catalogue.h"
#include "support/ChooseFile.h"
#include "support/Chinese.h"
#include "support/FailOnDeadSlot.h"
#include "support/MessageBoxes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int answerMs = 12000; // a board that says nothing takes four seconds to be given up
constexpr int moveMs = 5000;

/** The dialog, shown, and what the user does in it. */
struct Dialog {
    Dialog() { widget.show(); }

    template <typename Widget = QPushButton>
    Widget *in(const char *name) const
    {
        auto *found = widget.findChild<Widget *>(QLatin1String(name));
        if (!found)
            qFatal("There is no %s", name);
        return found;
    }
    /** Near its left end: a radio button is wider than what can be clicked of it. */
    void click(const char *name) const
    {
        auto *button = in<QAbstractButton>(name);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(12, button->height() / 2));
    }
    QString text(const char *name) const { return in<QLabel>(name)->text(); }
    bool isOn(const char *page) const
    {
        return in<QStackedWidget>("stackedWidget_pages")->currentWidget()->objectName() == QLatin1String(page);
    }
    void ask(const QString &port) const
    {
        click("pushButton_add");
        in<QComboBox>("comboBox_port")->setEditText(port);
        click("pushButton_ask");
    }
    void showTab(const char *name) const
    {
        auto *tabs = in<QTabWidget>("tabWidget_board");
        tabs->setCurrentWidget(in<QWidget>(name));
    }
    /** The rows of the table of settings: "$100 250 200". */
    QStringList rows() const
    {
        const auto *table = in<QTableWidget>("tableWidget_settings");
        QStringList rows;
        for (int row = 0; row < table->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < 3; ++column)
                cells.append(table->item(row, column)->text());
            rows.append(cells.join(QLatin1Char(' ')).trimmed());
        }
        return rows;
    }

    ControllerSetupWidget widget;
};

} // namespace

class tst_ControllerSetupWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/grbl");
        QDir().mkpath(folder);
        QFile::remove(folder + QStringLiteral("/libmoverLibrary.so"));
        QVERIFY(QFile::link(QStringLiteral(GRBL_LIBRARY), folder + QStringLiteral("/libmoverLibrary.so")));
    }
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_file = m_folder->filePath("controllers.json");
        qputenv("MOVER_CONTROLLERS", m_file.toUtf8());
        m_options = {};
        m_options.storeTime = 0.001;
        m_options.bootTime = 0.05; // or it says nothing by itself for three seconds
        m_options.settings = {{1, 255},   {10, 3},    {22, 0},    {100, 250}, {101, 250}, {102, 250},
                              {110, 600}, {120, 500}, {130, 200}, {131, 200}, {132, 200}};
    }
    void cleanup()
    {
        m_port.reset();
        QVERIFY(SerialComDev::endThread(5000));
    }

    void savesABoardWithItsStages()
    {
        const FailOnDeadSlot deadSlots;
        plugIn();
        const Dialog dialog;
        QVERIFY(dialog.isOn("page_overview"));
        QVERIFY(!m_port->isOpen()); // nothing is opened that was not chosen
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        QVERIFY2(dialog.text("label_board").startsWith("Grbl 1.1"), qPrintable(dialog.text("label_board")));
        QVERIFY(dialog.text("label_board").contains(QStringLiteral("3 个轴，34 个参数")));
        QCOMPARE(dialog.text("label_axis1"), QStringLiteral("250 步/mm，行程 200 mm\n最高 9.8 mm/s，由 $110 决定"));
        dialog.in<QLineEdit>("lineEdit_name")->setText("bench");
        dialog.in<QComboBox>("comboBox_model1")->setCurrentText("LIN-50");
        dialog.in<QComboBox>("comboBox_model3")->setCurrentText("LIN-25");
        dialog.click("pushButton_save");
        QVERIFY(dialog.isOn("page_overview"));
        QCOMPARE(dialog.in<QListWidget>("listWidget_boards")->count(), 1);

        const ControllersFile file(m_file);
        QCOMPARE(file.boards().size(), 1);
        const ControllersFile::Board saved = file.boards().first();
        QCOMPARE(saved.name, QStringLiteral("bench"));
        QCOMPARE(saved.port, board());
        QCOMPARE(saved.axes.size(), 3);
        QCOMPARE(saved.axes[0].stage["modelName"].toString(), QStringLiteral("LIN-50"));
        QVERIFY(saved.axes[1].stage.isEmpty());
        // 250 steps per mm of this board, half a millimetre per turn of this model.
        QCOMPARE(saved.axes[2].stage["pulseOneCircle"].toInt(), 125);
        QCOMPARE(saved.axes[2].stage["dispOneCircle"].toDouble(), 0.5);
        QCOMPARE(BoardLink::faultOf(m_file), QString()); // as the library reads it
        QTRY_VERIFY(!m_port->isOpen());
    }
    void nothingMovesBeforeAnybodyAsks()
    {
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        QCOMPARE(stepsOf(0) + stepsOf(1) + stepsOf(2), 0LL);
    }
    void aBoardThatIsSetUpCanBeChanged()
    {
        plugIn();
        write(R"({"controllers": [{"id": 7, "kind": "grbl", "name": "old", "port": ")" + board() + R"(",
            "axes": [{"letter": "X", "offset": 3, "stage": {"modelName": "LIN-50"}}, {"letter": "Y"}]}]})");
        const Dialog dialog;
        QVERIFY(dialog.in<QListWidget>("listWidget_boards")->item(0)->text().startsWith("old"));
        dialog.click("pushButton_open");
        dialog.click("pushButton_ask");
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        QCOMPARE(dialog.in<QComboBox>("comboBox_model1")->currentText(), QStringLiteral("LIN-50"));
        dialog.in<QComboBox>("comboBox_model1")->setCurrentText("LIN-25");
        dialog.click("pushButton_save");
        const ControllersFile::Board saved = ControllersFile(m_file).boards().value(0);
        QCOMPARE(saved.id, 7);
        QCOMPARE(saved.axes[0].stage["modelName"].toString(), QStringLiteral("LIN-25"));
        QVERIFY(text(m_file).contains("\"offset\": 3")); // what the dialog knows nothing of
    }
    void aBoardOfMoreAxesLendsThree()
    {
        m_options.axes = 4;
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        auto *third = dialog.in<QComboBox>("comboBox_letter3");
        third->setCurrentText("X");
        dialog.click("pushButton_save");
        QVERIFY(dialog.text("label_msg").contains(QStringLiteral("相同的字母")));
        third->setCurrentText("A");
        dialog.click("pushButton_save");
        QStringList letters;
        for (const ControllersFile::Axis &axis : ControllersFile(m_file).boards().value(0).axes)
            letters.append(axis.letter);
        QCOMPARE(letters, (QStringList{"X", "Y", "A"}));
    }
    void removingABoardAsksFirst()
    {
        write(R"({"library": "grbl", "controllers": [{"id": 7, "kind": "grbl", "port": "/dev/none", "axes": [{}]},
            {"id": 8, "kind": "other", "port": "x"}]})");
        const Dialog dialog;
        {
            const MessageBoxes boxes(QStringLiteral("取消"));
            dialog.click("pushButton_removeBoard");
            QCOMPARE(boxes.count(), 1);
        }
        QCOMPARE(ControllersFile(m_file).boards().size(), 1);
        const MessageBoxes boxes;
        dialog.click("pushButton_removeBoard");
        QCOMPARE(ControllersFile(m_file).boards().size(), 0);
        QVERIFY(text(m_file).contains("\"other\""));
        QCOMPARE(ControllersFile(m_file).library(), QStringLiteral("grbl"));
    }

    /** The values of motion that the library keeps for one of them count for no other. */
    void noTwoBoardsEverHaveTheSameNumber()
    {
        plugIn();
        write(R"({"controllers": [{"id": 2001, "kind": "grbl", "port": "/dev/none", "axes": [{}]}]})");
        const Dialog dialog;
        {
            const MessageBoxes boxes;
            writeTo("board-2001.json", "{}");
            dialog.click("pushButton_removeBoard");
            QVERIFY(!QFile::exists(m_folder->filePath("board-2001.json")));
        }
        writeTo("board-2002.json", "{}"); // of a file of controllers that was lost
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.click("pushButton_save");
        QCOMPARE(ControllersFile(m_file).boards().value(0).id, 2003);
        QVERIFY(QFile::exists(m_folder->filePath("board-2002.json")));
        QCOMPARE(BoardLink::faultOf(m_file), QString());
    }

    void theChosenLibraryIsStoredAndARestartOffered()
    {
        Dialog dialog;
        QVERIFY(dialog.in<QRadioButton>("radioButton_automatic")->isChecked());
        QVERIFY(dialog.in<QRadioButton>("radioButton_simulated")->text().contains(QStringLiteral("正在使用")));
        QVERIFY(dialog.in<QRadioButton>("radioButton_makers")->text().contains(QStringLiteral("未找到")));
        QVERIFY(!dialog.in<QRadioButton>("radioButton_makers")->isEnabled());
        QVERIFY(dialog.in("pushButton_restart")->isHidden());
        dialog.click("radioButton_grbl");
        QCOMPARE(ControllersFile(m_file).library(), QStringLiteral("grbl"));
        QVERIFY(!dialog.in("pushButton_restart")->isHidden());
        QSignalSpy restart(&dialog.widget, &ControllerSetupWidget::signal_restart);
        dialog.click("pushButton_restart");
        QCOMPARE(restart.count(), 1);
        dialog.click("radioButton_automatic");
        QCOMPARE(ControllersFile(m_file).library(), QString());
        QVERIFY(dialog.in("pushButton_restart")->isHidden());
    }
    void aMakersLibraryThatIsGoneStaysToBeSeen()
    {
        write(R"({"library": "makers"})");
        const Dialog dialog;
        auto *makers = dialog.in<QRadioButton>("radioButton_makers");
        QVERIFY(makers->isChecked());
        QVERIFY(makers->text().contains(QStringLiteral("未找到")));
        dialog.click("radioButton_grbl");
        QCOMPARE(ControllersFile(m_file).library(), QStringLiteral("grbl"));
        QVERIFY(!makers->isEnabled()); // once given up
    }
    void noTwoBoardsAreSetUpAtOnePort()
    {
        write(R"({"controllers": [{"id": 7, "kind": "grbl", "name": "bench", "port": "/dev/none", "axes": [{}]}]})");
        const Dialog dialog;
        dialog.ask("/dev/none");
        QVERIFY(dialog.isOn("page_port"));
        QCOMPARE(dialog.text("label_reason"), QStringLiteral("这个串口上已经设置了 bench。"));
    }
    void goesBackAndCloses()
    {
        Dialog dialog;
        dialog.click("radioButton_simulated");
        QCOMPARE(ControllersFile(m_file).library(), QStringLiteral("simulated"));
        dialog.click("pushButton_add");
        QVERIFY(!dialog.isOn("page_overview"));
        plugIn();
        dialog.click("pushButton_rescan");
        dialog.click("pushButton_back");
        QVERIFY(dialog.isOn("page_overview"));
        QVERIFY(!m_port->isOpen());
        dialog.click("pushButton_close");
        QVERIFY(!dialog.widget.isVisible());
    }

    void restartingAsksWhileAControllerIsConnected()
    {
        const auto session = ControlSession::instance();
        QCOMPARE(session->connectTo({1001, {}}), 1001);
        const Dialog dialog;
        dialog.click("radioButton_grbl");
        QSignalSpy restart(&dialog.widget, &ControllerSetupWidget::signal_restart);
        {
            const MessageBoxes refusing(QStringLiteral("取消"));
            dialog.click("pushButton_restart");
            QCOMPARE(refusing.count(), 1);
        }
        QCOMPARE(restart.count(), 0);
        const MessageBoxes agreeing;
        dialog.click("pushButton_restart");
        QCOMPARE(restart.count(), 1);
        QVERIFY(session->disconnectController());
    }
    void theFirstBoardMakesItsLibraryTheNextOne()
    {
        QVERIFY(MotionLibrary::automatic() == MotionLibrary::Kind::Simulated);
        ControllersFile file(m_file);
        file.put({0, "bench", "/dev/none", {{"X", {}}}});
        QVERIFY(file.save());
        QVERIFY(MotionLibrary::automatic() == MotionLibrary::Kind::Grbl);
        const Dialog dialog;
        QVERIFY(!dialog.in("pushButton_restart")->isHidden());
    }

    void saysWhyAPortIsOfNoUse_data()
    {
        QTest::addColumn<QString>("what");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no such port") << "none"
                                      << "没有这个串口";
        QTest::newRow("no serial port") << "file"
                                        << "没有这个串口";
        QTest::newRow("another program has it") << "used"
                                                << "串口被另一个程序占用";
        QTest::newRow("no permission") << "forbidden"
                                       << "没有打开串口的权限";
        QTest::newRow("silence") << "silent"
                                 << "没有应答";
        QTest::newRow("another baud rate") << "garbled"
                                           << "波特率不是 115200";
        QTest::newRow("another device") << "other"
                                        << "它不是 Grbl 控制板";
    }
    void saysWhyAPortIsOfNoUse()
    {
        QFETCH(QString, what);
        QFETCH(QString, reason);
        QString port = board();
        std::unique_ptr<QTimer> speaker;
        QProcess holder;
        if (what == "file") {
            port = m_folder->filePath("file");
            QFile file(port);
            QVERIFY(file.open(QIODevice::WriteOnly));
        } else if (what != "none") {
            plugIn();
        }
        if (what == "used") {
            holder.start("flock", {board(), "sleep", "60"});
            QVERIFY(holder.waitForStarted());
            QTRY_VERIFY(m_port->isOpen());
        }
        const auto sayForEver = [&](const char *words) {
            speaker = std::make_unique<QTimer>();
            speaker->callOnTimeout([this, words] { m_port->use([&](emulator::Board &it) { it.garble(words); }); });
            speaker->start(100);
        };
        if (what == "silent" || what == "garbled" || what == "other")
            m_port->use([](emulator::Board &it) { it.toBoard().cut(true); });
        if (what == "silent")
            m_port->use([](emulator::Board &it) { it.toHost().cut(true); });
        if (what == "garbled")
            sayForEver("\xF8\x81 \xC3\xFF\x03\x80\n");
        if (what == "other")
            sayForEver("temperature 21.5\r\n");

        const Dialog dialog;
        if (what == "forbidden") {
            if (geteuid() != 0)
                QSKIP("only root can become somebody without a permission");
            QCOMPARE(seteuid(65534), 0); // the folder is root's alone
        }
        dialog.ask(port);
        QTRY_VERIFY_WITH_TIMEOUT(dialog.in("pushButton_ask")->isEnabled(), answerMs);
        if (what == "forbidden")
            QCOMPARE(seteuid(0), 0);
        QVERIFY2(dialog.text("label_reason").contains(reason), qPrintable(dialog.text("label_reason")));
        QVERIFY(dialog.isOn("page_port"));
        holder.kill();
        holder.waitForFinished();
    }
    void aPortCannotBeSetUpTwice()
    {
        write(
            R"({"controllers": [{"id": 7, "kind": "grbl", "name": "first", "port": ")" + board() +
            R"(", "axes": [{}]}]})");
        const Dialog dialog;
        dialog.ask(board());
        QVERIFY(dialog.text("label_reason").contains("first"));
        QVERIFY(dialog.isOn("page_port"));
    }
    void aBoardThatIsUnpluggedIsToldAndWhatWasEnteredStays()
    {
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.in<QLineEdit>("lineEdit_name")->setText("bench");
        m_port->unplug();
        QTRY_VERIFY(dialog.text("label_board").contains(QStringLiteral("已拔出")));
        dialog.click("pushButton_save");
        QCOMPARE(ControllersFile(m_file).boards().value(0).name, QStringLiteral("bench"));
        QCOMPARE(ControllersFile(m_file).boards().value(0).axes.size(), 3);
    }

    void aFileThatCannotBeReadIsKept_data()
    {
        QTest::addColumn<QString>("content");
        QTest::newRow("damaged") << R"({"controllers": [)";
        QTest::newRow("of a newer program") << R"({"version": 2})";
        QTest::newRow("no list") << R"({"controllers": 3})";
    }
    void aFileThatCannotBeReadIsKept()
    {
        QFETCH(QString, content);
        write("before");
        QVERIFY(QFile::rename(m_file, m_file + ".bak")); // from an earlier time
        write(content);
        const Dialog dialog;
        QVERIFY(dialog.text("label_msg").contains("controllers.json.bak2"));
        QCOMPARE(text(m_file + ".bak2"), content);
        QCOMPARE(text(m_file + ".bak"), QStringLiteral("before"));
        QVERIFY(!QFile::exists(m_file));
    }
    void aFileThatCannotBeWrittenIsTold()
    {
        QVERIFY(QDir().mkpath(m_file)); // a folder in its place
        const Dialog dialog;
        QVERIFY(QDir().mkpath(m_file));
        dialog.click("radioButton_grbl");
        QVERIFY2(dialog.text("label_msg").contains(QStringLiteral("无法写入")), qPrintable(dialog.text("label_msg")));
        QVERIFY(dialog.in<QRadioButton>("radioButton_automatic")->isChecked());
    }
    void theSecondProgramOnlyShows()
    {
        write(R"({"controllers": [{"id": 7, "kind": "grbl", "port": "/dev/none", "axes": [{}]}]})");
        const Dialog first;
        const Dialog second;
        QVERIFY(second.text("label_msg").contains(QStringLiteral("只能查看")));
        QCOMPARE(second.in<QListWidget>("listWidget_boards")->count(), 1);
        for (const char *button : {"pushButton_add", "pushButton_open", "pushButton_removeBoard"})
            QVERIFY(!second.in(button)->isEnabled());
        QVERIFY(!second.in<QRadioButton>("radioButton_grbl")->isEnabled());
        QVERIFY(first.in("pushButton_add")->isEnabled());
    }

    void aHeldPressMovesAMillimetreAndProposesTheSteps()
    {
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.showTab("widget_firstMove");
        QVERIFY(!dialog.in("pushButton_propose")->isEnabled()); // nothing has moved yet
        hold(dialog, "pushButton_forward", [&] { return dialog.text("label_moved").contains("1.000 mm"); });
        QTRY_VERIFY(dialog.in("pushButton_propose")->isEnabled());
        QCOMPARE(stepsOf(0), 250LL);
        // The stage went 2 mm, the wrong way.
        dialog.in<QDoubleSpinBox>("doubleSpinBox_measured")->setValue(2);
        dialog.in<QCheckBox>("checkBox_rightWay")->setChecked(false);
        dialog.click("pushButton_propose");
        QCOMPARE(dialog.rows(), (QStringList{"$3 0 1", "$100 250 125"}));
        QVERIFY(m_port->use([](emulator::Board &it) { return it.settings()[100] == 250; })); // not before it is said
        dialog.click("pushButton_write");
        QTRY_VERIFY(dialog.text("label_msg").contains(QStringLiteral("已写入")));
        QVERIFY(m_port->use([](emulator::Board &it) { return it.settings()[100] == 125 && it.settings()[3] == 1; }));
    }
    void aReleasedPressStopsAtOnce()
    {
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.showTab("widget_firstMove");
        hold(dialog, "pushButton_backward", [&] { return stepsOf(0) < -20; });
        QTRY_VERIFY(dialog.in("pushButton_propose")->isEnabled());
        QVERIFY(stepsOf(0) > -250);
        const long long there = stepsOf(0);
        QVERIFY2(
            dialog.text("label_moved").contains(QString::number(double(there) / 250, 'f', 3)),
            qPrintable(dialog.text("label_moved")));
    }
    void stopsByTheKeyOfAllAndByItsButton_data()
    {
        QTest::addColumn<bool>("isByButton");
        QTest::newRow("F12") << false;
        QTest::newRow("button") << true;
    }
    void stopsByTheKeyOfAllAndByItsButton()
    {
        QFETCH(bool, isByButton);
        m_options.settings[22] = 1;
        m_options.settings[24] = 100;
        m_options.settings[25] = 300;
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.showTab("widget_firstMove");
        const MessageBoxes boxes;
        dialog.click("pushButton_home");
        QTRY_VERIFY(m_port->use([](emulator::Board &it) { return it.state() == emulator::State::Home; }));
        if (isByButton)
            dialog.click("pushButton_stop");
        else
            ControlSession::instance()->stopAll(); // F12
        QTRY_VERIFY(m_port->use([](emulator::Board &it) { return it.state() == emulator::State::Alarm; }));
    }
    void switchesAreShownAsTheyAre()
    {
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.showTab("widget_firstMove");
        QCOMPARE(dialog.text("label_switches"), QStringLiteral("X 断开    Y 断开    Z 断开"));
        m_port->use([](emulator::Board &it) { it.forceSwitch(1, 1); });
        QTRY_COMPARE(dialog.text("label_switches"), QStringLiteral("X 断开    Y 闭合    Z 断开"));
        m_port->use([](emulator::Board &it) { it.forceSwitch(1, 0); });
        QTRY_COMPARE(dialog.text("label_switches"), QStringLiteral("X 断开    Y 断开    Z 断开"));
        dialog.click("pushButton_invertSwitches");
        QCOMPARE(dialog.rows(), QStringList{"$5 0 1"});
    }
    void homesWhenTheUserHasAgreed()
    {
        m_options.settings[22] = 1;
        m_options.settings[24] = 600;
        m_options.settings[25] = 6000;
        m_options.settings[110] = 6000;
        m_options.settings[111] = 6000;
        m_options.settings[112] = 6000;
        plugIn(8);
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.showTab("widget_firstMove");
        QVERIFY(dialog.text("label_where").contains(QStringLiteral("已锁定")));
        QVERIFY(!dialog.in("pushButton_forward")->isEnabled());
        {
            const MessageBoxes refusing(QStringLiteral("取消"));
            dialog.click("pushButton_home");
            QVERIFY(refusing.texts().value(0).contains("XYZ"));
        }
        QVERIFY(m_port->use([](emulator::Board &it) { return it.state() == emulator::State::Alarm; }));
        const MessageBoxes boxes;
        dialog.click("pushButton_home");
        QTRY_VERIFY_WITH_TIMEOUT(dialog.text("label_homing").contains(QStringLiteral("已回零")), 30000);
        dialog.click("pushButton_homeTheOtherWay");
        QCOMPARE(dialog.rows(), QStringList{"$23 0 1"});
    }
    void unlockingIsRefusedOnAClosedSwitch()
    {
        m_options.settings[21] = 1;
        m_options.settings[22] = 1;
        plugIn();
        m_port->use([](emulator::Board &it) { it.forceSwitch(0, 1); });
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.showTab("widget_firstMove");
        dialog.click("pushButton_unlock");
        QVERIFY(dialog.text("label_msg").contains(QStringLiteral("有限位开关闭合")));
        m_port->use([](emulator::Board &it) { it.forceSwitch(0, 0); });
        QTRY_VERIFY(dialog.text("label_switches").startsWith(QStringLiteral("X 断开")));
        dialog.click("pushButton_unlock");
        QTRY_VERIFY(dialog.text("label_where").contains(QStringLiteral("静止")));
    }

    void settingsComeBackFromTheirBackUp()
    {
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        auto *settings = dialog.in<BoardSettingsWidget>("widget_settings");
        dialog.showTab("widget_settings");
        QCOMPARE(dialog.rows().size(), 34);
        const QString file = m_folder->filePath("board.txt");
        chooseFile(file);
        dialog.click("pushButton_backUp");
        QVERIFY(dialog.text("label_msg").contains(QStringLiteral("已备份")));
        chooseFile(file);
        dialog.click("pushButton_restore");
        QCOMPARE(dialog.rows(), QStringList());
        QVERIFY(!dialog.in("pushButton_write")->isEnabled());

        // Soft limits can be switched on only with homing, whatever the order of their numbers.
        QString text = this->text(file);
        text.replace("$20=0.000", "$20=1.000").replace("$22=0.000", "$22=1.000").replace("$10=3.000", "$10=1.000");
        QFile changed(file);
        QVERIFY(changed.open(QIODevice::WriteOnly));
        changed.write(text.toUtf8());
        changed.close();
        QVERIFY(settings->restoreFrom(file));
        QCOMPARE(dialog.rows(), (QStringList{"$20 0 1", "$22 0 1"}));
        dialog.click("pushButton_write");
        QTRY_VERIFY(dialog.text("label_msg").contains(QStringLiteral("已写入")));
        QVERIFY(m_port->use([](emulator::Board &it) { return it.settings()[20] == 1 && it.settings()[22] == 1; }));
        QCOMPARE(dialog.rows().size(), 34);
    }
    void whatIsCancelledChangesNothing()
    {
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.showTab("widget_settings");
        const QStringList rows = dialog.rows();
        const auto sentSettings = [this] {
            return m_port->use([](emulator::Board &it) {
                const auto &lines = it.sentLines();
                return std::count_if(lines.begin(), lines.end(), [](const std::string &line) {
                    return line.size() > 1 && line[0] == '$' && line.find('=') != std::string::npos;
                });
            });
        };
        const auto before = sentSettings();
        // The dialogs for files
        const QStringList files = QDir(m_folder->path()).entryList(QDir::Files);
        for (const char *button : {"pushButton_backUp", "pushButton_restore"}) {
            chooseFile(m_folder->filePath("board.txt"), QDialogButtonBox::Cancel);
            dialog.click(button);
            QCOMPARE(dialog.text("label_msg"), QString());
            QCOMPARE(dialog.rows(), rows);
        }
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), files);
        // A file of another kind
        writeTo("letter.txt", "Dear colleague,\n");
        chooseFile(m_folder->filePath("letter.txt"));
        dialog.click("pushButton_restore");
        QVERIFY(dialog.text("label_msg").contains(QStringLiteral("letter.txt 不是参数备份")));
        QCOMPARE(dialog.rows(), rows);
        // The differences, by the button and by leaving
        writeTo("other.txt", "$100=200\n");
        auto *settings = dialog.in<BoardSettingsWidget>("widget_settings");
        QVERIFY(settings->restoreFrom(m_folder->filePath("other.txt")));
        QCOMPARE(dialog.rows(), QStringList{"$100 250 200"});
        dialog.click("pushButton_discard");
        QCOMPARE(dialog.rows(), rows);
        QVERIFY(!dialog.in("pushButton_write")->isEnabled());
        QVERIFY(settings->restoreFrom(m_folder->filePath("other.txt")));
        dialog.click("pushButton_leave");
        QTRY_VERIFY(!m_port->isOpen());
        QCOMPARE(sentSettings(), before);
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        QCOMPARE(dialog.rows(), rows);
    }
    void aFileThatIsNoBackUpChangesNothing_data()
    {
        QTest::addColumn<QString>("content");
        QTest::newRow("empty") << "";
        QTest::newRow("words") << "Dear colleague,\n";
        QTest::newRow("no number") << "$100=abc\n";
        QTest::newRow("infinite") << "$100=inf\n";
        QTest::newRow("a command among them") << "$100=250\n$H\n";
    }
    void aFileThatIsNoBackUpChangesNothing()
    {
        QFETCH(QString, content);
        BoardLink link;
        BoardSettingsWidget settings;
        settings.begin(&link);
        write(content);
        QVERIFY(!settings.restoreFrom(m_file));
    }
    void theBoardIsFittedToTheModelsWhenTheUserSaysSo()
    {
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        dialog.in<QComboBox>("comboBox_model1")->setCurrentText("LIN-25"); // 8 mm/s, 40 mm/s², 25 mm
        dialog.click("pushButton_adapt");
        QCOMPARE(dialog.rows(), (QStringList{"$110 600 480", "$120 500 400", "$130 200 25"}));
        dialog.click("pushButton_discard");
        QCOMPARE(dialog.rows().size(), 34);
    }

    void withoutABoardEverythingIsALostLink()
    {
        const MoverSetUp *set = BoardLink::functions();
        QVERIFY(set);
        MoverBoard board{};
        set->look(&board);
        QCOMPARE(int(board.phase), int(moverSetUp::Closed));
        MoverSetting setting{100, 250};
        QCOMPARE(set->settings(&setting, 1), 0);
        QCOMPARE(set->write(&setting, 1), int(moverStatus::LinkLost));
        QCOMPARE(set->move(0, 1, 1), int(moverStatus::LinkLost));
        QCOMPARE(set->unlock(), int(moverStatus::LinkLost));
        QCOMPARE(set->home(0), int(moverStatus::LinkLost));
        set->stop();
        write("{\n\"controllers\": [");
        QVERIFY2(BoardLink::faultOf(m_file).contains(":2: "), qPrintable(BoardLink::faultOf(m_file)));
    }
    void aRefusalIsToldInWordsOrByItsNumber()
    {
        const Dialog dialog;
        auto *page = dialog.in<FirstMoveWidget>("widget_firstMove");
        emit page->signal_refused(moverStatus::AxisRunning);
        const QString words = dialog.text("label_msg");
        QVERIFY(!words.isEmpty());
        emit page->signal_refused(-12345);
        QCOMPARE(dialog.text("label_msg"), QStringLiteral("控制板拒绝（-12345）"));
        const Catalogue english;
        QVERIFY2(!isChinese(dialog.text("label_msg")), qPrintable(dialog.text("label_msg")));
        QVERIFY(dialog.text("label_msg").contains("-12345"));
        emit page->signal_refused(moverStatus::AxisRunning);
        QVERIFY(dialog.text("label_msg") != words);
    }
    void speaksBothLanguages()
    {
        plugIn();
        const Dialog dialog;
        dialog.ask(board());
        QTRY_VERIFY_WITH_TIMEOUT(dialog.isOn("page_board"), answerMs);
        const Catalogue english;
        const auto labels = dialog.widget.findChildren<QLabel *>();
        for (const QLabel *label : labels)
            QVERIFY2(!isChinese(label->text()), qPrintable(label->objectName() + ": " + label->text()));
        const auto buttons = dialog.widget.findChildren<QAbstractButton *>();
        for (const QAbstractButton *button : buttons)
            QVERIFY2(!isChinese(button->text()), qPrintable(button->text()));
    }

private:
    void plugIn(double speed = 1)
    {
        m_port = std::make_unique<emulator::SerialPort>(m_options, speed, board().toStdString());
    }
    QString board() const { return m_folder->filePath("board"); }
    void write(const QString &content) const { writeTo("controllers.json", content); }
    void writeTo(const QString &name, const QString &content) const
    {
        QFile file(m_folder->filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content.toUtf8());
    }
    static QString text(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    /** Of an axis since the board was switched on. */
    long long stepsOf(int axis)
    {
        return m_port->use([axis](emulator::Board &it) { return it.steps(axis); });
    }
    static void hold(const Dialog &dialog, const char *name, const std::function<bool()> &until)
    {
        QPushButton *button = dialog.in(name);
        QVERIFY(button->isEnabled());
        QTest::mousePress(button, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(until(), moveMs);
        QTest::mouseRelease(button, Qt::LeftButton);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file;
    emulator::Options m_options;
    std::unique_ptr<emulator::SerialPort> m_port;
};

QTEST_MAIN(tst_ControllerSetupWidget)
#include "tst_ControllerSetupWidget.moc"
