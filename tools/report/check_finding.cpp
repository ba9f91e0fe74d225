#include "tools/report/check_finding.h"

#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <ostream>
#include <utility>

#include "tools/compiler/text/utf8_text.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::printable;
using qzlog_compiler::Rule;

constexpr CheckRuleInfo kRules[] = {
    {CheckRule::kRefusedFile, "refused-file", "The library cannot load the file."},
    {CheckRule::kRefusedRecord, "refused-record", "The library cannot read the record of an entry."},
    {CheckRule::kRefusedEntryId, "refused-entry-id",
     "The record of an entry carries another ID than the map gives it."},
    {CheckRule::kRefusedAttribute, "refused-attribute", "An attribute stands twice in an entry, or in both files."},
    {CheckRule::kRefusedSelectorAttribute, "refused-selector-attribute",
     "The two files give an entry different selector attributes."},
    {CheckRule::kRefusedSelectorMessage, "refused-selector-message",
     "The two files give an entry selector messages of one index or one value."},
    {CheckRule::kRejectedPattern, "rejected-pattern", "ICU refuses the pattern that the template becomes."},
    {CheckRule::kLostText, "lost-text", "A part of the text that is never shown."},
    {CheckRule::kBadBundle, "bad-bundle",
     "A bundle of the catalog cannot be read, or there is no table of messages for it."},
    {CheckRule::kNoRootBundle, "no-root-bundle", "The catalog has nothing for languages without a bundle."},
    {CheckRule::kMissingMessage, "missing-message", "A language lacks a message that the definitions use."},
    {CheckRule::kUnusedMessage, "unused-message", "A language has a message that no definition uses."},
    {CheckRule::kReferenceLost, "reference-lost",
     "A translation lacks a placeholder that the source text has, or has it less often."},
    {CheckRule::kReferenceAdded, "reference-added",
     "A translation has a placeholder that the source text lacks, or has it more often."},
    {CheckRule::kReferenceFormat, "reference-format",
     "A translation asks for another format of an attribute than the source text."},
    {CheckRule::kUnchangedText, "unchanged-text", "A translation reads as the source text does."},
    {CheckRule::kStaleCatalog, "stale-catalog", "A language was built from other texts than the definitions have."},
};

constexpr std::array kSharedRules = {
    Rule::kInvalidUtf8,
    Rule::kBadVersion,
    Rule::kEmptyMessageId,
    Rule::kPathConflict,
    Rule::kUnknownType,
    Rule::kDuplicateId,
    Rule::kDuplicateGlobal,
    Rule::kTooManyAttributes,
    Rule::kTooManyGlobals,
    Rule::kTooManySelectorMessages,
    Rule::kUnknownSelectorAttribute,
    Rule::kSelectorAttributeType,
    Rule::kSelectorValueRange,
    Rule::kDuplicateSelectorIndex,
    Rule::kDuplicateSelectorValue,
    Rule::kUnknownAttribute,
    Rule::kUnknownFormat,
    Rule::kFormatTypeMismatch,
    Rule::kGuidReference,
    Rule::kStandardFieldType,
    Rule::kUndefinedStandardField,
    Rule::kTooManyReferences,
    Rule::kBadDefinitionFile,
    Rule::kAuxSelectorConflict,
    Rule::kAuxAttributeExists,
    Rule::kAuxSelectorMessageConflict,
    Rule::kAuxMaskIgnored,
    Rule::kAuxMessageIgnored,
    Rule::kAuxTypeChanged,
    Rule::kQuotedPlaceholder,
    Rule::kBrokenTemplate,
    Rule::kPatternArgument,
};

std::string_view severity_name(Severity severity) { return severity == Severity::kError ? "error" : "warning"; }

std::string place_of(const CheckFinding& finding) {
  std::string place = finding.entry_id ? "entry " + std::to_string(*finding.entry_id) : "";
  if (!finding.subject.empty()) place += (place.empty() ? "" : ", ") + finding.subject;
  return place.empty() ? place : place + ": ";
}

}  // namespace

std::span<const CheckRuleInfo> all_check_rules() { return kRules; }

std::span<const Rule> shared_check_rules() { return kSharedRules; }

std::string_view check_rule_name(CheckRule rule) { return kRules[static_cast<std::size_t>(rule)].name; }

void CheckReport::about_file() {
  entry_id_.reset();
  subject_.clear();
}

void CheckReport::about_entry(std::uint32_t entry_id, std::string subject) {
  entry_id_ = entry_id;
  subject_ = std::move(subject);
}

void CheckReport::about(std::string subject) {
  entry_id_.reset();
  subject_ = std::move(subject);
}

void CheckReport::add(Severity severity, std::string_view rule, std::string text, std::string hint) {
  findings_.push_back({file_, {}, entry_id_, subject_, severity, rule, std::move(text), std::move(hint)});
}

CheckFinding finding_of(qzlog_compiler::Diagnostic diagnostic) {
  return {std::move(diagnostic.file),
          diagnostic.position,
          std::nullopt,
          "",
          diagnostic.severity,
          qzlog_compiler::rule_name(diagnostic.rule),
          std::move(diagnostic.text),
          std::move(diagnostic.hint)};
}

void print_findings(std::ostream& out, std::span<const CheckFinding> findings) {
  for (const CheckFinding& finding : findings) {
    out << printable(finding.file) << ':';
    if (finding.position.known()) out << finding.position.line << ':' << finding.position.column << ':';
    out << ' ' << severity_name(finding.severity) << ": " << printable(place_of(finding)) << printable(finding.text)
        << " [" << finding.rule << "]\n";
    if (!finding.hint.empty()) out << "  hint: " << printable(finding.hint) << '\n';
  }
}

void print_findings_json(std::ostream& out, std::span<const CheckFinding> findings) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const CheckFinding& finding : findings) {
    nlohmann::ordered_json item;
    item["file"] = finding.file;
    if (finding.position.known()) {
      item["line"] = finding.position.line;
      item["column"] = finding.position.column;
    }
    if (finding.entry_id) item["entry"] = *finding.entry_id;
    if (!finding.subject.empty()) item["subject"] = finding.subject;
    item["severity"] = severity_name(finding.severity);
    item["rule"] = finding.rule;
    item["text"] = finding.text;
    if (!finding.hint.empty()) item["hint"] = finding.hint;
    list.push_back(std::move(item));
  }
  out << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

}  // namespace qzlog_tool
