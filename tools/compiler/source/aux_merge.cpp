#include "tools/compiler/source/aux_merge.h"

#include <string>
#include <unordered_map>
#include <utility>

#include "tools/compiler/model/attribute_type.h"
#include "tools/compiler/model/sensitivity.h"
#include "tools/compiler/text/hexadecimal.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

/// Reports about an auxiliary source, with places in the standard one.
class MergeReport {
 public:
  MergeReport(const std::string& standard_file, Findings& diagnostics)
      : standard_file_(standard_file), diagnostics_(diagnostics) {}

  Finding& error(SourcePosition position, Rule rule, std::string text, SourcePosition in_standard = {}) {
    return with_place(diagnostics_.error(position, rule, std::move(text)), in_standard);
  }

  Finding& warning(SourcePosition position, Rule rule, std::string text, SourcePosition in_standard = {}) {
    return with_place(diagnostics_.warning(position, rule, std::move(text)), in_standard);
  }

  /// What changes with an attribute that stands in both.
  void redefinition(const AttributeDefinition& aux, const AttributeDefinition& standard, std::string_view what) {
    type_change(aux, standard, what);
    if (aux.sensitivity >= standard.sensitivity) return;
    warning(aux.position, Rule::kAuxSensitivityLowered,
            std::string(what) + " " + quoted(aux.name) + " becomes less sensitive: the standard definitions say " +
                std::string(sensitivity_name(standard.sensitivity)) + ", this one " +
                std::string(sensitivity_name(aux.sensitivity)),
            standard.position);
  }

 private:
  void type_change(const AttributeDefinition& aux, const AttributeDefinition& standard, std::string_view what) {
    if (aux.type == standard.type || aux.type == TypeUnknown) return;
    warning(aux.position, Rule::kAuxTypeChanged,
            std::string(what) + " " + quoted(aux.name) + " becomes " + std::string(short_type_name(aux.type)) +
                "; the standard definitions have it as " + std::string(short_type_name(standard.type)),
            standard.position);
  }

  Finding& with_place(Finding& diagnostic, SourcePosition in_standard) {
    if (in_standard.known()) diagnostic.notes.push_back({standard_file_, in_standard, "the standard one is here"});
    return diagnostic;
  }

  const std::string& standard_file_;
  Findings& diagnostics_;
};

/// Of the text, else of the catalog key; unknown where an entry gives neither.
SourcePosition message_position(const EntryDefinition& entry) {
  return entry.message.position.known() ? entry.message.position : entry.message_id_position;
}

bool has_key(const EntryDefinition& entry) { return !entry.message_id.empty(); }
/// A text that cannot be stored is an error of its own.
bool has_text(const EntryDefinition& entry) { return !entry.message.written.empty(); }

/// One auxiliary entry against the standard entry that it extends.
class EntryMerge {
 private:
  using PositionByNumber = std::unordered_map<std::uint32_t, SourcePosition>;

 public:
  EntryMerge(const EntryDefinition& aux, const EntryDefinition& standard, MergeReport& report)
      : aux_(aux), standard_(standard), selector_(selector_attribute(standard)), report_(report) {}

  void check() {
    check_name();
    check_selector();
    check_attributes();
    check_selector_messages();
    check_mask();
    check_message();
  }

 private:
  void check_name() {
    if (standard_.name.empty() || aux_.name.empty() || standard_.name == aux_.name) return;
    report_.warning(
        aux_.name_position, Rule::kAuxNameMismatch,
        "the entry " + std::to_string(aux_.id) + " is named " + quoted(standard_.name) + " in the standard definitions",
        standard_.name_position);
  }

  void check_selector() {
    const std::string& name = aux_.selector.attribute;
    if (selector_ == nullptr || name.empty() || name == selector_->name) return;
    report_.error(aux_.selector.position, Rule::kAuxSelectorConflict,
                  "the entry has the selector attribute " + quoted(selector_->name) +
                      " in the standard definitions; it cannot have " + quoted(name) + " as well",
                  standard_.selector.position);
  }

  void check_attributes() {
    std::unordered_map<std::string_view, const AttributeDefinition*> existing;
    for (const AttributeDefinition& attribute : standard_.attributes) existing.emplace(attribute.name, &attribute);
    std::size_t count = existing.size();
    for (const AttributeDefinition& attribute : aux_.attributes) {
      const auto found = existing.find(attribute.name);
      if (found == existing.end()) {
        ++count;
      } else if (attribute.name != aux_.selector.attribute) {
        report_
            .error(attribute.position, Rule::kAuxAttributeExists,
                   "the entry has the attribute " + quoted(attribute.name) + " in the standard definitions already",
                   found->second->position)
            .with_hint("leave it out here; messages can refer to it all the same");
      } else {
        report_.redefinition(attribute, *found->second, "the selector attribute");
      }
    }
    report_count(count, Rule::kTooManyAttributes, "attributes");
  }

  void check_selector_messages() {
    PositionByNumber indexes;
    PositionByNumber values;
    for (const SelectorMessage& message : standard_.selector.messages) {
      indexes.emplace(message.index, message.index_position);
      values.emplace(message.value, message.value_position);
    }
    for (const SelectorMessage& message : aux_.selector.messages) {
      check_number(indexes, message.index, message.index_position, "index");
      check_number(values, message.value, message.value_position, "value");
    }
    report_count(standard_.selector.messages.size() + aux_.selector.messages.size(), Rule::kTooManySelectorMessages,
                 "selector messages");
  }

  void check_number(const PositionByNumber& standard, std::uint32_t number, SourcePosition position,
                    std::string_view what) {
    const auto found = standard.find(number);
    if (found == standard.end() || !position.known()) return;
    report_.error(position, Rule::kAuxSelectorMessageConflict,
                  "the " + std::string(what) + " " + std::to_string(number) +
                      " belongs to a selector message of the entry in the standard definitions",
                  found->second);
  }

  void report_count(std::size_t count, Rule rule, std::string_view plural) {
    if (count <= kMaximumCount) return;
    report_.error(aux_.position, rule,
                  "together with the standard definitions the entry has " + std::to_string(count) + " " +
                      std::string(plural) + "; " + std::to_string(kMaximumCount) + " are allowed");
  }

  void check_mask() {
    if (!aux_.mask_position.known() || standard_.mask == 0 || standard_.mask == aux_.mask) return;
    report_
        .warning(aux_.mask_position, Rule::kAuxMaskIgnored,
                 "the entry keeps the mask " + bits_text(standard_.mask) + " of the standard definitions",
                 standard_.mask_position)
        .with_hint("leave the mask out here");
  }

  void check_message() {
    const SourcePosition position = message_position(aux_);
    if (!position.known() || (has_key(aux_) && has_text(aux_))) return;
    report_
        .warning(position, Rule::kAuxMessageIgnored, "the entry keeps the message of the standard definitions",
                 standard_.message.position)
        .with_hint("only a text and a catalog key together, neither of them empty, replace it");
  }

  const EntryDefinition& aux_;
  const EntryDefinition& standard_;
  const AttributeDefinition* selector_;
  MergeReport& report_;
};

void check_globals(const DefinitionModel& aux, const ModelIndex& standard, MergeReport& report) {
  std::size_t count = standard.model().globals.size();
  for (const AttributeDefinition& global : aux.globals) {
    const AttributeDefinition* const replaced = standard.find_global(global.name);
    if (replaced != nullptr) {
      report.redefinition(global, *replaced, "the global attribute");
    } else if (++count == kMaximumCount + 1) {
      report.error(global.position, Rule::kTooManyGlobals,
                   "together with the standard definitions there are more than " + std::to_string(kMaximumCount) +
                       " global attributes");
    }
  }
}

void check_new_name(const EntryDefinition& aux, const ModelIndex& standard, MergeReport& report) {
  const EntryDefinition* const namesake = aux.name.empty() ? nullptr : standard.find_entry_by_name(aux.name);
  if (namesake == nullptr || namesake->id == aux.id) return;
  report.warning(
      aux.name_position, Rule::kAuxNameMismatch,
      quoted(aux.name) + " is the name of the entry " + std::to_string(namesake->id) + " in the standard definitions",
      namesake->name_position);
}

/// Of an entry that the standard definitions lack, nothing of the message is kept when half of it is missing.
void check_new_message(const EntryDefinition& aux, MergeReport& report) {
  const SourcePosition position = message_position(aux);
  if (!position.known() || has_key(aux) == has_text(aux)) return;
  report.warning(position, Rule::kAuxMessageIgnored, "the entry has no message")
      .with_hint("only a text and a catalog key together, neither of them empty, make one in an auxiliary file");
}

}  // namespace

void check_aux_merge(const DefinitionModel& aux, const ModelIndex& standard, const std::string& standard_file,
                     Findings& diagnostics) {
  MergeReport report(standard_file, diagnostics);
  check_globals(aux, standard, report);
  for (const EntryDefinition& entry : aux.entries) {
    check_new_name(entry, standard, report);
    const EntryDefinition* const extended = standard.find_entry(entry.id);
    if (extended == nullptr) {
      check_new_message(entry, report);
    } else {
      EntryMerge(entry, *extended, report).check();
    }
  }
}

}  // namespace qzlog_compiler
