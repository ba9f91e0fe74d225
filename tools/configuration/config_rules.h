#ifndef QZLOG_TOOLS_CONFIGURATION_CONFIG_RULES_H
#define QZLOG_TOOLS_CONFIGURATION_CONFIG_RULES_H

#include <span>

#include "tools/report/rule_table.h"

namespace qzlog_tool {

/// What in a configuration file the library passes over, or takes for something else, without a word.
enum class ConfigRule {
  kLastLine,
  kLongLine,
  kNeverRead,
  kNearKey,
  kBadValue,
  kRepeatedKey,
  kBadSection,
  kNoSection,
  kMissingSection,
  kNothingPasses,
};

/// All rules, in the order of `ConfigRule`.
std::span<const qzlog_compiler::RuleInfo> all_config_rules();

const qzlog_compiler::RuleInfo& rule_info(ConfigRule rule);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CONFIGURATION_CONFIG_RULES_H
