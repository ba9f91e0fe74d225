#include "tools/compile/dependency_file.h"

#include <gtest/gtest.h>

#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

TEST(DependencyRule, PlainNames_StandOneALine) {
  EXPECT_EQ(dependency_rule("out/a.ldf", {"a.yaml", "/x/std.yaml"}), "out/a.ldf: \\\n  a.yaml \\\n  /x/std.yaml\n");
}

TEST(DependencyRule, NoInputs_LeaveTheTargetAlone) { EXPECT_EQ(dependency_rule("a.ldf", {}), "a.ldf:\n"); }

TEST(DependencyRule, CharactersThatMakeReads_AreEscaped) {
  EXPECT_EQ(dependency_rule("my file.ldf", {}), "my\\ file.ldf:\n");
  EXPECT_EQ(dependency_rule("tab\there", {}), "tab\\\there:\n");
  EXPECT_EQ(dependency_rule("no#1", {}), "no\\#1:\n");
  EXPECT_EQ(dependency_rule("$HOME", {}), "$$HOME:\n");
  EXPECT_EQ(dependency_rule("c:d", {}), "c\\:d:\n");
}

TEST(DependencyRule, Backslashes_AreDoubledBeforeABlankOnly) {
  EXPECT_EQ(dependency_rule("a\\b", {}), "a\\b:\n");
  EXPECT_EQ(dependency_rule("a\\\\ b\\ c", {}), "a\\\\\\\\\\ b\\\\\\ c:\n");
}

TEST(DependencyRule, NameWithALineBreak_IsRefused) {
  try {
    dependency_rule("a.ldf", {"b\nc"});
    FAIL() << "it was taken";
  } catch (const CommandError& error) {
    EXPECT_EQ(error.exit_status(), kExitCannotRun);
    EXPECT_STREQ(error.what(), "a dependency file cannot hold 'b\\nc'");
  }
}

}  // namespace
}  // namespace qzlog_tool
