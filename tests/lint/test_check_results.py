"""Tests of check_results.py: where it finds results, and that it finds what a schema or a result does wrong."""
import json
import pathlib
import shutil
import tempfile
import unittest

import check_results

ROOT = pathlib.Path(__file__).resolve().parents[2]
FINDING = {"file": "a.ldf", "severity": "error", "rule": "refused-file", "text": "no"}
GOOD = {"qzlog": 1, "findings": [FINDING]}


class CommandOf(unittest.TestCase):
    def test_command_with_json_is_taken(self):
        self.assertEqual(check_results.command_of("check a.ldf --json"), "check")
        self.assertEqual(check_results.command_of("catalog status a.yaml --po po --json"), "catalog status")

    def test_other_outputs_are_left_out(self):
        for line in ("check a.ldf", "compile a.yaml --emit-json", "catalog build a.yaml --json", "check a.ldf --json | head",
                     "checked a.ldf --json"):
            self.assertIsNone(check_results.command_of(line), line)


class Results(unittest.TestCase):
    def test_result_of_a_case_ends_where_the_next_part_begins(self):
        case = "===== command\ncheck a.ldf --json\n===== result\nexit status 1\n--- standard error\n--- standard output\n{}\n--- file b\nx\n"
        self.assertEqual(list(check_results.results_of_case(case)), [("check", "{}\n")])

    def test_case_without_output_has_none(self):
        self.assertEqual(list(check_results.results_of_case(
            "===== command\ncheck a.ldf --json\n===== result\n--- standard output\n")), [])

    def test_results_of_a_page_are_those_of_its_commands(self):
        page = "<!-- run -->\n```console\n$ ls\na\n$ qzlog check a.ldf --json\n{\n}\n$ qzlog check a.ldf\n```\n"
        self.assertEqual(list(check_results.results_of_page(page)), [("check", "{\n}\n")])


class Schemas(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = pathlib.Path(self.folder.name)
        shutil.copytree(ROOT / "schema", self.root / "schema")

    def findings(self, result, command="check"):
        schema = check_results.load_schema(self.root / "schema", check_results.schema_name(command))
        return check_results.check_result("here", schema, json.dumps(result))

    def test_good_result_has_no_finding(self):
        self.assertEqual(self.findings(GOOD), [])
        self.assertEqual(self.findings({"qzlog": 1, "findings": []}), [])

    def test_wrong_result_is_found(self):
        for wrong in ({}, [], {**GOOD, "qzlog": 2}, {**GOOD, "more": 1}, {"qzlog": 1, "findings": [{**FINDING, "severity": "note"}]},
                      {"qzlog": 1, "findings": [{**FINDING, "column": 3}]}, {"qzlog": 1, "findings": [{**FINDING, "line": 0}]}):
            self.assertRegex(self.findings(wrong)[0], "^here: not valid: ", wrong)

    def test_schema_that_takes_too_much_is_found(self):
        path = self.root / "schema" / check_results.schema_name("check")
        schema = json.loads(path.read_text(encoding="utf-8"))
        schema["additionalProperties"] = True
        path.write_text(json.dumps(schema), encoding="utf-8")
        self.assertEqual(self.findings(GOOD), ["here: still valid with another member"])
        schema["required"] = ["qzlog"]
        path.write_text(json.dumps(schema), encoding="utf-8")
        self.assertEqual(self.findings(GOOD), ["here: still valid without findings", "here: still valid with another member"])

    def test_command_without_a_result_is_found(self):
        findings, count = check_results.check(self.root)
        self.assertEqual(count, 0)
        self.assertIn("schema/qzlog-check.schema.json: no result of `qzlog check --json` is kept", findings)


if __name__ == "__main__":
    unittest.main()
