// SPDX-License-Identifier: MIT
#include "controllers/emulator/Board.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace emulator {

namespace {

constexpr double readTime = 0.00003; // for a line of nothing
constexpr double commandTime = 0.00006;
constexpr double codeTime = 0.00004;    // for each character
constexpr double jogTime = 0.00085;     // from the line's end until the state is Jog
constexpr double restTime = 0.00155;    // until the ok, from rest
constexpr double codeMoveTime = 0.0005; // until the ok of a G0 or G1
constexpr double mostSteps = 1e9;       // that a place is away from zero
constexpr double queuedTime = 0.00035;  // until the ok, in motion

} // namespace

void Board::readLine(const std::string &line)
{
    if (line.empty()) {
        spend(readTime, [this] { answer(0); });
    } else if (line.compare(0, 3, "$J=") == 0 && (m_state == State::Idle || m_state == State::Jog)) {
        spend(codeTime * static_cast<double>(line.size()) / 2, [this, line] { jog(line.substr(3)); });
    } else if (line[0] == '$') {
        spend(commandTime, [this, line] { command(line); });
    } else if (m_state == State::Alarm || m_state == State::Jog || m_state == State::Home) {
        spend(commandTime, [this] { answer(9); });
    } else {
        spend(codeTime * static_cast<double>(line.size()), [this, line] { code(line); });
    }
}

void Board::command(const std::string &line)
{
    const std::string rest = line.substr(1);
    const bool isAtRest = m_state == State::Idle || m_state == State::Alarm;
    const char first = rest.empty() ? 0 : rest[0];
    const auto list = [this](const std::vector<std::string> &lines) {
        for (const std::string &each : lines) {
            print(each);
        }
        answer(0);
    };
    if (rest.empty()) {
        return list({"[HLP:$$ $# $G $I $N $x=val $Nx=line $J=line $SLP $C $X $H ~ ! ? ctrl-x]"});
    }
    if (first == 'J') {
        return answer(m_state != State::Idle && m_state != State::Jog ? 8 : 3);
    }
    if (first == '$' || first == 'G' || first == 'C' || first == 'X') {
        if (rest.size() > 1) {
            return answer(3);
        }
        switch (first) {
        case '$': {
            std::vector<std::string> lines;
            for (const auto &[number, shown] : m_settings.list()) {
                if (m_options.listed.empty() || m_options.listed.count(number) != 0) {
                    lines.push_back(shown);
                }
            }
            return list(lines);
        }
        case 'G': {
            char text[120];
            const int tenths = m_modes.motion % 10;
            std::snprintf(
                text, sizeof text, "[GC:G%d%s G%d G%d G%d G%d G%d M%d M%d T%d F%.0f S%.0f]", m_modes.motion / 10,
                tenths ? ("." + std::to_string(tenths)).c_str() : "", 54 + m_modes.system, m_modes.plane,
                m_modes.isInch ? 20 : 21, m_modes.isRelative ? 91 : 90, m_modes.isInverseTime ? 93 : 94,
                m_modes.spindle, m_modes.isFloodOn ? 8 : 9, m_modes.tool, m_modes.feed, m_modes.spindleSpeed);
            return list({text});
        }
        case 'C':
            if (m_state == State::Check) {
                print("[MSG:Disabled]");
                answer(0);
                return later(0, [this] { reset(); });
            }
            if (m_state != State::Idle) {
                return answer(8);
            }
            m_state = State::Check;
            return list({"[MSG:Enabled]"});
        default:
            if (m_state == State::Alarm) {
                m_state = State::Idle;
                print("[MSG:Caution: Unlocked]");
            }
            return answer(0);
        }
    }
    if (!isAtRest) {
        return answer(8);
    }
    if (rest == "#") {
        std::vector<std::string> lines;
        for (std::size_t i = 0; i < m_offsets.system.size(); ++i) {
            lines.push_back("[G" + std::to_string(54 + i) + ":" + vectorText(m_offsets.system[i]) + "]");
        }
        lines.push_back("[G28:" + vectorText(m_offsets.g28) + "]");
        lines.push_back("[G30:" + vectorText(m_offsets.g30) + "]");
        lines.push_back("[G92:" + vectorText(m_offsets.g92) + "]");
        char tool[32];
        const bool isInch = m_settings.isOn(13);
        std::snprintf(tool, sizeof tool, "[TLO:%.*f]", isInch ? 4 : 3, m_offsets.toolLength / (isInch ? 25.4 : 1));
        lines.emplace_back(tool);
        lines.push_back("[PRB:" + vectorText(m_probed) + (m_hasProbed ? ":1]" : ":0]"));
        return list(lines);
    }
    if (first == 'I' && (rest.size() == 1 || rest[1] == '=')) {
        if (rest.size() == 1) {
            if (isHal()) {
                const std::string axes = std::to_string(m_options.axes);
                return list(
                    {"[VER:1.1f.20260817:" + m_info + "]", "[OPT:VNML+,100,1024," + axes + ",0]",
                     "[AXS:" + axes + ":" +
                         std::string(axisLetters.substr(0, static_cast<std::size_t>(m_options.axes))) + "]",
                     "[NEWOPT:ENUMS,RT+,TC,SED]", "[FIRMWARE:grblHAL]", "[SIGNALS:D]", "[NVS STORAGE:*EEPROM]",
                     "[DRIVER:Simulator]", "[DRIVER VERSION:260324]"});
            }
            if (!isStock()) {
                return list({"[VER:3.7 FluidNC v3.7.8:" + m_info + "]", "[OPT:MPHS]"});
            }
            return list({"[VER:1.1h.20190830:" + m_info + "]", "[OPT:V,15,128]"});
        }
        m_info = rest.substr(2);
        return store([this] { answer(0); });
    }
    if (first == 'H') {
        return homeLine(rest.substr(1));
    }
    if (rest == "SLP") {
        answer(0);
        m_state = State::Sleep;
        m_motorsAreOn = false;
        return print("[MSG:Sleeping]");
    }
    if (first == 'R') {
        const std::string what = rest.size() == 5 && rest.compare(0, 4, "RST=") == 0 ? rest.substr(4) : "";
        if (what != "$" && what != "#" && what != "*") {
            return answer(3);
        }
        if (what != "#") {
            m_settings.restore();
        }
        if (what != "$") {
            m_offsets = {};
        }
        if (what == "*") {
            m_info.clear();
            m_startLines = {};
        }
        print("[MSG:Restoring defaults]");
        return store([this] {
            answer(0);
            later(0, [this] { reset(); });
        });
    }
    if (first == 'N') {
        if (rest.size() == 1) {
            return list({"$N0=" + m_startLines[0], "$N1=" + m_startLines[1]});
        }
        if (rest.size() < 3 || (rest[1] != '0' && rest[1] != '1') || rest[2] != '=') {
            return answer(3);
        }
        const std::string text = rest.substr(3);
        const int error = emulator::readLine(text, false, m_options.axes, m_modes, m_offsets, m_target).error;
        if (error) {
            return answer(error);
        }
        m_startLines[static_cast<std::size_t>(rest[1] - '0')] = text;
        return store([this] { answer(0); });
    }
    if (first == '#' || first == 'S' || first == 'I') {
        return answer(3);
    }
    storeSetting(rest);
}

void Board::storeSetting(const std::string &line)
{
    std::size_t at = 0;
    double number = 0;
    double value = 0;
    if (!readNumber(line, at, number)) {
        return answer(isHal() ? 3 : 2);
    }
    if (at >= line.size() || line[at++] != '=') {
        return answer(3);
    }
    if (!readNumber(line, at, value)) {
        return answer(2);
    }
    if (at < line.size()) {
        return answer(3);
    }
    if (const int error = m_settings.store(number > 255 ? 255 : static_cast<long>(number), value)) {
        return answer(error);
    }
    store([this] { answer(0); });
}

void Board::store(Then then)
{
    if (!m_options.settingsFile.empty()) {
        m_settings.save(m_options.settingsFile);
    }
    m_storingUntil = m_now + m_options.storeTime;
    spend(0.0003 + m_options.storeTime, std::move(then));
}

std::string Board::vectorText(const Vector &vector) const
{
    std::string text;
    const bool isInch = m_settings.isOn(13);
    for (int axis = 0; axis < m_options.axes; ++axis) {
        char number[32];
        std::snprintf(number, sizeof number, "%.*f", isInch ? 4 : 3, vector[axis] / (isInch ? 25.4 : 1));
        text += (axis ? "," : "") + std::string(number);
    }
    return text;
}

double Board::positionMm(int axis) const
{
    const double stepsPerMm = m_settings.stepsPerMm(axis);
    return stepsPerMm > 0 ? static_cast<double>(m_stepper.position()[axis]) / stepsPerMm : 0;
}

Vector Board::machinePosition() const
{
    Vector position{};
    for (int axis = 0; axis < m_options.axes; ++axis) {
        position[axis] = positionMm(axis);
    }
    return position;
}

bool Board::isInside(const Vector &target) const
{
    for (int axis = 0; axis < m_options.axes; ++axis) {
        if (target[axis] > 0 || target[axis] < -m_settings.travel(axis)) {
            return false;
        }
    }
    return true;
}

void Board::jog(const std::string &line)
{
    const Command command = emulator::readLine(line, true, m_options.axes, m_modes, m_offsets, m_target);
    if (command.error) {
        return answer(command.error == 20 && isHal() ? 36 : command.error);
    }
    if (m_settings.isOn(20) && !isInside(command.target)) {
        return answer(15);
    }
    // Its target is settled here: what happens while it waits for a free block does not change it.
    const bool fromRest = m_state == State::Idle;
    spend(jogTime - codeTime * static_cast<double>(line.size() + 3) / 2, [this, command, fromRest] {
        if (m_planner.free() == 0) {
            violate(Violation::Kind::FullPlanner, "");
        }
        move(command.target, command.feed, Block::Kind::Jog, [this, fromRest] {
            spend(fromRest ? restTime : queuedTime, [this] { answer(0); });
        });
    });
}

void Board::move(const Vector &target, double feed, Block::Kind kind, const Then &then)
{
    waitFor(
        [this] { return m_planner.free() > 0; },
        [this, target, feed, kind, then] {
            Steps steps{};
            for (int axis = 0; axis < m_options.axes; ++axis) {
                steps[axis] =
                    std::llround(std::clamp(target[axis] * m_settings.stepsPerMm(axis), -mostSteps, mostSteps));
            }
            m_target = target;
            if (m_planner.append(steps, feed / 60, kind)) {
                if (m_state == State::Idle) {
                    m_state = kind == Block::Kind::Jog ? State::Jog : State::Run;
                }
                m_motorsAreOn = true;
                if (m_stepper.isRunning()) {
                    m_stepper.plan();
                } else if (!m_hasStopped && !m_isHeld) {
                    m_stepper.start(m_now);
                }
                if (std::exchange(m_isDeaf, false)) {
                    m_isCancelling = true; // the cancel that came too late for the jog before
                    m_stepper.hold();
                }
            }
            then();
        });
    m_wait.isForBlock = true;
}

void Board::code(const std::string &line)
{
    const Command command = emulator::readLine(line, false, m_options.axes, m_modes, m_offsets, m_target);
    if (command.error) {
        return answer(command.error);
    }
    if (m_state == State::Check) {
        m_modes = command.modes;
        return answer(0);
    }
    if (command.waitsForStand || command.action == Command::Action::Dwell ||
        command.action == Command::Action::StoreOffsets || command.action == Command::Action::Probe) {
        return waitFor([this] { return !isMoving(); }, [this, command] { run(command); });
    }
    run(command);
}

void Board::run(const Command &command)
{
    if (m_offsets.work(m_modes.system) != command.offsets.work(command.modes.system)) {
        m_untilOffsets = 0;
    }
    m_modes = command.modes;
    m_offsets = command.offsets;
    const auto done = [this] { answer(0); };
    switch (command.action) {
    case Command::Action::Move: {
        if (m_settings.isOn(20) && !isInside(command.target)) {
            return refuseMove();
        }
        const Block::Kind kind = command.isRapid ? Block::Kind::Rapid : Block::Kind::Feed;
        return move(command.target, command.feed, kind, [this, done] { spend(codeMoveTime, done); });
    }
    case Command::Action::Park: {
        const Vector park = command.park;
        const auto onwards = [this, park, done] { move(park, 0, Block::Kind::Rapid, done); };
        return command.hasAxisWord ? move(command.target, 0, Block::Kind::Rapid, onwards) : onwards();
    }
    case Command::Action::Dwell:
        return later(command.dwell, done);
    case Command::Action::StoreOffsets:
        m_untilOffsets = 0;
        return store(done);
    case Command::Action::Probe:
        return probe(command);
    case Command::Action::None:
        break;
    }
    switch (command.program) {
    case 0:
        return waitFor(
            [this] { return !isMoving(); },
            [this, done] {
                m_state = State::Hold;
                m_isHeld = true;
                waitFor([] { return true; }, done);
            });
    case 2:
    case 30:
        return waitFor(
            [this] { return !isMoving(); },
            [this] {
                const bool isInch = m_modes.isInch;
                m_modes = {};
                m_modes.isInch = isInch;
                m_modes.motion = 10;
                m_feedOverride = m_rapidOverride = m_spindleOverride = 100;
                m_untilOffsets = m_untilOverrides = 0;
                print("[MSG:Pgm End]");
                answer(0);
            });
    default:
        return answer(0);
    }
}

} // namespace emulator
