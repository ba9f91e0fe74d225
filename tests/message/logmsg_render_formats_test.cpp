#include "message/logmsg_render.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "message/logmsg.h"
#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

constexpr const char* kPrefix = "<QZX_logging_invalid_message_string> _qz_LOG_log_message::get_message:  ";
constexpr const char* kWrongGetText = "Use the wrong get method under Entry ID 4711 !";

std::string unknown_attribute(const std::string& name) {
  return std::string(kPrefix) + "unable to find attribute value for \"" + name + "\"!";
}
std::string invalid_format(const std::string& name) {
  return std::string(kPrefix) + "invalid format specifier for attribute \"" + name + "\"!";
}

/// The two ways of rendering a template.
using Render = std::string (MessageRendering::*)(const std::string&);
const struct {
  const char* name;
  Render render;
} kPaths[] = {{"narrow", &MessageRendering::narrow}, {"icu", &MessageRendering::icu}};

class RenderFormats : public testing::Test {
 protected:
  /// Both paths must throw the same.
  template <typename Exception>
  void expect_throws(const std::string& message_template, const std::string& text) {
    for (const auto& path : kPaths) {
      EXPECT_EQ(thrown_by([&] { (rendering_.*path.render)(message_template); }), thrown<Exception>(text))
          << path.name << ": " << message_template;
    }
  }
  void expect_both(const std::string& message_template, const std::string& message) {
    for (const auto& path : kPaths) {
      EXPECT_EQ((rendering_.*path.render)(message_template), message) << path.name << ": " << message_template;
    }
  }

  MessageRendering rendering_;
};

const std::set<int>& accepted_types(char format) {
  static const std::set<int> kTexts = {9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 24};
  static const std::set<int> kIntegers = {1, 2, 3, 4, 5, 6, 7};
  static const std::set<int> kNumbers = {1, 2, 3, 4, 5, 6, 7, 8};
  static const std::set<int> kFloats = {8};
  static const std::set<int> kTimes = {21, 22, 23};
  switch (format) {
    case 's':
      return kTexts;
    case 'C':
    case 'P':
      return kNumbers;
    case 'D':
    case 'T':
      return kTimes;
    case 'f':
      return kFloats;
    default:
      return kIntegers;
  }
}

std::string reference(char format, const std::string& name) { return std::string("%") + format + "%" + name + "%"; }

TEST_F(RenderFormats, EveryFormatWithATypeItDoesNotAccept_InvalidFormatText) {
  for (const char format : std::string("sCPDTfdu")) {
    for (int type = TypeBool; type <= TypeGUID; ++type) {
      if (accepted_types(format).count(type) != 0) continue;
      const std::string name = AttributeTypeList[type - 1].name;
      expect_throws<QZX_logging_invalid_message_string>(reference(format, name), invalid_format(name));
    }
  }
}

TEST_F(RenderFormats, EveryFormatWithATypeItAccepts_Renders) {
  for (const char format : std::string("sCPDTfdu")) {
    for (const int type : accepted_types(format)) {
      if (type == TypeGUID) continue;
      for (const auto& path : kPaths) {
        EXPECT_NO_THROW((rendering_.*path.render)(reference(format, AttributeTypeList[type - 1].name)))
            << path.name << " " << format << " " << type;
      }
    }
  }
}

TEST_F(RenderFormats, GuidAsText_AcceptedButUnreadable) {
  expect_throws<QZX_logging_attribute_type_mismatch>("%s%TypeGUID%", kWrongGetText);
}

TEST_F(RenderFormats, OtherFormatCharacters_DropTheReference) {
  for (int format = 1; format < 256; ++format) {
    if (std::string("sCPDTfdu%").find(static_cast<char>(format)) != std::string::npos) continue;
    const std::string text = std::string("%") + static_cast<char>(format) + "%TypeUInt4%";
    EXPECT_EQ(rendering_.narrow("a" + text + "b"), "ab") << format;
    if (format >= 128) continue;  // not a character of its own in UTF-8
    EXPECT_EQ(rendering_.icu("a" + text + "b%_%TypeUInt4%"), "ab") << format;
  }
}

TEST_F(RenderFormats, WideFormatCharacterWhoseLowByteIsAFormat_Counts) {
  rendering_.entry().add_attrib_4u("TypeUInt4", 5);
  // U+0164 and U+0173 end in the bytes of "d" and "s".
  EXPECT_EQ(rendering_.icu("%\u0164%TypeUInt4%"), "5");
  EXPECT_EQ(thrown_by([&] { rendering_.icu("%\u0173%TypeUInt4%"); }),
            thrown<QZX_logging_invalid_message_string>(invalid_format("TypeUInt4").c_str()));
}

TEST_F(RenderFormats, DroppedReferenceOfAnUnknownName_StillThrows) {
  expect_throws<QZX_logging_invalid_message_string>("%x%Missing%", unknown_attribute("Missing"));
}

TEST_F(RenderFormats, DroppedReferenceOfATextType_DoesNotCheckTheType) {
  expect_both("%x%TypeChar32% %S%TypeFloat% %c%TypeDate% %_%TIMESTAMP%", "   ");
}

TEST_F(RenderFormats, DroppedReference_UsesNoArgumentNumber) {
  rendering_.entry().add_attrib_4u("TypeUInt4", 3);
  rendering_.entry().add_attrib_str("TypeChar32", "abc", true);
  expect_both("%x%TypeUInt4% %s%TypeChar32% %d%TypeUInt4%", " abc 3");
  EXPECT_EQ(rendering_.icu("%x%TypeUInt4% {0} %s%TypeChar32%"), " abc abc");
}

TEST_F(RenderFormats, DroppedReferenceOfAnUnsetAttributeInMode1_NotRead) {
  _qz_LOG_log_entry_imp::global_operation_mode = 1;
  expect_both("a%x%TypeUInt4%b%_%TIMESTAMP%", "ab");
}

TEST_F(RenderFormats, UnknownName_Throws) {
  for (const char format : std::string("sCPDTfdu")) {
    expect_throws<QZX_logging_invalid_message_string>(reference(format, "Missing"), unknown_attribute("Missing"));
    expect_throws<QZX_logging_invalid_message_string>(reference(format, "typeuint4"), unknown_attribute("typeuint4"));
  }
  expect_throws<QZX_logging_invalid_message_string>("%d% TypeUInt4%", unknown_attribute(" TypeUInt4"));
  expect_throws<QZX_logging_invalid_message_string>("%d%Fehlt ü%", unknown_attribute("Fehlt ü"));
}

TEST_F(RenderFormats, GlobalAttribute_IsKnown) {
  rendering_.entry().add_attrib_4("Global", -12);
  expect_both("%d%Global%", "-12");
}

TEST_F(RenderFormats, NamesOutsideAscii_AreKnown) {
  rendering_.entry().add_attrib_4u("Größe", 12);
  rendering_.entry().add_attrib_mbstr("名前", "漢字", true);
  expect_both("%d%Größe% %s%名前%", "12 漢字");
}

TEST_F(RenderFormats, FirstBadReference_Wins) {
  expect_throws<QZX_logging_invalid_message_string>("%d%TypeFloat% %d%Missing%", invalid_format("TypeFloat"));
  expect_throws<QZX_logging_invalid_message_string>("%d%Missing% %d%TypeFloat%", unknown_attribute("Missing"));
}

TEST_F(RenderFormats, BadReferenceBehindAnUnreadableOne_TheUnreadableWins) {
  expect_throws<QZX_logging_attribute_type_mismatch>("%s%TypeGUID% %d%Missing%", kWrongGetText);
  expect_throws<QZX_logging_invalid_message_string>("%d%Missing% %s%TypeGUID%", unknown_attribute("Missing"));
}

TEST_F(RenderFormats, UnsetAttributesInMode2_Defaults) {
  expect_both("[%s%TypeChar32%|%s%TypeMBChar2K%|%d%TypeUInt1%|%d%TypeSInt4%]%_%TIMESTAMP%", "[||0|0]");
  EXPECT_EQ(rendering_.narrow("%f%TypeFloat% %C%TypeFloat% %P%TypeSInt2% %D%TypeDate% %T%TypeTime%"),
            "0.000000 $0.000000 0% 1970-01-01 00:00:00");
  EXPECT_EQ(rendering_.icu("%f%TypeFloat% %C%TypeFloat% %P%TypeSInt2%"), "0 $0.00 0%");
}

TEST_F(RenderFormats, UnsetAttributesInMode1_NotFound) {
  _qz_LOG_log_entry_imp::global_operation_mode = 1;
  const struct {
    char format;
    const char* name;
  } cases[] = {{'s', "TypeChar32"}, {'s', "TypeMBChar1K"},  {'C', "TypeUInt1"}, {'P', "TypeFloat"},
               {'D', "TypeDate"},   {'T', "TypeTimestamp"}, {'f', "TypeFloat"}, {'d', "TypeUInt1"},
               {'u', "TypeSInt1"},  {'d', "TypeUInt2"},     {'u', "TypeSInt2"}, {'d', "TypeUInt4"},
               {'u', "TypeSInt4"}};
  for (const auto& c : cases) {
    expect_throws<QZX_logging_attribute_not_found>(
        reference(c.format, c.name),
        std::string("<QZX_logging_attribute_not_found> Attribute ") + c.name + " cannot be located.");
  }
}

TEST_F(RenderFormats, UnsetBooleanInMode1_ReadsAsZero) {
  _qz_LOG_log_entry_imp::global_operation_mode = 1;
  EXPECT_EQ(rendering_.narrow("[%d%TypeBool%|%u%TypeBool%|%C%TypeBool%|%P%TypeBool%]"), "[||$0|0%]");
  EXPECT_EQ(rendering_.icu("[%d%TypeBool%|%u%TypeBool%|%C%TypeBool%|%P%TypeBool%]%_%TIMESTAMP%"), "[0|0|$0.00|0%]");
}

TEST_F(RenderFormats, Boolean_NothingOnTheNarrowPathAndZeroThroughIcu) {
  for (const bool value : {false, true}) {
    rendering_.entry().add_attrib_bool("TypeBool", value);
    EXPECT_EQ(rendering_.narrow("a%d%TypeBool%b%u%TypeBool%c%C%TypeBool%d%P%TypeBool%"), "abc$0d0%");
    EXPECT_EQ(rendering_.icu("a%d%TypeBool%b%u%TypeBool%c%C%TypeBool%d%P%TypeBool%"), "a0b0c$0.00d0%");
  }
}

TEST_F(RenderFormats, StandardNamesWithoutDefinition_TypedAsText) {
  for (const char* name : {"PRODUCT_ID", "COMPONENT_ID", "VERSION_ID", "COMPONENT_VERSION_ID"}) {
    expect_throws<QZX_logging_invalid_message_string>(reference('d', name), invalid_format(name));
    expect_throws<QZX_logging_invalid_attribute_name>(
        reference('s', name), std::string(name) + "is an invalid attibute under Entry ID 4711 !");
    expect_both(std::string("a") + reference('x', name) + "b%_%TIMESTAMP%", "ab");
  }
}

TEST_F(RenderFormats, StandardNamesThatAreDefined_ReadButTypedAsStandard) {
  const std::vector<LdfAttribute> attributes = {
      {"PRODUCT_ID", TypeMBChar64}, {"VERSION_ID", TypeUInt4}, {"TIMESTAMP", TypeChar32}};
  rendering_.settings().load({{.id = 50, .attributes = attributes}});
  _qz_LOG_log_entry_imp entry(50, 0);
  entry.add_attrib_mbstr("PRODUCT_ID", "product", true);
  entry.add_attrib_4u("VERSION_ID", 3);
  entry.add_attrib_str("TIMESTAMP", "text", true);
  const auto render = [&](const char* message_template) {
    rendering_.definition().set_default_msg_text(message_template);
    const auto narrow = _qz_LOG_log_message::get_qzString_message(entry, &rendering_.definition(), false, 0);
    EXPECT_EQ(to_utf8(_qz_LOG_log_message::get_message(entry, &rendering_.definition(), false, 0)), narrow.c_str());
    return std::string(narrow.c_str());
  };
  EXPECT_EQ(render("%s%PRODUCT_ID%"), "product");
  EXPECT_EQ(thrown_by([&] { render("%d%VERSION_ID%"); }),
            thrown<QZX_logging_invalid_message_string>(invalid_format("VERSION_ID").c_str()));
  EXPECT_EQ(thrown_by([&] { render("%s%VERSION_ID%"); }),
            thrown<QZX_logging_attribute_type_mismatch>("Use the wrong get method under Entry ID 50 !"));
  EXPECT_EQ(thrown_by([&] { render("%s%TIMESTAMP%"); }),
            thrown<QZX_logging_invalid_message_string>(invalid_format("TIMESTAMP").c_str()));
}

TEST_F(RenderFormats, TimestampWithTextOrNumberFormat_InvalidFormatText) {
  for (const char format : std::string("sCPfdu")) {
    expect_throws<QZX_logging_invalid_message_string>(reference(format, "TIMESTAMP"), invalid_format("TIMESTAMP"));
  }
}

TEST_F(RenderFormats, Timestamp_RendersTheTimeOfTheEntry) {
  qz_Time time;
  ASSERT_TRUE(time.set_to_string_value("2026-11-21 08:15:30"));
  _qz_LOG_log_definition::add_global_attr_info("TIMEZONE_DIFFERENCE", TypeSInt2);
  _qz_LOG_log_definition::add_global_attr_info("DAYLIGHT_SAVING_ACTIVE", TypeBool);
  rendering_.entry().set_timestamp(time, false);
  EXPECT_EQ(rendering_.narrow("%D%TIMESTAMP%, %T%TIMESTAMP%."), "2026-11-21, 08:15:30.");
  EXPECT_EQ(rendering_.icu("%D%TIMESTAMP%"), "Nov 21, 2026");
  rendering_.entry().set_timestamp(time, true);  // GMT: a quarter to six hours later in Nepal
  EXPECT_EQ(rendering_.narrow("%D%TIMESTAMP%, %T%TIMESTAMP%."), "2026-11-21, 14:00:30.");
}

TEST_F(RenderFormats, SameAttributeTwice_RendersTwice) {
  rendering_.entry().add_attrib_4u("TypeUInt4", 7);
  expect_both("%d%TypeUInt4%/%u%TypeUInt4%", "7/7");
}

TEST_F(RenderFormats, TemplateOfTheContract_TrailingTextOnlyOnTheNarrowPath) {
  rendering_.entry().add_attrib_4u("TypeUInt4", 3);
  EXPECT_EQ(rendering_.narrow("%d%TypeUInt4% files"), "3 files");
  EXPECT_EQ(rendering_.icu("%d%TypeUInt4% files"), "3");
}

TEST_F(RenderFormats, TemplateWithoutReference_WholeNarrowTextAndNothingThroughIcu) {
  EXPECT_EQ(rendering_.narrow("Hello"), "Hello");
  EXPECT_EQ(rendering_.icu("Hello"), "");
  expect_both("", "");
}

TEST_F(RenderFormats, Escape_ShowsAPercentSignOnlyThroughIcu) {
  EXPECT_EQ(rendering_.icu("%%"), "%");
  EXPECT_EQ(rendering_.icu("100%% done"), "%");
  EXPECT_EQ(rendering_.narrow("100%% done"), " done");
  EXPECT_EQ(rendering_.narrow("%%"), "");
}

// ---- A format without an argument ----

constexpr const char* kExpression = "p_token->get_type() == _QZ_ARG_SPECIFIER_TOKEN";

/// What `render` reports on stderr and in the debug log names the check, its source and its line.
void expect_assertions(unsigned count, const std::function<void()>& render) {
  const DebugLogFile log(1);
  testing::internal::CaptureStderr();
  render();
  const std::string reported = testing::internal::GetCapturedStderr();
  EXPECT_NE(reported.find(kExpression), std::string::npos) << reported;
  EXPECT_NE(reported.find("logmsg"), std::string::npos) << reported;
  EXPECT_NE(reported.find("541"), std::string::npos) << reported;
  const Texts records = log.records();
  EXPECT_EQ(records.size(), count);
  for (const std::string& record : records) {
    EXPECT_NE(record.find(kExpression), std::string::npos) << record;
    EXPECT_EQ(record.find("logmsg:541 "), 0U) << record;
  }
}

TEST_F(RenderFormats, FormatBeforeAText_ReportedAndDropped) {
  rendering_.entry().add_attrib_4u("TypeUInt4", 7);
  // The escape takes the place of the name; "c" is then a name without a format.
  const std::string text = "a%s%%b%c%x%d%TypeUInt4%!";
  expect_assertions(1, [&] { EXPECT_EQ(rendering_.narrow(text), "ax7!"); });
  expect_assertions(1, [&] { EXPECT_EQ(rendering_.icu(text), "a%x7"); });
}

TEST_F(RenderFormats, FormatAtTheEnd_ReportedAndDropped) {
  expect_assertions(1, [&] { EXPECT_EQ(rendering_.narrow("abc%s%"), "abc"); });
  expect_assertions(1, [&] { EXPECT_EQ(rendering_.icu("abc%s%"), "abc"); });
  expect_assertions(1, [&] { EXPECT_EQ(rendering_.icu("abc%s%Name"), "abc"); });
}

TEST_F(RenderFormats, ReferenceLeftOpen_TextRenderedAgain) {
  expect_assertions(1, [&] { EXPECT_EQ(rendering_.narrow("abc %d"), "abc abc %d"); });
  expect_assertions(1, [&] { EXPECT_EQ(rendering_.icu("abc %d"), "abc abc %"); });
}

TEST_F(RenderFormats, LonePercentAtTheEnd_ReportedThroughIcuAndOutOfBoundsNarrow) {
  expect_assertions(1, [&] { EXPECT_EQ(rendering_.icu("full %"), "full full %"); });
  EXPECT_EQ(thrown_by([&] { rendering_.narrow("full %"); }), thrown<QZX_index_out_of_bounds>(nullptr));
}

TEST_F(RenderFormats, FormatWithoutArgumentTwice_ReportedEachTimeItIsRendered) {
  const std::string text = "%s%%a%b%c%d%%";
  expect_assertions(2, [&] { EXPECT_EQ(rendering_.narrow(text), "c"); });
  expect_assertions(2, [&] { EXPECT_EQ(rendering_.icu(text), "%c%"); });
  expect_assertions(2, [&] { EXPECT_EQ(rendering_.icu(text), "%c%"); });
}

TEST_F(RenderFormats, FormatWithoutArgument_UsesNoArgumentNumber) {
  rendering_.entry().add_attrib_4u("TypeUInt4", 7);
  testing::internal::CaptureStderr();
  EXPECT_EQ(rendering_.icu("%s%%a%b%{0} %d%TypeUInt4%"), "%7 7");
  EXPECT_FALSE(testing::internal::GetCapturedStderr().empty());
}

TEST_F(RenderFormats, NameTooLongForItsConversion_InternalErrorThroughIcuOnly) {
  rendering_.definition().add_attr_info("漢字化", TypeUInt4, false, nullptr);
  EXPECT_EQ(
      thrown_by([&] { rendering_.icu("%d%漢字化%"); }),
      thrown<QZX_logging_internal_error>(
          "<QZX_logging_internal_error>_qz_LOG_log_message::_tokenize_string:  UnicodeConverter::fromUnicodeString() "
          "failed!"));
  EXPECT_EQ(rendering_.narrow("a%x%漢字化%b"), "ab");
}

}  // namespace
}  // namespace qz_test
