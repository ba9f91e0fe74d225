#ifndef QZLOG_TOOLS_SHIP_STATE_FILE_H
#define QZLOG_TOOLS_SHIP_STATE_FILE_H

#include <optional>
#include <string>

#include "tools/ship/ship_state.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

/// The file that a state is kept in, locked against a second shipper as long as this object lives: by PATH.lock, which
/// stays. Failures throw CommandError (cannot run).
class StateFile {
 public:
  /// Takes the lock, at once or not at all: an error then names the process that has it.
  explicit StateFile(std::string path);

  /// Nothing where there is no file. A damaged one is an error that says what to do.
  std::optional<ShipState> read() const;
  /// Replaces the file in one step: whenever the process or the host ends, it is the former one or this one.
  void write(const ShipState& state);

  const std::string& path() const noexcept { return path_; }

 private:
  std::string path_;
  FileDescriptor lock_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_STATE_FILE_H
