#ifndef QZLOG_DEFINITIONS_DEFINITION_HOLD_H
#define QZLOG_DEFINITIONS_DEFINITION_HOLD_H

#include <atomic>
#include <memory>
#include <utility>

#include "definitions/ldf_def.h"
#include "foundation/counted_ref.h"
#include "foundation/no_copies.h"

/// One thread's reference to a definition, counted for itself: threads whose entries use the same definition then do
/// not write to the same memory. An entry may be destroyed by another thread, so the count is atomic.
class _qz_LOG_definition_hold : public qz_UTIL_no_inadvertant_copies {
 public:
  explicit _qz_LOG_definition_hold(_qz_LOG_definition_ref definition) : definition_(std::move(definition)) {}

  _qz_LOG_log_definition& definition() const { return *definition_.get(); }

  void add_reference() { references_.fetch_add(1, std::memory_order_relaxed); }
  /// The last one releases the definition.
  void release() {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 private:
  _qz_LOG_definition_ref definition_;
  std::atomic<unsigned> references_{1};
};

using _qz_LOG_definition_hold_ref = qz_CountedRef<_qz_LOG_definition_hold>;

/// The holds of one thread by entry ID. Those on definitions that no table caches any more are given up when room is
/// needed or the thread ends: until then a thread may keep up to kMostHolds definitions alive that nothing else uses.
class _qz_LOG_thread_holds : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr unsigned kMostHolds = 256;

  _qz_LOG_thread_holds() : cells_(std::make_unique<Cell[]>(kCells)) {}

  /// Null when there is none.
  _qz_LOG_definition_hold* find(unsigned int entry_id) const {
    const Cell& cell = cells_[cell_of(entry_id)];
    return cell.entry_id == entry_id ? cell.hold.get() : nullptr;
  }
  /// A reference to the hold on this definition, made when there is none. Replaces a hold on another definition of the
  /// ID. QZX_memory_alloc, with nothing changed, without memory.
  _qz_LOG_definition_hold_ref keep(unsigned int entry_id, _qz_LOG_definition_ref definition);

 private:
  struct Cell {
    unsigned int entry_id = 0;
    _qz_LOG_definition_hold_ref hold;  // null in a free cell
  };
  static constexpr unsigned kCells = kMostHolds * 2;

  /// The cell of an ID, else the free one where it belongs.
  unsigned cell_of(unsigned int entry_id) const {
    unsigned cell = (entry_id ^ entry_id >> 9 ^ entry_id >> 18) % kCells;
    while (cells_[cell].hold && cells_[cell].entry_id != entry_id) cell = (cell + 1) % kCells;
    return cell;
  }
  void make_room();

  std::unique_ptr<Cell[]> cells_;
  unsigned count_ = 0;
};

#endif  // QZLOG_DEFINITIONS_DEFINITION_HOLD_H
