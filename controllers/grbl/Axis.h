// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/Axis.h"

#include <functional>
#include <optional>

namespace grbl {

using namespace moverStatus;

class Board;

/** Which stage sits on which axis of a board. */
struct AxisSetup {
    int boardAxis = 0; ///< 0 is X
    MotorParams stage{};
    bool hasStage = false;  ///< a stage model is assigned
    bool hasOffset = false; ///< the next one is given, and not worked out from the board's homing
    double offset = 0;      ///< position of the stage at machine position 0
};

/** One axis of a board: its plan, which is streamed, and what the board reports of it. */
class Axis : public controllers::Axis
{
public:
    Axis(Board &board, const AxisSetup &setup);

    int home() override;
    int stop() override;
    /** A permission: the firmware has no switch per axis. Switching on takes a locked board out of its lock. */
    int setEnabled(bool enabled) override;
    MotorStageState state() const override;
    int setStage(const MotorParams &given, std::unique_lock<std::mutex> &lock) override;
    int chipCode() const override { return m_setup.hasStage ? 2 : 0; }
    int eraseChip() override { return NotAvailable; }
    bool hasTriggers() const override { return false; }
    void stored() override;

    /** Set by whoever owns the board: waits, without the lock, until a write is over. */
    std::function<void(std::unique_lock<std::mutex> &)> waitForBoard;
    /** Set by the same: a value has changed that is kept in a file. */
    std::function<void()> changed;

    // ---- For the board

    int boardAxis() const { return m_setup.boardAxis; }
    /** Between positions of the stage and the board's machine coordinates, in mm. */
    double toBoard(double position) const;
    double toStage(double mm) const;
    /** The axis runs and is not merely slowing down. */
    bool goesOn() const { return running() && run() != Run::Stop; }
    /** The plan has ended by itself, and the board is not there yet. */
    bool arrives() const;
    void slowDown()
    {
        m_endsByItself = false;
        brake();
    }
    void stand(double position)
    {
        m_endsByItself = false;
        standAt(position);
    }
    void takeUp(double position, double now) { takeUpAt(position, now); }
    /** Stands at `position` since `now`, and goes on to where the plan had it. */
    void finishFrom(double position, double now);
    /** Was stopped while the board was brought to rest for another reason: it does not go on. */
    bool isStopped() const { return m_stopped; }
    void setStopped(bool stopped) { m_stopped = stopped; }
    bool isHomed() const { return m_homed; }
    void setHomed(bool homed)
    {
        m_homed = homed;
        m_switchAt.reset();
    }
    /** Has homed, and stands at `mm` of the board: its pull-off from the switch. */
    void reference(double mm);
    /** What is kept for the axis replaces its stage. */
    void restore(const MotorParams &stage) { setStored(stage); }
    /** As the file of controllers has it, whatever has been written since. */
    const MotorParams &setUpStage() const { return m_setup.stage; }
    /** The finest that the board tells apart, in mm. */
    double resolution() const;
    /** Speed and ramp that the axis has, whatever is asked for. */
    double speedLimit() const override;
    double accelerationLimit() const override;
    /** The number of the board's setting that lifts the speed limit. */
    int speedSetting() const;

protected:
    int refusal(Run run, double displacement) const override;
    // A leg ends on its target, and the next begins with the slice behind it.
    double legBegin(double) const override { return now(); }
    double stagePosition() const override;
    void leaves() override;
    void ended(Run run) override { m_endsByItself = run != Run::Stop; }

private:
    bool hasSwitch() const; ///< to home on
    bool homesToMinus() const;
    double length() const; ///< of the board's travel
    void sayCap(double asked);
    void sayResolution();

    Board &m_board;
    AxisSetup m_setup;
    bool m_enabled = true;
    bool m_homed = false;
    bool m_stopped = false;
    bool m_endsByItself = false;      ///< the last run was not stopped
    bool m_endsAtMinus = false;       ///< where the last homing ended, as far as one can tell
    std::optional<double> m_switchAt; ///< in the board's mm, where that is not at an end of [-travel, 0]
    double m_toldCap = 0;             ///< what has been said of the speed, so that it is said once
    double m_toldResolution = 0;      ///< the same for the resolution
};

} // namespace grbl
