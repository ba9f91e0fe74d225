// `qzlog count collect` and `qzlog count merge`: however often entries come, each counts once.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/transport/read_fixture.h"
#include "tests/tools/transport/running_command.h"

namespace qzlog_test {
namespace {

class CollectCounts : public ReadFixture {
 protected:
  CollectCounts() { ::setenv("TZ", "UTC", 1); }  // of the commands; the fixture brings back what was there

  CommandResult collect(const std::string& more = "", const std::string& folder = "counts") const {
    return run("$QZLOG count collect --definitions d.yaml" + from() + "--batches " + folder + " " + more);
  }
  CommandResult merge(const std::string& words = "counts") const {
    return run("$QZLOG count merge --counter all " + words);
  }
  std::string counts() const { return run("$QZLOG count show --json all.cnt | jq -c '[.counts[]|.count]'").out; }
  std::size_t batch_files(const std::string& folder = "counts") const {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& file : std::filesystem::directory_iterator(folder_.path(folder))) ++count;
    return count;
  }
  std::string only_batch() const {
    return std::filesystem::directory_iterator(folder_.path("counts"))->path().filename().string();
  }
  std::vector<std::string> words(const std::vector<std::string>& more) const {
    std::vector<std::string> words = {"count",   "collect", "--definitions", "d.yaml", "--from", url(),
                                      "--group", "g",       "--batches",     "counts"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
};

TEST_F(CollectCounts, Entries_AreCountedByDayAndId) {
  deliver(line(1) + line(2) + line(3, 2) + line(4, 1, "h/1/2", "2026-11-22T01:00:00Z"));
  const CommandResult result = collect();
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(batch_files(), 1U);
  const CommandResult merged = merge();
  EXPECT_EQ(merged.err, "");
  EXPECT_EQ(merged.status, 0);
  // As the library has counted them.
  EXPECT_EQ(run("TZ=UTC $QZLOG render --no-icu --definitions d.yaml --count usual got > /dev/null && "
                "$QZLOG count show usual.cnt && $QZLOG count show all.cnt > other && $QZLOG count show usual.cnt | "
                "diff - other")
                .status,
            0);
  EXPECT_EQ(read("all.cnt"), read("usual.cnt"));
}

TEST_F(CollectCounts, WhatIsCollectedTwice_CountsOnce) {
  deliver(1, 100);
  deliver(50, 120);
  EXPECT_EQ(collect().status, 0);
  EXPECT_EQ(collect("--where 'N < 10'").status, 0);
  EXPECT_EQ(merge().err, "lines counted: 120; that came again and count once: 9\n");
  EXPECT_EQ(counts(), "[120]\n");
  EXPECT_EQ(merge("--fold counts").status, 0);
  EXPECT_EQ(batch_files(), 1U);
  EXPECT_EQ(counts(), "[120]\n");
  collect();
  EXPECT_EQ(merge().err, "lines counted: 120; that came again and count once: 120\n");
  EXPECT_EQ(counts(), "[120]\n");
}

TEST_F(CollectCounts, LinesWithoutNumbers_CountOnceToo) {
  const std::string plain = R"({"id":1,"level":3,"time":"2026-11-21T08:15:30Z","attributes":{"N":1}})"
                            "\n";
  deliver(plain + plain + plain);
  collect();
  collect();
  EXPECT_EQ(merge().err, "lines counted: 3; that came again and count once: 3\n");
  EXPECT_EQ(counts(), "[3]\n");
}

TEST_F(CollectCounts, BatchThatCannotBeWritten_LeavesTheEntriesToOthers) {
  deliver(1, 10);
  write("counts", "a file");
  EXPECT_EQ(collect("--group g").status, 2);
  std::filesystem::remove(folder_.path("counts"));
  EXPECT_EQ(collect("--group g").status, 0);
  merge();
  EXPECT_EQ(counts(), "[10]\n");
}

TEST_F(CollectCounts, DamagedBatch_IsNamed) {
  deliver(1, 10);
  collect();
  const std::string name = "counts/" + only_batch();
  write(name, read(name).substr(0, 40));
  const CommandResult result = merge();
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "qzlog: error: '" + name +
                            "': it has no checksum at its end: it was cut. What it counts is missing without it: put a "
                            "copy of it back, or remove it and count its entries again\n");
  EXPECT_FALSE(folder_.has("all.cnt"));
}

TEST_F(CollectCounts, WrongUse_IsToldWithTheNextStep) {
  EXPECT_NE(run("$QZLOG count collect --definitions d.yaml --from journal --batches c")
                .err.find("collecting counts needs a receiver: give --from with a URL"),
            std::string::npos);
  EXPECT_EQ(merge("nowhere").status, 2);
  std::filesystem::create_directory(folder_.path("counts"));
  EXPECT_EQ(merge("counts ./counts").err, "qzlog: error: './counts' is given twice\n");
}

TEST_F(CollectCounts, FolderWithoutBatches_ReplacesNoCounter) {
  deliver(1, 100);
  EXPECT_EQ(collect().status, 0);
  EXPECT_EQ(merge().status, 0);
  EXPECT_EQ(counts(), "[100]\n");
  std::filesystem::create_directory(folder_.path("empty"));
  const CommandResult result = merge("empty");
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err.find("there are no batches of 'qzlog count collect' in 'empty'\n"), std::string::npos);
  EXPECT_NE(result.err.find("there is nothing to merge: "), std::string::npos) << result.err;
  EXPECT_EQ(counts(), "[100]\n");
  EXPECT_EQ(merge("counts empty").status, 0);
  EXPECT_EQ(counts(), "[100]\n");
}

/// How many lines a merge has dropped, as it says.
int doubles_in(const std::string& said) {
  const std::string before = "count once: ";
  const std::size_t at = said.find(before);
  return at == std::string::npos ? 0 : std::stoi(said.substr(at + before.size()));
}

/// The long form, of `./dev stress`, has 300 kills; the other one 20.
int kills() { return std::getenv("QZLOG_STRESS") != nullptr ? 300 : 20; }

TEST_F(CollectCounts, KilledAtRandomMoments_EachEntryCountsOnce) {
  constexpr int kEach = 1500;
  constexpr int kAgain = 100;
  qz_test::SeededRandom random;
  int delivered = 0;
  int again = 0;
  int doubles = 0;
  for (int count = 0; count < kills(); ++count) {
    const std::vector<std::string> often = words({"--follow", "--batch", "300", "--batch-wait", "40"});
    RunningCommand killed(folder_.path(), "out", often);
    RunningCommand other(folder_.path(), "out", often);
    for (int part = 0; part < kEach; part += 50) {  // so that batches are held when the kill comes
      deliver(delivered + 1, delivered + 50);
      delivered += 50;
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    if (random.one_in(3)) {
      deliver(1, kAgain);  // as a shipper that was killed sends them
      again += kAgain;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(random.below(60)));
    EXPECT_EQ(killed.end(SIGKILL), -SIGKILL);
    const int ended = other.end(SIGTERM);
    EXPECT_TRUE(ended == 0 || ended == -SIGTERM) << ended;  // the latter where it did not read yet
    if (!random.one_in(3)) continue;
    const CommandResult folded = merge("--fold counts");
    EXPECT_EQ(folded.status, 0) << folded.err;
    doubles += doubles_in(folded.err);
  }
  RunningCommand last(folder_.path(), "out", words({}));
  EXPECT_EQ(last.wait(), 0);
  EXPECT_EQ(read("said"), "");
  const CommandResult result = merge();
  doubles += doubles_in(result.err);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(counts(), "[" + std::to_string(delivered) + "]\n");
  std::printf("%d entries, %d delivered again; %d counted again and dropped, %d of %d collectors killed\n", delivered,
              again, doubles, kills(), 2 * kills());
}

}  // namespace
}  // namespace qzlog_test
