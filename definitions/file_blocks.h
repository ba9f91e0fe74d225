#ifndef QZLOG_DEFINITIONS_FILE_BLOCKS_H
#define QZLOG_DEFINITIONS_FILE_BLOCKS_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "definitions/record_bytes.h"
#include "foundation/no_copies.h"

namespace qzlog {

/// A file read by position, in blocks that stay in memory: each number of a block has one place, which the next one
/// that belongs there takes over. Copies are handed out, so that a file that is cut in place is an error and no signal.
/// For one thread at a time.
class FileBlocks : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr std::size_t kBlockSize = 2048;

  /// The descriptor stays the caller's, open as long as this is used. There is room for one block.
  explicit FileBlocks(int descriptor) noexcept : descriptor_(descriptor) {}

  /// Makes room for as many blocks as go into so many bytes, one at least. Without memory for them the former room
  /// stays.
  void set_room(std::size_t bytes) noexcept;
  /// False when the file ends before, or cannot be read. A block that there is no memory for is read each time.
  bool read(std::uint64_t offset, void* target, std::size_t size) noexcept;
  /// Whether the file has so many bytes.
  bool has_bytes(std::uint64_t size) const noexcept;
  /// What was read is not used any more.
  void forget() noexcept;

 private:
  struct Block {
    std::uint64_t number = 0;
    std::size_t size = 0;  // fewer than kBlockSize at the end of the file; 0 for none
    std::unique_ptr<char[]> memory;
  };

  bool copy_from_block(std::uint64_t offset, char* target, std::size_t size) noexcept;
  char* memory_of(Block& block) noexcept;

  int descriptor_;
  std::size_t count_ = 1;
  std::unique_ptr<Block[]> blocks_;  // null where there is room for one
  Block only_;
  char only_memory_[kBlockSize] = {};
};

/// What stands in a file behind an offset.
class BlockBytes final : public RecordBytes {
 public:
  BlockBytes(FileBlocks& blocks, std::uint64_t offset) : blocks_(blocks), offset_(offset) {}

  bool read(void* target, std::size_t size) noexcept override {
    if (!blocks_.read(offset_, target, size)) return false;
    offset_ += size;
    return true;
  }
  bool has_left(std::size_t size) noexcept override { return blocks_.has_bytes(offset_ + size); }

 private:
  FileBlocks& blocks_;
  std::uint64_t offset_;
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_FILE_BLOCKS_H
