#include "util/assertion.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/support.h"

namespace {

using qz_test::DebugLogFile;
using qz_test::Texts;

std::string reported_on_stderr(const char* expression, const char* file, int line) {
  testing::internal::CaptureStderr();
  QZ_assertion_violation(expression, file, line);
  return testing::internal::GetCapturedStderr();
}

TEST(AssertionViolation, Report_NamesExpressionFileAndLineOnStderr) {
  const DebugLogFile log(0);
  EXPECT_EQ(reported_on_stderr("filename && log_prefix", "log_util", 77),
            "log_util:77 assertion violated: filename && log_prefix\n");
  EXPECT_FALSE(log.exists());
}

TEST(AssertionViolation, TraceOn_AlsoADebugRecordOfLevelOne) {
  const DebugLogFile log(1);
  reported_on_stderr("filename && log_prefix", "log_util", 77);
  EXPECT_EQ(log.records(), Texts({"log_util:77 QZ_assertion_violation, filename && log_prefix\n"}));
}

TEST(AssertionViolation, ExpressionWithPercentSigns_WrittenAsItIs) {
  const DebugLogFile log(1);
  EXPECT_EQ(reported_on_stderr("count %s 2 == %n", "unit", 1), "unit:1 assertion violated: count %s 2 == %n\n");
  EXPECT_EQ(log.records(), Texts({"unit:1 QZ_assertion_violation, count %s 2 == %n\n"}));
}

TEST(AssertionViolation, SeveralReports_ExecutionGoesOn) {
  const DebugLogFile log(1);
  testing::internal::CaptureStderr();
  for (int line = 1; line <= 3; ++line) QZ_assertion_violation("x", "unit", line);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "unit:1 assertion violated: x\nunit:2 assertion violated: x\nunit:3 assertion violated: x\n");
  EXPECT_EQ(log.records().size(), 3U);
}

}  // namespace
