#include "tools/shown/csv_value.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_tool {
namespace {

std::string csv(std::string_view value) {
  std::string text;
  append_csv(value, text);
  return text;
}

TEST(CsvValue, Values_AreInQuotesWhereTheyNeedThem) {
  EXPECT_EQ(csv(""), "");
  EXPECT_EQ(csv("vol 1; 'x'"), "vol 1; 'x'");
  EXPECT_EQ(csv("a,b"), "\"a,b\"");
  EXPECT_EQ(csv("say \"a\""), "\"say \"\"a\"\"\"");
  EXPECT_EQ(csv("a\r\nb"), "\"a\r\nb\"");
}

}  // namespace
}  // namespace qzlog_tool
