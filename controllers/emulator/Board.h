// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/emulator/Axes.h"
#include "controllers/emulator/Gcode.h"
#include "controllers/emulator/Planner.h"
#include "controllers/emulator/Settings.h"
#include "controllers/emulator/Stepper.h"
#include "controllers/emulator/Wire.h"

#include <array>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace emulator {

/** The stage on an axis, in mm of its own: where its limit switches close and where it stands at power-on. */
struct Stage {
    double low = -200;
    double high = 0;
    double start = -100;
};

/** What runs on the board. */
enum class Firmware {
    Grbl,    ///< stock 1.1h
    GrblHal, ///< its kin with larger buffers, other words and no deaf Idle
    FluidNc  ///< its kin that keeps its settings in a file: its banner, `$I` without sizes, a short `$$`
};

struct Options {
    Firmware firmware = Firmware::Grbl;
    /** 1 to maxAxes; 3 is what the stock firmware has. */
    int axes = 3;
    /** Of the board's clock: 0.005 runs 0.5 % fast. */
    double clockError = 0;
    /** A board whose firmware homes one axis with "$HX": grblHAL does, the stock firmware does not. */
    bool homesSingleAxes = false;
    /** After homing the position is 0 on every axis, whatever the travel. */
    bool homesToZero = false;
    /** The settings that `$$` shows; empty for all. */
    std::set<int> listed;
    /** Seconds in which a setting is written. What arrives meanwhile is lost. */
    double storeTime = 0.020;
    /** Seconds that the boot loader takes after power-on and when the port is opened. What arrives meanwhile is lost.
     */
    double bootTime = 0;
    /** Keeps every step with its time, see Board::takeSteps(). */
    bool recordsSteps = true;
    /** Differing from what the firmware comes with. */
    std::map<int, double> settings;
    /** The board's memory: read at power-on where it is there, and written after each change; empty for none. */
    std::string settingsFile;
    /** Stages of the axes, from the first on; the others have a default one. */
    std::vector<Stage> stages;
};

enum class State { Idle, Run, Jog, Hold, Door, Home, Alarm, Check, Sleep };

/** One pulse on a step pin. */
struct Step {
    double time;
    int direction; // 1 or -1
};

/** What a host should never send, or not then. */
struct Violation {
    enum class Kind {
        NoAxisWord,      ///< a jog that names no axis: all run to machine zero
        Relative,        ///< a relative jog or move
        MissingAxis,     ///< a jog that does not name every axis
        WorkCoordinates, ///< a jog without G53
        Overflow,        ///< a byte that the receive buffer had no room for
        WhileStoring,    ///< a byte while a setting was being written: lost
        WhileCancelling, ///< a line, other than a blank one, between a jog cancel and Idle
        SecondCancel,    ///< a jog cancel while another one was under way
        FullPlanner,     ///< a jog that had to wait for a free block
        SingleHome,      ///< "$HX" to a board that does not know it
    };
    Kind kind;
    double time;
    std::string line;
};

const char *nameOf(Violation::Kind kind);

/**
 * A controller board with firmware of the Grbl 1.1 family, on a clock that its user moves: nothing happens but in
 * advance(), and the same calls give the same answers to the byte. All times are seconds of the user's clock since
 * power-on. Not for two threads at once.
 */
class Board
{
public:
    explicit Board(Options options = {});

    // The wire
    /** Sends `bytes` to the board from now on, at line speed behind what is on the wire. */
    void send(std::string_view bytes);
    /** What has come from the board until now and was not taken yet. */
    std::string receive();

    // The clock
    double now() const { return toUser(m_now); }
    void advance(double seconds) { advanceTo(now() + seconds); }
    void advanceTo(double time);
    /** When something happens next, if nothing is sent; infinite for never. */
    double nextEvent() const;

    // What a test looks at
    State state() const { return m_state; }
    /** As in a report: "Idle", "Hold:0" ... */
    std::string stateName() const;
    /** Machine position in steps, and in mm. */
    const Steps &position() const { return m_stepper.position(); }
    double positionMm(int axis) const;
    /** Pulses on the step pins since power-on, in both directions, and their sum with signs. */
    const Steps &stepsUp() const { return m_stepsUp; }
    const Steps &stepsDown() const { return m_stepsDown; }
    long long steps(int axis) const { return m_stepsUp[axis] - m_stepsDown[axis]; }
    /** The recorded steps of an axis since the last call. */
    std::vector<Step> takeSteps(int axis);
    /** The time of the last step of any axis; 0 before the first. */
    double lastStep() const { return toUser(m_lastStep); }
    /** Where the stage stands, in mm of its own; homing and limits go by this. */
    double stagePosition(int axis) const { return m_stage[axis]; }
    const Planner &planner() const { return m_planner; }
    const Settings &settings() const { return m_settings; }
    int freeBytes() const { return receiveBytes() - static_cast<int>(m_received.size()); }
    bool motorsAreOn() const { return m_motorsAreOn; }
    bool isDeaf() const { return m_isDeaf; }
    /** The lines that the host sent, as it sent them, and the real-time bytes, each as a line of its own. */
    const std::vector<std::string> &sentLines() const { return m_sentLines; }
    const std::vector<Violation> &violations() const { return m_violations; }
    void forgetViolations() { m_violations.clear(); }

    // What goes wrong
    Wire &toBoard() { return m_in; }
    Wire &toHost() { return m_out; }
    /** Puts `bytes` on the wire to the host that the board has not said. */
    void garble(std::string_view bytes) { m_out.put(bytes, m_now); }
    /** The reset button, and what opening the port does where DTR is wired to it; the boot loader runs first. */
    void pressReset();
    /** Off and on again: the position is 0, and with homing on the board is locked. */
    void powerCycle();
    /** Holds the switch of an axis closed (1) or open (0), whatever the stage does; -1 ends that. */
    void forceSwitch(int axis, int isClosed);
    /** The button for a hold: pressed (true) or let go. */
    void pressHold(bool isPressed);
    /** The safety door: open (true) or closed. A closed one still wants a "~". */
    void setDoor(bool isOpen);
    void setProbe(bool isClosed) { m_isProbeClosed = isClosed; }
    /** Moves the stage by hand, in mm, motors off or not: the board does not notice. */
    void pushStage(int axis, double distance);

private:
    using Then = std::function<void()>;
    /** What the program of the board is waiting for before it goes on. */
    struct Wait {
        std::function<bool()> isOver;
        double wakeAt = Wire::never;
        Then then;
        bool isOfLine = false; // a line's, which stands still while motion is suspended
        bool isForBlock = false;
    };

    bool isHal() const { return m_options.firmware == Firmware::GrblHal; }
    bool isStock() const { return m_options.firmware == Firmware::Grbl; }
    int receiveBytes() const { return isHal() ? 1023 : 128; }
    double toUser(double boardTime) const { return boardTime / (1 + m_options.clockError); }
    double toBoardTime(double userTime) const { return userTime * (1 + m_options.clockError); }
    void violate(Violation::Kind kind, std::string_view line);
    void look(char byte);
    void lookAtLine();

    // The receive interrupt
    void arrive(char byte);

    // The program
    bool isSuspended() const;
    void runProgram();
    void serveRealTime();
    bool readLines();
    /** Does nothing for `seconds`, not even real-time commands. */
    void spend(double seconds, Then then);
    /** Goes on after `seconds`. */
    void later(double seconds, Then then);
    void waitFor(std::function<bool()> isOver, Then then);
    void print(const std::string &text);
    void answer(int error);
    bool isMoving() const { return m_stepper.isRunning() || m_hasStopped; }

    // Lines
    void readLine(const std::string &line);
    void command(const std::string &line);
    void storeSetting(const std::string &line);
    void jog(const std::string &line);
    void code(const std::string &line);
    void run(const Command &command);
    void store(Then then);
    bool isInside(const Vector &target) const;
    void move(const Vector &target, double feed, Block::Kind kind, const Then &then);
    void probe(const Command &command);
    std::string vectorText(const Vector &vector) const;
    Vector machinePosition() const;

    // Real time
    void report();
    void feedHold();
    void noteCancel(char byte);
    void motionEnded();
    void resume();
    void openDoor();
    void changeOverride(unsigned char byte);
    void reset();
    void start(bool isLocked);
    double lockTime() const;
    void stopped();

    // Alarms
    void alarmAndStop(int number);
    void refuseMove();
    void lookAtSwitch(int axis);
    bool isSwitchClosed(int axis) const;
    unsigned limitPins() const;
    bool onStep(int axis, int direction, double time);

    // Homing
    void homeLine(const std::string &tail);
    void homeNext();
    void approach(bool isSlow);
    void homeMove(double distance, double feed, const Then &then);
    void homed();
    void failHoming(int number);

    Options m_options;
    Settings m_settings;
    Wire m_in{true};
    Wire m_out{false};
    Planner m_planner;
    Stepper m_stepper;

    double m_now = 0;    // the board's clock
    double m_freeAt = 0; // until then the program does nothing
    Wait m_wait;
    State m_state = State::Idle;

    // Serial
    std::string m_received;
    std::string m_line;
    bool m_isComment = false;
    bool m_isRestComment = false;
    bool m_isTooLong = false;
    bool m_hadReturn = false; // the last byte ended a line, and was a CR
    double m_storingUntil = 0;
    double m_bootingUntil = 0;

    // Real-time flags, set by the receive interrupt
    bool m_wantsReport = false;
    bool m_wantsReset = false;
    bool m_wantsHold = false;
    bool m_wantsDoor = false;
    bool m_wantsResume = false;
    bool m_wantsCancel = false;
    std::set<unsigned char> m_wantedOverrides;
    bool m_limitEdge = false;

    // Motion
    bool m_hasStopped = false; // the stepper has run dry, the program is to notice
    bool m_isHeld = false;     // Hold:0, Door:0
    bool m_isCancelling = false;
    bool m_doorAfterCancel = false;
    char m_lateCancel = 0; // the last of further cancels, and when it came
    double m_lateCancelAt = 0;
    bool m_isDeaf = false;
    bool m_hostCancels = false; // has sent a cancel that is not done yet
    bool m_mustReset = false;   // deaf to everything but a reset
    bool m_owesAnswer = false;  // of a line that an alarm has broken off
    bool m_motorsAreOn = false;

    // Reports
    double m_reportUntil = 0; // one is being written, and another "?" asks for the same
    int m_untilOffsets = 0;
    int m_untilOverrides = 0;
    int m_feedOverride = 100;
    int m_rapidOverride = 100;
    int m_spindleOverride = 100;

    // G-code
    Modes m_modes;
    Offsets m_offsets;
    Vector m_target{}; // where the last line ends
    std::string m_info;
    std::array<std::string, 2> m_startLines;

    // Homing
    std::vector<unsigned> m_cycles;
    unsigned m_cycle = 0;  // bits of the axes that home now
    unsigned m_homing = 0; // of those that have not found their switch
    unsigned m_homed = 0;
    bool m_isHoming = false;
    bool m_isProbing = false;
    bool m_isProbeClosed = false;
    bool m_isHoldPressed = false;
    bool m_isDoorOpen = false;
    bool m_hasProbed = false;
    Vector m_probed{};

    // The machine
    std::array<int, maxAxes> m_forcedSwitches{};
    std::array<bool, maxAxes> m_switches{};
    Vector m_stage{};
    Steps m_stepsUp{};
    Steps m_stepsDown{};
    std::array<std::vector<Step>, maxAxes> m_steps;
    double m_lastStep = 0;
    int m_lastAxis = 0;
    int m_lastDirection = 1;

    std::string m_sentLine;
    std::vector<std::string> m_sentLines;
    std::vector<Violation> m_violations;
};

} // namespace emulator
