"""Runs a program and measures it: CPU seconds, peak resident memory, wall time."""
import os
import subprocess
import sys
import time
from dataclasses import dataclass


@dataclass
class Measured:
    status: int         # exit status; minus the signal's number when a signal ended it
    cpu_seconds: float  # user and system time
    peak_mb: float      # largest resident memory, 10**6 bytes
    wall_seconds: float
    output: str         # standard output and standard error, as they came


def run(command, environment=None):
    """Runs `command`, a list, without a shell and without standard input."""
    begin = time.monotonic()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               env={**os.environ, **(environment or {})})
    output = process.stdout.read()
    _, state, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(state)
    return Measured(process.returncode, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024 / 1e6,
                    time.monotonic() - begin, output.decode("utf-8", "replace"))


def convert(program, xml, mdb, *options, environment=None):
    """One quiet conversion into a new database."""
    return run([program, f"xml={xml}", f"mdb={mdb}", "+quiet", *options], environment)


def require(measured, statuses, what):
    """Ends the script with the program's output when it did not end with one of `statuses`."""
    if measured.status not in statuses:
        sys.exit(f"{what}: ended with status {measured.status}\n{measured.output[-4000:]}")
    return measured


class Verdicts:
    """Prints one line per mark and remembers whether one was missed."""

    def __init__(self):
        self.missed = 0

    def __call__(self, name, kept, figure):
        self.missed += not kept
        print(f"{'PASS' if kept else 'over'}  {name}: {figure}", flush=True)
