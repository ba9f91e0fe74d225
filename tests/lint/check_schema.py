#!/usr/bin/env python3
"""Checks the JSON Schema of definition sources against every source that we have.

Valid have to be the sources of examples/, bench/ and the tests of the package, those of the documentation, and those of the
compiler's golden cases, broken ones included, unless the compiler reports a mistake that a schema can see; then they have to be
invalid. VISIBLE says which mistakes those are.

Usage: check_schema.py [ROOT]      Needs Debian's python3-jsonschema and python3-yaml. Exit status 1 for a finding.
"""
import json
import pathlib
import re
import sys

import jsonschema
import yaml

import check_docs

SCHEMA = "schema/qzlog-definitions.schema.json"
TYPE_NAMES = "entry/logattrib.cpp"
GOLDEN_CASES = "tests/tools/golden/compile"
SOURCES = ["examples/**/*.yaml", "bench/*.yaml", "tests/package/**/*.yaml"]
PAGES = ["README.md", "docs/*.md"]

# The rules whose mistakes a schema sees, where not always with the texts of the diagnostics that it sees.
VISIBLE = {
    "wrong-type": "",
    "unknown-key": "",
    "missing-key": r"^(?!an entry lacks the key 'message')",  # an auxiliary source may leave it out
    "conflicting-keys": "",
    "bad-number": "",
    "number-out-of-range": "",
    "bad-version": r"bad version '(?!\d+')",  # 2 is the number 2.0 to a schema
    "bad-entry-name": "",
    "bad-attribute-name": "",
    "nul-character": "",
    "unknown-type": "",
    "too-many-attributes": r"^(?!together)",  # one source says nothing about the other
    "too-many-globals": r"^(?!together)",
    "too-many-selector-messages": r"^(?!together)",
    "unknown-selector-attribute": r"no attribute ''",
    "unbalanced-brace": "",
    "bad-placeholder": "",
    "unknown-format": "",
}

# What makes a source no YAML, or YAML that the compiler does not look into.
UNREADABLE = {"invalid-utf8", "control-character", "yaml-syntax", "yaml-feature", "yaml-depth"}

NUMBER = re.compile(r"-?(?:0[xX][0-9a-fA-F]+|[0-9]+)")
DIAGNOSTIC = re.compile(r"^(<?[^:\s]+>?)(?::\d+:\d+)?: error: (.*) \[([a-z0-9-]+)\]$")
SECTION = re.compile(r"^===== (.*)$")


def value_of(node):
    """A YAML node as the compiler sees it: plain numbers are numbers (010 is ten), all else is text as it stands."""
    if isinstance(node, yaml.SequenceNode):
        return [value_of(item) for item in node.value]
    if isinstance(node, yaml.MappingNode):
        pairs = {}
        for key, value in node.value:
            pairs.setdefault(str(value_of(key)), value_of(value))
        return pairs
    text = node.value
    if node.style is not None:
        return text
    if text in ("", "~"):
        return None
    if NUMBER.fullmatch(text):
        return int(text, 16 if "x" in text.lower() else 10)
    return text


def load(text):
    node = yaml.compose(text.lstrip("\ufeff"), Loader=yaml.BaseLoader)
    return None if node is None else value_of(node)


def errors_by_file(output):
    """Pairs of text and rule of every error that a command printed, by the name of the file."""
    found = {}
    for line in output.splitlines():
        match = DIAGNOSTIC.match(line)
        if match:
            found.setdefault(match.group(1), []).append(match.group(2, 3))
    return found


def is_visible(text, rule):
    return rule in VISIBLE and re.search(VISIBLE[rule], text) is not None


def check_source(validator, where, text, errors):
    """The findings about a source for which the compiler reported `errors`."""
    if any(rule in UNREADABLE for _, rule in errors):
        return []
    try:
        source = load(text)
    except yaml.reader.ReaderError:  # a character that our reader takes, with a finding or without
        return []
    failures = sorted(error.message for error in validator.iter_errors(source))
    seen = sorted({rule for text, rule in errors if is_visible(text, rule)})
    if seen and not failures:
        return [f"{where}: valid, but a schema can see {', '.join(seen)}"]
    if failures and not seen:
        return [f"{where}: not valid: {failures[0][:200]}"]
    return []


def unescaped(text):
    escapes = {"n": "\n", "r": "\r", "t": "\t"}
    return re.sub(r"\\(x[0-9A-Fa-f]{2}|.)", lambda match: chr(int(match[1][1:], 16)) if len(match[1]) == 3
                  else escapes.get(match[1], match[1]), text)


def expanded(line):
    """A line of an escaped section of a golden case."""
    match = re.match(r"@repeat (\d+) (.*)", line)
    if not match:
        return unescaped(line)
    return "\n".join(match.group(2).replace("#", str(number)) for number in range(1, int(match.group(1)) + 1))


def read_case(text):
    """The sources of a golden case by the names that diagnostics give them, and what the command printed."""
    sections = {}
    for line in text.splitlines():
        match = SECTION.match(line)
        if match:
            lines = sections.setdefault(match.group(1), [])
        elif sections:
            lines.append(line)
    sources = {}
    for title, lines in sections.items():
        words = title.split()
        if words[-1] == "(escaped)":
            lines = [expanded(line) for line in lines]
        if words[0] == "stdin":
            sources["<stdin>"] = "\n".join(lines)
        elif words[0] == "file" and words[1].endswith(".yaml"):
            sources[words[1]] = "\n".join(lines)
    return sources, "\n".join(sections.get("result", []))


def read_page(text):
    """The same of a page of the documentation."""
    blocks = check_docs.blocks_of(text)
    sources = {block.argument: "\n".join(block.lines) for block in blocks
               if block.mark == "file" and block.argument.endswith(".yaml") and block.lines[0].startswith("version:")}
    return sources, "\n".join(line for block in blocks if block.mark == "run" for line in block.lines)


def check_type_names(root, schema):
    names = re.findall(r'\{"Type(\w+)", Type', (root / TYPE_NAMES).read_text(encoding="utf-8"))
    wanted = names + [f"Type{name}" for name in names]
    listed = schema["definitions"]["attribute"]["properties"]["type"]["enum"]
    return [] if sorted(listed) == sorted(wanted) else [f"{SCHEMA}: the types are not those of {TYPE_NAMES}"]


def check(root):
    schema = json.loads((root / SCHEMA).read_text(encoding="utf-8"))
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    findings, count = check_type_names(root, schema), 0

    def check_all(path, sources, output):
        nonlocal count
        errors = errors_by_file(output)
        for name, text in sources.items():
            if errors and name not in errors and len(sources) > 1:
                continue  # the compiler may have stopped at the other source
            count += 1
            findings.extend(check_source(validator, f"{path.relative_to(root)}: {name}", text, errors.get(name, [])))

    for pattern in SOURCES:
        for path in sorted(root.glob(pattern)):
            check_all(path, {path.name: path.read_text(encoding="utf-8")}, "")
    for pattern in PAGES:
        for path in sorted(root.glob(pattern)):
            check_all(path, *read_page(path.read_text(encoding="utf-8")))
    for path in sorted((root / GOLDEN_CASES).glob("*.case")):
        check_all(path, *read_case(path.read_text(encoding="utf-8", errors="surrogateescape")))
    return findings, count


def main():
    findings, count = check(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "."))
    print("\n".join(findings) if findings else f"schema: no finding in {count} sources")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
