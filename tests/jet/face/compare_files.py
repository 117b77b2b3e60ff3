"""Compares states of a changed database with the file that it was made from.

    python3 compare_files.py ORIGINAL STATE...

One line for each difference that the change does not explain; exit status 1 when there is one. What was changed is told
by the name of STATE: "added" got further tables and nothing else; in a file whose name begins with "extended" every row
of the original has to be there with the same values, below whatever was added; in the others only what belongs to the
system and to queries is compared.
"""

import os
import shutil
import subprocess
import sys

from jetcheck.checks import check_database
from jetcheck.reader import open_mdb

# The rows that tell of tables and relations; what else a changed file holds must not change.
CATALOG = ("MSysObjects", "MSysACEs", "MSysRelationships")


def problem_key(problem):
    # How far a row count is off stays the same while the table grows.
    text = "" if problem.code == "row-count" else problem.text
    return problem.code, problem.page, problem.table, text


def tables_of(db):
    return {e.name: db.table_at(e.tdef_page, e) for e in db.table_entries()}


def rows_of(table):
    return [{name: repr(value) for name, value in row.values.items()} for row in table.rows()]


def is_users(entry):
    return not entry.flags & 0x8000000A


def changed_tables(before, state):
    """Those whose rows and pages may differ."""
    return {name for name, t in before.items() if name in CATALOG or (state != "added" and is_users(t.entry))}


def compare_rows(before, after, changed, is_extended):
    for name, table in before.items():
        if name in changed:
            if not is_extended or name in CATALOG:
                continue
            if name not in after:
                yield f"table {name} is gone"
                continue
            found = {}
            columns = [c.name for c in table.columns]
            for row in rows_of(after[name]):
                key = tuple(row[c] for c in columns)
                found[key] = found.get(key, 0) + 1
            for row in rows_of(table):
                key = tuple(row[c] for c in columns)
                if not found.get(key):
                    yield f"table {name}: a row is gone or changed: {key}"
                else:
                    found[key] -= 1
        elif name not in after or rows_of(table) != rows_of(after[name]):
            yield f"table {name}: its rows have changed"


def compare_objects(before, after, changed):
    """What is none of the tables changed stays in MSysObjects as it was, in MSysACEs too."""
    now = {row.values["Id"]: row.values for row in after["MSysObjects"].rows()}
    aces = {repr(row.values) for row in after["MSysACEs"].rows()}
    kept = set()
    for row in before["MSysObjects"].rows():
        v = row.values
        if v["Type"] == 8 or (v["Type"] == 1 and v["Name"] in changed and v["Name"] not in CATALOG):
            continue
        kept.add(v["Id"])
        if now.get(v["Id"]) != v:
            yield f"object {v['Name']}: {v} has become {now.get(v['Id'])}"
    for row in before["MSysACEs"].rows():
        if row.values["ObjectId"] in kept and repr(row.values) not in aces:
            yield f"permission {row.values} is gone"


def compare_pages(before, context, after, ours):
    """A page of a table that nobody has touched, or of nothing, is the same byte for byte."""
    for number in range(before.pages.page_count):
        owners = context.claims.get(number, ["nothing"])
        if any(o in ("free", "global map", "database header", "usage-map records") for o in owners):
            continue
        if any(o.endswith(" of " + name) or f" of {name}." in o for o in owners for name in ours):
            continue
        if before.pages.page(number) != after.pages.page(number):
            yield f"page {number} ({', '.join(owners)}) has changed"


def exported(path, table):
    run = subprocess.run(["mdb-export", "-H", path, table], capture_output=True, check=False)
    return run.stdout.decode("utf-8", "replace").splitlines()


def compare_exports(original, path, before):
    if not shutil.which("mdb-export"):
        return
    for name, table in before.items():
        if is_users(table.entry):
            now = exported(path, name)
            for line in exported(original, name):
                if not any(other.startswith(line) for other in now):
                    yield f"table {name}: another reader no longer shows {line}"


def compare(original, path):
    before, after = open_mdb(original), open_mdb(path)
    context = check_database(before)
    known = {problem_key(p) for p in context.problems}
    for problem in check_database(after).problems:
        if problem_key(problem) not in known:
            yield problem.line()
    state = os.path.splitext(os.path.basename(path))[0]
    is_extended = state.startswith("extended")
    old, new = tables_of(before), tables_of(after)
    changed = changed_tables(old, state)
    yield from compare_rows(old, new, changed, is_extended)
    yield from compare_objects(old, new, changed)
    yield from compare_pages(before, context, after, changed)
    if is_extended:
        yield from compare_exports(original, path, old)


def main(original, *states):
    differences = [f"{os.path.basename(path)}: {text}" for path in states for text in compare(original, path)]
    print("\n".join(differences[:40]))
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
