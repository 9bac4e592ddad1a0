/* SPDX-License-Identifier: MIT */
#pragma once

/**
 * The C interface of the motion library `libmoverLibrary` (71 functions). Plain C, no Qt.
 *
 * Conventions that hold for every function unless its own comment says otherwise:
 * - `id` is a controller's identifier as listTSMotorControlerDevices() reports it; there is no handle.
 * - `axis` counts from 0.
 * - An int result below 0 is a failure and the number tells which; 0 or more is success.
 *   A double result of a parameter getter below 0 is a failure too (positions and the trigger step excepted: see
 *   there).
 * - Positions, displacements, speeds and accelerations are in the stage's unit (mm or °, per s, per s²).
 * - Enables are 0 = off, 1 = on. Delays are in milliseconds. Directions are 1 = positive, 2 = negative.
 * - Texts are 8-bit ASCII in 32-byte buffers. A text of 32 bytes has no terminating zero.
 * - The library is not thread-safe: one call at a time, from whichever thread.
 *
 * Calling order: list → addDev → openTSDevice (on failure removeDev) → calls on device and axes →
 * closeTSDevice → removeDev.
 */

#include "moverRecords.h"

#if defined(_WIN32)
#if defined(MOVER_LIBRARY_BUILD)
#define MOVER_API __declspec(dllexport)
#elif defined(MOVER_LIBRARY_STATIC)
#define MOVER_API
#else
#define MOVER_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define MOVER_API __attribute__((visibility("default")))
#else
#define MOVER_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Controllers ------------------------------------------------------------------------------------------- */

/** Writes the identifiers of the connected controllers to `ids`, at most `capacity`. Returns their number, 0 for none.
 */
MOVER_API int listTSMotorControlerDevices(int *ids, int capacity);
/** Makes the controller known to the library, so that it can be opened. */
MOVER_API int addDev(int id);
/** Forgets the controller; an open one is closed. */
MOVER_API int removeDev(int id);
/** Opens the link to an added controller. */
MOVER_API int openTSDevice(int id);
/** Closes the link; the controller stays added. */
MOVER_API int closeTSDevice(int id);
/** Registers a stage model, once at start, with no controller open. `model`: 32 bytes, zero-padded; both numbers 0. */
MOVER_API int addMotor(int first, int second, const char *model);

/** Number of axes of the controller, or a negative status. */
MOVER_API int getDevAxisCount(int id);
/** Stores the number of axes (1 to 3) in the controller. */
MOVER_API int setDevAxisCount(int id, int count);
/** Serial number of the controller. `length`: bytes of `buffer`, 32. */
MOVER_API int getDevSerialNumber(int id, char *buffer, int length);
/** Stores the serial number of the controller. `length`: bytes of `text`, at most 32. */
MOVER_API int setDevSerialNumber(int id, const char *text, int length);
/** Model name of the controller. `length`: bytes of `buffer`, 32. */
MOVER_API int getDevModelName(int id, char *buffer, int length);
/** Stores the model name of the controller. `length`: bytes of `text`, at most 32. */
MOVER_API int setDevModelName(int id, const char *text, int length);
/** Firmware version of the controller. `length`: bytes of `buffer`, 32. */
MOVER_API int getDevSoftVersion(int id, char *buffer, int length);

/** Whether the joystick drives the axes: 1 yes, 0 no, or a negative status. */
MOVER_API int getRockerEnable(int id);
/** Hands the axes to the joystick (1) or takes them back (0). */
MOVER_API int setRockerEnable(int id, int enable);
/** Presence and speed level of the joystick; serves as a sign of life. The caller zeroes `info`. */
MOVER_API int getRockerInfo(int id, CONTROLER_STATE *info);

/* ---- Motion ------------------------------------------------------------------------------------------------ */

/** Starts an absolute move to the position of setTargetPos(). */
MOVER_API int startMove(int id, int axis);
/** Starts a relative move by setRelativeDisp(), or an unlimited one while setRelativeDispEnable() is 0. */
MOVER_API int startDrive(int id, int axis, int direction);
/** Starts setJogCount() steps of setJogStep(), with setJogDelay() ms between them. */
MOVER_API int startJog(int id, int axis, int direction);
/** Starts a loop run: setCircleCount() times there and back by setCircleDisp(), with setCircleDelay() ms dwell. */
MOVER_API int startCircle(int id, int axis, int direction);
/** Runs to the origin at the homing speed. */
MOVER_API int home(int id, int axis);
/** Stops the axis; it decelerates. Stopping an axis that stands still is no error. */
MOVER_API int stopRuning(int id, int axis);
/** Switches the power stage on (1) or off (0). Off refuses starts and keeps the position. */
MOVER_API int setMotorEnable(int id, int axis, int enable);
/** Running state of the axis. The caller zeroes `state`. */
MOVER_API int getRuningState(int id, int axis, MotorStageState *state);
/** Position of the axis. `status` may be null; the caller sets it to 0, below 0 after the call is a failure. */
MOVER_API double getCurrentPos(int id, int axis, int *status);

/* ---- Motion parameters ------------------------------------------------------------------------------------- */

/** Target position. `success`: the caller sets it to 0, not 0 after the call is success. */
MOVER_API double getTargetPos(int id, int axis, unsigned char *success);
/** Stores the target of startMove(). */
MOVER_API int setTargetPos(int id, int axis, double value);

/** Travelling speed, unit/s, above 0. */
MOVER_API int setSpeed(int id, int axis, double value);
MOVER_API double getSpeed(int id, int axis);
/** Acceleration and deceleration, unit/s², above 0. */
MOVER_API int setAcceleration(int id, int axis, double value);
MOVER_API double getAcceleration(int id, int axis);
/** Displacement of startDrive(), 0 or more. */
MOVER_API int setRelativeDisp(int id, int axis, double value);
MOVER_API double getRelativeDisp(int id, int axis);
/** Whether startDrive() is limited to the displacement (1) or runs until a stop or a limit (0). */
MOVER_API int setRelativeDispEnable(int id, int axis, int value);
MOVER_API int getRelativeDispEnable(int id, int axis);

/** Length of one jog step, 0 or more. */
MOVER_API int setJogStep(int id, int axis, double value);
MOVER_API double getJogStep(int id, int axis);
/** Number of jog steps, 0 or more. */
MOVER_API int setJogCount(int id, int axis, int value);
MOVER_API int getJogCount(int id, int axis);
/** Dwell between jog steps, ms, 0 or more. */
MOVER_API int setJogDelay(int id, int axis, int value);
MOVER_API int getJogDelay(int id, int axis);
/** Number of the jog step that is running; 0 while none is. */
MOVER_API int getJogIndex(int id, int axis);

/** Travel of a loop run, 0 or more. */
MOVER_API int setCircleDisp(int id, int axis, double value);
MOVER_API double getCircleDisp(int id, int axis);
/** Number of times that a loop run goes there and back, 0 or more. */
MOVER_API int setCircleCount(int id, int axis, int value);
MOVER_API int getCircleCount(int id, int axis);
/** Dwell at each end of a loop run, ms, 0 or more. */
MOVER_API int setCircleDelay(int id, int axis, int value);
MOVER_API int getCircleDelay(int id, int axis);
/** Number of the loop that is running; 0 while none is. */
MOVER_API int getCircleIndex(int id, int axis);

/** Whether pulses on the trigger input step the axis. */
MOVER_API int setTriggerInEnable(int id, int axis, int value);
MOVER_API int getTriggerInEnable(int id, int axis);
/** Whether the axis gives pulses on the trigger output. */
MOVER_API int setTriggerOutEnable(int id, int axis, int value);
MOVER_API int getTriggerOutEnable(int id, int axis);
/**
 * Displacement per trigger pulse; the sign is the direction. A failed read gives the negative number of the failure, so
 * one read alone cannot tell a failure from a whole number of units in the negative direction.
 */
MOVER_API int setTriggerStep(int id, int axis, double value);
MOVER_API double getTriggerStep(int id, int axis);

/* ---- Stage ------------------------------------------------------------------------------------------------- */

/** Unit of the axis: 0 millimetres, 1 degrees. */
MOVER_API int setMotorUnitType(int id, int axis, int value);
MOVER_API int getMotorUnitType(int id, int axis);
/** Model name of the stage. `length`: bytes of the buffer or text, at most 32. */
MOVER_API int getMotorModelName(int id, int axis, char *buffer, int length);
MOVER_API int setMotorModelName(int id, int axis, const char *text, int length);
/** Serial number of the stage. `length`: bytes of the buffer or text, at most 32. */
MOVER_API int getMotorSerialNumber(int id, int axis, char *buffer, int length);
MOVER_API int setMotorSerialNumber(int id, int axis, const char *text, int length);
/** The whole parameter record of the axis. */
MOVER_API int getMotorParams(int id, int axis, MotorParams *params);
MOVER_API int setMotorParams(int id, int axis, MotorParams params);
/** Identification chip of the stage: `code` 2 = written, 1 = blank, 0 = none. */
MOVER_API int getMotorAutoDetect(int id, int axis, int *code);
/** Erases the identification chip of the stage. */
MOVER_API int setClearIDChip(int id, int axis);

/** Whether the position is corrected by the compensation tables. */
MOVER_API int setPosConpenEnable(int id, int axis, int value);
MOVER_API int getPosConpenEnable(int id, int axis);
/**
 * Compensation tables, one per direction of travel. `pairs`: expected, actual, expected, actual …, in the stage's unit;
 * `count`: number of pairs. A getter takes the capacity in `*count` and puts the number of pairs there.
 */
MOVER_API int setPositivePosConpen(int id, int axis, const double *pairs, int count);
MOVER_API int getPositivePosConpen(int id, int axis, double *pairs, int *count);
MOVER_API int setNegativePosConpen(int id, int axis, const double *pairs, int count);
MOVER_API int getNegativePosConpen(int id, int axis, double *pairs, int *count);

#ifdef __cplusplus
} /* extern "C" */
#endif
