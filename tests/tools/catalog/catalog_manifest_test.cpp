#include "tools/catalog/catalog_manifest.h"

#include <gtest/gtest.h>

#include <string>

namespace qzlog_catalog {
namespace {

const CatalogManifest kFinished = {{{"de.res", "0123456789abcdef"}, {"root.res", "0000000000000001"}}, {}};
const CatalogManifest kUnfinished = {{{"de.res", "0123456789abcdef"}}, {{"de.res", "0000000000000002"}}};

std::string failure_of(const std::string& text) {
  std::string failure;
  read_manifest(text, failure);
  return failure;
}

TEST(WriteManifest, Text_IsAsTheHeaderHasIt) {
  EXPECT_EQ(write_manifest(kFinished),
            "{\n"
            "  \"made by\": \"qzlog catalog build\",\n"
            "  \"format\": 1,\n"
            "  \"bundles\": {\n"
            "    \"de.res\": \"0123456789abcdef\",\n"
            "    \"root.res\": \"0000000000000001\"\n"
            "  }\n"
            "}\n");
}

TEST(ReadManifest, WhatWasWritten_IsReadBack) {
  for (const CatalogManifest& manifest : {CatalogManifest(), kFinished, kUnfinished}) {
    std::string failure;
    EXPECT_EQ(read_manifest(write_manifest(manifest), failure), manifest);
    EXPECT_EQ(failure, "");
  }
}

TEST(ReadManifest, EveryPrefix_IsDamaged) {
  const std::string whole = write_manifest(kUnfinished);
  for (std::size_t size = 0; size + 2 < whole.size(); ++size) EXPECT_NE(failure_of(whole.substr(0, size)), "") << size;
}

TEST(ReadManifest, DamagedText_SaysWhatIsWrong) {
  EXPECT_EQ(failure_of("{"), "it is no JSON");
  EXPECT_EQ(failure_of("[]"), "it is no JSON object");
  EXPECT_EQ(failure_of("{}"), "its format is not 1, the one that this command knows");
  EXPECT_EQ(failure_of("{\"format\": 2, \"bundles\": {}}"), "its format is not 1, the one that this command knows");
  EXPECT_EQ(failure_of("{\"format\": 1}"), "it has no list 'bundles'");
  EXPECT_EQ(failure_of("{\"format\": 1, \"bundles\": [\"de.res\"]}"), "it has no list 'bundles'");
  EXPECT_EQ(failure_of("{\"format\": 1, \"bundles\": {\"de.res\": 7}}"), "the digest of 'de.res' is none");
  EXPECT_EQ(failure_of("{\"format\": 1, \"bundles\": {\"de.res\": \"7\"}}"), "the digest of 'de.res' is none");
  EXPECT_EQ(failure_of("{\"format\": 1, \"bundles\": {\"../de.res\": \"0123456789abcdef\"}}"),
            "'../de.res' is no name of a bundle");
  EXPECT_EQ(failure_of("{\"format\": 1, \"bundles\": {}, \"unfinished\": {\"/de.res\": \"0123456789abcdef\"}}"),
            "'/de.res' is no name of a bundle");
}

TEST(ReadManifest, DeepNesting_IsNoDanger) {
  EXPECT_EQ(failure_of(std::string(1'000'000, '[')), "it is no JSON");
  EXPECT_EQ(failure_of(std::string(500'000, '[') + std::string(500'000, ']')), "it is no JSON object");
}

TEST(CatalogManifestLists, FileWithItsContent_OfEitherList) {
  EXPECT_TRUE(kUnfinished.lists("de.res", "0123456789abcdef"));
  EXPECT_TRUE(kUnfinished.lists("de.res", "0000000000000002"));
  EXPECT_FALSE(kUnfinished.lists("de.res", "0000000000000003"));
  EXPECT_FALSE(kUnfinished.lists("ja.res", "0123456789abcdef"));
}

TEST(IsBundleFileName, NamesThatLeadOutOfTheFolder_AreNone) {
  for (const char* const name : {"root.res", "de.res", "zh_Hant_TW.res"})
    EXPECT_TRUE(is_bundle_file_name(name)) << name;
  for (const std::string name : {"", ".res", "de", "de.txt", "../de.res", "a/de.res", "/de.res", "..res", "de.res/",
                                 "a\\de.res", "de.res.", "de .res", "d\xC3\xA9.res"}) {
    EXPECT_FALSE(is_bundle_file_name(name)) << name;
  }
  EXPECT_FALSE(is_bundle_file_name(std::string("de\0.res", 7)));
}

}  // namespace
}  // namespace qzlog_catalog
