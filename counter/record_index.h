#ifndef QZLOG_COUNTER_RECORD_INDEX_H
#define QZLOG_COUNTER_RECORD_INDEX_H

#include <cstdint>
#include <vector>

#include "counter/free_records.h"

namespace qzlog {

/// What the index keeps of a record: a hash of its date and key. Different ones may share a hash, so what is found by
/// it has to be read.
struct RecordTag {
  std::uint32_t hash;
  bool is_free;
};

/// `bytes` are a record's 32.
RecordTag tag_of_record(const unsigned char* bytes);

/// Tells from memory where the records of a file stand, by their numbers from 0: those of a hash in the order of the
/// file, and the first free one. Takes 12 to 24 bytes a record. Throws std::bad_alloc and is then of no use any more.
class RecordIndex {
 public:
  static constexpr std::uint32_t kNone = FreeRecords::kNone;
  static constexpr std::uint32_t kCapacity = FreeRecords::kCapacity;

  /// Prepares for this many records.
  void reserve(std::uint32_t count) { nodes_.reserve(count); }
  /// Takes the next record of the file; it is found only after link().
  void append(RecordTag tag);
  void link();

  /// Replaces what record `number` is, or adds it when it is the next one.
  void set(std::uint32_t number, RecordTag tag);

  /// Fetches what first() will look at.
  void prefetch(std::uint32_t hash) const {
    if (!buckets_.empty()) __builtin_prefetch(&buckets_[hash & (buckets_.size() - 1)]);
  }
  /// Whether record `number` is what the tag says.
  bool holds(std::uint32_t number, RecordTag tag) const {
    return tag.is_free == free_.contains(number) && (tag.is_free || tag.hash == nodes_[number].hash);
  }
  std::uint32_t size() const { return static_cast<std::uint32_t>(nodes_.size()); }
  /// The first record with this hash that is not free, and the one after `number`; kNone when there is none.
  std::uint32_t first(std::uint32_t hash) const;
  std::uint32_t next(std::uint32_t number) const;
  std::uint32_t first_free() const { return free_.first(); }

 private:
  struct Node {
    std::uint32_t hash;
    std::uint32_t next;  // in the same bucket, further on in the file
  };

  std::uint32_t& bucket(std::uint32_t hash) { return buckets_[hash & (buckets_.size() - 1)]; }
  std::uint32_t with_hash(std::uint32_t number, std::uint32_t hash) const;
  void attach(std::uint32_t number);
  void detach(std::uint32_t number);

  std::vector<Node> nodes_;             // by number; a free record's is not in a bucket
  std::vector<std::uint32_t> buckets_;  // a power of two of them: the first record of each
  FreeRecords free_;
};

}  // namespace qzlog

#endif  // QZLOG_COUNTER_RECORD_INDEX_H
