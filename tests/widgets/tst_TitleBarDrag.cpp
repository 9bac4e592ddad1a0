// SPDX-License-Identifier: MIT
#include "widgets/TitleBarDrag.h"

#include <QMouseEvent>
#include <QWidget>
#include <QtTest>

#include <memory>

namespace {

/** Passes its mouse events on, as the frameless windows do. */
class Window final : public QWidget
{
public:
    explicit Window(Qt::MouseButtons buttons = Qt::AllButtons)
        : drag(this, &bar, buttons)
    {
        setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
        setGeometry(100, 150, 300, 200);
        // Not in the corner: positions count from the window, not from what the bar lies in.
        frame.setGeometry(20, 10, 260, 100);
        bar.setGeometry(10, 5, 240, 40);
        show();
    }
    ~Window() override = default;

    /** Whether the drag has taken the event, so that the window did not see it. */
    bool send(QEvent::Type type, QPointF pos, Qt::MouseButton button = Qt::LeftButton)
    {
        const Qt::MouseButton changed = type == QEvent::MouseMove ? Qt::NoButton : button;
        QMouseEvent event(type, pos, mapToGlobal(QPoint(0, 0)) + pos, changed, button, Qt::NoModifier);
        event.setAccepted(false);
        seen = false;
        QCoreApplication::sendEvent(this, &event);
        const bool handled = !seen;
        if (handled != event.isAccepted())
            qFatal("handled and accepted must be the same");
        return handled;
    }
    bool press(QPointF pos) { return send(QEvent::MouseButtonPress, pos); }
    bool move(QPointF pos) { return send(QEvent::MouseMove, pos); }

    bool event(QEvent *event) override
    {
        seen = seen || dynamic_cast<QMouseEvent *>(event) != nullptr;
        return QWidget::event(event);
    }

    bool seen = false;
    QWidget frame{this};
    QWidget bar{&frame};
    TitleBarDrag drag;
};

} // namespace

class tst_TitleBarDrag : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_window = std::make_unique<Window>(); }
    void cleanup() { m_window.reset(); }

    void movesTheWindowWithTheMouse()
    {
        QVERIFY(m_window->press({50, 30}));
        QVERIFY(m_window->move({57, 26}));
        QCOMPARE(m_window->pos(), QPoint(107, 146));
        // Positions are local: the window has followed the mouse, so the same position means a further step.
        QVERIFY(m_window->move({57, 26}));
        QCOMPARE(m_window->pos(), QPoint(114, 142));
        QVERIFY(m_window->move({50, 30}));
        QCOMPARE(m_window->pos(), QPoint(114, 142));
    }
    void startsInsideTheTitleBarOnly_data()
    {
        QTest::addColumn<QPointF>("pos");
        QTest::addColumn<bool>("starts");
        QTest::newRow("first pixel") << QPointF(30, 15) << true;
        QTest::newRow("last pixel") << QPointF(269, 54) << true;
        QTest::newRow("left of it") << QPointF(29, 30) << false;
        QTest::newRow("right of it") << QPointF(270, 30) << false;
        QTest::newRow("above it") << QPointF(50, 14) << false;
        QTest::newRow("below it") << QPointF(50, 55) << false;
        QTest::newRow("half rounds away from zero, into it") << QPointF(29.5, 14.5) << true;
        QTest::newRow("half rounds away from zero, out of it") << QPointF(269.5, 30) << false;
    }
    void startsInsideTheTitleBarOnly()
    {
        QFETCH(QPointF, pos);
        QFETCH(bool, starts);
        QCOMPARE(m_window->press(pos), starts);
        QCOMPARE(m_window->move(pos + QPointF(5, 5)), starts);
        QCOMPARE(m_window->pos(), starts ? QPoint(105, 155) : QPoint(100, 150));
    }
    void roundsPositionsToWholePixels()
    {
        QVERIFY(m_window->press({50.4, 30.5})); // 50, 31
        QVERIFY(m_window->move({52.5, 31.4}));  // 53, 31
        QCOMPARE(m_window->pos(), QPoint(103, 150));
    }
    void roundsHalvesAwayFromZeroOnBothSidesOfTheWindow()
    {
        QVERIFY(m_window->press({50, 30}));
        QVERIFY(m_window->move({-2.5, -1.5})); // -3, -2
        QCOMPARE(m_window->pos(), QPoint(100 - 53, 150 - 32));
    }
    void leavesMovesWithoutAPressAlone()
    {
        QVERIFY(!m_window->move({50, 30}));
        QCOMPARE(m_window->pos(), QPoint(100, 150));
    }
    void endsWithTheRelease()
    {
        QVERIFY(m_window->press({50, 30}));
        QVERIFY(!m_window->send(QEvent::MouseButtonRelease, {50, 30}));
        QVERIFY(!m_window->move({60, 40}));
        QCOMPARE(m_window->pos(), QPoint(100, 150));
    }
    void startsWithTheGivenButtonsOnly()
    {
        QVERIFY(m_window->send(QEvent::MouseButtonPress, {50, 30}, Qt::RightButton));
        m_window->send(QEvent::MouseButtonRelease, {50, 30}, Qt::RightButton);
        Window leftOnly(Qt::LeftButton);
        QVERIFY(!leftOnly.send(QEvent::MouseButtonPress, {50, 30}, Qt::RightButton));
        QVERIFY(leftOnly.send(QEvent::MouseButtonPress, {50, 30}, Qt::LeftButton));
    }
    void leavesAFullScreenWindowAlone()
    {
        m_window->showFullScreen();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        const QPoint before = m_window->pos();
        QVERIFY(!m_window->press({50, 30}));
        QVERIFY(!m_window->move({60, 40}));
        QCOMPARE(m_window->pos(), before);
    }
    void leavesAWindowAloneThatFillsTheScreenMeanwhile()
    {
        QVERIFY(m_window->press({50, 30}));
        m_window->showFullScreen();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        const QPoint before = m_window->pos();
        QVERIFY(!m_window->move({60, 40}));
        QCOMPARE(m_window->pos(), before);
    }

private:
    std::unique_ptr<Window> m_window;
};

QTEST_MAIN(tst_TitleBarDrag)
#include "tst_TitleBarDrag.moc"
