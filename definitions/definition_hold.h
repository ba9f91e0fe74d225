#ifndef QZLOG_DEFINITIONS_DEFINITION_HOLD_H
#define QZLOG_DEFINITIONS_DEFINITION_HOLD_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

#include "definitions/ldf_def.h"
#include "foundation/cache_line.h"
#include "foundation/counted_ref.h"
#include "foundation/no_copies.h"
#include "foundation/thread_instance.h"
#include "qzlog/definition_cache.h"

namespace qzlog {

class ThreadHolds;

/// One thread's reference to a definition, which its entries share: threads whose entries use the same definition then
/// do not write to the same memory.
///
/// The thread that made it counts without synchronisation as long as it keeps the hold for further entries. Other
/// threads, which may destroy the entries, count what they release in an atomic balance; when the thread gives the hold
/// up, its own count joins the balance, and whoever brings that to zero deletes the hold.
class alignas(kCacheLine) DefinitionHold : public qz_UTIL_no_inadvertant_copies {
 public:
  DefinitionHold(const ThreadHolds* owner, DefinitionRef definition)
      : definition_(std::move(definition)), owner_(owner) {}

  _qz_LOG_log_definition& definition() const { return *definition_.get(); }

  /// By the owner only, which does not give the hold up meanwhile.
  void add_reference() { ++owner_count_; }
  void release() {
    if (is_owned_by_this_thread()) {
      --owner_count_;
    } else {
      subtract_from_balance();
    }
  }
  /// By the owner: whether no entry has a reference. None gets one then but by the owner.
  bool is_unused() const { return owner_count_ + balance_.load(std::memory_order_acquire) == 0; }
  /// By the owner, of an unused hold: makes it one on another definition.
  void renew(DefinitionRef definition) {
    definition_ = std::move(definition);
    owner_count_ = 0;
    balance_.store(0, std::memory_order_relaxed);
  }
  /// By the owner, which does not use the hold afterwards.
  void give_up() {
    owner_.store(nullptr, std::memory_order_relaxed);
    // Afterwards another thread may delete the hold at any moment.
    const std::int64_t count = owner_count_;
    if (balance_.fetch_add(count, std::memory_order_acq_rel) + count == 0) delete this;
  }

 private:
  bool is_owned_by_this_thread() const;
  void subtract_from_balance() {
    if (balance_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  DefinitionRef definition_;
  std::atomic<const ThreadHolds*> owner_;
  // Entries that one thread makes and another destroys move both away from zero without end.
  std::int64_t owner_count_ = 0;
  std::atomic<std::int64_t> balance_{0};
};

using DefinitionHoldRef = CountedRef<DefinitionHold>;

/// The holds of one thread by entry ID, replaced first in first out as the definitions of a table's cache are. Until
/// then a thread keeps definitions alive that nothing else uses.
class ThreadHolds : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr unsigned kMostHolds = qz_DefinitionCacheSize;

  ThreadHolds() : cells_(std::make_unique<Cell[]>(kCells)) {}
  ~ThreadHolds();

  /// Null when there is none.
  DefinitionHold* find(unsigned int entry_id) const {
    const Cell& cell = cells_[cell_of(entry_id)];
    return cell.entry_id == entry_id ? cell.hold : nullptr;
  }
  /// A reference to the hold on this definition, made when there is none. Replaces a hold on another definition of the
  /// ID. QZX_memory_alloc, with nothing changed, without memory.
  DefinitionHoldRef keep(unsigned int entry_id, DefinitionRef definition);

 private:
  struct Cell {
    unsigned int entry_id = 0;
    DefinitionHold* hold = nullptr;  // null in a free cell
  };
  // Few enough are in use that a search ends after a step or two.
  static constexpr unsigned kCellBits = 8;
  static constexpr unsigned kCells = 1U << kCellBits;
  static_assert(kMostHolds * 2 <= kCells);

  // Multiplied, so that IDs in a row do not fill a run of cells.
  static unsigned first_cell_of(unsigned int entry_id) { return entry_id * 0x9E3779B1U >> (32 - kCellBits); }
  /// The cell of an ID, else the free one where it belongs.
  unsigned cell_of(unsigned int entry_id) const {
    unsigned cell = first_cell_of(entry_id);
    while (cells_[cell].hold != nullptr && cells_[cell].entry_id != entry_id) cell = (cell + 1) % kCells;
    return cell;
  }
  DefinitionHold* make_hold(DefinitionHold* former, DefinitionRef definition);
  void free_cell(unsigned cell);

  std::unique_ptr<Cell[]> cells_;
  unsigned int ids_[kMostHolds] = {};  // in the order in which they came
  unsigned count_ = 0;
  unsigned oldest_ = 0;
};

inline bool DefinitionHold::is_owned_by_this_thread() const {
  const ThreadHolds* const owner = owner_.load(std::memory_order_relaxed);
  return owner != nullptr && owner == ThreadInstance<ThreadHolds>::find();
}

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_DEFINITION_HOLD_H
