#ifndef QZLOG_TOOLS_DIFF_DIFF_ACCEPT_H
#define QZLOG_TOOLS_DIFF_DIFF_ACCEPT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/diff/diff_rules.h"
#include "tools/diff/model_diff.h"
#include "tools/report/finding.h"

namespace qzlog_compiler {

/// A break that is meant. What is left out matches everything, except the entry: without one, only changes outside
/// entries match.
struct AcceptedBreak {
  DiffRule rule = DiffRule::kEntryRemoved;
  std::optional<std::uint32_t> entry_id;
  std::string entry_name;
  std::string attribute;
  std::optional<std::uint32_t> selector_index;
  std::string reason;
  SourcePosition position;

  bool matches(const DiffChange& change) const;
};

/// Reads a YAML list of `{rule, entry, attribute, selector_index, reason}`. Items with a mistake are reported and left
/// out.
std::vector<AcceptedBreak> load_accepted_breaks(std::string_view text, Findings& diagnostics);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_DIFF_DIFF_ACCEPT_H
