// SPDX-License-Identifier: MIT
#include "widgets/BusyCursor.h"
#include "widgets/Dialogs.h"

#include <QApplication>
#include <QGraphicsDropShadowEffect>
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
