"""Starts the built window on a display of its own, converts the example by keys and clicks, and has the database checked.

usage: as_a_person.py PROGRAM XML
"""

import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

PATIENCE = 60  # seconds
LEAKS = Path(__file__).with_name("leaks_of_others.supp")


def wait_for(what, probe):
    end = time.monotonic() + PATIENCE
    while not (result := probe()):
        if time.monotonic() > end:
            sys.exit(f"waited in vain for {what}")
        time.sleep(0.05)
    return result


def main(program, xml):
    read_end, write_end = os.pipe()
    display = subprocess.Popen(
        ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
        pass_fds=[write_end], stderr=subprocess.DEVNULL)
    window = None
    try:
        os.close(write_end)
        number = os.read(read_end, 16).decode().strip()
        if not number:
            sys.exit("no display")
        with tempfile.TemporaryDirectory(prefix="velmora-window-") as folder:
            target = Path(folder, "orders.mdb")
            environment = {**os.environ, "DISPLAY": ":" + number, "QT_QPA_PLATFORM": "xcb", "HOME": folder,
                           "XDG_CONFIG_HOME": folder, "LC_ALL": "C.UTF-8",
                           "LSAN_OPTIONS": f"suppressions={LEAKS}:print_suppressions=0"}
            environment.pop("WAYLAND_DISPLAY", None)

            def xdotool(*words):
                done = subprocess.run(["xdotool", *words], env=environment, capture_output=True, text=True)
                return done.stdout.strip() if done.returncode == 0 else ""

            window = subprocess.Popen([program], env=environment)
            wid = wait_for("the window", lambda: xdotool("search", "--onlyvisible", "--name", "^velmora   tarnwick$"))
            wid = wid.splitlines()[0]
            # Nobody manages windows here: the focus is given by hand.
            wait_for("the focus", lambda: xdotool("windowfocus", "--sync", wid) or xdotool("getwindowfocus") == wid)
            xdotool("type", "--delay", "5", xml)
            xdotool("key", "alt+m")
            xdotool("type", "--delay", "5", str(target))
            width, height = (int(line.split("=")[1]) for line in xdotool(
                "getwindowgeometry", "--shell", wid).splitlines() if line.startswith(("WIDTH", "HEIGHT")))
            # A click beside all widgets, at the lower edge, and the key for Convert.
            xdotool("mousemove", "--window", wid, str(width // 2), str(height - 3), "click", "1")
            xdotool("key", "alt+c")
            wait_for("the database", target.exists)
            wait_for("the lock to be gone", lambda: not target.with_suffix(".ldb").exists())
            xdotool("key", "alt+x")
            if window.wait(PATIENCE) != 0:
                sys.exit(f"the window ended with {window.returncode}")
            tables = subprocess.run(["mdb-tables", "-1", target], capture_output=True, text=True).stdout.split()
            if sorted(tables) != ["customer", "item", "note", "order", "orders", "phone"]:
                sys.exit(f"not the tables of the example: {tables}")
            if shared := os.environ.get("VELMORA_SHARED"):
                subprocess.run([sys.executable, "-m", "jetcheck", target], cwd=Path(shared, "tools"), check=True)
    finally:
        for process in (window, display):
            if process and process.poll() is None:
                process.terminate()
                process.wait(PATIENCE)


main(sys.argv[1], sys.argv[2])
