// SPDX-License-Identifier: MIT
#pragma once

#include "session/Recorder.h"
#include "workbench/PlotPicture.h"

#include <QSet>
#include <QWidget>

/**
 * The plots of a recording, over one time axis, which mouse, wheel and keys zoom and shift: the wheel zooms (with Shift
 * it shifts), dragging shifts, a double click goes back to what is live; arrow keys, page keys, + and -, Home, End,
 * space. It draws by the module of plots, and only what it is given. GUI thread.
 */
class RecorderPlot final : public QWidget
{
    Q_OBJECT
    // The colours of the style sheet. clazy:excludeall=qproperty-without-notify
    Q_PROPERTY(QColor wellColor MEMBER m_wellColor)
    Q_PROPERTY(QColor windowColor MEMBER m_windowColor)
    Q_PROPERTY(QColor lineColor MEMBER m_lineColor)
    Q_PROPERTY(QColor strongLineColor MEMBER m_strongLineColor)
    Q_PROPERTY(QColor textColor MEMBER m_textColor)
    Q_PROPERTY(QColor quietColor MEMBER m_quietColor)
    Q_PROPERTY(QColor controlColor MEMBER m_controlColor)
    Q_PROPERTY(QColor stopColor MEMBER m_stopColor)
    Q_PROPERTY(QColor alarmColor MEMBER m_alarmColor)
    Q_PROPERTY(QColor focusColor MEMBER m_focusColor)
    Q_PROPERTY(QString axisColors MEMBER m_sAxisColors) // separated by blanks

public:
    static constexpr qint64 All = 0;
    static constexpr qint64 Second = 1000000; ///< in µs
    /** No answer for so long, in µs: nothing is known of the time since. */
    static constexpr qint64 SilentAfter = 1500000;

    explicit RecorderPlot(QWidget *parent = nullptr);

    void setRecording(const Recording &recording);
    const Recording &recording() const { return m_recording; }
    void setAxisShown(int axis, bool shown);
    bool isAxisShown(int axis) const { return !m_hidden.contains(axis); }

    /** How much time is shown, in µs, or All; the right end stays. */
    void setSpan(qint64 us);
    qint64 span() const { return m_isAll ? All : m_spanUs; }
    /** Whether the right end is now. Otherwise the picture is held. */
    bool isLive() const { return m_isLive; }
    void setLive(bool live);
    /** Holds the picture with this time in its middle. */
    void showTime(qint64 us);
    qint64 fromUs() const;
    qint64 toUs() const;

    /** The sample under the cursor; nothing without one. */
    std::optional<Sample> cursorSample(int axis) const;

    PlotColours colours() const;
    /** The picture in this width. `withCursor`: as on the screen. */
    PlotPicture picture(double width, bool withCursor = true) const;

signals:
    void signal_viewChanged(); // live or held, or another span
    void signal_cursorMoved();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    PlotLayout layoutNow() const { return PlotLayout(QRectF(rect())); }
    qint64 timeAt(double x) const;
    void hold(qint64 toUs, qint64 spanUs);
    void shift(double parts);
    void zoom(double factor, qint64 aboutUs);
    void setCursorAt(std::optional<double> x);
    QRectF barHandle() const;

    Recording m_recording;
    QSet<int> m_hidden;
    qint64 m_spanUs = 60000000;
    qint64 m_toUs = 0; // of a held picture
    bool m_isAll = false;
    bool m_isLive = true;
    std::optional<double> m_cursorX;
    enum class Drag { None, Plot, Bar } m_drag = Drag::None;
    QPointF m_dragFrom;
    qint64 m_dragToUs = 0;

    QColor m_wellColor = Qt::black;
    QColor m_windowColor = Qt::black;
    QColor m_lineColor = Qt::darkGray;
    QColor m_strongLineColor = Qt::gray;
    QColor m_textColor = Qt::white;
    QColor m_quietColor = Qt::lightGray;
    QColor m_controlColor = Qt::darkGray;
    QColor m_stopColor = Qt::red;
    QColor m_alarmColor = Qt::red;
    QColor m_focusColor = Qt::blue;
    QString m_sAxisColors;
};
