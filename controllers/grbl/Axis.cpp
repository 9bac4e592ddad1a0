// SPDX-License-Identifier: MIT
#include "controllers/grbl/Axis.h"

#include "controllers/grbl/Board.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace grbl {

namespace {

// Numbers of the board's settings, for the first axis.
constexpr int homingDirection = 23;
constexpr int slowHoming = 24;
constexpr int homingPullOff = 27;
constexpr int stepsPerUnit = 100;
constexpr int highestSpeed = 110;
constexpr int ramp = 120;
constexpr int travel = 130;

// The board's ramp is to be this much steeper than the one it is sent, and is at least so much.
constexpr double rampRatio = 10;
constexpr double leastRampRatio = 2;

constexpr double fastestFeed = 1.02; ///< factor of the streamed feed

} // namespace

Axis::Axis(Board &board, const AxisSetup &setup)
    : controllers::Axis(setup.stage, std::clamp(0.0, setup.stage.minPos, setup.stage.maxPos))
    , m_board(board)
    , m_setup(setup)
{
}

double Axis::toBoard(double position) const
{
    const double sign = stage().phaseDirction == 1 ? -1 : 1;
    return sign * (position - toStage(0));
}

bool Axis::hasSwitch() const
{
    // A board that does not tell has one when it has homed.
    return m_board.setting(Board::homingOn, m_homed ? 1 : 0) != 0;
}

double Axis::length() const
{
    return m_board.setting(travel + boardAxis(), stage().maxPos - stage().minPos);
}

bool Axis::homesToMinus() const
{
    const auto told = static_cast<unsigned>(m_board.setting(homingDirection, m_endsAtMinus ? ~0U : 0));
    return (told >> boardAxis() & 1U) != 0;
}

void Axis::reference(double mm)
{
    // Most boards set their position such that the switch is at an end of [-travel, 0], give or take a step; some make
    // it 0 where they stand.
    const double pullOff = m_board.setting(homingPullOff, 1);
    const auto off = [mm](double place) { return std::abs(mm - place); };
    // For a board that does not tell its direction.
    m_endsAtMinus = std::min(off(pullOff), off(pullOff - length())) < std::min(off(-pullOff), off(length() - pullOff));
    const bool atMinus = homesToMinus();
    const double at = atMinus ? mm - pullOff : mm + pullOff;
    if (std::abs(at - (atMinus ? -length() : 0)) > 0.05)
        m_switchAt = at;
}

double Axis::toStage(double mm) const
{
    const double sign = stage().phaseDirction == 1 ? -1 : 1;
    double zero = m_setup.offset; // position of the stage at machine position 0
    if (!m_setup.hasOffset && hasSwitch()) {
        // The board's machine space is [-travel, 0], and its homing switch is at one end of the stage.
        const bool atMinus = homesToMinus();
        const double boardEnd = m_switchAt.value_or(atMinus ? -length() : 0);
        const double stageEnd = atMinus == (sign > 0) ? stage().minPos : stage().maxPos;
        zero = stageEnd - sign * boardEnd;
    }
    return zero + sign * mm;
}

double Axis::speedLimit() const
{
    const double board = m_board.setting(highestSpeed + boardAxis(), stage().maxSpeed * 60) / 60;
    const double braking = m_board.setting(ramp + boardAxis(), stage().maxAcc) * Board::brakingTime;
    const double all = std::min({stage().maxSpeed, board / fastestFeed, braking});
    const double slow = m_board.setting(slowHoming, 25) / 60;
    return m_board.isOnSwitch(boardAxis()) ? std::min(all, slow) : all;
}

int Axis::speedSetting() const
{
    const double board = m_board.setting(highestSpeed + boardAxis(), stage().maxSpeed * 60) / 60;
    return (speedLimit() < board / fastestFeed ? ramp : highestSpeed) + boardAxis();
}

double Axis::accelerationLimit() const
{
    return std::min(stage().maxAcc, m_board.setting(ramp + boardAxis(), stage().maxAcc) / leastRampRatio);
}

int Axis::refusal(Run run, double displacement) const
{
    if (!m_enabled)
        return PowerOff;
    if (const int status = m_board.refusal(); status != Ok)
        return status;
    if (running() || state().isStop == 0)
        return AxisRunning;
    if (run == Run::Move && !m_homed && m_board.setting(Board::homingOn, 0) != 0)
        return ReferenceFirst;
    // On a limit switch there is only the way off it.
    if (m_board.switchDirection(boardAxis()) * (toBoard(displacement) - toBoard(0)) > 0)
        return OptoFault;
    return Ok;
}

int Axis::home()
{
    if (!m_enabled)
        return PowerOff;
    return m_board.home(*this);
}

int Axis::stop()
{
    return m_board.stop(*this);
}

int Axis::setEnabled(bool enabled)
{
    if (!enabled) {
        m_board.stop(*this);
        m_board.say(
            {moverMessages::PermissionOnly, "Off only refuses starts: the board keeps the motor's current on",
             boardAxis()});
    }
    m_enabled = enabled;
    return enabled && m_board.locked() ? m_board.unlock() : Ok;
}

bool Axis::arrives() const
{
    return !running() && m_endsByItself && !m_board.isThere(boardAxis());
}

void Axis::finishFrom(double position, double now)
{
    const double end = this->position();
    standAt(position);
    settle(now);
    if (end != position)
        driveTo(end, std::min(settings.speed, speedLimit()));
}

void Axis::leaves()
{
    m_board.hurry();
    sayCap(settings.speed);
    sayResolution();
}

double Axis::resolution() const
{
    return std::max(0.001, 1 / m_board.setting(stepsPerUnit + boardAxis(), 250)); // reports have three decimals
}

void Axis::sayCap(double asked)
{
    const double cap = speedLimit();
    if (cap >= stage().maxSpeed || asked <= cap || m_board.isOnSwitch(boardAxis()))
        return;
    if (std::exchange(m_toldCap, cap) == cap)
        return;
    const int setting = speedSetting();
    char text[160];
    std::snprintf(
        text, sizeof text, "Axis %c is held to %.4g mm/s: the board's setting $%d lifts that", axisLetters[boardAxis()],
        cap, setting);
    m_board.say({moverMessages::Capped, text, boardAxis(), cap, setting});
}

void Axis::sayResolution()
{
    const double finest = resolution();
    double asked = 0;
    switch (run()) {
    case Run::Move:
        asked = toBoard(settings.targetPos);
        break;
    case Run::Drive:
        asked = settings.relativeDispEnable ? settings.relativeDisp : 0;
        break;
    case Run::Jog:
        asked = settings.jogStep;
        break;
    case Run::Loop:
        asked = settings.circleDisp;
        break;
    default:
        return;
    }
    if (std::abs(asked - std::round(asked / finest) * finest) < 1e-6 ||
        std::exchange(m_toldResolution, finest) == finest)
        return;
    char text[160];
    std::snprintf(
        text, sizeof text, "Axis %c is exact to %.4g mm, which is coarser than what was asked for",
        axisLetters[boardAxis()], finest);
    m_board.say({moverMessages::Coarse, text, boardAxis(), finest});
}

double Axis::stagePosition() const
{
    return toStage(m_board.report().position[boardAxis()]);
}

MotorStageState Axis::state() const
{
    MotorStageState state{};
    const double resolution = 1 / m_board.setting(stepsPerUnit + boardAxis(), 250);
    const bool arrived = m_board.still() || m_board.isThere(boardAxis());
    const bool busy = m_board.phase() == Board::Phase::Homing || m_board.phase() == Board::Phase::Cancelling;
    state.isStop = !running() && arrived && !busy;
    // A locked board can be homed, which is the usual way out of its lock: what else is asked of it is refused in
    // words.
    state.isCanRun = m_enabled && state.isStop && m_board.phase() == Board::Phase::Ready;
    state.isEnable = m_enabled;
    state.isHome = m_homed;
    const double where = stagePosition();
    // Before it has been homed nobody knows where the ends are.
    const bool known = m_homed || m_board.setting(Board::homingOn, 0) == 0;
    state.isLeftLimit = known && atLowerEnd(where - resolution / 2);
    state.isRightLimit = known && atUpperEnd(where + resolution / 2);
    state.runCount = static_cast<uint32_t>(loopIndex());
    return state;
}

int Axis::setStage(const MotorParams &given, std::unique_lock<std::mutex> &lock)
{
    if (running())
        return AxisRunning;
    if (const int status = fault(given); status != Ok)
        return status;
    if (given.pulseOneCircle == 0 || given.dispOneCircle <= 0)
        return OutOfRange;
    const int number = boardAxis();
    std::map<int, double> settings{
        {stepsPerUnit + number, given.pulseOneCircle / given.dispOneCircle},
        {highestSpeed + number, given.maxSpeed * 60},
        {ramp + number, given.maxAcc * rampRatio},
        {travel + number, given.maxPos - given.minPos},
    };
    if (const int status = m_board.write(settings); status != Ok)
        return status;
    waitForBoard(lock);
    if (const int status = m_board.written(); status != Ok)
        return status;
    if (given.phaseDirction != stage().phaseDirction)
        m_homed = false;
    setStored(given);
    m_setup.hasStage = true;
    standAt(stagePosition());
    sayCap(given.maxSpeed);
    stored();
    return Ok;
}

void Axis::stored()
{
    if (changed)
        changed();
}

} // namespace grbl
