#!/usr/bin/env python3
"""Kills velmora.exe under Wine while it adds to a database, at one moment after another, and lets the next run put the
database right: it must be what it was before, and must pass the checker. A second run meanwhile must be refused.

usage: crash.py VELMORA.EXE FOLDER JETCHECK_FOLDER
"""

import pathlib
import shutil
import subprocess
import sys
import time

import wine

RECORDS = 60000
MOMENTS = 8


def document(path, records):
    rows = "".join(f"<row><name>name {i}</name><text>{'x' * (i % 90)}</text></row>" for i in range(records))
    path.write_text(f"<rows>{rows}</rows>")


class Program:
    def __init__(self, exe, base):
        self.exe, self.base = exe, base

    def start(self, *words):
        return subprocess.Popen(["wine", self.exe, *words, "+quiet"], cwd=self.base, env=wine.environment(self.base),
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    def run(self, *words):
        process = self.start(*words)
        text = process.communicate(timeout=300)[0].decode()
        return process.returncode, text


def rows(checker, database):
    """What the checker counts; raises when it finds anything wrong."""
    done = subprocess.run([sys.executable, "-m", "jetcheck", database], cwd=checker, capture_output=True, text=True)
    line = done.stdout.strip()
    if done.returncode != 0 or ": ok," not in line:
        raise AssertionError(f"the checker: {line[-300:]}")
    return line.split(": ok,")[1]


def main():
    exe, base, checker = (pathlib.Path(a).absolute() for a in sys.argv[1:4])
    wine.prepare(base)
    program = Program(exe, base)
    document(base / "small.xml", 10)
    document(base / "large.xml", RECORDS)
    database = base / "crash.mdb"
    before = base / "before.mdb"
    database.unlink(missing_ok=True)
    status, text = program.run("xml=small.xml", "mdb=before.mdb")
    assert status == 0, text
    expected = rows(checker, before)

    shutil.copy(before, database)
    begin = time.monotonic()
    status, text = program.run("xml=large.xml", "mdb=crash.mdb", "-recreate_database")
    assert status == 0, text
    whole = time.monotonic() - begin
    kept = refused = 0
    for moment in range(1, MOMENTS + 1):
        shutil.copy(before, database)
        killed = program.start("xml=large.xml", "mdb=crash.mdb", "-recreate_database")
        time.sleep(whole * moment / (MOMENTS + 1))
        if killed.poll() is not None:
            print(f"moment {moment}: it had ended, nothing to kill")
            continue
        killed.kill()
        told = killed.communicate()[0].decode()
        time.sleep(0.5)  # Wine's server notices the end of a process a little later
        # Opened for writing, and closed again without a record.
        (base / "none.xml").write_text("<broken>")
        status, text = program.run("xml=none.xml", "mdb=crash.mdb", "-recreate_database")
        found = rows(checker, database)
        if found != expected:
            print(f"killed at moment {moment}:{found} instead of{expected}\n{told}\n{text}")
        kept += found == expected

    shutil.copy(before, database)
    first = program.start("xml=large.xml", "mdb=crash.mdb", "-recreate_database")
    while b"Import XML" not in (line := first.stdout.readline()) and line:
        pass
    status, text = program.run("xml=small.xml", "mdb=crash.mdb", "-recreate_database")
    first.communicate()
    refused = status == 1
    if not refused:
        print(f"the second run was let in: {text}")
    print(f"then{rows(checker, database)}")
    left = sorted(p.name for p in base.glob("crash*") if p != database)
    print(f"killed {MOMENTS} times: {kept} times the last commit was there again; second run refused: {refused}; left: {left}")
    return 0 if kept == MOMENTS and refused and not left else 1


if __name__ == "__main__":
    sys.exit(main())
