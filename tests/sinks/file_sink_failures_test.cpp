// Calls fail: the program goes on, nothing that was written is harmed, and what was lost is told.
#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "qzlog/file_sink.h"
#include "tests/sinks/file_call_failure.h"
#include "tests/sinks/file_sink_fixture.h"
#include "tests/support/allocation_failure.h"
#include "tests/support/rounds.h"
#include "tests/support/thrown_by.h"

namespace qz_test {
namespace {

using Settings = qz_LOG_FileSinkSettings;

constexpr unsigned kEntries = 60;

struct Outcome {
  bool opened = false;
  std::vector<long long> taken;
  unsigned failed = 0;
  unsigned long long left = 0;
  unsigned long long fragments = 0;
};

class FileSinkFailuresTest : public SinkTest {
 protected:
  static Settings small_files(const std::string& folder, Settings::Way way) {
    Settings settings;
    settings.folder = folder;
    settings.prefix = "app";
    settings.way = way;
    settings.largest_file_bytes = 4096;
    settings.buffer_bytes = 16384;
    settings.longest_delay_milliseconds = 1;
    settings.sync_level = 8;
    settings.longest_wait_milliseconds = 20;
    return settings;
  }

  static void write_some(qz_LOG_FileSink& sink, Outcome& outcome, unsigned first, unsigned count) {
    for (unsigned number = first; number < first + count; ++number) {
      // One in ten is brought to the disk.
      if (write_entry(sink, 1, number, "some more text", number % 10 == 0 ? 8 : 3)) {
        outcome.taken.push_back(number);
      } else {
        ++outcome.failed;
      }
    }
  }

  /// Writes, fails, and goes on without failure. `failure` is made when the sink opens, or when it is open.
  template <typename MakeFailure>
  static Outcome run(const Settings& settings, bool while_opening, MakeFailure make_failure) {
    Outcome outcome;
    try {
      auto failure = while_opening ? make_failure() : nullptr;
      qz_LOG_FileSink sink(settings);
      outcome.opened = true;
      if (!while_opening) failure = make_failure();
      write_some(sink, outcome, 0, kEntries);
      sink.Flush(5);
      failure = nullptr;
      usleep(25000);  // after which a file that could not be opened is tried again
      write_some(sink, outcome, kEntries, 2);
      EXPECT_TRUE(sink.Flush(10000));
      const qz_LOG_SinkCounts counts = sink.GetCounts();
      EXPECT_EQ(counts.written, outcome.taken.size());
      EXPECT_EQ(counts.failed, outcome.failed);
      outcome.left = sink.Close(10000);
      outcome.fragments = sink.GetStatus().fragments;
    } catch (const QZX_logging_file_operation_failed&) {
    }
    return outcome;
  }

  static void expect_told(const std::string& folder, const Outcome& outcome) {
    WrittenLines lines;
    lines.take_series(folder, "app");
    EXPECT_EQ(lines.torn, std::vector<std::string>());
    EXPECT_EQ(lines.damaged.size(), outcome.fragments);
    EXPECT_EQ(lines.out_of_order, std::vector<std::string>());
    EXPECT_EQ(lines.numbers[1], outcome.taken);
    EXPECT_EQ(outcome.left, 0U);
    long long lost = 0;
    for (const auto& [what, count] : lines.lost) lost += count;
    EXPECT_EQ(lost, outcome.failed);
  }

  /// Lets the n-th call fail, for each n until none is left to fail.
  void fail_every(FileCallKind kind, int error, int times, bool writes_half) {
    happened_ = 0;
    for (const Settings::Way way : kWays) {
      for (const bool while_opening : {true, false}) {
        // Nothing is written while a sink opens.
        if (while_opening && (kind == FileCallKind::kWrite || kind == FileCallKind::kSync)) continue;
        for (int nth = 1; nth<200; nth += nth> 12 ? 17 : 1) {
          SCOPED_TRACE("way " + std::to_string(way) + ", call " + std::to_string(static_cast<int>(kind)) + ", error " +
                       std::to_string(error) + ", times " + std::to_string(times) + ", nth " + std::to_string(nth) +
                       (while_opening ? ", while opening" : ""));
          TempDir own;
          bool happened = false;
          struct Watched : FileCallFailure {
            Watched(FileCallKind kind, int nth, int error, int times, bool half, bool& happened)
                : FileCallFailure(kind, nth, error, times, half), happened_(happened) {}
            ~Watched() { happened_ = happened(); }
            bool& happened_;
          };
          const Outcome outcome = run(small_files(own.path(), way), while_opening, [&] {
            return std::make_unique<Watched>(kind, nth, error, times, writes_half, happened);
          });
          if (outcome.opened) expect_told(own.path(), outcome);
          if (HasFailure()) return;
          if (!happened) break;
          ++happened_;
        }
      }
    }
    EXPECT_GT(happened_, 0) << "call " << static_cast<int>(kind);
  }

 private:
  int happened_ = 0;
};

TEST_F(FileSinkFailuresTest, NthWriteFails_LossIsToldLater) {
  for (const int error : {EIO, ENOSPC, EINTR, EAGAIN}) {
    fail_every(FileCallKind::kWrite, error, 1, false);
    fail_every(FileCallKind::kWrite, error, 3, true);
  }
  fail_every(FileCallKind::kWrite, ENOSPC, FileCallFailure::kFromThenOn, true);
  fail_every(FileCallKind::kWrite, EIO, FileCallFailure::kFromThenOn, false);
}

TEST_F(FileSinkFailuresTest, NthOpenFails_LossIsToldLater) {
  for (const int error : {EIO, ENOSPC, EINTR, EMFILE}) fail_every(FileCallKind::kOpen, error, 1, false);
  fail_every(FileCallKind::kOpen, EMFILE, FileCallFailure::kFromThenOn, false);
}

TEST_F(FileSinkFailuresTest, OtherCallsFail_NothingIsLost) {
  for (const FileCallKind kind : {FileCallKind::kSync, FileCallKind::kClose, FileCallKind::kMap, FileCallKind::kRoom}) {
    fail_every(kind, kind == FileCallKind::kRoom ? ENOSPC : EIO, 1, false);
    fail_every(kind, EIO, FileCallFailure::kFromThenOn, false);
  }
}

TEST_F(FileSinkFailuresTest, NoRoomForThePendingFile_EachEntryIsWritten) {
  const FileCallFailure failure(FileCallKind::kRoom, 2, ENOSPC);  // the first is the lock's
  qz_LOG_FileSink sink(single(Settings::kShared));
  EXPECT_EQ(sink.GetStatus().way, Settings::kWrite);
  EXPECT_TRUE(write_entry(sink, 1, 0));
  WrittenLines lines;
  lines.take_file(log_path());
  EXPECT_EQ(lines.numbers[1], counted_to(1));
}

TEST_F(FileSinkFailuresTest, LineWrittenInPart_IsCutOffAgain) {
  qz_LOG_FileSink sink(single(Settings::kWrite));
  ASSERT_TRUE(write_entry(sink, 1, 0));
  {
    const FileCallFailure failure(FileCallKind::kWrite, 1, EIO, 2, true);
    const std::string before = read_file(log_path());
    EXPECT_FALSE(write_entry(sink, 1, 1));
    EXPECT_EQ(read_file(log_path()), before);
  }
  ASSERT_TRUE(write_entry(sink, 1, 2));
  EXPECT_EQ(sink.Close(1000), 0U);
  WrittenLines lines;
  lines.take_file(log_path());
  lines.expect_no_gaps();
  EXPECT_EQ(lines.numbers[1], (std::vector<long long>{0, 2}));
  EXPECT_EQ((lines.lost[{kEvent, 3}]), 1);
}

TEST_F(FileSinkFailuresTest, PartThatCannotBeCutOff_IsClosedByALineBreak) {
  for (const Settings::Way way : kWays) {
    SCOPED_TRACE(way);
    TempDir own;
    Settings settings = single(way);
    settings.path = own.path("app.log");
    qz_LOG_FileSink sink(settings);
    FileCallFailure::set_cut_fails(true);
    {
      const FileCallFailure failure(FileCallKind::kWrite, 1, EIO, FileCallFailure::kFromThenOn, true);
      EXPECT_EQ(write_entry(sink, 1, 0), way != Settings::kWrite);
      EXPECT_EQ(sink.Flush(50), way == Settings::kWrite);
    }
    ASSERT_TRUE(write_entry(sink, 1, 1));
    EXPECT_EQ(sink.Close(10000), 0U);
    FileCallFailure::set_cut_fails(false);
    EXPECT_EQ(sink.GetStatus().fragments, 1U);
    WrittenLines lines;
    lines.take_file(settings.path);
    EXPECT_EQ(lines.damaged.size(), 1U);
    EXPECT_EQ(lines.torn, std::vector<std::string>());
    EXPECT_EQ(lines.out_of_order, std::vector<std::string>());
    EXPECT_EQ(lines.numbers[1].back(), 1);
    EXPECT_EQ(lines.numbers[1].size(), way == Settings::kWrite ? 1U : 2U);
  }
}

TEST_F(FileSinkFailuresTest, PendingFileCannotBeDeleted_NothingIsDoubled) {
  {
    const FileCallFailure failure(FileCallKind::kUnlink, 1, EIO, FileCallFailure::kFromThenOn);
    qz_LOG_FileSink sink(single(Settings::kShared));
    ASSERT_TRUE(write_entry(sink, 1, 0));
    EXPECT_EQ(sink.Close(10000), 0U);
    EXPECT_TRUE(failure.happened());
  }
  for (int open = 0; open < 2; ++open) {
    qz_LOG_FileSink next(single(Settings::kShared));
    EXPECT_EQ(next.GetStatus().recovered, 0U);
  }
  EXPECT_EQ(names_in(logs()), (std::vector<std::string>{".app.log_lock", "app.log"}));
  WrittenLines lines;
  lines.take_file(log_path());
  EXPECT_EQ(lines.numbers[1], counted_to(1));
}

TEST_F(FileSinkFailuresTest, LostEvent_TellsOfLosses) {
  for (const Settings::Way way : kWays) {
    TempDir own;
    Settings settings = single(way);
    settings.path = own.path("app.log");
    settings.lost_event_id = kLostEvent;
    settings.buffer_bytes = 16384;
    settings.longest_wait_milliseconds = 0;
    qz_LOG_FileSink sink(settings);
    unsigned failed = 0;
    {
      const FileCallFailure failure(FileCallKind::kWrite, 1, ENOSPC, FileCallFailure::kFromThenOn);
      for (unsigned number = 0; number < 500; ++number) failed += write_entry(sink, 1, number, "", 6) ? 0 : 1;
    }
    ASSERT_GT(failed, 0U);
    EXPECT_EQ(sink.Close(10000), 0U);
    WrittenLines lines;
    lines.take_file(settings.path);
    lines.expect_no_gaps();
    long long told = 0;
    for (const std::string& line : lines.lines) {
      if (member(line, "id") != kLostEvent) continue;
      EXPECT_EQ(member(line, "level"), 6);
      EXPECT_EQ(member(line, "LostId"), kEvent);
      EXPECT_EQ(member(line, "LostLevel"), 6);
      told += member(line, "LostCount");
    }
    EXPECT_EQ(told, failed);
  }
}

TEST_F(FileSinkFailuresTest, Memory_OpeningThrowsAndWritingCounts) {
  for (const Settings::Way way : kWays) {
    Settings settings = single(way);
    EXPECT_GT(FailEveryAllocation([&] { const qz_LOG_FileSink sink(settings); }), 3U);
    qz_LOG_FileSink sink(settings);
    unsigned built = 0;
    qz_LOG_LogEntry entry(kEvent, 3);
    entry.AddAttrib4u("Source", 1);
    for (unsigned nth = 1; nth < 30; ++nth) {
      const AllocationFailure failure(nth);
      sink.Write(entry);
      ++built;
      if (!failure.happened()) break;
    }
    EXPECT_TRUE(sink.Flush(10000));
    const qz_LOG_SinkCounts counts = sink.GetCounts();
    EXPECT_EQ(counts.written + counts.failed, built);
  }
}

/// Whether the line that says `number` is in a file that was brought to the disk behind it.
bool is_synced(const std::string& folder, unsigned number) {
  const std::string key = "\"Number\":" + std::to_string(number) + "}";
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    if (!file.path().filename().string().starts_with("app.")) continue;
    const std::size_t at = read_file(file.path()).find(key);
    if (at != std::string::npos) return SyncNotes::synced_bytes(file.path()) > static_cast<off_t>(at);
  }
  return false;
}

TEST_F(FileSinkFailuresTest, RotatedAtAnyMoment_WhatIsToBeOnTheDiskIsThere) {
  for (const Settings::Way way : kWays) {
    const SyncNotes notes;
    Settings settings = series(way);
    settings.sync_level = 8;
    settings.keep_files = 500;  // more than come while one is looked at
    settings.longest_wait_milliseconds = 60000;
    qz_LOG_FileSink sink(settings);
    std::atomic<bool> stops{false};
    std::thread rotator([&] {
      while (!stops) {
        sink.Rotate();
        usleep(200);
      }
    });
    unsigned not_synced = 0;
    for (unsigned number = 1; number <= 300; ++number) {
      EXPECT_TRUE(write_entry(sink, 1, number, {}, 8));
      if (!is_synced(logs(), number)) ++not_synced;
    }
    stops = true;
    rotator.join();
    EXPECT_EQ(not_synced, 0U);
    EXPECT_EQ(sink.GetStatus().sync_failures, 0U);
    EXPECT_EQ(sink.Close(10000), 0U);
    std::filesystem::remove_all(logs());
    std::filesystem::create_directory(logs());
  }
}

TEST_F(FileSinkFailuresTest, LineLongerThanTheBuffer_IsBroughtToTheDisk) {
  const SyncNotes notes;
  Settings settings = single(Settings::kBuffered);
  settings.buffer_bytes = 16384;
  settings.sync_level = 8;
  qz_LOG_FileSink sink(settings);
  const std::string text(2000, '\x01');  // six bytes each in the line
  EXPECT_TRUE(write_entry(sink, 1, 1, text, 8));
  EXPECT_GT(SyncNotes::synced_bytes(log_path()), 12000);
  EXPECT_EQ(SyncNotes::synced_bytes(log_path()), static_cast<off_t>(std::filesystem::file_size(log_path())));
}

TEST_F(FileSinkFailuresTest, SeriesInAFolderThatIsNotThere_NamesTheFile) {
  Settings settings = series(Settings::kWrite);
  settings.folder = logs() + "/none";
  const std::string thrown = thrown_by([&] { qz_LOG_FileSink sink(settings); });
  EXPECT_NE(thrown.find(settings.folder + "/app."), std::string::npos) << thrown;
}

/// The sink's own thread has none either: it flushes, rotates and deletes files meanwhile.
TEST_F(FileSinkFailuresTest, NoMemoryInAnyThread_NothingThatWasTakenIsLost) {
  for (const Settings::Way way : kWays) {
    Settings settings = small_files(folder_.path(""), way);
    settings.keep_files = 1000;
    settings.longest_wait_milliseconds = 10000;
    qz_LOG_LogEntry entry(kEvent, 3);
    entry.AddAttrib4u("Source", static_cast<unsigned>(way));
    entry.AddAttrib4u("Number", 1);
    qz_LOG_FileSink sink(settings);
    EXPECT_TRUE(sink.Write(entry));  // what a thread keeps for its lines is there
    unsigned taken = 1;
    unsigned refused = 0;
    {
      const MemoryOutage outage;
      for (unsigned number = 0; number < 2000; ++number) ++(sink.Write(entry) ? taken : refused);
      sink.Flush(100);
    }
    EXPECT_TRUE(sink.Write(entry));
    ++taken;
    EXPECT_TRUE(sink.Flush(10000));
    const qz_LOG_SinkCounts counts = sink.GetCounts();
    EXPECT_EQ(counts.written, taken);
    EXPECT_EQ(counts.failed, refused);
    EXPECT_GT(taken, 100U);
    EXPECT_EQ(sink.Close(10000), 0U);
    WrittenLines written;
    written.take_series(folder_.path(""), "app");
    EXPECT_EQ(written.damaged, std::vector<std::string>());
    EXPECT_EQ(written.numbers[way].size(), taken);
    unsigned long long told = 0;
    for (const auto& [event, count] : written.lost) told += static_cast<unsigned long long>(count);
    EXPECT_EQ(told, refused);
    std::filesystem::remove_all(folder_.path(""));
    std::filesystem::create_directory(folder_.path(""));
  }
}

}  // namespace
}  // namespace qz_test
