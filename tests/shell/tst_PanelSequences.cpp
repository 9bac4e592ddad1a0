// SPDX-License-Identifier: MIT
#include "console/DebugWidget.h"
#include "device/Heart.h"
#include "models/DeviceParamWidget.h"
#include "support/LiveObjects.h"
#include "support/MessageBoxes.h"

#include "OpenWindow.h"

#include <QGridLayout>
#include <QSemaphore>

#include <algorithm>
#include <atomic>
#include <random>

namespace {

constexpr int device = 1001;
constexpr int axisCount = 3;

/** What should be there. */
struct Model {
    bool connected = false;
    QVector<int> open; // panels, in the order of creation
    int expanded = -1; // the axis whose panel stands alone, enlarged
};

/** Of what nothing may be left behind, however panels come and go. */
struct Census {
    int widgets = QApplication::allWidgets().size();
    int panels = LiveObjects::count<MoverControlWidget>();
    int timers = LiveObjects::runningTimers();
    int listeners = 0;

    static QString text(const Census &census)
    {
        return QStringLiteral("%1 widgets, %2 panels, %3 running timers, %4 listeners")
            .arg(census.widgets)
            .arg(census.panels)
            .arg(census.timers)
            .arg(census.listeners);
    }
};

/** How many slots hear the answers of the worker. */
int listenersOf(const SerialComDev &worker)
{
    struct Receivers : QObject {
        using QObject::receivers;
    };
    const auto count = &Receivers::receivers;
    return (worker.*count)(SIGNAL(signal_positionChanged(int, double))) +
           (worker.*count)(SIGNAL(signal_devStateChanged(int, MotorStageState))) +
           (worker.*count)(SIGNAL(signal_showOperationMsg(int, int, int, QString)));
}

/** The worker gives answers of every kind, in its thread and without a pause, for as long as this lives. */
class AnswersWithoutPause final
{
public:
    AnswersWithoutPause()
    {
        QMetaObject::invokeMethod(m_worker.data(), [this] {
            while (!m_enough) {
                emit m_worker->signal_positionChanged(axisCount, 0);
                emit m_worker->signal_devStateChanged(axisCount, {});
                emit m_worker->signal_showOperationMsg(axisCount, OPERATION_STATE_OK, OPERATION_TYPE_MOVE, QString());
                emit m_worker->signal_heartBeatInfo({}, 0);
                emit m_worker->signal_consoleHeartBeatInfo({}, 0);
            }
            m_ended.release();
        });
    }
    ~AnswersWithoutPause()
    {
        m_enough = true;
        m_ended.acquire();
    }

private:
    const QSharedPointer<SerialComDev> m_worker = SerialComDev::instance();
    std::atomic<bool> m_enough{false};
    QSemaphore m_ended;
};

/** One user at the window, who does one thing after the other, and the model that goes along. */
class User final
{
public:
    explicit User(unsigned int seed)
        : m_random(seed)
    {
        m_emptyWindow = census();
    }

    void doSomething();
    void disconnect()
    {
        if (!m_model.connected)
            return;
        note("disconnect");
        m_program.disconnect();
        m_model = {};
    }
    /** "" when the window shows what the model says. */
    QString difference();
    /** "" when a window without panels is what it was in the beginning. */
    QString leftBehind()
    {
        settle();
        const QString now = Census::text(census());
        const QString then = Census::text(m_emptyWindow);
        return now == then ? QString() : QStringLiteral("%1 instead of %2").arg(now, then);
    }
    QString history() const { return m_history.join(QStringLiteral(", ")); }
    bool connected() const { return m_model.connected; }

private:
    void note(const QString &what) { m_history.append(what); }
    void note(const char *what, int axis = -1)
    {
        m_history.append(QString::fromLatin1(what) + (axis < 0 ? QString() : QString::number(axis + 1)));
    }
    int pick(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(m_random); }
    QPushButton *button(int axis, const char *name)
    {
        return m_program.panel(axis)->findChild<QPushButton *>(QLatin1String(name));
    }
    Census census()
    {
        Census result;
        result.listeners = listenersOf(*SerialComDev::instance());
        return result;
    }
    /** Until the worker has run what was requested. */
    static void waitForRequests()
    {
        const auto worker = SerialComDev::instance();
        QMetaObject::invokeMethod(
            worker.data(), [] {}, Qt::BlockingQueuedConnection);
    }
    /** Deletes what waits for it, and hears what the worker has still to say. */
    void settle()
    {
        waitForRequests();
        for (int k = 0; k < 3; ++k) {
            QCoreApplication::sendPostedEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QCoreApplication::processEvents();
        }
        // Hides the dialog's message in five seconds; this is none of the panels'.
        m_program.dialog<ConnectionWidget>()->findChild<QTimer *>()->stop();
    }

    void connect();
    void add();
    void close(int axis, bool consents);
    void expand(int axis);
    void use(int axis);

    OpenWindow m_program;
    Model m_model;
    Census m_emptyWindow;
    std::mt19937 m_random;
    QStringList m_history;
};

void User::connect()
{
    note("connect");
    m_program.connectTo(device);
    m_model.connected = true;
    m_model.open = {0, 1};
}

void User::add()
{
    QVector<int> free;
    for (int axis = 0; axis < axisCount; ++axis) {
        if (!m_model.open.contains(axis))
            free.append(axis);
    }
    const MessageBoxes boxes;
    if (free.isEmpty()) {
        note("add one too many");
        OpenWindow::click(m_program.find("pushButton_addAsix"));
        QCOMPARE(boxes.count(), 1);
        return;
    }
    const int axis = free.at(pick(free.size()));
    note("add", axis);
    // Writing a stage to an axis is refused while it runs, and a start may still be under way to it.
    waitForRequests();
    SerialComDev::instance()->setMotorEnable(axis, 0);
    SerialComDev::instance()->setMotorEnable(axis, 1);
    m_program.addAxis(axis);
    QCOMPARE(boxes.texts(), QStringList());
    m_model.open.append(axis);
}

void User::close(int axis, bool consents)
{
    note(consents ? "close" : "do not close", axis);
    const MessageBoxes boxes(consents ? QStringLiteral("确认") : QStringLiteral("取消"));
    OpenWindow::click(button(axis, "pushButton_remove"));
    QCOMPARE(boxes.count(), 1);
    if (!consents)
        return;
    m_model.open.removeOne(axis);
    m_model.expanded = -1; // whatever stood alone, all are shown
}

void User::expand(int axis)
{
    const bool expands = m_model.expanded != axis;
    note(expands ? "expand" : "collapse", axis);
    emit m_program.panel(axis)->signal_expandControl(expands);
    m_model.expanded = expands ? axis : -1;
}

/** Something that leaves traces: motion, popups, overlays, an answer that is still under way. */
void User::use(int axis)
{
    switch (pick(7)) {
    case 0:
        note("jog", axis);
        return OpenWindow::click(button(axis, "pushButton_jogRight"));
    case 1:
        note("drive", axis);
        return OpenWindow::click(button(axis, "pushButton_driveLeft"));
    case 2:
        note("open the move popup of", axis);
        return OpenWindow::click(button(axis, "pushButton_moveParam"));
    case 3:
        note("open the drive popup of", axis);
        return OpenWindow::click(button(axis, "pushButton_driveParam"));
    case 4:
        note("open the loop run of", axis);
        return OpenWindow::click(button(axis, "pushButton_circle"));
    case 5:
        note("open the device parameters of", axis);
        button(axis, "pushButton_setting")->show();
        OpenWindow::click(button(axis, "pushButton_setting"));
        QVERIFY(m_program.panel(axis)->findChild<DeviceParamWidget *>()->isVisible());
        return;
    default:
        note("queue answers for", axis);
        const auto worker = SerialComDev::instance();
        for (int k = 0; k < 20; ++k) {
            emit worker->signal_getCurrentPos(axis);
            emit worker->signal_home(axis);
            emit worker->signal_stopMotor(axis);
        }
    }
}

void User::doSomething()
{
    if (pick(3) == 0)
        simulator::advance(0.05);
    if (pick(3) == 0)
        QCoreApplication::processEvents();
    if (!m_model.connected)
        return connect();
    const int action = pick(12);
    if (action == 0)
        return disconnect();
    // Another window is in front of the buttons: with a panel enlarged the others cannot be reached.
    QVector<int> reachable = m_model.open;
    if (m_model.expanded >= 0)
        reachable = {m_model.expanded};
    if (action <= 3 || reachable.isEmpty())
        return m_model.expanded >= 0 ? expand(m_model.expanded) : add();
    const int axis = reachable.at(pick(reachable.size()));
    if (action <= 5)
        return close(axis, pick(4) != 0);
    if (action <= 7)
        return expand(axis);
    use(axis);
}

QString User::difference()
{
    QStringList names;
    for (const int axis : qAsConst(m_model.open))
        names.append(QStringLiteral("Axis%1").arg(axis + 1));
    if (m_program.panelNames() != names)
        return QStringLiteral("panels: ") + m_program.panelNames().join(QLatin1Char(' '));

    std::sort(names.begin(), names.end());
    if (m_program.menuBar() != OpenWindow::menuBarWith(names))
        return QStringLiteral("menu bar: ") + m_program.menuBar().join(QLatin1Char(' '));

    if (m_program.window().axisCount() != (m_model.connected ? axisCount : 0))
        return QStringLiteral("axis count: %1").arg(m_program.window().axisCount());

    // Those that wait for their deletion hear the answers too, but no others do.
    const Census now = census();
    if (now.listeners != m_emptyWindow.listeners + 3 * now.panels)
        return Census::text(now);

    const auto *grid = qobject_cast<QGridLayout *>(m_program.content()->layout());
    for (int k = 0; k < m_model.open.size(); ++k) {
        const int axis = m_model.open.at(k);
        const MoverControlWidget *panel = m_program.panel(axis);
        if (panel->isHidden() != (m_model.expanded >= 0 && m_model.expanded != axis))
            return QStringLiteral("panel %1 hidden: %2").arg(axis + 1).arg(panel->isHidden());
        if (m_model.expanded == axis && panel->size() != QSize(1060, 560))
            return QStringLiteral("panel %1 is not enlarged").arg(axis + 1);
        QLayoutItem *place = grid->itemAtPosition(k / 2, k % 2);
        if (!place || place->widget() != panel)
            return QStringLiteral("panel %1 is out of place").arg(axis + 1);
    }
    return QString();
}

} // namespace

class tst_PanelSequences : public WindowTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        LiveObjects::install();
        QApplication::desktop(); // two widgets that Qt makes when it first needs them, and keeps
    }
    void init()
    {
        begin();
        play({{device, "MC3-A", {{'w', "LIN-100"}, {'w', "ROT-60", 1}, {'a'}}}});
    }
    void cleanup() { end(); }

    void panelsAreWhatTheUserMadeThem_data();
    void panelsAreWhatTheUserMadeThem();
    void panelsComeAndGoWhileTheLinkFails();
    void aPanelThatGoesPollsNoMore();
    void answersForAClosedPanelReachNobody();
    void answersWhileAPanelGoesLeaveNothingBehind();
    void answersWhileTheWindowGoesLeaveNothingBehind();
    void nothingIsLeftOfTheWindow();
};

void tst_PanelSequences::panelsAreWhatTheUserMadeThem_data()
{
    QTest::addColumn<unsigned int>("seed");
    for (unsigned int seed = 1; seed <= 12; ++seed)
        QTest::addRow("sequence %u", seed) << seed;
}

void tst_PanelSequences::panelsAreWhatTheUserMadeThem()
{
    QFETCH(unsigned int, seed);
    User user(seed);
    int actions = 0;
    int timesEmpty = 0;
    while (actions < 60 || user.connected()) {
        if (actions >= 60)
            user.disconnect();
        else
            user.doSomething();
        ++actions;
        QString wrong = user.difference();
        if (wrong.isEmpty() && !user.connected()) {
            ++timesEmpty;
            wrong = user.leftBehind();
        }
        if (!wrong.isEmpty() || QTest::currentTestFailed())
            QFAIL(qPrintable(wrong + QStringLiteral(" after: ") + user.history()));
    }
    QVERIFY(timesEmpty > 0);
}

void tst_PanelSequences::panelsComeAndGoWhileTheLinkFails()
{
    OpenWindow program;
    program.connectTo(device);
    simulator::loseLink(device);
    QTRY_VERIFY(logOf(program.panel(0)).contains(QStringLiteral("读取当前位置出错")));
    {
        const MessageBoxes boxes;
        OpenWindow::click(program.panel(1)->findChild<QPushButton *>(QStringLiteral("pushButton_remove")));
        program.window().slot_addControl(QStringLiteral("ROT-60"), 1, {});
        QCOMPARE(boxes.count(), 2);
        QCOMPARE(boxes.texts().last(), QStringLiteral("初始化轴，读取参数错误(-1)！"));
    }
    QPushButton *stop = program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_stop"));
    OpenWindow::click(stop);
    QTRY_VERIFY(logOf(program.panel(0)).contains(QStringLiteral("停止 停止运行 操作失败")));
    QCOMPARE(program.panelNames(), QStringList{QStringLiteral("Axis1")});

    simulator::restoreLink(device);
    simulator::setPosition(device, 0, 3);
    QTRY_COMPARE(
        program.panel(0)->findChild<QLabel *>(QStringLiteral("label_currentPos"))->text(), QStringLiteral("3.000 mm"));
    OpenWindow::click(stop);
    QTRY_VERIFY(logOf(program.panel(0)).contains(QStringLiteral("停止 停止运行 操作成功")));
    program.window().slot_addControl(QStringLiteral("ROT-60"), 1, {});
    QCOMPARE(program.window().panelBoard().count(), 2);
}

void tst_PanelSequences::aPanelThatGoesPollsNoMore()
{
    const auto polling = [] {
        int count = 0;
        for (const QTimer *timer : LiveObjects::all<QTimer>())
            count += timer->isActive() && qobject_cast<MoverControlWidget *>(timer->parent()) ? 1 : 0;
        return count;
    };
    OpenWindow program;
    program.connectTo(device);
    const int open = program.window().panelBoard().count();
    QVERIFY(open > 1);
    QCOMPARE(polling(), open);
    // From the moment on, not from when control returns to the event loop.
    const MessageBoxes boxes;
    program.window().slot_controlWidgetClosed(QStringLiteral("Axis1"));
    QCOMPARE(LiveObjects::count<MoverControlWidget>(), open);
    QCOMPARE(polling(), open - 1);
    program.window().slot_devDisConnected();
    QCOMPARE(polling(), 0);
}

void tst_PanelSequences::answersForAClosedPanelReachNobody()
{
    OpenWindow program;
    program.connectTo(device);
    const auto worker = SerialComDev::instance();
    const int listeners = listenersOf(*worker);
    {
        const MessageBoxes boxes;
        const QPointer<MoverControlWidget> panel = program.panel(0);
        for (int k = 0; k < 50; ++k)
            emit worker->signal_stopMotor(0);
        QTRY_VERIFY(simulator::callCount("stopRuning") == 50); // the answers wait in the queue of this thread
        OpenWindow::click(panel->findChild<QPushButton *>(QStringLiteral("pushButton_remove")));
        QTRY_VERIFY(!panel);
    }
    QCOMPARE(listenersOf(*worker), listeners - 3);
    // A new panel of the same axis does not hear what was meant for the old one.
    program.window().slot_addControl(QStringLiteral("LIN-100"), 0, {});
    QVERIFY(!logOf(program.panel(0)).contains(QStringLiteral("停止运行")));
}

// Of the next two the leak checker tells at the end of the run when something was left.

void tst_PanelSequences::answersWhileAPanelGoesLeaveNothingBehind()
{
    OpenWindow program;
    program.connectTo(device);
    const MessageBoxes boxes;
    for (int k = 0; k < 30; ++k) {
        const QPointer<MoverControlWidget> panel = program.panel(0);
        QVERIFY(panel);
        program.window().slot_controlWidgetClosed(QStringLiteral("Axis1"));
        {
            const AnswersWithoutPause answers;
            QCoreApplication::sendPostedEvents(panel, QEvent::DeferredDelete);
        }
        QVERIFY(!panel);
        program.window().slot_addControl(QStringLiteral("LIN-100"), 0, {}, true);
    }
}

void tst_PanelSequences::answersWhileTheWindowGoesLeaveNothingBehind()
{
    for (int k = 0; k < 30; ++k) {
        OpenWindow program;
        OpenWindow::click(
            LiveObjects::all<DebugWidget>().constFirst()->findChild<QPushButton *>(QStringLiteral("pushButton_44")));
        QCOMPARE(LiveObjects::count<Heart>(), 2);
        const AnswersWithoutPause answers;
        program.destroy();
        QCOMPARE(LiveObjects::count<Heart>(), 0);
    }
}

void tst_PanelSequences::nothingIsLeftOfTheWindow()
{
    const auto worker = SerialComDev::instance();
    const Census before;
    const int listeners = listenersOf(*worker);
    for (int round = 0; round < 2; ++round) {
        OpenWindow program;
        program.connectTo(device);
        OpenWindow::click(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_moveParam")));
        OpenWindow::click(program.panel(1)->findChild<QPushButton *>(QStringLiteral("pushButton_circle")));
        OpenWindow::click(program.panel(0)->findChild<QPushButton *>(QStringLiteral("pushButton_jogRight")));
        program.destroy();
        const Census after;
        QCOMPARE(Census::text(after), Census::text(before));
        QCOMPARE(listenersOf(*worker), listeners);
        worker->close();
    }
}

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    tst_PanelSequences test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_PanelSequences.moc"
