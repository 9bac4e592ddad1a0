// SPDX-License-Identifier: MIT
#pragma once

/** The console or terminal that the program was called from. */
namespace CallingConsole {

/**
 * Makes sure that whoever called the program can read what it prints, and that no box opens instead. On Windows a
 * program with windows has no console of its own: it joins its caller's, if there is one and the output is not
 * redirected. Elsewhere there is nothing to do. Call it before anything is printed.
 */
void join();

} // namespace CallingConsole
