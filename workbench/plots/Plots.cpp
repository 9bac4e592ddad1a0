// SPDX-License-Identifier: MIT
#include "workbench/PlotPicture.h"

#include <qwt_painter.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_scale_div.h>
#include <qwt_scale_map.h>

#include <QBuffer>
#include <QDateTime>
#include <QFontMetricsF>
#include <QSvgGenerator>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr int positionDivisions = 6;
constexpr int velocityDivisions = 3; // on each side of zero
constexpr double pointsPerPixel = 0.75;

/** A scale of `divisions` equal steps. */
struct Scale {
    double low = 0;
    double step = 1;
    int divisions = positionDivisions;

    double high() const { return low + step * divisions; }
};

/** The steps 1, 2, 2.5 and 5 and their tens, from the one at or below `from`. */
template <typename Fits>
double niceStep(double from, Fits fits)
{
    double decade = std::pow(10, std::floor(std::log10(from)));
    for (;; decade *= 10) {
        for (const double step : {1.0, 2.0, 2.5, 5.0}) {
            if (decade * step >= from * (1 - 1e-9) && fits(decade * step))
                return decade * step;
        }
    }
}

/** The lowest and the highest value of what is shown; false if there is none. */
bool extremes(
    const PlotPicture &picture, bool isRight, PlotPicture::Lines PlotPicture::Trace::*lines, double *low, double *high)
{
    bool any = false;
    for (const PlotPicture::Trace &trace : picture.traces) {
        if (trace.isRight != isRight)
            continue;
        for (const auto &line : trace.*lines) {
            for (const QPointF &point : line) {
                if (point.x() < picture.from || point.x() > picture.to)
                    continue;
                *low = any ? std::min(*low, point.y()) : point.y();
                *high = any ? std::max(*high, point.y()) : point.y();
                any = true;
            }
        }
    }
    return any;
}

Scale positionScale(const PlotPicture &picture, bool isRight)
{
    double low = 0;
    double high = 1;
    extremes(picture, isRight, &PlotPicture::Trace::position, &low, &high);
    if (high - low < 1e-3) { // at rest
        low -= 0.5;
        high += 0.5;
    }
    Scale scale;
    scale.step = niceStep((high - low) / scale.divisions, [&](double step) {
        return std::floor(low / step) * step + scale.divisions * step >= high;
    });
    scale.low = std::floor(low / scale.step) * scale.step;
    return scale;
}

/** Around zero, so that both scales have it at the same height. */
Scale velocityScale(const PlotPicture &picture, bool isRight)
{
    double low = 0;
    double high = 0;
    extremes(picture, isRight, &PlotPicture::Trace::velocity, &low, &high);
    Scale scale;
    scale.divisions = 2 * velocityDivisions;
    scale.step = niceStep(std::max({-low, high, 0.3}) / velocityDivisions, [](double) { return true; });
    scale.low = -scale.step * velocityDivisions;
    return scale;
}

QString number(double value, double step)
{
    int digits = 0;
    for (double rest = step; digits < 6 && std::abs(rest - std::round(rest)) > 1e-6 * rest; rest *= 10)
        ++digits;
    if (std::abs(value) < step * 1e-6)
        value = 0;
    return QString::number(value, 'f', digits).replace(QLatin1Char('-'), QChar(0x2212));
}

QFont fontOf(const QPainter *painter, int pixels, bool isBold = false)
{
    QFont font = painter->font();
    font.setPixelSize(pixels);
    font.setBold(isBold);
    return font;
}

/** Draws one picture: the same for the screen and for files. */
class Drawing final
{
public:
    Drawing(QPainter *painter, const QRectF &whole, const PlotPicture &picture)
        : m_painter(painter)
        , m_picture(picture)
        , m_colours(picture.colours)
        , m_layout(whole)
        , m_small(fontOf(painter, 14))
        , m_normal(fontOf(painter, 16))
        , m_tag(fontOf(painter, 13, true))
    {
        m_x.setScaleInterval(picture.from, picture.to);
        m_x.setPaintInterval(m_layout.position.left(), m_layout.position.right());
    }

    void draw()
    {
        m_painter->setRenderHint(QPainter::Antialiasing);
        QwtPainter::setRoundingAlignment(false);
        const bool isEmpty = !m_picture.emptyTitle.isEmpty();
        m_painter->fillRect(m_layout.events, m_colours.window);
        text(
            QRectF(m_layout.events.left() - 64, m_layout.events.top(), 56, m_layout.events.height()), Qt::AlignRight,
            m_picture.eventsTitle, m_small, m_colours.textSecondary);
        const Scale scales[][2] = {
            {positionScale(m_picture, false), positionScale(m_picture, true)},
            {velocityScale(m_picture, false), velocityScale(m_picture, true)}};
        plot(m_layout.position, m_picture.positionTitle, QString(), scales[0], &PlotPicture::Trace::position);
        plot(
            m_layout.velocity, m_picture.velocityTitle, QStringLiteral("/s"), scales[1], &PlotPicture::Trace::velocity);
        if (isEmpty) {
            const QRectF &area = m_layout.position;
            const double middle = area.top() + area.height() * 0.43;
            text(
                QRectF(area.left(), middle - 16, area.width(), 32), Qt::AlignHCenter, m_picture.emptyTitle,
                fontOf(m_painter, 20), m_colours.textSecondary);
            text(
                QRectF(area.left(), middle + 20, area.width(), 28), Qt::AlignHCenter, m_picture.emptyText, m_normal,
                m_colours.textSecondary);
            return;
        }
        endTags(scales[0]);
        times();
        for (const PlotPicture::Mark &mark : m_picture.marks) {
            if (mark.at >= m_picture.from && mark.at <= m_picture.to)
                drawMark(
                    m_painter, QPointF(m_x.transform(mark.at), m_layout.events.center().y()), mark.shape,
                    mark.direction, mark.colour);
        }
        cursor(scales);
    }

private:
    void text(const QRectF &area, int align, const QString &words, const QFont &font, const QColor &colour)
    {
        m_painter->setFont(font);
        m_painter->setPen(colour);
        m_painter->drawText(area, align | Qt::AlignVCenter | Qt::TextDontClip, words);
    }

    /** The number of an axis on its colour, 18 x 16. */
    void tag(QPointF middle, const PlotPicture::Trace &trace)
    {
        const QRectF area(middle.x() - 9, middle.y() - 8, 18, 16);
        m_painter->setPen(Qt::NoPen);
        m_painter->setBrush(trace.colour);
        m_painter->drawRoundedRect(area, 3, 3);
        text(area, Qt::AlignHCenter, QString::number(trace.number), m_tag, m_colours.well);
    }

    QwtScaleMap yMap(const QRectF &area, const Scale &scale) const
    {
        QwtScaleMap map;
        map.setScaleInterval(scale.low, scale.high());
        map.setPaintInterval(area.bottom(), area.top());
        return map;
    }

    void plot(
        const QRectF &area, const QString &title, const QString &perTime, const Scale (&scales)[2],
        PlotPicture::Lines PlotPicture::Trace::*lines)
    {
        const bool isEmpty = !m_picture.emptyTitle.isEmpty();
        const double head = area.top() - 17;
        double left = area.left();
        if (!isEmpty) {
            double right = area.right();
            for (const PlotPicture::Trace &trace : m_picture.traces) {
                if (trace.isRight)
                    continue;
                tag(QPointF(left + 9, head), trace);
                left += 22;
            }
            for (auto trace = m_picture.traces.rbegin(); trace != m_picture.traces.rend(); ++trace) {
                if (!trace->isRight)
                    continue;
                tag(QPointF(right - 9, head), *trace);
                right -= 22;
            }
            grid(area, scales[0]);
            numbers(area, scales, perTime);
        }
        text(
            QRectF(left + (left > area.left() ? 8 : 0), head - 14, 200, 28), Qt::AlignLeft, title, m_normal,
            m_colours.textSecondary);
        frame(area);
        if (isEmpty)
            return;
        if (!perTime.isEmpty())
            line(area.left(), area.center().y(), area.right(), area.center().y(), m_colours.lineStrong);
        m_painter->save();
        m_painter->setClipRect(area.adjusted(0, -1, 0, 1));
        gaps(area);
        eventLines(area);
        // The first axis last, on top.
        for (auto trace = m_picture.traces.rbegin(); trace != m_picture.traces.rend(); ++trace)
            curve(area, *trace, (*trace).*lines, scales[trace->isRight ? 1 : 0]);
        m_painter->restore();
    }

    void line(double x1, double y1, double x2, double y2, const QColor &colour)
    {
        m_painter->setPen(QPen(colour, 1));
        m_painter->drawLine(
            QPointF(std::floor(x1) + 0.5, std::floor(y1) + 0.5), QPointF(std::floor(x2) + 0.5, std::floor(y2) + 0.5));
    }

    void frame(const QRectF &area)
    {
        line(area.left(), area.top(), area.left(), area.bottom(), m_colours.line);
        line(area.left(), area.bottom(), area.right(), area.bottom(), m_colours.line);
    }

    void grid(const QRectF &area, const Scale &scale)
    {
        QList<double> rows;
        for (int k = 0; k <= scale.divisions; ++k)
            rows.append(scale.low + k * scale.step);
        const auto ticks = timeTicks().first;
        const QList<double> columns(ticks.begin(), ticks.end());
        QColor colour = m_colours.line;
        colour.setAlphaF(0.45);
        QwtPlotGrid grid;
        grid.setMajorPen(colour, 1);
        grid.setXDiv(QwtScaleDiv(m_picture.from, m_picture.to, {}, {}, columns));
        grid.setYDiv(QwtScaleDiv(scale.low, scale.high(), {}, {}, rows));
        m_painter->setRenderHint(QPainter::Antialiasing, false);
        grid.draw(m_painter, m_x, yMap(area, scale), area);
        m_painter->setRenderHint(QPainter::Antialiasing);
    }

    void numbers(const QRectF &area, const Scale (&scales)[2], const QString &perTime)
    {
        const QString units[] = {m_picture.leftUnit, m_picture.rightUnit};
        for (int side = 0; side < 2; ++side) {
            if (units[side].isNull())
                continue;
            const int align = side == 0 ? Qt::AlignRight : Qt::AlignLeft;
            const double x = side == 0 ? area.left() - 64 : area.right() + 12;
            text(QRectF(x, area.top() - 31, 56, 28), align, units[side] + perTime, m_small, m_colours.textSecondary);
            const Scale &scale = scales[side];
            const QwtScaleMap map = yMap(area, scale);
            for (int k = 0; k <= scale.divisions; ++k) {
                if (!perTime.isEmpty() && k % 2 == 0) // as many on both sides of zero, and not at the ends
                    continue;
                const double value = scale.low + k * scale.step;
                text(
                    QRectF(x, map.transform(value) - 10, 56, 20), align, number(value, scale.step), m_small,
                    m_colours.textSecondary);
            }
        }
    }

    void gaps(const QRectF &area)
    {
        for (const auto &gap : m_picture.gaps) {
            const QRectF place(
                QPointF(std::max(area.left(), m_x.transform(gap.first)), area.top()),
                QPointF(std::min(area.right(), m_x.transform(gap.second)), area.bottom()));
            if (place.width() <= 0)
                continue;
            m_painter->save();
            m_painter->setClipRect(place, Qt::IntersectClip);
            m_painter->setPen(QPen(m_colours.lineStrong, 1.5));
            const double height = place.height();
            const int first = int(std::floor((place.left() - height) / 11));
            for (int k = first; k * 11 < place.right(); ++k)
                m_painter->drawLine(QPointF(k * 11, place.bottom()), QPointF(k * 11 + height, place.top()));
            m_painter->restore();
        }
    }

    void eventLines(const QRectF &area)
    {
        double last = -1;
        for (const PlotPicture::Mark &mark : m_picture.marks) {
            const double x = std::floor(m_x.transform(mark.at)) + 0.5;
            if (x < area.left() || x > area.right() || (x == last && !mark.isAlarm))
                continue;
            last = x;
            QPen pen(mark.isAlarm ? m_colours.stop : m_colours.lineStrong, 1);
            pen.setDashPattern({2, 4});
            m_painter->setPen(pen);
            m_painter->setOpacity(mark.isAlarm ? 0.8 : 0.9);
            m_painter->drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        }
        m_painter->setOpacity(1);
    }

    void curve(const QRectF &area, const PlotPicture::Trace &trace, const PlotPicture::Lines &lines, const Scale &scale)
    {
        QPen pen(trace.colour, 2);
        pen.setJoinStyle(Qt::RoundJoin);
        if (trace.isDashed)
            pen.setDashPattern({4, 2});
        const QwtScaleMap map = yMap(area, scale);
        for (const auto &each : lines) {
            if (each.size() == 1) { // alone between two gaps
                m_painter->setPen(Qt::NoPen);
                m_painter->setBrush(trace.colour);
                m_painter->drawEllipse(
                    QPointF(m_x.transform(each.first().x()), map.transform(each.first().y())), 1.5, 1.5);
                continue;
            }
            if (each.size() > area.width() * pointsPerPixel) {
                columns(each, trace.colour, map);
                continue;
            }
            QwtPlotCurve curve;
            curve.setPen(pen);
            curve.setPaintAttribute(QwtPlotCurve::ClipPolygons);
            curve.setSamples(each);
            curve.draw(m_painter, m_x, map, area);
        }
    }

    /** A line of more points than the stroke of a wide pen can draw in time: from lowest to highest in each column. */
    void columns(const QVector<QPointF> &line, const QColor &colour, const QwtScaleMap &map)
    {
        m_painter->setRenderHint(QPainter::Antialiasing, false);
        double before = map.transform(line.first().y());
        for (int k = 0; k < line.size();) {
            const double x = std::floor(m_x.transform(line.at(k).x()));
            double low = before;
            double high = before;
            for (; k < line.size() && std::floor(m_x.transform(line.at(k).x())) == x; ++k) {
                before = map.transform(line.at(k).y());
                low = std::min(low, before);
                high = std::max(high, before);
            }
            m_painter->fillRect(QRectF(x, low - 1, 2, high - low + 2), colour);
        }
        m_painter->setRenderHint(QPainter::Antialiasing);
    }

    /** Of a line whose last sample may lie beyond what is shown. */
    double valueAtEnd(const QVector<QPointF> &line) const
    {
        const QPointF last = line.last();
        if (line.size() < 2 || last.x() <= m_picture.to)
            return last.y();
        const QPointF before = line.at(line.size() - 2);
        return before.y() + (last.y() - before.y()) * (m_picture.to - before.x()) / (last.x() - before.x());
    }

    /** The numbers of the axes at the ends of their lines, one beside the other where they meet. */
    void endTags(const Scale (&scales)[2])
    {
        struct Tag {
            const PlotPicture::Trace *trace;
            double y;
        };
        const QRectF &area = m_layout.position;
        QVector<Tag> tags;
        for (const PlotPicture::Trace &trace : m_picture.traces) {
            if (trace.position.isEmpty())
                continue;
            const double y = yMap(area, scales[trace.isRight ? 1 : 0]).transform(valueAtEnd(trace.position.last()));
            tags.append({&trace, std::clamp(y, area.top(), area.bottom())});
        }
        std::stable_sort(tags.begin(), tags.end(), [](const Tag &a, const Tag &b) { return a.y < b.y; });
        for (int k = 1; k < tags.size(); ++k)
            tags[k].y = std::max(tags[k].y, tags[k - 1].y + 18);
        double bottom = area.bottom() + 8;
        for (int k = tags.size() - 1; k >= 0; --k, bottom -= 18)
            tags[k].y = std::min(tags[k].y, bottom);
        for (const Tag &each : qAsConst(tags))
            tag(QPointF(area.right(), each.y), *each.trace);
    }

    /** Where the times stand, in seconds, and how they are written. */
    QPair<QVector<double>, QString> timeTicks() const
    {
        static constexpr double steps[] = {0.01, 0.02, 0.05, 0.1, 0.2, 0.5,  1,    2,    5,     10,    15,    30,
                                           60,   120,  300,  600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400};
        const double least = (m_picture.to - m_picture.from) * 100 / std::max(100.0, m_layout.position.width());
        const double *step =
            std::find_if(std::begin(steps), std::end(steps) - 1, [least](double each) { return each >= least; });
        const QDateTime zero = QDateTime::fromMSecsSinceEpoch(m_picture.wallMsAtZero);
        // On round times of the local clock.
        const double shift = double(zero.time().msecsSinceStartOfDay()) / 1000;
        QVector<double> ticks;
        for (double k = std::ceil((m_picture.from + shift) / *step); k * *step - shift <= m_picture.to; ++k)
            ticks.append(k * *step - shift);
        const char *format = *step >= 86400 ? "MM-dd"
                             : *step >= 60  ? "HH:mm"
                             : *step >= 1   ? "HH:mm:ss"
                                            : "HH:mm:ss.zzz";
        return {ticks, QLatin1String(format)};
    }

    QString timeText(double at, const QString &format) const
    {
        return QDateTime::fromMSecsSinceEpoch(m_picture.wallMsAtZero + qRound64(at * 1000)).toString(format);
    }

    /** The part of the row of times that the cursor's own time takes. */
    QRectF bubble() const
    {
        if (!m_picture.cursor)
            return {};
        const QRectF &row = m_layout.times;
        const double x = std::clamp(m_x.transform(*m_picture.cursor), row.left(), row.right());
        return {x - 49, row.top(), 98, row.height()};
    }

    void times()
    {
        const auto ticks = timeTicks();
        const QRectF &row = m_layout.times;
        for (const double at : ticks.first) {
            const QString words = timeText(at, ticks.second);
            const double width = QFontMetricsF(m_small).horizontalAdvance(words);
            const double x = m_x.transform(at);
            const QRectF place(x - width / 2, row.top(), width, row.height());
            if (!place.intersects(bubble().adjusted(-8, 0, 8, 0)) || !m_picture.cursor)
                text(place, Qt::AlignHCenter, words, m_small, m_colours.textSecondary);
        }
    }

    void cursor(const Scale (&scales)[2][2])
    {
        if (!m_picture.cursor)
            return;
        QColor colour = m_colours.text;
        colour.setAlphaF(0.7);
        const double x = m_x.transform(*m_picture.cursor);
        line(x, m_layout.position.top(), x, m_layout.events.bottom(), colour);
        for (auto trace = m_picture.traces.rbegin(); trace != m_picture.traces.rend(); ++trace) {
            const int side = trace->isRight ? 1 : 0;
            dot(m_layout.position, trace->cursorPosition, scales[0][side], trace->colour);
            dot(m_layout.velocity, trace->cursorVelocity, scales[1][side], trace->colour);
        }
        m_painter->setPen(Qt::NoPen);
        m_painter->setBrush(m_colours.control);
        m_painter->drawRoundedRect(bubble(), 4, 4);
        text(
            bubble(), Qt::AlignHCenter, timeText(*m_picture.cursor, QStringLiteral("HH:mm:ss.zzz")), m_small,
            m_colours.text);
    }

    void dot(const QRectF &area, const std::optional<QPointF> &at, const Scale &scale, const QColor &colour)
    {
        if (!at)
            return;
        m_painter->setPen(QPen(m_colours.well, 2));
        m_painter->setBrush(colour);
        m_painter->drawEllipse(QPointF(m_x.transform(at->x()), yMap(area, scale).transform(at->y())), 4.5, 4.5);
    }

    QPainter *const m_painter;
    const PlotPicture &m_picture;
    const PlotColours &m_colours;
    const PlotLayout m_layout;
    const QFont m_small;
    const QFont m_normal;
    const QFont m_tag;
    QwtScaleMap m_x;
};

void draw(QPainter *painter, const QRectF &whole, const PlotPicture &picture)
{
    painter->save();
    Drawing(painter, whole, picture).draw();
    painter->restore();
}

bool writeSvg(QIODevice *device, const QSize &size, const PlotPicture &picture, const QString &title)
{
    // The generator does not tell what its device refuses.
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        QSvgGenerator generator;
        generator.setOutputDevice(&buffer);
        generator.setSize(size);
        generator.setViewBox(QRect(QPoint(), size));
        generator.setResolution(96);
        generator.setTitle(title);
        QPainter painter(&generator);
        painter.fillRect(QRect(QPoint(), size), picture.colours.well);
        draw(&painter, QRectF(QPointF(), size), picture);
    }
    return device->write(buffer.data()) == buffer.size();
}

} // namespace

extern "C" {
Q_DECL_EXPORT extern const PlotFunctions moverPlots;
const PlotFunctions moverPlots = {MOVER_VERSION, draw, writeSvg};
}
