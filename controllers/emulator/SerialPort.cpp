// SPDX-License-Identifier: MIT
#include "controllers/emulator/SerialPort.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace emulator {

namespace {

constexpr double shortest = 0.0005; // s of the computer between two looks at the board
constexpr double longest = 0.02;

void check(bool isDone, const char *what)
{
    if (!isDone) {
        throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
    }
}

} // namespace

SerialPort::SerialPort(const Options &options, double speed, std::string link)
    : m_board(options)
    , m_speed(speed)
    , m_bootTime(options.bootTime)
    , m_link(std::move(link))
{
    open();
    m_thread = std::thread([this] { run(); });
}

SerialPort::~SerialPort()
{
    m_ends = true;
    m_thread.join();
    close();
}

void SerialPort::open()
{
    m_fd = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    check(m_fd >= 0 && grantpt(m_fd) == 0 && unlockpt(m_fd) == 0, "no pty");
    m_path = ptsname(m_fd);
    // A serial line changes no byte, and nobody has it open now.
    const int line = ::open(m_path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    check(line >= 0, m_path.c_str());
    termios settings{};
    tcgetattr(line, &settings);
    cfmakeraw(&settings);
    tcsetattr(line, TCSANOW, &settings);
    ::close(line);
    m_isOpen = false;
    if (!m_link.empty()) {
        unlink(m_link.c_str());
        check(symlink(m_path.c_str(), m_link.c_str()) == 0, m_link.c_str());
    }
}

void SerialPort::close()
{
    if (m_fd < 0) {
        return;
    }
    ::close(std::exchange(m_fd, -1));
    if (!m_link.empty()) {
        unlink(m_link.c_str());
    }
}

std::string SerialPort::path() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_link.empty() ? m_path : m_link;
}

bool SerialPort::isOpen() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isOpen;
}

void SerialPort::unplug()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    close();
}

void SerialPort::plug()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_fd < 0) {
        m_board.advanceTo(elapsed());
        m_board.pressReset();
        open();
    }
}

double SerialPort::elapsed() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count() * m_speed;
}

void SerialPort::run()
{
    while (!m_ends) {
        double wait = longest;
        int fd = -1;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            const double now = elapsed();
            m_board.advanceTo(now);
            const std::string said = m_board.receive();
            fd = m_fd;
            // What nobody listens to is lost, as on a real line; so is what the system has no room for.
            if (m_isOpen && !said.empty()) {
                [[maybe_unused]] const ssize_t written = write(fd, said.data(), said.size());
            }
            wait = std::clamp((m_board.nextEvent() - now) / m_speed, shortest, longest);
        }
        pollfd port{fd, POLLIN, 0};
        timespec time{0, static_cast<long>(wait * 1e9)};
        if (fd < 0 || ppoll(&port, 1, &time, nullptr) <= 0 || (port.revents & POLLHUP) != 0) {
            if (fd < 0 || (port.revents & POLLHUP) != 0) {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_isOpen = false;
                nanosleep(&time, nullptr);
                continue;
            }
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_fd < 0 || m_fd != fd) {
            continue;
        }
        m_board.advanceTo(elapsed());
        if (!std::exchange(m_isOpen, true)) {
            m_board.receive();
            if (m_bootTime > 0) {
                m_board.pressReset();
            }
        }
        char bytes[256];
        const ssize_t count = read(fd, bytes, sizeof bytes);
        if (count > 0) {
            m_board.send({bytes, static_cast<std::size_t>(count)});
        }
    }
}

} // namespace emulator
