#include "tools/inspect/inspect_rules.h"

#include <cstddef>

namespace qzlog_tool {
namespace {

using qzlog_compiler::RuleInfo;

constexpr RuleInfo kRules[] = {
    {InspectRule::kNoYamlForm, "no-yaml-form", "A compiled file holds what no definition source can say."},
};
static_assert(is_whole_table(kRules, InspectRule::kNoYamlForm));

}  // namespace

std::span<const RuleInfo> all_inspect_rules() { return kRules; }

const RuleInfo& rule_info(InspectRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

}  // namespace qzlog_tool
