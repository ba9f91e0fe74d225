#include "tools/diff/diff_rules.h"

#include <array>
#include <cstddef>
#include <utility>

namespace qzlog_compiler {
namespace {

using Step = VersionStep;
using Aux = Collision;

// A step is major where programs, recorded entries, filters or extensions break, and minor where something is added or
// where only readers of messages and translators are concerned.
constexpr DiffRuleInfo kRules[] = {
    {DiffRule::kVersionMoved, "version-moved", "version", kSafe, Step::kNone, Aux::kNo,
     "The version has moved as far as the changes ask for.", "version: \"2.5\"", "version: \"2.6\""},
    {DiffRule::kVersionOverMoved, "version-over-moved", "version", kSafe, Step::kNone, Aux::kNo,
     "The version has moved further than the changes ask for.", "version: \"2.5\"", "version: \"3.0\""},
    {DiffRule::kVersionNotMoved, "version-not-moved", "version", kBinary, Step::kNone, Aux::kNo,
     "Entries of both files carry one version, so readers cannot tell which definitions they need.", "version: \"2.5\"",
     "version: \"2.5\""},
    {DiffRule::kVersionShort, "version-short", "version", kBinary, Step::kNone, Aux::kNo,
     "The minor version has moved where the major version has to.", "version: \"2.5\"", "version: \"2.6\""},
    {DiffRule::kVersionMovedBack, "version-moved-back", "version", kBinary, Step::kNone, Aux::kNo,
     "The newer file looks older than the older one.", "version: \"2.5\"", "version: \"2.4\""},
    {DiffRule::kVersionUnreadable, "version-unreadable", "version", kBinary, Step::kNone, Aux::kNo,
     "The version of a compiled file is not MAJOR.MINOR, so the versions cannot be compared.", "2.5", "beta"},
    {DiffRule::kGlobalAdded, "global-added", "", kSafe, Step::kMinor, Aux::kMay,
     "Entries may carry one more attribute. An auxiliary file may define it with another type.", "globals: []",
     "globals: [{name: SITE, type: Char32}]"},
    {DiffRule::kGlobalRemoved, "global-removed", "", kSource | kBinary | kExtension, Step::kMajor, Aux::kNo,
     "Callers that set the attribute fail, older entries hold it, and auxiliary texts may refer to it.",
     "globals: [{name: SITE, type: Char32}]", "globals: []"},
    {DiffRule::kGlobalRenamed, "global-renamed", "name", kSource | kBinary | kExtension, Step::kMajor, Aux::kMay,
     "The attribute at the same place with the same type has another name; the old name is unknown.",
     "{name: SITE, type: Char32}", "{name: PLANT, type: Char32}"},
    {DiffRule::kGlobalOrderChanged, "global-order-changed", "order", kSafe, Step::kNone, Aux::kNo,
     "The global attributes are listed in another order; they are found by name.", "globals: [SITE, HOST]",
     "globals: [HOST, SITE]"},
    {DiffRule::kGlobalRedirectChanged, "global-redirect-changed", "redirect", kSafe, Step::kNone, Aux::kNo,
     "The library reads and drops the redirection names of global attributes.",
     "{name: SITE, type: Char32, redirect: site}", "{name: SITE, type: Char32}"},
    {DiffRule::kEntryAdded, "entry-added", "entry", kSafe, Step::kMinor, Aux::kMay,
     "One more ID. An auxiliary file may define the ID already.", "", "{id: 7, name: FULL, ...}"},
    {DiffRule::kEntryRemoved, "entry-removed", "entry", kSource | kBinary | kExtension, Step::kMajor, Aux::kNo,
     "The ID is unknown: to callers, to older entries, and to auxiliary files that extend it.",
     "{id: 7, name: FULL, ...}", ""},
    {DiffRule::kEntryRenamed, "entry-renamed", "name", kSource, Step::kMajor, Aux::kNo,
     "The ID has another symbolic name, which generated code and entries by name use.", "{id: 7, name: FULL}",
     "{id: 7, name: DISK_FULL}"},
    {DiffRule::kEntryRenumbered, "entry-renumbered", "ID", kSource | kBinary | kExtension, Step::kMajor, Aux::kMay,
     "The entry of this name has another ID; older entries and auxiliary files have the old one.",
     "{id: 7, name: FULL}", "{id: 8, name: FULL}"},
    {DiffRule::kSummaryChanged, "summary-changed", "summary", kSafe, Step::kNone, Aux::kNo, "Documentation only.",
     "summary: No blocks left.", "summary: No free blocks left."},
    {DiffRule::kMaskChanged, "mask-changed", "mask", kFilter, Step::kMajor, Aux::kNo,
     "Filters compare the property mask with theirs, so other entries pass.", "mask: 0x1", "mask: 0x4"},
    {DiffRule::kWordChanged, "word-changed", "word", kSafe, Step::kNone, Aux::kNo,
     "The record's second word; no reader interprets it.", "word: 0", "word: 7"},
    {DiffRule::kMessageIdChanged, "message-id-changed", "catalog key", kRender | kTranslation, Step::kMinor, Aux::kNo,
     "Catalogs hold the text under the old key; with them the message cannot be rendered.", "message_id: disk.full",
     "message_id: volume.full"},
    {DiffRule::kTextChanged, "text-changed", "text", kRender | kTranslation, Step::kMinor, Aux::kNo,
     "Readers see another text, with the same references; translations of the old one are stale.",
     "message: \"Disk {Name} full\"", "message: \"Volume {Name} full\""},
    {DiffRule::kTextReferencesChanged, "text-references-changed", "text", kRender | kTranslation, Step::kMinor,
     Aux::kNo, "The text shows attributes that it did not, or no longer shows one.", "message: \"Disk {Name} full\"",
     "message: \"Disk full\""},
    {DiffRule::kTextFormatsChanged, "text-formats-changed", "text", kRender | kTranslation, Step::kMinor, Aux::kNo,
     "The text shows an attribute in another format.", "message: \"{Share} used\"", "message: \"{Share:P} used\""},
    {DiffRule::kTextWhiteSpaceChanged, "text-white-space-changed", "text", kTranslation, Step::kMinor, Aux::kNo,
     "Only white space differs; catalogs still find the text changed.", "message: \"Disk  full\"",
     "message: \"Disk full\""},
    {DiffRule::kTextNotationChanged, "text-notation-changed", "text", kSafe, Step::kNone, Aux::kNo,
     "The text is written or stored in another way and shows the same.", "message: \"{Free} left\"",
     "message: \"{Free:d} left\""},
    {DiffRule::kAttributeAdded, "attribute-added", "", kSafe, Step::kMinor, Aux::kMay,
     "The entry may carry one more attribute. An auxiliary file may give it to the entry already.", "attributes: []",
     "attributes: [{name: Free, type: UInt4}]"},
    {DiffRule::kAttributeRemoved, "attribute-removed", "", kSource | kBinary | kExtension, Step::kMajor, Aux::kNo,
     "Callers that set the attribute fail, older entries hold it, auxiliary texts may refer to it.",
     "attributes: [{name: Free, type: UInt4}]", "attributes: []"},
    {DiffRule::kAttributeRenamed, "attribute-renamed", "name", kSource | kBinary | kExtension, Step::kMajor, Aux::kMay,
     "The attribute at the same place with the same type has another name; the old name is unknown.",
     "{name: Free, type: UInt4}", "{name: Left, type: UInt4}"},
    {DiffRule::kAttributeMadeGlobal, "attribute-made-global", "owner", kSafe, Step::kMinor, Aux::kNo,
     "The entry no longer has the attribute itself, but a global one of its name, which serves as well.",
     "attributes: [{name: Site, ...}]", "globals: [{name: Site, ...}]"},
    {DiffRule::kAttributeMadeOwn, "attribute-made-own", "owner", kSafe, Step::kMinor, Aux::kMay,
     "The entry has an attribute of the name of a global one, which served before.", "globals: [{name: Site, ...}]",
     "attributes: [{name: Site, ...}]"},
    {DiffRule::kAttributeOrderChanged, "attribute-order-changed", "attribute order", kSource, Step::kMajor, Aux::kNo,
     "Visitors and generated code see an entry's attributes in the order of the definition.",
     "attributes: [Free, Total]", "attributes: [Total, Free]"},
    {DiffRule::kRedirectChanged, "redirect-changed", "redirect", kBinary, Step::kMajor, Aux::kNo,
     "Receivers of redirected values find the value under another name.", "{name: Free, type: UInt4, redirect: free}",
     "{name: Free, type: UInt4, redirect: left}"},
    {DiffRule::kNumberWidened, "number-widened", "type", kSource, Step::kMajor, Aux::kNo,
     "Every old value fits, but callers have to use another method.", "{name: Free, type: UInt2}",
     "{name: Free, type: UInt4}"},
    {DiffRule::kNumberNarrowed, "number-narrowed", "type", kSource | kBinary, Step::kMajor, Aux::kNo,
     "Values that fitted no longer do, and callers have to use another method.", "{name: Free, type: UInt4}",
     "{name: Free, type: SInt4}"},
    {DiffRule::kTextLimitRaised, "text-limit-raised", "type", kSafe, Step::kMinor, Aux::kNo,
     "Longer texts are accepted, by the same methods.", "{name: Name, type: Char32}", "{name: Name, type: Char64}"},
    {DiffRule::kTextLimitLowered, "text-limit-lowered", "type", kSource | kBinary, Step::kMajor, Aux::kNo,
     "Texts that fitted are cut or refused.", "{name: Name, type: Char64}", "{name: Name, type: Char32}"},
    {DiffRule::kTimeKindChanged, "time-kind-changed", "type", kBinary | kRender, Step::kMajor, Aux::kNo,
     "Placeholders show another part of the time, which older values may lack.", "{name: When, type: Date}",
     "{name: When, type: Timestamp}"},
    {DiffRule::kTypeChanged, "type-changed", "type", kSource | kBinary | kRender, Step::kMajor, Aux::kNo,
     "A value of another kind: other methods, other values, and formats in texts may not accept it.",
     "{name: Free, type: UInt4}", "{name: Free, type: Char32}"},
    {DiffRule::kSensitivityChanged, "sensitivity-changed", "sensitivity", kRender, Step::kMinor, Aux::kNo,
     "Entries that are written hold a value, its hash or nothing instead of what they held before.",
     "{name: User, type: Char64}", "{name: User, type: Char64, sensitive: drop}"},
    {DiffRule::kSelectorAdded, "selector-added", "selector", kRender, Step::kMinor, Aux::kMay,
     "Values of the attribute pick other messages than before. An auxiliary file may have a selector for "
     "the entry.",
     "", "selector: {attribute: Reason, messages: [...]}"},
    {DiffRule::kSelectorRemoved, "selector-removed", "selector", kSource | kRender | kExtension, Step::kMajor, Aux::kNo,
     "Every value shows the default message, and callers that ask for a message by its index fail.",
     "selector: {attribute: Reason, messages: [...]}", ""},
    {DiffRule::kSelectorAttributeChanged, "selector-attribute-changed", "selector", kRender | kExtension, Step::kMajor,
     Aux::kMay, "Another attribute picks the messages; auxiliary files that name the old one collide.",
     "selector: {attribute: Reason, ...}", "selector: {attribute: Cause, ...}"},
    {DiffRule::kSelectorMessageAdded, "selector-message-added", "", kRender, Step::kMinor, Aux::kMay,
     "The value shows another message than before. An auxiliary file may use the index or the value.", "messages: []",
     "messages: [{index: 1, value: 10, ...}]"},
    {DiffRule::kSelectorMessageRemoved, "selector-message-removed", "", kSource | kRender, Step::kMajor, Aux::kNo,
     "The value shows the default message, and callers that ask for the index fail.",
     "messages: [{index: 1, value: 10, ...}]", "messages: []"},
    {DiffRule::kSelectorIndexChanged, "selector-index-changed", "index", kSource, Step::kMajor, Aux::kMay,
     "Callers that ask for the message by its old index fail.", "{index: 1, value: 10, ...}",
     "{index: 2, value: 10, ...}"},
    {DiffRule::kSelectorValueChanged, "selector-value-changed", "value", kRender, Step::kMinor, Aux::kMay,
     "Another value shows the message.", "{index: 1, value: 10, ...}", "{index: 1, value: 11, ...}"},
    {DiffRule::kAuxCollision, "aux-collision", "auxiliary definitions", kExtension, Step::kMajor, Aux::kNo,
     "An auxiliary file given with --aux extends the old definitions, but not the new ones.", "attributes: []",
     "attributes: [{name: Pool, type: Char64}]"},
};

static_assert(is_whole_table(kRules, DiffRule::kAuxCollision));

constexpr std::array<std::pair<Verdict, std::string_view>, 6> kVerdictNames = {{
    {kSource, "source"},
    {kBinary, "binary"},
    {kRender, "render"},
    {kTranslation, "translation"},
    {kFilter, "filter"},
    {kExtension, "extension"},
}};

}  // namespace

std::span<const DiffRuleInfo> all_diff_rules() { return kRules; }

const DiffRuleInfo& diff_rule_info(DiffRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

const RuleInfo& rule_info(DiffRule rule) { return diff_rule_info(rule); }

std::optional<DiffRule> find_diff_rule(std::string_view name) {
  const DiffRuleInfo* const found = find_rule(all_diff_rules(), name);
  return found == nullptr ? std::nullopt : std::optional(static_cast<DiffRule>(found->number));
}

std::string_view step_name(VersionStep step) {
  if (step == VersionStep::kNone) return "none";
  return step == VersionStep::kMinor ? "minor" : "major";
}

std::vector<std::string_view> verdict_names(unsigned verdicts) {
  std::vector<std::string_view> names;
  for (const auto& [verdict, name] : kVerdictNames) {
    if ((verdicts & verdict) != 0) names.push_back(name);
  }
  return names;
}

}  // namespace qzlog_compiler
