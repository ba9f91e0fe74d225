#include "tools/compiler/aux_merge.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

#include "tools/compiler/attribute_type.h"
#include "tools/compiler/number_format.h"
#include "tools/compiler/utf8_text.h"

namespace qzlog_compiler {
namespace {

void report_type_change(const AttributeDefinition& aux, const AttributeDefinition& standard, std::string_view what,
                        Diagnostics& diagnostics) {
  if (aux.type == standard.type || aux.type == TypeUnknown) return;
  diagnostics.warning(aux.position, Rule::kAuxTypeChanged,
                      std::string(what) + " " + quoted(aux.name) + " becomes " +
                          std::string(short_type_name(aux.type)) + "; the standard definitions have it as " +
                          std::string(short_type_name(standard.type)));
}

/// One auxiliary entry against the standard entry that it extends.
class EntryMerge {
 public:
  EntryMerge(const EntryDefinition& aux, const EntryDefinition& standard, Diagnostics& diagnostics)
      : aux_(aux), standard_(standard), selector_(selector_attribute(standard)), diagnostics_(diagnostics) {}

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
    diagnostics_.warning(aux_.name_position, Rule::kAuxNameMismatch,
                         "the entry " + std::to_string(aux_.id) + " is named " + quoted(standard_.name) +
                             " in the standard definitions");
  }

  void check_selector() {
    const std::string& name = aux_.selector.attribute;
    if (selector_ == nullptr || name.empty() || name == selector_->name) return;
    diagnostics_.error(aux_.selector.position, Rule::kAuxSelectorConflict,
                       "the entry has the selector attribute " + quoted(selector_->name) +
                           " in the standard definitions; it cannot have " + quoted(name) + " as well");
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
        diagnostics_.error(
            attribute.position, Rule::kAuxAttributeExists,
            "the entry has the attribute " + quoted(attribute.name) + " in the standard definitions already");
      } else {
        report_type_change(attribute, *found->second, "the selector attribute", diagnostics_);
      }
    }
    report_count(count, Rule::kTooManyAttributes, "attributes");
  }

  void check_selector_messages() {
    std::unordered_set<std::uint32_t> indexes;
    std::unordered_set<std::uint32_t> values;
    for (const SelectorMessage& message : standard_.selector.messages) {
      indexes.insert(message.index);
      values.insert(message.value);
    }
    for (const SelectorMessage& message : aux_.selector.messages) {
      if (indexes.contains(message.index)) report_selector_message(message.index_position, "index", message.index);
      if (values.contains(message.value)) report_selector_message(message.value_position, "value", message.value);
    }
    report_count(standard_.selector.messages.size() + aux_.selector.messages.size(), Rule::kTooManySelectorMessages,
                 "selector messages");
  }

  void report_selector_message(SourcePosition position, std::string_view what, std::uint32_t number) {
    if (!position.known()) return;
    diagnostics_.error(position, Rule::kAuxSelectorMessageConflict,
                       "the " + std::string(what) + " " + std::to_string(number) +
                           " belongs to a selector message of the entry in the standard definitions");
  }

  void report_count(std::size_t count, Rule rule, std::string_view plural) {
    if (count <= kMaximumCount) return;
    diagnostics_.error(aux_.position, rule,
                       "together with the standard definitions the entry has " + std::to_string(count) + " " +
                           std::string(plural) + "; " + std::to_string(kMaximumCount) + " are allowed");
  }

  void check_mask() {
    if (!aux_.mask_position.known() || standard_.mask == 0 || standard_.mask == aux_.mask) return;
    diagnostics_.warning(aux_.mask_position, Rule::kAuxMaskIgnored,
                         "the entry keeps the mask " + hexadecimal(standard_.mask) + " of the standard definitions");
  }

  /// Only an ID and a text together replace the standard message.
  void check_message() {
    const bool given = aux_.message.position.known();
    if (!given && !aux_.message_id_position.known()) return;
    if (!aux_.message_id.empty() && !aux_.message.written.empty()) return;
    diagnostics_.warning(
        given ? aux_.message.position : aux_.message_id_position, Rule::kAuxMessageIgnored,
        "the entry keeps the message of the standard definitions; only a text and a catalog key together, "
        "neither of them empty, replace it");
  }

  const EntryDefinition& aux_;
  const EntryDefinition& standard_;
  const AttributeDefinition* selector_;
  Diagnostics& diagnostics_;
};

void check_globals(const DefinitionModel& aux, const ModelIndex& standard, Diagnostics& diagnostics) {
  std::size_t count = standard.model().globals.size();
  for (const AttributeDefinition& global : aux.globals) {
    const AttributeDefinition* const replaced = standard.find_global(global.name);
    if (replaced != nullptr) {
      report_type_change(global, *replaced, "the global attribute", diagnostics);
    } else if (++count == kMaximumCount + 1) {
      diagnostics.error(global.position, Rule::kTooManyGlobals,
                        "together with the standard definitions there are more than " + std::to_string(kMaximumCount) +
                            " global attributes");
    }
  }
}

void check_new_name(const EntryDefinition& aux, const ModelIndex& standard, Diagnostics& diagnostics) {
  const EntryDefinition* const namesake = aux.name.empty() ? nullptr : standard.find_entry_by_name(aux.name);
  if (namesake == nullptr || namesake->id == aux.id) return;
  diagnostics.warning(
      aux.name_position, Rule::kAuxNameMismatch,
      quoted(aux.name) + " is the name of the entry " + std::to_string(namesake->id) + " in the standard definitions");
}

}  // namespace

void check_aux_merge(const DefinitionModel& aux, const ModelIndex& standard, Diagnostics& diagnostics) {
  check_globals(aux, standard, diagnostics);
  for (const EntryDefinition& entry : aux.entries) {
    check_new_name(entry, standard, diagnostics);
    const EntryDefinition* const extended = standard.find_entry(entry.id);
    if (extended != nullptr) EntryMerge(entry, *extended, diagnostics).check();
  }
}

}  // namespace qzlog_compiler
