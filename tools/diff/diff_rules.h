#ifndef QZLOG_TOOLS_DIFF_DIFF_RULES_H
#define QZLOG_TOOLS_DIFF_DIFF_RULES_H

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "tools/report/rule_table.h"

namespace qzlog_compiler {

/// Every kind of change between two versions of definitions.
enum class DiffRule {
  kVersionMoved,
  kVersionOverMoved,
  kVersionNotMoved,
  kVersionShort,
  kVersionMovedBack,
  kVersionUnreadable,
  kGlobalAdded,
  kGlobalRemoved,
  kGlobalRenamed,
  kGlobalOrderChanged,
  kGlobalRedirectChanged,
  kEntryAdded,
  kEntryRemoved,
  kEntryRenamed,
  kEntryRenumbered,
  kSummaryChanged,
  kMaskChanged,
  kWordChanged,
  kMessageIdChanged,
  kTextChanged,
  kTextReferencesChanged,
  kTextFormatsChanged,
  kTextWhiteSpaceChanged,
  kTextNotationChanged,
  kAttributeAdded,
  kAttributeRemoved,
  kAttributeRenamed,
  kAttributeMadeGlobal,
  kAttributeMadeOwn,
  kAttributeOrderChanged,
  kRedirectChanged,
  kNumberWidened,
  kNumberNarrowed,
  kTextLimitRaised,
  kTextLimitLowered,
  kTimeKindChanged,
  kTypeChanged,
  kSensitivityChanged,
  kSelectorAdded,
  kSelectorRemoved,
  kSelectorAttributeChanged,
  kSelectorMessageAdded,
  kSelectorMessageRemoved,
  kSelectorIndexChanged,
  kSelectorValueChanged,
  kAuxCollision,
};

/// For whom a change breaks something, as a set of bits; `kSafe`: for nobody.
enum Verdict : unsigned {
  kSafe = 0,
  kSource = 1U << 0,       ///< callers and generated C++
  kBinary = 1U << 1,       ///< recorded entries, and readers that hold the other version
  kRender = 1U << 2,       ///< what a reader of messages sees
  kTranslation = 1U << 3,  ///< texts in catalogs
  kFilter = 1U << 4,       ///< what entry filters let through
  kExtension = 1U << 5,    ///< auxiliary definitions
};

/// How far the version has to move for a change.
enum class VersionStep { kNone, kMinor, kMajor };

/// Whether an auxiliary file that has the same already would stop loading. Only the file itself can tell.
enum class Collision { kNo, kMay };

/// A rule with what a change of its kind does.
struct DiffRuleInfo : RuleInfo {
  constexpr DiffRuleInfo(DiffRule rule, std::string_view rule_name, std::string_view what_changed, unsigned breaks_for,
                         VersionStep step_of_version, Collision may_collide, std::string_view sentence,
                         std::string_view example_before, std::string_view example_after)
      : RuleInfo(rule, rule_name, sentence, breaks_for != kSafe),
        subject(what_changed),
        verdicts(breaks_for),
        step(step_of_version),
        collision(may_collide),
        before(example_before),
        after(example_after) {}

  std::string_view subject;  ///< what changed, in one or two words; empty where the place says it
  unsigned verdicts;         ///< bits of `Verdict`
  VersionStep step;
  Collision collision;
  std::string_view before;  ///< an example for the documentation, with the next
  std::string_view after;
};

/// All rules, in the order of `DiffRule`.
std::span<const DiffRuleInfo> all_diff_rules();

const DiffRuleInfo& diff_rule_info(DiffRule rule);
const RuleInfo& rule_info(DiffRule rule);

/// By its name or a former one.
std::optional<DiffRule> find_diff_rule(std::string_view name);

/// "none", "minor" or "major".
std::string_view step_name(VersionStep step);

/// The names of the bits: "source", "binary", "render", "translation", "filter", "extension".
std::vector<std::string_view> verdict_names(unsigned verdicts);

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_DIFF_DIFF_RULES_H
