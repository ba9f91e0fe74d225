#ifndef QZLOG_TESTS_TOOLS_PRINTED_FINDINGS_H
#define QZLOG_TESTS_TOOLS_PRINTED_FINDINGS_H

#include <span>
#include <string>
#include <vector>

#include "tools/report/finding.h"
#include "tools/report/finding_printer.h"

namespace qzlog_compiler {

/// The first line of each as the user sees it.
inline std::string printed(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) text += qzlog_tool::finding_heading(finding) + '\n';
  return text;
}

inline std::string printed(const Findings& findings) { return printed(findings.all()); }

}  // namespace qzlog_compiler

#endif  // QZLOG_TESTS_TOOLS_PRINTED_FINDINGS_H
