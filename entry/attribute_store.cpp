#include "entry/attribute_store.h"

#include <cstring>
#include <functional>

#include "foundation/allocate.h"

bool _qz_LOG_attribute_store::holds(unsigned i, const _qz_LOG_attribute_name& name) const {
  if (hash_at(i) != name.hash) return false;
  const char* const stored_name = cell_at(i).name;
  return stored_name != nullptr && std::strcmp(stored_name, name.text) == 0;
}

unsigned _qz_LOG_attribute_store::find_position(const _qz_LOG_attribute_name& name) const {
  if (!index_.empty()) return index_.find(name.hash, [&](unsigned position) { return holds(position, name); });
  for (unsigned i = 0; i < count_; ++i) {
    if (holds(i, name)) return i;
  }
  return kNone;
}

_qz_LOG_type_base* _qz_LOG_attribute_store::find(const _qz_LOG_attribute_name& name) const {
  const unsigned position = find_position(name);
  return position != kNone ? value_in(cell_at(position)) : nullptr;
}

void _qz_LOG_attribute_store::put_copy(const _qz_LOG_attribute_name& name, const _qz_LOG_type_base& value) {
  // Built aside: nothing may change when there is no memory for the copy.
  Cell copy;
  _qz_LOG_copy_value(value, copy.value);
  const std::unique_ptr<_qz_LOG_type_base, void (*)(_qz_LOG_type_base*)> guard(
      value_in(copy), [](_qz_LOG_type_base* built) { built->~_qz_LOG_type_base(); });
  void* place = nullptr;
  if (_qz_LOG_type_base* const former = find(name)) {
    former->~_qz_LOG_type_base();
    place = former;
  } else {
    place = claim_cell(name).value;
  }
  _qz_LOG_move_value(*guard, place);
}

bool _qz_LOG_attribute_store::remove(const _qz_LOG_attribute_name& name) {
  const unsigned position = find_position(name);
  if (position == kNone) return false;
  Cell& cell = cell_at(position);
  value_in(cell)->~_qz_LOG_type_base();
  release_name(std::exchange(cell.name, nullptr));
  ++removed_;
  return true;
}

void _qz_LOG_attribute_store::clear() {
  for (unsigned i = 0; i < count_; ++i) {
    Cell& cell = cell_at(i);
    if (cell.name == nullptr) continue;
    value_in(cell)->~_qz_LOG_type_base();
    release_name(cell.name);
  }
  count_ = 0;
  removed_ = 0;
  name_bytes_ = 0;
  further_.clear();
  index_.clear();
}

/// A cell under this name for the caller to build a value in, which must not throw.
_qz_LOG_attribute_store::Cell& _qz_LOG_attribute_store::claim_cell(const _qz_LOG_attribute_name& name) {
  const unsigned position = removed_ == 0 ? count_ : first_removed();
  if (position >= kInlineValues) make_room_behind(position);
  Cell& cell = cell_at(position);
  cell.name = store_name(name);
  hash_at(position) = name.hash;
  if (position == count_) {
    ++count_;
    if (!index_.empty()) index_.insert(name.hash, position);
  } else {
    --removed_;
    if (!index_.empty()) index_.reindex(count_, [this](unsigned i) { return hash_at(i); });
  }
  return cell;
}

/// A heap cell for the position, unless it has one, and room for it in the index.
void _qz_LOG_attribute_store::make_room_behind(unsigned position) try {
  index_.reserve(position + 1, count_, [this](unsigned i) { return hash_at(i); });
  if (position - kInlineValues == further_.size()) further_.push_back(std::make_unique<HeapCell>());
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

unsigned _qz_LOG_attribute_store::first_removed() const {
  unsigned position = 0;
  while (cell_at(position).name != nullptr) ++position;
  return position;
}

const char* _qz_LOG_attribute_store::store_name(const _qz_LOG_attribute_name& name) {
  const std::size_t size = std::size_t{name.length} + 1;
  char* stored = names_ + name_bytes_;
  if (size <= kInlineNameBytes - name_bytes_) {
    name_bytes_ += static_cast<unsigned>(size);
  } else {
    stored = qz_new_array<char>(size);
  }
  std::memcpy(stored, name.text, size);
  return stored;
}

/// The room of a name inside the store is free again when the store is cleared.
void _qz_LOG_attribute_store::release_name(const char* name) {
  const bool is_inside = std::greater_equal<>()(name, names_) && std::less<>()(name, names_ + kInlineNameBytes);
  if (!is_inside) delete[] name;
}
