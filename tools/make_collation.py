#!/usr/bin/env python3
"""Writes the weight tables of the sort order "General" as C++ data.

    make_collation.py jet3_general.tsv > src/jet/index/collation_jet3.cpp
    make_collation.py jet4_general.tsv > src/jet/index/collation_jet4.cpp

Which of the two it is, the number of columns tells: byte, char, primary, accent; or first, last, class, step,
primary, secondary, kana. Numbers are hex, "-" is none, "#" begins a comment.
"""

import sys

LINE = 118
KANA_KINDS = {"f": "F", "s": "S"}


def rows(path):
    with open(path, encoding="ascii") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                yield line.rstrip("\n").split("\t")


def code(field, max_bytes):
    """A code as a number. Its length need not be kept: no code begins with a zero byte."""
    if field == "-":
        return "0"
    if len(field) > 2 * max_bytes or field.startswith("00"):
        sys.exit(f"the code {field} does not fit the table's form")
    return "0x" + field


def jet3_items(table):
    for number, (byte, _, primary, accent) in enumerate(table):
        if int(byte, 16) != number:
            sys.exit(f"row {number} is for the byte {byte}")
        yield f"{{{code(primary, 2)}, {int(accent, 16) if accent != '-' else 0}}}"
    if number != 255:
        sys.exit("the table does not cover all bytes")


def jet4_items(table):
    expected = 0
    for first, last, kind, step, primary, secondary, kana in table:
        if int(first, 16) != expected:
            sys.exit(f"a row begins at {first}, not at {expected:04X}")
        expected = int(last, 16) + 1
        # Surrogates ("?") have no place in this order's code space: they weigh nothing.
        kind = "N" if kind == "?" else KANA_KINDS[kana] if kind == "K" else kind
        yield f"{{0x{first}, 0x{last}, {kind}, {step}, {code(primary, 4)}, {code(secondary, 2)}}}"
    if expected != 0x10000:
        sys.exit("the rows do not reach FFFF")


def write(items, declaration, names):
    print("// Made by tools/make_collation.py; to change it, change the table that it reads.")
    print("// clang-format off")
    print('#include "jet/index/collation.h"')
    print("\nnamespace jet {\n")
    if names:
        print("namespace {\n\n" + names + "\n\n} // namespace\n")
    print(declaration + "{{")
    line = ""
    for item in items:
        if line and len(line) + len(item) + 2 > LINE:
            print("    " + line)
            line = ""
        line += (" " if line else "") + item + ","
    print("    " + line + "\n}};\n\n} // namespace jet")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    table = list(rows(sys.argv[1]))
    if len(table[0]) == 4:
        write(jet3_items(table), "const std::array<Jet3Weight, 256> kJet3General", "")
    else:
        names = "\n".join(f"constexpr auto {short} = WeightKind::{name};" for short, name in (
            ("P", "Plain"), ("A", "Accented"), ("F", "FullKana"), ("S", "SmallKana"), ("M", "Modifier"),
            ("H", "Hidden"), ("N", "None")))
        write(jet4_items(table), f"const std::array<Jet4WeightRow, {len(table)}> kJet4General", names)


main()
