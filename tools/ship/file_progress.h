#ifndef QZLOG_TOOLS_SHIP_FILE_PROGRESS_H
#define QZLOG_TOOLS_SHIP_FILE_PROGRESS_H

#include <cstdint>
#include <memory>
#include <string>

#include "tools/logs/log_inputs.h"

namespace qzlog_tool {

/// How far a file of a series has got: up to where nobody has to send anything of it any more. It outlives the open
/// file, until its last lines are settled.
struct FileProgress {
  const LogSeries* series = nullptr;
  SeriesPlace place;
  std::string path;                ///< from the root
  std::uint64_t settled = 0;       ///< behind the last line that is settled
  std::string identity = {};       ///< of that line; empty: none is
  std::uint64_t end = UINT64_MAX;  ///< nothing more comes behind this; not known before the file is closed
  bool is_done() const { return settled >= end; }
};

/// What was read from a file: a line, or a part that is none.
struct ReadLine {
  FileProgress* file = nullptr;
  std::uint64_t begin = 0;  ///< where it stands in the file
  std::uint64_t end = 0;    ///< where the next one stands
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_FILE_PROGRESS_H
