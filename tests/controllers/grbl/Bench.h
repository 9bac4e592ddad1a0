// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/emulator/Board.h"
#include "controllers/grbl/Board.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

/** The library's board and the emulated one, on one clock that a test moves; nothing depends on the computer's speed.
 */
class Bench
{
public:
    static constexpr double stepsPerMm = 250;

    static emulator::Options options(double clockError = 0)
    {
        emulator::Options options;
        options.clockError = clockError;
        options.storeTime = 0.001;
        options.settings = {{1, 255},   {10, 3},           {110, 1800},       {111, 1800},      {112, 1800},
                            {120, 500}, {121, 500},        {122, 500},        {130, 200},       {131, 200},
                            {132, 200}, {100, stepsPerMm}, {101, stepsPerMm}, {102, stepsPerMm}};
        return options;
    }

    static MotorParams stage()
    {
        MotorParams stage{};
        std::strcpy(stage.modelName, "ML-100");
        stage.pulseOneCircle = 250;
        stage.dispOneCircle = 1;
        stage.restoreSpeed = 5;
        stage.maxSpeed = 25;
        stage.maxAcc = 100;
        stage.minPos = -100;
        stage.maxPos = 100;
        return stage;
    }

    /** `boardAxes`: the board's axis of each axis of the library. */
    explicit Bench(
        const emulator::Options &options = Bench::options(), unsigned seed = 1,
        const std::vector<int> &boardAxes = {0, 1, 2})
        : firmware(options)
        , board(
              setup(boardAxes),
              [this](const grbl::Board::Note &note) {
                  if (note.code != moverMessages::Coarse) // as random targets are
                      log.push_back(note.text);
                  codes.push_back(note.code);
              })
        , m_random(seed)
    {
        board.opened(firmware.now());
        runUntil([this] { return !board.opening(); }, 6);
    }

    /** No test may pass in which such a line was sent. */
    ~Bench()
    {
        for (const emulator::Violation &one : firmware.violations()) {
            if (one.kind == emulator::Violation::Kind::NoAxisWord || one.kind == emulator::Violation::Kind::Relative) {
                std::fprintf(stderr, "%s: %s\n", nameOf(one.kind), one.line.c_str());
                std::abort();
            }
        }
    }
    Bench(const Bench &) = delete;
    Bench &operator=(const Bench &) = delete;

    grbl::Axis &axis(int number) { return *board.axes()[number]; }
    double now() const { return firmware.now(); }
    bool isStill()
    {
        bool still = board.still();
        for (const auto &axis : board.axes())
            still = still && axis->state().isStop;
        return still;
    }

    /** Lets time pass; the computer wakes when it wants to, give or take some milliseconds. */
    void run(double seconds)
    {
        runUntil([] { return false; }, seconds);
    }
    bool runUntil(const std::function<bool()> &over, double atMost)
    {
        const double end = now() + atMost;
        while (!over()) {
            if (now() >= end - 1e-9)
                return false;
            exchange();
            const double wait = board.isUrgent() ? 0.0002 : std::min(m_wait, longestWait);
            const double late = board.isUrgent() ? 0 : std::uniform_real_distribution<double>(0, jitter)(m_random);
            firmware.advanceTo(std::min(now() + wait + late, end));
            exchange();
        }
        return true;
    }
    /** The computer does nothing for so long; the board goes on. */
    void stall(double seconds) { firmware.advance(seconds); }

    /** Calls of the library come at a time, like these. */
    template <typename Call>
    int call(const Call &call)
    {
        board.settle(now());
        return call();
    }
    int moveTo(int number, double target, double speed, double ramp)
    {
        grbl::Axis &it = axis(number);
        it.settings.targetPos = target;
        it.settings.speed = speed;
        it.settings.acceleration = ramp;
        return call([&] { return it.startMove(); });
    }
    int stop(int number)
    {
        return call([&] { return axis(number).stop(); });
    }

    static long long steps(double mm) { return std::llround(mm * stepsPerMm); }

    emulator::Board firmware;
    std::vector<std::string> log;
    std::vector<int> codes; ///< of all that was said
    grbl::Board board;
    std::size_t sentBytes = 0;
    std::size_t receivedBytes = 0;
    int cancelsToLose = 0; ///< of the next ones, on the wire
    int questionsToLose = 0;
    double jitter = 0.006;
    double longestWait = 1; ///< between two looks at what a test waits for

private:
    static std::vector<grbl::AxisSetup> setup(const std::vector<int> &boardAxes)
    {
        std::vector<grbl::AxisSetup> setups;
        for (const int boardAxis : boardAxes) {
            grbl::AxisSetup one;
            one.boardAxis = boardAxis;
            one.stage = stage();
            one.hasStage = true;
            setups.push_back(one);
        }
        return setups;
    }
    static void lose(std::string &out, char byte, int &count)
    {
        const std::size_t place = count > 0 ? out.find(byte) : std::string::npos;
        if (place == std::string::npos)
            return;
        out.erase(place, 1);
        --count;
    }
    void exchange()
    {
        const std::string in = firmware.receive();
        receivedBytes += in.size();
        board.received(in, now());
        m_wait = board.run(now());
        std::string out = board.takeOutput();
        lose(out, '\x85', cancelsToLose);
        lose(out, '?', questionsToLose);
        sentBytes += out.size();
        firmware.send(out);
    }

    std::mt19937 m_random;
    double m_wait = 0;
};
