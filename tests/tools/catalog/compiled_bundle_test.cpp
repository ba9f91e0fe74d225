#include "tools/catalog/compiled_bundle.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/seeded_random.h"
#include "tools/catalog/genrb.h"
#include "tools/catalog/resource_bundle.h"

namespace qzlog_catalog {
namespace {

std::string compiled(const std::string& source) { return run_genrb("genrb", {{"root", source}}).at(0).content; }

TEST(IsWholeBundle, WhatGenrbMakes_IsWhole) {
  EXPECT_TRUE(is_whole_bundle(compiled(bundle_source("root", {{"a", "x"}, {"b", "\u6F22"}}))));
  EXPECT_TRUE(is_whole_bundle(compiled(empty_bundle_source("root"))));
}

TEST(IsWholeBundle, EveryPrefixAndWhatIsLonger_IsNot) {
  const std::string bundle = compiled(bundle_source("root", {{"a", "x"}}));
  for (std::size_t size = 0; size < bundle.size(); ++size)
    EXPECT_FALSE(is_whole_bundle(bundle.substr(0, size))) << size;
  EXPECT_FALSE(is_whole_bundle(bundle + '\0'));
}

TEST(IsWholeBundle, OtherFiles_AreNot) {
  EXPECT_FALSE(is_whole_bundle(std::string(1000, '\0')));
  EXPECT_FALSE(is_whole_bundle(std::string(1000, '\xFF')));
  std::string other_format = compiled(bundle_source("root", {{"a", "x"}}));
  other_format[12] = 'X';
  EXPECT_FALSE(is_whole_bundle(other_format));
}

TEST(IsWholeBundle, FlippedBytes_AreReadWithinTheFile) {
  qz_test::SeededRandom random;
  SCOPED_TRACE(random.trace());
  const std::string bundle = compiled(bundle_source("root", {{"a", "x"}}));
  int whole = 0;
  for (int round = 0; round < 2000; ++round) {
    std::string damaged = bundle;
    damaged[static_cast<std::size_t>(random.between(0, 79))] = static_cast<char>(random.between(0, 255));
    if (is_whole_bundle(damaged)) ++whole;
  }
  EXPECT_LT(whole, 2000);
}

}  // namespace
}  // namespace qzlog_catalog
