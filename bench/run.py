#!/usr/bin/env python3
"""Measures conversions of 1, 10 and 100 MB beside their floor, all in one run, and holds them against the marks.

usage: run.py --program PROGRAM --floor FLOOR --data FOLDER [--sizes 1,10,100] [--repeat 3]

The floor is one expat parse of the same input with empty handlers plus copying the database that came out. Each figure
is the best of the repetitions, conversion and floor by turns. Exit status 1 when a mark is missed.
"""
import argparse
import os
import subprocess
import sys

from measure import Verdicts, convert, require, run

MAX_RATIO = 4.0            # CPU time of the largest conversion against its floor; the aim is half of it
MAX_GROWTH = 1.15          # CPU time per megabyte, largest against smallest
MEMORY_FACTOR, MEMORY_BASE_MB = 3, 100


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True)
    parser.add_argument("--floor", required=True)
    parser.add_argument("--data", required=True)
    parser.add_argument("--sizes", default="1,10,100")
    parser.add_argument("--repeat", type=int, default=3)
    return parser.parse_args()


def measure_size(options, size):
    """(megabytes of input, best conversion CPU, best floor CPU, peak memory, megabytes of output)"""
    xml, mdb, copy = (os.path.join(options.data, name) for name in (f"orders-{size}.xml", f"orders-{size}.mdb", "copy"))
    if not os.path.exists(xml):
        maker = os.path.join(os.path.dirname(os.path.abspath(__file__)), "make_input.py")
        subprocess.run([sys.executable, maker, size, xml + ".part"], check=True)
        os.rename(xml + ".part", xml)
    conversions, floors = [], []
    # Short runs are repeated more often: their figures jump about by more than a percent.
    for _ in range(options.repeat * (10 if float(size) < 5 else 1)):
        conversions.append(require(convert(options.program, xml, mdb), {0}, f"conversion of {xml}"))
        floors.append(require(run([options.floor, xml, mdb, copy]), {0}, "floor"))
        os.remove(copy)
    return (os.path.getsize(xml) / 1e6, min(m.cpu_seconds for m in conversions), min(m.cpu_seconds for m in floors),
            max(m.peak_mb for m in conversions), os.path.getsize(mdb) / 1e6)


def main():
    options = arguments()
    os.makedirs(options.data, exist_ok=True)
    verdict = Verdicts()
    print(f"{'input MB':>9} {'output MB':>9} {'convert s':>9} {'floor s':>8} {'ratio':>6} {'ms per MB':>9} {'peak MB':>8}")
    rows = []
    for size in options.sizes.split(","):
        megabytes, cpu, floor, peak, output = measure_size(options, size)
        rows.append((megabytes, cpu, floor, peak))
        print(f"{megabytes:9.1f} {output:9.1f} {cpu:9.3f} {floor:8.3f} {cpu / floor:6.2f} {1000 * cpu / megabytes:9.2f} "
              f"{peak:8.1f}", flush=True)
    megabytes, cpu, floor, peak = rows[-1]
    growth = (cpu / megabytes) / (rows[0][1] / rows[0][0])
    verdict(f"CPU time at {megabytes:.0f} MB, conversion to floor", cpu / floor <= MAX_RATIO,
            f"{cpu / floor:.2f} (at most {MAX_RATIO:.0f}, aim {MAX_RATIO / 2:.0f})")
    verdict(f"CPU time per MB, {megabytes:.0f} MB to {rows[0][0]:.0f} MB", growth <= MAX_GROWTH,
            f"{growth:.2f} (at most {MAX_GROWTH})")
    for megabytes, _, _, peak in rows:
        limit = MEMORY_FACTOR * megabytes + MEMORY_BASE_MB
        verdict(f"peak memory at {megabytes:.0f} MB", peak <= limit, f"{peak:.0f} MB (at most {limit:.0f})")
    return 1 if verdict.missed else 0


if __name__ == "__main__":
    sys.exit(main())
