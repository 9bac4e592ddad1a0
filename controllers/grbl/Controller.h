// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/Controller.h"
#include "controllers/grbl/Board.h"
#include "controllers/grbl/Configuration.h"
#include "controllers/grbl/SerialPort.h"

#include <condition_variable>
#include <deque>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

namespace grbl {

/**
 * A board at its port. A thread of its own speaks with the board, from the first opening on and for as long as the port
 * is there: opening and closing by the library's user leaves it open, as opening it resets the board.
 *
 * Everything but the thread's reading and writing happens with the library's mutex locked.
 */
class Controller : public controllers::Controller
{
public:
    /** `mutex`: of the library. `configuration`: the file beside which values are kept; empty: they are not. */
    Controller(const BoardSetup &setup, std::mutex &mutex, const std::filesystem::path &configuration);

    bool plugged() const override { return SerialPort::exists(m_port); }
    bool answers() const override { return m_board.answers(); }
    int openLink(std::unique_lock<std::mutex> &lock) override;
    /** Opens the port, without waiting for the board. Returns a status. */
    int startLink();
    /** Closes the port as soon as its thread comes round. */
    void releaseLink();
    bool serves() const { return m_serves; }
    /** Whether it is the port of that name, under whatever name it goes here. */
    bool isAt(const std::string &port) const;
    /** What has come from the port since it was opened. */
    struct Heard {
        std::size_t bytes = 0;
        std::size_t unreadable = 0; ///< of them: no text
    };
    const Heard &heard() const { return m_heard; }
    void closeLink(std::unique_lock<std::mutex> &lock) override;
    int mostAxes() const override { return static_cast<int>(m_board.axes().size()); }
    controllers::Axis &axis(int number) override { return *m_board.axes()[number]; }
    void stored() override;

    /** Brings the plan up to now. */
    void settle() { m_board.settle(now()); }
    /** Has the thread send at once what a call has brought about. */
    void wakeIfUrgent();

    Board &board() { return m_board; }

    /** Takes the oldest thing that the board has had to say. */
    bool takeMessage(MoverMessage *message);
    bool lastReport(MoverReport *report) const;

private:
    static double now();
    void say(const Board::Note &note);
    void serve();
    void waitFor(std::unique_lock<std::mutex> &lock, bool (Controller::*over)() const, double atMost);
    bool isWritten() const { return m_isWritten || !m_serves; }
    bool isOpened() const { return !m_board.opening(); }
    bool hasWritten() const { return m_board.phase() != Board::Phase::Writing && !m_board.opening(); }
    /** Writes what is kept when something has changed and a moment has passed. */
    void keep(std::unique_lock<std::mutex> &lock);

    std::string m_port;
    std::mutex &m_mutex;
    std::filesystem::path m_keptFile;
    std::deque<MoverMessage> m_messages;
    bool m_isHeard = false; ///< somebody takes the messages; until then they go to stderr too
    Board m_board;
    SerialPort m_serial;
    bool m_serves = false;   ///< the thread runs
    bool m_released = false; ///< it has to end
    Heard m_heard;
    bool m_isWritten = true; ///< what the board had to send is on the wire
    std::condition_variable m_changed;
    double m_keepAt = -1;
};

} // namespace grbl
