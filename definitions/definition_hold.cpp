#include "definitions/definition_hold.h"

#include "foundation/allocate.h"
#include "qzlog/definition_cache.h"

namespace {
// What a table caches, and so the most that one table can answer with.
constexpr unsigned kMostKept = qz_DefinitionCacheSize;
}  // namespace

_qz_LOG_thread_holds::~_qz_LOG_thread_holds() {
  for (unsigned i = 0; i < kCells; ++i) {
    if (cells_[i].hold != nullptr) cells_[i].hold->give_up();
  }
}

_qz_LOG_definition_hold_ref _qz_LOG_thread_holds::keep(unsigned int entry_id, _qz_LOG_definition_ref definition) {
  unsigned place = cell_of(entry_id);
  _qz_LOG_definition_hold* const former = cells_[place].hold;
  if (former != nullptr && &former->definition() == definition.get()) return _qz_LOG_definition_hold_ref::share(former);

  std::unique_ptr<_qz_LOG_definition_hold> fresh(qz_new<_qz_LOG_definition_hold>(this, std::move(definition)));
  if (former != nullptr) {
    former->give_up();
  } else {
    if (count_ == kMostHolds) {
      make_room();
      place = cell_of(entry_id);
    }
    ++count_;
  }
  cells_[place] = {entry_id, fresh.release()};
  return _qz_LOG_definition_hold_ref::share(cells_[place].hold);
}

/// Gives up the holds on definitions that are not cached any more, and if that leaves too many, from several tables,
/// others as well.
void _qz_LOG_thread_holds::make_room() {
  const std::unique_ptr<Cell[]> former = std::exchange(cells_, std::make_unique<Cell[]>(kCells));
  count_ = 0;
  for (unsigned i = 0; i < kCells; ++i) {
    _qz_LOG_definition_hold* const hold = former[i].hold;
    if (hold == nullptr) continue;
    if (count_ == kMostKept || hold->definition().is_cached_in(nullptr)) {
      hold->give_up();
    } else {
      cells_[cell_of(former[i].entry_id)] = former[i];
      ++count_;
    }
  }
}
