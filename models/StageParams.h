// SPDX-License-Identifier: MIT
#pragma once

#include "device/moverRecords.h"
#include "models/MoverDevParam.h"

/**
 * The record of a stage as the controller stores it → the program's parameters. Texts are read up to their first zero;
 * the unit is "mm" for linear and lifting stages and "°" for rotation and angular ones.
 */
MoverDevParam toDevParam(const MotorParams &params);
