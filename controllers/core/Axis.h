// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/MotionProfile.h"

#include "device/moverRecords.h"
#include "device/moverStatus.h"

#include <limits>
#include <mutex>
#include <utility>
#include <vector>

namespace controllers {

using namespace moverStatus;

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

    /** What an axis with this stage begins with. */
    static AxisSettings of(const MotorParams &stage, double position);
};

/**
 * One axis: its values, its stage and the plan of its motion. What makes the stage follow the plan, and what else there
 * is to know about it, is each kind of controller's own.
 *
 * The axis knows one motion at a time, in closed form, and the time it began. settle() brings the plan up to a later
 * time, whatever lies between: the legs of a loop run follow one another at the times at which they end, however seldom
 * anybody looks. Everything else happens at the time of the last settle().
 *
 * A run keeps the speed and acceleration it was started with. Starts return a status and change nothing when refused.
 */
class Axis
{
public:
    Axis(const MotorParams &stage, double position);
    virtual ~Axis() = default;

    /** Lets time pass. `now`: seconds, never less than the last time. */
    void settle(double now);

    // ---- Runs. A start that leads nowhere (count or length 0, already there) succeeds and is over at once.

    int startMove();
    /** `direction`, here and below: 1 or -1. */
    int startDrive(int direction);
    int startJog(int direction);
    int startLoop(int direction);
    virtual int home() = 0;
    /** Brakes. A dwell is over at once. Returns a status. */
    virtual int stop();
    /** A switch of the power stage, or what stands for it. Returns a status. */
    virtual int setEnabled(bool enabled) = 0;

    // ---- State

    bool running() const { return m_run != Run::None; }
    /** Whether the run is between two of its legs. */
    bool dwelling() const { return running() && m_now >= m_legStart + m_profile.duration(); }
    virtual MotorStageState state() const = 0;
    /** Where the plan has the axis; what is true of the stage is reportedPosition(). */
    double position() const { return m_motion.position; }
    double velocity() const { return m_motion.velocity; }
    /** The position as the library reports it: corrected by the compensation table if that is enabled. */
    double reportedPosition() const;
    /** Number of the jog step or loop that is running, from 1; 0 while none is. */
    int jogIndex() const { return m_run == Run::Jog ? m_leg + 1 : 0; }
    int loopIndex() const { return m_run == Run::Loop ? m_leg / 2 + 1 : 0; }

    // ---- Stage

    AxisSettings settings;

    const MotorParams &stage() const { return m_stage; }
    /** Names and unit may be changed at any time; for the rest there is setStage(). */
    MotorParams &stage() { return m_stage; }
    /** What getMotorParams answers. */
    virtual MotorParams shownStage() const { return m_stage; }
    /**
     * Stores the parameters of the stage. Refused while the axis is running, and with OutOfRange if the travel is empty
     * or a speed or acceleration is not above 0. Position, target, speed and acceleration that the new stage does not
     * allow are brought to the nearest that it does. `lock` is the call's; it is released while the controller writes.
     */
    virtual int setStage(const MotorParams &stage, std::unique_lock<std::mutex> &lock);
    /** The identification chip's code as getMotorAutoDetect gives it. */
    virtual int chipCode() const = 0;
    virtual int eraseChip() = 0;
    /** Whether the axis has trigger lines. */
    virtual bool hasTriggers() const = 0;
    /** A setter has stored something. */
    virtual void stored() {}

protected:
    enum class Run {
        None,
        Move,
        Drive,
        Jog,
        Loop,
        Home,
        Stop,
        Own ///< of this kind of controller
    };

    /** What speaks against a start of `run`, which begins in the direction of `displacement`; None asks for any at all.
     */
    virtual int refusal(Run run, double displacement) const;
    /** Speed and acceleration that no run exceeds. */
    virtual double speedLimit() const { return std::numeric_limits<double>::infinity(); }
    virtual double accelerationLimit() const { return std::numeric_limits<double>::infinity(); }
    /** When a leg begins that was due at `due`, not after the time of this settle(). */
    virtual double legBegin(double due) const { return due; }
    /** Where the stage stands, before compensation. */
    virtual double stagePosition() const { return m_motion.position; }
    /** The plan leaves the position where it was. */
    virtual void leaves() {}
    virtual void ended(Run) {}

    Run run() const { return m_run; }
    double now() const { return m_now; }
    bool atLowerEnd(double position) const;
    bool atUpperEnd(double position) const;
    double clipped(double position) const;
    /** Starts a run of `legs` legs, to where it begins plus `displacement` and (a loop run) back. */
    int start(Run run, double displacement, int legs, double dwell, double speed);
    /** Makes the axis run to `target` from what it is doing, until it is stopped or there. */
    void driveTo(double target, double speed);
    /** Brakes with the acceleration of the run, or ends the run if the axis stands. */
    void brake();
    /** The run is over and the axis stands at `position`. */
    void standAt(double position);
    /** The axis stands at `position` since `now` and takes up its leg again from there. */
    void takeUpAt(double position, double now);
    void setStored(const MotorParams &stage);
    static int fault(const MotorParams &stage);

private:
    /** Rounding must not carry a leg beyond a limit, unless it begins there. */
    double limited(double position) const;
    void startLeg(double at);
    void setProfile(const MotionProfile &profile, double at);
    void endRun();

    MotorParams m_stage;
    double m_now = 0;
    Motion m_motion;     ///< at m_now
    int m_direction = 1; ///< of the last motion: 1 or -1

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
    double m_from = 0;      ///< position at which it begins, which may lie outside the travel
    MotionProfile m_profile;
};

} // namespace controllers
