// SPDX-License-Identifier: MIT
#include "workbench/AxisRow.h"

#include "workbench/EventWords.h"
#include "workbench/RecorderPlot.h"

#include <QPainter>

#include <cmath>

namespace {

QString shown(double value)
{
    if (!std::isfinite(value))
        return QStringLiteral("–");
    QString text = QString::number(value, 'f', 3);
    if (text == QLatin1String("-0.000"))
        text.remove(0, 1);
    return text.replace(QLatin1Char('-'), QChar(0x2212));
}

} // namespace

AxisRow::AxisRow(const AxisDescription &axis, const RecorderPlot *plot, QWidget *parent)
    : QAbstractButton(parent)
    , m_axis(axis)
    , m_plot(plot)
{
    setCheckable(true);
    setFocusPolicy(Qt::TabFocus);
    setText(axis.name());
}

void AxisRow::setReadings(const Sample &now, bool isCurrent, const std::optional<Sample> &cursor)
{
    const double nothing = std::nan("");
    const QStringList texts{
        shown(now.position), shown(isCurrent ? now.velocity : nothing), shown(cursor ? cursor->position : nothing),
        shown(cursor ? cursor->velocity : nothing)};
    if (texts == m_texts && isCurrent == m_isCurrent)
        return;
    m_texts = texts;
    m_isCurrent = isCurrent;
    setAccessibleName(QStringLiteral("%1 %2 %3").arg(m_axis.name(), texts.first(), m_axis.unit));
    update();
}

void AxisRow::paintEvent(QPaintEvent *)
{
    const PlotColours colours = m_plot->colours();
    const QColor colour = EventWords::colourOf(m_axis.index, colours);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QFont large = [this] {
        QFont font = this->font();
        font.setPixelSize(16);
        return font;
    }();
    QFont small = large;
    small.setPixelSize(14);
    const double top = height() / 2.0 - 26; // of a row of 52

    const QRectF box(13, top + 8, 18, 18);
    if (isChecked()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawRoundedRect(box, 4, 4);
        painter.setPen(QPen(colours.well, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const QPointF check[] = {
            box.topLeft() + QPointF(5, 9.2), box.topLeft() + QPointF(8, 12.2), box.topLeft() + QPointF(13.2, 6)};
        painter.drawPolyline(check, 3);
    } else {
        painter.setPen(QPen(colour, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(box.adjusted(1, 1, -1, -1), 3, 3);
    }
    if (hasFocus()) {
        painter.setPen(QPen(colours.focus, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(4.5, 2.5, -4.5, -2.5), 4, 4);
    }

    const QColor strong = isChecked() && m_isCurrent ? colours.text : colours.textSecondary;
    const auto write = [&](double x, double width, double y, int align, const QFont &font, const QColor &pen,
                           const QString &text) {
        painter.setFont(font);
        painter.setPen(pen);
        painter.drawText(
            QRectF(x, y, width, 22), align | Qt::AlignVCenter,
            painter.fontMetrics().elidedText(text, Qt::ElideRight, int(width) + 1));
    };
    const double upper = top + 6;
    const double lower = top + 27;
    const double nowEnd = 168;
    const double cursorEnd = width() - 12;
    write(40, 62, upper, Qt::AlignLeft, large, isChecked() ? colours.text : colours.textSecondary, m_axis.name());
    write(40, 68, lower, Qt::AlignLeft, small, colours.textSecondary, m_axis.modelName);
    if (m_texts.isEmpty())
        return;
    write(nowEnd - 76, 76, upper, Qt::AlignRight, large, strong, m_texts.at(0));
    write(nowEnd + 5, 40, upper, Qt::AlignLeft, small, colours.textSecondary, m_axis.unit);
    write(nowEnd - 60, 60, lower, Qt::AlignRight, small, colours.textSecondary, m_texts.at(1));
    write(nowEnd + 5, 44, lower, Qt::AlignLeft, small, colours.textSecondary, m_axis.unit + QStringLiteral("/s"));
    write(cursorEnd - 76, 76, upper, Qt::AlignRight, large, strong, m_texts.at(2));
    write(cursorEnd - 62, 62, lower, Qt::AlignRight, small, colours.textSecondary, m_texts.at(3));
}
