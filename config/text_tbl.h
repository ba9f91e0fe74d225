#ifndef QZLOG_CONFIG_TEXT_TBL_H
#define QZLOG_CONFIG_TEXT_TBL_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "foundation/hash_tbl.h"
#include "qzlog/qz_string.h"

namespace qzlog {

/// The hash of texts given one after the other; how a text is cut into pieces does not matter.
class TextHash {
 public:
  explicit TextHash(std::uint64_t seed) : state_(seed) {}

  /// Adds a zero-terminated text and returns its length.
  std::size_t add(const char* text) {
    const char* at = text;
    for (; *at != '\0'; ++at) state_ = (state_ ^ static_cast<unsigned char>(*at)) * kPrime;
    return static_cast<std::size_t>(at - text);
  }

  /// A bucket in [0, size).
  unsigned slot(unsigned size) const {
    // The last characters have not reached the high bits yet, by which the bucket is chosen.
    const std::uint64_t mixed = (state_ ^ (state_ >> 32)) * kMultiplier;
    return static_cast<unsigned>(((mixed >> 32) * size) >> 32);
  }

 private:
  static constexpr std::uint64_t kPrime = 0x100000001B3U;
  static constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15U;
  std::uint64_t state_;
};

/// A hash table by text that grows with its entries, and finds a text given in two pieces without joining them. Keys
/// hold no zero bytes. No lock: its owner guards it.
///
/// Each table hashes differently in each run, so that no file can be written whose texts all meet in one bucket.
template <typename V>
class TextTable : protected qz_MISC_hash_tbl<qz_String, V> {
  using Base = qz_MISC_hash_tbl<qz_String, V>;
  using Node = typename Base::Slot::Node;

 public:
  explicit TextTable(unsigned requested) : TextTable(requested, fresh_seed(this)) {}

  /// The value under `prefix` followed by `suffix`, or null. Valid until the table is cleared.
  const V* find(const char* prefix, const char* suffix) const {
    TextHash hash(seed_);
    const std::size_t prefix_length = hash.add(prefix);
    const std::size_t suffix_length = hash.add(suffix);
    const Node* node = this->slots[hash.slot(this->size)].head;
    for (; node != nullptr; node = node->next) {
      const char* const key = node->key.c_str();
      if (node->key.length() == prefix_length + suffix_length && std::memcmp(key, prefix, prefix_length) == 0 &&
          std::memcmp(key + prefix_length, suffix, suffix_length) == 0) {
        return &node->value;
      }
    }
    return nullptr;
  }

  /// The value under `key`, which is added with a default value where it is missing. Without memory it throws
  /// QZX_memory_alloc, with the entries as they were.
  V& at(const qz_String& key) {
    if (Node* const node = slot_of(key).find_entry(key)) return node->value;
    if (count_ >= this->size) grow();
    slot_of(key).add_entry(key, V());
    ++count_;
    return slot_of(key).head->value;
  }

  void clear() {
    Base::clear();
    count_ = 0;
  }

  /// Calls `visit(key, value)` for every entry; the value may be changed.
  template <typename Visit>
  void for_each(Visit&& visit) {
    qz_MISC_hash_tbl_walker<qz_String, V> walker(*this);
    while (Node* const node = walker._next_key()) visit(std::as_const(node->key), node->value);
  }

 private:
  TextTable(unsigned requested, std::uint64_t seed) : Base(requested), seed_(seed) {}

  static std::uint64_t fresh_seed(const void* place) {
    const auto now = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return (now << 20) ^ reinterpret_cast<std::uintptr_t>(place);
  }

  unsigned _get_slot_index(const qz_String& key) const override {
    TextHash hash(seed_);
    hash.add(key.c_str());
    return hash.slot(this->size);
  }

  typename Base::Slot& slot_of(const qz_String& key) { return this->slots[_get_slot_index(key)]; }

  void grow() {
    TextTable larger(this->size * 2, seed_);
    for (unsigned i = 0; i < this->size; ++i) {
      for (Node* node = std::exchange(this->slots[i].head, nullptr); node != nullptr;) {
        larger.link(*std::exchange(node, node->next));
      }
    }
    std::swap(this->slots, larger.slots);
    std::swap(this->size, larger.size);
  }

  void link(Node& node) {
    typename Base::Slot& slot = slot_of(node.key);
    node.prev = nullptr;
    node.next = slot.head;
    if (slot.head != nullptr) slot.head->prev = &node;
    slot.head = &node;
  }

  std::uint64_t seed_;
  unsigned count_ = 0;
};

}  // namespace qzlog

#endif  // QZLOG_CONFIG_TEXT_TBL_H
