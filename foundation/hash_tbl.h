#ifndef QZLOG_FOUNDATION_HASH_TBL_H
#define QZLOG_FOUNDATION_HASH_TBL_H

#include <new>

#include "foundation/hashing.h"
#include "foundation/no_copies.h"
#include "qzlog/qz_exception.h"
#include "qzlog/qz_string.h"

/// The library's one associative container: a fixed array of buckets, each a doubly linked chain of nodes that own
/// copies of key and value. It never grows by itself and has no lock; its owner guards it and picks the bucket:
///   table.slots[table._get_slot_index(key)].add_entry(key, value)

namespace qzlog {

inline bool hash_keys_equal(const qz_String& left, const qz_String& right) {
  return left.compare_string(right.c_str()) == 0;
}
inline bool hash_keys_equal(unsigned left, unsigned right) { return left == right; }

template <typename K, typename V>
struct HashNode {
  HashNode* prev;
  HashNode* next;
  K key;
  V value;
};

}  // namespace qzlog

/// One bucket: its chain lists the keys from the most recently inserted to the oldest, each at most once.
template <typename K, typename V>
class _qz_MISC_hash_slot {
 public:
  using Node = qzlog::HashNode<K, V>;

  /// Inserts the pair or replaces the value of an equal key. QZX_memory_alloc, with nothing inserted, without memory.
  void add_entry(const K& key, const V& value) {
    if (Node* existing = find_entry(key)) {
      existing->value = value;
      return;
    }
    Node* node = new (std::nothrow) Node{nullptr, head, key, value};
    if (node == nullptr) throw QZX_memory_alloc();
    if (head != nullptr) head->prev = node;
    head = node;
  }

  /// The node that holds `key`, or null; callers read and write its value.
  Node* find_entry(const K& key) const {
    Node* node = head;
    while (node != nullptr && !qzlog::hash_keys_equal(node->key, key)) node = node->next;
    return node;
  }

  /// False when `key` is absent. What a pointer value points to stays the owner's.
  bool remove_entry(const K& key) {
    Node* node = find_entry(key);
    if (node == nullptr) return false;
    (node->prev != nullptr ? node->prev->next : head) = node->next;
    if (node->next != nullptr) node->next->prev = node->prev;
    delete node;
    return true;
  }

  void _clear() {
    while (head != nullptr) {
      Node* next = head->next;
      delete head;
      head = next;
    }
  }

  Node* head = nullptr;
};

template <typename K, typename V>
class qz_MISC_hash_tbl : public qz_UTIL_no_inadvertant_copies {
 public:
  using Slot = _qz_MISC_hash_slot<K, V>;

  explicit qz_MISC_hash_tbl(unsigned requested) { set_size(requested); }
  ~qz_MISC_hash_tbl() { discard_slots(); }

  /// The bucket of a key; owners may override it.
  virtual unsigned _get_slot_index(const K& key) const { return QZ_hash(key, size); }

  /// Discards everything and makes QZ_recommended_hash_size(requested) empty buckets. Without memory it throws
  /// QZX_memory_alloc and the table has no buckets: it must not be used before a set_size that succeeds.
  void set_size(unsigned requested) {
    discard_slots();
    size = QZ_recommended_hash_size(requested);
    slots = new (std::nothrow) Slot[size];
    if (slots == nullptr) throw QZX_memory_alloc();
  }

  /// Deletes every pair; the buckets stay.
  void clear() {
    for (unsigned i = 0; i < size && slots != nullptr; ++i) slots[i]._clear();
  }

  Slot* slots = nullptr;
  unsigned size = 0;

 private:
  void discard_slots() {
    for (unsigned i = slots == nullptr ? 0 : size; i-- > 0;) slots[i]._clear();
    delete[] slots;
    slots = nullptr;
  }
};

/// Visits every pair: buckets in ascending order, each from its newest key to its oldest. The table must not be changed
/// while it is walked.
template <typename K, typename V>
class qz_MISC_hash_tbl_walker {
 public:
  using Node = qzlog::HashNode<K, V>;

  explicit qz_MISC_hash_tbl_walker(const qz_MISC_hash_tbl<K, V>& table)
      : table_(&table), count_(table.slots != nullptr ? table.size : 0) {}

  /// Assigns the next pair and returns true, or returns false, with both arguments untouched, once the walk is over.
  bool next(K& key, V& value) {
    const Node* node = _next_key();
    if (node == nullptr) return false;
    assign_key(key, node->key);
    value = node->value;
    return true;
  }

  /// The next node, or null once the walk is over.
  Node* _next_key() {
    if (first_) {
      first_ = false;
      current_ = count_ != 0 ? table_->slots[0].head : nullptr;
      if (current_ != nullptr) return current_;
    }
    if (index_ >= count_) return nullptr;
    if (current_ != nullptr) current_ = current_->next;
    while (current_ == nullptr && ++index_ < count_) current_ = table_->slots[index_].head;
    return current_;
  }

 private:
  static void assign_key(qz_String& target, const qz_String& source) {
    if (&target != &source) target._assign(source.c_str(), source.length());
  }
  static void assign_key(unsigned& target, unsigned source) { target = source; }

  const qz_MISC_hash_tbl<K, V>* table_;
  Node* current_ = nullptr;
  unsigned count_;
  unsigned index_ = 0;
  bool first_ = true;
};

#endif  // QZLOG_FOUNDATION_HASH_TBL_H
