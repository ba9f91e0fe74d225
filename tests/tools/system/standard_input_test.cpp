#include "tools/system/standard_input.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/system/command_error.h"

namespace {

using qzlog_tool::CommandError;
using qzlog_tool::refuse_repeated_standard_input;

TEST(RefuseRepeatedStandardInput, OnceOrNever_IsLeft) {
  EXPECT_NO_THROW(refuse_repeated_standard_input({}));
  EXPECT_NO_THROW(refuse_repeated_standard_input({"", "a.yaml", "", "a.yaml"}));
  EXPECT_NO_THROW(refuse_repeated_standard_input({"a.yaml", "-", "./-"}));
}

TEST(RefuseRepeatedStandardInput, Twice_IsRefused) {
  try {
    refuse_repeated_standard_input({"-", "a.yaml", "-"});
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_STREQ(error.what(), "standard input can be read for one file only");
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
  }
}

}  // namespace
