#include "counter/record_index.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "counter/record_format.h"

namespace qzlog {

namespace {

std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ value >> 33) * 0xFF51AFD7ED558CCDULL;
  value = (value ^ value >> 33) * 0xC4CEB9FE1A85EC53ULL;
  return value ^ value >> 33;
}

}  // namespace

RecordTag tag_of_record(const unsigned char* bytes) {
  std::uint64_t halves[2];
  static_assert(sizeof(halves) == counter_record::kCombinationSize);
  std::memcpy(halves, bytes + counter_record::kDateOffset, sizeof(halves));
  return {static_cast<std::uint32_t>(mixed(mixed(halves[0]) + halves[1])), is_free_record(bytes)};
}

void RecordIndex::append(RecordTag tag) {
  if (tag.is_free) free_.insert(size());
  nodes_.push_back({tag.hash, kNone});
}

/// From the last record to the first, so that each becomes the first of its bucket.
void RecordIndex::link() {
  buckets_.assign(std::bit_ceil(nodes_.size()), kNone);
  for (std::uint32_t number = size(); number-- > 0;) {
    if (free_.contains(number)) continue;
    std::uint32_t& first = bucket(nodes_[number].hash);
    nodes_[number].next = first;
    first = number;
  }
}

void RecordIndex::set(std::uint32_t number, RecordTag tag) {
  if (number == size()) {
    append(tag);
    if (nodes_.size() > buckets_.size()) {
      link();
    } else if (!tag.is_free) {
      attach(number);
    }
    return;
  }
  if (holds(number, tag)) return;
  if (free_.contains(number)) {
    free_.erase(number);
  } else {
    detach(number);
  }
  nodes_[number].hash = tag.hash;
  if (tag.is_free) {
    free_.insert(number);
  } else {
    attach(number);
  }
}

std::uint32_t RecordIndex::first(std::uint32_t hash) const {
  return with_hash(buckets_[hash & (buckets_.size() - 1)], hash);
}

std::uint32_t RecordIndex::next(std::uint32_t number) const {
  return with_hash(nodes_[number].next, nodes_[number].hash);
}

/// The first one from `number` on.
std::uint32_t RecordIndex::with_hash(std::uint32_t number, std::uint32_t hash) const {
  while (number != kNone && nodes_[number].hash != hash) number = nodes_[number].next;
  return number;
}

void RecordIndex::attach(std::uint32_t number) {
  std::uint32_t* link = &bucket(nodes_[number].hash);
  while (*link < number) link = &nodes_[*link].next;  // kNone is the highest number
  nodes_[number].next = *link;
  *link = number;
}

void RecordIndex::detach(std::uint32_t number) {
  std::uint32_t* link = &bucket(nodes_[number].hash);
  while (*link != number) link = &nodes_[*link].next;
  *link = nodes_[number].next;
}

}  // namespace qzlog
