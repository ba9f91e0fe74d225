#include "entry/attribute_store.h"

#include "qzlog/qz_exception.h"

namespace qzlog {

unsigned AttributeStore::find_position(const AttributeName& name) const {
  const auto matches = [&](unsigned position) {
    const KnownName* const stored = name_at(position);
    return stored != nullptr && stored->equals(name);
  };
  if (further_ != nullptr) return further_->index.find(name.hash, matches);
  for (unsigned i = 0; i < count_; ++i) {
    if (matches(i)) return i;
  }
  return kNone;
}

unsigned AttributeStore::find_indexed(const KnownName* name) const {
  return further_->index.find(name->hash(), [&](unsigned position) { return name_at(position) == name; });
}

void AttributeStore::put_copy(const KnownName* name, const _qz_LOG_type_base& value) {
  // Built aside: nothing may change when there is no memory for the copy.
  Place copy;
  copy_value(value, copy.bytes);
  const auto destroy = [](_qz_LOG_type_base* built) { built->~_qz_LOG_type_base(); };
  const std::unique_ptr<_qz_LOG_type_base, decltype(destroy)> guard(
      std::launder(reinterpret_cast<_qz_LOG_type_base*>(copy.bytes)), destroy);
  const unsigned position = search_position(name);
  if (position == kNone) return move_value(*guard, claim_place(name));
  _qz_LOG_type_base* const former = value_at(position);
  former->~_qz_LOG_type_base();
  move_value(*guard, former);
}

bool AttributeStore::remove(const AttributeName& name) {
  const unsigned position = find_position(name);
  if (position == kNone) return false;
  value_at(position)->~_qz_LOG_type_base();
  set_name_at(position, nullptr);
  ++removed_;
  return true;
}

void* AttributeStore::claim_further_place(const KnownName* name) {
  unsigned position = removed_ != 0 ? 0 : count_;
  while (position < count_ && name_at(position) != nullptr) ++position;
  if (position >= kInlineValues) make_room_behind(position);
  set_name_at(position, name);
  if (position == count_) {
    ++count_;
    if (further_ != nullptr) further_->index.insert(name->hash(), position);
  } else {
    --removed_;
    if (further_ != nullptr) further_->index.reindex(count_, [this](unsigned i) { return hash_at(i); });
  }
  return value_at(position);
}

/// A further place for the position, unless it has one, and room for it in the index.
void AttributeStore::make_room_behind(unsigned position) try {
  std::unique_ptr<Further> first(further_ == nullptr ? new Further : nullptr);
  Further& further = first != nullptr ? *first : *further_;
  further.index.reserve(position + 1, count_, [this](unsigned i) { return hash_at(i); });
  if (position - kInlineValues == further.places.size()) further.places.push_back(std::make_unique<FurtherPlace>());
  if (first != nullptr) further_ = std::move(first);
} catch (const std::bad_alloc&) {
  throw QZX_memory_alloc();
}

}  // namespace qzlog
