#include "tools/manual/shell_quoting.h"

#include <gtest/gtest.h>

namespace {

using qzlog_tool::joined;
using qzlog_tool::shell_quoted;
using qzlog_tool::with_backslashes;

TEST(ShellQuoted, Apostrophes_LeaveTheQuotes) {
  EXPECT_EQ(shell_quoted(""), "''");
  EXPECT_EQ(shell_quoted("a $b `c` \\"), "'a $b `c` \\'");
  EXPECT_EQ(shell_quoted("it's"), "'it'\\''s'");
}

TEST(WithBackslashes, CharactersNamed_GetOne) {
  EXPECT_EQ(with_backslashes("[a:b]\\", "[]\\"), "\\[a:b\\]\\\\");
  EXPECT_EQ(with_backslashes("plain", ":"), "plain");
}

TEST(Joined, Separators_StandBetween) {
  EXPECT_EQ(joined({}, ", "), "");
  EXPECT_EQ(joined({"a"}, ", "), "a");
  EXPECT_EQ(joined({"a", "", "b"}, ", "), "a, , b");
}

}  // namespace
