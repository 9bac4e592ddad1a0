// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace grbl {

/**
 * Has the library's own controllers give back a port that none of them needs at the moment, and waits until they have,
 * up to 2 s. False if one of them is open.
 */
bool releasePort(const std::string &port);

} // namespace grbl
