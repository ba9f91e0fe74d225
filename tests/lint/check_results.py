#!/usr/bin/env python3
"""Checks the JSON Schemas of the commands' results against every result that we have.

Those are the results of the golden cases and of the documentation. Each has to be valid for its command's schema; what is made
of it by leaving a member out, adding one, or saying something else has not; and each schema needs a result.

Usage: check_results.py [ROOT]      Needs Debian's python3-jsonschema. Exit status 1 for a finding.
"""
import copy
import json
import pathlib
import re
import sys

import jsonschema

import check_docs

# The commands that give a result as JSON. What the others write is lines of JSON, or a value of its own.
COMMANDS = ["check", "inspect", "diff", "explain", "explain rule", "catalog status", "count show", "stats"]
SHARED = "qzlog-findings.schema.json"
CASES = "tests/tools/golden/*/*.case"
OUTPUTS = {"count show": "tests/tools/golden/count/*.json"}  # what tests keep without a case around it
PAGES = ["README.md", "docs/*.md"]


def schema_name(command):
    return f"qzlog-{command.replace(' ', '-')}.schema.json"


def load_schema(folder, name):
    """A schema with the shared definitions in it."""
    text = (folder / name).read_text(encoding="utf-8")
    schema = json.loads(text.replace(f'"{SHARED}#', '"#'))
    shared = json.loads((folder / SHARED).read_text(encoding="utf-8"))
    schema["definitions"] = {**shared["definitions"], **schema.get("definitions", {})}
    jsonschema.Draft7Validator.check_schema(schema)
    return schema


def command_of(line):
    """The command of a command line that gives a result as JSON, or None."""
    if "--json" not in line.split() or re.search(r"[|>;]", line):
        return None
    if line.startswith("explain ") and "--definitions" not in line.split():
        return "explain rule"
    return next((command for command in COMMANDS if f"{line} ".startswith(f"{command} ")), None)


def results_of_case(text):
    command = command_of(re.search(r"^===== command\n(.*)$", text, re.MULTILINE).group(1))
    output = re.search(r"^--- standard output\n(.*?)(?=^--- |\Z)", text, re.MULTILINE | re.DOTALL)
    if command and output and output.group(1):
        yield command, output.group(1)


def results_of_page(text):
    for block in check_docs.blocks_of(text):
        if block.mark != "run":
            continue
        runs = re.split(r"^\$ ", "\n".join(block.lines), flags=re.MULTILINE)
        for line, _, output in (run.partition("\n") for run in runs):
            command = command_of(line.removeprefix("qzlog ")) if line.startswith("qzlog ") else None
            if command and output:
                yield command, output


def all_results(root):
    """Triples of a place, a command and its output."""
    for path in sorted(root.glob(CASES)):
        for result in results_of_case(path.read_text(encoding="utf-8", errors="replace")):
            yield (path, *result)
    for pattern in PAGES:
        for path in sorted(root.glob(pattern)):
            for result in results_of_page(path.read_text(encoding="utf-8")):
                yield (path, *result)
    for command, pattern in OUTPUTS.items():
        for path in sorted(root.glob(pattern)):
            yield path, command, path.read_text(encoding="utf-8")


def wrong_results(result):
    """Pairs of what was done to a result, and what came of it."""
    for key in result:
        yield f"without {key}", {name: value for name, value in result.items() if name != key}
    yield "with another member", {**result, "another": 1}
    yield "of another version", {**result, "qzlog": result["qzlog"] + 1}
    yield "with findings that are no list", {**result, "findings": {}}
    for key in ("file", "severity", "rule", "text"):
        for changed in (None, 1):
            wrong = copy.deepcopy(result)
            for finding in wrong["findings"][:1]:
                finding[key] = changed
                if changed is None:
                    del finding[key]
                yield f"with a finding {'without' if changed is None else 'of another'} {key}", wrong


def is_optional(schema, key):
    """Whether a result may lack a member; none may lack what all have in common."""
    return key not in ("qzlog", "findings") and key in schema["properties"] and key not in schema["required"]


def check_result(where, schema, text):
    try:
        result = json.loads(text)
    except ValueError as error:
        return [f"{where}: no JSON: {error}"]
    validator = jsonschema.Draft7Validator(schema)
    failures = sorted(f"{'/'.join(map(str, error.absolute_path))}: {error.message}" for error in validator.iter_errors(result))
    if failures:
        return [f"{where}: not valid: {failures[0][:300]}"]
    return [f"{where}: still valid {how}" for how, wrong in wrong_results(result)
            if not (how.startswith("without ") and is_optional(schema, how.removeprefix("without "))) and validator.is_valid(wrong)]


def check(root):
    """The findings, and the number of results."""
    schemas = {command: load_schema(root / "schema", schema_name(command)) for command in COMMANDS}
    findings, seen = [], []
    for path, command, text in all_results(root):
        seen.append(command)
        findings += check_result(path.relative_to(root), schemas[command], text)
    findings += [f"schema/{schema_name(command)}: no result of `qzlog {command} --json` is kept"
                 for command in COMMANDS if command not in seen]
    return findings, len(seen)


def main():
    findings, count = check(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "."))
    print("\n".join(findings) if findings else f"results: no finding in {count} results")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
