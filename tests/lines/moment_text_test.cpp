#include "lines/moment_text.h"

#include <gtest/gtest.h>

#include <string>

#include "qzlog/qz_time.h"
#include "tests/support/rounds.h"
#include "tests/support/seeded_random.h"

namespace qzlog {
namespace {

std::string written(long long unix_seconds) {
  char text[kMomentText];
  return std::string(text, write_moment(text, unix_seconds));
}

TEST(WriteMoment, KnownMoments) {
  EXPECT_EQ(written(0), "1970-01-01T00:00:00");
  EXPECT_EQ(written(-1), "1969-12-31T23:59:59");
  EXPECT_EQ(written(951782400), "2000-02-29T00:00:00");
  EXPECT_EQ(written(1795248930), "2026-11-21T08:15:30");
  EXPECT_EQ(written(-62167219200), "0000-01-01T00:00:00");
  EXPECT_EQ(written(253402300799), "9999-12-31T23:59:59");
}

TEST(WriteMoment, OutsideTheYearsThatHaveAText_TheFirstOrTheLastThatHasOne) {
  EXPECT_EQ(written(-62167219201), "0000-01-01T00:00:00");
  EXPECT_EQ(written(253402300800), "9999-12-31T23:59:59");
  EXPECT_EQ(written(-9223372036854775807LL - 1), "0000-01-01T00:00:00");
  EXPECT_EQ(written(9223372036854775807LL), "9999-12-31T23:59:59");
}

TEST(WriteMoment, RandomMoments_ReadBackAsTheSame) {
  qz_test::SeededRandom random;
  for (int i = 0; i < qz_test::rounds(100000); ++i) {
    const long long seconds = random.between(-62167219200, 253402300799);
    qz_Time time;
    ASSERT_TRUE(time.set_to_string_value((written(seconds) + 'Z').c_str()));
    EXPECT_EQ(time.unix_seconds(), seconds);
  }
}

}  // namespace
}  // namespace qzlog
