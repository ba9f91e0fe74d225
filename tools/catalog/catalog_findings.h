#ifndef QZLOG_TOOLS_CATALOG_CATALOG_FINDINGS_H
#define QZLOG_TOOLS_CATALOG_CATALOG_FINDINGS_H

#include <cstddef>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/report/diagnostics.h"

namespace qzlog_catalog {

using qzlog_compiler::Severity;

/// What can be wrong with message IDs, with translators' files and with the folder of a catalog. The names that users
/// see are in `all_catalog_rules()`; they never change. Translations are also judged by the
/// compiler's rules for texts, and by those of a check for stored templates and their references.
enum class CatalogRule {
  kMessageIdConflict,
  kMessageIdCharacter,
  kPoSyntax,
  kPoCharset,
  kPoLanguage,
  kPoDomain,
  kPoPlural,
  kDuplicateLanguage,
  kDuplicateMessage,
  kSourceChanged,
  kUnknownMessage,
  kBadManifest,
  kForeignBundle,
};

struct CatalogRuleInfo {
  CatalogRule rule;
  std::string_view name;     ///< as it stands in brackets at the end of a finding
  std::string_view meaning;  ///< one sentence for the documentation
};

/// All rules, in the order of `CatalogRule`.
std::span<const CatalogRuleInfo> all_catalog_rules();

/// Something to say about a line of a file; line 0 means the file as a whole.
struct CatalogFinding {
  std::string file;
  std::size_t line = 0;
  Severity severity = Severity::kError;
  std::string_view rule;
  std::string text;
  std::string hint = {};  ///< what to do about it; may be empty
};

/// Findings in the order in which they were made.
class CatalogFindings {
 public:
  void error(std::string file, std::size_t line, CatalogRule rule, std::string text, std::string hint = {});
  void warning(std::string file, std::size_t line, CatalogRule rule, std::string text, std::string hint = {});
  /// `rule` is a name with static storage.
  void add(CatalogFinding finding);

  bool has_errors() const { return error_count_ != 0; }
  std::size_t error_count() const { return error_count_; }
  const std::vector<CatalogFinding>& all() const { return found_; }

  /// Brings the findings of each file into the order of its lines; files stay in the order of their first finding.
  void sort_by_line();

 private:
  std::vector<CatalogFinding> found_;
  std::size_t error_count_ = 0;
};

/// One line: `FILE:LINE: error: TEXT [rule-name]`, without the line where there is none.
std::ostream& operator<<(std::ostream& out, const CatalogFinding& finding);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_CATALOG_FINDINGS_H
