// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QVector>

/** A place that has a name: where some of the axes are to be, in their units. Axes count from 0. */
struct NamedPosition {
    QString name;
    QMap<int, double> axes;

    bool operator==(const NamedPosition &other) const { return name == other.name && axes == other.axes; }
    bool operator!=(const NamedPosition &other) const { return !(*this == other); }
};
using Positions = QVector<NamedPosition>;

/** One line of a sequence. What a kind does not name it does not use. */
struct SequenceStep {
    enum Kind {
        GoTo,     ///< `text`: the name of a position; `wait`
        MoveTo,   ///< `axis` to `value`; `speed`, `wait`
        MoveBy,   ///< `axis` by `value`; `speed`, `wait`
        Home,     ///< `axis`, or AllAxes; `wait`
        Wait,     ///< `value`: s
        Ask,      ///< waits until the operator lets it go on; `text`: what the operator reads
        Repeat,   ///< lines `from` to the one before this, `count` times in all
        SetSpeed, ///< of `axis` to `value`
    };
    static constexpr int KindCount = SetSpeed + 1;
    static constexpr int AllAxes = -1;

    Kind kind = Wait;
    int axis = 0;
    double value = 0;
    double speed = 0; // in the axis's unit per second; 0: as it is set
    double wait = 0;  // s, after it
    QString text{};
    int from = 0; // line, from 0
    int count = 1;

    bool operator==(const SequenceStep &other) const
    {
        return kind == other.kind && axis == other.axis && value == other.value && speed == other.speed &&
               wait == other.wait && text == other.text && from == other.from && count == other.count;
    }
    bool operator!=(const SequenceStep &other) const { return !(*this == other); }
};

/** A procedure: steps that follow each other. */
struct Sequence {
    QString name;
    QVector<SequenceStep> steps;

    bool operator==(const Sequence &other) const { return name == other.name && steps == other.steps; }
    bool operator!=(const Sequence &other) const { return !(*this == other); }
};

/** One or two axes from place to place, in lines or, `meander`, there and back. */
struct Scan {
    struct Line {
        int axis = 0;
        double from = 0;
        double to = 0;
        double step = 1; // above 0

        /** The places: from, then every step towards `to`; the last is not beyond it. */
        QVector<double> places() const;
    };
    Line fast;
    bool hasSlow = false;
    Line slow{};
    bool meander = false;
    double wait = 0; // s, at each place

    /** How many steps it makes; -1 when a line of it cannot be: no number, a step of 0 or below, more than `Most`. */
    int count() const;
    QVector<SequenceStep> steps() const;
    static constexpr int Most = 100000;
};
