#include "tools/logs/log_inputs.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tools/logs/unreadable_input.h"

namespace qzlog_tool {
namespace {

using Paths = std::vector<std::string>;

class LogInputs : public ::testing::Test {
 protected:
  void make(const Paths& names) const {
    for (const std::string& name : names) folder_.write(name, "");
  }
  /// The paths without the folder.
  Paths files(const std::string& operand) const {
    Paths names;
    for (const std::string& path : input_files(operand).paths) {
      EXPECT_EQ(path.rfind(folder_.path() + "/", 0), 0U) << path;
      names.push_back(path.substr(folder_.path().size() + 1));
    }
    return names;
  }
  std::string refusal(const std::string& operand) const {
    try {
      input_files(operand);
    } catch (const UnreadableInput& error) {
      return error.what();
    }
    return "";
  }

  qz_test::TempDir folder_;
};

TEST_F(LogInputs, FileAndStandardInput_StandForThemselves) {
  make({"a.jsonl"});
  EXPECT_EQ(files(folder_.path("a.jsonl")), Paths{"a.jsonl"});
  EXPECT_EQ(files(folder_.path("none")), Paths{"none"});
  EXPECT_FALSE(input_files(folder_.path("none")).were_found);
  EXPECT_EQ(input_files("-").paths, Paths{"-"});
  EXPECT_EQ(input_files("").paths, Paths{""});
}

TEST_F(LogInputs, Folder_StandsForItsSeriesAndThenForItsFilesOfLines) {
  make({"shop.20261122.0001", "shop.20261121.0002", "shop.20261121.10000", "shop.20261121.0001", "shop.20261121.0000",
        "a.b.20261121.0001", "shop2.20261121.0003", "z.jsonl", "a.jsonl", ".hidden.jsonl", ".shop_lock", "notes.txt",
        ".shop_pending.1.20261121.0001", "shop.20261121.000x", ".20261121.0001", "x.jsonl.1"});
  std::filesystem::create_directory(folder_.path("folder.jsonl"));
  ASSERT_EQ(::mkfifo(folder_.path("pipe.jsonl").c_str(), 0600), 0);
  EXPECT_EQ(files(folder_.path()), (Paths{"a.b.20261121.0001", "shop.20261121.0001", "shop.20261121.0002",
                                          "shop.20261122.0001", "shop2.20261121.0003", "a.jsonl", "z.jsonl"}));
  EXPECT_TRUE(input_files(folder_.path()).were_found);
  EXPECT_EQ(files(folder_.path() + "/"), files(folder_.path()));
}

TEST_F(LogInputs, Series_IsNamedByItsFolderAndPrefix) {
  make({"shop.20261122.0001", "shop.20261121.0002", "shopping.20261121.0001"});
  EXPECT_EQ(files(folder_.path("shop")), (Paths{"shop.20261121.0002", "shop.20261122.0001"}));
  make({"shop"});
  EXPECT_EQ(files(folder_.path("shop")), Paths{"shop"});
}

TEST_F(LogInputs, SeriesOfTheWorkingFolder_HasNoFolderInItsPaths) {
  EXPECT_EQ(series_of("shop"), (LogSeries{"", "shop"}));
  EXPECT_EQ(series_of("/shop"), (LogSeries{"/", "shop"}));
  EXPECT_EQ(series_of("logs/shop"), (LogSeries{"logs", "shop"}));
  EXPECT_EQ(series_of("logs/"), std::nullopt);
  EXPECT_EQ((LogSeries{"", "shop"}.path_of({20261121, 7})), "shop.20261121.0007");
  EXPECT_EQ((LogSeries{"/", "shop"}.path_of({20261121, 7})), "/shop.20261121.0007");
  EXPECT_EQ((LogSeries{"logs/", "shop"}.path_of({20261121, 9999})), "logs/shop.20261121.9999");
}

TEST_F(LogInputs, FolderWithoutLogs_IsRefused) {
  make({"notes.txt"});
  EXPECT_EQ(refusal(folder_.path()),
            "the folder '" + folder_.path() + "' has no log: neither files PREFIX.YYYYMMDD.NNNN nor *.jsonl");
}

TEST_F(LogInputs, FolderThatCannotBeRead_IsRefused) {
  EXPECT_EQ(refusal("/proc/self/fdinfo/"),
            "the folder '/proc/self/fdinfo/' has no log: neither files PREFIX.YYYYMMDD.NNNN nor *.jsonl");
  EXPECT_THROW(logs_in(folder_.path("none")), UnreadableInput);
}

TEST_F(LogInputs, SeriesOfAFolderThatIsNotThere_IsEmpty) {
  EXPECT_TRUE(series_files({folder_.path("none"), "shop"}).empty());
}

}  // namespace
}  // namespace qzlog_tool
