#include "tools/logs/log_reading.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/temp_dir.h"
#include "tools/logs/unreadable_input.h"

namespace qzlog_tool {
namespace {

using Texts = std::vector<std::string>;

/// Keeps the lines that are no entries, which without definitions are all.
class LogReadingTest : public ::testing::Test, public qz_LOG_LineErrorHandler {
 protected:
  void TakeLineError(const qz_LOG_LineError& error) override { lines_.emplace_back(error.source, error.source_length); }

  LogReading reading() {
    return {.output = output_,
            .handler = *this,
            .read =
                [](qz_LOG_EntryReader& reader) {
                  qz_LOG_EntryLine line;
                  while (reader.Next(line)) ADD_FAILURE() << "an entry";
                },
            .fail = [this](const std::string& reason) { failures_.push_back(reason); }};
  }

  qz_test::TempDir folder_;
  BufferedOutput output_{1, "standard output"};
  Texts lines_;
  Texts failures_;
};

TEST_F(LogReadingTest, SeveralOperands_AreReadInTheirOrder) {
  const std::string first = folder_.write("b", "1\n2\n");
  const std::string second = folder_.write("a", "3\n");
  EXPECT_TRUE(read_logs({first, second}, reading()));
  EXPECT_EQ(lines_, (Texts{"1", "2", "3"}));
  EXPECT_EQ(failures_, Texts());
}

TEST_F(LogReadingTest, WhatCannotBeRead_IsToldAndTheRestIsRead) {
  const std::string missing = folder_.path() + "/missing";
  const std::string file = folder_.write("a", "1\n");
  EXPECT_FALSE(read_logs({missing, folder_.path() + "/", file}, reading()));
  EXPECT_EQ(failures_,
            (Texts{"cannot open '" + missing + "': No such file or directory",
                   "the folder '" + folder_.path() + "/' has no log: neither files PREFIX.YYYYMMDD.NNNN nor *.jsonl"}));
  EXPECT_EQ(lines_, Texts{"1"});
}

TEST_F(LogReadingTest, FileThatIsGone_IsAFailureWhereItWasNamed) {
  const std::string missing = folder_.path() + "/missing";
  EXPECT_TRUE(read_log(missing, true, reading()));
  EXPECT_EQ(failures_, Texts());
  EXPECT_FALSE(read_log(missing, false, reading()));
  EXPECT_EQ(failures_.size(), 1U);
}

TEST_F(LogReadingTest, Complete_OpensNoOtherFile) {
  const std::string file = folder_.write("a.jsonl", "1\n");
  folder_.write("b.jsonl", "2\n");
  LogReading until_first = reading();
  until_first.is_complete = [this] { return !lines_.empty(); };
  EXPECT_TRUE(read_logs({folder_.path(), file, folder_.path() + "/missing"}, until_first));
  EXPECT_EQ(lines_, Texts{"1"});
  EXPECT_EQ(failures_, Texts());
}

}  // namespace
}  // namespace qzlog_tool
