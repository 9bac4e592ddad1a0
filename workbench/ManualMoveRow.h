// SPDX-License-Identifier: MIT
#pragma once

#include "session/AxisDescription.h"

#include <QMap>
#include <QTimer>
#include <QVector>
#include <QWidget>

#include <memory>

namespace Ui {
class ManualMoveRow;
}

/**
 * The controls to move one axis by hand, slowly: to a place that is typed, or for as long as an arrow is held. Moves
 * nothing itself. GUI thread.
 *
 * An arrow is held by the mouse, or by an arrow key or the space bar while one of them has the focus. It is released
 * with the button or the key, but also when the focus goes, when the row is hidden or may not be used any more, and
 * when the key is said to be down no longer: a key that is held repeats itself, and one that does not may have been
 * released where nobody saw it.
 */
class ManualMoveRow final : public QWidget
{
    Q_OBJECT

public:
    explicit ManualMoveRow(QWidget *parent = nullptr);
    ~ManualMoveRow() override;

    /** Those that can be moved. The one that was chosen stays so, and each keeps the speed that was set for it. */
    void setAxes(const QVector<AxisDescription> &axes);
    void setUsable(bool isUsable);
    /** Towards where an arrow is held: -1 or 1; 0: none is. */
    int heldDirection() const { return m_iHeld; }

signals:
    /** `target` and `speed` in the axis's unit, and that in a second. */
    void signal_goTo(int axis, double target, double speed);
    /** What was typed is no number. */
    void signal_refused(const QString &text);
    void signal_held(int axis, int direction, double speed);
    void signal_released();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private slots:
    void on_comboBox_manualAxis_currentIndexChanged(int index);
    void on_doubleSpinBox_slow_valueChanged(double value);
    void on_lineEdit_target_returnPressed();

private:
    void hold(int direction);
    void release();
    bool keyPressed(QObject *button, int key, bool isRepeat);

    std::unique_ptr<Ui::ManualMoveRow> ui;
    QVector<AxisDescription> m_axes;
    QMap<int, double> m_speeds; // that were chosen, by axis
    int m_iHeld = 0;
    int m_iKey = 0;   // that holds it; 0: the mouse
    QTimer m_stalled; // a key that should have repeated itself
};
