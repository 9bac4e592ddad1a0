// SPDX-License-Identifier: MIT
#include "controllers/core/LibraryCall.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace controllers {

std::string formatted(int number)
{
    return std::to_string(number);
}

std::string formatted(double number)
{
    char digits[32];
    return std::string(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

std::string formatted(const std::string &text)
{
    return "\"" + text + "\"";
}

std::string formatted(const TextArgument &text)
{
    const std::string length = ", " + std::to_string(text.length);
    if (!text.bytes)
        return "null" + length;
    const int readable = std::clamp(text.length, 0, MOVER_TEXT_LENGTH);
    return formatted(std::string(text.bytes, strnlen(text.bytes, readable))) + length;
}

std::string formatted(const PairsArgument &pairs)
{
    const std::string count = ", " + std::to_string(pairs.count);
    if (!pairs.pairs)
        return "null" + count;
    std::string numbers;
    for (int i = 0; i < 2 * pairs.count; ++i)
        numbers += (i == 0 ? "" : ", ") + formatted(pairs.pairs[i]);
    return "[" + numbers + "]" + count;
}

std::string formatted(const MotorParams &params)
{
    return formatted(std::string(params.modelName, strnlen(params.modelName, MOVER_TEXT_LENGTH)));
}

LibraryCall::~LibraryCall()
{
    m_library.leave(m_function, m_arguments, m_result);
}

Controller *LibraryCall::knownController(int id)
{
    const std::vector<Controller *> all = m_library.controllers();
    const auto found = std::find_if(all.begin(), all.end(), [id](const Controller *one) { return one->id == id; });
    if (found == all.end())
        refuse(UnknownDevice);
    return status() < 0 ? nullptr : *found;
}

Controller *LibraryCall::addedController(int id)
{
    Controller *controller = knownController(id);
    if (controller && !controller->added)
        refuse(NotAdded);
    return status() < 0 ? nullptr : controller;
}

Controller *LibraryCall::openController(int id)
{
    Controller *controller = addedController(id);
    if (!controller)
        return nullptr;
    if (!controller->plugged())
        refuse(LinkLost);
    else if (!controller->open)
        refuse(NotOpen);
    else if (!controller->answers())
        refuse(LinkLost);
    return status() < 0 ? nullptr : controller;
}

Axis *LibraryCall::axis(int id, int axis)
{
    Controller *controller = openController(id);
    if (!controller)
        return nullptr;
    if (axis < 0 || axis >= controller->axisCount) {
        refuse(NoSuchAxis);
        return nullptr;
    }
    return &controller->axis(axis);
}

int LibraryCall::refuse(int status)
{
    if (m_fate.status >= 0)
        m_fate.status = status;
    return m_fate.status;
}

int LibraryCall::finish(int result)
{
    if (m_library.keepsJournal())
        m_result = formatted(result);
    return result;
}

double LibraryCall::finish(double result)
{
    if (m_library.keepsJournal())
        m_result = formatted(result);
    return result;
}

int LibraryCall::finish(int result, const std::string &shown)
{
    m_result = result < 0 ? formatted(result) : shown;
    return result;
}

} // namespace controllers
