// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/emulator/Axes.h"

#include <map>
#include <string>

namespace emulator {

/** The numbered settings of a board: what it takes, what it makes of it and how it shows it. */
class Settings
{
public:
    /** Those of the stock firmware, or what grblHAL makes of them. */
    explicit Settings(int axes, bool isHal = false);

    /** Every setting at what the firmware comes with. */
    void restore();
    /** Stores `value` (from "$number=value"). Returns 0, or the number of the error with nothing stored. */
    int store(long number, double value);
    /** One line "$number=value" for each setting, in the order of the board's list, without line ends. */
    std::map<int, std::string> list() const;

    /** Stands in for the board's memory: reads `file`, lines as list() gives them; false when it cannot be read. */
    bool load(const std::string &file);
    /** Writes what load() reads; false when the file cannot be written. */
    bool save(const std::string &file) const;

    double operator[](int number) const { return m_values.at(number); }
    bool isOn(int number) const { return m_values.at(number) != 0; }
    bool hasBit(int number, int bit) const { return (static_cast<unsigned>(m_values.at(number)) >> bit & 1U) != 0; }

    double stepsPerMm(int axis) const { return m_values.at(100 + axis); }
    /** mm/s */
    double maxSpeed(int axis) const { return m_values.at(110 + axis) / 60; }
    /** mm/s² */
    double ramp(int axis) const { return m_values.at(120 + axis); }
    /** mm */
    double travel(int axis) const { return m_values.at(130 + axis); }

private:
    int m_axes;
    bool m_isHal;
    std::map<int, double> m_values;
};

} // namespace emulator
