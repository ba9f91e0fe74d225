#include "tools/report/finding_printer.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tools/report/source_rules.h"

namespace {

using qzlog_compiler::Finding;
using qzlog_compiler::Rule;
using qzlog_compiler::Severity;
using qzlog_tool::FindingPrinter;

constexpr const char* kSource = "version: \"1.0\"\nentries:\n  - {id: 1}\n\n";

std::string printed(const Finding& diagnostic, bool colour = false) {
  std::ostringstream out;
  FindingPrinter printer(colour);
  printer.add_source("a.yaml", kSource);
  printer.print({&diagnostic, 1}, out);
  return out.str();
}

TEST(FindingPrinter, Place_IsShownWithItsLine) {
  EXPECT_EQ(printed({"a.yaml", {3, 10}, Severity::kError, Rule::kDuplicateId, "text"}),
            "a.yaml:3:10: error: text [duplicate-id]\n"
            "    3 |   - {id: 1}\n"
            "      |          ^\n");
}

TEST(FindingPrinter, NotesAndHint_FollowInThisOrder) {
  Finding diagnostic{"a.yaml", {3, 10}, Severity::kWarning, Rule::kPathConflict, "text"};
  diagnostic.with_hint("do this").with_note({1, 1}, "the first is here");
  diagnostic.notes.push_back({"b.ldf", {}, "and here"});
  EXPECT_EQ(printed(diagnostic),
            "a.yaml:3:10: warning: text [path-conflict]\n"
            "    3 |   - {id: 1}\n"
            "      |          ^\n"
            "a.yaml:1:1: note: the first is here\n"
            "    1 | version: \"1.0\"\n"
            "      | ^\n"
            "b.ldf: note: and here\n"
            "  hint: do this\n");
}

TEST(FindingPrinter, EmptyLine_IsShownWithoutBlanksAtItsEnd) {
  EXPECT_EQ(printed({"a.yaml", {4, 1}, Severity::kError, Rule::kYamlSyntax, "text"}),
            "a.yaml:4:1: error: text [yaml-syntax]\n    4 |\n      | ^\n");
}

TEST(FindingPrinter, NoPlaceOrNoSource_ShowsNoLine) {
  EXPECT_EQ(printed({"a.yaml", {}, Severity::kError, Rule::kYamlSyntax, "text"}),
            "a.yaml: error: text [yaml-syntax]\n");
  EXPECT_EQ(printed({"b.yaml", {1, 2}, Severity::kError, Rule::kYamlSyntax, "text"}),
            "b.yaml:1:2: error: text [yaml-syntax]\n");
  EXPECT_EQ(printed({"a.yaml", {99, 2}, Severity::kError, Rule::kYamlSyntax, "text"}),
            "a.yaml:99:2: error: text [yaml-syntax]\n");
}

TEST(FindingPrinter, Colour_IsOnTheWordsAndTheCaret) {
  EXPECT_EQ(printed(Finding{"a.yaml", {2, 1}, Severity::kWarning, Rule::kPathConflict, "text"}.with_hint("do"), true),
            "a.yaml:2:1: \033[1;35mwarning:\033[0m text [path-conflict]\n"
            "    2 | entries:\n"
            "      | \033[1;32m^\033[0m\n"
            "  \033[1;36mhint:\033[0m do\n");
}

TEST(FindingPrinter, LineWithoutAColumn_HasTheCaretUnderItsFirstWord) {
  EXPECT_EQ(printed({"a.yaml", 3, Severity::kError, Rule::kDuplicateId, "text"}),
            "a.yaml:3: error: text [duplicate-id]\n"
            "    3 |   - {id: 1}\n"
            "      |   ^\n");
}

TEST(FindingPrinter, EntryAndSubject_StandBeforeTheText) {
  Finding finding{"a.ldf", {}, Severity::kError, Rule::kDuplicateId, "text"};
  finding.entry_id = 7;
  EXPECT_EQ(printed(finding), "a.ldf: error: entry 7: text [duplicate-id]\n");
  finding.subject = "message 'x'";
  EXPECT_EQ(printed(finding), "a.ldf: error: entry 7, message 'x': text [duplicate-id]\n");
  finding.entry_id.reset();
  EXPECT_EQ(printed(finding), "a.ldf: error: message 'x': text [duplicate-id]\n");
}

TEST(FindingPrinter, PlaceInABinaryFile_IsItsOffset) {
  Finding finding{"a.ldf", {}, Severity::kError, Rule::kBadDefinitionFile, "text"};
  finding.offset = 0;
  EXPECT_EQ(printed(finding), "a.ldf: offset 0: error: text [bad-definition-file]\n");
}

TEST(FindingPrinter, ControlCharacters_AreEscapedWhereverTheyStand) {
  Finding finding{"a\n.yaml", {}, Severity::kError, Rule::kBadNumber, "\x1B[2J"};
  finding.notes.push_back({"b\r", {}, "\x07"});
  finding.hint = "\u202E";
  finding.subject = "\t";
  EXPECT_EQ(printed(finding),
            "a\\n.yaml: error: \\t: \\u001B[2J [bad-number]\n"
            "b\\u000D: note: \\u0007\n"
            "  hint: \\u202E\n");
}

TEST(FindingPrinter, PartOfASource_IsShownWhereItBegins) {
  std::ostringstream out;
  FindingPrinter printer(false);
  const Finding finding{"a.jsonl", 5000000001, Severity::kError, Rule::kBadNumber, "text"};
  printer.add_source("a.jsonl", "{\"id\":1\u2028}\r", qzlog_compiler::LineBreaks::kLineFeed, 5000000001);
  printer.print({&finding, 1}, out);
  EXPECT_EQ(out.str(),
            "a.jsonl:5000000001: error: text [bad-number]\n"
            "5000000001 | {\"id\":1\\u2028}\n"
            "           | ^\n");
}

TEST(FindingHeading, IsTheFirstLine) {
  Finding finding{"storage.yaml", {12, 9}, Severity::kError, Rule::kUnknownType, "unknown type 'Char33'"};
  finding.hint = "hint";
  EXPECT_EQ(qzlog_tool::finding_heading(finding), "storage.yaml:12:9: error: unknown type 'Char33' [unknown-type]");
}

}  // namespace
