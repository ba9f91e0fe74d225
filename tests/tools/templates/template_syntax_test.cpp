#include "tools/templates/template_syntax.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_catalog {
namespace {

TEST(TemplateSyntaxFailure, TemplatesThatCanBeShown_HaveNone) {
  for (const std::string stored :
       {"", "text", "%s%A% text%_%TIMESTAMP%", "'{'%s%A%'}'", "it's %s%A%", "%%", "%s%A% %d%B%", "}%s%A%"}) {
    EXPECT_EQ(template_syntax_failure(stored), "") << stored;
  }
}

TEST(TemplateSyntaxFailure, BracesAndBrokenReferences_AreFailures) {
  const std::string refused = "ICU refuses its text; a literal brace is written in apostrophes, '{'";
  EXPECT_EQ(template_syntax_failure("{%s%A%"), refused);
  EXPECT_EQ(template_syntax_failure("{}%s%A%"), refused);
  EXPECT_EQ(template_syntax_failure("{x}%s%A% {0, nonsense"), "");  // the end is never read
  EXPECT_EQ(template_syntax_failure("%s%%"), "the format 's' has no attribute behind it");
}

TEST(TemplateSyntaxFailure, NestingThatIcuWouldNotSurvive_IsAFailure) {
  for (const char* const level : {"{0,choice,0#'|}'", "{0,select,other{"}) {
    std::string stored = "%s%A%";
    for (int i = 0; i < 200'000; ++i) stored += level;
    EXPECT_EQ(template_syntax_failure(stored + "%_%TIMESTAMP%"),
              "its arguments and their messages nest deeper than 100 levels");
  }
}

TEST(LosesItsEnd, TextBehindTheLastPercentSign_IsLost) {
  EXPECT_FALSE(loses_its_end(""));
  EXPECT_FALSE(loses_its_end("%s%A%"));
  EXPECT_FALSE(loses_its_end("text%_%TIMESTAMP%"));
  EXPECT_TRUE(loses_its_end("text"));
  EXPECT_TRUE(loses_its_end("%s%A% is full"));
}

}  // namespace
}  // namespace qzlog_catalog
