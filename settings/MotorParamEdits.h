// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverRecords.h"

namespace Ui {
class OptionsWidget;
}

/**
 * The twelve edits of the motor-parameter page and what they stand for in the record. No edit refuses an input: what
 * is not a number in the range of its field is taken as 0.
 */
class MotorParamEdits final
{
public:
    /** `form` must outlive this object. */
    explicit MotorParamEdits(const Ui::OptionsWidget &form);

    /** Fills the edits; real numbers with 6 significant digits. */
    void show(const MotorParams &params) const;
    /** Overwrites in `params` what the edits stand for; everything else stays as it is. */
    void applyTo(MotorParams &params) const;

private:
    const Ui::OptionsWidget &m_form;
};
