#ifndef QZLOG_TOOLS_REPORT_CHECK_FINDING_H
#define QZLOG_TOOLS_REPORT_CHECK_FINDING_H

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/report/diagnostics.h"

namespace qzlog_tool {

/// What `qzlog check` finds beside what the compiler has a rule for. The names that users see are in
/// `all_check_rules()`; they never change.
enum class CheckRule {
  kRefusedFile,
  kRefusedRecord,
  kRefusedEntryId,
  kRefusedAttribute,
  kRefusedSelectorAttribute,
  kRefusedSelectorMessage,
  kRejectedPattern,
  kLostText,
  kBadBundle,
  kNoRootBundle,
  kMissingMessage,
  kUnusedMessage,
  kReferenceLost,
  kReferenceAdded,
  kReferenceFormat,
  kUnchangedText,
  kStaleCatalog,
};

struct CheckRuleInfo {
  CheckRule rule;
  std::string_view name;     ///< as it stands in brackets at the end of a finding
  std::string_view meaning;  ///< one sentence for the documentation
};

/// All rules, in the order of `CheckRule`.
std::span<const CheckRuleInfo> all_check_rules();

/// The compiler's rules that a check reports by itself, apart from the warnings about whole models.
std::span<const qzlog_compiler::Rule> shared_check_rules();

std::string_view check_rule_name(CheckRule rule);

using qzlog_compiler::Severity;

struct CheckFinding {
  std::string file;                         ///< as it is shown: a definition file, or a bundle of a catalog
  qzlog_compiler::SourcePosition position;  ///< in a definition source, else unknown
  std::optional<std::uint32_t> entry_id;
  std::string subject;  ///< within the entry or the bundle: "selector message 3", "message 'disk.full'"; may be empty
  Severity severity = Severity::kError;
  std::string_view rule;
  std::string text;
  std::string hint;  ///< may be empty
};

/// The findings about one file, in the order in which they were made.
class CheckReport {
 public:
  /// `file`: as it is shown.
  CheckReport(std::string file, std::vector<CheckFinding>& findings) : file_(std::move(file)), findings_(findings) {}

  /// What the findings to come are about.
  void about_file();
  void about_entry(std::uint32_t entry_id, std::string subject = "");
  void about(std::string subject);

  void error(std::string_view rule, std::string text, std::string hint = "") {
    add(Severity::kError, rule, std::move(text), std::move(hint));
  }
  void warning(std::string_view rule, std::string text, std::string hint = "") {
    add(Severity::kWarning, rule, std::move(text), std::move(hint));
  }
  void add(Severity severity, std::string_view rule, std::string text, std::string hint = "");

 private:
  std::string file_;
  std::vector<CheckFinding>& findings_;
  std::optional<std::uint32_t> entry_id_;
  std::string subject_;
};

/// A compiler's diagnostic as a finding.
CheckFinding finding_of(qzlog_compiler::Diagnostic diagnostic);

/// One line each, `FILE: error: entry 1001, selector message 3: TEXT [rule-name]`, and one for a hint.
void print_findings(std::ostream& out, std::span<const CheckFinding> findings);

/// One JSON array.
void print_findings_json(std::ostream& out, std::span<const CheckFinding> findings);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_REPORT_CHECK_FINDING_H
