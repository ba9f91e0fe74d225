#include "message/resource_bundle.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "tests/message/bundle_maker.h"
#include "tests/message/bundle_oracle.h"
#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

using qzlog::MessageBundle;

/// A source's text between quotes: of any length, in characters of one and two units.
std::string text_of(std::size_t length, const std::string& character) {
  std::string text;
  for (std::size_t i = 0; i < length; ++i) text += character;
  return text;
}

struct Source {
  std::string content;
  std::vector<std::string> keys;
};

/// Texts of every length that is stored in another way, and everything else that a table may hold.
Source every_kind() {
  Source source;
  const auto add = [&](const std::string& key, const std::string& value) {
    source.content += " \"" + key + "\"" + value;
    source.keys.push_back(key);
  };
  unsigned number = 0;
  for (const std::size_t length :
       std::initializer_list<std::size_t>{0, 1, 2, 39, 40, 41, 1005, 1006, 1007, 1008, 65535, 65536, 70000}) {
    for (const char* const character : {"x", "\u00E4", "\U0001F600"}) {
      add("text" + std::to_string(number++), " { \"" + text_of(length, character) + "\" }");
    }
  }
  add("same.as.another", " { \"" + text_of(40, "x") + "\" }");
  add("end.of.another", " { \"" + text_of(17, "x") + "\" }");
  add("half.a.pair", " { \"\\uDC00\\uDC01\" }");
  add("number", ":int { 7 }");
  add("numbers", ":intvector { 1, 2, 3 }");
  add("raw", ":bin { 00010203 }");
  add("table", " { inner { \"text\" } deep { deeper { \"text\" } } }");
  add("list", " { \"a\", \"b\", { \"c\" } }");
  add("empty.table", ":table { }");
  add("empty.list", ":array { }");
  source.content = "STRING_TABLE {" + source.content + " } Other { greeting { \"of another table\" } }";
  for (const char* const missing : {"", "missing", "text", "text0 ", "table/inner", "zzz", "STRING_TABLE"}) {
    source.keys.emplace_back(missing);
  }
  return source;
}

/// More keys, or longer ones, than fit into a table of short offsets.
Source many(int count, std::size_t key_length) {
  Source source;
  source.content = "STRING_TABLE {";
  for (int i = 0; i < count; ++i) {
    const std::string key = "key" + text_of(key_length, "y") + std::to_string(i * 7919 % count);
    source.content += " " + key + " { \"text " + std::to_string(i) + "\" }";
    if (i % 97 == 0) source.keys.push_back(key);
  }
  source.content += " }";
  source.keys.push_back("key");
  return source;
}

const char* const kVersions[] = {"--formatVersion 1", "--formatVersion 2", "--formatVersion 3", ""};

void expect_as_icu(const std::string& path, const std::string& locale, const std::vector<std::string>& keys) {
  for (const std::string& key : keys) {
    ASSERT_EQ(seen_by_us(path, locale, {key}), seen_by_icu(path, locale, {key})) << locale << ": " << key;
  }
}

TEST(MessageBundle, EveryKindOfValueInEveryFormat_AsIcu) {
  const RenderingSettings settings;
  for (const char* const version : kVersions) {
    SCOPED_TRACE(version);
    const TempDir folder;
    for (const Source& source : {every_kind(), many(2000, 3), many(2000, 60)}) {
      const TempDir catalog;
      catalog.write("de.res", make_bundle(source.content, version));
      expect_as_icu(catalog.path(), "de", source.keys);
    }
  }
}

TEST(MessageBundle, TextWithALengthOfThreeUnits_AsIcu) {
  const RenderingSettings settings;
  const TempDir catalog;
  catalog.write("de.res", make_bundle("STRING_TABLE { long { \"" + text_of(1100000, "z") + "\" } last { \"end\" } }"));
  expect_as_icu(catalog.path(), "de", {"long", "last"});
}

/// What icupkg may have added to a bundle.
constexpr std::size_t kPadding = 15;

/// Makes the bundles of a catalog that share the keys and texts of a pool.
void make_pooled(const TempDir& catalog, const std::string& version) {
  const std::string shared = " greeting { \"the same text in every one of the bundles of this catalog\" }";
  for (const std::string& name : {std::string("root"), std::string("de"), std::string("fr")}) {
    catalog.write(name + ".txt", name + " { STRING_TABLE {" + shared + " own { \"" + name + "\" } } }");
  }
  run_genrb(catalog.path(), version + " --writePoolBundle", {"root", "de", "fr"});
  run_genrb(catalog.path(), version + " --usePoolBundle .", {"root", "de", "fr"});
  bring_into_byte_order(catalog.path("pool.res"));
}

TEST(MessageBundle, PoolOfKeysAndTexts_AsIcu) {
  const RenderingSettings settings;
  for (const char* const version : {"--formatVersion 2", "--formatVersion 3"}) {
    const TempDir catalog;
    make_pooled(catalog, version);
    ASSERT_TRUE(catalog.has("pool.res"));
    for (const char* const locale : {"de", "fr_CH", "ja"}) {
      expect_as_icu(catalog.path(), locale, {"greeting", "own", "missing"});
    }
    EXPECT_EQ(seen_by_us(catalog.path(), "de", {"own"}), "opened de, 'de'");
  }
}

TEST(MessageBundle, PoolMissingOrOfOtherBundles_Fails) {
  const TempDir catalog;
  make_pooled(catalog, "--formatVersion 3");
  std::string pool = catalog.read("pool.res");
  for (std::size_t length = 0; length < pool.size() - kPadding; length += 7) {
    catalog.write("pool.res", pool.substr(0, length));
    EXPECT_EQ(seen_by_us(catalog.path(), "de", {"own"}), "failed") << length;
  }
  catalog.write("pool.res", make_bundle(""));
  EXPECT_EQ(seen_by_us(catalog.path(), "de", {"own"}), "failed");
  std::filesystem::remove(catalog.path("pool.res"));
  EXPECT_EQ(seen_by_us(catalog.path(), "de", {"own"}), "failed");
}

TEST(MessageBundle, ValuesThatStandForOthers_AsIcu) {
  const RenderingSettings settings;
  RenderingSettings::set_icu_locale("en_US");
  const TempDir catalog;
  const TempDir other;
  other.write("fr.res", make_text_bundle("of another catalog"));
  other.write("root.res", make_text_bundle("root of another catalog"));
  catalog.write("root.res", make_bundle("STRING_TABLE { greeting { \"root\" } only.root { \"only root\" } } "
                                        "Lists { first { \"a\", \"b\" } second { \"0\" { \"zero\" } } }"));
  catalog.write("fr.res",
                make_bundle("STRING_TABLE { greeting { \"fr\" } same { \"the same\" } again:alias { \"de\" } }"));
  const std::vector<std::pair<std::string, std::string>> aliases = {
      {"opened", "/LOCALE/STRING_TABLE/plain"},
      {"opened.parent", "/LOCALE/Lists/first/1"},
      {"opened.nothing", "/LOCALE/STRING_TABLE/none"},
      {"opened.table", "/LOCALE/STRING_TABLE"},
      {"same", "fr"},
      {"same.missing", "fr"},
      {"greeting", "root"},
      {"keys", "fr/STRING_TABLE/greeting"},
      {"keys.of.parent", "fr/STRING_TABLE/only.root"},
      {"list", "root/Lists/first/0"},
      {"list.end", "root/Lists/first/2"},
      {"list.word", "root/Lists/first/x"},
      {"table.digit", "root/Lists/second/0/0"},
      {"no.bundle", "ja/STRING_TABLE/greeting"},
      {"chain", "/LOCALE/STRING_TABLE/keys"},
      {"dead.end", "/LOCALE/STRING_TABLE/no.bundle"},
      {"of.other", "/OTHER/fr/STRING_TABLE/greeting"},
      {"of.icu", "/ICUDATA/de/Version"},
      {"slashes", "fr//STRING_TABLE"},
      {"table", "fr/STRING_TABLE"},
  };
  std::string content = "STRING_TABLE { plain { \"plain\" }";
  std::vector<std::string> keys = {"plain"};
  for (const auto& [key, alias] : aliases) {
    content += " " + key + ":alias { \"" + alias + "\" }";
    keys.push_back(key);
  }
  catalog.write("de.res", make_bundle(content + " }"));
  catalog.write("es.res", make_bundle("STRING_TABLE:alias { \"fr\" }"));
  catalog.write("it.res", make_bundle("STRING_TABLE:alias { \"fr/STRING_TABLE\" }"));
  catalog.write("pt.res", make_bundle("STRING_TABLE:alias { \"ja/STRING_TABLE\" }"));
  for (const char* const locale : {"de", "de_AT", "es", "it", "pt"}) {
    for (const std::string& key : keys) {
      EXPECT_EQ(seen_by_us(catalog.path(), locale, {key}), seen_by_icu(catalog.path(), locale, {key}))
          << locale << ": " << key;
    }
  }
}

TEST(MessageBundle, ValuesThatStandForEachOther_NoText) {
  const TempDir catalog;
  catalog.write("de.res", make_bundle("STRING_TABLE { a:alias { \"/LOCALE/STRING_TABLE/b\" } "
                                      "b:alias { \"/LOCALE/STRING_TABLE/a\" } c:alias { \"de/STRING_TABLE/c\" } "
                                      "d:alias { \"/LOCALE/d/d/d/d\" } } d:alias { \"/LOCALE/STRING_TABLE/d/d/d\" }"));
  for (const char* const key : {"a", "b", "c", "d"}) {
    EXPECT_EQ(seen_by_us(catalog.path(), "de", {key}), "opened de, no text") << key;
  }
}

TEST(MessageBundle, BundleWithoutFallback_AsIcu) {
  const RenderingSettings settings;
  const TempDir catalog;
  catalog.write("root.res", make_text_bundle("root"));
  catalog.write("de.txt", "de:table(nofallback) { Other { greeting { \"x\" } } }");
  run_genrb(catalog.path(), "", {"de"});
  EXPECT_EQ(seen_by_us(catalog.path(), "de", {"greeting"}), "opened de, no table");
  expect_as_icu(catalog.path(), "de", {"greeting"});
  expect_as_icu(catalog.path(), "de_AT", {"greeting"});
}

TEST(MessageBundle, TextsOfATable_AllOfThemAndWhereTheTableIs) {
  const TempDir catalog;
  catalog.write("root.res",
                make_bundle("STRING_TABLE { a { \"A\" } b { \"B\" } n:int { 1 } } Sources { a { \"x\" } }"));
  catalog.write("de.res", make_bundle("STRING_TABLE { b { \"\u00DF\" } c:alias { \"root/STRING_TABLE/a\" } }"));
  MessageBundle bundle;
  ASSERT_EQ(bundle.open(catalog.path(), "de_AT"), MessageBundle::State::kOpened);
  EXPECT_EQ(bundle.name(), "de");
  const MessageBundle::Table own = bundle.read_table("STRING_TABLE");
  EXPECT_TRUE(own.is_found);
  EXPECT_TRUE(own.is_of_first_bundle);
  EXPECT_EQ(own.texts, (std::map<std::string, std::u16string>{{"b", u"\u00DF"}, {"c", u"A"}}));
  const MessageBundle::Table sources = bundle.read_table("Sources");
  EXPECT_TRUE(sources.is_found);
  EXPECT_FALSE(sources.is_of_first_bundle);
  EXPECT_EQ(sources.texts, (std::map<std::string, std::u16string>{{"a", u"x"}}));
  EXPECT_FALSE(bundle.read_table("Nothing").is_found);
}

TEST(MessageBundle, Failed_SaysWhichFileAndWhy) {
  const TempDir catalog;
  const std::string whole = make_text_bundle("x");
  catalog.write("de.res", whole.substr(0, whole.size() - kPadding - 1));
  MessageBundle bundle;
  EXPECT_EQ(bundle.open(catalog.path(), "de_AT"), MessageBundle::State::kFailed);
  EXPECT_EQ(bundle.problem(), "the file is shorter than the bundle in it");
  EXPECT_EQ(bundle.failed_bundle(), "de");
}

TEST(MessageBundle, OpenedWithoutMemory_IsWhatItWas) {
  const TempDir catalog;
  catalog.write("de.res", make_text_bundle("x"));
  for (unsigned nth = 1, happened = 1; happened != 0; ++nth) {
    MessageBundle bundle;
    try {
      const AllocationFailure failure(nth);
      happened = 0;
      EXPECT_EQ(bundle.open(catalog.path(), "de"), MessageBundle::State::kOpened);
    } catch (const std::bad_alloc&) {
      happened = 1;
    }
    const auto found = bundle.find_text("STRING_TABLE", "greeting").state;
    EXPECT_EQ(found, happened != 0 ? MessageBundle::Text::State::kNoTable : MessageBundle::Text::State::kFound);
  }
}

}  // namespace
}  // namespace qz_test
