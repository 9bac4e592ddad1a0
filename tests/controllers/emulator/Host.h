// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/emulator/Board.h"

#include <string>
#include <utility>
#include <vector>

/** A line from the board, and when its first byte had come. */
struct Heard {
    double time;
    std::string text;
};

/** Speaks with a board on the board's clock. */
class Host
{
public:
    explicit Host(emulator::Options options = fast())
        : board(std::move(options))
    {
        run(0.3);
    }

    /** A board that ramps as the lines of the tests want it, and stores settings in no time. */
    static emulator::Options fast()
    {
        emulator::Options options;
        options.storeTime = 0;
        options.settings = {{10, 3}, {110, 3000}, {111, 3000}, {112, 3000}, {120, 50}, {121, 50}, {122, 50}};
        options.stages.resize(emulator::maxAxes, {-1000, 1000, 0});
        return options;
    }

    void run(double seconds) { runTo(board.now() + seconds); }

    void runTo(double time)
    {
        constexpr double look = 0.0001;
        while (board.now() < time - 1e-9) {
            board.advanceTo(std::min(time, board.now() + look));
            for (const char byte : board.receive()) {
                if (m_line.empty()) {
                    m_lineStart = board.now();
                }
                if (byte != '\n') {
                    m_line += byte;
                    continue;
                }
                heard.push_back({m_lineStart, m_line.substr(0, m_line.size() - 1)}); // without the CR
                m_line.clear();
            }
        }
    }

    /** Sends `bytes`, and returns what is heard within `seconds`. */
    std::vector<std::string> say(std::string_view bytes, double seconds = 0.1)
    {
        const std::size_t before = heard.size();
        board.send(bytes);
        run(seconds);
        std::vector<std::string> lines;
        for (std::size_t i = before; i < heard.size(); ++i) {
            lines.push_back(heard[i].text);
        }
        return lines;
    }

    /** The one answer to `bytes`, or all of them with bars between. */
    std::string ask(std::string_view bytes, double seconds = 0.1)
    {
        std::string all;
        for (const std::string &line : say(bytes, seconds)) {
            all += (all.empty() ? "" : "|") + line;
        }
        return all;
    }

    /** Lets the board run until it reports nothing but rest; false when it does not within `seconds`. */
    bool comesToRest(double seconds = 60)
    {
        const double end = board.now() + seconds;
        while (board.state() != emulator::State::Idle) {
            if (board.now() > end) {
                return false;
            }
            run(0.01);
        }
        return true;
    }

    emulator::Board board;
    std::vector<Heard> heard;

private:
    std::string m_line;
    double m_lineStart = 0;
};
