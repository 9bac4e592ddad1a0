// SPDX-License-Identifier: MIT
#include "shell/NativeMessage.h"
#include "shell/PortEventMonitor.h"
#include "shell/SerialPortChangeFilter.h"

#include <QSignalSpy>
#include <QTimer>
#include <QWidget>
#include <QtTest>

namespace {

constexpr unsigned int deviceChange = 0x219;
constexpr int devNodesChanged = 7;

NativeMessage makeMessage(WId window, unsigned int message, int wParam)
{
    NativeMessage result{};
    result.hwnd = reinterpret_cast<decltype(result.hwnd)>(window);
    result.message = message;
    result.wParam = decltype(result.wParam)(wParam);
    return result;
}

} // namespace

class tst_SerialPortChangeFilter : public QObject
{
    Q_OBJECT

private slots:
    void reportsADeviceTreeChangeOfTheMainWindow_data();
    void reportsADeviceTreeChangeOfTheMainWindow();
    void ignoresMessagesToOtherWindows();
    void ignoresMessagesBeforeTheWindowIsNative();
    void ignoresEventsOfOtherSystems_data();
    void ignoresEventsOfOtherSystems();
    void ignoresAnEventWithoutMessage();
    void belongsToTheMainWindow();
    void reportsPortEvents();
    void joinsABurstOfPortEvents();
    void reportsABurstWhileItLasts();
};

void tst_SerialPortChangeFilter::reportsADeviceTreeChangeOfTheMainWindow_data()
{
    QTest::addColumn<QByteArray>("eventType");
    QTest::addColumn<unsigned int>("message");
    QTest::addColumn<int>("wParam");
    QTest::addColumn<int>("reports");
    const QByteArray generic("windows_generic_MSG");
    QTest::newRow("device tree changed") << generic << deviceChange << devNodesChanged << 1;
    QTest::newRow("from the dispatcher") << QByteArray("windows_dispatcher_MSG") << deviceChange << devNodesChanged
                                         << 1;
    QTest::newRow("device arrived") << generic << deviceChange << 0x8000 << 0;
    QTest::newRow("device removed") << generic << deviceChange << 0x8004 << 0;
    QTest::newRow("other message") << generic << 0x218u << devNodesChanged << 0;
    QTest::newRow("other event type") << QByteArray("mac_generic_NSEvent") << deviceChange << devNodesChanged << 0;
}

void tst_SerialPortChangeFilter::reportsADeviceTreeChangeOfTheMainWindow()
{
    QFETCH(QByteArray, eventType);
    QFETCH(unsigned int, message);
    QFETCH(int, wParam);
    QWidget window;
    SerialPortChangeFilter filter(&window);
    const QSignalSpy spy(&filter, &SerialPortChangeFilter::signal_usbDevPortChanged);

    NativeMessage native = makeMessage(window.winId(), message, wParam);
    long result = 42;
    QVERIFY(!filter.nativeEventFilter(eventType, &native, &result));
    QTEST(spy.count(), "reports");
    QCOMPARE(result, 42L);
}

void tst_SerialPortChangeFilter::ignoresMessagesToOtherWindows()
{
    QWidget window;
    QWidget other;
    SerialPortChangeFilter filter(&window);
    const QSignalSpy spy(&filter, &SerialPortChangeFilter::signal_usbDevPortChanged);
    QVERIFY(window.winId() != other.winId());

    NativeMessage native = makeMessage(other.winId(), deviceChange, devNodesChanged);
    QVERIFY(!filter.nativeEventFilter("windows_generic_MSG", &native, nullptr));
    QCOMPARE(spy.count(), 0);
}

void tst_SerialPortChangeFilter::ignoresMessagesBeforeTheWindowIsNative()
{
    QWidget window;
    SerialPortChangeFilter filter(&window);
    const QSignalSpy spy(&filter, &SerialPortChangeFilter::signal_usbDevPortChanged);

    for (WId handle : {WId(0), WId(1)}) {
        NativeMessage native = makeMessage(handle, deviceChange, devNodesChanged);
        QVERIFY(!filter.nativeEventFilter("windows_generic_MSG", &native, nullptr));
    }
    QCOMPARE(spy.count(), 0);
    QVERIFY(!window.testAttribute(Qt::WA_WState_Created));
}

void tst_SerialPortChangeFilter::ignoresEventsOfOtherSystems_data()
{
    QTest::addColumn<QByteArray>("eventType");
    QTest::newRow("X11") << QByteArray("xcb_generic_event_t");
    QTest::newRow("no type") << QByteArray();
}

void tst_SerialPortChangeFilter::ignoresEventsOfOtherSystems()
{
    QFETCH(QByteArray, eventType);
    QWidget window;
    SerialPortChangeFilter filter(&window);
    const QSignalSpy spy(&filter, &SerialPortChangeFilter::signal_usbDevPortChanged);

    // Shorter than a Windows message: reading it as one is an error that the address sanitizer reports.
    const auto event = std::make_unique<char>('\0');
    QVERIFY(!filter.nativeEventFilter(eventType, event.get(), nullptr));
    QCOMPARE(spy.count(), 0);
}

void tst_SerialPortChangeFilter::ignoresAnEventWithoutMessage()
{
    QWidget window;
    SerialPortChangeFilter filter(&window);
    const QSignalSpy spy(&filter, &SerialPortChangeFilter::signal_usbDevPortChanged);

    QVERIFY(!filter.nativeEventFilter("windows_generic_MSG", nullptr, nullptr));
    QCOMPARE(spy.count(), 0);
}

void tst_SerialPortChangeFilter::belongsToTheMainWindow()
{
    auto window = std::make_unique<QWidget>();
    const QPointer<SerialPortChangeFilter> filter = new SerialPortChangeFilter(window.get());
    QVERIFY(filter);
    window.reset();
    QVERIFY(!filter);
}

void tst_SerialPortChangeFilter::reportsPortEvents()
{
    QWidget window;
    const SerialPortChangeFilter filter(&window);
    QSignalSpy spy(&filter, &SerialPortChangeFilter::signal_usbDevPortChanged);

    filter.findChild<PortEventMonitor *>()->slot_notePortEvent();
    QVERIFY(spy.wait(2000));
    QCOMPARE(spy.count(), 1);
}

void tst_SerialPortChangeFilter::joinsABurstOfPortEvents()
{
    PortEventMonitor monitor;
    QSignalSpy spy(&monitor, &PortEventMonitor::signal_portsChanged);

    for (int i = 0; i < 20; ++i)
        monitor.slot_notePortEvent();
    QCOMPARE(spy.count(), 0);
    QVERIFY(spy.wait(2000));
    QVERIFY(!spy.wait(400)); // as long as two more bursts would take
    QCOMPARE(spy.count(), 1);
    monitor.slot_notePortEvent(); // the next one is told again
    QVERIFY(spy.wait(2000));
    QCOMPARE(spy.count(), 2);
}

void tst_SerialPortChangeFilter::reportsABurstWhileItLasts()
{
    PortEventMonitor monitor;
    QSignalSpy spy(&monitor, &PortEventMonitor::signal_portsChanged);
    QTimer events;
    connect(&events, &QTimer::timeout, &monitor, &PortEventMonitor::slot_notePortEvent);
    events.start(20);

    QVERIFY(spy.wait(2000));
    QVERIFY(spy.wait(2000));
}

QTEST_MAIN(tst_SerialPortChangeFilter)
#include "tst_SerialPortChangeFilter.moc"
