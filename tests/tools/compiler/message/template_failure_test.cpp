#include "tools/compiler/message/template_failure.h"

#include <gtest/gtest.h>

namespace qzlog_compiler {
namespace {

std::optional<qz_AttributeType> find_type(std::string_view name) {
  if (name == "Name") return TypeChar32;
  if (name == "Count") return TypeUInt2;
  if (name == "Key") return TypeGUID;
  if (name == "Open") return TypeUnknown;
  return std::nullopt;
}

struct FailureCase {
  const char* stored;
  const char* icu;
  const char* narrow;
};

constexpr const char* kNoName = "there is no attribute 'Nobody'";
constexpr const char* kBraces = "ICU does not take its braces for a message pattern";
constexpr const char* kNamed = "ICU takes a name in braces for an argument that nobody gives";

TEST(FindTemplateFailure, Templates_FailAsThePathFails) {
  const FailureCase cases[] = {
      {"", "", ""},
      {"plain", "", ""},
      {"%s%Name% has %d%Count%", "", ""},
      {"%s%Nobody%", kNoName, kNoName},
      {"%x%Nobody%", kNoName, kNoName},  // looked up although the reference shows nothing
      {"%x%Name%", "", ""},
      {"%s%VERSION_ID% %D%TIMESTAMP%", "", ""},
      {"%s%Open% %d%Open%", "", ""},
      {"%d%Name%", "the format 'd' does not accept Char32 attributes as 'Name'",
       "the format 'd' does not accept Char32 attributes as 'Name'"},
      {"%s%Key%", "the format 's' does not accept GUID attributes as 'Key'",
       "the format 's' does not accept GUID attributes as 'Key'"},
      {"%d%Count% {x} %d%Count%", kNamed, ""},
      {"{ %d%Count%", kBraces, ""},
      {"} %d%Count%", "", ""},  // a closing brace stands for itself
      {"'{'x} %d%Count%", "", ""},
      {"{0} %d%Count%", "", ""},
  };
  for (const FailureCase& entry : cases) {
    EXPECT_EQ(find_template_failure(entry.stored, TemplateForm::kIcu, find_type), entry.icu) << entry.stored;
    EXPECT_EQ(find_template_failure(entry.stored, TemplateForm::kNarrow, find_type), entry.narrow) << entry.stored;
  }
}

TEST(FindTemplateFailure, MoreThanTenReferences_FailOnTheIcuPath) {
  std::string stored;
  for (int i = 0; i < 10; ++i) stored += "%d%Count% ";
  stored += "%x%Count% ";  // shows nothing and does not count
  EXPECT_EQ(find_template_failure(stored, TemplateForm::kIcu, find_type), "");
  stored += "%d%Count%";
  EXPECT_EQ(find_template_failure(stored, TemplateForm::kIcu, find_type), "it has more than ten references");
  EXPECT_EQ(find_template_failure(stored, TemplateForm::kNarrow, find_type), "");
}

TEST(FindTemplateFailure, NestingThatIcuWouldNotSurvive_FailsOnTheIcuPath) {
  const std::string deep = "its arguments and their messages nest deeper than 100 levels";
  for (const char* const level : {"{0,choice,0#'|}'", "{0,plural,other{'#}}'", "{0,select,other{"}) {
    std::string stored = "%s%Name%";
    for (int i = 0; i < 200'000; ++i) stored += level;
    stored += "%_%TIMESTAMP%";
    EXPECT_EQ(find_template_failure(stored, TemplateForm::kIcu, find_type), deep) << level;
    EXPECT_EQ(find_template_failure(stored, TemplateForm::kNarrow, find_type), "") << level;
  }
}

TEST(FindTemplateFailure, OpenReference_FailsOnBothPaths) {
  for (const TemplateForm form : {TemplateForm::kIcu, TemplateForm::kNarrow}) {
    EXPECT_EQ(find_template_failure("abc %d", form, find_type), "the format 'd' has no attribute behind it");
  }
}

TEST(FindTemplateFailure, FormatOutsideAscii_ShownAsItIsWritten) {
  for (const TemplateForm form : {TemplateForm::kIcu, TemplateForm::kNarrow}) {
    EXPECT_EQ(find_template_failure("5 %\u20AC", form, find_type), "the format '\u20AC' has no attribute behind it");
    EXPECT_EQ(find_template_failure("%\u009B", form, find_type), "the format '\\u009B' has no attribute behind it");
    EXPECT_EQ(find_template_failure("5 %", form, find_type), "a percent sign ends the text");
  }
}

}  // namespace
}  // namespace qzlog_compiler
