"""Holds a summary against its schema; prints what it says of the run in one line.

usage: check_summary.py SCHEMA SUMMARY

Knows the words of JSON Schema that the schema uses, and fails at any other.
"""

import json
import sys

TYPES = {"object": dict, "array": list, "string": str, "integer": int, "number": (int, float), "boolean": bool,
         "null": type(None)}


def has_type(value, name):
    return isinstance(value, TYPES[name]) and not (isinstance(value, bool) and name in ("integer", "number"))


def check(value, schema, at):
    unknown = set(schema) - {"$schema", "title", "description", "type", "const", "enum", "required", "properties",
                             "additionalProperties", "items", "minimum"}
    assert not unknown, f"{at}: the schema has {unknown}"
    types = schema.get("type", list(TYPES))
    assert any(has_type(value, name) for name in ([types] if isinstance(types, str) else types)), f"{at}: {value!r}"
    assert value == schema.get("const", value), f"{at}: {value!r}"
    assert value in schema.get("enum", [value]), f"{at}: {value!r}"
    if isinstance(value, (int, float)):
        assert value >= schema.get("minimum", value), f"{at}: {value!r}"
    if isinstance(value, dict):
        missing = set(schema.get("required", [])) - set(value)
        assert not missing, f"{at}: without {missing}"
        others = schema.get("additionalProperties", {})
        for name, member in value.items():
            inner = schema.get("properties", {}).get(name, others)
            assert inner is not False, f"{at}: {name} is not in the schema"
            check(member, inner, f"{at}.{name}")
    if isinstance(value, list):
        for number, element in enumerate(value):
            check(element, schema.get("items", {}), f"{at}[{number}]")


def once(pairs):
    assert len(dict(pairs)) == len(pairs), "a name stands twice"
    return dict(pairs)


summary = json.load(open(sys.argv[2], encoding="utf-8", errors="strict"), object_pairs_hook=once)
check(summary, json.load(open(sys.argv[1], encoding="utf-8")), "summary")
print(summary["status"], *(f"{f['path'].rsplit('/')[-1]}:{f['status']}:{f['records']}"
                           + (f":{f['values']['offered']}-{f['values']['lost']}" if f["values"] else "")
                           for f in summary["files"]),
      *(f"{t['name']}:{t['records']}({','.join(c['name'] + ' ' + c['type'] for c in t['columns'])})"
        for t in summary["tables"]),
      *(f"{w['kind']}:{w['count']}" for w in summary["warnings"]), *(e["number"] for e in summary["errors"]))
