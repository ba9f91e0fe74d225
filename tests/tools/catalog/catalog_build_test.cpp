#include "tools/catalog/catalog_build.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/catalog/source_messages.h"
#include "tools/templates/source_digest.h"

namespace qzlog_catalog {
namespace {

std::vector<std::string> names_of(const std::vector<BundleSource>& bundles) {
  std::vector<std::string> names;
  for (const BundleSource& bundle : bundles) names.push_back(bundle.name);
  return names;
}

using Names = std::vector<std::string>;

const SourceText kSource = {"s.yaml", "version: \"1.0\"\nentries: [{id: 1, name: A, message: \"text\"}]\n"};

TEST(BundleSources, SourceLanguageWithoutTranslations_HasAnEmptyBundle) {
  const std::vector<LanguageCatalog> catalogs = {{"de", {}, {{"A", "Text"}}}};
  const std::vector<BundleSource> bundles = bundle_sources(messages_of({kSource}), catalogs, "en");
  EXPECT_EQ(names_of(bundles), (Names{"root", "en", "de"}));
  EXPECT_EQ(bundles[0].tables.at("STRING_TABLE"), (BundleTable{{"A", "text%_%TIMESTAMP%"}}));
  EXPECT_TRUE(bundles[1].tables.empty());
  EXPECT_EQ(bundles[2].tables.at("STRING_TABLE"), (BundleTable{{"A", "Text"}}));
}

TEST(BundleSources, SourceLanguageWithTranslations_HasThose) {
  const std::vector<LanguageCatalog> catalogs = {{"de", {}, {}}, {"en", {}, {{"A", "better text"}}}};
  const std::vector<BundleSource> bundles = bundle_sources(messages_of({kSource}), catalogs, "en");
  EXPECT_EQ(names_of(bundles), (Names{"root", "de", "en"}));
  EXPECT_EQ(bundles[2].tables.at("STRING_TABLE"), (BundleTable{{"A", "better text"}}));
}

TEST(BundleSources, EachWithTexts_SaysWhatTheyWereBuiltFrom) {
  const std::vector<LanguageCatalog> catalogs = {{"de", {}, {{"A", "Text"}}}};
  const std::vector<BundleSource> bundles = bundle_sources(messages_of({kSource}), catalogs, "en");
  const BundleTable table = {{"A", qzlog_tool::source_digest("text%_%TIMESTAMP%")}};
  EXPECT_EQ(bundles[0].tables.at(qzlog_tool::kSourceTable), table);
  EXPECT_EQ(bundles[2].tables.at(qzlog_tool::kSourceTable), table);
}

}  // namespace
}  // namespace qzlog_catalog
