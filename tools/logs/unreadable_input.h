#ifndef QZLOG_TOOLS_LOGS_UNREADABLE_INPUT_H
#define QZLOG_TOOLS_LOGS_UNREADABLE_INPUT_H

#include <stdexcept>

namespace qzlog_tool {

/// Thrown, with the reason, for an input that cannot be read, or no further; others still can.
struct UnreadableInput : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_LOGS_UNREADABLE_INPUT_H
