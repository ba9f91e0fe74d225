#ifndef QZLOG_TOOLS_STATS_GROUP_TABLE_H
#define QZLOG_TOOLS_STATS_GROUP_TABLE_H

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tools/stats/number_summary.h"

namespace qzlog_tool {

/// What a line is grouped by. Of a kind, for all lines, or none.
struct GroupKey {
  enum class Kind { kNone, kNumber, kText };

  Kind kind = Kind::kNone;
  long long number = 0;
  std::string_view text = {};

  static GroupKey of(long long number) { return {Kind::kNumber, number}; }
  static GroupKey of(std::string_view text) { return {Kind::kText, 0, text}; }
  auto operator<=>(const GroupKey&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// What is known of some lines.
struct Group {
  static constexpr long long kNever = std::numeric_limits<long long>::max();

  std::uint64_t count = 0;
  /// So many lines more may belong here: they came when the group was not kept.
  std::uint64_t missed = 0;
  long long first = kNever;  ///< moment, in seconds since 1970-01-01 00:00:00 GMT
  long long last = -kNever;
  NumberSummary numbers = {};

  bool has_moment() const { return first <= last; }
  void add_moment(long long moment) {
    if (moment < first) first = moment;
    if (moment > last) last = moment;
  }
  void add(const Group& other);
};

/// Groups of lines, in memory that has a bound: where there are too many groups, the smallest are added up and
/// forgotten. What is kept of a group that came back may lack the lines from before: Group::missed says how many at
/// most.
class GroupTable {
 public:
  /// Of groups and keys; numbers are held besides, at most kMostNumbers of them.
  static constexpr std::size_t kMostBytes = std::size_t{16} << 20;
  static constexpr std::size_t kMostNumbers = 500'000;

  explicit GroupTable(std::size_t most_bytes = kMostBytes, std::size_t most_numbers = kMostNumbers)
      : most_bytes_(most_bytes), most_numbers_(most_numbers) {}

  /// Counts a line. Valid until the next call.
  Group& count(const GroupKey& key);
  /// Adds a number to a group, which `count` gave last.
  void add_number(Group& group, double number);

  struct Row {
    GroupKey key;
    const Group* group;
  };
  /// All that are kept, in no order. Valid until more is counted.
  std::vector<Row> rows() const;
  /// The sum of those that are forgotten.
  const Group& forgotten() const { return forgotten_; }

 private:
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };

  Group& find(const GroupKey& key);
  Group& begin(Group& group, std::size_t bytes);
  void forget_small_ones();
  template <class Groups>
  void forget_up_to(std::uint64_t most, Groups& groups);
  void shrink_numbers();
  template <class Act>
  void for_each(Act&& act);

  std::size_t most_bytes_;
  std::size_t most_numbers_;
  std::size_t bytes_ = 0;
  std::size_t numbers_ = 0;
  std::uint64_t most_missed_ = 0;
  bool has_none_ = false;
  Group none_;
  Group forgotten_;
  std::unordered_map<long long, Group> by_number_;
  std::unordered_map<std::string, Group, TextHash, std::equal_to<>> by_text_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_STATS_GROUP_TABLE_H
