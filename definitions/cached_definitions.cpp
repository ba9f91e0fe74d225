#include "definitions/cached_definitions.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

#include "definitions/definition_memory.h"
#include "foundation/allocate.h"

namespace qzlog {

namespace {

constexpr unsigned kHashBits = 32;

unsigned bits_of(unsigned power_of_two) {
  unsigned bits = 0;
  while (power_of_two >> bits != 1) ++bits;
  return bits;
}

}  // namespace

void CachedDefinitions::add(_qz_LOG_log_definition* definition) {
  if (cells_ == nullptr) {
    cells_.reset(new_array<Cell>(kFewestCells));
    set_cell_count(kFewestCells);
  }
  const unsigned former = cell_of(definition->get_entry_id());
  if (cells_[former].definition != nullptr) drop_kept(former);
  if (2 * (used_cells_ + 1) > cell_count_) grow();
  // A search ends at a free cell, and there are more cells than are cached.
  while (used_cells_ + 1 >= cell_count_) drop_until_within(kept_bytes_ / 2);
  cells_[cell_of(definition->get_entry_id())] = {definition->get_entry_id(), definition};
  ++used_cells_;
  definition->add_reference();
  take_place(definition);
}

void CachedDefinitions::revive(_qz_LOG_log_definition* kept) {
  kept->prefetch_lists();
  kept_bytes_ -= kept->kept_bytes();
  take_place(kept);
}

/// In the cache, of what has a cell.
void CachedDefinitions::take_place(_qz_LOG_log_definition* definition) {
  definition->set_caching_table(table_);
  if (count_ < kCacheSize) {
    cache_[count_++] = definition;
    return;
  }
  _qz_LOG_log_definition* const oldest = std::exchange(cache_[next_evict_], definition);
  next_evict_ = (next_evict_ + 1) % kCacheSize;
  evict(oldest);
}

/// Holds of other threads on it end with their next lookup.
void CachedDefinitions::evict(_qz_LOG_log_definition* definition) {
  definition->set_caching_table(nullptr);
  definition->set_kept_bytes(definition->memory_bytes() + 2 * sizeof(Cell));
  kept_bytes_ += definition->kept_bytes();
  if (!definition->is_as_read()) return drop_kept(cell_of(definition->get_entry_id()));
  fit_memory();
}

void CachedDefinitions::fit_memory() {
  const std::size_t limit = DefinitionMemory::for_definitions();
  if (kept_bytes_ <= limit) return;
  has_dropped_ = true;
  drop_until_within(limit);
}

/// In the order of cells, which is none: of IDs that come in turn, of which there is room for a part, that part is
/// found. What comes next would go first if the oldest did.
void CachedDefinitions::drop_until_within(std::size_t bytes) {
  while (kept_bytes_ > bytes) {
    const Cell& cell = cells_[hand_];
    if (cell.definition != nullptr && !cell.definition->is_cached_in(table_)) {
      drop_kept(hand_);  // another one may have come into its cell
    } else {
      hand_ = next(hand_);
    }
  }
}

void CachedDefinitions::drop_kept(unsigned cell) {
  _qz_LOG_log_definition* const definition = cells_[cell].definition;
  kept_bytes_ -= definition->kept_bytes();
  free_cell(cell);
  definition->release();
}

/// Moves up what would not be found behind a free cell.
void CachedDefinitions::free_cell(unsigned cell) {
  for (unsigned later = next(cell); cells_[later].definition != nullptr; later = next(later)) {
    const unsigned distance = (later - first_cell_of(cells_[later].entry_id)) & (cell_count_ - 1);
    if (distance < ((later - cell) & (cell_count_ - 1))) continue;
    cells_[cell] = cells_[later];
    cell = later;
  }
  cells_[cell] = {};
  --used_cells_;
}

void CachedDefinitions::set_cell_count(unsigned count) {
  cell_count_ = count;
  shift_ = kHashBits - bits_of(count / kCellsOfGroup);
}

/// Without memory the cells stay as they are.
void CachedDefinitions::grow() noexcept {
  const unsigned former_count = cell_count_;
  if (former_count > ~0U / 4) return;
  std::unique_ptr<Cell[]> former(new (std::nothrow) Cell[2 * former_count]);
  if (former == nullptr) return;
  std::swap(cells_, former);
  set_cell_count(2 * former_count);
  hand_ = 0;
  for (unsigned i = 0; i < former_count; ++i) {
    if (former[i].definition != nullptr) cells_[cell_of(former[i].entry_id)] = former[i];
  }
}

void CachedDefinitions::distrust() {
  std::for_each_n(cache_, count_, [](_qz_LOG_log_definition* cached) { cached->note_change(); });
  if (kept_bytes_ != 0) drop_until_within(0);
}

void CachedDefinitions::clear() {
  for (unsigned i = 0; i < cell_count_; ++i) {
    _qz_LOG_log_definition* const definition = cells_[i].definition;
    if (definition == nullptr) continue;
    definition->set_caching_table(nullptr);
    definition->release();
  }
  cells_.reset();
  cell_count_ = used_cells_ = hand_ = 0;
  kept_bytes_ = 0;
  has_dropped_ = false;
  std::fill(std::begin(cache_), std::end(cache_), nullptr);
  count_ = next_evict_ = 0;
}

}  // namespace qzlog
