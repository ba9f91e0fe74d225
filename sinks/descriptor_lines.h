#ifndef QZLOG_SINKS_DESCRIPTOR_LINES_H
#define QZLOG_SINKS_DESCRIPTOR_LINES_H

#include <atomic>
#include <string_view>

#include "sinks/descriptor_write.h"
#include "sinks/line_destination.h"
#include "sinks/stream_lock.h"

namespace qzlog {

/// Lines to a descriptor, each in one write where the system takes it whole.
class DescriptorLines : public LineDestination {
 public:
  static constexpr unsigned kUsualWaitMilliseconds = 1000;

  /// Throws QZX_logging_illegal_argument, naming the setting.
  DescriptorLines(int descriptor, unsigned longest_wait_milliseconds);
  ~DescriptorLines() override;
  /// From now on the descriptor is closed with this object.
  void own() { is_owned_ = true; }

  std::size_t take(std::string_view line, unsigned level) override;
  bool flush(unsigned milliseconds) override;
  unsigned long long close(unsigned milliseconds) override;

 private:
  bool write_line(std::string_view line, long long deadline);
  bool end_fragment(long long deadline);
  /// What an owned descriptor leads to stays.
  StreamKind kind() const { return is_owned_ ? kind_ : kind_of(descriptor_); }

  const int descriptor_;
  const long long longest_wait_;
  const StreamKind kind_;
  bool is_owned_ = false;

  std::atomic<bool> is_closed_{false};
  StreamLock lock_;            // guards what follows, and the order of what is written
  bool has_fragment_ = false;  // a line was begun and not ended
  bool is_stalled_ = false;    // the last line was waited for in vain
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_DESCRIPTOR_LINES_H
