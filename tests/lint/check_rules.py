#!/usr/bin/env python3
"""Checks that docs/diagnostics.md lists every rule that a diagnostic can name, with its meaning and an example, and that
docs/compatibility.md lists every kind of change that `qzlog diff` knows.

The rules stand in the tables of the sources named below; the examples come from the golden cases of the tests, those of `render`
are run by check_docs.py, those of changes stand in their table.

Usage: check_rules.py [--update] [ROOT]     --update rewrites the pages' tables.
"""
import pathlib
import re
import sys

# Tables of the page, each between "<!-- NAME rules -->" and "<!-- end -->": the source of the rules and their golden cases.
TABLES = {
    "compile": ("tools/report/diagnostics.cpp", "tests/tools/golden/compile"),
    "catalog": ("tools/catalog/catalog_findings.cpp", "tests/tools/golden/catalog"),
    "check": ("tools/report/check_finding.cpp", "tests/tools/golden/check"),
}
OTHER_RULES = ["tools/render/entry_error.cpp", "tools/render/config_check.cpp", "tools/count/counter_reader.cpp",
               "tools/inspect/inspect_command.cpp"]
PAGE = "docs/diagnostics.md"
RULE = re.compile(r'\{(?:Entry|Config|Counter|Catalog|Check|Inspect)?Rule::k\w+,\s*"([a-z0-9-]+)",\s*"([^"]*)"(?:,\s*true)?\}')

DIFF_RULES = "tools/diff/diff_rules.cpp"
DIFF_PAGE = "docs/compatibility.md"
DIFF_TABLE = re.compile(r"(?<=<!-- changes -->\n)(.*?)(?=<!-- end -->)", re.DOTALL)
TEXT = r'"((?:[^"\\]|\\.)*)"'
DIFF_RULE = re.compile(rf"DiffRuleInfo\{{\s*DiffRule::k\w+,\s*{TEXT},\s*{TEXT},\s*([\w |]+),\s*Step::k(\w+),\s*Aux::k(\w+),"
                       rf"\s*{TEXT},\s*{TEXT},\s*{TEXT}\}}")
DIFF_COLLISION = "may collide"
JOINED = re.compile(r'(?<!\\)"\s+"')


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


def cell(text, code=False):
    """A text of the C++ source as a table cell."""
    text = text.replace('\\"', '"').replace("|", "\\|")
    return f"`{text}`" if code and text else text


def table(root, name):
    source, golden_cases = TABLES[name]
    by_rule = examples(root, golden_cases)
    rows = [f"| `{rule}` | {cell(meaning)} | `` {cell(by_rule.get(rule, '?'))} `` |" for rule, meaning in rules(root, source)]
    return "\n".join(["| rule | meaning | example |", "|---|---|---|", *rows]) + "\n"


def verdicts(bits, collision):
    names = ", ".join(word[1:].lower() for word in bits.split(" | "))
    return f"{names}; {DIFF_COLLISION}" if collision == "May" else names


def diff_rows(root):
    """The changes in the order of the source: name, verdicts, step of the version, meaning, before, after."""
    source = JOINED.sub("", (root / DIFF_RULES).read_text(encoding="utf-8"))
    return [(name, verdicts(bits, collision), step.lower(), meaning, before, after)
            for name, _, bits, step, collision, meaning, before, after in DIFF_RULE.findall(source)]


def diff_table(root):
    rows = [f"| `{name}` | {breaks} | {step} | {cell(meaning)} | {cell(before, True)} | {cell(after, True)} |"
            for name, breaks, step, meaning, before, after in diff_rows(root)]
    return "\n".join(["| rule | breaks | version | meaning | before | after |", "|---|---|---|---|---|---|", *rows]) + "\n"


def check_table(root, name, page):
    source, golden_cases = TABLES[name]
    shown = examples(root, golden_cases)
    findings = [f"{PAGE}: no golden case shows [{rule}]" for rule, _ in rules(root, source) if rule not in shown]
    found = place(name).search(page)
    if not found or found.group(1) != table(root, name):
        findings.append(f"{PAGE}: the table of the {name} rules is out of date; run tests/lint/check_rules.py --update")
    return findings


def check_diff(root):
    page = (root / DIFF_PAGE).read_text(encoding="utf-8")
    source = (root / DIFF_RULES).read_text(encoding="utf-8")
    findings = []
    if len(diff_rows(root)) != source.count("DiffRuleInfo{"):
        findings.append(f"{DIFF_RULES}: not every row of the table can be read")
    if DIFF_TABLE.search(page).group(1) != diff_table(root):
        findings.append(f"{DIFF_PAGE}: the table of changes is out of date; run tests/lint/check_rules.py --update")
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
    page = root / DIFF_PAGE
    page.write_text(DIFF_TABLE.sub(lambda _: diff_table(root), page.read_text(encoding="utf-8")), encoding="utf-8")


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--update"]
    root = pathlib.Path(arguments[0] if arguments else ".")
    if "--update" in sys.argv:
        update(root)
    findings = check(root) + check_diff(root)
    print("\n".join(findings) if findings else "rules: no finding")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
