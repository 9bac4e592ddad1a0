// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/** Whether the library has a function of this name. */
bool isLibraryFunction(std::string_view name);
/** All of them. */
std::vector<std::string> libraryFunctions();

} // namespace simulator
