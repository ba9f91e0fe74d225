#ifndef QZLOG_TOOLS_CATALOG_CATALOG_RULES_H
#define QZLOG_TOOLS_CATALOG_CATALOG_RULES_H

#include <span>

#include "tools/report/finding.h"

namespace qzlog_catalog {

using qzlog_compiler::Finding;
using qzlog_compiler::Findings;
using qzlog_compiler::Severity;

/// What can be wrong with message IDs, with translators' files and with the folder of a catalog. Translations are
/// also judged by the compiler's rules for texts, and by those of a check for stored templates and their references.
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

/// All rules, in the order of `CatalogRule`.
std::span<const qzlog_compiler::RuleInfo> all_catalog_rules();

const qzlog_compiler::RuleInfo& rule_info(CatalogRule rule);

}  // namespace qzlog_catalog

#endif  // QZLOG_TOOLS_CATALOG_CATALOG_RULES_H
