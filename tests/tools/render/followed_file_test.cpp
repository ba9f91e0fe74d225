#include "tools/render/followed_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/seeded_random.h"
#include "tests/support/temp_dir.h"

namespace qzlog_tool {
namespace {

class FollowedFileTest : public ::testing::Test {
 protected:
  void append(const std::string& text) const { std::ofstream(path_, std::ios::app) << text; }
  void cut(std::uintmax_t size) const { std::filesystem::resize_file(path_, size); }

  FollowedFile open() const { return FollowedFile(FileDescriptor(open_path(path_, O_RDONLY | O_CLOEXEC)), "the log"); }
  /// Everything that is to be had, in pieces of so many bytes; "|" is the end.
  static std::string read(FollowedFile& file, std::size_t piece = 4096) {
    std::string text;
    std::string buffer(piece, ' ');
    try {
      while (const std::size_t count = file.Read(buffer.data(), piece)) text.append(buffer, 0, count);
    } catch (const NothingYet&) {
      return text;
    }
    return text + "|";
  }
  /// The same, after a look.
  static std::string look(FollowedFile& file, std::size_t piece = 4096) {
    return file.look() ? read(file, piece) : "shorter";
  }

  qz_test::TempDir folder_;
  std::string path_ = folder_.write("log", "");
};

TEST_F(FollowedFileTest, Lines_AreGivenOutOnceTheyAreWhole) {
  FollowedFile file = open();
  EXPECT_EQ(look(file), "");
  append("one\ntw");
  EXPECT_EQ(look(file), "one\n");
  append("o");
  EXPECT_EQ(look(file), "");
  append("\nthree\n");
  EXPECT_TRUE(file.look());
  EXPECT_TRUE(file.has_lines());
  EXPECT_EQ(read(file, 3), "two\nthree\n");
  EXPECT_FALSE(file.has_lines());
  EXPECT_EQ(look(file), "");
}

TEST_F(FollowedFileTest, WhatComesAfterTheLook_WaitsForTheNext) {
  append("one\n");
  FollowedFile file = open();
  EXPECT_TRUE(file.look());
  append("two\n");
  EXPECT_EQ(read(file), "one\n");
  EXPECT_EQ(look(file), "two\n");
}

TEST_F(FollowedFileTest, Finish_GivesOutALineWithoutItsEndAndThenIsTheEnd) {
  append("one\ntw");
  FollowedFile file = open();
  EXPECT_EQ(look(file), "one\n");
  file.finish();
  EXPECT_EQ(read(file), "tw|");
  EXPECT_EQ(read(file), "|");
}

TEST_F(FollowedFileTest, PartOfALineThatIsTakenBack_IsNoLoss) {
  append("one\nbad");
  FollowedFile file = open();
  EXPECT_EQ(look(file), "one\n");
  cut(4);
  EXPECT_EQ(look(file), "");
  append("two\n");
  EXPECT_EQ(look(file), "two\n");
  append("ba");
  EXPECT_EQ(look(file), "");
  cut(8);
  append("three\n");  // taken back and written over unseen
  EXPECT_EQ(look(file), "three\n");
}

TEST_F(FollowedFileTest, FileThatBecameShorter_IsReadAgainFromItsBeginning) {
  append("one\ntwo\n");
  FollowedFile file = open();
  EXPECT_EQ(look(file), "one\ntwo\n");
  cut(0);
  append("new\n");
  EXPECT_EQ(look(file), "shorter");
  file.begin_again();
  EXPECT_EQ(look(file), "new\n");
}

TEST_F(FollowedFileTest, FileThatIsCutBetweenLookAndReading_IsSeenAtTheNextLook) {
  append("one\ntwo\n");
  FollowedFile file = open();
  EXPECT_EQ(look(file), "one\ntwo\n");
  append("three\n");
  EXPECT_TRUE(file.look());
  cut(0);
  EXPECT_EQ(read(file), "");
  EXPECT_EQ(look(file), "shorter");
}

TEST_F(FollowedFileTest, DeletedAndEmptyFiles_AreKnown) {
  FollowedFile file = open();
  EXPECT_TRUE(file.look());
  EXPECT_TRUE(file.is_empty());
  EXPECT_FALSE(file.is_deleted());
  append("one\n");
  std::filesystem::remove(path_);
  EXPECT_EQ(look(file), "one\n");
  EXPECT_FALSE(file.is_empty());
  EXPECT_TRUE(file.is_deleted());
}

TEST_F(FollowedFileTest, LongLines_AreGivenOutWhole) {
  FollowedFile file = open();
  const std::string piece(700'000, 'x');
  for (int count = 0; count < 5; ++count) {
    append(piece);
    EXPECT_EQ(look(file), "");
  }
  append("\n");
  EXPECT_EQ(look(file), piece + piece + piece + piece + piece + "\n");
}

TEST_F(FollowedFileTest, LongLineThatIsTakenBack_IsNoLoss) {
  FollowedFile file = open();
  append("one\n" + std::string(3'000'000, 'x'));
  EXPECT_EQ(look(file), "one\n");
  cut(4);
  append("two\n");
  EXPECT_EQ(look(file), "two\n");
}

TEST_F(FollowedFileTest, RandomPieces_ComeOutAsTheyWentIn) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 20; ++round) {
    cut(0);
    FollowedFile file = open();
    std::string written;
    std::string seen;
    for (int step = 0; step < 60; ++step) {
      std::string piece = random.text(random.below(random.one_in(10) ? 200'000 : 30));
      for (char& character : piece) {
        if (random.one_in(20)) character = '\n';
      }
      append(piece);
      written += piece;
      if (random.one_in(2)) seen += look(file, 1 + random.below(5000));
      ASSERT_TRUE(seen.empty() || seen.back() == '\n');
    }
    seen += look(file);
    EXPECT_EQ(seen, written.substr(0, written.rfind('\n') + 1));
    file.finish();
    EXPECT_EQ(seen + read(file), written + "|");
  }
}

}  // namespace
}  // namespace qzlog_tool
