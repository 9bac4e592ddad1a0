// SPDX-License-Identifier: MIT
#include "console/DebugWidget.h"

#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "shell/ConnectionWidget.h"
#include "shell/MoverWidget.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/DebugLog.h"
#include "support/OnMessageBox.h"
#include "support/TopLevel.h"

#include <QApplication>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int device = 1001;

DebugWidget *console()
{
    return topLevel<DebugWidget>();
}

void click(const QObject *window, const char *button)
{
    window->findChild<QPushButton *>(QString::fromUtf8(button))->click();
}

} // namespace

/** The console as the main window has it: shown by a button, closed with the program. */
class tst_DebugWidgetInMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init()
    {
        simulator::reset();
        m_window = std::make_unique<MoverWidget>();
        m_window->show();
    }
    void cleanup()
    {
        m_window.reset();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
    }

    void waitsHiddenWithoutAParent()
    {
        QVERIFY(console());
        QVERIFY(!console()->parent());
        QVERIFY(!console()->isVisible());
    }
    void theDebugButtonShowsIt()
    {
        click(m_window.get(), "pushButton_debug");
        QVERIFY(console()->isVisible());
        console()->showMinimized();
        click(m_window.get(), "pushButton_debug");
        QVERIFY(!console()->isMinimized());
    }
    void opensInTheNextRunWhereItWasWhenTheProgramWasClosed()
    {
        click(m_window.get(), "pushButton_debug");
        const QRect place(55, 66, 1211, 671);
        console()->setGeometry(place);
        m_window->close();
        m_window = std::make_unique<MoverWidget>();
        m_window->show();
        QVERIFY(!console()->isVisible());
        click(m_window.get(), "pushButton_debug");
        QCOMPARE(console()->geometry(), place);
    }
    void closingItKeepsTheProgramRunning()
    {
        click(m_window.get(), "pushButton_debug");
        QSignalSpy lastWindowClosed(qApp, &QGuiApplication::lastWindowClosed);
        QVERIFY(console()->close());
        QCoreApplication::processEvents();
        QVERIFY(!console()->isVisible());
        QCOMPARE(lastWindowClosed.count(), 0);
    }
    void goesWithTheMainWindow()
    {
        const QPointer<DebugWidget> before = console();
        click(m_window.get(), "pushButton_debug");
        m_window.reset();
        QVERIFY(!before);
    }
    void closingTheProgramClosesIt()
    {
        click(m_window.get(), "pushButton_debug");
        QTimer::singleShot(0, this, [this] { m_window->close(); });
        QCOMPARE(QApplication::exec(), 0);
        QVERIFY(!console()->isVisible());
    }
    void closingTheProgramFromOutsideGetsPastTheWritingBox()
    {
        connectDevice();
        click(m_window.get(), "pushButton_debug");
        const DebugLog log;
        bool wasHeld = false;
        const OnMessageBox watch([&](QMessageBox &) {
            wasHeld = !LibraryLock(0).isLocked();
            emit SerialComDev::instance()->signal_stopMotor(0); // the worker waits for the library
            m_window->close();
        });
        QTimer::singleShot(0, this, [] {
            click(console(), "pushButton_readMorotParams");
            click(console(), "pushButton_writeMotorParams");
        });
        QCOMPARE(QApplication::exec(), 0);
        QCOMPARE(watch.shown(), 1);
        QVERIFY(wasHeld);
        QVERIFY(LibraryLock(0).isLocked());
        QVERIFY(!log.contains(QStringLiteral("the device is left open")));
        QCOMPARE(SerialComDev::instance()->deviceId(), 0);
        // What the worker had to do came first. Polls of the panels may stand in between.
        const auto calls = simulator::journalText();
        const auto stop = std::find(calls.begin(), calls.end(), "stopRuning(1001, 0) = 0");
        const auto close = std::find(stop, calls.end(), "closeTSDevice(1001) = 0");
        QVERIFY(std::find(close, calls.end(), "removeDev(1001) = 0") != calls.end());
    }
    void thePanelsWaitWhileTheWritingBoxIsOpen()
    {
        connectDevice();
        const auto worker = SerialComDev::instance();
        QSignalSpy polls(worker.data(), &SerialComDev::signal_getDevState);
        std::vector<std::string> atOpening;
        std::vector<std::string> atClosing;
        const OnMessageBox watch([&](QMessageBox &) {
            atOpening = simulator::journalText();
            const int before = polls.count();
            QTRY_VERIFY(polls.count() >= before + 10); // the panels go on asking: the window is alive
            atClosing = simulator::journalText();
        });
        click(console(), "pushButton_readMorotParams");
        click(console(), "pushButton_writeMotorParams");
        QCOMPARE(watch.shown(), 1);
        QCOMPARE(atClosing.size(), atOpening.size());
        const int states = simulator::callCount("getRuningState");
        QTRY_VERIFY(simulator::callCount("getRuningState") > states);
    }
    void aDeviceChangeDuringTheWritingBoxIsLookedAtAfterwards()
    {
        connectDevice();
        int listedBefore = 0;
        int listedMeanwhile = 0;
        const OnMessageBox watch([&](QMessageBox &) {
            listedBefore = simulator::callCount("listTSMotorControlerDevices");
            m_window->slot_usbDevPortChanged();
            listedMeanwhile = simulator::callCount("listTSMotorControlerDevices");
        });
        click(console(), "pushButton_readMorotParams");
        click(console(), "pushButton_writeMotorParams");
        QCOMPARE(watch.shown(), 1);
        QCOMPARE(listedMeanwhile, listedBefore);
        QTRY_COMPARE(simulator::callCount("listTSMotorControlerDevices"), listedBefore + 1);
    }

private:
    void connectDevice()
    {
        auto *connection = m_window->findChild<ConnectionWidget *>();
        connection->refreshDevices();
        click(connection, "pushButton_connectSerial");
        QCOMPARE(SerialComDev::instance()->deviceId(), device);
        connection->close();
    }

    std::unique_ptr<MoverWidget> m_window;
};

QTEST_MAIN(tst_DebugWidgetInMainWindow)
#include "tst_DebugWidgetInMainWindow.moc"
