#ifndef QZLOG_TOOLS_CHOICE_SEEN_NUMBERS_H
#define QZLOG_TOOLS_CHOICE_SEEN_NUMBERS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

namespace qzlog_tool {

/// Which lines were seen, by writer and number. Numbers of a writer that follow each other take no memory: it is the
/// gaps that do.
class SeenNumbers {
 public:
  /// How many ranges of numbers are kept, over all writers; about 24 MiB.
  static constexpr std::size_t kMostRanges = std::size_t{1} << 18;

  explicit SeenNumbers(std::size_t most_ranges = kMostRanges) : most_ranges_(most_ranges) {}

  /// Whether the number is new for the writer. Where there are more ranges than are kept, the writer's lowest is
  /// forgotten, or those of another writer where it has no other: these numbers count as new again.
  bool add(std::string_view writer, std::uint64_t number);
  /// How many ranges were forgotten.
  std::uint64_t forgotten() const { return forgotten_; }

 private:
  using Ranges = std::map<std::uint64_t, std::uint64_t>;  // the first number to the last

  struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
  };

  bool add_to(Ranges& ranges, std::uint64_t number);
  void forget_some(Ranges& kept);

  std::size_t most_ranges_;
  std::size_t range_count_ = 0;
  std::uint64_t forgotten_ = 0;
  std::unordered_map<std::string, Ranges, TextHash, std::equal_to<>> writers_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_SEEN_NUMBERS_H
