#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qzlog/qz_time.h"
#include "tests/support/support.h"

namespace {

using qz_test::SeededRandom;
using qz_test::TimeZone;

constexpr long long kYear0 = -62167219200;
constexpr long long kYear9999 = 253402300799;
constexpr long long kSample = 1795248930;  // 2026-11-21 08:15:30 GMT

std::string text(const qz_Time& time) {
  char buffer[128] = "";
  time.print_out(buffer, sizeof(buffer));
  return buffer;
}

class QzTimeText : public testing::Test {
 protected:
  static qz_Time local_sample() {
    qz_Time time = qz_Time::from_unix_seconds(kSample);
    time.GMT_to_local();
    return time;
  }

  /// A refused text must leave value and mode alone, in both modes.
  static void expect_refused(const char* input) {
    const std::string shown = input == nullptr ? "(null)" : input;
    qz_Time gmt = qz_Time::from_unix_seconds(kSample);
    EXPECT_FALSE(gmt.set_to_string_value(input)) << shown;
    EXPECT_EQ(text(gmt), "2026-11-21 08:15:30 GMT") << shown;
    qz_Time local = local_sample();
    EXPECT_FALSE(local.set_to_string_value(input)) << shown;
    EXPECT_EQ(text(local), "2026-11-21 14:00:30") << shown;
    EXPECT_EQ(local.unix_seconds(), kSample) << shown;
  }

 private:
  TimeZone zone_{"Asia/Kathmandu"};
};

using Printer = void (qz_Time::*)(char*, unsigned) const noexcept;

/// What the printer does with every buffer size from 0 to two more than it needs.
void expect_cut_to_every_size(const qz_Time& time, Printer print, const std::string& whole) {
  for (unsigned size = 0; size <= whole.size() + 3; ++size) {
    char buffer[64];
    std::memset(buffer, '#', sizeof(buffer));
    (time.*print)(buffer, size);
    if (size > 0) {
      EXPECT_EQ(std::string(buffer), whole.substr(0, size - 1)) << "size " << size;
    }
    for (unsigned i = size; i < sizeof(buffer); ++i) ASSERT_EQ(buffer[i], '#') << "size " << size << ", byte " << i;
  }
}

TEST_F(QzTimeText, EveryBufferSize_CutAndTerminatedWithin) {
  const qz_Time gmt = qz_Time::from_unix_seconds(kSample);
  expect_cut_to_every_size(gmt, &qz_Time::print_out, "2026-11-21 08:15:30 GMT");
  expect_cut_to_every_size(gmt, &qz_Time::print_date_out, "2026-11-21");
  expect_cut_to_every_size(gmt, &qz_Time::print_time_out, "08:15:30");
  expect_cut_to_every_size(local_sample(), &qz_Time::print_out, "2026-11-21 14:00:30");
  expect_cut_to_every_size(local_sample(), &qz_Time::print_date_out, "2026-11-21");
  expect_cut_to_every_size(local_sample(), &qz_Time::print_time_out, "14:00:30");
}

TEST_F(QzTimeText, Fields_PaddedWithZeros) {
  const qz_Time time = qz_Time::from_unix_seconds(kYear0 + 3723);
  EXPECT_EQ(text(time), "0000-01-01 01:02:03 GMT");
}

TEST_F(QzTimeText, RandomTimesInBothModes_RoundTrip) {
  SeededRandom random;
  for (int i = 0; i < 10000; ++i) {
    qz_Time time = qz_Time::from_unix_seconds(random.between(kYear0 + 100000, kYear9999 - 100000));
    if (i % 2 == 1) time.GMT_to_local();
    qz_Time back = i % 3 == 0 ? local_sample() : qz_Time();
    ASSERT_TRUE(back.set_to_string_value(text(time).c_str())) << text(time);
    ASSERT_EQ(text(back), text(time));
    ASSERT_EQ(back.is_GMT_time_mode(), time.is_GMT_time_mode());
    ASSERT_EQ(back.unix_seconds(), time.unix_seconds()) << text(time);
    ASSERT_EQ(back.compare_time(time), 0);
  }
}

TEST_F(QzTimeText, FirstAndLastYear_RoundTripInBothModes) {
  for (const char* input : {"0000-01-01 00:00:00 GMT", "0000-01-01 00:00:00", "9999-12-31 23:59:59 GMT",
                            "9999-12-31 23:59:59", "0000-12-31 23:59:59 GMT", "0001-01-01 00:00:00"}) {
    qz_Time time;
    EXPECT_TRUE(time.set_to_string_value(input)) << input;
    EXPECT_EQ(text(time), input);
  }
}

TEST_F(QzTimeText, GmtText_SetsGmtMode) {
  qz_Time time = local_sample();
  EXPECT_TRUE(time.set_to_string_value("2000-02-29 01:02:03 GMT"));
  EXPECT_TRUE(time.is_GMT_time_mode());
  EXPECT_EQ(time.unix_seconds(), 951786123);
}

TEST_F(QzTimeText, TextWithoutGmt_SetsLocalMode) {
  qz_Time time;
  EXPECT_TRUE(time.set_to_string_value("2026-11-21 14:00:30"));
  EXPECT_FALSE(time.is_GMT_time_mode());
  EXPECT_EQ(time.unix_seconds(), kSample);
}

TEST_F(QzTimeText, Rfc3339_GivesTheMomentInGmtMode) {
  const struct {
    const char* text;
    long long seconds;
  } cases[] = {{"2026-11-21T08:15:30Z", kSample},
               {"2026-11-21t08:15:30z", kSample},
               {"2026-11-21T09:15:30+01:00", kSample},
               {"2026-11-21T09:15:30.5+01:00", kSample},
               {"2026-11-21T14:00:30+05:45", kSample},
               {"2026-11-21T03:15:30-05:00", kSample},
               {"2026-11-22T08:14:30+23:59", kSample},
               {"2026-11-20T08:16:30-23:59", kSample},
               {"2026-11-21T08:15:30+00:00", kSample},
               {"2026-11-21T08:15:30-00:00", kSample},
               {"2026-11-21T08:15:30.0Z", kSample},
               {"2026-11-21T08:15:30.999999999999999999999999Z", kSample},
               {"1985-04-12T23:20:50.52Z", 482196050},
               {"1996-12-19T16:39:57-08:00", 851042397},
               {"1990-12-31T23:59:60Z", 662688000},
               {"1990-12-31T15:59:60-08:00", 662688000},
               {"1937-01-01T12:00:27.87+00:20", -1041337173},
               {"2024-02-29T00:00:00Z", 1709164800},
               {"2000-02-29T00:00:00Z", 951782400},
               {"0000-01-01T00:00:00Z", kYear0},
               {"9999-12-31T23:59:59Z", kYear9999},
               {"1969-12-31T23:59:59Z", -1}};
  for (const auto& c : cases) {
    qz_Time time = local_sample();
    EXPECT_TRUE(time.set_to_string_value(c.text)) << c.text;
    EXPECT_EQ(time.unix_seconds(), c.seconds) << c.text;
    EXPECT_TRUE(time.is_GMT_time_mode()) << c.text;
  }
}

TEST_F(QzTimeText, OtherForms_RefusedAndTheValueKept) {
  for (const char* input : {"",
                            " ",
                            "GMT",
                            "2026",
                            "2026-11-21",
                            "08:15:30",
                            "2026-11-21T08:15:30",
                            "2026-11-21T08:15Z",
                            "2026-11-21T08:15:30 Z",
                            "2026-11-21T08:15:30.Z",
                            "2026-11-21T08:15:30,5Z",
                            "2026-11-21T08:15:30.5",
                            "2026-11-21T08:15:30+0100",
                            "2026-11-21T08:15:30+01",
                            "2026-11-21T08:15:30+1:00",
                            "2026-11-21T08:15:30+01:0",
                            "2026-11-21T08:15:30+01:000",
                            "2026-11-21T08:15:30+01:00x",
                            "2026-11-21T08:15:30ZZ",
                            "2026-11-21T08:15:30Z ",
                            " 2026-11-21T08:15:30Z",
                            "+2026-11-21T08:15:30Z",
                            "-2026-11-21T08:15:30Z",
                            "12026-11-21T08:15:30Z",
                            "026-11-21T08:15:30Z",
                            "2026-1-21T08:15:30Z",
                            "2026/11/21T08:15:30Z",
                            "20261121T081530Z",
                            "2026-11-21X08:15:30Z",
                            "2026-11-21T8:15:30Z",
                            "2026-11-21T08.15.30Z",
                            "2026-11-21 08:15:30 gmt",
                            "2026-11-21 08:15:30 GMT ",
                            "2026-11-21 08:15:30 GMTx",
                            "2026-11-21 08:15:30 UTC",
                            "2026-11-21 08:15:30GMT",
                            "2026-11-21 08:15:30  GMT",
                            "2026-11-21 08:15:30 ",
                            "2026-11-21  08:15:30",
                            "2026-11-21\t08:15:30",
                            " 2026-11-21 08:15:30",
                            "\xEF\xBB\xBF"
                            "2026-11-21 08:15:30",
                            "2026-11-21 08:15:3\xD9\xA0"}) {
    expect_refused(input);
  }
}

TEST_F(QzTimeText, Null_RefusedAndTheValueKept) { expect_refused(nullptr); }

TEST_F(QzTimeText, NoRealDateOrTime_RefusedInEveryForm) {
  for (const char* input : {"2026-00-21 08:15:30", "2026-13-21 08:15:30", "2026-99-21 08:15:30", "2026-11-00 08:15:30",
                            "2026-11-31 08:15:30", "2026-04-31 08:15:30", "2026-12-32 08:15:30", "2026-02-29 08:15:30",
                            "2024-02-30 08:15:30", "1900-02-29 08:15:30", "2100-02-29 08:15:30", "2026-11-21 24:00:00",
                            "2026-11-21 99:00:00", "2026-11-21 08:60:00", "2026-11-21 08:99:00", "2026-11-21 08:15:61",
                            "2026-11-21 08:15:99"}) {
    expect_refused(input);
    expect_refused((std::string(input) + " GMT").c_str());
    std::string rfc = std::string(input) + "Z";
    rfc[10] = 'T';
    expect_refused(rfc.c_str());
  }
}

TEST_F(QzTimeText, ZoneOutOfRange_Refused) {
  for (const char* input : {"2026-11-21T08:15:30+24:00", "2026-11-21T08:15:30-24:00", "2026-11-21T08:15:30+99:00",
                            "2026-11-21T08:15:30+01:60", "2026-11-21T08:15:30+01:99"}) {
    expect_refused(input);
  }
}

// With its zone taken off, such a text names a moment before the year 0 or after 9999, which has no text form.
TEST_F(QzTimeText, MomentThatHasNoTextForm_RefusedOrRoundTripped) {
  for (const char* input : {"9999-12-31T23:59:59-00:01", "9999-12-31T23:59:60Z", "9999-12-31T12:00:00-23:59",
                            "0000-01-01T00:00:00+00:01", "0000-01-01T12:00:00+23:59"}) {
    qz_Time time;
    if (!time.set_to_string_value(input)) {
      expect_refused(input);
      continue;
    }
    qz_Time back;
    EXPECT_TRUE(back.set_to_string_value(text(time).c_str())) << input << " printed as " << text(time);
    EXPECT_EQ(back.compare_time(time), 0) << input;
  }
}

TEST_F(QzTimeText, EveryProperPrefix_RefusedUnlessItIsATextItself) {
  const std::string gmt = "2026-11-21 08:15:30 GMT";
  for (std::size_t length = 0; length < gmt.size(); ++length) {
    if (length != 19) expect_refused(gmt.substr(0, length).c_str());
  }
  const std::string rfc = "2026-11-21T08:15:30.25+01:00";
  for (std::size_t length = 0; length < rfc.size(); ++length) expect_refused(rfc.substr(0, length).c_str());
}

TEST_F(QzTimeText, OneCharacterReplaced_Refused) {
  for (const std::string whole : {"2026-11-21 08:15:30 GMT", "2026-11-21T08:15:30.25+01:00"}) {
    for (std::size_t i = 0; i < whole.size(); ++i) {
      std::string damaged = whole;
      damaged[i] = 'x';
      expect_refused(damaged.c_str());
    }
  }
}

TEST_F(QzTimeText, RandomBytes_RefusedOrRoundTripped) {
  SeededRandom random;
  const std::string alphabet = "0123456789-:TZ.+ GMT";
  for (int i = 0; i < 20000; ++i) {
    std::string input = "2026-11-21T08:15:30Z";
    for (long long changes = random.between(1, 3); changes > 0; --changes) {
      input[static_cast<std::size_t>(random.between(0, 19))] =
          alphabet[static_cast<std::size_t>(random.between(0, static_cast<long long>(alphabet.size()) - 1))];
    }
    qz_Time time;
    if (!time.set_to_string_value(input.c_str())) continue;
    qz_Time back;
    ASSERT_TRUE(back.set_to_string_value(text(time).c_str())) << input;
    ASSERT_EQ(text(back), text(time)) << input;
  }
}

}  // namespace
