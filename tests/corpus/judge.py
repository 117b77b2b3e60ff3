#!/usr/bin/env python3
"""Judges what a conversion left behind, without the converter: needs the shared tools on PYTHONPATH.

usage: judge.py check MDB [XML ...]     soundness, both readers' counts, values that the database lacks
       judge.py unique XML COPY         a copy of a document in which every value occurs once
       judge.py typed TEXTS TYPED ...   the conversions of a document without and with typed columns

"check" prints one line per problem and ends with status 1 when there is one. With documents its last line tells how
many of their values were offered, how many the database lacks and how many stand there more often than offered. In a
copy made by "unique" no value can hide the loss of another that reads the same, so that the figure is exact.

"typed" compares pairs of databases cell by cell: each column has the narrowest type that its texts fit, and each cell
the number or instant that the text is. It prints a line per difference, and at last how many cells were typed.
"""
import csv
import datetime
import io
import re
import subprocess
import sys
from collections import Counter
from decimal import Decimal
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


NUMBER = re.compile(r"-?(0|[1-9][0-9]*)")
POINT = re.compile(r"-?(0|[1-9][0-9]*)\.[0-9]+")
DAY = re.compile(r"[0-9]{4}-[0-9]{2}-[0-9]{2}(T[0-9]{2}:[0-9]{2}:[0-9]{2})?")
TIME = re.compile(r"[0-9]{2}:[0-9]{2}:[0-9]{2}")


def meaning(text):
    """The type of a text, and what it is."""
    if text in ("true", "false"):
        return "boolean", text == "true"
    if NUMBER.fullmatch(text) and text != "-0" and -2**31 <= int(text) < 2**31:
        return "long", int(text)
    if POINT.fullmatch(text) and len(text.lstrip("-0.").replace(".", "")) <= 15:
        return "double", Decimal(text)
    try:
        if DAY.fullmatch(text) and int(text[:4]) >= 100:
            return "day", datetime.datetime.fromisoformat(text)
        if TIME.fullmatch(text):
            time = datetime.time.fromisoformat(text)
            return "time", datetime.datetime.combine(datetime.date(1899, 12, 30), time)
    except ValueError:
        pass
    return "text", text


def narrowest(texts):
    types = {meaning(text)[0] for text in texts if text}
    if types == {"long", "double"}:
        return "double"
    if len(types) != 1 or (types == {"boolean"} and not all(texts)):
        return "text"
    kind = types.pop()
    return "datetime" if kind in ("day", "time") else kind


def as_typed(text, kind):
    """What a cell of a text column becomes in a column of this type."""
    if kind in ("text", "memo"):
        return text
    return meaning(text)[1] if text else None


def comparable(cell):
    return Decimal(repr(cell)) if isinstance(cell, float) else cell


def typed_differences(texts, typed):
    """Of one table: a line for each, and the number of cells in typed columns. Rows may lie in another order."""
    kinds = {column.name: column.type_name for column in typed.columns}
    names = [column.name for column in texts.columns if column.type_name in ("text", "memo")]
    if set(kinds) != {column.name for column in texts.columns}:
        return [f"{texts.name}: other columns"], 0
    keys = [name for name in kinds if name not in names]
    rows = [row.values for row in texts.rows()]
    lines = []
    for column in texts.columns:
        if column.type_name == "text":
            wanted = narrowest([row[column.name] for row in rows])
            if kinds[column.name] != wanted:
                lines.append(f"{texts.name}.{column.name}: {kinds[column.name]}, not {wanted}")
    wanted = Counter(tuple([row[name] for name in keys] + [as_typed(row[name], kinds[name]) for name in names])
                     for row in rows)
    found = Counter(tuple([row.values[name] for name in keys] + [comparable(row.values[name]) for name in names])
                    for row in typed.rows())
    lines += [f"{texts.name}: {row} became something else" for row in wanted - found]
    lines += [f"{texts.name}: {row} was something else" for row in found - wanted]
    return lines, len(rows) * sum(kinds[name] not in ("text", "memo") for name in names)


def typed(pairs):
    found = cells = 0
    for texts, others in zip(pairs[::2], pairs[1::2]):
        texts, others = open_mdb(texts), open_mdb(others)
        if sorted(texts.table_names()) != sorted(others.table_names()):
            print("other tables")
            found += 1
            continue
        for name in texts.table_names():
            lines, count = typed_differences(texts.table(name), others.table(name))
            print("".join(line + "\n" for line in lines), end="")
            found += len(lines)
            cells += count
    print(f"typed {cells}")
    return 1 if found else 0


if __name__ == "__main__":
    if len(sys.argv) >= 3 and sys.argv[1] == "check":
        sys.exit(check(sys.argv[2], sys.argv[3:]))
    if len(sys.argv) == 4 and sys.argv[1] == "unique":
        sys.exit(unique(sys.argv[2], sys.argv[3]))
    if len(sys.argv) >= 4 and sys.argv[1] == "typed":
        sys.exit(typed(sys.argv[2:]))
    sys.exit(__doc__)
