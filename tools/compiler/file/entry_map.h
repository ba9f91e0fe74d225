#ifndef QZLOG_TOOLS_COMPILER_FILE_ENTRY_MAP_H
#define QZLOG_TOOLS_COMPILER_FILE_ENTRY_MAP_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog_compiler {

struct EntryMapPair {
  std::uint32_t id = 0;
  std::uint32_t record_offset = 0;
};

/// The pairs of a compiled file's entry map, repeated IDs included, as far as the file has them; empty without a whole
/// header.
std::vector<EntryMapPair> read_entry_map(std::string_view bytes);

/// Appends pairs to a compiled file and returns the offset of the first; nothing in the header changes.
std::size_t append_map_pairs(std::string& bytes, const std::vector<EntryMapPair>& pairs);

/// Changes the header of a compiled file so that its entry map is `count` pairs from `offset` on.
void set_entry_map(std::string& bytes, std::size_t offset, std::size_t count);

/// Changes the header of a compiled file so that it has no global attributes.
void leave_out_globals(std::string& bytes);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_FILE_ENTRY_MAP_H
