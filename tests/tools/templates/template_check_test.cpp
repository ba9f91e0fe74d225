#include "tools/templates/template_check.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qzlog_compiler::TemplateForm;

std::optional<qz_AttributeType> type_of(std::string_view name) {
  if (name == "Name") return TypeChar32;
  if (name == "Count") return TypeUInt2;
  if (name == "Key") return TypeGUID;
  return std::nullopt;
}

/// The rules of the findings, with an exclamation mark where no message comes out.
std::string findings(std::string_view stored, TemplateForm form) {
  std::string text;
  for (const auto& finding : qzlog_tool::check_template(stored, form, type_of)) {
    text += (text.empty() ? "" : " ") + std::string(finding.rule.name()) + (finding.fails ? "!" : "");
  }
  return text;
}

struct TemplateCase {
  const char* stored;
  const char* icu;
  const char* narrow;
};

class CheckTemplate : public ::testing::TestWithParam<TemplateCase> {};

TEST_P(CheckTemplate, EachPath_ItsFindings) {
  EXPECT_EQ(findings(GetParam().stored, TemplateForm::kIcu), GetParam().icu);
  EXPECT_EQ(findings(GetParam().stored, TemplateForm::kNarrow), GetParam().narrow);
}

INSTANTIATE_TEST_SUITE_P(
    Templates, CheckTemplate,
    ::testing::Values(
        TemplateCase{"", "", ""}, TemplateCase{"%s%Name%", "", ""}, TemplateCase{"Hello", "lost-text", ""},
        TemplateCase{"Hello%_%TIMESTAMP%", "", ""}, TemplateCase{"%s%Name% is full", "lost-text", ""},
        TemplateCase{"%%%s%Name%", "", "lost-text"}, TemplateCase{"a%%%s%Name%", "lost-text", "lost-text"},
        TemplateCase{"%d%Name%", "format-type-mismatch!", "format-type-mismatch!"},
        TemplateCase{"%s%Key%", "guid-reference!", "guid-reference!"},
        TemplateCase{"%s%X%", "unknown-attribute!", "unknown-attribute!"},
        TemplateCase{"%x%X%", "unknown-attribute!", "unknown-attribute!"},
        TemplateCase{"%x%Count%", "unknown-format", "unknown-format"},
        TemplateCase{"%s%TIMESTAMP%", "format-type-mismatch!", "format-type-mismatch!"},
        TemplateCase{"%D%TIMESTAMP%", "", ""}, TemplateCase{"%s%Name% %", "broken-template!", "broken-template!"},
        TemplateCase{"{%s%Name%", "rejected-pattern!", ""}, TemplateCase{"'{'%s%Name%", "", ""},
        TemplateCase{"'{%s%Name%", "quoted-placeholder", ""}, TemplateCase{"'%s%Name%", "quoted-placeholder", ""},
        TemplateCase{"''%s%Name%", "", ""}, TemplateCase{"it's %s%Name%", "", ""},
        TemplateCase{"{0} %s%Name%", "pattern-argument", ""}, TemplateCase{"{Name} %s%Name%", "pattern-argument", ""},
        TemplateCase{"{x,nonsense} %s%Name%", "pattern-argument rejected-pattern!", ""},
        TemplateCase{"{0,number} %s%Name%", "pattern-argument rejected-pattern!", ""},
        TemplateCase{"{0,choice,0#%s%Name%}%_%TIMESTAMP%", "quoted-placeholder pattern-argument rejected-pattern!",
                     ""}));

TEST(CheckTemplate, DeepNesting_IsRejectedWithoutAskingIcu) {
  std::string nested;
  std::string hidden;
  for (int i = 0; i < 100'000; ++i) {
    nested += "{0,choice,0#";
    hidden += "{0,choice,0#'|}'";
  }
  EXPECT_EQ(findings(nested + "%s%Name%", TemplateForm::kIcu), "rejected-pattern!");
  EXPECT_EQ(findings(hidden + "%s%Name%", TemplateForm::kIcu), "rejected-pattern!");
}

TEST(CheckTemplate, ManyQuotedBraces_AreNoNesting) {
  std::string quoted = "'";
  for (int i = 0; i < 1000; ++i) quoted += '{';
  EXPECT_EQ(findings(quoted + "'%s%Name%", TemplateForm::kIcu), "");
}

TEST(CheckTemplate, TenReferencesAndEleven_ElevenAreTooMany) {
  std::string ten;
  for (int i = 0; i < 10; ++i) ten += " %s%Name%";
  EXPECT_EQ(findings(ten, TemplateForm::kIcu), "");
  EXPECT_EQ(findings(ten + " %_%TIMESTAMP%", TemplateForm::kIcu), "");
  EXPECT_EQ(findings(ten + " %s%Name%", TemplateForm::kIcu), "too-many-references!");
  EXPECT_EQ(findings(ten + " %s%Name%", TemplateForm::kNarrow), "");
}

}  // namespace
