// SPDX-License-Identifier: MIT
#include "axis/DriveParamWidget.h"
#include "axis/JogParamWidget.h"
#include "axis/MoveParamWidget.h"
#include "axis/MoverControlWidget.h"
#include "support/Desktop.h"
#include "support/OnMessageBox.h"
#include "support/WorkerFixture.h"
#include "widgets/MessageBox.h"

#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QFontMetrics>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QtTest>

#include <memory>

namespace {

/** The mouse itself, as the window manager sees it: moves there and clicks. */
void clickOn(const QWidget *widget)
{
    Desktop::clickAt(widget->mapToGlobal(widget->rect().center()));
}

/** The argument that makes this executable the other program of a test: one window, until it is ended. */
const QString otherProgram = QStringLiteral("--other-program");

int runOtherProgram(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QWidget window;
    window.setGeometry(1300, 800, 200, 100);
    window.show();
    window.activateWindow();
    return QApplication::exec();
}

} // namespace

/**
 * The motion parameter popups on a desktop with a window manager, whose activation they live by. Clicks are those of
 * the mouse, not events made up for a widget.
 */
class tst_PopupsOnDesktop : public WorkerFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(QGuiApplication::platformName(), QString("xcb")); }
    void init()
    {
        begin();
        m_panel = std::make_unique<MoverControlWidget>();
        m_panel->setAxis(QSharedPointer<ControlAxis>::create(AxisDescription{0, "", "mm", -50, 50, 20, 80}));
        m_panel->move(300, 100);
        m_panel->show();
        QVERIFY(QTest::qWaitForWindowActive(m_panel.get()));
    }
    void cleanup()
    {
        m_panel.reset();
        end();
    }

    void clickOnTheToggleOpensThePopup_data() { toggles(); }
    void clickOnTheToggleOpensThePopup()
    {
        open();
        QTRY_VERIFY(!m_panel->isActiveWindow());
    }
    void takesTheActivationThatTheDesktopDoesNotGiveIt()
    {
        // Of no window that is active, and without asking for the activation by being shown.
        MoveParamWidget popup;
        popup.setAttribute(Qt::WA_ShowWithoutActivating);
        popup.show();
        QVERIFY(QTest::qWaitForWindowActive(&popup));
    }
    void clickOnTheToggleClosesAndASingleClickReopens_data() { toggles(); }
    void clickOnTheToggleClosesAndASingleClickReopens()
    {
        open();
        for (int round = 0; round < 3; ++round) {
            ClickCounter clicks(toggle());
            clickOn(toggle());
            QTRY_COMPARE(clicks.releases, 1); // the whole click has come and gone
            QVERIFY(!popup()->isVisible());
            QVERIFY(!toggle()->isChecked());
            QTRY_VERIFY(m_panel->isActiveWindow());
            letThePressBeOver();
            open();
        }
    }
    void clickElsewhereClosesThePopup_data() { toggles(); }
    void clickElsewhereClosesThePopup()
    {
        open();
        clickOn(m_panel->findChild<QLabel *>("label_axisName"));
        QTRY_VERIFY(!popup()->isVisible());
        QVERIFY(!toggle()->isChecked());
        QCOMPARE(takeRequests(), QStringList());
        letThePressBeOver();
        open();
    }
    void clickOnAnotherWindowClosesThePopup_data() { toggles(); }
    void clickOnAnotherWindowClosesThePopup()
    {
        QWidget other;
        other.setGeometry(1300, 800, 200, 100);
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        m_panel->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_panel.get()));
        open();
        clickOn(&other);
        QTRY_VERIFY(!popup()->isVisible());
        QVERIFY(!toggle()->isChecked());
    }
    void staysOpenUnderItsOwnMessageBox_data() { toggles(); }
    void staysOpenUnderItsOwnMessageBox()
    {
        open();
        bool boxWasActive = false;
        const OnMessageBox next([&](QMessageBox &box) {
            QTRY_VERIFY(box.isActiveWindow());
            boxWasActive = true;
            QVERIFY(!popup()->isActiveWindow());
            QVERIFY(popup()->isVisible());
            clickOn(box.buttons().first());
        });
        for (QAbstractSpinBox *field : popup()->findChildren<QAbstractSpinBox *>())
            field->stepBy(-1000000); // out of every range, or 0
        clickOn(popup()->findChild<QPushButton *>("pushButton_confirm"));
        QTRY_COMPARE(next.shown(), 1);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QVERIFY(boxWasActive);
        QVERIFY(popup()->isVisible());
        QVERIFY(toggle()->isChecked());
        QVERIFY(QTest::qWaitForWindowActive(popup()));
        QVERIFY(popup()->isVisible());
        // And is an ordinary popup again.
        clickOn(m_panel->findChild<QLabel *>("label_axisName"));
        QTRY_VERIFY(!popup()->isVisible());
        QVERIFY(!toggle()->isChecked());
    }
    void comesBackFromItsMessageBoxWhateverElseIsActive_data() { toggles(); }
    void comesBackFromItsMessageBoxWhateverElseIsActive()
    {
        open();
        QProcess other; // another program, whose window the user has turned to meanwhile
        const OnMessageBox next([&](QMessageBox &box) {
            QTRY_VERIFY(box.isActiveWindow());
            other.start(QCoreApplication::applicationFilePath(), {otherProgram});
            QTRY_VERIFY_WITH_TIMEOUT(!QGuiApplication::focusWindow(), 30000); // a second program has to come up
            QVERIFY(!box.isActiveWindow());
        }); // which also closes the box; it has no activation that the desktop could pass on
        for (QAbstractSpinBox *field : popup()->findChildren<QAbstractSpinBox *>())
            field->stepBy(-1000000);
        clickOn(popup()->findChild<QPushButton *>("pushButton_confirm"));
        QTRY_COMPARE(next.shown(), 1);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QTRY_VERIFY(popup()->isActiveWindow());
        QVERIFY(popup()->isVisible());
        other.kill();
        QTRY_COMPARE(other.state(), QProcess::NotRunning);
    }
    void opensInFrontOfThePanel_data() { toggles(); }
    void opensInFrontOfThePanel()
    {
        open();
        auto *restore = popup()->findChild<QPushButton *>("pushButton_restore");
        QSignalSpy clicked(restore, &QPushButton::clicked);
        clickOn(restore);
        QTRY_COMPARE(clicked.size(), 1);
        QVERIFY(popup()->isVisible());
    }
    void clickOnAnotherToggleChangesThePopup()
    {
        auto *jog = m_panel->findChild<JogParamWidget *>();
        auto *move = m_panel->findChild<MoveParamWidget *>();
        clickOn(m_panel->findChild<QPushButton *>("pushButton_jogParam"));
        QTRY_VERIFY(jog->isActiveWindow());
        clickOn(m_panel->findChild<QPushButton *>("pushButton_moveParam"));
        QTRY_VERIFY(move->isActiveWindow());
        QVERIFY(!jog->isVisible());
        QVERIFY(!m_panel->findChild<QPushButton *>("pushButton_jogParam")->isChecked());
        QVERIFY(m_panel->findChild<QPushButton *>("pushButton_moveParam")->isChecked());
    }
    void escapeAndEnterReachThePopup()
    {
        auto *jog = m_panel->findChild<JogParamWidget *>();
        auto *toggle = m_panel->findChild<QPushButton *>("pushButton_jogParam");
        clickOn(toggle);
        QTRY_VERIFY(jog->isActiveWindow());
        press("Escape");
        QTRY_VERIFY(!jog->isVisible());
        QVERIFY(!toggle->isChecked());
        QCOMPARE(takeRequests(), QStringList());
        letThePressBeOver();
        clickOn(toggle);
        QTRY_VERIFY(jog->isActiveWindow());
        jog->findChild<QDoubleSpinBox *>("doubleSpinBox_step")->setValue(2);
        press("Return");
        QTRY_VERIFY(!jog->isVisible());
        QCOMPARE(takeRequests(), (QStringList{"setJogParams(0, 2, 5, 500)"}));
    }

    void messageBoxIsAsWideAsItsText()
    {
        const QString text = QString("a line that is wider than a message box likes to be ").repeated(3);
        QFont font;
        font.setPixelSize(18);
        const int needed = QFontMetrics(font).horizontalAdvance(text) + 100;
        QVERIFY(needed > 1100);
        const OnMessageBox next([needed](QMessageBox &box) {
            QTRY_VERIFY(box.isActiveWindow());
            auto *label = box.findChild<QLabel *>("qt_msgbox_label");
            QVERIFY(label->width() >= needed);
            QVERIFY(box.rect().contains(label->geometry()));
            QVERIFY(box.height() >= 400);
        });
        MessageBox::inform(m_panel.get(), text);
        QCOMPARE(next.shown(), 1);
    }

private:
    /** Counts the mouse releases that reach a widget. */
    class ClickCounter final : public QObject
    {
    public:
        explicit ClickCounter(QObject *watched) { watched->installEventFilter(this); }
        bool eventFilter(QObject *, QEvent *event) override
        {
            releases += event->type() == QEvent::MouseButtonRelease;
            return false;
        }
        int releases = 0;
    };

    static void toggles()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"move", "jog", "drive"})
            QTest::newRow(name) << name;
    }
    QPushButton *toggle() const
    {
        QFETCH(QString, name);
        return m_panel->findChild<QPushButton *>("pushButton_" + name + "Param");
    }
    QWidget *popup() const
    {
        QFETCH(QString, name);
        if (name == "move")
            return m_panel->findChild<MoveParamWidget *>();
        if (name == "jog")
            return m_panel->findChild<JogParamWidget *>();
        return m_panel->findChild<DriveParamWidget *>();
    }
    void open()
    {
        clickOn(toggle());
        QTRY_VERIFY(popup()->isVisible());
        QVERIFY(QTest::qWaitForWindowActive(popup()));
        QVERIFY(toggle()->isChecked());
    }
    static void press(const char *key) { Desktop::xdotool({"key", key}); }
    /** A person's next click comes later than the toggle still takes a press for the one that closed its popup. */
    static void letThePressBeOver()
    {
        QElapsedTimer elapsed;
        elapsed.start();
        QTRY_VERIFY(elapsed.elapsed() > 200);
    }

    std::unique_ptr<MoverControlWidget> m_panel;
};

int main(int argc, char *argv[])
{
    if (argc == 2 && argv[1] == otherProgram)
        return runOtherProgram(argc, argv);
    const QApplication application(argc, argv);
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    tst_PopupsOnDesktop test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_PopupsOnDesktop.moc"
