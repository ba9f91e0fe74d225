#ifndef QZLOG_TOOLS_EXPLAIN_RULE_EXPLANATION_H
#define QZLOG_TOOLS_EXPLAIN_RULE_EXPLANATION_H

#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/report/known_rule.h"

namespace qzlog_tool {

/// Whether a text can be nothing but the name of a rule: entries have numbers, or names without small letters.
bool reads_as_rule(std::string_view text);

/// The rules that a text names, by their names or former ones; several commands may have one of a name.
std::vector<qzlog_compiler::KnownRule> find_known_rules(std::string_view name,
                                                        std::span<const qzlog_compiler::KnownRule> all);

/// The names of all rules in the order of the alphabet, each once.
std::vector<std::string_view> rule_names(std::span<const qzlog_compiler::KnownRule> all);

/// The rules that a text names. Throws CommandError (findings), with what it may have meant, when there is none.
std::vector<qzlog_compiler::KnownRule> require_known_rules(const std::string& name,
                                                           std::span<const qzlog_compiler::KnownRule> all);

/// What is known of rules of one name, at least one.
void print_rule_explanation(std::ostream& out, std::span<const qzlog_compiler::KnownRule> rules);
void print_rule_explanation_json(std::ostream& out, std::span<const qzlog_compiler::KnownRule> rules);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_EXPLAIN_RULE_EXPLANATION_H
