// SPDX-License-Identifier: MIT
#pragma once

#include "session/MotionRules.h"

#include <QWidget>

class QLabel;
class QPushButton;

/**
 * What the three motion parameter popups have in common: a frameless window that opens under its toggle button, loads
 * the values that the worker holds for the axis, checks them on confirm against the limits of the stage model, sends
 * them, and closes as soon as it loses activation (except to its own message box).
 */
class MotionParamPopup : public QWidget
{
    Q_OBJECT

public:
    /** The axis whose values it sets; unit and limits are taken from here. */
    void setAxis(const AxisDescription &axis);

    /** Shows the popup and loads its values; what is typed next replaces the first of them. */
    void open();
    /** Fills the fields with the values that the worker holds for the axis. */
    virtual void load() = 0;

protected:
    explicit MotionParamPopup(QWidget *parent);

    /**
     * The button that Enter presses and the labels that show the unit, null where a popup has none. Called once by the
     * constructor of a member.
     */
    void setForm(QPushButton *confirm, QLabel *length, QLabel *speed, QLabel *acceleration);

    const AxisDescription &axis() const { return m_axis; }

    /** The rules that the fields break; none when the values may be sent. */
    virtual QVector<MotionRule> check() const = 0;
    /** Hands the fields to the worker. */
    virtual void send() = 0;
    /** Emits the popup's own deactivation signal. */
    virtual void announceDeactivation() = 0;
    virtual void retranslate() = 0;

    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private slots:
    void on_pushButton_confirm_clicked();
    void on_pushButton_restore_clicked();

private:
    void showUnit();

    AxisDescription m_axis;
    QLabel *m_lengthUnit = nullptr;
    QLabel *m_speedUnit = nullptr;
    QLabel *m_accelerationUnit = nullptr;
    bool m_bAsking = false; // its own message box is open
};
