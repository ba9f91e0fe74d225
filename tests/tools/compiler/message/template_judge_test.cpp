#include "tools/compiler/message/template_judge.h"

#include <gtest/gtest.h>
#include <unicode/messagepattern.h>
#include <unicode/unistr.h>

#include <set>
#include <string>

#include "tests/support/seeded_random.h"

namespace qzlog_compiler {
namespace {

std::optional<qz_AttributeType> find_type(std::string_view name) {
  if (name == "Name") return TypeChar32;
  if (name == "Count") return TypeUInt2;
  if (name == "Key") return TypeGUID;
  if (name == "Odd") return TypeUnknown;
  if (name == "PRODUCT_ID") return TypeUInt4;
  if (name == "COMPONENT_ID") return TypeMBChar64;
  return std::nullopt;
}

std::optional<qz_AttributeType> find_with_time_stamp(std::string_view name) {
  return name == "TIMESTAMP" ? TypeUInt4 : find_type(name);
}

TemplateJudgement judged(std::string_view stored, RenderingPath form) {
  return judge_template(stored, form, find_type);
}

/// The rules of the findings, with an exclamation mark where no message comes out.
std::string rules_of(const TemplateJudgement& judgement) {
  std::string text;
  for (const TemplateFinding& finding : judgement.findings) {
    text += (text.empty() ? "" : " ") + std::string(finding.rule.name()) + (finding.fails() ? "!" : "");
  }
  return text;
}
std::string rules(std::string_view stored, RenderingPath form) { return rules_of(judged(stored, form)); }

std::string failure(std::string_view stored, RenderingPath form) {
  const TemplateJudgement judgement = judged(stored, form);
  return judgement.failure() == nullptr ? "" : judgement.failure()->text;
}

struct TemplateCase {
  const char* stored;
  const char* icu;
  const char* narrow;
};

class JudgeTemplate : public testing::TestWithParam<TemplateCase> {};

TEST_P(JudgeTemplate, EachPath_ItsFindings) {
  EXPECT_EQ(rules(GetParam().stored, RenderingPath::kIcu), GetParam().icu);
  EXPECT_EQ(rules(GetParam().stored, RenderingPath::kNarrow), GetParam().narrow);
}

INSTANTIATE_TEST_SUITE_P(
    Templates, JudgeTemplate,
    testing::Values(
        TemplateCase{"", "", ""}, TemplateCase{"%s%Name%", "", ""}, TemplateCase{"Hello", "lost-text", ""},
        TemplateCase{"Hello%_%TIMESTAMP%", "", ""}, TemplateCase{"%s%Name% is full", "lost-text", ""},
        TemplateCase{"%%%s%Name%", "", "lost-text"}, TemplateCase{"a%%%s%Name%", "lost-text", "lost-text"},
        TemplateCase{"%d%Name%", "format-type-mismatch!", "format-type-mismatch!"},
        TemplateCase{"%s%Odd%", "format-type-mismatch!", "format-type-mismatch!"},
        TemplateCase{"%_%Odd%", "unknown-format", "unknown-format"},
        TemplateCase{"%s%Key%", "guid-reference!", "guid-reference!"},
        TemplateCase{"%s%X%", "unknown-attribute!", "unknown-attribute!"},
        TemplateCase{"%x%X%", "unknown-attribute!", "unknown-attribute!"},  // looked up although it shows nothing
        TemplateCase{"%x%Count%", "unknown-format", "unknown-format"}, TemplateCase{"%s%COMPONENT_ID%", "", ""},
        TemplateCase{"%s%PRODUCT_ID%", "standard-field-type!", "standard-field-type!"},
        TemplateCase{"%x%PRODUCT_ID%", "unknown-format", "unknown-format"},
        TemplateCase{"%s%VERSION_ID%", "undefined-standard-field!", "undefined-standard-field!"},
        TemplateCase{"%x%VERSION_ID%", "unknown-format", "unknown-format"},
        TemplateCase{"%s%TIMESTAMP%", "format-type-mismatch!", "format-type-mismatch!"},
        TemplateCase{"%D%TIMESTAMP%", "", ""}, TemplateCase{"%s%Name% %", "broken-template!", "broken-template!"},
        TemplateCase{"{%s%Name%", "rejected-pattern!", ""}, TemplateCase{"'{'%s%Name%", "", ""},
        TemplateCase{"} %d%Count%", "", ""},  // a closing brace stands for itself
        TemplateCase{"'{'x} %d%Count%", "", ""}, TemplateCase{"'{%s%Name%", "quoted-placeholder", ""},
        TemplateCase{"'%s%Name%", "quoted-placeholder", ""}, TemplateCase{"''%s%Name%", "", ""},
        TemplateCase{"it's %s%Name%", "", ""}, TemplateCase{"{0} %s%Name%", "pattern-argument", ""},
        TemplateCase{"{Name} %s%Name%", "pattern-argument", ""},
        TemplateCase{"{x,nonsense} %s%Name%", "rejected-pattern!", ""},
        TemplateCase{"{0,number} %s%Name%", "pattern-argument rejected-pattern!", ""},
        TemplateCase{"{0,choice,0#%s%Name%}%_%TIMESTAMP%", "pattern-argument rejected-pattern!", ""},
        TemplateCase{"{0,choice,0#%d%Count%}%_%TIMESTAMP%", "pattern-argument", ""},
        TemplateCase{"{0,date,y %d%Count%}%_%TIMESTAMP%", "quoted-placeholder pattern-argument", ""}));

TEST(JudgeTemplates, Failures_AreSaidInTheWordsOfPlaceholders) {
  for (const RenderingPath form : {RenderingPath::kIcu, RenderingPath::kNarrow}) {
    EXPECT_EQ(failure("%s%Nobody%", form), "unknown attribute 'Nobody'");
    EXPECT_EQ(failure("%d%Name%", form), "the format 'd' does not accept Char32 attributes as 'Name'");
    EXPECT_EQ(failure("%s%Odd%", form), "the format 's' does not accept Unknown attributes as 'Odd'");
    EXPECT_EQ(judged("%s%Odd%", form).failure()->hint, "");
    EXPECT_EQ(failure("%s%Key%", form), "'Key' is a GUID attribute, which can be neither set nor shown");
  }
  EXPECT_EQ(failure("{ %d%Count%", RenderingPath::kIcu), "ICU refuses the pattern with U_PATTERN_SYNTAX_ERROR");
  EXPECT_EQ(
      failure("{0,number} %s%Name%", RenderingPath::kIcu),
      "ICU takes the pattern but cannot apply it (U_INVALID_FORMAT_ERROR), and the library then ends the process");
}

/// Messages show the entry's own time stamp, whatever is defined under its name.
TEST(JudgeTemplates, TimeStampOfAnotherType_IsNoFailure) {
  for (const RenderingPath form : {RenderingPath::kIcu, RenderingPath::kNarrow}) {
    EXPECT_EQ(rules_of(judge_template("%D%TIMESTAMP%", form, find_with_time_stamp)), "standard-field-type");
    EXPECT_EQ(rules_of(judge_template("%d%TIMESTAMP%", form, find_with_time_stamp)),
              "standard-field-type format-type-mismatch!");
  }
}

TEST(JudgeTemplates, Findings_HaveTheirPlaceAndName) {
  const TemplateJudgement judgement = judged("ab%s%Nobody% %x%Count% '%d%Count%' lost", RenderingPath::kIcu);
  ASSERT_EQ(judgement.findings.size(), 4U);
  EXPECT_EQ(judgement.findings[0].offset, 2U);
  EXPECT_EQ(judgement.findings[0].name, "Nobody");
  EXPECT_EQ(judgement.findings[1].offset, 13U);
  EXPECT_EQ(judgement.findings[2].offset, 24U);
  EXPECT_EQ(judgement.findings[2].name, "Count");
  EXPECT_EQ(judgement.findings[3].offset, 33U);
}

TEST(JudgeTemplates, WithoutTypes_ReferencesAreNotJudged) {
  EXPECT_TRUE(judge_template("%s%Nobody% %d%Name%", RenderingPath::kIcu, {}).findings.empty());
  EXPECT_TRUE(judge_template("{ %d%Name%", RenderingPath::kIcu, {}).has_errors());
}

TEST(JudgeTemplates, FieldThatAnotherFileMayDefine_FailsAndIsNoError) {
  const TemplateJudgement judgement = judged("%s%VERSION_ID%", RenderingPath::kIcu);
  EXPECT_NE(judgement.failure(), nullptr);
  EXPECT_FALSE(judgement.has_errors());
}

TEST(JudgeTemplates, MoreThanTenReferences_FailOnTheIcuPath) {
  std::string stored;
  for (int i = 0; i < 10; ++i) stored += "%d%Count% ";
  stored += "%x%Count%";  // shows nothing and does not count
  EXPECT_EQ(rules(stored, RenderingPath::kIcu), "unknown-format");
  stored += " %d%Count%";
  EXPECT_EQ(failure(stored, RenderingPath::kIcu),
            "the ICU path shows at most ten references in a message; this one has 11");
  EXPECT_EQ(failure(stored, RenderingPath::kNarrow), "");
}

TEST(JudgeTemplates, NestingThatIcuWouldNotSurvive_FailsOnTheIcuPath) {
  const std::string deep = "its arguments and their messages nest deeper than 100 levels";
  for (const char* const level : {"{0,choice,0#", "{0,choice,0#'|}'", "{0,plural,other{'#}}'", "{0,select,other{"}) {
    std::string stored = "%s%Name%";
    for (int i = 0; i < 200'000; ++i) stored += level;
    stored += "%_%TIMESTAMP%";
    EXPECT_EQ(failure(stored, RenderingPath::kIcu), deep) << level;
    EXPECT_EQ(failure(stored, RenderingPath::kNarrow), "") << level;
  }
}

TEST(JudgeTemplates, ManyQuotedBraces_AreNoNesting) {
  EXPECT_EQ(rules("'" + std::string(1000, '{') + "'%s%Name%", RenderingPath::kIcu), "");
}

TEST(JudgeTemplates, OpenReference_FailsOnBothPaths) {
  for (const RenderingPath form : {RenderingPath::kIcu, RenderingPath::kNarrow}) {
    EXPECT_EQ(failure("abc %d", form), "the format 'd' has no attribute behind it");
  }
}

TEST(JudgeTemplates, FormatOutsideAscii_ShownAsItIsWritten) {
  for (const RenderingPath form : {RenderingPath::kIcu, RenderingPath::kNarrow}) {
    EXPECT_EQ(failure("5 %\u20AC", form), "the format '\u20AC' has no attribute behind it");
    EXPECT_EQ(failure("%\u009B", form), "the format '\\u009B' has no attribute behind it");
    EXPECT_EQ(failure("5 %", form), "a percent sign ends the text");
  }
}

/// The names of the references that the ICU path does not show.
std::vector<std::string> hidden_names(const TemplateJudgement& judgement) {
  std::vector<std::string> names;
  for (const TemplateFinding& finding : judgement.findings) {
    if (finding.reason == TemplateReason::kHiddenReference) names.push_back(finding.name);
  }
  return names;
}

struct QuoteCase {
  const char* stored;
  bool quoted;
};

TEST(JudgeTemplates, ApostropheBeforeABrace_BeginsAQuotation) {
  const QuoteCase cases[] = {
      {"'%s%A%'", true},       // directly before it
      {"''%s%A%''", false},    // a literal apostrophe
      {"'''%s%A%", true},      // a literal one, and one that quotes
      {"don't %s%A%", false},  // before a letter it is literal
      {"'{x}%s%A%", true},     // a brace was quoted, and nothing ended it
      {"'{x}'%s%A%", false},   // here it was ended
      {"'{''x'%s%A%", false},  // two in quoted text are a literal one
      {"'{''x%s%A%", true},    //
      {"'}'' %s%A%", true},    //
      {"%s%A%'", false},       // behind it
      {"%x%A%'%s%A%", true},   // a reference that shows nothing changes nothing
      {"'%x%A%", false},       //
  };
  for (const QuoteCase& item : cases) {
    const auto found = hidden_names(judge_template(item.stored, RenderingPath::kIcu, {}));
    EXPECT_EQ(found, std::vector<std::string>(item.quoted ? 1 : 0, "A")) << item.stored;
  }
}

/// The numbers of the references that ICU sees in the pattern of a template. Its texts hold no digits.
std::set<int> references_of_icu(const StoredTemplate& stored, UErrorCode& status) {
  std::string pattern;
  int count = 0;
  for (const TemplatePart& part : stored.parts) {
    pattern += part.is_reference() ? "{" + std::to_string(count++) + "}" : part.text;
  }
  const icu::MessagePattern parsed(icu::UnicodeString::fromUTF8(pattern), nullptr, status);
  std::set<int> numbers;
  if (U_FAILURE(status)) return numbers;
  for (int i = 0; i < parsed.countParts(); ++i) {
    if (parsed.getPart(i).getType() == UMSGPAT_PART_TYPE_ARG_NUMBER) numbers.insert(parsed.getPart(i).getValue());
  }
  return numbers;
}

std::string random_template(qz_test::SeededRandom& random) {
  constexpr const char* kPieces[] = {"'", "'", "'", "{", "}", "x", " "};
  std::string stored;
  for (int reference = 0; reference < 4; ++reference) {
    const long long pieces = random.between(1, 5);  // two percent signs side by side are an escape
    for (long long i = 0; i < pieces; ++i) stored += kPieces[random.between(0, 6)];
    stored += "%s%R" + std::to_string(reference) + "%";
  }
  return stored;
}

TEST(JudgeTemplates, RandomQuotes_HideTheReferencesThatIcuDoesNotSee) {
  qz_test::SeededRandom random;
  int accepted = 0;
  for (int round = 0; round < 20000; ++round) {
    const std::string stored = random_template(random);
    UErrorCode status = U_ZERO_ERROR;
    std::set<int> seen = references_of_icu(cut_template(stored, RenderingPath::kIcu), status);
    if (U_FAILURE(status)) continue;
    ++accepted;
    for (const std::string& name : hidden_names(judge_template(stored, RenderingPath::kIcu, {}))) {
      EXPECT_TRUE(seen.insert(name.back() - '0').second) << stored;
    }
    EXPECT_EQ(seen, (std::set<int>{0, 1, 2, 3})) << stored;
  }
  EXPECT_GT(accepted, 1000);
}

}  // namespace
}  // namespace qzlog_compiler
