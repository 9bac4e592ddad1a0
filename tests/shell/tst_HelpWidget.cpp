// SPDX-License-Identifier: MIT
#include "shell/HelpWidget.h"

#include "support/Mouse.h"
#include "support/Prefixed.h"

#include <QDesktopServices>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QtTest>

#include <algorithm>

namespace {

const QString webAddress = QString::fromUtf8(MOVER_WEB_ADDRESS);

struct Link {
    const char *label;
    QString target;
    const char *text;
};

const Link links[] = {
    {"label_manual", QStringLiteral("/help/台式步进电机驱动控制器用户手册.pdf"), "查看"},
    {"label_cplusSdk", QStringLiteral("/help/Tarsel_mover_C++SDK"), "查看 C++ SDK"},
    {"label_labviewSdk", QStringLiteral("/help/Tarsel_mover_LabViewSDK"), "查看 LabVIew SDK"},
    {"label_CSharpSdk", QStringLiteral("/help/Tarsel_mover_C#SDK"), "查看C# SDK"},
    {"label_PythonSdk", QStringLiteral("/help/Tarsel_mover_PythonSDK"), "查看Python SDK"},
    {"label_learnMore", webAddress, "了解更多详细信息"},
};

QString linkText(const QString &target, const QString &text)
{
    return QStringLiteral("<a style='color: orange; text-decoration: none' href = ") + target +
           QStringLiteral(" ?type=lately>") + text;
}

/** Stands in for the desktop: keeps what it is asked to open. */
class Desktop final : public QObject
{
    Q_OBJECT

public:
    Desktop()
    {
        for (const QString &scheme : schemes())
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~Desktop() override
    {
        for (const QString &scheme : schemes())
            QDesktopServices::unsetUrlHandler(scheme);
    }

    QList<QUrl> opened;

public slots:
    void open(const QUrl &url) { opened.append(url); }

private:
    static QStringList schemes() { return {QStringLiteral("file"), QUrl(webAddress).scheme()}; }
};

QLabel *label(const HelpWidget &popup, const char *name)
{
    return popup.findChild<QLabel *>(QLatin1String(name));
}

void addLinkRows()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("text");
    for (const Link &link : links)
        QTest::newRow(link.label) << QString::fromLatin1(link.label) << link.target << QString::fromUtf8(link.text);
}

void show(QWidget &window)
{
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
}

} // namespace

class tst_HelpWidget : public QObject
{
    Q_OBJECT

private slots:
    void isATranslucentFramelessWindow();
    void isNotModal();
    void linkLabelsCarryTheirTargetAndText_data() { addLinkRows(); }
    void linkLabelsCarryTheirTargetAndText();
    void clickOnALinkOpensItsTarget_data() { addLinkRows(); }
    void clickOnALinkOpensItsTarget();
    void everyKitStandsBesideTheProgram_data();
    void everyKitStandsBesideTheProgram();
    void keysOpenEveryLink_data();
    void keysOpenEveryLink();
    void theManualStandsBesideTheProgram();
    void showsTheSoftwareVersionAndTheCopyright();
    void showsTheFirmwareVersion();
    void languageChangeTranslatesLinksAndKeepsTargets_data() { addLinkRows(); }
    void languageChangeTranslatesLinksAndKeepsTargets();
    void languageChangeTranslatesTheCaptions_data();
    void languageChangeTranslatesTheCaptions();
    void languageChangeKeepsVersionsAndCopyright();
    void longerTextsGetTheirRoom();
    void closeButtonHides();
    void escapeHides();
    void otherKeysDoNotHide();
    void isDraggedByItsTitleAreaOnly();
    void isDraggedByTheLeftButtonOnly();
};

void tst_HelpWidget::isATranslucentFramelessWindow()
{
    QWidget mainWindow;
    const HelpWidget popup(&mainWindow);
    QVERIFY(popup.isWindow());
    QVERIFY(popup.windowFlags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(popup.testAttribute(Qt::WA_TranslucentBackground));
}

void tst_HelpWidget::isNotModal()
{
    QWidget mainWindow;
    const HelpWidget popup(&mainWindow);
    QCOMPARE(popup.windowModality(), Qt::NonModal);
}

void tst_HelpWidget::linkLabelsCarryTheirTargetAndText()
{
    QFETCH(QString, name);
    QFETCH(QString, target);
    QFETCH(QString, text);
    const HelpWidget popup;
    QCOMPARE(popup.findChild<QLabel *>(name)->text(), linkText(target, text));
}

void tst_HelpWidget::clickOnALinkOpensItsTarget()
{
    QFETCH(QString, name);
    QFETCH(QString, target);
    Desktop desktop;
    HelpWidget popup;
    show(popup);

    QLabel *link = popup.findChild<QLabel *>(name);
    QTest::mouseClick(link, Qt::LeftButton, Qt::NoModifier, QPoint(8, link->height() / 2));

    const QUrl expected =
        target == webAddress ? QUrl(webAddress) : QUrl::fromLocalFile(QCoreApplication::applicationDirPath() + target);
    QCOMPARE(desktop.opened, QList<QUrl>{expected});
}

void tst_HelpWidget::everyKitStandsBesideTheProgram_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"label_cplusSdk", "label_labviewSdk", "label_CSharpSdk", "label_PythonSdk"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_HelpWidget::everyKitStandsBesideTheProgram()
{
    QFETCH(QString, name);
    HelpWidget popup;
    QSignalSpy links(label(popup, name.toLatin1()), &QLabel::linkActivated);
    Desktop desktop;
    show(popup);
    QTest::mouseClick(label(popup, name.toLatin1()), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    QCOMPARE(links.count(), 1);
    const QString kit = QStringLiteral(MOVER_PROGRAM_DIR) + links.first().first().toString();
    QVERIFY2(QFileInfo(kit).isDir(), qPrintable(kit));
    QVERIFY(QFile::exists(kit + QStringLiteral("/README.md")));
}

void tst_HelpWidget::keysOpenEveryLink_data()
{
    addLinkRows();
}

void tst_HelpWidget::keysOpenEveryLink()
{
    QFETCH(QString, name);
    QFETCH(QString, target);
    HelpWidget popup;
    Desktop desktop;
    show(popup);
    QLabel *link = label(popup, name.toLatin1());
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space})
        QTest::keyClick(link, key);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "), true);
    QCoreApplication::sendEvent(link, &held);
    QTest::keyClick(link, Qt::Key_A);
    const QUrl url = target.startsWith(QLatin1Char('/'))
                         ? QUrl::fromLocalFile(QCoreApplication::applicationDirPath() + target)
                         : QUrl(target);
    QCOMPARE(desktop.opened, QList<QUrl>({url, url, url}));
}

void tst_HelpWidget::theManualStandsBesideTheProgram()
{
    HelpWidget popup;
    QSignalSpy links(label(popup, "label_manual"), &QLabel::linkActivated);
    Desktop desktop;
    show(popup);
    QTest::mouseClick(label(popup, "label_manual"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    QCOMPARE(links.count(), 1);
    QFile manual(QStringLiteral(MOVER_PROGRAM_DIR) + links.first().first().toString());
    QVERIFY2(manual.open(QIODevice::ReadOnly), qPrintable(manual.fileName()));
    QCOMPARE(manual.read(5), QByteArray("%PDF-"));
}

void tst_HelpWidget::showsTheSoftwareVersionAndTheCopyright()
{
    const HelpWidget popup;
    QCOMPARE(label(popup, "label_softwareVersion")->text(), QStringLiteral("V1.0.2"));
    QCOMPARE(label(popup, "label_copyright")->text(), QString::fromUtf8(MOVER_COPYRIGHT));
}

void tst_HelpWidget::showsTheFirmwareVersion()
{
    HelpWidget popup;
    QCOMPARE(label(popup, "label_firmwareVersion")->text(), QString());
    popup.setFirmwareVersion(QStringLiteral("V2.3"));
    QCOMPARE(label(popup, "label_firmwareVersion")->text(), QStringLiteral("V2.3"));
    popup.setFirmwareVersion(QString());
    QCOMPARE(label(popup, "label_firmwareVersion")->text(), QString());
}

void tst_HelpWidget::languageChangeTranslatesLinksAndKeepsTargets()
{
    QFETCH(QString, name);
    QFETCH(QString, target);
    QFETCH(QString, text);
    const HelpWidget popup;
    const QLabel *link = popup.findChild<QLabel *>(name);

    {
        const Prefixed prefixed;
        QCOMPARE(link->text(), linkText(target, QStringLiteral("T:") + text));
    }
    QCOMPARE(link->text(), linkText(target, text));
}

void tst_HelpWidget::languageChangeTranslatesTheCaptions_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *text) {
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromUtf8(text);
    };
    row("label_title", "帮助");
    row("label_manualCaption", "使用手册：");
    row("label_sdkCaption", "二次开发：");
    row("label_softwareVersionCaption", "软件版本：");
    row("label_firmwareVersionCaption", "嵌入式版本：");
}

void tst_HelpWidget::languageChangeTranslatesTheCaptions()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    const HelpWidget popup;
    const QLabel *caption = popup.findChild<QLabel *>(name);
    QCOMPARE(caption->text(), text);

    const Prefixed prefixed;
    QTRY_COMPARE(caption->text(), QStringLiteral("T:") + text);
}

void tst_HelpWidget::languageChangeKeepsVersionsAndCopyright()
{
    HelpWidget popup;
    popup.setFirmwareVersion(QStringLiteral("V2.3"));

    const Prefixed prefixed;
    QTRY_COMPARE(label(popup, "label_title")->text(), QStringLiteral("T:帮助"));
    QCOMPARE(label(popup, "label_firmwareVersion")->text(), QStringLiteral("V2.3"));
    QCOMPARE(label(popup, "label_softwareVersion")->text(), QStringLiteral("V" MOVER_VERSION));
    QCOMPARE(label(popup, "label_copyright")->text(), QString::fromUtf8(MOVER_COPYRIGHT));
}

void tst_HelpWidget::longerTextsGetTheirRoom()
{
    HelpWidget popup;
    show(popup);
    const QList<QLabel *> labels = popup.findChildren<QLabel *>();
    const auto fit = [&labels] {
        return std::all_of(labels.begin(), labels.end(), [](const QLabel *each) {
            return each->width() >= each->minimumSizeHint().width() &&
                   each->height() >= each->minimumSizeHint().height();
        });
    };
    QVERIFY(fit());

    const Prefixed prefixed;
    popup.setFirmwareVersion(QStringLiteral("V12.34.56 2026"));
    QTRY_VERIFY(fit());
}

void tst_HelpWidget::closeButtonHides()
{
    HelpWidget popup;
    show(popup);
    QTest::mouseClick(popup.findChild<QPushButton *>(QStringLiteral("pushButton_close")), Qt::LeftButton);
    QVERIFY(!popup.isVisible());
}

void tst_HelpWidget::escapeHides()
{
    HelpWidget popup;
    show(popup);
    QTest::keyClick(&popup, Qt::Key_Escape);
    QVERIFY(!popup.isVisible());
}

void tst_HelpWidget::otherKeysDoNotHide()
{
    HelpWidget popup;
    show(popup);
    QTest::keyClick(&popup, Qt::Key_Return);
    QVERIFY(popup.isVisible());
}

void tst_HelpWidget::isDraggedByItsTitleAreaOnly()
{
    HelpWidget popup;
    popup.move(100, 100);
    show(popup);
    QLabel *title = label(popup, "label_title");

    Mouse::press(title, {4, 4});
    Mouse::move(title, {34, 24});
    QCOMPARE(popup.pos(), QPoint(130, 120));

    Mouse::release(title, {4, 4});
    Mouse::move(title, {54, 64});
    QCOMPARE(popup.pos(), QPoint(130, 120));

    QLabel *body = label(popup, "label_copyright");
    Mouse::press(body, {4, 4});
    Mouse::move(body, {34, 24});
    QCOMPARE(popup.pos(), QPoint(130, 120));
}

void tst_HelpWidget::isDraggedByTheLeftButtonOnly()
{
    HelpWidget popup;
    popup.move(100, 100);
    show(popup);
    QLabel *title = label(popup, "label_title");

    Mouse::send(QEvent::MouseButtonPress, title, {4, 4}, Qt::RightButton, Qt::RightButton);
    Mouse::send(QEvent::MouseMove, title, {34, 24}, Qt::NoButton, Qt::RightButton);
    QCOMPARE(popup.pos(), QPoint(100, 100));
}

QTEST_MAIN(tst_HelpWidget)
#include "tst_HelpWidget.moc"
