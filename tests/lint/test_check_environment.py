"""Tests of check_environment.py: where it finds variables, and that it finds one that the page lacks."""
import pathlib
import shutil
import tempfile
import unittest

import check_environment


class Check(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.root)
        self.write("docs/environment.md", "| variable | read by |\n|---|---|\n| `ONE`, `_TWO` | the library |\n\n`THREE` is no row.\n")

    def write(self, path, text):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_text(text, encoding="utf-8")

    def findings(self):
        return check_environment.check(self.root)

    def test_variables_that_the_page_has(self):
        self.write("tools/a/a.cpp", 'std::getenv("ONE"); const char* const kName = "_TWO"; "small" "Mixed"')
        self.assertEqual(self.findings(), [])
        self.assertEqual(len(check_environment.asked_for(self.root)), 2)

    def test_variable_that_the_page_lacks_is_found(self):
        self.write("sinks/a.cpp", 'QZ_getenv("THREE")')
        self.assertEqual(self.findings(), ["sinks/a.cpp: docs/environment.md does not tell of THREE"])

    def test_source_that_asks_for_none_has_none(self):
        self.write("sinks/a.cpp", 'f("FOUR")')
        self.assertEqual(self.findings(), [])


if __name__ == "__main__":
    unittest.main()
