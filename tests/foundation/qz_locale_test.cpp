#include "qzlog/qz_locale.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

/// The process's locale as it was before the test.
class QzLocale : public testing::Test {
 protected:
  QzLocale() : previous_(qz_I18N_get_locale()) {}
  ~QzLocale() override { qz_I18N_set_locale(previous_); }

 private:
  qz_Locale previous_;
};

TEST_F(QzLocale, BeforeItIsSet_IsTheProcessLocale) { EXPECT_EQ(qz_I18N_get_locale(), QZ_LOCALE_PROCESS); }

TEST_F(QzLocale, ProcessLocale_IsTheFirstValue) { EXPECT_EQ(static_cast<unsigned>(QZ_LOCALE_PROCESS), 0U); }

TEST_F(QzLocale, Set_IsReturned) {
  for (const qz_Locale locale : {QZ_LOCALE_DE_DE, QZ_LOCALE_ZH_TW, QZ_LOCALE_JA_JP, QZ_LOCALE_PROCESS}) {
    qz_I18N_set_locale(locale);
    EXPECT_EQ(qz_I18N_get_locale(), locale);
  }
}

TEST_F(QzLocale, SetOutsideTheEnumeration_Ignored) {
  qz_I18N_set_locale(QZ_LOCALE_FR_FR);
  for (const unsigned value : {static_cast<unsigned>(QZ_LOCALE_ZH_TW) + 1, 4294967295U}) {
    qz_I18N_set_locale(static_cast<qz_Locale>(value));
    EXPECT_EQ(qz_I18N_get_locale(), QZ_LOCALE_FR_FR);
  }
}

TEST(QzLocaleName, Table_LanguageAndCountry) {
  const struct {
    qz_Locale locale;
    const char* name;
  } cases[] = {
      {QZ_LOCALE_PROCESS, ""},    {QZ_LOCALE_EN_US, "en_US"}, {QZ_LOCALE_EN_GB, "en_GB"}, {QZ_LOCALE_DE_DE, "de_DE"},
      {QZ_LOCALE_FR_FR, "fr_FR"}, {QZ_LOCALE_ES_ES, "es_ES"}, {QZ_LOCALE_IT_IT, "it_IT"}, {QZ_LOCALE_PT_PT, "pt_PT"},
      {QZ_LOCALE_PT_BR, "pt_BR"}, {QZ_LOCALE_NL_NL, "nl_NL"}, {QZ_LOCALE_SV_SE, "sv_SE"}, {QZ_LOCALE_PL_PL, "pl_PL"},
      {QZ_LOCALE_TR_TR, "tr_TR"}, {QZ_LOCALE_RU_RU, "ru_RU"}, {QZ_LOCALE_AR_SA, "ar_SA"}, {QZ_LOCALE_JA_JP, "ja_JP"},
      {QZ_LOCALE_KO_KR, "ko_KR"}, {QZ_LOCALE_ZH_CN, "zh_CN"}, {QZ_LOCALE_ZH_TW, "zh_TW"}};
  for (const auto& c : cases) EXPECT_STREQ(qz_I18N_get_locale_name(c.locale), c.name);
}

TEST(QzLocaleName, OutsideTheEnumeration_Empty) {
  EXPECT_STREQ(qz_I18N_get_locale_name(static_cast<qz_Locale>(QZ_LOCALE_ZH_TW + 1)), "");
  EXPECT_STREQ(qz_I18N_get_locale_name(static_cast<qz_Locale>(4294967295U)), "");
}

TEST(QzLocaleFind, EveryName_FindsItsLocaleInAllSpellings) {
  for (unsigned value = 1; value <= QZ_LOCALE_ZH_TW; ++value) {
    const auto expected = static_cast<qz_Locale>(value);
    const std::string name = qz_I18N_get_locale_name(expected);
    std::string dashed = name;
    dashed[2] = '-';
    for (const std::string& spelling : {name, dashed, name + ".UTF-8", name + "@euro", name + ".UTF-8@euro"}) {
      qz_Locale found = QZ_LOCALE_PROCESS;
      EXPECT_TRUE(qz_I18N_find_locale(spelling.c_str(), found)) << spelling;
      EXPECT_EQ(found, expected) << spelling;
    }
  }
}

TEST(QzLocaleFind, OtherNames_False) {
  for (const char* name : {"xx_XX", "de", "de_", "de_D", "de_DEU", "deDE", "de_DE_POSIX", " de_DE", "C", "POSIX"}) {
    qz_Locale found = QZ_LOCALE_PROCESS;
    EXPECT_FALSE(qz_I18N_find_locale(name, found)) << name;
  }
}

TEST(QzLocaleName, AllValues_HaveDifferentNames) {
  std::set<std::string> names;
  for (unsigned value = 0; value <= QZ_LOCALE_ZH_TW; ++value) {
    names.insert(qz_I18N_get_locale_name(static_cast<qz_Locale>(value)));
  }
  EXPECT_EQ(names.size(), static_cast<std::size_t>(QZ_LOCALE_ZH_TW) + 1);
}

}  // namespace
