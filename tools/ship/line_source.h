#ifndef QZLOG_TOOLS_SHIP_LINE_SOURCE_H
#define QZLOG_TOOLS_SHIP_LINE_SOURCE_H

#include <string>
#include <vector>

#include "tools/ship/line_taker.h"
#include "tools/ship/ship_metrics.h"
#include "tools/ship/ship_state.h"

namespace qzlog_tool {

/// Where lines come from, with the places up to which they are settled.
class LineSource {
 public:
  virtual ~LineSource() = default;

  /// Gives out the lines that are there until the taker has enough: false then.
  virtual bool read(LineTaker& taker) = 0;
  /// What is named and was not there when it was read: a text for each.
  virtual std::vector<std::string> missing() = 0;
  /// Waits until there may be more, or a signal comes; not for long.
  virtual void wait() = 0;
  /// The next read looks for new files too, whether somebody told of them or not.
  virtual void look_for_files() = 0;
  /// Where everything is settled.
  virtual std::vector<SeriesState> places() = 0;
  virtual std::vector<ShipMetrics::Series> progress() = 0;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_LINE_SOURCE_H
