#include "tools/logs/entry_error.h"

#include <gtest/gtest.h>

#include "lines/line_rule.h"

namespace {

TEST(EntryError, EveryRuleOfTheReader_IsInTheTable) {
  for (const char* const name : qzlog::kLineRuleNames) {
    EXPECT_NE(qzlog_compiler::find_rule(qzlog_tool::all_entry_rules(), name), nullptr) << name;
  }
}

}  // namespace
