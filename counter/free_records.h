#ifndef QZLOG_COUNTER_FREE_RECORDS_H
#define QZLOG_COUNTER_FREE_RECORDS_H

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

namespace qzlog {

/// The numbers of the free records of a file, of which the lowest is found in constant time: a bit for each record, and
/// above them, three times, a bit for each word that has one. Throws std::bad_alloc and is then of no use any more.
class FreeRecords {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;
  /// Numbers are lower than this.
  static constexpr std::uint32_t kCapacity = 1U << 24;

  bool contains(std::uint32_t number) const {
    const Words& words = levels_[0];
    return number / kBits < words.size() && (words[number / kBits] & bit(number)) != 0;
  }

  void insert(std::uint32_t number) {
    for (Words& words : levels_) {
      if (number / kBits >= words.size()) words.resize(number / kBits + 1);
      words[number / kBits] |= bit(number);
      number /= kBits;
    }
  }

  /// `number` is contained.
  void erase(std::uint32_t number) {
    for (Words& words : levels_) {
      words[number / kBits] &= ~bit(number);
      if (words[number / kBits] != 0) return;
      number /= kBits;
    }
  }

  /// The lowest number, or kNone.
  std::uint32_t first() const {
    if (levels_.back().empty() || levels_.back()[0] == 0) return kNone;
    std::uint32_t number = 0;
    for (auto words = levels_.rbegin(); words != levels_.rend(); ++words) {
      number = number * kBits + static_cast<std::uint32_t>(std::countr_zero((*words)[number]));
    }
    return number;
  }

 private:
  using Words = std::vector<std::uint64_t>;
  static constexpr std::uint32_t kBits = 64;
  static std::uint64_t bit(std::uint32_t number) { return std::uint64_t{1} << number % kBits; }

  std::array<Words, 4> levels_;  // 64 to the power of 4 is the capacity
};

}  // namespace qzlog

#endif  // QZLOG_COUNTER_FREE_RECORDS_H
