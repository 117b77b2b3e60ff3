#!/usr/bin/env python3
"""Tries with velmora.exe under Wine what Windows does in its own way: long paths, shares, names of any language,
wildcards without case, the local time, the terminal's characters, and Ctrl-C there.

usage: system.py VELMORA.EXE FOLDER JETCHECK_FOLDER
"""

import contextlib
import datetime
import fcntl
import os
import pathlib
import pty
import re
import select
import shutil
import signal
import subprocess
import sys
import termios
import time

import wine

DOCUMENT = "<rows><row><name>Łódź</name></row><row><name>Ærø</name></row></rows>"


class Tries:
    def __init__(self, exe, base, checker):
        self.exe, self.base, self.checker = exe, base, checker

    def run(self, *words, folder=None, **environment):
        done = subprocess.run(["wine", self.exe, *words, "+quiet"], cwd=folder or self.base, stdin=subprocess.DEVNULL,
                              env={**wine.environment(self.base), **environment}, capture_output=True, timeout=120)
        assert done.returncode == 0, f"{words}: {done.returncode} {done.stdout.decode()} {done.stderr.decode()}"
        return done.stdout.decode()

    def expect_sound(self, database):
        done = subprocess.run([sys.executable, "-m", "jetcheck", database], cwd=self.checker, capture_output=True,
                              text=True)
        assert done.returncode == 0 and ": ok," in done.stdout, done.stdout

    def long_paths(self):
        folder = self.base / "long"
        deep = folder.joinpath(*["a folder with a name of forty characters"] * 8)
        deep.mkdir(parents=True)
        (deep / "in.xml").write_text(DOCUMENT)
        inside = str(deep.relative_to(self.base)).replace("/", "\\")
        self.run(f"xml={inside}\\*.xml", f"mdb={inside}\\out.mdb", f"log={inside}\\out.log", f"txt={inside}\\texts")
        self.expect_sound(deep / "out.mdb")
        assert (deep / "out.log").exists() and list((deep / "texts").iterdir()), list(deep.iterdir())

    def shares(self):
        """Wine looks for them beside its drives."""
        share = self.base / "prefix/dosdevices/unc/server/share"
        share.mkdir(parents=True, exist_ok=True)
        (share / "in.xml").write_text(DOCUMENT)
        self.run(r"xml=\\server\share\in.xml", r"mdb=\\server\share\out.mdb")
        self.expect_sound(share / "out.mdb")
        self.run("xml=//server/share/*.xml", "mdb=//server/share/out.mdb", "-recreate_database")
        self.expect_sound(share / "out.mdb")

    def names(self):
        folder = self.base / "names"
        folder.mkdir()
        for name in "日本.XML", "Zürich.xml", "no.txt":
            (folder / name).write_text(DOCUMENT)
        told = self.run("xml=names/*.xml", "mdb=names/Ελλάδα.mdb")
        self.expect_sound(folder / "Ελλάδα.mdb")
        assert "日本.XML" in told and "Zürich.xml" in told and "no.txt" not in told, told

    def local_time(self):
        (self.base / "zone.xml").write_text(DOCUMENT)
        for zone, hours in ("Asia/Tokyo", 9), ("America/Phoenix", -7):
            before = datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0)
            (self.base / "zone.log").unlink(missing_ok=True)
            self.run("xml=zone.xml", "mdb=zone.mdb", "log=zone.log", TZ=zone)
            after = datetime.datetime.now(datetime.timezone.utc)
            told = re.search(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", (self.base / "zone.log").read_text()).group()
            moment = datetime.datetime.fromisoformat(told + f"{hours:+03d}:00")
            assert before <= moment <= after, f"{zone}: {told}"

    @contextlib.contextmanager
    def on_terminal(self, *words):
        """Gives a process, and what reads the terminal until some text has come."""
        master, slave = pty.openpty()
        process = subprocess.Popen(["wine", self.exe, *words], cwd=self.base, env=wine.environment(self.base),
                                   stdin=slave, stdout=slave, stderr=slave, start_new_session=True,
                                   preexec_fn=lambda: fcntl.ioctl(slave, termios.TIOCSCTTY, 0))
        os.close(slave)
        seen = b""

        def until(text):
            nonlocal seen
            end = time.monotonic() + 120
            while text not in seen and time.monotonic() < end:
                if select.select([master], [], [], 1)[0]:
                    try:
                        seen += os.read(master, 65536)
                    except OSError:
                        break
            assert text in seen, seen.decode(errors="replace")

        try:
            yield process, until, lambda: os.write(master, b"\x03")
        finally:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            os.close(master)

    def terminal(self):
        (self.base / "Łódź.xml").write_text(DOCUMENT)
        with self.on_terminal("xml=Łódź.xml", "mdb=terminal.mdb", "+quiet") as (process, until, _):
            until("Łódź.xml".encode())
            assert process.wait(60) == 0

    def interrupt(self):
        rows = "".join(f"<row><name>name {i}</name></row>" for i in range(1000000))
        (self.base / "long.xml").write_text(f"<rows>{rows}</rows>")
        with self.on_terminal("xml=long.xml", "mdb=interrupted.mdb", "+quiet") as (process, until, press):
            until(b"Import XML")
            press()
            status = process.wait(60)
        assert status == 130, status
        self.expect_sound(self.base / "interrupted.mdb")


def main():
    exe, base, checker = (pathlib.Path(a).absolute() for a in sys.argv[1:4])
    tries = Tries(exe, base, checker)
    failed = []
    for name in "long_paths", "shares", "names", "local_time", "terminal", "interrupt":
        try:
            getattr(tries, name)()
            print(f"{name}: as it should be")
        except (AssertionError, OSError, subprocess.TimeoutExpired) as problem:
            failed.append(name)
            print(f"{name}: {problem!r:.2000}")
    return 1 if failed else 0


if __name__ == "__main__":
    FOLDER = pathlib.Path(sys.argv[2]).absolute()
    shutil.rmtree(FOLDER, ignore_errors=True)
    with wine.session(FOLDER):
        sys.exit(main())
