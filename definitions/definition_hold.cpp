#include "definitions/definition_hold.h"

#include "foundation/allocate.h"
#include "qzlog/definition_cache.h"

namespace qzlog {

namespace {
// What a table caches, and so the most that one table can answer with.
constexpr unsigned kMostKept = qz_DefinitionCacheSize;
}  // namespace

ThreadHolds::~ThreadHolds() {
  for (unsigned i = 0; i < kCells; ++i) {
    if (cells_[i].hold != nullptr) cells_[i].hold->give_up();
  }
}

DefinitionHoldRef ThreadHolds::keep(unsigned int entry_id, DefinitionRef definition) {
  unsigned place = cell_of(entry_id);
  DefinitionHold* const former = cells_[place].hold;
  if (former != nullptr && &former->definition() == definition.get()) return DefinitionHoldRef::share(former);

  std::unique_ptr<DefinitionHold> fresh(new_object<DefinitionHold>(this, std::move(definition)));
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
  return DefinitionHoldRef::share(cells_[place].hold);
}

/// Gives up the holds on definitions that are not cached any more, and if that leaves too many, from several tables,
/// others as well.
void ThreadHolds::make_room() {
  const std::unique_ptr<Cell[]> former = std::exchange(cells_, std::make_unique<Cell[]>(kCells));
  count_ = 0;
  for (unsigned i = 0; i < kCells; ++i) {
    DefinitionHold* const hold = former[i].hold;
    if (hold == nullptr) continue;
    if (count_ == kMostKept || hold->definition().is_cached_in(nullptr)) {
      hold->give_up();
    } else {
      cells_[cell_of(former[i].entry_id)] = former[i];
      ++count_;
    }
  }
}

}  // namespace qzlog
