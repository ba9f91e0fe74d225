#ifndef QZLOG_SINKS_LINE_SINK_H
#define QZLOG_SINKS_LINE_SINK_H

#include <atomic>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "foundation/no_copies.h"
#include "sinks/line_destination.h"
#include "sinks/line_forms.h"
#include "sinks/loss_table.h"
#include "sinks/process_check.h"
#include "sinks/stream_lock.h"

namespace qzlog {

/// What a sink of lines is made of: a form, and a destination that is told what it did not get as soon as it takes
/// lines again.
class LineSink : public qz_UTIL_no_inadvertant_copies {
 public:
  enum class Colour { kNo, kByLevel };

  LineSink(std::unique_ptr<LineDestination> destination, std::unique_ptr<LineForm> form, Colour colour)
      : destination_(std::move(destination)), form_(std::move(form)), colour_(colour) {}

  /// The bytes of the line, 0 when it was not taken.
  std::size_t write(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index);
  /// Lines that tell of entries that were held back. False when they were not taken.
  bool tell_held(const std::vector<LossTable::Row>& rows);

  bool flush(unsigned milliseconds);
  unsigned long long close(unsigned milliseconds);

 private:
  std::size_t take(const std::string& line, unsigned id, unsigned level);
  void append_line(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& line);
  bool take_told(ToldOf kind, const std::vector<LossTable::Row>& rows);
  void tell_losses();
  void note_loss(unsigned id, unsigned level) noexcept;
  void leave_to_parent() noexcept;

  const std::unique_ptr<LineDestination> destination_;
  const std::unique_ptr<LineForm> form_;
  const Colour colour_;
  LossTable losses_{};
  std::atomic<bool> is_closed_{false};
  StreamLock telling_;
  ProcessCheck process_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_LINE_SINK_H
