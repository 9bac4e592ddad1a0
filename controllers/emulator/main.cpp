// SPDX-License-Identifier: MIT
#include "controllers/emulator/SerialPort.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

#include <unistd.h>

namespace {

constexpr const char *usage = "usage: grblEmulator [OPTION]...\n"
                              "A controller board with firmware of the Grbl 1.1 family, without the board. Its serial "
                              "port stands on the first line.\n"
                              "  --axes N           1 to 6, 3 by default\n"
                              "  --speed N          its clock runs N times as fast as the computer's\n"
                              "  --clock-error P    its clock runs P percent fast (0.5) or slow (-0.5)\n"
                              "  --boot S           opening the port resets it, and its boot loader takes S seconds\n"
                              "  --single-home      it knows $HX, $HY ...\n"
                              "  --settings FILE    its memory: lines such as $100=250, read at the start and kept\n"
                              "  --set N=VALUE      setting N of a board that has no memory yet\n"
                              "  --link PATH        a link that leads to the port\n"
                              "It ends at the end of its input, or by a signal.\n";

volatile std::sig_atomic_t ends = 0;

[[noreturn]] void fail(const std::string &what)
{
    std::cerr << "grblEmulator: " << what << '\n' << usage;
    std::exit(2);
}

double number(const std::string &option, const char *text)
{
    char *end = nullptr;
    const double value = std::strtod(text, &end);
    if (*text == '\0' || *end != '\0') {
        fail(option + ": no number");
    }
    return value;
}

} // namespace

int main(int argc, char **argv)
{
    emulator::Options options;
    options.recordsSteps = false;
    std::string memory;
    std::string link;
    double speed = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "--help") {
            std::cout << usage;
            return 0;
        }
        if (option == "--single-home") {
            options.homesSingleAxes = true;
            continue;
        }
        if (++i == argc) {
            fail(option);
        }
        if (option == "--axes") {
            options.axes = static_cast<int>(number(option, argv[i]));
        } else if (option == "--speed") {
            speed = number(option, argv[i]);
        } else if (option == "--clock-error") {
            options.clockError = number(option, argv[i]) / 100;
        } else if (option == "--boot") {
            options.bootTime = number(option, argv[i]);
        } else if (option == "--settings") {
            memory = argv[i];
        } else if (option == "--set") {
            char *value = nullptr;
            const long setting = std::strtol(argv[i], &value, 10);
            if (*value != '=') {
                fail(option);
            }
            options.settings[static_cast<int>(setting)] = number(option, value + 1);
        } else if (option == "--link") {
            link = argv[i];
        } else {
            fail(option);
        }
    }
    if (options.axes < 1 || options.axes > emulator::maxAxes || speed <= 0) {
        fail("out of range");
    }
    try {
        emulator::SerialPort port(options, speed, link);
        if (!memory.empty()) {
            port.use([&memory](emulator::Board &board) {
                board.loadSettings(memory);
                board.keepSettings(memory);
            });
        }
        std::cout << port.path() << std::endl;
        struct sigaction action {
        };
        action.sa_handler = [](int) { ends = 1; };
        sigaction(SIGINT, &action, nullptr);
        sigaction(SIGTERM, &action, nullptr);
        char byte = 0;
        while (!ends && read(STDIN_FILENO, &byte, 1) > 0) {
        }
    } catch (const std::exception &error) {
        std::cerr << "grblEmulator: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
