#include "tools/diff/attribute_diff.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>

namespace qzlog_compiler {
namespace {

constexpr std::size_t kNoPartner = static_cast<std::size_t>(-1);

/// Old positions to new ones. Damaged files may hold a name twice; the n-th stands for the n-th.
std::vector<std::size_t> match_by_name(const std::vector<AttributeDefinition>& old_list,
                                       const std::vector<AttributeDefinition>& new_list) {
  std::unordered_map<std::string_view, std::vector<std::size_t>> places;
  for (std::size_t i = new_list.size(); i-- > 0;) places[new_list[i].name].push_back(i);
  std::vector<std::size_t> partners(old_list.size(), kNoPartner);
  for (std::size_t i = 0; i < old_list.size(); ++i) {
    const auto found = places.find(old_list[i].name);
    if (found == places.end() || found->second.empty()) continue;
    partners[i] = found->second.back();
    found->second.pop_back();
  }
  return partners;
}

std::vector<bool> taken_places(const std::vector<std::size_t>& partners, std::size_t count) {
  std::vector<bool> taken(count, false);
  for (const std::size_t partner : partners) {
    if (partner != kNoPartner) taken[partner] = true;
  }
  return taken;
}

struct Range {
  std::int64_t low;
  std::int64_t high;
};

std::optional<Range> number_range(qz_AttributeType type) {
  switch (type) {
    case TypeUInt1:
      return Range{0, UINT8_MAX};
    case TypeSInt1:
      return Range{INT8_MIN, INT8_MAX};
    case TypeUInt2:
      return Range{0, UINT16_MAX};
    case TypeSInt2:
      return Range{INT16_MIN, INT16_MAX};
    case TypeUInt4:
      return Range{0, UINT32_MAX};
    case TypeSInt4:
      return Range{INT32_MIN, INT32_MAX};
    default:
      return std::nullopt;
  }
}

bool both_within(qz_AttributeType a, qz_AttributeType b, qz_AttributeType first, qz_AttributeType last) {
  return a >= first && a <= last && b >= first && b <= last;
}

}  // namespace

AttributeMatch match_attributes(const std::vector<AttributeDefinition>& old_list,
                                const std::vector<AttributeDefinition>& new_list) {
  std::vector<std::size_t> partners = match_by_name(old_list, new_list);
  std::vector<bool> taken = taken_places(partners, new_list.size());
  AttributeMatch match;
  std::size_t last = 0;
  for (std::size_t i = 0; i < old_list.size(); ++i) {
    const bool is_renamed =
        i < new_list.size() && partners[i] == kNoPartner && !taken[i] && new_list[i].type == old_list[i].type;
    if (is_renamed) {
      partners[i] = i;
      taken[i] = true;
    }
    const bool is_removed = partners[i] == kNoPartner;
    match.pairs.push_back({&old_list[i], is_removed ? nullptr : &new_list[partners[i]]});
    if (is_removed) continue;
    match.reordered = match.reordered || partners[i] < last;
    last = partners[i];
  }
  for (std::size_t i = 0; i < new_list.size(); ++i) {
    if (!taken[i]) match.pairs.push_back({nullptr, &new_list[i]});
  }
  return match;
}

std::optional<DiffRule> type_change(qz_AttributeType before, qz_AttributeType after) {
  if (before == after) return std::nullopt;
  const std::optional<Range> old_range = number_range(before);
  const std::optional<Range> new_range = number_range(after);
  if (old_range && new_range) {
    const bool holds_all = new_range->low <= old_range->low && old_range->high <= new_range->high;
    return holds_all ? DiffRule::kNumberWidened : DiffRule::kNumberNarrowed;
  }
  if (both_within(before, after, TypeChar32, TypeChar2K) || both_within(before, after, TypeMBChar32, TypeMBChar2K)) {
    return before < after ? DiffRule::kTextLimitRaised : DiffRule::kTextLimitLowered;
  }
  if (both_within(before, after, TypeDate, TypeTimestamp)) return DiffRule::kTimeKindChanged;
  return DiffRule::kTypeChanged;
}

}  // namespace qzlog_compiler
