// Lines written by a plain writer lead back to the entries they were written from.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/lines/lines_fixture.h"
#include "tests/support/rounds.h"
#include "tests/support/support.h"

namespace {

using qz_test::described;

std::string base64(std::string_view bytes) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    std::array<unsigned, 3> three{};
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    for (std::size_t i = 0; i < count; ++i) three[i] = static_cast<unsigned char>(bytes[at + i]);
    const unsigned bits = three[0] << 16 | three[1] << 8 | three[2];
    for (std::size_t i = 0; i < 4; ++i) text += i <= count ? kDigits[bits >> (18 - 6 * i) & 63] : '=';
  }
  return text;
}

std::string json_text(std::string_view text) {
  std::string json = "\"";
  for (const char character : text) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(character));
    const bool is_plain = static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\';
    json += is_plain ? std::string(1, character) : std::string(escape);
  }
  return json + "\"";
}

/// A text converted; nothing where that fails.
std::string converted(int (*convert)(const char*, char*, unsigned&, const char*), const std::string& text,
                      const char* code_page) {
  std::string target(text.size() * 8 + 64, '\0');
  auto size = static_cast<unsigned>(target.size() - 1);
  if (text.empty() || convert(text.c_str(), target.data(), size, code_page) == 0) return "";
  target.resize(size);
  return target;
}

/// Writes an entry as a line, each part in the plainest way.
class PlainWriter : public qz_LOG_AttributeVisitor {
 public:
  /// An empty code page: texts are passed on as they are, in UTF-8 where they are that.
  PlainWriter(const qz_LOG_LogEntry& entry, const char* code_page) : code_page_(code_page) {
    entry.VisitAttributes(*this);
    const qz_Time time = entry.GetTimestamp(true);
    line_ = "{\"id\":" + std::to_string(entry.GetEntryID()) + ",\"level\":" + std::to_string(entry.GetLogLevel()) +
            (time.unix_seconds() != 0 ? ",\"time\":" + moment(time) : "") + ",\"attributes\":{" + attributes_ + "}" +
            (bytes_.empty() ? "" : ",\"bytes\":{" + bytes_ + "}") + "}";
  }
  const std::string& line() const { return line_; }

  void VisitBool(const char* name, qz_AttributeType, bool value) override { add(name, value ? "true" : "false"); }
  void VisitUnsigned(const char* name, qz_AttributeType, unsigned value) override { add(name, std::to_string(value)); }
  void VisitSigned(const char* name, qz_AttributeType, int value) override { add(name, std::to_string(value)); }
  void VisitFloat(const char* name, qz_AttributeType, double value) override {
    char text[32];
    char* const end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
    if (std::isnan(value)) return add(name, "\"NaN\"");
    if (std::isinf(value)) return add(name, value > 0 ? "\"Infinity\"" : "\"-Infinity\"");
    add(name, std::string(text, end));
  }
  void VisitText(const char* name, qz_AttributeType, const char* text, unsigned length) override {
    const std::string stored(text, length);
    const std::string utf8 =
        code_page_.empty() ? stored : converted(qz_LOG_LogEntry::ConvertToUTF8, stored, code_page_.c_str());
    const std::string back =
        code_page_.empty() ? stored : converted(qz_LOG_LogEntry::ConvertFromUTF8, utf8, code_page_.c_str());
    const std::string checked = converted(qz_LOG_LogEntry::ConvertToUTF8, utf8, "UTF-8");
    add(name, json_text(checked));
    if (back != stored || checked != utf8) add_to(bytes_, name, "\"" + base64(stored) + "\"");
  }
  void VisitTime(const char* name, qz_AttributeType, const qz_Time& value) override { add(name, moment(value)); }

 private:
  static std::string moment(qz_Time time) {
    char text[48];
    time.local_to_GMT();
    std::snprintf(text, sizeof text, "\"%04d-%02d-%02dT%02d:%02d:%02dZ\"", time.get_year(), time.get_month(),
                  time.get_day(), time.get_hour(), time.get_minute(), time.get_second());
    return text;
  }
  static void add_to(std::string& members, const char* name, const std::string& value) {
    members += (members.empty() ? "" : ",") + json_text(name) + ":" + value;
  }
  void add(const char* name, const std::string& value) { add_to(attributes_, name, value); }

  std::string code_page_;
  std::string attributes_;
  std::string bytes_;
  std::string line_;
};

class EntryIdentity : public qz_test::LinesTest {
 protected:
  std::string any_text(const char* code_page) {
    static const std::vector<std::string> pieces = {"a",  "Z",   " ", "\n",   "\r", "\\",
                                                    "\"", "\\n", "ä", "日本", "\t", "x"};
    std::string utf8;
    for (std::size_t count = random_.below(12); count > 0; --count) utf8 += pieces[random_.below(pieces.size())];
    if (random_.one_in(4)) return random_.text(random_.below(16));  // any bytes
    return code_page[0] == '\0' ? utf8 : converted(qz_LOG_LogEntry::ConvertFromUTF8, utf8, code_page);
  }

  double any_double() {
    static constexpr double kSome[] = {0.0,    -0.0,     1.0,       0.1, 1e300,
                                       5e-324, HUGE_VAL, -HUGE_VAL, NAN, 18446744073709551616.0};
    if (random_.one_in(2)) return kSome[random_.below(std::size(kSome))];
    const double any = std::bit_cast<double>(static_cast<std::uint64_t>(random_.between(INT64_MIN, INT64_MAX)));
    return std::isnan(any) ? NAN : any;
  }

  qz_Time any_time() {
    qz_Time time = qz_Time::from_unix_seconds(random_.between(-2000000000, 4000000000));
    if (random_.one_in(2)) time.GMT_to_local();
    return time;
  }

  void add_any(qz_LOG_LogEntry& entry, const char* name, qz_AttributeType type, const char* code_page) {
    if (type == TypeBool) entry.AddAttribBool(name, random_.one_in(2));
    if (type == TypeUInt1) entry.AddAttrib1u(name, static_cast<unsigned char>(random_.below(256)));
    if (type == TypeSInt1) entry.AddAttrib1(name, static_cast<char>(random_.below(256)));
    if (type == TypeUInt2) entry.AddAttrib2u(name, static_cast<unsigned short>(random_.below(65536)));
    if (type == TypeSInt2) entry.AddAttrib2(name, static_cast<short>(random_.between(-32768, 32767)));
    if (type == TypeUInt4) entry.AddAttrib4u(name, static_cast<unsigned>(random_.between(0, UINT32_MAX)));
    if (type == TypeSInt4) entry.AddAttrib4(name, static_cast<int>(random_.between(INT32_MIN, INT32_MAX)));
    if (type == TypeFloat) entry.AddAttribFloat8(name, any_double());
    if (type >= TypeDate && type <= TypeTimestamp) entry.AddAttribTime(name, any_time());
    try {
      if (type >= TypeChar32 && type <= TypeChar2K) entry.AddAttribStr(name, any_text(code_page).c_str());
      if (type >= TypeMBChar32 && type <= TypeMBChar2K) entry.AddAttribMBStr(name, any_text(code_page).c_str());
    } catch (const QZX_logging_invalid_attribute_value&) {
      entry.RemoveAttrib(name);  // too long for its type
    }
  }

  void expect_identity(const char* code_page) {
    static constexpr const char* kNames[] = {"B",    "U1",   "S1",   "U2",   "S2",  "U4",  "S4", "F",
                                             "C",    "C64",  "C128", "C256", "C1K", "C2K", "M",  "M64",
                                             "M128", "M256", "M1K",  "M2K",  "D",   "T",   "S",  "Anywhere"};
    for (int round = 0; round < qz_test::rounds(1500); ++round) {
      qz_LOG_LogEntry entry(7, static_cast<unsigned>(random_.below(10)));
      if (random_.one_in(2)) entry.SetTimestamp(any_time(), false);
      for (const char* const name : kNames) {
        qz_AttributeType type = TypeUnknown;
        if (random_.one_in(2)) continue;
        entry.CheckAttribute(name, type);
        add_any(entry, name, type, code_page);
      }
      const PlainWriter writer(entry, code_page);
      ASSERT_EQ(outcome(writer.line()), described(entry)) << writer.line() << " in " << code_page;
    }
  }

  qz_test::SeededRandom random_;
};

TEST_F(EntryIdentity, EveryCodePage_LeadsBackToTheStoredBytes) {
  for (const char* const code_page :
       {"UTF-8", "ISO-8859-1", "windows-1252", "Shift_JIS", "GB18030", "ISO-2022-JP", "ibm-037"}) {
    qz_LOG_LogConfig::SetCodePage(code_page);
    ASSERT_NO_FATAL_FAILURE(expect_identity(code_page));
  }
}

TEST_F(EntryIdentity, WithoutIcu_LeadsBackToTheStoredBytes) {
  qz_LOG_LogConfig::SetCodePage("ISO-8859-1");
  qz_LOG_LogConfig::SetICUEnabled(false);
  ASSERT_NO_FATAL_FAILURE(expect_identity(""));
}

TEST_F(EntryIdentity, LongestTextsWithLineBreaks_AreTaken) {
  for (const char* const code_page : {"UTF-8", "ISO-8859-1"}) {
    qz_LOG_LogConfig::SetCodePage(code_page);
    qz_LOG_LogEntry entry(7, 0);
    entry.AddAttribStr("C", (std::string(31, 'x') + "\n").c_str());
    entry.AddAttribStr("C64", std::string(64, '\r').c_str());
    entry.AddAttribMBStr("M", std::string(32, '\n').c_str());
    entry.AddAttribMBStr("M2K", std::string(2048, '\n').c_str());
    EXPECT_STREQ(entry.GetAttribStr("C"), (std::string(31, 'x') + "\\n").c_str());
    EXPECT_EQ(outcome(PlainWriter(entry, code_page).line()), described(entry));
    EXPECT_EQ(outcome(R"({"id":7,"attributes":{"C":")" + std::string(31, 'x') + R"(\\n\\n"}})"),
              "refused-value: C Attribute value is overflow under Entry ID 7 !");
    EXPECT_EQ(outcome(R"({"id":7,"attributes":{"M":")" + std::string(31, 'x') + R"(\\n\\n"}})"),
              "refused-value: M Attribute value is overflow under Entry ID 7 !");
  }
}

TEST_F(EntryIdentity, TextTooLongWhereTheSettingsCut_IsCut) {
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_TRUNCATE);
  const std::string line = R"({"id":7,"attributes":{"C":")" + std::string(40, 'x') + R"("}})";
  EXPECT_EQ(outcome(line), "7 level 0 mask 1 time 0: C/9=" + std::string(32, 'x') + "(32)");
  qz_LOG_LogConfig::SetActionAttrLenExceed(QZ_ACTION_REFUSE);
}

}  // namespace
