#include "tools/compiler/message/icu_pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_compiler {
namespace {

PatternReading reading_of(const std::string& stored) {
  return read_icu_pattern(cut_template(stored, RenderingPath::kIcu), "root");
}

/// Texts as they are, references as #0, arguments of ICU's own in brackets.
std::string shown(const PatternReading& reading) {
  std::string text;
  for (const PatternPart& part : reading.parts) {
    switch (part.kind) {
      case PatternPart::Kind::kText:
        text += part.text;
        break;
      case PatternPart::Kind::kReference:
        text += '#' + std::to_string(part.reference);
        break;
      case PatternPart::Kind::kArgument:
        text += '[' + part.text + ']';
        break;
    }
  }
  return text;
}

TEST(IcuPattern, TextsAndReferences_InTheirOrder) {
  EXPECT_EQ(shown(reading_of("a %s%A% b %d%B%")), "a #0 b #1");
  EXPECT_EQ(shown(reading_of("%x%A% %s%B%")), " #0");  // what is left out takes no number
}

TEST(IcuPattern, Quotes_AreUndone) { EXPECT_EQ(shown(reading_of("it''s '{'%s%A%'}'%_%TIMESTAMP%")), "it's {#0}"); }

TEST(IcuPattern, BracesInTheText_AreNotTakenForReferences) {
  EXPECT_EQ(shown(reading_of("{0} %s%A%")), "[{0}] #0");
  EXPECT_EQ(shown(reading_of("%s%A% {0,number,currency}%_%TIMESTAMP%")), "#0 [{0,number,currency}]");
}

TEST(IcuPattern, ReferenceInQuotes_IsHidden) {
  const PatternReading reading = reading_of("%s%A% '%s%B%' %s%C%");
  EXPECT_EQ(shown(reading), "#0 {1} #2");
  EXPECT_EQ(reading.hidden, (std::vector<HiddenReference>{{1, false}}));
}

TEST(IcuPattern, ReferenceInAStyle_IsHidden) {
  const PatternReading reading = reading_of("%d%A% {0,date,y %s%B%} %s%D%");
  EXPECT_EQ(reading.hidden, (std::vector<HiddenReference>{{1, true}}));
}

TEST(IcuPattern, ReferenceInAMessageOfAnArgument_IsNotHidden) {
  const PatternReading reading = reading_of("{0,choice,0#none|1#%d%A% in '%s%B%'}%_%TIMESTAMP%");
  EXPECT_EQ(reading.hidden, (std::vector<HiddenReference>{{1, false}}));
}

struct OutcomeCase {
  const char* stored;
  PatternOutcome outcome;
  const char* error;
};

TEST(IcuPattern, Patterns_HaveTheOutcomeThatTheLibraryComesTo) {
  constexpr PatternOutcome kApplies = PatternOutcome::kApplies;
  constexpr PatternOutcome kRefused = PatternOutcome::kRefused;
  constexpr PatternOutcome kInapplicable = PatternOutcome::kInapplicable;
  const OutcomeCase cases[] = {
      {"%s%A% %_%TIMESTAMP%", kApplies, ""},
      {"{ %s%A%", kRefused, "U_PATTERN_SYNTAX_ERROR"},
      {"{x,nonsense} %s%A%", kRefused, "U_ILLEGAL_ARGUMENT_ERROR"},
      {"{0,number,0.0.0} %d%A%", kRefused, "U_UNQUOTED_SPECIAL"},
      {"{0,number} %s%A%", kInapplicable, "U_INVALID_FORMAT_ERROR"},
      {"{0,number} %d%A%", kApplies, ""},
      {"{0,date} %d%A%", kApplies, ""},
      {"{0,date} %s%A%", kInapplicable, "U_ILLEGAL_ARGUMENT_ERROR"},
      {"{0,choice,0#a|1#b} %s%A%", kInapplicable, "U_ILLEGAL_ARGUMENT_ERROR"},
      {"{0,select,other{a}} %d%A%", kInapplicable, "U_INVALID_FORMAT_ERROR"},
      {"{1,number} %d%A%", kApplies, ""},        // nobody gives it
      {"{1,number} %_%A% %d%A%", kApplies, ""},  // given, and not set: a zero
      {"{1,select,other{a}} %_%A% %d%A%", kInapplicable, "U_INVALID_FORMAT_ERROR"},
      {"{x,number} %s%A%", kInapplicable, "U_INVALID_FORMAT_ERROR"},  // a name is taken for the number 0
      // What stands in the messages that the first values do not select:
      {"{0,choice,0#a|7#{1,number}} %d%A% %s%B%", kInapplicable, "U_INVALID_FORMAT_ERROR"},
      {"{0,plural,=7{'#{1,date}'}other{b}} %d%A% %s%B%", kApplies, ""},
      {"{0,select,x{a}other{{1,select,b{c}other{d}}}} %s%A% %d%B%", kInapplicable, "U_INVALID_FORMAT_ERROR"},
      {"{0,select,x{a}other{{1,plural,offset:1 other{d}}}} %s%A% %s%B%", kInapplicable, "U_ILLEGAL_ARGUMENT_ERROR"},
      {"{0,select,x{a}other{{1,selectordinal,other{d}}}} %s%A% %d%B%", kApplies, ""},
  };
  for (const OutcomeCase& item : cases) {
    const PatternReading reading = reading_of(item.stored);
    EXPECT_EQ(static_cast<int>(reading.outcome), static_cast<int>(item.outcome)) << item.stored;
    EXPECT_EQ(reading.error, item.error) << item.stored;
  }
}

}  // namespace
}  // namespace qzlog_compiler
