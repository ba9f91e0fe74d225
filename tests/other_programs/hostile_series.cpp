#include "tests/other_programs/hostile_series.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>

#include "qzlog/logcfg.h"
#include "qzlog/logentry.h"
#include "tests/support/ldf_file.h"
#include "tests/support/names_section.h"

namespace qz_test {

namespace {

using Settings = qz_LOG_FileSinkSettings;

constexpr unsigned kEvent = 1001;

LdfFile definitions() {
  return {.globals = {{"TIMEZONE_DIFFERENCE", TypeSInt2}, {"DAYLIGHT_SAVING_ACTIVE", TypeBool}},
          .entries = {{.id = kEvent,
                       .mask = 1,
                       .attributes = {{"Number", TypeUInt4},
                                      {"Text", TypeMBChar2K},
                                      {"Bytes", TypeChar2K},
                                      {"Bool", TypeBool},
                                      {"UInt1", TypeUInt1},
                                      {"SInt1", TypeSInt1},
                                      {"UInt2", TypeUInt2},
                                      {"SInt2", TypeSInt2},
                                      {"UInt4", TypeUInt4},
                                      {"SInt4", TypeSInt4},
                                      {"Float", TypeFloat},
                                      {"Date", TypeDate},
                                      {"Time", TypeTime},
                                      {"Moment", TypeTimestamp},
                                      {"na\"me\\\n{\xC3\xA4}", TypeUInt1}}}}};
}

/// Every byte but zero, and what parsers, terminals and shells take for something else. Without zero bytes.
std::vector<std::string> hostile_texts() {
  std::vector<std::string> texts = {
      "",
      "plain",
      "\"quoted\" \\ / \b\f\n\r\t",
      "\x1B[2J\x1B]0;title\x07",
      "{\"id\":1,\"lost\":[]}\n{\"seq\":0}",
      "</script><!-- $(reboot) `reboot` ' OR 1=1 --",
      "NaN,null;true\t-0\\u0000",
      "Gr\xC3\xB6\xC3\x9F"
      "e \xE2\x82\xAC \xE5\xB1\xB1\xE7\x94\xB0 \xF0\x9F\x98\x80",
      "\xE2\x80\xA8\xE2\x80\xA9\xEF\xBB\xBF\xE2\x80\xAE\xCC\x88",  // separators, byte order mark, direction, accent
      "\xEF\xBF\xBE\xEF\xBF\xBF\xF4\x8F\xBF\xBF",                  // what is no character
      "\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80\xFF\xFE",              // no UTF-8
      "broken off \xF0\x9F\x98",
      "\x83\x5C\x95\x5C \x81",            // Shift_JIS with backslashes as second bytes
      "\x1B$B%=\x1B(B \x1B$B",            // ISO-2022-JP
      "\x81\x30\x81\x30\x84\x31\xA4\x37"  // GB18030 in four bytes
  };
  for (int first = 1; first < 256; first += 51) {
    std::string& bytes = texts.emplace_back();
    for (int byte = first; byte < std::min(256, first + 51); ++byte) bytes += static_cast<char>(byte);
  }
  for (const char* const repeated : {"\x01", "\"", "\\", "x"}) {
    std::string& text = texts.emplace_back();
    while (text.size() < 2000) text += repeated;
  }
  return texts;
}

template <typename Number>
Number limit(unsigned number) {
  return number % 2 == 0 ? std::numeric_limits<Number>::min() : std::numeric_limits<Number>::max();
}

void add_values(qz_LOG_LogEntry& entry, unsigned number) {
  const double floats[] = {0.1, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), 5e-324, 1.7976931348623157e308, 1e22, -1};
  const long long moments[] = {0, -1, -62135596800, 253402300799, 1795248930};
  entry.AddAttribBool("Bool", number % 2 == 0);
  entry.AddAttrib1u("UInt1", limit<unsigned char>(number));
  entry.AddAttrib1("SInt1", limit<signed char>(number));
  entry.AddAttrib2u("UInt2", limit<unsigned short>(number));
  entry.AddAttrib2("SInt2", limit<short>(number));
  entry.AddAttrib4u("UInt4", limit<unsigned>(number));
  entry.AddAttrib4("SInt4", limit<int>(number));
  entry.AddAttribFloat8("Float", floats[number % std::size(floats)]);
  const qz_Time moment = qz_Time::from_unix_seconds(moments[number % std::size(moments)]);
  for (const char* const name : {"Date", "Time", "Moment"}) entry.AddAttribTime(name, moment);
  entry.AddAttrib1u("na\"me\\\n{\xC3\xA4}", 1);
}

}  // namespace

HostileSeriesTest::HostileSeriesTest() : golden_(QZLOG_SOURCES "/tests/lines/golden_lines.jsonl") {
  const std::string bytes = with_names(definitions().bytes(), {.events = {{kEvent, {"EV\"ENT\\\xC3\xA4", ""}}}});
  qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", bytes).c_str());
  std::filesystem::create_directory(folder_.path("logs"));
  for (const char* const code_page :
       {"UTF-8", "ISO-8859-1", "windows-1252", "Shift_JIS", "GB18030", "ibm-37", "ISO-2022-JP", ""}) {
    const Settings::Way ways[] = {Settings::kWrite, Settings::kShared, Settings::kBuffered};
    write_all(code_page, ways[written_.size() % std::size(ways)]);
  }
}

void HostileSeriesTest::write_all(const char* code_page, Settings::Way way) {
  qz_LOG_LogConfig::SetICUEnabled(*code_page != '\0');
  if (*code_page != '\0') qz_LOG_LogConfig::SetCodePage(code_page);
  Settings settings;
  settings.folder = folder_.path("logs");
  settings.prefix = "work";
  settings.way = way;
  settings.largest_file_bytes = 32768;
  qz_LOG_FileSink sink(settings);
  for (const std::string& text : hostile_texts()) write(sink, code_page, text);
  EXPECT_EQ(sink.Close(10000), 0U);
}

void HostileSeriesTest::write(qz_LOG_Sink& sink, const char* code_page, std::string_view text) {
  const unsigned number = count();
  const std::string terminated(text);
  qz_LOG_LogEntry entry(kEvent, number % 10);
  if (number % 3 != 0) entry.SetTimestamp(qz_Time::from_unix_seconds(1795248930 + number), true);
  entry.AddAttrib4u("Number", number);
  entry.AddAttribMBStr("Text", terminated.c_str());
  entry.AddAttribStr("Bytes", terminated.c_str());
  if (number % 2 == 0) add_values(entry, number);
  written_.push_back({code_page, entry.GetAttribMBStr("Text")});
  EXPECT_TRUE(sink.Write(entry, number % 7 == 0, number % 5)) << number;
}

std::vector<std::string> HostileSeriesTest::files() const {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path("logs"))) {
    if (entry.path().filename().string().rfind("work.", 0) == 0) paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  paths.push_back(golden_);
  return paths;
}

ShellResult run_shell(const std::string& line) {
  FILE* const shell = popen(("{ " + line + "\n} 2>&1 </dev/null").c_str(), "r");
  if (shell == nullptr) return {-1, ""};
  std::string output;
  std::array<char, 4096> bytes;
  for (std::size_t count = 0; (count = fread(bytes.data(), 1, bytes.size(), shell)) > 0;) {
    output.append(bytes.data(), count);
  }
  const int status = pclose(shell);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

bool has_program(const std::string& name) { return run_shell("command -v " + name).status == 0; }

}  // namespace qz_test
