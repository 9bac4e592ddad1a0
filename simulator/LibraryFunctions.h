// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace simulator {

/** Whether the library has a function of this name. */
bool isLibraryFunction(std::string_view name);

} // namespace simulator
