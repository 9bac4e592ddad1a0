// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverRecords.h"
#include "device/moverStatus.h"

#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/**
 * What a test can do to the simulated controller behind the library's back. Static library (mover::simulator) only.
 *
 * Every function may be called from any thread, also while library calls are in flight. Times are in simulated
 * seconds unless the name says otherwise. A function name that the library does not have, an unknown controller or an
 * axis above 2 is a mistake in the test and throws std::invalid_argument.
 */
namespace simulator {

using namespace moverStatus;

/** One library call, as the journal keeps it. */
struct Call {
    std::string function;
    /**
     * The arguments that the caller gave, in order, separated by ", "; out-pointers and their lengths are left out.
     * Integers in decimal, doubles with the fewest digits that give the same number again, texts quoted and followed by
     * their length, a parameter record as its quoted model name, compensation pairs as "[0, 0.1, 10, 10.2]".
     */
    std::string arguments;
    /**
     * What the caller got: the status below 0 after a failure, else the number or status returned, the quoted text of
     * a text getter, the quoted model name for getMotorParams, the code for getMotorAutoDetect.
     */
    std::string result;
    std::thread::id thread;

    /** For example "setSpeed(1001, 0, 2.5) = 0". */
    std::string text() const;
};

enum class Opto { Negative, Positive, Origin };
enum class Chip { Absent, Blank, Written };

// ---- Scenario and clock

/**
 * Back to the embedded default scenario at time 0 with the manual clock: no controller added or open, journal empty, no
 * faults, no overlap. Calls that hang are let go.
 */
void reset();
/** As reset(), with the scenario of a file. On failure nothing changes and `error` is "FILE:LINE: what is wrong". */
bool loadScenarioFile(const std::string &path, std::string *error);
/** As reset(), with a scenario given as JSON. On failure nothing changes and `error` is "scenario:LINE: …". */
bool loadScenarioText(const std::string &json, std::string *error);

/** From here on time passes by itself, at the scenario's time scale. Until the next reset(). */
void useRealClock();
/** Lets `seconds` (0 or more) pass; everything scheduled in them happens at its own time. */
void advance(double seconds);
/** Seconds since the scenario began. */
double now();

// ---- Journal

/** The calls that have returned, oldest first; at most the last 200 000. */
std::vector<Call> journal();
/** The same as texts. */
std::vector<std::string> journalText();
/** How often `function` stands in the journal. */
int callCount(const std::string &function);
void clearJournal();

/** The names of the library's functions. */
std::vector<std::string> functions();
/**
 * Runs at the entry of every call from here on, in the caller's thread and before the call waits for anything, one call
 * at a time. Null ends that, once an observer that is running has returned. It must not call the library.
 */
void onCall(std::function<void(const std::string &function)> observer);
/** A function whose call is in flight, "" when there is none. */
std::string callInFlight();

/** The first two calls that were in flight together, "startMove overlapped getCurrentPos"; "" when none were. */
std::string overlap();

// ---- Faults of calls. They are counted from here on: nth = 1 is the next call of the function.

/** The `nth` call of `function` and the `count` - 1 after it do nothing and return `status` (below 0). */
void failCall(const std::string &function, int status, int nth = 1, int count = 1);
/** Every call of `function` does nothing and returns `status` (below 0), until clearFaults(). */
void failAlways(const std::string &function, int status);
/** The next `count` calls of `function` take `milliseconds` of real time more. */
void delayCall(const std::string &function, int milliseconds, int count = 1);
/** The next call of `function` does not return until releaseHung(). */
void hangCall(const std::string &function);
/** Waits at most `timeoutMs` of real time until a call hangs. Returns whether one does. */
bool waitUntilHanging(int timeoutMs);
/** Lets every hanging call go on as if nothing had been; a hangCall() that has not happened yet stays. */
void releaseHung();
/** Every call of the text getter `function` gives these bytes, cut or zero-padded to the buffer, until clearFaults().
 */
void answerText(const std::string &function, const std::string &bytes);
/**
 * Every call of `function` that is carried out gives this number, cut to the type of what it gives, until
 * clearFaults(): a getter's value, the position, the target, the chip's code, both fields of the joystick's record,
 * every value of a compensation table. Only a double can be no finite number.
 */
void answerNumber(const std::string &function, double number);
/** As answerNumber(), for the number of things that a list or a compensation table says it has; no more are given. */
void answerCount(const std::string &function, int count);
/** Takes back all of the above, and the scenario's faults of calls; a call that hangs goes on hanging. */
void clearFaults();

// ---- The hardware

/** An opto-coupler fails (true) or works again (false). */
void setOptoFault(int id, int axis, Opto opto, bool failed);
/** The controller stops answering, but stays open and goes on moving. */
void loseLink(int id);
void restoreLink(int id);
/** The controller appears among the connected ones, or disappears from them; one that was open has to be opened again.
 */
void plug(int id);
void unplug(int id);
/** `deflection`: -10 to 10, tenths of maxRockerSpeed; the sign is the direction. Taking a joystick away ends its rule.
 */
void setJoystick(int id, bool present, double deflection = 0);
/** One pulse on the trigger input of the axis. */
void triggerPulse(int id, int axis);
/** From here on getRuningState answers this record, whatever the axis does; std::nullopt ends that. */
void setState(int id, int axis, std::optional<MotorStageState> state);
/** From here on getMotorParams answers this record, whatever the stage is; std::nullopt ends that. */
void setParams(int id, int axis, std::optional<MotorParams> params);
/** Puts the axis, standing, to a position, clipped to its travel. */
void setPosition(int id, int axis, double position);
void setChip(int id, int axis, Chip chip);

} // namespace simulator
