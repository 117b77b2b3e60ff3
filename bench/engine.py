#!/usr/bin/env python3
"""Measures the engine by itself: rows inserted beside SQLite in one run, the size of an index whose keys come where they
spoil a page's common prefix, and opening a large file; holds each against its mark.

usage: engine.py --program BENCH_ENGINE --data FOLDER [--rows 500000] [--megabytes 1000] [--repeat 3]

SQLite gets the same rows and indexes through one prepared statement in one transaction, without journal and without
synchronising, and as much memory for its cache. Engines by turns; each figure is the best of the repetitions. Exit
status 1 when a mark is missed.
"""
import argparse
import os
import sys

from measure import Verdicts, require, run

MAX_CPU_RATIO = 1.0        # CPU time against SQLite: not slower
NULL_ROWS = 20_000
MAX_NULLS_GROWTH = 1.2     # size of the file with Nulls before equal keys, against one in which the keys ascend
MAX_OPEN_MS = 50
MAX_OPEN_MB = 100          # resident memory when the large file is open; its cache may grow to 64 MiB


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True)
    parser.add_argument("--data", required=True)
    parser.add_argument("--rows", type=int, default=500_000)
    parser.add_argument("--megabytes", type=int, default=1000)
    parser.add_argument("--repeat", type=int, default=3)
    return parser.parse_args()


def measured(options, *command):
    """(CPU seconds, wall seconds) as the program prints them, and what was measured of its process"""
    process = require(run([options.program, *map(str, command)]), {0}, " ".join(map(str, command)))
    cpu, wall = map(float, process.output.split())
    return cpu, wall, process


def insert_rows(options, verdict):
    print(f"{'index':>6} {'engine':>7} {'CPU s':>7} {'wall s':>7} {'rows per CPU s':>15} {'file MB':>8} {'ratio':>6}")
    for key in "long", "text":
        best = {}
        for _ in range(options.repeat):
            for engine in "sqlite", "jet4", "jet3":
                path = os.path.join(options.data, f"rows.{engine}")
                cpu, wall, _ = measured(options, "insert", engine, key, options.rows, path)
                before = best.get(engine, (cpu, wall, 0))
                best[engine] = min(cpu, before[0]), min(wall, before[1]), os.path.getsize(path) / 1e6
                os.remove(path)
        for engine, (cpu, wall, size) in best.items():
            print(f"{key:>6} {engine:>7} {cpu:7.3f} {wall:7.3f} {options.rows / cpu:15,.0f} {size:8.1f} "
                  f"{cpu / best['sqlite'][0]:6.2f}", flush=True)
        for engine in "jet4", "jet3":
            ratio, wall_ratio = (best[engine][i] / best["sqlite"][i] for i in (0, 1))
            verdict(f"inserting with two indexes ({key}), {engine} to SQLite", ratio <= MAX_CPU_RATIO,
                    f"{ratio:.2f} in CPU time (at most {MAX_CPU_RATIO:.0f}), {wall_ratio:.2f} in wall time")


def insert_nulls(options, verdict):
    path = os.path.join(options.data, "nulls.mdb")
    for engine in "jet4", "jet3":
        sizes = []
        for command in ("insert", engine, "long", 1500 + NULL_ROWS, path), ("nulls", engine, NULL_ROWS, path):
            cpu, _, _ = measured(options, *command)
            sizes.append(os.path.getsize(path) / 1e6)
            os.remove(path)
        verdict(f"{NULL_ROWS:,} Nulls before 1,500 equal keys, {engine}", sizes[1] <= sizes[0] * MAX_NULLS_GROWTH,
                f"{sizes[1]:.2f} MB (at most {sizes[0] * MAX_NULLS_GROWTH:.2f}), {cpu:.3f} s CPU")


def open_large_file(options, verdict):
    path = os.path.join(options.data, f"large-{options.megabytes}.mdb")
    if not os.path.exists(path):
        measured(options, "fill", options.megabytes, path + ".part")
        os.rename(path + ".part", path)
    runs = [measured(options, "open", path) for _ in range(options.repeat)]
    milliseconds = 1000 * min(wall for _, wall, _ in runs)
    peak = max(process.peak_mb for _, _, process in runs)
    size = os.path.getsize(path) / 1e6
    verdict(f"opening {size:.0f} MB", milliseconds <= MAX_OPEN_MS, f"{milliseconds:.1f} ms (at most {MAX_OPEN_MS})")
    verdict(f"peak memory with {size:.0f} MB open", peak <= MAX_OPEN_MB, f"{peak:.0f} MB (at most {MAX_OPEN_MB})")


def main():
    options = arguments()
    os.makedirs(options.data, exist_ok=True)
    verdict = Verdicts()
    insert_rows(options, verdict)
    insert_nulls(options, verdict)
    open_large_file(options, verdict)
    return 1 if verdict.missed else 0


if __name__ == "__main__":
    sys.exit(main())
