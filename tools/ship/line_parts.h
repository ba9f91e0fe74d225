#ifndef QZLOG_TOOLS_SHIP_LINE_PARTS_H
#define QZLOG_TOOLS_SHIP_LINE_PARTS_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "tools/logs/line_members.h"

namespace qzlog_tool {

/// What is told of a line to its receiver beside the line. Texts are empty where the line does not say them.
struct LineParts {
  std::string_view writer = {};
  std::uint64_t seq = 0;
  bool has_identity = false;  ///< it has a writer and a running number
  std::uint32_t id = 0;       ///< 0: none
  int level = -1;             ///< -1: none
  std::string_view event = {};
};

/// Finds the parts of lines: by the bytes of their beginning where they are written as writers write them, else by
/// reading them as JSON.
class LinePartsFinder {
 public:
  /// False for what is no whole JSON object. The parts are valid until the next call, and as long as the line. A line
  /// that begins as writers write them and ends with a brace counts as whole without a further look.
  bool find(std::string_view line, LineParts& parts);

 private:
  bool read(std::string_view line, LineParts& parts);

  std::optional<LineMembers> members_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_LINE_PARTS_H
