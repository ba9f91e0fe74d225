#ifndef QZLOG_ENTRY_ATTRIBUTE_STORE_H
#define QZLOG_ENTRY_ATTRIBUTE_STORE_H

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "definitions/attribute_name.h"
#include "entry/logattrib.h"
#include "foundation/hash_index.h"
#include "foundation/no_copies.h"

namespace qzlog {

/// The attribute values of one entry by name, each name at most once. As many values as most entries have stand inside
/// the store, so that adding them takes no memory; further ones are on the heap. A value stays where it is until it is
/// removed. Running out of memory throws QZX_memory_alloc and leaves the store as it was.
class AttributeStore : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr unsigned kInlineValues = 10;

  // User-provided: the room for values is left uninitialised even where a store is value-initialised.
  AttributeStore() {}  // NOLINT(modernize-use-equals-default)
  ~AttributeStore() { clear(); }

  /// The stored value or null.
  _qz_LOG_type_base* find(const AttributeName& name) const {
    const unsigned position = find_position(name);
    return position != kNone ? value_at(position) : nullptr;
  }
  /// The same for a known name. Values are mostly asked for in the order in which they were added: the search begins at
  /// the place `expected`, whatever that is.
  _qz_LOG_type_base* find(const KnownName* name, unsigned expected) const {
    const unsigned position = find_position(name, expected);
    return position != kNone ? value_at(position) : nullptr;
  }

  /// Adds the value or replaces the one under the name, whatever its type.
  template <unsigned char code>
  void put(const KnownName* name, unsigned expected, typename ValueOf<code>::type&& value) {
    using Stored = StoredValue<code>;
    const unsigned position = find_position(name, expected);
    if (position == kNone) {
      new (claim_place(name)) Stored(std::move(value));
      return;
    }
    _qz_LOG_type_base* const former = value_at(position);
    if (former->get_type() == code) {
      static_cast<Stored*>(former)->value = std::move(value);
    } else {
      // The entry's ID was changed since, and the name stands for another type now.
      former->~_qz_LOG_type_base();
      new (former) Stored(std::move(value));
    }
  }
  /// The same for a Char type with a copy of `text`. A value of the type that is there keeps its memory for it.
  template <unsigned char code>
  void put_text(const KnownName* name, unsigned expected, const char* text, unsigned length) {
    using Stored = StoredValue<code>;
    const unsigned position = find_position(name, expected);
    if (position != kNone && value_at(position)->get_type() == code) {
      static_cast<Stored*>(value_at(position))->value._assign(text, length);
    } else if (position == kNone && length <= qz_String::kInlineCapacity) {
      (new (claim_place(name)) Stored)->value._assign(text, length);
    } else {
      qz_String value;
      value._assign(text, length);
      put<code>(name, expected, std::move(value));
    }
  }
  /// The same with a copy of a value whose type is known at run time only.
  void put_copy(const KnownName* name, const _qz_LOG_type_base& value);

  /// False when there is none.
  bool remove(const AttributeName& name);
  /// Removes every value.
  void clear() {
    for (unsigned i = 0; i < count_; ++i) {
      if (name_at(i) != nullptr) destroy(*value_at(i));
    }
    count_ = 0;
    removed_ = 0;
    further_.reset();
  }

  /// Calls visit(const KnownName* name, const _qz_LOG_type_base& value) for each value, in no order that means
  /// anything.
  template <typename Visit>
  void for_each(Visit visit) const {
    for (unsigned i = 0; i < count_; ++i) {
      if (name_at(i) != nullptr) visit(name_at(i), *value_at(i));
    }
  }

 private:
  struct alignas(StoredValue<TypeChar32>) alignas(StoredValue<TypeFloat>) Place {
    unsigned char bytes[kStoredSize];
  };
  struct FurtherPlace {
    const KnownName* name = nullptr;
    Place place;
  };
  /// What stands on the heap: the places behind those inside, and an index of all of them.
  struct Further {
    std::vector<std::unique_ptr<FurtherPlace>> places;
    HashIndex index;
  };
  static constexpr unsigned kNone = HashIndex::kNone;

  /// The values of the types before the texts have nothing to destroy.
  static void destroy(_qz_LOG_type_base& value) {
    if (value.get_type() >= TypeChar32) value.~_qz_LOG_type_base();
  }
  _qz_LOG_type_base* value_at(unsigned i) const {
    const Place& place = i < kInlineValues ? places_[i] : further_->places[i - kInlineValues]->place;
    return std::launder(reinterpret_cast<_qz_LOG_type_base*>(const_cast<unsigned char*>(place.bytes)));
  }
  /// Null for the place of a removed value.
  const KnownName* name_at(unsigned i) const {
    return i < kInlineValues ? names_[i] : further_->places[i - kInlineValues]->name;
  }
  void set_name_at(unsigned i, const KnownName* name) {
    (i < kInlineValues ? names_[i] : further_->places[i - kInlineValues]->name) = name;
  }
  unsigned find_position(const AttributeName& name) const;
  unsigned find_position(const KnownName* name, unsigned expected) const {
    return expected < count_ && name_at(expected) == name ? expected : search_position(name);
  }
  unsigned search_position(const KnownName* name) const {
    if (further_ != nullptr) return find_indexed(name);
    for (unsigned i = 0; i < count_; ++i) {
      if (names_[i] == name) return i;
    }
    return kNone;
  }
  unsigned find_indexed(const KnownName* name) const;

  /// A place under this name for the caller to build a value in, which must not throw.
  void* claim_place(const KnownName* name) {
    if (count_ >= kInlineValues || removed_ != 0) return claim_further_place(name);
    names_[count_] = name;
    return places_[count_++].bytes;
  }
  void* claim_further_place(const KnownName* name);
  unsigned hash_at(unsigned i) const { return name_at(i) != nullptr ? name_at(i)->hash() : 0; }
  void make_room_behind(unsigned position);

  unsigned count_ = 0;  // places in use, those of removed values included
  unsigned removed_ = 0;
  const KnownName* names_[kInlineValues];
  Place places_[kInlineValues];
  std::unique_ptr<Further> further_;  // null until there is more than fits inside
};

}  // namespace qzlog

#endif  // QZLOG_ENTRY_ATTRIBUTE_STORE_H
