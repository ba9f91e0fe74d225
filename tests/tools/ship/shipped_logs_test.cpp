#include "tools/ship/shipped_logs.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

/// Settles what it takes at once.
class Taker : public LineTaker {
 public:
  std::vector<LineVerdict> judge(std::string_view /*block*/) override { return {}; }
  bool take(std::string_view line, const LineVerdict& /*verdict*/, const ReadLine& at) override {
    if (most == 0) return false;
    --most;
    taken.append(line).append("|");
    settle(at);
    return true;
  }
  bool take_long_line(const ReadLine& at) override {
    taken += "long|";
    settle(at);
    return true;
  }
  void warn(const std::string& text) override { told += text + '\n'; }
  void complain(const std::string& text) override { told += text + '\n'; }
  void miss(const std::string& text) override { told += text + '\n'; }

  std::size_t most = SIZE_MAX;
  std::string taken;
  std::string told;

 private:
  static void settle(const ReadLine& at) { at.file->settled = at.end; }
};

class ShippedLogsTest : public ::testing::Test {
 protected:
  void append(const std::string& name, const std::string& text) const {
    std::ofstream(folder_.path(name), std::ios::app) << text;
  }
  std::string read(ShippedLogs& logs) {
    taker_.taken.clear();
    logs.look_for_files();
    logs.read(taker_);
    return taker_.taken;
  }

  qz_test::TempDir folder_;
  Taker taker_;
};

TEST_F(ShippedLogsTest, Files_AreReadInTheirOrderWhileTheyGrow) {
  append("s.20261122.0001", "three\n");
  append("s.20261121.0002", "two\n");
  append("s.20261121.0001", "one\n");
  ShippedLogs logs({folder_.path("s")});
  EXPECT_EQ(read(logs), "one|two|three|");
  append("s.20261122.0001", "four\nfi");
  append("s.20261121.0001", "late\n");
  EXPECT_EQ(read(logs), "late|four|");
  append("s.20261122.0001", "ve\n");
  append("s.20261122.0002", "six\n");
  EXPECT_EQ(read(logs), "five|six|");
  EXPECT_EQ(taker_.told, "");
}

TEST_F(ShippedLogsTest, ManyFiles_AreAllReadWithFewOpen) {
  std::string expected;
  for (int number = 1; number <= 50; ++number) {
    const std::string digits = std::to_string(10000 + number).substr(1);
    append("s.20261121." + digits, digits + "\nrest " + digits);
    expected += digits + '|';
    if (number <= 46) expected += "rest " + digits + '|';
  }
  ShippedLogs logs({folder_.path("s")});
  std::string all = read(logs);
  // The last ones may get the ends of their lines yet.
  EXPECT_EQ(all.size(), expected.size());
  const std::vector<SeriesState> states = logs.places();
  ASSERT_EQ(states.size(), 1U);
  EXPECT_EQ(states[0].places.size(), ShippedSeries::kMostFiles);
}

TEST_F(ShippedLogsTest, TakerThatHasEnough_GetsTheRestLater) {
  append("s.20261121.0001", "one\ntwo\nthree\n");
  append("t.20261121.0001", "four\n");
  ShippedLogs logs({folder_.path()});
  taker_.most = 2;
  EXPECT_FALSE(logs.read(taker_));
  taker_.most = SIZE_MAX;
  EXPECT_TRUE(logs.read(taker_));
  EXPECT_EQ(taker_.taken, "one|two|three|four|");
}

TEST_F(ShippedLogsTest, LineThatIsTooLong_IsPassedOver) {
  append("s.20261121.0001", "one\n" + std::string((std::size_t{17} << 20), 'x'));
  ShippedLogs logs({folder_.path("s")});
  EXPECT_EQ(read(logs), "one|");
  append("s.20261121.0001", "\ntwo\n" + std::string((std::size_t{16} << 20) + 1, 'y') + "\nthree\n");
  EXPECT_EQ(read(logs), "long|two|long|three|");
}

TEST_F(ShippedLogsTest, FileThatBecameShorter_IsReadFromItsBeginning) {
  append("s.20261121.0001", "one\ntwo\n");
  ShippedLogs logs({folder_.path("s")});
  EXPECT_EQ(read(logs), "one|two|");
  std::filesystem::resize_file(folder_.path("s.20261121.0001"), 0);
  append("s.20261121.0001", "new\n");
  EXPECT_EQ(read(logs), "new|");
  EXPECT_NE(taker_.told.find("became shorter"), std::string::npos);
}

TEST_F(ShippedLogsTest, FileThatCannotBeOpened_IsWaitedFor) {
  append("s.20261121.0001", "one\n");
  append("s.20261121.0002", "two\n");
  append("s.20261121.0003", "three\n");
  const std::string hidden = folder_.path("s.20261121.0002");
  std::filesystem::remove(hidden);
  std::filesystem::create_symlink(hidden, hidden);  // leads nowhere, for ever
  ShippedLogs logs({folder_.path("s")});
  EXPECT_EQ(read(logs), "one|");
  EXPECT_NE(taker_.told.find("cannot open '"), std::string::npos) << taker_.told;
  std::filesystem::remove(hidden);
  append("s.20261121.0002", "two\n");
  EXPECT_EQ(read(logs), "two|three|");
}

TEST_F(ShippedLogsTest, Blanks_AreNoLines) {
  append("s.20261121.0001", "\xEF\xBB\xBFone\r\n\n \t\r\n two \n");
  ShippedLogs logs({folder_.path("s")});
  EXPECT_EQ(read(logs), "one| two |");
}

TEST_F(ShippedLogsTest, FileOrNothing_IsNoOperand) {
  EXPECT_THROW(ShippedLogs({folder_.write("file", "")}), CommandError);
  EXPECT_THROW(ShippedLogs({folder_.path("none/")}), CommandError);
}

}  // namespace
}  // namespace qzlog_tool
