#ifndef QZLOG_TOOLS_CHECK_CHECK_REPORT_H
#define QZLOG_TOOLS_CHECK_CHECK_REPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/report/finding.h"

namespace qzlog_tool {

/// The findings about one file, in the order in which they were made.
class CheckReport {
 public:
  /// `file`: as it is shown.
  CheckReport(std::string file, std::vector<qzlog_compiler::Finding>& findings)
      : file_(std::move(file)), findings_(findings) {}

  /// What the findings to come are about.
  void about_file();
  void about_entry(std::uint32_t entry_id, std::string subject = "");
  void about(std::string subject);

  void error(qzlog_compiler::AnyRule rule, std::string text, std::string hint = "") {
    add(qzlog_compiler::Severity::kError, rule, std::move(text), std::move(hint));
  }
  void warning(qzlog_compiler::AnyRule rule, std::string text, std::string hint = "") {
    add(qzlog_compiler::Severity::kWarning, rule, std::move(text), std::move(hint));
  }
  void add(qzlog_compiler::Severity severity, qzlog_compiler::AnyRule rule, std::string text, std::string hint = "");

 private:
  std::string file_;
  std::vector<qzlog_compiler::Finding>& findings_;
  std::optional<std::uint32_t> entry_id_;
  std::string subject_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_CHECK_CHECK_REPORT_H
