#include "lines/line_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "entry/logentry_i.h"
#include "qzlog/logentry.h"
#include "tests/entry/entry_fixture.h"
#include "tests/support/strict_json.h"

namespace qzlog {
namespace {

using namespace qz_test;

class LineWriter : public EntryTest {
 protected:
  LineWriter() { qz_LOG_LogConfig::SetCodePage("UTF-8"); }

  /// The values of attributes, as they stand in a line with nothing else.
  static std::string attributes_of(const qz_LOG_LogEntry& entry) {
    const std::string line = entry.ToJson();
    StrictJson::parse(line);
    const std::string beginning = R"({"id":1001,"level":0,"attributes":)";
    EXPECT_EQ(line.substr(0, beginning.size()), beginning);
    return line.substr(beginning.size(), line.size() - beginning.size() - 1);
  }
};

TEST_F(LineWriter, EntryWithoutAttributes_IdAndLevel) {
  EXPECT_EQ(qz_LOG_LogEntry(kId, 3).ToJson(), R"({"id":1001,"level":3,"attributes":{}})");
  EXPECT_EQ(qz_LOG_LogEntry(4294967295U, 9).ToJson(), R"({"id":4294967295,"level":9,"attributes":{}})");
}

TEST_F(LineWriter, EveryMember_InItsPlace) {
  const TimeZone zone("Asia/Kathmandu");
  _qz_LOG_log_entry_imp entry(kId, 3);
  entry.set_timestamp(qz_Time::from_unix_seconds(1795248930), true);
  entry.add_attrib_mbstr("TypeMBChar32", "\xFF", true);
  std::string line = "before";
  append_entry_json(LineBeginning::kBrace, entry, {true, 7}, {KnownName::of("DISK_FULL"), nullptr}, line);
  EXPECT_EQ(
      line,
      R"(before{"id":1001,"level":3,"time":"2026-11-21T08:15:30Z","default":true,"selector":7,"name":"DISK_FULL",)"
      R"("attributes":{"TIMEZONE_DIFFERENCE":345,"DAYLIGHT_SAVING_ACTIVE":false,"TypeMBChar32":"�"},)"
      R"("bytes":{"TypeMBChar32":"/w=="}})");
}

TEST_F(LineWriter, ChoiceOfMessage_OnlyWhereItIsOne) {
  const qz_LOG_LogEntry entry(kId, 0);
  EXPECT_EQ(entry.ToJson(true), R"({"id":1001,"level":0,"default":true,"attributes":{}})");
  EXPECT_EQ(entry.ToJson(false, 4294967295U), R"({"id":1001,"level":0,"selector":4294967295,"attributes":{}})");
}

TEST_F(LineWriter, AppendJson_LeavesWhatIsThere) {
  const qz_LOG_LogEntry entry(kId, 0);
  std::string line = "a\n";
  entry.AppendJson(line);
  entry.AppendJson(line, true);
  EXPECT_EQ(line, "a\n" + entry.ToJson() + entry.ToJson(true));
}

TEST_F(LineWriter, AppendEntryBody_TheSameWithoutTheFirstBrace) {
  qz_LOG_LogEntry entry(kId, 3);
  entry.AddAttrib4u("TypeUInt4", 5);
  std::string line = "{";
  append_entry_body(entry, true, 9, line);
  EXPECT_EQ(line, entry.ToJson(true, 9));
}

TEST_F(LineWriter, NumbersOfEveryType) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttribBool("TypeBool", true);
  entry.AddAttrib1u("TypeUInt1", 255);
  entry.AddAttrib1("TypeSInt1", static_cast<char>(-128));
  entry.AddAttrib2u("TypeUInt2", 65535);
  entry.AddAttrib2("TypeSInt2", -32768);
  entry.AddAttrib4u("TypeUInt4", 4294967295U);
  entry.AddAttrib4("TypeSInt4", -2147483647 - 1);
  entry.AddAttribFloat8("TypeFloat", -0.0);
  EXPECT_EQ(attributes_of(entry),
            R"({"TypeBool":true,"TypeUInt1":255,"TypeSInt1":-128,"TypeUInt2":65535,"TypeSInt2":-32768,)"
            R"("TypeUInt4":4294967295,"TypeSInt4":-2147483648,"TypeFloat":-0.0})");
}

TEST_F(LineWriter, FloatsThatJsonLacks_AreTexts) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const auto& [value, text] : {std::pair(infinity, "\"Infinity\""),
                                    {-infinity, "\"-Infinity\""},
                                    {std::nan(""), "\"NaN\""},
                                    {-std::nan("7"), "\"NaN\""}}) {
    qz_LOG_LogEntry entry(kId, 0);
    entry.AddAttribFloat8("TypeFloat", value);
    EXPECT_EQ(attributes_of(entry), std::string("{\"TypeFloat\":") + text + "}");
  }
}

TEST_F(LineWriter, Times_AreMomentsWhateverTheirMode) {
  const TimeZone zone("America/New_York");
  qz_LOG_LogEntry entry(kId, 0);
  qz_Time local = qz_Time::from_unix_seconds(1795248930);
  local.GMT_to_local();
  entry.AddAttribTime("TypeDate", local);
  entry.AddAttribTime("TypeTime", qz_Time::from_unix_seconds(0));
  entry.AddAttribTime("TypeTimestamp", qz_Time::from_unix_seconds(-62167219200));
  EXPECT_EQ(attributes_of(entry), R"({"TypeDate":"2026-11-21T08:15:30Z","TypeTime":"1970-01-01T00:00:00Z",)"
                                  R"("TypeTimestamp":"0000-01-01T00:00:00Z"})");
}

TEST_F(LineWriter, TimeGivenAsLocal_IsTheSameMoment) {
  const TimeZone zone("America/New_York");
  qz_LOG_LogEntry entry(kId, 0);
  entry.SetTimestamp(qz_Time::from_unix_seconds(1795248930), false);
  EXPECT_EQ(StrictJson::parse(entry.ToJson()).find("time")->text, "2026-11-21T13:15:30Z");
}

TEST_F(LineWriter, ClearedEntry_HasNoTime) {
  qz_LOG_LogEntry entry(kId, 5);
  entry.SetTimestamp(qz_Time::from_unix_seconds(1), true);
  entry.ClearAttribs();
  EXPECT_EQ(entry.ToJson(), R"({"id":1001,"level":0,"attributes":{}})");
}

TEST_F(LineWriter, TextsOfEveryType_LineBreaksAsTheyAreStored) {
  qz_LOG_LogEntry entry(kId, 0);
  std::string expected;
  for (int code = TypeChar32; code <= TypeMBChar2K; ++code) {
    if (code < TypeMBChar32) {
      entry.AddAttribStr(type_name(code), "a\n\"\t\\");
    } else {
      entry.AddAttribMBStr(type_name(code), "a\n\"\t\\");
    }
    expected += std::string(expected.empty() ? "{" : ",") + '"' + type_name(code) + R"(":"a\\n\"\t\\")";
  }
  EXPECT_EQ(attributes_of(entry), expected + "}");
}

TEST_F(LineWriter, EveryByte_InUtf8) {
  for (int byte = 1; byte < 256; ++byte) {
    qz_LOG_LogEntry entry(kId, 0);
    const std::string text = {'<', static_cast<char>(byte), '>'};
    entry.AddAttribStr("TypeChar32", text.c_str());
    const JsonNode line = StrictJson::parse(entry.ToJson());
    EXPECT_EQ(line.find("bytes") != nullptr, byte >= 0x80) << byte;
    const bool is_line_break = byte == '\n' || byte == '\r';
    const std::string stored = is_line_break ? (byte == '\n' ? "<\\n>" : "<\\r>") : byte < 0x80 ? text : "<\uFFFD>";
    EXPECT_EQ(line.find("attributes")->find("TypeChar32")->text, stored) << byte;
  }
}

TEST_F(LineWriter, AttributesInTheOrderOfAdding_ThoseOfAnotherIdAmongThem) {
  qz_LOG_LogEntry entry(kOtherTypesId, 0);
  entry.AddAttribStr("TypeUInt4", "kept");
  entry.SetReasonCode(3);
  entry.SetEntryID(kPlainId);
  entry.SetComponentCode(5);
  EXPECT_EQ(entry.ToJson(),
            R"({"id":1003,"level":0,"attributes":{"TypeUInt4":"kept","REASON_CODE":3,"COMPONENT_CODE":5}})");
}

TEST_F(LineWriter, AddedBehindARemovedOne_TakesItsPlace) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttrib1u("TypeUInt1", 1);
  entry.AddAttrib2u("TypeUInt2", 2);
  entry.RemoveAttrib("TypeUInt1");
  EXPECT_EQ(attributes_of(entry), R"({"TypeUInt2":2})");
  entry.AddAttrib4u("TypeUInt4", 4);
  EXPECT_EQ(attributes_of(entry), R"({"TypeUInt4":4,"TypeUInt2":2})");
}

TEST_F(LineWriter, MoreAttributesThanFitInside_AllAreThere) {
  std::vector<LdfAttribute> attributes;
  std::string expected;
  for (unsigned i = 0; i < 250; ++i) {
    attributes.push_back({"Attribute" + std::to_string(i), TypeUInt4});
    expected += (i == 0 ? "{\"Attribute" : ",\"Attribute") + std::to_string(i) + "\":" + std::to_string(i);
  }
  load({.entries = {{.id = kId, .attributes = attributes}}});
  qz_LOG_LogEntry entry(kId, 0);
  for (unsigned i = 0; i < 250; ++i) entry.AddAttrib4u(attributes[i].name.c_str(), i);
  EXPECT_EQ(attributes_of(entry), expected + "}");
}

TEST_F(LineWriter, NamesOfAnyLengthAndCharacters_AreValid) {
  for (const std::size_t length : {1U, 14U, 15U, 16U, 30U, 31U, 32U, 46U, 47U, 48U, 60U, 61U, 62U, 63U, 200U, 3000U}) {
    const std::string name(length, 'n');
    qz_LOG_LogEntry::AddAttributeDefinition(kPlainId, name.c_str(), TypeUInt1);
    qz_LOG_LogEntry entry(kPlainId, 0);
    entry.AddAttrib1u(name.c_str(), 1);
    entry.SetReasonCode(2);
    EXPECT_EQ(entry.ToJson(), R"({"id":1003,"level":0,"attributes":{")" + name + R"(":1,"REASON_CODE":2}})");
  }
  qz_LOG_LogEntry::AddAttributeDefinition(kPlainId, "Gr\u00F6\u00DFe \"\\\n\xFF", TypeUInt1);
  qz_LOG_LogEntry entry(kPlainId, 0);
  entry.AddAttrib1u("Gr\u00F6\u00DFe \"\\\n\xFF", 1);
  EXPECT_EQ(StrictJson::parse(entry.ToJson()).find("attributes")->names(), " Gr\u00F6\u00DFe \"\\\n\uFFFD");
}

TEST_F(LineWriter, LongTexts_AreWhole) {
  qz_LOG_LogEntry entry(kId, 0);
  const std::string control(2048, '\x01');
  std::string escaped;
  for (int i = 0; i < 2048; ++i) escaped += "\\u0001";
  entry.AddAttribStr("TypeChar2K", control.c_str());
  entry.AddAttribMBStr("TypeMBChar2K", std::string(2048, 'x').c_str());
  EXPECT_EQ(attributes_of(entry),
            R"({"TypeChar2K":")" + escaped + R"(","TypeMBChar2K":")" + std::string(2048, 'x') + "\"}");
}

TEST_F(LineWriter, EntryWithoutAnId_Throws) {
  const qz_LOG_LogEntry entry;
  std::string line = "before";
  EXPECT_EQ(thrown_by([&] { entry.AppendJson(line); }),
            thrown<QZX_logging_misc>("_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized"));
  EXPECT_EQ(thrown_by([&] { append_entry_body(entry, false, 0, line); }),
            thrown<QZX_logging_misc>("_qz_LOG_log_entry_imp::_get_attribute_internal(): entry not initialized"));
  EXPECT_EQ(line, "before");
}

TEST_F(LineWriter, DefinitionsCleared_TheEntryIsStillWritten) {
  qz_LOG_LogEntry entry(kId, 0);
  entry.AddAttrib4u("TypeUInt4", 1);
  const std::string before = entry.ToJson();
  qz_LOG_LogConfig::ClearDefinitions();
  EXPECT_EQ(entry.ToJson(), before);
}

Sensitivity sensitivity_by_name(const _qz_LOG_log_definition& definition, const KnownName* name) {
  EXPECT_EQ(definition.get_entry_id(), kId);
  const std::string text = name->text();
  if (text == "TypeChar64" || text == "TypeMBChar64" || text == "TypeUInt2") return Sensitivity::kHash;
  return text == "TypeChar32" || text == "TypeUInt1" ? Sensitivity::kDrop : Sensitivity::kKeep;
}

TEST_F(LineWriter, SensitiveAttributes_DroppedOrHashed) {
  _qz_LOG_log_entry_imp entry(kId, 0);
  entry.add_attrib_1u("TypeUInt1", 1);
  entry.add_attrib_2u("TypeUInt2", 2);  // a number that were to be hashed
  entry.add_attrib_str("TypeChar32", "\xFF secret", true);
  entry.add_attrib_str("TypeChar64", "abc", true);
  entry.add_attrib_mbstr("TypeMBChar64", "\xBD", true);
  entry.add_attrib_str("TypeChar128", "kept", true);
  std::string line;
  append_entry_json(LineBeginning::kBrace, entry, {}, {nullptr, &sensitivity_by_name}, line);
  EXPECT_EQ(line, R"({"id":1001,"level":0,"attributes":{"TypeChar64":"sha256:ba7816bf8f01cfea",)"
                  R"("TypeMBChar64":"sha256:68325720aabd7c82","TypeChar128":"kept"}})");
}

TEST_F(LineWriter, SensitiveAttributesBesideBytes_NoBytesOfThem) {
  _qz_LOG_log_entry_imp entry(kId, 0);
  entry.add_attrib_str("TypeChar32", "\xFF secret", true);
  entry.add_attrib_str("TypeChar64", "\xFF secret", true);
  entry.add_attrib_str("TypeChar128", "\xFF", true);
  std::string line;
  append_entry_json(LineBeginning::kNone, entry, {}, {nullptr, &sensitivity_by_name}, line);
  const JsonNode parsed = StrictJson::parse("{" + line);
  EXPECT_EQ(parsed.find("attributes")->names(), " TypeChar64 TypeChar128");
  EXPECT_EQ(parsed.find("bytes")->names(), " TypeChar128");
}

TEST_F(LineWriter, SteadyState_NeedsNoMemory) {
  qz_LOG_LogEntry entry(kId, 3);
  entry.SetTimestamp(qz_Time::from_unix_seconds(1795248930), true);
  entry.AddAttribStr("TypeChar32", "volume-0042");
  entry.AddAttribMBStr("TypeMBChar64", "Gr\u00F6\u00DFe \xFF");
  entry.AddAttribFloat8("TypeFloat", 0.1);
  std::string line;
  entry.AppendJson(line);
  const std::string first = line;
  line.clear();
  bool happened = true;
  {
    const AllocationFailure failure(1);
    entry.AppendJson(line);
    happened = failure.happened();
  }
  EXPECT_FALSE(happened);
  EXPECT_EQ(line, first);
}

TEST_F(LineWriter, EachAllocationFails_TheTextIsAsItWas) {
  qz_LOG_LogEntry entry(kId, 3);
  for (const int code : {TypeChar2K, TypeChar1K})
    entry.AddAttribStr(type_name(code), std::string(1000, '\xFF').c_str());
  for (const char* const code_page : {"UTF-8", "ISO-8859-1", "Shift_JIS"}) {
    qz_LOG_LogConfig::SetCodePage(code_page);
    const std::string expected = entry.ToJson();
    std::string line;
    const unsigned count = FailEveryAllocation(
        [&] {
          line.assign("before");
          line.shrink_to_fit();
          entry.AppendJson(line);
        },
        [&] { EXPECT_EQ(line, "before"); });
    EXPECT_GT(count, 1U) << code_page;
    EXPECT_EQ(line, "before" + expected);
  }
}

}  // namespace
}  // namespace qzlog
