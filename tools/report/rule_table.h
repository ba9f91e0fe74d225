#ifndef QZLOG_TOOLS_REPORT_RULE_TABLE_H
#define QZLOG_TOOLS_REPORT_RULE_TABLE_H

#include <compare>
#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

namespace qzlog_compiler {

/// A rule as users meet it: by the name in brackets at the end of a finding. Each enumeration of rules has one table of
/// these, in its order, and a function `rule_info` beside it that gives a rule's row.
struct RuleInfo {
  template <class Rule, class = std::enable_if_t<std::is_enum_v<Rule>>>
  constexpr RuleInfo(Rule rule, std::string_view name_in_brackets, std::string_view sentence,
                     bool may_be_accepted = false, std::string_view names_before = "")
      : number(static_cast<std::size_t>(rule)),
        name(name_in_brackets),
        meaning(sentence),
        acceptable(may_be_accepted),
        former_names(names_before) {}

  /// Whether users may call it that: by its name or a former one.
  bool is_named(std::string_view text) const;

  std::size_t number;             ///< in its enumeration, and so its place in the table
  std::string_view name;          ///< never given to another rule
  std::string_view meaning;       ///< one sentence for the documentation
  bool acceptable;                ///< a warning, always or sometimes, that a source may accept
  std::string_view former_names;  ///< separated by blanks; taken wherever a name is read
};

/// For a static_assert beside a table, which is indexed by the rules: whether it holds each up to `last` at its place.
template <class Table, class Rule>
constexpr bool is_whole_table(const Table& table, Rule last) {
  std::size_t place = 0;
  for (const RuleInfo& info : table) {
    if (info.number != place++) return false;
  }
  return place == static_cast<std::size_t>(last) + 1;
}

/// The row of the rule that users call `name`, null where there is none.
template <class Info>
const Info* find_rule(std::span<const Info> table, std::string_view name) {
  for (const Info& info : table) {
    if (info.is_named(name)) return &info;
  }
  return nullptr;
}

/// A rule of any table. Made from a value of its enumeration.
class AnyRule {
 public:
  template <class Rule, class = std::enable_if_t<std::is_enum_v<Rule>>>
  AnyRule(Rule rule) : info_(&rule_info(rule)) {}  // implicit: it stands for the rule itself

  explicit AnyRule(const RuleInfo& row) : info_(&row) {}

  std::string_view name() const { return info_->name; }

  friend bool operator==(AnyRule a, AnyRule b) = default;
  /// Some order.
  friend auto operator<=>(AnyRule a, AnyRule b) { return std::compare_three_way()(a.info_, b.info_); }

 private:
  const RuleInfo* info_;
};

inline std::string_view rule_name(AnyRule rule) { return rule.name(); }

}  // namespace qzlog_compiler

#endif  // QZLOG_TOOLS_REPORT_RULE_TABLE_H
