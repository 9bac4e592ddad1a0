#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures every row of the performance table and exits with 1 when one is 30 % beyond its goal.

measure.py BUILD-FOLDER [--short] [--row NAME]... [--output FILE]

With --row it measures those rows only. Needs a desktop (with-desktop.sh).
"""
import argparse
import datetime
import os
import platform
import statistics
import subprocess
import sys
import tempfile
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))

# name, what the report says, goal, unit
ROWS = [
    ("start", "start to mapped and painted window, against the bare window", 1.3, "×"),
    ("start, Qt's defaults", "the same, against the bare window left at Qt's own defaults", 1.0, "×"),
    ("memory", "memory, three panels open, against the bare window", 1.2, "×"),
    ("memory, Qt's defaults", "the same, against the bare window left at Qt's own defaults", 0.7, "×"),
    ("rest", "processor time, three panels at rest, against three idle 10 Hz timers", 2, "×"),
    ("moving", "processor time, three axes moving, against changing three numbers at 10 Hz", 1.5, "×"),
    ("click idle", "click to library call with an idle worker, against one queued signal between two threads", 1.5, "×"),
    ("click busy", "click with three panels polling and calls of 5 ms: calls in front of it beyond those that waited", 0,
     ""),
    ("slow link", "stop with three panels and calls of 200 ms for ten minutes: calls in front of it", 1, ""),
    ("slow link time", "the same: click to library call, median", 250, "ms"),
    ("slow link growth", "the same at the end, against at the beginning", 0, ""),
    ("stop all idle", "key F12 to the last stop call of three axes with an idle worker", 1, "ms"),
    ("stop all busy", "the same with three panels polling and calls of 5 ms: calls in front of the first stop", 1, ""),
    ("poll", "one state poll without a change, handled by the panel, beyond the signal", 1, "µs"),
    ("poll touches", "the same: widgets touched", 0, ""),
    ("log entry", "one log entry at 100,000 entries, against at 1,000", 1.3, "×"),
    ("run count", "one run-count replacement at 100,000 entries, against at 1,000", 1.3, "×"),
    ("panels", "adding and closing a panel 1,000 times: growth of memory", 1, "MiB"),
    ("library call", "one simulated library call", 1, "µs"),
    ("model file", "a model file of 1,000 models, read, offered and listed in the add-axis dialog", 100, "ms"),
    ("workbench start", "workbench: what it adds to the start, before it is opened", 3, "ms"),
    ("workbench hidden", "the same, hidden again: what the GUI thread does for it", 0, ""),
    ("recorder answer", "recorder: one answer kept, in the worker", 1, "µs"),
    ("recorder memory 3", "recorder: memory of a day at 10 Hz, three axes, with what drawing needs", 40, "MiB"),
    ("recorder memory 8", "the same, eight axes", 100, "MiB"),
    ("recorder frame", "recorder: drawing a million samples of three axes, median", 16, "ms"),
    ("recorder frame 99", "the same: 99th percentile", 33, "ms"),
    ("sequence step", "sequence: an axis stands, to the call that starts its next step, median", 30, "ms"),
    ("grbl wire out", "Grbl board, three axes moving: use of the wire to it", 15, "%"),
    ("grbl wire in", "the same: of the wire from it", 15, "%"),
    ("grbl ripple", "the same: ripple of the speed in windows of 20 ms", 5, "%"),
    ("grbl rest", "the same library: processor time at rest, of a core", 0.5, "%"),
    ("grbl moving", "the same, three axes moving", 3, "%"),
    ("grbl stop", "stop of all axes of a Grbl board: call to its byte on the wire, median", 2, "ms"),
    ("grbl stop 99", "the same: 99th percentile", 10, "ms"),
]
ROOM = 1.3  # figures scatter; what is this much beyond its goal fails
# Which step of benchSteps measures a row; the others need processes of their own.
STEPS = {
    "click idle": "click idle", "click busy": "click busy", "slow link": "slow link", "slow link growth": "slow link",
    "slow link time": "slow link", "stop all idle": "stop all idle", "stop all busy": "stop all busy",
    "poll": "poll", "poll touches": "poll", "log entry": "log", "run count": "log", "panels": "panels",
    "library call": "library call", "model file": "model file", "recorder answer": "recorder",
    "recorder memory 3": "recorder", "recorder memory 8": "recorder", "recorder frame": "recorder",
    "recorder frame 99": "recorder", "workbench start": "recorder", "workbench hidden": "recorder",
    "sequence step": "sequence",
}


class Program:
    """A process with the attendant plug-in, from its start until its window is painted and its task is done."""

    # What the program sets for itself, for the bare window to have the same.
    SETTINGS = {"QT_XCB_GL_INTEGRATION": "none", "QT_NO_THREADED_GLIB": "1"}

    def __init__(self, build, command, task="", settings=SETTINGS):
        environment = {k: v for k, v in os.environ.items() if k not in self.SETTINGS}
        environment.update(
            QT_QPA_GENERIC_PLUGINS="attendant", QT_PLUGIN_PATH=f"{build}/bench/plugins", MOVER_BENCH_TASK=task,
            MOVER_SCENARIO=f"{HERE}/threeAxes.json", QT_LOGGING_RULES="*.debug=false", **settings)
        begin = time.clock_gettime_ns(time.CLOCK_MONOTONIC)
        self.process = subprocess.Popen(command, env=environment, stdout=subprocess.PIPE, text=True)
        too_late = threading.Timer(60, self.process.kill)
        too_late.start()
        words = self.process.stdout.readline().split()
        ready = self.process.stdout.readline()
        too_late.cancel()
        if words[:1] != ["painted"] or ready != "ready\n":
            self.process.kill()
            sys.exit(f"{command[0]} did not come up")
        self.start_ms = (int(words[1]) - begin) / 1e6

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()

    def cpu_ms(self):
        """Processor time of all its threads so far."""
        return time.clock_gettime_ns((~self.process.pid << 3) | 2) / 1e6  # clock_getcpuclockid()

    def cpu_ms_per_s(self, seconds):
        before, begin = self.cpu_ms(), time.monotonic()
        time.sleep(seconds)
        return (self.cpu_ms() - before) / (time.monotonic() - begin)

    def memory_mib(self):
        """Proportional set size."""
        with open(f"/proc/{self.process.pid}/smaps_rollup", encoding="ascii") as rollup:
            return next(int(line.split()[1]) for line in rollup if line.startswith("Pss:")) / 1024


class Bench:
    def __init__(self, build):
        self.build = build
        self.mover = [f"{build}/mover/mover"]
        self.bare = [f"{build}/bench/bareWindow"]

    def in_turns(self, rounds, subject, baselines):
        """Rounds of A B C, A B C …, every other one backwards. For each baseline: ratio, and the medians of both."""
        samples = [[] for _ in range(1 + len(baselines))]
        for number in range(rounds):
            order = list(enumerate([subject, *baselines]))
            for index, measure in order[::-1] if number % 2 else order:
                samples[index].append(measure())
        median = statistics.median
        return [(median(a / b for a, b in zip(samples[0], baseline)), median(samples[0]), median(baseline))
                for baseline in samples[1:]]

    def starts(self, rounds):
        def start(command, settings=Program.SETTINGS):
            with Program(self.build, command, settings=settings) as program:
                return program.start_ms

        results = self.in_turns(
            rounds, lambda: start(self.mover, {}),
            [lambda: start(self.bare), lambda: start(self.bare, {}), lambda: start(self.bare + ["idle", "0"])])
        _, own, least = results[2]
        names = ["start", "start, Qt's defaults"]
        remark = "{1:.0f} ms against {2:.0f} ms"
        rows = {name: (result[0], remark.format(*result)) for name, result in zip(names, results)}
        ratio, text = rows["start"]
        rows["start"] = (ratio, f"{text}; without the three panels the bare window takes {least:.0f} ms")
        return rows

    def memory(self, rounds):
        def size(command, task="", settings=Program.SETTINGS):
            with Program(self.build, command, task, settings) as program:
                time.sleep(1)
                return program.memory_mib()

        results = self.in_turns(
            rounds, lambda: size(self.mover, "rest", {}), [lambda: size(self.bare), lambda: size(self.bare, settings={})])
        return {name: (result[0], "{1:.1f} MiB against {2:.1f} MiB".format(*result))
                for name, result in zip(["memory", "memory, Qt's defaults"], results)}

    def cpu(self, rounds, settle, seconds, task, mode, name):
        def load(command, task="", settings=Program.SETTINGS):
            with Program(self.build, command, task, settings) as program:
                time.sleep(settle)
                return program.cpu_ms_per_s(seconds)

        result, = self.in_turns(rounds, lambda: load(self.mover, task, {}), [lambda: load(self.bare + [mode])])
        return {name: (result[0], "{1:.2f} ms/s against {2:.2f} ms/s".format(*result))}

    def step(self, effort, step):
        rows = {}
        # Off the screen: nothing here is about windows, and a window manager would only be in the way.
        environment = {k: v for k, v in os.environ.items() if not k.startswith("QT_")}
        environment["QT_QPA_PLATFORM"] = "offscreen"
        output = subprocess.run(
            [f"{self.build}/bench/benchSteps", str(effort), step], env=environment, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, text=True, check=True).stdout
        for line in output.splitlines():
            name, figure, remark = line.split("\t")
            rows[name] = (float(figure), remark)
        return rows

    def grbl(self, seconds):
        output = subprocess.run(
            [f"{self.build}/bench/benchGrbl", f"{self.build}/controllers/emulator/grblEmulator", "--rows", str(seconds)],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False).stdout
        lines = [line.split("\t") for line in output.splitlines()]
        return {name: (float(figure), remark) for name, figure, remark in lines}

    def row(self, name, short):
        """The row and whatever was measured along with it."""
        rounds, seconds, effort = (5, 2, 25) if short else (15, 5, 100)
        if short and STEPS.get(name) == "slow link":
            effort = 5  # half a minute of real time
        if name.startswith("start"):
            return self.starts(rounds)
        if name.startswith("grbl"):
            return self.grbl(4 if short else 10)
        if short: # what follows waits for programs to settle: fewer rounds, but longer ones
            rounds, seconds = 3, 3
        if name.startswith("memory"):
            return self.memory(min(rounds, 9))
        if name == "rest":
            # Until Qt has drawn the timers together: up to 25 ms a beat for those of 500 ms.
            return self.cpu(rounds, 6, seconds, "rest", "timers", name)
        if name == "moving":
            return self.cpu(min(rounds, 9), 1.5, seconds, "move", "numbers", name)
        return self.step(effort, STEPS[name])


def machine():
    with open("/proc/cpuinfo", encoding="ascii", errors="replace") as info:
        model = next((line.split(":")[1].strip() for line in info if line.startswith("model name")), platform.machine())
    with open("/etc/os-release", encoding="utf-8") as release:
        system = next(line.split("=")[1].strip().strip('"') for line in release if line.startswith("PRETTY_NAME"))
    qt = subprocess.run(["qmake", "-qt=5", "-query", "QT_VERSION"], stdout=subprocess.PIPE, text=True, check=False).stdout
    load = os.getloadavg()[1]
    return f"{model}, {os.cpu_count()} processors, {system}, Qt {qt.strip() or '5'}, load before the run {load:.1f}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build")
    parser.add_argument("--short", action="store_true", help="fewer rounds")
    parser.add_argument("--row", action="append", choices=[row[0] for row in ROWS], help="only this row")
    parser.add_argument("--output", help="also writes the table to this file")
    options = parser.parse_args()
    bench = Bench(os.path.abspath(options.build))
    where = machine()

    figures = {}
    failed = []
    lines = []
    for name, text, goal, unit in ROWS:
        if options.row and name not in options.row:
            continue
        if name not in figures:
            figures.update(bench.row(name, options.short))
        figure, remark = figures[name]
        beyond = round(figure, 2) > goal
        if round(figure, 2) > goal * ROOM:
            failed.append(name)
        # A difference of nothing is a whole number; ratios and times are not.
        shown = f"{figure:.2f} {unit}" if unit else f"{figure:.0f}"
        lines.append(f"| {text} | {goal} {unit} | {'**' + shown + '**' if beyond else shown} | {remark} |")
        state = "FAILED" if name in failed else "beyond" if beyond else "ok"
        print(f"{state:7}{name}: {shown} (goal {goal} {unit}) {remark}", flush=True)

    if options.output:
        with open(f"{HERE}/performance.md.in", encoding="utf-8") as template:
            document = template.read()
        document = document.replace("@DATE@", datetime.date.today().strftime("%-d %B %Y"))
        document = document.replace("@MACHINE@", where).replace("@RUN@", "short" if options.short else "full")
        document = document.replace("@ROWS@", "\n".join(lines))
        with open(options.output, "w", encoding="utf-8") as output:
            output.write(document)
    if failed:
        sys.exit(f"30 % beyond the goal: {', '.join(failed)}")


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as home:
        os.environ["XDG_CONFIG_HOME"] = home  # not the user's own settings
        main()
