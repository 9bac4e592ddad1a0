// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <string_view>

namespace emulator {

/** As many axes as a board of this family has letters for; the first Options::axes of them are there. */
constexpr int maxAxes = 6;
constexpr std::string_view axisLetters = "XYZABC";

using Vector = std::array<double, maxAxes>;
using Steps = std::array<long long, maxAxes>;

} // namespace emulator
