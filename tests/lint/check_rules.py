#!/usr/bin/env python3
"""Checks that docs/diagnostics.md lists every rule that a diagnostic can name, with its meaning and an example.

The rules stand in the tables of the sources named below; the examples in the page's tables come from the golden cases of the
tests, those of `render` are run by check_docs.py.

Usage: check_rules.py [--update] [ROOT]     --update rewrites the page's tables.
"""
import pathlib
import re
import sys

# Tables of the page, each between "<!-- NAME rules -->" and "<!-- end -->": the source of the rules and their golden cases.
TABLES = {
    "compile": ("tools/compiler/diagnostics.cpp", "tests/tools/golden/compile"),
    "catalog": ("tools/catalog/catalog_findings.cpp", "tests/tools/golden/catalog"),
}
OTHER_RULES = ["tools/entry_error.cpp", "tools/config_check.cpp", "tools/counter_reader.cpp"]
PAGE = "docs/diagnostics.md"
RULE = re.compile(r'\{(?:Entry|Config|Counter|Catalog)?Rule::k\w+,\s*"([a-z0-9-]+)",\s*"([^"]*)"\}')


def rules(root, source):
    """Pairs of name and meaning, in the order of the source."""
    return RULE.findall((root / source).read_text(encoding="utf-8"))


def examples(root, golden_cases):
    """The shortest diagnostic of each rule in the golden cases, by the rule's name."""
    found = {}
    for case in sorted((root / golden_cases).glob("*.case")):
        for line in case.read_text(encoding="utf-8", errors="replace").splitlines():
            match = re.search(r" (?:error|warning): .*\[([a-z0-9-]+)\]$", line)
            if match:
                found.setdefault(match.group(1), []).append(line)
    return {name: min(lines, key=len) for name, lines in found.items()}


def place(name):
    """Finds the page's table of that name."""
    return re.compile(rf"(?<=<!-- {name} rules -->\n)(.*?)(?=<!-- end -->)", re.DOTALL)


def table(root, name):
    source, golden_cases = TABLES[name]
    by_rule = examples(root, golden_cases)
    cell = lambda text: text.replace("|", "\\|")
    rows = [f"| `{rule}` | {cell(meaning)} | `` {cell(by_rule.get(rule, '?'))} `` |" for rule, meaning in rules(root, source)]
    return "\n".join(["| rule | meaning | example |", "|---|---|---|", *rows]) + "\n"


def check_table(root, name, page):
    source, golden_cases = TABLES[name]
    shown = examples(root, golden_cases)
    findings = [f"{PAGE}: no golden case shows [{rule}]" for rule, _ in rules(root, source) if rule not in shown]
    found = place(name).search(page)
    if not found or found.group(1) != table(root, name):
        findings.append(f"{PAGE}: the table of the {name} rules is out of date; run tests/lint/check_rules.py --update")
    return findings


def check(root):
    page = (root / PAGE).read_text(encoding="utf-8")
    findings = [finding for name in TABLES for finding in check_table(root, name, page)]
    findings += [f"{PAGE}: `{name}` of {source} is missing" for source in OTHER_RULES for name, _ in rules(root, source)
                 if f"[{name}]" not in page and f"| `{name}` |" not in page]
    return findings


def update(root):
    page = root / PAGE
    text = page.read_text(encoding="utf-8")
    for name in TABLES:
        text = place(name).sub(lambda _, name=name: table(root, name), text)
    page.write_text(text, encoding="utf-8")


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--update"]
    root = pathlib.Path(arguments[0] if arguments else ".")
    if "--update" in sys.argv:
        update(root)
    findings = check(root)
    print("\n".join(findings) if findings else "rules: no finding")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
