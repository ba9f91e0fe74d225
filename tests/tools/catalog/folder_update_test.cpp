#include "tools/catalog/folder_update.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tests/tools/catalog/source_messages.h"
#include "tools/system/command_error.h"
#include "tools/system/content_digest.h"

namespace qzlog_catalog {
namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;
using Bundles = std::vector<NamedBundle>;

class FolderUpdateTest : public ::testing::Test {
 protected:
  /// What was said, and what was removed.
  std::string update(const Bundles& bundles, bool adopt = false) const {
    Findings findings;
    FolderUpdate update(path(), bundles);
    if (!update.prepare(adopt, findings)) return printed(findings);
    std::string said = printed(findings);
    for (const std::string& removed : update.carry_out()) said += "removed " + removed + '\n';
    return said;
  }

  std::string path() const { return folder_.path(); }
  std::string in_folder(const std::string& name) const { return path() + '/' + name; }

  /// The files beside the manifest.
  Files files() const {
    Files result;
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
      const std::string name = entry.path().filename().string();
      if (name != kManifestName) result[name] = folder_.read(name);
    }
    return result;
  }
  CatalogManifest manifest() const {
    std::string failure;
    const CatalogManifest result = read_manifest(folder_.read(kManifestName), failure);
    EXPECT_EQ(failure, "");
    return result;
  }

  qz_test::TempDir folder_;
};

CatalogManifest::Digests digests_of(const Bundles& bundles) {
  CatalogManifest::Digests digests;
  for (const NamedBundle& bundle : bundles) digests[bundle.name + ".res"] = qzlog_tool::content_digest(bundle.content);
  return digests;
}

Files files_of(const Bundles& bundles) {
  Files files;
  for (const NamedBundle& bundle : bundles) files[bundle.name + ".res"] = bundle.content;
  return files;
}

const Bundles kFirst = {{"root", "r1"}, {"de", "d1"}, {"ja", "j1"}};
const Bundles kSecond = {{"root", "r2"}, {"de", "d1"}, {"fr", "f2"}};
const Bundles kThird = {{"root", "r3"}, {"fr", "f3"}};

TEST_F(FolderUpdateTest, Folder_HoldsWhatWasMadeLast) {
  EXPECT_EQ(update(kFirst), "");
  EXPECT_EQ(files(), files_of(kFirst));
  EXPECT_EQ(update(kSecond), "removed " + in_folder("ja.res") + '\n');
  EXPECT_EQ(files(), files_of(kSecond));
  EXPECT_EQ(manifest(), (CatalogManifest{digests_of(kSecond), {}}));
}

// At every place between two steps, with the next build making something else again.
TEST_F(FolderUpdateTest, InterruptedUpdate_IsKnownToTheNext) {
  for (std::size_t written = 0; written <= kSecond.size(); ++written) {
    for (const bool removed : {false, true}) {
      update(kFirst, true);
      folder_.write(kManifestName, write_manifest({digests_of(kFirst), digests_of(kSecond)}));
      for (std::size_t i = 0; i < written; ++i) folder_.write(kSecond[i].name + ".res", kSecond[i].content);
      if (removed) fs::remove(in_folder("ja.res"));
      const std::string said = update(kThird);
      EXPECT_EQ(said.find("[foreign-bundle]"), std::string::npos) << said;
      EXPECT_EQ(files(), files_of(kThird)) << written << ' ' << removed;
    }
  }
}

// A folder in the place of the last bundle makes its writing fail.
TEST_F(FolderUpdateTest, UpdateThatFails_LeavesWhatTheNextCanFinish) {
  update(kFirst);
  Findings findings;
  FolderUpdate failing(path(), kSecond);
  ASSERT_TRUE(failing.prepare(false, findings));
  fs::remove(in_folder("root.res"));
  fs::create_directory(in_folder("root.res"));
  EXPECT_THROW(failing.carry_out(), qzlog_tool::CommandError);
  EXPECT_EQ(manifest(), (CatalogManifest{digests_of(kFirst), digests_of(kSecond)}));
  fs::remove(in_folder("root.res"));
  EXPECT_EQ(update(kThird), "removed " + in_folder("de.res") + "\nremoved " + in_folder("ja.res") + '\n');
  EXPECT_EQ(files(), files_of(kThird));
}

TEST_F(FolderUpdateTest, FileOfOurs_ThatSomeoneReplaced_IsNotRemoved) {
  update(kFirst);
  folder_.write("ja.res", "precious");
  EXPECT_EQ(update(kSecond),
            in_folder("ja.res") +
                ": warning: 'qzlog catalog build' did not make this bundle as it is now and leaves it; readers of "
                "ja get its messages [foreign-bundle]\n");
  EXPECT_EQ(folder_.read("ja.res"), "precious");
  EXPECT_EQ(manifest().bundles, digests_of(kSecond));
}

TEST_F(FolderUpdateTest, SeveralFilesInTheWay_AreAllNamedAndNothingIsWritten) {
  folder_.write("de.res", "x");
  fs::create_directory(in_folder("root.res"));
  const std::string said = update(kFirst);
  EXPECT_NE(said.find("de.res: error: "), std::string::npos) << said;
  EXPECT_NE(said.find("root.res: error: "), std::string::npos) << said;
  EXPECT_FALSE(fs::exists(in_folder("ja.res")));
  EXPECT_FALSE(fs::exists(in_folder(kManifestName)));
}

TEST_F(FolderUpdateTest, WhatIsNoFile_IsNotAdopted) {
  ASSERT_EQ(::mkfifo(in_folder("de.res").c_str(), 0600), 0);
  EXPECT_NE(update(kFirst, true).find("[foreign-bundle]"), std::string::npos);
  fs::remove(in_folder("de.res"));
  ASSERT_EQ(::mkfifo(in_folder(kManifestName).c_str(), 0600), 0);
  EXPECT_NE(update(kFirst, true).find("it is no file [bad-manifest]"), std::string::npos);
}

TEST_F(FolderUpdateTest, StaleLink_IsRemovedAndNotWhatItLeadsTo) {
  update(kFirst);
  fs::create_directory(in_folder("elsewhere"));
  folder_.write("elsewhere/ja.res", "j1");
  fs::remove(in_folder("ja.res"));
  fs::create_symlink("elsewhere/ja.res", in_folder("ja.res"));
  update(kSecond);
  EXPECT_FALSE(fs::is_symlink(in_folder("ja.res")));
  EXPECT_EQ(folder_.read("elsewhere/ja.res"), "j1");
}

// Taken for a file of somebody else's it would stay, and its readers would get old messages.
TEST_F(FolderUpdateTest, WhatCannotBeLookedAt_IsAnError) {
  update(kFirst);
  fs::remove(in_folder("ja.res"));
  fs::create_symlink(std::string(300, 'x'), in_folder("ja.res"));  // longer than a name may be
  EXPECT_THROW(update(kSecond), qzlog_tool::CommandError);
  fs::remove(in_folder("ja.res"));
  fs::create_symlink("ja.res", in_folder("ja.res"));  // in a circle
  EXPECT_NE(update(kSecond).find("[foreign-bundle]"), std::string::npos);
}

TEST_F(FolderUpdateTest, FolderThatDoesNotExist_HasNothingInTheWay) {
  Findings findings;
  EXPECT_TRUE(FolderUpdate(in_folder("new/folder"), kFirst).prepare(false, findings));
  EXPECT_EQ(printed(findings), "");
}

}  // namespace
}  // namespace qzlog_catalog
