#include "tools/catalog/catalog_status.h"

#include <gtest/gtest.h>

#include <sstream>

namespace qzlog_catalog {
namespace {

TEST(PercentTranslated, IsRoundedDown) {
  EXPECT_EQ(percent_translated({}), 100u);
  EXPECT_EQ(percent_translated({.translated = 1}), 100u);
  EXPECT_EQ(percent_translated({.translated = 999, .fuzzy = 1}), 99u);
  EXPECT_EQ(percent_translated({.translated = 1, .untranslated = 199}), 0u);
  EXPECT_EQ(percent_translated({.translated = 1, .refused = 1, .obsolete = 7}), 50u);
}

TEST(Complete, NeedsEveryMessageTranslated) {
  EXPECT_TRUE(TranslationCounts({.translated = 2, .obsolete = 5}).complete());
  EXPECT_FALSE(TranslationCounts({.translated = 2, .fuzzy = 1}).complete());
  EXPECT_FALSE(TranslationCounts({.translated = 2, .untranslated = 1}).complete());
  EXPECT_FALSE(TranslationCounts({.translated = 2, .refused = 1}).complete());
}

TEST(StatusTable, ColumnsHoldLargeNumbersAndLongNames) {
  std::ostringstream out;
  const LanguageCatalog catalog{"zh_Hant_TW", {.translated = 1'234'567, .fuzzy = 89}, {}};
  print_status_table(out, {&catalog, 1});
  EXPECT_EQ(out.str(),
            "language    translated  fuzzy  untranslated  refused  obsolete  complete\n"
            "zh_Hant_TW     1234567     89             0        0         0      99 %\n");
}

}  // namespace
}  // namespace qzlog_catalog
