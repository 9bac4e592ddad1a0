// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverSetUp.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace grbl {

class Axis;
class Board;
class Controller;

/** One board that is being set up, whatever stands in the file of controllers. Any thread. */
class SetUp
{
public:
    static SetUp &instance();

    void open(const std::string &port);
    void close();
    void look(MoverBoard *told);
    int settings(MoverSetting *settings, int capacity);
    bool takeMessage(MoverMessage *message);
    int write(const std::map<int, double> &settings);
    int move(int number, double distance, double speed);
    void stop();
    int unlock();
    int home(int number);

private:
    SetUp() = default;
    void begin(const std::string &port, unsigned attempt);
    /** The board, with its plans brought up to now; null unless it has answered. */
    Board *board();
    Axis *axis(int number);
    int failure() const;

    std::mutex m_mutex;
    /** By their ports. Never destroyed: each has a thread for as long as its port is open. */
    std::map<std::string, std::unique_ptr<Controller>> m_controllers;
    Controller *m_controller = nullptr;
    // A port may take seconds to be opened, with the mutex locked: what is asked meanwhile is answered without it.
    std::atomic<bool> m_opens{false};
    std::atomic<unsigned> m_attempt{0};
    std::atomic<bool> m_begins{false};   ///< the port is to be opened
    std::atomic<bool> m_answered{false}; ///< the board has said what it is
    std::atomic<int> m_refusal{0};       ///< moverSetUp::Failure of opening
};

} // namespace grbl
