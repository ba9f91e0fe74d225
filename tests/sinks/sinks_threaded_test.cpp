#include <atomic>
#include <map>
#include <sstream>
#include <thread>

#include "qzlog/filtered_sink.h"
#include "qzlog/limited_sink.h"
#include "qzlog/memory_sink.h"
#include "qzlog/split_sink.h"
#include "qzlog/stream_sink.h"
#include "qzlog/text_sink.h"
#include "tests/sinks/sinks_fixture.h"
#include "tests/support/child_process.h"

namespace {

using namespace qz_test;

constexpr int kThreads = 4;

class SinksThreaded : public SinksTest {
 protected:
  /// Runs the same in several threads, which know their number.
  template <typename Job>
  static void in_threads(Job job) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) threads.emplace_back([&job, i] { job(i); });
    for (std::thread& thread : threads) thread.join();
  }
};

/// Takes every other entry.
class EveryOtherSink : public qz_LOG_Sink {
 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry&, bool, unsigned, unsigned long long& bytes) override {
    static thread_local unsigned number = 0;
    if (++number % 2 == 0) return kFailed;
    bytes = 3;
    return kWritten;
  }
  bool FlushEntries(unsigned) override { return true; }
  unsigned long long CloseEntries(unsigned) override { return 0; }
};

TEST_F(SinksThreaded, Counts_OfMoreThreadsThanPlacesOneAfterAnother_AreExact) {
  constexpr int kGenerations = 4;
  constexpr int kManyThreads = 24;
  constexpr unsigned kEntries = 500;
  EveryOtherSink sinks[2];
  for (int generation = 0; generation < kGenerations; ++generation) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kManyThreads; ++i) {
      threads.emplace_back([&sinks, i] {
        const qz_LOG_LogEntry entry(kDisk, static_cast<unsigned>(i % 3));
        for (unsigned count = 0; count < 2 * kEntries; ++count) sinks[count / 2 % 2].Write(entry);
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  for (const EveryOtherSink& sink : sinks) {
    const qz_LOG_SinkCounts counts = sink.GetCounts();
    constexpr unsigned long long kHalf = kGenerations * kManyThreads * kEntries / 2;
    EXPECT_EQ(counts.written, kHalf);
    EXPECT_EQ(counts.failed, kHalf);
    EXPECT_EQ(counts.bytes, 3 * kHalf);
    for (const unsigned level : {0U, 1U, 2U}) EXPECT_EQ(counts.failed_by_level[level], kHalf / 3) << level;
  }
}

unsigned long long given(const qz_LOG_Sink& sink) {
  const qz_LOG_SinkCounts counts = sink.GetCounts();
  return counts.written + counts.failed + counts.dropped;
}

/// The lines of a pipe, read while they are written.
class ReadLines {
 public:
  explicit ReadLines(int descriptor) : thread_([this, descriptor] { read(descriptor); }) {}
  /// To be called when all that write are closed.
  Texts take() {
    thread_.join();
    std::istringstream all(text_);
    Texts lines;
    for (std::string line; std::getline(all, line);) lines.push_back(line);
    return lines;
  }

 private:
  void read(int descriptor) {
    char part[700];
    for (ssize_t count = 0; (count = ::read(descriptor, part, sizeof(part))) > 0;) {
      text_.append(part, static_cast<std::size_t>(count));
    }
  }
  std::string text_;
  std::thread thread_;
};

TEST_F(SinksThreaded, LinesOfSeveralThreads_AreWholeAndInTheirOrder) {
  const int entries = rounds(2000);
  for (const int flags : {0, O_NONBLOCK}) {
    Pipe pipe(flags);
    if (flags != 0) fcntl(pipe.reader(), F_SETFL, 0);
    ReadLines reader(pipe.reader());
    {
      qz_LOG_StreamSinkSettings settings;
      settings.form = qz_LOG_StreamSinkSettings::kText;
      settings.format = "{message}";
      settings.longest_wait_milliseconds = 60000;
      qz_LOG_StreamSink sink(pipe.writer(), false, settings);
      in_threads([&](int thread) {
        for (int i = 0; i < entries; ++i) {
          const std::string name = std::to_string(thread) + ' ' + std::to_string(i);
          EXPECT_TRUE(write_to(sink, kDisk, 3, name.c_str()));
          EXPECT_TRUE(i % 64 != 0 || sink.Flush(60000));
        }
      });
      EXPECT_EQ(counts_of(sink), std::to_string(kThreads * entries) + "/0/0");
    }
    pipe.close_writer();
    std::map<int, int> next;
    const Texts lines = reader.take();
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(kThreads) * static_cast<std::size_t>(entries));
    for (const std::string& line : lines) {
      int thread = -1;
      int number = -1;
      ASSERT_EQ(std::sscanf(line.c_str(), "Disk %d %d", &thread, &number), 2) << line;
      ASSERT_EQ(number, next[thread]++);
    }
  }
}

/// While threads write, the seconds pass.
class PassingClock {
 public:
  PassingClock() {
    seconds_ = kMoment;
    qzlog::SinkClock::replace([] { return std::timespec{seconds_.load(), 0}; });
  }
  ~PassingClock() { qzlog::SinkClock::replace(nullptr); }
  PassingClock(const PassingClock&) = delete;
  PassingClock& operator=(const PassingClock&) = delete;
  static void pass() { ++seconds_; }

 private:
  static inline std::atomic<std::time_t> seconds_;
};

TEST_F(SinksThreaded, LimitedEntries_AreTakenOrToldExactly) {
  const int entries = rounds(4000);
  const PassingClock clock;
  qz_LOG_MemorySinkSettings large;
  large.most_entries = 1'000'000;
  large.most_bytes = 1ULL << 30;
  qz_LOG_LimitedSinkSettings settings;
  settings.entries_per_second = 3;
  qz_LOG_LimitedSink sink(std::make_unique<qz_LOG_MemorySink>(large), settings);
  std::atomic<unsigned long long> taken{0};
  in_threads([&](int thread) {
    for (int i = 0; i < entries; ++i) {
      if (write_to(sink, i % 2 == 0 ? kDisk : kOther)) ++taken;
      if (thread == 0 && i % 100 == 0) static_cast<void>(sink.Flush(0));
      if (thread == 1 && i % 20 == 0) PassingClock::pass();
    }
  });
  EXPECT_TRUE(sink.Flush(1000));
  EXPECT_GT(sink.GetCounts().dropped, 0U);
  EXPECT_GT(sink.GetCounts().written, 100U);
  EXPECT_EQ(given(sink), static_cast<unsigned long long>(kThreads) * static_cast<unsigned long long>(entries));
  EXPECT_EQ(sink.GetCounts().written, taken);
  unsigned long long told = 0;
  for (const std::string& line : dynamic_cast<qz_LOG_MemorySink&>(sink.GetSink()).GetLines()) {
    for (std::size_t at = 0; (at = line.find("\"count\":", at)) != std::string::npos; ++at) {
      told += std::stoull(line.substr(at + 8));
    }
  }
  EXPECT_EQ(told, sink.GetCounts().dropped);
}

TEST_F(SinksThreaded, SettingsCountsAndEnd_WhileOthersWrite_CountEachEntryOnce) {
  const int entries = rounds(2000);
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  std::vector<std::unique_ptr<qz_LOG_Sink>> sinks;
  sinks.push_back(std::make_unique<qz_LOG_StreamSink>(nowhere, true));
  sinks.push_back(std::make_unique<qz_LOG_TextSink>(nowhere, false));
  sinks.push_back(std::make_unique<qz_LOG_MemorySink>());
  const _qz_LOG_entry_filter filter = {nullptr, nullptr, 0xFFFFFFFFU, 3, 9, "app", false, false};
  qz_LOG_FilteredSink sink(std::make_unique<qz_LOG_SplitSink>(std::move(sinks)), filter);
  in_threads([&](int thread) {
    for (int i = 0; i < entries; ++i) {
      static_cast<void>(write_to(sink, kDisk, static_cast<unsigned>(i % 10)));
      if (thread == 0 && i % 10 == 0) sink.SetWanted(static_cast<unsigned>(i % 5), qz_LOG_Sink::kEveryMask);
      if (thread == 1 && i % 50 == 0) static_cast<void>(sink.GetCounts());
      if (thread == 2 && i % 50 == 0) static_cast<void>(sink.Flush(10));
      if (thread == 3 && i == entries / 2) static_cast<void>(sink.Close(10));
    }
  });
  EXPECT_EQ(given(sink), static_cast<unsigned long long>(kThreads) * static_cast<unsigned long long>(entries));
  EXPECT_GT(sink.GetCounts().written, 0U);
  EXPECT_GT(sink.GetCounts().failed, 0U);
}

// The address sanitizer's allocator has locks of its own, which a fork while another thread allocates leaves locked in
// the child.
#ifndef QZLOG_SANITIZED
TEST_F(SinksThreaded, ForksWhileOthersWrite_LeaveTheChildrenFree) {
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  std::vector<std::unique_ptr<qz_LOG_Sink>> sinks;
  sinks.push_back(std::make_unique<qz_LOG_StreamSink>(nowhere, true));
  sinks.push_back(std::make_unique<qz_LOG_MemorySink>());
  qz_LOG_LimitedSinkSettings settings;
  settings.entries_per_second = 5;
  qz_LOG_LimitedSink sink(std::make_unique<qz_LOG_SplitSink>(std::move(sinks)), settings);
  std::atomic<bool> ends{false};
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < 2; ++i) {
    threads.emplace_back([&, i] {
      while (!ends) static_cast<void>(write_to(sink, i == 0 ? kDisk : kOther));
    });
  }
  for (int i = 0; i < rounds(40); ++i) {
    expect_child_succeeds([&] {
      for (int entry = 0; entry < 20; ++entry) static_cast<void>(write_to(sink));
      return sink.Flush(1000) && sink.Close(1000) == 0 ? 0 : 1;
    });
  }
  ends = true;
  for (std::thread& thread : threads) thread.join();
}
#endif

}  // namespace
