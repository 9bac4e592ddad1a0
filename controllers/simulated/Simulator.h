// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/Library.h"
#include "controllers/simulated/Controller.h"
#include "controllers/simulated/Scenario.h"
#include "controllers/simulated/SimulatorControl.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

/**
 * The one simulator of the process: the controllers, the clock, and what befalls the calls.
 *
 * Members other than enter() and the mutex are for whoever holds the mutex. A call holds it only while it is being
 * carried out, not while it takes its time or hangs.
 */
class Simulator : public controllers::Library
{
public:
    /**
     * The simulator, with the scenario of the environment variable MOVER_SCENARIO at the first call. Ends the process
     * with code 2 when that scenario is wrong. Never destroyed: a call may still hang when the process ends.
     */
    static Simulator &instance();

    std::mutex &mutex() { return m_mutex; }

    /** Waits as long as faults and latency want, and lets the time pass up to now. */
    Fate enter(const char *function, std::unique_lock<std::mutex> *lock) override;
    void leave(const char *function, const std::string &arguments, const std::string &result) override;
    bool keepsJournal() const override { return s_keepsJournal; }
    /** From now on. Only for tests, which can read it; true. */
    static bool keepJournal() { return s_keepsJournal = true; }

    std::vector<controllers::Controller *> controllers() override;
    /** Null if there is none. */
    Controller *controller(int id);

    /** Begins `scenario` at time 0, with nothing left of the one before. */
    void begin(const Scenario &scenario, bool realClock);
    void setRealClock();
    /** Seconds since the scenario began. */
    double now() const;
    void advance(double seconds);
    /** Lets everything happen that is due by now. */
    void settle();

    void addFault(const CallFault &fault);
    void hang(const std::string &function);
    void setAnswer(const std::string &function, const std::string &bytes) { m_answers[function] = bytes; }
    void setNumber(const std::string &function, double number) { m_numbers[function] = number; }
    void setCount(const std::string &function, int count) { m_counts[function] = count; }
    void clearFaults();
    /** Releases `lock` while waiting. */
    bool waitUntilHanging(std::unique_lock<std::mutex> *lock, int timeoutMs);
    void releaseHung();

    const std::deque<Call> &journal() const { return m_journal; }
    void clearJournal() { m_journal.clear(); }
    const std::string &overlap() const { return m_overlap; }
    /** Without the simulator's mutex: waits for an observer that is looking, and that may want to know things. */
    void setObserver(std::function<void(const std::string &)> observer);
    std::string callInFlight() const { return m_inFlight.empty() ? std::string() : m_inFlight.back(); }

private:
    using Clock = std::chrono::steady_clock;
    static inline bool s_keepsJournal = false;
    struct Fault {
        CallFault what;
        int seen = 0; ///< calls of the function since the fault was set
    };

    Simulator();
    void noteFlight(const char *function);
    /** Counts the call; returns the status that it fails with and adds to the time that it takes. */
    int applyFaults(const std::string &function, int *delayMs);
    void waitWhileHung(const std::string &function, std::unique_lock<std::mutex> *lock);

    std::mutex m_mutex;
    std::vector<Controller> m_controllers;
    std::vector<Event> m_events; ///< that are still to come
    int m_latencyMs = 0;

    double m_timeScale = 1;
    bool m_realClock = true;
    double m_clockBase = 0;         ///< seconds at m_clockStart
    Clock::time_point m_clockStart; ///< of the real clock

    std::vector<Fault> m_faults;
    std::map<std::string, std::string> m_answers;
    std::map<std::string, double> m_numbers;
    std::map<std::string, int> m_counts;
    std::vector<std::string> m_hangs; ///< functions whose next call hangs
    int m_hanging = 0;
    int m_releases = 0; ///< how often hanging calls were let go
    std::condition_variable m_hungChanged;

    std::vector<const char *> m_inFlight;
    std::string m_overlap;
    std::deque<Call> m_journal;
    std::mutex m_observerMutex;
    std::function<void(const std::string &)> m_observer;
};

} // namespace simulator
