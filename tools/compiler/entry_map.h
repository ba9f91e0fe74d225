#ifndef QZLOG_TOOLS_COMPILER_ENTRY_MAP_H
#define QZLOG_TOOLS_COMPILER_ENTRY_MAP_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog_compiler {

/// The pairs of a compiled file's entry map, repeated IDs included, as far as the file has them; empty without a whole
/// header.
struct EntryMapPair {
  std::uint32_t id = 0;
  std::size_t offset = 0;  ///< of the pair itself
};
std::vector<EntryMapPair> read_entry_map(std::string_view bytes);

/// Changes the header of a compiled file so that its entry map is the one pair at `offset`.
void reduce_entry_map(std::string& bytes, std::size_t offset);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_COMPILER_ENTRY_MAP_H
