#!/usr/bin/env python3
"""Writes the benchmark's document: orders with attributes, nested records, repeated leaves and texts.

usage: make_input.py MEGABYTES FILE

The same size always gives the same bytes. check_counts.py knows the shape by heart; change both together.
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


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    wanted = int(float(sys.argv[1]) * 1_000_000)
    numbers = Numbers(20240305)
    with open(sys.argv[2], "wb") as file:
        written = file.write(b'<?xml version="1.0" encoding="UTF-8"?>\n<orders shop="Harbour Street">\n')
        number = 0
        while written < wanted:
            number += 1
            written += file.write(order(number, numbers).encode("utf-8"))
        file.write(b"</orders>\n")


if __name__ == "__main__":
    main()
