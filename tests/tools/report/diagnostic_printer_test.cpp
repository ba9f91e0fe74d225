#include "tools/report/diagnostic_printer.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using qzlog_compiler::Diagnostic;
using qzlog_compiler::Rule;
using qzlog_compiler::Severity;
using qzlog_tool::DiagnosticPrinter;

constexpr const char* kSource = "version: \"1.0\"\nentries:\n  - {id: 1}\n\n";

std::string printed(const Diagnostic& diagnostic, bool colour = false) {
  std::ostringstream out;
  DiagnosticPrinter printer(out, colour);
  printer.add_source("a.yaml", kSource);
  printer.print(std::vector{diagnostic});
  return out.str();
}

TEST(DiagnosticPrinter, Place_IsShownWithItsLine) {
  EXPECT_EQ(printed({"a.yaml", {3, 10}, Severity::kError, Rule::kDuplicateId, "text"}),
            "a.yaml:3:10: error: text [duplicate-id]\n"
            "    3 |   - {id: 1}\n"
            "      |          ^\n");
}

TEST(DiagnosticPrinter, NotesAndHint_FollowInThisOrder) {
  Diagnostic diagnostic{"a.yaml", {3, 10}, Severity::kWarning, Rule::kPathConflict, "text"};
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

TEST(DiagnosticPrinter, EmptyLine_IsShownWithoutBlanksAtItsEnd) {
  EXPECT_EQ(printed({"a.yaml", {4, 1}, Severity::kError, Rule::kYamlSyntax, "text"}),
            "a.yaml:4:1: error: text [yaml-syntax]\n    4 |\n      | ^\n");
}

TEST(DiagnosticPrinter, NoPlaceOrNoSource_ShowsNoLine) {
  EXPECT_EQ(printed({"a.yaml", {}, Severity::kError, Rule::kYamlSyntax, "text"}),
            "a.yaml: error: text [yaml-syntax]\n");
  EXPECT_EQ(printed({"b.yaml", {1, 2}, Severity::kError, Rule::kYamlSyntax, "text"}),
            "b.yaml:1:2: error: text [yaml-syntax]\n");
  EXPECT_EQ(printed({"a.yaml", {99, 2}, Severity::kError, Rule::kYamlSyntax, "text"}),
            "a.yaml:99:2: error: text [yaml-syntax]\n");
}

TEST(DiagnosticPrinter, Colour_IsOnTheWordsAndTheCaret) {
  EXPECT_EQ(
      printed(Diagnostic{"a.yaml", {2, 1}, Severity::kWarning, Rule::kPathConflict, "text"}.with_hint("do"), true),
      "a.yaml:2:1: \033[1;35mwarning:\033[0m text [path-conflict]\n"
      "    2 | entries:\n"
      "      | \033[1;32m^\033[0m\n"
      "  \033[1;36mhint:\033[0m do\n");
}

}  // namespace
