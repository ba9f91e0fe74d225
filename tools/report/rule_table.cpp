#include "tools/report/rule_table.h"

#include <algorithm>

namespace qzlog_compiler {

bool RuleInfo::is_named(std::string_view text) const {
  if (text == name) return true;
  for (std::string_view rest = former_names; !rest.empty();) {
    const std::size_t end = std::min(rest.find(' '), rest.size());
    if (rest.substr(0, end) == text) return true;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return false;
}

}  // namespace qzlog_compiler
