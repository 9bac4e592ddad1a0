// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/grbl/Axis.h"
#include "controllers/grbl/Replies.h"

#include "device/moverMessages.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace grbl {

/**
 * One board of the Grbl family: the conversation with it, and the stream of short absolute jogs that makes its axes
 * follow their plans independently of each other. It knows no port and no clock: bytes go in with received() and out
 * with takeOutput(), and run() does what is due. Times are seconds of any clock that never goes back.
 *
 * How far ahead of the clock is sent is the lead; one jog line says where every axis is at the end of one slice.
 */
class Board
{
public:
    static constexpr double slice = 0.03;
    static constexpr double lead = 0.17;
    /** No axis is faster than what the board's own ramp stops in this time. */
    static constexpr double brakingTime = 0.08;
    /** Number of the setting; soft limits ($20) can be switched on only behind it. */
    static constexpr int homingOn = 22;

    /** Something to say besides statuses. */
    struct Note {
        moverMessages::Code code;
        std::string text;
        int boardAxis = -1; ///< -1: the whole board
        double value = 0;   ///< these two: see the codes
        int setting = 0;
    };
    using Log = std::function<void(const Note &)>;

    /** `setup`: the stages, by the axis of the library. */
    Board(const std::vector<AxisSetup> &setup, Log log);

    // ---- The wire

    /** The port has been opened, which may have reset the board. */
    void opened(double now);
    /** The port is gone. */
    void closed();
    void received(std::string_view bytes, double now);
    /** Does what is due. Returns the seconds until it wants to be called again. */
    double run(double now);
    /** What has to be sent, in this order and at once. */
    std::string takeOutput() { return std::exchange(m_output, {}); }

    // ---- What is known

    enum class Phase {
        Closed,
        Booting,    ///< waits for the banner
        Asking,     ///< reads the settings
        Ready,      ///< moves, if it is not locked
        Writing,    ///< a command or setting waits for its answer
        Homing,     ///< silent until it is done
        Cancelling, ///< slowing down, nothing is sent until it is at rest
        Resetting   ///< waits for the banner of a reset
    };
    Phase phase() const { return m_phase; }
    /** The board answers: a report came within a second of being asked for. */
    bool answers() const { return m_phase != Phase::Closed && m_phase != Phase::Booting && !m_lost; }
    /** Opening has come to its end: Ready, or without success Closed. */
    bool opening() const { return m_phase == Phase::Booting || m_phase == Phase::Asking; }
    bool locked() const { return m_locked; }
    /** Direction, in the board's coordinates, in which an axis ran on the limit switch that it is still on; or 0. */
    int switchDirection(int boardAxis) const;
    /** It is on a limit switch, and driven off it by hand: hard limits are off, or it ran on it. */
    bool isOnSwitch(int boardAxis) const;
    /** As switchDirection(), whether the switch is closed or not; kept over an end of the program. */
    int ranOn(int boardAxis) const { return m_ranOn[boardAxis]; }
    void setRanOn(int boardAxis, int direction) { m_ranOn[boardAxis] = direction; }
    /** Hard limits are off, to be on again when the axis is off its switch; kept over an end of the program. */
    bool limitsOff() const { return m_limitsOff; }
    void setLimitsOff(bool off) { m_limitsOff = off; }
    /** Set by whoever keeps values: one has changed. */
    std::function<void()> changed;
    /** Everything stands and nothing is under way. */
    bool still() const;
    /** Reports have the axis where the last line sends it. Where steps are finer than what a report shows, two of them.
     */
    bool isThere(int boardAxis) const;
    const Report &report() const { return m_report; }
    /** Reports since the port was opened. */
    unsigned long long reports() const { return m_reports; }
    /** When the last one was asked for: it is of no earlier moment. */
    double reportAsked() const { return m_reportAsked; }
    const std::string &version() const { return m_version; }
    /** What it says first. */
    const std::string &banner() const { return m_banner; }
    /** It can home one axis without the others. */
    bool homesSingly() const { return m_homesSingly; }
    const std::map<int, double> &settings() const { return m_settings; }
    /** A setting of the board, or `otherwise` where it has none. */
    double setting(int number, double otherwise) const;

    std::vector<std::unique_ptr<Axis>> &axes() { return m_axes; }
    const std::vector<std::unique_ptr<Axis>> &axes() const { return m_axes; }
    /** Brings the plan up to now, so that a start at rest begins at once. */
    void settle(double now);
    /** A call has changed what has to be sent: run() should be called at once. */
    bool isUrgent() const { return m_urgent; }

    // ---- For the axes. They return a status.

    /** What speaks against starting anything. */
    int refusal() const;
    int stop(Axis &axis);
    int home(Axis &axis);
    /** Takes the board out of its lock; only ever because somebody asked for it. */
    int unlock();
    /** Begins to write those of `settings` that differ, as `$n=v`; Ok even when nothing has to be written. */
    int write(const std::map<int, double> &settings);
    /** The end of the last write: Ok or WriteFailed. */
    int written() const { return m_written; }
    void hurry() { m_urgent = true; }
    void say(const Note &note) { m_log(note); }
    void say(const std::string &text) { m_log({moverMessages::General, text}); }
    /** Ends all that moves, a homing too, because nobody is there any more to stop it. */
    void stopAll();

private:
    /** A line that the board has not answered yet. */
    struct Awaited {
        std::size_t bytes;
        double since;
        std::string line;
    };
    /** A slice that has been sent, or in which nothing moved. */
    struct Slice {
        double end;
        std::array<long long, maxBoardAxes> steps;
    };

    void sendLine(const std::string &line);
    void sendByte(char byte) { m_output += byte; }
    void take(const Reply &reply);
    void takeAnswer(const Reply &reply);
    void takeReport(const Report &told);
    void takeBanner(const std::string &text);
    void takeAlarm(int number);

    void poll();
    void watch();
    void converse();
    void begin(std::vector<std::string> lines, Phase phase);
    void asked();
    void wrote();
    void undo();
    void breakWrite();

    void stream();
    void sendSlice(double end);
    void ranDry();
    double effectiveLead() const;
    void countAnswers(const Report &report);
    void compare(const Report &report);

    enum class Then { Stand, TakeUp };
    void cancel(Then then);
    void sendCancel();
    void watchCancel();
    void reset(const std::string &why, moverMessages::Code code = moverMessages::General);
    void stopHoming();
    void restAt(const Report &report, Then then);
    void lose(const std::string &why);
    void trouble(const std::string &what);
    void forgetOpenSwitches();
    void endRuns();
    void notHomed();

    // A board takes 0 as well, and then does not move: see refusal().
    double stepsPerMm(int axis) const { return std::max(setting(100 + axis, 250), 1e-3); }
    long long toSteps(int boardAxis, double mm) const;
    /** The same for a target: never a step beyond the end that the board's own limits leave. */
    long long targetSteps(int boardAxis, double mm) const;
    /** How far the last report has the axis from where the last line sends it, in mm. */
    double missing(int boardAxis) const
    {
        return std::abs(m_report.position[boardAxis] - m_sent[boardAxis] / stepsPerMm(boardAxis));
    }
    bool isBeside(int boardAxis) const { return missing(boardAxis) > 0.5 / stepsPerMm(boardAxis) + reportRounding; }
    /** A jog of all axes to `steps`, without its feed. */
    std::string jogTo(const std::array<long long, maxBoardAxes> &steps) const;

    Log m_log;
    std::vector<std::unique_ptr<Axis>> m_axes;

    double m_now = 0;
    std::string m_output;
    LineReader m_reader;
    Phase m_phase = Phase::Closed;
    double m_since = 0; ///< when the phase began
    bool m_urgent = false;

    // Lines
    std::deque<Awaited> m_awaited;
    std::size_t m_awaitedBytes = 0;
    int m_doubts = 0;     ///< reports in a row that missed an answer
    int m_stillAsked = 0; ///< reports in a row behind which another one was still to come
    std::deque<std::string> m_toSay;
    bool m_saying = false; ///< a line of a conversation waits for its answer

    // Reports
    static constexpr double reportRounding = 0.0006; ///< mm: three decimals, and a little
    Report m_report;
    std::array<double, maxBoardAxes> m_positionsBefore{}; ///< positions of the report before the last
    std::array<double, maxBoardAxes> m_offset{};
    std::deque<double> m_asked; ///< when each "?" was sent that has no report yet, the oldest first
    double m_lastAsk = 0;
    double m_heard = 0;               ///< when the last report came
    double m_lastRun = 0;             ///< of run()
    double m_pause = 0;               ///< before the last run()
    unsigned long long m_reports = 0; ///< reports since the port was opened
    double m_reportAsked = 0;         ///< when the last report was asked for
    bool m_lost = false;
    bool m_idleSeen = false; ///< a report in Idle has come that was asked for after the last line was answered
    double m_lastAnswer = 0;
    double m_nextPoll = 0;
    int m_sentSinceReport = 0; ///< lines

    // The board
    std::map<int, double> m_settings;
    bool m_hasSettings = false;   ///< the board has been asked for them, however few it told
    bool m_hasChanged = false;    ///< it has been told what reports have to have
    std::map<int, double> m_read; ///< settings of a list that is coming in
    std::string m_banner;
    std::string m_version;
    bool m_homesSingly = false;
    std::size_t m_bufferBytes = 128;
    int m_boardAxes = 3;
    bool m_locked = false;
    int m_alarm = 0;
    int m_totalBlocks = 15;
    int m_totalBytes = 128;           ///< of the buffer, as reports say
    std::pair<int, int> m_freeAtRest; ///< blocks and bytes in the last report at rest

    // Stream
    double m_head = 0;     ///< time up to which the plan has been turned into lines
    bool m_rests = true;   ///< no axis is in motion at m_head: it follows the clock
    double m_lineEnd = 0;  ///< end of the last slice that has sent a line
    std::string m_pending; ///< a line behind a pause, that must not go out before its time
    double m_pendingAt = 0;
    std::array<long long, maxBoardAxes> m_sent{};
    std::deque<Slice> m_slices;
    bool m_isDry = false; ///< the board had nothing more to do, and that has been said
    double m_factor = 1;
    double m_excess = 0; ///< seconds that the board needs longer for the stop at the end of what was sent
    double m_suspectAsked = -1;
    int m_corrections = 0;

    // Stop
    Then m_then = Then::Stand;
    bool m_cancelSent = false;
    double m_cancelAt = 0;
    double m_idleSince = -1;
    std::deque<double> m_troubles;
    int m_cancels = 0;
    double m_stopTime = 0; ///< that the board may take for its ramp
    Report m_cancelReport;

    // Homing and writing
    double m_homeLimit = 0;
    int m_homing = -1; ///< axis that homes, or maxBoardAxes for all
    double m_homeAsked = -100;
    unsigned m_referenced = 0; ///< bits of the axes that have just homed and wait for the report of where they are
    std::map<int, double> m_writing;
    std::map<int, double> m_before;
    std::map<int, double> m_toUndo; ///< of a write that was broken off, until the board listens again
    int m_written = 0;
    bool m_undoing = false;
    double m_resetAt = -1; ///< when a reset has to be sent, below 0: not
    bool m_resetSaid = false;
    bool m_bannerSeen = false; ///< since the reset

    // Limit switches
    std::array<int, maxBoardAxes> m_ranOn{}; ///< direction in which each axis last ran when a switch was hit
    bool m_limitsOff = false;                ///< until the axis is off its switch
    double m_limitsTried = -100;             ///< when they were to be on again
};

} // namespace grbl
