// SPDX-License-Identifier: MIT
#include "shell/MyBorderContainer.h"

#include <QProcess>
#include <QtTest>

#include <memory>

namespace {

constexpr QSize borderMinimum(320, 240);
constexpr QSize windowMinimum(360, 200); // the border's height and the window's width are the larger ones
constexpr QSize least(360, 240);

void xdotool(const QStringList &arguments)
{
    QProcess process;
    process.start("xdotool", arguments);
    // What the mouse does is ours to handle meanwhile.
    QTRY_COMPARE(process.state(), QProcess::NotRunning);
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
}

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
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
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
        xdotool({"mousemove", QString::number(grip.x()), QString::number(grip.y()), "mousedown", "1"});
        // Inwards far past both limits, one pixel at a time, so that it comes to rest at the limit exactly.
        move(-x, -y, 170);
        const QSize limit(x ? least.width() : before.width(), y ? least.height() : before.height());
        // A corner stops as soon as one of its edges is at its limit.
        if (x && y)
            QTRY_VERIFY(m_window->width() == least.width() || m_window->height() == least.height());
        else
            QTRY_COMPARE(m_window->size(), limit);
        const QSize atLimit = m_window->size();
        move(-x, -y, 40);
        QTRY_COMPARE(m_window->size(), atLimit);
        // Outwards, past where it began.
        move(x, y, 260);
        xdotool({"mouseup", "1"});
        QTRY_VERIFY(m_window->width() >= before.width() && m_window->height() >= before.height());
        QVERIFY(m_window->size() != before.size());
        checkOppositeEdges(before, x, y);
    }
    void aQuickDragLeavesTheOppositeEdgeAlone_data() { strips(); }
    void aQuickDragLeavesTheOppositeEdgeAlone()
    {
        QFETCH(int, x);
        QFETCH(int, y);
        const QRect before = m_window->geometry();
        const QPoint grip = gripOf(x, y);
        QStringList drag{"mousemove", QString::number(grip.x()), QString::number(grip.y()), "mousedown", "1"};
        for (int k = 0; k < 60; ++k) {
            const int step = k % 20 < 10 ? 7 : -7;
            drag << "mousemove_relative"
                 << "--" << QString::number(x * step) << QString::number(y * step);
        }
        drag << "mouseup"
             << "1";
        xdotool(drag);
        QTRY_COMPARE(m_window->geometry(), before); // as much out as in
        checkOppositeEdges(before, x, y);
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
    static void move(int dx, int dy, int pixels)
    {
        QStringList moves;
        for (int k = 0; k < pixels; ++k)
            moves << "mousemove_relative"
                  << "--" << QString::number(dx) << QString::number(dy);
        xdotool(moves);
    }
    void checkOppositeEdges(const QRect &before, int x, int y)
    {
        QVERIFY(m_window->geometries.size() > 10);
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
