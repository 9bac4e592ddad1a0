/* SPDX-License-Identifier: MIT */
#pragma once

/**
 * The records that cross the motion library's C interface. Their byte layout belongs to the library:
 * nothing here may be reordered, widened or packed. Plain C, so that C and C++ programs share it.
 */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Bytes of every text that the library exchanges (names, serial numbers, versions). */
#define MOVER_TEXT_LENGTH 32

/** Drive parameters of one axis, as stored in the identification chip of its stage. Lengths are in the stage's unit. */
typedef struct MotorParams {
    char modelName[MOVER_TEXT_LENGTH];    /**< stage model, ASCII, zero-terminated */
    char serialNumber[MOVER_TEXT_LENGTH]; /**< stage serial number, ASCII, zero-terminated */
    uint32_t pulseOneCircle;              /**< pulses per motor revolution */
    uint32_t alignment1;                  /**< unused */
    double dispOneCircle;                 /**< lead: travel per motor revolution */
    double restoreSpeed;                  /**< homing speed, unit/s */
    uint16_t moveType;                    /**< stage type: 0 linear, 1 rotation, 2 angular, 3 lifting */
    uint16_t positivePolarity;            /**< positive limit switch: 0 active low, 1 active high */
    uint16_t negativePolarity;            /**< negative limit switch, as above */
    uint16_t originPolarity;              /**< origin switch, as above */
    uint16_t phaseDirction;               /**< moving direction: 0 positive, 1 negative */
    uint16_t limitDirection;              /**< limit direction: 0 positive, 1 negative */
    uint16_t unitType;                    /**< 0 millimetres, 1 degrees */
    char optOrder[10];                    /**< order of the opto-couplers, for example "NZP", zero-terminated */
    double maxSpeed;                      /**< unit/s */
    double maxAcc;                        /**< unit/s² */
    double minPos;                        /**< lower end of travel */
    double maxPos;                        /**< upper end of travel */
    uint16_t zeroOptWidth;                /**< width of the origin opto-coupler, pulses */
    uint16_t optNum;                      /**< number of opto-couplers */
    int16_t returnTrip;                   /**< backlash, pulses; the only signed 16-bit field */
    uint16_t motorPhase;                  /**< number of motor phases */
    int32_t modifyDate;                   /**< date of the last change, YYYYMMDD as a number */
    uint32_t alignment2;                  /**< unused */
    double maxRockerSpeed;                /**< highest speed under the joystick, unit/s */
} MotorParams;

/** Running state of one axis. Flags are 0 or 1. */
typedef struct MotorStageState {
    int16_t isCanRun;         /**< the axis may be started */
    int16_t isStop;           /**< the axis stands still */
    int16_t isEnable;         /**< the power stage is on */
    int16_t isHome;           /**< the origin has been found */
    int16_t isLeftLimit;      /**< negative limit reached */
    int16_t isRightLimit;     /**< positive limit reached */
    int16_t isLeftOptoFault;  /**< negative limit opto-coupler failed */
    int16_t isRightOptoFault; /**< positive limit opto-coupler failed */
    int16_t isHomeOptoFault;  /**< origin opto-coupler failed */
    int16_t alignment;        /**< unused */
    uint32_t runCount;        /**< current run of a loop run; 0 while no loop is counting */
} MotorStageState;

/** Joystick ("rocker") state of a controller. */
typedef struct CONTROLER_STATE {
    uint8_t rockerState;  /**< not 0: a joystick is present */
    uint8_t alignment;    /**< unused */
    uint16_t rockerValue; /**< speed level set at the joystick, tenths of the stage's maxRockerSpeed */
} CONTROLER_STATE;

#ifdef __cplusplus
#define MOVER_LAYOUT_ASSERT(condition) static_assert(condition, #condition)
#else
#define MOVER_LAYOUT_ASSERT(condition) _Static_assert(condition, #condition)
#endif

MOVER_LAYOUT_ASSERT(sizeof(MotorParams) == 168);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, modelName) == 0);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, serialNumber) == 32);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, pulseOneCircle) == 64);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, alignment1) == 68);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, dispOneCircle) == 72);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, restoreSpeed) == 80);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, moveType) == 88);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, positivePolarity) == 90);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, negativePolarity) == 92);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, originPolarity) == 94);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, phaseDirction) == 96);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, limitDirection) == 98);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, unitType) == 100);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, optOrder) == 102);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, maxSpeed) == 112);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, maxAcc) == 120);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, minPos) == 128);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, maxPos) == 136);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, zeroOptWidth) == 144);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, optNum) == 146);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, returnTrip) == 148);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, motorPhase) == 150);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, modifyDate) == 152);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, alignment2) == 156);
MOVER_LAYOUT_ASSERT(offsetof(MotorParams, maxRockerSpeed) == 160);

MOVER_LAYOUT_ASSERT(sizeof(MotorStageState) == 24);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, isCanRun) == 0);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, isStop) == 2);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, isEnable) == 4);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, isHome) == 6);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, isLeftLimit) == 8);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, isRightLimit) == 10);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, isLeftOptoFault) == 12);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, isRightOptoFault) == 14);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, isHomeOptoFault) == 16);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, alignment) == 18);
MOVER_LAYOUT_ASSERT(offsetof(MotorStageState, runCount) == 20);

MOVER_LAYOUT_ASSERT(sizeof(CONTROLER_STATE) == 4);
MOVER_LAYOUT_ASSERT(offsetof(CONTROLER_STATE, rockerState) == 0);
MOVER_LAYOUT_ASSERT(offsetof(CONTROLER_STATE, alignment) == 1);
MOVER_LAYOUT_ASSERT(offsetof(CONTROLER_STATE, rockerValue) == 2);

#undef MOVER_LAYOUT_ASSERT

#ifdef __cplusplus
} /* extern "C" */
#endif
