// SPDX-License-Identifier: MIT
#include "widgets/MessageBox.h"

#include "support/Catalogue.h"
#include "support/DebugLog.h"
#include "support/OnMessageBox.h"

#include <QFontMetrics>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QtTest>

#include <memory>
#include <optional>

using MessageBox::Kind;
Q_DECLARE_METATYPE(MessageBox::Kind)

namespace {

constexpr char buttonSheet[] =
    ".QPushButton{color: #FFFFFF;font-size: 16px;border-radius: 3px;border: 2px solid #298DFF;min-width:70px;"
    "min-height: 30px;background-color: rgb(80, 80, 80);}.QPushButton:hover{background-color: rgb(50, 50, 50);}"
    ".QPushButton:pressed{background-color: rgb(22, 110, 215);}";

int advance(const QString &line)
{
    QFont font;
    font.setPixelSize(18);
    return QFontMetrics(font).horizontalAdvance(line);
}

QPushButton *button(QMessageBox &box, const QString &text)
{
    for (QAbstractButton *candidate : box.buttons()) {
        if (candidate->text() == text)
            return qobject_cast<QPushButton *>(candidate);
    }
    qFatal("no such button");
}

QLabel *label(QMessageBox &box)
{
    return box.findChild<QLabel *>("qt_msgbox_label");
}

void allKinds()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("tip") << Kind::Tip;
    QTest::newRow("motion popup") << Kind::MotionPopup;
    QTest::newRow("loop run") << Kind::LoopRun;
}

} // namespace

class tst_MessageBox : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_log.emplace(); }
    void cleanup()
    {
        const QStringList warnings = m_log->warnings();
        m_log.reset();
        QCOMPARE(warnings, QStringList());
    }

    void carriesTitleTextIconAndParent_data() { allKinds(); }
    void carriesTitleTextIconAndParent()
    {
        QFETCH(Kind, kind);
        QWidget parent;
        bool looked = false;
        const OnMessageBox next([&](QMessageBox &box) {
            looked = true;
            QCOMPARE(box.windowTitle(), QString("提示"));
            QCOMPARE(box.text(), QString("first line\nsecond line"));
            QCOMPARE(box.parentWidget(), &parent);
            QVERIFY(box.isModal());
            QCOMPARE(
                box.windowIcon().pixmap(32).toImage(),
                box.style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(32).toImage());
            QVERIFY(!box.windowIcon().isNull());
        });
        MessageBox::inform(&parent, "first line\nsecond line", kind);
        QVERIFY(looked);
    }

    void ordersItsButtonsByKind_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QStringList>("order");
        QTest::newRow("tip") << Kind::Tip << QStringList{"取消", "确认"};
        QTest::newRow("motion popup") << Kind::MotionPopup << QStringList{"确认", "取消"};
        QTest::newRow("loop run") << Kind::LoopRun << QStringList{"确认", "取消"};
    }
    void ordersItsButtonsByKind()
    {
        QFETCH(Kind, kind);
        QFETCH(QStringList, order);
        QStringList shown;
        const OnMessageBox next([&](QMessageBox &box) {
            for (const QPushButton *each : box.findChildren<QPushButton *>()) // as they were added
                shown.append(each->text());
            QCOMPARE(box.buttons().size(), 2);
            QCOMPARE(box.buttonRole(button(box, "确认")), QMessageBox::AcceptRole);
            QCOMPARE(box.buttonRole(button(box, "取消")), QMessageBox::RejectRole);
        });
        MessageBox::inform(nullptr, "?", kind);
        QCOMPARE(shown, order);
    }
    void consentIsTheConfirmingButtonAlone_data() { allKinds(); }
    void consentIsTheConfirmingButtonAlone()
    {
        QFETCH(Kind, kind);
        for (const bool consent : {true, false}) {
            const OnMessageBox next([consent](QMessageBox &box) {
                QTest::mouseClick(button(box, consent ? "确认" : "取消"), Qt::LeftButton);
            });
            QCOMPARE(MessageBox::confirm(nullptr, "?", kind), consent);
            QCOMPARE(next.shown(), 1);
        }
    }
    void isATipUnlessToldOtherwise()
    {
        QString first;
        const OnMessageBox next([&first](QMessageBox &box) { first = box.findChild<QPushButton *>()->text(); });
        MessageBox::inform(nullptr, "?");
        QCOMPARE(first, QString("取消"));
    }

    void countsEveryOtherWayOutAsCancel_data() { allKinds(); }
    void countsEveryOtherWayOutAsCancel()
    {
        QFETCH(Kind, kind);
        const std::function<void(QMessageBox &)> waysOut[] = {
            [](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Escape); },
            [](QMessageBox &box) { box.close(); },
        };
        for (const auto &leave : waysOut) {
            const OnMessageBox next([&leave](QMessageBox &box) {
                leave(box);
                QVERIFY(!box.isVisible());
            });
            QVERIFY(!MessageBox::confirm(nullptr, "?", kind));
            QCOMPARE(next.shown(), 1);
        }
    }
    void countsTheEndOfTheProgramAsCancel_data() { allKinds(); }
    void countsTheEndOfTheProgramAsCancel()
    {
        QFETCH(Kind, kind);
        std::optional<bool> consent;
        QTimer::singleShot(0, this, [&] { consent = MessageBox::confirm(nullptr, "?", kind); });
        QTimer quit;
        quit.callOnTimeout([] {
            if (QApplication::activeModalWidget())
                QCoreApplication::quit();
        });
        quit.start(5);
        QApplication::exec();
        QCOMPARE(consent, std::optional<bool>(false));
    }
    void countsTheEndOfItsParentAsCancel_data() { allKinds(); }
    void countsTheEndOfItsParentAsCancel()
    {
        QFETCH(Kind, kind);
        auto parent = std::make_unique<QWidget>();
        const OnMessageBox next([&](QMessageBox &) { parent.reset(); });
        QVERIFY(!MessageBox::confirm(parent.get(), "?", kind));
        QCOMPARE(next.shown(), 1);
    }
    void goesBackToItsPlaceWhenItIsLaidOutAgain()
    {
        QWidget parent;
        parent.setGeometry(0, 0, 800, 600);
        const OnMessageBox next([](QMessageBox &box) {
            const QPoint place = box.pos();
            box.move(0, 0); // as a late report of the window system would have it
            QEvent layout(QEvent::LayoutRequest);
            QCoreApplication::sendEvent(&box, &layout);
            QCOMPARE(box.pos(), place);
        });
        MessageBox::inform(&parent, "?");
        QCOMPARE(next.shown(), 1);
    }
    void leavesNothingBehind()
    {
        QWidget parent;
        QPointer<QMessageBox> seen;
        const OnMessageBox next([&](QMessageBox &box) { seen = &box; });
        MessageBox::inform(&parent, "?");
        QCOMPARE(next.shown(), 1);
        QVERIFY(!seen);
        QVERIFY(parent.children().isEmpty());
    }
    void enterConfirms_data() { allKinds(); }
    void enterConfirms()
    {
        QFETCH(Kind, kind);
        const OnMessageBox next([](QMessageBox &box) {
            // As the keyboard does it: to whatever has the focus.
            QTRY_VERIFY(box.focusWidget());
            QTest::keyClick(box.focusWidget(), Qt::Key_Return);
            QVERIFY(!box.isVisible());
        });
        QVERIFY(MessageBox::confirm(nullptr, "?", kind));
        QCOMPARE(next.shown(), 1);
    }

    void wearsTheSheetOfItsKind_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QString>("size");
        QTest::addColumn<QString>("labelHeight");
        QTest::newRow("tip") << Kind::Tip << "min-width: 600px;min-height: 400px;"
                             << "80px";
        QTest::newRow("motion popup") << Kind::MotionPopup << "min-width: 60000px;min-height: 400px;"
                                      << "100px";
        QTest::newRow("loop run") << Kind::LoopRun << "min-width: 600px;min-height: 500px;"
                                  << "120px";
    }
    void wearsTheSheetOfItsKind()
    {
        QFETCH(Kind, kind);
        QFETCH(QString, size);
        QFETCH(QString, labelHeight);
        const QString widest = "the second line is the widest";
        const QString text = "first\n" + widest + "\n\nlast";
        const QString sheet =
            "QMessageBox {background-color: #F2F2F2;font-size: 14px;" + size +
            "}QMessageBox QLabel#qt_msgbox_label {color: #000000;background-color: transparent;min-width: " +
            QString::number(advance(widest) + 100) + "px;min-height: " + labelHeight +
            ";font-size: 18px;}QMessageBox QLabel#qt_msgboxex_icon_label {width: 20px;height: 20px;}"
            "QMessageBox QDialogButtonBox#qt_msgbox_buttonbox {button-layout: 0;}";
        const OnMessageBox next([&](QMessageBox &box) {
            QCOMPARE(box.styleSheet(), sheet);
            for (QAbstractButton *each : box.buttons())
                QCOMPARE(each->styleSheet(), QString(buttonSheet));
        });
        MessageBox::inform(nullptr, text, kind);
        QCOMPARE(next.shown(), 1);
    }

    void isAsLargeAsItsKindAndItsTextAsk_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QSize>("minimum");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("programSheet");
        struct {
            const char *name;
            Kind kind;
            QSize minimum;
        } const kinds[] = {
            {"tip", Kind::Tip, {600, 400}},
            {"motion popup", Kind::MotionPopup, {600, 400}},
            {"loop run", Kind::LoopRun, {600, 500}},
        };
        struct {
            const char *name;
            QString text;
        } const texts[] = {
            {"short", "!"},
            {"Chinese", "运行中关闭该界面将会自动停止，是否关闭？"},
            {"English",
             "The number of axes exceeds the upper limit, please check the operation window before continuing!"},
            {"wider than the screen allows by itself", QString("limit exceeded ").repeated(12)},
            {"many lines", QString("a line\n").repeated(30)},
        };
        for (const auto &kind : kinds) {
            for (const auto &text : texts) {
                for (const bool programSheet : {false, true})
                    QTest::addRow("%s, %s, %s", kind.name, text.name, programSheet ? "style sheet" : "plain")
                        << kind.kind << kind.minimum << text.text << programSheet;
            }
        }
    }
    void isAsLargeAsItsKindAndItsTextAsk()
    {
        QFETCH(Kind, kind);
        QFETCH(QSize, minimum);
        QFETCH(QString, text);
        QFETCH(bool, programSheet);
        if (programSheet) {
            QFile sheet(":/style.qss");
            QVERIFY(sheet.open(QIODevice::ReadOnly));
            qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
        }
        int widest = 0;
        for (const QString &line : text.split('\n'))
            widest = qMax(widest, advance(line));
        const OnMessageBox next([&](QMessageBox &box) {
            QCoreApplication::processEvents();
            QVERIFY2(box.width() >= minimum.width(), qPrintable(QString::number(box.width())));
            QVERIFY2(box.height() >= minimum.height(), qPrintable(QString::number(box.height())));
            QVERIFY2(label(box)->width() >= widest + 100, qPrintable(QString::number(label(box)->width())));
            QVERIFY(
                label(box)->height() >=
                QFontMetrics(label(box)->font()).lineSpacing() * (text.trimmed().count('\n') + 1));
            // All of it inside the box, and one below the other.
            for (QAbstractButton *each : box.buttons()) {
                const QRect place(each->mapTo(&box, QPoint()), each->size());
                QVERIFY(box.rect().contains(place));
                QVERIFY(!label(box)->geometry().intersects(place));
            }
            QVERIFY(box.rect().contains(label(box)->geometry()));
        });
        MessageBox::inform(nullptr, text, kind);
        qApp->setStyleSheet(QString());
        QCOMPARE(next.shown(), 1);
    }

    void standsOverTheMiddleOfItsParent_data() { allKinds(); }
    void standsOverTheMiddleOfItsParent()
    {
        QFETCH(Kind, kind);
        QWidget parent;
        parent.setGeometry(90, 40, 620, 500);
        QWidget child(&parent); // the window counts
        child.setGeometry(0, 0, 10, 10);
        parent.show();
        // Counted from the frames, which are not equally thick everywhere.
        const auto middle = [](const QWidget &window) { return QRect(window.pos(), window.size()).center(); };
        const OnMessageBox next([&](QMessageBox &box) { QCOMPARE(middle(box), middle(parent)); });
        MessageBox::inform(&child, "!", kind);
        QCOMPARE(next.shown(), 1);
    }
    void staysOnTheScreen_data()
    {
        QTest::addColumn<QPoint>("corner"); // of the screen, 0 or 1
        QTest::newRow("top left") << QPoint(0, 0);
        QTest::newRow("bottom right") << QPoint(1, 1);
        QTest::newRow("top right") << QPoint(1, 0);
        QTest::newRow("bottom left") << QPoint(0, 1);
    }
    void staysOnTheScreen()
    {
        QFETCH(QPoint, corner);
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        QWidget parent;
        parent.setGeometry(corner.x() * screen.width() - 50, corner.y() * screen.height() - 50, 100, 100);
        parent.show();
        const OnMessageBox next([&](QMessageBox &box) {
            const QRect frame = box.frameGeometry();
            QCOMPARE(frame.x(), corner.x() * (screen.width() - frame.width()));
            QCOMPARE(frame.y(), corner.y() * (screen.height() - frame.height()));
        });
        MessageBox::inform(&parent, "!");
        QCOMPARE(next.shown(), 1);
    }

    void speaksEnglishWithTheCatalogue()
    {
        const Catalogue catalogue;
        const OnMessageBox next([](QMessageBox &box) {
            QCOMPARE(box.windowTitle(), QString("Message"));
            QCOMPARE(box.buttons().size(), 2);
            QCOMPARE(box.buttonRole(button(box, "OK")), QMessageBox::AcceptRole);
            QCOMPARE(box.buttonRole(button(box, "Cancel")), QMessageBox::RejectRole);
            button(box, "OK")->click();
        });
        QVERIFY(MessageBox::confirm(nullptr, "?"));
    }

private:
    std::optional<DebugLog> m_log;
};

QTEST_MAIN(tst_MessageBox)
#include "tst_MessageBox.moc"
