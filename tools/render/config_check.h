#ifndef QZLOG_TOOLS_RENDER_CONFIG_CHECK_H
#define QZLOG_TOOLS_RENDER_CONFIG_CHECK_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qzlog_tool {

/// What in a configuration file the library passes over without a word. The names that users see are in
/// `all_config_rules()`; they never change.
enum class ConfigRule {
  kLastLine,
  kLongLine,
  kNeverRead,
};

struct ConfigRuleInfo {
  ConfigRule rule;
  std::string_view name;     ///< as it stands in brackets at the end of a warning
  std::string_view meaning;  ///< one sentence for the documentation
};

/// All rules, in the order of `ConfigRule`.
std::span<const ConfigRuleInfo> all_config_rules();

std::string_view config_rule_name(ConfigRule rule);

struct ConfigWarning {
  ConfigRule rule;
  std::size_t line;  ///< counted from 1; 0: the whole file
  std::string text;
};

/// Finds the lines that are not read. Nothing when all are.
std::vector<ConfigWarning> check_config(std::string_view content);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_CONFIG_CHECK_H
