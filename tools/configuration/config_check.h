#ifndef QZLOG_TOOLS_RENDER_CONFIG_CHECK_H
#define QZLOG_TOOLS_RENDER_CONFIG_CHECK_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/report/finding.h"

namespace qzlog_tool {

/// What in a configuration file the library passes over without a word.
enum class ConfigRule {
  kLastLine,
  kLongLine,
  kNeverRead,
};

/// All rules, in the order of `ConfigRule`.
std::span<const qzlog_compiler::RuleInfo> all_config_rules();

const qzlog_compiler::RuleInfo& rule_info(ConfigRule rule);

/// Finds the lines that are not read. Nothing when all are. `file`: as it is shown.
std::vector<qzlog_compiler::Finding> check_config(const std::string& file, std::string_view content);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_CONFIG_CHECK_H
