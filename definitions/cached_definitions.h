#ifndef QZLOG_DEFINITIONS_CACHED_DEFINITIONS_H
#define QZLOG_DEFINITIONS_CACHED_DEFINITIONS_H

#include <cstddef>
#include <memory>

#include "definitions/ldf_def.h"
#include "foundation/no_copies.h"
#include "foundation/prefetch.h"
#include "qzlog/definition_cache.h"

namespace qzlog {

/// The definitions that a table has at hand: the cached ones, replaced first in first out, and, for as long as there is
/// memory for them (DefinitionMemory), those of the evicted ones that still are what reading them again would give.
/// What is kept so is no part of the cache: it comes back by `revive`, which evicts as `add` does. Guarded by the
/// table's lock: its reader side is enough for what is const.
class CachedDefinitions : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr unsigned kCacheSize = qz_DefinitionCacheSize;

  /// What it caches is marked as cached in `table`.
  explicit CachedDefinitions(const _qz_LOG_log_definition_tbl* table) : table_(table) {}
  ~CachedDefinitions() { clear(); }

  /// How many are cached.
  unsigned count() const { return count_; }
  /// A cached definition, or null.
  _qz_LOG_log_definition* find(unsigned int entry_id) const {
    _qz_LOG_log_definition* const found = find_any(entry_id);
    return found != nullptr && found->is_cached_in(table_) ? found : nullptr;
  }
  /// An evicted definition that still is what its record says, or null. It is kept until the next call that is not
  /// const.
  _qz_LOG_log_definition* find_kept(unsigned int entry_id) const {
    _qz_LOG_log_definition* const found = find_any(entry_id);
    return found != nullptr && !found->is_cached_in(table_) && found->is_as_read() ? found : nullptr;
  }
  /// Caches a kept definition again.
  void revive(_qz_LOG_log_definition* kept);
  /// Caches a definition of an ID that is not cached, with a reference of its own. QZX_memory_alloc, with nothing
  /// changed, without memory.
  void add(_qz_LOG_log_definition* definition);

  /// Records have changed: what is kept goes, and what is cached now will not be kept.
  void distrust();
  /// Drops of the kept ones what there is no memory for any more.
  void fit_memory();
  /// Releases everything.
  void clear();

  /// Whether kept ones went because there was no more room.
  bool has_dropped() const { return has_dropped_; }
  /// What those take that are kept.
  std::size_t kept_bytes() const { return kept_bytes_; }

 private:
  struct Cell {
    unsigned int entry_id = 0;
    _qz_LOG_log_definition* definition = nullptr;  // null in a free cell
  };
  static constexpr unsigned kFewestCells = 2 * kCacheSize;
  static constexpr unsigned kCellsOfGroup = kCacheLine / sizeof(Cell);

  _qz_LOG_log_definition* find_any(unsigned int entry_id) const {
    if (cells_ == nullptr) return nullptr;
    _qz_LOG_log_definition* const found = cells_[cell_of(entry_id)].definition;
    prefetch(found, sizeof *found);
    return found;
  }
  /// Where an ID belongs at first. A few in a row share a line of memory, which is read once when they come in turn;
  /// multiplied, so that many in a row do not fill a run of cells.
  unsigned first_cell_of(unsigned int entry_id) const {
    const unsigned group = (entry_id / kCellsOfGroup * 0x9E3779B1U) >> shift_;
    return group * kCellsOfGroup + entry_id % kCellsOfGroup;
  }
  /// The cell of an ID, else the free one where it belongs.
  unsigned cell_of(unsigned int entry_id) const {
    unsigned cell = first_cell_of(entry_id);
    while (cells_[cell].definition != nullptr && cells_[cell].entry_id != entry_id) cell = next(cell);
    return cell;
  }
  unsigned next(unsigned cell) const { return (cell + 1) & (cell_count_ - 1); }
  void set_cell_count(unsigned count);
  void grow() noexcept;
  void take_place(_qz_LOG_log_definition* definition);
  void evict(_qz_LOG_log_definition* definition);
  void drop_kept(unsigned cell);
  void drop_until_within(std::size_t bytes);
  void free_cell(unsigned cell);

  const _qz_LOG_log_definition_tbl* table_;
  std::unique_ptr<Cell[]> cells_;  // of what is cached and what is kept; null before the first one
  unsigned cell_count_ = 0;        // a power of two; half of them are free while there is memory for that
  unsigned shift_ = 0;             // leaves the number of a group of a product
  unsigned used_cells_ = 0;
  unsigned hand_ = 0;  // the cell that is looked at next when something has to go
  std::size_t kept_bytes_ = 0;
  bool has_dropped_ = false;
  _qz_LOG_log_definition* cache_[kCacheSize] = {};
  unsigned count_ = 0;
  unsigned next_evict_ = 0;
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_CACHED_DEFINITIONS_H
