#include "tools/catalog/bundle_source.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/catalog/bundle_fixture.h"
#include "tools/templates/source_digest.h"

namespace qzlog_catalog {
namespace {

TEST(BundleSource, Texts_AreQuoted) {
  EXPECT_EQ(genrb_text(bundle_source("de", {{"a.b", "x \"y\" \\z"}, {"c", "ü\n😀"}})),
            "de {\n"
            "  STRING_TABLE {\n"
            "    \"c\" { \"\\u00FC\\u000A\\U0001F600\" }\n"
            "    \"a.b\" { \"x \\u0022y\\u0022 \\\\z\" }\n"
            "  }\n"
            "}\n");
}

TEST(BundleSource, WhatTextsWereBuiltFrom_StandsInATableOfItsOwn) {
  EXPECT_EQ(genrb_text(bundle_source("de", {{"a", "x"}, {"b", "y"}}, {{"a", "01234567"}, {"b", "fedcba98"}})),
            "de {\n"
            "  SOURCE_TABLE {\n"
            "    \"b\" { \"fedcba98\" }\n"
            "    \"a\" { \"01234567\" }\n"
            "  }\n"
            "  STRING_TABLE {\n"
            "    \"b\" { \"y\" }\n"
            "    \"a\" { \"x\" }\n"
            "  }\n"
            "}\n");
}

TEST(BundleSource, ManyTexts_AreCompiledInATimeThatGrowsLinearly) {
  std::vector<CatalogText> table;
  std::vector<CatalogSource> sources;
  for (int i = 0; i < 30'000; ++i) {
    table.push_back({"E" + std::to_string(i), "text " + std::to_string(i)});
    sources.push_back({"E" + std::to_string(i), qzlog_tool::source_digest(table.back().stored)});
  }
  const CatalogFolder catalog({bundle_source("root", table, sources)});  // more than a minute if it were quadratic
  EXPECT_EQ(catalog.text("E0"), "text 0");
  EXPECT_EQ(catalog.text("E29999"), "text 29999");
}

TEST(BundleSource, EveryCharacter_IsReadBack) {
  std::string text;
  for (char32_t code = 1; code < 0x11000; code += code < 0x500 ? 1 : 0x3D) {
    if (code >= 0xD800 && code < 0xE000) continue;
    icu::UnicodeString(static_cast<UChar32>(code)).toUTF8String(text);
  }
  const CatalogFolder catalog({bundle_source("root", {{"all", text}, {"empty", ""}})});
  EXPECT_EQ(catalog.text("all"), text);
  EXPECT_EQ(catalog.text("empty"), "");
}

TEST(BundleSource, TextsThatLookLikeSyntax_AreTexts) {
  const std::vector<std::string> texts = {"\\u0041",     "} x {", "// no comment", "/* none */",
                                          "a:int { 1 }", "\\",    "\"\""};
  std::vector<CatalogText> table;
  for (const std::string& text : texts) table.push_back({std::to_string(table.size()), text});
  const CatalogFolder catalog({bundle_source("root", table)});
  for (const CatalogText& text : table) EXPECT_EQ(catalog.text(text.id), text.stored);
}

TEST(BundleSource, EveryKeyThatIsAllowed_IsFound) {
  std::vector<CatalogText> table;
  for (char character = 1; character < 0x7F; ++character) {
    const std::string key = "k" + std::string(1, character) + "y";
    if (is_bundle_key(key)) table.push_back({key, "text of " + std::to_string(character)});
  }
  EXPECT_EQ(table.size(), 26u + 26 + 10 + 20);
  const CatalogFolder catalog({bundle_source("root", table)});
  for (const CatalogText& text : table) EXPECT_EQ(catalog.text(text.id), text.stored);
}

TEST(IsBundleKey, OtherCharacters_AreNotAllowed) {
  EXPECT_FALSE(is_bundle_key(""));
  for (const std::string key : {"a$", "a#", "a@", "a!", "a[", "a\\", "a{", "a\n", "a\x7F", "größe"}) {
    EXPECT_FALSE(is_bundle_key(key)) << key;
  }
}

TEST(EmptyBundle, ItsReaders_GetTheRootsTexts) {
  const CatalogFolder catalog({bundle_source("root", {{"a", "root text"}}), empty_bundle_source("en"),
                               bundle_source("de", {{"a", "deutsch"}})});
  EXPECT_EQ(catalog.text("a", "en_US"), "root text");
  EXPECT_EQ(catalog.text("a", "de_AT"), "deutsch");
}

// Why a language's bundle has to hold every message.
TEST(BundleSource, TextThatALanguageLacks_IsNotFoundInTheRoot) {
  const CatalogFolder catalog({bundle_source("root", {{"a", "x"}, {"b", "y"}}), bundle_source("de", {{"a", "z"}})});
  EXPECT_EQ(catalog.text("b", "root"), "y");
  EXPECT_EQ(catalog.text("b", "de"), std::nullopt);
}

}  // namespace
}  // namespace qzlog_catalog
