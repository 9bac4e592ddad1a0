// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>

class QCheckBox;
class QDoubleSpinBox;
class QGroupBox;

/**
 * What the settings dialog has of one axis: its group on the trigger page and its group on the compensation page.
 * GUI thread. Reads wait for the controller; changes are queued requests to the worker.
 */
class AxisOptions final
{
    Q_DECLARE_TR_FUNCTIONS(AxisOptions)

public:
    struct Controls {
        QGroupBox *trigger;
        QCheckBox *triggerIn;
        QCheckBox *triggerOut;
        QDoubleSpinBox *displacement; // per trigger pulse, in the stage's unit
        QGroupBox *posConpen;
        QCheckBox *posConpenOn; // one of a pair of which exactly one is checked
        QCheckBox *posConpenClose;
    };

    /** axis counts from 0. */
    AxisOptions(int axis, const Controls &controls);

    /** For an axis that the controller does not have. */
    void hide() const;
    /** Shows both groups as the controller has them; what cannot be read stays as it was. */
    void load() const;

    /** Sends the trigger state, unless the displacement is longer than the stage's travel: then the user is told. */
    void changeTriggerIn() const;
    void changeTriggerOut() const;
    void changeDisplacement() const;
    void switchPosConpenOn() const;
    void switchPosConpenOff() const;

private:
    void tip(const QString &text) const;

    int m_iAxis;
    Controls m_controls;
};
