#include "qzlog/memory_sink.h"

#include <deque>

#include "tests/sinks/sinks_fixture.h"

namespace {

using namespace qz_test;

class MemorySink : public SinksTest {};

std::string bare_line(unsigned level, const char* name) {
  std::string line = line_of(level, name);
  line.pop_back();
  return line;
}

TEST_F(MemorySink, WhatWasWritten_IsThereAsEntriesLinesAndMessages) {
  qz_LOG_MemorySink sink;
  EXPECT_TRUE(write_to(sink, kDisk, 3, "a"));
  EXPECT_TRUE(sink.Write(make_entry(kDisk, 7, "b"), true, 0));
  EXPECT_EQ(sink.GetMessages(), Texts({"Disk a", "Disk b"}));
  const std::vector<qz_LOG_MemoryRecord> records = sink.GetRecords();
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0].entry.GetEntryID(), kDisk);
  EXPECT_STREQ(records[1].entry.GetAttribMBStr("Name"), "b");
  EXPECT_EQ(records[1].entry.GetLogLevel(), 7U);
  EXPECT_FALSE(records[0].use_default);
  EXPECT_TRUE(records[1].use_default);
  EXPECT_EQ(sink.GetLines(), Texts({bare_line(3, "a"), records[1].line}));
  EXPECT_EQ(records[1].line, R"({"id":1001,"level":7,"default":true,"attributes":{"Name":"b"}})");
  EXPECT_EQ(sink.GetCounts().bytes, records[0].line.size() + records[1].line.size());
}

TEST_F(MemorySink, ItsEntries_AreCopies) {
  qz_LOG_MemorySink sink;
  {
    qz_LOG_LogEntry entry = make_entry(kDisk, 3, "a");
    EXPECT_TRUE(sink.Write(entry));
    entry.AddAttribMBStr("Name", "changed");
  }
  EXPECT_EQ(sink.GetMessages(), Texts({"Disk a"}));
}

TEST_F(MemorySink, Full_ForgetsTheOldest) {
  qz_LOG_MemorySinkSettings settings;
  settings.most_entries = 2;
  qz_LOG_MemorySink sink(settings);
  for (const char* const name : {"a", "b", "c"}) EXPECT_TRUE(write_to(sink, kDisk, 3, name));
  EXPECT_EQ(sink.GetMessages(), Texts({"Disk b", "Disk c"}));
  EXPECT_EQ(sink.GetForgotten(), 1U);
  EXPECT_EQ(counts_of(sink), "3/0/0");
  sink.Clear();
  EXPECT_EQ(sink.GetLines(), Texts());
  EXPECT_EQ(counts_of(sink), "3/0/0");
}

TEST_F(MemorySink, LineThatNeverFits_IsHeldBack) {
  qz_LOG_MemorySinkSettings settings;
  settings.most_bytes = line_of(3, "a").size() - 1;
  qz_LOG_MemorySink sink(settings);
  EXPECT_TRUE(write_to(sink, kDisk, 3, "a"));
  EXPECT_FALSE(write_to(sink, kDisk, 3, "ab"));
  EXPECT_EQ(sink.GetMessages(), Texts({"Disk a"}));
  EXPECT_EQ(counts_of(sink), "1/0/1");
}

TEST_F(MemorySink, RandomEntries_AreThoseOfThePlainQueue) {
  SeededRandom random;
  for (int round = 0; round < rounds(40); ++round) {
    qz_LOG_MemorySinkSettings settings;
    settings.most_entries = static_cast<unsigned>(random.between(1, 10));
    settings.most_bytes = static_cast<unsigned long long>(random.between(60, 600));
    qz_LOG_MemorySink sink(settings);
    std::deque<std::string> plain;
    for (int i = 0; i < 50; ++i) {
      const std::string name(random.below(30), 'x');
      const std::string line = bare_line(3, name.c_str());
      EXPECT_EQ(write_to(sink, kDisk, 3, name.c_str()), line.size() <= settings.most_bytes);
      if (line.size() > settings.most_bytes) continue;
      plain.push_back(line);
      const auto size = [&] {
        unsigned long long bytes = 0;
        for (const std::string& each : plain) bytes += each.size();
        return bytes;
      };
      while (plain.size() > settings.most_entries || size() > settings.most_bytes) plain.pop_front();
      ASSERT_EQ(sink.GetLines(), Texts(plain.begin(), plain.end()));
    }
  }
}

TEST_F(MemorySink, Closed_TakesNoMoreAndKeepsWhatItHas) {
  qz_LOG_MemorySink sink;
  EXPECT_TRUE(write_to(sink));
  EXPECT_TRUE(sink.Flush(0));
  EXPECT_EQ(sink.Close(0), 0U);
  EXPECT_FALSE(write_to(sink));
  EXPECT_EQ(sink.GetLines().size(), 1U);
  EXPECT_EQ(counts_of(sink), "1/1/0");
}

TEST_F(MemorySink, BadSettings_NameThem) {
  const auto thrown_with = [](unsigned entries, unsigned long long bytes) {
    return thrown_by([=] { qz_LOG_MemorySink({entries, bytes}); });
  };
  EXPECT_EQ(thrown_with(0, 1), thrown<QZX_logging_illegal_argument>("most_entries: 0 is not from 1 to 1000000"));
  EXPECT_EQ(thrown_with(1000001, 1),
            thrown<QZX_logging_illegal_argument>("most_entries: 1000001 is not from 1 to 1000000"));
  EXPECT_EQ(thrown_with(1, 0), thrown<QZX_logging_illegal_argument>("most_bytes: 0 is not from 1 to 1099511627776"));
  EXPECT_EQ(thrown_with(1000000, 1ULL << 40), "nothing");
}

TEST_F(MemorySink, WithoutMemory_FailsAndKeepsWhatItHas) {
  qz_LOG_MemorySink sink;
  const qz_LOG_LogEntry entry = make_entry();
  unsigned failures = 0;
  for (unsigned nth = 1;; ++nth) {
    bool happened = false;
    bool is_written = false;
    {
      const AllocationFailure failure(nth);
      is_written = sink.Write(entry);
      happened = failure.happened();
    }
    if (!is_written) ++failures;
    EXPECT_EQ(sink.GetLines().size(), sink.GetCounts().written);
    if (!happened) break;
    ASSERT_LT(nth, 1000U);
  }
  EXPECT_GT(failures, 1U);
  EXPECT_EQ(sink.GetCounts().failed, failures);
  EXPECT_GT(FailEveryAllocation([&] { static_cast<void>(sink.GetRecords()); }), 1U);
  EXPECT_GT(FailEveryAllocation([&] { static_cast<void>(sink.GetLines()); }), 0U);
  EXPECT_GT(FailEveryAllocation([] { const qz_LOG_MemorySink made; }), 0U);
}

}  // namespace
