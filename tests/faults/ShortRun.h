// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/** Whether this is `test.sh faults --short`, which takes a quarter of everything. */
inline bool isShortRun()
{
    return qEnvironmentVariableIsSet("MOVER_FAULTS_SHORT");
}
