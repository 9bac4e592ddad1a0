// SPDX-License-Identifier: MIT
#pragma once

/**
 * The statuses with which our own motion libraries answer. Below 0 is a failure, as the library's callers expect. A
 * maker's library has numbers of its own: these mean what they say only where the library in use is marked as ours.
 */
namespace moverStatus {

enum Status : int {
    Ok = 0,
    UnknownDevice = -1,    ///< no controller has this identifier (0 never is one)
    NotAdded = -2,         ///< addDev() has not been called for the controller
    NotOpen = -3,          ///< the controller is added, but not open (or it was unplugged while open)
    AlreadyOpen = -4,      ///< openTSDevice() on an open controller
    NoSuchAxis = -5,       ///< axis below 0, or not below the controller's axis count
    OutOfRange = -6,       ///< a value outside its range, or not a finite number
    AxisRunning = -7,      ///< start or parameter write while the axis is running (a dwell counts as running)
    PowerOff = -8,         ///< start while the power stage is off
    LinkLost = -9,         ///< the controller does not answer: link lost or controller unplugged
    BadArgument = -10,     ///< null pointer, or a length or capacity that makes no sense
    NoChip = -11,          ///< the stage has no identification chip
    AlreadyAdded = -12,    ///< addDev() on an added controller
    OptoFault = -13,       ///< start while an opto-coupler that the motion relies on has failed
    NoJoystick = -14,      ///< setRockerEnable(1) without a joystick
    JoystickDrives = -15,  ///< start while the joystick is deflected
    Locked = -16,          ///< the controller is in an alarm or locked after one
    NotAvailable = -17,    ///< this kind of controller does not have what was asked for
    ReferenceFirst = -18,  ///< the position means nothing before the axis has been homed
    OthersWouldMove = -19, ///< home() would move the controller's other axes too; called again within 10 s it does
    ControllerBusy = -20,  ///< the controller is homing, storing parameters or coming to rest
    PortInUse = -21,       ///< another program has the controller's port
    WriteFailed = -22,     ///< the controller did not take a parameter; what was written before it is undone
    NoPermission = -23     ///< the user may not open the controller's port
};

} // namespace moverStatus
