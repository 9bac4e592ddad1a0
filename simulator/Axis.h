// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/MotionProfile.h"
#include "simulator/Scenario.h"

#include "device/moverRecords.h"

#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace simulator {

/** The values that the library's setters store; units and ranges as in device/moverLibrary.h. */
struct AxisSettings {
    double speed = 0;
    double acceleration = 0;
    double targetPos = 0;
    double relativeDisp = 0;
    int relativeDispEnable = 1;
    double jogStep = 0;
    int jogCount = 5;
    int jogDelay = 500;
    double circleDisp = 0;
    int circleCount = 3;
    int circleDelay = 500;
    int triggerInEnable = 0;
    int triggerOutEnable = 0;
    double triggerStep = 0;
    int posConpenEnable = 0;
    /** Pairs of expected and actual position in ascending order of the expected one. */
    std::vector<std::pair<double, double>> positivePosConpen;
    std::vector<std::pair<double, double>> negativePosConpen;
};

/**
 * One axis with its stage and the stage's identification chip.
 *
 * The axis knows one motion at a time, in closed form, and the time it began. settle() brings it up to a later time,
 * whatever lies between: the legs of a loop run follow one another at the times at which they end, however seldom
 * anybody looks. Everything else happens at the time of the last settle().
 *
 * A run keeps the speed and acceleration it was started with. Starts return a Status and change nothing when refused.
 */
class Axis
{
public:
    explicit Axis(const AxisScenario &scenario);

    /** Lets time pass. `now`: seconds, never less than the last time. */
    void settle(double now);

    // ---- Runs. A start that leads nowhere (count or length 0, already there) succeeds and is over at once.

    int startMove();
    /** `direction`, here and below: 1 or -1. */
    int startDrive(int direction);
    int startJog(int direction);
    int startLoop(int direction);
    int home();
    /** Brakes. A dwell is over at once. */
    void stop();
    /** A pulse on the trigger input. One that comes while the axis cannot be started is lost. */
    void triggerPulse();
    /** Off stops the axis where it is: without current the motor holds by friction. */
    void setEnabled(bool enabled);

    /** Hands the axis to the joystick, from whatever it does; `deflection` -10 to 10. */
    void driveByJoystick(double deflection);
    /** Takes the axis back from the joystick: it brakes. */
    void endJoystick();

    // ---- State

    bool running() const { return m_run != Run::None; }
    MotorStageState state() const;
    double position() const { return m_motion.position; }
    double velocity() const { return m_motion.velocity; }
    /** The position as the library reports it: corrected by the compensation table if that is enabled. */
    double reportedPosition() const;
    /** Number of the jog step or loop that is running, from 1; 0 while none is. */
    int jogIndex() const { return m_run == Run::Jog ? m_leg + 1 : 0; }
    int loopIndex() const { return m_run == Run::Loop ? m_leg / 2 + 1 : 0; }

    // ---- Stage

    AxisSettings settings;
    Chip chip;
    /** Override of state(), for tests of displays. */
    std::optional<MotorStageState> shownState;
    /** What getMotorParams answers in place of stage(). */
    std::optional<MotorParams> shownParams;

    const MotorParams &stage() const { return m_stage; }
    /** Names and unit may be changed at any time; for the rest there is setStage(). */
    MotorParams &stage() { return m_stage; }
    /**
     * Stores the parameters of the stage, in the chip too if there is one. Refused while the axis is running, and with
     * OutOfRange if the travel is empty or a speed or acceleration is not above 0. Position, target, speed and
     * acceleration that the new stage does not allow are brought to the nearest that it does.
     */
    int setStage(const MotorParams &stage);

    /** The position becomes `position`, clipped to the travel, and the axis stands. */
    void setPosition(double position);
    /** A failed limit opto-coupler ends every run and refuses new ones; that of the origin does so with homing only. */
    void setOptoFault(Opto opto, bool failed);

private:
    enum class Run { None, Move, Drive, Jog, Loop, Home, Trigger, Joystick, Stop };

    int refusal() const;
    bool limitOptoFailed() const { return m_optoFailed[0] || m_optoFailed[1]; }
    double clipped(double position) const;
    /** Starts a run of `legs` legs, to `m_base` + `m_displacement` and (a loop run) back. */
    int start(Run run, double displacement, int legs, double dwell, double speed);
    void startLeg(double at);
    void setProfile(const MotionProfile &profile, double at);
    void endRun();

    MotorParams m_stage;
    double m_now = 0;
    Motion m_motion; ///< at m_now
    bool m_enabled = true;
    bool m_homed = false;
    bool m_joystickMode = false;
    double m_deflection = 0;
    std::array<bool, 3> m_optoFailed{}; ///< by Opto
    int m_direction = 1;                ///< of the last motion: 1 or -1

    Run m_run = Run::None;
    double m_base = 0;         ///< where the run began
    double m_displacement = 0; ///< of a leg, signed
    int m_legs = 0;
    int m_leg = 0;      ///< from 0
    double m_dwell = 0; ///< seconds between legs
    double m_speed = 0;
    double m_acceleration = 0;
    bool m_clipped = false; ///< the leg ends at a limit before its target, and with it the run
    double m_legStart = 0;  ///< time at which the profile begins
    MotionProfile m_profile;
};

} // namespace simulator
