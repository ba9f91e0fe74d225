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
/// gaps that do, and the writers.
class SeenNumbers {
 public:
  /// How much memory ranges of numbers and writers may take, however long the writers' names are.
  static constexpr std::size_t kMostBytes = std::size_t{24} << 20;
  // What is counted for a range and, besides its name, for a writer, with what the tables and the allocator need.
  static constexpr std::size_t kRangeBytes = 64;
  static constexpr std::size_t kWriterBytes = 160;

  explicit SeenNumbers(std::size_t most_bytes = kMostBytes) : most_bytes_(most_bytes) {}

  /// Whether the number is new for the writer. Where there is more than has room, the writer's lowest range is
  /// forgotten, or those of other writers where it has no other: these numbers count as new again.
  bool add(std::string_view writer, std::uint64_t number);
  /// How many ranges were forgotten.
  std::uint64_t forgotten() const { return forgotten_; }

 private:
  using Ranges = std::map<std::uint64_t, std::uint64_t>;  // the first number to the last

  struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
  };

  static std::size_t writer_bytes(std::string_view name) { return kWriterBytes + name.size(); }
  bool add_to(Ranges& ranges, std::uint64_t number);
  bool forget_some(Ranges& kept);

  std::size_t most_bytes_;
  std::size_t bytes_ = 0;
  std::uint64_t forgotten_ = 0;
  std::unordered_map<std::string, Ranges, TextHash, std::equal_to<>> writers_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHOICE_SEEN_NUMBERS_H
