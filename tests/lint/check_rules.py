#!/usr/bin/env python3
"""Checks that docs/diagnostics.md lists every rule that a diagnostic can name, with its meaning and an example.

The rules stand in the tables of the sources named below; the examples of the compiler's rules come from the golden cases of the
tests, those of `render` are run by check_docs.py.

Usage: check_rules.py [--update] [ROOT]     --update rewrites the page's table of the compiler's rules.
"""
import pathlib
import re
import sys

COMPILE_RULES = "tools/compiler/diagnostics.cpp"
OTHER_RULES = ["tools/entry_error.cpp", "tools/config_check.cpp", "tools/counter_reader.cpp", "tools/inspect_command.cpp"]
GOLDEN_CASES = "tests/tools/golden/compile"
PAGE = "docs/diagnostics.md"
TABLE = re.compile(r"(?<=<!-- compile rules -->\n)(.*?)(?=<!-- end -->)", re.DOTALL)
RULE = re.compile(r'\{(?:Entry|Config|Counter|Inspect)?Rule::k\w+,\s*"([a-z0-9-]+)",\s*"([^"]*)"\}')


def rules(root, source):
    """Pairs of name and meaning, in the order of the source."""
    return RULE.findall((root / source).read_text(encoding="utf-8"))


def examples(root):
    """The shortest diagnostic of each rule in the golden cases, by the rule's name."""
    found = {}
    for case in sorted((root / GOLDEN_CASES).glob("*.case")):
        for line in case.read_text(encoding="utf-8", errors="replace").splitlines():
            match = re.search(r" (?:error|warning): .*\[([a-z0-9-]+)\]$", line)
            if match:
                found.setdefault(match.group(1), []).append(line)
    return {name: min(lines, key=len) for name, lines in found.items()}


def table(root):
    by_rule = examples(root)
    cell = lambda text: text.replace("|", "\\|")
    rows = [f"| `{name}` | {cell(meaning)} | `` {cell(by_rule.get(name, '?'))} `` |"
            for name, meaning in rules(root, COMPILE_RULES)]
    return "\n".join(["| rule | meaning | example |", "|---|---|---|", *rows]) + "\n"


def check(root):
    page = (root / PAGE).read_text(encoding="utf-8")
    findings = [f"{PAGE}: no golden case shows [{name}]" for name, _ in rules(root, COMPILE_RULES)
                if name not in examples(root)]
    if TABLE.search(page).group(1) != table(root):
        findings.append(f"{PAGE}: the table of the compiler's rules is out of date; run tests/lint/check_rules.py --update")
    findings += [f"{PAGE}: `{name}` of {source} is missing" for source in OTHER_RULES for name, _ in rules(root, source)
                 if f"[{name}]" not in page and f"| `{name}` |" not in page]
    return findings


def update(root):
    page = root / PAGE
    page.write_text(TABLE.sub(lambda _: table(root), page.read_text(encoding="utf-8")), encoding="utf-8")


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
