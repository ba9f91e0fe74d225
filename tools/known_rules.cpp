#include "tools/known_rules.h"

#include <span>
#include <string>
#include <string_view>

#include "tools/catalog/catalog_rules.h"
#include "tools/choice/choice_rules.h"
#include "tools/configuration/config_rules.h"
#include "tools/count/counter_reader.h"
#include "tools/diff/diff_rules.h"
#include "tools/inspect/inspect_rules.h"
#include "tools/logs/entry_error.h"
#include "tools/report/check_rules.h"
#include "tools/report/source_rules.h"

namespace qzlog_tool {

namespace {

using qzlog_compiler::DiffRuleInfo;
using qzlog_compiler::KnownRule;
using qzlog_compiler::RuleInfo;
using qzlog_compiler::Severity;

constexpr std::string_view kAcceptedBySource =
    "A source accepts the warning with, say,\n  accept:\n    - {rule: RULE, reason: why it does no harm here}";
constexpr std::string_view kAcceptedByDiff =
    "A file for 'qzlog diff --accept' accepts the change with, say,\n  - {rule: RULE, reason: why it does no harm "
    "here}";

struct Table {
  std::string_view name;
  std::string_view about;
  Severity usual_severity;
  std::span<const RuleInfo> rules;
};

std::string verdict_list(unsigned verdicts) {
  std::string list;
  for (const std::string_view name : qzlog_compiler::verdict_names(verdicts)) {
    list.append(list.empty() ? "" : ", ").append(name);
  }
  return list.empty() ? "nothing" : list;
}

void add_table(const Table& table, std::vector<KnownRule>& known) {
  for (const RuleInfo& info : table.rules) {
    known.push_back({&info, table.name, table.about, table.usual_severity, info.acceptable ? kAcceptedBySource : ""});
  }
}

void add_changes(std::vector<KnownRule>& known) {
  for (const DiffRuleInfo& info : qzlog_compiler::all_diff_rules()) {
    KnownRule rule{&info, "diff", "changes of definitions", Severity::kWarning, info.acceptable ? kAcceptedByDiff : ""};
    rule.details = {{"breaks", verdict_list(info.verdicts)},
                    {"version_step", std::string(qzlog_compiler::step_name(info.step))},
                    {"before", std::string(info.before)},
                    {"after", std::string(info.after)}};
    known.push_back(std::move(rule));
  }
}

}  // namespace

std::vector<KnownRule> all_known_rules() {
  const Table tables[] = {
      {"compile", "definitions", Severity::kError, qzlog_compiler::all_rules()},
      {"catalog", "catalogs and their PO files", Severity::kError, qzlog_catalog::all_catalog_rules()},
      {"check", "compiled files and catalogs", Severity::kError, all_check_rules()},
      {"entries", "entries", Severity::kError, all_entry_rules()},
      {"choice", "expressions that choose entries", Severity::kError, all_choice_rules()},
      {"configuration", "configuration files", Severity::kWarning, all_config_rules()},
      {"count", "counter files", Severity::kError, all_counter_rules()},
      {"inspect", "compiled files shown as sources", Severity::kError, all_inspect_rules()},
  };
  std::vector<KnownRule> known;
  for (const Table& table : tables) add_table(table, known);
  add_changes(known);
  return known;
}

}  // namespace qzlog_tool
