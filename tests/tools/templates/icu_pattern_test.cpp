#include "tools/templates/icu_pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qzlog_tool::PatternPart;
using qzlog_tool::PatternReading;

PatternReading reading_of(const std::string& stored) {
  return qzlog_tool::read_icu_pattern(qzlog_compiler::cut_template(stored, qzlog_compiler::TemplateForm::kIcu), "root");
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
  EXPECT_EQ(reading.hidden, (std::vector<std::size_t>{1}));
}

TEST(IcuPattern, WhatIcuDoesNotTake_IsRefused) {
  EXPECT_EQ(reading_of("%s%A% %_%TIMESTAMP%").refusal, "");
  EXPECT_NE(reading_of("{ %s%A%").refusal, "");
  EXPECT_NE(reading_of("{0,number} %s%A%").refusal, "");
}

}  // namespace
