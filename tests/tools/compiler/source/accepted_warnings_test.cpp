#include "tools/compiler/source/accepted_warnings.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/source_fixture.h"
#include "tools/compiler/source/compiler.h"

namespace qzlog_compiler {
namespace {

/// Three attributes that no message uses, the first two in one entry.
std::string source(const std::string& file_list, const std::string& entry_list) {
  return "version: '1.0'\n" + file_list +
         "entries:\n"
         "  - id: 1\n"
         "    name: A\n" +
         entry_list +
         "    message: x\n"
         "    attributes: [{name: P, type: Bool}, {name: Q, type: Bool}]\n"
         "  - {id: 2, name: B, message: x, attributes: [{name: R, type: Bool}]}\n";
}

std::string diagnostics(const std::string& text, RenderingPaths path = RenderingPaths::kBoth) {
  CompileOptions options;
  options.path = path;
  return printed(compile_source(text, "f", options).diagnostics);
}

constexpr const char* kFileList = "accept: [{rule: unused-attribute, reason: for programs}]\n";
constexpr const char* kEntryList = "    accept: [{rule: unused-attribute, reason: for programs}]\n";

TEST(AcceptedWarnings, OfTheFile_CoverEveryEntry) { EXPECT_EQ(diagnostics(source(kFileList, "")), ""); }

TEST(AcceptedWarnings, OfAnEntry_CoverThatEntryAlone) {
  EXPECT_EQ(diagnostics(source("", kEntryList)),
            "f:8:54: warning: the attribute 'R' is in no message of its entry and selects none [unused-attribute]\n");
}

TEST(AcceptedWarnings, OfBothScopes_AreBothOfUse) { EXPECT_EQ(diagnostics(source(kFileList, kEntryList)), ""); }

TEST(AcceptedWarnings, ListedBehindWhatTheyAccept_Hold) { EXPECT_EQ(diagnostics(source("", "") + kFileList), ""); }

TEST(AcceptedWarnings, ThatDoNotOccur_AreReportedWhereTheyAreListed) {
  EXPECT_EQ(diagnostics("version: '1.0'\naccept: [{rule: long-message, reason: r}]\nentries: []\n"),
            "f:2:17: warning: the warning long-message is accepted here, but does not occur [unused-accept]\n");
}

TEST(AcceptedWarnings, ListedTwice_AreOfUseOnce) {
  const std::string list = "accept:\n- {rule: unused-attribute, reason: a}\n- {rule: unused-attribute, reason: b}\n";
  EXPECT_EQ(diagnostics(source(list, "")),
            "f:3:10: warning: the warning unused-attribute is accepted here, but does not occur [unused-accept]\n");
}

TEST(AcceptedWarnings, OfASelectorMessage_CoverItAlone) {
  const auto text = [](const std::string& accept) {
    return "version: '1.0'\nentries:\n- id: 1\n  name: A\n  selector:\n    attribute: K\n    messages:\n"
           "    - {index: 1, value: 1, id: a, text: '{N}'" +
           accept +
           "}\n"
           "    - {index: 2, value: 2, id: b, text: '{N}'}\n"
           "  message: '{N}'\n  attributes: [{name: N, type: UInt4}, {name: K, type: UInt1}]\n";
  };
  const std::string warning =
      ": warning: values of 'N' above 2147483647 show as negative numbers on the ICU path "
      "[negative-unsigned]\n";
  EXPECT_EQ(diagnostics(text("")), "f:8:42" + warning + "f:9:42" + warning + "f:10:13" + warning);
  EXPECT_EQ(diagnostics(text(", accept: [{rule: negative-unsigned, reason: small}]")),
            "f:9:42" + warning + "f:10:13" + warning);
}

TEST(AcceptedWarnings, AboutAPath_MayNotOccurInARunForOneOfThem) {
  const std::string text =
      "version: '1.0'\naccept: [{rule: path-conflict, reason: for ICU}]\n"
      "entries: [{id: 1, name: A, message: 'a {{ b'}]\n";
  for (const RenderingPaths path : {RenderingPaths::kBoth, RenderingPaths::kIcu, RenderingPaths::kNarrow}) {
    EXPECT_EQ(diagnostics(text, path), "");
  }
}

TEST(AcceptedWarnings, OfTheRuleThatAWarningHadBefore_CoverItStill) {
  const auto text = [](const std::string& list) {
    return "version: '1.0'\n" + list + "entries: [{id: 1, name: A, raw: '{x}%_%TIMESTAMP%'}]\n";
  };
  EXPECT_EQ(diagnostics(text("")), "f:2:33: warning: ICU takes '{x}' for an argument of its own [pattern-argument]\n");
  EXPECT_EQ(diagnostics(text("accept: [{rule: pattern-argument, reason: r}]\n")), "");
  EXPECT_EQ(diagnostics(text("accept: [{rule: broken-template, reason: r}]\n")), "");
}

TEST(AcceptedWarnings, ErrorOfTheSameRule_Stays) {
  EXPECT_EQ(diagnostics("version: '1.0'\naccept: [{rule: literal-percent, reason: r}]\n"
                        "entries: [{id: 1, name: A, message: 'a % b'}]\n"),
            "f:3:40: error: no path can show a percent sign here, and only the ICU path one at the very start of a "
            "message [literal-percent]\n");
}

TEST(AcceptedWarnings, MistakenLists_AreErrors) {
  const auto list = [](const std::string& items) {
    return diagnostics("version: '1.0'\naccept: " + items + "\nentries: []\n");
  };
  EXPECT_EQ(list("[{rule: long-massage, reason: r}]"),
            "f:2:17: error: there is no rule 'long-massage' [unknown-rule]\n");
  EXPECT_EQ(list("[{rule: unknown-key, reason: r}]"),
            "f:2:17: error: 'unknown-key' is nothing that can be accepted [rule-not-acceptable]\n");
  EXPECT_EQ(list("[{rule: unused-accept, reason: r}]"),
            "f:2:17: error: 'unused-accept' is nothing that can be accepted [rule-not-acceptable]\n");
  EXPECT_EQ(list("[{rule: long-message, reason: ' '}]"), "f:2:39: error: an empty reason [empty-reason]\n");
  EXPECT_EQ(list("[{rule: long-message}]"),
            "f:2:10: error: an accepted warning lacks the key 'reason' [missing-key]\n");
  EXPECT_EQ(list("{rule: long-message}"),
            "f:2:9: error: expected a list of accepted warnings, found a mapping [wrong-type]\n");
}

TEST(AcceptedWarnings, ForThoseWhoOnlyUseTheDefinitions_AreNotMissed) {
  CompileOptions options;
  options.surprises = false;
  const std::string text = source("accept: [{rule: long-message, reason: r}]\n", "");
  EXPECT_EQ(printed(compile_source(text, "f", options).diagnostics), "");
}

}  // namespace
}  // namespace qzlog_compiler
