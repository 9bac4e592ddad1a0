// SPDX-License-Identifier: MIT
using System;
using System.Globalization;
using System.Threading;

/// <summary>Example [TARGET]: moves axis 0 of the first controller to TARGET (mm or °), or 1 further than where it is.
/// </summary>
internal static class Example
{
    private static MotorStageState StateOf(int id, int axis)
    {
        var state = new MotorStageState();
        MoverLibrary.Checked(MoverLibrary.getRuningState(id, axis, ref state));
        return state;
    }

    private static double PositionOf(int id, int axis)
    {
        int status = 0;
        double position = MoverLibrary.getCurrentPos(id, axis, ref status);
        MoverLibrary.Checked(status);
        return position;
    }

    private static string Shown(double value)
    {
        return value.ToString("G6", CultureInfo.InvariantCulture);
    }

    private static void Drive(int id, double? wantedTarget)
    {
        const int axis = 0;
        var name = new byte[MoverLibrary.TextLength];
        MoverLibrary.Checked(MoverLibrary.getDevModelName(id, name, name.Length));
        Console.WriteLine("model " + MoverLibrary.Text(name));

        MotorStageState state = StateOf(id, axis);
        Console.WriteLine("can run {0}, stopped {1}, enabled {2}, homed {3}",
                          state.isCanRun, state.isStop, state.isEnable, state.isHome);

        double position = PositionOf(id, axis);
        double target = wantedTarget ?? position + 1;
        Console.WriteLine("from {0} to {1}", Shown(position), Shown(target));
        MoverLibrary.Checked(MoverLibrary.setTargetPos(id, axis, target));
        MoverLibrary.Checked(MoverLibrary.startMove(id, axis));
        while (StateOf(id, axis).isStop == 0)
            Thread.Sleep(50);
        Console.WriteLine("stands at " + Shown(PositionOf(id, axis)));
    }

    private static int Main(string[] arguments)
    {
        double? target = null;
        if (arguments.Length > 0)
            target = double.Parse(arguments[0], CultureInfo.InvariantCulture);

        var ids = new int[10];
        int count = MoverLibrary.listTSMotorControlerDevices(ids, ids.Length);
        for (int k = 0; k < count; ++k)
            Console.WriteLine("controller " + ids[k]);
        if (count < 1) {
            Console.Error.WriteLine("no controller is connected");
            return 1;
        }

        int id = ids[0];
        MoverLibrary.addDev(id);
        try {
            MoverLibrary.Checked(MoverLibrary.openTSDevice(id));
            try {
                Drive(id, target);
            } finally {
                MoverLibrary.closeTSDevice(id);
            }
        } catch (MoverException failure) {
            Console.Error.WriteLine(failure.Message);
            return 1;
        } finally {
            MoverLibrary.removeDev(id);
        }
        return 0;
    }
}
