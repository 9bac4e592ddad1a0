// SPDX-License-Identifier: MIT
#include "controllers/grbl/Controller.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace grbl {

namespace {

constexpr double openTimeout = 10; // banner, reset, settings
constexpr double writeTimeout = 10;
constexpr double closeTimeout = 0.015;
constexpr double keepAfter = 0.5;
constexpr std::size_t mostUnwritten = 4096;
constexpr std::size_t mostMessages = 100;

bool isUnreadable(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    return code >= 0x7F || (code < ' ' && byte != '\r' && byte != '\n' && byte != '\t');
}

} // namespace

Controller::Controller(const BoardSetup &setup, std::mutex &mutex, const std::filesystem::path &configuration)
    : controllers::Controller(setup.id, static_cast<int>(setup.axes.size()))
    , m_port(setup.port)
    , m_mutex(mutex)
    , m_keptFile(configuration.empty() ? std::filesystem::path() : Configuration::keptFile(configuration, setup.id))
    , m_board(setup.axes, [this](const Board::Note &note) { say(note); })
{
    serialNumber = "GRBL-" + std::to_string(setup.id);
    modelName = "Grbl";
    Configuration::restore(m_keptFile, this, &m_board);
    m_board.changed = [this] { stored(); };
    for (auto &axis : m_board.axes()) {
        axis->changed = [this] { stored(); };
        axis->waitForBoard = [this](std::unique_lock<std::mutex> &lock) {
            m_serial.wake();
            waitFor(lock, &Controller::hasWritten, writeTimeout);
        };
    }
}

double Controller::now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void Controller::say(const Board::Note &note)
{
    if (!m_isHeard)
        std::fprintf(stderr, "%s: %s\n", m_port.c_str(), note.text.c_str());
    MoverMessage message{};
    message.id = id;
    message.axis = -1;
    for (std::size_t i = 0; note.boardAxis >= 0 && i < m_board.axes().size(); ++i) {
        if (m_board.axes()[i]->boardAxis() == note.boardAxis)
            message.axis = static_cast<int>(i);
    }
    message.code = note.code;
    message.value = note.value;
    message.setting = note.setting;
    note.text.copy(message.text, sizeof message.text - 1);
    m_messages.push_back(message);
    if (m_messages.size() > mostMessages)
        m_messages.pop_front();
}

bool Controller::takeMessage(MoverMessage *message)
{
    m_isHeard = true;
    if (m_messages.empty())
        return false;
    *message = m_messages.front();
    m_messages.pop_front();
    return true;
}

bool Controller::lastReport(MoverReport *report) const
{
    if (m_board.reports() == 0)
        return false;
    *report = {m_board.reports(), now() - m_board.reportAsked()};
    return true;
}

void Controller::waitFor(std::unique_lock<std::mutex> &lock, bool (Controller::*over)() const, double atMost)
{
    m_changed.wait_for(lock, std::chrono::duration<double>(atMost), [&] { return (this->*over)(); });
}

bool Controller::isAt(const std::string &port) const
{
    std::error_code gone;
    return m_port == port || std::filesystem::equivalent(m_port, port, gone);
}

int Controller::startLink()
{
    if (m_serves)
        return Ok;
    if (const int status = m_serial.open(m_port); status != Ok) {
        if (status == PortInUse)
            std::fprintf(stderr, "%s: the port is in use by another program\n", m_port.c_str());
        return status;
    }
    m_board.opened(now());
    m_heard = {};
    m_released = false;
    m_serves = true;
    // Nobody waits for its end: a controller is there as long as the process.
    std::thread([this] { serve(); }).detach();
    return Ok;
}

void Controller::releaseLink()
{
    m_released = true;
    m_serial.wake();
}

int Controller::openLink(std::unique_lock<std::mutex> &lock)
{
    if (const int status = startLink(); status != Ok)
        return status;
    m_released = false;
    if (!m_board.opening() && !m_board.answers()) {
        // It has fallen silent, behind an alarm that did not come over, say: only a reset is heard then.
        m_board.closed();
        m_board.opened(now());
        m_serial.wake();
    }
    waitFor(lock, &Controller::isOpened, openTimeout);
    if (!m_board.answers())
        return LinkLost;
    softVersion = m_board.version().substr(0, MOVER_TEXT_LENGTH);
    return Ok;
}

void Controller::closeLink(std::unique_lock<std::mutex> &lock)
{
    m_board.stopAll(); // nobody is left who could
    if (!m_board.isUrgent())
        return;
    // The process may end behind this call, and a homing would go on without it.
    m_isWritten = false;
    m_serial.wake();
    waitFor(lock, &Controller::isWritten, closeTimeout);
}

void Controller::stored()
{
    if (m_keepAt < 0)
        m_keepAt = now() + keepAfter;
}

void Controller::wakeIfUrgent()
{
    if (m_board.isUrgent())
        m_serial.wake();
}

void Controller::keep(std::unique_lock<std::mutex> &lock)
{
    if (m_keepAt < 0 || now() < m_keepAt || m_keptFile.empty())
        return;
    m_keepAt = -1;
    const std::string text = Configuration::kept(*this, m_board);
    lock.unlock();
    if (!Configuration::write(m_keptFile, text))
        std::fprintf(stderr, "%s cannot be written\n", m_keptFile.u8string().c_str());
    lock.lock();
}

void Controller::serve()
{
    std::string in;
    std::string out;
    bool there = true;
    std::unique_lock lock(m_mutex);
    // A port that is given back: not in the middle of a motion, nor before what ends one is on the wire.
    const auto mayGo = [this] {
        return !m_board.isUrgent() && (m_board.still() || m_board.opening() || m_board.locked() || !m_board.answers());
    };
    while (there && !(m_released && mayGo())) {
        m_heard.bytes += in.size();
        m_heard.unreadable += static_cast<std::size_t>(std::count_if(in.begin(), in.end(), isUnreadable));
        m_board.received(in, now());
        in.clear();
        const double wait = m_board.run(now());
        out += m_board.takeOutput();
        if (m_board.phase() == Board::Phase::Closed)
            break;        // nothing of this family at the port
        if (wait >= 0.02) // nothing moves
            keep(lock);
        const bool tells = !m_isWritten;
        lock.unlock();
        m_changed.notify_all();
        there = m_serial.write(&out) && out.size() < mostUnwritten;
        if (tells) {
            lock.lock();
            m_isWritten = true;
            lock.unlock();
            m_changed.notify_all();
        }
        there = there && m_serial.read(&in, wait, !out.empty());
        lock.lock();
    }
    m_board.closed();
    m_serial.close();
    open = false;
    m_serves = false;
    m_changed.notify_all();
}

} // namespace grbl
