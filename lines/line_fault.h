#ifndef QZLOG_LINES_LINE_FAULT_H
#define QZLOG_LINES_LINE_FAULT_H

#include <cstddef>
#include <string>

#include "lines/line_rule.h"

namespace qzlog {

/// Thrown for a line that is no entry; the next one may be.
struct LineFault {
  static constexpr std::size_t kWholeLine = static_cast<std::size_t>(-1);

  LineRule rule;
  std::string text;
  std::size_t place = kWholeLine;  ///< of the byte, counted from 0
  bool ends_early = false;         ///< the line may be the beginning of an entry
  bool is_of_key = false;          ///< the key of the value at `place` is meant
};

}  // namespace qzlog

#endif  // QZLOG_LINES_LINE_FAULT_H
