#include "tools/render/config_check.h"

#include <algorithm>

#include "config/configuration_format.h"

namespace qzlog_tool {

namespace {

constexpr ConfigRuleInfo kRules[] = {
    {ConfigRule::kLastLine, "config-last-line",
     "The last line of a configuration file has no empty line behind it, so the library does not read it."},
    {ConfigRule::kLongLine, "config-long-line",
     "A line of a configuration file has more than 128 bytes: the library reads neither it nor what follows."},
    {ConfigRule::kNeverRead, "config-never-read",
     "The modification time of a configuration file is 1970-01-01 00:00:00 GMT: the library takes it for read."},
};

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

std::span<const ConfigRuleInfo> all_config_rules() { return kRules; }

std::string_view config_rule_name(ConfigRule rule) { return kRules[static_cast<std::size_t>(rule)].name; }

// A line ends with one or two line break characters, of whichever kind; one that the file's end follows is not reported
// to the library's reader.
std::vector<ConfigWarning> check_config(std::string_view content) {
  for (std::size_t begin = 0;;) {
    const std::size_t end = std::min(content.find_first_of(kLineBreaks, begin), content.size());
    if (end - begin > kMaximumLineBytes) {
      return {{ConfigRule::kLongLine, line_number(content, begin),
               "the line has more than 128 bytes: neither it nor what follows is read"}};
    }
    if (end + 1 >= content.size()) {
      const std::string_view last = content.substr(begin, end - begin);
      if (last.find_first_not_of(kNothing) == std::string_view::npos) return {};
      return {{ConfigRule::kLastLine, line_number(content, begin),
               "the last line has no empty line behind it and is not read"}};
    }
    begin = end + (is_line_break(content[end + 1]) ? 2 : 1);
  }
}

}  // namespace qzlog_tool
