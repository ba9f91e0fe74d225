#include "tools/render/config_check.h"

#include <algorithm>
#include <cstddef>

#include "config/configuration_format.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::Finding;
using qzlog_compiler::RuleInfo;
using qzlog_compiler::Severity;

constexpr RuleInfo kRules[] = {
    {ConfigRule::kLastLine, "config-last-line",
     "The last line of a configuration file has no empty line behind it, so the library does not read it."},
    {ConfigRule::kLongLine, "config-long-line",
     "A line of a configuration file has more than 128 bytes: the library reads neither it nor what follows."},
    {ConfigRule::kNeverRead, "config-never-read",
     "The modification time of a configuration file is 1970-01-01 00:00:00 GMT: the library takes it for read."},
};
static_assert(is_whole_table(kRules, ConfigRule::kNeverRead));

constexpr std::size_t kMaximumLineBytes = qzlog::kMostConfigurationLineBytes;
constexpr std::string_view kLineBreaks = "\n\r";
constexpr std::string_view kNothing = " \t\n\r=";

bool is_line_break(char character) { return kLineBreaks.find(character) != std::string_view::npos; }

std::size_t line_number(std::string_view content, std::size_t offset) {
  return static_cast<std::size_t>(
             std::count(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(offset), '\n')) +
         1;
}

}  // namespace

std::span<const RuleInfo> all_config_rules() { return kRules; }

const RuleInfo& rule_info(ConfigRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

// A line ends with one or two line break characters, of whichever kind; one that the file's end follows is not reported
// to the library's reader.
std::vector<Finding> check_config(const std::string& file, std::string_view content) {
  for (std::size_t begin = 0;;) {
    const std::size_t end = std::min(content.find_first_of(kLineBreaks, begin), content.size());
    if (end - begin > kMaximumLineBytes) {
      return {{file, line_number(content, begin), Severity::kWarning, ConfigRule::kLongLine,
               "the line has more than 128 bytes: neither it nor what follows is read"}};
    }
    if (end + 1 >= content.size()) {
      const std::string_view last = content.substr(begin, end - begin);
      if (last.find_first_not_of(kNothing) == std::string_view::npos) return {};
      return {{file, line_number(content, begin), Severity::kWarning, ConfigRule::kLastLine,
               "the last line has no empty line behind it and is not read"}};
    }
    begin = end + (is_line_break(content[end + 1]) ? 2 : 1);
  }
}

}  // namespace qzlog_tool
