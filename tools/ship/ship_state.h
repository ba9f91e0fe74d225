#ifndef QZLOG_TOOLS_SHIP_SHIP_STATE_H
#define QZLOG_TOOLS_SHIP_SHIP_STATE_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tools/logs/log_inputs.h"

namespace qzlog_tool {

/// Where a file of a series is settled.
struct FilePlace {
  SeriesPlace place;
  std::uint64_t offset = 0;  ///< behind the last line
  std::string identity;      ///< of that line; empty: none is
  bool operator==(const FilePlace&) const = default;
};

struct SeriesState {
  std::string series;             ///< FOLDER/PREFIX from the root
  std::vector<FilePlace> places;  ///< in order
  bool operator==(const SeriesState&) const = default;
};

/// What a shipper remembers: which lines nobody has to send any more. All of a series that stands before the first of
/// its places is settled.
struct ShipState {
  std::string to;  ///< the URL
  std::vector<SeriesState> series;
  bool operator==(const ShipState&) const = default;
};

/// JSON with a checksum of all that stands before it.
std::string state_text(const ShipState& state);

/// What stands before a checksum, with the one that it has to have.
std::string with_checksum(std::string_view text);

/// Thrown, with the reason, for what is no state or is damaged.
struct BadState : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Throws BadState.
ShipState parse_state(std::string_view text);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_SHIP_STATE_H
