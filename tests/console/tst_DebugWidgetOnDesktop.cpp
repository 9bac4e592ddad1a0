// SPDX-License-Identifier: MIT
#include "console/DebugWidget.h"

#include "device/SerialComDev.h"

#include <QFile>
#include <QScreen>
#include <QStandardPaths>
#include <QtTest>

#include <memory>

/** The console under a window manager, which has a will of its own about where a window goes. */
class tst_DebugWidgetOnDesktop : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init()
    {
        QFile::remove(
            QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + QStringLiteral("/consolePlace"));
        m_console = std::make_unique<DebugWidget>();
        m_console->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_console.get()));
    }
    void cleanup()
    {
        m_console.reset();
        QVERIFY(SerialComDev::shutDown(5000));
    }

    void staysWhereItWasMovedTo_data() { addWays(); }
    void staysWhereItWasMovedTo()
    {
        QFETCH(bool, nextRun);
        const QRect place(211, 133, 1221, 687);
        m_console->setGeometry(place);
        QTRY_COMPARE(m_console->geometry(), place);
        for (int round = 0; round < 3; ++round) { // it does not wander off by the width of a frame either
            openAgain(nextRun);
            QTRY_COMPARE(m_console->geometry(), place);
        }
    }
    void aMaximizedOneComesBackMaximizedAndCanBeMadeSmaller_data() { addWays(); }
    void aMaximizedOneComesBackMaximizedAndCanBeMadeSmaller()
    {
        QFETCH(bool, nextRun);
        const QRect place(211, 133, 1221, 687);
        m_console->setGeometry(place);
        QTRY_COMPARE(m_console->geometry(), place);
        m_console->showMaximized();
        QTRY_VERIFY(m_console->width() >= m_console->screen()->availableGeometry().width());
        openAgain(nextRun);
        QVERIFY(m_console->isMaximized());
        QTRY_VERIFY(m_console->width() >= m_console->screen()->availableGeometry().width());
        m_console->showNormal();
        QTRY_COMPARE(m_console->size(), place.size());
    }

private:
    static void addWays()
    {
        QTest::addColumn<bool>("nextRun");
        QTest::newRow("closed and opened") << false;
        QTest::newRow("in the next run") << true;
    }
    void openAgain(bool nextRun)
    {
        m_console->close();
        if (nextRun)
            m_console = std::make_unique<DebugWidget>();
        m_console->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_console.get()));
    }

    std::unique_ptr<DebugWidget> m_console;
};

QTEST_MAIN(tst_DebugWidgetOnDesktop)
#include "tst_DebugWidgetOnDesktop.moc"
