// SPDX-License-Identifier: MIT
// example [TARGET]: moves axis 0 of the first controller to TARGET (mm or °), or 1 further than where it is.

#include "moverLibrary.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

// A result below 0 is a failure, and the number tells which.
int checked(const char *function, int status)
{
    if (status < 0)
        throw std::runtime_error(std::string(function) + " failed: " + std::to_string(status));
    return status;
}

// Opens a controller, and closes it again however the block is left.
class Controller
{
public:
    explicit Controller(int id)
        : m_id(id)
    {
        addDev(id);
        const int status = openTSDevice(id);
        if (status < 0)
            removeDev(id);
        checked("openTSDevice", status);
    }
    ~Controller()
    {
        closeTSDevice(m_id);
        removeDev(m_id);
    }
    Controller(const Controller &) = delete;
    Controller &operator=(const Controller &) = delete;

private:
    int m_id;
};

MotorStageState stateOf(int id, int axis)
{
    MotorStageState state = {}; // zeroed by the caller
    checked("getRuningState", getRuningState(id, axis, &state));
    return state;
}

double positionOf(int id, int axis)
{
    int status = 0;
    const double position = getCurrentPos(id, axis, &status);
    checked("getCurrentPos", status);
    return position;
}

void drive(const char *wantedTarget)
{
    const int axis = 0;
    int ids[10] = {};
    const int count = listTSMotorControlerDevices(ids, 10);
    for (int k = 0; k < count; ++k)
        std::cout << "controller " << ids[k] << '\n';
    if (count < 1)
        throw std::runtime_error("no controller is connected");

    const int id = ids[0];
    const Controller open(id);
    char name[MOVER_TEXT_LENGTH] = {}; // a text of 32 bytes has no terminating zero
    checked("getDevModelName", getDevModelName(id, name, MOVER_TEXT_LENGTH));
    std::cout << "model " << std::string(name, std::find(name, name + MOVER_TEXT_LENGTH, '\0')) << '\n';

    const MotorStageState state = stateOf(id, axis);
    std::cout << "can run " << state.isCanRun << ", stopped " << state.isStop << ", enabled " << state.isEnable
              << ", homed " << state.isHome << '\n';

    const double position = positionOf(id, axis);
    const double target = wantedTarget ? std::atof(wantedTarget) : position + 1;
    std::cout << "from " << position << " to " << target << '\n';
    checked("setTargetPos", setTargetPos(id, axis, target));
    checked("startMove", startMove(id, axis));
    while (!stateOf(id, axis).isStop)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    std::cout << "stands at " << positionOf(id, axis) << '\n';
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        drive(argc > 1 ? argv[1] : nullptr);
    } catch (const std::exception &failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
    return 0;
}
