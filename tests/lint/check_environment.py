#!/usr/bin/env python3
"""Checks that docs/environment.md has every environment variable that the sources ask for.

Those are the texts in capitals in every source that calls getenv, a wrapper of it or a function that does: what is no variable there
is named below.

Usage: check_environment.py [ROOT]      Exit status 1 for a finding.
"""
import pathlib
import re
import sys

FOLDERS = ["config", "counter", "definitions", "entry", "foundation", "lines", "message", "ship", "sinks", "tools", "util"]
PAGE = "docs/environment.md"
ASKS = re.compile(r"\bgetenv\b|\bQZ_getenv\b|\bsecure_getenv\b")
NAME = re.compile(r'"(_?[A-Z][A-Z0-9_]+)"')
NO_VARIABLES = {"UTC"}  # in sources that ask for others


def asked_for(root):
    """By name of a variable the source that asks for it."""
    found = {}
    for folder in FOLDERS:
        for source in sorted((root / folder).rglob("*.cpp")):
            text = source.read_text(encoding="utf-8")
            if ASKS.search(text):
                found.update({name: source.relative_to(root) for name in NAME.findall(text) if name not in NO_VARIABLES})
    return found


def told(root):
    """The variables in the first columns of the page's tables."""
    rows = re.findall(r"^\| (`[^|]+) \|", (root / PAGE).read_text(encoding="utf-8"), re.MULTILINE)
    return {name for row in rows for name in re.findall(r"`([^`]+)`", row)}


def check(root):
    variables, known = asked_for(root), told(root)
    return [f"{source}: {PAGE} does not tell of {name}" for name, source in sorted(variables.items()) if name not in known]


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2])
    findings = check(root)
    print("\n".join(findings) if findings else f"environment: no finding in {len(asked_for(root))} variables")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
