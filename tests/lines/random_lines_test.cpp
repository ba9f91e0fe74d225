// Random entries in every code page: what a line says of an entry is the entry.
#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "message/code_page.h"
#include "qzlog/logentry.h"
#include "tests/entry/entry_fixture.h"
#include "tests/support/strict_json.h"

namespace qzlog {
namespace {

using namespace qz_test;

/// What an entry holds, by the names of attributes: numbers and moments as texts, texts as they are stored.
class Contents : public qz_LOG_AttributeVisitor {
 public:
  explicit Contents(const qz_LOG_LogEntry& entry) { entry.VisitAttributes(*this); }

  void VisitBool(const char* name, qz_AttributeType, bool value) override { values[name] = value ? "true" : "false"; }
  void VisitUnsigned(const char* name, qz_AttributeType, unsigned value) override {
    values[name] = std::to_string(value);
  }
  void VisitSigned(const char* name, qz_AttributeType, int value) override { values[name] = std::to_string(value); }
  void VisitFloat(const char* name, qz_AttributeType, double value) override { floats[name] = value; }
  void VisitText(const char* name, qz_AttributeType, const char* text, unsigned length) override {
    texts[name] = std::string(text, length);
  }
  void VisitTime(const char* name, qz_AttributeType, const qz_Time& value) override {
    moments[name] = value.unix_seconds();
  }

  std::map<std::string, std::string> values;
  std::map<std::string, double> floats;
  std::map<std::string, std::string> texts;
  std::map<std::string, long long> moments;
};

std::string from_base64(std::string_view text) {
  static constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  for (std::size_t at = 0; at + 4 <= text.size(); at += 4) {
    unsigned bits = 0;
    unsigned missing = 0;
    for (const char digit : text.substr(at, 4)) {
      missing += digit == '=';
      bits = bits << 6 | (digit == '=' ? 0 : static_cast<unsigned>(kDigits.find(digit)));
    }
    for (unsigned i = 0; i < 3 - missing; ++i) bytes += static_cast<char>(bits >> (16 - 8 * i) & 0xFFU);
  }
  return bytes;
}

/// A text of a line in the code page that entries have.
std::string encoded(const std::string& utf8, bool has_icu) {
  if (!has_icu) return utf8;
  std::string bytes;
  EXPECT_TRUE(encode_text(icu::UnicodeString::fromUTF8(utf8), qz_LOG_LogConfig::GetCodePage(), bytes));
  return bytes;
}

void expect_float(const JsonNode& node, double value) {
  if (std::isnan(value)) {
    EXPECT_EQ(node.text, "NaN");
  } else if (std::isinf(value)) {
    EXPECT_EQ(node.text, value > 0 ? "Infinity" : "-Infinity");
  } else {
    double read = 0;
    std::from_chars(node.text.data(), node.text.data() + node.text.size(), read);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint64_t>(value)) << node.text;
    EXPECT_EQ(node.kind, JsonNode::kNumber);
    EXPECT_NE(node.text.find_first_of(".e"), std::string::npos) << node.text;
  }
}

void expect_same(const JsonNode& line, const qz_LOG_LogEntry& entry, bool has_icu) {
  EXPECT_EQ(line.find("id")->text, std::to_string(entry.GetEntryID()));
  EXPECT_EQ(line.find("level")->text, std::to_string(entry.GetLogLevel()));
  qz_Time time;
  EXPECT_EQ(line.find("time") != nullptr, entry.GetTimestamp(true).unix_seconds() != 0);
  if (const JsonNode* const written = line.find("time")) {
    EXPECT_TRUE(time.set_to_string_value(written->text.c_str()));
  }
  EXPECT_EQ(time.unix_seconds(), entry.GetTimestamp(true).unix_seconds());

  const Contents contents(entry);
  const JsonNode& attributes = *line.find("attributes");
  const JsonNode* const bytes = line.find("bytes");
  EXPECT_EQ(attributes.members.size(),
            contents.values.size() + contents.floats.size() + contents.texts.size() + contents.moments.size());
  EXPECT_TRUE(bytes == nullptr || !bytes->members.empty());
  std::size_t texts_of_bytes = 0;
  for (const auto& [name, node] : attributes.members) {
    const JsonNode* const own_bytes = bytes != nullptr ? bytes->find(name) : nullptr;
    if (contents.texts.contains(name)) {
      ASSERT_EQ(node.kind, JsonNode::kText);
      const std::string& stored = contents.texts.at(name);
      if (own_bytes != nullptr) {
        ++texts_of_bytes;
        EXPECT_EQ(from_base64(own_bytes->text), stored);
        EXPECT_TRUE(node.text.find('\0') != std::string::npos || encoded(node.text, has_icu) != stored)
            << "in vain: " << testing::PrintToString(stored);
      } else {
        EXPECT_EQ(encoded(node.text, has_icu), stored) << testing::PrintToString(node.text);
      }
    } else if (contents.floats.contains(name)) {
      expect_float(node, contents.floats.at(name));
    } else if (contents.moments.contains(name)) {
      qz_Time moment;
      EXPECT_TRUE(moment.set_to_string_value(node.text.c_str()));
      EXPECT_TRUE(moment.is_GMT_time_mode());
      EXPECT_EQ(moment.unix_seconds(), contents.moments.at(name));
    } else {
      EXPECT_NE(node.kind, JsonNode::kText);
      EXPECT_EQ(node.text, contents.values.at(name));
    }
  }
  EXPECT_EQ(texts_of_bytes, bytes != nullptr ? bytes->members.size() : 0);
}

/// Makes entries of every type.
class RandomEntries {
 public:
  RandomEntries(RandomNumbers& random, std::string code_page) : random_(random), code_page_(std::move(code_page)) {}

  qz_LOG_LogEntry entry() {
    qz_LOG_LogEntry result(kId, static_cast<unsigned>(random_.between(0, 9)));
    if (random_.one_in(2)) result.SetTimestamp(moment(), random_.one_in(2));
    for (std::size_t count = random_.below(16); count > 0; --count) {
      const auto code = static_cast<int>(random_.between(TypeBool, TypeTimestamp));
      add(result, (random_.one_in(3) ? "Global" : "") + std::string(type_name(code)), code);
    }
    if (random_.one_in(8)) {
      const unsigned level = result.GetLogLevel();
      result.SetEntryID(kPlainId);
      result.SetLogLevel(level);
    }
    return result;
  }

 private:
  template <typename Number>
  Number number() {
    using Limits = std::numeric_limits<Number>;
    if (random_.one_in(4)) return random_.one_in(2) ? Limits::min() : Limits::max();
    return static_cast<Number>(random_.between(Limits::min(), Limits::max()));
  }

  double real() {
    switch (random_.below(4)) {
      case 0:
        return static_cast<double>(random_.between(-1000000, 1000000)) / 1000;
      case 1:
        return static_cast<double>(random_.between(-1000, 1000));
      case 2: {
        const double special[] = {HUGE_VAL, -HUGE_VAL, std::nan(""), -0.0, 5e-324, 1e308};
        return special[random_.below(std::size(special))];
      }
      default:
        return std::bit_cast<double>(static_cast<std::uint64_t>(
            random_.between(std::numeric_limits<long long>::min(), std::numeric_limits<long long>::max())));
    }
  }

  qz_Time moment() {
    qz_Time time = qz_Time::from_unix_seconds(random_.one_in(8) ? 0 : random_.between(-62167000000, 253402000000));
    if (random_.one_in(2)) time.GMT_to_local();
    return time;
  }

  /// Without zero bytes, and short enough for every type.
  std::string text() {
    const std::size_t length = random_.below(15);
    if (random_.one_in(3)) return random_.text(length);
    icu::UnicodeString characters;
    for (std::size_t i = 0; i < length; ++i) {
      static constexpr UChar32 kLast[] = {0x7E, 0x7E, 0xFF, 0x30FF, 0x9FFF, 0x1F64F};
      const UChar32 last = kLast[random_.below(std::size(kLast))];
      const auto character = static_cast<UChar32>(random_.between(0x20, last));
      characters.append(U_IS_SURROGATE(character) ? UChar32{'?'} : character);
    }
    std::string bytes;
    EXPECT_TRUE(encode_text(characters, code_page_.c_str(), bytes));
    // Of some code pages a text may take more bytes than the shortest type has.
    return bytes.size() <= 30 ? bytes : bytes.substr(0, 30);
  }

  void add(qz_LOG_LogEntry& entry, const std::string& attribute, int code) {
    const char* const name = attribute.c_str();
    switch (code) {
      case TypeBool:
        return entry.AddAttribBool(name, random_.one_in(2));
      case TypeUInt1:
        return entry.AddAttrib1u(name, number<unsigned char>());
      case TypeSInt1:
        return entry.AddAttrib1(name, number<char>());
      case TypeUInt2:
        return entry.AddAttrib2u(name, number<unsigned short>());
      case TypeSInt2:
        return entry.AddAttrib2(name, number<short>());
      case TypeUInt4:
        return entry.AddAttrib4u(name, number<unsigned>());
      case TypeSInt4:
        return entry.AddAttrib4(name, number<int>());
      case TypeFloat:
        return entry.AddAttribFloat8(name, real());
      default:
        break;
    }
    if (code >= TypeDate) return entry.AddAttribTime(name, moment());
    const std::string value = text();
    if (code >= TypeMBChar32) return entry.AddAttribMBStr(name, value.c_str());
    entry.AddAttribStr(name, value.c_str());
  }

  RandomNumbers& random_;
  std::string code_page_;
};

class RandomLines : public EntryTest, public testing::WithParamInterface<const char*> {};

TEST_P(RandomLines, SayWhatTheEntryHolds) {
  const TimeZone zone("Australia/Lord_Howe");
  const std::string code_page = GetParam();
  const bool has_icu = code_page != "none";
  qz_LOG_LogConfig::SetCodePage(has_icu ? code_page.c_str() : "ISO-8859-1");
  qz_LOG_LogConfig::SetICUEnabled(has_icu);
  SeededRandom random;
  RandomEntries entries(random, has_icu ? code_page : "UTF-8");
  for (int round = 0; round < rounds(3000) && !HasFailure(); ++round) {
    const qz_LOG_LogEntry entry = entries.entry();
    std::string line;
    ASSERT_EQ(thrown_by([&] { line = entry.ToJson(); }), "nothing");
    SCOPED_TRACE(line);
    JsonNode parsed;
    ASSERT_NO_THROW(parsed = StrictJson::parse(line));
    expect_same(parsed, entry, has_icu);
  }
}

INSTANTIATE_TEST_SUITE_P(CodePages, RandomLines,
                         testing::Values("UTF-8", "", "none", "US-ASCII", "ISO-8859-1", "windows-1252", "Shift_JIS",
                                         "GB18030", "ibm-037", "ISO-2022-JP", "EUC-KR", "UTF-7", "CESU-8", "HZ"));

}  // namespace
}  // namespace qzlog
