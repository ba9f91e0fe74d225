#include "tools/count/count_merge.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/seeded_random.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

constexpr CalendarDay kDay{std::chrono::year{2026}, std::chrono::November, std::chrono::day{21}};

CounterPlace place(std::int32_t key) { return {kDay, key}; }

TEST(CountMerge, LinesInSeveralBatches_CountOnce) {
  CountBatch one;
  one.lines[place(1)].append("w", 1, 10);
  CountBatch two;
  two.lines[place(1)].append("w", 6, 15);
  two.lines[place(2)].append("v", 6, 6);
  CountMerge merge;
  merge.add(one, "one");
  merge.add(two, "two");
  EXPECT_EQ(merge.counts(), (std::map<CounterPlace, std::uint64_t>{{place(1), 15}, {place(2), 1}}));
  EXPECT_EQ(merge.doubles(), 5U);
  EXPECT_EQ(merge.size(), 16U);
}

TEST(CountMerge, FoldedBatchesThatShareLines_AreRefused) {
  CountBatch one;
  one.counts[place(1)] = 10;
  one.folded.append("w", 1, 10);
  CountBatch within;
  within.counts[place(1)] = 3;
  within.folded.append("w", 4, 6);
  CountMerge merge;
  merge.add(one, "one");
  merge.add(within, "within");
  EXPECT_EQ(merge.counts().at(place(1)), 10U);
  EXPECT_EQ(merge.doubles(), 3U);
  CountBatch beside;
  beside.counts[place(1)] = 3;
  beside.folded.append("w", 10, 12);
  try {
    merge.add(beside, "beside");
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.exit_status(), kExitCannotRun);
    EXPECT_STREQ(error.what(),
                 "'beside' and another folded batch cover 1 lines both, and no more tell to which counts they belong: "
                 "fold batches of one group together, never apart");
  }
}

TEST(CountMerge, CountWithoutRoom_IsRefused) {
  CountBatch batch;
  batch.counts[place(1)] = 4294967295;
  CountMerge merge;
  merge.add(batch, "one");
  EXPECT_EQ(merge.counter_bytes().substr(20, 4), "\xFF\xFF\xFF\xFF");
  batch.counts[place(1)] = 1;
  merge.add(batch, "two");
  EXPECT_THROW(merge.counter_bytes(), CommandError);
}

/// A line by writer and number (below 1000), or by digest.
using Line = std::pair<std::string, std::uint64_t>;

void add(const Line& line, CoveredLines& lines) {
  if (line.first.empty()) {
    lines.add(LineDigest{static_cast<unsigned char>(line.second), static_cast<unsigned char>(line.second >> 8U)});
  } else {
    lines.add(line.first, line.second);
  }
}

/// What entry a line has follows from the line.
std::int32_t key_of(const Line& line) { return static_cast<std::int32_t>((line.first.size() + line.second) % 5); }

TEST(CountMerge, RandomRedeliveries_CountAsAPlainModelDoes) {
  qz_test::SeededRandom random;
  const std::vector<std::string> writers = {"a", "bb", "ccc", ""};
  for (int round = 0; round < 60; ++round) {
    std::set<Line> model;
    CountBatch folded;
    std::vector<CountBatch> batches;
    for (std::size_t index = 0; index < 30; ++index) {
      CountBatch batch;
      const std::string& writer = writers[random.below(writers.size())];
      const auto first = static_cast<std::uint64_t>(random.between(0, 400));
      for (std::uint64_t number = first; number < first + random.below(60); ++number) {
        if (random.one_in(6)) continue;
        const Line line(writer, number);
        model.insert(line);
        add(line, batch.lines[place(key_of(line))]);
      }
      batches.push_back(parse_batch(batch_text(batch)));
      if (!random.one_in(4)) continue;
      CountMerge merge;  // some are folded meanwhile, and not all of them can be removed
      merge.add(folded, "folded");
      for (const CountBatch& own : batches) merge.add(own, "batch");
      folded = parse_batch(batch_text(merge.folded()));
      batches.resize(random.below(batches.size() + 1));
    }
    CountMerge merge;
    merge.add(folded, "folded");
    for (const CountBatch& own : batches) merge.add(own, "batch");
    std::map<CounterPlace, std::uint64_t> expected;
    for (const Line& line : model) ++expected[place(key_of(line))];
    ASSERT_EQ(merge.counts(), expected);
    ASSERT_EQ(merge.size(), model.size());
  }
}

}  // namespace
}  // namespace qzlog_tool
