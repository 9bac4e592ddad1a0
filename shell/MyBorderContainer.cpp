// SPDX-License-Identifier: MIT
#include "shell/MyBorderContainer.h"

#include <QMouseEvent>

#include <cmath>
#include <iterator>

namespace {

struct BorderKind {
    Qt::Edges edges;
    Qt::CursorShape cursor;
};

BorderKind borderKind(int kind)
{
    static constexpr BorderKind kinds[] = {
        {Qt::LeftEdge, Qt::SizeHorCursor},
        {Qt::RightEdge, Qt::SizeHorCursor},
        {Qt::TopEdge, Qt::SizeVerCursor},
        {Qt::BottomEdge, Qt::SizeVerCursor},
        {Qt::TopEdge | Qt::LeftEdge, Qt::SizeFDiagCursor},
        {Qt::BottomEdge | Qt::LeftEdge, Qt::SizeBDiagCursor},
        {Qt::TopEdge | Qt::RightEdge, Qt::SizeBDiagCursor},
        {Qt::BottomEdge | Qt::RightEdge, Qt::SizeFDiagCursor},
    };
    if (kind < 1 || kind > int(std::size(kinds)))
        return {{}, Qt::ArrowCursor};
    return kinds[kind - 1];
}

/** Rounds halves away from zero, also left of and above the primary screen, where QPointF::toPoint() does not. */
QPoint screenPos(const QMouseEvent *event)
{
    return {int(std::lround(event->screenPos().x())), int(std::lround(event->screenPos().y()))};
}

} // namespace

MyBorderContainer::MyBorder::MyBorder(int kind, MyBorderContainer *container, QWidget *window)
    : QLabel(window)
    , m_iKind(kind)
    , m_container(container)
{
    setStyleSheet(QStringLiteral("QLabel {background-color: transparent;}"));
    setCursor(borderKind(kind).cursor);
    show(); // the window may be visible already
}

void MyBorderContainer::MyBorder::layOut(QSize window, int borderWidth)
{
    const Qt::Edges edges = borderKind(m_iKind).edges;
    const bool onSide = edges & (Qt::LeftEdge | Qt::RightEdge);
    const bool onTopOrBottom = edges & (Qt::TopEdge | Qt::BottomEdge);
    const int thickness = borderWidth + (onSide && onTopOrBottom ? 1 : 0);

    const int width = onSide ? thickness : window.width();
    const int height = onTopOrBottom ? thickness : window.height();
    const int x = edges & Qt::RightEdge ? window.width() - width : 0;
    const int y = edges & Qt::BottomEdge ? window.height() - height : 0;
    setGeometry(x, y, width, height);
}

void MyBorderContainer::MyBorder::mousePressEvent(QMouseEvent *event)
{
    if (!window()->isFullScreen() && event->button() == Qt::LeftButton) {
        m_bPressed = true;
        m_lastScreenPos = screenPos(event);
        m_container->m_dragged = window()->geometry();
    }
    event->accept();
}

void MyBorderContainer::MyBorder::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_bPressed || !(event->buttons() & Qt::LeftButton)) {
        QLabel::mouseMoveEvent(event);
        return;
    }
    const QPoint pos = screenPos(event);
    const QPoint delta = pos - m_lastScreenPos;
    m_container->moveEdges(m_iKind, delta.x(), delta.y());
    m_lastScreenPos = pos;
}

void MyBorderContainer::MyBorder::mouseReleaseEvent(QMouseEvent *event)
{
    m_bPressed = false;
    m_container->m_dragged.reset();
    QLabel::mouseReleaseEvent(event);
}

MyBorderContainer::MyBorderContainer(QWidget *window, quint16 minimumHeight, quint16 minimumWidth, quint16 borderWidth)
    : QObject(window)
    , m_window(window)
    , m_minimumSize(minimumWidth, minimumHeight)
    , m_iBorderWidth(borderWidth)
{
    // Later children lie above earlier ones: the corners come last, so they win over the edges.
    static constexpr std::array<int, 8> creationOrder = {1, 2, 4, 3, 8, 7, 6, 5};
    for (std::size_t i = 0; i < m_borders.size(); ++i)
        m_borders[i] = new MyBorder(creationOrder[i], this, window);
    layoutBorders();
}

void MyBorderContainer::layoutBorders()
{
    for (MyBorder *border : m_borders)
        border->layOut(m_window->size(), m_iBorderWidth);
}

void MyBorderContainer::moveEdges(int kind, int dx, int dy)
{
    const Qt::Edges edges = borderKind(kind).edges;
    // The desktop reports late what it has done with an earlier step, and until then the window's geometry is that of
    // the step before. Steps added to it would get lost, and the opposite edge would wander off.
    const QRect before = m_dragged.value_or(m_window->geometry());
    QRect target = before;
    if (edges & Qt::LeftEdge)
        target.setLeft(target.left() + dx);
    if (edges & Qt::RightEdge)
        target.setRight(target.right() + dx);
    if (edges & Qt::TopEdge)
        target.setTop(target.top() + dy);
    if (edges & Qt::BottomEdge)
        target.setBottom(target.bottom() + dy);

    if (!allows(target.size(), before.size()))
        return;
    if (m_dragged)
        m_dragged = target;
    m_window->setGeometry(target);
    layoutBorders();
}

bool MyBorderContainer::allows(QSize size, QSize before) const
{
    // setGeometry() clamps the size but not the position, so a size that it would clamp moves the opposite edge.
    const QSize minimum =
        m_minimumSize.expandedTo(m_window->minimumSize()).expandedTo(m_window->minimumSizeHint()).boundedTo(before);
    return size == size.expandedTo(minimum).boundedTo(m_window->maximumSize());
}
