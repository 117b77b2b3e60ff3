#!/usr/bin/env python3
"""Writes a document of the benchmark.

usage: make_input.py SHAPE MEGABYTES FILE

orders  records with attributes, nested records, a repeated leaf, texts
flat    one table of nine columns
deep    one tag nested 24 deep
memo    long texts
wide    200 columns
attrs   nearly all attributes
mixed   mixed content with references over 180 tables

The same shape and size always give the same bytes. check_counts.py knows the orders by heart; change both together.
"""
import sys

CITIES = ("Aarhus", "Brno", "Göteborg", "İzmir", "Łódź", "Αθήνα", "Utrecht", "Zürich")
WORDS = ("paper", "blue", "garden", "left", "parcel", "please", "ring", "side", "door", "before", "noon", "gift",
         "slip", "card", "neighbour", "cellar", "key", "rain", "hall", "wrapped", "twice", "fragile", "green", "tea")
TAGS = ("new", "gift", "export", "urgent", "returned")


class Numbers:
    """A small linear congruential generator: the same numbers on every machine and in every Python."""

    def __init__(self, seed):
        self.state = seed

    def below(self, limit):
        self.state = (self.state * 6364136223846793005 + 1442695040888963407) % 2**64
        return (self.state >> 33) % limit


def sentence(numbers, words):
    return " ".join(WORDS[numbers.below(len(WORDS))] for _ in range(words))


def order(number, numbers):
    """One order. The first carries the longest remark, as a file that has been in use for a while would."""
    parts = [f'  <order number="{number}" status="{("open", "shipped", "closed")[numbers.below(3)]}">\n'
             f"    <date>2024-{1 + numbers.below(12):02}-{1 + numbers.below(28):02}</date>\n"
             f'    <customer id="C-{numbers.below(100000)}"><name>Customer {numbers.below(100000)}</name>'
             f"<city>{CITIES[numbers.below(len(CITIES))]}</city></customer>\n"]
    for tag in range(numbers.below(4)):
        parts.append(f"    <tag>{TAGS[(number + tag) % len(TAGS)]}</tag>\n")
    for line in range(1 + numbers.below(4)):
        parts.append(f'    <item sku="{chr(65 + numbers.below(26))}{numbers.below(10000):04}" line="{line + 1}">'
                     f"<title>{sentence(numbers, 3)}</title><quantity>{1 + numbers.below(9)}</quantity>"
                     f"<price>{numbers.below(500)}.{numbers.below(100):02}</price></item>\n")
    if numbers.below(2):
        parts.append(f'    <carrier code="{numbers.below(50)}"/>\n')
    words = 60 if number == 1 or numbers.below(40) == 0 else 4 + numbers.below(16)
    parts.append(f"    <remark>{sentence(numbers, words)}</remark>\n  </order>\n")
    return "".join(parts)


def flat(_number, numbers):
    texts = "".join(f"<f{i}>{sentence(numbers, 2)}</f{i}>" for i in range(8))
    return f"<rec>{texts}<n>{numbers.below(1000000)}</n></rec>\n"


def deep(_number, numbers):
    levels = 24
    return "".join(f"<part><id>{numbers.below(1000000)}</id>" for _ in range(levels)) + "</part>" * levels + "\n"


def memo(_number, numbers):
    return f"<note><title>{sentence(numbers, 4)}</title><body>{sentence(numbers, 300)}</body></note>\n"


def wide(_number, numbers):
    return "<w>" + "".join(f"<c{i}>{numbers.below(100000)}</c{i}>" for i in range(200)) + "</w>\n"


def attrs(_number, numbers):
    return "<a " + " ".join(f'k{i}="{sentence(numbers, 1)}{numbers.below(1000)}"' for i in range(12)) + "/>\n"


def mixed(number, numbers):
    table = numbers.below(180)
    return (f'<t{table} id="{number}"><name>{sentence(numbers, 2)}</name><desc>{sentence(numbers, 3)} '
            f"<b>{sentence(numbers, 1)}</b> {sentence(numbers, 2)}</desc><ref to=\"{1 + numbers.below(number)}\"/>"
            f"<x>{numbers.below(100)}</x><x>{sentence(numbers, 1)}</x></t{table}>\n")


# Name: document element with its attributes, and what makes one record of a number that counts up from 1.
SHAPES = {"orders": ('orders shop="Harbour Street"', order)} | {
    shape.__name__: ("doc", shape) for shape in (flat, deep, memo, wide, attrs, mixed)}


def main():
    if len(sys.argv) != 4 or sys.argv[1] not in SHAPES:
        sys.exit(__doc__)
    root, record = SHAPES[sys.argv[1]]
    wanted = int(float(sys.argv[2]) * 1_000_000)
    numbers = Numbers(20240305)
    with open(sys.argv[3], "wb") as file:
        written = file.write(f'<?xml version="1.0" encoding="UTF-8"?>\n<{root}>\n'.encode())
        number = 0
        while written < wanted:
            number += 1
            written += file.write(record(number, numbers).encode("utf-8"))
        file.write(f"</{root.split()[0]}>\n".encode())


if __name__ == "__main__":
    main()
