// SPDX-License-Identifier: MIT
#include "workbench/RecorderPlot.h"

#include "workbench/EventWords.h"
#include "workbench/PlotModule.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr qint64 leastSpan = RecorderPlot::Second / 10;
constexpr qint64 leastAll = 10 * RecorderPlot::Second;
constexpr double shiftByKey = 0.1; // of what is shown
constexpr double zoomByKey = 1.5;
constexpr double zoomByNotch = 1.25;
constexpr int coloursWithoutDash = 4;

/** The times that lie in a gap of every track. */
QVector<TrackView::Span> common(const QVector<TrackView::Span> &a, const QVector<TrackView::Span> &b)
{
    QVector<TrackView::Span> result;
    for (const auto &one : a) {
        for (const auto &other : b) {
            const TrackView::Span both{std::max(one.first, other.first), std::min(one.second, other.second)};
            if (both.first < both.second)
                result.append(both);
        }
    }
    return result;
}

} // namespace

RecorderPlot::RecorderPlot(QWidget *parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setMinimumSize(420, 320);
}

void RecorderPlot::setRecording(const Recording &recording)
{
    m_recording = recording;
    update();
}

void RecorderPlot::setAxisShown(int axis, bool shown)
{
    if (shown)
        m_hidden.remove(axis);
    else
        m_hidden.insert(axis);
    update();
}

// ---- What is shown -------------------------------------------------------------------------------------------------

qint64 RecorderPlot::toUs() const
{
    return m_isLive ? m_recording.nowUs : m_toUs;
}

qint64 RecorderPlot::fromUs() const
{
    return m_isAll ? std::min(m_recording.startUs(), toUs() - leastAll) : toUs() - m_spanUs;
}

void RecorderPlot::setSpan(qint64 us)
{
    m_isAll = us == All;
    if (m_isAll) {
        m_toUs = std::max(m_toUs, m_recording.endUs());
    } else {
        m_spanUs = us;
    }
    update();
    emit signal_viewChanged();
}

void RecorderPlot::setLive(bool live)
{
    m_toUs = toUs();
    m_isLive = live;
    update();
    emit signal_viewChanged();
}

void RecorderPlot::showTime(qint64 us)
{
    const qint64 span = toUs() - fromUs();
    hold(us + span / 2, span);
}

void RecorderPlot::hold(qint64 toUs, qint64 spanUs)
{
    const qint64 whole = std::max(leastAll, m_recording.nowUs - m_recording.startUs());
    m_spanUs = std::clamp(spanUs, leastSpan, whole);
    m_toUs = std::clamp(
        toUs, m_recording.startUs() + m_spanUs / 10, std::max(m_recording.nowUs, m_recording.startUs() + m_spanUs));
    m_isLive = false;
    m_isAll = false;
    update();
    emit signal_viewChanged();
}

/** By parts of what is shown; to the right of now it is live again. */
void RecorderPlot::shift(double parts)
{
    const qint64 span = toUs() - fromUs();
    const qint64 to = toUs() + qint64(parts * double(span));
    if (parts > 0 && to >= m_recording.nowUs) {
        m_spanUs = span;
        m_isAll = false;
        setLive(true);
        return;
    }
    hold(to, span);
}

/** What is live stays so, and is zoomed about its right end. */
void RecorderPlot::zoom(double factor, qint64 aboutUs)
{
    const qint64 span = toUs() - fromUs();
    const qint64 wanted = qint64(double(span) / factor);
    if (m_isLive) {
        const qint64 whole = std::max(leastAll, m_recording.nowUs - m_recording.startUs());
        setSpan(std::clamp(wanted, leastSpan, whole));
        return;
    }
    hold(aboutUs + qint64(double(toUs() - aboutUs) / factor), wanted);
}

PlotColours RecorderPlot::colours() const
{
    PlotColours colours{m_wellColor,    m_windowColor, m_lineColor,  m_strongLineColor, m_textColor, m_quietColor,
                        m_controlColor, m_stopColor,   m_alarmColor, m_focusColor,      {}};
    const QStringList names = m_sAxisColors.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &name : names)
        colours.axes.append(QColor(name));
    return colours;
}

qint64 RecorderPlot::timeAt(double x) const
{
    const PlotLayout layout = layoutNow();
    const double part = (x - layout.position.left()) / layout.position.width();
    return fromUs() + qint64(part * double(toUs() - fromUs()));
}

std::optional<Sample> RecorderPlot::cursorSample(int axis) const
{
    if (!m_cursorX)
        return {};
    for (const Recording::Axis &each : m_recording.axes) {
        if (each.description.index == axis)
            return each.samples.nearest(timeAt(*m_cursorX));
    }
    return {};
}

PlotPicture RecorderPlot::picture(double width, bool withCursor) const
{
    PlotPicture picture;
    const qint64 from = fromUs();
    const qint64 to = toUs();
    const auto seconds = [](qint64 us) { return double(us) / 1e6; };
    const auto bounded = [](double value) {
        return std::clamp(value, -TrackView::DrawnAtMost, TrackView::DrawnAtMost);
    };
    picture.from = seconds(from);
    picture.to = seconds(to);
    picture.wallMsAtZero = m_recording.wallMs(to) - to / 1000;
    picture.positionTitle = tr("位置");
    picture.velocityTitle = tr("速度");
    picture.eventsTitle = tr("事件");
    picture.colours = colours();
    if (m_recording.isEmpty()) {
        picture.emptyTitle = tr("尚无记录");
        picture.emptyText = tr("连接设备后自动开始记录。");
        return picture;
    }
    const int columns = std::max(1, int(PlotLayout(QRectF(0, 0, width, 400)).position.width()));
    std::optional<QVector<TrackView::Span>> gaps;
    for (const Recording::Axis &axis : m_recording.axes) {
        const int index = axis.description.index;
        if (!isAxisShown(index))
            continue;
        PlotPicture::Trace trace;
        trace.number = index + 1;
        trace.colour = EventWords::colourOf(index, picture.colours);
        trace.isDashed = index >= coloursWithoutDash;
        trace.isRight = axis.description.unit != QLatin1String("mm");
        trace.position = axis.samples.columns(from, to, columns, TrackView::Position);
        trace.velocity = axis.samples.columns(from, to, columns, TrackView::Velocity);
        const auto sample = withCursor ? cursorSample(index) : std::nullopt;
        if (sample) {
            trace.cursorPosition = QPointF(seconds(sample->us), bounded(sample->position));
            if (!sample->isAfterGap)
                trace.cursorVelocity = QPointF(seconds(sample->us), bounded(sample->velocity));
        }
        (trace.isRight ? picture.rightUnit : picture.leftUnit) = axis.description.unit;
        picture.traces.append(trace);

        QVector<TrackView::Span> own = axis.samples.gaps(from, to);
        if (axis.samples.startUs() > m_recording.startUs()) // it came later than the others
            own.prepend({m_recording.startUs(), axis.samples.startUs()});
        const qint64 end = axis.samples.endUs();
        if (end < to && m_recording.nowUs - end > SilentAfter)
            own.append({end, m_recording.nowUs});
        gaps = gaps ? common(*gaps, own) : own;
    }
    if (gaps) {
        for (const auto &gap : qAsConst(*gaps))
            picture.gaps.append({seconds(gap.first), seconds(gap.second)});
    }
    for (const RecorderEvent &event : m_recording.events) {
        if (event.us >= from && event.us <= to && (event.axis < 0 || isAxisShown(event.axis)))
            picture.marks.append(EventWords::markOf(event, picture.colours));
    }
    if (withCursor && m_cursorX)
        picture.cursor = seconds(timeAt(*m_cursorX));
    return picture;
}

// ---- Drawing -------------------------------------------------------------------------------------------------------

QRectF RecorderPlot::barHandle() const
{
    const QRectF bar = layoutNow().bar;
    const double start = double(m_recording.startUs());
    const double whole = std::max(double(leastAll), double(m_recording.nowUs) - start);
    const auto x = [&](qint64 us) {
        return bar.left() + std::clamp((double(us) - start) / whole, 0.0, 1.0) * bar.width();
    };
    const double left = std::min(x(fromUs()), bar.right() - 16);
    return {left, bar.top(), std::max(16.0, x(toUs()) - left), bar.height()};
}

void RecorderPlot::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus() ? QPen(m_focusColor) : QPen(Qt::NoPen));
    painter.setBrush(m_wellColor);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
    const PlotFunctions *plots = PlotModule::functions();
    if (!plots) {
        painter.setPen(m_quietColor);
        painter.drawText(
            rect().adjusted(24, 24, -24, -24), Qt::AlignCenter | Qt::TextWordWrap,
            tr("无法显示曲线：%1").arg(PlotModule::error()));
        return;
    }
    plots->draw(&painter, QRectF(rect()), picture(width()));
    QColor track = m_lineColor;
    track.setAlphaF(0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(track);
    painter.drawRoundedRect(layoutNow().bar, 3, 3);
    if (m_recording.isEmpty())
        return;
    painter.setBrush(m_drag == Drag::Bar ? m_quietColor : m_strongLineColor);
    painter.drawRoundedRect(barHandle(), 3, 3);
}

// ---- Mouse and keys ------------------------------------------------------------------------------------------------

bool RecorderPlot::event(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        update();
    return QWidget::event(event);
}

void RecorderPlot::setCursorAt(std::optional<double> x)
{
    const QRectF area = layoutNow().position;
    if (x && (*x < area.left() || *x > area.right() || m_recording.isEmpty()))
        x.reset();
    if (x == m_cursorX)
        return;
    m_cursorX = x;
    update();
    emit signal_cursorMoved();
}

void RecorderPlot::leaveEvent(QEvent *event)
{
    setCursorAt({});
    QWidget::leaveEvent(event);
}

void RecorderPlot::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || m_recording.isEmpty())
        return;
    const PlotLayout layout = layoutNow();
    m_dragFrom = event->localPos();
    m_dragToUs = toUs();
    if (layout.bar.adjusted(0, -8, 0, 8).contains(event->localPos())) {
        m_drag = Drag::Bar;
        if (!barHandle().adjusted(0, -8, 0, 8).contains(event->localPos())) { // beside the handle: there
            const double part = (event->localPos().x() - layout.bar.left()) / layout.bar.width();
            showTime(m_recording.startUs() + qint64(part * double(m_recording.nowUs - m_recording.startUs())));
            m_dragToUs = toUs();
        }
    } else if (event->localPos().y() < layout.events.bottom()) {
        m_drag = Drag::Plot;
    }
    update();
}

void RecorderPlot::mouseMoveEvent(QMouseEvent *event)
{
    const double moved = event->localPos().x() - m_dragFrom.x();
    const PlotLayout layout = layoutNow();
    const qint64 span = toUs() - fromUs();
    if (m_drag == Drag::Plot && (!m_isLive || std::abs(moved) > 4))
        hold(m_dragToUs - qint64(moved / layout.position.width() * double(span)), span);
    else if (m_drag == Drag::Bar && (!m_isLive || std::abs(moved) > 4))
        hold(
            m_dragToUs +
                qint64(
                    moved / layout.bar.width() * double(std::max(leastAll, m_recording.nowUs - m_recording.startUs()))),
            span);
    setCursorAt(event->localPos().y() < layout.events.bottom() ? std::optional(event->localPos().x()) : std::nullopt);
}

void RecorderPlot::mouseReleaseEvent(QMouseEvent *)
{
    m_drag = Drag::None;
    update();
}

void RecorderPlot::mouseDoubleClickEvent(QMouseEvent *)
{
    setLive(true);
}

void RecorderPlot::wheelEvent(QWheelEvent *event)
{
    const QPoint delta = event->angleDelta();
    const double notches = double(delta.y() != 0 ? delta.y() : delta.x()) / 120;
    if (m_recording.isEmpty() || notches == 0)
        return;
    if (event->modifiers().testFlag(Qt::ShiftModifier) || delta.y() == 0)
        shift(-notches * shiftByKey);
    else
        zoom(std::pow(zoomByNotch, notches), timeAt(event->position().x()));
    event->accept();
    emit signal_cursorMoved();
}

void RecorderPlot::keyPressEvent(QKeyEvent *event)
{
    const qint64 middle = (fromUs() + toUs()) / 2;
    if (m_recording.isEmpty()) {
        QWidget::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
        return shift(-shiftByKey);
    case Qt::Key_Right:
        return shift(shiftByKey);
    case Qt::Key_PageUp:
        return shift(-1);
    case Qt::Key_PageDown:
        return shift(1);
    case Qt::Key_Up:
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return zoom(zoomByKey, middle);
    case Qt::Key_Down:
    case Qt::Key_Minus:
        return zoom(1 / zoomByKey, middle);
    case Qt::Key_Home:
        return hold(m_recording.startUs() + (toUs() - fromUs()), toUs() - fromUs());
    case Qt::Key_End:
        return setLive(true);
    case Qt::Key_Space:
        return setLive(!m_isLive);
    default:
        QWidget::keyPressEvent(event);
    }
}
