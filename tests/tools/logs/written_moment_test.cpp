#include "tools/logs/written_moment.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/support/support.h"

namespace {

using qzlog_tool::written_moment;

TEST(WrittenMoment, TextsWithAZone_AreTheirMoments) {
  const qz_test::TimeZone zone("Asia/Kathmandu");
  constexpr long long kMoment = 1795248930;
  EXPECT_EQ(written_moment("2026-11-21T08:15:30Z"), kMoment);
  EXPECT_EQ(written_moment("2026-11-21T08:15:30.999999999Z"), kMoment);
  EXPECT_EQ(written_moment("2026-11-21T09:15:30+01:00"), kMoment);
  EXPECT_EQ(written_moment("2026-11-21 08:15:30 GMT"), kMoment);
  EXPECT_EQ(written_moment("1969-12-31T23:59:59Z"), -1);
}

TEST(WrittenMoment, OtherTexts_AreNone) {
  const qz_test::TimeZone zone("Asia/Kathmandu");
  for (const char* const text : {"", "Z", "2026-11-21", "2026-11-21T08:15:30", "2026-11-21 08:15:30",
                                 "2026-13-21T08:15:30Z", "2026-11-21T08:15:30Zz", "1795248930"}) {
    EXPECT_EQ(written_moment(text), std::nullopt) << text;
  }
}

}  // namespace
