#!/usr/bin/env python3
"""Measures runs over many small files, one wildcard each, with and without text files, and holds them against the marks.

usage: files.py --program PROGRAM --data FOLDER [--files 5000] [--repeat 3]

Each figure is the best CPU time of the repetitions, divided by the number of files. A fifth of the files shows whether
the time grows faster than their number. Exit status 1 when a mark is missed.
"""
import argparse
import os
import shutil
import sys

from make_input import Numbers, order
from measure import Verdicts, convert, require

MAX_MS = 1.5       # CPU time per file
MAX_GROWTH = 1.15  # CPU time per file, all files against a fifth of them


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--program", required=True)
    parser.add_argument("--data", required=True)
    parser.add_argument("--files", type=int, default=5000)
    parser.add_argument("--repeat", type=int, default=3)
    return parser.parse_args()


def make_files(folder, count):
    """`count` documents of one order each, in a folder of their own."""
    if os.path.isdir(folder):
        return
    os.makedirs(folder + ".part", exist_ok=True)
    numbers = Numbers(20240305)
    for number in range(1, count + 1):
        with open(os.path.join(folder + ".part", f"order-{number:05}.xml"), "wb") as file:
            file.write(("<orders>\n" + order(number, numbers) + "</orders>\n").encode("utf-8"))
    os.rename(folder + ".part", folder)


def milliseconds_per_file(options, count, texts):
    sources = os.path.join(options.data, f"files-{count}")
    make_files(sources, count)
    exported = os.path.join(options.data, "files-txt")
    extra = [f"txt={exported}", "delimiter=;", "+append"] if texts else []
    mdb = os.path.join(options.data, "files.mdb")
    runs = []
    for _ in range(options.repeat):
        shutil.rmtree(exported, ignore_errors=True)
        runs.append(require(convert(options.program, os.path.join(sources, "*.xml"), mdb, *extra), {0},
                            f"{count} files"))
    shutil.rmtree(exported, ignore_errors=True)
    best = min(run.cpu_seconds for run in runs)
    print(f"      {count} files: {best:.3f} s CPU, {min(run.wall_seconds for run in runs):.3f} s wall, peak "
          f"{max(run.peak_mb for run in runs):.1f} MB, output {os.path.getsize(mdb) / 1e6:.1f} MB", flush=True)
    return 1000 * best / count


def main():
    options = arguments()
    os.makedirs(options.data, exist_ok=True)
    verdict = Verdicts()
    for texts in False, True:
        kind = "with text files" if texts else "without text files"
        few = milliseconds_per_file(options, options.files // 5, texts)
        all_of_them = milliseconds_per_file(options, options.files, texts)
        verdict(f"CPU time per file, {options.files} files {kind}", all_of_them <= MAX_MS,
                f"{all_of_them:.2f} ms (at most {MAX_MS})")
        verdict(f"CPU time per file, {options.files} to {options.files // 5} files {kind}",
                all_of_them / few <= MAX_GROWTH, f"{all_of_them / few:.2f} (at most {MAX_GROWTH})")
    return 1 if verdict.missed else 0


if __name__ == "__main__":
    sys.exit(main())
