// SPDX-License-Identifier: MIT
#include "widgets/BusyCursor.h"
#include "widgets/Dialogs.h"

#include <QApplication>
#include <QGraphicsDropShadowEffect>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>
#include <QWidget>
#include <QtTest>

namespace {

class Painted final : public QWidget
{
protected:
    void paintEvent(QPaintEvent *) override { Dialogs::paintBackground(this); }
};

} // namespace

class tst_Dialogs : public QObject
{
    Q_OBJECT

private slots:
    void makesAFramelessModalWindow()
    {
        QWidget parent;
        QWidget dialog(&parent);
        QWidget body(&dialog);
        Dialogs::makeFrameless(&dialog, &body);
        QVERIFY(dialog.isWindow());
        QVERIFY(dialog.windowFlags() & Qt::FramelessWindowHint);
        QCOMPARE(dialog.windowType(), Qt::Window);
        QCOMPARE(dialog.windowModality(), Qt::ApplicationModal);
        QVERIFY(dialog.testAttribute(Qt::WA_TranslucentBackground));
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.parentWidget(), &parent);
    }
    void givesTheBodyAGrayShadow()
    {
        QWidget dialog;
        QWidget body(&dialog);
        Dialogs::makeFrameless(&dialog, &body);
        const auto *shadow = qobject_cast<QGraphicsDropShadowEffect *>(body.graphicsEffect());
        QVERIFY(shadow);
        QCOMPARE(shadow->blurRadius(), 10.);
        QCOMPARE(shadow->offset(), QPointF(0, 0));
        QCOMPARE(shadow->color(), QColor(Qt::gray));
        QVERIFY(!dialog.graphicsEffect());
    }
    void centresAPopupOnItsWindow()
    {
        QWidget window;
        window.setGeometry(100, 50, 401, 300);
        QWidget popup;
        popup.setGeometry(0, 0, 100, 51);
        Dialogs::centreOn(&popup, &window);
        QCOMPARE(popup.pos(), QPoint(250, 174)); // (401 - 100) / 2 and (300 - 51) / 2, rounded down
        QCOMPARE(popup.size(), QSize(100, 51));
    }
    void centresAPopupThatIsLargerThanItsWindow()
    {
        QWidget window;
        window.setGeometry(100, 50, 100, 100);
        QWidget popup;
        popup.setGeometry(0, 0, 201, 300);
        Dialogs::centreOn(&popup, &window);
        QCOMPARE(popup.pos(), QPoint(50, -50)); // the division rounds towards zero
    }
    void keepsAPopupOnItsScreen_data()
    {
        QTest::addColumn<QPoint>("pos");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QPoint>("kept");
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        const QSize size(200, 100);
        const QPoint last(screen.width() - 200, screen.height() - 100);
        QTest::newRow("inside") << QPoint(30, 40) << size << QPoint(30, 40);
        QTest::newRow("first corner") << QPoint(0, 0) << size << QPoint(0, 0);
        QTest::newRow("last corner") << last << size << last;
        QTest::newRow("left and above") << QPoint(-1, -1) << size << QPoint(0, 0);
        QTest::newRow("right and below") << last + QPoint(1, 1) << size << last;
        QTest::newRow("below alone") << QPoint(30, 5000) << size << QPoint(30, last.y());
        QTest::newRow("larger than the screen") << QPoint(-30, -30) << screen.size() * 2 << QPoint(0, 0);
    }
    void keepsAPopupOnItsScreen()
    {
        QFETCH(QPoint, pos);
        QFETCH(QSize, size);
        QFETCH(QPoint, kept);
        QWidget popup;
        popup.resize(size);
        popup.move(pos);
        Dialogs::keepOnScreen(&popup);
        QCOMPARE(popup.pos(), kept);
        QCOMPARE(popup.size(), size);
    }
    void aHiddenDialogForgetsTheMouse()
    {
        QWidget dialog;
        QWidget body(&dialog);
        QPushButton close(&body);
        Dialogs::makeFrameless(&dialog, &body);
        dialog.show();
        close.setAttribute(Qt::WA_UnderMouse);
        QVERIFY(close.underMouse());
        dialog.hide();
        QVERIFY(!close.underMouse());
    }
    void tabGoesRoundWithinAnOverlay_data()
    {
        QTest::addColumn<bool>("next");
        QTest::addColumn<QString>("visited");
        QTest::newRow("forwards") << true << "bcab";
        QTest::newRow("backwards") << false << "cbac";
    }
    void tabGoesRoundWithinAnOverlay()
    {
        QFETCH(bool, next);
        QFETCH(QString, visited);
        QWidget window;
        QLineEdit before(&window);
        QWidget overlay(&window);
        QLineEdit a(&overlay), b(&overlay), disabled(&overlay), hidden(&overlay);
        QSpinBox c(&overlay); // holds a line edit of its own
        QLineEdit after(&window);
        a.setObjectName("a");
        b.setObjectName("b");
        c.setObjectName("c");
        disabled.setEnabled(false);
        hidden.hide();
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        a.setFocus();
        QString seen;
        for (int step = 0; step < visited.size(); ++step) {
            QVERIFY(Dialogs::focusWithin(&overlay, next));
            seen += QApplication::focusWidget()->objectName();
        }
        QCOMPARE(seen, visited);
    }
    void tabStaysOnTheOnlyControlOfAnOverlay()
    {
        QWidget window;
        QLineEdit before(&window);
        QWidget overlay(&window);
        QLineEdit only(&overlay);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        only.setFocus();
        QVERIFY(Dialogs::focusWithin(&overlay, true));
        QVERIFY(only.hasFocus());
        only.setEnabled(false);
        QVERIFY(!Dialogs::focusWithin(&overlay, true));
    }
    void paintsTheBackgroundOfTheStyleSheet()
    {
        Painted widget;
        widget.resize(20, 20);
        widget.setStyleSheet("background-color: #123456;");
        QCOMPARE(widget.grab().toImage().pixelColor(10, 10), QColor("#123456"));
    }
    void busyCursorLastsAsLongAsItsScope()
    {
        QVERIFY(!QGuiApplication::overrideCursor());
        {
            const BusyCursor busy;
            QVERIFY(QGuiApplication::overrideCursor());
            QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        }
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

QTEST_MAIN(tst_Dialogs)
#include "tst_Dialogs.moc"
