#include "qzlog/file_sink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "sinks/sink_clock.h"
#include "tests/sinks/file_sink_fixture.h"
#include "tests/support/thrown_by.h"

namespace qz_test {
namespace {

using Settings = qz_LOG_FileSinkSettings;

class FileSinkTest : public SinkTest {};

void expect_built(const qz_LOG_Sink& sink, unsigned long long built) {
  const qz_LOG_SinkCounts counts = sink.GetCounts();
  EXPECT_EQ(counts.written + counts.failed + counts.dropped, built);
}

TEST_F(FileSinkTest, EveryWay_KeepsEachEntryOnceAndInOrder) {
  for (const Settings::Way way : kWays) {
    SCOPED_TRACE(way);
    TempDir own;
    Settings settings = single(way);
    settings.path = own.path("app.log");
    qz_LOG_FileSink sink(settings);
    EXPECT_EQ(sink.GetStatus().way, way);
    for (unsigned number = 0; number < 3000; ++number) ASSERT_TRUE(write_entry(sink, 1, number, "some text"));
    EXPECT_TRUE(sink.Flush(10000));
    WrittenLines lines;
    lines.take_file(settings.path);
    lines.expect_no_gaps();
    EXPECT_EQ(lines.numbers[1], counted_to(3000));
    expect_built(sink, 3000);
    EXPECT_EQ(sink.GetCounts().bytes, read_file(settings.path).size());
    EXPECT_EQ(sink.GetCounts().written_by_level[3], 3000U);
    EXPECT_EQ(sink.Close(10000), 0U);
    EXPECT_FALSE(write_entry(sink, 1, 0));
    EXPECT_EQ(sink.GetCounts().failed, 1U);
    EXPECT_EQ(names_in(own.path()), (std::vector<std::string>{".app.log_lock", "app.log"}));
  }
}

TEST_F(FileSinkTest, Threads_KeepEachThreadsOrder) {
  for (const Settings::Way way : kWays) {
    SCOPED_TRACE(way);
    TempDir own;
    Settings settings = series(way);
    settings.folder = own.path();
    settings.largest_file_bytes = 100000;
    constexpr unsigned kThreads = 4;
    constexpr unsigned kEntries = 2000;
    {
      qz_LOG_FileSink sink(settings);
      std::vector<std::thread> threads;
      for (unsigned thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
          for (unsigned number = 0; number < kEntries; ++number) write_entry(sink, thread, number);
        });
      }
      for (std::thread& thread : threads) thread.join();
      expect_built(sink, kThreads * kEntries);
      EXPECT_EQ(sink.GetCounts().failed, 0U);
      EXPECT_EQ(sink.Close(10000), 0U);
    }
    WrittenLines lines;
    lines.take_series(own.path(), "app");
    lines.expect_no_gaps();
    EXPECT_GT(lines.files.size(), 3U);
    for (unsigned thread = 0; thread < kThreads; ++thread) EXPECT_EQ(lines.numbers[thread], counted_to(kEntries));
  }
}

TEST_F(FileSinkTest, LineLongerThanTheBuffer_KeepsItsPlace) {
  for (const Settings::Way way : kWays) {
    SCOPED_TRACE(way);
    TempDir own;
    Settings settings = single(way);
    settings.path = own.path("app.log");
    settings.buffer_bytes = 16384;
    qz_LOG_LogEntry entry(kEvent, 1);
    // Each byte becomes six: \u0001.
    entry.AddAttribMBStr("Text", std::string(2000, '\1').c_str());
    entry.AddAttrib4u("Source", 1);
    qz_LOG_FileSink sink(settings);
    for (unsigned number = 0; number < 50; ++number) {
      entry.AddAttrib4u("Number", number);
      ASSERT_TRUE(sink.Write(entry));
    }
    EXPECT_EQ(sink.Close(10000), 0U);
    WrittenLines lines;
    lines.take_file(settings.path);
    lines.expect_no_gaps();
    EXPECT_EQ(lines.numbers[1], counted_to(50));
  }
}

TEST_F(FileSinkTest, LongestDelay_IsKeptWithoutFlush) {
  for (const Settings::Way way : {Settings::kShared, Settings::kBuffered}) {
    TempDir own;
    Settings settings = single(way);
    settings.path = own.path("app.log");
    settings.longest_delay_milliseconds = 20;
    qz_LOG_FileSink sink(settings);
    for (unsigned number = 0; number < 3; ++number) {
      ASSERT_TRUE(write_entry(sink, 1, number));
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
      WrittenLines lines;
      while (lines.numbers[1].size() <= number && std::chrono::steady_clock::now() < end) {
        lines = WrittenLines();
        lines.take_file(settings.path);
        std::this_thread::yield();
      }
      EXPECT_EQ(lines.numbers[1], counted_to(number + 1));
    }
  }
}

TEST_F(FileSinkTest, Unwanted_IsDropped) {
  qz_LOG_FileSink sink(single(Settings::kWrite));
  EXPECT_TRUE(sink.Wants(0, 0));
  sink.SetWanted(4, 2);
  EXPECT_FALSE(sink.Wants(3, 2));
  EXPECT_FALSE(sink.Wants(4, 5));
  EXPECT_TRUE(sink.Wants(4, 7));
  EXPECT_FALSE(write_entry(sink, 1, 1, "", 9));  // its mask is 5
  EXPECT_EQ(sink.GetCounts().dropped_by_level[9], 1U);
  expect_built(sink, 1);
  EXPECT_EQ(read_file(log_path()), "");
}

TEST_F(FileSinkTest, TwoSinksOfOneSeries_ShareItsFiles) {
  Settings settings = series(Settings::kShared);
  settings.largest_file_bytes = 20000;
  {
    qz_LOG_FileSink first(settings);
    settings.way = Settings::kWrite;
    qz_LOG_FileSink second(settings);
    for (unsigned number = 0; number < 500; ++number) {
      ASSERT_TRUE(write_entry(first, 1, number));
      ASSERT_TRUE(write_entry(second, 2, number));
    }
  }
  WrittenLines lines;
  lines.take_series(logs(), "app");
  lines.expect_no_gaps();
  EXPECT_EQ(lines.numbers[1], counted_to(500));
  EXPECT_EQ(lines.numbers[2], counted_to(500));
  EXPECT_NE(lines.writer_of[1], lines.writer_of[2]);
  EXPECT_GT(lines.files.size(), 5U);
}

TEST_F(FileSinkTest, OpenedAgain_GoesOnInTheLatestFileAsAnotherWriter) {
  for (unsigned source = 0; source < 3; ++source) {
    qz_LOG_FileSink sink(series(Settings::kShared));
    ASSERT_TRUE(write_entry(sink, source, 0));
  }
  WrittenLines lines;
  lines.take_series(logs(), "app");
  lines.expect_no_gaps();
  EXPECT_EQ(lines.files.size(), 1U);
  EXPECT_EQ(lines.last_seq.size(), 3U);
}

TEST_F(FileSinkTest, SyncLevel_WritesBeforeWriteReturns) {
  Settings settings = single(Settings::kShared);
  settings.longest_delay_milliseconds = 60000;
  settings.longest_wait_milliseconds = 60000;
  settings.sync_level = 7;
  qz_LOG_FileSink sink(settings);
  ASSERT_TRUE(write_entry(sink, 1, 0, "", 6));
  EXPECT_EQ(read_file(log_path()), "");
  ASSERT_TRUE(write_entry(sink, 1, 1, "", 7));
  WrittenLines lines;
  lines.take_file(log_path());
  EXPECT_EQ(lines.numbers[1], counted_to(2));
}

TEST_F(FileSinkTest, EverythingAtOnce_CountsComeOut) {
  for (const Settings::Way way : kWays) {
    SCOPED_TRACE(way);
    TempDir own;
    Settings settings = series(way);
    settings.folder = own.path();
    settings.largest_file_bytes = 20000;
    settings.keep_files = 1000;
    settings.buffer_bytes = 16384;
    settings.longest_delay_milliseconds = 1;
    qz_LOG_FileSink sink(settings);
    constexpr unsigned kProducers = 3;
    unsigned taken[kProducers] = {};
    unsigned built[kProducers] = {};
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (unsigned thread = 0; thread < kProducers; ++thread) {
      threads.emplace_back([&, thread] {
        // The last ones come behind Close.
        while (!stop || built[thread] < 300) {
          if (write_entry(sink, thread, taken[thread])) ++taken[thread];
          ++built[thread];
        }
      });
    }
    threads.emplace_back([&] {
      while (!stop) {
        sink.Flush(1);
        sink.Rotate();
        sink.Reopen();
      }
    });
    threads.emplace_back([&] {
      while (!stop) {
        const qz_LOG_SinkCounts counts = sink.GetCounts();
        EXPECT_GE(counts.written, counts.written_by_level[3]);
        EXPECT_EQ(sink.GetStatus().way, way);
        sink.SetWanted(1, 1);
      }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(sink.Close(30000), 0U);
    stop = true;
    for (std::thread& thread : threads) thread.join();
    expect_built(sink, built[0] + built[1] + built[2]);
    WrittenLines lines;
    lines.take_series(own.path(), "app");
    lines.expect_no_gaps();
    for (unsigned thread = 0; thread < kProducers; ++thread)
      EXPECT_EQ(lines.numbers[thread], counted_to(taken[thread]));
  }
}

struct BadSetting {
  const char* text;
  void (*spoil)(Settings& settings);
};

TEST_F(FileSinkTest, BadSetting_IsNamed) {
  const BadSetting cases[] = {
      {"path: only one of path and prefix can be given", [](Settings& s) { s.path = "a"; }},
      {"path: one of path and prefix has to be given", [](Settings& s) { s.prefix = ""; }},
      {"path: its last part is no name of a file, or longer than 180 characters",
       [](Settings& s) { s.prefix = "", s.path = "logs/"; }},
      {"keep_files: only files of a series are deleted; give a prefix",
       [](Settings& s) { s.prefix = "", s.path = "a", s.keep_files = 1; }},
      {"keep_days: only files of a series are deleted; give a prefix",
       [](Settings& s) { s.prefix = "", s.path = "a", s.keep_days = 1; }},
      {"sync_at_rotation: only a series is rotated; give a prefix",
       [](Settings& s) { s.prefix = "", s.path = "a", s.sync_at_rotation = true; }},
      {"prefix: it has a \"/\" or a zero byte in it", [](Settings& s) { s.prefix = "a/b"; }},
      {"prefix: it is longer than 180 characters", [](Settings& s) { s.prefix = std::string(181, 'a'); }},
      {"folder: it is empty, too long, or has a zero byte in it", [](Settings& s) { s.folder = ""; }},
      {"largest_file_bytes: 4095 is not from 4096 to 4611686018427387904",
       [](Settings& s) { s.largest_file_bytes = 4095; }},
      {"way: 3 is not from 0 to 2", [](Settings& s) { s.way = static_cast<Settings::Way>(3); }},
      {"buffer_bytes: 16383 is not from 16384 to 268435456", [](Settings& s) { s.buffer_bytes = 16383; }},
      {"longest_delay_milliseconds: 0 is not from 1 to 60000", [](Settings& s) { s.longest_delay_milliseconds = 0; }},
      {"longest_wait_milliseconds: 60001 is not from 0 to 60000",
       [](Settings& s) { s.longest_wait_milliseconds = 60001; }},
      {"sync_level: 11 is not from 0 to 10", [](Settings& s) { s.sync_level = 11; }},
      {"file_permissions: the owner has to be able to read and write (0600), and there is nothing above 0777",
       [](Settings& s) { s.file_permissions = 0440; }},
      {"lost_event_id: the event 77 is not defined with LostId (TypeUInt4), LostLevel (TypeUInt1), LostCount "
       "(TypeUInt4) and LostSince (TypeTimestamp)",
       [](Settings& s) { s.lost_event_id = 77; }},
      {"lost_event_id: the event 1003 is not defined with LostId (TypeUInt4), LostLevel (TypeUInt1), LostCount "
       "(TypeUInt4) and LostSince (TypeTimestamp)",
       [](Settings& s) { s.lost_event_id = kWrongEvent; }},
  };
  for (const BadSetting& each : cases) {
    Settings settings = series(Settings::kShared);
    each.spoil(settings);
    EXPECT_EQ(thrown_by([&] { qz_LOG_FileSink sink(settings); }), thrown<QZX_logging_illegal_argument>(each.text));
  }
  EXPECT_EQ(names_in(logs()), std::vector<std::string>());
}

TEST_F(FileSinkTest, PathThatCannotBeOpened_IsAnErrorThatNamesIt) {
  Settings settings = single(Settings::kShared);
  settings.path = folder_.path("nowhere/app.log");
  EXPECT_EQ(thrown_by([&] { qz_LOG_FileSink sink(settings); }),
            thrown<QZX_logging_file_operation_failed>("The log file " + settings.path +
                                                      " cannot be opened: No such file or directory"));
  settings.path = logs();
  EXPECT_EQ(
      thrown_by([&] { qz_LOG_FileSink sink(settings); }),
      thrown<QZX_logging_file_operation_failed>("The log file " + settings.path + " cannot be opened: Is a directory"));
}

}  // namespace
}  // namespace qz_test
