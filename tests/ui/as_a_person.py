"""Starts the built window on a display of its own, converts the example by mouse and keys, looks at the result, and has
the database checked.

usage: as_a_person.py PROGRAM TESTS XML

TESTS, the program of the window's tests, tells where the controls are. Nothing here depends on how fast things go: each
step is waited for, and what has not come is tried once more, as a person would.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

PATIENCE = 200  # seconds for everything
AGAIN = 20  # seconds after which something is tried once more
LEAKS = Path(__file__).with_name("leaks_of_others.supp")
END = time.monotonic() + PATIENCE


def comes(probe, seconds):
    """What `probe` gives, as soon as it is something; None when it has not come."""
    end = min(END, time.monotonic() + seconds)
    while not (result := probe()):
        if time.monotonic() > end:
            return None
        time.sleep(0.05)
    return result


def until(what, probe, action=lambda: None):
    """Does `action` until `probe` gives something."""
    while time.monotonic() < END:
        action()
        if result := comes(probe, AGAIN):
            return result
    sys.exit(f"waited in vain for {what}")


class Person:
    """Somebody before the display, with one window in front of them."""

    def __init__(self, environment, places):
        self.environment = environment
        self.places = places
        self.window = None

    def tool(self, *words):
        done = subprocess.run(["xdotool", *words], env=self.environment, capture_output=True, text=True)
        return done.stdout.strip() if done.returncode == 0 else ""

    def sees(self, title):
        return self.tool("search", "--onlyvisible", "--name", f"^{title}$").split()

    def turns_to(self, title):
        self.window = until(f"the window {title}", lambda: self.sees(title))[0]
        # Nobody manages windows here: the focus is given by hand.
        until("the focus", lambda: self.tool("getwindowfocus") == self.window,
              lambda: self.tool("windowfocus", self.window))

    def clicks(self, control):
        x, y = self.places[control]
        self.tool("mousemove", "--window", self.window, x, y, "click", "1")

    def fills(self, control, text):
        self.clicks(control)
        self.tool("key", "ctrl+a")
        self.tool("type", "--delay", "5", text)
        self.tool("key", "Tab")


def main(program, tests, xml):
    read_end, write_end = os.pipe()
    # Without -noreset a display begins anew when a program has left it, and turns away the next one meanwhile.
    display = subprocess.Popen(
        ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"],
        pass_fds=[write_end], stderr=subprocess.DEVNULL)
    window = None
    try:
        os.close(write_end)
        number = os.read(read_end, 16).decode().strip()
        if not number:
            sys.exit("no display")
        with tempfile.TemporaryDirectory(prefix="velmora-window-") as folder:
            environment = {**os.environ, "DISPLAY": ":" + number, "QT_QPA_PLATFORM": "xcb", "HOME": folder,
                           "XDG_CONFIG_HOME": folder, "LC_ALL": "C.UTF-8",
                           "LSAN_OPTIONS": f"suppressions={LEAKS}:print_suppressions=0"}
            environment.pop("WAYLAND_DISPLAY", None)
            shutil.copy(xml, Path(folder, "orders.xml"))
            told = subprocess.run([tests, "--places", "orders.xml", "places.mdb"], cwd=folder, env=environment,
                                  capture_output=True, text=True, check=True).stdout
            person = Person(environment, {name: (x, y) for name, x, y in map(str.split, told.splitlines())})

            window = subprocess.Popen([program], cwd=folder, env=environment)
            target = Path(folder, "orders.mdb")
            person.turns_to("velmora   tarnwick")

            def converts():
                person.fills("txtFILE_XML", "orders.xml")
                person.fills("txtFILE_MDB", "orders.mdb")
                person.clicks("btnConvert")

            until("the database", target.exists, converts)
            until("a look at it", lambda: person.sees("orders.mdb - velmora"),
                  lambda: person.clicks("btnOpenResult"))
            person.turns_to("velmora   tarnwick")
            until("the end", lambda: window.poll() is not None, lambda: person.clicks("btnQuit"))
            if window.returncode != 0:
                sys.exit(f"the window ended with {window.returncode}")
            tables = subprocess.run(["mdb-tables", "-1", target], capture_output=True, text=True).stdout.split()
            if sorted(tables) != ["customer", "item", "note", "order", "orders", "phone"]:
                sys.exit(f"not the tables of the example: {tables}")
            if shared := os.environ.get("VELMORA_SHARED"):
                subprocess.run([sys.executable, "-m", "jetcheck", target], cwd=Path(shared, "tools"), check=True)
    finally:
        for process in (window, display):
            if process and process.poll() is None:
                process.kill()
                process.wait()


main(*sys.argv[1:])
