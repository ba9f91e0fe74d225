#include "tools/catalog/compiled_bundle.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/catalog/genrb.h"

namespace qzlog_catalog {
namespace {

const std::vector<CatalogText> kTexts = {{"a", "x"}, {"b", "\u00FC\U0001F600"}, {"c", ""}};
const std::vector<CatalogSource> kSources = {{"a", "01234567"}, {"b", "fedcba98"}};

std::string compiled(const BundleSource& source) { return run_genrb("genrb", {source}).at(0).content; }

TEST(CompiledBundle, OfItsSource_HoldsIt) {
  for (const BundleSource& source : {bundle_source("de", kTexts, kSources), bundle_source("de", kTexts),
                                     bundle_source("de", {}), empty_bundle_source("de")}) {
    EXPECT_TRUE(is_compiled_from(compiled(source), source));
  }
}

TEST(CompiledBundle, OfAnotherSource_DoesNotHoldIt) {
  const std::vector<BundleSource> sources = {
      bundle_source("de", kTexts, kSources),
      bundle_source("de", kTexts, {{"a", "01234567"}}),                                   // lacks a digest
      bundle_source("de", kTexts, {{"a", "01234567"}, {"b", "fedcba99"}}),                // has another one
      bundle_source("de", kTexts),                                                        // lacks a table
      bundle_source("de", {{"a", "x"}, {"b", "\u00FC\U0001F600"}}, kSources),             // lacks a text
      bundle_source("de", {{"a", "x"}, {"b", "\u00FC"}, {"c", ""}}, kSources),            // has half of one
      bundle_source("de", {{"a", "x"}, {"b", "\u00FC\U0001F600"}, {"d", ""}}, kSources),  // has another key
      empty_bundle_source("de"),
      {"de", {{"OTHER_TABLE", {}}}},
  };
  for (std::size_t made = 0; made < sources.size(); ++made) {
    const std::string bundle = compiled(sources[made]);
    for (std::size_t meant = 0; meant < sources.size(); ++meant) {
      EXPECT_EQ(is_compiled_from(bundle, sources[meant]), made == meant) << made << ' ' << meant;
    }
  }
}

// What is cut off may belong to no text.
TEST(CompiledBundle, CutAnywhereOrContinued_DoesNotHoldIt) {
  const BundleSource source = bundle_source("de", kTexts, kSources);
  const std::string bundle = compiled(source);
  for (std::size_t size = 0; size < bundle.size(); ++size) {
    EXPECT_FALSE(is_compiled_from(bundle.substr(0, size), source)) << size;
  }
  EXPECT_FALSE(is_compiled_from(bundle + '\0', source));
  EXPECT_FALSE(is_compiled_from(bundle + bundle, source));
}

TEST(CompiledBundle, WithAChangedCharacter_DoesNotHoldIt) {
  const BundleSource source = bundle_source("de", {{"a", "text"}}, {{"a", "01234567"}});
  const std::string bundle = compiled(source);
  const std::vector<std::string> parts = {"STRING_TABLE", "SOURCE_TABLE", std::string("t\0e\0x\0t\0", 8),
                                          std::string("0\0001\0002\0003\0", 8)};
  for (const std::string& part : parts) {
    std::string changed = bundle;
    changed.at(bundle.find(part)) = 'Z';
    EXPECT_FALSE(is_compiled_from(changed, source)) << part;
  }
}

}  // namespace
}  // namespace qzlog_catalog
