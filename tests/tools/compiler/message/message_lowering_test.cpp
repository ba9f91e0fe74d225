#include "tools/compiler/message/message_lowering.h"

#include <gtest/gtest.h>

#include "tests/tools/compiler/rendering_oracle.h"

namespace qzlog_compiler {
namespace {

std::optional<qz_AttributeType> find_type(std::string_view name) {
  if (name == "Name") return TypeChar32;
  if (name == "Count") return TypeUInt4;
  if (name == "At") return TypeTimestamp;
  if (name == "漢字の名") return TypeChar32;
  if (name == "Größe") return TypeChar32;
  if (name == "Broken") return TypeUnknown;
  return std::nullopt;
}

std::string findings_of(const LoweredMessage& lowered) {
  std::string list;
  for (const MessageFinding& finding : lowered.findings) {
    if (!list.empty()) list += ", ";
    list += std::to_string(finding.offset) + (finding.severity == Severity::kError ? " error " : " warning ");
    list += rule_name(finding.rule);
  }
  return list;
}

struct LoweringCase {
  const char* name;
  RenderingPaths path;
  std::string text;
  std::string stored;
  std::string findings;
};

class LowerMessage : public ::testing::TestWithParam<LoweringCase> {};

TEST_P(LowerMessage, Text_GivesTemplateAndFindings) {
  const LoweredMessage lowered = lower_message(GetParam().text, find_type, GetParam().path);
  EXPECT_EQ(lowered.stored, GetParam().stored);
  EXPECT_EQ(findings_of(lowered), GetParam().findings);
}

std::string case_name(const ::testing::TestParamInfo<LoweringCase>& info) { return info.param.name; }

constexpr RenderingPaths kIcu = RenderingPaths::kIcu;
constexpr RenderingPaths kNarrow = RenderingPaths::kNarrow;
constexpr RenderingPaths kBoth = RenderingPaths::kBoth;

INSTANTIATE_TEST_SUITE_P(
    Closing, LowerMessage,
    ::testing::Values(LoweringCase{"Empty", kBoth, "", "", ""},
                      LoweringCase{"TextAlone", kBoth, "Hello", "Hello%_%TIMESTAMP%", ""},
                      LoweringCase{"TextAloneNarrow", kNarrow, "Hello", "Hello%_%TIMESTAMP%", ""},
                      LoweringCase{"ReferenceAlone", kBoth, "{Name}", "%s%Name%", ""},
                      LoweringCase{"ReferenceLast", kBoth, "Disk {Name}", "Disk %s%Name%", ""},
                      LoweringCase{"TextLast", kBoth, "{Count} left", "%d%Count% left%_%TIMESTAMP%", ""},
                      LoweringCase{"LineFeedLast", kBoth, "{Count}\n", "%d%Count%\n%_%TIMESTAMP%", ""}),
    case_name);

INSTANTIATE_TEST_SUITE_P(
    References, LowerMessage,
    ::testing::Values(LoweringCase{"TimeStampIsDateBlankTime", kBoth, "{At}", "%D%At% %T%At%", ""},
                      LoweringCase{"TimeStampDateAlone", kBoth, "{At:D}", "%D%At%", ""},
                      LoweringCase{"StandardTimeStamp", kBoth, "{TIMESTAMP}", "%D%TIMESTAMP% %T%TIMESTAMP%", ""},
                      LoweringCase{"FormatByName", kBoth, "{Count:P}", "%P%Count%", ""},
                      LoweringCase{"NameBeyondAscii", kBoth, "{Größe}", "%s%Größe%", ""},
                      LoweringCase{"SideBySide", kBoth, "{Name}{Count}", "", "6 error adjacent-placeholders"},
                      LoweringCase{"SideBySideNarrow", kNarrow, "{Name}{Count}", "", "6 error adjacent-placeholders"},
                      LoweringCase{"UndefinedStandardField", kBoth, "{PRODUCT_ID}", "%s%PRODUCT_ID%",
                                   "0 warning undefined-standard-field"},
                      LoweringCase{"AttributeInErrorAlready", kBoth, "{Broken:d}", "%s%Broken%", ""},
                      LoweringCase{"UnknownAttribute", kBoth, "a {Nobody} b", "", "2 error unknown-attribute"}),
    case_name);

INSTANTIATE_TEST_SUITE_P(
    BracesAndApostrophes, LowerMessage,
    ::testing::Values(
        LoweringCase{"Apostrophe", kBoth, "it's", "it's%_%TIMESTAMP%", ""},
        LoweringCase{"ApostropheLast", kBoth, "it'", "it'%_%TIMESTAMP%", ""},
        LoweringCase{"ApostropheBeforeReference", kIcu, "'{Name}'", "''%s%Name%'%_%TIMESTAMP%", ""},
        LoweringCase{"ApostropheBeforeReferenceNarrow", kNarrow, "'{Name}'", "'%s%Name%'%_%TIMESTAMP%", ""},
        LoweringCase{"ApostropheBeforeReferenceBoth", kBoth, "of '{Name}'", "of ''%s%Name%'%_%TIMESTAMP%",
                     "4 warning path-conflict"},
        LoweringCase{"TwoApostrophes", kIcu, "''", "'''%_%TIMESTAMP%", ""},
        LoweringCase{"ThreeApostrophes", kIcu, "'''", "'''''%_%TIMESTAMP%", ""},
        LoweringCase{"TwoApostrophesBoth", kBoth, "a''b", "a'''b%_%TIMESTAMP%", "3 warning path-conflict"},
        LoweringCase{"ClosingBrace", kBoth, "a}}b", "a}b%_%TIMESTAMP%", ""},
        LoweringCase{"ApostropheBeforeClosingBrace", kIcu, "'}}", "''}%_%TIMESTAMP%", ""},
        LoweringCase{"ClosingBraceBeforeApostrophe", kBoth, "}}'", "}'%_%TIMESTAMP%", ""},
        LoweringCase{"OpeningBrace", kIcu, "a{{b", "a'{'b%_%TIMESTAMP%", ""},
        LoweringCase{"OpeningBraceNarrow", kNarrow, "a{{b", "a{b%_%TIMESTAMP%", ""},
        LoweringCase{"OpeningBraceBoth", kBoth, "a}}b{{c", "a}b'{'c%_%TIMESTAMP%", "4 warning path-conflict"},
        LoweringCase{"RunOfBraces", kIcu, "{{{{}}", "'{{}'%_%TIMESTAMP%", ""},
        LoweringCase{"RunFromClosingBrace", kIcu, "}}{{", "'}{'%_%TIMESTAMP%", ""},
        LoweringCase{"BraceBeforeReference", kIcu, "{{{Name}}}", "'{'%s%Name%}%_%TIMESTAMP%", ""},
        LoweringCase{"ApostropheBeforeBrace", kIcu, "'{{", "'''{'%_%TIMESTAMP%", ""},
        LoweringCase{"ApostropheAfterBrace", kIcu, "{{'x", "'{'''x%_%TIMESTAMP%", ""},
        LoweringCase{"ApostropheBetweenBraces", kIcu, "{{'{{", "'{''{'%_%TIMESTAMP%", ""},
        LoweringCase{"BraceApostropheReference", kIcu, "{{'{Name}", "'{'''%s%Name%", ""}),
    case_name);

INSTANTIATE_TEST_SUITE_P(
    Percents, LowerMessage,
    ::testing::Values(LoweringCase{"AtStartIcu", kIcu, "%", "%%", ""},
                      LoweringCase{"RunAtStartIcu", kIcu, "%% off", "%%%% off%_%TIMESTAMP%", ""},
                      LoweringCase{"AtStartBeforeReference", kIcu, "%{Count}", "%%%d%Count%", ""},
                      LoweringCase{"AtStartNarrow", kNarrow, "%a", "", "0 error literal-percent"},
                      LoweringCase{"AtStartBoth", kBoth, "%a", "%%a%_%TIMESTAMP%", "0 warning literal-percent"},
                      LoweringCase{"LaterIcu", kIcu, "100% sure", "", "3 error literal-percent"},
                      LoweringCase{"LaterNarrow", kNarrow, "100% sure", "", "3 error literal-percent"},
                      LoweringCase{"LaterBoth", kBoth, "1% 2%% {Count}%", "",
                                   "1 error literal-percent, 4 error literal-percent, 14 error literal-percent"},
                      LoweringCase{"StartAndLater", kBoth, "%a%", "",
                                   "0 error literal-percent, 2 error literal-percent"}),
    case_name);

std::string repeated(const std::string& piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

INSTANTIATE_TEST_SUITE_P(
    IcuLimits, LowerMessage,
    ::testing::Values(
        LoweringCase{"TenReferences", kIcu, repeated(" {Name}", 10), repeated(" %s%Name%", 10), ""},
        LoweringCase{"TenReferencesAndClosing", kIcu, repeated("{Name} ", 10),
                     repeated("%s%Name% ", 10) + "%_%TIMESTAMP%", ""},
        LoweringCase{"ElevenReferences", kIcu, repeated(" {Name}", 11), "", "71 error too-many-references"},
        LoweringCase{"ElevenReferencesNarrow", kNarrow, repeated(" {Name}", 11), repeated(" %s%Name%", 11), ""},
        LoweringCase{"ElevenReferencesBoth", kBoth, "'" + repeated("{Name} ", 11),
                     "'" + repeated("%s%Name% ", 11) + "%_%TIMESTAMP%", "71 warning too-many-references"},
        LoweringCase{"TimeStampCountsTwice", kIcu, repeated(" {Name}", 9) + " {At}", "",
                     "64 error too-many-references"},
        LoweringCase{"LongName", kIcu, "a {漢字の名}", "", "2 error long-reference-name"},
        LoweringCase{"LongNameNarrow", kNarrow, "{漢字の名}", "%s%漢字の名%", ""},
        LoweringCase{"LongNameBoth", kBoth, "{漢字の名}", "%s%漢字の名%", "0 warning long-reference-name"},
        LoweringCase{"EachPathBlockedBoth", kBoth, "% {漢字の名}", "",
                     "0 error literal-percent, 2 error long-reference-name"}),
    case_name);

TEST(LowerMessageTexts, PathConflict_NamesTheText) {
  const LoweredMessage lowered = lower_message("of '{Name}'", find_type, RenderingPaths::kBoth);
  ASSERT_EQ(lowered.findings.size(), 1U);
  EXPECT_EQ(lowered.findings[0].text,
            "no single stored text shows 'of '{Name}'' on both paths: what is quoted here for the ICU path, the narrow "
            "path shows with its quotes");
  EXPECT_EQ(lowered.findings[0].hint, "--path icu or --path narrow says which path counts");
}

TEST(LowerMessageTexts, LaterPercent_HintsAtTheFormatP) {
  const LoweredMessage lowered = lower_message("100%", find_type, RenderingPaths::kIcu);
  ASSERT_EQ(lowered.findings.size(), 1U);
  EXPECT_EQ(lowered.findings[0].text,
            "no path can show a percent sign here, and only the ICU path one at the very start of a message");
  EXPECT_EQ(lowered.findings[0].hint, "the format P shows a number with a percent sign");
}

}  // namespace
}  // namespace qzlog_compiler
