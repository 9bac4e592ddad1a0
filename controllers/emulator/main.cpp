// SPDX-License-Identifier: MIT
#include "controllers/emulator/SerialPort.h"

#include <csignal>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

#include <unistd.h>

namespace {

constexpr const char *usage =
    "usage: grblEmulator [OPTION]...\n"
    "A controller board with firmware of the Grbl 1.1 family, without the board. Its serial port stands on the first "
    "line.\n"
    "  --firmware NAME    grbl, grblhal or fluidnc\n"
    "  --axes N           1 to 6, 3 by default\n"
    "  --speed N          its clock runs N times as fast as the computer's\n"
    "  --clock-error P    its clock runs P percent fast (0.5) or slow (-0.5)\n"
    "  --boot S           opening the port resets it, and its boot loader takes S seconds\n"
    "  --single-home 1    it knows $HX, $HY ...\n"
    "  --settings FILE    its memory: lines such as $100=250, read at the start and kept\n"
    "  --set N=VALUE      setting N of a board that has no memory yet\n"
    "  --link PATH        a link that leads to the port\n"
    "What goes wrong is said to its input, a line each; it ends at the end of its input, or by a signal:\n"
    "  reset              the reset button\n"
    "  power              off and on\n"
    "  unplug, plug       the port goes, and comes back\n"
    "  hold 1, hold 0     the button for a hold is pressed, and let go\n"
    "  door 1, door 0     the safety door is opened, and closed\n"
    "  switch AXIS STATE  the limit switch of axis 0, 1 ... stays open (0), closed (1), or works again (-1)\n"
    "  drop LINE BYTE     loses a byte of a line to the board, 0 being the next one; byte -1 is its end\n"
    "  lose LINE          loses the whole line\n"
    "  mute 1, mute 0     nothing comes from the board, and does again\n"
    "  deaf 1, deaf 0     the same to the board\n"
    "  late S             what the board says comes S seconds late\n"
    "  rubbish TEXT       comes from the board\n";

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

/** One line of the input. */
void obey(emulator::SerialPort &port, const std::string &line)
{
    using emulator::Board;
    using emulator::WireFault;
    std::istringstream words(line);
    std::string name;
    words >> name;
    const std::map<std::string, std::function<void(Board &)>> commands = {
        {"reset", [](Board &board) { board.pressReset(); }},
        {"power", [](Board &board) { board.powerCycle(); }},
        {"hold",
         [&words](Board &board) {
             bool isPressed = false;
             words >> isPressed;
             board.pressHold(isPressed);
         }},
        {"door",
         [&words](Board &board) {
             bool isOpen = false;
             words >> isOpen;
             board.setDoor(isOpen);
         }},
        {"switch",
         [&words](Board &board) {
             int axis = 0;
             int state = 0;
             if (words >> axis >> state && axis >= 0 && axis < emulator::maxAxes) {
                 board.forceSwitch(axis, state);
             }
         }},
        {"drop",
         [&words](Board &board) {
             WireFault fault;
             words >> fault.line >> fault.byte;
             board.toBoard().add(fault);
         }},
        {"lose",
         [&words](Board &board) {
             WireFault fault{WireFault::Kind::DropLine};
             words >> fault.line;
             board.toBoard().add(fault);
         }},
        {"mute",
         [&words](Board &board) {
             bool isCut = false;
             words >> isCut;
             board.toHost().cut(isCut);
         }},
        {"deaf",
         [&words](Board &board) {
             bool isCut = false;
             words >> isCut;
             board.toBoard().cut(isCut);
         }},
        {"late",
         [&words](Board &board) {
             double seconds = 0;
             words >> seconds;
             board.toHost().setDelay(seconds);
         }},
        {"rubbish",
         [&words](Board &board) {
             std::string text;
             std::getline(words >> std::ws, text);
             board.garble(text + "\r\n");
         }},
    };
    const auto command = commands.find(name);
    if (command != commands.end()) {
        port.use([&command](Board &board) { command->second(board); });
    } else if (name == "unplug") {
        port.unplug();
    } else if (name == "plug") {
        port.plug();
        std::cout << port.path() << std::endl;
    } else if (!name.empty()) {
        std::cerr << "grblEmulator: " << name << "?\n";
    }
}

} // namespace

int main(int argc, char **argv)
{
    emulator::Options options;
    options.recordsSteps = false;
    std::string link;
    double speed = 1;
    const std::map<std::string, std::function<void(const std::string &, const char *)>> table = {
        {"--axes",
         [&](const std::string &name, const char *text) { options.axes = static_cast<int>(number(name, text)); }},
        {"--firmware",
         [&](const std::string &name, const char *text) {
             const std::map<std::string, emulator::Firmware> known = {
                 {"grbl", emulator::Firmware::Grbl},
                 {"grblhal", emulator::Firmware::GrblHal},
                 {"fluidnc", emulator::Firmware::FluidNc}};
             const auto found = known.find(text);
             if (found == known.end()) {
                 fail(name + ": unknown");
             }
             options.firmware = found->second;
         }},
        {"--speed", [&](const std::string &name, const char *text) { speed = number(name, text); }},
        {"--clock-error",
         [&](const std::string &name, const char *text) { options.clockError = number(name, text) / 100; }},
        {"--boot", [&](const std::string &name, const char *text) { options.bootTime = number(name, text); }},
        {"--single-home",
         [&](const std::string &name, const char *text) { options.homesSingleAxes = number(name, text) != 0; }},
        {"--settings", [&](const std::string &, const char *text) { options.settingsFile = text; }},
        {"--set",
         [&](const std::string &name, const char *text) {
             char *value = nullptr;
             const long setting = std::strtol(text, &value, 10);
             if (*value != '=') {
                 fail(name + ": no setting");
             }
             options.settings[static_cast<int>(setting)] = number(name, value + 1);
         }},
        {"--link", [&](const std::string &, const char *text) { link = text; }},
    };
    for (int i = 1; i < argc; i += 2) {
        const std::string name = argv[i];
        if (name == "--help") {
            std::cout << usage;
            return 0;
        }
        const auto option = table.find(name);
        if (option == table.end() || i + 1 == argc) {
            fail(name);
        }
        option->second(name, argv[i + 1]);
    }
    if (options.axes < 1 || options.axes > emulator::maxAxes || speed <= 0) {
        fail("out of range");
    }
    try {
        emulator::SerialPort port(options, speed, link);
        std::cout << port.path() << std::endl;
        // No restart of read(): a signal ends it.
        struct sigaction action {
        };
        action.sa_handler = [](int) { ends = 1; };
        sigaction(SIGINT, &action, nullptr);
        sigaction(SIGTERM, &action, nullptr);
        std::string line;
        char byte = 0;
        while (!ends && read(STDIN_FILENO, &byte, 1) > 0) {
            if (byte != '\n') {
                line += byte;
                continue;
            }
            obey(port, line);
            line.clear();
        }
    } catch (const std::exception &error) {
        std::cerr << "grblEmulator: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
