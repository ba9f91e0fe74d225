#ifndef QZLOG_TOOLS_DIFF_DIFF_REPORT_H
#define QZLOG_TOOLS_DIFF_DIFF_REPORT_H

#include <cstddef>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "tools/diff/diff_accept.h"
#include "tools/diff/model_diff.h"
#include "tools/diff/version_advice.h"
#include "tools/report/finding.h"

namespace qzlog_tool {

struct ReportedChange {
  qzlog_compiler::DiffChange change;
  const qzlog_compiler::AcceptedBreak* accepted = nullptr;  ///< null: nobody accepted it, or it is safe
};

/// What `qzlog diff` found. The models and the acceptances that the changes point to have to outlive it.
struct DiffReport {
  std::string old_name;
  std::string new_name;
  std::string old_version;
  std::string new_version;
  bool knows_aux = false;  ///< auxiliary files were at hand, so collisions are known
  std::vector<ReportedChange> changes;
  std::vector<qzlog_compiler::Finding> findings;  ///< about the file of accepted breaks  ///< in the order in which
                                                  ///< they are shown, those of one entry together
  qzlog_compiler::VersionAdvice advice;

  /// Breaks that nobody accepted.
  std::size_t break_count() const;
};

/// For people: one line per change, grouped by entry, then the counts and the advice.
void print_diff(std::ostream& out, const DiffReport& report, bool colour);

nlohmann::ordered_json to_json(const DiffReport& report);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_DIFF_DIFF_REPORT_H
