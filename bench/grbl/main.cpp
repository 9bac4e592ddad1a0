// SPDX-License-Identifier: MIT
// Figures of the library for Grbl boards: wire, processor time, stop, ripple. Prints a table, with --rows as measure.py
// reads it; 1 when one is 30 % beyond its limit, since figures scatter.
#include "controllers/emulator/SerialPort.h"
#include "controllers/grbl/Bench.h"

#include "device/moverLibrary.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

constexpr int board = 2001;
constexpr double room = 1.3;
bool failed = false;
bool asRows = false;

void row(const char *name, const char *what, double measured, double limit, const char *unit)
{
    if (asRows)
        std::printf("%s\t%g\tagainst the emulated board\n", name, measured);
    else
        std::printf("%-62s %8.2f %-4s (at most %g)\n", what, measured, unit, limit);
    std::fflush(stdout);
    failed = failed || !(measured <= limit * room);
}

double processorTime()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + time.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void wait(double seconds)
{
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

/** A board's clock and the wire's bytes, without anything of this computer in them. */
void wireAndRipple()
{
    Bench bench;
    bench.moveTo(0, 99.9, 4, 50);
    bench.moveTo(1, -99.9, 4, 50);
    bench.moveTo(2, 99.9, 3, 50);
    bench.run(2);
    bench.firmware.takeSteps(0);
    bench.sentBytes = bench.receivedBytes = 0;
    bench.run(20);
    row("grbl wire out", "wire to the board, three axes moving", bench.sentBytes / 20.0 / 11520 * 100, 15, "%");
    row("grbl wire in", "wire from the board", bench.receivedBytes / 20.0 / 11520 * 100, 15, "%");
    const std::vector<emulator::Step> steps = bench.firmware.takeSteps(0);
    double ripple = 0;
    std::size_t last = 0;
    for (std::size_t first = 0; first < steps.size(); ++first) {
        while (last + 1 < steps.size() && steps[last].time < steps[first].time + 0.02)
            ++last;
        if (steps[last].time < steps[first].time + 0.02)
            break;
        const double speed = double(last - first) / Bench::stepsPerMm / (steps[last].time - steps[first].time);
        ripple = std::max(ripple, std::abs(speed - 4) / 4 * 100);
    }
    row("grbl ripple", "ripple of the speed in windows of 20 ms", ripple, 5, "%");
}

/** The library in this process, the board in another: the processor time is the library's. */
void processorShare(const std::string &folder, const char *emulatorProgram, int seconds)
{
    const std::string link = folder + "/board";
    const pid_t emulator = fork();
    if (emulator == 0) {
        // Its input stays open, and it ends with a signal.
        int ends[2];
        if (pipe(ends) != 0)
            _exit(1);
        dup2(ends[0], STDIN_FILENO);
        freopen("/dev/null", "w", stdout);
        execl(
            emulatorProgram, emulatorProgram, "--link", link.c_str(), "--set", "110=1800", "--set", "111=1800", "--set",
            "112=1800", "--set", "120=500", "--set", "121=500", "--set", "122=500", "--set", "1=255", nullptr);
        _exit(1);
    }
    for (int i = 0; i < 100 && !std::filesystem::exists(link); ++i)
        wait(0.05);
    addDev(board);
    if (openTSDevice(board) < 0) {
        std::puts("the emulated board cannot be opened");
        failed = true;
    }
    wait(1);
    double before = processorTime();
    wait(seconds);
    row("grbl rest", "processor time at rest, of a core", (processorTime() - before) / seconds * 100, 0.5, "%");
    for (int axis = 0; axis < 3; ++axis) {
        setSpeed(board, axis, 4);
        setAcceleration(board, axis, 50);
        setTargetPos(board, axis, axis == 1 ? -95 : 95);
        startMove(board, axis);
    }
    wait(1);
    before = processorTime();
    wait(seconds);
    row("grbl moving", "processor time with three axes moving", (processorTime() - before) / seconds * 100, 3, "%");

    for (int axis = 0; axis < 3; ++axis)
        stopRuning(board, axis);
    kill(emulator, SIGTERM);
    waitpid(emulator, nullptr, 0);
    closeTSDevice(board);
    removeDev(board);
}

using Time = std::chrono::steady_clock::time_point;

/** Stands between the library and a port, and notes when a jog cancel passes. */
class Relay
{
public:
    Relay(const std::string &port, const std::string &link)
    {
        m_library = posix_openpt(O_RDWR | O_NOCTTY);
        grantpt(m_library);
        unlockpt(m_library);
        m_board = open(port.c_str(), O_RDWR | O_NOCTTY);
        m_held = open(ptsname(m_library), O_RDWR | O_NOCTTY); // so that the line does not hang up
        for (const int end : {m_board, m_held}) {
            termios raw{};
            tcgetattr(end, &raw);
            cfmakeraw(&raw);
            tcsetattr(end, TCSANOW, &raw);
        }
        std::filesystem::create_symlink(ptsname(m_library), link);
        m_thread = std::thread([this] {
            while (!m_ends) {
                pollfd ends[] = {{m_library, POLLIN, 0}, {m_board, POLLIN, 0}};
                ::poll(ends, 2, 50);
                char bytes[512];
                for (int i = 0; i < 2; ++i) {
                    const ssize_t count = ends[i].revents != 0 ? read(ends[i].fd, bytes, sizeof bytes) : 0;
                    if (i == 0 && std::find(bytes, bytes + std::max<ssize_t>(count, 0), '\x85') !=
                                      bytes + std::max<ssize_t>(count, 0))
                        m_lastCancel = std::chrono::steady_clock::now();
                    if (count > 0 && write(ends[1 - i].fd, bytes, std::size_t(count)) != count)
                        return;
                }
            }
        });
    }
    ~Relay()
    {
        m_ends = true;
        m_thread.join();
        for (const int end : {m_library, m_board, m_held})
            close(end);
    }
    Relay(const Relay &) = delete;
    Relay &operator=(const Relay &) = delete;
    Time lastCancel() const { return m_lastCancel; }

private:
    int m_library = -1;
    int m_board = -1;
    int m_held = -1;
    std::atomic<bool> m_ends{false};
    std::atomic<Time> m_lastCancel{};
    std::thread m_thread;
};

void stopLatency(const std::string &folder, int stops)
{
    std::filesystem::remove(folder + "/board");
    emulator::Options options = Bench::options();
    options.recordsSteps = false;
    emulator::SerialPort port(options);
    const Relay relay(port.path(), folder + "/board");
    MotorStageState state{};
    for (int i = 0; i < 100 && openTSDevice(board) < 0; ++i) {
        addDev(board);
        wait(0.1);
    }
    setSpeed(board, 0, 10);
    setAcceleration(board, 0, 50);
    std::vector<double> delays;
    for (int i = 0; i < stops; ++i) {
        setTargetPos(board, 0, i % 2 == 0 ? 90 : -90);
        startMove(board, 0);
        wait(0.12 + 0.2 * i / stops);
        const auto called = std::chrono::steady_clock::now();
        stopRuning(board, 0);
        wait(0.05);
        delays.push_back(std::chrono::duration<double>(relay.lastCancel() - called).count() * 1000);
        for (state.isStop = 0; state.isStop == 0 && getRuningState(board, 0, &state) >= 0;)
            wait(0.01);
    }
    std::sort(delays.begin(), delays.end());
    row("grbl stop", "stop: from the call to its byte on the wire, median", delays[delays.size() / 2], 2, "ms");
    row("grbl stop 99", "the same, 99th percentile", delays[delays.size() * 99 / 100], 10, "ms");
}

} // namespace

int main(int argc, char **argv)
{
    asRows = argc >= 3 && std::string(argv[2]) == "--rows";
    const int seconds = argc == 4 ? std::atoi(argv[3]) : 10;
    if ((argc != 2 && !asRows) || seconds < 1) {
        std::fputs("usage: benchGrbl GRBLEMULATOR [--rows [SECONDS]]\n", stderr);
        return 2;
    }
    char folder[] = "/tmp/benchGrblXXXXXX";
    if (!mkdtemp(folder))
        return 1;
    const std::string file = std::string(folder) + "/controllers.json";
    std::string axes;
    for (const char letter : {'X', 'Y', 'Z'})
        axes +=
            std::string(axes.empty() ? "" : ", ") + R"({"letter": ")" + letter +
            R"(", "stage": {"pulseOneCircle": 250, "dispOneCircle": 1, "maxSpeed": 25, "maxAcc": 100, "minPos": -100,
            "maxPos": 100}})";
    std::ofstream(file) << R"({"controllers": [{"id": 2001, "kind": "grbl", "port": ")" << folder
                        << R"(/board", "axes": [)" << axes << "]}]}";
    setenv("MOVER_CONTROLLERS", file.c_str(), 1);
    wireAndRipple();
    processorShare(folder, argv[1], seconds);
    stopLatency(folder, 12 * seconds); // 120: the slowest is not the 99th percentile
    std::filesystem::remove_all(folder);
    return failed ? 1 : 0;
}
