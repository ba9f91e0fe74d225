#ifndef QZLOG_TOOLS_SHIP_SHIP_METRICS_H
#define QZLOG_TOOLS_SHIP_SHIP_METRICS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qzlog_tool {

/// How a shipper is doing, since its start.
struct ShipMetrics {
  using Moment = std::chrono::system_clock::time_point;

  /// Of a series, at this moment.
  struct Series {
    std::string series;
    std::string file;          ///< the last one that something was settled of
    std::uint64_t offset = 0;  ///< to where
    std::uint64_t waiting_bytes = 0;
  };

  std::string to;
  Moment started = std::chrono::system_clock::now();
  std::uint64_t read_lines = 0;
  std::uint64_t read_bytes = 0;
  std::uint64_t passed_over = 0;   ///< lines that were not wanted
  std::uint64_t acknowledged = 0;  ///< lines, doubles among them
  std::uint64_t acknowledged_bytes = 0;
  std::uint64_t doubles = 0;  ///< that the receiver says it had already
  std::uint64_t dead_letters = 0;
  std::uint64_t unreadable = 0;  ///< things that could not be read: logs, folders
  std::uint64_t missed = 0;      ///< times that files were gone before they were delivered
  std::uint64_t batches = 0;     ///< that were sent, each time
  std::uint64_t sent_again = 0;  ///< lines of them that had been sent before
  std::uint64_t failures = 0;    ///< times that the receiver could not be reached or took nothing
  bool is_connected = false;     ///< the last attempt succeeded
  std::string latest_failure;    ///< empty: none
  std::optional<Moment> latest_acknowledgement;
};

/// One JSON object, with a line feed; `now`: the moment that it tells.
std::string metrics_text(const ShipMetrics& metrics, const std::vector<ShipMetrics::Series>& series,
                         ShipMetrics::Moment now);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_SHIP_METRICS_H
