#include "definitions/entry_index.h"

#include <algorithm>
#include <utility>

namespace qzlog {

namespace {

constexpr unsigned long long kMostBuckets = 1U << 28;

}  // namespace

const _qz_LOG_log_definition_file_info_holder* EntryIndex::find(unsigned int entry_id) const {
  const auto* const node = slots[EntryIndex::_get_slot_index(entry_id)].find_entry(entry_id);
  return node != nullptr ? &node->value : nullptr;
}

void EntryIndex::put(unsigned int entry_id, const _qz_LOG_log_definition_file_info_holder& place) {
  Slot& slot = slots[EntryIndex::_get_slot_index(entry_id)];
  const auto* const newest = slot.head;
  slot.add_entry(entry_id, place);
  if (slot.head != newest) ++count_;  // a known ID keeps its node
}

void EntryIndex::reserve(unsigned additional) {
  using Walker = qz_MISC_hash_tbl_walker<unsigned int, _qz_LOG_log_definition_file_info_holder>;
  const unsigned long long wanted = 0ULL + count_ + additional;
  if (wanted <= size) return;
  EntryIndex larger(static_cast<unsigned>(std::min(wanted, kMostBuckets)));
  Walker walker(*this);
  while (const auto* const node = walker._next_key()) larger.put(node->key, node->value);
  std::swap(slots, larger.slots);
  std::swap(size, larger.size);
}

void EntryIndex::clear() {
  qz_MISC_hash_tbl::clear();
  count_ = 0;
}

}  // namespace qzlog
