#ifndef QZLOG_FOUNDATION_HASH_INDEX_H
#define QZLOG_FOUNDATION_HASH_INDEX_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "foundation/allocate.h"

namespace qzlog {

/// Finds the elements of a list by hash once it is too long to be looked through: an open table of positions, half
/// empty at least. The list itself holds hashes and keys.
class HashIndex {
 public:
  /// Lists up to this length are looked through faster than an index answers; they need none.
  static constexpr unsigned kWorthwhile = 10;
  static constexpr unsigned kNone = ~0U;

  bool empty() const { return capacity_ == 0; }
  std::size_t memory_bytes() const { return capacity_ * sizeof(std::uint32_t); }
  void clear() {
    cells_.reset();
    capacity_ = 0;
  }

  /// Makes room for `room` positions. What is there already, the positions 0 to count - 1, is indexed again by what
  /// `hash_of` tells. QZX_memory_alloc, with the index unchanged, without memory.
  template <typename HashOf>
  void reserve(unsigned room, unsigned count, HashOf hash_of) {
    if (capacity_ >= room * 2) return;
    unsigned capacity = 32;
    while (capacity < room * 2) capacity *= 2;
    cells_.reset(new_array<std::uint32_t>(capacity));
    capacity_ = capacity;
    reindex(count, hash_of);
  }
  /// Forgets everything and indexes the positions 0 to count - 1, for which there must be room.
  template <typename HashOf>
  void reindex(unsigned count, HashOf hash_of) {
    for (unsigned i = 0; i < capacity_; ++i) cells_[i] = 0;
    for (unsigned position = 0; position < count; ++position) insert(hash_of(position), position);
  }
  /// Indexes a position, for which there must be room.
  void insert(unsigned hash, unsigned position) {
    unsigned cell = first_cell(hash);
    while (cells_[cell] != 0) cell = next_cell(cell);
    cells_[cell] = position + 1;
  }

  /// The position for which `matches` is true, among those with this hash, else kNone.
  template <typename Matches>
  unsigned find(unsigned hash, Matches matches) const {
    for (unsigned cell = first_cell(hash); cells_[cell] != 0; cell = next_cell(cell)) {
      if (matches(cells_[cell] - 1U)) return cells_[cell] - 1U;
    }
    return kNone;
  }

 private:
  // Multiplied so that hashes that differ in few bits spread over the table.
  unsigned first_cell(unsigned hash) const { return (hash * 0x9E3779B1U >> 7) & (capacity_ - 1); }
  unsigned next_cell(unsigned cell) const { return (cell + 1) & (capacity_ - 1); }

  // Position + 1, or 0. A power of two many.
  std::unique_ptr<std::uint32_t[]> cells_;
  unsigned capacity_ = 0;
};

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_HASH_INDEX_H
