// SPDX-License-Identifier: MIT
// Bytes as what a board says, at any moment of a session: what the library sends stays within its rules, and it never
// believes in a position that no report has told.
#include "controllers/grbl/Board.h"
#include "controllers/grbl/Replies.h"

#include "Fuzz.h"

#include <cmath>
#include <cstring>

namespace {

std::vector<grbl::AxisSetup> stages()
{
    std::vector<grbl::AxisSetup> setups(3);
    for (int i = 0; i < 3; ++i) {
        MotorParams &stage = setups[std::size_t(i)].stage;
        stage.pulseOneCircle = 250;
        stage.dispOneCircle = 1;
        stage.restoreSpeed = 5;
        stage.maxSpeed = 25;
        stage.maxAcc = 100;
        stage.minPos = -100;
        stage.maxPos = 100;
        setups[std::size_t(i)].boardAxis = i;
    }
    return setups;
}

void checkSent(const std::string &sent)
{
    for (std::size_t begin = 0; begin < sent.size();) {
        const std::size_t end = sent.find('\n', begin);
        std::string line = sent.substr(begin, end - begin);
        begin = end == std::string::npos ? sent.size() : end + 1;
        const std::size_t first = line.find('$');
        line = first == std::string::npos ? std::string() : line.substr(first);
        Fuzz::require(line.size() < 80, "a line that is too long:", QString::fromStdString(line));
        if (line.rfind("$J=", 0) != 0)
            continue;
        const bool whole = line.rfind("$J=G21G53X", 0) == 0 && line.find('F') != std::string::npos;
        Fuzz::require(
            whole && line.find("nan") == std::string::npos && line.find("inf") == std::string::npos,
            "no whole jog:", QString::fromStdString(line));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    grbl::Board board(stages(), [](const grbl::Board::Note &) {});
    double now = 0;
    const auto pass = [&](std::string_view heard, double seconds) {
        board.received(heard, now);
        for (const double end = now + seconds; now < end; now += 0.01) {
            board.settle(now);
            board.run(now);
            const std::string sent = board.takeOutput();
            checkSent(sent);
        }
    };
    // A board that begins well, or from the start what the input says.
    board.opened(now);
    if (size > 0 && data[0] % 4 != 0) {
        pass("\r\nGrbl 1.1h ['$' for help]\r\n", 0.02);
        pass("[VER:1.1h.20190830:]\r\n[OPT:V,15,128]\r\nok\r\n", 0.02);
        pass("$1=255\r\n$10=3\r\n$13=0\r\n$22=0\r\n$100=250.000\r\n$110=1800.000\r\n$120=500.000\r\nok\r\n", 0.05);
        pass("<Idle|MPos:0.000,0.000,0.000|Bf:15,128|FS:0,0>\r\n", 0.05);
        board.settle(now);
        board.axes()[0]->settings.targetPos = 20;
        board.axes()[0]->startMove();
        pass({}, 0.2);
    }
    for (std::size_t begin = 0; begin < bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', begin), bytes.size() - 1);
        pass(std::string_view(bytes).substr(begin, end + 1 - begin), 0.06);
        begin = end + 1;
    }
    pass({}, 3);
    for (const auto &axis : board.axes())
        Fuzz::require(std::isfinite(axis->reportedPosition()) && std::isfinite(axis->position()), "position");
    return 0;
}
