// SPDX-License-Identifier: MIT
#include "app/ScreenFit.h"
#include "app/StartUp.h"
#include "axis/DriveParamWidget.h"
#include "axis/JogParamWidget.h"
#include "axis/MoveParamWidget.h"
#include "console/DebugWidget.h"
#include "shell/ControllerSetupWidget.h"
#include "shell/OpenWindow.h"
#include "support/Desktop.h"
#include "support/OnMessageBox.h"
#include "support/TopLevel.h"
#include "workbench/WorkbenchWidget.h"

#include <QScreen>

#include <memory>

namespace {

/** The mouse itself: moves onto the middle of a widget and clicks. */
void clickOn(const QWidget *widget)
{
    const QPoint point =
        (QPointF(widget->mapToGlobal(widget->rect().center())) * widget->devicePixelRatioF()).toPoint();
    Desktop::clickAt(point);
}

/** Tells a message box, once it is active, that it stands in the corner, as its place within its frame. */
class LateNotice final : public QObject
{
public:
    LateNotice() { qApp->installEventFilter(this); }
    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *box = qobject_cast<QMessageBox *>(object);
        if (box && event->type() == QEvent::Move && !event->spontaneous() && !told)
            place = box->pos();
        if (box && event->type() == QEvent::WindowActivate && !told) {
            QTimer::singleShot(0, box, [this, box] {
                told = true;
                box->move(-1, -10);
            });
        }
        return false;
    }
    QPoint place; // where it was put
    bool told = false;
};

QRect onScreen(const QWidget *widget)
{
    return {widget->mapToGlobal(QPoint(0, 0)), widget->size()};
}

QRect room()
{
    return QGuiApplication::primaryScreen()->availableGeometry();
}

/** Nothing is drawn smaller than at scale 1, and nothing changes the scale that a user chose. */
bool findsNoRoom()
{
    return qEnvironmentVariableIsSet("QT_SCALE_FACTOR") ||
           qRound(QGuiApplication::primaryScreen()->devicePixelRatio() * 100) == 100;
}

} // namespace

/** The program on a real desktop whose screen is smaller than its main window. Run with several scales. */
class tst_SmallScreen : public QObject
{
    Q_OBJECT

public:
    explicit tst_SmallScreen(const QByteArray &chosenScale)
        : m_chosenScale(chosenScale)
    {
    }

private slots:
    void initTestCase()
    {
        StartUp::setNumberFormat();
        StartUp::installFont(QStringLiteral(MOVER_PROGRAM_DIR "/font.ttf"));
        StartUp::installStyleSheet(QStringLiteral(":/style.qss"));
    }
    void init()
    {
        play({{1001, "MC3-000117", {{}, {'w', "ROT-60", 1}, {'w', "LIFT-10", 3}}}});
        m_open = std::make_unique<OpenWindow>();
        m_fit = std::make_unique<ScreenFit>(&m_open->window());
        QVERIFY(QTest::qWaitForWindowActive(&m_open->window()));
    }
    void cleanup()
    {
        m_fit.reset();
        m_open.reset();
        QVERIFY(SerialComDev::endThread(5000));
    }

    void applicationKeepsItsNameAndArguments()
    {
        QCOMPARE(QCoreApplication::applicationName(), QString("mover"));
        QCOMPARE(QGuiApplication::platformName(), QString("xcb")); // see main()
    }
    void mainWindowLiesOnTheScreen() { QTRY_VERIFY(room().contains(m_open->window().frameGeometry())); }
    void mainWindowHasItsWholeSizeWhereThereIsRoom()
    {
        QCOMPARE(m_open->window().size() == ScreenFit::MainWindow, !findsNoRoom());
        if (findsNoRoom())
            QCOMPARE(m_open->window().size(), ScreenFit::MainWindow.boundedTo(room().size()));
    }
    void programsStartedFromHereGetNoScale() { QCOMPARE(qgetenv("QT_SCALE_FACTOR"), m_chosenScale); }
    void isPaintedToItsFarthestCorner()
    {
        QWidget mark(&m_open->window());
        mark.setStyleSheet(QStringLiteral("background: #ff0000"));
        mark.setGeometry(QRect(QPoint(0, 0), QSize(10, 10))
                             .translated(m_open->window().width() - 10, m_open->window().height() - 10));
        mark.show();
        QScreen *screen = QGuiApplication::primaryScreen();
        const auto colour = [&] {
            const QPointF middle = QPointF(mark.mapToGlobal(QPoint(5, 5))) * screen->devicePixelRatio();
            return screen->grabWindow(0).toImage().pixelColor(middle.toPoint());
        };
        QTRY_COMPARE(colour(), QColor(255, 0, 0));
    }
    void everyControlCanBeReached()
    {
        connectController();
        auto *area = m_open->find<QScrollArea>("scrollArea_controls");
        int controls = 0;
        for (QWidget *control : m_open->window().findChildren<QWidget *>()) {
            if (!control->isVisible() || control->window() != &m_open->window() ||
                !qobject_cast<QAbstractButton *>(control))
                continue;
            ++controls;
            if (area->isAncestorOf(control))
                area->ensureWidgetVisible(control);
            // A dialog that has just closed may lie there for a moment.
            QTRY_VERIFY2(room().contains(onScreen(control)), qPrintable(control->objectName()));
            QTRY_VERIFY2(
                QApplication::widgetAt(onScreen(control).center()) == control, qPrintable(control->objectName()));
        }
        QVERIFY(controls > 40);
    }
    void clicksReachTheFarthestCorners()
    {
        connectController();
        auto *area = m_open->find<QScrollArea>("scrollArea_controls");
        auto *circle = m_open->panel(2)->findChild<QPushButton *>("pushButton_circle");
        area->ensureWidgetVisible(circle);
        QSignalSpy clicked(circle, &QPushButton::clicked);
        clickOn(circle);
        QTRY_COMPARE(clicked.size(), 1);

        QSignalSpy helped(m_open->titleButton("pushButton_help"), &QPushButton::clicked);
        clickOn(m_open->titleButton("pushButton_help"));
        QTRY_COMPARE(helped.size(), 1);
    }
    void fullScreenFillsTheScreen()
    {
        clickOn(m_open->titleButton("pushButton_showMax"));
        QTRY_VERIFY(m_open->window().isFullScreen());
        QTRY_COMPARE(m_open->window().frameGeometry(), QGuiApplication::primaryScreen()->geometry());
        clickOn(m_open->titleButton("pushButton_showMax"));
        QTRY_VERIFY(!m_open->window().isFullScreen());
        QTRY_VERIFY(room().contains(m_open->window().frameGeometry()));
    }
    void dialogsOpenOnTheScreen_data()
    {
        QTest::addColumn<QPoint>("moved");
        QTest::newRow("in the middle") << QPoint(0, 0);
        QTest::newRow("far to the right and below") << QPoint(900, 600);
        QTest::newRow("far to the left") << QPoint(-900, 0);
    }
    void dialogsOpenOnTheScreen()
    {
        QFETCH(QPoint, moved);
        connectController();
        auto &window = m_open->window();
        window.move(window.pos() + moved);

        const auto opens = [](QWidget *dialog, QPushButton *button) {
            OpenWindow::click(button);
            QVERIFY(QTest::qWaitForWindowActive(dialog));
            QTRY_VERIFY2(room().contains(dialog->frameGeometry()), dialog->metaObject()->className());
            dialog->hide();
        };
        opens(m_open->dialog<HelpWidget>(), m_open->titleButton("pushButton_help"));
        opens(m_open->dialog<OptionsWidget>(), m_open->titleButton("pushButton_settings"));
        opens(m_open->dialog<ConnectionWidget>(), m_open->find("pushButton_connect"));
        opens(topLevel<DebugWidget>(), m_open->find("pushButton_debug"));
        OpenWindow::click(m_open->titleButton("pushButton_workbench"));
        opens(topLevel<WorkbenchWidget>(), m_open->titleButton("pushButton_workbench"));
        auto *connection = m_open->dialog<ConnectionWidget>();
        emit connection->findChild<QLabel *>("label_setUp")->linkActivated(QString());
        auto *setUp = connection->findChild<ControllerSetupWidget *>();
        QVERIFY(QTest::qWaitForWindowActive(setUp));
        QTRY_VERIFY(room().contains(setUp->frameGeometry()));
        setUp->close();
        auto *panel = m_open->panel(1);
        opens(panel->findChild<MoveParamWidget *>(), panel->findChild<QPushButton *>("pushButton_moveParam"));
        opens(panel->findChild<JogParamWidget *>(), panel->findChild<QPushButton *>("pushButton_jogParam"));
        opens(panel->findChild<DriveParamWidget *>(), panel->findChild<QPushButton *>("pushButton_driveParam"));

        const OnMessageBox box([](QMessageBox &shown) {
            QTRY_VERIFY(shown.isActiveWindow());
            QTRY_COMPARE(shown.frameGeometry() & room(), shown.frameGeometry());
        });
        window.slot_showTipMessage("text");
        QCOMPARE(box.shown(), 1);
    }
    void standsWhereItWasPutWhateverTheDesktopTells()
    {
        auto *dialog = m_open->dialog<ConnectionWidget>();
        OpenWindow::click(m_open->find("pushButton_connect"));
        const QPoint place = dialog->pos();
        QVERIFY(place != QPoint(1, 2));
        dialog->windowHandle()->setFramePosition(QPoint(1, 2)); // what the desktop tells while it is still at it
        QVERIFY(QTest::qWaitForWindowActive(dialog));
        QTRY_COMPARE(dialog->pos(), place);
        // Only until it stands: then it is the user's.
        dialog->move(40, 30);
        QTRY_COMPARE(dialog->windowHandle()->framePosition(), QPoint(40, 30));
        m_open->window().activateWindow();
        dialog->activateWindow();
        QTRY_VERIFY(dialog->isActiveWindow());
        QTRY_COMPARE(dialog->pos(), QPoint(40, 30)); // an earlier place may be told late
    }
    void staysThereThoughTheDesktopTellsThePlaceInTheFrameLate()
    {
        const LateNotice late;
        const OnMessageBox box([&late](QMessageBox &shown) {
            QTRY_VERIFY(late.told);
            // The desktop may still be about to put its frame around it.
            QTRY_VERIFY((shown.pos() - late.place).manhattanLength() < 30);
        });
        m_open->window().slot_showTipMessage("text");
        QCOMPARE(box.shown(), 1);
        QVERIFY(late.place.x() > 100);
    }
    void staysOnAScreenThatLosesRoom()
    {
        const QRect before = room();
        QWidget bar(nullptr, Qt::FramelessWindowHint);
        bar.setAttribute(Qt::WA_X11NetWmWindowTypeDock);
        const int height = int(200 * bar.devicePixelRatioF());
        bar.setGeometry(0, before.bottom() - 199, before.width(), 200);
        bar.winId();
        Desktop::run(
            "xprop", {"-id", QString::number(bar.winId()), "-f", "_NET_WM_STRUT", "32c", "-set", "_NET_WM_STRUT",
                      QStringLiteral("0, 0, 0, %1").arg(height)});
        bar.show();
        QTRY_VERIFY(room().height() <= before.height() - 199);
        QTRY_VERIFY(room().contains(m_open->window().frameGeometry()));
        bar.hide();
        QTRY_COMPARE(room(), before);
        QTRY_COMPARE(m_open->window().minimumSize(), ScreenFit::MainWindow.boundedTo(before.size()));
    }

private:
    /** At the pace of a user: one window after the other. */
    void connectController()
    {
        auto *dialog = m_open->dialog<ConnectionWidget>();
        OpenWindow::click(m_open->find("pushButton_connect"));
        QVERIFY(QTest::qWaitForWindowActive(dialog));
        OpenWindow::click(dialog->findChild<QPushButton *>("pushButton_connectSerial"));
        QVERIFY(QTest::qWaitForWindowActive(&m_open->window()));
        QCOMPARE(m_open->panelNames().size(), 3);
        QTRY_VERIFY(m_open->panel(2)->y() > m_open->panel(0)->geometry().bottom()); // laid out
    }
    const QByteArray m_chosenScale; // QT_SCALE_FACTOR as it was before the start
    std::unique_ptr<OpenWindow> m_open;
    std::unique_ptr<ScreenFit> m_fit;
};

int main(int argc, char *argv[])
{
    StartUp::prepareApplication();
    // The argument wins, also when the application object is made again.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QVector<char *> given(argv, argv + argc);
    char option[] = "-platform";
    char platform[] = "xcb";
    given << option << platform << nullptr;
    int count = given.size() - 1;
    const QByteArray chosenScale = qgetenv("QT_SCALE_FACTOR");
    const auto application = StartUp::makeApplication(count, given.data());
    tst_SmallScreen test(chosenScale);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_SmallScreen.moc"
