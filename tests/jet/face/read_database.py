"""What a database consists of and holds, as lines that ours are compared with: python3 read_database.py FILE."""

import json
import sys

from jetcheck.reader import open_mdb

PROVIDER_TYPES = {1: 11, 2: 17, 3: 2, 4: 3, 5: 6, 6: 4, 7: 5, 8: 7, 9: 128, 10: 130, 11: 128, 12: 130, 15: 72, 16: 131,
                  17: 128}
COMPARED = (2, 3, 4, 10, 12)
UNLISTED = 0x30000
SYSTEM = 0x80000000


def table_type(values):
    flags = values["Flags"] & 0xFFFFFFFF
    kind = values["Type"]
    if kind == 1:
        if flags & SYSTEM:
            return "SYSTEM TABLE"
        return None if flags & UNLISTED else "ACCESS TABLE" if flags & 10 else "TABLE"
    if kind == 5:
        return None if flags & 0xFF else "VIEW"
    return {4: "PASS-THROUGH", 6: "LINK"}.get(kind)


def lines(db):
    tables = next(r.values["Id"] for r in db.table("MSysObjects").rows() if r.values["Name"] == "Tables")
    for row in db.table("MSysObjects").rows():
        kind = table_type(row.values)
        if kind and row.values["ParentId"] == tables:
            yield f"table {row.values['Name']} {kind}"
    unit = 1 if db.jet == 3 else 2
    primary = {}
    for entry in db.table_entries():
        tdef = db.table_at(entry.tdef_page, entry).tdef
        names = {c.number: c.name for c in tdef.columns}
        for ordinal, c in enumerate(tdef.columns, 1):
            size = c.size // unit if c.type == 10 else c.size if c.type in (9, 17) else 0 if c.type in (11, 12) else ""
            yield f"column {entry.name}.{c.name} {ordinal} {PROVIDER_TYPES[c.type]} {size}"
        for i in tdef.indexes:
            real = tdef.real_indexes[i.real]
            if i.kind != 2 and real.unique:
                kind = "PRIMARY KEY" if i.kind == 1 else "UNIQUE"
                yield f"constraint {entry.name} {i.name} {kind}"
                primary.setdefault((entry.name, tuple(names[n] for n, _ in real.columns)), i.name)
            if i.other_type == 1:
                continue
            for ordinal, (number, up) in enumerate(real.columns, 1):
                yield (f"index {entry.name}.{i.name} {names[number]} {ordinal} {'up' if up else 'down'}"
                       f" {i.kind == 1} {real.unique}")
    for r in db.relationships():
        update = "CASCADE" if r["grbit"] & 0x100 else "NO ACTION"
        delete = "CASCADE" if r["grbit"] & 0x1000 else "SET NULL" if r["grbit"] & 0x2000 else "NO ACTION"
        key = primary.get((r["referenced_table"], tuple(b for _, _, b in r["columns"])), "")
        yield f"constraint {r['table']} {r['name']} FOREIGN KEY"
        yield f"rule {r['name']} {key} {update} {delete}"
        for ordinal, (_, column, referenced) in enumerate(r["columns"], 1):
            sides = f"{r['table']}.{column} {r['referenced_table']}.{referenced}"
            yield f"key {r['name']} {sides} {ordinal} {update} {delete}"

    for entry in db.table_entries():
        if table_type({"Type": 1, "Flags": entry.flags}) == "TABLE":
            yield from rows(entry.name, db.table_at(entry.tdef_page, entry))


def rows(name, table):
    """In hex, since a text may hold line ends: the fields that are texts or whole numbers, the others empty."""
    for row in table.rows():
        fields = (row.values[c.name] if c.type in COMPARED else None for c in table.tdef.columns)
        text = "".join("|" if v is None else f"{v}|" for v in fields)
        yield f"row {name} " + text.encode("utf-8", "surrogatepass").hex(" ").upper()


for line in sorted(lines(open_mdb(sys.argv[1]))):
    print(json.dumps(line, ensure_ascii=False)[1:-1])
