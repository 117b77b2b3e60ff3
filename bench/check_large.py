#!/usr/bin/env python3
"""The large inputs: converts them, judges the results independently, prints the figures. Takes minutes and gigabytes.

usage: check_large.py --program PROGRAM --sanitized PROGRAM --data FOLDER [--only NAME]

PROGRAM is the optimised build, the other one the build under the sanitizers. VELMORA_SHARED names the folder with the
shared corpus and checker (../shared beside the project when unset). Exit status 1 when a mark is missed.
"""
import argparse
import hashlib
import os
import subprocess
import sys

from measure import Verdicts, convert, require, run

HERE = os.path.dirname(os.path.abspath(__file__))
SHARED = os.environ.get("VELMORA_SHARED") or os.path.join(os.path.dirname(os.path.dirname(HERE)), "shared")

MAX_PATHS_RATIO = 12.0
BOMB_SECONDS, BOMB_MB = 1.0, 256
HOSTILE_SECONDS = 60


def figures(measured):
    return f"{measured.cpu_seconds:.2f} s CPU, peak {measured.peak_mb:.0f} MB"


def sound(verdict, name, mdb):
    """Holds a database against the shared checker."""
    checked = run([sys.executable, "-m", "jetcheck", mdb],
                  {"PYTHONPATH": os.path.join(SHARED, "tools"), "PYTHONDONTWRITEBYTECODE": "1"})
    lines = checked.output.strip().splitlines()
    verdict(f"{name}: the checker finds nothing", checked.status == 0, lines[-1] if lines else "no output")


def rows(mdb, table):
    """Number of rows that mdb-export gives."""
    process = subprocess.Popen(["mdb-export", "-H", mdb, table], stdout=subprocess.PIPE)
    count = sum(chunk.count(b"\n") for chunk in iter(lambda: process.stdout.read(1 << 20), b""))
    process.wait()
    return count


def hundred_megabytes(options, verdict):
    xml, mdb = (os.path.join(options.data, f"orders-100.{ending}") for ending in ("xml", "mdb"))
    subprocess.run([sys.executable, os.path.join(HERE, "make_input.py"), "orders", "100", xml], check=True)
    done = require(convert(options.program, xml, mdb), {0}, "100 MB")
    counted = run([sys.executable, os.path.join(HERE, "check_counts.py"), xml, mdb])
    print(counted.output, end="")
    verdict("100 MB: rows and characters agree with an independent count", counted.status == 0, figures(done))
    sound(verdict, "100 MB", mdb)


def many_children(options, verdict):
    count = 5_000_000
    xml, mdb = (os.path.join(options.data, f"children.{ending}") for ending in ("xml", "mdb"))
    with open(xml, "w", encoding="ascii") as file:
        # A list is imported where its parent has a column of its own besides.
        file.write("<list><title>all</title>\n")
        for begin in range(0, count, 10_000):
            file.write("".join(f"<entry>{number}</entry>\n" for number in range(begin, begin + 10_000)))
        file.write("</list>\n")
    done = require(convert(options.program, xml, mdb), {0}, "5 million children")
    found = rows(mdb, "entry")
    verdict("5 million children: every one is a row", found == count, f"{found:,} rows, {figures(done)}")


def deep(options, verdict):
    levels = 100_000
    xml, mdb = (os.path.join(options.data, f"deep.{ending}") for ending in ("xml", "mdb"))
    with open(xml, "w", encoding="ascii") as file:
        file.write("<a>" * levels + "1" + "</a>" * levels + "\n")
    # A table per level is more than a database can hold, and one for all of them is not.
    refused = require(convert(options.program, xml, mdb), {1}, "100,000 levels")
    verdict("100,000 levels, a table for each: refused before the first table", not os.path.exists(mdb)
            or rows_in_all(mdb) == 0, figures(refused))
    shared = require(convert(options.program, xml, mdb, "+one_table_per_element"), {0}, "100,000 levels in one table")
    # The innermost element is a leaf: a column of the one around it.
    found = rows(mdb, "a")
    verdict("100,000 levels, one table", found == levels - 1, f"{found:,} rows, {figures(shared)}")
    sound(verdict, "100,000 levels", mdb)


def rows_in_all(mdb):
    tables = subprocess.run(["mdb-tables", "-1", mdb], capture_output=True, text=True).stdout.split()
    return sum(rows(mdb, table) for table in tables)


def paths_document(path, tables, columns):
    """`tables` records of different names, each with `columns` leaves of its own: tables * (columns + 1) + 1 paths."""
    with open(path, "w", encoding="ascii") as file:
        file.write("<doc>\n")
        for table in range(tables):
            leaves = "".join(f"<c{column}>{column}</c{column}>" for column in range(columns))
            file.write(f"<t{table}>{leaves}</t{table}>\n")
        file.write("</doc>\n")


def many_paths(options, verdict):
    seconds = {}
    for tables in (10, 100):
        xml, mdb = (os.path.join(options.data, f"paths-{tables}.{ending}") for ending in ("xml", "mdb"))
        paths_document(xml, tables, 199)
        # One record per table, so all but nothing of the time goes into loading, analysis and the two schema passes.
        seconds[tables] = min(require(convert(options.program, xml, mdb), {0}, f"{tables * 200} paths").cpu_seconds
                              for _ in range(3))
        sound(verdict, f"{tables * 200:,} paths", mdb)
    ratio = seconds[100] / seconds[10]
    verdict("20,000 paths to 2,000 paths", ratio <= MAX_PATHS_RATIO,
            f"{ratio:.1f} (at most {MAX_PATHS_RATIO:.0f}; {seconds[100]:.2f} s and {seconds[10]:.2f} s)")


def nested_paths(options, verdict):
    """100,000 distinct paths below each other: more tables than a database holds, so only loading and analysis run."""
    xml, mdb = (os.path.join(options.data, f"nested.{ending}") for ending in ("xml", "mdb"))
    with open(xml, "w", encoding="ascii") as file:
        file.write("".join(f"<n{level}>" for level in range(100_000)))
        file.write("".join(f"</n{level}>" for level in reversed(range(100_000))))
    done = require(convert(options.program, xml, mdb), {1}, "100,000 nested paths")
    verdict("100,000 nested paths end in a clear error", "Error" in done.output, figures(done))


def long_text(options, verdict):
    text = "".join(f"{number:07} " for number in range(20 * 1024 * 1024 // 8))
    xml, mdb = (os.path.join(options.data, f"text.{ending}") for ending in ("xml", "mdb"))
    with open(xml, "w", encoding="ascii") as file:
        file.write(f"<doc><record><text>{text}</text><number>1</number></record></doc>\n")
    done = require(convert(options.program, xml, mdb), {0}, "20 MB text")
    sys.path.insert(0, os.path.join(SHARED, "tools"))
    sys.dont_write_bytecode = True
    from jetcheck.reader import open_mdb
    stored = [row.values["text"] for row in open_mdb(mdb).table("record").rows()]
    same = len(stored) == 1 and hashlib.sha256(stored[0].encode()).digest() == hashlib.sha256(text.encode()).digest()
    verdict("20 MB text: comes back as it was", same, figures(done))
    sound(verdict, "20 MB text", mdb)


def hostile(options, verdict):
    folder = os.path.join(options.data, "hostile")
    subprocess.run([sys.executable, os.path.join(SHARED, "corpus", "hostile", "make-large.py"), folder], check=True)
    for name in sorted(os.listdir(folder)):
        if not name.endswith(".xml"):
            continue
        xml, mdb = os.path.join(folder, name), os.path.join(options.data, "hostile.mdb")
        for label, program in (("optimised", options.program), ("sanitized", options.sanitized)):
            if os.path.exists(mdb):
                os.remove(mdb)
            done = convert(program, xml, mdb)
            ended = done.status in (0, 1, 2, 3) and "Done" in done.output and done.wall_seconds < HOSTILE_SECONDS
            verdict(f"hostile {name}, {label}: ends by itself", ended, f"status {done.status}, {figures(done)}")
            if not ended:
                print(done.output[-2000:])
            if os.path.exists(mdb):
                sound(verdict, f"hostile {name}, {label}", mdb)
            if name == "quadratic-blowup.xml" and label == "optimised":
                verdict("entity bomb: stopped at once", done.wall_seconds <= BOMB_SECONDS and done.peak_mb <= BOMB_MB,
                        f"{done.wall_seconds:.2f} s, peak {done.peak_mb:.0f} MB")


CHECKS = {"100mb": hundred_megabytes, "children": many_children, "deep": deep, "paths": many_paths,
          "nested": nested_paths, "text": long_text, "hostile": hostile}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True)
    parser.add_argument("--sanitized", required=True)
    parser.add_argument("--data", required=True)
    parser.add_argument("--only", choices=sorted(CHECKS))
    options = parser.parse_args()
    if not os.path.isdir(SHARED):
        sys.exit(f"VELMORA_SHARED names no folder: {SHARED}")
    os.makedirs(options.data, exist_ok=True)
    verdict = Verdicts()
    for name, check in CHECKS.items():
        if options.only in (None, name):
            check(options, verdict)
    return 1 if verdict.missed else 0


if __name__ == "__main__":
    sys.exit(main())
