"""Tests of check_schema.py: what it takes a source for, and that it finds what a schema does wrong."""
import pathlib
import shutil
import tempfile
import unittest

import check_schema

ROOT = pathlib.Path(__file__).parents[2]
GOOD = 'version: "1.0"\nentries:\n  - {id: 1, name: A, message: "text"}\n'


class Load(unittest.TestCase):
    def test_plain_numbers_are_decimal_or_hexadecimal(self):
        self.assertEqual(check_schema.load("[010, 0x1F, -3, 1_0, 0o7, 1.0]"), [10, 31, -3, "1_0", "0o7", "1.0"])

    def test_quoted_numbers_are_texts(self):
        self.assertEqual(check_schema.load("['7', \"7\"]"), ["7", "7"])

    def test_words_are_texts(self):
        self.assertEqual(check_schema.load("[yes, true, null, 2026-11-21, ~, '~']"),
                         ["yes", "true", "null", "2026-11-21", None, "~"])

    def test_first_of_two_values_counts(self):
        self.assertEqual(check_schema.load("{a: 1, a: 2}"), {"a": 1})


class ReadCase(unittest.TestCase):
    def test_escaped_sections_are_expanded(self):
        sources, output = check_schema.read_case(
            "About.\n===== command\ncompile in.yaml\n===== file in.yaml (escaped)\n@repeat 2 - a#\na\\tb\\x41\n"
            "===== stdin\nx\n===== result\nexit status 0\n")
        self.assertEqual(sources, {"in.yaml": "- a1\n- a2\na\tbA", "<stdin>": "x"})
        self.assertEqual(output, "exit status 0")

    def test_errors_are_told_apart_by_file(self):
        self.assertEqual(check_schema.errors_by_file("exit status 1\na.yaml:1:2: error: bad [rule-x]\n"
                                                     "b.yaml: error: worse [rule-y]\na.yaml:2:1: warning: odd [rule-z]\n"),
                         {"a.yaml": [("bad", "rule-x")], "b.yaml": [("worse", "rule-y")]})


class Check(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for file in (check_schema.SCHEMA, check_schema.TYPE_NAMES):
            (self.root / file).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / file, self.root / file)

    def findings(self, text, result="exit status 0"):
        case = self.root / check_schema.GOLDEN_CASES / "a.case"
        case.parent.mkdir(parents=True, exist_ok=True)
        case.write_text(f"===== file in.yaml\n{text}===== result\n{result}\n", encoding="utf-8")
        return check_schema.check(self.root)[0]

    def test_valid_source_is_no_finding(self):
        self.assertEqual(self.findings(GOOD), [])

    def test_accepted_warnings_are_valid_at_each_place(self):
        accept = "accept: [{rule: path-conflict, reason: only ICU is used}]"
        self.assertEqual(self.findings(f"""version: "1.0"
{accept}
entries:
  - id: 1
    name: A
    message: m
    {accept}
    selector: {{messages: [{{index: 1, value: 1, id: i, text: t, {accept}}}]}}
"""), [])

    def test_source_that_the_schema_refuses_without_a_reason_is_found(self):
        findings = self.findings(GOOD.replace("id: 1", "id: -1"))
        self.assertEqual(findings, [f"{check_schema.GOLDEN_CASES}/a.case: in.yaml: not valid: "
                                    "-1 is less than the minimum of 0"])

    def test_mistake_that_the_schema_lets_pass_is_found(self):
        findings = self.findings(GOOD, "in.yaml:3:5: error: unknown key 'x' [unknown-key]")
        self.assertEqual(findings, [f"{check_schema.GOLDEN_CASES}/a.case: in.yaml: valid, but a schema can see unknown-key"])

    def test_type_that_the_schema_lacks_is_found(self):
        names = self.root / check_schema.TYPE_NAMES
        names.write_text(names.read_text(encoding="utf-8") + '{"TypeNew", TypeNew}', encoding="utf-8")
        self.assertEqual(self.findings(GOOD), ["schema/qzlog-definitions.schema.json: the types are not those of "
                                               "entry/logattrib.cpp"])


if __name__ == "__main__":
    unittest.main()
