// SPDX-License-Identifier: MIT
#pragma once

/** The console or terminal that the program was called from. */
namespace CallingConsole {

/**
 * Sees to it that what the program prints is read by whoever called it, and that no box opens instead. On Windows a
 * program with windows has no console of its own: it joins its caller's, if there is one and the output goes nowhere
 * else. Elsewhere nothing is to be done. Call it before anything is printed.
 */
void join();

} // namespace CallingConsole
