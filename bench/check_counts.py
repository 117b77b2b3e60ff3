#!/usr/bin/env python3
"""Holds a converted benchmark document against an independent count: rows, and characters of text, per table.

usage: check_counts.py XML MDB

Counts the document's elements with a parse of its own that knows nothing of the converter's rules, only what the
benchmark's document looks like, and reads the database with mdb-export. Exit status 0 = all figures agree.
"""
import csv
import io
import subprocess
import sys
from xml.parsers import expat

# Element -> table whose row it is. Everything else is a leaf whose text stands in its parent's row; a tag has a row of
# its own, however often it occurs in one order.
ROWS = {"orders", "order", "customer", "item", "carrier", "tag"}
KEYS = {"PKEY", "FKEY"}


def count_document(path):
    """{table: [rows, characters]} by the document: attribute values and leaf texts belong to the nearest row above."""
    counts = {name: [0, 0] for name in ROWS}
    stack = []
    text = []

    def start(name, attributes):
        stack.append(name if name in ROWS else stack[-1])
        if name in ROWS:
            counts[name][0] += 1
        counts[stack[-1]][1] += sum(len(value) for value in attributes.values())
        text.clear()

    def end(_name):
        own = "".join(text)
        if own.strip():
            counts[stack[-1]][1] += len(own)
        text.clear()
        stack.pop()

    parser = expat.ParserCreate()
    parser.buffer_text = True
    parser.StartElementHandler, parser.EndElementHandler, parser.CharacterDataHandler = start, end, text.append
    with open(path, "rb") as file:
        parser.ParseFile(file)
    return counts


def count_database(path):
    """{table: [rows, characters]} by the database; the key columns are no text of the document."""
    counts = {}
    for table in subprocess.run(["mdb-tables", "-1", path], capture_output=True, text=True, check=True).stdout.split():
        process = subprocess.Popen(["mdb-export", path, table], stdout=subprocess.PIPE)
        rows = csv.reader(io.TextIOWrapper(process.stdout, encoding="utf-8", newline=""))
        wanted = [i for i, column in enumerate(next(rows)) if column not in KEYS]
        count = characters = 0
        for row in rows:
            count += 1
            characters += sum(len(row[i]) for i in wanted)
        if process.wait() != 0:
            sys.exit(f"mdb-export failed on {table}")
        counts[table] = [count, characters]
    return counts


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    csv.field_size_limit(2**31 - 1)
    expected, found = count_document(sys.argv[1]), count_database(sys.argv[2])
    wrong = 0
    print(f"{'table':10} {'rows':>10} {'characters':>12}")
    for table in sorted(expected.keys() | found.keys()):
        should, has = expected.get(table), found.get(table)
        note = "" if should == has else f"   WRONG: the database has {has}"
        wrong += should != has
        print(f"{table:10} {(should or has)[0]:10,} {(should or has)[1]:12,}{note}")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
