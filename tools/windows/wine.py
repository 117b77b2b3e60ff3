"""Wine with a prefix of its own, below the folder of the results."""

import contextlib
import os
import subprocess


def environment(base):
    return {**os.environ, "WINEPREFIX": str(base / "prefix"), "WINEDEBUG": "-all", "WINEDLLOVERRIDES": "mscoree,mshtml="}


@contextlib.contextmanager
def session(base):
    """Makes the prefix, and keeps Wine's server meanwhile. Programs that start together would each begin to make it, and
    what the first one starts beside itself would have its output, and end with it when it is killed."""
    base.mkdir(parents=True, exist_ok=True)
    shell = subprocess.Popen(["wine", "cmd", "/q"], env=environment(base), cwd=base, stdin=subprocess.PIPE,
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    try:
        shell.stdin.write(b"echo ready\r\n")
        shell.stdin.flush()
        while b"ready" not in (line := shell.stdout.readline()):
            assert line, "Wine does not start"
        yield
    finally:
        shell.communicate(b"exit\r\n", timeout=60)
