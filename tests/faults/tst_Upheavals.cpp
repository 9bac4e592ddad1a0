// SPDX-License-Identifier: MIT
// What happens around the program while it runs: links, plugs, notices and clocks.
#include "OpenWindow.h"
#include "ProcessFigures.h"
#include "ShortRun.h"

#include "shell/NativeMessage.h"
#include "support/DebugLog.h"
#include "support/MessageBoxes.h"

#include <QAbstractEventDispatcher>
#include <QDateTime>
#include <QFile>
#include <QPixmapCache>
#include <QStandardPaths>

#include <algorithm>
#include <atomic>
#include <ctime>
#include <memory>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

// ---- The machine's clocks, as the whole process reads them ---------------------------------------------------------

namespace {

std::atomic<time_t> wallClockOffset{0};
std::atomic<time_t> steadyClockOffset{0};

} // namespace

extern "C" int clock_gettime(clockid_t clock, struct timespec *time) noexcept
{
    const long result = syscall(SYS_clock_gettime, clock, time);
    if (result == 0)
        time->tv_sec += clock == CLOCK_REALTIME ? wallClockOffset.load() : steadyClockOffset.load();
    return int(result);
}

extern "C" int gettimeofday(struct timeval *time, void *) noexcept
{
    struct timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return 0;
}

extern "C" time_t time(time_t *result) noexcept
{
    struct timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result)
        *result = now.tv_sec;
    return now.tv_sec;
}

namespace {

constexpr int device = 1001;
constexpr int other = 1002;
const int rounds = isShortRun() ? 250 : 1000;
constexpr qint64 memorySlack = 64 * 1024;
// For a thousand connections: Qt keeps by its address what it looked up of a viewport, and here none comes twice.
constexpr qint64 connectionSlack = 300 * 1024;

/** The worker has done what was asked of it and the windows know. */
void settle()
{
    const auto reached = std::make_shared<std::atomic<bool>>(false);
    QMetaObject::invokeMethod(
        SerialComDev::instance().data(),
        [reached] {
            *reached = true;
            QMetaObject::invokeMethod(
                qApp, [] {}, Qt::QueuedConnection); // wakes the GUI thread
        },
        Qt::QueuedConnection);
    while (!*reached)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::processEvents();
}

void poll(OpenWindow &program)
{
    for (MoverControlWidget *panel : program.window().panelBoard().panels())
        panel->slot_updateState();
    settle();
}

QString position(OpenWindow &program, int axis = 0)
{
    return program.panel(axis)->findChild<QLabel *>(QStringLiteral("label_currentPos"))->text();
}

/** The system's notice that its devices have changed. */
void announceDeviceChange(OpenWindow &program)
{
    NativeMessage message{};
    message.hwnd = reinterpret_cast<decltype(message.hwnd)>(program.window().winId());
    message.message = 0x219;
    message.wParam = 7;
    long result = 0;
    QAbstractEventDispatcher::instance()->filterNativeEvent("windows_generic_MSG", &message, &result);
}

/** The first axis still goes where it is sent. */
void drive(OpenWindow &program, double target)
{
    emit SerialComDev::instance()->signal_setAbsoluteDispParams(0, target);
    emit SerialComDev::instance()->signal_setSpeedParams(0, 20, 5);
    OpenWindow::click(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_move")));
    settle();
    simulator::advance(100);
    QTRY_COMPARE(position(program), QString::number(target, 'f', 3) + QStringLiteral(" mm"));
}

int polls()
{
    return simulator::callCount("getCurrentPos");
}

} // namespace

class tst_Upheavals : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
#if !defined(MOVER_SANITIZED)
        // As the program: without it Qt draws the buttons itself, and keeps for half a minute what it has drawn of
        // each. Under the sanitizer no address comes twice, and what Qt looks up of a style sheet it keeps by address.
        QFile sheet(QStringLiteral(":/style.qss"));
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
#endif
    }
    void init()
    {
        play({{device, "MC3-A", {{'w', "LIN-100"}, {'w', "ROT-60", 1}}}});
        m_log.reset();
        m_log = std::make_unique<DebugLog>();
    }
    void cleanup();

    void theLinkIsLostAndComesBack();
    void theControllerIsUnpluggedAndPluggedIn();
    void twoControllersAreSwapped();
    void noticesStorm();
    void noticesStormWhileTheControllerIsGone();
    void theLibraryHangsDuringADisconnect();
    void theWallClockIsSetBackAndForward();
    void theMachineSleepsAndWakes();

private:
    /** What tests and Qt keep of what has been: not the program's memory. */
    void forgetRecords()
    {
        QVERIFY(m_log->warnings().isEmpty());
        m_log.reset(); // one at a time
        m_log = std::make_unique<DebugLog>();
        simulator::clearJournal();
        QPixmapCache::clear();
    }

    std::unique_ptr<DebugLog> m_log;
};

void tst_Upheavals::cleanup()
{
    wallClockOffset = 0;
    steadyClockOffset = 0;
    simulator::clearFaults();
    QVERIFY(SerialComDev::endThread(5000));
    QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
    QCOMPARE(qtWarnings(*m_log), QStringList());
    m_log.reset();
}

void tst_Upheavals::theLinkIsLostAndComesBack()
{
    OpenWindow program;
    program.connectTo(device);
    std::unique_ptr<ProcessFigures> before;
    for (int round = 0; round < rounds; ++round) {
        simulator::loseLink(device);
        simulator::setPosition(device, 0, round % 50);
        const QString shown = position(program);
        poll(program);
        QCOMPARE(position(program), shown); // the last one that was true
        simulator::restoreLink(device);
        poll(program);
        QTRY_COMPARE(position(program), QString::number(round % 50, 'f', 3) + QStringLiteral(" mm"));
        // The log grows for as long as its panel lives, as intended.
        for (MoverControlWidget *panel : program.window().panelBoard().panels())
            panel->findChild<QTextBrowser *>()->clear();
        if (round == rounds / 10) {
            forgetRecords();
            before = std::make_unique<ProcessFigures>();
        }
    }
    forgetRecords();
    QCOMPARE(ProcessFigures().grownSince(*before, memorySlack), QString());
    drive(program, 7);
}

void tst_Upheavals::theControllerIsUnpluggedAndPluggedIn()
{
    OpenWindow program;
    const MessageBoxes boxes;
    std::unique_ptr<ProcessFigures> before;
    for (int round = 0; round < rounds; ++round) {
        program.connectTo(device);
        QCOMPARE(program.panelNames().size(), 2);
        simulator::unplug(device);
        announceDeviceChange(program); // an empty list is no loss
        poll(program);
        QTRY_VERIFY(logOf(program.panel(0)).contains(QStringLiteral("读取当前位置出错")));
        simulator::plug(device);
        announceDeviceChange(program);
        program.disconnect();
        QCOMPARE(program.panelNames(), QStringList());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (round == rounds / 10) {
            forgetRecords();
            before = std::make_unique<ProcessFigures>();
        }
    }
    forgetRecords();
    QCOMPARE(ProcessFigures().grownSince(*before, connectionSlack), QString());
    QCOMPARE(boxes.texts(), QStringList());
    program.connectTo(device);
    drive(program, 7);
}

void tst_Upheavals::twoControllersAreSwapped()
{
    play({{device, "MC3-A", {{'w', "LIN-100"}}}, {other, "MC3-B", {{'w', "LIN-200"}}, false}});
    simulator::setPosition(device, 0, 1);
    simulator::setPosition(other, 0, 2);
    OpenWindow program;
    program.connectTo(device);
    MessageBoxes boxes;
    int expectedBoxes = 0;
    int now = device;
    for (int round = 0; round < 100; ++round) {
        const int next = now == device ? other : device;
        simulator::unplug(now);
        simulator::plug(next);
        announceDeviceChange(program);
        ++expectedBoxes;
        // At once, or when the poll is through that is in flight at that moment.
        QTRY_COMPARE(boxes.count(), expectedBoxes);
        QCOMPARE(boxes.texts().last(), QStringLiteral("设备断开连接"));
        // Nothing is sent to the one that has come in its place.
        simulator::clearJournal();
        poll(program);
        const auto journal = simulator::journal();
        const std::string nextId = std::to_string(next);
        QVERIFY(std::none_of(journal.begin(), journal.end(), [&nextId](const simulator::Call &call) {
            return call.arguments.compare(0, nextId.size(), nextId) == 0;
        }));
        program.disconnect();
        program.connectTo(next);
        poll(program);
        QTRY_COMPARE(position(program), next == device ? QStringLiteral("1.000 mm") : QStringLiteral("2.000 mm"));
        QCOMPARE(
            program.panel(0)->findChild<QLabel *>(QStringLiteral("label_modelName"))->text(),
            next == device ? QStringLiteral("LIN-100") : QStringLiteral("LIN-200"));
        now = next;
    }
    QCOMPARE(boxes.count(), expectedBoxes);
}

void tst_Upheavals::noticesStorm()
{
    OpenWindow program;
    program.connectTo(device);
    const MessageBoxes boxes;
    poll(program);
    announceDeviceChange(program);
    forgetRecords();
    const ProcessFigures before;
    for (int notice = 0; notice < 10000; ++notice) {
        announceDeviceChange(program);
        if (notice % 1000 == 0) {
            simulator::setPosition(device, 0, notice / 1000);
            poll(program); // the panels are served all the while
            QTRY_COMPARE(position(program), QString::number(notice / 1000, 'f', 3) + QStringLiteral(" mm"));
            simulator::clearJournal();
        }
    }
    forgetRecords();
    QCOMPARE(ProcessFigures().grownSince(before, memorySlack), QString());
    QCOMPARE(boxes.count(), 0);
    drive(program, 7);
}

void tst_Upheavals::noticesStormWhileTheControllerIsGone()
{
    play({{device, "MC3-A", {{'w', "LIN-100"}}}, {other, "MC3-B"}});
    OpenWindow program;
    program.connectTo(device);
    simulator::unplug(device);
    int open = 0;
    int most = 0;
    int notices = 0;
    const MessageBoxes boxes([&](QMessageBox *box) {
        most = std::max(most, ++open);
        for (; notices < 10000; ++notices)
            announceDeviceChange(program); // while the first one is still being told
        --open;
        box->reject();
    });
    announceDeviceChange(program);
    QTRY_COMPARE(boxes.count(), 1);
    QCOMPARE(notices, 10000);
    QCOMPARE(most, 1);
}

void tst_Upheavals::theLibraryHangsDuringADisconnect()
{
    OpenWindow program;
    program.connectTo(device);
    OpenWindow::click(program.find("pushButton_connect")); // while the library still answers its probing
    simulator::hangCall("getCurrentPos");
    QTRY_VERIFY(simulator::waitUntilHanging(0));
    OpenWindow::click(
        program.dialog<ConnectionWidget>()->findChild<QPushButton *>(QStringLiteral("pushButton_disConnect")));
    // It gave up after half a minute.
    QVERIFY(SerialComDev::instance()->isOpened());
    QCOMPARE(program.panelNames().size(), 2);
    const auto *connection = program.dialog<ConnectionWidget>();
    QVERIFY(connection->findChild<QPushButton *>(QStringLiteral("pushButton_disConnect"))->isEnabled());

    simulator::releaseHung();
    settle();
    drive(program, 7);
    program.disconnect();
    QVERIFY(!SerialComDev::instance()->isOpened());
    QCOMPARE(program.panelNames(), QStringList());
}

void tst_Upheavals::theWallClockIsSetBackAndForward()
{
    OpenWindow program;
    program.connectTo(device);
    constexpr time_t day = 24 * 3600;
    for (const time_t offset : {-400 * day, 400 * day, -3 * day / 2, time_t(-7 * 3600 - 11), 2 * day}) {
        wallClockOffset = offset;
        simulator::clearJournal();
        program.panel(0)->findChild<QTextBrowser *>(QStringLiteral("textBrowser_operatioInfo"))->clear();
        const auto minute = [] { return QDateTime::currentDateTime().toString(QStringLiteral("hh:mm")); };
        const QString first = minute();
        drive(program, offset > 0 ? 4 : -4);
        // Only the log's times tell.
        const QString log = logOf(program.panel(0));
        QVERIFY2(log.contains(first) || log.contains(minute()), qPrintable(log));
        settle();
        const int before = polls();
        QTest::qWait(5 * MoverControlWidget::PollIntervalMs);
        // Two panels; a busy machine may lose some, none comes twice.
        QVERIFY2(polls() > before && polls() - before <= 2 * 6, qPrintable(QString::number(polls() - before)));
    }
}

void tst_Upheavals::theMachineSleepsAndWakes()
{
    OpenWindow program;
    program.connectTo(device);
    drive(program, 3);
    emit SerialComDev::instance()->signal_setAbsoluteDispParams(0, 40);
    OpenWindow::click(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_move")));
    settle();
    simulator::advance(0.5);
    poll(program);
    for (const time_t hours : {8, 24 * 30, 1}) {
        settle();
        simulator::clearJournal();
        const int before = polls();
        steadyClockOffset = steadyClockOffset + hours * 3600;
        wallClockOffset = wallClockOffset + hours * 3600;
        simulator::advance(double(hours) * 3600);
        QTest::qWait(5 * MoverControlWidget::PollIntervalMs);
        settle();
        // The polls of the night are not made up for, and the axis has arrived meanwhile.
        QVERIFY2(polls() > before && polls() - before <= 2 * 8, qPrintable(QString::number(polls() - before)));
        QVERIFY(simulator::callCount("getRockerInfo") <= 3);
        QTRY_COMPARE(position(program), QStringLiteral("40.000 mm"));
    }
    drive(program, -2);
}

QTEST_MAIN(tst_Upheavals)
#include "tst_Upheavals.moc"
