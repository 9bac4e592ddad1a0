// SPDX-License-Identifier: MIT
#pragma once

#include "session/AxisDescription.h"

#include <QWidget>

#include <memory>

namespace Ui {
class CycleOperationWidget;
}

/**
 * Loop-run dialog of one axis: back and forth over a travel, a number of times, with a dwell between moves. Lies over
 * its panel. GUI thread; everything it asks for is a queued request to the worker.
 */
class CycleOperationWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit CycleOperationWidget(QWidget *parent = nullptr);
    ~CycleOperationWidget() override;

    /** The axis that it runs; unit and limits are taken from here. */
    void setAxis(const AxisDescription &axis);
    /** Fills the form. Dwell in milliseconds. */
    void load(double travel, double speed, double acceleration, int count, int dwellMs);

    /** Keeps processing the application's events, in slices of at most 5 ms, until `milliseconds` have passed. */
    static void wait(int milliseconds);

signals:
    void signal_startDoing();
    void signal_stopDoing();

public slots:
    /** b: the axis stands still. */
    void setRunningState(bool b) { m_bIdle = b; }

protected:
    bool focusNextPrevChild(bool next) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private slots:
    void on_pushButton_left_clicked();
    void on_pushButton_right_clicked();
    void on_pushButton_stop_clicked();
    void on_pushButton_close_clicked();

private:
    void start(int mode);
    void stop();

    std::unique_ptr<Ui::CycleOperationWidget> ui;
    AxisDescription m_axis;
    bool m_bIdle = false;
};
