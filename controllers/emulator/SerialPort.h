// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/emulator/Board.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>

namespace emulator {

/**
 * A board behind a serial port of this computer (a pty), on the computer's clock. A thread of its own moves the board;
 * look at it with use().
 */
class SerialPort
{
public:
    /**
     * The board's clock runs `speed` times as fast as the computer's, above 0. `link`, when not empty, is a symbolic
     * link that leads to the port as long as it is plugged in; the port's own name changes when it is plugged in again.
     * Throws std::runtime_error when the system gives no port.
     */
    explicit SerialPort(const Options &options, double speed = 1, std::string link = {});
    ~SerialPort();
    SerialPort(const SerialPort &) = delete;
    SerialPort &operator=(const SerialPort &) = delete;

    /** The file that the port has at present; the link where there is one. */
    std::string path() const;

    /** Whether a host has it open; a host that closes and opens it within 20 ms is not noticed. */
    bool isOpen() const;

    /** Calls `use` with the board while its thread keeps off it, and returns what that returns. */
    template <typename Use>
    auto use(const Use &use)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_board.advanceTo(elapsed());
        return use(m_board);
    }

    /** Pulls the plug: the port is gone, the board loses its power. */
    void unplug();
    /** Plugs it in again: a port, and a board that restarts. */
    void plug();

private:
    void open();
    void close();
    void run();
    double elapsed() const;

    mutable std::mutex m_mutex;
    Board m_board;
    const double m_speed;
    const double m_bootTime;
    const std::string m_link;
    std::string m_path;
    int m_fd = -1;
    bool m_isOpen = false; // by a host
    // It has been on for a second when its port appears: a host takes the banner of that for its own reset's.
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now() - std::chrono::seconds(1);
    std::atomic<bool> m_ends{false};
    std::thread m_thread;
};

} // namespace emulator
