#include "sinks/text_line_format.h"

#include <sys/syscall.h>

#include "tests/sinks/sinks_fixture.h"

namespace {

using namespace qz_test;
using qzlog::TextLineFormat;

std::string formatted(std::string_view format, const TextLineFormat::Line& line) {
  std::string out = "before ";
  TextLineFormat(format).append(line, out);
  EXPECT_TRUE(out.starts_with("before "));
  return out.substr(7);
}

const TextLineFormat::Line kLine = {1001, 7, kMoment, {kMoment + 1, 123'456'789}, "DISK_FULL", "Disk vol1"};

TEST(TextLineFormat, EachField_IsWritten) {
  const TimeZone zone("Asia/Kathmandu");
  struct Case {
    const char* format;
    std::string text;
  };
  const std::string process = std::to_string(getpid());
  for (const Case& each : std::vector<Case>{{"{time}", "2026-11-21T08:15:30Z"},
                                            {"{time:local}", "2026-11-21 14:00:30"},
                                            {"{written}", "2026-11-21T08:15:31.123456Z"},
                                            {"{level}", "7"},
                                            {"{level:name}", "error"},
                                            {"{id}", "1001"},
                                            {"{name}", "DISK_FULL"},
                                            {"{pid}", process},
                                            {"{tid}", std::to_string(syscall(SYS_gettid))},
                                            {"{message}", "Disk vol1"},
                                            {"a{{b}}c\t{id}{level}", "a{b}c\t10017"},
                                            {"no field", "no field"},
                                            {"{{id}}", "{id}"},
                                            {"{{{id}}}", "{1001}"},
                                            {"{time} {level} {id} {name} [{pid}:{tid}] {message}",
                                             "2026-11-21T08:15:30Z 7 1001 DISK_FULL [" + process + ":" +
                                                 std::to_string(syscall(SYS_gettid)) + "] Disk vol1"}}) {
    EXPECT_EQ(formatted(each.format, kLine), each.text) << each.format;
  }
}

TEST(TextLineFormat, LevelNames_AreThoseOfTheScale) {
  const char* const names[] = {"debug",   "debug",   "info",  "info",     "notice",
                               "warning", "warning", "error", "critical", "alert"};
  for (unsigned level = 0; level <= 9; ++level) {
    TextLineFormat::Line line = kLine;
    line.level = level;
    EXPECT_EQ(formatted("{level:name}", line), names[level]);
  }
}

TEST(TextLineFormat, WhatIsNotKnown_IsReplaced) {
  TextLineFormat::Line line = kLine;
  line.time = 0;
  line.name = "";
  EXPECT_EQ(formatted("{time} {name}", line), "2026-11-21T08:15:31Z -");
}

TEST(TextLineFormat, BadFormats_AreRefused) {
  struct Case {
    std::string format;
    const char* text;
  };
  for (const Case& each : std::vector<Case>{
           {"", "format: it is empty"},
           {std::string(1025, 'x'), "format: it is longer than 1024 bytes"},
           {"{tme}",
            "format: unknown field '{tme}' (there are time, time:local, written, level, level:name, id, name, pid, tid "
            "and message) at character 1"},
           {"a {id} {}",
            "format: unknown field '{}' (there are time, time:local, written, level, level:name, id, name, pid, tid "
            "and message) at character 8"},
           {"{id", "format: '{' without '}' (write '{{' for the character) at character 1"},
           {"{id} {", "format: '{' without '}' (write '{{' for the character) at character 6"},
           {"id}", "format: '}' without '{' (write '}}' for the character) at character 3"},
           {"{id}\n", "format: control character at character 5"},
           {std::string("a\0b", 3), "format: control character at character 2"},
           {"\x7F", "format: control character at character 1"}}) {
    EXPECT_EQ(thrown_by([&] { TextLineFormat(each.format); }), thrown<QZX_logging_illegal_argument>(each.text));
  }
  EXPECT_EQ(thrown_by([] { TextLineFormat(std::string(1024, 'x')); }), "nothing");
}

TEST(TextLineFormat, EveryPrefixOfAFormat_IsAFormatOrRefused) {
  const std::string whole = "{time} {level:name} {{x}} [{pid}:{tid}] {message}";
  for (std::size_t length = 1; length <= whole.size(); ++length) {
    const std::string thrown = thrown_by([&] { TextLineFormat(whole.substr(0, length)); });
    EXPECT_TRUE(thrown == "nothing" || thrown.starts_with("QZX_logging_illegal_argument \"format: ")) << thrown;
  }
}

TEST(TextLineFormat, RandomTexts_AreReadAsThePlainWayReadsThem) {
  SeededRandom random;
  for (int round = 0; round < rounds(4000); ++round) {
    std::string format;
    std::string expected;
    for (long long parts = random.between(1, 8); parts > 0; --parts) {
      switch (random.between(0, 4)) {
        case 0:
          format += "{{";
          expected += '{';
          break;
        case 1:
          format += "}}";
          expected += '}';
          break;
        case 2:
          format += "{id}";
          expected += "1001";
          break;
        case 3:
          format += "{message}";
          expected += kLine.message;
          break;
        default:
          format += " :x";
          expected += " :x";
      }
    }
    EXPECT_EQ(formatted(format, kLine), expected) << format;
  }
}

}  // namespace
