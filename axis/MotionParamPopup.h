// SPDX-License-Identifier: MIT
#pragma once

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
    void setAxis(int axis) { m_iAxis = axis; }
    /** The stage's unit of length, "mm" or "°". */
    void setUnit(const QString &unit);
    /** Ends of travel in the stage's unit. */
    void setPositionRange(double minimum, double maximum);
    /** Unit per second. */
    void setMaxSpeed(double maximum) { m_dMaxSpeed = maximum; }
    /** Unit per second squared. */
    void setMaxAcceleration(double maximum) { m_dMaxAcc = maximum; }

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

    int axis() const { return m_iAxis; }
    double minimum() const { return m_dMinimum; }
    double maximum() const { return m_dMaximum; }
    double maxTravel() const { return m_dMaximum - m_dMinimum; }
    double maxSpeed() const { return m_dMaxSpeed; }
    double maxAcceleration() const { return m_dMaxAcc; }

    /** The messages of all broken rules, in the popup's order; empty when the values may be sent. */
    virtual QString check() const = 0;
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

    int m_iAxis = 0;
    QString m_sUnit = QStringLiteral("mm");
    double m_dMinimum = 0;
    double m_dMaximum = 0;
    double m_dMaxSpeed = 0;
    double m_dMaxAcc = 0;
    QLabel *m_lengthUnit = nullptr;
    QLabel *m_speedUnit = nullptr;
    QLabel *m_accelerationUnit = nullptr;
    bool m_bAsking = false; // its own message box is open
};
