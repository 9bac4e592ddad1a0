// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/Simulator.h"

#include "device/moverRecords.h"

#include <mutex>
#include <string>

namespace simulator {

/** A text argument of a call: bytes and their number, as the caller gave them. */
struct TextArgument {
    const char *bytes;
    int length;
};

/** A compensation table as an argument. */
struct PairsArgument {
    const double *pairs;
    int count;
};

// How the journal writes things; see Call in SimulatorControl.h.
std::string formatted(int number);
std::string formatted(double number);
std::string formatted(const std::string &text);
std::string formatted(const TextArgument &text);
std::string formatted(const PairsArgument &pairs);
std::string formatted(const MotorParams &params);

/**
 * One call of the library from its entry to its return: on construction it takes the time that it takes and locks the
 * simulator, on destruction it goes into the journal. Between the two it holds the simulator's mutex.
 *
 * The first thing that speaks against the call stays its status; nothing may be carried out then.
 */
class LibraryCall
{
public:
    /** `arguments`: what the journal shows of them, in order. */
    template <typename... Arguments>
    explicit LibraryCall(const char *function, const Arguments &...arguments)
        : m_function(function)
        , m_simulator(Simulator::instance())
        , m_fate(m_simulator.enter(function, &m_lock))
    {
        if constexpr (keepsJournal)
            ((m_arguments += (m_arguments.empty() ? "" : ", ") + formatted(arguments)), ...);
    }
    ~LibraryCall();
    LibraryCall(const LibraryCall &) = delete;
    LibraryCall &operator=(const LibraryCall &) = delete;

    /** Below 0: the call is refused. */
    int status() const { return m_fate.status; }
    /** Text that a getter has to give instead of its own, or null. */
    const std::string *answer() const { return m_fate.answer; }
    /** The number that a getter has to give: what a test has set, else `own`. */
    template <typename Number>
    Number given(Number own) const
    {
        return m_fate.number ? static_cast<Number>(*m_fate.number) : own;
    }
    /** The same for the number of things. */
    int givenCount(int own) const { return m_fate.count.value_or(own); }
    Simulator &simulator() { return m_simulator; }

    // Each of these returns null, and the status says why, if the call is refused.
    Controller *knownController(int id);
    Controller *addedController(int id);
    /** One that is open and answers. */
    Controller *openController(int id);
    /** An axis of such a controller. */
    Axis *axis(int id, int axis);

    /** Refuses the call unless it already is. Returns the status. */
    int refuse(int status);

    // Every call ends with one of these: they note the result and hand it back.
    int finish(int result);
    double finish(double result);
    /** `shown`: what the journal shows if the call succeeded. */
    int finish(int result, const std::string &shown);

private:
    std::string m_arguments;
    std::string m_result;
    const char *m_function;
    Simulator &m_simulator;
    std::unique_lock<std::mutex> m_lock;
    Simulator::Fate m_fate;
};

} // namespace simulator
