// SPDX-License-Identifier: MIT
// What comes in and what is due: lines, replies, reports, and what has to be noticed.
#include "controllers/grbl/Board.h"
#include "controllers/grbl/Wire.h"

#include <algorithm>
#include <cstdio>
#include <tuple>

namespace grbl {

using namespace moverMessages;

namespace {

constexpr char askReport = '?';
constexpr double reportTimeout = 1;
constexpr double askAgainAfter = 0.25; // a "?" may get lost
constexpr double forgetAsked = 1.5;    // and never be answered
constexpr double listenAfter = 0.4;    // for an answer that is still to come, of those asked for all askAgainAfter
constexpr int answersInDoubt = 3;      // each with one more still to come
constexpr double longestPause = 0.3;   // between two run(); beyond it what has arrived may not have been read yet
constexpr double movingPoll = 0.1;
constexpr double restingPoll = 0.2;
constexpr double answerTimeout = 0.7;
constexpr double bannerTimeout = 3;
constexpr double deafAfter = 0.3; // in Idle, with answers missing
constexpr double limitsAgainAfter = 5;

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
    m_hasSettings = m_hasChanged = false;
    m_alarm = 0;
    m_homesSingly = false; // it may be another board
    m_limitsTried = -100;
    m_sent.fill(0); // as after power-on, to a step
    m_asked.clear();
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
    breakWrite();
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
            // A letter for each option that the firmware was built with.
            m_homesSingly = m_homesSingly || reply.text.substr(4, comma - 4).find('H') != std::string::npos;
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
            if (m_homing != maxBoardAxes && axis->boardAxis() != m_homing)
                continue;
            axis->setHomed(!failed);
            m_referenced |= failed ? 0 : 1U << axis->boardAxis();
        }
        if (failed) {
            say({HomingFailed, "The board refused to home: error " + std::to_string(reply.number)});
            m_homesSingly = false; // all axes together, then
        }
        m_phase = Phase::Asking; // where it stands now
        m_since = m_now;
        m_asked.clear();
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
    breakWrite();
    m_banner = text;
    m_homesSingly = m_homesSingly || text.find("FluidNC") != std::string::npos;
    m_awaited.clear();
    m_awaitedBytes = 0;
    m_toSay.clear();
    m_saying = false;
    m_pending.clear();
    m_asked.clear();
    m_resetAt = -1;
    m_bannerSeen = true;
    if (m_phase == Phase::Booting || !m_hasSettings) {
        begin({"$I", "$$"}, Phase::Asking);
        return;
    }
    if (m_phase != Phase::Resetting) {
        say({PositionLost, "The board has restarted; the position is lost"});
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
    say(
        {number == 1                  ? LimitHit
         : number >= 6 && number <= 9 ? HomingFailed
                                      : BoardAlarm,
         "The board is in alarm " + std::to_string(number) + ": " + alarmWords(number), -1,
         static_cast<double>(number)});
    // Behind some alarms the board hears nothing but a reset; behind the others it restarts by itself.
    const bool waits = number == 1 || number == 2 || number == 4 || number == 5;
    if (opening() && !waits)
        return; // as it was when the port was opened: it says its settings all the same
    breakWrite();
    if (number == 1) {
        for (std::size_t one = 1; one < m_slices.size(); ++one) {
            for (int i = 0; i < m_boardAxes; ++i) {
                const long long way = m_slices[one].steps[i] - m_slices[one - 1].steps[i];
                if (way != 0)
                    m_ranOn[i] = way > 0 ? 1 : -1;
            }
        }
        if (changed)
            changed();
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
    m_resetAt = m_now + (waits ? 0.6 : 1.5);
    m_urgent = true;
}

// ---- Reports

void Board::poll()
{
    m_output += askReport;
    m_lastAsk = m_now;
    while (!m_asked.empty() && m_now - m_asked.front() > forgetAsked)
        m_asked.pop_front();
    m_asked.push_back(m_now);
}

void Board::takeReport(const Report &told)
{
    // A report tells how many axes there are; one with fewer has lost some on the wire.
    if (m_reports > 0 && told.axes < m_boardAxes)
        return;
    Report report = told;
    if (report.hasOffset)
        m_offset = report.offset;
    if (!report.hasMachine) {
        for (int i = 0; i < report.axes; ++i)
            report.position[i] += m_offset[i];
    }
    m_reportAsked = m_asked.empty() ? m_lastAsk : m_asked.front();
    if (!m_asked.empty())
        m_asked.pop_front();
    m_stillAsked = m_asked.empty() ? 0 : m_stillAsked + 1;
    m_heard = m_now;
    ++m_reports;
    m_positionsBefore = std::exchange(m_report, report).position;
    m_sentSinceReport = 0;
    m_boardAxes = report.axes;
    const bool back = std::exchange(m_lost, false);
    if (back)
        say({AnswersAgain, "The board answers again; all axes are stopped"});
    const bool idle = report.state == Report::State::Idle;
    const bool cannotMove = report.state == Report::State::Alarm || report.state == Report::State::Sleep ||
                            report.state == Report::State::Check;
    const bool held = report.state == Report::State::Hold || report.state == Report::State::Door;
    if (idle && m_awaited.empty() && m_reportAsked >= m_lastAnswer)
        m_idleSeen = true;
    if (idle && m_awaited.empty()) {
        // Said twice: a byte of one report may be wrong.
        const std::pair<int, int> free{report.freeBlocks, report.freeBytes};
        if (std::exchange(m_freeAtRest, free) == free && free.first > 0)
            std::tie(m_totalBlocks, m_totalBytes) = free;
    }

    switch (m_phase) {
    case Phase::Closed:
    case Phase::Booting:
    case Phase::Writing:
        return;
    case Phase::Asking:
        if (m_saying || !m_toSay.empty() || !m_hasSettings)
            return;
        if (idle || cannotMove)
            restAt(report, Then::Stand);
        else
            reset("The board was not at rest"); // in motion, held, or in a homing that does not end
        return;
    case Phase::Resetting:
        if (m_bannerSeen && (idle || cannotMove)) {
            restAt(report, m_then);
        } else if (m_bannerSeen && held && m_now - m_since > 1) {
            say({OnHold, "The board is on hold: close its door, then unlock"});
            restAt(report, Then::Stand); // which locks it
        }
        return;
    case Phase::Homing:
        // Not one that was on its way when homing began.
        if ((idle || cannotMove) && m_reportAsked > m_since) {
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
        cancel(Then::Stand);
    } else if (cannotMove) {
        if (!m_locked) {
            m_locked = true;
            say({BoardLocked, "The board is locked"});
            notHomed();
            endRuns();
            restAt(report, Then::Stand);
        }
    } else if (held && m_locked) {
        return; // until it is unlocked
    } else if (held || (report.holdPressed && !m_rests)) {
        // A hold in a jog shows in its button alone: what has been sent behind it would go on.
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
        if (m_phase == Phase::Ready && still())
            forgetOpenSwitches();
        if (m_limitsOff && report.pins == 0 && m_phase == Phase::Ready && still() &&
            m_now > m_limitsTried + limitsAgainAfter) {
            m_limitsTried = m_now;
            m_writing.clear();
            begin({"$21=1", "$$"}, Phase::Writing); // what it says then counts
        }
    }
}

// ---- What is due

bool Board::isThere(int boardAxis) const
{
    const bool isFine = 1 / stepsPerMm(boardAxis) <= 2 * reportRounding;
    return !isBeside(boardAxis) && (!isFine || m_report.position[boardAxis] == m_positionsBefore[boardAxis]);
}

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
    m_pause = m_now - std::exchange(m_lastRun, m_now);
    if (m_pause > longestPause)
        m_heard += m_pause;
    else
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
                        (m_phase == Phase::Asking && !m_saying && m_toSay.empty() && m_hasSettings) ||
                        (m_phase == Phase::Homing && m_now > m_homeLimit);
    double period = m_rests ? restingPoll : movingPoll;
    if (m_phase != Phase::Ready || (m_rests && !m_idleSeen && m_now >= m_lineEnd - slice))
        period = endingPoll;
    m_nextPoll = std::min(m_nextPoll, m_lastAsk + period);
    // Between two lines, so that the report tells whether the last one has been read.
    const bool justSent = !m_awaited.empty() && m_now < m_awaited.back().since + onTheWay && m_now < m_nextPoll + slice;
    // One "?" that was lost would make each answer count as that to the one before, for ever. Of late answers one would
    // come while nothing is asked.
    const bool listens = m_stillAsked >= answersInDoubt;
    if (listens && m_now >= m_lastAsk + listenAfter && m_now >= m_heard + askAgainAfter) {
        m_asked.clear();
        m_stillAsked = 0;
    }
    if (mayAsk && m_now >= m_nextPoll && !(justSent && m_phase == Phase::Ready) &&
        (m_asked.empty() || m_now >= m_lastAsk + (listens ? listenAfter : askAgainAfter))) {
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
            m_asked.clear();
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
    if (!m_asked.empty() && m_now - m_heard > reportTimeout && !m_lost)
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

/** Whoever is on a switch later came from who knows where. */
void Board::forgetOpenSwitches()
{
    for (int i = 0; i < maxBoardAxes; ++i) {
        if ((m_report.pins >> i & 1U) == 0 && std::exchange(m_ranOn[i], 0) != 0 && changed)
            changed();
    }
}

void Board::endRuns()
{
    for (auto &axis : m_axes)
        axis->stand(axis->position());
}

void Board::notHomed()
{
    m_referenced = 0;
    for (auto &axis : m_axes)
        axis->setHomed(false);
}

} // namespace grbl
