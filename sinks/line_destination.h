#ifndef QZLOG_SINKS_LINE_DESTINATION_H
#define QZLOG_SINKS_LINE_DESTINATION_H

#include <cstddef>
#include <string_view>

#include "foundation/no_copies.h"

namespace qzlog {

/// Something that takes whole lines. Any thread; lines of several threads are never mixed.
class LineDestination : public qz_UTIL_no_inadvertant_copies {
 public:
  virtual ~LineDestination() = default;
  /// A line with its line break, and the level of its entry. Returns the bytes that were written for it: 0 when it was
  /// not taken, or not to its end; what there is of it is then closed by a line break before the next one. May throw.
  virtual std::size_t take(std::string_view line, unsigned level) = 0;
  /// Whether all that was taken is where it is kept, which is waited for so long.
  virtual bool flush(unsigned milliseconds) = 0;
  /// Takes nothing from now on. How many lines are left that are not kept.
  virtual unsigned long long close(unsigned milliseconds) = 0;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_LINE_DESTINATION_H
