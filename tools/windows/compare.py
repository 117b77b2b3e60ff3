#!/usr/bin/env python3
"""Converts documents with velmora.exe under Wine and with this system's velmora, and compares all that comes out:
databases, text files, the log, exit status and what is told. Only the moments at which things happened, and the way
paths are written, may differ.

usage: compare.py VELMORA.EXE VELMORA FOLDER DOCUMENT...
FOLDER takes Wine's prefix and the results; what differs stays there.
"""

import collections
import concurrent.futures
import contextlib
import datetime
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import threading

import wine

WAYS = {
    "jet4": ["mdb=out.mdb", "log=out.log"],
    "jet3": ["mdb=out.mdb", "ver=3"],
    "complete": ["mdb=out.mdb", "+complete"],
    "text": ["txt=.", "+quoted"],
}
# A database that only text files come from stands beside the program, and runs at the same time take turns with its name.
SCRATCH = threading.Lock()
DAY_ZERO = datetime.datetime(1899, 12, 30)
HEADER_DATE = range(0x72, 0x7A)  # when the file was made
STAMP = re.compile(rb"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d")


def is_moment(page_bytes, now):
    (value,) = struct.unpack("<d", page_bytes)
    return abs(value - now) < 2


def without_owners(offsets, a, b):
    """`offsets` without those of the owners' numbers: the header's moment masks two bytes of each, the same in all."""
    pairs = collections.Counter((a[i] ^ b[i], a[i + 1] ^ b[i + 1]) for i in offsets if i - 1 not in offsets)
    if not pairs:
        return offsets
    mask = pairs.most_common(1)[0][0]
    masked = {i + k for i in offsets for k in (0, 1) if (a[i] ^ b[i], a[i + 1] ^ b[i + 1]) == mask}
    return [i for i in offsets if i not in masked]


def differences(a, b):
    """Offsets at which two databases differ though no moment stands there, and nothing made of one."""
    if len(a) != len(b):
        return [min(len(a), len(b))]
    now = (datetime.datetime.now() - DAY_ZERO).total_seconds() / 86400
    found = []
    at = 0
    while at < len(a):
        if a[at : at + 4096] == b[at : at + 4096]:
            at += 4096
        elif a[at] == b[at] or at in HEADER_DATE:
            at += 1
        else:
            # The first byte that differs may be any but the last of a double's.
            begins = range(max(at - 7, 0), at + 1)
            moments = [i for i in begins if is_moment(a[i : i + 8], now) and is_moment(b[i : i + 8], now)]
            if not moments:
                found.append(at)
            at = moments[-1] + 8 if moments else at + 1
    return without_owners(found, a, b)


def as_told(text, program):
    """`text` without moments, the program's own place and the direction of separators."""
    text = STAMP.sub(b"<moment>", text).replace(b"\\", b"/")
    for path, name in (program, b"<program>"), (program.parent, b"<its folder>"):
        text = re.sub(rb"(?:[A-Z]:)?" + re.escape(os.fsencode(path)), name, text)
    return re.sub(rb"temporary_import_database(_\d+)?", b"temporary_import_database", text)


def run(command, folder, environment=None):
    done = subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, timeout=300,
                          env=environment)
    return done.returncode, done.stdout, done.stderr


def compare(exe, program, base, document, way):
    """The name of a conversion, and what is different."""
    with SCRATCH if way == "text" else contextlib.nullcontext():
        return compare_alone(exe, program, base, document, way)


def compare_alone(exe, program, base, document, way):
    name = f"{document.name}-{way}"
    folders = {}
    results = {}
    for system in "linux", "windows":
        folder = folders[system] = base / system / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        shutil.copy(document, folder / document.name)
        command = [f"xml={document.name}", *WAYS[way], "+quiet"]
        if system == "linux":
            status, *told = run([program, *command], folder)
            results[system] = (status, *(as_told(text, program) for text in told))
        else:
            status, *told = run(["wine", exe, *command], folder, wine.environment(base))
            results[system] = (status, *(as_told(text, exe) for text in told))
    problems = []
    if results["linux"] != results["windows"]:
        for part, one, other in zip(("status", "output", "errors"), results["linux"], results["windows"]):
            if one != other:
                lines = (set(text.splitlines()) if part != "status" else {text} for text in (one, other))
                here, there = lines
                problems.append(f"{part}: {sorted(here - there)!r:.300} became {sorted(there - here)!r:.300}")
    names = {s: sorted(p.name for p in folders[s].iterdir()) for s in folders}
    if names["linux"] != names["windows"]:
        problems.append(f"files: {names['linux']} became {names['windows']}")
    for file in set(names["linux"]) & set(names["windows"]):
        one, other = ((folders[s] / file).read_bytes() for s in ("linux", "windows"))
        if file.endswith(".mdb"):
            offsets = differences(one, other)
            if offsets:
                problems.append(f"{file}: {len(offsets)} bytes differ, the first at {offsets[0]} ({len(one)}, {len(other)} bytes)")
        elif as_told(one, program) != as_told(other, exe):
            problems.append(f"{file}: differs")
    if not problems:
        for folder in folders.values():
            shutil.rmtree(folder)
    return name, problems


def main():
    exe, program, base = (pathlib.Path(a).absolute() for a in sys.argv[1:4])
    documents = [pathlib.Path(a).absolute() for a in sys.argv[4:]]
    for folder in exe.parent, program.parent:
        for left in folder.glob("temporary_import_database*.mdb"):  # by a run that was killed; the next one tells of it
            left.unlink()
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        jobs = [pool.submit(compare, exe, program, base, d, w) for d in documents for w in WAYS]
        for job in jobs:
            name, problems = job.result()
            failed += bool(problems)
            for problem in problems:
                print(f"{name}: {problem}")
    print(f"{len(jobs)} conversions, {failed} differ between the systems")
    return 1 if failed or not jobs else 0


if __name__ == "__main__":
    with wine.session(pathlib.Path(sys.argv[3]).absolute()):
        sys.exit(main())
