// SPDX-License-Identifier: MIT
#include "workbench/StepDelegate.h"

#include "workbench/StepModel.h"

#include <QPainter>
#include <QTableView>

namespace {

constexpr int margin = 10;
constexpr int barWidth = 3;
constexpr int markX = 19;

using Mark = StepModel::Mark;

} // namespace

StepDelegate::StepDelegate(const SequenceColours *colours, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_colours(colours)
{
}

void StepDelegate::paintMark(QPainter *painter, const QPointF &centre, int mark) const
{
    const auto stroke = [&](const QColor &colour, const QVector<QPointF> &points) {
        painter->setPen(QPen(colour, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->drawPolyline(points.constData(), points.size());
    };
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate(centre);
    painter->setBrush(Qt::NoBrush);
    switch (Mark(mark)) {
    case Mark::None:
        break;
    case Mark::Done:
        stroke(m_colours->quiet, {{-5, 0}, {-1.5, 3.5}, {5, -4}});
        break;
    case Mark::Runs: {
        const QPointF triangle[] = {{-3.5, -5}, {4.5, 0}, {-3.5, 5}};
        painter->setPen(Qt::NoPen);
        painter->setBrush(m_colours->focus);
        painter->drawPolygon(triangle, 3);
        break;
    }
    case Mark::Pauses:
        stroke(m_colours->focus, {{-2.5, -4.5}, {-2.5, 4.5}});
        stroke(m_colours->focus, {{2.5, -4.5}, {2.5, 4.5}});
        break;
    case Mark::Stopped:
        painter->fillRect(QRectF(-4.5, -4.5, 9, 9), m_colours->quiet);
        break;
    case Mark::Failed:
        stroke(m_colours->alarm, {{-4.5, -4.5}, {4.5, 4.5}});
        stroke(m_colours->alarm, {{-4.5, 4.5}, {4.5, -4.5}});
        break;
    case Mark::Fault:
        stroke(m_colours->warning, {{0, -5.5}, {0, 1}});
        stroke(m_colours->warning, {{0, 5.5}, {0, 5.5}});
        painter->drawPoint(QPointF(0, 5.5));
        break;
    }
    painter->restore();
}

void StepDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const auto mark = Mark(index.data(StepModel::MarkRole).toInt());
    const bool isSelected = option.state & QStyle::State_Selected;
    const QRect &cell = option.rect;
    painter->save();
    painter->setClipRect(cell);
    painter->setFont(option.font);
    const bool isRunning = mark == Mark::Runs || mark == Mark::Pauses;
    if (isSelected)
        painter->fillRect(cell, m_colours->action);
    else if (isRunning)
        painter->fillRect(cell, m_colours->running);
    else if (mark == Mark::Failed)
        painter->fillRect(cell, m_colours->failed);
    painter->fillRect(QRect(cell.left(), cell.bottom(), cell.width(), 1), m_colours->line);

    QRect line(cell.left(), cell.top(), cell.width(), LineHeight);
    if (index.column() == StepModel::Number) {
        const QColor bar = isRunning              ? m_colours->focus
                           : mark == Mark::Failed ? m_colours->stop
                           : mark == Mark::Fault  ? m_colours->warning
                                                  : QColor();
        if (bar.isValid())
            painter->fillRect(QRect(cell.left(), cell.top(), barWidth, cell.height()), bar);
        paintMark(painter, QPointF(cell.left() + markX, line.center().y()), int(mark));
    }
    const QString text = index.data().toString();
    const bool isDash = text == QStringLiteral("–");
    const bool isQuiet = mark == Mark::Done || (index.column() == StepModel::Number && mark == Mark::None);
    painter->setPen(
        isSelected ? m_colours->text
        : isDash   ? m_colours->faint
        : isQuiet  ? m_colours->quiet
                   : m_colours->text);
    line.adjust(margin, 0, -margin, 0);
    painter->drawText(
        line, index.data(Qt::TextAlignmentRole).toInt(),
        QFontMetrics(option.font).elidedText(text, Qt::ElideRight, line.width()));

    // The reason goes through all columns: each paints its part of it.
    const QString reason = index.data(StepModel::ReasonRole).toString();
    const auto *const table = qobject_cast<const QTableView *>(option.widget);
    if (table && !reason.isEmpty() && index.column() > StepModel::Number) {
        const int left = table->columnViewportPosition(StepModel::What) + margin;
        const int right = table->viewport()->width() - margin;
        painter->setPen(m_colours->text);
        painter->drawText(
            QRect(left, cell.top() + LineHeight - 7, right - left, ReasonHeight), Qt::AlignLeft | Qt::AlignVCenter,
            QFontMetrics(option.font).elidedText(reason, Qt::ElideRight, right - left));
    }
    painter->restore();
}
