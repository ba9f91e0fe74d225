#include "definitions/definition_hold.h"

#include "foundation/allocate.h"

_qz_LOG_definition_hold_ref _qz_LOG_thread_holds::keep(unsigned int entry_id, _qz_LOG_definition_ref definition) {
  unsigned place = cell_of(entry_id);
  if (cells_[place].hold && &cells_[place].hold->definition() == definition.get()) {
    return _qz_LOG_definition_hold_ref::share(cells_[place].hold.get());
  }
  _qz_LOG_definition_hold_ref fresh(qz_new<_qz_LOG_definition_hold>(std::move(definition)));
  if (!cells_[place].hold && count_ == kMostHolds) {
    make_room();
    place = cell_of(entry_id);
  }
  Cell& cell = cells_[place];
  if (!cell.hold) ++count_;
  cell.entry_id = entry_id;
  cell.hold = _qz_LOG_definition_hold_ref::share(fresh.get());
  return fresh;
}

/// Gives up the holds on definitions that are not cached any more; if that leaves too many, from several tables, all.
void _qz_LOG_thread_holds::make_room() {
  const std::unique_ptr<Cell[]> former = std::exchange(cells_, std::make_unique<Cell[]>(kCells));
  count_ = 0;
  for (unsigned i = 0; i < kCells && count_ < kMostHolds / 2; ++i) {
    if (!former[i].hold || former[i].hold->definition().is_cached_in(nullptr)) continue;
    Cell& cell = cells_[cell_of(former[i].entry_id)];
    cell.entry_id = former[i].entry_id;
    cell.hold = std::move(former[i].hold);
    ++count_;
  }
}
