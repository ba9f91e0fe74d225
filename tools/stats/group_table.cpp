#include "tools/stats/group_table.h"

#include <algorithm>

namespace qzlog_tool {

namespace {

constexpr std::size_t kNodeBytes = sizeof(Group) + 64;  // with what the table and the allocator need for it

std::size_t bytes_of(long long /*key*/) { return kNodeBytes; }
std::size_t bytes_of(const std::string& key) { return kNodeBytes + sizeof(std::string) + key.size(); }

}  // namespace

void Group::add(const Group& other) {
  count += other.count;
  first = std::min(first, other.first);
  last = std::max(last, other.last);
  numbers.add(other.numbers);
}

Group& GroupTable::count(const GroupKey& key) {
  if (bytes_ > most_bytes_) forget_small_ones();
  Group& group = find(key);
  ++group.count;
  return group;
}

Group& GroupTable::find(const GroupKey& key) {
  if (key.kind == GroupKey::Kind::kNone) {
    has_none_ = true;
    return none_;
  }
  if (key.kind == GroupKey::Kind::kNumber) {
    const auto [place, is_new] = by_number_.try_emplace(key.number);
    return is_new ? begin(place->second, bytes_of(key.number)) : place->second;
  }
  const auto found = by_text_.find(key.text);
  if (found != by_text_.end()) return found->second;
  const auto place = by_text_.try_emplace(std::string(key.text)).first;
  return begin(place->second, bytes_of(place->first));
}

Group& GroupTable::begin(Group& group, std::size_t bytes) {
  bytes_ += bytes;
  group.missed = most_missed_;
  return group;
}

void GroupTable::add_number(Group& group, double number) {
  const std::size_t before = group.numbers.held();
  group.numbers.add(number);
  numbers_ += group.numbers.held() - before;  // may become less
  if (numbers_ > most_numbers_) shrink_numbers();
}

template <class Act>
void GroupTable::for_each(Act&& act) {
  act(none_);
  act(forgotten_);
  for (auto& [key, group] : by_number_) act(group);
  for (auto& [key, group] : by_text_) act(group);
}

// To a half, so that it does not happen for each number. A group that has one step does not get smaller.
void GroupTable::shrink_numbers() {
  constexpr int kMostRounds = 24;
  for (int round = 0; round < kMostRounds && numbers_ > most_numbers_ / 2; ++round) {
    numbers_ = 0;
    for_each([this](Group& group) {
      group.numbers.shrink();
      numbers_ += group.numbers.held();
    });
  }
}

// The smaller half. A group that is not kept had at most so many lines, as often as it was forgotten.
void GroupTable::forget_small_ones() {
  std::vector<std::uint64_t> sizes;
  sizes.reserve(by_number_.size() + by_text_.size());
  for (const auto& [key, group] : by_number_) sizes.push_back(group.count + group.missed);
  for (const auto& [key, group] : by_text_) sizes.push_back(group.count + group.missed);
  if (sizes.empty()) return;
  const auto middle = sizes.begin() + static_cast<std::ptrdiff_t>(sizes.size() / 2);
  std::nth_element(sizes.begin(), middle, sizes.end());
  most_missed_ = std::max(most_missed_, *middle);
  forget_up_to(*middle, by_number_);
  forget_up_to(*middle, by_text_);
  numbers_ = 0;
  for_each([this](const Group& group) { numbers_ += group.numbers.held(); });
}

template <class Groups>
void GroupTable::forget_up_to(std::uint64_t most, Groups& groups) {
  for (auto place = groups.begin(); place != groups.end();) {
    const Group& group = place->second;
    if (group.count + group.missed > most) {
      ++place;
      continue;
    }
    forgotten_.add(group);
    bytes_ -= bytes_of(place->first);
    place = groups.erase(place);
  }
}

std::vector<GroupTable::Row> GroupTable::rows() const {
  std::vector<Row> rows;
  rows.reserve(by_number_.size() + by_text_.size() + 1);
  if (has_none_) rows.push_back({{}, &none_});
  for (const auto& [key, group] : by_number_) rows.push_back({GroupKey::of(key), &group});
  for (const auto& [key, group] : by_text_) rows.push_back({GroupKey::of(key), &group});
  return rows;
}

}  // namespace qzlog_tool
