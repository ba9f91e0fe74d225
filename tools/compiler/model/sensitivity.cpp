#include "tools/compiler/model/sensitivity.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace qzlog_compiler {
namespace {

using qzlog::Sensitivity;

constexpr std::array<std::string_view, 3> kNames = {"keep", "hash", "drop"};
static_assert(static_cast<std::size_t>(Sensitivity::kDrop) + 1 == kNames.size());

}  // namespace

std::string_view sensitivity_name(Sensitivity sensitivity) { return kNames[static_cast<std::size_t>(sensitivity)]; }

std::optional<Sensitivity> find_sensitivity(std::string_view name) {
  const auto found = std::find(kNames.begin(), kNames.end(), name);
  if (found == kNames.end()) return std::nullopt;
  return static_cast<Sensitivity>(found - kNames.begin());
}

std::span<const std::string_view> all_sensitivity_names() { return kNames; }

Sensitivity sensitivity_of_mark(std::uint32_t mark) {
  return static_cast<Sensitivity>(std::min<std::uint32_t>(mark, static_cast<std::uint32_t>(Sensitivity::kDrop)));
}

bool can_be_hashed(qz_AttributeType type) { return type >= TypeChar32 && type <= TypeMBChar2K; }

}  // namespace qzlog_compiler
