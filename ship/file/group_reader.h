#ifndef QZLOG_SHIP_FILE_GROUP_READER_H
#define QZLOG_SHIP_FILE_GROUP_READER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "ship/file/group_file.h"
#include "ship/file/record_file.h"
#include "ship/transport.h"

namespace qzlog_ship {

/// Reads a file together with other processes: each takes the next records, or those that one left which is gone.
class GroupReader {
 public:
  /// Up to `end` bytes of the file. `descriptor` has to stay open.
  GroupReader(RecordFileName file, int descriptor, const std::string& group, std::uint64_t end,
              const std::function<GroupState()>& begin);

  /// As qzlog_transport has it: false at the end, where nobody has records that are not settled.
  bool read(qzlog_received* records, std::size_t most, std::uint32_t timeout_ms, std::size_t& count);
  void settle(std::span<const std::uint64_t> tokens);

 private:
  /// Bytes of the file that are the records first, first + 1, and so on.
  struct Part {
    std::uint64_t begin = 0;
    std::uint64_t first = 0;
    bool again = false;
    std::vector<std::uint64_t> ends;
  };

  enum class Found { kRecords, kNothing, kEnd };

  Found take(std::size_t most);
  bool take_left(GroupState& state, std::size_t most);
  bool take_next(GroupState& state, std::size_t most);
  void cut(std::uint64_t begin, std::uint64_t end, std::size_t most);
  bool read_block(std::uint64_t begin, std::uint64_t end);
  void refuse_shorter_file(const GroupState& state) const;
  std::size_t give_out(qzlog_received* records);
  void keep_claims(GroupState& state) const;

  RecordFileName file_;
  int descriptor_;
  std::uint64_t end_;
  GroupFile group_;
  std::string bytes_;
  Part part_;                                                                   // that was read last
  std::map<std::uint64_t, std::pair<std::uint64_t, std::uint64_t>> unsettled_;  // records to their bytes
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_FILE_GROUP_READER_H
