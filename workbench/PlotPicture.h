// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPointF>
#include <QString>
#include <QVector>

#include <optional>

class QIODevice;

/** The colours of the plots, from the style sheet. */
struct PlotColours {
    QColor well;
    QColor window;
    QColor line;
    QColor lineStrong;
    QColor text;
    QColor textSecondary;
    QColor control;
    QColor stop;
    QColor alarm;
    QColor focus;
    QVector<QColor> axes; // one for each axis of a controller
};

/** What the plots show. x is seconds since the recorder was made. */
struct PlotPicture {
    enum class Shape { Command, Arrival, Stop, Limit, Cross, Ring, Bar };
    /** A mark of an event; `direction`: of a limit. */
    struct Mark {
        double at = 0;
        Shape shape = Shape::Command;
        int direction = 0;
        QColor colour;
        bool isAlarm = false;
    };
    using Lines = QVector<QVector<QPointF>>;
    struct Trace {
        int number = 1;
        QColor colour;
        bool isDashed = false;
        bool isRight = false; // reads on the right scale
        Lines position;
        Lines velocity;
        std::optional<QPointF> cursorPosition; // the sample nearest to the cursor
        std::optional<QPointF> cursorVelocity;
    };

    double from = 0;
    double to = 1;
    qint64 wallMsAtZero = 0; // milliseconds since 1970 at x = 0
    QVector<Trace> traces;
    QVector<QPair<double, double>> gaps;
    QVector<Mark> marks;
    std::optional<double> cursor;
    QString leftUnit; // null without a trace on that side
    QString rightUnit;
    QString positionTitle;
    QString velocityTitle;
    QString eventsTitle;
    QString emptyTitle; // shown in place of grid and numbers
    QString emptyText;
    PlotColours colours;
};

/** Where the parts of a picture stand. */
struct PlotLayout {
    explicit PlotLayout(const QRectF &whole)
    {
        const double left = whole.left() + 64;
        const double width = whole.width() - 64 - 76;
        const double height = whole.height() - 175;
        position = QRectF(left, whole.top() + 37, width, height * 0.5625);
        velocity = QRectF(left, position.bottom() + 40, width, height - position.height());
        events = QRectF(left, velocity.bottom() + 8, width, 28);
        times = QRectF(left, events.bottom() + 5, width, 22);
        bar = QRectF(left, events.bottom() + 40, width, 6);
    }

    QRectF position;
    QRectF velocity;
    QRectF events;
    QRectF times;
    QRectF bar; // how much of the recording is shown
};

/** Draws the sign of an event, 10 px high, told from others by its shape. */
inline void drawMark(QPainter *painter, QPointF at, PlotPicture::Shape shape, int direction, const QColor &colour)
{
    using Shape = PlotPicture::Shape;
    painter->save();
    painter->translate(at);
    painter->setPen(QPen(colour, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(colour);
    switch (shape) {
    case Shape::Command: {
        painter->setPen(QPen(colour, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const QPointF triangle[] = {{-4, -5}, {-4, 5}, {4.5, 0}};
        painter->drawPolygon(triangle, 3);
        break;
    }
    case Shape::Arrival:
        painter->setPen(Qt::NoPen);
        painter->drawEllipse(QPointF(), 4.5, 4.5);
        break;
    case Shape::Stop:
        painter->setPen(Qt::NoPen);
        painter->drawRoundedRect(QRectF(-5, -5, 10, 10), 1, 1);
        break;
    case Shape::Limit:
        painter->scale(direction < 0 ? -1 : 1, 1);
        painter->drawLine(QPointF(-6, 0), QPointF(2, 0));
        painter->drawLine(QPointF(-1.5, -3.5), QPointF(2, 0));
        painter->drawLine(QPointF(-1.5, 3.5), QPointF(2, 0));
        painter->drawLine(QPointF(6, -6), QPointF(6, 6));
        break;
    case Shape::Cross:
        painter->drawLine(QPointF(-4.5, -4.5), QPointF(4.5, 4.5));
        painter->drawLine(QPointF(4.5, -4.5), QPointF(-4.5, 4.5));
        break;
    case Shape::Ring:
        painter->setBrush(Qt::NoBrush);
        painter->drawEllipse(QPointF(), 4, 4);
        break;
    case Shape::Bar:
        painter->drawLine(QPointF(0, -4), QPointF(0, 4));
        break;
    }
    painter->restore();
}

/**
 * What the module of plots exports as the data symbol `moverPlots`. It alone is linked with the plotting library and
 * with Qt Svg. GUI thread.
 */
struct PlotFunctions {
    const char *version; // of the program that it was built with
    /** Draws the picture into `whole`, without a background. */
    void (*draw)(QPainter *painter, const QRectF &whole, const PlotPicture &picture);
    /** Writes it as SVG with its background. False when the device takes it not whole. */
    bool (*writeSvg)(QIODevice *device, const QSize &size, const PlotPicture &picture, const QString &title);
};
