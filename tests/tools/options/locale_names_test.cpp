#include "tools/options/locale_names.h"

#include <gtest/gtest.h>

#include "qzlog/qz_locale.h"

namespace {

TEST(LocaleNames, AllOfThem_AreFoundByTheLibrary) {
  const std::vector<std::string> names = qzlog_tool::locale_names();
  EXPECT_GT(names.size(), 10U);
  for (const std::string& name : names) {
    qz_Locale locale = QZ_LOCALE_PROCESS;
    EXPECT_TRUE(qz_I18N_find_locale(name.c_str(), locale)) << name;
    EXPECT_EQ(qz_I18N_get_locale_name(locale), name);
  }
}

}  // namespace
