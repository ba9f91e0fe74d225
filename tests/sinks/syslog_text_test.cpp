#include "sinks/syslog_text.h"

#include <gtest/gtest.h>

#include <string>

#include "sinks/syslog_name.h"
#include "sinks/syslog_severity.h"

namespace {

using namespace qzlog;

template <typename Append>
std::string made(Append append, std::string_view text) {
  std::string out = "<";
  append(text, out);
  return out + '>';
}

TEST(SyslogText, Line_HasThreeEscapes_AndNoDelete) {
  EXPECT_EQ(made(append_syslog_line, R"({"a":"\\]["})"), R"(<{\"a\":\"\\\\\][\"}>)");
  EXPECT_EQ(made(append_syslog_line,
                 "\x7F"
                 "a\x7F\x7F"),
            R"(<\\u007Fa\\u007F\\u007F>)");
  EXPECT_EQ(made(append_syslog_line, ""), "<>");
}

TEST(SyslogText, Value_HasNoControlCharacters) {
  EXPECT_EQ(made(append_syslog_value, std::string_view("a\n\r\0\t\x1B\x7F]\"\\", 10)),
            R"(<a\\n\\r\\0\\x09\\x1B\\x7F\]\"\\>)");
  EXPECT_EQ(made(append_syslog_value, "Gr\xC3\xB6"), "<Gr\xC3\xB6>");
}

TEST(SyslogText, Message_HasNoControlCharacters) {
  EXPECT_EQ(made(append_syslog_message, "a\n]\"\\\x01"), R"(<a\n]"\\x01>)");
}

TEST(SyslogText, CutText_EndsBehindACharacter) {
  const auto cut = [](std::string_view text, std::size_t room) {
    std::string out;
    append_cut_text(text, room, out);
    EXPECT_LE(out.size(), room);
    return out;
  };
  EXPECT_EQ(cut("abcdef", 6), "abcdef");
  EXPECT_EQ(cut("abcdef", 5), "ab...");
  EXPECT_EQ(cut("abcdef", 3), "...");
  EXPECT_EQ(cut("abcdef", 2), "ab");
  EXPECT_EQ(cut("abcdef", 0), "");
  EXPECT_EQ(cut("a\xE2\x82\xAC"
                "bcd",
                6),
            "a...");
  EXPECT_EQ(cut("\xE2\x82\xAC\xE2\x82\xAC", 2), "");
}

TEST(SyslogName, Mapped) {
  const auto mapped = [](std::string_view name) {
    std::string out;
    append_syslog_name(name, out);
    return out;
  };
  EXPECT_EQ(mapped("Name.x-1"), "Name.x-1");
  EXPECT_EQ(mapped("a b=c]d\"e\x7F\x01"
                   "f"),
            "a_b_c_d_e__f");
  EXPECT_EQ(mapped("Gr\xC3\xB6\xC3\x9F"
                   "e"),
            "Gr__e");
  EXPECT_EQ(mapped(std::string(40, 'x')), std::string(32, 'x'));
  EXPECT_EQ(lowered_syslog_name("A=\xC3\x84z"), "a__z");
  EXPECT_TRUE(is_own_syslog_name("ENTRY"));
  EXPECT_TRUE(is_own_syslog_name("omitted"));
  EXPECT_FALSE(is_own_syslog_name("entries"));
}

TEST(SyslogSeverity, OfLevels) {
  std::string severities;
  for (unsigned level = 0; level < 11; ++level) severities += std::to_string(syslog_severity(level));
  EXPECT_EQ(severities, "77665443211");
}

}  // namespace
