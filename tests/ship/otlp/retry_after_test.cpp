#include "ship/otlp/retry_after.h"

#include <gtest/gtest.h>

#include <ctime>
#include <optional>
#include <string>

namespace qzlog_ship {
namespace {

using std::chrono::seconds;

TEST(RetryAfter, Seconds_AreTakenUpToAnHour) {
  EXPECT_EQ(parse_retry_after("0"), seconds(0));
  EXPECT_EQ(parse_retry_after("120"), seconds(120));
  EXPECT_EQ(parse_retry_after("3601"), seconds(3600));
  EXPECT_EQ(parse_retry_after("-5"), seconds(0));
  EXPECT_EQ(parse_retry_after("99999999999999999999999"), seconds(3600));
}

TEST(RetryAfter, Date_IsAsLongAsItIsFrom) {
  const std::time_t later = std::time(nullptr) + 100;
  char text[64] = {};
  std::tm parts = {};
  ASSERT_NE(std::strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S GMT", ::gmtime_r(&later, &parts)), 0U);
  const std::optional<seconds> time = parse_retry_after(text);
  ASSERT_TRUE(time);
  EXPECT_GE(time->count(), 90);
  EXPECT_LE(time->count(), 100);
  EXPECT_EQ(parse_retry_after("Sat, 21 Nov 1998 08:15:30 GMT"), seconds(0));
}

TEST(RetryAfter, OtherTexts_SayNothing) {
  EXPECT_EQ(parse_retry_after(""), std::nullopt);
  EXPECT_EQ(parse_retry_after("soon"), std::nullopt);
  EXPECT_EQ(parse_retry_after("3 seconds"), std::nullopt);
}

}  // namespace
}  // namespace qzlog_ship
