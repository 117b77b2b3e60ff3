"""Wine with a prefix of its own, below the folder of the results."""

import os
import subprocess


def environment(base):
    return {**os.environ, "WINEPREFIX": str(base / "prefix"), "WINEDEBUG": "-all", "WINEDLLOVERRIDES": "mscoree,mshtml="}


def prepare(base):
    """Makes the prefix at once: programs that start together would each begin to."""
    base.mkdir(parents=True, exist_ok=True)
    subprocess.run(["wine", "cmd", "/c", "exit"], env=environment(base), check=True, timeout=300,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
