#include "tools/configuration/config_rules.h"

#include <cstddef>

namespace qzlog_tool {

namespace {

using qzlog_compiler::RuleInfo;

constexpr RuleInfo kRules[] = {
    {ConfigRule::kLastLine, "config-last-line",
     "The last line of a configuration file has no empty line behind it, so the library does not read it."},
    {ConfigRule::kLongLine, "config-long-line",
     "A line of a configuration file has more than 128 bytes: the library reads neither it nor what follows."},
    {ConfigRule::kNeverRead, "config-never-read",
     "The modification time of a configuration file is 1970-01-01 00:00:00 GMT: the library takes it for read."},
    {ConfigRule::kNearKey, "config-near-key",
     "A key is one that filters do not ask for, but nearly one that they do: the line has no effect on them."},
    {ConfigRule::kBadValue, "config-bad-value",
     "The value of a key that filters ask for is missing or no number of 32 bits, or something stands behind it."},
    {ConfigRule::kRepeatedKey, "config-repeated-key",
     "A key that filters ask for stands in a section again: the last value counts."},
    {ConfigRule::kBadSection, "config-bad-section",
     "The library reads another name out of the header of a section than the one that it shows, or none."},
    {ConfigRule::kNoSection, "config-no-section", "A setting stands in no section and is not read."},
    {ConfigRule::kMissingSection, "config-missing-section",
     "A configuration file has no section of the wanted name: only what the section 'global' says counts."},
    {ConfigRule::kNothingPasses, "config-nothing-passes",
     "The values of a section let no entry pass: the low level is above the high one or above 9, or no bit is wanted."},
};
static_assert(is_whole_table(kRules, ConfigRule::kNothingPasses));

}  // namespace

std::span<const RuleInfo> all_config_rules() { return kRules; }

const RuleInfo& rule_info(ConfigRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

}  // namespace qzlog_tool
