// SPDX-License-Identifier: MIT
#include "axis/PositionLabel.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOption>

PositionLabel::PositionLabel(QWidget *parent)
    : QLabel(parent)
{
}

void PositionLabel::setUnitColor(const QColor &color)
{
    m_unitColor = color;
    update();
}

void PositionLabel::setDimmed(bool dimmed)
{
    if (dimmed == m_bDimmed)
        return;
    m_bDimmed = dimmed;
    update();
}

void PositionLabel::paintEvent(QPaintEvent *)
{
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);

    const int blank = text().indexOf(QLatin1Char(' '));
    const QString number = text().left(blank);
    const QString unit = blank < 0 ? QString() : text().mid(blank + 1);
    const int height = fontInfo().pixelSize();
    QFont numberFont = font();
    numberFont.setPixelSize(height);
    QFont unitFont = numberFont;
    unitFont.setPixelSize(height / 2);
    const QFontMetrics unitMetrics(unitFont);
    const int gap = unit.isEmpty() ? 0 : unitFont.pixelSize() / 2;

    // The numbers of all axes end at the same place, whatever their units.
    const int unitWidth =
        unit.isEmpty() ? 0
                       : qMax(unitMetrics.horizontalAdvance(unit), unitMetrics.horizontalAdvance(QStringLiteral("mm")));
    const QRect area = contentsRect();
    const int baseline = area.top() + (area.height() + fontMetrics().capHeight()) / 2;
    const int unitLeft = area.right() + 1 - unitWidth;
    // A degree sign stands as high as the number, not as high as its own small letters.
    const int raise = unit == QStringLiteral("°") ? fontMetrics().capHeight() - unitMetrics.capHeight() : 0;

    const int room = unitLeft - gap - area.left();
    const int needed = QFontMetrics(numberFont).horizontalAdvance(number);
    if (needed > room)
        numberFont.setPixelSize(qMax(unitFont.pixelSize(), height * room / needed));
    // To a fraction of a pixel, or the digits would shift with their number.
    const QFontMetricsF numberMetrics(numberFont);
    const QString shown = numberMetrics.elidedText(number, Qt::ElideRight, room);

    painter.setFont(numberFont);
    painter.setPen(m_bDimmed ? m_unitColor : palette().color(foregroundRole()));
    painter.drawText(QPointF(unitLeft - gap - numberMetrics.horizontalAdvance(shown), baseline), shown);
    painter.setFont(unitFont);
    painter.setPen(m_unitColor);
    painter.drawText(unitLeft, baseline - raise, unit);
}
