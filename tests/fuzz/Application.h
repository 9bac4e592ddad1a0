// SPDX-License-Identifier: MIT
#pragma once

#include "Fuzz.h"

#include <QApplication>

namespace Fuzz {

/** The application that widgets need, without a display; made once for all inputs, and never destroyed. */
inline void makeApplication()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static auto *const application = new QApplication(argc, argv);
    Q_UNUSED(application)
    watchMessages();
}

} // namespace Fuzz
