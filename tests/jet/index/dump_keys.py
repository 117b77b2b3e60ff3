"""Prints the keys in the indexes of real databases, each with the stored values that it was made of.

    python3 dump_keys.py FILE...

One line per entry: format, key in hex, then for each column of the index: type, 1 if ascending, locale, sort version,
stored value in hex after "x" ("-" is Null).
"""

import sys

from jetcheck.reader import open_mdb
from jetcheck.tdef import MEMO


def stored_form(column, row):
    if column.type != MEMO:
        return row.stored[column.name]
    text = row.values[column.name]
    return None if text is None else text.encode("utf-16-le", "surrogatepass")


def dump(path):
    db = open_mdb(path)
    for catalog_entry in db.table_entries():
        table = db.table_at(catalog_entry.tdef_page)
        for index in table.tdef.real_indexes:
            columns = [(table.tdef.column_by_number(number), up) for number, up in index.columns]
            for entry in table.tree(index).entries():
                row = table.row_at(entry.page, entry.row)
                fields = [db.jet, entry.key.hex()]
                for column, up in columns:
                    locale, version = (tuple(column.sort_order or (1033,)) + (0,))[:2]
                    value = stored_form(column, row)
                    fields += [column.type, int(bool(up)), locale, version or 0,
                               "-" if value is None else "x" + value.hex()]
                print(*fields)


for path in sys.argv[1:]:
    dump(path)
