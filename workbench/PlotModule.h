// SPDX-License-Identifier: MIT
#pragma once

#include "workbench/PlotPicture.h"

/** The module of plots, `plots/` beside the program, loaded when it is first asked for. GUI thread. */
namespace PlotModule {

/** Null if it cannot be used; error() says why. */
const PlotFunctions *functions();
QString error();

} // namespace PlotModule
