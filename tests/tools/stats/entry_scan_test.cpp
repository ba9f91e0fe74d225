#include "tools/stats/entry_scan.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <string_view>

#include "qzlog/entry_lines.h"
#include "tests/support/support.h"
#include "tests/tools/choice/choice_fixture.h"
#include "tests/tools/choice/random_entries.h"

namespace qzlog_tool {
namespace {

using Kind = ScannedValue::Kind;

class EntryScanTest : public qz_test::ChoiceTest {
 protected:
  EntryScanTest() { scan_.add(model()); }

  qzlog_compiler::DefinitionModel model() const {
    return read_errors_only(read_definition_file(folder_.path("events.yaml")), {}).model;
  }
  bool scans(std::string_view line) { return scan_.scan(line, entry_); }

  EntryScan scan_{{"Name", "Free"}};
  ScannedEntry entry_;
};

TEST_F(EntryScanTest, LineOfAWriter_GivesWhatItSays) {
  ASSERT_TRUE(
      scans(R"({"writer":"host/12/2026-11-21T08:00:00Z","seq":7,"written":"2026-11-21T08:15:31.000000001Z",)"
            R"("definitions":"0123456789abcdef","id":1,"level":9,"time":"2026-11-21T08:15:30Z",)"
            R"("name":"DISK_FULL","attributes":{"Name":"vol1","Free":12,"Small":-128,"Flag":true,"Pool":""}})"));
  EXPECT_EQ(entry_.id, 1U);
  EXPECT_EQ(entry_.level, 9U);
  EXPECT_TRUE(entry_.has_time);
  EXPECT_EQ(entry_.moment, qz_test::kNow);
  EXPECT_EQ(entry_.writer, "host/12/2026-11-21T08:00:00Z");
  EXPECT_EQ(entry_.values[0].text, "vol1");
  EXPECT_EQ(entry_.values[1].integer, 12);
}

TEST_F(EntryScanTest, ShortLines_AreScanned) {
  for (const char* const line :
       {R"({"id":3})", R"({"id":3,"level":0})", R"({"id":3,"attributes":{}})", R"({"id":3,"attributes":{"Reason":-1}})",
        R"({"id":1,"attributes":{"Free":1,"Name":"x"}})", R"({"id":1,"attributes":{"Load":-3}})"}) {
    EXPECT_TRUE(scans(line)) << line;
  }
}

TEST_F(EntryScanTest, TextsInUtf8_AreScanned) {
  for (const char* const text : {"ä", "Größenprüfung in Köln läuft", "日本語", "\U0001F600", "a\u2028b", "\x7F"}) {
    const std::string line = R"({"id":1,"attributes":{"Name":")" + std::string(text) + R"("}})";
    EXPECT_TRUE(scans(line)) << text;
    EXPECT_EQ(entry_.values[0].text, text);
  }
}

TEST_F(EntryScanTest, WhatOnlyTheLibraryKnows_IsLeftToIt) {
  for (const char* const line : {R"()",
                                 R"({})",
                                 R"({"id":3)",
                                 R"({"id":3}x)",
                                 R"({"id":3} )",
                                 R"({"id":03})",
                                 R"({"id":-1})",
                                 R"({"id":4})",
                                 R"({"id":4294967296})",
                                 R"({"id":9999999999999999999})",
                                 R"({"seq":99999999999999999999,"id":3})",
                                 R"({"id":"DISK_OK"})",
                                 R"({"id":3,"level":10})",
                                 R"({"level":1,"id":3})",
                                 R"({"id":3,"time":"2026-02-29T08:15:30Z"})",
                                 R"({"id":3,"time":"2026-11-21T24:00:00Z"})",
                                 R"({"id":3,"time":"2026-11-21T08:15:60Z"})",
                                 R"({"id":3,"time":"2026-11-21T08:15:30+00:00"})",
                                 R"({"id":3,"time":"2026-11-21T08:15:30Z")",
                                 R"({"id":3,"attributes":{"Reason":1,"Reason":1}})",
                                 R"({"id":3,"attributes":{"Reason":40000}})",
                                 R"({"id":3,"attributes":{"Reason":1.0}})",
                                 R"({"id":3,"attributes":{"Reason":-0}})",
                                 R"({"id":3,"attributes":{"Reason":01}})",
                                 R"({"id":3,"attributes":{"Reason":"1"}})",
                                 R"({"id":3,"attributes":{"Reason":1,}})",
                                 R"({"id":3,"attributes":{"Free":1}})",
                                 R"({"id":3,"attributes":{"TIMEZONE_DIFFERENCE":1}})",
                                 R"({"id":1,"attributes":{"Name":"a\u0041"}})",
                                 "{\"id\":1,\"attributes\":{\"Name\":\"a\xC3\"}}",
                                 "{\"id\":1,\"attributes\":{\"Name\":\"\xED\xA0\x80\"}}",
                                 R"({"writer":"hööst","id":3})",
                                 R"({"id":1,"attributes":{"Name":"äääääääääääääääää"}})",
                                 R"({"id":1,"attributes":{"Name":"0123456789012345678901234567890123"}})",
                                 R"({"id":1,"attributes":{"Flag":tru}})",
                                 R"({"id":1,"attributes":{"When":"2026-11-21T08:15:30Z"}})",
                                 R"({"writer":"host","id":3})",
                                 R"({"written":"now","id":3})",
                                 R"({"definitions":"0123","id":3})",
                                 R"({"seq":-1,"id":3})",
                                 R"({"id":3,"name":""})",
                                 R"({"id":3,"bytes":{}})",
                                 R"({"lost":[]})",
                                 "{\"id\":1,\"attributes\":{\"Name\":\"a\tb\"}}"}) {
    EXPECT_FALSE(scans(line)) << line;
  }
}

TEST_F(EntryScanTest, DateOfZeroBytes_IsNone) {
  const std::string zeros(10, '\0');
  EXPECT_FALSE(scans(R"({"id":3,"time":")" + zeros + R"(T08:15:30Z"})"));
}

TEST_F(EntryScanTest, AttributesThatComeWithTheTime_AreTheLibrarysWhereTheyAreAskedFor) {
  for (const char* const wanted : {"TIMEZONE_DIFFERENCE", "DAYLIGHT_SAVING_ACTIVE"}) {
    EntryScan scan({"", wanted});
    scan.add(model());
    EXPECT_TRUE(scan.scan(R"({"id":3})", entry_)) << wanted;
    EXPECT_FALSE(scan.scan(R"({"id":3,"time":"2026-11-21T08:15:30Z"})", entry_)) << wanted;
  }
}

TEST_F(EntryScanTest, TwoDefinitionFiles_AreTheLibrarys) {
  ASSERT_TRUE(scans(R"({"id":3})"));
  scan_.add(model());
  EXPECT_FALSE(scans(R"({"id":3})"));
}

/// A line with some of its bytes changed, so that it is nearly one.
std::string damaged(std::string line, qz_test::RandomNumbers& random) {
  constexpr std::string_view kCharacters = "\"\\{}:,-019eZT /a\x80\t";
  for (std::size_t change = 1 + random.below(2); change > 0 && !line.empty(); --change) {
    const std::size_t place = random.below(line.size());
    switch (random.below(3)) {
      case 0:
        line[place] = kCharacters[random.below(kCharacters.size())];
        break;
      case 1:
        line.erase(place, 1 + random.below(3));
        break;
      default:
        line.insert(place, 1, kCharacters[random.below(kCharacters.size())]);
    }
  }
  return line;
}

// The reader is the oracle: what is scanned it reads too, and as the same.
TEST_F(EntryScanTest, RandomLines_AreScannedAsTheLibraryReadsThem) {
  qz_test::SeededRandom random;
  int scanned = 0;
  const int count = qz_test::rounds(60000);
  for (int round = 0; round < count; ++round) {
    const qz_test::RandomEntry source = qz_test::random_entry(random);
    std::string text = random.one_in(4) ? disguised_line(source, random) : canonical_line(source);
    if (random.one_in(2)) text = damaged(text, random);
    if (!scans(text)) continue;
    ++scanned;
    const std::string with_end = text + '\n';
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromMemory(with_end.data(), with_end.size());
    ASSERT_TRUE(reader.Next(line_)) << text;
    const qz_LOG_LogEntry& entry = line_.GetEntry();
    ASSERT_FALSE(line_.IsLoss() || line_.IsHeld()) << text;
    ASSERT_EQ(entry_.id, entry.GetEntryID()) << text;
    ASSERT_EQ(entry_.level, entry.GetLogLevel()) << text;
    ASSERT_EQ(entry_.has_time, line_.HasTime()) << text;
    if (entry_.has_time) {
      ASSERT_EQ(entry_.moment, entry.GetTimestamp(true).unix_seconds()) << text;
    }
    ASSERT_EQ(entry_.writer, line_.GetWriter()) << text;
    qz_AttributeType type = TypeUnknown;
    ASSERT_EQ(entry_.values[0].kind == Kind::kText, entry.CheckAttribute("Name", type) == 0) << text;
    const char* name = nullptr;
    if (entry_.values[0].kind == Kind::kText && type < TypeMBChar32) {
      ASSERT_TRUE(entry.GetAttribStr("Name", name));
      ASSERT_EQ(entry_.values[0].text, name) << text;
    }
    ASSERT_EQ(entry_.values[1].kind == Kind::kInteger, entry.CheckAttribute("Free", type) == 0) << text;
    unsigned short free = 0;
    if (entry_.values[1].kind == Kind::kInteger && type == TypeUInt2) {
      ASSERT_TRUE(entry.GetAttrib2u("Free", free));
      ASSERT_EQ(entry_.values[1].integer, free) << text;
    }
  }
  EXPECT_GT(scanned, count / 8);
}

TEST_F(EntryScanTest, TimesOfAllYears_AreThoseOfTheLibrary) {
  qz_test::SeededRandom random;
  int scanned = 0;
  const int count = qz_test::rounds(5000);
  for (int round = 0; round < count; ++round) {
    char time[80];
    std::snprintf(time, sizeof time, "%04d-%02d-%02dT%02d:%02d:%02dZ", static_cast<int>(random.below(10000)),
                  static_cast<int>(random.below(14)), static_cast<int>(random.below(33)),
                  static_cast<int>(random.below(25)), static_cast<int>(random.below(61)),
                  static_cast<int>(random.below(61)));
    const std::string text = std::string(R"({"id":3,"time":")") + time + "\"}";
    if (!scans(text)) continue;
    ++scanned;
    ASSERT_EQ(entry_.moment, line(text).GetEntry().GetTimestamp(true).unix_seconds()) << text;
  }
  EXPECT_GT(scanned, count / 3);
}

}  // namespace
}  // namespace qzlog_tool
