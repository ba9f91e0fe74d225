#ifndef QZLOG_TOOLS_SHIP_LINE_VALUES_H
#define QZLOG_TOOLS_SHIP_LINE_VALUES_H

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "ship/transport.h"

namespace qzlog_tool {

/// What a line holds, for plug-ins that ask: its members and the attributes of its entry.
class LineValues {
 public:
  /// Reads the line, whose bytes are not needed any more then. False, and nothing is found, where it is no JSON object.
  bool read(std::string_view line);

  /// Kind QZLOG_ABSENT where there is none; lists and objects count as none. Valid until the next call of read.
  qzlog_value find_member(std::string_view name) const { return find(members_, name); }
  qzlog_value find_attribute(std::string_view name) const { return find(attributes_, name); }
  const std::vector<qzlog_attribute>& attributes() const { return attributes_; }
  /// For what knows more than the line does.
  std::vector<qzlog_attribute>& attributes() { return attributes_; }

 private:
  class Reader;

  static qzlog_value find(const std::vector<qzlog_attribute>& values, std::string_view name);

  std::vector<qzlog_attribute> members_;
  std::vector<qzlog_attribute> attributes_;
  std::deque<std::string> texts_;  // what they refer to
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_LINE_VALUES_H
