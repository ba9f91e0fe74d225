#!/usr/bin/env python3
"""Checks that docs/diagnostics.md lists every rule that a finding can name, with its meaning and an example, and that
docs/compatibility.md lists every kind of change that `qzlog diff` knows. `qzlog explain RULE` shows examples, too: of those it has a
table, tools/explain/rule_examples.cpp, which this program writes.

The rules come from the command's own tables, which `qzlog_command_docs --rules` prints; the examples come from the golden cases
of the tests, those of entries are run by check_docs.py, those of changes stand in their table.

Usage: check_rules.py [--update] [PROGRAM [ROOT]]     --update rewrites the tables; PROGRAM is qzlog_command_docs.
"""
import itertools
import json
import pathlib
import re
import subprocess
import sys

PROGRAM = "build/release/tools/qzlog_command_docs"

# Tables of the page, each between "<!-- NAME rules -->" and "<!-- end -->", and the golden cases that show their rules.
TABLES = {
    "compile": "tests/tools/golden/compile",
    "catalog": "tests/tools/golden/catalog",
    "check": "tests/tools/golden/check",
}
OTHER_TABLES = ["entries", "choice", "configuration", "count", "inspect"]
PAGE = "docs/diagnostics.md"

# What `qzlog explain` shows: the golden cases of those tables, and what the page shows of the others, by where it is found.
SHOWN_CASES = "tests/tools/golden/{}/*.case"
SHOWN_ELSEWHERE = {"entries": r"\S+\.jsonl:\d", "choice": r"--where:\d", "configuration": r"\S+\.conf:", "count": r"\S+\.cnt:",
                   "inspect": r"\S+\.ldf:"}
SHOWN = "tools/explain/rule_examples.cpp"
FINDING = re.compile(r"^(?P<place>\S+?): (?:.*?: )??(?P<severity>error|warning): .*\[(?P<rule>[a-z0-9-]+)\]$")
BELOW_A_FINDING = re.compile(r"^( +\d* \| |  hint: |\S+: note: )")

DIFF_PAGE = "docs/compatibility.md"
DIFF_TABLE = re.compile(r"(?<=<!-- changes -->\n)(.*?)(?=<!-- end -->)", re.DOTALL)
DIFF_COLLISION = "may collide"


def read_rules(program):
    """The tables of the command, by their names."""
    return json.loads(subprocess.run([program, "--rules"], check=True, capture_output=True).stdout)


def examples(root, golden_cases):
    """The shortest diagnostic of each rule in the golden cases, by the rule's name."""
    found = {}
    for case in sorted((root / golden_cases).glob("*.case")):
        for line in case.read_text(encoding="utf-8", errors="replace").splitlines():
            match = re.search(r" (?:error|warning): .*\[([a-z0-9-]+)\]$", line)
            if match:
                found.setdefault(match.group(1), []).append(line)
    return {name: min(lines, key=len) for name, lines in found.items()}


def shown_findings(text):
    """Each finding in a text, as a match of FINDING, with the lines below that belong to it."""
    lines = text.splitlines()
    for number, line in enumerate(lines, 1):
        match = FINDING.match(line)
        if not match:
            continue
        below = itertools.takewhile(BELOW_A_FINDING.match, lines[number:])
        yield match, "\n".join([line, *below])


def collect_findings(paths, where=""):
    """By rule and severity the finding with the shortest first line, as (line, text)."""
    best = {}
    for path in paths:
        for match, text in shown_findings(path.read_text(encoding="utf-8", errors="replace")):
            key = match["rule"], match["severity"]
            if re.match(where, match[0]) and (key not in best or len(match[0]) < len(best[key][0])):
                best[key] = match[0], text
    return best


def examples_to_show(root, rules):
    """(table, rule, severity, text) of every example, in the order of the tables."""
    for table, known in rules.items():
        if table in TABLES:
            found = {}
            for name in sorted(TABLES, key=lambda other: other == table):  # the table's own cases replace those of others
                found.update(collect_findings(sorted(root.glob(SHOWN_CASES.format(name)))))
        elif table in SHOWN_ELSEWHERE:
            paths = [root / PAGE, *sorted(root.glob(SHOWN_CASES.format("*")))]
            found = collect_findings(paths, SHOWN_ELSEWHERE[table])
        else:
            continue
        for rule in known:
            for severity in ("error", "warning"):
                if (rule["name"], severity) in found:
                    yield table, rule["name"], severity, found[rule["name"], severity][1]


def shown_source(root, rules):
    """The content of SHOWN."""
    rows = [f'    {{"{table}", "{rule}", Severity::k{severity.capitalize()},\n     R"~({text})~"}},'
            for table, rule, severity, text in examples_to_show(root, rules)]
    return "\n".join(["// Written by tests/lint/check_rules.py --update, from the golden cases of the tests and from docs/diagnostics.md.",
                      "", '#include "tools/explain/rule_examples.h"', "", "namespace qzlog_tool {", "", "namespace {", "",
                      "using qzlog_compiler::Severity;", "", "// clang-format off",
                      "constexpr RuleExample kExamples[] = {", *rows, "};", "// clang-format on", "", "}  // namespace", "",
                      "std::span<const RuleExample> all_rule_examples() { return kExamples; }", "", "}  // namespace qzlog_tool", ""])


def place(name):
    """Finds the page's table of that name."""
    return re.compile(rf"(?<=<!-- {name} rules -->\n)(.*?)(?=<!-- end -->)", re.DOTALL)


def cell(text, code=False):
    """A text as a table cell."""
    text = text.replace("|", "\\|")
    return f"`{text}`" if code and text else text


def table(root, name, rules):
    by_rule = examples(root, TABLES[name])
    rows = [f"| `{rule['name']}` | {cell(rule['meaning'])} | `` {cell(by_rule.get(rule['name'], '?'))} `` |"
            for rule in rules[name]]
    return "\n".join(["| rule | meaning | example |", "|---|---|---|", *rows]) + "\n"


def diff_table(rules):
    def row(rule):
        breaks = ", ".join(rule["breaks"]) or "safe"
        if rule["may_collide"]:
            breaks += f"; {DIFF_COLLISION}"
        return (f"| `{rule['name']}` | {breaks} | {rule['version_step']} | {cell(rule['meaning'])} "
                f"| {cell(rule['before'], True)} | {cell(rule['after'], True)} |")
    return "\n".join(["| rule | breaks | version | meaning | before | after |", "|---|---|---|---|---|---|",
                      *map(row, rules["diff"])]) + "\n"


def check_table(root, name, rules, page):
    shown = examples(root, TABLES[name])
    findings = [f"{PAGE}: no golden case shows [{rule['name']}]" for rule in rules[name] if rule["name"] not in shown]
    found = place(name).search(page)
    if not found or found.group(1) != table(root, name, rules):
        findings.append(f"{PAGE}: the table of the {name} rules is out of date; run tests/lint/check_rules.py --update")
    return findings


def check_other(name, rules, page):
    """A rule stands in an example, or in a list with its meaning."""
    return [f"{PAGE}: `{rule['name']}` of the {name} rules is missing" for rule in rules[name]
            if f"[{rule['name']}]" not in page and f"| `{rule['name']}` | {cell(rule['meaning'])} |" not in page]


def check_former_names(rules, page):
    """A name that a rule had before stays on the page, for those who meet it in an older source."""
    return [f"{PAGE}: `{name}`, as `{rule['name']}` was called, is missing"
            for table in rules.values() for rule in table
            for name in rule.get("former_names", "").split() if f"`{name}`" not in page]


def check(root, rules):
    page = (root / PAGE).read_text(encoding="utf-8")
    findings = [finding for name in TABLES for finding in check_table(root, name, rules, page)]
    findings += [finding for name in OTHER_TABLES for finding in check_other(name, rules, page)]
    findings += check_former_names(rules, page)
    findings += [f"{PAGE}: nothing is known of the {name} rules" for name in rules
                 if name not in [*TABLES, *OTHER_TABLES, "diff"]]
    shown = root / SHOWN
    if not shown.is_file() or shown.read_text(encoding="utf-8") != shown_source(root, rules):
        findings.append(f"{SHOWN}: the examples are out of date; run tests/lint/check_rules.py --update")
    found = DIFF_TABLE.search((root / DIFF_PAGE).read_text(encoding="utf-8"))
    if not found or found.group(1) != diff_table(rules):
        findings.append(f"{DIFF_PAGE}: the table of changes is out of date; run tests/lint/check_rules.py --update")
    return findings


def update(root, rules):
    page = root / PAGE
    text = page.read_text(encoding="utf-8")
    for name in TABLES:
        text = place(name).sub(lambda _, name=name: table(root, name, rules), text)
    page.write_text(text, encoding="utf-8")
    (root / SHOWN).write_text(shown_source(root, rules), encoding="utf-8")
    page = root / DIFF_PAGE
    page.write_text(DIFF_TABLE.sub(lambda _: diff_table(rules), page.read_text(encoding="utf-8")), encoding="utf-8")


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--update"]
    rules = read_rules(arguments[0] if arguments else PROGRAM)
    root = pathlib.Path(arguments[1] if len(arguments) > 1 else ".")
    if "--update" in sys.argv:
        update(root, rules)
    findings = check(root, rules)
    print("\n".join(findings) if findings else "rules: no finding")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
