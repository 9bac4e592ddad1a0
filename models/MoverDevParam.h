// SPDX-License-Identifier: MIT
#pragma once

#include "session/AxisDescription.h"

#include <QMetaType>
#include <QString>

/**
 * The parameters of one stage model. The names are the keys of the model file, except for auxText, which has none.
 * Lengths are in the stage's unit, speeds per second.
 */
struct MoverDevParam {
    QString name;              ///< model name
    QString auxText;           ///< always empty after loading
    int pulseOneCircle = 0;    ///< pulses per motor revolution
    float dispOneCircle = 0;   ///< travel per motor revolution
    float restoreSpeed = 0;    ///< homing speed
    int AxisType = 0;          ///< carried, not interpreted
    int positivePolarity = 0;  ///< positive limit switch: 0 active low, 1 active high
    int negativePolarity = 0;  ///< negative limit switch
    int originPolarity = 0;    ///< origin switch
    int phaseDirction = 0;     ///< moving direction: 0 positive, 1 negative
    int originSigID = 0;       ///< origin signal
    QString unitString;        ///< unit of positions, "mm" or "°"
    int moveType = 0;          ///< a StageType
    int limitDirection = 0;    ///< limit direction
    QString optOrder;          ///< order of the opto-couplers, up to 4 characters
    double maxSpeed = 0;       ///< highest speed
    double maxAcc = 0;         ///< highest acceleration
    double minPos = 0;         ///< lower end of travel
    double maxPos = 0;         ///< upper end of travel
    int zeroOptWidth = 0;      ///< width of the origin opto-coupler, pulses
    int optNum = 0;            ///< number of opto-couplers
    int returnTrip = 0;        ///< backlash, pulses
    int motorPhase = 0;        ///< number of motor phases
    int modifyDate = 0;        ///< date of the last change, YYYYMMDD as a number
    double maxRockerSpeed = 0; ///< highest speed under the joystick
};
Q_DECLARE_METATYPE(MoverDevParam)
