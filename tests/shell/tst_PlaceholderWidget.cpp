// SPDX-License-Identifier: MIT
#include "shell/PlaceholderWidget.h"

#include <QLabel>
#include <QtTest>

class tst_PlaceholderWidget : public QObject
{
    Q_OBJECT

private slots:
    void staysHiddenWhenItsWindowIsShown();
    void showsTheAdvertisingPicture();
    void showsTheWebAddress();
};

void tst_PlaceholderWidget::staysHiddenWhenItsWindowIsShown()
{
    QWidget mainWindow;
    const PlaceholderWidget placeholder(&mainWindow);
    mainWindow.show();
    QVERIFY(QTest::qWaitForWindowExposed(&mainWindow));
    QVERIFY(!placeholder.isVisible());
}

void tst_PlaceholderWidget::showsTheAdvertisingPicture()
{
    const PlaceholderWidget placeholder;
    QCOMPARE(
        placeholder.findChild<QLabel *>(QStringLiteral("label_AD"))->styleSheet(),
        QStringLiteral("background-image: url(:/image/advertising.png);"));
}

void tst_PlaceholderWidget::showsTheWebAddress()
{
    const PlaceholderWidget placeholder;
    auto *link = placeholder.findChild<QLabel *>(QStringLiteral("label_link"));
    QCOMPARE(link->text(), QString::fromUtf8(MOVER_WEB_ADDRESS));
    link->ensurePolished();
    QCOMPARE(link->font().pixelSize(), 15);
}

QTEST_MAIN(tst_PlaceholderWidget)
#include "tst_PlaceholderWidget.moc"
