// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/Library.h"

#include "device/moverRecords.h"

#include <mutex>
#include <string>

namespace controllers {

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

// How a journal writes things: integers in decimal, doubles with the fewest digits that give the same number again,
// texts quoted, a parameter record as its quoted model name.
std::string formatted(int number);
std::string formatted(double number);
std::string formatted(const std::string &text);
std::string formatted(const TextArgument &text);
std::string formatted(const PairsArgument &pairs);
std::string formatted(const MotorParams &params);

/**
 * One call of the library from its entry to its return: on construction it takes the time that it takes and locks the
 * library, on destruction it goes into the journal, if there is one. Between the two it holds the library's mutex.
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
        , m_library(Library::instance())
        , m_fate(m_library.enter(function, &m_lock))
    {
        if (m_library.keepsJournal())
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
    Library &library() { return m_library; }
    /** The lock that the call holds, for those that wait for a controller. */
    std::unique_lock<std::mutex> &lock() { return m_lock; }

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
    Library &m_library;
    std::unique_lock<std::mutex> m_lock;
    Library::Fate m_fate;
};

} // namespace controllers
