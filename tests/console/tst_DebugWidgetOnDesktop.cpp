// SPDX-License-Identifier: MIT
#include "console/DebugWidget.h"

#include "device/SerialComDev.h"

#include <QFile>
#include <QProcess>
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
        QVERIFY(QTest::qWaitForWindowActive(m_console.get()));
    }
    void cleanup()
    {
        m_console.reset();
        QVERIFY(SerialComDev::endThread(5000));
    }

    void staysWhereItWasMovedTo_data()
    {
        QTest::addColumn<bool>("nextRun");
        QTest::newRow("closed and opened") << false;
        QTest::newRow("in the next run") << true;
    }
    void staysWhereItWasMovedTo()
    {
        QFETCH(bool, nextRun);
        // As a user drags it: by the window manager, not by the program.
        const QPoint before = m_console->pos();
        const QString id = QString::number(m_console->winId());
        QCOMPARE(QProcess::execute(QStringLiteral("xdotool"), {"windowsize", id, "1221", "687"}), 0);
        QCOMPARE(QProcess::execute(QStringLiteral("xdotool"), {"windowmove", id, "211", "133"}), 0);
        QTRY_VERIFY(m_console->pos() != before && m_console->size() == QSize(1221, 687));
        const QRect place = m_console->geometry();
        for (int round = 0; round < 3; ++round) { // it does not wander off by the width of a frame either
            openAgain(nextRun);
            QCOMPARE(m_console->geometry(), place);
        }
    }

private:
    void openAgain(bool nextRun)
    {
        m_console->close();
        QTRY_VERIFY(!QGuiApplication::focusWindow());
        if (nextRun)
            m_console = std::make_unique<DebugWidget>();
        m_console->show();
        QVERIFY(QTest::qWaitForWindowActive(m_console.get())); // the window manager has given it its place
    }

    std::unique_ptr<DebugWidget> m_console;
};

QTEST_MAIN(tst_DebugWidgetOnDesktop)
#include "tst_DebugWidgetOnDesktop.moc"
