#ifndef QZLOG_SHIP_FILE_GROUP_STATE_H
#define QZLOG_SHIP_FILE_GROUP_STATE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog_ship {

/// Records of a file that a reader has, or had, and that are not settled.
struct GroupClaim {
  unsigned reader = 0;      ///< 0: nobody
  std::uint64_t begin = 0;  ///< bytes of the file
  std::uint64_t end = 0;
  std::uint64_t first = 0;  ///< number of the first record
  bool operator==(const GroupClaim&) const = default;
};

/// What a group of readers has read of a file: everything before `next` but for the claims.
struct GroupState {
  std::uint64_t next = 0;   ///< bytes of the file
  std::uint64_t first = 1;  ///< number of the record there
  std::vector<GroupClaim> claims = {};
  bool operator==(const GroupState&) const = default;

  std::string text() const;
  /// Nothing for what is no such text.
  static std::optional<GroupState> parse(std::string_view text);
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_FILE_GROUP_STATE_H
