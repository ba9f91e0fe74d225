#ifndef SHOP_EVENT_LOG_H
#define SHOP_EVENT_LOG_H

#include <qzlog.h>

#include <atomic>
#include <memory>
#include <string>

/// What became of the entries that the service told.
struct EventLogResult {
  unsigned long long written;
  unsigned long long filtered;   ///< held back by shop.conf
  unsigned long long failed;     ///< not taken, or not in the file when the time to close was over
  unsigned long long uncounted;  ///< written, but missing in the counter
};

/// The service's log: the entries that shop.conf lets pass, in a series of files, and how many of each event there were
/// on each day. Any thread may tell at any time before the log is closed.
class EventLog {
 public:
  /// Writes FOLDER/logs/shop.*, a folder that has to exist, and counts in FOLDER/events.cnt. Throws what the sink and
  /// the counter throw when they cannot be opened.
  explicit EventLog(const std::string& folder);

  /// Adds time and machine to the entry and writes it. Throws nothing for an entry that cannot be written: the service
  /// goes on, and the log itself tells of it as soon as writing works again.
  void tell(qz_LOG_LogEntry&& entry);

  /// Waits until all that was told has reached its file: before something that may end the process. False when it has
  /// not within a second.
  bool flush() noexcept;
  EventLogResult close() noexcept;

 private:
  void count(unsigned event) noexcept;

  const std::unique_ptr<qz_LOG_Sink> sink_;
  qz_LOG_SharedCounter counter_;
  const std::string computer_;
  std::atomic<unsigned long long> uncounted_{0};
};

#endif  // SHOP_EVENT_LOG_H
