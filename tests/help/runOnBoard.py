# SPDX-License-Identifier: MIT
"""runOnBoard.py EMULATOR COMMAND...: runs a kit's example on an emulated Grbl board: it must do what it says."""

import json
import os
import pathlib
import subprocess
import sys
import tempfile

emulator, *example = sys.argv[1:]
with tempfile.TemporaryDirectory() as name:
    folder = pathlib.Path(name)
    port = folder / "board"
    axes = [{"letter": letter} for letter in "XYZ"]
    boards = [{"id": 2001, "kind": "grbl", "port": str(port), "axes": axes}]
    (folder / "controllers.json").write_text(json.dumps({"library": "grbl", "controllers": boards}))
    settings = [word for setting in ("1=255", "110=1800", "120=500") for word in ("--set", setting)]
    with subprocess.Popen([emulator, "--link", port, *settings], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as board:
        board.stdout.readline()  # the port is there
        environment = os.environ | {"MOVER_CONTROLLERS": str(folder / "controllers.json")}
        done = subprocess.run([*example, "2.5"], env=environment, capture_output=True, text=True, timeout=60)
        board.stdin.close()
expected = """controller 2001
model Grbl
can run 1, stopped 1, enabled 1, homed 0
from 0 to 2.5
stands at 2.5
"""
if done.returncode != 0 or done.stdout != expected:
    sys.exit(f"{done.returncode}\n{done.stdout}{done.stderr}")
