#include "tools/choice/choice_rules.h"

#include <cstddef>

namespace qzlog_tool {

namespace {

using qzlog_compiler::RuleInfo;

constexpr RuleInfo kRules[] = {
    {ChoiceRule::kBadExpression, "bad-expression",
     "An expression is not of the form that `--where` takes: comparisons, `and`, `or`, `not` and parentheses."},
    {ChoiceRule::kLargeExpression, "large-expression",
     "An expression has more than 65536 bytes, or parentheses within more than 200 others."},
    {ChoiceRule::kBadValue, "bad-value", "A number, a text or a time in an expression is not written as one."},
    {ChoiceRule::kUndefinedAttribute, "undefined-attribute",
     "An expression asks for an attribute that the definitions do not have."},
    {ChoiceRule::kUndefinedEvent, "undefined-event",
     "An expression asks for an event that the definitions do not have."},
    {ChoiceRule::kUnknownField, "unknown-field", "An expression asks for a field that lines do not have."},
    {ChoiceRule::kNoSuchComparison, "no-such-comparison",
     "An attribute's type does not have the comparison, or not with a value of this kind."},
    {ChoiceRule::kValueRange, "value-range",
     "A value in an expression lies outside the range of the attribute's type."},
};
static_assert(is_whole_table(kRules, ChoiceRule::kValueRange));

}  // namespace

std::span<const RuleInfo> all_choice_rules() { return kRules; }

const RuleInfo& rule_info(ChoiceRule rule) { return kRules[static_cast<std::size_t>(rule)]; }

}  // namespace qzlog_tool
