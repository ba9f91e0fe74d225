#include "tools/syslog/syslog_entry.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace qzlog_tool;

/// What is found: the line, or why there is none.
std::string found_in(std::string_view message) {
  std::string line = "of the message before";
  switch (find_syslog_entry(message, line)) {
    case SyslogFound::kLine:
      return line;
    case SyslogFound::kOmitted:
      return "omitted";
    case SyslogFound::kBroken:
      return "broken";
    default:
      return "nothing";
  }
}

constexpr const char* kHeader = "<14>1 2026-11-21T08:15:30.25Z host shop 7 DISK_FULL ";
std::string with_header(std::string_view rest) { return kHeader + std::string(rest); }

TEST(SyslogEntry, Rfc5424_GivesTheLine) {
  EXPECT_EQ(found_in(with_header(R"([qzlog@32473 entry="{\"id\":1}" Name="x"] Disk)")), R"({"id":1})");
  EXPECT_EQ(found_in(with_header(R"([qzlog@32473 entry="{\"id\":1}"])")), R"({"id":1})");
  EXPECT_EQ(found_in(std::string(kHeader).substr(4) + R"([qzlog@1 entry="{}"] Disk)"), "{}") << "without priority";
}

TEST(SyslogEntry, EscapesAreUndone_OthersStay) {
  EXPECT_EQ(found_in(with_header(R"([qzlog@1 entry="\"\\\]\n\\n"])")), R"("\]\n\n)");
}

TEST(SyslogEntry, OrderAndCaseOfParameters_DoNotMatter) {
  EXPECT_EQ(found_in(with_header(R"([a@1 entry="no"][qzlog@1 a="1" ENTRY="{}" b="2"][z] text)")), "{}");
  EXPECT_EQ(found_in(with_header(R"([qzlog@1 entry="{1}" entry="{2}"])")), "{1}");
}

TEST(SyslogEntry, StructuredDataOfOthers_AreNothing) {
  for (const char* const data : {"-", "[qzlog entry=\"{}\"]", "[qzlog@ entry=\"{}\"]", "[qzlog@1x entry=\"{}\"]",
                                 "[qzlogs@1 entry=\"{}\"]", "[x@1 entry=\"{}\"] text"}) {
    EXPECT_EQ(found_in(with_header(data)), "nothing") << data;
  }
}

TEST(SyslogEntry, EntryThatWasTooLong_IsOmitted) {
  EXPECT_EQ(found_in(with_header(R"([qzlog@1 omitted="7"] Disk)")), "omitted");
  EXPECT_EQ(found_in(R"(Nov 21 08:15:30 host shop[7]: Disk [qzlog@1 omitted="7"])"), "omitted");
}

TEST(SyslogEntry, BrokenOff_IsBroken) {
  const std::string whole = with_header(R"([qzlog@1 entry="{\"id\":1}" Name="x"])");
  const std::size_t begin = whole.find("entry");
  for (std::size_t size = begin; size < whole.size(); ++size) {
    EXPECT_EQ(found_in(whole.substr(0, size)), "broken") << size;
  }
  EXPECT_EQ(found_in(R"(Nov 21 08:15:30 host shop[7]: Disk [qzlog@1 entry="{\"id)"), "broken");
  EXPECT_EQ(found_in(with_header("[qzlog@1 entry=\"{\n}\"]")), "broken") << "two lines";
}

TEST(SyslogEntry, OlderForm_HasItAtTheEnd) {
  const std::string message = R"(<14>Nov 21 08:15:30 shop[7]: Disk is full [qzlog@1 entry="{\"id\":1}" Name="x"])";
  for (const std::string end : {"", "\r", " "}) EXPECT_EQ(found_in(message + end), R"({"id":1})");
  EXPECT_EQ(found_in(R"(2026-11-21T08:15:30+00:00 host shop[7]: [qzlog@1 entry="{}"])"), "{}");
}

TEST(SyslogEntry, TextThatLooksLikeStructuredData_IsNotTakenForThem) {
  EXPECT_EQ(found_in(R"(shop: [qzlog@1 entry="{fake}"] [qzlog@1 entry="{true}"])"), "{true}");
  EXPECT_EQ(found_in(R"(shop: [qzlog@1 entry="{fake} [qzlog@1 entry="{true}"])"), "{true}");
  EXPECT_EQ(found_in(R"(shop: x [qzlog@1 entry="{true}" Name="[qzlog@1 entry=\"{fake}\"\]"])"), "{true}");
  EXPECT_EQ(found_in(R"(shop: x [qzlog@1 entry="{true}" Name=" [qzlog@1 entry=" Last=" x="])"), "{true}");
  EXPECT_EQ(found_in(with_header(R"([qzlog@1 entry="{true}"] text [qzlog@1 entry="{fake}"])")), "{true}");
  EXPECT_EQ(found_in("shop: the sink writes [qzlog@1 entry="), "broken");
  EXPECT_EQ(found_in("shop: the sink writes [qzlog@NUMBER entry="), "nothing");
}

TEST(SyslogEntry, AnythingElse_IsNothing) {
  for (const char* const text :
       {"", " ", "<", "<14>", "<14>1", "1 ", "<x>1 a b c d e f", "[", "qzlog@1", "{\"id\":1}"}) {
    EXPECT_EQ(found_in(text), "nothing") << text;
  }
}

}  // namespace
