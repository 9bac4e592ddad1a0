// SPDX-License-Identifier: MIT
#include "controllers/emulator/Board.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace emulator {

namespace {

constexpr double reportDelay = 0.00008;
constexpr double reportTime = 0.0006; // a "?" that comes in it is lost
constexpr double dryTime = 0.001;     // from the last step until the program sees that motion is over
constexpr double resetTime = 0.0253;
constexpr double alarmTime = 0.5;
constexpr double halAlarmTime = 0.1;  // from the alarm of a reset in motion to the banner
constexpr double deafWindow = 0.035;  // before the end of a cancel, in which another one does harm
constexpr double searchTravels = 1.5; // how far homing looks for a switch
constexpr double searchPullOffs = 5;  // the same, the second time

} // namespace

// Real time

void Board::serveRealTime()
{
    if (std::exchange(m_limitEdge, false) && m_settings.isOn(21) && m_state != State::Alarm && !m_isHoming) {
        m_stepper.abort();
        m_planner.clear(position());
        m_state = State::Alarm;
        m_wantsReport = false;
        return spend(lockTime(), [this] { alarmAndStop(1); });
    }
    if (std::exchange(m_wantsReset, false)) {
        return reset();
    }
    if (m_mustReset) {
        m_wantsReport = m_wantsHold = m_wantsDoor = m_wantsResume = m_wantsCancel = false;
        return;
    }
    if (m_isHoming) {
        // A "?" is answered at the end; nothing else counts but these.
        m_wantsHold = m_wantsResume = m_wantsCancel = false;
        if (std::exchange(m_wantsDoor, false)) {
            failHoming(7);
        }
        return;
    }
    if (m_hasStopped) {
        m_hasStopped = false;
        motionEnded();
    }
    if (std::exchange(m_wantsDoor, false)) {
        openDoor();
    }
    if (std::exchange(m_wantsCancel, false) && m_state == State::Jog && !m_isCancelling) {
        m_isCancelling = true;
        m_stepper.hold();
    }
    if (std::exchange(m_wantsHold, false)) {
        feedHold();
    }
    if (std::exchange(m_wantsResume, false)) {
        resume();
    }
    for (const unsigned char byte : std::exchange(m_wantedOverrides, {})) {
        changeOverride(byte);
    }
    if (std::exchange(m_wantsReport, false)) {
        m_freeAt = std::max(m_freeAt, m_now + reportDelay);
        report();
        m_reportUntil = m_now + reportTime;
        m_freeAt = std::max(m_freeAt, m_reportUntil);
    }
}

std::string Board::stateName() const
{
    switch (m_state) {
    case State::Idle:
        return "Idle";
    case State::Run:
        return "Run";
    case State::Jog:
        return "Jog";
    case State::Hold:
        return m_isHeld ? "Hold:0" : "Hold:1";
    case State::Door:
        return !m_isHeld ? "Door:2" : m_isDoorOpen ? "Door:1" : "Door:0";
    case State::Home:
        return "Home";
    case State::Alarm:
        return "Alarm";
    case State::Check:
        return "Check";
    case State::Sleep:
        return "Sleep";
    }
    return "";
}

void Board::report()
{
    char text[120];
    const Vector work = m_offsets.work(m_modes.system);
    Vector shown = machinePosition();
    const bool isMachine = m_settings.hasBit(10, 0);
    for (int axis = 0; axis < m_options.axes; ++axis) {
        shown[axis] -= isMachine ? 0 : work[axis];
    }
    std::string line = "<" + stateName() + (isMachine ? "|MPos:" : "|WPos:") + vectorText(shown);
    if (m_settings.hasBit(10, 1)) {
        std::snprintf(text, sizeof text, "|Bf:%d,%d", m_planner.free(), freeBytes());
        line += text;
    }
    const bool isInch = m_settings.isOn(13);
    const double spindle = m_modes.spindle == 5 ? 0 : m_modes.spindleSpeed * m_spindleOverride / 100;
    std::snprintf(
        text, sizeof text, "|FS:%.*f,%.0f", isInch ? 1 : 0, m_stepper.speed() * 60 / (isInch ? 25.4 : 1), spindle);
    line += text;
    std::string pins = m_isProbeClosed != m_settings.isOn(6) ? "P" : "";
    for (int axis = 0; axis < m_options.axes; ++axis) {
        if ((limitPins() >> axis & 1U) != 0) {
            pins += axisLetters[static_cast<std::size_t>(axis)];
        }
    }
    pins += m_isDoorOpen ? "D" : "";
    pins += m_isHoldPressed ? "H" : "";
    if (!pins.empty()) {
        line += "|Pn:" + pins;
    }
    const bool isBusy = m_state == State::Run || m_state == State::Jog || m_state == State::Home ||
                        m_state == State::Hold || m_state == State::Door;
    m_untilOffsets = std::max(0, m_untilOffsets - 1);
    m_untilOverrides = std::max(0, m_untilOverrides - 1);
    if (m_untilOffsets == 0) {
        m_untilOffsets = isBusy ? 30 : 10;
        m_untilOverrides = std::max(m_untilOverrides, 1);
        line += "|WCO:" + vectorText(work);
    } else if (m_untilOverrides == 0) {
        m_untilOverrides = isBusy ? 20 : 10;
        std::snprintf(text, sizeof text, "|Ov:%d,%d,%d", m_feedOverride, m_rapidOverride, m_spindleOverride);
        line += text;
        std::string accessories = m_modes.spindle == 3 ? "S" : m_modes.spindle == 4 ? "C" : "";
        accessories += m_modes.isFloodOn ? "F" : "";
        line += accessories.empty() ? "" : "|A:" + accessories;
    }
    print(line + ">");
}

void Board::feedHold()
{
    if (m_state == State::Idle) {
        m_state = State::Hold;
        m_isHeld = true;
    } else if (m_state == State::Run) {
        m_state = State::Hold;
        m_stepper.hold();
    } else if (m_state == State::Jog && !m_isCancelling) {
        m_isCancelling = true;
        m_stepper.hold();
    }
}

void Board::openDoor()
{
    if (m_state == State::Alarm || m_state == State::Sleep || m_state == State::Check) {
        return;
    }
    print("[MSG:Check Door]");
    m_untilOverrides = 0;
    if (m_state == State::Jog) {
        m_isCancelling = m_doorAfterCancel = true;
        m_stepper.hold();
    } else {
        m_isHeld = m_state == State::Idle || m_isHeld;
        m_state = State::Door;
        if (!m_isHeld) {
            m_stepper.hold();
        }
    }
}

void Board::resume()
{
    m_isDeaf = false;
    if (!m_isHeld || (m_state == State::Door && m_isDoorOpen)) {
        return;
    }
    m_isHeld = false;
    m_stepper.release();
    m_state = m_planner.isEmpty() ? State::Idle : State::Run;
    m_stepper.start(m_now);
}

void Board::changeOverride(unsigned char byte)
{
    const auto change = [this](int &percent, int value, int low, int high) {
        percent = std::clamp(value, low, high);
        m_untilOverrides = 0;
    };
    switch (byte) {
    case 0x90:
        change(m_feedOverride, 100, 10, 200);
        break;
    case 0x91:
        change(m_feedOverride, m_feedOverride + 10, 10, 200);
        break;
    case 0x92:
        change(m_feedOverride, m_feedOverride - 10, 10, 200);
        break;
    case 0x93:
        change(m_feedOverride, m_feedOverride + 1, 10, 200);
        break;
    case 0x94:
        change(m_feedOverride, m_feedOverride - 1, 10, 200);
        break;
    case 0x95:
        change(m_rapidOverride, 100, 25, 100);
        break;
    case 0x96:
        change(m_rapidOverride, 50, 25, 100);
        break;
    case 0x97:
        change(m_rapidOverride, 25, 25, 100);
        break;
    case 0x99:
        change(m_spindleOverride, 100, 10, 200);
        break;
    case 0x9A:
        change(m_spindleOverride, m_spindleOverride + 10, 10, 200);
        break;
    case 0x9B:
        change(m_spindleOverride, m_spindleOverride - 10, 10, 200);
        break;
    case 0x9C:
        change(m_spindleOverride, m_spindleOverride + 1, 10, 200);
        break;
    case 0x9D:
        change(m_spindleOverride, m_spindleOverride - 1, 10, 200);
        break;
    case 0xA0:
        m_modes.isFloodOn = !m_modes.isFloodOn;
        m_untilOverrides = 0;
        break;
    default:
        return;
    }
    m_planner.setOverrides(m_feedOverride, m_rapidOverride);
    m_stepper.plan();
}

void Board::noteCancel(char byte)
{
    if (m_isCancelling) {
        violate(Violation::Kind::SecondCancel, std::string(1, byte));
        m_lateCancel = byte;
        m_lateCancelAt = m_now;
    }
}

double Board::lockTime() const
{
    return m_settings[1] == 255 ? 0 : m_settings[1] / 1000;
}

void Board::stopped()
{
    m_hasStopped = true;
    m_motorsAreOn = m_settings[1] == 255;
    if (!m_isHoming) {
        m_freeAt = std::max(m_freeAt, m_now + dryTime + lockTime());
    }
}

void Board::motionEnded()
{
    m_hostCancels = false;
    if (m_isCancelling) {
        m_isCancelling = false;
        m_stepper.abort();
        m_planner.clear(position());
        m_target = machinePosition();
        m_state = State::Idle;
        const bool isLate = m_lateCancel && m_now - m_lateCancelAt <= deafWindow;
        if (std::exchange(m_doorAfterCancel, false)) {
            m_state = State::Door;
            m_isHeld = true;
            m_untilOverrides = 0;
        } else if (isLate && m_lateCancel == '!') {
            m_state = State::Hold;
            m_isHeld = true;
        } else if (isLate && !isHal()) {
            m_isDeaf = true;
            m_wantsCancel = false;
        }
        m_lateCancel = 0;
    } else if (m_state == State::Hold || m_state == State::Door) {
        m_isHeld = true;
        m_untilOverrides = m_state == State::Door ? 0 : m_untilOverrides;
    } else if (m_state == State::Run || m_state == State::Jog) {
        if (m_planner.isEmpty()) {
            m_state = State::Idle;
        } else {
            m_stepper.start(m_now);
        }
    }
}

// Reset and alarms

void Board::reset()
{
    const bool wasMoving = m_stepper.isRunning();
    const bool wasHoming = m_isHoming;
    const bool isLocked = m_state == State::Alarm || m_state == State::Sleep;
    const bool owesAnswer = std::exchange(m_owesAnswer, false);
    m_stepper.abort();
    m_wait = {};
    m_mustReset = false;
    m_modes.spindle = 5;
    if (wasHoming) {
        return failHoming(6);
    }
    if (m_state == State::Home) {
        // Left there by a line that was not understood.
        print("ALARM:6");
        return later(alarmTime + resetTime, [this] { start(true); });
    }
    if (wasMoving) {
        // The position is told a step wrong, as one of two was seen to be: it is lost.
        Steps told = position();
        told[m_lastAxis] += m_lastDirection;
        m_stepper.setPosition(told);
        return later(resetTime, [this] {
            print("ALARM:3");
            m_state = State::Alarm;
            later(isHal() ? halAlarmTime : alarmTime + resetTime, [this] { start(true); });
        });
    }
    if (owesAnswer) {
        answer(0);
    }
    later(resetTime, [this, isLocked] { start(isLocked); });
}

void Board::start(bool isLocked)
{
    m_received.clear();
    m_line.clear();
    m_isComment = m_isRestComment = m_isTooLong = false;
    m_wantsReport = m_wantsReset = m_wantsHold = m_wantsDoor = m_wantsResume = m_wantsCancel = false;
    m_wantedOverrides.clear();
    m_hasStopped = m_isHeld = m_isCancelling = m_doorAfterCancel = m_isDeaf = m_hostCancels = m_mustReset =
        m_limitEdge = false;
    m_lateCancel = 0;
    m_wantsDoor = m_isDoorOpen;
    m_isHoming = m_isProbing = false;
    m_modes = {};
    m_feedOverride = m_rapidOverride = m_spindleOverride = 100;
    m_planner.setOverrides(100, 100);
    m_planner.clear(position());
    m_target = machinePosition();
    m_untilOffsets = m_untilOverrides = 0;
    m_state = isLocked ? State::Alarm : State::Idle;
    print("");
    print(
        isHal()     ? "GrblHAL 1.1f ['$' or '$HELP' for help]"
        : isStock() ? "Grbl 1.1h ['$' for help]"
                    : "Grbl 3.7 [FluidNC v3.7.8 '$' for help]");
    m_freeAt = std::max(m_freeAt, m_out.end());
    if (m_settings.isOn(21) && limitPins() != 0) {
        print("[MSG:Check Limits]");
    }
    if (isLocked) {
        print("[MSG:'$H'|'$X' to unlock]");
        return;
    }
    for (const std::string &line : m_startLines) {
        if (!line.empty()) {
            const Command command = emulator::readLine(line, false, m_options.axes, m_modes, m_offsets, m_target);
            print(">" + line + (command.error ? ":error:" + std::to_string(command.error) : ":ok"));
            m_modes = command.error ? m_modes : command.modes;
        }
    }
}

void Board::alarmAndStop(int number)
{
    m_state = State::Alarm;
    m_mustReset = true;
    m_hasStopped = false;
    m_wait = {};
    print("ALARM:" + std::to_string(number));
    m_out.put("[MSG:Reset to continue]\r\n", m_now + alarmTime);
}

void Board::refuseMove()
{
    // A move out of the travel: what runs is slowed to a stand first.
    m_owesAnswer = true;
    m_stepper.hold();
    if (m_state == State::Run) {
        m_state = State::Hold;
    }
    waitFor([this] { return !isMoving(); }, [this] { alarmAndStop(2); });
    m_wait.isOfLine = false;
}

// Limits

bool Board::isSwitchClosed(int axis) const
{
    if (m_forcedSwitches[axis] >= 0) {
        return m_forcedSwitches[axis] == 1;
    }
    const Stage &stage = m_options.stages[axis];
    constexpr double rounding = 1e-6;
    return m_stage[axis] <= stage.low + rounding || m_stage[axis] >= stage.high - rounding;
}

unsigned Board::limitPins() const
{
    unsigned pins = 0;
    for (int axis = 0; axis < m_options.axes; ++axis) {
        pins |= isSwitchClosed(axis) != m_settings.isOn(5) ? 1U << axis : 0;
    }
    return pins;
}

void Board::lookAtSwitch(int axis)
{
    const bool isClosed = isSwitchClosed(axis);
    if (isClosed != m_switches[axis]) {
        m_switches[axis] = isClosed;
        m_limitEdge = true;
    }
}

void Board::forceSwitch(int axis, int isClosed)
{
    m_forcedSwitches[axis] = isClosed;
    lookAtSwitch(axis);
}

void Board::pushStage(int axis, double distance)
{
    m_stage[axis] += distance;
    lookAtSwitch(axis);
}

bool Board::onStep(int axis, int direction, double time)
{
    (direction > 0 ? m_stepsUp : m_stepsDown)[axis] += 1;
    const int pin = m_settings.hasBit(3, axis) ? -direction : direction;
    m_stage[axis] += pin / m_settings.stepsPerMm(axis);
    m_lastStep = time;
    m_lastAxis = axis;
    m_lastDirection = direction;
    if (m_options.recordsSteps) {
        m_steps[axis].push_back({toUser(time), direction});
    }
    lookAtSwitch(axis);
    if (m_isHoming) {
        if ((m_homing >> axis & 1U) != 0 && (limitPins() >> axis & 1U) != 0) {
            m_homing &= ~(1U << axis);
            m_stepper.setMoving(m_homing);
            return m_homing != 0;
        }
        return true;
    }
    if (m_isProbing && m_isProbeClosed != m_settings.isOn(6)) {
        m_isProbing = false;
        m_hasProbed = true;
        m_stepper.hold();
    }
    return !(m_limitEdge && m_settings.isOn(21));
}

std::vector<Step> Board::takeSteps(int axis)
{
    return std::exchange(m_steps[axis], {});
}

// Homing

void Board::homeLine(const std::string &tail)
{
    if (!m_settings.isOn(22)) {
        return answer(5);
    }
    std::vector<unsigned> cycles;
    if (tail.empty()) {
        // Z alone, then X and Y together, then the others.
        const unsigned all = (1U << m_options.axes) - 1;
        for (const unsigned cycle : {4U, 3U, ~7U}) {
            if ((cycle & all) != 0) {
                cycles.push_back(cycle & all);
            }
        }
    } else {
        const std::size_t axis = axisLetters.find(tail[0]);
        if (!m_options.homesSingleAxes || tail.size() > 1 || axis >= static_cast<std::size_t>(m_options.axes)) {
            m_state = State::Home; // and stays there
            return answer(3);
        }
        cycles.push_back(1U << axis);
    }
    m_state = State::Home;
    m_isHoming = true;
    m_homed = 0;
    m_cycles = std::move(cycles);
    homeNext();
}

void Board::homeNext()
{
    m_cycle = m_cycles.front();
    m_cycles.erase(m_cycles.begin());
    approach(false);
}

void Board::homeMove(double distance, double feed, const Then &then)
{
    // All axes of the cycle go `distance` mm each, towards their switches when it is above 0, with `feed` mm/min each.
    Steps target = position();
    int count = 0;
    for (int axis = 0; axis < m_options.axes; ++axis) {
        if ((m_cycle >> axis & 1U) != 0) {
            const double way = m_settings.hasBit(23, axis) ? -distance : distance;
            target[axis] += std::llround(way * m_settings.stepsPerMm(axis));
            ++count;
        }
    }
    m_motorsAreOn = true;
    m_planner.clear(position());
    m_planner.append(target, feed / 60 * std::sqrt(count), Block::Kind::Homing);
    m_stepper.start(m_now);
    waitFor(
        [this] { return !m_stepper.isRunning(); },
        [this, then] {
            m_hasStopped = false;
            m_stepper.setMoving(~0U);
            later(m_settings[26] / 1000, then);
        });
    m_wait.isOfLine = false;
}

void Board::approach(bool isSlow)
{
    double distance = isSlow ? searchPullOffs * m_settings[27] : 0;
    Steps zero = position();
    for (int axis = 0; axis < m_options.axes; ++axis) {
        if ((m_cycle >> axis & 1U) != 0) {
            distance = isSlow ? distance : std::max(distance, searchTravels * m_settings.travel(axis));
            zero[axis] = 0;
        }
    }
    m_stepper.setPosition(zero);
    m_homing = m_cycle & ~limitPins();
    m_stepper.setMoving(m_homing);
    homeMove(m_homing ? distance : 0, m_settings[isSlow ? 24 : 25], [this, isSlow] {
        if (m_homing != 0) {
            return failHoming(9);
        }
        homeMove(-m_settings[27], m_settings[25], [this, isSlow] {
            if ((limitPins() & m_cycle) != 0) {
                failHoming(8);
            } else if (!isSlow) {
                approach(true);
            } else {
                homed();
            }
        });
    });
}

void Board::homed()
{
    m_homed |= m_cycle;
    if (!m_cycles.empty()) {
        return homeNext();
    }
    Steps place = position();
    for (int axis = 0; axis < m_options.axes; ++axis) {
        if ((m_homed >> axis & 1U) != 0) {
            const double end = m_settings.hasBit(23, axis) ? m_settings[27] - m_settings.travel(axis) : -m_settings[27];
            place[axis] = m_options.homesToZero ? 0 : std::llround(end * m_settings.stepsPerMm(axis));
        }
    }
    m_stepper.setPosition(place);
    m_planner.clear(place);
    m_target = machinePosition();
    if (std::exchange(m_wantsReport, false)) {
        report();
    }
    later(lockTime(), [this] {
        m_isHoming = false;
        m_state = State::Idle;
        answer(0);
    });
}

void Board::failHoming(int number)
{
    m_stepper.abort();
    m_stepper.setMoving(~0U);
    m_planner.clear(position());
    m_isHoming = false;
    m_homing = 0;
    m_state = State::Alarm;
    print("ALARM:" + std::to_string(number));
    later(alarmTime, [this] {
        answer(0);
        later(resetTime, [this] { start(true); });
    });
}

// Probing

void Board::probe(const Command &command)
{
    if (m_isProbeClosed != m_settings.isOn(6)) {
        m_owesAnswer = true;
        m_hasProbed = false;
        return alarmAndStop(4);
    }
    m_isProbing = true;
    m_hasProbed = false;
    const bool alarms = command.alarmsWithoutContact;
    move(command.target, command.feed, Block::Kind::Feed, [this, alarms] {
        waitFor(
            [this] { return !isMoving(); },
            [this, alarms] {
                m_isProbing = false;
                m_probed = machinePosition();
                m_stepper.abort();
                m_planner.clear(position());
                m_target = machinePosition();
                m_isHeld = false;
                m_state = State::Idle;
                if (!m_hasProbed && alarms) {
                    m_owesAnswer = true;
                    return alarmAndStop(5);
                }
                print("[PRB:" + vectorText(m_probed) + (m_hasProbed ? ":1]" : ":0]"));
                answer(0);
            });
    });
}

} // namespace emulator
