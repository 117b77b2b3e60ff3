#!/usr/bin/env python3
"""Measures conversions of seven shapes of document beside their floor, all in one run, and holds them against the marks.

usage: run.py --program PROGRAM --floor FLOOR --same-rows SAME_ROWS --data FOLDER [--sizes 1,10,100] [--repeat 3]
              [--shapes orders,flat,...]

The floor is one expat parse of the same input with empty handlers plus copying the database that came out. SQLite's
figure is that parse plus inserting the same rows there. Each is the best of the repetitions, all of them by turns. Exit
status 1 when a mark is missed.
"""
import argparse
import os
import subprocess
import sys
from dataclasses import dataclass

from make_input import SHAPES
from measure import Verdicts, convert, require, run

MAX_RATIO = {"attrs": 2.3}         # CPU time of a conversion from 10 MB on against its floor
MAX_RATIO_OF_OTHERS = 2.0
MAX_GROWTH = 1.05                  # CPU time per megabyte, from 10 MB on, each size against the one before
MAX_MEMORY_MB = 256 * 1024**2 / 1e6  # whatever the size


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True)
    parser.add_argument("--floor", required=True)
    parser.add_argument("--same-rows", required=True)
    parser.add_argument("--data", required=True)
    parser.add_argument("--sizes", default="1,10,100")
    parser.add_argument("--shapes", default=",".join(SHAPES))
    parser.add_argument("--repeat", type=int, default=3)
    return parser.parse_args()


@dataclass
class Figures:
    """The best of the repetitions; megabytes are 10**6 bytes."""
    input_mb: float
    output_mb: float
    cpu: float
    wall: float
    peak_mb: float
    floor: float
    sqlite: float

    @property
    def ratio(self):
        return self.cpu / self.floor

    @property
    def ms_per_mb(self):
        return 1000 * self.cpu / self.input_mb


def document(options, shape, size):
    xml = os.path.join(options.data, f"{shape}-{size}.xml")
    if not os.path.exists(xml):
        maker = os.path.join(os.path.dirname(os.path.abspath(__file__)), "make_input.py")
        subprocess.run([sys.executable, maker, shape, size, xml + ".part"], check=True)
        os.rename(xml + ".part", xml)
    return xml


def measure_size(options, shape, size):
    xml = document(options, shape, size)
    mdb, copy = (os.path.join(options.data, name) for name in (f"{shape}.mdb", "copy"))
    conversions, floors, rows = [], [], []
    # Short runs are repeated more often: their figures jump about by more than a percent.
    for _ in range(options.repeat * (5 if float(size) < 5 else 1)):
        if os.path.exists(mdb):
            os.remove(mdb)
        conversions.append(require(convert(options.program, xml, mdb), {0}, f"conversion of {xml}"))
        floors.append(require(run([options.floor, xml, mdb, copy]), {0}, "floor"))
        parse = require(run([options.floor, xml, os.devnull, copy]), {0}, "parse")
        inserts = require(run([options.same_rows, mdb, copy]), {0}, "same rows")
        rows.append(parse.cpu_seconds + float(inserts.output.split()[0]))
        os.remove(copy)
    figures = Figures(os.path.getsize(xml) / 1e6, os.path.getsize(mdb) / 1e6, min(m.cpu_seconds for m in conversions),
                      min(m.wall_seconds for m in conversions), max(m.peak_mb for m in conversions),
                      min(m.cpu_seconds for m in floors), min(rows))
    os.remove(mdb)
    return figures


def measure_shape(options, shape, verdict):
    before = None
    for size in options.sizes.split(","):
        f = measure_size(options, shape, size)
        print(f"{shape:>7} {f.input_mb:8.1f} {f.output_mb:9.1f} {f.cpu:7.3f} {f.wall:7.3f} {f.floor:8.3f} {f.ratio:6.2f} "
              f"{f.sqlite:9.3f} {f.cpu / f.sqlite:6.2f} {f.ms_per_mb:9.2f} {f.peak_mb:8.1f}", flush=True)
        if float(size) >= 10:
            limit = MAX_RATIO.get(shape, MAX_RATIO_OF_OTHERS)
            verdict(f"{shape}, {size} MB: CPU time, conversion to floor", f.ratio <= limit,
                    f"{f.ratio:.2f} (at most {limit})")
            if before:
                growth = f.ms_per_mb / before.ms_per_mb
                verdict(f"{shape}, {size} MB: CPU time per MB, to the size before", growth <= MAX_GROWTH,
                        f"{growth:.2f} (at most {MAX_GROWTH})")
            before = f
        verdict(f"{shape}, {size} MB: peak memory", f.peak_mb <= MAX_MEMORY_MB,
                f"{f.peak_mb:.0f} MB (at most {MAX_MEMORY_MB:.0f})")


def main():
    options = arguments()
    os.makedirs(options.data, exist_ok=True)
    verdict = Verdicts()
    print(f"{'shape':>7} {'input MB':>8} {'output MB':>9} {'CPU s':>7} {'wall s':>7} {'floor s':>8} {'ratio':>6} "
          f"{'SQLite s':>9} {'ratio':>6} {'ms per MB':>9} {'peak MB':>8}")
    for shape in options.shapes.split(","):
        measure_shape(options, shape, verdict)
    return 1 if verdict.missed else 0


if __name__ == "__main__":
    sys.exit(main())
