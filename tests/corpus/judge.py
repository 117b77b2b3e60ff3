#!/usr/bin/env python3
"""Judges what a conversion left behind, without the converter: needs the shared tools on PYTHONPATH.

usage: judge.py check MDB [XML ...]     soundness, both readers' counts, values that the database lacks
       judge.py unique XML COPY         a copy of a document in which every value occurs once

"check" prints one line per problem and ends with status 1 when there is one. With documents its last line tells how
many of their values were offered, how many the database lacks and how many stand there more often than offered. In a
copy made by "unique" no value can hide the loss of another that reads the same, so that the figure is exact.
"""
import csv
import io
import subprocess
import sys
from xml.parsers import expat
from xml.sax.saxutils import quoteattr

import lossless
from jetcheck.checks import check_database
from jetcheck.reader import open_mdb


def other_reader(*command):
    return subprocess.run(command, capture_output=True, check=True).stdout.decode("utf-8")


def problems_of(path):
    """What the checker finds, and where its figures and those of mdbtools differ."""
    database = open_mdb(path)
    yield from map(str, check_database(database).problems)
    names = set(database.table_names())
    listed = set(filter(None, other_reader("mdb-tables", "-1", path).split("\n")))
    if names != listed:
        yield f"mdb-tables lists {sorted(listed)}, the checker {sorted(names)}"
    csv.field_size_limit(2**31 - 1)
    for name in sorted(names & listed):
        rows = sum(1 for _ in database.table(name).rows())
        exported = sum(1 for _ in csv.reader(io.StringIO(other_reader("mdb-export", "-H", path, name), newline="")))
        if rows != exported:
            yield f"{name}: mdb-export gives {exported} rows, the checker {rows}"


def check(path, documents):
    found = 0
    for problem in problems_of(path):
        found += 1
        print(problem)
    if documents:
        offered = sum((lossless.document_values(document)[0] for document in documents), lossless.Counter())
        stored = lossless.database_values(path)
        print(f"offered {sum(offered.values())} missing {sum((offered - stored).values())} "
              f"surplus {sum((stored - offered).values())}")
    return 1 if found else 0


def unique(source, target):
    """Every non-blank attribute value and own text of an element becomes a serial number; the structure stays."""
    parts = []
    has_text = []
    serial = 0

    def next_value():
        nonlocal serial
        serial += 1
        return f"v{serial}"

    def start(name, attributes):
        pairs = (f" {key}={quoteattr(next_value() if value.strip() else value)}" for key, value in attributes.items())
        parts.append(f"<{name}{''.join(pairs)}>")
        has_text.append(False)

    def end(name):
        has_text.pop()
        parts.append(f"</{name}>")

    def text(data):
        if data.strip() and not has_text[-1]:
            has_text[-1] = True
            parts.append(next_value())

    with open(source, "rb") as file:
        data, encoding = lossless.utf8(file.read())
    parser = expat.ParserCreate(encoding)
    parser.buffer_text = True
    parser.StartElementHandler, parser.EndElementHandler, parser.CharacterDataHandler = start, end, text
    parser.Parse(data, True)
    with open(target, "w", encoding="utf-8") as file:
        file.write("".join(parts))
    return 0


if __name__ == "__main__":
    if len(sys.argv) >= 3 and sys.argv[1] == "check":
        sys.exit(check(sys.argv[2], sys.argv[3:]))
    if len(sys.argv) == 4 and sys.argv[1] == "unique":
        sys.exit(unique(sys.argv[2], sys.argv[3]))
    sys.exit(__doc__)
