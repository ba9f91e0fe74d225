#include "tools/catalog/catalog_build.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/catalog/source_messages.h"
#include "tools/source_digest.h"

namespace qzlog_catalog {
namespace {

std::vector<std::string> names_of(const std::vector<NamedBundle>& bundles) {
  std::vector<std::string> names;
  for (const NamedBundle& bundle : bundles) names.push_back(bundle.name);
  return names;
}

using Names = std::vector<std::string>;

const SourceText kSource = {"s.yaml", "version: \"1.0\"\nentries: [{id: 1, name: A, message: \"text\"}]\n"};

TEST(BundleSources, SourceLanguageWithoutTranslations_HasAnEmptyBundle) {
  const std::vector<LanguageCatalog> catalogs = {{"de", {}, {{"A", "Text"}}}};
  const std::vector<NamedBundle> bundles = bundle_sources(messages_of({kSource}), catalogs, "en");
  EXPECT_EQ(names_of(bundles), (Names{"root", "en", "de"}));
  EXPECT_NE(bundles[0].content.find("\"text%_%TIMESTAMP%\""), std::string::npos) << bundles[0].content;
  EXPECT_EQ(bundles[1].content, empty_bundle_source("en"));
  EXPECT_NE(bundles[2].content.find("\"Text\""), std::string::npos) << bundles[2].content;
}

TEST(BundleSources, SourceLanguageWithTranslations_HasThose) {
  const std::vector<LanguageCatalog> catalogs = {{"de", {}, {}}, {"en", {}, {{"A", "better text"}}}};
  const std::vector<NamedBundle> bundles = bundle_sources(messages_of({kSource}), catalogs, "en");
  EXPECT_EQ(names_of(bundles), (Names{"root", "de", "en"}));
  EXPECT_NE(bundles[2].content.find("\"better text\""), std::string::npos) << bundles[2].content;
}

TEST(BundleSources, EachWithTexts_SaysWhatTheyWereBuiltFrom) {
  const std::vector<LanguageCatalog> catalogs = {{"de", {}, {{"A", "Text"}}}};
  const std::vector<NamedBundle> bundles = bundle_sources(messages_of({kSource}), catalogs, "en");
  const std::string table =
      "  SOURCE_TABLE {\n    \"A\" { \"" + qzlog_tool::source_digest("text%_%TIMESTAMP%") + "\" }\n  }\n";
  EXPECT_NE(bundles[0].content.find(table), std::string::npos) << bundles[0].content;
  EXPECT_NE(bundles[2].content.find(table), std::string::npos) << bundles[2].content;
}

}  // namespace
}  // namespace qzlog_catalog
