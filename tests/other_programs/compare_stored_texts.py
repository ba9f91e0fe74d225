#!/usr/bin/env python3
"""Reads lines of entries with Python's json, strictly, and compares the texts with those that were stored.

Usage: compare_stored_texts.py EXPECTED FILE...     EXPECTED has a line "CODE PAGE,HEXADECIMAL" for each Number. Exit status 1 for a finding.
"""
import base64
import collections
import json
import sys

# What Python and the library agree about for every character.
CODECS = {"UTF-8": "utf-8", "ISO-8859-1": "latin-1", "": "utf-8"}


def refuse(word):
    raise ValueError(f"{word} is no JSON")


def without_doubles(pairs):
    names = [name for name, _ in pairs]
    if len(names) != len(set(names)):
        raise ValueError(f"a member is there twice: {names}")
    return dict(pairs)


def lines_of(paths):
    for path in paths:
        with open(path, "rb") as file:
            text = file.read()
        if not text.endswith(b"\n"):
            raise ValueError(f"{path} ends in the middle of a line")
        for line in text[:-1].split(b"\n"):
            yield json.loads(line.decode("utf-8"), object_pairs_hook=without_doubles, parse_constant=refuse)


def stored_bytes(line, codec):
    """The stored bytes of Text; None where only the library knows the code page."""
    if "Text" in line.get("bytes", {}):
        return base64.b64decode(line["bytes"]["Text"], validate=True)
    return line["attributes"]["Text"].encode(codec) if codec else None


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        expected = [line.rstrip("\n").split(",") for line in file]
    last_seq = collections.Counter()
    number = 0
    for line in lines_of(sys.argv[2:]):
        if "Number" not in line.get("attributes", {}):
            continue
        code_page, stored = expected[number]
        last_seq[line["writer"]] += 1
        found = stored_bytes(line, CODECS.get(code_page))
        if line["attributes"]["Number"] != number or line["seq"] != last_seq[line["writer"]]:
            sys.exit(f"out of order: {line} is not number {number}")
        if found is not None and found != bytes.fromhex(stored):
            sys.exit(f"another text: {line} does not say {stored}")
        number += 1
    print(f"{number} entries")
    return 0 if number == len(expected) else 1


if __name__ == "__main__":
    sys.exit(main())
