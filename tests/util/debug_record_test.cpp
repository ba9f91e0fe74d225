#include "util/debug_record.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/support.h"

namespace {

using qz_test::DebugLogFile;
using qz_test::Texts;

TEST(DebugRecord, Call_PassesSourceNameAndItsLine) {
  const DebugLogFile log(2);
  const int line = __LINE__ + 1;
  QZ_DEBUG_RECORD(2, "unit", "%s:%d text\n");
  QZ_DEBUG_RECORD(2, "unit", "%s:%d path=%s!\n", "p");
  EXPECT_EQ(log.records(),
            Texts({"unit:" + std::to_string(line) + " text\n", "unit:" + std::to_string(line + 1) + " path=p!\n"}));
}

TEST(DebugRecord, LineGiven_IsThePassedOne) {
  const DebugLogFile log(1);
  QZ_DEBUG_RECORD_AT(1, "unit", 4711, "%s:%d text %d\n", 5);
  EXPECT_EQ(log.records(), Texts({"unit:4711 text 5\n"}));
}

TEST(DebugRecord, NotWanted_ArgumentsAreNotEvaluated) {
  const DebugLogFile log(2);
  int evaluated = 0;
  QZ_DEBUG_RECORD(3, "unit", "%s:%d %d\n", ++evaluated);
  EXPECT_EQ(evaluated, 0);
  EXPECT_FALSE(log.exists());
  QZ_DEBUG_RECORD(2, "unit", "%s:%d %d\n", ++evaluated);
  EXPECT_EQ(evaluated, 1);
  EXPECT_EQ(log.unnumbered_records(), Texts({"unit:# 1\n"}));
}

TEST(DebugRecord, LevelNineWithTheTraceOff_Written) {
  const DebugLogFile log(0);
  QZ_DEBUG_RECORD_AT(9, "unit", 1, "%s:%d always\n");
  QZ_DEBUG_RECORD_AT(0, "unit", 2, "%s:%d never\n");
  EXPECT_EQ(log.records(), Texts({"unit:1 always\n"}));
}

TEST(DebugRecord, InAnUnbracedIf_IsOneStatement) {
  const DebugLogFile log(1);
  bool other = false;
  if (log.exists())
    QZ_DEBUG_RECORD_AT(1, "unit", 1, "%s:%d not reached\n");
  else
    other = true;
  EXPECT_TRUE(other);
  EXPECT_FALSE(log.exists());
}

}  // namespace
