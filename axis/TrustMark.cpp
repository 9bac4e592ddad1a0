// SPDX-License-Identifier: MIT
#include "axis/TrustMark.h"

#include <QDateTime>
#include <QEvent>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int signSize = 14; // the sign's square, with the room around it
constexpr int signGap = 6;

QString timeOf(std::chrono::system_clock::time_point at)
{
    return QDateTime::fromSecsSinceEpoch(std::chrono::system_clock::to_time_t(at)).toString(QStringLiteral("hh:mm"));
}

} // namespace

TrustMark::TrustMark(QWidget *parent)
    : QLabel(parent)
{
    showTrust();
}

void TrustMark::setTrust(const AxisTrust &trust)
{
    if (trust == m_trust)
        return;
    m_trust = trust;
    showTrust();
}

void TrustMark::showTrust()
{
    setText(words());
    setAccessibleName(tr("位置：%1").arg(text()));
}

QString TrustMark::words() const
{
    switch (m_trust.kind) {
    case AxisTrust::NotHomed:
        break;
    case AxisTrust::Homed:
        return tr("已回零 %1").arg(timeOf(m_trust.at));
    case AxisTrust::LinkLost:
        return tr("%1 起连接中断").arg(timeOf(m_trust.at));
    case AxisTrust::LinkWasLost:
        return tr("%1 连接曾中断，请核对位置").arg(timeOf(m_trust.at));
    case AxisTrust::NoAnswer:
        return tr("%1 秒无应答").arg(m_trust.seconds);
    }
    return tr("未回零");
}

QColor TrustMark::color() const
{
    switch (m_trust.kind) {
    case AxisTrust::Homed:
        return m_quietColor;
    case AxisTrust::LinkLost:
    case AxisTrust::NoAnswer:
        return m_alarmColor;
    case AxisTrust::NotHomed:
    case AxisTrust::LinkWasLost:
        break;
    }
    return m_warningColor;
}

QSize TrustMark::sizeHint() const
{
    const QMargins margins = contentsMargins();
    return {
        signSize + signGap + fontMetrics().horizontalAdvance(text()) + margins.left() + margins.right(),
        fontMetrics().height() + margins.top() + margins.bottom()};
}

void TrustMark::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        showTrust();
    QLabel::changeEvent(event);
}

void TrustMark::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect area = contentsRect();
    const int width = fontMetrics().horizontalAdvance(text());
    const int left = area.right() + 1 - width;
    painter.setPen(color());
    painter.drawText(QRect(left, area.top(), width, area.height()), Qt::AlignVCenter, text());

    // Told apart by shape as well as by colour: a ring, a check or a cross.
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color(), 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.translate(left - signGap - signSize / 2.0, area.top() + area.height() / 2.0 + 0.5);
    switch (m_trust.kind) {
    case AxisTrust::NotHomed:
    case AxisTrust::LinkWasLost:
        painter.drawEllipse(QPointF(0, 0), 4.2, 4.2);
        break;
    case AxisTrust::Homed: {
        QPainterPath check(QPointF(-4.5, 0.2));
        check.lineTo(-1.4, 3.3);
        check.lineTo(4.5, -3.2);
        painter.drawPath(check);
        break;
    }
    case AxisTrust::LinkLost:
    case AxisTrust::NoAnswer:
        painter.drawLine(QPointF(-3.5, -3.5), QPointF(3.5, 3.5));
        painter.drawLine(QPointF(-3.5, 3.5), QPointF(3.5, -3.5));
        break;
    }
}
