// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

struct MoverMessage;

/** Words in the language in use for what a motion library of ours says in numbers. Any thread. */
namespace StatusWords {

/**
 * The words for a status of the library in use; empty where it is not ours or the number says enough. `axes`: how many
 * the controller has, for a status that concerns all of them.
 */
QString of(int status, int axes);
/** The words for a status of a library that is ours. */
QString ofOurs(int status);
/** The number, with its words in brackets where it has any. */
QString numberAndWords(int status, int axes);
/** The words for a message; empty for one that is not for the operator. */
QString of(const MoverMessage &message);

} // namespace StatusWords
