#include "definitions/file_blocks.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/position_reads.h"

namespace qzlog {

void FileBlocks::set_room(std::size_t bytes) noexcept {
  const std::size_t count = std::max<std::size_t>(bytes / kBlockSize, 1);
  if (count == count_) return;
  std::unique_ptr<Block[]> blocks(count > 1 ? new (std::nothrow) Block[count] : nullptr);
  if (count > 1 && blocks == nullptr) return;
  forget();
  blocks_ = std::move(blocks);
  count_ = count;
}

bool FileBlocks::read(std::uint64_t offset, void* target, std::size_t size) noexcept {
  char* position = static_cast<char*>(target);
  while (size != 0) {
    const std::size_t in_block = std::min(size, kBlockSize - static_cast<std::size_t>(offset % kBlockSize));
    if (!copy_from_block(offset, position, in_block)) return false;
    offset += in_block;
    position += in_block;
    size -= in_block;
  }
  return true;
}

bool FileBlocks::copy_from_block(std::uint64_t offset, char* target, std::size_t size) noexcept {
  const std::uint64_t number = offset / kBlockSize;
  Block& block = blocks_ != nullptr ? blocks_[number % count_] : only_;
  char* const memory = memory_of(block);
  if (memory == nullptr) return read_at(descriptor_, offset, target, size);
  if (block.size == 0 || block.number != number) {
    block.number = number;
    block.size = read_up_to(descriptor_, number * kBlockSize, memory, kBlockSize);
  }
  const auto begin = static_cast<std::size_t>(offset % kBlockSize);
  if (begin + size > block.size) return false;
  std::memcpy(target, memory + begin, size);
  return true;
}

char* FileBlocks::memory_of(Block& block) noexcept {
  if (&block == &only_) return only_memory_;
  if (block.memory == nullptr) block.memory.reset(new (std::nothrow) char[kBlockSize]);
  return block.memory.get();
}

bool FileBlocks::has_bytes(std::uint64_t size) const noexcept {
  struct stat status {};
  return fstat(descriptor_, &status) == 0 && status.st_size >= 0 && static_cast<std::uint64_t>(status.st_size) >= size;
}

void FileBlocks::forget() noexcept {
  only_.size = 0;
  for (std::size_t i = 0; blocks_ != nullptr && i < count_; ++i) blocks_[i].size = 0;
}

}  // namespace qzlog
