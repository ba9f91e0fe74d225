#ifndef QZLOG_ENTRY_ATTRIBUTE_STORE_H
#define QZLOG_ENTRY_ATTRIBUTE_STORE_H

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "definitions/attribute_name.h"
#include "entry/logattrib.h"
#include "foundation/hash_index.h"
#include "foundation/no_copies.h"

/// The attribute values of one entry by name, each name at most once. As many values as most entries have, and their
/// names, stand inside the store, so that adding them takes no memory; further ones are on the heap. A value stays
/// where it is until it is removed. Running out of memory throws QZX_memory_alloc and leaves the store as it was.
class _qz_LOG_attribute_store : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr unsigned kInlineValues = 10;
  static constexpr std::size_t kInlineNameBytes = 128;

  // User-provided: the room for values is left uninitialised even where a store is value-initialised.
  _qz_LOG_attribute_store() {}  // NOLINT(modernize-use-equals-default)
  ~_qz_LOG_attribute_store() { clear(); }

  /// The stored value or null.
  _qz_LOG_type_base* find(const _qz_LOG_attribute_name& name) const;

  /// Adds the value or replaces the one under the name, whatever its type.
  template <unsigned char code>
  void put(const _qz_LOG_attribute_name& name, typename _qz_LOG_value_of<code>::type&& value) {
    using Stored = _qz_LOG_stored<code>;
    _qz_LOG_type_base* const former = find(name);
    if (former == nullptr) {
      Cell& cell = claim_cell(name);
      new (cell.value) Stored(std::move(value));
    } else if (former->get_type() == code) {
      static_cast<Stored*>(former)->value = std::move(value);
    } else {
      // The entry's ID was changed since, and the name stands for another type now.
      former->~_qz_LOG_type_base();
      new (former) Stored(std::move(value));
    }
  }
  /// The same with a copy of a value whose type is known at run time only.
  void put_copy(const _qz_LOG_attribute_name& name, const _qz_LOG_type_base& value);

  /// False when there is none.
  bool remove(const _qz_LOG_attribute_name& name);
  /// Removes every value.
  void clear();

  /// Calls visit(const char* name, const _qz_LOG_type_base& value) for each value, in no order that means anything.
  template <typename Visit>
  void for_each(Visit visit) const {
    for (unsigned i = 0; i < count_; ++i) {
      const Cell& cell = cell_at(i);
      if (cell.name != nullptr) visit(cell.name, *value_in(cell));
    }
  }

 private:
  struct Cell {
    alignas(_qz_LOG_stored<TypeChar32>) alignas(_qz_LOG_stored<TypeFloat>) unsigned char value[_qz_LOG_kStoredSize];
    const char* name;  // null: the value was removed
  };
  struct HeapCell {
    Cell cell;
    unsigned hash;
  };

  static _qz_LOG_type_base* value_in(const Cell& cell) {
    return std::launder(reinterpret_cast<_qz_LOG_type_base*>(const_cast<unsigned char*>(cell.value)));
  }
  Cell& cell_at(unsigned i) { return i < kInlineValues ? cells_[i] : further_[i - kInlineValues]->cell; }
  const Cell& cell_at(unsigned i) const { return i < kInlineValues ? cells_[i] : further_[i - kInlineValues]->cell; }
  unsigned& hash_at(unsigned i) { return i < kInlineValues ? hashes_[i] : further_[i - kInlineValues]->hash; }
  unsigned hash_at(unsigned i) const { return i < kInlineValues ? hashes_[i] : further_[i - kInlineValues]->hash; }
  bool holds(unsigned i, const _qz_LOG_attribute_name& name) const;
  unsigned find_position(const _qz_LOG_attribute_name& name) const;

  Cell& claim_cell(const _qz_LOG_attribute_name& name);
  unsigned first_removed() const;
  void make_room_behind(unsigned position);
  const char* store_name(const _qz_LOG_attribute_name& name);
  void release_name(const char* name);

  static constexpr unsigned kNone = qz_HashIndex::kNone;

  unsigned count_ = 0;  // cells in use, those of removed values included
  unsigned removed_ = 0;
  unsigned name_bytes_ = 0;
  unsigned hashes_[kInlineValues];
  Cell cells_[kInlineValues];
  char names_[kInlineNameBytes];
  std::vector<std::unique_ptr<HeapCell>> further_;
  qz_HashIndex index_;  // made when there are heap cells
};

#endif  // QZLOG_ENTRY_ATTRIBUTE_STORE_H
