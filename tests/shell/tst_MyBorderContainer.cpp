// SPDX-License-Identifier: MIT
#include "shell/MyBorderContainer.h"

#include <QMouseEvent>
#include <QVBoxLayout>
#include <QtTest>

#include <limits>
#include <memory>

namespace {

constexpr int borderWidth = 5;

/** A frameless window that serves its borders as the main window does, and counts the mouse events that reach it. */
class Window final : public QWidget
{
public:
    explicit Window(quint16 minimumHeight = 50, quint16 minimumWidth = 50)
        : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint)
    {
        setGeometry(200, 150, 400, 300);
        m_borders = new MyBorderContainer(this, minimumHeight, minimumWidth, borderWidth);
    }

    int presses = 0;
    int releases = 0;

protected:
    void resizeEvent(QResizeEvent *) override
    {
        if (m_borders)
            m_borders->layoutBorders();
    }
    void mousePressEvent(QMouseEvent *) override { ++presses; }
    void mouseReleaseEvent(QMouseEvent *) override { ++releases; }

private:
    MyBorderContainer *m_borders = nullptr;
};

/** Where a strip lies along one side: at its beginning, its end, or over its whole length. */
enum Place { Begin, Whole, End };

struct Strip {
    const char *name;
    Place x;
    Place y;
    Qt::CursorShape cursor;
};

const Strip strips[] = {
    {"left", Begin, Whole, Qt::SizeHorCursor},       {"right", End, Whole, Qt::SizeHorCursor},
    {"top", Whole, Begin, Qt::SizeVerCursor},        {"bottom", Whole, End, Qt::SizeVerCursor},
    {"top-left", Begin, Begin, Qt::SizeFDiagCursor}, {"bottom-left", Begin, End, Qt::SizeBDiagCursor},
    {"top-right", End, Begin, Qt::SizeBDiagCursor},  {"bottom-right", End, End, Qt::SizeFDiagCursor},
};

int coordinate(Place place, int length)
{
    return place == Begin ? 0 : place == End ? length - 1 : length / 2;
}

/** The strip that gets a press at its place on the window's rim. */
QWidget *stripAt(const QWidget &window, Place x, Place y)
{
    return dynamic_cast<MyBorderContainer::MyBorder *>(
        window.childAt(coordinate(x, window.width()), coordinate(y, window.height())));
}

void sendMouse(QWidget *strip, QEvent::Type type, QPointF screenPos, Qt::MouseButton button, Qt::MouseButtons buttons)
{
    const QPointF local = screenPos - strip->mapToGlobal(QPoint(0, 0));
    QMouseEvent event(type, local, local, screenPos, button, buttons, Qt::NoModifier);
    QCoreApplication::sendEvent(strip, &event);
}

void press(QWidget *strip, QPointF screenPos, Qt::MouseButton button = Qt::LeftButton)
{
    sendMouse(strip, QEvent::MouseButtonPress, screenPos, button, button);
}

void moveTo(QWidget *strip, QPointF screenPos, Qt::MouseButtons buttons = Qt::LeftButton)
{
    sendMouse(strip, QEvent::MouseMove, screenPos, Qt::NoButton, buttons);
}

void release(QWidget *strip, QPointF screenPos, Qt::MouseButton button = Qt::LeftButton)
{
    sendMouse(strip, QEvent::MouseButtonRelease, screenPos, button, Qt::NoButton);
}

void drag(QWidget *strip, QPoint delta)
{
    const QPointF start(500, 400);
    press(strip, start);
    moveTo(strip, start + delta);
    release(strip, start + delta);
}

void show(QWidget &window)
{
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
}

void addStripRows()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    for (const Strip &strip : strips)
        QTest::newRow(strip.name) << int(strip.x) << int(strip.y);
}

/** The rectangle with the edges of a strip moved outwards by `pixels` (inwards when negative). */
QRect grown(QRect rect, Place x, Place y, int pixels)
{
    return rect.adjusted(
        x == Begin ? -pixels : 0, y == Begin ? -pixels : 0, x == End ? pixels : 0, y == End ? pixels : 0);
}

/** The mouse movement that grown() needs. */
QPoint outwards(Place x, Place y, int pixels)
{
    return {(x - Whole) * pixels, (y - Whole) * pixels};
}

} // namespace

class tst_MyBorderContainer : public QObject
{
    Q_OBJECT

private slots:
    void stripsLieAlongTheRim_data();
    void stripsLieAlongTheRim();
    void stripsShowTheirResizeCursor_data();
    void stripsShowTheirResizeCursor();
    void anyOtherKindShowsTheArrow_data();
    void anyOtherKindShowsTheArrow();
    void stripsAreTransparent();
    void stripsAppearInAVisibleWindow();
    void cornersLieAboveEdges();
    void stripsFollowEveryResize();
    void dragMovesOnlyTheStripsEdges_data() { addStripRows(); }
    void dragMovesOnlyTheStripsEdges();
    void dragAcrossAnEdgeIsIgnored();
    void reachesTheMinimumAndNoLess_data() { addStripRows(); }
    void reachesTheMinimumAndNoLess();
    void windowsOwnMinimumWins_data() { addStripRows(); }
    void windowsOwnMinimumWins();
    void minimumOfTheWindowsLayoutWins_data() { addStripRows(); }
    void minimumOfTheWindowsLayoutWins();
    void refusesToGoAboveTheWindowsMaximum_data() { addStripRows(); }
    void refusesToGoAboveTheWindowsMaximum();
    void cornerMovesBothEdgesOrNone_data();
    void cornerMovesBothEdgesOrNone();
    void windowBelowItsMinimumMayGrow_data() { addStripRows(); }
    void windowBelowItsMinimumMayGrow();
    void movesByTheStepSinceTheLastMove();
    void roundsHalfPixelsAwayFromZero_data();
    void roundsHalfPixelsAwayFromZero();
    void doesNotResizeInFullScreen_data() { addStripRows(); }
    void doesNotResizeInFullScreen();
    void onlyTheLeftButtonResizes();
    void stopsWhenTheButtonIsNoLongerHeld();
    void stopsAfterTheRelease();
    void keepsThePressAndPassesTheReleaseOn();
};

void tst_MyBorderContainer::stripsLieAlongTheRim_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<QRect>("expected");
    // The window is 400 x 300.
    const QRect expected[] = {
        {0, 0, 5, 300}, {395, 0, 5, 300}, {0, 0, 400, 5}, {0, 295, 400, 5},
        {0, 0, 6, 6},   {0, 294, 6, 6},   {394, 0, 6, 6}, {394, 294, 6, 6},
    };
    for (std::size_t i = 0; i < std::size(strips); ++i)
        QTest::newRow(strips[i].name) << int(strips[i].x) << int(strips[i].y) << expected[i];
}

void tst_MyBorderContainer::stripsLieAlongTheRim()
{
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(QRect, expected);
    Window window;
    show(window);

    const QWidget *strip = stripAt(window, Place(x), Place(y));
    QVERIFY(strip);
    QCOMPARE(strip->geometry() & window.rect(), expected);
}

void tst_MyBorderContainer::stripsShowTheirResizeCursor_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<Qt::CursorShape>("cursor");
    for (const Strip &strip : strips)
        QTest::newRow(strip.name) << int(strip.x) << int(strip.y) << strip.cursor;
}

void tst_MyBorderContainer::stripsShowTheirResizeCursor()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Window window;
    show(window);

    QTEST(stripAt(window, Place(x), Place(y))->cursor().shape(), "cursor");
}

void tst_MyBorderContainer::anyOtherKindShowsTheArrow_data()
{
    QTest::addColumn<int>("kind");
    for (const int kind : {std::numeric_limits<int>::min(), 0, 9, std::numeric_limits<int>::max()})
        QTest::addRow("%d", kind) << kind;
}

void tst_MyBorderContainer::anyOtherKindShowsTheArrow()
{
    QFETCH(int, kind);
    Window window;
    const MyBorderContainer::MyBorder strip(kind, window.findChild<MyBorderContainer *>(), &window);
    QCOMPARE(strip.cursor().shape(), Qt::ArrowCursor);
}

void tst_MyBorderContainer::stripsAreTransparent()
{
    Window window;
    window.setStyleSheet(
        QStringLiteral("QWidget { background-color: #123456; } QLabel { background-color: #ff0000; }"));
    show(window);

    const QImage picture = window.grab().toImage();
    for (const Strip &strip : strips) {
        QCOMPARE(
            picture.pixelColor(coordinate(strip.x, picture.width()), coordinate(strip.y, picture.height())),
            QColor(0x12, 0x34, 0x56));
        QCOMPARE(
            stripAt(window, strip.x, strip.y)->styleSheet(), QStringLiteral("QLabel {background-color: transparent;}"));
    }
}

void tst_MyBorderContainer::stripsAppearInAVisibleWindow()
{
    QWidget window;
    window.resize(400, 300);
    show(window);
    QVERIFY(!stripAt(window, Begin, Whole));

    new MyBorderContainer(&window, 50, 50, borderWidth);
    for (const Strip &strip : strips)
        QVERIFY(stripAt(window, strip.x, strip.y));
}

void tst_MyBorderContainer::cornersLieAboveEdges()
{
    Window window;
    show(window);

    for (Place x : {Begin, End}) {
        for (Place y : {Begin, End}) {
            const QWidget *corner = stripAt(window, x, y);
            const QRect square = corner->geometry() & window.rect();
            QCOMPARE(square.size(), QSize(borderWidth + 1, borderWidth + 1));
            for (int column = square.left(); column <= square.right(); ++column) {
                for (int row = square.top(); row <= square.bottom(); ++row)
                    QCOMPARE(window.childAt(column, row), corner);
            }
        }
    }
}

void tst_MyBorderContainer::stripsFollowEveryResize()
{
    Window window;
    show(window);
    const QWidget *right = stripAt(window, End, Whole);
    const QWidget *bottomRight = stripAt(window, End, End);
    const auto liesAtTheRim = [&] {
        return stripAt(window, End, Whole) == right && stripAt(window, End, End) == bottomRight &&
               right->height() == window.height();
    };

    window.resize(500, 420);
    QVERIFY(liesAtTheRim());

    window.showFullScreen();
    QTRY_VERIFY(window.size() != QSize(500, 420));
    QVERIFY(liesAtTheRim());

    window.showNormal();
    QTRY_COMPARE(window.size(), QSize(500, 420));
    QVERIFY(liesAtTheRim());

    drag(stripAt(window, End, Whole), {-60, 0});
    QCOMPARE(window.size(), QSize(440, 420));
    QVERIFY(liesAtTheRim());
}

void tst_MyBorderContainer::dragMovesOnlyTheStripsEdges()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Window window;
    show(window);
    const QRect before = window.geometry();
    QWidget *strip = stripAt(window, Place(x), Place(y));

    drag(strip, outwards(Place(x), Place(y), 30));
    QCOMPARE(window.geometry(), grown(before, Place(x), Place(y), 30));

    drag(strip, outwards(Place(x), Place(y), -70));
    QCOMPARE(window.geometry(), grown(before, Place(x), Place(y), -40));
}

void tst_MyBorderContainer::dragAcrossAnEdgeIsIgnored()
{
    Window window;
    show(window);
    const QRect before = window.geometry();

    drag(stripAt(window, Begin, Whole), {0, 40});
    drag(stripAt(window, End, Whole), {0, -40});
    drag(stripAt(window, Whole, Begin), {40, 0});
    drag(stripAt(window, Whole, End), {-40, 0});
    QCOMPARE(window.geometry(), before);
}

void tst_MyBorderContainer::reachesTheMinimumAndNoLess()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Window window(170, 270); // 130 below the window's size both ways
    show(window);
    const QRect before = window.geometry();
    QWidget *strip = stripAt(window, Place(x), Place(y));

    for (int pixels : {131, 299, 400, 2000}) {
        drag(strip, outwards(Place(x), Place(y), -pixels));
        QCOMPARE(window.geometry(), before);
    }
    drag(strip, outwards(Place(x), Place(y), -130));
    QCOMPARE(window.geometry(), grown(before, Place(x), Place(y), -130));
}

void tst_MyBorderContainer::windowsOwnMinimumWins()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Window window;
    window.setMinimumSize(270, 170);
    show(window);
    const QRect before = window.geometry();
    QWidget *strip = stripAt(window, Place(x), Place(y));

    drag(strip, outwards(Place(x), Place(y), -131));
    QCOMPARE(window.geometry(), before);
    drag(strip, outwards(Place(x), Place(y), -130));
    QCOMPARE(window.geometry(), grown(before, Place(x), Place(y), -130));
}

void tst_MyBorderContainer::minimumOfTheWindowsLayoutWins()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Window window;
    auto *layout = new QVBoxLayout(&window);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *content = new QSpacerItem(0, 0);
    layout->addItem(content);
    show(window);
    const QRect before = window.geometry();
    QWidget *strip = stripAt(window, Place(x), Place(y));

    // The window learns of it with the next event; the drag comes first.
    content->changeSize(270, 170);
    layout->invalidate();
    drag(strip, outwards(Place(x), Place(y), -131));
    QCOMPARE(window.geometry(), before);
    drag(strip, outwards(Place(x), Place(y), -130));
    QCOMPARE(window.geometry(), grown(before, Place(x), Place(y), -130));
}

void tst_MyBorderContainer::refusesToGoAboveTheWindowsMaximum()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Window window;
    window.setMaximumSize(430, 330);
    show(window);
    const QRect before = window.geometry();
    QWidget *strip = stripAt(window, Place(x), Place(y));

    drag(strip, outwards(Place(x), Place(y), 31));
    QCOMPARE(window.geometry(), before);
    drag(strip, outwards(Place(x), Place(y), 30));
    QCOMPARE(window.geometry(), grown(before, Place(x), Place(y), 30));
}

void tst_MyBorderContainer::cornerMovesBothEdgesOrNone_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::addColumn<QPoint>("inwards");
    for (const Strip &strip : strips) {
        if (strip.x == Whole || strip.y == Whole)
            continue;
        QTest::addRow("%s, too narrow", strip.name) << int(strip.x) << int(strip.y) << QPoint(131, 10);
        QTest::addRow("%s, too low", strip.name) << int(strip.x) << int(strip.y) << QPoint(10, 131);
    }
}

void tst_MyBorderContainer::cornerMovesBothEdgesOrNone()
{
    QFETCH(int, x);
    QFETCH(int, y);
    QFETCH(QPoint, inwards);
    Window window(170, 270);
    show(window);
    const QRect before = window.geometry();

    drag(stripAt(window, Place(x), Place(y)), {(Whole - x) * inwards.x(), (Whole - y) * inwards.y()});
    QCOMPARE(window.geometry(), before);
}

void tst_MyBorderContainer::windowBelowItsMinimumMayGrow()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Window window(350, 450);
    show(window);
    const QRect before = window.geometry();
    QWidget *strip = stripAt(window, Place(x), Place(y));

    drag(strip, outwards(Place(x), Place(y), -1));
    QCOMPARE(window.geometry(), before);
    drag(strip, outwards(Place(x), Place(y), 10));
    QCOMPARE(window.geometry(), grown(before, Place(x), Place(y), 10));
}

void tst_MyBorderContainer::movesByTheStepSinceTheLastMove()
{
    Window window;
    show(window);
    QRect expected = window.geometry();
    QWidget *left = stripAt(window, Begin, Whole);

    press(left, {200, 300});
    moveTo(left, {220, 300});
    expected.setLeft(expected.left() + 20);
    QCOMPARE(window.geometry(), expected);

    moveTo(left, {250, 300});
    expected.setLeft(expected.left() + 30);
    QCOMPARE(window.geometry(), expected);

    // 350 wide by now: a step of 301 is refused, and the way back counts from where the mouse is.
    moveTo(left, {551, 300});
    QCOMPARE(window.geometry(), expected);
    moveTo(left, {541, 300});
    expected.setLeft(expected.left() - 10);
    QCOMPARE(window.geometry(), expected);
}

void tst_MyBorderContainer::roundsHalfPixelsAwayFromZero_data()
{
    QTest::addColumn<qreal>("from");
    QTest::addColumn<qreal>("to");
    QTest::addColumn<int>("delta");
    QTest::newRow("half, right of zero") << 100.5 << 110.0 << 9;
    QTest::newRow("less than half, right of zero") << 100.4 << 110.0 << 10;
    QTest::newRow("half, left of zero") << -100.5 << -90.0 << 11;
    QTest::newRow("less than half, left of zero") << -100.4 << -90.0 << 10;
    QTest::newRow("across zero") << -0.5 << 0.5 << 2;
}

void tst_MyBorderContainer::roundsHalfPixelsAwayFromZero()
{
    QFETCH(qreal, from);
    QFETCH(qreal, to);
    QFETCH(int, delta);
    Window window;
    show(window);
    const QSize before = window.size();
    QWidget *corner = stripAt(window, End, End);

    press(corner, {from, from});
    moveTo(corner, {to, to});
    QCOMPARE(window.size(), before + QSize(delta, delta));
}

void tst_MyBorderContainer::doesNotResizeInFullScreen()
{
    QFETCH(int, x);
    QFETCH(int, y);
    Window window;
    show(window);
    const QRect normal = window.geometry();
    window.showFullScreen();
    QTRY_VERIFY(window.geometry() != normal);
    const QRect full = window.geometry();
    QWidget *strip = stripAt(window, Place(x), Place(y));

    const QPointF start(500, 400);
    press(strip, start);
    moveTo(strip, start + outwards(Place(x), Place(y), -40));
    QCOMPARE(window.geometry(), full);

    // Not every platform resizes a full-screen window; a normal one shows whether the press started anything.
    window.showNormal();
    QTRY_COMPARE(window.geometry(), normal);
    moveTo(strip, start + outwards(Place(x), Place(y), 40));
    QCOMPARE(window.geometry(), normal);
}

void tst_MyBorderContainer::onlyTheLeftButtonResizes()
{
    Window window;
    show(window);
    const QRect before = window.geometry();
    QWidget *right = stripAt(window, End, Whole);

    press(right, {500, 300}, Qt::RightButton);
    moveTo(right, {540, 300}, Qt::RightButton);
    moveTo(right, {540, 300}, Qt::LeftButton | Qt::RightButton);
    QCOMPARE(window.geometry(), before);
}

void tst_MyBorderContainer::stopsWhenTheButtonIsNoLongerHeld()
{
    Window window;
    show(window);
    const QRect before = window.geometry();
    QWidget *right = stripAt(window, End, Whole);

    press(right, {500, 300});
    moveTo(right, {540, 300}, Qt::RightButton);
    QCOMPARE(window.geometry(), before);
}

void tst_MyBorderContainer::stopsAfterTheRelease()
{
    Window window;
    show(window);
    const QRect before = window.geometry();
    QWidget *right = stripAt(window, End, Whole);

    press(right, {500, 300});
    release(right, {500, 300});
    moveTo(right, {540, 300});
    QCOMPARE(window.geometry(), before);
}

void tst_MyBorderContainer::keepsThePressAndPassesTheReleaseOn()
{
    Window window;
    show(window);
    QWidget *right = stripAt(window, End, Whole);

    for (Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) {
        press(right, {500, 300}, button);
        release(right, {500, 300}, button);
    }
    QCOMPARE(window.presses, 0);
    QCOMPARE(window.releases, 2);
}

QTEST_MAIN(tst_MyBorderContainer)
#include "tst_MyBorderContainer.moc"
