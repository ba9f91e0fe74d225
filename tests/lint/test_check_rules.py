"""Tests of check_rules.py: that it finds what the pages lack, and that --update adds it."""
import pathlib
import tempfile
import unittest

import check_rules

RULES = {
    "compile": [{"name": "bad-number", "meaning": "Not a | number."}],
    "catalog": [], "check": [], "choice": [], "configuration": [], "count": [], "inspect": [],
    "entries": [{"name": "bad-id", "meaning": "No ID."}],
    "diff": [{"name": "entry-added", "meaning": "One more.", "breaks": [], "version_step": "minor", "may_collide": True,
              "before": "", "after": "{id: 7}"}],
}
TABLES = "".join(f"<!-- {name} rules -->\nold\n<!-- end -->\n" for name in check_rules.TABLES)
UPDATED_ROW = "| `bad-number` | Not a \\| number. | `` a.yaml:1:2: error: 'x' is no number [bad-number] `` |\n"
DIFF_ROW = "| `entry-added` | safe; may collide | minor | One more. |  | `{id: 7}` |\n"


class Check(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.root = pathlib.Path(self.folder.name)
        (self.root / "docs").mkdir()
        self.page = self.root / check_rules.PAGE
        self.diff_page = self.root / check_rules.DIFF_PAGE
        self.page.write_text(TABLES + "| `bad-id` | No ID. |\n", encoding="utf-8")
        self.diff_page.write_text("<!-- changes -->\nold\n<!-- end -->\n", encoding="utf-8")
        self.case = self.root / check_rules.TABLES["compile"] / "a.case"
        self.case.parent.mkdir(parents=True)
        self.case.write_text("a.yaml:1:2: error: 'x' is no number [bad-number]\n", encoding="utf-8")
        self.shown = self.root / check_rules.SHOWN
        self.shown.parent.mkdir(parents=True)
        check_rules.update(self.root, RULES)

    def findings(self, rules=RULES):
        return check_rules.check(self.root, rules)

    def test_updated_pages_have_no_finding(self):
        self.assertEqual(self.findings(), [])
        self.assertIn(UPDATED_ROW, self.page.read_text(encoding="utf-8"))
        self.assertIn(DIFF_ROW, self.diff_page.read_text(encoding="utf-8"))

    def test_example_that_the_command_lacks_is_found(self):
        self.assertIn("a.yaml:1:2: error: 'x' is no number [bad-number]", self.shown.read_text(encoding="utf-8"))
        self.shown.write_text("", encoding="utf-8")
        self.assertEqual(self.findings(), ["tools/explain/rule_examples.cpp: the examples are out of date; "
                                           "run tests/lint/check_rules.py --update"])

    def test_rule_that_a_table_lacks_is_found(self):
        self.page.write_text(self.page.read_text(encoding="utf-8").replace(UPDATED_ROW, ""), encoding="utf-8")
        self.assertEqual(self.findings(), ["docs/diagnostics.md: the table of the compile rules is out of date; "
                                           "run tests/lint/check_rules.py --update"])

    def test_change_that_the_table_lacks_is_found(self):
        self.diff_page.write_text(self.diff_page.read_text(encoding="utf-8").replace(DIFF_ROW, ""), encoding="utf-8")
        self.assertEqual(self.findings(), ["docs/compatibility.md: the table of changes is out of date; "
                                           "run tests/lint/check_rules.py --update"])

    def test_rule_without_an_example_is_found(self):
        self.case.write_text("", encoding="utf-8")
        self.assertIn("docs/diagnostics.md: no golden case shows [bad-number]", self.findings())

    def test_rule_that_no_list_or_example_has_is_found(self):
        rules = {**RULES, "entries": [{"name": "bad-id", "meaning": "Another meaning."}]}
        self.assertEqual(self.findings(rules), ["docs/diagnostics.md: `bad-id` of the entries rules is missing"])

    def test_former_name_that_the_page_lacks_is_found(self):
        rules = {**RULES, "entries": [{"name": "bad-id", "meaning": "No ID.", "former_names": "wrong-id no-id"}]}
        self.page.write_text(self.page.read_text(encoding="utf-8") + "`no-id` is now `bad-id`.\n", encoding="utf-8")
        self.assertEqual(self.findings(rules), ["docs/diagnostics.md: `wrong-id`, as `bad-id` was called, is missing"])

    def test_table_that_no_page_has_is_found(self):
        self.assertEqual(self.findings({**RULES, "more": []}), ["docs/diagnostics.md: nothing is known of the more rules"])


if __name__ == "__main__":
    unittest.main()
