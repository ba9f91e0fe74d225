#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "tests/tools/catalog/source_messages.h"
#include "tests/tools/command_fixture.h"

namespace qzlog_catalog {
namespace {

using qzlog_test::CommandResult;

using Names = std::set<std::string>;

/// What `qzlog catalog build` does to the folder that it writes to.
class CatalogFolderCommand : public qzlog_test::CommandFixture {
 protected:
  CatalogFolderCommand() {
    std::filesystem::create_directories(folder_.path("po"));
    std::filesystem::create_directories(folder_.path("messages"));
    write("storage.yaml", qzlog_test::kStorageSource);
    write("po/de.po", po_header("de") + po_message("disk.full.lock", "{Name} is locked", "{Name} ist gesperrt"));
    write("po/ja.po", po_header("ja"));
  }

  CommandResult build(const std::string& options = "") const {
    return run("$QZLOG catalog build storage.yaml --po po -o messages " + options);
  }
  void expect_built(const std::string& messages = "", const std::string& options = "") const {
    const CommandResult result = build(options);
    EXPECT_EQ(result.err, messages);
    EXPECT_EQ(result.status, 0);
  }

  Names files() const {
    Names names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path("messages"))) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }
  void remove(const std::string& name) const { std::filesystem::remove(folder_.path(name)); }
  std::string rendered_in(const std::string& locale) const {
    write("entries.jsonl", "{\"id\":1001,\"attributes\":{\"Name\":\"vol1\",\"Reason\":11}}\n");
    return run("$QZLOG render --definitions storage.yaml --catalog messages --locale " + locale + " entries.jsonl").out;
  }
};

constexpr const char* kManifest = "qzlog-catalog.json";

TEST_F(CatalogFolderCommand, LanguageThatIsTakenAway_LeavesTheCatalog) {
  expect_built();
  EXPECT_EQ(files(), (Names{"de.res", "en.res", "ja.res", kManifest, "root.res"}));
  remove("po/ja.po");
  expect_built("qzlog: removed 'messages/ja.res', which is not part of the catalog any more\n");
  EXPECT_EQ(files(), (Names{"de.res", "en.res", kManifest, "root.res"}));
  expect_built();
  EXPECT_EQ(rendered_in("ja_JP"), "vol1 is locked\n");
}

TEST_F(CatalogFolderCommand, SourceLanguageThatChanges_LeavesNoEmptyBundle) {
  expect_built();
  expect_built("qzlog: removed 'messages/en.res', which is not part of the catalog any more\n", "--source-language fr");
  EXPECT_EQ(files(), (Names{"de.res", "fr.res", "ja.res", kManifest, "root.res"}));
}

TEST_F(CatalogFolderCommand, FileOfABundlesNameThatWasNotMade_IsNotReplaced) {
  write("messages/de.res", "precious");
  const CommandResult result = build();
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "messages/de.res: error: 'qzlog catalog build' did not make this file and does not replace it "
            "[foreign-bundle]\n  hint: move it away, or let --adopt replace it\n");
  EXPECT_EQ(files(), (Names{"de.res"}));
  EXPECT_EQ(read("messages/de.res"), "precious");
}

TEST_F(CatalogFolderCommand, FileThatWasChangedSinceItWasMade_IsNotReplaced) {
  expect_built();
  write("messages/de.res", "patched by hand");
  write("po/de.po", po_header("de"));
  EXPECT_EQ(build().status, 1);
  EXPECT_EQ(read("messages/de.res"), "patched by hand");
  expect_built("", "--adopt");
  EXPECT_EQ(rendered_in("de_DE"), "vol1 is locked\n");
}

TEST_F(CatalogFolderCommand, BundleOfALanguageThatIsNotMade_IsLeftWithAWarning) {
  write("messages/fr.res", "precious");
  expect_built(
      "messages/fr.res: warning: 'qzlog catalog build' did not make this bundle as it is now and leaves it; readers of "
      "fr get its "
      "messages [foreign-bundle]\n  hint: take it away unless it is meant to be there\n",
      "--adopt");
  EXPECT_EQ(read("messages/fr.res"), "precious");
}

TEST_F(CatalogFolderCommand, CatalogWithoutAManifest_IsAdoptedWhereItIsTheSame) {
  expect_built();
  remove(std::string("messages/") + kManifest);
  expect_built();
  EXPECT_EQ(files().count(kManifest), 1U);
  remove("po/ja.po");
  EXPECT_EQ(build().status, 0);
  EXPECT_EQ(files().count("ja.res"), 0U);
}

TEST_F(CatalogFolderCommand, FileThatIsNoBundle_IsNobodysBusiness) {
  write("messages/README", "about these messages");
  expect_built();
  EXPECT_EQ(read("messages/README"), "about these messages");
}

TEST_F(CatalogFolderCommand, SecondBuild_RewritesNothing) {
  expect_built();
  const std::string listing = run("ls -li --time-style=full-iso messages").out;
  expect_built();
  EXPECT_EQ(run("ls -li --time-style=full-iso messages").out, listing);
}

TEST_F(CatalogFolderCommand, FolderThatAnotherBuildUpdates_IsWaitedFor) {
  const CommandResult result = run("flock messages timeout 2 $QZLOG catalog build storage.yaml --po po -o messages");
  EXPECT_EQ(result.status, 124) << result.err;
  EXPECT_EQ(files(), Names());
  expect_built();
}

TEST_F(CatalogFolderCommand, ManifestThatNamesFilesOutside_RemovesNone) {
  expect_built();
  write("victim.res", "precious");
  const std::string digest(16, '0');
  for (const std::string name :
       {"../victim.res", "/etc/victim.res", "de.res/../../victim.res", "..", "victim", ".res"}) {
    write(std::string("messages/") + kManifest, "{\"format\": 1, \"bundles\": {\"" + name + "\": \"" + digest + "\"}}");
    const CommandResult result = build("--adopt");
    EXPECT_EQ(result.status, 1) << name;
    EXPECT_NE(result.err.find("[bad-manifest]"), std::string::npos) << result.err;
  }
  EXPECT_EQ(read("victim.res"), "precious");
  EXPECT_EQ(files().size(), 5U);
}

}  // namespace
}  // namespace qzlog_catalog
