// SPDX-License-Identifier: MIT
#pragma once

#include "device/BoardLink.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace Ui {
class FirstMoveWidget;
}

/**
 * A page of the controller set-up: help with the first move of a board, in three steps that can each be left out.
 * Direction and distance, limit switches, homing. Settings are proposed, never written here. GUI thread.
 */
class FirstMoveWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit FirstMoveWidget(QWidget *parent = nullptr);
    ~FirstMoveWidget() override;

    /** `link` has to answer by now. */
    void begin(BoardLink *link);
    /** Shows what the board says now. */
    void showBoard();

signals:
    void signal_proposeSettings(const BoardLink::Settings &settings);
    /** The board has refused; `status`: why. */
    void signal_refused(int status);

protected:
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private slots:
    void on_comboBox_axis_currentIndexChanged(int index);
    void on_pushButton_unlock_clicked();
    void on_pushButton_backward_pressed() { move(-1); }
    void on_pushButton_backward_released() { stop(); }
    void on_pushButton_forward_pressed() { move(1); }
    void on_pushButton_forward_released() { stop(); }
    void on_pushButton_propose_clicked();
    void on_pushButton_invertSwitches_clicked();
    void on_pushButton_home_clicked();
    void on_pushButton_homeTheOtherWay_clicked();
    void on_pushButton_homingOn_clicked();

private:
    int axis() const;
    void move(double distance);
    void stop();
    void tell(int status);
    void proposeBit(int setting, int bit);

    std::unique_ptr<Ui::FirstMoveWidget> ui;
    BoardLink *m_link = nullptr;
    std::optional<double> m_from;  // where the move under way began
    std::optional<double> m_moved; // how far the last one went, by the board
    double m_dSteps = 0;           // the board's steps per mm meanwhile
};
