#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""drive.py PROGRAM|MENU_ENTRY [PORT]: uses the program as a person would, on the desktop that is there.

Starts the program, or what a menu entry (.desktop) starts, connects to the first controller, moves its first axis, opens
the manual from the help panel, switches to English, closes the program by its close button, and starts it once more to
see that it still speaks English. What is on the screen is read from the accessibility tree, what is done is done with
the mouse and the keyboard (xdotool). Ends with 1 when anything does not come about.

With a PORT, at which a Grbl board answers that nobody has set up yet, it does instead what the manual tells under "Setting
up a Grbl board": sets it up, restarts the program, connects, homes and moves.

Needs a session bus (dbus-run-session), and without a PORT the default scenario of the simulated controller.
"""

import os
import signal
import subprocess
import sys
import tempfile

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

from driving import TARGET, Failure, path_with, report, stand_in_for_opener, watch_move, xdotool  # noqa: E402
from driving import wait as wait_for  # noqa: E402
from driving import wait_for_end  # noqa: E402

MANUAL = "help/台式步进电机驱动控制器用户手册.pdf"


def wait(what, condition):
    """An element that goes away while it is looked at is none."""
    return wait_for(what, condition, gone=GLib.Error)


class Stranger:
    """A process that somebody else has started: what is asked of it is as with subprocess.Popen."""

    def __init__(self, pid):
        self.pid = pid

    @staticmethod
    def of(executable):
        for name in filter(str.isdigit, os.listdir("/proc")):
            try:
                if os.readlink(f"/proc/{name}/exe") == executable:
                    return Stranger(int(name))
            except OSError:  # somebody else's, or gone
                pass
        return None

    def kill(self):
        os.kill(self.pid, signal.SIGKILL)

    def wait(self, _limit=None):
        wait_for("the program does not end", lambda: not self.runs())
        return 0  # as far as one can tell

    def runs(self):
        try:  # one that has ended and that nobody has asked how has no file any more
            return bool(os.readlink(f"/proc/{self.pid}/exe"))
        except OSError:
            return False


class Program:
    def __init__(self, command, scratch):
        self.opened = stand_in_for_opener(scratch)
        self.folder = os.path.dirname(os.path.realpath(command[0]))
        environment = dict(os.environ, PATH=path_with(scratch), QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        self.process = subprocess.Popen(command, env=environment, cwd="/")

    def root(self):
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            if child and child.get_process_id() == self.process.pid:
                return child
        return None

    def elements(self, within=None):
        """All that is showing, in the order of the tree."""
        todo = [within or self.root()]
        while todo:
            element = todo.pop()
            if not element:
                continue
            yield element
            count = element.get_child_count()
            todo.extend(element.get_child_at_index(index) for index in range(count - 1, -1, -1))

    def showing(self, role, texts=()):
        """The elements of a role that can be seen and whose name or description is one of the texts, if any."""
        return [
            element
            for element in self.elements()
            if element.get_role() == role
            and element.get_state_set().contains(Atspi.StateType.SHOWING)
            and (not texts or element.get_name() in texts or element.get_description() in texts)
        ]

    def see(self, role, *texts):
        return wait(f"no {role.value_nick} {' or '.join(texts)}", lambda: self.showing(role, texts))[0]

    def settled(self):
        """Whether the active window is one of the program's and the program knows where it stands."""
        question = ["xdotool", "getactivewindow", "getwindowpid", "getwindowgeometry", "--shell"]
        answer = subprocess.run(question, capture_output=True, text=True, check=False).stdout.split()
        if str(self.process.pid) not in answer:
            return False
        root = self.root()
        windows = [root.get_child_at_index(index) for index in range(root.get_child_count())]
        boxes = [Atspi.Component.get_extents(window, Atspi.CoordType.SCREEN) for window in windows]
        return any({f"X={box.x}", f"Y={box.y}", f"WIDTH={box.width}"} <= set(answer) for box in boxes)

    def click(self, element):
        wait("no window of the program is active", self.settled)
        box = Atspi.Component.get_extents(element, Atspi.CoordType.SCREEN)
        # The text of a link begins at its left edge and need not reach its middle.
        x = 8 if element.get_role() == Atspi.Role.LABEL else box.width // 2
        xdotool("mousemove", box.x + x, box.y + box.height // 2, "click", 1)

    def press(self, text):
        self.click(self.see(Atspi.Role.PUSH_BUTTON, text))

    def close(self, text):
        self.press(text)
        wait_for_end(self.process)

    def restart(self, text):
        executable = os.readlink(f"/proc/{self.process.pid}/exe")
        self.close(text)
        self.process = wait_for("the program does not start again", lambda: Stranger.of(executable))

    def print_screen(self):
        for element in self.elements():
            if element.get_state_set().contains(Atspi.StateType.SHOWING):
                print(f"  {element.get_role_name()}: {element.get_name()!r} {element.get_description()!r}")


def connect_and_move(program):
    program.press("连接设备")
    program.see(Atspi.Role.COMBO_BOX, "SIM-MC3-000117")
    program.press("连接")
    # The panel of the first axis comes first.
    move(program, program.see(Atspi.Role.LABEL, "0.000 mm"))


def set_up_board(program, port):
    """The numbers are those of the manual's steps."""
    program.press("连接设备")  # 1
    program.click(program.see(Atspi.Role.LABEL, "控制器设置"))
    program.press("添加…")  # 2
    program.click(program.see(Atspi.Role.COMBO_BOX))  # 3
    xdotool("key", "ctrl+a")
    xdotool("type", port)
    program.press("询问控制板")  # 4
    program.see(Atspi.Role.PUSH_BUTTON, "保存")
    models = [box for box in program.showing(Atspi.Role.COMBO_BOX) if box.get_name() == "不指定"]  # 5
    program.click(models[0])
    program.click(program.see(Atspi.Role.LIST_ITEM, "LIN-50"))
    program.see(Atspi.Role.COMBO_BOX, "LIN-50")
    program.press("保存")  # 6
    program.see(Atspi.Role.LABEL, "已保存")
    program.restart("重新启动程序")  # 7
    program.press("连接设备")
    program.see(Atspi.Role.COMBO_BOX, "GRBL-2001")
    program.press("连接")
    position = program.see(Atspi.Role.LABEL, "175.000 mm")  # the board's 0 is 200 mm off the end at -25 mm
    program.press("回零")  # 8: asks for a second press
    program.press("回零")
    wait("the axis does not home", lambda: text_of(position) == "-24.000 mm")
    print("The board is set up, and its axes have homed.")
    move(program, position)


def text_of(element):
    element.clear_cache()
    return element.get_name()


def move(program, position):
    program.click(program.see(Atspi.Role.CHECK_BOX, "设置移动参数"))
    program.click(program.see(Atspi.Role.SPIN_BUTTON))
    xdotool("key", "ctrl+a")
    xdotool("type", TARGET)
    program.press("确认")
    program.press("移动到目标位置")
    watch_move(lambda: text_of(position))


def open_manual(program):
    program.press("帮助")
    program.click(program.see(Atspi.Role.LABEL, "查看"))
    manual = Gio.File.new_for_path(os.path.join(program.folder, MANUAL))

    def opened():
        with open(program.opened, encoding="utf-8") as file:
            return Gio.File.new_for_uri(file.read().strip()).equal(manual)

    wait(f"{manual.get_path()} is not opened", lambda: os.path.exists(program.opened) and opened())
    xdotool("key", "Escape")
    wait("the help panel stays", lambda: not program.showing(Atspi.Role.LABEL, ["查看"]))
    print("The help panel opened the manual.")


def switch_to_english(program):
    program.press("软件设置")
    program.click(program.see(Atspi.Role.RADIO_BUTTON, "英文"))
    program.see(Atspi.Role.LABEL, "Settings")
    xdotool("key", "Escape")
    wait("the settings stay", lambda: not program.showing(Atspi.Role.LABEL, ["Settings"]))


def command_of(path):
    if not path.endswith(".desktop"):
        return [path]
    entry = Gio.DesktopAppInfo.new_from_filename(path)
    if not entry:
        raise Failure(f"{path} starts nothing that is installed")
    return GLib.shell_parse_argv(entry.get_commandline())[1]


def drive(scratch):
    program = None
    try:
        command = command_of(sys.argv[1])
        # Starts the accessibility bus and its registry, which a program that comes before them can miss.
        Atspi.get_desktop(0).get_child_count()
        program = Program(command, scratch)
        if len(sys.argv) > 2:
            set_up_board(program, sys.argv[2])
            program.close("退出")
            return 0
        connect_and_move(program)
        open_manual(program)
        switch_to_english(program)
        program.close("Quit")
        program = Program(command, scratch)
        program.see(Atspi.Role.PUSH_BUTTON, "Connect the device serial port COM")
        program.close("Quit")
        print("It kept English and closed with exit code 0, twice.")
    except Failure as failure:
        report(failure, program)
        return 1
    return 0


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as directory:
        code = drive(directory)
    sys.exit(code)
