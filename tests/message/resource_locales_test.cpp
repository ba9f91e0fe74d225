#include "message/resource_locales.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "tests/message/bundle_maker.h"
#include "tests/message/bundle_oracle.h"
#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

const std::vector<std::string> kJunk = {
    "",      "root",      "und",         "_DE",         "und_DE",     "__POSIX",    "_",          "__",         "de_",
    "de__",  "de__1901",  "a_b_c_d",     "x",           "xx_XX",      "xx_Latn",    "xx_Cyrl_XX", "de-DE",      "de_de",
    "DE_de", "i-default", "en_US_POSIX", "de_DE.UTF-8", "de_DE@euro", "C",          "POSIX",      "iw",         "iw_IL",
    "in_ID", "no_NO_NY",  "sh_YU",       "zh_Hant_MO",  "zh_MO",      "hi_Latn",    "hi_Latn_IN", "en_Shaw_GB", "de.DE",
    "de/DE", "../de",     "nb",          "nn_NO",       "123",        "de_419",     "es_419",     "es_XX",      "pt_AO",
    "mn_CN", "az_IQ",     "az_Arab_IR",  "uz_AF",       "sr_ME",      "ff_Adlm_GN", "zh_CN_HK_X"};

/// ICU does not come back from bundles of these names, and from those that fall back to them, unless they name their
/// parent: where it is asked they do.
const std::vector<std::string> kNorwegian = {"nb", "nn"};

void add_with_forms(const std::string& locale, std::set<std::string>& locales) {
  locales.insert(locale);
  locales.insert(locale + "_POSIX");
  locales.insert(locale + "@collation=phonebook");
  char form[ULOC_FULLNAME_CAPACITY] = "";
  for (const auto make : {uloc_addLikelySubtags, uloc_minimizeSubtags}) {
    UErrorCode status = U_ZERO_ERROR;
    make(locale.c_str(), form, ULOC_FULLNAME_CAPACITY, &status);
    if (U_SUCCESS(status)) locales.insert(form);
  }
  const std::string language = locale.substr(0, locale.find('_'));
  for (const char* region : {"_DE", "_IQ", "_CN", "_001", "_Latn_US", "_Arab_SA"}) locales.insert(language + region);
}

/// Every locale that ICU has, with variants, and names that are none.
std::vector<std::string> all_locales() {
  std::set<std::string> locales(kJunk.begin(), kJunk.end());
  for (std::int32_t i = 0; i < uloc_countAvailable(); ++i) add_with_forms(uloc_getAvailable(i), locales);
  for (const char* const* language = uloc_getISOLanguages(); *language != nullptr; ++language)
    locales.insert(*language);
  return {locales.begin(), locales.end()};
}

/// The names of files that are looked for, for any of the locales.
std::vector<std::string> all_names(const std::vector<std::string>& locales) {
  std::set<std::string> names;
  for (const std::string& locale : locales) {
    std::string origin;
    if (!qzlog::base_locale(locale.c_str(), origin)) continue;
    std::string name = origin;
    do {
      names.insert(name);
    } while (qzlog::next_locale(name, origin) && names.size() < 100000);
  }
  names.erase("");
  names.erase("root");
  for (const std::string& norwegian : kNorwegian) names.erase(norwegian);
  return {names.begin(), names.end()};
}

/// Compiled once; files with the same content differ in their names only.
struct Contents {
  Contents() {
    for (int i = 0; i < 20; ++i) texts.push_back(make_text_bundle("text " + std::to_string(i)));
    const std::string text = "STRING_TABLE { greeting { \"of its own\" } }";
    rare = {make_bundle(""), make_bundle("STRING_TABLE { other { \"x\" } }"),
            make_bundle("STRING_TABLE { \"no table\" }"), make_bundle("\"%%ParentIsRoot\" { \"\" }"),
            make_bundle("\"%%ParentIsRoot\" { \"\" } " + text)};
    for (const char* parent : {"es_419", "en_001", "pt_PT", "root", "xx_YY"}) {
      parents.push_back(make_bundle(std::string("\"%%Parent\" { \"") + parent + "\" }"));
    }
    aliases.push_back(make_bundle("\"%%ALIAS\" { \"sr_Latn_RS\" }"));
    aliases.push_back(make_bundle("\"%%ALIAS\" { \"zh_Hant_TW\" }"));
    aliases.push_back(make_bundle("\"%%ALIAS\" { \"xx_YY\" }"));
  }
  std::vector<std::string> texts, rare, parents, aliases;
  std::string norwegian = make_bundle("\"%%Parent\" { \"no\" }");
};

const std::string& any_of(const std::vector<std::string>& contents, SeededRandom& random) {
  return contents[static_cast<std::size_t>(random.between(0, static_cast<long long>(contents.size()) - 1))];
}

/// The parents that bundles name, and what those fall back to, name no parent: ICU does not end for a circle.
bool may_name_a_parent(const std::string& name) {
  return name.find('_') != std::string::npos && name != "es_419" && name != "en_001" && name != "pt_PT" &&
         name != "xx_YY";
}

void write_random_catalog(const TempDir& folder, const std::vector<std::string>& names, const Contents& contents,
                          SeededRandom& random) {
  const int density = static_cast<int>(random.between(2, 12));
  for (const std::string& name : names) {
    if (!random.one_in(density) || name.find('/') != std::string::npos) continue;
    const bool is_rare = random.one_in(3);
    const std::string& content = !is_rare                                      ? any_of(contents.texts, random)
                                 : random.one_in(2) && may_name_a_parent(name) ? any_of(contents.parents, random)
                                                                               : any_of(contents.rare, random);
    folder.write(name + ".res", content);
  }
  for (const char* const old : {"sh_YU_OLD", "in_ID_OLD", "zh_CN_HK_X"}) {
    folder.write(std::string(old) + ".res", any_of(contents.aliases, random));
  }
  for (const std::string& norwegian : kNorwegian) folder.write(norwegian + ".res", contents.norwegian);
  if (!random.one_in(3)) folder.write("root.res", any_of(contents.texts, random));
}

TEST(ResourceLocales, AnyLocaleAndAnyCatalog_AsIcu) {
  const RenderingSettings settings;
  std::vector<std::string> locales = all_locales();
  for (const char* const old : {"sh_YU_OLD", "in_ID_OLD"}) locales.push_back(old);
  const std::vector<std::string> names = all_names(locales);
  EXPECT_GT(locales.size(), 3000U);
  EXPECT_GT(names.size(), 2000U);
  const Contents contents;
  SeededRandom random;
  std::set<std::string> outcomes;
  for (const char* const standard : {"en_US", "de_AT", "zh_Hant_TW", "qq_QQ", "root", "pt_BR@currency=EUR"}) {
    RenderingSettings::set_icu_locale(standard);
    const TempDir folder;
    write_random_catalog(folder, names, contents, random);
    unsigned differences = 0;
    for (const std::string& locale : locales) {
      const std::string expected = seen_by_icu(folder.path(), locale, {"greeting"});
      outcomes.insert(expected.substr(0, 4));
      if (seen_by_us(folder.path(), locale, {"greeting"}) == expected) continue;
      EXPECT_EQ(seen_by_us(folder.path(), locale, {"greeting"}), expected) << locale << ", default " << standard;
      if (++differences == 5) break;
    }
  }
  EXPECT_GE(outcomes.size(), 1U);
}

/// A catalog with few languages, for which most locales go a long way.
TEST(ResourceLocales, FewLanguages_AsIcu) {
  const RenderingSettings settings;
  const std::vector<std::string> locales = all_locales();
  const std::string text = make_text_bundle("text");
  for (const std::vector<std::string>& files : {std::vector<std::string>{},
                                                {"de"},
                                                {"root"},
                                                {"und"},
                                                {"sr_Latn", "root"},
                                                {"zh_Hant", "zh"},
                                                {"no", "en_001"}}) {
    const TempDir folder;
    for (const std::string& name : files) folder.write(name + ".res", text);
    for (const std::string& locale : locales) {
      ASSERT_EQ(seen_by_us(folder.path(), locale, {"greeting"}), seen_by_icu(folder.path(), locale, {"greeting"}))
          << locale;
    }
  }
}

TEST(ResourceLocales, LongNames_AsIcu) {
  const RenderingSettings settings;
  const TempDir folder;
  folder.write("root.res", make_text_bundle("text"));
  std::string locale = "en_US";
  for (int i = 0; i < 60; ++i) {
    locale += i % 3 == 0 ? "_V" : "A";
    EXPECT_EQ(seen_by_us(folder.path(), locale, {"greeting"}), seen_by_icu(folder.path(), locale, {"greeting"}))
        << locale;
  }
  for (int i = 0; i < 60; ++i) {
    locale += "_VARIA";
    EXPECT_EQ(seen_by_us(folder.path(), locale, {"greeting"}), seen_by_icu(folder.path(), locale, {"greeting"}))
        << locale;
  }
}

/// With these names and no parent in the file ICU does not come back at all.
TEST(ResourceLocales, NorwegianWithoutANamedParent_Opens) {
  const TempDir folder;
  for (const char* const name : {"nb", "nn", "n", "b"}) {
    folder.write(std::string(name) + ".res", make_text_bundle(name));
    EXPECT_EQ(seen_by_us(folder.path(), name, {"greeting"}), std::string("opened ") + name + ", '" + name + "'");
  }
  EXPECT_EQ(seen_by_us(folder.path(), "nb_NO", {"greeting"}), "opened nb, 'nb'");
}

TEST(ResourceLocales, BundlesThatNameEachOtherAsParents_TheRootIsBehindThem) {
  const TempDir folder;
  folder.write("aa.res", make_bundle("\"%%Parent\" { \"bb_BB\" }"));
  folder.write("bb_BB.res", make_bundle("\"%%Parent\" { \"aa_AA\" }"));
  folder.write("aa_AA.res", make_bundle("\"%%Parent\" { \"bb_BB\" }"));
  folder.write("root.res", make_text_bundle("root"));
  for (const char* const locale : {"aa_AA", "bb_BB"}) {
    EXPECT_EQ(seen_by_us(folder.path(), locale, {"greeting"}), std::string("opened ") + locale + ", 'root'");
  }
}

TEST(ResourceLocales, BundlesThatStandForEachOther_Fail) {
  const TempDir folder;
  folder.write("aa.res", make_bundle("\"%%ALIAS\" { \"bb\" }"));
  folder.write("bb.res", make_bundle("\"%%ALIAS\" { \"aa\" }"));
  EXPECT_EQ(seen_by_us(folder.path(), "aa", {"greeting"}), "failed");
}

}  // namespace
}  // namespace qz_test
