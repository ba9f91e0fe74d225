#ifndef QZLOG_TESTS_SINKS_SINKS_FIXTURE_H
#define QZLOG_TESTS_SINKS_SINKS_FIXTURE_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <ctime>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "qzlog/logcfg.h"
#include "qzlog/sink.h"
#include "sinks/sink_clock.h"
#include "tests/support/ldf_file.h"
#include "tests/support/settings_test.h"
#include "tests/support/support.h"

namespace qz_test {

using Texts = std::vector<std::string>;

constexpr unsigned kDisk = 1001;        // Name (TypeMBChar32); message "Disk NAME"
constexpr unsigned kOther = 1002;       // the same with the property mask 4
constexpr unsigned kHeldEvent = 1003;   // tells of what was held back
constexpr unsigned kWrongEvent = 1004;  // has not all that it needs for that
constexpr unsigned kTwoLines = 1005;    // its template has line breaks and an escape

inline LdfFile sinks_definitions() {
  const std::vector<LdfAttribute> name = {{"Name", TypeMBChar32}};
  return {.globals = {{"TIMEZONE_DIFFERENCE", TypeSInt2}, {"DAYLIGHT_SAVING_ACTIVE", TypeBool}},
          .entries = {{.id = kDisk, .mask = 1, .message_text = "Disk %s%Name%", .attributes = name},
                      {.id = kOther, .mask = 4, .message_text = "Other %s%Name%", .attributes = name},
                      {.id = kHeldEvent,
                       .mask = 1,
                       .attributes = {{"HeldId", TypeUInt4},
                                      {"HeldLevel", TypeUInt1},
                                      {"HeldCount", TypeUInt4},
                                      {"HeldSince", TypeTimestamp}}},
                      {.id = kWrongEvent, .mask = 1, .attributes = {{"HeldId", TypeUInt4}}},
                      {.id = kTwoLines, .mask = 1, .message_text = "a\nb\r\033[2J\x7F\t%s%Name%", .attributes = name}}};
}

inline qz_LOG_LogEntry make_entry(unsigned id = kDisk, unsigned level = 3, const char* name = "vol1") {
  qz_LOG_LogEntry entry(id, level);
  entry.AddAttribMBStr("Name", name);
  return entry;
}
inline bool write_to(qz_LOG_Sink& sink, unsigned id = kDisk, unsigned level = 3, const char* name = "vol1") {
  return sink.Write(make_entry(id, level, name));
}

/// "written/failed/dropped".
inline std::string counts_of(const qz_LOG_Sink& sink) {
  const qz_LOG_SinkCounts counts = sink.GetCounts();
  return std::to_string(counts.written) + '/' + std::to_string(counts.failed) + '/' + std::to_string(counts.dropped);
}

/// Has the clock of sinks stand still while it lives.
class StoppedClock {
 public:
  explicit StoppedClock(std::time_t seconds) {
    now_ = {seconds, 250'000'000};
    qzlog::SinkClock::replace([] { return now_; });
  }
  ~StoppedClock() { qzlog::SinkClock::replace(nullptr); }
  StoppedClock(const StoppedClock&) = delete;
  StoppedClock& operator=(const StoppedClock&) = delete;

  void set(std::time_t seconds) { now_.tv_sec = seconds; }

 private:
  static inline std::timespec now_;
};

/// 2026-11-21T08:15:30Z.
constexpr std::time_t kMoment = 1795248930;

/// A pipe; its ends are closed with it.
class Pipe {
 public:
  explicit Pipe(int flags = 0) {
    if (pipe2(ends_, flags | O_CLOEXEC) != 0) throw std::runtime_error("there is no pipe");
  }
  ~Pipe() {
    close_reader();
    close_writer();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int reader() const { return ends_[0]; }
  int writer() const { return ends_[1]; }
  void close_reader() { close_end(ends_[0]); }
  void close_writer() { close_end(ends_[1]); }
  /// So many pages of 4096 bytes and no more. There is room for others to wait for while one is free.
  void shrink(int pages = 1) const { fcntl(writer(), F_SETPIPE_SZ, pages * 4096); }

  /// What is in it, without waiting for more.
  std::string read_all() const {
    fcntl(reader(), F_SETFL, O_NONBLOCK);
    std::string text;
    char part[4096];
    for (ssize_t count = 0; (count = ::read(reader(), part, sizeof(part))) > 0;) {
      text.append(part, static_cast<std::size_t>(count));
    }
    return text;
  }

 private:
  static void close_end(int& end) {
    if (end >= 0) ::close(std::exchange(end, -1));
  }
  int ends_[2] = {-1, -1};
};

/// Says what each call is to say, and notes the calls.
class ScriptedSink : public qz_LOG_Sink {
 public:
  using Outcome = qz_LOG_Sink::Outcome;
  std::function<Outcome(const qz_LOG_LogEntry&)> on_write = [](const qz_LOG_LogEntry&) { return kWritten; };
  bool flush_result = true;
  unsigned long long left = 0;
  std::vector<qz_LOG_LogEntry> entries;
  std::vector<unsigned> selectors;
  unsigned flushes = 0;
  unsigned closes = 0;
  bool* destroyed = nullptr;

  void fail() {
    on_write = [](const qz_LOG_LogEntry&) { return kFailed; };
  }
  ~ScriptedSink() override {
    if (destroyed != nullptr) *destroyed = true;
  }

 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool, unsigned selector_index, unsigned long long&) override {
    entries.push_back(entry);
    selectors.push_back(selector_index);
    return on_write(entry);
  }
  bool FlushEntries(unsigned) override {
    ++flushes;
    return flush_result;
  }
  unsigned long long CloseEntries(unsigned) override {
    ++closes;
    return left;
  }
};

class SinksTest : public SettingsTest {
 protected:
  SinksTest() {
    qz_LOG_LogConfig::SetCodePage("UTF-8");
    qz_LOG_LogConfig::SetDefinitionPath(folder_.write("std.ldf", sinks_definitions().bytes()).c_str());
  }
};

inline std::string line_of(unsigned level, const char* name = "vol1", unsigned id = kDisk) {
  return R"({"id":)" + std::to_string(id) + R"(,"level":)" + std::to_string(level) + R"(,"attributes":{"Name":")" +
         name + "\"}}\n";
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_SINKS_SINKS_FIXTURE_H
