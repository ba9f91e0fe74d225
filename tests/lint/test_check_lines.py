"""Tests of check_lines.py: where it finds lines, and that it finds what the schema or a line does wrong."""
import json
import pathlib
import shutil
import tempfile
import unittest

import check_lines

ROOT = pathlib.Path(__file__).resolve().parents[2]
GOOD = '{"id":1,"level":3,"attributes":{"a":1}}'


class Check(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.root)
        for folder in ("schema", "tests/lines", "docs", "examples"):
            (self.root / folder).mkdir(parents=True)
        shutil.copy(ROOT / check_lines.SCHEMA, self.root / "schema")
        shutil.copy(ROOT / "tests/lines/golden_lines.jsonl", self.root / "tests/lines")

    def findings(self):
        return check_lines.check(self.root)[0]

    def write(self, path, text):
        (self.root / path).write_text(text, encoding="utf-8")

    def test_lines_that_are_right(self):
        self.write("examples/a.jsonl", GOOD + "\n")
        self.assertEqual(self.findings(), [])

    def test_wrong_line_of_an_example(self):
        self.write("examples/a.jsonl", GOOD + '\n{"id":1,"level":10}\n{"id":1\n')
        findings = self.findings()
        self.assertEqual(len(findings), 2)
        self.assertTrue(findings[0].startswith("examples/a.jsonl: not valid: "), findings)
        self.assertTrue(findings[1].startswith("examples/a.jsonl: no JSON: "), findings)

    def test_wrong_line_of_a_page_but_for_those_of_mistakes(self):
        block = '<!-- file: {} -->\n```json\n{{"level":1}}\n```\n'
        self.write("docs/a.md", block.format("wrong.jsonl"))
        self.assertEqual(self.findings(), [])
        self.write("docs/a.md", block.format("a.jsonl"))
        self.assertEqual(len(self.findings()), 1)

    def test_schema_that_takes_too_much(self):
        for key in check_lines.IMPOSSIBLE:
            path = self.root / check_lines.SCHEMA
            schema = json.loads((ROOT / check_lines.SCHEMA).read_text(encoding="utf-8"))
            for kind in ("entry", "loss", "holding_back"):
                if key in schema["definitions"][kind]["properties"]:
                    schema["definitions"][kind]["properties"][key] = {}
            path.write_text(json.dumps(schema), encoding="utf-8")
            self.assertIn("still valid with " + key, "\n".join(self.findings()), key)

    def test_member_that_no_line_has(self):
        self.write("tests/lines/golden_lines.jsonl", GOOD + "\n")
        self.assertIn(f"{check_lines.SCHEMA}: no line has the member 'bytes'", self.findings())


if __name__ == "__main__":
    unittest.main()
