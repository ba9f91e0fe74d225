#ifndef QZLOG_SINKS_JOURNAL_DESTINATION_H
#define QZLOG_SINKS_JOURNAL_DESTINATION_H

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

#include "lines/line_envelope.h"
#include "sinks/journal_socket.h"
#include "sinks/line_destination.h"
#include "sinks/stream_lock.h"

namespace qzlog {

/// Messages of a JournalForm to journald, each with the head of its line in front: the number of the last one that was
/// taken, and one more.
class JournalDestination : public LineDestination {
 public:
  /// Throws QZX_logging_illegal_argument, naming the setting, QZX_logging_file_operation_failed when nobody listens at
  /// the path, and QZX_memory_alloc.
  JournalDestination(const std::string& path, unsigned longest_wait_milliseconds);

  std::size_t take(std::string_view text, unsigned level) override;
  bool flush(unsigned milliseconds) override;
  unsigned long long close(unsigned milliseconds) override;

 private:
  std::size_t send(std::string_view text, long long deadline);
  void become_writer();

  const long long longest_wait_;
  std::atomic<bool> is_closed_{false};
  StreamLock lock_;  // guards what follows, and the order of the numbers
  JournalSocket socket_;
  std::optional<LineEnvelope> envelope_;
  pid_t writer_ = 0;  // the process that the envelope names
  std::uint64_t seq_ = 0;
  bool is_stalled_ = false;  // the last message was waited for in vain
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_JOURNAL_DESTINATION_H
