#!/usr/bin/env python3
"""Checks the JSON Schema of lines of entries against every line that we have.

Those are the lines that the library writes (tests/lines/golden_lines.jsonl), the examples, and those of the documentation. Each has to
be valid; what is made of it by leaving its ID out, adding a member, or saying something that cannot be has not.

Usage: check_lines.py [ROOT]      Needs Debian's python3-jsonschema. Exit status 1 for a finding.
"""
import copy
import itertools
import json
import pathlib
import sys

import jsonschema

import check_docs

SCHEMA = "schema/qzlog-entry-line.schema.json"
FILES = ["tests/lines/*.jsonl", "examples/**/*.jsonl"]
PAGES = ["README.md", "docs/*.md"]
WRONG = {"wrong.jsonl"}  # files of pages that show mistakes

# What no line may say, by the member that says it.
IMPOSSIBLE = {
    "id": [-1, 4294967296, 1.5, "", None, [1]],
    "level": [-1, 10, "3", 0.5],
    "time": ["yesterday", "2026-11-21", "2026-11-21T08:15:30", 1795248930],
    "default": [1, "true"],
    "selector": [-1, "one", 4294967296],
    "name": ["", 1],
    "attributes": [[], None, {"a": None}, {"a": [1]}, {"a": {}}, {"a": "b\0"}],
    "bytes": [[], {"a": 1}, {"a": "a"}, {"a": "YQ="}, {"a": "Y!=="}],
    "writer": ["", "host", "host/1", "host/one/2", "/1/2", "host/1/", 5],
    "seq": [-1, "1", 0.5, 18446744073709551616],
    "written": ["now", "2026-11-21T08:15:30.Z", "2026-11-21 08:15:30Z", "2026-11-21T08:15:30.000000000"],
    "definitions": ["", "0123456789abcde", "0123456789ABCDEF", "0123456789abcdef+", "0123456789abcdef+0123"],
    "lost": [{}, 1, [1], [{}], [{"id": 1, "level": 10, "count": 1}], [{"id": 1, "level": 1, "count": -1}],
             [{"id": 1, "level": 1, "count": 1, "since": "now"}], [{"id": 1, "level": 1, "count": 1, "more": 1}]],
}
IMPOSSIBLE["held"] = IMPOSSIBLE["lost"]


def lines_of_pages(root):
    for pattern in PAGES:
        for path in sorted(root.glob(pattern)):
            for block in check_docs.blocks_of(path.read_text(encoding="utf-8")):
                if block.mark == "file" and block.argument.endswith(".jsonl") and block.argument not in WRONG:
                    yield from ((path, line) for line in block.lines)


def all_lines(root):
    """Pairs of a path and a line."""
    for pattern in FILES:
        for path in sorted(root.glob(pattern)):
            yield from ((path, line) for line in path.read_text(encoding="utf-8").splitlines())
    yield from lines_of_pages(root)


def wrong_lines(line):
    """Pairs of what was done to a line, and what came of it."""
    for key in {"id", "lost", "held"} & line.keys():
        yield f"without {key}", {name: value for name, value in line.items() if name != key}
    yield "with another member", {**line, "another": 1}
    for kind, other in itertools.combinations(({"id": 1}, {"lost": []}, {"held": []}), 2):
        yield f"with {list(kind)} and {list(other)}", {**line, **kind, **other}
    for key, values in IMPOSSIBLE.items():
        if key in line:
            for value in values:
                wrong = copy.deepcopy(line)
                wrong[key] = value
                yield f"with {key} {value!r}", wrong


def check_line(where, validator, text):
    try:
        line = json.loads(text)
    except ValueError as error:
        return [f"{where}: no JSON: {error}"]
    failures = sorted(error.message for error in validator.iter_errors(line))
    if failures:
        return [f"{where}: not valid: {text[:200]}: {failures[0][:200]}"]
    return [f"{where}: still valid {how}" for how, wrong in wrong_lines(line) if validator.is_valid(wrong)]


def check(root):
    """The findings, and the number of lines."""
    schema = json.loads((root / SCHEMA).read_text(encoding="utf-8"))
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    findings, seen, count = [], set(), 0
    for path, text in all_lines(root):
        count += 1
        findings += check_line(path.relative_to(root), validator, text)
        seen |= json.loads(text).keys() if not findings else set()
    if not findings:
        findings += [f"{SCHEMA}: no line has the member '{key}'" for key in sorted(IMPOSSIBLE.keys() - seen)]
    return findings, count


def main():
    findings, count = check(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "."))
    print("\n".join(findings) if findings else f"lines: no finding in {count} lines")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
