#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""drive.py FOLDER TOOLS [--start]: uses the program in that folder as a person would, under Wine, on the desktop that is
there. TOOLS is the build's folder with onlooker and tellWindow.

Everything is done with the mouse and the keyboard (xdotool); what is on the screen tells the onlooker, a plug-in of Qt.
Ends with 1 when anything does not come about. --start only compares how long the start takes with that of an empty window
(emptyWindow.exe in the same folder).
"""

import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
import urllib.parse
from typing import NamedTuple

from PIL import ImageGrab

# Beside this script where that was copied, or in the folder above.
sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir))
from driving import TARGET, Failure, path_with, report, stand_in_for_opener, wait, wait_for_end, watch_move, xdotool  # noqa: E402

FAR = 40  # mm
SERIAL_NUMBER = "MC3-000117"
MANUAL = "台式步进电机驱动控制器用户手册.pdf"
LONGEST_START = 1.3 * 1.5  # times an empty window's: 1.5 is wanted, and a row fails 30 % beyond its goal
# Messages of Windows and their first parameter.
DEVICES_CHANGED = (0x219, 7)
RESTORE = (0x112, 0xF120)
# The buttons of the title bar, what they open, and the key that closes it.
WINDOWS = [
    ("pushButton_connect", "ConnectionWidget", "Escape"),
    ("pushButton_settings", "OptionsWidget", "Escape"),
    ("pushButton_help", "HelpWidget", "Escape"),
    ("pushButton_debug", "DebugWidget", "alt+F4"),
    ("pushButton_workbench", "WorkbenchWidget", "alt+F4"),
]
END_OF_SESSION = (0x11, 0)
SCENARIO = """{ "controllers": [
    { "id": 1001, "serialNumber": "%s", "axes": [
        { "chip": "written", "position": 0, "stage": { "modelName": "LIN-100", "minPos": -50, "maxPos": 50,
          "maxSpeed": 20, "maxAcc": 100 } } ] },
    { "id": 1002, "serialNumber": "MC3-000118", "axes": [ {} ] } ],
  "events": [ { "at": %d, "event": "unplug", "controller": 1001 }, { "at": %d, "event": "plug", "controller": 1001 } ] }
"""


class Widget(NamedTuple):
    window: str
    active: bool
    kind: str
    name: str
    x: int
    y: int
    width: int
    height: int
    text: str


def windows_path(path):
    return "Z:" + path.replace("/", "\\")


class Program:
    """The program, started under Wine; `scratch` is a folder for what it needs beside itself."""

    def __init__(self, folder, tools, scratch, *arguments, name="mover.exe"):
        self.seen = os.path.join(scratch, "seen")
        if os.path.exists(self.seen):
            os.remove(self.seen)
        self.opened = stand_in_for_opener(scratch)
        self.tools = tools
        environment = dict(
            os.environ,
            PATH=path_with(scratch),
            # Wine hands over what begins with QT_ under these names only.
            WINEQT_QPA_GENERIC_PLUGINS="onlooker",
            WINEQT_PLUGIN_PATH=windows_path(os.path.join(tools, "plugins")),
            MOVER_SEEN=windows_path(self.seen),
        )
        self.process = subprocess.Popen(
            ["wine", os.path.join(folder, name), *arguments], env=environment, cwd="/")

    def look(self):
        """The number of the process and all widgets that are to be seen."""
        try:
            with open(self.seen, encoding="utf-8") as file:
                lines = file.read().split("\n")
        except FileNotFoundError:
            return 0, []
        widgets = []
        for line in lines[1:-1]:
            window, active, kind, name, x, y, width, height, text = line.split("\t", 8)
            widgets.append(Widget(
                window, active == "1", kind, name, int(x), int(y), int(width), int(height), text.replace("\v", "\n")))
        return int(lines[0] or 0), widgets

    def find(self, window, name, text=None, *, last=False):
        """The first or last widget of that name in a window of that class, with that text if one is given."""
        found = [widget for widget in self.look()[1]
                 if widget.window == window and widget.name == name and text in (None, widget.text)]
        return found[-1 if last else 0] if found else None

    def see(self, window, name, text=None):
        return wait(f"no {window}.{name} {text or ''}", lambda: self.find(window, name, text))

    def text(self, window, name):
        return self.see(window, name).text

    def closed(self, window):
        wait(f"{window} stays", lambda: not any(widget.window == window for widget in self.look()[1]))

    def settled(self, what, find):
        """What `find` gives in two looks of the program in a row: a window that has just come up may still be moved."""
        before = (0, None)

        def same():
            nonlocal before
            look = os.stat(self.seen).st_mtime_ns if os.path.exists(self.seen) else 0
            if look == before[0]:
                return None
            (_, first), before = before, (look, find())
            return first if first == before[1] else None

        return wait(what, same)

    def click(self, window, name, *, left=False, last=False):
        def active():
            widget = self.find(window, name, last=last)
            return widget if widget and widget.active else None

        widget = self.settled(f"{window}.{name} is not to be clicked", active)
        xdotool("mousemove", widget.x + (8 if left else widget.width // 2), widget.y + widget.height // 2, "click", 1)

    def answer(self, text):
        """Presses the button of a message box whose text begins so."""
        def button():
            return next((widget for widget in self.look()[1] if widget.window == "QMessageBox" and widget.active and
                         widget.kind == "QPushButton" and re.match(text, widget.text)), None)

        widget = self.settled(f"no button {text}", button)
        xdotool("mousemove", widget.x + widget.width // 2, widget.y + widget.height // 2, "click", 1)
        self.closed("QMessageBox")

    def type(self, window, name, value):
        self.click(window, name)
        xdotool("key", "ctrl+a")
        xdotool("type", value)

    def tell(self, how, count, message, parameter):
        number = self.look()[0]
        command = ["wine", os.path.join(self.tools, "tellWindow.exe"), *map(str, (number, how, count, message, parameter))]
        result = subprocess.run(command, capture_output=True, text=True, check=False)
        if result.returncode != 0:
            raise Failure(f"{how} {count} messages {message:#x}: only {result.stdout} were taken; {result.stderr}")

    def ended(self):
        wait_for_end(self.process)

    def close(self):
        self.click("MoverWidget", "pushButton_close")
        self.ended()

    def print_screen(self):
        for widget in self.look()[1]:
            print(f"  {widget.window}{'*' if widget.active else ''} {widget.kind} {widget.name}: {widget.text!r}",
                  file=sys.stderr)


def connect(program):
    program.click("MoverWidget", "pushButton_connect")
    program.click("ConnectionWidget", "pushButton_connectSerial")
    program.see("MoverWidget", "label_currentPos", "0.000 mm")
    if program.find("ConnectionWidget", "pushButton_close"):
        program.click("ConnectionWidget", "pushButton_close")


def move(program):
    program.click("MoverWidget", "pushButton_moveParam")
    program.type("MoveParamWidget", "doubleSpinBox_disp", TARGET)
    program.click("MoveParamWidget", "pushButton_confirm")
    program.click("MoverWidget", "pushButton_move")
    watch_move(lambda: program.text("MoverWidget", "label_currentPos"))


def loop_run(program):
    program.click("MoverWidget", "pushButton_circle")
    # It lies over the panel, in the same window.
    program.type("MoverWidget", "doubleSpinBox_relativeDisp", 2)
    program.click("MoverWidget", "pushButton_right")
    wait("the loop run does not begin", lambda: program.text("MoverWidget", "label_currentPos") != f"{TARGET:.3f} mm")
    program.click("MoverWidget", "pushButton_stop", last=True)
    # Closing it before the axis was seen to stand would ask.
    wait("the loop run does not end", lambda: "运行完成" in program.text("MoverWidget", "textBrowser_operatioInfo"))
    program.click("MoverWidget", "pushButton_close", last=True)
    wait("the loop run stays", lambda: not program.find("MoverWidget", "doubleSpinBox_relativeDisp"))
    print("A loop run was begun and stopped.")


def stop_all(program):
    def position():
        return program.text("MoverWidget", "label_currentPos")

    def stands():
        before = position()
        time.sleep(0.5)  # several polls
        return position() == before

    program.click("MoverWidget", "pushButton_moveParam")
    program.type("MoveParamWidget", "doubleSpinBox_disp", FAR)
    program.click("MoveParamWidget", "pushButton_confirm")
    before = position()
    program.click("MoverWidget", "pushButton_move")
    wait("the axis does not move", lambda: position() != before)
    xdotool("key", "F12")
    wait("the axis does not stop", stands)
    if position() == f"{FAR:.3f} mm":
        raise Failure("the axis came to its target in spite of the stop")
    print("All was stopped by F12.")


def look_at_windows(program, language):
    """Opens every window that the title bar has a button for, and takes its picture."""
    for button, window, close in WINDOWS:
        program.click("MoverWidget", button)
        wait(f"no {window}", lambda: any(widget.window == window and widget.active for widget in program.look()[1]))
        if window == "WorkbenchWidget":
            program.see(window, "label_held")
        picture = os.path.join(os.path.expanduser("~"), "pictures", f"{language}-{window}.png")
        os.makedirs(os.path.dirname(picture), exist_ok=True)
        ImageGrab.grab(xdisplay=os.environ["DISPLAY"]).save(picture)
        xdotool("key", close)
        program.closed(window)
    print(f"{len(WINDOWS)} windows were opened and closed ({language}).")


def use_help(program):
    program.click("MoverWidget", "pushButton_help")
    program.click("HelpWidget", "label_manual", left=True)

    def opened():
        if not os.path.exists(program.opened):
            return False
        with open(program.opened, encoding="utf-8") as file:
            return MANUAL in urllib.parse.unquote(file.read())

    wait("the manual is not opened", opened)
    program.click("HelpWidget", "pushButton_close")
    program.closed("HelpWidget")
    print("The help panel opened the manual.")


def use_console(program):
    program.click("MoverWidget", "pushButton_debug")
    program.click("DebugWidget", "pushButton_28")  # reads the speed
    wait("the console reads no speed", lambda: program.text("DebugWidget", "lineEdit_result") not in ("", "0"))
    xdotool("key", "alt+F4")
    program.closed("DebugWidget")
    print("The console read the speed.")


def use_settings(program):
    """Writes a parameter of the motor, reads it back, and changes to English."""
    program.click("MoverWidget", "pushButton_settings")
    program.click("OptionsWidget", "pushButton_motorParam")
    program.answer("确定|OK")
    program.click("OptionsWidget", "pushButton_ReadParam")
    speed = "lineEdit_motor_restoreSpeed"
    wait("the parameters are not read", lambda: program.text("OptionsWidget", speed))
    program.type("OptionsWidget", speed, 7)
    program.click("OptionsWidget", "pushButton_WriteParam")
    program.answer("是")
    program.see("OptionsWidget", "label_msg", "写入电机参数成功")
    program.type("OptionsWidget", speed, 8)
    program.click("OptionsWidget", "pushButton_ReadParam")
    program.see("OptionsWidget", speed, "7")
    program.click("OptionsWidget", "pushButton_language")
    program.click("OptionsWidget", "radioButton_en", left=True)
    program.see("OptionsWidget", "label", "Settings")
    program.click("OptionsWidget", "pushButton_close")
    program.closed("OptionsWidget")
    print("A parameter was written and read back, and the language is English.")


def unplug_and_plug(program):
    """The controller goes: notices come by the thousand, one box tells of it, and none waits for the box. It comes back: it
    can be connected and moved again."""
    def told():
        program.tell("post", 1, *DEVICES_CHANGED)  # before, it was still there
        return boxes(program)

    def heap():
        for how in ("send", "post"):
            program.tell(how, 10000, *DEVICES_CHANGED)

    heap()
    wait("nothing is said of the lost controller", told)
    heap()
    if len(boxes(program)) != 1:
        raise Failure(f"{len(boxes(program))} boxes tell of the lost controller")
    xdotool("key", "Escape")
    program.closed("QMessageBox")
    print("40000 notices of devices were answered, half of them under the box that tells of the lost controller.")

    def listed():
        program.click("MoverWidget", "pushButton_connect")
        if program.text("ConnectionWidget", "comboBox_comList") == "SIM-" + SERIAL_NUMBER:
            return True
        program.click("ConnectionWidget", "pushButton_close")
        program.closed("ConnectionWidget")
        return False

    wait("the controller does not come back", listed)
    program.click("ConnectionWidget", "pushButton_disConnect")
    wait("the panel stays", lambda: not program.find("MoverWidget", "label_currentPos"))
    program.click("ConnectionWidget", "pushButton_close")
    program.closed("ConnectionWidget")
    connect(program)
    move(program)
    print("It was plugged in, connected and moved again.")


def boxes(program):
    return [widget for widget in program.look()[1] if widget.kind == "QMessageBox"]


def use_title_bar(program):
    """Full screen and back, minimised and back."""
    def place():
        window = program.see("MoverWidget", "MoverWidget")
        return window[4:8]

    before = place()
    program.click("MoverWidget", "pushButton_showMax")
    screen = subprocess.run(["xdotool", "getdisplaygeometry"], capture_output=True, text=True, check=True).stdout.split()
    wait("the window does not fill the screen", lambda: place() == (0, 0, *map(int, screen)))
    program.click("MoverWidget", "pushButton_showMax")
    wait("the window does not come back from the full screen", lambda: place() == before)
    program.click("MoverWidget", "pushButton_showMin")
    wait("the window is not minimised", lambda: not any(widget.active for widget in program.look()[1]))
    program.tell("post", 1, *RESTORE)
    wait("the window does not come back", lambda: program.see("MoverWidget", "MoverWidget").active and place() == before)
    print("Full screen and back, minimised and back.")


def start(folder, tools, scratch, unplugged):
    """With a simulated controller that is unplugged after so many seconds, and plugged in again as many later."""
    scenario = os.path.join(scratch, "位移台 – Prüfstand.json")
    with open(scenario, "w", encoding="utf-8") as file:
        file.write(SCENARIO % (SERIAL_NUMBER, unplugged, 2 * unplugged))
    return Program(folder, tools, scratch, "--scenario", windows_path(scenario))


def drive(folder, tools, scratch):
    program = None
    try:
        program = start(folder, tools, scratch, 10 ** 6)
        connect(program)
        move(program)
        use_title_bar(program)
        loop_run(program)
        stop_all(program)
        look_at_windows(program, "zh")
        use_help(program)
        use_console(program)
        use_settings(program)
        program.close()
        program = start(folder, tools, scratch, 20)
        connect(program)
        unplug_and_plug(program)
        program.close()
        program = Program(folder, tools, scratch)
        program.click("MoverWidget", "pushButton_settings")
        program.see("OptionsWidget", "label", "Settings")
        xdotool("key", "Escape")
        program.closed("OptionsWidget")
        look_at_windows(program, "en")
        program.see("MoverWidget", "pushButton_close")
        xdotool("key", "alt+F4")
        program.ended()
        program = Program(folder, tools, scratch)
        program.see("MoverWidget", "pushButton_close")
        program.tell("post", 1, *END_OF_SESSION)
        program.ended()
        print("It kept English, and closed with exit code 0 by its button, Alt+F4 and the end of the session.")
    except Failure as failure:
        report(failure, program)
        return 1
    return 0


def start_once(folder, tools, scratch, name):
    """Seconds until a window is to be seen."""
    begun = time.monotonic()
    program = Program(folder, tools, scratch, name=name)
    wait("no window comes up", lambda: program.look()[1])
    seconds = time.monotonic() - begun
    wait("the window is not active", lambda: any(widget.active for widget in program.look()[1]))
    xdotool("key", "alt+F4")
    program.ended()
    return seconds


def compare_start(folder, tools, scratch):
    """The first start of each finds nothing in the machine's cache and does not count."""
    names = ["emptyWindow.exe", "mover.exe"]
    times = {name: [] for name in names}
    for turn in range(6):
        for name in names:
            seconds = start_once(folder, tools, scratch, name)
            if turn:
                times[name].append(seconds)
    empty, whole = (statistics.median(times[name]) for name in names)
    print(f"Start: {whole:.2f} s, {whole / empty:.2f} times an empty window's {empty:.2f} s (medians of 5 each).")
    return 0 if whole <= LONGEST_START * empty else 1


if __name__ == "__main__":
    if len(sys.argv) < 3 or sys.argv[3:] not in ([], ["--start"]):
        sys.exit(__doc__)
    with tempfile.TemporaryDirectory() as directory:
        if "--start" in sys.argv:
            code = compare_start(sys.argv[1], sys.argv[2], directory)
        else:
            code = drive(sys.argv[1], sys.argv[2], directory)
    sys.exit(code)
