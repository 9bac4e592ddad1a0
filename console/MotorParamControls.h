// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverRecords.h"

namespace Ui {
class DebugWidget;
}

/**
 * The controls of the motor-parameter page and what they stand for in the record: every field but the two of
 * alignment. No edit refuses an input: what is not a number in the range of its field is marked and taken as 0.
 */
class MotorParamControls final
{
public:
    /** `form` must outlive this object. */
    explicit MotorParamControls(const Ui::DebugWidget &form);

    /**
     * Fills the controls; real numbers with 6 significant digits. An enumeration value without an item of its own
     * gets one, so that writing it back does not change it.
     */
    void show(const MotorParams &params) const;
    /** What the controls say; everything else is zero. */
    MotorParams record() const;

private:
    const Ui::DebugWidget &m_form;
};
