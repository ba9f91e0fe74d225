#include "tools/transport/log_origin.h"

#include <gtest/gtest.h>

#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

using Kind = LogOrigin::Kind;

TEST(LogOrigin, Places_AreTold) {
  EXPECT_EQ(log_origin("").kind, Kind::kFiles);
  EXPECT_EQ(log_origin("syslog").kind, Kind::kSyslog);
  EXPECT_EQ(log_origin("journal").journal->text(), "journal");
  EXPECT_EQ(log_origin("journal:shop").journal->text(), "journal:shop");
  EXPECT_EQ(log_origin("nats://h:1/S").url->text(), "nats://h:1/S");
  EXPECT_FALSE(log_origin("journal").has_files());
  EXPECT_TRUE(log_origin("syslog").has_files());
  for (const char* const text : {"sysloge", "journald", "nats:h", "a/b", "://", "user:pw@host"}) {
    EXPECT_THROW(log_origin(text), CommandError) << text;
  }
}

TEST(LogOrigin, Start_IsAPlaceOrAMoment) {
  ReaderClock clock;
  clock.now = 1000;
  clock.offset_at = [](long long) { return 0L; };
  EXPECT_EQ(parse_start("", clock)->kind, QZLOG_FROM_BEGINNING);
  EXPECT_EQ(parse_start("beginning", clock)->kind, QZLOG_FROM_BEGINNING);
  EXPECT_EQ(parse_start("now", clock)->kind, QZLOG_FROM_NOW);
  const auto sequence = parse_start("sequence=18446744073709551615", clock);
  EXPECT_EQ(sequence->kind, QZLOG_FROM_SEQUENCE);
  EXPECT_EQ(sequence->sequence, UINT64_MAX);
  const auto time = parse_start("-10s", clock);
  EXPECT_EQ(time->kind, QZLOG_FROM_TIME);
  EXPECT_EQ(time->nanoseconds, 990'000'000'000);
  for (const char* const text :
       {"sequence=", "sequence=-1", "sequence=18446744073709551616", "sequence=1x", "5", "@9300000000", "end"}) {
    EXPECT_FALSE(parse_start(text, clock)) << text;
  }
}

}  // namespace
}  // namespace qzlog_tool
