#include "tools/templates/message_catalog.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_tool::CatalogBundle;
using qzlog_tool::read_catalog;

class MessageCatalog : public ::testing::Test {
 protected:
  void build(const std::string& locale, const std::string& content) const {
    const std::string source = folder_.write(locale + ".txt", locale + " { " + content + " }");
    const std::string line =
        "genrb --quiet --encoding UTF-8 --destdir '" + folder_.path() + "' '" + source + "' >/dev/null";
    ASSERT_EQ(std::system(line.c_str()), 0);
  }
  std::vector<CatalogBundle> read() const { return read_catalog(folder_.path()); }

  qz_test::TempDir folder_;
};

TEST_F(MessageCatalog, Bundles_RootFirstThenByName) {
  build("root", "STRING_TABLE { A { \"a\" } }");
  build("ja", "STRING_TABLE { A { \"\u3042\" } }");
  build("de", "STRING_TABLE { A { \"\u00E4\" } }");
  const auto bundles = read();
  ASSERT_EQ(bundles.size(), 3U);
  EXPECT_EQ(bundles[0].locale + bundles[1].locale + bundles[2].locale, "rootdeja");
  EXPECT_EQ(bundles[1].templates, (std::map<std::string, std::string>{{"A", "\u00E4"}}));
}

TEST_F(MessageCatalog, TableOfItsOwn_GetsNothingFromTheParents) {
  build("root", "STRING_TABLE { A { \"a\" } B { \"b\" } }");
  build("de", "STRING_TABLE { A { \"\u00E4\" } }");
  const auto bundles = read();
  EXPECT_EQ(bundles.at(1).templates.count("B"), 0U);
  EXPECT_TRUE(bundles.at(1).has_own_table);
}

TEST_F(MessageCatalog, NoTable_GetsThatOfTheParents) {
  build("root", "STRING_TABLE { A { \"a\" } }");
  build("en", "");
  const auto bundles = read();
  EXPECT_FALSE(bundles.at(1).has_own_table);
  EXPECT_EQ(bundles.at(1).templates.at("A"), "a");
}

TEST_F(MessageCatalog, WhatIsNoText_IsNoMessage) {
  build("root", "STRING_TABLE { A { \"a\" } B:int { 7 } C { \"x\", \"y\" } }");
  EXPECT_EQ(read().at(0).templates.size(), 1U);
}

TEST_F(MessageCatalog, WhatTextsWereBuiltFrom_IsReadOfTheBundleThatHasThem) {
  build("root", "SOURCE_TABLE { A { \"1\" } B:int { 7 } } STRING_TABLE { A { \"a\" } }");
  build("de", "SOURCE_TABLE { A { \"2\" } } STRING_TABLE { A { \"b\" } }");
  build("en", "");
  build("fr", "STRING_TABLE { A { \"c\" } }");
  const auto bundles = read();
  using Sources = std::map<std::string, std::string>;
  EXPECT_EQ(bundles.at(0).sources, (Sources{{"A", "1"}}));
  EXPECT_EQ(bundles.at(1).sources, (Sources{{"A", "2"}}));
  EXPECT_EQ(bundles.at(2).sources, (Sources{{"A", "1"}})) << "its texts are the root's";
  EXPECT_EQ(bundles.at(3).sources, Sources()) << "its texts are not the root's";
}

TEST_F(MessageCatalog, NoBundles_CannotRun) {
  try {
    read();
    ADD_FAILURE() << "an empty folder was read";
  } catch (const qzlog_tool::CommandError& error) {
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
  }
}

/// ICU opens the root bundle in its place.
TEST_F(MessageCatalog, FileOfAnotherFormatVersion_IsNotTakenForAnother) {
  build("root", "STRING_TABLE { A { \"a\" } }");
  build("de", "STRING_TABLE { A { \"b\" } }");
  std::string bytes = folder_.read("de.res");
  bytes.replace(12, 4, "ResX");
  folder_.write("de.res", bytes);
  EXPECT_NE(read().at(1).failure, "");
}

TEST_F(MessageCatalog, WhatIsNoFile_IsNoBundleAndNotWaitedFor) {
  build("root", "STRING_TABLE { A { \"a\" } }");
  ASSERT_EQ(::mkfifo(folder_.path("de.res").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", folder_.path("fr.res"));
  std::filesystem::create_directory(folder_.path("ja.res"));
  const auto bundles = read();
  ASSERT_EQ(bundles.size(), 4U);
  EXPECT_EQ(bundles[0].failure, "");
  for (std::size_t i = 1; i < bundles.size(); ++i) EXPECT_EQ(bundles[i].failure, "it is not a regular file") << i;
}

TEST_F(MessageCatalog, LocalesWithScriptAndRegion_AreOpened) {
  build("root", "STRING_TABLE { A { \"a\" } }");
  build("zh_Hant_TW", "STRING_TABLE { A { \"b\" } }");
  build("pt_BR", "STRING_TABLE { A { \"c\" } }");
  const auto bundles = read();
  EXPECT_EQ(bundles.at(1).templates.at("A"), "c");
  EXPECT_EQ(bundles.at(2).templates.at("A"), "b");
}

/// ICU itself would read behind the end of the shorter ones.
TEST_F(MessageCatalog, EveryPrefixOfABundle_IsDamaged) {
  build("root", "STRING_TABLE { A { \"a text of a message\" } }");
  const std::string whole = folder_.read("root.res");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    folder_.write("root.res", whole.substr(0, size));
    EXPECT_NE(read().at(0).failure, "") << size;
  }
  folder_.write("root.res", whole);
  EXPECT_EQ(read().at(0).failure, "");
}

TEST_F(MessageCatalog, AnyByteChanged_ReadOrDamaged) {
  build("root", "STRING_TABLE { A { \"a text of a message\" } B { \"another\" } C:int { 7 } } D { \"x\", \"y\" }");
  const std::string whole = folder_.read("root.res");
  unsigned damaged = 0;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    std::string changed = whole;
    changed[i] = static_cast<char>(changed[i] ^ 1 << i % 8);
    folder_.write("root.res", changed);
    const CatalogBundle bundle = read().at(0);
    damaged += bundle.failure.empty() ? 0U : 1U;
    EXPECT_LE(bundle.templates.size(), 2U) << i;
  }
  EXPECT_GT(damaged, whole.size() / 8);
}

TEST_F(MessageCatalog, ParentIsDamaged_SaysWhichBundle) {
  build("root", "STRING_TABLE { A { \"a\" } }");
  build("de", "STRING_TABLE { A { \"b\" } }");
  const std::string whole = folder_.read("root.res");
  folder_.write("root.res", whole.substr(0, whole.size() - 4));
  EXPECT_EQ(read().at(0).failure, "the file is shorter than the bundle in it");
  EXPECT_EQ(read().at(1).failure, "it needs the bundle 'root': the file is shorter than the bundle in it");
}

}  // namespace
