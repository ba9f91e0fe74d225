#include <gtest/gtest.h>

#include <string>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

/// What filter_string writes into `size` bytes; the bytes behind them must stay as they were.
std::string filtered(const std::string& source, int size, bool escape) {
  const auto bytes = static_cast<std::size_t>(size);
  std::string memory(bytes + 16, '#');
  Entry::filter_string(source.c_str(), memory.data(), size, escape);
  EXPECT_EQ(memory.substr(bytes), std::string(16, '#')) << "wrote behind the end";
  const std::size_t end = memory.find('\0');
  EXPECT_LT(end, bytes) << "not terminated";
  return memory.substr(0, end);
}

struct FilterCase {
  const char* source;
  int size;
  const char* expected;
};

TEST(FilterString, Escape_LineBreaksBecomeTwoCharacters) {
  const FilterCase cases[] = {
      {"", 1, ""},
      {"", 8096, ""},
      {"abc", 8096, "abc"},
      {"a\nb", 8096, "a\\nb"},
      {"a\rb", 8096, "a\\rb"},
      {"\r\n", 8096, "\\r\\n"},
      {"\n", 8096, "\\n"},
      {"tab\tbell\a\x01\x7F\xFF", 8096, "tab\tbell\a\x01\x7F\xFF"},
      {"a\\b", 8096, "a\\b"},
      {"a\\nb", 8096, "a\\nb"},
      {"\\\n", 8096, "\\\\n"},
      {"\xC3\xA9\n\xE6\xBC\xA2", 8096, "\xC3\xA9\\n\xE6\xBC\xA2"},
  };
  for (const FilterCase& test_case : cases) {
    EXPECT_EQ(filtered(test_case.source, test_case.size, true), test_case.expected) << test_case.source;
  }
}

TEST(FilterString, EscapeAtTheBound_StopsThereEvenInsideAPair) {
  const FilterCase cases[] = {
      {"a", 1, ""},           {"\n", 1, ""},           {"\n", 2, "\\"},
      {"\n", 3, "\\n"},       {"\r", 2, "\\"},         {"abc", 3, "ab"},
      {"abc", 4, "abc"},      {"ab\n", 3, "ab"},       {"ab\n", 4, "ab\\"},
      {"ab\n", 5, "ab\\n"},   {"ab\ncd", 5, "ab\\n"},  {"ab\ncd", 6, "ab\\nc"},
      {"\n\n\n", 4, "\\n\\"}, {"\n\n\n", 5, "\\n\\n"}, {"\n\n\n", 7, "\\n\\n\\n"},
  };
  for (const FilterCase& test_case : cases) {
    EXPECT_EQ(filtered(test_case.source, test_case.size, true), test_case.expected)
        << test_case.source << " in " << test_case.size;
  }
}

TEST(FilterString, Unescape_TwoCharactersBecomeLineBreaks) {
  const FilterCase cases[] = {
      {"", 1, ""},
      {"abc", 8096, "abc"},
      {"a\\nb", 8096, "a\nb"},
      {"a\\rb", 8096, "a\rb"},
      {"\\r\\n", 8096, "\r\n"},
      {"\\", 8096, "\\"},
      {"a\\", 8096, "a\\"},
      {"\\\\", 8096, "\\\\"},
      {"\\\\n", 8096, "\\\n"},
      {"\\t\\0\\N\\R", 8096, "\\t\\0\\N\\R"},
      {"a\nb\r", 8096, "a\nb\r"},
      {"n\\nr\\r", 8096, "n\nr\r"},
  };
  for (const FilterCase& test_case : cases) {
    EXPECT_EQ(filtered(test_case.source, test_case.size, false), test_case.expected) << test_case.source;
  }
}

TEST(FilterString, UnescapeAtTheBound_CountsWrittenCharacters) {
  const FilterCase cases[] = {
      {"abc", 1, ""},     {"\\n", 1, ""},           {"\\n", 2, "\n"},           {"a\\n", 2, "a"},
      {"a\\n", 3, "a\n"}, {"\\n\\n\\n", 3, "\n\n"}, {"\\n\\n\\n", 4, "\n\n\n"}, {"abc", 3, "ab"},
      {"abc", 4, "abc"},  {"a\\x", 3, "a\\"},
  };
  for (const FilterCase& test_case : cases) {
    EXPECT_EQ(filtered(test_case.source, test_case.size, false), test_case.expected)
        << test_case.source << " in " << test_case.size;
  }
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// In both directions what is written is the head of what would be written without a bound.
TEST(FilterString, EverySizeOfRandomText_WritesTheHeadOfTheWhole) {
  SeededRandom random;
  constexpr char kCharacters[] = "ab\n\r\\nr\xE6";
  for (int round = 0; round < 50; ++round) {
    std::string source;
    for (long long i = random.between(0, 40); i > 0; --i) source += kCharacters[random.between(0, 7)];
    const std::string escaped = replaced(replaced(source, "\n", "\\n"), "\r", "\\r");
    for (int size = 1; size <= 100; ++size) {
      EXPECT_EQ(filtered(source, size, true), escaped.substr(0, static_cast<std::size_t>(size) - 1));
    }
    const bool reversible = source.find('\\') == std::string::npos;
    for (int size = 1; reversible && size <= 100; ++size) {
      EXPECT_EQ(filtered(escaped, size, false), source.substr(0, static_cast<std::size_t>(size) - 1));
    }
  }
}

TEST(FilterString, SourceOfTheFullBuffer_IsCopiedWhole) {
  const std::string source(8095, 'x');
  EXPECT_EQ(filtered(source, 8096, true), source);
  EXPECT_EQ(filtered(source, 8096, false), source);
}

TEST(FilterString, SourceLongerThanTheBuffer_IsCut) {
  EXPECT_EQ(filtered(std::string(20000, 'x'), 8096, true), std::string(8095, 'x'));
  EXPECT_EQ(filtered(std::string(20000, 'x'), 8096, false), std::string(8095, 'x'));
  EXPECT_EQ(filtered(std::string(20000, '\n'), 8096, true), replaced(std::string(4047, '\n'), "\n", "\\n") + "\\");
}

// Adding text.

class EntryFilter : public EntryTest {};

TEST_F(EntryFilter, AddedWithEscape_StoresTwoCharacters) {
  Entry entry(kId, 0);
  entry.add_attrib_str("TypeChar32", "a\nb\rc\\nd", true);
  entry.add_attrib_mbstr("TypeMBChar32", "a\nb\rc\\nd", true);
  EXPECT_STREQ(entry.get_attrib_str("TypeChar32"), "a\\nb\\rc\\nd");
  EXPECT_STREQ(entry.get_attrib_mbstr("TypeMBChar32"), "a\\nb\\rc\\nd");
}

TEST_F(EntryFilter, AddedWithoutEscape_StoresLineBreaks) {
  Entry entry(kId, 0);
  entry.add_attrib_str("TypeChar32", "a\\nb\\rc\nd\\", false);
  entry.add_attrib_mbstr("TypeMBChar32", "a\\nb\\rc\nd\\", false);
  EXPECT_STREQ(entry.get_attrib_str("TypeChar32"), "a\nb\rc\nd\\");
  EXPECT_STREQ(entry.get_attrib_mbstr("TypeMBChar32"), "a\nb\rc\nd\\");
}

TEST_F(EntryFilter, LineBreaksUpToTheLimit_AreStoredTwiceAsLong) {
  Entry entry(kId, 0);
  const std::string escaped = replaced(std::string(2048, '\n'), "\n", "\\n");
  entry.add_attrib_str("TypeChar2K", std::string(2048, '\n').c_str(), true);
  entry.add_attrib_mbstr("TypeMBChar2K", std::string(2048, '\n').c_str(), true);
  EXPECT_EQ(entry.get_attrib_str("TypeChar2K"), escaped);
  EXPECT_EQ(entry.get_attrib_mbstr("TypeMBChar2K"), escaped);
}

TEST_F(EntryFilter, LimitCountsBeforeUnescaping) {
  Entry entry(kId, 0);
  const std::string pairs = replaced(std::string(17, '\n'), "\n", "\\n");  // 34 bytes, 17 once unescaped
  EXPECT_EQ(thrown_by([&] { entry.add_attrib_str("TypeChar32", pairs.c_str(), false); }),
            "QZX_logging_invalid_attribute_value \"TypeChar32 Attribute value is overflow under Entry ID 1001 !\"");
}

TEST_F(EntryFilter, TruncatedBeforeEscaping) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  Entry entry(kId, 0);
  const std::string text = std::string(31, 'x') + "\n\n";
  entry.add_attrib_str("TypeChar32", text.c_str(), true);
  entry.add_attrib_mbstr("TypeMBChar32", text.c_str(), true);
  EXPECT_EQ(entry.get_attrib_str("TypeChar32"), std::string(31, 'x') + "\\n");
  EXPECT_EQ(entry.get_attrib_mbstr("TypeMBChar32"), std::string(31, 'x') + "\\n");
}

}  // namespace
