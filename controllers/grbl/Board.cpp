// SPDX-License-Identifier: MIT
#include "controllers/grbl/Board.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace grbl {

using namespace moverMessages;

namespace {

constexpr char askReport = '?';
constexpr char softReset = 0x18;
constexpr char jogCancel = static_cast<char>(0x85);

constexpr double reportTimeout = 1;
constexpr double askAgainAfter = 0.12; // a "?" may get lost
constexpr double movingPoll = 0.1;
constexpr double restingPoll = 0.2;
constexpr double endingPoll = 0.03; // while the last lines run, and while stopping
constexpr double answerTimeout = 0.7;
constexpr double bannerTimeout = 3;
constexpr std::size_t mostUnanswered = 6;
constexpr std::size_t mostUnansweredBytes = 127;
constexpr int leastFreeBlocks = 3;
constexpr double cancelPatience =
    0.008;                          // for the answers of lines on their way; what waits behind it would run after it
constexpr double deafAfter = 0.3;   // in Idle, with answers missing
constexpr double unexplained = 0.1; // mm that an axis may be off what was sent
constexpr double longestLag = 0.35; // of the board behind the plan, ramps and a late report included
constexpr double pressAgain = 10;
constexpr double lateness = 0.03; // of the board's steps behind the lines, at most
constexpr double onTheWay = 0.015; // of a line, until it has been read
constexpr int reportsInDoubt = 4;  // that have to miss an answer before it counts as missing

std::string number(double value, int decimals)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

const char *alarmWords(int alarm)
{
    switch (alarm) {
    case 1:
        return "a limit switch was hit; the position is lost. Unlock, drive off the switch slowly, home";
    case 2:
        return "a target lay outside the travel. Unlock";
    case 3:
        return "it was reset in motion; the position is lost. Unlock or home";
    case 6:
    case 7:
    case 8:
    case 9:
        return "homing failed; the position is lost. Look at the limit switches, then home again";
    default:
        return "unlock or home";
    }
}

} // namespace

Board::Board(const std::vector<AxisSetup> &setup, Log log)
    : m_log(std::move(log))
{
    for (const AxisSetup &axis : setup)
        m_axes.push_back(std::make_unique<Axis>(*this, axis));
}

double Board::setting(int number, double otherwise) const
{
    const auto found = m_settings.find(number);
    return found == m_settings.end() ? otherwise : found->second;
}

std::string Board::jogTo(const std::array<long long, maxBoardAxes> &steps) const
{
    // Millimetres said with each line: a start-up line of the board may have set inches.
    std::string line = "$J=G21G53";
    for (int i = 0; i < m_boardAxes; ++i) {
        // As many decimals as it takes to name a step.
        const int decimals = stepsPerMm(i) > 9000 ? 5 : stepsPerMm(i) > 900 ? 4 : 3;
        line += axisLetters[i] + number(steps[i] / stepsPerMm(i), decimals);
    }
    return line;
}

long long Board::toSteps(int boardAxis, double mm) const
{
    return std::llround(mm * stepsPerMm(boardAxis));
}

// ---- Lines

void Board::sendLine(const std::string &line)
{
    m_output += line + '\n';
    m_awaited.push_back({line.size() + 1, m_now, line});
    m_awaitedBytes += line.size() + 1;
    m_idleSeen = false;
    ++m_sentSinceReport;
}

void Board::opened(double now)
{
    m_now = now;
    m_output.clear();
    m_reader.clear();
    m_awaited.clear();
    m_awaitedBytes = 0;
    m_toSay.clear();
    m_saying = false;
    m_settings.clear();
    m_asked = -1;
    m_lost = false;
    m_reports = 0;
    m_resetSaid = false;
    m_phase = Phase::Booting;
    m_since = now;
    endRuns();
    notHomed();
}

void Board::closed()
{
    m_phase = Phase::Closed;
    endRuns();
    notHomed();
}

void Board::received(std::string_view bytes, double now)
{
    m_now = now;
    while (const std::optional<std::string> line = m_reader.next(bytes)) {
        if (m_phase != Phase::Closed)
            take(Reply::of(*line));
    }
}

void Board::take(const Reply &reply)
{
    switch (reply.kind) {
    case Reply::Kind::Ok:
    case Reply::Kind::Error:
        takeAnswer(reply);
        break;
    case Reply::Kind::Alarm:
        takeAlarm(reply.number);
        break;
    case Reply::Kind::Banner:
        takeBanner(reply.text);
        break;
    case Reply::Kind::Status:
        takeReport(reply.report);
        break;
    case Reply::Kind::Setting:
        m_read[reply.number] = reply.value;
        break;
    case Reply::Kind::Message:
        if (reply.text.rfind("VER:", 0) == 0) {
            m_version = reply.text.substr(4);
        } else if (reply.text == "FIRMWARE:grblHAL") {
            m_homesSingly = true;
        } else if (reply.text.rfind("OPT:", 0) == 0) {
            int blocks = 0;
            int bytes = 0;
            const std::size_t comma = reply.text.find(',');
            if (comma != std::string::npos && std::sscanf(reply.text.c_str() + comma, ",%d,%d", &blocks, &bytes) == 2 &&
                blocks > 4 && bytes > 40) {
                m_totalBlocks = blocks;
                m_bufferBytes = static_cast<std::size_t>(bytes);
            }
        } else if (reply.text == "MSG:Reset to continue" && m_phase != Phase::Resetting) {
            takeAlarm(m_alarm == 0 ? 1 : m_alarm);
        }
        break;
    case Reply::Kind::Empty:
    case Reply::Kind::Rubbish:
        break;
    }
}

void Board::takeAnswer(const Reply &reply)
{
    if (m_awaited.empty())
        return; // late, of a line from before a reset
    const Awaited answered = m_awaited.front();
    m_awaited.pop_front();
    m_awaitedBytes -= answered.bytes;
    m_lastAnswer = m_now;
    const bool failed = reply.kind == Reply::Kind::Error;

    if (m_saying) {
        m_saying = false;
        if (failed && m_phase == Phase::Writing) {
            say("The board refused " + answered.line + ": error " + std::to_string(reply.number));
            m_toSay.clear();
            if (m_writing.empty()) // not a setting: an unlock, say
                asked();
            else
                m_toSay.emplace_back("$$");
        }
        if (!m_toSay.empty())
            return;
        if (m_phase == Phase::Asking)
            asked();
        else if (m_phase == Phase::Writing)
            wrote();
        return;
    }
    if (m_phase == Phase::Homing) {
        for (auto &axis : m_axes) {
            if (m_homing == maxBoardAxes || axis->boardAxis() == m_homing)
                axis->setHomed(!failed);
        }
        if (failed) {
            say({HomingFailed, "The board refused to home: error " + std::to_string(reply.number)});
            m_homesSingly = false; // all axes together, then
        }
        m_phase = Phase::Asking; // where it stands now
        m_since = m_now;
        m_asked = -1;
        poll();
    } else if (failed && m_phase == Phase::Ready) {
        if (reply.number == 15) {
            say({OutsideTravel, "The board refused " + answered.line + ": outside its travel; all axes are stopped"});
            cancel(Then::Stand);
        } else {
            trouble("the board refused " + answered.line + ": error " + std::to_string(reply.number));
        }
    }
}

void Board::takeBanner(const std::string &text)
{
    m_banner = text;
    m_homesSingly = m_homesSingly || text.find("FluidNC") != std::string::npos;
    m_awaited.clear();
    m_awaitedBytes = 0;
    m_toSay.clear();
    m_saying = false;
    m_pending.clear();
    m_asked = -1;
    m_resetAt = -1;
    m_bannerSeen = true;
    if (m_phase == Phase::Booting || (m_phase == Phase::Asking && m_reports == 0)) {
        begin({"$I", "$$"}, Phase::Asking);
        return;
    }
    if (m_phase != Phase::Resetting) {
        say({PositionLost, "The board has started anew; the position is lost"});
        endRuns();
        notHomed();
        m_phase = Phase::Resetting;
        m_since = m_now;
    }
    poll();
}

void Board::takeAlarm(int number)
{
    m_alarm = number;
    m_locked = true;
    say({number == 1                  ? LimitHit
         : number >= 6 && number <= 9 ? HomingFailed
                                      : BoardAlarm,
         "The board is in alarm " + std::to_string(number) + ": " + alarmWords(number), -1,
         static_cast<double>(number)});
    if (number == 1) {
        for (std::size_t one = 1; one < m_slices.size(); ++one) {
            for (int i = 0; i < m_boardAxes; ++i) {
                const long long way = m_slices[one].steps[i] - m_slices[one - 1].steps[i];
                if (way != 0)
                    m_ranOn[i] = way > 0 ? 1 : -1;
            }
        }
    }
    endRuns();
    m_then = Then::Stand;
    if (number != 2)
        notHomed();
    m_pending.clear();
    m_toSay.clear();
    m_saying = false;
    m_phase = Phase::Resetting;
    m_bannerSeen = false;
    m_since = m_now;
    // Behind some alarms the board hears nothing but a reset; behind the others it starts anew by itself.
    const bool waits = number == 1 || number == 2 || number == 4 || number == 5;
    m_resetAt = m_now + (waits ? 0.6 : 1.5);
    m_urgent = true;
}

// ---- Reports

void Board::poll()
{
    m_output += askReport;
    m_lastAsk = m_now;
    if (m_asked < 0)
        m_asked = m_now;
}

void Board::takeReport(const Report &told)
{
    // The first report tells how many axes there are; one with fewer has lost some on the wire.
    if (m_reports > 0 && told.axes != m_boardAxes)
        return;
    Report report = told;
    if (report.hasOffset)
        m_offset = report.offset;
    if (!report.hasMachine) {
        for (int i = 0; i < report.axes; ++i)
            report.position[i] += m_offset[i];
    }
    m_reportAsked = m_asked >= 0 ? m_asked : m_lastAsk;
    m_asked = -1;
    ++m_reports;
    m_report = report;
    m_sentSinceReport = 0;
    m_boardAxes = report.axes;
    const bool back = std::exchange(m_lost, false);
    const bool idle = report.state == Report::State::Idle;
    const bool cannotMove = report.state == Report::State::Alarm || report.state == Report::State::Sleep ||
                            report.state == Report::State::Check;
    if (idle && m_awaited.empty() && m_reportAsked >= m_lastAnswer)
        m_idleSeen = true;
    if (idle)
        m_totalBlocks = std::max(m_totalBlocks, report.freeBlocks);

    switch (m_phase) {
    case Phase::Closed:
    case Phase::Booting:
    case Phase::Writing:
        return;
    case Phase::Asking:
        if (m_saying || !m_toSay.empty() || m_settings.empty())
            return;
        if (idle || cannotMove)
            restAt(report, Then::Stand);
        else
            reset("The board was not at rest"); // in motion, held, or in a homing that does not end
        return;
    case Phase::Resetting:
        if (m_bannerSeen && (idle || cannotMove))
            restAt(report, m_then);
        return;
    case Phase::Homing:
        if (idle || cannotMove) {
            say({HomingFailed, "Homing has ended without an answer; the position is not known"});
            notHomed();
            restAt(report, Then::Stand);
        }
        return;
    case Phase::Cancelling:
        watchCancel();
        return;
    case Phase::Ready:
        break;
    }
    if (back) {
        say({AnswersAgain, "The board answers again; all axes are stopped"});
        cancel(Then::Stand);
    } else if (cannotMove) {
        if (!m_locked) {
            m_locked = true;
            say({BoardLocked, "The board is locked"});
            notHomed();
            endRuns();
            restAt(report, Then::Stand);
        }
    } else if (report.state == Report::State::Hold || report.state == Report::State::Door) {
        say({OnHold, "Somebody has put the board on hold; all axes are stopped"});
        cancel(Then::Stand);
    } else {
        m_locked = false;
        if (report.freeBlocks >= 0 && report.state == Report::State::Jog) {
            const double wanted = (effectiveLead() + slice / 2) / slice;
            m_factor = std::clamp(1 + 0.01 * (m_totalBlocks - report.freeBlocks - wanted), 0.98, 1.02);
        }
        countAnswers(report);
        if (m_phase == Phase::Ready)
            compare(report);
        if (m_limitsOff && report.pins == 0 && m_phase == Phase::Ready && still()) {
            say({LimitsOn, "The switch is open: hard limits are on again ($21=1)"});
            m_limitsOff = false;
            if (changed)
                changed();
            m_writing.clear();
            begin({"$21=1"}, Phase::Writing);
        }
    }
}

void Board::countAnswers(const Report &report)
{
    // With its buffer empty and room for blocks the board has read and answered whatever had arrived. A lost line leaves
    // one answer too few for ever, while the others keep coming.
    m_totalBytes = std::max(m_totalBytes, report.freeBytes);
    const bool allRead = report.freeBlocks > 1 && report.freeBytes == m_totalBytes;
    const bool missing = allRead && !m_awaited.empty() && m_awaited.front().since < m_reportAsked - onTheWay;
    m_doubts = missing ? m_doubts + 1 : 0;
    if (m_doubts >= reportsInDoubt)
        trouble("answers are missing");
}

void Board::compare(const Report &report)
{
    const double oldest = m_reportAsked - longestLag;
    while (m_slices.size() > 1 && m_slices[1].end < oldest)
        m_slices.pop_front();
    for (int i = 0; i < m_boardAxes; ++i) {
        long long low = m_sent[i];
        long long high = m_sent[i];
        for (const Slice &one : m_slices) {
            low = std::min(low, one.steps[i]);
            high = std::max(high, one.steps[i]);
        }
        const double room = unexplained + 1 / stepsPerMm(i);
        const double where = report.position[i];
        if (where >= low / stepsPerMm(i) - room && where <= high / stepsPerMm(i) + room)
            continue;
        // A byte of the report itself may have been lost: the next one tells.
        if (m_suspectAsked < 0 || m_reportAsked <= m_suspectAsked) {
            m_suspectAsked = m_reportAsked;
            m_nextPoll = m_now;
            return;
        }
        m_suspectAsked = -1;
        say({Astray,
             std::string("Axis ") + axisLetters[i] + " is at " + number(where, 3) +
                 " mm of the board, where it was not sent; all axes are stopped",
             i, where});
        cancel(Then::Stand);
        return;
    }
    m_suspectAsked = -1;

    // A byte of the last line may have been lost: then it ends a little beside its target.
    if (!m_idleSeen || !m_rests || !m_pending.empty())
        return;
    bool beside = false;
    for (int i = 0; i < m_boardAxes; ++i) {
        const double off = std::abs(report.position[i] - m_sent[i] / stepsPerMm(i));
        beside = beside || off > 0.5 / stepsPerMm(i) + 0.0006;
    }
    if (!beside) {
        m_corrections = 0;
    } else if (m_corrections++ < 3) {
        say("An axis has ended beside its target and is sent there again");
        std::array<long long, maxBoardAxes> there{};
        for (int i = 0; i < m_boardAxes; ++i)
            there[i] = toSteps(i, report.position[i]);
        std::swap(there, m_sent);
        m_slices.push_back({m_now, m_sent});
        m_sent = there;
        m_slices.push_back({m_now, m_sent});
        sendLine(jogTo(there) + "F60");
    } else {
        restAt(report, Then::Stand);
    }
}

// ---- What is due

bool Board::still() const
{
    return m_rests && m_idleSeen && m_pending.empty() && m_phase != Phase::Homing && m_phase != Phase::Cancelling;
}

double Board::run(double now)
{
    m_now = std::max(m_now, now);
    m_urgent = false;
    if (m_phase == Phase::Closed)
        return 1;
    watch();
    switch (m_phase) {
    case Phase::Closed:
        return 1;
    case Phase::Booting:
        break;
    case Phase::Asking:
    case Phase::Writing:
        converse();
        break;
    case Phase::Ready:
        stream();
        break;
    case Phase::Cancelling:
        sendCancel();
        break;
    case Phase::Homing:
    case Phase::Resetting:
        break;
    }

    // Reports. None comes while the board boots, stores a setting or homes.
    const bool mayAsk = m_phase == Phase::Ready || m_phase == Phase::Cancelling ||
                        (m_phase == Phase::Resetting && m_bannerSeen) ||
                        (m_phase == Phase::Asking && !m_saying && m_toSay.empty() && !m_settings.empty()) ||
                        (m_phase == Phase::Homing && m_now > m_homeLimit);
    double period = m_rests ? restingPoll : movingPoll;
    if (m_phase != Phase::Ready || (m_rests && !m_idleSeen && m_now >= m_lineEnd - slice))
        period = endingPoll;
    m_nextPoll = std::min(m_nextPoll, m_lastAsk + period);
    // Between two lines, so that the report tells whether the last one has been read.
    const bool justSent = !m_awaited.empty() && m_now < m_awaited.back().since + onTheWay && m_now < m_nextPoll + slice;
    if (mayAsk && m_now >= m_nextPoll && !(justSent && m_phase == Phase::Ready) && (m_asked < 0 || m_now >= m_lastAsk + askAgainAfter)) {
        poll();
        m_nextPoll = m_now + period;
    }

    if (m_phase == Phase::Cancelling && !m_cancelSent)
        return 0.001;
    if (!m_rests && m_phase == Phase::Ready)
        return 0.005;
    bool runs = false;
    for (const auto &axis : m_axes)
        runs = runs || axis->running();
    return runs || period < restingPoll ? 0.005 : 0.02;
}

void Board::watch()
{
    switch (m_phase) {
    case Phase::Booting:
        if (m_now - m_since > bannerTimeout && !std::exchange(m_resetSaid, true))
            sendByte(softReset);
        if (m_now - m_since > bannerTimeout + 1) {
            say("Nothing at the port says that it is a board of this family");
            closed();
        }
        return;
    case Phase::Asking:
        if (m_now - m_since > 5) {
            say("The board does not say its settings or its position");
            closed();
        }
        return;
    case Phase::Resetting:
        if (m_resetAt >= 0 && m_now >= m_resetAt) {
            m_resetAt = -1;
            m_awaited.clear();
            m_awaitedBytes = 0;
            sendByte(softReset);
            m_since = m_now;
            m_bannerSeen = false;
            m_asked = -1;
            m_lastAsk = m_now; // an answer before the banner means nothing
        } else if (m_now - m_since > 3) {
            m_resetAt = m_now; // it was lost, or the board is gone
            if (!m_lost)
                lose("The board does not answer to a reset");
        }
        return;
    case Phase::Homing:
        if (m_now > m_homeLimit + reportTimeout)
            reset("Homing takes longer than the board's settings allow; the position is lost", HomingStopped);
        return;
    case Phase::Writing:
        if (!m_awaited.empty() && m_now - m_awaited.front().since > 3) {
            m_written = WriteFailed;
            reset("The board does not answer a setting");
        }
        return;
    case Phase::Cancelling:
        if (m_idleSince >= 0 && m_now - m_idleSince > deafAfter)
            reset("The board is at rest and does not read its lines");
        else if (m_now - m_since > 10 + m_stopTime)
            reset("The board does not stop; the position is lost", PositionLost);
        break;
    default:
        break;
    }
    if (m_asked >= 0 && m_now - m_asked > reportTimeout && !m_lost)
        lose("The board does not answer");
    if (m_phase == Phase::Ready && !m_lost && !m_awaited.empty() &&
        m_now - std::max(m_lastAnswer, m_awaited.front().since) > answerTimeout)
        trouble("answers are missing");
}

void Board::lose(const std::string &why)
{
    say({NoAnswer, why});
    m_lost = true;
    m_pending.clear();
    m_then = Then::Stand;
    endRuns();
}

void Board::endRuns()
{
    for (auto &axis : m_axes)
        axis->stand(axis->position());
}

void Board::notHomed()
{
    for (auto &axis : m_axes)
        axis->setHomed(false);
}

// ---- Conversations

void Board::begin(std::vector<std::string> lines, Phase phase)
{
    m_phase = phase;
    m_since = m_now;
    m_saying = false;
    m_toSay.assign(lines.begin(), lines.end());
    m_urgent = true;
}

void Board::converse()
{
    if (m_saying || m_toSay.empty())
        return;
    if (m_toSay.front() == "$$")
        m_read.clear();
    sendLine(m_toSay.front());
    m_toSay.pop_front();
    m_saying = true;
}

void Board::asked()
{
    if (!m_read.empty())
        m_settings = std::exchange(m_read, {});
    // Reports have to have machine positions and the room in the buffers, in mm.
    const int mask = static_cast<int>(setting(10, 3));
    if (m_phase == Phase::Asking && (mask & 3) != 3) {
        say("The board's setting $10 is made " + std::to_string(mask | 3));
        begin({"$10=" + std::to_string(mask | 3), "$$"}, Phase::Asking);
        return;
    }
    if (m_phase == Phase::Asking && setting(13, 0) != 0) {
        say("The board's setting $13 is made 0: positions in mm");
        begin({"$13=0", "$$"}, Phase::Asking);
        return;
    }
    if (m_phase == Phase::Asking && m_reports == 0 && setting(1, 255) != 255)
        say({MotorsDropOut, "The board's setting $1 is not 255: the motors lose their current after each stop"});
    m_phase = Phase::Asking; // where it stands comes last
    m_since = m_now;
    m_asked = -1;
    m_lastAsk = 0;
    m_urgent = true;
}

int Board::write(const std::map<int, double> &settings)
{
    m_written = Ok;
    if (m_phase != Phase::Ready || !(still() || m_locked))
        return m_phase == Phase::Ready ? AxisRunning : ControllerBusy;
    for (const auto &axis : m_axes) {
        if (axis->running())
            return AxisRunning;
    }
    m_writing.clear();
    m_before.clear();
    m_undoing = false;
    std::vector<std::string> lines;
    for (const auto &[number_, value] : settings) {
        const double present = setting(number_, value);
        if (m_settings.count(number_) == 0 || std::abs(present - value) < 0.0006)
            continue;
        m_writing[number_] = value;
        m_before[number_] = present;
        lines.push_back("$" + std::to_string(number_) + "=" + number(value, 3));
    }
    if (lines.empty())
        return Ok;
    lines.emplace_back("$$");
    begin(lines, Phase::Writing);
    return Ok;
}

void Board::wrote()
{
    if (m_writing.empty()) {
        asked();
        return;
    }
    const auto differs = [this](const auto &wanted) {
        const auto found = m_read.find(wanted.first);
        return found == m_read.end() || std::abs(found->second - wanted.second) >= 0.0011;
    };
    const bool failed = std::any_of(m_writing.begin(), m_writing.end(), differs);
    if (failed && !m_undoing) {
        say({SettingsUndone, "The board did not take its settings; what was written is undone"});
        m_written = WriteFailed;
        m_undoing = true;
        std::vector<std::string> lines;
        for (const auto &[number_, value] : m_before)
            lines.push_back("$" + std::to_string(number_) + "=" + number(value, 3));
        lines.emplace_back("$$");
        m_writing = m_before;
        begin(lines, Phase::Writing);
        return;
    }
    if (failed)
        say("The board's settings could not be put back: read them");
    for (const auto &[number_, value] : m_writing) {
        if (number_ >= 100 && number_ < 100 + maxBoardAxes)
            notHomed();
    }
    asked();
}

int Board::switchDirection(int boardAxis) const
{
    return (m_report.pins >> boardAxis & 1U) != 0 ? m_ranOn[boardAxis] : 0;
}

int Board::unlock()
{
    if (m_phase != Phase::Ready)
        return ControllerBusy;
    if (m_report.state != Report::State::Alarm) {
        reset("The board is woken up"); // it sleeps or checks
        return Ok;
    }
    m_writing.clear();
    std::vector<std::string> lines{"$X"};
    if (m_report.pins != 0 && setting(21, 0) != 0) {
        // The switch that opens again would be the next alarm.
        say(
            {LimitsOff,
             "Hard limits are off ($21=0) until the axis has been driven off its switch, slowly and the way it came"});
        lines.emplace_back("$21=0");
        m_limitsOff = true;
        if (changed)
            changed();
    }
    begin(lines, Phase::Writing);
    return Ok;
}

// ---- Homing

int Board::home(Axis &axis)
{
    if (m_phase != Phase::Ready)
        return ControllerBusy;
    if (m_lost)
        return LinkLost;
    for (const auto &one : m_axes) {
        if (one->running())
            return AxisRunning;
    }
    if (!m_locked && !still())
        return AxisRunning;
    if (setting(22, 0) == 0)
        return NotAvailable;
    std::string line = "$H";
    if (m_homesSingly) {
        line += axisLetters[axis.boardAxis()];
        m_homing = axis.boardAxis();
    } else {
        // Asked for twice within 10 s, as all axes move.
        if (m_now - std::exchange(m_homeAsked, m_now) > pressAgain)
            return OthersWouldMove;
        m_homeAsked = -100;
        m_homing = maxBoardAxes;
    }
    const double seek = std::max(setting(25, 500), 1.0) / 60;
    const double slow = std::max(setting(24, 25), 1.0) / 60;
    double limit = 5;
    for (int i = 0; i < m_boardAxes; ++i)
        limit += 1.5 * setting(130 + i, 200) / seek + 5 * setting(27, 1) * (1 / slow + 1 / seek) + 2;
    m_homeLimit = m_now + 1.2 * limit;
    for (auto &one : m_axes) {
        if (m_homing == maxBoardAxes || one->boardAxis() == m_homing)
            one->setHomed(false);
    }
    m_phase = Phase::Homing;
    m_since = m_now;
    m_asked = -1;
    sendLine(line);
    m_urgent = true;
    return Ok;
}

// ---- Stopping

int Board::refusal() const
{
    if (m_phase == Phase::Closed || m_lost)
        return LinkLost;
    if (m_locked)
        return Locked;
    for (const auto &axis : m_axes) {
        // Without steps, speed or ramp, or for an axis that the board does not have, there is nothing to plan with.
        const int number = axis->boardAxis();
        if (number >= m_boardAxes || setting(100 + number, 1) <= 0 || setting(110 + number, 1) <= 0 ||
            setting(120 + number, 1) <= 0)
            return NotAvailable;
    }
    return m_phase == Phase::Ready ? Ok : ControllerBusy;
}

int Board::stop(Axis &axis)
{
    if (m_phase == Phase::Homing) {
        reset("Homing was stopped; the position is lost", HomingStopped);
        notHomed();
        m_urgent = true;
        return Ok;
    }
    if (m_phase != Phase::Ready) {
        axis.stand(axis.position());
        axis.setStopped(true);
        return Ok;
    }
    if (!axis.running() && still())
        return Ok;
    const bool othersGoOn = std::any_of(
        m_axes.begin(), m_axes.end(), [&axis](const auto &one) { return one.get() != &axis && one->goesOn(); });
    if (othersGoOn)
        axis.slowDown();
    else
        stopAll();
    m_urgent = true;
    return Ok;
}

void Board::stopAll()
{
    if (m_phase != Phase::Ready)
        return;
    if (still() && m_awaited.empty())
        endRuns(); // in the pause between two legs, or not yet begun
    else
        cancel(Then::Stand);
}

void Board::cancel(Then then)
{
    m_stopTime = 0.2;
    for (const auto &axis : m_axes) {
        const double ramp = std::max(setting(120 + axis->boardAxis(), 10), 0.1);
        m_stopTime = std::max(m_stopTime, 0.2 + 1.2 * std::abs(axis->velocity()) / ramp);
    }
    if (then == Then::Stand)
        endRuns();
    for (auto &axis : m_axes)
        axis->setStopped(false);
    m_then = then;
    m_phase = Phase::Cancelling;
    m_since = m_now;
    m_cancelSent = false;
    m_idleSince = -1;
    m_cancels = 0;
    m_pending.clear();
    m_suspectAsked = -1;
    m_doubts = 0;
    m_urgent = true;
}

void Board::sendCancel()
{
    if (m_cancelSent || (!m_awaited.empty() && m_now - m_since < cancelPatience))
        return;
    sendByte(jogCancel);
    sendLine("");
    m_cancelSent = true;
    m_cancels = 1;
    m_cancelAt = m_now;
    m_cancelReport = m_report;
    m_nextPoll = m_now + endingPoll;
}

void Board::watchCancel()
{
    if (!m_cancelSent || m_reportAsked < m_cancelAt)
        return;
    switch (m_report.state) {
    case Report::State::Idle:
    case Report::State::Alarm:
    case Report::State::Sleep:
    case Report::State::Check:
        if (m_awaited.empty()) {
            if (m_reportAsked >= m_lastAnswer)
                restAt(m_report, m_then);
        } else if (m_idleSince < 0) {
            m_idleSince = m_now;
        }
        return;
    case Report::State::Hold:
    case Report::State::Door:
        m_idleSince = -1;
        if (m_report.feed == 0 && m_now - m_cancelAt > m_stopTime)
            reset("The board is on hold and is reset at rest");
        return;
    default:
        break;
    }
    m_idleSince = -1;
    // A cancel that was lost: what was sent is short and ends by itself. Only an axis that goes on running, as reports
    // say, gets another one: that is its first.
    if (m_now - m_cancelAt < m_stopTime + lead + slice)
        return;
    double way = 0;
    for (int i = 0; i < m_boardAxes; ++i)
        way += std::abs(m_report.position[i] - m_cancelReport.position[i]);
    const bool runsOn = way > 0 && m_report.feed >= m_cancelReport.feed && m_report.feed > 0;
    m_cancelReport = m_report;
    if (!runsOn)
        return;
    if (m_cancels++ < 2) {
        say("The stop was lost on the wire and is sent again");
        sendByte(jogCancel);
        m_cancelAt = m_now;
    } else {
        notHomed();
        reset("The board does not stop and is reset in motion; the position is lost", PositionLost);
    }
}

void Board::reset(const std::string &why, Code code)
{
    say({code, why});
    sendByte(softReset);
    m_awaited.clear();
    m_awaitedBytes = 0;
    m_toSay.clear();
    m_saying = false;
    m_pending.clear();
    if (m_phase != Phase::Cancelling)
        m_then = Then::Stand;
    m_phase = Phase::Resetting;
    m_bannerSeen = false;
    m_since = m_now;
    m_resetAt = -1;
    m_asked = -1;
    m_lastAsk = m_now + 0.6; // the banner comes first, and after a stop in motion half a second later
    m_nextPoll = m_now + 0.6;
}

void Board::restAt(const Report &report, Then then)
{
    m_phase = Phase::Ready;
    m_since = m_now;
    m_locked = report.state != Report::State::Idle;
    if (m_locked && m_alarm == 1) {
        for (int i = 0; i < m_boardAxes; ++i) {
            if ((report.pins >> i & 1U) != 0)
                say({SwitchClosed, std::string("The limit switch of axis ") + axisLetters[i] + " is closed", i});
        }
    }
    if (!m_locked)
        m_alarm = 0;
    m_suspectAsked = -1;
    m_doubts = 0;
    m_corrections = 0;
    m_factor = 1;
    m_excess = 0;
    m_pending.clear();
    m_head = m_now;
    m_lineEnd = m_now - 1;
    m_rests = true;
    m_idleSeen = true;
    for (int i = 0; i < maxBoardAxes; ++i)
        m_sent[i] = toSteps(i, report.position[i]);
    m_slices.assign(1, {m_now, m_sent});
    for (auto &axis : m_axes) {
        const double position = axis->toStage(m_sent[axis->boardAxis()] / stepsPerMm(axis->boardAxis()));
        if (then == Then::TakeUp && !m_locked && axis->running())
            axis->takeUp(position, m_now);
        else if (then == Then::TakeUp && !m_locked && !axis->isStopped())
            axis->finishFrom(position, m_now);
        else
            axis->stand(position);
        axis->settle(m_now); // a run begins now, not at the time before
    }
    m_then = Then::Stand;
    m_urgent = true;
}

void Board::trouble(const std::string &what)
{
    while (!m_troubles.empty() && m_troubles.front() < m_now - 10)
        m_troubles.pop_front();
    m_troubles.push_back(m_now);
    const bool often = m_troubles.size() > 3;
    say({often ? WireStop : WireTrouble,
         "Trouble on the line: " + what + (often ? "; all axes are stopped" : "; the axes stop and go on")});
    cancel(often ? Then::Stand : Then::TakeUp);
}

// ---- The stream

void Board::settle(double now)
{
    m_now = std::max(m_now, now);
    if (!m_rests || m_now <= m_head)
        return;
    m_head = m_now;
    for (auto &axis : m_axes)
        axis->settle(m_head);
}

double Board::effectiveLead() const
{
    return std::max(lead - m_excess - lateness, slice);
}

void Board::stream()
{
    if (m_locked || m_lost)
        return;
    const auto moves = [this] {
        return std::any_of(
            m_axes.begin(), m_axes.end(), [](const auto &axis) { return axis->running() && !axis->dwelling(); });
    };
    if (m_rests) {
        settle(m_now);
        if (!moves())
            return;
        m_rests = false;
    } else if (m_now > m_head) {
        ranDry();
    }
    while (m_phase == Phase::Ready && !m_rests && (m_head < m_now + effectiveLead() || !m_pending.empty())) {
        // Never a full planner: a line that waits for a free block survives a cancel.
        const std::size_t longestJog = 20 + 11 * static_cast<std::size_t>(m_boardAxes);
        const bool room = m_awaited.size() < mostUnanswered &&
                          m_awaitedBytes + longestJog <= std::min(mostUnansweredBytes, m_bufferBytes - 1) &&
                          (m_report.freeBlocks < 0 || m_report.freeBlocks - m_sentSinceReport > leastFreeBlocks);
        if (!room)
            return;
        if (!m_pending.empty()) {
            // Behind a pause the board would run a line at once: it waits for its time.
            if (m_now < m_pendingAt)
                return;
            sendLine(std::exchange(m_pending, {}));
            m_lineEnd = m_head;
        } else {
            sendSlice(m_head + slice);
            m_rests = m_pending.empty() && !moves();
        }
    }
}

void Board::sendSlice(double end)
{
    const double begin = std::exchange(m_head, end);
    std::array<long long, maxBoardAxes> steps = m_sent;
    for (auto &axis : m_axes) {
        axis->settle(end);
        steps[axis->boardAxis()] = toSteps(axis->boardAxis(), axis->toBoard(axis->position()));
    }
    double path = 0;
    m_excess = 0;
    for (int i = 0; i < m_boardAxes; ++i) {
        const double way = static_cast<double>(steps[i] - m_sent[i]) / stepsPerMm(i);
        path += way * way;
        m_excess = std::max(m_excess, std::abs(way) / slice / 2 / std::max(setting(120 + i, 10), 0.1));
    }
    // Whatever goes wrong in the plan, no line may carry an axis faster than it is allowed to be.
    for (const auto &axis : m_axes) {
        const int i = axis->boardAxis();
        const double allowed = 1.2 * axis->stage().maxSpeed * slice + 2 / stepsPerMm(i);
        if (std::abs(static_cast<double>(steps[i] - m_sent[i]) / stepsPerMm(i)) > allowed) {
            say(std::string("The plan of axis ") + axisLetters[i] + " makes a jump; all axes are stopped");
            cancel(Then::Stand);
            return;
        }
    }
    m_slices.push_back({end, steps});
    if (m_slices.size() > 100)
        m_slices.pop_front();
    if (steps == m_sent)
        return;
    m_sent = steps;
    const double feed = std::sqrt(path) / slice * 60 * m_factor;
    const std::string line = jogTo(steps) + "F" + number(feed, feed < 10 ? 3 : 1);
    if (begin > m_lineEnd + 1e-6 && begin > m_now) {
        m_pending = line;
        m_pendingAt = begin;
    } else {
        sendLine(line);
        m_lineEnd = end;
    }
}

void Board::ranDry()
{
    const double stall = std::round((m_now - m_head + effectiveLead()) * 1000);
    say({Stall,
         "The computer stood still for " + number(stall, 0) + " ms: the axes have stopped and begin a new ramp", -1,
         stall});
    m_pending.clear();
    m_head = m_now;
    for (auto &axis : m_axes) {
        const bool inMotion = axis->running() && !axis->dwelling();
        if (inMotion)
            axis->takeUp(axis->position(), m_now);
        axis->settle(m_now);
    }
}

} // namespace grbl
