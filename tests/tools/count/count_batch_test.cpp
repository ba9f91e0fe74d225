#include "tools/count/count_batch.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/seeded_random.h"

namespace qzlog_tool {
namespace {

constexpr CalendarDay kDay{std::chrono::year{2026}, std::chrono::November, std::chrono::day{21}};

CountBatch small_batch() {
  CountBatch batch;
  batch.counts[{kDay, -7}] = 500;
  batch.folded.append("h/1/2", 1, 500);
  batch.folded.add(LineDigest{0xAB});
  CoveredLines& lines = batch.lines[{kDay, 1001}];
  lines.append("h/1/3", 1, 20);
  lines.append("h/1/3", 22, 22);
  lines.append("a b%\xFF", 3, 3);
  lines.add(LineDigest{1, 2, 3});
  return batch;
}

std::string fault_of(const std::string& text) {
  try {
    parse_batch(text);
  } catch (const BadBatch& fault) {
    return fault.what();
  }
  return "none";
}

/// Of a batch with this line.
std::string fault_of_line(const std::string& line) {
  return fault_of(with_batch_checksum("qzlog counts 1\n" + line + "\n"));
}

TEST(CountBatch, Text_IsAsItIsDescribed) {
  EXPECT_EQ(batch_text(small_batch()),
            "qzlog counts 1\n"
            "count 2026-11-21 -7 500\n"
            "folded h/1/2 1-500\n"
            "folded-digests AB000000000000000000000000000000\n"
            "lines 2026-11-21 1001 a%20b%25%FF 3\n"
            "lines 2026-11-21 1001 h/1/3 1-20,22\n"
            "digests 2026-11-21 1001 01020300000000000000000000000000\n"
            "checksum c198c0cc77837b54\n");
}

TEST(CountBatch, Text_ReadsBack) {
  EXPECT_EQ(parse_batch(batch_text(small_batch())), small_batch());
  EXPECT_EQ(parse_batch(batch_text(CountBatch())), CountBatch());
}

TEST(CountBatch, RandomBatches_ReadBack) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 100; ++round) {
    CountBatch batch;
    for (int step = 0; step < 40; ++step) {
      const CounterPlace place{kDay, static_cast<std::int32_t>(random.between(-2, 2))};
      const std::string writer = random.text(1 + random.below(6));
      const auto number = static_cast<std::uint64_t>(random.between(0, 20));
      if (random.one_in(5)) {
        batch.lines[place].add(LineDigest{static_cast<unsigned char>(random.below(256))});
      } else {
        batch.lines[place].add(writer, number);
      }
      if (random.one_in(3)) batch.folded.add(writer, number);
      if (random.one_in(3)) batch.counts[place] += number;
    }
    ASSERT_EQ(parse_batch(batch_text(batch)), batch);
  }
}

TEST(CountBatch, EveryPrefix_IsDamaged) {
  const std::string text = batch_text(small_batch());
  for (std::size_t size = 0; size < text.size(); ++size) EXPECT_NE(fault_of(text.substr(0, size)), "none") << size;
}

TEST(CountBatch, EveryFlippedBit_IsSeen) {
  const std::string text = batch_text(small_batch());
  for (std::size_t at = 0; at < text.size(); ++at) {
    for (int bit = 0; bit < 8; ++bit) {
      std::string damaged = text;
      damaged[at] = static_cast<char>(damaged[at] ^ (1 << bit));
      EXPECT_NE(fault_of(damaged), "none") << at << ' ' << bit;
    }
  }
}

TEST(CountBatch, WhatIsWrong_IsToldWithItsLine) {
  EXPECT_EQ(fault_of(""), "it is empty");
  EXPECT_EQ(fault_of("qzlog counts 2\n"), "line 1: it is no batch of counts of this version");
  EXPECT_EQ(fault_of("qzlog counts 1\n"), "it has no checksum at its end: it was cut");
  EXPECT_EQ(fault_of("qzlog counts 1\nchecksum 0000000000000000\n"),
            "it does not have its checksum: it was changed, or damaged");
  EXPECT_EQ(fault_of_line(""), "line 2: it begins with no word that is known");
  EXPECT_EQ(fault_of_line("count 2026-02-30 1 5"), "line 2: it has no day and key");
  EXPECT_EQ(fault_of_line("count 2026-11-21 2147483648 5"), "line 2: it has no day and key");
  EXPECT_EQ(fault_of_line("count 2026-11-21 1 -5"), "line 2: its count is none, or there twice");
  EXPECT_EQ(fault_of_line("count 2026-11-21 1 5\ncount 2026-11-21 1 5"), "line 3: its count is none, or there twice");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w"), "line 2: it has no ranges of numbers");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w 5-4"), "line 2: it has no ranges of numbers");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w 5-5"), "line 2: it has no ranges of numbers");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w 05"), "line 2: it has no ranges of numbers");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w 18446744073709551616"), "line 2: it has no ranges of numbers");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w 5,6"), "line 2: its numbers are not in order");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w 5,4"), "line 2: its numbers are not in order");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w 5,"), "line 2: it breaks off");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w%4 5"), "line 2: its writer is not written as one");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1 w%41 5"), "line 2: its writer is not written as one");
  EXPECT_EQ(fault_of_line("lines 2026-11-21 1  5"), "line 2: it has no writer");
  EXPECT_EQ(fault_of_line("folded w 5\nfolded w 7"), "line 3: its writer is there twice");
  EXPECT_EQ(fault_of_line("folded-digests 00"), "line 2: it has no digests");
  const std::string digest(32, '1');
  EXPECT_EQ(fault_of_line("folded-digests " + digest + "," + digest), "line 2: a digest is there twice");
  EXPECT_EQ(fault_of_line("folded-digests " + digest + "\nfolded-digests " + digest),
            "line 3: there are digests of it before");
}

}  // namespace
}  // namespace qzlog_tool
