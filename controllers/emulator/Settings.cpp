// SPDX-License-Identifier: MIT
#include "controllers/emulator/Settings.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace emulator {

namespace {

enum class Kind { Byte, Switch, Whole, Decimal };

struct SettingRow {
    int number;
    Kind kind;
    double initial;
};

// One row for each setting; those of an axis stand once and count for all axes.
constexpr SettingRow settingRows[] = {
    {0, Kind::Byte, 10},       {1, Kind::Byte, 25},        {2, Kind::Byte, 0},        {3, Kind::Byte, 0},
    {4, Kind::Switch, 0},      {5, Kind::Switch, 0},       {6, Kind::Switch, 0},      {10, Kind::Byte, 1},
    {11, Kind::Decimal, 0.01}, {12, Kind::Decimal, 0.002}, {13, Kind::Switch, 0},     {20, Kind::Switch, 0},
    {21, Kind::Switch, 0},     {22, Kind::Switch, 0},      {23, Kind::Byte, 0},       {24, Kind::Decimal, 25},
    {25, Kind::Decimal, 500},  {26, Kind::Byte, 250},      {27, Kind::Decimal, 1},    {30, Kind::Whole, 1000},
    {31, Kind::Whole, 0},      {32, Kind::Switch, 0},      {100, Kind::Decimal, 250}, {110, Kind::Decimal, 500},
    {120, Kind::Decimal, 10},  {130, Kind::Decimal, 200},
};

const SettingRow *findRow(int axes, long number)
{
    const long first = number < 100 ? number : number - number % 10;
    if (number >= 100 && number - first >= axes) {
        return nullptr;
    }
    for (const SettingRow &row : settingRows) {
        if (row.number == first) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

Settings::Settings(int axes, bool isHal)
    : m_axes(axes)
    , m_isHal(isHal)
{
    restore();
}

void Settings::restore()
{
    for (const SettingRow &row : settingRows) {
        for (int axis = 0; axis < (row.number < 100 ? 1 : m_axes); ++axis) {
            m_values[row.number + axis] = row.initial;
        }
    }
}

int Settings::store(long number, double value)
{
    const SettingRow *row = findRow(m_axes, number);
    if (!row) {
        return m_isHal ? 53 : 3;
    }
    if (value < 0) {
        return 4;
    }
    switch (row->kind) {
    case Kind::Byte:
        // Cut to a byte without a word.
        if (number == 0 && value < 3 && !m_isHal) {
            return 6;
        }
        if (number != 10 || !m_isHal) {
            value = static_cast<std::uint8_t>(static_cast<std::uint64_t>(std::fmod(value, 4294967296.0)));
        }
        break;
    case Kind::Switch:
        value = std::trunc(value) != 0 ? 1 : 0;
        break;
    case Kind::Whole:
    case Kind::Decimal:
        break;
    }
    if (number == 20 && value != 0 && !isOn(22)) {
        return 10;
    }
    m_values[static_cast<int>(number)] = value;
    if (number == 22 && value == 0) {
        m_values[20] = 0;
    }
    return 0;
}

std::map<int, std::string> Settings::list() const
{
    std::map<int, std::string> lines;
    for (const auto &[number, value] : m_values) {
        char line[48];
        const int decimals = findRow(m_axes, number)->kind == Kind::Decimal ? 3 : 0;
        std::snprintf(line, sizeof line, "$%d=%.*f", number, decimals, value);
        lines[number] = line;
    }
    return lines;
}

bool Settings::load(const std::string &file)
{
    std::ifstream in(file);
    char dollar = 0;
    char equals = 0;
    int number = 0;
    double value = 0;
    bool any = false;
    while (in >> dollar >> number >> equals >> value) {
        if (findRow(m_axes, number)) {
            m_values[number] = value;
            any = true;
        }
    }
    return any && in.eof();
}

bool Settings::save(const std::string &file) const
{
    std::ofstream out(file);
    for (const auto &[number, line] : list()) {
        out << line << '\n';
    }
    return out.flush().good();
}

} // namespace emulator
