#include "tools/catalog/po_language.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace qzlog_catalog {
namespace {

TEST(BundleName, KnownLanguages_AreNamedAsIcuDoes) {
  const std::pair<const char*, const char*> kNames[] = {
      {"de", "de"},
      {"DE", "de"},
      {"de_AT", "de_AT"},
      {"pt-BR", "pt_BR"},
      {"sr@latin", "sr_Latn"},
      {"sr_RS@latin", "sr_Latn_RS"},
      {"zh_Hant_TW", "zh_Hant_TW"},
      {"es_419", "es_419"},
      {"uz@cyrillic", "uz_Cyrl"},
      {"tlh", "tlh"},
  };
  for (const auto& [language, name] : kNames) EXPECT_EQ(bundle_name(language), name) << language;
}

TEST(BundleName, Others_HaveNone) {
  for (const std::string language :
       {"",         "xx",          "de_QQ",          "es_999", "de_ZZ", "en_UK", "de_276",
        "zh_Abcd",  "ca@valencia", "de@latin@latin", "root",   "C",     "POSIX", "en_US_POSIX",
        "de.UTF-8", "../de",       "de/..",          "d",      "_DE",   "de de", "größe"}) {
    EXPECT_EQ(bundle_name(language), std::nullopt) << language;
  }
  EXPECT_EQ(bundle_name(std::string(100'000, 'a')), std::nullopt);
  EXPECT_EQ(bundle_name("de_" + std::string(100'000, 'a')), std::nullopt);
}

}  // namespace
}  // namespace qzlog_catalog
