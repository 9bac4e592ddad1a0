// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "shell/ConnectionWidget.h"
#include "device/moverStatus.h"
#include "support/DebugLog.h"
#include "support/English.h"
#include "support/FailOnDeadSlot.h"
#include "support/Mouse.h"

#include "Scenario.h"

#include <QComboBox>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <future>

namespace {

constexpr int device = 1001;
constexpr int other = 1002;

/** The dialog, shown, and what the user does in it. */
struct Dialog {
    Dialog() { widget.show(); }

    ConnectionWidget widget;
    QSignalSpy connected{&widget, &ConnectionWidget::signal_devConnected};
    QSignalSpy disconnected{&widget, &ConnectionWidget::signal_devDisConnected};
    QComboBox *list = widget.findChild<QComboBox *>(QStringLiteral("comboBox_comList"));
    QLabel *message = widget.findChild<QLabel *>(QStringLiteral("label_msg"));
    QPushButton *connectButton = widget.findChild<QPushButton *>(QStringLiteral("pushButton_connectSerial"));
    QPushButton *disconnectButton = widget.findChild<QPushButton *>(QStringLiteral("pushButton_disConnect"));

    QTimer *hideTimer() const { return widget.findChild<QTimer *>(); }
    QStringList entries() const
    {
        QStringList result;
        for (int k = 0; k < list->count(); ++k)
            result.append(list->itemText(k));
        return result;
    }
    void choose(int id)
    {
        widget.refreshDevices();
        list->setCurrentIndex(list->findData(id));
    }
    void connectTo(int id)
    {
        choose(id);
        QTest::mouseClick(connectButton, Qt::LeftButton);
    }
    void disconnect() { QTest::mouseClick(disconnectButton, Qt::LeftButton); }
};

} // namespace

class tst_ConnectionWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startsDisconnected();
    void listsTheControllersThatAnswerInTheLibrarysOrder();
    void probingOpensEachControllerForAMomentAndLeavesNothingAdded();
    void leavesOutAControllerThatDoesNotOpen();
    void leavesOutAControllerWithoutSerialNumber();
    void listsNothingWhenListingFails();
    void listsAtMostTenControllers();
    void readsSerialNumbersUpToTheirFirstZero_data();
    void readsSerialNumbersUpToTheirFirstZero();
    void doesNotProbeTheConnectedController();
    void theConnectedControllerStaysTheCurrentEntry();
    void theLastControllerStaysTheCurrentEntryAfterADisconnect();
    void probingTakesTheMutexCallByCallUnderABusyCursor();
    void probingGivesUpWhileTheLibraryHangs();

    void connectOpensTheChosenController();
    void isConnectedAndHiddenWhenItSaysSo();
    void connectWithoutAnEntryPassesZero();
    void aFailedConnectKeepsTheButtonsAndShowsNoHiddenMessage();
    void aFailedConnectReplacesAVisibleMessage();
    void waitsForOpeningUnderABusyCursor();
    void disconnectClosesTheController();
    void connectsAgainAfterADisconnect();
    void theMessageIsHiddenAfterFiveSeconds();
    void theMessageMovesNothingWhenItComesAndGoes();

    void closeButtonHides();
    void escapeHides();
    void isDraggedByItsTitleArea();
    void isAFramelessModalWindow();
    void languageChangeTranslatesTheTextsAndKeepsTheEntry();
    void languageChangeTranslatesTheMessageThatIsShown();
};

void tst_ConnectionWidget::init()
{
    simulator::reset();
}

void tst_ConnectionWidget::cleanup()
{
    simulator::clearFaults();
    simulator::releaseHung();
    QVERIFY(SerialComDev::endThread(5000));
    QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
}

void tst_ConnectionWidget::startsDisconnected()
{
    const FailOnDeadSlot deadSlots;
    const Dialog dialog;
    QVERIFY(dialog.connectButton->isEnabled());
    QVERIFY(!dialog.disconnectButton->isEnabled());
    QVERIFY(dialog.message->isHidden());
    QCOMPARE(dialog.list->count(), 0);
}

// ---- The list

void tst_ConnectionWidget::listsTheControllersThatAnswerInTheLibrarysOrder()
{
    play({{other, "MC3-B"}, {device, "MC3-A"}});
    Dialog dialog;
    dialog.widget.refreshDevices();
    dialog.widget.refreshDevices(); // in place of the list, not in addition
    QCOMPARE(dialog.entries(), (QStringList{QStringLiteral("SIM-MC3-B"), QStringLiteral("SIM-MC3-A")}));
    QCOMPARE(dialog.list->itemData(0).toInt(), other);
    QCOMPARE(dialog.list->itemData(1).toInt(), device);
}

void tst_ConnectionWidget::probingOpensEachControllerForAMomentAndLeavesNothingAdded()
{
    play({{device, "MC3-A"}});
    Dialog dialog;
    dialog.widget.refreshDevices();
    QCOMPARE(
        calls(), (QStringList{
                     QStringLiteral("listTSMotorControlerDevices(10)"), QStringLiteral("addDev(1001)"),
                     QStringLiteral("openTSDevice(1001)"), QStringLiteral("getDevSerialNumber(1001)"),
                     QStringLiteral("removeDev(1001)")}));
}

void tst_ConnectionWidget::leavesOutAControllerThatDoesNotOpen()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    simulator::failCall("openTSDevice", simulator::LinkLost);
    Dialog dialog;
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.entries(), QStringList{QStringLiteral("SIM-MC3-B")});
    QCOMPARE(
        calls().mid(1, 3),
        (QStringList{
            QStringLiteral("addDev(1001)"), QStringLiteral("openTSDevice(1001)"), QStringLiteral("removeDev(1001)")}));
}

void tst_ConnectionWidget::leavesOutAControllerWithoutSerialNumber()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    simulator::failCall("getDevSerialNumber", simulator::LinkLost);
    Dialog dialog;
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.entries(), QStringList{QStringLiteral("SIM-MC3-B")});
    QCOMPARE(calls().filter(QStringLiteral("removeDev(1001)")).size(), 1);
}

void tst_ConnectionWidget::listsNothingWhenListingFails()
{
    Dialog dialog;
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.list->count(), 1);
    simulator::clearJournal();
    simulator::failCall("listTSMotorControlerDevices", -9);
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.list->count(), 0);
    QCOMPARE(calls().size(), 1);
}

void tst_ConnectionWidget::listsAtMostTenControllers()
{
    std::vector<ControllerOf> twelve;
    for (int k = 0; k < 12; ++k)
        twelve.push_back({device + k, "MC3-" + std::to_string(k)});
    play(twelve);
    Dialog dialog;
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.list->count(), 10);
    QCOMPARE(dialog.list->itemText(9), QStringLiteral("SIM-MC3-9"));
}

void tst_ConnectionWidget::readsSerialNumbersUpToTheirFirstZero_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero inside") << QByteArray("MC3\0X", 5) << QStringLiteral("MC3");
    QTest::newRow("no zero in 32 bytes") << QByteArray(40, 'M') << QString(32, QLatin1Char('M'));
    QTest::newRow("empty") << QByteArray() << QString();
}

void tst_ConnectionWidget::readsSerialNumbersUpToTheirFirstZero()
{
    QFETCH(QByteArray, bytes);
    simulator::answerText("getDevSerialNumber", bytes.toStdString());
    Dialog dialog;
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.list->count(), 1);
    QTEST(dialog.list->itemText(0), "text");
    QCOMPARE(dialog.list->itemData(0).toInt(), device);
}

void tst_ConnectionWidget::doesNotProbeTheConnectedController()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    Dialog dialog;
    dialog.connectTo(device);
    simulator::clearJournal();
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.entries(), (QStringList{QStringLiteral("SIM-MC3-A"), QStringLiteral("SIM-MC3-B")}));
    QCOMPARE(calls().filter(QStringLiteral("(1001)")), QStringList());
}

void tst_ConnectionWidget::theConnectedControllerStaysTheCurrentEntry()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    Dialog dialog;
    dialog.connectTo(other);
    simulator::answerText("getDevSerialNumber", "changed"); // of those that are asked
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.entries(), (QStringList{QStringLiteral("changed"), QStringLiteral("SIM-MC3-B")}));
    QCOMPARE(dialog.list->currentData().toInt(), other);
}

void tst_ConnectionWidget::theLastControllerStaysTheCurrentEntryAfterADisconnect()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    Dialog dialog;
    dialog.connectTo(other);
    dialog.disconnect();
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.list->currentData().toInt(), other);
}

void tst_ConnectionWidget::probingTakesTheMutexCallByCallUnderABusyCursor()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    Dialog dialog;
    simulator::hangCall("listTSMotorControlerDevices");
    for (const char *function : {"addDev", "openTSDevice", "getDevSerialNumber", "removeDev"})
        simulator::delayCall(function, 100, 2); // long enough for another thread on a busy machine

    bool hangs = false;
    bool busy = false;
    std::size_t callsBefore = 0;
    auto another = std::async(std::launch::async, [&] {
        hangs = simulator::waitUntilHanging(5000);
        busy = QGuiApplication::overrideCursor() && QGuiApplication::overrideCursor()->shape() == Qt::WaitCursor;
        simulator::releaseHung();
        const LibraryLock between;
        callsBefore = simulator::journal().size();
    });
    dialog.widget.refreshDevices();
    another.get();
    QVERIFY(hangs);
    QVERIFY(busy);
    QVERIFY(callsBefore < simulator::journal().size());
    QVERIFY(!QGuiApplication::overrideCursor());
}

// ---- Connecting

void tst_ConnectionWidget::connectOpensTheChosenController()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    Dialog dialog;
    dialog.choose(other);
    simulator::clearJournal();
    const DebugLog log;
    QTest::mouseClick(dialog.connectButton, Qt::LeftButton);
    QVERIFY(log.lines().contains(QStringLiteral("devPort:  1002")));
    QCOMPARE(calls(), (QStringList{QStringLiteral("addDev(1002)"), QStringLiteral("openTSDevice(1002)")}));
    QCOMPARE(SerialComDev::instance()->deviceId(), other);
    QCOMPARE(dialog.connected.count(), 1);
    QCOMPARE(dialog.disconnected.count(), 0);
}

void tst_ConnectionWidget::isConnectedAndHiddenWhenItSaysSo()
{
    Dialog dialog;
    bool checked = false;
    connect(&dialog.widget, &ConnectionWidget::signal_devConnected, this, [&] {
        QVERIFY(dialog.widget.isHidden());
        QVERIFY(SerialComDev::instance()->isOpened());
        QVERIFY(!dialog.connectButton->isEnabled());
        QVERIFY(dialog.disconnectButton->isEnabled());
        QCOMPARE(dialog.message->text(), QStringLiteral("设备已连接"));
        QVERIFY(!dialog.message->isHidden());
        checked = true;
    });
    dialog.connectTo(device);
    QVERIFY(checked);
}

void tst_ConnectionWidget::connectWithoutAnEntryPassesZero()
{
    Dialog dialog;
    const DebugLog log;
    QTest::mouseClick(dialog.connectButton, Qt::LeftButton);
    QVERIFY(log.lines().contains(QStringLiteral("devPort:  0")));
    QCOMPARE(dialog.message->text(), QStringLiteral("打开设备失败(err:-1)"));
    QCOMPARE(dialog.connected.count(), 0);
    QVERIFY(dialog.widget.isVisible());
}

void tst_ConnectionWidget::aFailedConnectKeepsTheButtonsAndShowsNoHiddenMessage()
{
    Dialog dialog;
    dialog.choose(device);
    simulator::failCall("openTSDevice", -7);
    QTest::mouseClick(dialog.connectButton, Qt::LeftButton);
    QVERIFY(dialog.connectButton->isEnabled());
    QVERIFY(!dialog.disconnectButton->isEnabled());
    QVERIFY(!SerialComDev::instance()->isOpened());
    QVERIFY(dialog.message->isHidden());
    QCOMPARE(dialog.message->text(), QStringLiteral("打开设备失败(err:-7)"));
    QVERIFY(dialog.hideTimer()->isActive());

    // Nothing is connected: the controller is asked like any other, and can be connected.
    simulator::clearJournal();
    QVERIFY(!ControlSession::instance()->isConnected());
    dialog.widget.refreshDevices();
    QVERIFY(calls().contains(QStringLiteral("getDevSerialNumber(1001)")));
    QTest::mouseClick(dialog.connectButton, Qt::LeftButton);
    QCOMPARE(dialog.connected.count(), 1);
}

void tst_ConnectionWidget::aFailedConnectReplacesAVisibleMessage()
{
    Dialog dialog;
    dialog.connectTo(device);
    dialog.widget.show();
    dialog.disconnect();
    QVERIFY(dialog.message->isVisible());
    dialog.hideTimer()->stop();
    simulator::failCall("openTSDevice", -3);
    QTest::mouseClick(dialog.connectButton, Qt::LeftButton);
    QVERIFY(dialog.message->isVisible());
    QCOMPARE(dialog.message->text(), QStringLiteral("打开设备失败(err:-3)"));
    QVERIFY(dialog.hideTimer()->isActive());
}

void tst_ConnectionWidget::probingGivesUpWhileTheLibraryHangs()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    Dialog dialog;
    dialog.connectTo(device);
    const QStringList before = dialog.entries();
    QCOMPARE(before.size(), 2);
    simulator::hangCall("getCurrentPos");
    emit SerialComDev::instance()->signal_getCurrentPos(0);
    QVERIFY(simulator::waitUntilHanging(5000));
    const int calls = int(simulator::journal().size());
    dialog.widget.refreshDevices();
    QCOMPARE(dialog.entries(), before);
    QCOMPARE(dialog.list->currentData().toInt(), device);
    QCOMPARE(int(simulator::journal().size()), calls);
    QVERIFY(!QGuiApplication::overrideCursor());
    simulator::releaseHung();
    dialog.disconnect();
    QCOMPARE(dialog.disconnected.count(), 1);
}

void tst_ConnectionWidget::waitsForOpeningUnderABusyCursor()
{
    Dialog dialog;
    dialog.choose(device);
    simulator::hangCall("openTSDevice");
    bool busy = false;
    auto another = std::async(std::launch::async, [&] {
        busy = simulator::waitUntilHanging(5000) && QGuiApplication::overrideCursor();
        simulator::releaseHung();
    });
    QTest::mouseClick(dialog.connectButton, Qt::LeftButton);
    another.get();
    QVERIFY(busy);
    QVERIFY(!QGuiApplication::overrideCursor());
}

void tst_ConnectionWidget::disconnectClosesTheController()
{
    Dialog dialog;
    dialog.connectTo(device);
    dialog.widget.show();
    simulator::clearJournal();
    bool checked = false;
    connect(&dialog.widget, &ConnectionWidget::signal_devDisConnected, this, [&] {
        QVERIFY(!SerialComDev::instance()->isOpened());
        QVERIFY(dialog.connectButton->isEnabled());
        QVERIFY(!dialog.disconnectButton->isEnabled());
        QCOMPARE(dialog.message->text(), QStringLiteral("设备已断开"));
        QVERIFY(dialog.message->isVisible());
        checked = true;
    });
    dialog.disconnect();
    QVERIFY(checked);
    QCOMPARE(calls(), (QStringList{QStringLiteral("closeTSDevice(1001)"), QStringLiteral("removeDev(1001)")}));
    QCOMPARE(dialog.disconnected.count(), 1);
    QVERIFY(dialog.widget.isVisible());
}

void tst_ConnectionWidget::connectsAgainAfterADisconnect()
{
    Dialog dialog;
    for (int round = 1; round <= 3; ++round) {
        dialog.connectTo(device);
        QCOMPARE(SerialComDev::instance()->deviceId(), device);
        dialog.disconnect();
        QCOMPARE(SerialComDev::instance()->deviceId(), 0);
        QCOMPARE(dialog.connected.count(), round);
        QCOMPARE(dialog.disconnected.count(), round);
    }
}

void tst_ConnectionWidget::theMessageIsHiddenAfterFiveSeconds()
{
    Dialog dialog;
    QVERIFY(!dialog.hideTimer()->isActive());
    dialog.connectTo(device);
    QVERIFY(dialog.hideTimer()->isActive());
    QVERIFY(dialog.hideTimer()->isSingleShot());
    QCOMPARE(dialog.hideTimer()->interval(), 5000);
    dialog.hideTimer()->start(0);
    QTRY_VERIFY(dialog.message->isHidden());
    QCOMPARE(dialog.message->text(), QStringLiteral("设备已连接"));
}

void tst_ConnectionWidget::theMessageMovesNothingWhenItComesAndGoes()
{
    Dialog dialog;
    const QRect before = dialog.connectButton->geometry();
    dialog.connectTo(device);
    dialog.widget.show();
    QVERIFY(dialog.message->isVisible());
    QCOMPARE(dialog.connectButton->geometry(), before);
    dialog.widget.slot_hideMsg();
    dialog.widget.layout()->activate();
    QCOMPARE(dialog.connectButton->geometry(), before);
}

// ---- The window

void tst_ConnectionWidget::closeButtonHides()
{
    Dialog dialog;
    QTest::mouseClick(dialog.widget.findChild<QPushButton *>(QStringLiteral("pushButton_close")), Qt::LeftButton);
    QVERIFY(dialog.widget.isHidden());
}

void tst_ConnectionWidget::escapeHides()
{
    Dialog dialog;
    QTest::keyClick(&dialog.widget, Qt::Key_A);
    QVERIFY(dialog.widget.isVisible());
    QTest::keyClick(&dialog.widget, Qt::Key_Escape);
    QVERIFY(dialog.widget.isHidden());
}

void tst_ConnectionWidget::isDraggedByItsTitleArea()
{
    Dialog dialog;
    auto *title = dialog.widget.findChild<QLabel *>(QStringLiteral("label_name"));
    const QPoint before = dialog.widget.pos();
    Mouse::press(title, {4, 4});
    Mouse::move(title, {24, 34});
    QCOMPARE(dialog.widget.pos(), before + QPoint(20, 30));
    Mouse::release(title, {4, 4});
    Mouse::move(title, {44, 44});
    QCOMPARE(dialog.widget.pos(), before + QPoint(20, 30));

    Mouse::press(dialog.message, {4, 4});
    Mouse::move(dialog.message, {24, 14});
    QCOMPARE(dialog.widget.pos(), before + QPoint(20, 30));
}

void tst_ConnectionWidget::isAFramelessModalWindow()
{
    const ConnectionWidget widget;
    QVERIFY(widget.windowFlags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(widget.isWindow());
    QVERIFY(widget.testAttribute(Qt::WA_TranslucentBackground));
    QCOMPARE(widget.windowModality(), Qt::ApplicationModal);
}

void tst_ConnectionWidget::languageChangeTranslatesTheTextsAndKeepsTheEntry()
{
    play({{device, "MC3-A"}, {other, "MC3-B"}});
    Dialog dialog;
    dialog.choose(other);
    const auto texts = [&] {
        QStringList result;
        for (const char *name : {"label_name", "label_com"})
            result.append(dialog.widget.findChild<QLabel *>(QLatin1String(name))->text());
        return result + QStringList{dialog.connectButton->text(), dialog.disconnectButton->text()};
    };
    const QStringList chinese{
        QStringLiteral("连接设备"), QStringLiteral("串口选择："), QStringLiteral("连接"), QStringLiteral("断开")};
    const QStringList english{
        QStringLiteral("Connect Device"), QStringLiteral("Selected COM"), QStringLiteral("Connect"),
        QStringLiteral("Disconnect")};
    QCOMPARE(texts(), chinese);
    QHash<QString, QString> table;
    for (int k = 0; k < chinese.size(); ++k)
        table.insert(chinese.at(k), english.at(k));
    {
        const English language(table);
        QCOMPARE(texts(), english);
        QCOMPARE(dialog.list->currentData().toInt(), other);
        QCOMPARE(dialog.list->count(), 2);
    }
    QCOMPARE(texts(), chinese);
}

void tst_ConnectionWidget::languageChangeTranslatesTheMessageThatIsShown()
{
    Dialog dialog;
    dialog.connectTo(device);
    {
        const English language(
            {{QStringLiteral("设备已连接"), QStringLiteral("Device connected")},
             {QStringLiteral("设备已断开"), QStringLiteral("Gone")},
             {QStringLiteral("打开设备失败(err:%1)"), QStringLiteral("Failed (%1)")}});
        QCOMPARE(dialog.message->text(), QStringLiteral("Device connected"));
        dialog.disconnect();
        QCOMPARE(dialog.message->text(), QStringLiteral("Gone"));
        simulator::failCall("openTSDevice", -9);
        QTest::mouseClick(dialog.connectButton, Qt::LeftButton);
        QCOMPARE(dialog.message->text(), QStringLiteral("Failed (-9)"));
    }
    QCOMPARE(dialog.message->text(), QStringLiteral("打开设备失败(err:-9)"));
}

QTEST_MAIN(tst_ConnectionWidget)
#include "tst_ConnectionWidget.moc"
