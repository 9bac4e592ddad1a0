// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/Axis.h"
#include "controllers/simulated/Scenario.h"

#include "device/moverRecords.h"

#include <array>
#include <optional>

namespace simulator {

/** One axis whose stage is where the plan says, with the joystick, the trigger line and the stage's chip. */
class Axis : public controllers::Axis
{
public:
    explicit Axis(const AxisScenario &scenario);

    int home() override;
    /** A pulse on the trigger input. One that comes while the axis cannot be started is lost. */
    void triggerPulse();
    /** Off stops the axis where it is: without current the motor holds by friction. */
    int setEnabled(bool enabled) override;

    /** Hands the axis to the joystick, from whatever it does; `deflection` -10 to 10. */
    void driveByJoystick(double deflection);
    /** Takes the axis back from the joystick: it brakes. */
    void endJoystick();

    MotorStageState state() const override;

    Chip chip;
    /** Override of state(), for tests of displays. */
    std::optional<MotorStageState> shownState;
    /** What getMotorParams answers in place of stage(). */
    std::optional<MotorParams> shownParams;

    MotorParams shownStage() const override { return shownParams.value_or(stage()); }
    /** Stores them in the chip too, if there is one. */
    int setStage(const MotorParams &stage, std::unique_lock<std::mutex> &lock) override;
    int chipCode() const override { return static_cast<int>(chip); } // the enumerators are in the order of the codes
    int eraseChip() override;
    bool hasTriggers() const override { return true; }

    /** The position becomes `position`, clipped to the travel, and the axis stands. */
    void setPosition(double position);
    /** A failed limit opto-coupler ends every run and refuses new ones; that of the origin does so with homing only. */
    void setOptoFault(Opto opto, bool failed);

protected:
    int refusal(Run run, double displacement) const override;
    void leaves() override { m_homed = false; }
    void ended(Run run) override { m_homed = m_homed || run == Run::Home; }

private:
    bool limitOptoFailed() const { return m_optoFailed[0] || m_optoFailed[1]; }

    bool m_enabled = true;
    bool m_homed = false;
    bool m_joystickMode = false;
    double m_deflection = 0;
    std::array<bool, 3> m_optoFailed{}; ///< by Opto
};

} // namespace simulator
