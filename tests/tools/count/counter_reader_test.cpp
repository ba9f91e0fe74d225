#include "tools/count/counter_reader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "tests/support/seeded_random.h"
#include "tests/support/temp_dir.h"
#include "tests/tools/count/counter_bytes.h"
#include "tools/system/command_error.h"
#include "tools/system/file_descriptor.h"

namespace {

using qz_test::TempDir;
using qzlog_test::counter_bytes;
using qzlog_test::CounterBytes;
using qzlog_tool::DayCount;
using qzlog_tool::FileDescriptor;

constexpr CounterBytes kFree = {0, 0, 0, 0, 0};

struct Content {
  std::string counts;  // a line for each: day, key, count
  std::string damage;  // a line for each: offset, rule, text
  std::uint64_t records = 0;
};

std::string line_of(const DayCount& count) {
  return qzlog_tool::day_text(count.day) + " " + std::to_string(count.key) + " " + std::to_string(count.count) + "\n";
}

std::string line_of(const qzlog_compiler::Finding& damage) {
  return std::to_string(damage.offset.value()) + " " + std::string(damage.rule.name()) + ": " + damage.text + "\n";
}

Content read_descriptor(int descriptor) {
  Content content;
  const auto counts = qzlog_tool::read_counts(
      descriptor, "x.cnt", [&](const qzlog_compiler::Finding& damage) { content.damage += line_of(damage); },
      [&](std::uint64_t records) { content.records = records; });
  for (const DayCount& count : counts) content.counts += line_of(count);
  return content;
}

Content read_bytes(const std::string& bytes) {
  const TempDir folder;
  const FileDescriptor file = qzlog_tool::open_input(folder.write("x.cnt", bytes));
  return read_descriptor(file.get());
}

TEST(ReadCounts, EmptyFile_HoldsNothing) {
  const Content content = read_bytes("");
  EXPECT_EQ(content.counts, "");
  EXPECT_EQ(content.damage, "");
  EXPECT_EQ(content.records, 0U);
}

TEST(ReadCounts, Records_ComeByDayAndKey) {
  const Content content = read_bytes(counter_bytes({{2026, 11, 21, 7, 1},
                                                    {2026, 11, 21, -7, 2},
                                                    kFree,
                                                    {2025, 12, 31, 9, 3},
                                                    {2026, 2, 28, 1, 4294967295U},
                                                    {1, 1, 1, 2147483647, 0}}));
  EXPECT_EQ(content.counts,
            "0001-01-01 2147483647 0\n2025-12-31 9 3\n2026-02-28 1 4294967295\n2026-11-21 -7 2\n2026-11-21 7 1\n");
  EXPECT_EQ(content.damage, "");
  EXPECT_EQ(content.records, 6U);
}

// A range delete leaves key and count of a free record as it likes.
TEST(ReadCounts, FreeRecord_IsPassedOverWhateverElseItHolds) {
  const Content content = read_bytes(counter_bytes({{0, 0, 0, 5, 6}}));
  EXPECT_EQ(content.counts, "");
  EXPECT_EQ(content.damage, "");
}

TEST(ReadCounts, WrongRecordSize_IsReportedAndLeftOut) {
  const Content content = read_bytes(counter_bytes(
      {{2026, 11, 21, 7, 1, 33}, {2026, 11, 22, 7, 2}, {0, 0, 0, 0, 0, 0}, {2026, 11, 23, 7, 3, -2147483647 - 1}}));
  EXPECT_EQ(content.counts, "2026-11-22 7 2\n");
  EXPECT_EQ(content.damage,
            "0 record-size: the size field is 33 instead of 32 (2026-11-21, key 7, count 1)\n"
            "64 record-size: the size field is 0 instead of 32 (0-0-0, key 0, count 0)\n"
            "96 record-size: the size field is -2147483648 instead of 32 (2026-11-23, key 7, count 3)\n");
}

TEST(ReadCounts, ImpossibleDates_AreReportedAndLeftOut) {
  const Content content = read_bytes(counter_bytes({{2026, 2, 29, 7, 1},
                                                    {2026, 13, 1, 7, 2},
                                                    {2026, 0, 1, 7, 3},
                                                    {0, 1, 1, 7, 4},
                                                    {10000, 1, 1, 7, 5},
                                                    {-1, 1, 1, 7, 6},
                                                    {2026, 257, 1, 7, 7},
                                                    {67562, 1, 1, 7, 8},
                                                    {2024, 2, 29, 7, 9}}));
  EXPECT_EQ(content.counts, "2024-02-29 7 9\n");
  EXPECT_EQ(content.damage,
            "0 impossible-date: there is no such date (2026-2-29, key 7, count 1)\n"
            "32 impossible-date: there is no such date (2026-13-1, key 7, count 2)\n"
            "64 impossible-date: there is no such date (2026-0-1, key 7, count 3)\n"
            "96 impossible-date: there is no such date (0-1-1, key 7, count 4)\n"
            "128 impossible-date: there is no such date (10000-1-1, key 7, count 5)\n"
            "160 impossible-date: there is no such date (-1-1-1, key 7, count 6)\n"
            "192 impossible-date: there is no such date (2026-257-1, key 7, count 7)\n"
            "224 impossible-date: there is no such date (67562-1-1, key 7, count 8)\n");
}

TEST(ReadCounts, Duplicates_TheFirstInTheFileCounts) {
  const Content content = read_bytes(counter_bytes({{2026, 11, 22, 7, 1},
                                                    {2026, 11, 21, 7, 2},
                                                    {2026, 11, 22, 7, 3},
                                                    {2026, 11, 21, 8, 4},
                                                    {2026, 11, 21, 7, 5},
                                                    {2026, 11, 22, 7, 6}}));
  EXPECT_EQ(content.counts, "2026-11-21 7 2\n2026-11-21 8 4\n2026-11-22 7 1\n");
  EXPECT_EQ(content.damage,
            "64 duplicate-record: the record at offset 0 has the same day and key (2026-11-22, key 7, count 3)\n"
            "128 duplicate-record: the record at offset 32 has the same day and key (2026-11-21, key 7, count 5)\n"
            "160 duplicate-record: the record at offset 0 has the same day and key (2026-11-22, key 7, count 6)\n");
}

TEST(ReadCounts, EveryPrefixOfAFile_HoldsItsCompleteRecords) {
  const std::string bytes = counter_bytes({{2026, 11, 21, 7, 1}, {2026, 11, 22, 7, 2}});
  const std::string lines[] = {"", "2026-11-21 7 1\n", "2026-11-21 7 1\n2026-11-22 7 2\n"};
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    const Content content = read_bytes(bytes.substr(0, size));
    const std::size_t rest = size % 32;
    EXPECT_EQ(content.counts, lines[size / 32]) << size;
    EXPECT_EQ(content.damage, rest == 0 ? ""
                                        : std::to_string(size - rest) + " partial-record: the file ends after " +
                                              std::to_string(rest) + " of the 32 bytes\n")
        << size;
  }
}

TEST(ReadCounts, PipeThatGivesAFewBytesAtATime_IsReadToItsEnd) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const FileDescriptor reading(ends[0]);
  std::string bytes;
  std::string expected;
  for (int day = 1; day <= 28; ++day) {
    bytes += counter_bytes({2026, 2, day, day, static_cast<std::uint32_t>(day)});
    expected += line_of({*qzlog_tool::calendar_day(2026, 2, day), day, static_cast<std::uint32_t>(day), 0});
  }
  std::thread writer([&] {
    const FileDescriptor writing(ends[1]);
    for (std::size_t at = 0; at < bytes.size(); at += 13) {
      const std::string piece = bytes.substr(at, 13);
      EXPECT_EQ(qzlog_tool::write_all(writing.get(), piece.data(), piece.size()), 0);
    }
  });
  const Content content = read_descriptor(reading.get());
  writer.join();
  EXPECT_EQ(content.counts, expected);
  EXPECT_EQ(content.damage, "");
}

TEST(ReadCounts, FileLargerThanAnyBuffer_IsReadWhole) {
  std::string bytes;
  for (int key = 0; key < 10'000; ++key) bytes += counter_bytes({2026, 11, 21, 10'000 - key, 3});
  const Content content = read_bytes(bytes);
  EXPECT_EQ(content.records, 10'000U);
  EXPECT_TRUE(content.counts.starts_with("2026-11-21 1 3\n2026-11-21 2 3\n"));
  EXPECT_TRUE(content.counts.ends_with("2026-11-21 10000 3\n"));
  EXPECT_EQ(content.damage, "");
}

TEST(ReadCounts, RandomBytes_GiveOnlyRealDatesOrDamage) {
  qz_test::SeededRandom random;
  for (int round = 0; round < 200; ++round) {
    std::string bytes(random.below(400), '\0');
    for (char& byte : bytes) byte = static_cast<char>(random.below(3) == 0 ? random.below(256) : random.below(33));
    const Content content = read_bytes(bytes);
    EXPECT_EQ(content.records, bytes.size() / 32);
    EXPECT_EQ(content.counts, "") << "round " << round;  // a size field of 32 by chance is one in many millions
    EXPECT_EQ(content.damage.empty(), bytes.empty()) << "round " << round;
  }
}

TEST(ReadCounts, Folder_ThrowsWithReason) {
  const TempDir folder;
  const FileDescriptor file = qzlog_tool::open_input(folder.path());
  try {
    read_descriptor(file.get());
    FAIL() << "no exception";
  } catch (const qzlog_tool::CommandError& error) {
    EXPECT_STREQ(error.what(), "cannot read 'x.cnt': Is a directory");
    EXPECT_EQ(error.exit_status(), 2);
  }
}

}  // namespace
