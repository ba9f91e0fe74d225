#include "event_log.h"

#include <unistd.h>

#include "events.h"

namespace {

constexpr unsigned kFlushMilliseconds = 1000;
constexpr unsigned kCloseMilliseconds = 5000;

/// A new file each day and for each 16 MiB, of which the latest fifty stay. What was written survives a crash of the
/// service; errors are on the disk before the service goes on.
qz_LOG_FileSinkSettings file_settings(const std::string& folder) {
  qz_LOG_FileSinkSettings settings;
  settings.folder = folder + "/logs";
  settings.prefix = "shop";
  settings.way = qz_LOG_FileSinkSettings::kShared;
  settings.largest_file_bytes = 16ULL << 20;
  settings.keep_files = 50;
  settings.sync_level = kError;
  settings.lost_event_id = kEntriesLost;
  return settings;
}

/// All levels and entries pass, unless the section [shop] of the configuration file says otherwise.
std::unique_ptr<qz_LOG_Sink> open_sink(const std::string& folder) {
  const _qz_LOG_entry_filter filter = {nullptr, nullptr, 0xFFFFFFFFU, 0, 9, "shop", false, false};
  return std::make_unique<qz_LOG_FilteredSink>(std::make_unique<qz_LOG_FileSink>(file_settings(folder)), filter);
}

std::string name_of_computer() {
  char name[65] = "";
  return gethostname(name, sizeof name - 1) == 0 && name[0] != '\0' ? name : "unknown";
}

}  // namespace

EventLog::EventLog(const std::string& folder)
    : sink_(open_sink(folder)), counter_(folder.c_str(), "events"), computer_(name_of_computer()) {}

void EventLog::tell(qz_LOG_LogEntry&& entry) {
  entry.SetComputerInfo(computer_.c_str());
  entry.SetTimestamp(qz_Time::now(), true);
  if (sink_->Write(entry)) count(entry.GetEntryID());
}

bool EventLog::flush() noexcept { return sink_->Flush(kFlushMilliseconds); }

EventLogResult EventLog::close() noexcept {
  const unsigned long long left = sink_->Close(kCloseMilliseconds);
  const qz_LOG_SinkCounts counts = sink_->GetCounts();
  return {counts.written, counts.dropped, counts.failed + left, uncounted_};
}

// A full disk may keep the counter from growing: the entry itself is safe all the same.
void EventLog::count(unsigned event) noexcept {
  try {
    counter_.IncreaseToday(static_cast<int>(event));
  } catch (const qz_EXCEPTION_base&) {
    ++uncounted_;
  }
}
