#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <string>

#include "entry/logentry_i.h"
#include "tests/entry/entry_fixture.h"

namespace {

using namespace qz_test;
using Entry = _qz_LOG_log_entry_imp;

class EntryStrings : public EntryTest {};

struct Limit {
  int type;
  int limit;
};
constexpr Limit kCharLimits[] = {{TypeChar32, 32},   {TypeChar64, 64},   {TypeChar128, 128},
                                 {TypeChar256, 256}, {TypeChar1K, 1024}, {TypeChar2K, 2048}};
constexpr Limit kMbCharLimits[] = {{TypeMBChar32, 32},   {TypeMBChar64, 64},   {TypeMBChar128, 128},
                                   {TypeMBChar256, 256}, {TypeMBChar1K, 1024}, {TypeMBChar2K, 2048}};

std::string overflow(const std::string& name, const std::string& id) {
  return "QZX_logging_invalid_attribute_value \"" + name + " Attribute value is overflow under Entry ID " + id + " !\"";
}

std::string times(int count, const std::string& unit) {
  std::string text;
  for (int i = 0; i < count; ++i) text += unit;
  return text;
}

bool is_char(int type) { return type <= TypeChar2K; }

void add(Entry& entry, int type, const std::string& text) {
  is_char(type) ? entry.add_attrib_str(type_name(type), text.c_str(), true)
                : entry.add_attrib_mbstr(type_name(type), text.c_str(), true);
}

std::string stored(const Entry& entry, int type) {
  return is_char(type) ? entry.get_attrib_str(type_name(type)) : entry.get_attrib_mbstr(type_name(type));
}

/// Texts of `unit` just within the type's limit are stored whole; one unit more is refused, and the value before stays.
void expect_refused_above(const Limit& limit, const std::string& unit) {
  SCOPED_TRACE(type_name(limit.type));
  for (const IdCase& id : kIds) {
    Entry entry(id.id, 0);
    for (const int count : {0, 1, limit.limit - 1, limit.limit}) {
      add(entry, limit.type, times(count, unit));
      EXPECT_EQ(stored(entry, limit.type), times(count, unit));
    }
    for (const int count : {limit.limit + 1, limit.limit + 2, 2 * limit.limit}) {
      EXPECT_EQ(thrown_by([&] { add(entry, limit.type, times(count, unit)); }),
                overflow(type_name(limit.type), id.text));
      EXPECT_EQ(stored(entry, limit.type), times(limit.limit, unit));
    }
    Entry unset(id.id, 0);
    EXPECT_NE(thrown_by([&] { add(unset, limit.type, times(limit.limit + 1, unit)); }), "nothing");
    EXPECT_FALSE(unset.has_value(type_name(limit.type)));
  }
}

void expect_cut_above(const Limit& limit, const std::string& unit) {
  SCOPED_TRACE(type_name(limit.type));
  Entry entry(kId, 0);
  for (const int count : {0, 1, limit.limit - 1, limit.limit, limit.limit + 1, limit.limit + 2, 2 * limit.limit}) {
    add(entry, limit.type, times(count, unit));
    EXPECT_EQ(stored(entry, limit.type), times(std::min(count, limit.limit), unit));
  }
}

TEST_F(EntryStrings, CharAboveItsLimit_IsRefused) {
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    for (const Limit& limit : kCharLimits) expect_refused_above(limit, "x");
  }
}

TEST_F(EntryStrings, CharAboveItsLimitWithTruncation_IsCut) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    for (const Limit& limit : kCharLimits) expect_cut_above(limit, "x");
  }
}

TEST_F(EntryStrings, CharOfSeveralBytes_CountsAndCutsBytes) {
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  Entry entry(kId, 0);
  const std::string text = "x" + times(16, "\xC3\xA9");  // 33 bytes
  EXPECT_EQ(thrown_by([&] { add(entry, TypeChar32, text); }), overflow("TypeChar32", "1001"));
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  add(entry, TypeChar32, text);
  EXPECT_EQ(stored(entry, TypeChar32), text.substr(0, 32));
}

/// A character of a code page.
struct PageCase {
  const char* page;
  const char* character;
};
// U+0081 takes four bytes in GB18030 and is one UTF-16 unit.
constexpr PageCase kPages[] = {
    {"UTF-8", "x"},          {"UTF-8", "\xC3\xA9"},           {"UTF-8", "\xE6\xBC\xA2"},
    {"ISO-8859-1", "\xE9"},  {"Shift_JIS", "\x8A\xBF"},       {"Shift_JIS", "\xB1"},
    {"GB18030", "\xBA\xBA"}, {"GB18030", "\x81\x30\x81\x31"},
};

TEST_F(EntryStrings, MbCharAboveItsLimit_IsRefusedByCharacters) {
  for (const PageCase& page : kPages) {
    SCOPED_TRACE(page.page);
    qz_LOG_LogConfig::SetCodePage(page.page);
    for (const Limit& limit : kMbCharLimits) expect_refused_above(limit, page.character);
  }
}

TEST_F(EntryStrings, MbCharAboveItsLimitWithTruncation_IsCutByCharacters) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  for (const PageCase& page : kPages) {
    SCOPED_TRACE(page.page);
    qz_LOG_LogConfig::SetCodePage(page.page);
    for (const Limit& limit : kMbCharLimits) expect_cut_above(limit, page.character);
  }
}

TEST_F(EntryStrings, MbCharWithoutIcu_CountsAndCutsBytes) {
  qz_LOG_LogConfig::SetICUEnabled(false);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  for (const Limit& limit : kMbCharLimits) expect_refused_above(limit, "x");
  Entry entry(kId, 0);
  const std::string text = times(11, "\xE6\xBC\xA2");  // 33 bytes
  EXPECT_EQ(thrown_by([&] { add(entry, TypeMBChar32, text); }), overflow("TypeMBChar32", "1001"));
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  for (const Limit& limit : kMbCharLimits) expect_cut_above(limit, "x");
  add(entry, TypeMBChar32, text);
  EXPECT_EQ(stored(entry, TypeMBChar32), text.substr(0, 32));
}

TEST_F(EntryStrings, TooLongText_WritesNoRecord) {
  Entry entry(kId, 0);
  EXPECT_EQ(records_at(3, [&] { add(entry, TypeChar32, times(33, "x")); }), Texts());
  EXPECT_EQ(records_at(3, [&] { add(entry, TypeMBChar32, times(33, "x")); }), Texts());
}

TEST_F(EntryStrings, MbCharWithNoCodePage_IsReadWithTheDefaultConverter) {
  for (const PageCase& page : kPages) {
    if (page.character[0] != 'x' && ucnv_compareNames(page.page, ucnv_getDefaultName()) != 0) continue;
    SCOPED_TRACE(page.page);
    qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_REFUSE);
    for (const Limit& limit : kMbCharLimits) expect_refused_above(limit, page.character);
    qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
    for (const Limit& limit : kMbCharLimits) expect_cut_above(limit, page.character);
  }
}

TEST_F(EntryStrings, CodePageChanged_TheNextAddUsesIt) {
  Entry entry(kId, 0);
  const std::string text = times(32, "\xC3\xA9");
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  EXPECT_EQ(thrown_by([&] { add(entry, TypeMBChar32, text); }), overflow("TypeMBChar32", "1001"));
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  add(entry, TypeMBChar32, text);
  EXPECT_EQ(stored(entry, TypeMBChar32), text);
}

constexpr const char* kEmojiUtf8 = "\xF0\x9F\x98\x80";
constexpr const char* kEmojiGb18030 = "\x94\x39\xFC\x36";

TEST_F(EntryStrings, MbCharOutsideTheBmp_CountsTwice) {
  for (const PageCase& page : {PageCase{"UTF-8", kEmojiUtf8}, PageCase{"GB18030", kEmojiGb18030}}) {
    SCOPED_TRACE(page.page);
    qz_LOG_LogConfig::SetCodePage(page.page);
    Entry entry(kId, 0);
    add(entry, TypeMBChar32, times(16, page.character));
    EXPECT_EQ(stored(entry, TypeMBChar32), times(16, page.character));
    EXPECT_EQ(thrown_by([&] { add(entry, TypeMBChar32, "x" + times(16, page.character)); }),
              overflow("TypeMBChar32", "1001"));
    EXPECT_EQ(thrown_by([&] { add(entry, TypeMBChar32, times(17, page.character)); }),
              overflow("TypeMBChar32", "1001"));
  }
}

std::string head_by_icu(const std::string& text, int limit, const char* page) {
  const icu::UnicodeString decoded(text.c_str(), page);
  std::string head(4 * text.size() + 16, '\0');
  head.resize(
      static_cast<std::size_t>(decoded.extract(0, limit, head.data(), static_cast<std::uint32_t>(head.size()), page)));
  return head;
}

TEST_F(EntryStrings, MbCharCutInsideASurrogatePair_EndsAsIcuWritesTheHalf) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  for (const PageCase& page : {PageCase{"UTF-8", kEmojiUtf8}, PageCase{"GB18030", kEmojiGb18030}}) {
    SCOPED_TRACE(page.page);
    qz_LOG_LogConfig::SetCodePage(page.page);
    for (const Limit& limit : kMbCharLimits) {
      Entry entry(kId, 0);
      const std::string text = "x" + times(limit.limit, page.character);
      add(entry, limit.type, text);
      EXPECT_EQ(stored(entry, limit.type), head_by_icu(text, limit.limit, page.page));
    }
  }
}

TEST_F(EntryStrings, MbCharCutInsideASurrogatePairInUtf8_EndsInAReplacementCharacter) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  Entry entry(kId, 0);
  add(entry, TypeMBChar32, times(31, "x") + kEmojiUtf8);
  EXPECT_EQ(stored(entry, TypeMBChar32), times(31, "x") + "\xEF\xBF\xBD");
}

TEST_F(EntryStrings, MbCharOfInvalidBytes_StoredAsGivenWithinTheLimit) {
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  expect_refused_above({TypeMBChar32, 32}, "\xFF");
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  Entry entry(kId, 0);
  add(entry, TypeMBChar32, times(33, "\xFF"));
  EXPECT_EQ(stored(entry, TypeMBChar32), times(32, "\xEF\xBF\xBD"));
}

TEST_F(EntryStrings, MbCharWithUnknownCodePage_HasNoLengthForIcu) {
  qz_LOG_LogConfig::SetCodePage("no-such-code-page");
  Entry entry(kId, 0);
  add(entry, TypeMBChar32, times(33, "x"));
  EXPECT_EQ(stored(entry, TypeMBChar32), times(33, "x"));
}

TEST_F(EntryStrings, MbCharWithUnknownCodePageLongerThanTheBuffers_StaysAHeadOfIt) {
  qz_LOG_LogConfig::SetCodePage("no-such-code-page");
  Entry entry(kId, 0);
  add(entry, TypeMBChar32, times(100000, "x"));
  const std::string text = stored(entry, TypeMBChar32);
  EXPECT_GE(text.size(), 8095U);
  EXPECT_EQ(text, times(static_cast<int>(text.size()), "x"));
}

TEST_F(EntryStrings, TextsFarLongerThanTheBuffers_AreCutOrRefused) {
  const std::string text = times(1000000, "x");
  Entry entry(kId, 0);
  EXPECT_EQ(thrown_by([&] { add(entry, TypeChar2K, text); }), overflow("TypeChar2K", "1001"));
  EXPECT_EQ(thrown_by([&] { add(entry, TypeMBChar2K, text); }), overflow("TypeMBChar2K", "1001"));
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  add(entry, TypeChar2K, text);
  add(entry, TypeMBChar2K, text);
  EXPECT_EQ(stored(entry, TypeChar2K), times(2048, "x"));
  EXPECT_EQ(stored(entry, TypeMBChar2K), times(2048, "x"));
}

TEST_F(EntryStrings, TextsOfLineBreaksInTheWidestCodePage_AreStoredWhole) {
  qz_LOG_LogConfig::SetCodePage("GB18030");
  Entry entry(kId, 0);
  const std::string wide = times(2047, "\x81\x30\x81\x31");
  add(entry, TypeMBChar2K, wide + "\n");
  EXPECT_EQ(stored(entry, TypeMBChar2K), wide + "\\n");
}

// The steps on their own. Both refuse and cut whatever the length of the text.

struct Truncation {
  const char* name;
  void (Entry::*cut)(const char* name, const char* value, int limit, char* buffer, int capacity) const;
};
constexpr Truncation kTruncations[] = {{"string", &Entry::truncate_string}, {"mbstring", &Entry::truncate_mbstring}};

/// The class and text thrown, and what the buffer holds then.
struct Cut {
  std::string thrown;
  std::string buffer;
};

Cut cut(const Truncation& truncation, const char* name, const char* value, int limit, int capacity, unsigned id = kId) {
  const Entry entry(id, 0);
  std::string buffer(64, '#');
  Cut result;
  result.thrown = thrown_by([&] { (entry.*truncation.cut)(name, value, limit, buffer.data(), capacity); });
  result.buffer = buffer;
  return result;
}

constexpr const char* kNullThrown = "QZX_logging_illegal_argument \"arguement is null when trucate string!\"";
constexpr const char* kSmallThrown = "QZX_logging_illegal_argument \"The buf length is smaller than cut length!\"";
const std::string kUntouched(64, '#');

TEST_F(EntryStrings, Truncate_NullArgument_ThrowsUnderBothActions) {
  const Entry entry(kId, 0);
  char buffer[8] = "before";
  for (const int action : {QZ_ACTION_REFUSE, QZ_ACTION_TRUNCATE}) {
    qz_LOG_LogConfig::SetActionAttrLenExceed(action);
    for (const Truncation& each : kTruncations) {
      EXPECT_EQ(thrown_by([&] { (entry.*each.cut)(nullptr, "text", 2, buffer, 8); }), kNullThrown) << each.name;
      EXPECT_EQ(thrown_by([&] { (entry.*each.cut)("Name", nullptr, 2, buffer, 8); }), kNullThrown) << each.name;
      EXPECT_EQ(thrown_by([&] { (entry.*each.cut)("Name", "text", 2, nullptr, 8); }), kNullThrown) << each.name;
      EXPECT_STREQ(buffer, "before");
    }
  }
}

TEST_F(EntryStrings, TruncateUnderRefusal_ThrowsWhateverTheLength) {
  for (const Truncation& each : kTruncations) {
    for (const IdCase& id : kIds) {
      for (const char* value : {"", "text", "a text beyond the limit"}) {
        const Cut result = cut(each, "Name", value, 10, 64, id.id);
        EXPECT_EQ(result.thrown, overflow("Name", id.text)) << each.name;
        EXPECT_EQ(result.buffer, kUntouched);
      }
    }
    EXPECT_EQ(cut(each, "Name", "text", 10, 0).thrown, overflow("Name", "1001"));
  }
}

TEST_F(EntryStrings, TruncateIntoTooSmallABuffer_Throws) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    for (const Truncation& each : kTruncations) {
      for (const int capacity : {10, 9, 1, 0, -1}) {
        const Cut result = cut(each, "Name", "a text beyond the limit", 10, capacity);
        EXPECT_EQ(result.thrown, kSmallThrown) << each.name << " into " << capacity;
        const auto room = static_cast<std::size_t>(std::max(capacity, 0));
        EXPECT_EQ(result.buffer.substr(room), std::string(64 - room, '#')) << "wrote behind the end";
      }
    }
  }
}

TEST_F(EntryStrings, TruncateIntoAJustLargeEnoughBuffer_WritesTheHead) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  for (const bool icu : {true, false}) {
    qz_LOG_LogConfig::SetICUEnabled(icu);
    for (const Truncation& each : kTruncations) {
      const Cut result = cut(each, "Name", "a text beyond the limit", 10, 11);
      EXPECT_EQ(result.thrown, "nothing");
      EXPECT_EQ(result.buffer.substr(0, 11), std::string("a text bey\0", 11)) << each.name;
      EXPECT_EQ(result.buffer.substr(11), std::string(53, '#'));
    }
  }
}

TEST_F(EntryStrings, TruncateShorterText_WritesItWhole) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  for (const Truncation& each : kTruncations) {
    for (const char* value : {"", "text"}) {
      const Cut result = cut(each, "Name", value, 10, 64);
      EXPECT_EQ(result.thrown, "nothing");
      EXPECT_STREQ(result.buffer.c_str(), value) << each.name;
    }
  }
}

TEST_F(EntryStrings, TruncateMbIntoFewerBytesThanTheCharactersTake_ThrowsAndStaysInsideTheBuffer) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  const Cut result = cut(kTruncations[1], "Name", times(15, "\xE6\xBC\xA2").c_str(), 10, 11);
  EXPECT_EQ(result.thrown, kSmallThrown);
  EXPECT_EQ(result.buffer.substr(11), std::string(53, '#'));
}

TEST_F(EntryStrings, TruncateUnderAnyOtherAction_LeavesTheBuffer) {
  for (const int action : {2, -1}) {
    action_on_exceed = action;
    for (const Truncation& each : kTruncations) {
      const Cut result = cut(each, "Name", "a text beyond the limit", 10, 64);
      EXPECT_EQ(result.thrown, "nothing");
      EXPECT_EQ(result.buffer, kUntouched) << each.name;
    }
  }
}

// ---- what is filtered ----

/// The text as it is stored, one character after another.
std::string filtered(const std::string& text, bool escape) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (escape && (text[i] == '\n' || text[i] == '\r')) {
      result += text[i] == '\n' ? "\\n" : "\\r";
    } else if (!escape && text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == 'n' || text[i + 1] == 'r')) {
      result += text[++i] == 'n' ? '\n' : '\r';
    } else {
      result += text[i];
    }
  }
  return result;
}

TEST_F(EntryStrings, EveryCharacterAtEveryPlaceOfEveryLength_Filtered) {
  qz_LOG_LogConfig::SetICUEnabled(false);  // a character is a byte
  Entry entry(kId, 0);
  for (std::size_t length = 1; length <= 20; ++length) {
    for (std::size_t place = 0; place < length; ++place) {
      for (int character = 1; character < 256; ++character) {
        std::string text(length, place % 2 == 0 ? 'n' : 'r');
        text[place] = static_cast<char>(character);
        for (const bool escape : {true, false}) {
          const std::string wanted = filtered(text, escape);
          entry.add_attrib_str("TypeChar64", text.c_str(), escape);
          ASSERT_EQ(entry.get_attrib_str("TypeChar64"), wanted) << length << ", " << place << ", " << character;
          entry.add_attrib_mbstr("TypeMBChar64", text.c_str(), escape);
          ASSERT_EQ(entry.get_attrib_mbstr("TypeMBChar64"), wanted) << length << ", " << place << ", " << character;
        }
      }
    }
  }
}

}  // namespace
