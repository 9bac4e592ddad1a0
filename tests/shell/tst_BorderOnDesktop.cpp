// SPDX-License-Identifier: MIT
#include "shell/MyBorderContainer.h"
#include "support/Desktop.h"

#include <QtTest>

#include <memory>

namespace {

constexpr QSize borderMinimum(320, 230);
constexpr QSize windowMinimum(380, 200); // the border's height and the window's width are the larger ones
constexpr QSize least(380, 230);

/** A frameless window that notes every geometry it is given by the program or the desktop. */
class Window final : public QWidget
{
public:
    Window()
        : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint)
    {
        setMinimumSize(windowMinimum);
        setGeometry(600, 400, 500, 350);
        m_borders = new MyBorderContainer(this, quint16(borderMinimum.height()), quint16(borderMinimum.width()), 5);
    }
    QVector<QRect> geometries;

protected:
    void moveEvent(QMoveEvent *) override { geometries.append(geometry()); }
    void resizeEvent(QResizeEvent *) override
    {
        if (m_borders)
            m_borders->layoutBorders();
        geometries.append(geometry());
    }

private:
    MyBorderContainer *m_borders = nullptr;
};

/** Counts what reaches the program's widgets of the mouse's moves. */
class MouseMoves final : public QObject
{
public:
    MouseMoves() { qApp->installEventFilter(this); }
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::MouseMove && object->isWidgetType())
            ++count;
        return false;
    }
    int count = 0;
};

} // namespace

/** The border strips under a window manager, dragged by the mouse itself. */
class tst_BorderOnDesktop : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(QGuiApplication::platformName(), QString("xcb")); }
    void init()
    {
        m_window = std::make_unique<Window>();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTRY_COMPARE(m_window->pos(), QPoint(600, 400));
        m_window->geometries.clear();
    }
    void cleanup() { m_window.reset(); }

    void dragsToTheLimitAndBack_data() { strips(); }
    void dragsToTheLimitAndBack()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        const QRect before = m_window->geometry();
        const QPoint grip = gripOf(x, y);
        Desktop::xdotool({"mousemove", QString::number(grip.x()), QString::number(grip.y()), "mousedown", "1"});
        // Inwards to both limits exactly, past them, and outwards past where it began. Each step waits for the one
        // before, as steps that come in a heap count as one.
        const QSize limit(x ? least.width() : before.width(), y ? least.height() : before.height());
        for (int size = 80; size >= 0; size -= 40) {
            Desktop::moveBy({-x * 40, -y * 40});
            QTRY_COMPARE(m_window->size(), limit + QSize(qAbs(x), qAbs(y)) * size);
        }
        {
            const MouseMoves moves;
            Desktop::moveBy({-x * 25, -y * 25});
            QTRY_VERIFY(moves.count > 0);
        }
        QCOMPARE(m_window->size(), limit);
        for (int size = 60; size <= 180; size += 60) {
            Desktop::moveBy({x * 60, y * 60});
            QTRY_COMPARE(m_window->size(), limit + QSize(qAbs(x), qAbs(y)) * size);
        }
        Desktop::xdotool({"mouseup", "1"});
        QVERIFY(m_window->geometries.size() >= 6);
        checkOppositeEdges(before, x, y);
    }
    void aQuickDragLeavesTheOppositeEdgeAlone_data() { strips(); }
    void aQuickDragLeavesTheOppositeEdgeAlone()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        const QRect before = m_window->geometry();
        Desktop::dragQuickly(gripOf(x, y), QPoint(x, y));
        constexpr int distance = Desktop::QuickDragPixels;
        const QMargins outwards(x < 0 ? distance : 0, y < 0 ? distance : 0, x > 0 ? distance : 0, y > 0 ? distance : 0);
        QTRY_COMPARE(m_window->geometry(), before + outwards);
        QVERIFY(m_window->geometries.size() > 10);
    }

private:
    /** x, y: -1 for the left or top edge, 1 for the right or bottom one, 0 for none. */
    static void strips()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("y");
        QTest::newRow("left") << -1 << 0;
        QTest::newRow("right") << 1 << 0;
        QTest::newRow("top") << 0 << -1;
        QTest::newRow("bottom") << 0 << 1;
        QTest::newRow("top-left") << -1 << -1;
        QTest::newRow("bottom-left") << -1 << 1;
        QTest::newRow("top-right") << 1 << -1;
        QTest::newRow("bottom-right") << 1 << 1;
    }
    QPoint gripOf(int x, int y) const
    {
        const QRect rect = m_window->geometry();
        return {
            x < 0   ? rect.left() + 2
            : x > 0 ? rect.right() - 2
                    : rect.center().x(),
            y < 0   ? rect.top() + 2
            : y > 0 ? rect.bottom() - 2
                    : rect.center().y()};
    }
    void checkOppositeEdges(const QRect &before, int x, int y)
    {
        for (const QRect &rect : m_window->geometries) {
            QCOMPARE(x < 0 ? rect.right() : rect.left(), x < 0 ? before.right() : before.left());
            QCOMPARE(y < 0 ? rect.bottom() : rect.top(), y < 0 ? before.bottom() : before.top());
            QCOMPARE(rect.size(), rect.size().expandedTo(least));
        }
    }

    std::unique_ptr<Window> m_window;
};

QTEST_MAIN(tst_BorderOnDesktop)
#include "tst_BorderOnDesktop.moc"
