// Entries that are kept, while the product works, by sinks that a file describes.
#include "keep_entries.h"

#include <qzlog.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <thread>

#include "events.h"
#include "sample_entries.h"
#include "settings.h"

namespace {

constexpr unsigned kRounds = 12;
constexpr std::chrono::milliseconds kPause(200);
constexpr unsigned kFlushMilliseconds = 1000;
constexpr unsigned kCloseMilliseconds = 5000;

/// The product's log, for all of its threads.
class EventLog {
 public:
  explicit EventLog(const std::string& sinks_file) : sink_(qz_LOG_OpenSinks(sinks_file.c_str(), "log")) {}

  /// An entry that nobody wants is not even built. The product goes on when one cannot be written: the sink counts it,
  /// and the log says so as soon as it can be written again.
  template <typename Build>
  void tell(unsigned level, Build build) {
    if (!sink_->Wants(level, qz_LOG_Sink::kEveryMask)) return;
    qz_LOG_LogEntry entry = build();
    entry.SetTimestamp(qz_Time::now(), true);
    sink_->Write(entry);
  }

  qz_LOG_Sink& sink() { return *sink_; }

 private:
  const std::unique_ptr<qz_LOG_Sink> sink_;
};

/// The selector attribute decides which message readers see.
qz_LOG_LogEntry almost_full(unsigned round) {
  qz_LOG_LogEntry entry = volume_almost_full();
  entry.AddAttrib4u("Free", 28672 - 1024 * round);
  if (round % 3 == 1) entry.AddAttrib2u("Reason", kQuota);
  if (round % 3 == 2) entry.AddAttrib2u("Reason", kSnapshots);
  return entry;
}

void work(EventLog& log, unsigned round) {
  constexpr qz_LOG_LogEntry (*kErrors[])() = {disk_failed, backup_finished, controller_restarted};
  log.tell(kTrace, volume_mounted);
  log.tell(kNotice, setting_changed);
  log.tell(kNotice, share_created);
  log.tell(kWarning, [round] { return almost_full(round); });
  log.tell(kWarning, replication_slow);
  log.tell(kError, kErrors[round % 3]);
  for (int reading = 0; reading < 5; ++reading) log.tell(kWarning, disk_temperature);
}

/// Before something that may end the process: has all that was written arrived where it is kept?
void flush(EventLog& log) {
  if (!log.sink().Flush(kFlushMilliseconds)) std::cout << "Entries are still on their way.\n";
}

bool close(EventLog& log) {
  const unsigned long long left = log.sink().Close(kCloseMilliseconds);
  const qz_LOG_SinkCounts counts = log.sink().GetCounts();
  std::cout << "Entries written: " << counts.written << ", failed: " << counts.failed << ", left: " << left << '\n';
  return counts.failed == 0 && left == 0;
}

}  // namespace

bool keep_entries(const std::string& folder, const std::string& sinks_file) {
  use_catalog(folder, QZ_LOCALE_EN_US);  // for the sinks that write messages
  EventLog log(sinks_file);
  for (unsigned round = 0; round < kRounds; ++round) {
    work(log, round);
    std::this_thread::sleep_for(kPause);
  }
  flush(log);
  return close(log);
}
