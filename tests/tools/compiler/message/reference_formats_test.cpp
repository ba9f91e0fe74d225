#include "tools/compiler/message/reference_formats.h"

#include <gtest/gtest.h>

#include "tools/compiler/model/attribute_type.h"

namespace qzlog_compiler {
namespace {

struct Resolution {
  std::string formats;
  std::vector<MessageFinding> findings;
};

Resolution resolve(const std::string& name, char format, std::optional<qz_AttributeType> type) {
  Resolution result;
  const MessagePart part{MessagePart::Kind::kPlaceholder, name, format, 7};
  result.formats = resolve_formats(
      part, [type](std::string_view) { return type; }, result.findings);
  return result;
}

TEST(ResolveFormats, EveryTypeWithEveryFormat_IsAcceptedOrRefused) {
  for (int code = TypeBool; code <= TypeTimestamp; ++code) {
    const auto type = static_cast<qz_AttributeType>(code);
    for (const char format : kFormatCharacters) {
      const bool accepted = accepted_formats(type).find(format) != std::string_view::npos;
      const Resolution result = resolve("A", format, type);
      EXPECT_EQ(result.formats, accepted ? std::string(1, format) : "") << code << format;
      ASSERT_EQ(result.findings.size(), accepted ? 0U : 1U) << code << format;
      for (const MessageFinding& finding : result.findings) EXPECT_EQ(finding.rule, Rule::kFormatTypeMismatch);
    }
  }
}

struct ResolveCase {
  const char* name;
  std::optional<qz_AttributeType> type;
  const char* formats;
  std::string finding;
};

TEST(ResolveFormats, NameWithoutAFormat_FollowsItsType) {
  const std::string unset =
      "nothing here defines the standard field VERSION_ID, so no entry can set it and the message fails";
  const ResolveCase cases[] = {
      {"A", TypeChar32, "s", ""},
      {"A", TypeTimestamp, "DT", ""},
      {"A", TypeUnknown, "s", ""},
      {"A", TypeGUID, "", "'A' is a GUID attribute, which can be neither set nor shown"},
      {"A", std::nullopt, "", "unknown attribute 'A'"},
      {"TIMESTAMP", std::nullopt, "DT", ""},
      {"TIMESTAMP", TypeTimestamp, "DT", ""},
      {"TIMESTAMP", TypeChar32, "",
       "the standard field TIMESTAMP is read as the entry's own time stamp, but is defined as Char32"},
      {"VERSION_ID", std::nullopt, "s", unset},
      {"VERSION_ID", TypeMBChar2K, "s", ""},
      {"VERSION_ID", TypeUnknown, "s", ""},
      {"VERSION_ID", TypeUInt4, "", "the standard field VERSION_ID is read as an MBChar text, but is defined as UInt4"},
  };
  for (const ResolveCase& entry : cases) {
    const Resolution result = resolve(entry.name, '\0', entry.type);
    EXPECT_EQ(result.formats, entry.formats) << entry.name;
    ASSERT_EQ(result.findings.size(), entry.finding.empty() ? 0U : 1U) << entry.name;
    if (entry.finding.empty()) continue;
    EXPECT_EQ(result.findings[0].text, entry.finding);
    EXPECT_EQ(result.findings[0].offset, 7U);
    EXPECT_FALSE(result.findings[0].hint.empty());
  }
}

TEST(ResolveFormats, RefusedFormat_NamesTheAcceptedOnes) {
  const Resolution result = resolve("Free", 's', TypeUInt4);
  ASSERT_EQ(result.findings.size(), 1U);
  EXPECT_EQ(result.findings[0].text, "the format 's' does not accept UInt4 attributes as 'Free'");
  EXPECT_EQ(result.findings[0].hint, "the type is shown by d u C P");
}

}  // namespace
}  // namespace qzlog_compiler
