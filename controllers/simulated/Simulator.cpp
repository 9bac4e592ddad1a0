// SPDX-License-Identifier: MIT
#include "controllers/simulated/Simulator.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace simulator {

namespace {

constexpr std::size_t journalCapacity = 200'000;

} // namespace

} // namespace simulator

controllers::Library &controllers::Library::instance()
{
    return simulator::Simulator::instance();
}

namespace simulator {

Simulator &Simulator::instance()
{
    static Simulator &simulator = *new Simulator;
    return simulator;
}

Simulator::Simulator()
{
    Scenario scenario = Scenario::embedded();
#ifdef _WIN32 // the other one answers in the code page, which does not have every character
    const wchar_t *path = _wgetenv(L"MOVER_SCENARIO");
#else
    const char *path = std::getenv("MOVER_SCENARIO");
#endif
    std::string error;
    if (path && *path && !Scenario::readFile(path, &scenario, &error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        std::fflush(stderr);
        // Not exit(): other threads of the program are running, and static objects must not go from under them.
        std::_Exit(2);
    }
    begin(scenario, true);
}

void Simulator::begin(const Scenario &scenario, bool realClock)
{
    m_controllers = std::vector<Controller>(scenario.controllers.begin(), scenario.controllers.end());
    m_events = scenario.events;
    m_latencyMs = scenario.latencyMs;
    m_timeScale = scenario.timeScale;
    m_realClock = realClock;
    m_clockBase = 0;
    m_clockStart = Clock::now();
    clearFaults();
    for (const CallFault &fault : scenario.faults)
        addFault(fault);
    releaseHung();
    m_overlap.clear();
    m_journal.clear();
    settle();
}

// ---- Clock

double Simulator::now() const
{
    if (!m_realClock)
        return m_clockBase;
    return m_clockBase + m_timeScale * std::chrono::duration<double>(Clock::now() - m_clockStart).count();
}

void Simulator::setRealClock()
{
    m_clockBase = now();
    m_clockStart = Clock::now();
    m_realClock = true;
}

void Simulator::advance(double seconds)
{
    m_clockBase += seconds;
    settle();
}

void Simulator::settle()
{
    const double until = now();
    for (;;) {
        const auto next = std::min_element(
            m_events.begin(), m_events.end(), [](const Event &a, const Event &b) { return a.at < b.at; });
        if (next == m_events.end() || next->at > until)
            break;
        const Event event = *next;
        if (event.every > 0)
            next->at += event.every;
        else
            m_events.erase(next);
        Controller &controller = *this->controller(event.controller);
        controller.settle(event.at);
        controller.happen(event);
    }
    for (Controller &controller : m_controllers)
        controller.settle(until);
}

Controller *Simulator::controller(int id)
{
    const auto found = std::find_if(
        m_controllers.begin(), m_controllers.end(), [id](const Controller &controller) { return controller.id == id; });
    return found == m_controllers.end() ? nullptr : &*found;
}

std::vector<controllers::Controller *> Simulator::controllers()
{
    std::vector<controllers::Controller *> all;
    for (Controller &controller : m_controllers)
        all.push_back(&controller);
    return all;
}

// ---- Calls

void Simulator::setObserver(std::function<void(const std::string &)> observer)
{
    const std::lock_guard<std::mutex> observing(m_observerMutex);
    m_observer = std::move(observer);
}

Simulator::Fate Simulator::enter(const char *function, std::unique_lock<std::mutex> *lock)
{
    {
        const std::lock_guard<std::mutex> observing(m_observerMutex);
        if (m_observer)
            m_observer(function);
    }
    *lock = std::unique_lock(m_mutex);
    noteFlight(function);
    int delayMs = m_latencyMs;
    Fate fate;
    fate.status = applyFaults(function, &delayMs);
    waitWhileHung(function, lock);
    if (delayMs > 0) {
        lock->unlock();
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        lock->lock();
    }
    if (const auto answer = m_answers.find(function); answer != m_answers.end())
        fate.answer = &answer->second;
    if (const auto number = m_numbers.find(function); number != m_numbers.end())
        fate.number = number->second;
    if (const auto count = m_counts.find(function); count != m_counts.end())
        fate.count = count->second;
    settle();
    return fate;
}

void Simulator::leave(const char *function, const std::string &arguments, const std::string &result)
{
    m_inFlight.erase(std::find(m_inFlight.begin(), m_inFlight.end(), function));
    if (keepsJournal()) {
        if (m_journal.size() == journalCapacity)
            m_journal.pop_front();
        m_journal.push_back({function, arguments, result, std::this_thread::get_id()});
    }
}

void Simulator::noteFlight(const char *function)
{
    if (!m_inFlight.empty() && m_overlap.empty())
        m_overlap = std::string(function) + " overlapped " + m_inFlight.back();
    m_inFlight.push_back(function);
}

// ---- Faults

void Simulator::addFault(const CallFault &fault)
{
    m_faults.push_back({fault});
}

int Simulator::applyFaults(const std::string &function, int *delayMs)
{
    int status = 0;
    for (Fault &fault : m_faults) {
        if (fault.what.function != function)
            continue;
        ++fault.seen;
        const int past = fault.seen - fault.what.firstCall; // calls since the first that it befalls
        if (past < 0 || (fault.what.count >= 0 && past >= fault.what.count))
            continue;
        *delayMs += fault.what.delayMs;
        if (status == 0)
            status = fault.what.status;
    }
    return status;
}

void Simulator::hang(const std::string &function)
{
    m_hangs.push_back(function);
}

void Simulator::waitWhileHung(const std::string &function, std::unique_lock<std::mutex> *lock)
{
    const auto hang = std::find(m_hangs.begin(), m_hangs.end(), function);
    if (hang == m_hangs.end())
        return;
    m_hangs.erase(hang);
    ++m_hanging;
    m_hungChanged.notify_all();
    m_hungChanged.wait(*lock, [this, releases = m_releases] { return m_releases != releases; });
}

bool Simulator::waitUntilHanging(std::unique_lock<std::mutex> *lock, int timeoutMs)
{
    return m_hungChanged.wait_for(*lock, std::chrono::milliseconds(timeoutMs), [this] { return m_hanging > 0; });
}

void Simulator::releaseHung()
{
    ++m_releases;
    m_hanging = 0;
    m_hungChanged.notify_all();
}

void Simulator::clearFaults()
{
    m_faults.clear();
    m_answers.clear();
    m_numbers.clear();
    m_counts.clear();
    m_hangs.clear();
}

} // namespace simulator
