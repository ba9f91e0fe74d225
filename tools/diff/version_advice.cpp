#include "tools/diff/version_advice.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <tuple>

#include "tools/compiler/text/number_text.h"

namespace qzlog_compiler {
namespace {

struct Version {
  std::uint64_t major = 0;
  std::uint64_t minor = 0;

  bool operator==(const Version&) const = default;
  bool operator<(const Version& other) const { return std::tie(major, minor) < std::tie(other.major, other.minor); }
};

std::optional<Version> parse_version(std::string_view tag) {
  const std::size_t point = tag.find('.');
  if (point == std::string_view::npos) return std::nullopt;
  const std::optional<std::uint64_t> major = parse_unsigned(tag.substr(0, point), NumberForm::kDecimal);
  const std::optional<std::uint64_t> minor = parse_unsigned(tag.substr(point + 1), NumberForm::kDecimal);
  return major && minor ? std::optional(Version{*major, *minor}) : std::nullopt;
}

VersionStep largest_step(std::span<const DiffChange> changes) {
  VersionStep largest = VersionStep::kNone;
  for (const DiffChange& change : changes) largest = std::max(largest, diff_rule_info(change.rule).step);
  return largest;
}

Version advised_version(const Version& old_version, VersionStep step) {
  if (step == VersionStep::kMajor) return {old_version.major + 1, 0};
  return {old_version.major, old_version.minor + (step == VersionStep::kMinor ? 1 : 0)};
}

std::optional<DiffRule> judge_move(const Version& old_version, const Version& new_version, VersionStep needed) {
  if (new_version < old_version) return DiffRule::kVersionMovedBack;
  if (new_version == old_version) {
    return needed == VersionStep::kNone ? std::nullopt : std::optional(DiffRule::kVersionNotMoved);
  }
  const VersionStep moved = new_version.major != old_version.major ? VersionStep::kMajor : VersionStep::kMinor;
  if (moved < needed) return DiffRule::kVersionShort;
  return moved > needed ? DiffRule::kVersionOverMoved : DiffRule::kVersionMoved;
}

}  // namespace

bool VersionAdvice::sufficient() const { return !finding || diff_rule_info(*finding).verdicts == kSafe; }

VersionAdvice judge_version(const std::string& old_tag, const std::string& new_tag,
                            std::span<const DiffChange> changes) {
  VersionAdvice advice;
  advice.needed = largest_step(changes);
  const std::optional<Version> old_version = parse_version(old_tag);
  const std::optional<Version> new_version = parse_version(new_tag);
  if (old_version) {
    const Version advised = advised_version(*old_version, advice.needed);
    advice.advised = std::to_string(advised.major) + '.' + std::to_string(advised.minor);
  }
  if (old_version && old_version == new_version && old_tag != new_tag && advice.needed == VersionStep::kNone) {
    advice.finding = DiffRule::kVersionMoved;  // "2.5" and "2.05": the same numbers
  } else if (old_version && new_version) {
    advice.finding = judge_move(*old_version, *new_version, advice.needed);
  } else if (old_tag != new_tag) {
    advice.finding = DiffRule::kVersionUnreadable;
  } else if (advice.needed != VersionStep::kNone) {
    advice.finding = DiffRule::kVersionNotMoved;
  }
  return advice;
}

}  // namespace qzlog_compiler
