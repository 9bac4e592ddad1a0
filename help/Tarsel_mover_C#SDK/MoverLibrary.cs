// SPDX-License-Identifier: MIT
using System;
using System.Runtime.InteropServices;
using System.Text;

/// <summary>Drive parameters of one axis. Lengths are in the stage's unit.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct MotorParams
{
    [MarshalAs(UnmanagedType.ByValArray, SizeConst = MoverLibrary.TextLength)] public byte[] modelName;
    [MarshalAs(UnmanagedType.ByValArray, SizeConst = MoverLibrary.TextLength)] public byte[] serialNumber;
    public uint pulseOneCircle; // pulses per motor revolution
    public uint alignment1;
    public double dispOneCircle; // lead: travel per motor revolution
    public double restoreSpeed; // homing speed
    public ushort moveType; // 0 linear, 1 rotation, 2 angular, 3 lifting
    public ushort positivePolarity; // limit switch: 0 active low, 1 active high
    public ushort negativePolarity;
    public ushort originPolarity;
    public ushort phaseDirction; // moving direction: 0 positive, 1 negative
    public ushort limitDirection; // 0 positive, 1 negative
    public ushort unitType; // 0 millimetres, 1 degrees
    [MarshalAs(UnmanagedType.ByValArray, SizeConst = 10)] public byte[] optOrder; // for example "NZP"
    public double maxSpeed;
    public double maxAcc;
    public double minPos;
    public double maxPos;
    public ushort zeroOptWidth; // pulses
    public ushort optNum;
    public short returnTrip; // backlash, pulses
    public ushort motorPhase;
    public int modifyDate; // YYYYMMDD as a number
    public uint alignment2;
    public double maxRockerSpeed;
}

/// <summary>Running state of one axis. Flags are 0 or 1.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct MotorStageState
{
    public short isCanRun;
    public short isStop;
    public short isEnable;
    public short isHome;
    public short isLeftLimit;
    public short isRightLimit;
    public short isLeftOptoFault;
    public short isRightOptoFault;
    public short isHomeOptoFault;
    public short alignment;
    public uint runCount; // current run of a loop run; 0 while no loop is counting
}

/// <summary>Joystick state of a controller.</summary>
[StructLayout(LayoutKind.Sequential)]
public struct CONTROLER_STATE
{
    public byte rockerState; // not 0: a joystick is present
    public byte alignment;
    public ushort rockerValue; // speed level, tenths of the stage's maxRockerSpeed
}

/// <summary>A call of the library failed; Status tells how.</summary>
public sealed class MoverException : Exception
{
    public MoverException(int status) : base("the motion library answered " + status) { Status = status; }
    public int Status { get; }
}

/// <summary>
/// The motion library: its 71 functions under the names of moverLibrary.h. Conventions that hold for every function
/// unless its own text says otherwise:
/// - id is a controller's identifier as listTSMotorControlerDevices() reports it; axis counts from 0.
/// - An int result below 0 is a failure and the number tells which, see Checked(). A double result of a parameter
///   getter below 0 is a failure too (positions excepted).
/// - Positions, displacements, speeds and accelerations are in the stage's unit (mm or °, per s, per s²).
/// - Enables are 0 = off, 1 = on. Delays are in milliseconds. Directions are 1 = positive, 2 = negative.
/// - Texts are 8-bit ASCII in 32-byte buffers, see Text(). A text of 32 bytes has no terminating zero.
/// - The library is not thread-safe: one call at a time, from whichever thread.
/// Calling order: list, addDev, openTSDevice (on failure removeDev), calls on device and axes, closeTSDevice, removeDev.
/// </summary>
public static class MoverLibrary
{
    public const int TextLength = 32;

    private const string Name = "moverLibrary"; // moverLibrary.dll, libmoverLibrary.so

    /// <summary>The status itself when it is a success, a MoverException otherwise.</summary>
    public static int Checked(int status)
    {
        if (status < 0)
            throw new MoverException(status);
        return status;
    }

    /// <summary>The text in a buffer, up to the first zero.</summary>
    public static string Text(byte[] buffer)
    {
        int end = Array.IndexOf(buffer, (byte)0);
        return Encoding.ASCII.GetString(buffer, 0, end < 0 ? buffer.Length : end);
    }

    // ---- Controllers -----------------------------------------------------------------------------------------

    /// <summary>Writes the identifiers of the connected controllers to `ids`, at most `capacity`. Returns their
    /// number, 0 for none.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int listTSMotorControlerDevices([In, Out] int[] ids, int capacity);

    /// <summary>Makes the controller known to the library, so that it can be opened.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int addDev(int id);

    /// <summary>Forgets the controller; an open one is closed.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int removeDev(int id);

    /// <summary>Opens the link to an added controller.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int openTSDevice(int id);

    /// <summary>Closes the link; the controller stays added.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int closeTSDevice(int id);

    /// <summary>Registers a stage model, once at start, with no controller open. `model`: 32 bytes,
    /// zero-padded; both numbers 0.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int addMotor(int first, int second, [In] byte[] model);

    /// <summary>Number of axes of the controller, or a negative status.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getDevAxisCount(int id);

    /// <summary>Stores the number of axes (1 to 3) in the controller.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setDevAxisCount(int id, int count);

    /// <summary>Serial number of the controller. `length`: bytes of `buffer`, 32.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getDevSerialNumber(int id, [In, Out] byte[] buffer, int length);

    /// <summary>Stores the serial number of the controller. `length`: bytes of `text`, at most 32.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setDevSerialNumber(int id, [In] byte[] text, int length);

    /// <summary>Model name of the controller. `length`: bytes of `buffer`, 32.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getDevModelName(int id, [In, Out] byte[] buffer, int length);

    /// <summary>Stores the model name of the controller. `length`: bytes of `text`, at most 32.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setDevModelName(int id, [In] byte[] text, int length);

    /// <summary>Firmware version of the controller. `length`: bytes of `buffer`, 32.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getDevSoftVersion(int id, [In, Out] byte[] buffer, int length);

    /// <summary>Whether the joystick drives the axes: 1 yes, 0 no, or a negative status.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getRockerEnable(int id);

    /// <summary>Hands the axes to the joystick (1) or takes them back (0).</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setRockerEnable(int id, int enable);

    /// <summary>Presence and speed level of the joystick; serves as a sign of life. The caller zeroes
    /// `info`.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getRockerInfo(int id, ref CONTROLER_STATE info);

    // ---- Motion ----------------------------------------------------------------------------------------------

    /// <summary>Starts an absolute move to the position of setTargetPos().</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int startMove(int id, int axis);

    /// <summary>Starts a relative move by setRelativeDisp(), or an unlimited one while setRelativeDispEnable()
    /// is 0.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int startDrive(int id, int axis, int direction);

    /// <summary>Starts setJogCount() steps of setJogStep(), with setJogDelay() ms between them.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int startJog(int id, int axis, int direction);

    /// <summary>Starts a loop run: setCircleCount() times there and back by setCircleDisp(), with
    /// setCircleDelay() ms dwell.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int startCircle(int id, int axis, int direction);

    /// <summary>Runs to the origin at the homing speed.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int home(int id, int axis);

    /// <summary>Stops the axis; it decelerates. Stopping an axis that stands still is no error.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int stopRuning(int id, int axis);

    /// <summary>Switches the power stage on (1) or off (0). Off refuses starts and keeps the
    /// position.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setMotorEnable(int id, int axis, int enable);

    /// <summary>Running state of the axis. The caller zeroes `state`.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getRuningState(int id, int axis, ref MotorStageState state);

    /// <summary>Position of the axis. `status` may be null; the caller sets it to 0, below 0 after the call is
    /// a failure.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern double getCurrentPos(int id, int axis, ref int status);

    // ---- Motion parameters -----------------------------------------------------------------------------------

    /// <summary>Target position. `success`: the caller sets it to 0, not 0 after the call is success.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern double getTargetPos(int id, int axis, ref byte success);

    /// <summary>Stores the target of startMove().</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setTargetPos(int id, int axis, double value);

    /// <summary>Travelling speed, unit/s, above 0.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setSpeed(int id, int axis, double value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern double getSpeed(int id, int axis);

    /// <summary>Acceleration and deceleration, unit/s², above 0.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setAcceleration(int id, int axis, double value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern double getAcceleration(int id, int axis);

    /// <summary>Displacement of startDrive(), 0 or more.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setRelativeDisp(int id, int axis, double value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern double getRelativeDisp(int id, int axis);

    /// <summary>Whether startDrive() is limited to the displacement (1) or runs until a stop or a limit
    /// (0).</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setRelativeDispEnable(int id, int axis, int value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getRelativeDispEnable(int id, int axis);

    /// <summary>Length of one jog step, 0 or more.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setJogStep(int id, int axis, double value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern double getJogStep(int id, int axis);

    /// <summary>Number of jog steps, 0 or more.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setJogCount(int id, int axis, int value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getJogCount(int id, int axis);

    /// <summary>Dwell between jog steps, ms, 0 or more.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setJogDelay(int id, int axis, int value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getJogDelay(int id, int axis);

    /// <summary>Number of the jog step that is running; 0 while none is.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getJogIndex(int id, int axis);

    /// <summary>Travel of a loop run, 0 or more.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setCircleDisp(int id, int axis, double value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern double getCircleDisp(int id, int axis);

    /// <summary>Number of times that a loop run goes there and back, 0 or more.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setCircleCount(int id, int axis, int value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getCircleCount(int id, int axis);

    /// <summary>Dwell at each end of a loop run, ms, 0 or more.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setCircleDelay(int id, int axis, int value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getCircleDelay(int id, int axis);

    /// <summary>Number of the loop that is running; 0 while none is.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getCircleIndex(int id, int axis);

    /// <summary>Whether pulses on the trigger input step the axis.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setTriggerInEnable(int id, int axis, int value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getTriggerInEnable(int id, int axis);

    /// <summary>Whether the axis gives pulses on the trigger output.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setTriggerOutEnable(int id, int axis, int value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getTriggerOutEnable(int id, int axis);

    /// <summary>Displacement per trigger pulse; the sign is the direction.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setTriggerStep(int id, int axis, double value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern double getTriggerStep(int id, int axis);

    // ---- Stage -----------------------------------------------------------------------------------------------

    /// <summary>Unit of the axis: 0 millimetres, 1 degrees.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setMotorUnitType(int id, int axis, int value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getMotorUnitType(int id, int axis);

    /// <summary>Model name of the stage. `length`: bytes of the buffer or text, at most 32.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getMotorModelName(int id, int axis, [In, Out] byte[] buffer, int length);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setMotorModelName(int id, int axis, [In] byte[] text, int length);

    /// <summary>Serial number of the stage. `length`: bytes of the buffer or text, at most 32.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getMotorSerialNumber(int id, int axis, [In, Out] byte[] buffer, int length);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setMotorSerialNumber(int id, int axis, [In] byte[] text, int length);

    /// <summary>The whole parameter record of the axis.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getMotorParams(int id, int axis, ref MotorParams @params);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setMotorParams(int id, int axis, MotorParams @params);

    /// <summary>Identification chip of the stage: `code` 2 = written, 1 = blank, 0 = none.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getMotorAutoDetect(int id, int axis, ref int code);

    /// <summary>Erases the identification chip of the stage.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setClearIDChip(int id, int axis);

    /// <summary>Whether the position is corrected by the compensation tables.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setPosConpenEnable(int id, int axis, int value);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getPosConpenEnable(int id, int axis);

    /// <summary>Compensation tables, one per direction of travel. `pairs`: expected, actual, expected, actual
    /// …, in the stage's unit; `count`: number of pairs. A getter takes the capacity in `*count` and puts the
    /// number of pairs there.</summary>
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setPositivePosConpen(int id, int axis, [In] double[] pairs, int count);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getPositivePosConpen(int id, int axis, [In, Out] double[] pairs, ref int count);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int setNegativePosConpen(int id, int axis, [In] double[] pairs, int count);
    [DllImport(Name, CallingConvention = CallingConvention.Cdecl)]
    public static extern int getNegativePosConpen(int id, int axis, [In, Out] double[] pairs, ref int count);
}
