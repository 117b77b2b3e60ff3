#!/usr/bin/env python3
"""Kills velmora.exe under Wine while it adds to a database or replaces it, at one moment after another, and lets the
next run put the database right: it must have all of the records or none, and must pass the checker. A second run
meanwhile must be refused; of two that race for the database, one killed or none, each must have brought what its exit
status says.

usage: crash.py VELMORA.EXE FOLDER JETCHECK_FOLDER
"""

import pathlib
import re
import shutil
import subprocess
import sys
import time

import wine

RECORDS = 60000
MOMENTS = 8
RACES = 12


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


def count(counted):
    return int(re.search(r"(\d+) rows", counted).group(1))


def main():
    exe, base, checker = (pathlib.Path(a).absolute() for a in sys.argv[1:4])
    program = Program(exe, base)
    document(base / "small.xml", 10)
    document(base / "large.xml", RECORDS)
    document(base / "longest.xml", 5 * RECORDS)
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
    kept = kills = 0
    for moment in range(1, MOMENTS + 1):
        shutil.copy(before, database)
        replaces = moment % 2 == 0
        killed = program.start("xml=large.xml", "mdb=crash.mdb", ("-", "+")[replaces] + "recreate_database")
        time.sleep(whole * moment / (MOMENTS + 1))
        if killed.poll() is not None:
            print(f"moment {moment}: it had ended, nothing to kill")
            continue
        killed.kill()
        kills += 1
        told = killed.communicate()[0].decode()
        time.sleep(0.5)  # Wine's server notices the end of a process a little later
        # Opened for writing, and closed again without a record.
        (base / "none.xml").write_text("<broken>")
        status, text = program.run("xml=none.xml", "mdb=crash.mdb", "-recreate_database")
        found = rows(checker, database)
        # All or nothing: behind the commit the end of the program changes nothing.
        if found == expected or count(found) == count(expected) + RECORDS + 1 - replaces * 11:
            kept += 1
        else:
            print(f"killed at moment {moment}:{found} instead of{expected}\n{told}\n{text}")

    shutil.copy(before, database)
    first = program.start("xml=longest.xml", "mdb=crash.mdb", "-recreate_database")
    while b"Import XML" not in (line := first.stdout.readline()) and line:
        pass
    status, text = program.run("xml=small.xml", "mdb=crash.mdb", "-recreate_database")
    first.communicate()
    refused = first.returncode == 0 and status == 1 and "3045" in text
    if not refused:
        print(f"of two runs the first ended with {first.returncode}, the second with {status}: {text}")

    kept_word = 0
    for race in range(RACES):
        shutil.copy(before, database)
        first = program.start("xml=large.xml", "mdb=crash.mdb", "-recreate_database")
        time.sleep(whole * (race % 4) / 8)
        second = program.start("xml=small.xml", "mdb=crash.mdb", "-recreate_database")
        if race % 2:
            time.sleep(whole * race / RACES / 2)
            first.kill()
        told = [run.communicate(timeout=300)[0].decode() for run in (first, second)]
        time.sleep(0.5)
        program.run("xml=none.xml", "mdb=crash.mdb", "-recreate_database")
        # Whichever came first has the database. Who ends well has brought its records, who was refused none, who was
        # killed all or none.
        promised = sum(n + 1 for n, run in ((RECORDS, first), (10, second)) if run.returncode == 0)
        added = count(rows(checker, database)) - count(expected)
        if added == promised or (first.returncode < 0 and added == promised + RECORDS + 1):
            kept_word += 1
        else:
            print(f"race {race}: {added} rows came, {promised} were promised\n{told}")
    program.run("xml=small.xml", "mdb=crash.mdb", "+recreate_database")  # which takes what a replacement has left
    left = sorted(p.name for p in base.glob("crash*") if p != database)
    print(f"killed {kills} times: {kept} times a commit was there whole; second run refused: {refused}; "
          f"{kept_word} of {RACES} races left what was promised; left: {left}")
    return 0 if kept == kills > MOMENTS // 2 and refused and kept_word == RACES and not left else 1


if __name__ == "__main__":
    with wine.session(pathlib.Path(sys.argv[2]).absolute()):
        sys.exit(main())
