// SPDX-License-Identifier: MIT
#include "support/Desktop.h"

#include "widgets/TitleBarDrag.h"

#include <QWidget>
#include <QtTest>

/** A frameless window under a window manager, dragged by the mouse itself. */
class tst_TitleBarDragOnDesktop : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(QGuiApplication::platformName(), QString("xcb")); }

    void theWindowStaysUnderAQuickMouse_data()
    {
        QTest::addColumn<QPoint>("direction");
        QTest::newRow("right") << QPoint(1, 0);
        QTest::newRow("up") << QPoint(0, -1);
        QTest::newRow("left and down") << QPoint(-1, 1);
    }
    void theWindowStaysUnderAQuickMouse()
    {
        QFETCH(QPoint, direction);
        QWidget window(nullptr, Qt::Window | Qt::FramelessWindowHint);
        QWidget bar(&window);
        const TitleBarDrag drag(&window, &bar);
        window.setGeometry(600, 400, 500, 350);
        bar.setGeometry(0, 0, 500, 40);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_COMPARE(window.pos(), QPoint(600, 400));

        Desktop::dragQuickly(QPoint(800, 420), direction);
        QTRY_COMPARE(window.pos(), QPoint(600, 400) + direction * Desktop::QuickDragPixels);
    }
};

QTEST_MAIN(tst_TitleBarDragOnDesktop)
#include "tst_TitleBarDragOnDesktop.moc"
