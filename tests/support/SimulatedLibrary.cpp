// SPDX-License-Identifier: MIT
#include "device/LinkedFunctions.h"
#include "device/MotionLibrary.h"

extern "C" const char moverLibraryMark[];

namespace {

/** Before main(): whatever uses the library finds it. */
[[maybe_unused]] const bool isUsed = [] {
    MotionLibrary::use(linkedFunctions, QString::fromLatin1(moverLibraryMark));
    return true;
}();

} // namespace
