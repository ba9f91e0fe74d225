#include "tools/choice/reader_moment.h"

#include <gtest/gtest.h>

#include <ctime>
#include <optional>
#include <string>

#include "tests/support/support.h"

namespace {

using qzlog_tool::find_moment;
using qzlog_tool::line_moment_text;
using qzlog_tool::process_clock;

constexpr long long kNow = 1795248930;  // 2026-11-21 08:15:30 GMT, 14:00:30 in Kathmandu

class ReaderMoment : public ::testing::Test {
 protected:
  qz_test::TimeZone zone_{"Asia/Kathmandu"};  // 5:45 east
};

struct Case {
  const char* text;
  long long moment;
};

TEST_F(ReaderMoment, EachForm_GivesItsMoment) {
  constexpr long long kEast = (5 * 60 + 45) * 60;
  constexpr long long kToday = kNow - (8 * 3600 + 15 * 60 + 30) - kEast;
  const Case cases[] = {
      {"2026-11-21T08:15:30Z", kNow},
      {"2026-11-21t08:15:30z", kNow},
      {"2026-11-21T08:15:30.999Z", kNow},
      {"2026-11-21T09:15:30+01:00", kNow},
      {"2026-11-20T22:15:30-10:00", kNow},
      {"2026-11-21 08:15:30Z", kNow},
      {"2026-11-21 08:15:30 GMT", kNow},
      {"2026-11-21 14:00:30", kNow},
      {"2026-11-21T14:00:30", kNow},
      {"2026-11-21 14:00", kNow - 30},
      {"2026-11-21T14:00", kNow - 30},
      {"2026-11-21", kToday},
      {"today", kToday},
      {"yesterday", kToday - 86400},
      {"now", kNow},
      {"-0s", kNow},
      {"-90s", kNow - 90},
      {"-30m", kNow - 1800},
      {"-2h", kNow - 7200},
      {"-3d", kNow - 3 * 86400},
      {"-1w", kNow - 7 * 86400},
      {"@1795248930", kNow},
      {"@0", 0},
      {"@-1", -1},
  };
  for (const Case& tested : cases)
    EXPECT_EQ(find_moment(tested.text, process_clock(kNow)), tested.moment) << tested.text;
}

TEST_F(ReaderMoment, OtherTexts_GiveNone) {
  for (const char* text : {"",
                           " ",
                           "Today",
                           "tomorrow",
                           "-",
                           "-2",
                           "-h",
                           "-2y",
                           "-2.5h",
                           "--2h",
                           "- 2h",
                           "2h",
                           "+2h",
                           "-2h ",
                           "@",
                           "@x",
                           "@1.5",
                           "@ 1",
                           "2026",
                           "2026-11",
                           "2026-11-2",
                           "2026-11-21T",
                           "2026-11-21 8:15",
                           "2026-13-01",
                           "2026-02-30",
                           "2026-11-21 24:00",
                           "2026-11-21 08:15:61",
                           "2026-11-21T08:15Z",
                           "2026-11-21T08:15:30+1",
                           "21.11.2026",
                           "-99999999999999999999h",
                           "-9999999999999w",
                           "@9223372036854775807",
                           "@99999999999999999999",
                           "-1000000w"}) {
    EXPECT_EQ(find_moment(text, process_clock(kNow)), std::nullopt) << text;
  }
  EXPECT_EQ(find_moment(std::string("today\0", 6), process_clock(kNow)), std::nullopt);
  EXPECT_EQ(find_moment(std::string("2026-11-21\0", 11), process_clock(kNow)), std::nullopt);
}

TEST_F(ReaderMoment, LineText_IsAsWritersWriteIt) {
  EXPECT_EQ(line_moment_text(kNow), "2026-11-21T08:15:30Z");
  EXPECT_EQ(line_moment_text(0), "1970-01-01T00:00:00Z");
  EXPECT_EQ(line_moment_text(*find_moment("0001-01-01T00:00:00Z", process_clock(0))), "0001-01-01T00:00:00Z");
  EXPECT_EQ(line_moment_text(*find_moment("9999-12-31T23:59:59Z", process_clock(0))), "9999-12-31T23:59:59Z");
}

}  // namespace
