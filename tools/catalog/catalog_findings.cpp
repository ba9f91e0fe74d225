#include "tools/catalog/catalog_findings.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <unordered_map>
#include <utility>

namespace qzlog_catalog {
namespace {

constexpr std::array kRules = {
    CatalogRuleInfo{CatalogRule::kMessageIdConflict, "message-id-conflict",
                    "One message ID stands for two different messages."},
    CatalogRuleInfo{CatalogRule::kMessageIdCharacter, "message-id-character",
                    "A message ID holds a character that no catalog can hold in an ID."},
    CatalogRuleInfo{CatalogRule::kPoSyntax, "po-syntax", "A file is no well-formed PO file."},
    CatalogRuleInfo{CatalogRule::kPoCharset, "po-charset", "A PO file is not UTF-8, or does not say so in its header."},
    CatalogRuleInfo{CatalogRule::kPoLanguage, "po-language", "The language of a PO file is not known to ICU."},
    CatalogRuleInfo{CatalogRule::kPoDomain, "po-domain", "A PO file names a domain; a catalog has only one."},
    CatalogRuleInfo{CatalogRule::kPoPlural, "po-plural", "A message with plural forms, which no catalog has."},
    CatalogRuleInfo{CatalogRule::kDuplicateLanguage, "duplicate-language", "Two PO files are for one language."},
    CatalogRuleInfo{CatalogRule::kDuplicateMessage, "duplicate-message", "A PO file has two messages for one ID."},
    CatalogRuleInfo{CatalogRule::kSourceChanged, "source-changed",
                    "The source text has changed since the PO file was updated; it is shown instead."},
    CatalogRuleInfo{CatalogRule::kUnknownMessage, "unknown-message",
                    "A PO file translates a message that the sources do not have."},
    CatalogRuleInfo{CatalogRule::kBadManifest, "bad-manifest",
                    "The list of what was made in a catalog's folder is damaged."},
    CatalogRuleInfo{CatalogRule::kForeignBundle, "foreign-bundle",
                    "A bundle in a catalog's folder was not made by the command."},
};

constexpr bool in_enumeration_order() {
  for (std::size_t i = 0; i < kRules.size(); ++i) {
    if (static_cast<std::size_t>(kRules[i].rule) != i) return false;
  }
  return static_cast<std::size_t>(CatalogRule::kForeignBundle) + 1 == kRules.size();
}
static_assert(in_enumeration_order(), "rule_name() indexes the table by the rule");

std::string_view rule_name(CatalogRule rule) { return kRules[static_cast<std::size_t>(rule)].name; }

}  // namespace

std::span<const CatalogRuleInfo> all_catalog_rules() { return kRules; }

void CatalogFindings::error(std::string file, std::size_t line, CatalogRule rule, std::string text, std::string hint) {
  add({std::move(file), line, Severity::kError, rule_name(rule), std::move(text), std::move(hint)});
}

void CatalogFindings::warning(std::string file, std::size_t line, CatalogRule rule, std::string text,
                              std::string hint) {
  add({std::move(file), line, Severity::kWarning, rule_name(rule), std::move(text), std::move(hint)});
}

void CatalogFindings::add(CatalogFinding finding) {
  if (finding.severity == Severity::kError) ++error_count_;
  found_.push_back(std::move(finding));
}

void CatalogFindings::sort_by_line() {
  std::unordered_map<std::string, std::size_t> order;
  for (const CatalogFinding& finding : found_) order.try_emplace(finding.file, order.size());
  std::stable_sort(found_.begin(), found_.end(), [&](const CatalogFinding& a, const CatalogFinding& b) {
    const auto place = [&](const CatalogFinding& finding) { return std::pair(order.at(finding.file), finding.line); };
    return place(a) < place(b);
  });
}

std::ostream& operator<<(std::ostream& out, const CatalogFinding& finding) {
  out << finding.file << ':';
  if (finding.line != 0) out << finding.line << ':';
  out << (finding.severity == Severity::kError ? " error: " : " warning: ");
  return out << finding.text << " [" << finding.rule << ']';
}

}  // namespace qzlog_catalog
