// SPDX-License-Identifier: MIT
#pragma once

namespace simulator {

/** The text of scenarios/default.json; the build writes it. */
extern const char *const defaultScenario;

} // namespace simulator
