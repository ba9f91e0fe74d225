#include "tools/compiler/source/accepted_warnings.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "tools/compiler/source/mapping_fields.h"
#include "tools/compiler/source/scalar_values.h"
#include "tools/compiler/text/nearest_word.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

constexpr std::array<KnownKey, 2> kAcceptFields = {{{"rule", true}, {"reason", true}}};

/// Warnings that a run for another path may give.
constexpr std::array kPathRules = {Rule::kLiteralPercent,    Rule::kTooManyReferences, Rule::kLongReferenceName,
                                   Rule::kPathConflict,      Rule::kNegativeUnsigned,  Rule::kBooleanAsZero,
                                   Rule::kQuotedPlaceholder, Rule::kBrokenTemplate,    Rule::kPatternArgument,
                                   Rule::kUnusedAttribute,   Rule::kCurrencyOfReader};

bool depends_on_path(AnyRule rule) { return std::find(kPathRules.begin(), kPathRules.end(), rule) != kPathRules.end(); }

std::string unknown_rule_hint(std::string_view name) {
  std::vector<std::string_view> names;
  for (const RuleInfo& info : all_rules()) {
    if (info.acceptable) names.push_back(info.name);
  }
  return did_you_mean(name, names, "a warning names its rule in brackets at its end");
}

/// The rule that an item names, none when it is not one that can be accepted.
std::optional<AnyRule> read_rule(const YamlNode& node, Findings& diagnostics) {
  const std::optional<std::string> name = read_text(node, "the name of a warning's rule", diagnostics);
  if (!name) return std::nullopt;
  const RuleInfo* const found = find_rule(all_rules(), *name);
  if (found == nullptr) {
    diagnostics.error(node.position(), Rule::kUnknownRule, "there is no rule " + quoted(*name))
        .with_hint(unknown_rule_hint(*name));
    return std::nullopt;
  }
  if (!found->acceptable) {
    diagnostics.error(node.position(), Rule::kRuleNotAcceptable, quoted(*name) + " is nothing that can be accepted")
        .with_hint("only warnings about definitions and texts can be accepted");
    return std::nullopt;
  }
  return AnyRule(*found);
}

void check_reason(const YamlNode& node, Findings& diagnostics) {
  const std::optional<std::string> reason = read_text(node, "the reason for accepting a warning", diagnostics);
  if (!reason || reason->find_first_not_of(" \t\n") != std::string::npos) return;
  diagnostics.error(node.position(), Rule::kEmptyReason, "an empty reason")
      .with_hint("say to the next reader why the warning does no harm here");
}

}  // namespace

void AcceptedWarnings::load(const YamlNode& list, AcceptScope scope, const YamlNode& holder, Findings& diagnostics) {
  if (list.kind() != YamlKind::kSequence) {
    report_wrong_type(list, "a list of accepted warnings", diagnostics);
    return;
  }
  list.for_each_item([&](const YamlNode& item) { load_item(item, scope, holder, diagnostics); });
}

void AcceptedWarnings::load_item(const YamlNode& item, AcceptScope scope, const YamlNode& holder,
                                 Findings& diagnostics) {
  const MappingFields fields(item, kAcceptFields, "an accepted warning", diagnostics);
  const YamlNode* const reason = fields.find("reason");
  if (reason != nullptr) check_reason(*reason, diagnostics);
  const YamlNode* const name = fields.find("rule");
  if (name == nullptr) return;
  const std::optional<AnyRule> rule = read_rule(*name, diagnostics);
  if (!rule) return;
  by_scope_[{scope, *rule}].push_back(accepted_.size());
  const SourcePosition begin = scope == AcceptScope::kFile ? SourcePosition{} : holder.position();
  accepted_.push_back({*rule, begin, holder.end_position(), name->position(), false});
}

/// Sources that accepted a warning under the rule that it had before go on accepting it.
AcceptedWarnings::Accepted* AcceptedWarnings::find(const Finding& warning) {
  Accepted* const found = find(warning, warning.rule);
  const bool had_another = warning.rule == Rule::kPatternArgument;
  return found == nullptr && had_another ? find(warning, Rule::kBrokenTemplate) : found;
}

AcceptedWarnings::Accepted* AcceptedWarnings::find(const Finding& warning, AnyRule rule) {
  for (const AcceptScope scope : {AcceptScope::kSelectorMessage, AcceptScope::kEntry, AcceptScope::kFile}) {
    const auto list = by_scope_.find({scope, rule});
    if (list == by_scope_.end()) continue;
    // Parts of one scope do not overlap, so only the last that begins before the place can hold it.
    const auto after =
        std::upper_bound(list->second.begin(), list->second.end(), warning.place,
                         [this](const TextPlace& place, std::size_t index) { return place < accepted_[index].begin; });
    if (after == list->second.begin()) continue;
    Accepted& candidate = accepted_[*std::prev(after)];
    if (scope == AcceptScope::kFile || warning.place < candidate.end) return &candidate;
  }
  return nullptr;
}

void AcceptedWarnings::remove_accepted(Findings& diagnostics) {
  diagnostics.remove_warnings([this](const Finding& warning) {
    Accepted* const accepted = find(warning);
    if (accepted != nullptr) accepted->used = true;
    return accepted != nullptr;
  });
}

void AcceptedWarnings::report_unused(RenderingPaths path, Findings& diagnostics) const {
  for (const Accepted& accepted : accepted_) {
    if (accepted.used || (path != RenderingPaths::kBoth && depends_on_path(accepted.rule))) continue;
    diagnostics
        .warning(accepted.position, Rule::kUnusedAccept,
                 "the warning " + std::string(rule_name(accepted.rule)) + " is accepted here, but does not occur")
        .with_hint("take it off the list");
  }
}

}  // namespace qzlog_compiler
