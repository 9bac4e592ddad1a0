// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverRecords.h"
#include "models/MoverDevParam.h"

/**
 * The record of a stage as the controller stores it → the program's parameters. Texts are read up to their first zero;
 * the unit is "mm" for linear and lifting stages and "°" for rotation and angular ones.
 */
MoverDevParam toDevParam(const MotorParams &params);

/**
 * The program's parameters → the record that the controller stores. The name is cut to 32 bytes of UTF-8 and optOrder
 * to 4, also inside a character; integers are narrowed to the width of their field; the unit is millimetres for "mm"
 * exactly and degrees for any other text. The serial number stays empty; AxisType, originSigID and auxText have no
 * place in the record.
 */
MotorParams toMotorParams(const MoverDevParam &stage);

/** An axis with a stage of these parameters. */
AxisDescription describe(int index, const QString &modelName, const MoverDevParam &stage);
