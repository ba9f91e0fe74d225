#ifndef QZLOG_FOUNDATION_POSITION_READS_H
#define QZLOG_FOUNDATION_POSITION_READS_H

#include <cstddef>
#include <cstdint>

namespace qzlog {

/// Reads of a descriptor by position. Signals do not end them, and its own position stays.

/// How many bytes were read: fewer than `size` when the file ends before, or cannot be read.
std::size_t read_up_to(int descriptor, std::uint64_t offset, char* target, std::size_t size) noexcept;
/// False when there are fewer.
inline bool read_at(int descriptor, std::uint64_t offset, char* target, std::size_t size) noexcept {
  return read_up_to(descriptor, offset, target, size) == size;
}

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_POSITION_READS_H
