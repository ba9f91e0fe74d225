#!/usr/bin/env python3
"""Prints a jq program that builds the messages of a definition source from entries as JSON Lines.

Usage: jq_program.py SOURCE.yaml

Reads the lines "- id:" and "message:" and no more YAML than that; placeholders without a format are all it knows.
"""
import re
import sys

ENTRY = re.compile(r'\s*- id: (\d+)')
MESSAGE = re.compile(r'\s*message: (".*")')


def jq_text(message):
    """A message in quotes as a jq text."""
    return re.sub(r"\{(\w+)\}", r"\\(.\1)", message)


def main():
    branches = []
    entry_id = None
    with open(sys.argv[1], encoding="utf-8") as source:
        for line in source:
            if found := ENTRY.match(line):
                entry_id = found.group(1)
            elif found := MESSAGE.match(line):
                branches.append(f"if $id == {entry_id} then {jq_text(found.group(1))}")
    print(".id as $id | .attributes |\n" + "\nel".join(branches) + '\nelse error("unknown entry") end')


if __name__ == "__main__":
    main()
