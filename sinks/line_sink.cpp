#include "sinks/line_sink.h"

#include <algorithm>

#include "foundation/thread_instance.h"
#include "sinks/line_colour.h"
#include "sinks/line_room.h"
#include "sinks/sink_clock.h"

namespace qzlog {

namespace {

unsigned highest_level(const std::vector<LossTable::Row>& rows) {
  unsigned level = 0;
  for (const LossTable::Row& row : rows) level = std::max(level, row.level);
  return level;
}

}  // namespace

std::size_t LineSink::write(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index) {
  if (is_closed_.load(std::memory_order_relaxed)) return 0;
  const unsigned level = entry.GetLogLevel();
  try {
    return with_thread_instance<LineRoom>([&](LineRoom& room) {
      std::string& line = room.begin();
      append_line(entry, use_default, selector_index, line);
      return take(line, entry.GetEntryID(), level);
    });
  } catch (...) {
    note_loss(entry.GetEntryID(), level);
    return 0;
  }
}

void LineSink::append_line(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index, std::string& line) {
  const bool has_colour = colour_ == Colour::kByLevel;
  if (has_colour) line += colour_of_level(entry.GetLogLevel());
  form_->append_entry(entry, use_default, selector_index, line);
  if (has_colour) line += end_of_colour(entry.GetLogLevel());
  line += '\n';
}

std::size_t LineSink::take(const std::string& line, unsigned id, unsigned level) {
  if (losses_.has_any()) tell_losses();
  if (const std::size_t bytes = destination_->take(line, level); bytes != 0) return bytes;
  if (!is_closed_.load(std::memory_order_relaxed)) note_loss(id, level);
  return 0;
}

void LineSink::note_loss(unsigned id, unsigned level) noexcept {
  leave_to_parent();
  losses_.add(id, level, SinkClock::now());
}

/// What was lost before a fork is told by the parent.
void LineSink::leave_to_parent() noexcept {
  if (!process_.is_new_process()) return;
  try {
    losses_.take(losses_.rows());
  } catch (...) {  // NOLINT(bugprone-empty-catch): without memory it is told twice
  }
}

bool LineSink::take_told(ToldOf kind, const std::vector<LossTable::Row>& rows) {
  std::string lines;
  form_->append_told(kind, rows, lines);
  return destination_->take(lines, highest_level(rows)) != 0;
}

/// Telling must not keep the entry from being written, and waits for no memory: the next line tells as well.
void LineSink::tell_losses() {
  const StreamHold hold(telling_, 0);
  if (!hold) return;
  leave_to_parent();
  try {
    const std::vector<LossTable::Row> rows = losses_.rows();
    if (!rows.empty() && take_told(ToldOf::kLost, rows)) losses_.take(rows);
  } catch (...) {  // NOLINT(bugprone-empty-catch): the next line tries again
  }
}

bool LineSink::tell_held(const std::vector<LossTable::Row>& rows) {
  return !is_closed_.load(std::memory_order_relaxed) && take_told(ToldOf::kHeld, rows);
}

bool LineSink::flush(unsigned milliseconds) {
  if (losses_.has_any()) tell_losses();
  return destination_->flush(milliseconds);
}

unsigned long long LineSink::close(unsigned milliseconds) {
  if (!is_closed_.exchange(true) && losses_.has_any()) tell_losses();
  return destination_->close(milliseconds);
}

}  // namespace qzlog
