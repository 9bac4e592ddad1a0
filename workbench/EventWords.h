// SPDX-License-Identifier: MIT
#pragma once

#include "session/Recorder.h"
#include "workbench/PlotPicture.h"

/** The words and the sign of an event. */
namespace EventWords {

/** "Axis1 drives +". Whoever asked stands behind it, unless it was a panel. `status`: words for a library's status. */
QString of(const RecorderEvent &event);
PlotPicture::Mark markOf(const RecorderEvent &event, const PlotColours &colours);
/** The colour of an axis; a ninth has that of the first. */
QColor colourOf(int axis, const PlotColours &colours);

} // namespace EventWords
