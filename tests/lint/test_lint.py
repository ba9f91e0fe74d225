"""Tests of the checks in this folder: each finds what it is there for, and nothing in a tree without faults."""
import os
import pathlib
import tempfile
import unittest

import check_docs
import check_headers
import folder_order


class TreeTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)

    def write(self, path, text):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
        return str(file)


class FolderOrder(TreeTest):
    def test_include_of_an_earlier_layer_is_accepted(self):
        self.write("entry/logentry_i.cpp", '#include "definitions/ldf_load.h"\n#include "qzlog/logcfg.h"\n')
        self.write("include/qzlog/logcfg.h", "")
        self.assertEqual(folder_order.check_tree(self.root), [])

    def test_include_of_a_later_layer_is_found_with_its_line(self):
        self.write("definitions/def_read.cpp", '#include <vector>\n\n#include "config/logcfg.h"\n')
        self.assertEqual(folder_order.check_tree(self.root), [
            "definitions/def_read.cpp:3: the definition records must not include config/logcfg.h (settings)"])

    def test_public_header_counts_as_part_of_its_unit(self):
        self.write("foundation/locks.cpp", "#include <qzlog/debug_log.h>\n")
        self.write("include/qzlog/debug_log.h", "")
        self.assertEqual(folder_order.check_tree(self.root), [
            "foundation/locks.cpp:1: the foundation must not include include/qzlog/debug_log.h (debug log)"])

    def test_entry_implementation_split_over_files_has_the_message_after_rendering(self):
        self.write("entry/logentry_i_message.cpp", '#include "message/logmsg_render.h"\n')
        self.write("entry/logentry_i_reads.cpp", '#include "message/logmsg_render.h"\n')
        self.assertEqual(folder_order.check_tree(self.root), [
            "entry/logentry_i_reads.cpp:1: the entry implementation must not include message/logmsg_render.h (rendering)"])

    def test_counter_uses_foundation_and_debug_log_alone(self):
        self.write("counter/logentrycounter.cpp", '#include "util/debug_record.h"\n#include "entry/ustring.h"\n')
        self.assertEqual(folder_order.check_tree(self.root), [
            "counter/logentrycounter.cpp:2: the entry counter must not include entry/ustring.h (attribute types)"])

    def test_nothing_uses_the_counter(self):
        self.write("entry/logentry.cpp", '#include "counter/logentrycounter.h"\n')
        self.assertEqual(folder_order.check_tree(self.root), [
            "entry/logentry.cpp:1: the entry facade must not include counter/logentrycounter.h (entry counter)"])

    def test_tools_include_of_the_library_what_both_are_built_with(self):
        self.write("tools/a.cpp", '#include "message/resource_bundle.h"\n#include "message/logmsg.h"\n')
        self.assertEqual(folder_order.check_tree(self.root), ["tools/a.cpp:2: tools/ must not include message/logmsg.h"])

    def test_tool_includes_only_folders_before_its_own(self):
        self.write("tools/report/a.cpp", '#include "tools/system/a.h"\n#include "tools/compiler/source/a.h"\n')
        self.assertEqual(folder_order.check_tree(self.root), [
            "tools/report/a.cpp:2: tools/report/ must not include tools/compiler/source/a.h"])

    def test_subcommand_includes_no_other_but_those_named(self):
        self.write("tools/check/a.cpp", '#include "tools/report/a.h"\n#include "tools/diff/a.h"\n')
        self.write("tools/render/a.cpp", '#include "tools/count/a.h"\n')
        self.write("tools/a.cpp", '#include "tools/diff/a.h"\n')
        self.assertEqual(folder_order.check_tree(self.root), [
            "tools/check/a.cpp:2: tools/check/ must not include tools/diff/a.h"])

    def test_nothing_includes_the_files_of_tools_itself(self):
        self.write("tools/render/a.cpp", '#include "tools/command_line.h"\n')
        self.assertEqual(folder_order.check_tree(self.root), [
            "tools/render/a.cpp:1: tools/render/ must not include tools/command_line.h"])

    def test_new_folder_of_tools_is_found(self):
        self.write("tools/unheard_of/a.cpp", "")
        self.assertEqual(folder_order.check_tree(self.root), [
            "tools/unheard_of/a.cpp:1: tools/unheard_of/ has no place in the order; add it to the tables in folder_order.py"])

    def test_new_folder_that_the_lists_do_not_name_is_found(self):
        self.write("dev", "readonly SOURCE_FOLDERS=(include)\n")
        self.write(".clang-tidy", "HeaderFilterRegex: '/(foundation)/[^/]*\\.h$'\n")
        self.write("tools/.clang-tidy", "HeaderFilterRegex: '/tools/[^/]*\\.h$'\n")
        self.write("foundation/a/b.h", "")
        self.write("newcomer/a.h", "")
        self.assertEqual(folder_order.check_lists(self.root), [
            "foundation/ is not in SOURCE_FOLDERS of dev",
            "newcomer/ is not in OUR_FOLDERS of folder_order.py",
            "newcomer/ is not in SOURCE_FOLDERS of dev",
            "newcomer/ is not in INTERNAL_FOLDERS of check_headers.py",
            "foundation/a/ does not match HeaderFilterRegex in .clang-tidy"])

    def test_example_includes_public_headers_only(self):
        self.write("examples/a.cpp", '#include <qzlog.h>\n#include "foundation/locks.h"\n')
        self.write("include/qzlog.h", "")
        self.assertEqual(folder_order.check_tree(self.root), ["examples/a.cpp:2: examples/ must not include foundation/locks.h"])

    def test_file_without_a_layer_is_found(self):
        self.write("util/new_thing.h", "")
        self.assertEqual(folder_order.check_tree(self.root), [
            "util/new_thing.h:1: belongs to no layer; add it to the table in folder_order.py"])


class Headers(TreeTest):
    def test_complete_headers_are_accepted(self):
        self.write("include/a.h", "inline int one() { return 1; }\n")
        self.write("entry/b.h", '#include "a.h"\ninline int two() { return one() + 1; }\n')
        self.assertEqual(check_headers.check_tree(self.root), (10, []))

    def test_header_newer_than_cxx11_is_found(self):
        self.write("include/a.h", "inline auto one() { return 1; }\n")
        _, findings = check_headers.check_tree(self.root)
        self.assertEqual([finding.splitlines()[0] for finding in findings], [
            "a.h: does not compile on its own with g++ -std=c++11",
            "a.h: does not compile on its own with clang++ -std=c++11"])

    def test_warning_is_a_finding(self):
        self.write("include/a.h", "inline char cut(int value) { return value; }\n")
        self.assertEqual(len(check_headers.check_tree(self.root)[1]), 8)

    def test_public_header_that_pulls_in_icu_is_found(self):
        self.write("include/unicode/fake.h", "")
        self.write("include/a.h", "#include <unicode/fake.h>\n")
        self.assertIn("a.h: pulls in an ICU header", check_headers.check_tree(self.root)[1])

    def test_compiler_named_for_public_headers_compiles_no_others(self):
        self.write("include/a.h", "inline char cut(int value) { return value; }\n")
        self.write("entry/b.h", "inline std::string name();\n")
        count, findings = check_headers.check_tree(self.root, "clang++")
        self.assertEqual((count, len(findings)), (4, 4))
        self.assertIn("a.h: does not compile on its own with clang++ -std=c++11", findings[0])

    def test_internal_header_that_needs_another_first_is_found(self):
        self.write("entry/b.h", "inline std::string name();\n")
        self.assertEqual(len(check_headers.check_tree(self.root)[1]), 2)

    def test_header_for_plugins_that_c_cannot_read_is_found(self):
        self.write("ship/a.h", "inline bool one() { return true; }\n")
        self.assertEqual([finding.splitlines()[0] for finding in check_headers.check_tree(self.root)[1]], [
            "ship/a.h: does not compile on its own with gcc -std=c99",
            "ship/a.h: does not compile on its own with clang -std=c99",
            "ship/a.h: does not compile on its own with gcc -std=c17"])


class Docs(TreeTest):
    def check(self, text):
        page = self.write("page.md", text)
        return [finding.replace(page, "page.md") for finding in check_docs.check_page(page, dict(os.environ))]

    def test_block_that_prints_what_the_page_says_is_accepted(self):
        self.assertEqual(self.check("<!-- file: a.txt -->\n```\none\n```\n\n<!-- run -->\n```sh\n$ cat a.txt\none\n```\n"), [])

    def test_block_that_prints_something_else_is_found_with_its_line(self):
        findings = self.check("Text\n\n<!-- run -->\n```sh\n$ echo two\none\n```\n")
        self.assertEqual(findings[0], "page.md:4: the output differs (- page, + now)")
        self.assertIn("-one", findings)
        self.assertIn("+two", findings)

    def test_folder_that_is_copied_is_there_for_the_blocks_behind_it(self):
        self.assertEqual(self.check("<!-- copy: tests/lint -->\n\n<!-- run -->\n```sh\n$ ls test_lint.py\ntest_lint.py\n```\n"), [])

    def test_folder_to_copy_that_is_not_there_is_found(self):
        self.assertEqual(self.check("Text\n\n<!-- copy: tests/gone -->\n"), ["page.md:3: tests/gone is no folder"])

    def test_comment_that_copies_marks_no_block(self):
        self.assertEqual(self.check("<!-- copy: tests/lint -->\n```sh\n$ false\n```\n"),
                         ["page.md:2: the block has no mark (file, run, not run)"])

    def test_block_without_a_mark_is_found(self):
        self.assertEqual(self.check("<!-- run -->\nText\n```\n$ false\n```\n"),
                         ["page.md:3: the block has no mark (file, run, not run)"])

    def test_link_to_a_missing_page_is_found(self):
        self.assertEqual(self.check("[a](page.md#x) [b](gone.md) [c](https://example.com/)\n"),
                         ["page.md: gone.md does not exist"])


if __name__ == "__main__":
    unittest.main()
