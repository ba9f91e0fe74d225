#ifndef QZLOG_SHIP_FILE_GROUP_FILE_H
#define QZLOG_SHIP_FILE_GROUP_FILE_H

#include <functional>
#include <optional>
#include <string>

#include "ship/file/group_state.h"

namespace qzlog_ship {

/// The state of a group, which its readers share: beside the file that they read, with the suffix .group-NAME. A second
/// file, .group-NAME.lock, has a lock for each reader, which ends with its process, and one for changes.
class GroupFile {
 public:
  /// Makes this process a reader; where nobody has read yet, the group begins as `begin` says. Throws as below.
  GroupFile(const std::string& records, const std::string& group, const std::function<GroupState()>& begin);
  ~GroupFile();
  GroupFile(const GroupFile&) = delete;
  GroupFile& operator=(const GroupFile&) = delete;

  /// Changes the state while nobody else does. Throws a failure for good where it is damaged, for now where it cannot
  /// be read or written.
  void change(const std::function<void(GroupState& state)>& change);
  /// The number of this reader, 1 or more.
  unsigned reader() const noexcept { return reader_; }
  /// Whether a reader is there; asked while the state is changed.
  bool is_there(unsigned reader) const;
  const std::string& path() const noexcept { return path_; }

 private:
  void become_reader(const std::function<GroupState()>& begin);
  void take_number();
  std::optional<GroupState> read() const;
  void write(const GroupState& state) const;

  std::string path_;
  int locks_ = -1;
  unsigned reader_ = 0;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_FILE_GROUP_FILE_H
