// Readers of a group: each entry goes to one of them, and to another where that one is killed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tests/tools/transport/read_fixture.h"
#include "tests/tools/transport/running_command.h"

namespace qzlog_test {
namespace {

class ReadGroup : public ReadFixture {
 protected:
  std::vector<std::string> words(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {"render", "--no-icu", "--definitions", "d.yaml", "--from", url(), "--group", "g"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  CommandResult render_group(const std::string& more = "") const { return render(from() + "--group g " + more); }
  /// How often each number stands in what readers have shown, in files whose names begin with "out".
  std::map<int, int> shown() const {
    std::map<int, int> counts;
    for (const auto& file : std::filesystem::directory_iterator(folder_.path())) {
      const std::string name = file.path().filename().string();
      if (!name.starts_with("out")) continue;
      std::istringstream text(read(name));
      for (std::string line; std::getline(text, line);) {
        if (!text.eof()) ++counts[std::stoi(line)];  // a killed reader's last line may be torn
      }
    }
    return counts;
  }
  bool wait_for_shown(std::size_t count) const {
    return wait_until([&] { return shown().size() >= count; });
  }
};

TEST_F(ReadGroup, WhatWasShown_IsNotShownAgain) {
  deliver(1, 2500);
  EXPECT_EQ(render_group("--head 3").out, "1\n2\n3\n");
  EXPECT_EQ(render_group("--head 1200").out, numbers(4, 1203));
  EXPECT_EQ(render_group().out, numbers(1204, 2500));
  const CommandResult result = render_group();
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
  deliver(2501, 2502);
  EXPECT_EQ(render_group().out, numbers(2501, 2502));
  EXPECT_EQ(render(from() + "--group other --start sequence=2400").out, numbers(2400, 2502));
}

TEST_F(ReadGroup, OutputThatFails_LeavesTheEntriesToOthers) {
  deliver(1, 10);
  EXPECT_EQ(run("$QZLOG render --no-icu --definitions d.yaml" + from() + "--group g > /dev/full").status, 2);
  EXPECT_EQ(render_group().out, numbers(1, 10));
}

TEST_F(ReadGroup, EntriesThatTheDefinitionsDoNotKnow_StayForOthers) {
  deliver(1, 2500);
  write("others.yaml", "version: \"1.0\"\nentries:\n  - {id: 99, name: X, message: \"x\"}\n");
  const CommandResult wrong = run("timeout 60 $QZLOG render --definitions others.yaml" + from() + "--group g");
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(wrong.out, "");
  EXPECT_NE(wrong.err.find("entries that the definitions here do not know, or for which there was no memory, stay for "
                           "others of the group 'g': 2500\n"),
            std::string::npos)
      << wrong.err.substr(0, 2000);
  EXPECT_EQ(render_group().out, numbers(1, 2500));
}

// Nobody could show them.
TEST_F(ReadGroup, LinesThatAreNoEntries_AreDoneWith) {
  deliver(1, 3);
  deliver("{\"id\":1\n");
  deliver(4, 5);
  EXPECT_EQ(render_group().out, numbers(1, 5));
  const CommandResult rest = render_group();
  EXPECT_EQ(rest.out + rest.err, "");
}

TEST_F(ReadGroup, Sigterm_SettlesWhatIsShown) {
  deliver(1, 50);
  RunningCommand reader(folder_.path(), "out", words({"--follow"}));
  ASSERT_TRUE(wait_for_shown(50)) << read("said");
  deliver(51, 60);
  ASSERT_TRUE(wait_for_shown(60));
  EXPECT_EQ(reader.end(), -SIGTERM);
  EXPECT_EQ(read("said"), "");
  deliver(61, 62);
  EXPECT_EQ(render_group().out, "61\n62\n");
}

TEST_F(ReadGroup, Statistics_SettleWhatTheyHaveCounted) {
  deliver(1, 20);
  const std::string stats = "$QZLOG stats --definitions d.yaml --json" + from() + "--group g";
  EXPECT_EQ(run(stats + " > /dev/full").status, 2);
  EXPECT_EQ(run(stats + " | jq .total.count").out, "20\n");
  EXPECT_EQ(run(stats + " | jq .total.count").out, "0\n");
}

TEST_F(ReadGroup, Tail_IsRefused) {
  EXPECT_EQ(render_group("--tail 2").err,
            "qzlog: error: the readers of a group do not know which entries are the last: leave out --tail or "
            "--group\n");
}

TEST_F(ReadGroup, TwoReaders_ShareTheEntries) {
  RunningCommand one(folder_.path(), "out1", words({"--follow"}));
  RunningCommand two(folder_.path(), "out2", words({"--follow"}));
  // At least 40; more where one of them starts late.
  int batches = 0;
  const auto both_have_some = [this] { return !read("out1").empty() && !read("out2").empty(); };
  while (batches < 40 || (batches < 4000 && !both_have_some())) {
    deliver(batches * 50 + 1, batches * 50 + 50);
    ++batches;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ASSERT_TRUE(wait_for_shown(static_cast<std::size_t>(batches) * 50)) << read("said");
  one.end();
  two.end();
  for (const auto& [number, count] : shown()) EXPECT_EQ(count, 1) << number;
  EXPECT_NE(read("out1"), "");
  EXPECT_NE(read("out2"), "");
}

/// The long form, of `./dev stress`, has 300 kills; the other one 20.
int kills() { return std::getenv("QZLOG_STRESS") != nullptr ? 300 : 20; }

TEST_F(ReadGroup, KilledReaders_LeaveTheirPartsToOthers) {
  constexpr int kEach = 1000;
  qz_test::SeededRandom random;
  int delivered = 0;
  for (int count = 0; count < kills(); ++count) {
    RunningCommand killed(folder_.path(), "out" + std::to_string(count), words({"--follow"}));
    RunningCommand other(folder_.path(), "out-other", words({"--follow"}));
    deliver(delivered + 1, delivered + kEach);
    delivered += kEach;
    std::this_thread::sleep_for(std::chrono::milliseconds(random.below(80)));
    EXPECT_EQ(killed.end(SIGKILL), -SIGKILL);
    EXPECT_EQ(other.end(SIGTERM), -SIGTERM);
  }
  RunningCommand last(folder_.path(), "out-last", words());
  EXPECT_EQ(last.wait(), 0);
  EXPECT_EQ(read("said"), "");
  const std::map<int, int> counts = shown();
  EXPECT_EQ(counts.size(), static_cast<std::size_t>(delivered));
  const auto doubles = std::count_if(counts.begin(), counts.end(), [](const auto& count) { return count.second > 1; });
  std::printf("%zu entries, %td of them shown again, %d readers killed\n", counts.size(), doubles, kills());
}

TEST_F(ReadGroup, StateThatIsDamaged_IsNamed) {
  deliver(1, 3);
  render_group();
  write("got/entries.jsonl.group-g", "qzlog group 1\nnext 5");
  EXPECT_EQ(render_group().err, "qzlog: error: " + url() + ": what the group has read, '" +
                                    folder_.path("got/entries.jsonl.group-g") +
                                    "', is damaged: remove it, and the group begins anew\n");
  std::filesystem::remove(folder_.path("got/entries.jsonl.group-g"));
  EXPECT_EQ(render_group().out, numbers(1, 3));
  write("got/entries.jsonl", line(1));
  EXPECT_NE(render_group().err.find("is shorter than what the group has read of it"), std::string::npos);
}

}  // namespace
}  // namespace qzlog_test
