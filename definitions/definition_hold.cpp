#include "definitions/definition_hold.h"

#include "foundation/allocate.h"

namespace qzlog {

ThreadHolds::~ThreadHolds() {
  for (unsigned i = 0; i < kCells; ++i) {
    if (cells_[i].hold != nullptr) cells_[i].hold->give_up();
  }
}

DefinitionHoldRef ThreadHolds::keep(unsigned int entry_id, DefinitionRef definition) {
  const unsigned place = cell_of(entry_id);
  DefinitionHold* const former = cells_[place].hold;
  if (former != nullptr) {
    if (&former->definition() != definition.get()) cells_[place].hold = make_hold(former, std::move(definition));
    return DefinitionHoldRef::share(cells_[place].hold);
  }
  unsigned int& id_place = ids_[count_ < kMostHolds ? count_ : oldest_];
  if (count_ < kMostHolds) {
    cells_[place] = {entry_id, make_hold(nullptr, std::move(definition))};
    ++count_;
  } else {
    const unsigned replaced = cell_of(id_place);
    DefinitionHold* const hold = make_hold(cells_[replaced].hold, std::move(definition));
    free_cell(replaced);
    cells_[cell_of(entry_id)] = {entry_id, hold};
    oldest_ = (oldest_ + 1) % kMostHolds;
  }
  id_place = entry_id;
  return DefinitionHoldRef::share(find(entry_id));
}

/// A hold in the place of a former one, which is used again when no entry uses it, else given up. Null for no former.
DefinitionHold* ThreadHolds::make_hold(DefinitionHold* former, DefinitionRef definition) {
  if (former != nullptr && former->is_unused()) {
    former->renew(std::move(definition));
    return former;
  }
  auto* const fresh = new_object<DefinitionHold>(this, std::move(definition));
  if (former != nullptr) former->give_up();
  return fresh;
}

/// Moves up what would not be found behind a free cell.
void ThreadHolds::free_cell(unsigned cell) {
  for (unsigned later = (cell + 1) % kCells; cells_[later].hold != nullptr; later = (later + 1) % kCells) {
    const unsigned distance = (later - first_cell_of(cells_[later].entry_id)) % kCells;
    if (distance < (later - cell) % kCells) continue;
    cells_[cell] = cells_[later];
    cell = later;
  }
  cells_[cell] = {};
}

}  // namespace qzlog
