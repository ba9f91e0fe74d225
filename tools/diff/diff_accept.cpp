#include "tools/diff/diff_accept.h"

#include <array>

#include "tools/compiler/source/mapping_fields.h"
#include "tools/compiler/source/scalar_values.h"
#include "tools/compiler/source/yaml_tree.h"
#include "tools/compiler/text/utf8_text.h"
#include "tools/report/source_rules.h"

namespace qzlog_compiler {
namespace {

constexpr std::array<KnownKey, 5> kFields = {
    {{"rule", true}, {"entry"}, {"attribute"}, {"selector_index"}, {"reason", true}}};

/// Reads one item of the list.
class AcceptLoader {
 public:
  explicit AcceptLoader(Findings& diagnostics) : diagnostics_(diagnostics) {}

  /// None after a mistake.
  std::optional<AcceptedBreak> load(const YamlNode& node) {
    const MappingFields fields(node, kFields, "an accepted break", diagnostics_);
    accepted_.position = node.position();
    complete_ = fields.find("rule") != nullptr && fields.find("reason") != nullptr;
    if (const YamlNode* const rule = fields.find("rule")) load_rule(*rule);
    if (const YamlNode* const entry = fields.find("entry")) load_entry(*entry);
    if (const YamlNode* const attribute = fields.find("attribute")) {
      accepted_.attribute = take(read_text(*attribute, "the attribute's name", diagnostics_));
    }
    if (const YamlNode* const index = fields.find("selector_index")) {
      accepted_.selector_index = take(read_number(*index, "the selector message's index", diagnostics_));
    }
    if (const YamlNode* const reason = fields.find("reason")) load_reason(*reason);
    return complete_ ? std::optional(std::move(accepted_)) : std::nullopt;
  }

 private:
  template <typename Value>
  Value take(std::optional<Value> value) {
    complete_ = complete_ && value.has_value();
    return std::move(value).value_or(Value());
  }

  void fail(const YamlNode& node, Rule rule, std::string text) {
    diagnostics_.error(node.position(), rule, std::move(text));
    complete_ = false;
  }

  void load_rule(const YamlNode& node) {
    const std::string name = take(read_text(node, "the rule's name", diagnostics_));
    if (name.empty()) return;
    const std::optional<DiffRule> rule = find_diff_rule(name);
    if (!rule) {
      fail(node, Rule::kUnknownRule,
           "there is no rule " + quoted(name) + "; accept what 'qzlog diff' names in brackets");
    } else if (!diff_rule_info(*rule).acceptable) {
      fail(node, Rule::kRuleNotAcceptable, quoted(name) + " breaks nothing, so it needs no acceptance");
    }
    accepted_.rule = rule.value_or(accepted_.rule);
  }

  /// A number is an ID, anything else a name.
  void load_entry(const YamlNode& node) {
    const bool is_number = node.kind() == YamlKind::kScalar && !node.text().empty() && node.text().front() >= '0' &&
                           node.text().front() <= '9';
    if (is_number) {
      accepted_.entry_id = take(read_number(node, "the entry's ID", diagnostics_));
    } else {
      accepted_.entry_name = take(read_entry_name(node, diagnostics_));
    }
  }

  void load_reason(const YamlNode& node) {
    std::optional<std::string> reason = read_text(node, "the reason", diagnostics_);
    complete_ = complete_ && reason.has_value();
    if (!reason) return;
    reason->erase(reason->find_last_not_of(" \t\r\n") + 1);  // a block of text ends with a line break
    if (reason->empty()) fail(node, Rule::kEmptyReason, "say why the break is meant");
    accepted_.reason = std::move(*reason);
  }

  Findings& diagnostics_;
  AcceptedBreak accepted_;
  bool complete_ = true;
};

bool is_entry(const AcceptedBreak& accepted, const EntryDefinition* entry) {
  if (entry == nullptr) return false;
  return accepted.entry_id ? entry->id == *accepted.entry_id : entry->name == accepted.entry_name;
}

bool is_attribute(const std::string& name, const AttributeDefinition* attribute) {
  return attribute != nullptr && attribute->name == name;
}

bool is_message(std::uint32_t index, const SelectorMessage* message) {
  return message != nullptr && message->index == index;
}

}  // namespace

bool AcceptedBreak::matches(const DiffChange& change) const {
  const DiffPlace& place = change.place;
  if (change.rule != rule) return false;
  const bool names_entry = entry_id || !entry_name.empty();
  if (names_entry != (place.entry() != nullptr)) return false;
  if (names_entry && !is_entry(*this, place.old_entry) && !is_entry(*this, place.new_entry)) return false;
  const bool attribute_fits =
      attribute.empty() || is_attribute(attribute, place.old_attribute) || is_attribute(attribute, place.new_attribute);
  const bool index_fits = !selector_index || is_message(*selector_index, place.old_message) ||
                          is_message(*selector_index, place.new_message);
  return attribute_fits && index_fits;
}

std::vector<AcceptedBreak> load_accepted_breaks(std::string_view text, Findings& diagnostics) {
  std::vector<AcceptedBreak> accepted;
  const std::optional<YamlTree> tree = parse_yaml(without_byte_order_mark(text), diagnostics);
  if (!tree) return accepted;
  const YamlNode root = tree->root();
  if (root.kind() != YamlKind::kSequence) {
    report_wrong_type(root, "a list of accepted breaks", diagnostics);
    return accepted;
  }
  root.for_each_item([&](const YamlNode& item) {
    std::optional<AcceptedBreak> loaded = AcceptLoader(diagnostics).load(item);
    if (loaded) accepted.push_back(std::move(*loaded));
  });
  return accepted;
}

}  // namespace qzlog_compiler
