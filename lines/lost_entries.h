#ifndef QZLOG_LINES_LOST_ENTRIES_H
#define QZLOG_LINES_LOST_ENTRIES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "lines/json_walk.h"

namespace qzlog {

/// What a writer lost, or held back, of one ID and level.
struct LostEntries {
  std::uint32_t id = 0;
  std::uint32_t level = 0;
  std::uint64_t count = 0;
  std::string since;  ///< "" when it is not said
};

/// Reads a list [{"id":…,"level":…,"count":…,"since":"…"},…], in which "since" alone may be absent, in place of what
/// `rows` holds. `line` is where the places of faults are counted from, `member` the name of the line's member that has
/// the list. Throws LineFault.
void read_lost_entries(JsonPlace list, const char* line, const char* member, std::vector<LostEntries>& rows);

}  // namespace qzlog

#endif  // QZLOG_LINES_LOST_ENTRIES_H
