// SPDX-License-Identifier: MIT
#include "workbench/DifferenceDelegate.h"

#include <QPainter>

namespace {

constexpr int barWidth = 3;
constexpr int margin = 10;
constexpr int nameLeft = 40; // behind the mark
constexpr int unitSize = 14; // pixels

} // namespace

void DifferenceDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const bool isChanged = index.data(ChangedRole).toBool();
    const bool isName = index.column() == 0;
    QRect place = option.rect;
    painter->save();
    if (isChanged)
        painter->fillRect(place, colours.ground);
    if (option.state & QStyle::State_HasFocus) {
        painter->setPen(option.palette.color(QPalette::Highlight));
        painter->drawRect(place.adjusted(0, 0, -1, -1));
    }
    painter->setFont(option.font);
    if (isChanged && isName) {
        painter->fillRect(QRect(place.left(), place.top(), barWidth, place.height()), colours.mark);
        painter->setPen(colours.mark);
        painter->drawText(
            QRect(place.left(), place.top(), nameLeft, place.height()), Qt::AlignCenter, QStringLiteral("≠"));
    }
    place.adjust(isName ? nameLeft : margin, 0, -margin, 0);

    const QString unit = index.data(UnitRole).toString();
    QFont small(option.font);
    small.setPixelSize(unitSize);
    const int unitWidth = unit.isEmpty() ? 0 : QFontMetrics(small).horizontalAdvance(unit) + 8;
    const QFontMetrics metrics(option.font);
    const QString text = metrics.elidedText(index.data().toString(), Qt::ElideRight, place.width() - unitWidth);
    painter->setPen(isChanged ? colours.text : colours.quiet);
    painter->drawText(place, Qt::AlignLeft | Qt::AlignVCenter, text);
    if (unitWidth > 0) {
        place.setLeft(place.left() + metrics.horizontalAdvance(text) + 6);
        painter->setPen(colours.quiet);
        painter->setFont(small);
        painter->drawText(place, Qt::AlignLeft | Qt::AlignVCenter, unit);
    }
    painter->restore();
}
