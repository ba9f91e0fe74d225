#include "tools/compiler/message/stored_template.h"

#include <gtest/gtest.h>
#include <unicode/fieldpos.h>
#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/compiler/rendering_oracle.h"

namespace qzlog_compiler {
namespace {

/// Texts in quotes, references as format(name), an exclamation mark for a template that always fails.
std::string shown(const StoredTemplate& cut) {
  std::string text;
  for (const TemplatePart& part : cut.parts) {
    text += part.is_reference() ? std::string(1, part.format) + "(" + part.text + ")" : "'" + part.text + "'";
  }
  return text + (cut.failure.empty() ? "" : "!");
}

struct CutCase {
  const char* stored;
  const char* icu;
  const char* narrow;
};

class CutTemplate : public ::testing::TestWithParam<CutCase> {};

TEST_P(CutTemplate, EachForm_CutAsTheLibraryDoes) {
  EXPECT_EQ(shown(cut_template(GetParam().stored, RenderingPath::kIcu)), GetParam().icu);
  EXPECT_EQ(shown(cut_template(GetParam().stored, RenderingPath::kNarrow)), GetParam().narrow);
}

INSTANTIATE_TEST_SUITE_P(
    Templates, CutTemplate,
    ::testing::Values(CutCase{"", "", ""}, CutCase{"Hello", "", "'Hello'"},
                      CutCase{"Disk %s%Name% is full", "'Disk 's(Name)", "'Disk 's(Name)' is full'"},
                      CutCase{"%s%Name%", "s(Name)", "s(Name)"}, CutCase{"100%% done", "'%'", "' done'"},
                      CutCase{"%10d%Size%", "1(Size)", "1(Size)"},
                      CutCase{"%_%TIMESTAMP%", "_(TIMESTAMP)", "_(TIMESTAMP)"}, CutCase{"a%", "'a''a%'!", "'a''a%'!"},
                      CutCase{"%s%%", "'%'!", "!"}, CutCase{"%s%a%%s%b%", "'%''b''b%'!", "'b''b%'!"},
                      CutCase{"abc %d", "'abc ''abc %'!", "'abc ''abc %d'!"}, CutCase{"%d%Count", "!", "'Count'!"},
                      CutCase{"%d%%Count%", "'%'!", "!"}, CutCase{"%d%C%%nt%x", "'%'!", "'x'!"},
                      CutCase{"%%%s%Name%", "'%'s(Name)", "s(Name)"},
                      CutCase{"ab%%cd%s%Name%", "'%''cd's(Name)", "'cd's(Name)"}));

TEST(CutTemplate, FormatBeyondAscii_EachPathReadsItsOwnUnit) {
  EXPECT_EQ(cut_template("%é%Name%", RenderingPath::kIcu).parts.at(0).format, '\xE9');
  EXPECT_EQ(cut_template("%é%Name%", RenderingPath::kNarrow).parts.at(0).format, '\xC3');
  EXPECT_EQ(cut_template("%\U00010064%Name%", RenderingPath::kIcu).parts.at(0).format, '\x00');
}

TEST(CutTemplate, Offsets_OfTextsAndOfPercentSigns) {
  const std::vector<TemplatePart> parts = cut_template("ab%s%Name% cd", RenderingPath::kNarrow).parts;
  ASSERT_EQ(parts.size(), 3U);
  EXPECT_EQ(parts[0].offset, 0U);
  EXPECT_EQ(parts[1].offset, 2U);
  EXPECT_EQ(parts[2].offset, 10U);
}

TEST(CutTemplate, NameTooLongForTheIcuPath_FailsThereOnly) {
  EXPECT_NE(cut_template("%s%漢字の%", RenderingPath::kIcu).failure, "");
  EXPECT_EQ(cut_template("%s%漢字の%", RenderingPath::kNarrow).failure, "");
  EXPECT_EQ(cut_template("%s%漢字%", RenderingPath::kIcu).failure, "");
}

TEST(FindReferences, Template_OnlyItsReferencesInOrder) {
  std::string text;
  for (const TemplatePart& part : find_references("a%s%x%b%_%y%c%d%x%", RenderingPath::kIcu)) {
    text += part.format + part.text + ' ';
  }
  EXPECT_EQ(text, "sx _y dx ");
}

// ---- what the parts say is what a plain retelling of the library shows ----

const rendering_oracle::Values kValues = {{"a", {{'s', "text"}, {'d', "7"}}}, {"é", {{'s', "more"}}}};

/// The text of a reference; none where rendering fails, the empty one where the reference is left out.
std::optional<std::string> value_of(const TemplatePart& reference) {
  const auto values = kValues.find(reference.text);
  if (values == kValues.end()) return std::nullopt;
  if (std::string_view("sCPDTfdu").find(reference.format) == std::string_view::npos) return "";
  const auto value = values->second.find(reference.format);
  return value == values->second.end() ? std::nullopt : std::optional(value->second);
}

std::optional<std::string> render_narrow(const std::string& stored) {
  const StoredTemplate cut = cut_template(stored, RenderingPath::kNarrow);
  if (!cut.failure.empty()) return std::nullopt;
  std::string message;
  for (const TemplatePart& part : cut.parts) {
    const std::optional<std::string> text = part.is_reference() ? value_of(part) : part.text;
    if (!text) return std::nullopt;
    message += *text;
  }
  return message;
}

std::optional<std::string> format(const icu::UnicodeString& pattern, const std::vector<icu::Formattable>& arguments) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::MessageFormat message_format(pattern, icu::Locale::getUS(), status);
  icu::UnicodeString message;
  icu::FieldPosition position;
  message_format.format(arguments.data(), static_cast<int32_t>(arguments.size()), message, position, status);
  std::string text;
  return U_SUCCESS(status) ? std::optional(message.toUTF8String(text)) : std::nullopt;
}

std::optional<std::string> render_icu(const std::string& stored) {
  const StoredTemplate cut = cut_template(stored, RenderingPath::kIcu);
  if (!cut.failure.empty()) return std::nullopt;
  icu::UnicodeString pattern;
  std::vector<icu::Formattable> arguments;
  for (const TemplatePart& part : cut.parts) {
    if (!part.is_reference()) {
      pattern.append(icu::UnicodeString::fromUTF8(part.text));
      continue;
    }
    const std::optional<std::string> text = value_of(part);
    if (!text || arguments.size() == 10) return std::nullopt;
    if (text->empty()) continue;
    pattern.append(u'{').append(static_cast<char16_t>('0' + arguments.size())).append(u'}');
    arguments.emplace_back(icu::UnicodeString::fromUTF8(*text));
  }
  return format(pattern, arguments);
}

TEST(CutTemplate, RandomTemplates_RenderAsTheOracleDoes) {
  constexpr const char* kPieces[] = {"%", "%", "%%", "s", "d",     "a",      "é", "x",
                                     " ", "{", "}",  "'", "%s%a%", "%d%a% ", "0"};
  qz_test::SeededRandom random;
  for (int round = 0; round < 20000; ++round) {
    std::string stored;
    for (long long i = random.between(0, 12); i > 0; --i) {
      stored += kPieces[random.between(0, static_cast<long long>(std::size(kPieces)) - 1)];
    }
    ASSERT_EQ(render_narrow(stored), rendering_oracle::render_narrow(stored, kValues)) << stored;
    ASSERT_EQ(render_icu(stored), rendering_oracle::render_icu(stored, kValues)) << stored;
  }
}

}  // namespace
}  // namespace qzlog_compiler
